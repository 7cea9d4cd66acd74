// The store filled from explicit vectors: pairs, positional arguments and
// every query; the singleton that holds it and its fatal errors.
#include "CmdLineTestSupport.h"
#include "ZORSimTestSupport.h"

#include "ZORSimExcPoolFormat.h"
#include "ZORSimUttAssert.h"

#include "ZORBasAti.h"
#include "ZORBasException.h"

#include <clocale>
#include <cmath>
#include <typeinfo>

using namespace zorsim_cmdline_test;
using Singleton = ZORBasAtiGlobalSingleton<ZORSimCommandLineImpl>;

namespace {

std::string Value(const char* key) {
    return ZORSimCommandLine::GetString(key, "<default>").c_str();
}

} // namespace

// A key takes the next argument unless that is a key too; every argument
// stays positional; each vector replaces the one before. Expected values:
// nullptr = no key, "" = a key without a value (queries give the default).
TEST(CmdLineStore, PairsAndPositionalArgumentsOfMixedVectors) {
    struct Row {
        std::vector<std::string> args;
        int pairs;
        std::vector<std::pair<const char*, const char*>> keys;
    };
    const Row rows[] = {
        {{"prog", "a", "-k", "v", "b", "-n", "5", "-v"},
         3,
         {{"k", "v"}, {"n", "5"}, {"v", ""}, {"a", nullptr}, {"b", nullptr}}},
        // Empty values, a repeated key (the first wins), "-5" as a key of its
        // own, and "-" alone as the empty key.
        {{"prog", "-a", "-b", "", "-k", "first", "-k", "second", "-n", "-5", "-", "dash"},
         7,
         {{"a", ""}, {"b", ""}, {"k", "first"}, {"n", ""}, {"5", ""}, {"", "dash"}, {"v", nullptr}}},
        // A dashed program name counts one pair too many, left empty.
        {{"-prog", "-a", "1"}, 2, {{"", ""}, {"prog", nullptr}, {"a", "1"}}},
        {{"prog", "-a", "1"}, 1, {{"", nullptr}, {"a", "1"}}},
        {{"-x"}, 1, {{"x", nullptr}}}, // counted, never filled
        // Values are looked up by exact case.
        {{"prog", "-Key", "V", "-\xc3\x89t\xc3\xa9", "x"},
         2,
         {{"Key", "V"}, {"key", nullptr}, {"x", nullptr}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.args[0] + " ... " + row.args.back());
        Argv args(row.args);
        ZORSimCommandLine set(args.argc(), args.argv());
        EXPECT_EQ(StoredArgs(), row.args);
        EXPECT_EQ(ZORSimCommandLine::NumPairs(), row.pairs);
        for (const auto& [key, value] : row.keys) {
            EXPECT_EQ(ZORSimCommandLine::IsMember(key), value != nullptr) << key;
            EXPECT_EQ(Value(key), value == nullptr || *value == '\0' ? "<default>" : value) << key;
        }
    }
    // A lookup in any case ignores ASCII case only.
    EXPECT_FALSE(ZORSimCommandLine::IsMember("key", false));
    EXPECT_TRUE(ZORSimCommandLine::IsMember("KEY", true));
    EXPECT_FALSE(ZORSimCommandLine::IsMember("ke", true));
    EXPECT_TRUE(ZORSimCommandLine::IsMember("\xc3\x89T\xc3\xa9", true));
    EXPECT_FALSE(ZORSimCommandLine::IsMember("\xc3\xa9t\xc3\xa9", true));
    // A filled store ignores a further fill of its own.
    Argv other{"other", "-o"};
    Singleton::Instance()->InitFromArgs(other.argc(), other.argv());
    EXPECT_EQ(ZORSimCommandLine::NumArgs(), 5);
    ZORSimCommandLine none(0, nullptr);
    EXPECT_EQ(ZORSimCommandLine::NumArgs(), 0);
    EXPECT_EQ(ZORSimCommandLine::NumPairs(), 0);
    EXPECT_FALSE(ZORSimCommandLine::IsMember("x", true));
}

TEST(CmdLineStore, NumbersFollowAtoiAndAtofAndOtherQueriesAgree) {
    Argv args{"prog", "-abc", "abc", "-mixed", "12abc",  "-blank", " 42",       "-f",
              "2.5",  "-e",   "1e3", "-big",   "3.4e39", "-u",     "v\xc3\xa9", "-empty"};
    ZORSimCommandLine set(args.argc(), args.argv());
    const struct {
        const char* key;
        int i;
        float f;
    } rows[] = {{"abc", 0, 0.0f}, // not a number: 0, not the default
                {"mixed", 12, 12.0f}, {"blank", 42, 42.0f}, {"f", 2, 2.5f},     {"e", 1, 1000.0f},
                {"big", 3, INFINITY}, {"empty", 7, 7.5f},   {"absent", 7, 7.5f}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.key);
        EXPECT_EQ(ZORSimCommandLine::GetInt(row.key, 7), row.i);
        EXPECT_EQ(ZORSimCommandLine::ConstGetValueAsInt(row.key, 7), row.i);
        EXPECT_FLOAT_EQ(ZORSimCommandLine::GetFloat(row.key, 7.5f), row.f);
    }
    EXPECT_EQ(ZORSimCommandLine::ConstGetValue("u", "d"), cow_String("v\xc3\xa9"));
    EXPECT_EQ(ZORSimCommandLine::ConstGetValue("empty", "d"), cow_String("d"));
    // GetString hands back the caller's own default.
    const ZORString fallback("d");
    EXPECT_EQ(&ZORSimCommandLine::GetString("absent", fallback), &fallback);
}

