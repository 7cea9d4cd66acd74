// Properties of the whole catalogue, walked through its registry: every class
// constructs from generated values, reads them back, formats its message by
// the formatter rule, clones and propagates as itself and is caught by each
// of its bases.
#include "ZORSimExcAtr.h"
#include "ZORSimExcRegistry.h"
#include "ZORSimExceptions.h"

#include <expat.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

// Throw reports go to standard error; this suite checks what is thrown.
const bool kReportsOff = (ZORSimUttAssertDisableExcReport(), true);

// An expat parser that failed on line 2, column 4.
struct FailedParser {
    XML_Parser parser = XML_ParserCreate(nullptr);
    FailedParser() {
        const char text[] = "<a>\n<b></a>";
        XML_Parse(parser, text, sizeof text - 1, 1);
    }
    ~FailedParser() { XML_ParserFree(parser); }
};

std::string Fixed(double v) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%f", v);
    return buffer;
}

// A value for field `i` of a class, and the text it must show in a message.
struct Generated {
    ZORSimExcValue value;
    std::string shown;
};

Generated Generate(const ZORSimExcFieldInfo& field, int i, XML_Parser parser) {
    Generated g;
    switch (field.kind) {
    case ZORSimExcFieldKind::Int32:
        g.value.integer = -1000 - i;
        g.shown = std::to_string(g.value.integer);
        break;
    case ZORSimExcFieldKind::Int64:
        g.value.integer = -9000000000000000000LL + i;
        g.shown = std::to_string(g.value.integer);
        break;
    case ZORSimExcFieldKind::UInt32:
        g.value.unsignedInteger = 4000000000U + static_cast<unsigned>(i);
        g.shown = std::to_string(g.value.unsignedInteger);
        break;
    case ZORSimExcFieldKind::UInt64:
        g.value.unsignedInteger = 18446744073709551615ULL - static_cast<unsigned>(i);
        g.shown = std::to_string(g.value.unsignedInteger);
        break;
    case ZORSimExcFieldKind::Bool:
        g.value.integer = i % 2;
        g.shown = std::to_string(i % 2);
        break;
    case ZORSimExcFieldKind::Float:
        g.value.real = 1.5 + i;
        g.shown = Fixed(static_cast<float>(g.value.real));
        break;
    case ZORSimExcFieldKind::Double:
        g.value.real = -2.25 * (i + 1);
        g.shown = Fixed(g.value.real);
        break;
    case ZORSimExcFieldKind::String: {
        // Longer than the field, and holding a '%' that must not be read as a
        // placeholder once substituted.
        std::string text = "v" + std::to_string(i) + "%d|";
        while (static_cast<int>(text.size()) < field.capacity + 5)
            text += static_cast<char>('a' + text.size() % 26);
        g.value.text = text;
        g.shown = text.substr(0, static_cast<std::size_t>(field.capacity - 1));
        break;
    }
    case ZORSimExcFieldKind::TextPointer:
        g.value.text = "pointer text " + std::to_string(i);
        g.shown = g.value.text;
        break;
    case ZORSimExcFieldKind::SystemError:
        g.value.integer = ENOENT + i;
        g.shown = std::strerror(ENOENT + i);
        break;
    case ZORSimExcFieldKind::SerSystemError:
        g.value.integer = EACCES;
        g.shown = std::strerror(EACCES);
        break;
    case ZORSimExcFieldKind::ParserPlace:
        g.value.parser = parser;
        g.shown = "line " + std::to_string(XML_GetCurrentLineNumber(parser)) +
                  ", column: " + std::to_string(XML_GetCurrentColumnNumber(parser));
        break;
    case ZORSimExcFieldKind::ParserError:
        g.value.parser = parser;
        g.shown = XML_ErrorString(XML_GetErrorCode(parser));
        break;
    }
    return g;
}

// The formatter rule written out independently: a regular expression for a
// placeholder, value k into the k-th one, "%%" as '%'.
std::string Expected(const char* format, const std::vector<std::string>& values) {
    static const std::regex placeholder(
        "%(%|[-+ #0]*[0-9]*(\\.[0-9]*)?(hh|h|ll|l|L|q|j|z|t|I64|I32|I)?[A-Za-z])");
    std::string out;
    const std::string f = format;
    std::size_t at = 0, k = 0;
    for (std::sregex_iterator m(f.begin(), f.end(), placeholder), end; m != end; ++m) {
        out += f.substr(at, static_cast<std::size_t>(m->position()) - at);
        if (m->str() == "%%")
            out += "%";
        else
            out += k < values.size() ? values[k] : m->str();
        if (m->str() != "%%")
            ++k;
        at = static_cast<std::size_t>(m->position() + m->length());
    }
    return out + f.substr(at);
}

