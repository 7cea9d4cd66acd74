// The store filled from explicit vectors: pairs, positional arguments and
// every query; the singleton that holds it and its fatal errors.
#include "CmdLineTestSupport.h"
#include "ZORSimTestSupport.h"

#include "ZORSimCommandLine.h"
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

std::vector<std::string> StoredArgs() {
    std::vector<std::string> args;
    for (int i = 0; i < ZORSimCommandLine::NumArgs(); ++i)
        args.emplace_back(ZORSimCommandLine::GetPosition(i).c_str());
    return args;
}

std::string Value(const char* key, const char* fallback = "<default>") {
    const ZORString fallbackString(fallback);
    return ZORSimCommandLine::GetString(key, fallbackString).c_str();
}

} // namespace

TEST(CmdLineStore, KeysTakeTheFollowingNonKeyAndEveryArgumentStaysPositional) {
    Argv args{"prog", "a", "-k", "v", "b", "-n", "5", "-v"};
    ZORSimCommandLine set(args.argc(), args.argv());
    EXPECT_EQ(StoredArgs(), (std::vector<std::string>{"prog", "a", "-k", "v", "b", "-n", "5", "-v"}));
    EXPECT_EQ(ZORSimCommandLine::NumArgs(), 8);
    EXPECT_EQ(ZORSimCommandLine::NumPairs(), 3);
    EXPECT_EQ(Value("k"), "v");
    EXPECT_EQ(Value("n"), "5");
    // A key at the end has an empty value: present, but queries give the default.
    EXPECT_TRUE(ZORSimCommandLine::IsMember("v"));
    EXPECT_EQ(Value("v"), "<default>");
    EXPECT_EQ(ZORSimCommandLine::GetInt("v", 7), 7);
    // Positional arguments and the program name are no keys.
    for (const char* notKey : {"a", "b", "prog", "5", "-k", "x"})
        EXPECT_FALSE(ZORSimCommandLine::IsMember(notKey)) << notKey;
}

TEST(CmdLineStore, EmptyValuesRepeatedKeysAndKeysThatLookLikeNumbers) {
    Argv args{"prog", "-a", "-b", "", "-k", "first", "-k", "second", "-n", "-5", "-", "dash"};
    ZORSimCommandLine set(args.argc(), args.argv());
    EXPECT_EQ(ZORSimCommandLine::NumPairs(), 7);
    EXPECT_TRUE(ZORSimCommandLine::IsMember("a")); // followed by another key
    EXPECT_EQ(Value("a"), "<default>");
    EXPECT_EQ(Value("b"), "<default>"); // an empty argument as its value
    EXPECT_EQ(Value("k"), "first");     // the first of a repeated key wins
    // "-5" is a key of its own, so n has no value.
    EXPECT_EQ(ZORSimCommandLine::GetInt("n", 7), 7);
    EXPECT_TRUE(ZORSimCommandLine::IsMember("5"));
    EXPECT_EQ(Value(""), "dash"); // "-" alone is the empty key
}

TEST(CmdLineStore, ProgramNameBeginningWithDashCountsOneEmptyPairTooMany) {
    Argv dashed{"-prog", "-a", "1"};
    ZORSimCommandLine set(dashed.argc(), dashed.argv());
    EXPECT_EQ(ZORSimCommandLine::NumPairs(), 2);
    EXPECT_TRUE(ZORSimCommandLine::IsMember("")); // the surplus pair, left empty
    EXPECT_EQ(Value(""), "<default>");
    EXPECT_FALSE(ZORSimCommandLine::IsMember("prog"));
    EXPECT_EQ(Value("a"), "1");

    Argv plain{"prog", "-a", "1"};
    ZORSimCommandLine reset(plain.argc(), plain.argv());
    EXPECT_EQ(ZORSimCommandLine::NumPairs(), 1);
    EXPECT_FALSE(ZORSimCommandLine::IsMember(""));
}