TEST(CmdLineStore, BadStringsStopEveryQuery) {
    ZORSimUttAssertDisableExcReport();
    Argv args{"prog", "-k", "v"};
    ZORSimCommandLine set(args.argc(), args.argv());
    const ZORString bad("\xff");
    const ZORString good("k");
    const cow_String badCow("\xc3");
    ASSERT_TRUE(bad.IsBAD());
    EXPECT_THROW(ZORSimCommandLine::IsMember(bad, true), ZORSimExcBadStringArgument);
    EXPECT_THROW(ZORSimCommandLine::IsMember(bad, false), ZORSimExcBadStringArgument);
    EXPECT_THROW(ZORSimCommandLine::GetInt(bad, 0), ZORSimExcBadStringArgument);
    EXPECT_THROW(ZORSimCommandLine::GetFloat(bad, 0.0f), ZORSimExcBadStringArgument);
    EXPECT_THROW(ZORSimCommandLine::GetString(bad, good), ZORSimExcBadStringArgument);
    EXPECT_THROW(ZORSimCommandLine::GetString(good, bad), ZORSimExcBadStringArgument);
    EXPECT_THROW(ZORSimCommandLine::ConstGetValue(badCow, "d"), ZORSimExcBadStringArgument);
    EXPECT_THROW(ZORSimCommandLine::ConstGetValue("k", badCow), ZORSimExcBadStringArgument);
    EXPECT_THROW(ZORSimCommandLine::ConstGetValueAsInt(badCow, 0), ZORSimExcBadStringArgument);
    try {
        ZORSimCommandLine::IsMember(bad);
        ADD_FAILURE() << "bad key accepted";
    } catch (const ZORSimExcBadStringArgument& e) {
        EXPECT_EQ(e.GetCode(), 1109);
    }
    EXPECT_EQ(Value("k"), "v"); // the store is untouched
}

// In the C locale narrow arguments are UTF-8; other bytes end the fill with
// the base library's conversion error, and the store stays unfilled.
TEST(CmdLineStore, UndecodableNarrowArgumentLeavesTheStoreEmpty) {
    ASSERT_NE(std::setlocale(LC_CTYPE, "C"), nullptr);
    Argv broken{"prog", "-k", "caf\xe9"};
    try {
        ZORSimCommandLine set(broken.argc(), broken.argv());
        ADD_FAILURE() << "undecodable argument accepted";
    } catch (const ZORBasToUTF8Exception& e) {
        EXPECT_STREQ(e.Text(), "caf\xe9");
        EXPECT_STREQ(e.ThrowFile(), "ZORSimCommandLine");
        EXPECT_EQ(e.ThrowLine(), 258);
    }
    Argv good{"prog", "-k", "caf\xc3\xa9"};
    Singleton::Instance()->InitFromArgs(good.argc(), good.argv());
    EXPECT_EQ(Value("k"), "caf\xc3\xa9");
}

TEST(CmdLineSingleton, InstanceIsRegisteredUntilFinalize) {
    omi_SingletonRegistry* registry = omi_SingletonRegistry::Instance();
    const char* name = typeid(ZORSimCommandLineImpl).name();
    ZORSimCommandLineImpl* store = Singleton::Instance();
    EXPECT_EQ(Singleton::Instance(), store);
    EXPECT_TRUE(registry->Contains(name));
    const int count = registry->Count();
    Singleton::Finalize();
    EXPECT_FALSE(registry->Contains(name));
    EXPECT_EQ(registry->Count(), count - 1);
    Singleton::Finalize(); // nothing left: harmless
    Singleton::CreateLocks();
    Singleton::Lock();
    Singleton::Unlock();
    // A mutex kept by CreateLocks serves Instance, even when no new one can be made.
    ZORBasAtiThreadingModel::FailNextForTesting(1);
    EXPECT_NE(Singleton::Instance(), nullptr);
    EXPECT_TRUE(registry->Contains(name));
}

TEST(CmdLineSingletonDeathTest, MissingMutexOrStoreIsFatal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const struct {
        void (*run)();
        const char* fatal;
    } rows[] = {
        {[] { ZORBasAtiThreadingModel::FailNextForTesting(1), ZORSimCommandLine::NumArgs(); },
         "m_lock != 0 \\(ZORBasAtiGlobalSingleton:70\\)"},
        {[] { ZORBasAtiThreadingModel::FailNextForTesting(1), Singleton::CreateLocks(); },
         "m_lock != 0 \\(ZORBasAtiGlobalSingleton:70\\)"},
        {[] { mem_FailNextAllocationsForTesting(1), ZORSimCommandLine::IsMember("x"); },
         "inst2 != 0 \\(ZORBasAtiGlobalSingleton:85\\)"},
    };
    for (const auto& row : rows)
        EXPECT_DEATH((Singleton::Finalize(), row.run()),
                     std::string("PLXFatalError: AssertionFailed:") + row.fatal + "\n");
}

// At process end the singleton registry and the module's last stop both
// reach for a live store; whichever comes second finds it gone.
TEST(CmdLineSingleton, LiveStoreAtProcessEndIsDestroyedOnce) {
    zorsim_test::ExpectInFreshProcess([] {
        Argv args{"prog", "-k", "v"};
        ZORSimCommandLine set(args.argc(), args.argv());
        EXPECT_EQ(ZORSimCommandLine::NumPairs(), 1);
    });
}