// An instance of a registered class with generated values.
struct Instance {
    const ZORSimExcClassInfo* info;
    std::vector<Generated> values;
    std::vector<ZORSimExcValue> raw;
    std::unique_ptr<ZORBasException> object;

    Instance(const ZORSimExcClassInfo& i, XML_Parser parser) : info(&i) {
        for (int f = 0; f < i.fieldCount; ++f)
            values.push_back(Generate(i.fields[f], f, parser));
        for (const Generated& g : values)
            raw.push_back(g.value);
        object.reset(i.create(raw.data()));
    }
    std::vector<std::string> Shown() const {
        std::vector<std::string> shown;
        for (const Generated& g : values)
            shown.push_back(g.shown);
        return shown;
    }
};

void PropagateIt(void* object) {
    static_cast<const ZORBasException*>(object)->Propagate();
}

// The registered bases of a class, nearest first, ending at ZORBasException.
std::vector<const ZORSimExcClassInfo*> Bases(const ZORSimExcClassInfo& info) {
    std::vector<const ZORSimExcClassInfo*> chain;
    for (const ZORSimExcClassInfo* b = ZORSimExcRegistry::FindByName(info.base); b;
         b = ZORSimExcRegistry::FindByName(b->base))
        chain.push_back(b);
    return chain;
}

TEST(Catalogue, RegistryIsConsistent) {
    std::set<std::string> names;
    for (int i = 0; i < ZORSimExcRegistry::Count(); ++i) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(i);
        SCOPED_TRACE(info.name);
        EXPECT_TRUE(names.insert(info.name).second) << "duplicate class name";
        EXPECT_EQ(std::string(info.name).rfind("ZORSimExc", 0), 0u);
        EXPECT_GE(info.code, 1001);
        EXPECT_LE(info.code, 1840);
        EXPECT_TRUE(std::string(info.base) == "ZORBasException" || ZORSimExcRegistry::FindByName(info.base))
            << "unknown base " << info.base;
        EXPECT_LE(info.baseArgCount, info.fieldCount);
        if (i > 0) {
            EXPECT_LE(ZORSimExcRegistry::At(i - 1).code, info.code) << "tables out of code order";
        }
        for (int f = 0; f < info.fieldCount; ++f) {
            EXPECT_EQ(std::string(info.fields[f].getter).rfind("Get", 0), 0u);
            if (info.fields[f].kind == ZORSimExcFieldKind::String) {
                EXPECT_TRUE(info.fields[f].capacity == 10 || info.fields[f].capacity == 32 ||
                            info.fields[f].capacity == 64 || info.fields[f].capacity == 1024);
            }
        }
        EXPECT_EQ(ZORSimExcRegistry::FindByName(info.name), &info);
    }
    EXPECT_EQ(ZORSimExcRegistry::FindByName("ZORSimExcNoSuchThing"), nullptr);
    EXPECT_EQ(ZORSimExcRegistry::FindByName(nullptr), nullptr);
}

TEST(Catalogue, CodesAreUniqueExceptTheTwoSharedOnes) {
    std::set<int> codes;
    for (int i = 0; i < ZORSimExcRegistry::Count(); ++i)
        codes.insert(ZORSimExcRegistry::At(i).code);
    for (int code : codes) {
        const auto classes = ZORSimExcRegistry::FindByCode(code);
        const std::size_t expected = (code == 1013 || code == 1836) ? 2 : 1;
        EXPECT_EQ(classes.size(), expected) << code;
    }
    const auto shared = ZORSimExcRegistry::FindByCode(1013);
    ASSERT_EQ(shared.size(), 2u);
    EXPECT_STREQ(shared[0]->name, "ZORSimExcNoSuchFile");
    EXPECT_STREQ(shared[1]->name, "ZORSimExcNoSuchForm");
    EXPECT_TRUE(ZORSimExcRegistry::FindByCode(1002).empty());
}

