// Properties of the whole catalogue, walked through its registry: every class
// reads back the values it was made from, formats its message by the
// formatter rule, clones and propagates as itself with its base parts intact,
// and simexc's matcher leads its report back to it. Then what the registry
// cannot show: text pointers kept uncopied, the source a throw records.
#include "ZORSimBadZORString.h"
#include "ZORSimExcRegistry.h"
#include "ZORSimExceptions.h"
#include "ZORSimTestSupport.h"
#include "ZORSimUttOS.h"
#include "SimExcMatch.h"

#include <expat.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

const bool kReportsOff = (ZORSimUttAssertDisableExcReport(), true);

using Kind = ZORSimExcFieldKind;
namespace OS = ZORSimUttOS;

// The text a value stands for in a message.
std::string Shown(const ZORSimExcFieldInfo& field, const ZORSimExcValue& v) {
    const Kind k = field.kind;
    const auto parser = static_cast<XML_Parser>(v.parser);
    char real[64];
    std::snprintf(real, sizeof real, "%.6f", v.real); // fixed, six decimals
    if (k == Kind::UInt32 || k == Kind::UInt64)
        return std::to_string(v.unsignedInteger);
    if (k == Kind::Float || k == Kind::Double)
        return real;
    if (k <= Kind::Double) // the signed kinds and bool
        return std::to_string(v.integer);
    if (k == Kind::String)
        return v.text.substr(0, static_cast<std::size_t>(field.capacity - 1));
    if (k == Kind::SystemError)
        return ZORBasSystemError(static_cast<int>(v.integer)).AsString(); // the platform's own text
    if (k == Kind::SerSystemError)
        return std::strerror(static_cast<int>(v.integer)); // the C runtime's
    if (k == Kind::ParserPlace)
        return "line " + std::to_string(XML_GetCurrentLineNumber(parser)) +
               ", column: " + std::to_string(XML_GetCurrentColumnNumber(parser));
    return k == Kind::ParserError ? XML_ErrorString(XML_GetErrorCode(parser)) : v.text;
}

// What a getter returned, as text: numbers as a message shows them.
std::string ByGetter(const ZORSimExcFieldInfo& field, const ZORSimExcValue& got) {
    return field.kind <= Kind::Double ? Shown(field, got) : got.text;
}

// Values differ from field to field, so a value handed to the wrong place
// shows: integers beyond 32 bits where they fit, reals exact in single
// precision, strings longer than the field and holding a '%' that must not be
// read as a placeholder once substituted, and a run of blanks.
ZORSimExcValue Generate(const ZORSimExcFieldInfo& field, int i, XML_Parser parser) {
    const Kind k = field.kind;
    ZORSimExcValue v;
    v.integer = k == Kind::Bool ? i % 2 == 0 : k == Kind::Int32 ? -1000 - i : -5000000000LL - i;
    if (k == Kind::SystemError || k == Kind::SerSystemError)
        v.integer = OS::ErrorCode(OS::Error::AccessDenied); // a class has one at most
    v.unsignedInteger = k == Kind::UInt32 ? 4000000000U + i : 18446744073709551615ULL - i;
    v.real = k == Kind::Float ? -2.5 - i : 123456789.125 + i;
    v.parser = parser;
    v.text = (k == Kind::TextPointer ? "pointer text " : "v") + std::to_string(i) + "  %d|";
    while (k == Kind::String && static_cast<int>(v.text.size()) < field.capacity + 5)
        v.text += static_cast<char>('a' + v.text.size() % 26);
    return v;
}

// An instance and the values it was made from (a text pointer points in there).
struct Made {
    std::vector<ZORSimExcValue> raw;
    std::vector<std::string> shown;
    std::unique_ptr<ZORBasException> x;
};

Made Make(const ZORSimExcClassInfo& info, XML_Parser parser) {
    Made made;
    for (int f = 0; f < info.fieldCount; ++f) {
        made.raw.push_back(Generate(info.fields[f], f, parser));
        made.shown.push_back(Shown(info.fields[f], made.raw.back()));
    }
    made.x.reset(info.create(made.raw.data()));
    return made;
}

// The formatter rule written out independently: a regular expression for a
// placeholder, value k into the k-th one, "%%" as '%'.
std::string Expected(const std::string& format, const std::vector<std::string>& values) {
    static const std::regex placeholder(
        "%(%|[-+ #0]*[0-9]*(\\.[0-9]*)?(hh|h|ll|l|L|q|j|z|t|I64|I32|I)?[A-Za-z])");
    std::string out;
    std::size_t at = 0, k = 0;
    for (std::sregex_iterator m(format.begin(), format.end(), placeholder), end; m != end; ++m) {
        out += format.substr(at, static_cast<std::size_t>(m->position()) - at);
        if (m->str() == "%%")
            out += "%";
        else
            out += k < values.size() ? values[k++] : m->str();
        at = static_cast<std::size_t>(m->position() + m->length());
    }
    return out + format.substr(at);
}

void PropagateIt(void* object) {
    static_cast<const ZORBasException*>(object)->Propagate();
}

std::string Text(const ZORBasException& e) {
    return e.AsString(ZORBasStringMode(false)).str();
}