TEST(CmdLineStore, FewArgumentsGiveNoPairs) {
    ZORSimCommandLine none(0, nullptr);
    EXPECT_EQ(ZORSimCommandLine::NumArgs(), 0);
    EXPECT_EQ(ZORSimCommandLine::NumPairs(), 0);
    EXPECT_FALSE(ZORSimCommandLine::IsMember("x", true));

    Argv one{"-x"};
    ZORSimCommandLine set(one.argc(), one.argv());
    EXPECT_EQ(ZORSimCommandLine::NumArgs(), 1);
    EXPECT_EQ(ZORSimCommandLine::NumPairs(), 1); // counted, never filled
    EXPECT_FALSE(ZORSimCommandLine::IsMember("x"));
}

TEST(CmdLineStore, CaseInsensitiveLookupIgnoresAsciiCaseOnly) {
    Argv args{"prog", "-Key", "V", "-\xc3\x89t\xc3\xa9", "x"};
    ZORSimCommandLine set(args.argc(), args.argv());
    EXPECT_TRUE(ZORSimCommandLine::IsMember("Key"));
    EXPECT_FALSE(ZORSimCommandLine::IsMember("key"));
    EXPECT_FALSE(ZORSimCommandLine::IsMember("key", false));
    EXPECT_TRUE(ZORSimCommandLine::IsMember("key", true));
    EXPECT_TRUE(ZORSimCommandLine::IsMember("KEY", true));
    EXPECT_FALSE(ZORSimCommandLine::IsMember("ke", true));
    // Values are looked up by exact case.
    EXPECT_EQ(Value("key"), "<default>");
    EXPECT_EQ(Value("Key"), "V");
    // Non-ASCII letters keep their case.
    EXPECT_TRUE(ZORSimCommandLine::IsMember("\xc3\x89T\xc3\xa9", true));
    EXPECT_FALSE(ZORSimCommandLine::IsMember("\xc3\xa9t\xc3\xa9", true));
}

TEST(CmdLineStore, NumbersFollowAtoiAndAtof) {
    Argv args{"prog", "-abc", "abc", "-mixed", "12abc", "-blank", " 42",   "-f",
              "2.5",  "-e",   "1e3", "-neg",   "x",     "-big",   "3.4e39"};
    ZORSimCommandLine set(args.argc(), args.argv());
    EXPECT_EQ(ZORSimCommandLine::GetInt("abc", 7), 0); // not a number: 0, not the default
    EXPECT_FLOAT_EQ(ZORSimCommandLine::GetFloat("abc", 7.5f), 0.0f);
    EXPECT_EQ(ZORSimCommandLine::GetInt("mixed", 7), 12);
    EXPECT_EQ(ZORSimCommandLine::GetInt("blank", 7), 42);
    EXPECT_FLOAT_EQ(ZORSimCommandLine::GetFloat("f", 0.0f), 2.5f);
    EXPECT_EQ(ZORSimCommandLine::GetInt("f", 0), 2);
    EXPECT_EQ(ZORSimCommandLine::GetInt("e", 0), 1);
    EXPECT_FLOAT_EQ(ZORSimCommandLine::GetFloat("e", 0.0f), 1000.0f);
    EXPECT_FLOAT_EQ(ZORSimCommandLine::GetFloat("absent", 1.25f), 1.25f);
    EXPECT_EQ(ZORSimCommandLine::GetInt("absent", -3), -3);
    EXPECT_TRUE(std::isinf(ZORSimCommandLine::GetFloat("big", 0.0f)));
}

TEST(CmdLineStore, GetStringReturnsTheCallersDefaultItself) {
    Argv args{"prog", "-k", "v"};
    ZORSimCommandLine set(args.argc(), args.argv());
    const ZORString fallback("d");
    EXPECT_EQ(&ZORSimCommandLine::GetString("absent", fallback), &fallback);
    EXPECT_EQ(ZORSimCommandLine::GetString("k", fallback), ZORString("v"));
}