TEST(Catalogue, EveryClassHoldsFormatsAndReadsBackItsValues) {
    FailedParser parser;
    for (int i = 0; i < ZORSimExcRegistry::Count(); ++i) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(i);
        SCOPED_TRACE(info.name);
        Instance x(info, parser.parser);
        ASSERT_NE(x.object, nullptr);
        EXPECT_EQ(x.object->GetCode(), info.code);
        EXPECT_TRUE(info.isA(*x.object));
        for (int f = 0; f < info.fieldCount; ++f) {
            const ZORSimExcValue got = info.get(*x.object, f);
            const Generated& want = x.values[static_cast<std::size_t>(f)];
            switch (info.fields[f].kind) {
            case ZORSimExcFieldKind::Int32:
            case ZORSimExcFieldKind::Int64:
            case ZORSimExcFieldKind::Bool:
                EXPECT_EQ(got.integer, want.value.integer) << info.fields[f].getter;
                break;
            case ZORSimExcFieldKind::UInt32:
            case ZORSimExcFieldKind::UInt64:
                EXPECT_EQ(got.unsignedInteger, want.value.unsignedInteger) << info.fields[f].getter;
                break;
            case ZORSimExcFieldKind::Float:
            case ZORSimExcFieldKind::Double:
                EXPECT_EQ(got.real, want.value.real) << info.fields[f].getter;
                break;
            case ZORSimExcFieldKind::SystemError:
            case ZORSimExcFieldKind::SerSystemError:
                EXPECT_EQ(got.integer, want.value.integer) << info.fields[f].getter;
                EXPECT_EQ(got.text, want.shown) << info.fields[f].getter;
                break;
            default:
                EXPECT_EQ(got.text, want.shown) << info.fields[f].getter;
            }
        }
        const std::string message = x.object->AsString(ZORBasStringMode(false)).str();
        EXPECT_EQ(message, Expected(info.format, x.Shown()));
        EXPECT_EQ(x.object->AsString(ZORBasStringMode(true)).str(), message);
        EXPECT_EQ(x.object->UserReport(ZORBasStringMode(false)).str(), message);
    }
}

TEST(Catalogue, ClonesAndPropagatedCopiesKeepTypeCodeAndMessage) {
    FailedParser parser;
    for (int i = 0; i < ZORSimExcRegistry::Count(); ++i) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(i);
        SCOPED_TRACE(info.name);
        Instance x(info, parser.parser);
        const std::string message = x.object->AsString(ZORBasStringMode(false)).str();

        std::unique_ptr<ZORBasException> clone(x.object->Clone());
        ASSERT_NE(clone, nullptr);
        EXPECT_EQ(typeid(*clone), typeid(*x.object));
        EXPECT_EQ(clone->GetCode(), info.code);
        EXPECT_EQ(clone->AsString(ZORBasStringMode(false)).str(), message);

        try {
            x.object->Propagate();
            ADD_FAILURE() << "Propagate returned";
        } catch (const ZORBasException& e) {
            EXPECT_EQ(typeid(e), typeid(*x.object));
            EXPECT_EQ(e.GetCode(), info.code);
            EXPECT_EQ(e.AsString(ZORBasStringMode(false)).str(), message);
        }
        // Caught by a handler for the class itself and for every base.
        EXPECT_TRUE(info.catches(&PropagateIt, x.object.get()));
        for (const ZORSimExcClassInfo* base : Bases(info))
            EXPECT_TRUE(base->catches(&PropagateIt, x.object.get())) << "not caught as " << base->name;
        bool caughtAsAllocationBase = false;
        try {
            clone->Propagate();
        } catch (const mem_AllocationOperators&) {
            caughtAsAllocationBase = true;
        }
        EXPECT_TRUE(caughtAsAllocationBase);
    }
}

TEST(Catalogue, ThrowRecordsTheSourceAndRaisesTheDerivedClass) {
    try {
        ZORSimExcNoSuchFile("/data/run.1.tmp").Throw("Here.cpp", 42);
    } catch (const ZORBasException& e) {
        EXPECT_EQ(e.GetCode(), 1013);
        EXPECT_STREQ(e.ThrowFile(), "Here.cpp");
        EXPECT_EQ(e.ThrowLine(), 42);
        EXPECT_NE(dynamic_cast<const ZORSimExcNoSuchFile*>(&e), nullptr);
        EXPECT_EQ(e.DeveloperReport(ZORBasStringMode(false)).str(),
                  "[1013] No such file: /data/run.1.tmp (raised in Here.cpp:42)");
    }
}

// Every combination of value types that a catalogue message takes has an
// exported atr<...> instance.
TEST(Catalogue, EverySignatureHasAnExportedFormatterInstance) {
#define ZORSIM_ATR(...) #__VA_ARGS__,
    const std::set<std::string> exported = {
#include "ZORSimExcAtrInstances.def"
    };
#undef ZORSIM_ATR
    EXPECT_EQ(exported.size(), 41u);
    for (int i = 0; i < ZORSimExcRegistry::Count(); ++i) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(i);
        if (info.fieldCount == 0)
            continue;
        std::string signature;
        for (int f = 0; f < info.fieldCount; ++f) {
            static const char* const kTypes[] = {
                "int",         "unsigned int", "long long",   "unsigned long long", "bool",
                "float",       "double",       "const char*", "const char*",        "const char*",
                "const char*", "const char*",  "const char*"};
            signature += (f ? ", " : "") + std::string(kTypes[static_cast<int>(info.fields[f].kind)]);
        }
        EXPECT_TRUE(exported.count(signature)) << info.name << ": " << signature;
    }
}

} // namespace