TEST(Catalogue, RegistryIsConsistent) {
    for (int i = 0; i < ZORSimExcRegistry::Count(); ++i) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(i);
        SCOPED_TRACE(info.name);
        EXPECT_TRUE(i == 0 || ZORSimExcRegistry::At(i - 1).code <= info.code) << "tables out of code order";
        EXPECT_EQ(ZORSimExcRegistry::FindByName(info.name), &info); // also: no name twice
        // A base takes all of its values from the class, each from a field of
        // the same kind; ZORBasException takes none.
        const ZORSimExcClassInfo* base = ZORSimExcRegistry::FindByName(info.base);
        EXPECT_TRUE(base || std::string(info.base) == "ZORBasException") << "unknown base " << info.base;
        EXPECT_EQ(info.baseArgCount, base ? base->fieldCount : 0);
        std::set<int> handed;
        for (int j = 0; base && j < std::min(info.baseArgCount, base->fieldCount); ++j) {
            const int k = info.baseArgs[j];
            ASSERT_TRUE(k >= 1 && k <= info.fieldCount && handed.insert(k).second) << "position " << k;
            EXPECT_EQ(info.fields[k - 1].kind, base->fields[j].kind) << base->fields[j].getter;
            EXPECT_EQ(info.fields[k - 1].capacity, base->fields[j].capacity) << base->fields[j].getter;
        }
    }
    EXPECT_EQ(ZORSimExcRegistry::FindByName(nullptr), nullptr);
}

TEST(Catalogue, EveryClassReadsBackFormatsClonesPropagatesAndIsMatchedBySimexc) {
    // An expat parser that failed on line 2.
    XML_Parser parser = XML_ParserCreate(nullptr);
    const char broken[] = "<a>\n<b></a>";
    ASSERT_EQ(XML_Parse(parser, broken, sizeof broken - 1, 1), XML_STATUS_ERROR);
    std::vector<simexc::MessagePattern> patterns;
    for (int c = 0; c < ZORSimExcRegistry::Count(); ++c)
        patterns.emplace_back(ZORSimExcRegistry::At(c).format, ZORSimExcRegistry::At(c).fieldCount);
    for (int i = 0; i < ZORSimExcRegistry::Count(); ++i) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(i);
        SCOPED_TRACE(info.name);
        Made made = Make(info, parser);
        const std::vector<std::string>& shown = made.shown;
        const ZORBasException* x = made.x.get();
        ASSERT_NE(x, nullptr);
        for (int f = 0; f < info.fieldCount; ++f)
            EXPECT_EQ(ByGetter(info.fields[f], info.get(*x, f)), shown[static_cast<std::size_t>(f)])
                << info.fields[f].getter;
        const std::string message = Text(*x);
        EXPECT_EQ(message, Expected(info.format, shown));
        EXPECT_EQ(x->AsString(ZORBasStringMode(true)).str(), message);
        EXPECT_EQ(x->UserReport(ZORBasStringMode(false)).str(), message);

        // What makes simexc --match useful: the report leads back to the class,
        // ranked first, and so does each line of a message that spans lines.
        const std::string report =
            simexc::CleanReportText("!!! EXCEPTION:\n!!!   " + message + "\n!!! TRACEBACK:\n!!!   main\n");
        const simexc::MessagePattern& own = patterns[static_cast<std::size_t>(i)];
        ASSERT_EQ(own.Match(report), own.LiteralSize()) << message;
        for (const simexc::MessagePattern& other : patterns)
            EXPECT_LE(other.Match(report).value_or(0), own.LiteralSize()) << message;
        for (const std::string& line : zorsim_test::Lines(report))
            EXPECT_TRUE(own.Match(line)) << line;

        // The base part holds the values handed to it, read through the
        // base's own getters: base field j holds the value at position
        // baseArgs[j]. (The base's own base part is checked with the base.)
        const ZORSimExcClassInfo* base = ZORSimExcRegistry::FindByName(info.base);
        const auto expectBaseValues = [&](const ZORBasException& e) {
            for (int j = 0; base && j < std::min(info.baseArgCount, base->fieldCount); ++j)
                EXPECT_EQ(ByGetter(base->fields[j], base->get(e, j)),
                          shown.at(static_cast<std::size_t>(info.baseArgs[j] - 1)))
                    << base->name << "::" << base->fields[j].getter;
        };
        expectBaseValues(*x);

        const std::unique_ptr<ZORBasException> clone(x->Clone());
        ASSERT_NE(clone, nullptr);
        const ZORBasException& copy = *clone;
        EXPECT_EQ(typeid(copy), typeid(*x));
        EXPECT_EQ(clone->GetCode(), info.code);
        EXPECT_EQ(Text(*clone), message);
        expectBaseValues(*clone);
        // Propagate throws what a handler for the class and for its base (and
        // so for every base up the chain) catches; a handler for the class
        // does not take its base.
        EXPECT_TRUE(info.catches(&PropagateIt, made.x.get()));
        if (base) {
            EXPECT_TRUE(base->catches(&PropagateIt, made.x.get())) << "not caught as " << base->name;
            const Made baseMade = Make(*base, parser);
            EXPECT_FALSE(info.catches(&PropagateIt, baseMade.x.get())) << "catches its base";
        }
    }
    XML_ParserFree(parser);
}

// The report text is not copied: the message and every copy (a clone is made
// by the copy constructor, as a thrown copy is) follow the caller's buffer.
TEST(Messages, TextPointerFollowsTheCallersBuffer) {
    char report[] = "form A missing";
    const ZORSimExcUpgradePreconditionError error(report);
    const std::unique_ptr<ZORBasException> clone(error.Clone());
    report[5] = 'B';
    EXPECT_EQ(Text(*clone), "Upgrade/Downgrade error: form B missing");
}

// Throw raises the derived class with the source recorded.
TEST(Messages, BadStringsAreTurnedAwayWithTheCheckAsSource) {
    try {
        ZORSimBadZORString::Check(ZORString::BAD());
        ADD_FAILURE() << "no exception";
    } catch (const ZORSimExcBadStringArgument& error) {
        EXPECT_STREQ("ZORSimBadZORString", error.ThrowFile());
        EXPECT_EQ(16, error.ThrowLine());
    }
}

} // namespace
