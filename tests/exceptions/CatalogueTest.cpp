// Properties of the whole catalogue, walked through its registry: every class
// constructs from generated values, reads them back, formats its message by
// the formatter rule, clones and propagates as itself, is caught by each of
// its bases, and its base parts hold the values handed to them.
#include "ZORSimExcAtr.h"
#include "ZORSimExcRegistry.h"
#include "ZORSimExceptions.h"

#include <expat.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <tuple>
#include <typeinfo>
#include <vector>

namespace {

// Throw reports go to standard error; this suite checks what is thrown.
const bool kReportsOff = (ZORSimUttAssertDisableExcReport(), true);

using Kind = ZORSimExcFieldKind;

// The text a value stands for in a message.
std::string Shown(const ZORSimExcFieldInfo& field, const ZORSimExcValue& v) {
    char real[64];
    std::snprintf(real, sizeof real, "%.6f", v.real); // fixed, six decimals
    const auto parser = static_cast<XML_Parser>(v.parser);
    switch (field.kind) {
    case Kind::Int32:
    case Kind::Int64:
    case Kind::Bool:
        return std::to_string(v.integer);
    case Kind::UInt32:
    case Kind::UInt64:
        return std::to_string(v.unsignedInteger);
    case Kind::Float:
    case Kind::Double:
        return real;
    case Kind::String:
        return v.text.substr(0, static_cast<std::size_t>(field.capacity - 1));
    case Kind::SystemError:
    case Kind::SerSystemError:
        return std::strerror(static_cast<int>(v.integer));
    case Kind::ParserPlace:
        return "line " + std::to_string(XML_GetCurrentLineNumber(parser)) +
               ", column: " + std::to_string(XML_GetCurrentColumnNumber(parser));
    case Kind::ParserError:
        return XML_ErrorString(XML_GetErrorCode(parser));
    default:
        return v.text;
    }
}

// What a getter returned, as text: numbers as a message shows them.
std::string ByGetter(const ZORSimExcFieldInfo& field, const ZORSimExcValue& got) {
    return field.kind <= Kind::Double ? Shown(field, got) : got.text;
}

// Values differ from field to field, so a value handed to the wrong place
// shows: integers beyond 32 bits where they fit, reals exact in single
// precision, strings longer than the field and holding a '%' that must not be
// read as a placeholder once substituted.
ZORSimExcValue Generate(const ZORSimExcFieldInfo& field, int i, XML_Parser parser) {
    const Kind k = field.kind;
    ZORSimExcValue v;
    v.integer = k == Kind::Bool ? i % 2 == 0 : k == Kind::Int32 ? -1000 - i : -5000000000LL - i;
    if (k == Kind::SystemError || k == Kind::SerSystemError)
        v.integer = ENOENT + i;
    v.unsignedInteger = k == Kind::UInt32 ? 4000000000U + i : 18446744073709551615ULL - i;
    v.real = k == Kind::Float ? -2.5 - i : 123456789.125 + i;
    v.parser = parser;
    v.text = (k == Kind::TextPointer ? "pointer text " : "v") + std::to_string(i) + "%d|";
    while (k == Kind::String && static_cast<int>(v.text.size()) < field.capacity + 5)
        v.text += static_cast<char>('a' + v.text.size() % 26);
    return v;
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
    std::set<std::string> names;
    for (int i = 0; i < ZORSimExcRegistry::Count(); ++i) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(i);
        SCOPED_TRACE(info.name);
        EXPECT_TRUE(names.insert(info.name).second) << "duplicate class name";
        EXPECT_EQ(std::string(info.name).rfind("ZORSimExc", 0), 0u);
        EXPECT_TRUE(info.code >= 1001 && info.code <= 1840) << info.code;
        EXPECT_TRUE(i == 0 || ZORSimExcRegistry::At(i - 1).code <= info.code) << "tables out of code order";
        EXPECT_TRUE(std::string(info.base) == "ZORBasException" || ZORSimExcRegistry::FindByName(info.base))
            << "unknown base " << info.base;
        // A base takes all of its values from the class, each from a field of
        // the same kind; ZORBasException takes none.
        const ZORSimExcClassInfo* base = ZORSimExcRegistry::FindByName(info.base);
        EXPECT_EQ(info.baseArgCount, base ? base->fieldCount : 0);
        std::set<int> handed;
        for (int j = 0; base && j < std::min(info.baseArgCount, base->fieldCount); ++j) {
            const int k = info.baseArgs[j];
            ASSERT_TRUE(k >= 1 && k <= info.fieldCount && handed.insert(k).second) << "position " << k;
            EXPECT_EQ(info.fields[k - 1].kind, base->fields[j].kind) << base->fields[j].getter;
            EXPECT_EQ(info.fields[k - 1].capacity, base->fields[j].capacity) << base->fields[j].getter;
        }
        EXPECT_EQ(ZORSimExcRegistry::FindByName(info.name), &info);
        // Codes are unique except for two pairs.
        const std::size_t sharing = (info.code == 1013 || info.code == 1836) ? 2 : 1;
        EXPECT_EQ(ZORSimExcRegistry::FindByCode(info.code).size(), sharing);
    }
    // 409 classes, 407 codes: the two shared codes aside, every code of
    // these ranges is taken once.
    EXPECT_EQ(ZORSimExcRegistry::Count(), 409);
    static const std::pair<int, int> kUsed[] = {{1001, 1001}, {1003, 1003}, {1006, 1011}, {1013, 1013},
                                                {1016, 1017}, {1019, 1020}, {1022, 1025}, {1027, 1054},
                                                {1100, 1109}, {1120, 1121}, {1201, 1210}, {1301, 1302},
                                                {1401, 1401}, {1502, 1504}, {1506, 1621}, {1623, 1840}};
    std::set<int> expected, codes;
    for (const auto& [first, last] : kUsed)
        for (int code = first; code <= last; ++code)
            expected.insert(code);
    for (int i = 0; i < ZORSimExcRegistry::Count(); ++i)
        codes.insert(ZORSimExcRegistry::At(i).code);
    EXPECT_EQ(expected.size(), 407u);
    EXPECT_EQ(codes, expected);