TEST(CmdLineStore, CowStringQueriesConvertAndAnswerLikeTheOthers) {
    Argv args{"prog", "-k", "v\xc3\xa9", "-n", "12", "-e"};
    ZORSimCommandLine set(args.argc(), args.argv());
    EXPECT_EQ(ZORSimCommandLine::ConstGetValue("k", "d"), cow_String("v\xc3\xa9"));
    EXPECT_EQ(ZORSimCommandLine::ConstGetValue("e", "d"), cow_String("d"));
    EXPECT_EQ(ZORSimCommandLine::ConstGetValue("absent", ""), cow_String(""));
    EXPECT_EQ(ZORSimCommandLine::ConstGetValueAsInt("n", 3), 12);
    EXPECT_EQ(ZORSimCommandLine::ConstGetValueAsInt("e", 3), 3);
}

TEST(CmdLineStore, BadStringsStopEveryQuery) {
    ZORSimUttAssertDisableExcReport();
    Argv args{"prog", "-k", "v"};
    ZORSimCommandLine set(args.argc(), args.argv());
    const ZORString bad("\xff");
    const ZORString good("k");
    const cow_String badCow("\xc3");
    ASSERT_TRUE(bad.IsBAD());
    EXPECT_THROW(ZORSimCommandLine::IsMember(bad), ZORSimExcBadStringArgument);
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
    } catch (const ZORBasException& e) {
        EXPECT_EQ(e.GetCode(), 1109);
    }
    EXPECT_EQ(Value("k"), "v"); // the store is untouched
}

TEST(CmdLineStore, ASecondVectorReplacesTheFirst) {
    Argv first{"one", "-a", "1"};
    ZORSimCommandLine set(first.argc(), first.argv());
    EXPECT_EQ(Value("a"), "1");

    Argv second{"two", "-b", "2", "x"};
    ZORSimCommandLine reset(second.argc(), second.argv());
    EXPECT_EQ(StoredArgs(), (std::vector<std::string>{"two", "-b", "2", "x"}));
    EXPECT_FALSE(ZORSimCommandLine::IsMember("a"));
    EXPECT_EQ(Value("b"), "2");

    // A filled store ignores a further fill of its own.
    Argv third{"three"};
    Singleton::Instance()->InitFromArgs(third.argc(), third.argv());
    EXPECT_EQ(ZORSimCommandLine::NumArgs(), 4);
}

// In the C locale narrow arguments are UTF-8; other bytes end the fill with
// the base library's conversion error, and the store stays empty.
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
    // Still unfilled: an explicit fill of the same store is taken.
    Argv good{"prog", "-k", "caf\xc3\xa9"};
    Singleton::Instance()->InitFromArgs(good.argc(), good.argv());
    EXPECT_EQ(Value("k"), "caf\xc3\xa9");
}

TEST(CmdLineSingleton, InstanceIsRegisteredUntilFinalize) {
    omi_SingletonRegistry* registry = omi_SingletonRegistry::Instance();
    ASSERT_NE(registry, nullptr);
    const char* name = typeid(ZORSimCommandLineImpl).name();
    ZORSimCommandLineImpl* store = Singleton::Instance();
    EXPECT_EQ(Singleton::Instance(), store);
    EXPECT_TRUE(registry->Contains(name));
    const int count = registry->Count();
    Singleton::Finalize();
    EXPECT_FALSE(registry->Contains(name));
    EXPECT_EQ(registry->Count(), count - 1);
    Singleton::Finalize(); // nothing left: harmless
    // Lock and Unlock work on a lock made on demand.
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
    EXPECT_DEATH(
        {
            Singleton::Finalize();
            ZORBasAtiThreadingModel::FailNextForTesting(1);
            ZORSimCommandLine::NumArgs();
        },
        "PLXFatalError: AssertionFailed:m_lock != 0 \\(ZORBasAtiGlobalSingleton:70\\)\n");
    EXPECT_DEATH(
        {
            Singleton::Finalize();
            ZORBasAtiThreadingModel::FailNextForTesting(1);
            Singleton::CreateLocks();
        },
        "PLXFatalError: AssertionFailed:m_lock != 0 \\(ZORBasAtiGlobalSingleton:70\\)\n");
    EXPECT_DEATH(
        {
            Singleton::Finalize();
            mem_FailNextAllocationsForTesting(1);
            ZORSimCommandLine::IsMember("x");
        },
        "PLXFatalError: AssertionFailed:inst2 != 0 \\(ZORBasAtiGlobalSingleton:85\\)\n");
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