    EXPECT_EQ(ZORSimExcRegistry::FindByName("ZORSimExcNoSuchThing"), nullptr);
    EXPECT_EQ(ZORSimExcRegistry::FindByName(nullptr), nullptr);
    EXPECT_TRUE(ZORSimExcRegistry::FindByCode(1002).empty());
    for (const auto& [code, first, second] :
         {std::tuple(1013, "ZORSimExcNoSuchFile", "ZORSimExcNoSuchForm"),
          std::tuple(1836, "ZORSimExcExtCSetNonEmpty", "ZORSimExcNeedManualFunctions")}) {
        const auto shared = ZORSimExcRegistry::FindByCode(code);
        ASSERT_EQ(shared.size(), 2u);
        EXPECT_STREQ(shared[0]->name, first);
        EXPECT_STREQ(shared[1]->name, second);
    }
}

// The direct base of every class from 1502 on: the families below, and
// ZORBasException for the rest.
TEST(Catalogue, CategoryFamilies) {
    struct Family {
        const char* base;
        int first, last;
    };
    static const Family kFamilies[] = {
        {"ZORSimExcSSDLException", 1508, 1508},
        {"ZORSimExcTypeSnapshotException", 1575, 1576},
        {"ZORSimExcTypeDependencyException", 1578, 1581},
        {"ZORSimExcTypeFormException", 1583, 1598},
        {"ZORSimExcTypeDataRecordException", 1600, 1612},
        {"ZORSimExcTypeDataRecordMemberException", 1618, 1627},
        {"ZORSimExcTypeAssociationException", 1629, 1631},
        {"ZORSimExcTypeAssociationMemberException", 1633, 1635},
        {"ZORSimExcTypeCollectionException", 1637, 1637},
        {"ZORSimExcTypeGridException", 1639, 1642},
        {"ZORSimExcTypeGridDimensionException", 1643, 1644},
        {"ZORSimExcTransferBadRequest", 1673, 1729},
        {"ZORSimExcTransferBadRequest", 1732, 1736},
    };
    const ZORSimExcClassInfo* transfer = ZORSimExcRegistry::FindByName("ZORSimExcTransferBadRequest");
    ASSERT_NE(transfer, nullptr);
    int classes = 0, transferMembers = 0;
    for (int i = 0; i < ZORSimExcRegistry::Count(); ++i) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(i);
        if (info.code < 1502)
            continue;
        ++classes;
        std::string expected = "ZORBasException";
        for (const Family& family : kFamilies)
            if (info.code >= family.first && info.code <= family.last)
                expected = family.base;
        EXPECT_EQ(info.base, expected) << info.name;
        if (info.code < 1650)
            continue;
        // The real hierarchy agrees: the transfer base catches its family and
        // nothing else. Zero values fit every field kind of these blocks.
        const bool member = expected == transfer->name;
        transferMembers += member;
        const std::vector<ZORSimExcValue> values(static_cast<std::size_t>(info.fieldCount));
        const std::unique_ptr<ZORBasException> x(info.create(values.data()));
        EXPECT_EQ(transfer->catches(&PropagateIt, x.get()), member || &info == transfer) << info.name;
    }
    EXPECT_EQ(classes, 338); // 1505 and 1622 are not assigned
    EXPECT_EQ(transferMembers, 62);
    // A handler for one member takes neither the base nor a sibling.
    ZORSimExcTransferBadRequest base;
    ZORSimExcTransferBadRequestNotYet sibling;
    const ZORSimExcClassInfo* member =
        ZORSimExcRegistry::FindByName("ZORSimExcTransferIncompatibleSerialization");
    ASSERT_NE(member, nullptr);
    EXPECT_FALSE(member->catches(&PropagateIt, &base));
    EXPECT_FALSE(member->catches(&PropagateIt, &sibling));
    EXPECT_FALSE(ZORSimExcRegistry::FindByCode(1836)[0]->isA(ZORSimExcNeedManualFunctions()));
}

TEST(Catalogue, EveryClassReadsBackFormatsClonesAndPropagatesItsValues) {
    // An expat parser that failed on line 2.
    XML_Parser parser = XML_ParserCreate(nullptr);
    const char broken[] = "<a>\n<b></a>";
    ASSERT_EQ(XML_Parse(parser, broken, sizeof broken - 1, 1), XML_STATUS_ERROR);
    for (int i = 0; i < ZORSimExcRegistry::Count(); ++i) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(i);
        SCOPED_TRACE(info.name);
        std::vector<ZORSimExcValue> raw; // a text pointer points in here
        std::vector<std::string> shown;
        for (int f = 0; f < info.fieldCount; ++f) {
            raw.push_back(Generate(info.fields[f], f, parser));
            shown.push_back(Shown(info.fields[f], raw.back()));
        }
        const std::unique_ptr<ZORBasException> x(info.create(raw.data()));
        ASSERT_NE(x, nullptr);
        EXPECT_TRUE(info.isA(*x));
        for (int f = 0; f < info.fieldCount; ++f) {
            const ZORSimExcValue got = info.get(*x, f);
            const Kind kind = info.fields[f].kind;
            EXPECT_EQ(ByGetter(info.fields[f], got), shown[static_cast<std::size_t>(f)])
                << info.fields[f].getter;
            if (kind == Kind::SystemError || kind == Kind::SerSystemError) {
                EXPECT_EQ(got.integer, raw[static_cast<std::size_t>(f)].integer) << info.fields[f].getter;
            }
        }
        const std::string message = Text(*x);
        EXPECT_EQ(message, Expected(info.format, shown));
        EXPECT_EQ(x->AsString(ZORBasStringMode(true)).str(), message);
        EXPECT_EQ(x->UserReport(ZORBasStringMode(false)).str(), message);

        // Each base part holds the values handed to it, read through the
        // base's own getters: up the chain, base field j holds the value at
        // position baseArgs[j] of the level below.
        const auto expectBaseValues = [&](const ZORBasException& e) {
            std::vector<int> at; // 1-based position in `shown` of each field of `level`
            for (int f = 1; f <= info.fieldCount; ++f)
                at.push_back(f);
            const ZORSimExcClassInfo* level = &info;
            for (const ZORSimExcClassInfo* b = ZORSimExcRegistry::FindByName(info.base); b;
                 level = b, b = ZORSimExcRegistry::FindByName(b->base)) {
                std::vector<int> next;
                for (int j = 0; j < std::min(level->baseArgCount, b->fieldCount); ++j) {
                    const int k = level->baseArgs[j];
                    ASSERT_TRUE(k >= 1 && k <= static_cast<int>(at.size())) << level->name;
                    const int position = at[static_cast<std::size_t>(k - 1)];
                    EXPECT_EQ(ByGetter(b->fields[j], b->get(e, j)),
                              shown[static_cast<std::size_t>(position - 1)])
                        << b->name << "::" << b->fields[j].getter;
                    next.push_back(position);
                }
                at = next;
            }
        };
        expectBaseValues(*x);

        const std::unique_ptr<ZORBasException> clone(x->Clone());
        ASSERT_NE(clone, nullptr);
        const auto expectSame = [&](const ZORBasException& e) {
            EXPECT_EQ(typeid(e), typeid(*x));
            EXPECT_EQ(e.GetCode(), info.code);
            EXPECT_EQ(Text(e), message);
            expectBaseValues(e);
        };
        expectSame(*clone);
        try {
            clone->Propagate();
            ADD_FAILURE() << "Propagate returned";
        } catch (const ZORBasException& thrown) {
            expectSame(thrown);
        }
        bool caughtAsAllocationBase = false;
        try {
            x->Propagate();
        } catch (const mem_AllocationOperators&) {
            caughtAsAllocationBase = true;
        }
        EXPECT_TRUE(caughtAsAllocationBase);
        // Caught by a handler for the class itself and for every base.
        EXPECT_TRUE(info.catches(&PropagateIt, x.get()));
        for (const ZORSimExcClassInfo* b = ZORSimExcRegistry::FindByName(info.base); b;
             b = ZORSimExcRegistry::FindByName(b->base))
            EXPECT_TRUE(b->catches(&PropagateIt, x.get())) << "not caught as " << b->name;
    }
    XML_ParserFree(parser);
}

TEST(Catalogue, ThrowRecordsTheSourceAndRaisesTheDerivedClass) {
    try {
        ZORSimExcNoSuchFile("/data/run.1.tmp").Throw("Here.cpp", 42);
        ADD_FAILURE() << "no exception";
    } catch (const ZORBasException& e) {
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
    static const char* const kTypes[] = {
        "int",  "unsigned int", "long long", "unsigned long long",
        "bool", "float",        "double"}; // the rest are passed as const char*
    for (int i = 0; i < ZORSimExcRegistry::Count(); ++i) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(i);
        std::string signature;
        for (int f = 0; f < info.fieldCount; ++f) {
            const Kind kind = info.fields[f].kind;
            signature += (f ? ", " : "") +
                         std::string(kind <= Kind::Double ? kTypes[static_cast<int>(kind)] : "const char*");
        }
        EXPECT_TRUE(info.fieldCount == 0 || exported.count(signature)) << info.name << ": " << signature;
    }
}

} // namespace
