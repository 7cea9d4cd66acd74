// The command-line store: explicit vectors and the arguments file, the
// process's own arguments (in a child started with a known vector), and the
// singleton that holds the store.
#include "ZORSimTestSupport.h"

#include "ZORSimCommandLine.h"
#include "ZORSimContainersModule.h"
#include "ZORSimExcPoolFormat.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttOS.h"

#include "ZORBasException.h"

#include <algorithm>
#include <cmath>
#include <latch>
#include <thread>
#include <typeinfo>

using namespace zorsim_test;
using Strings = std::vector<std::string>;
using Singleton = ZORBasAtiGlobalSingleton<ZORSimCommandLineImpl>;

// Fills the store from `args` as main received them; what it wrote to standard error.
Strings Fill(Strings args) {
    std::vector<char*> argv;
    for (std::string& arg : args)
        argv.push_back(arg.data());
    argv.push_back(nullptr);
    StderrCapture capture;
    ZORSimCommandLine set(static_cast<int>(args.size()), argv.data());
    return Lines(capture.Finish());
}

Strings Stored() {
    Strings args;
    for (int i = 0; i < ZORSimCommandLine::NumArgs(); ++i)
        args.emplace_back(ZORSimCommandLine::GetPosition(i).c_str());
    return args;
}

namespace {

// The store as the children print it.
int PrintStore() {
    std::printf("args %d pairs %d\n", ZORSimCommandLine::NumArgs(), ZORSimCommandLine::NumPairs());
    for (int i = 0; i < ZORSimCommandLine::NumArgs(); ++i) {
        const ZORString& arg = ZORSimCommandLine::GetPosition(i);
        std::printf("arg %d%s [%s]\n", i, arg.IsBAD() ? " BAD" : "", arg.c_str());
    }
    return 0;
}

ZORSIM_SCENARIO(CmdLineStore) {
    PrintStore();
    std::printf("n=%d empty-key=%d\n", ZORSimCommandLine::GetInt("n", -1), ZORSimCommandLine::IsMember(""));
    return 0;
}
// Finalize at the layer's last stop lets the next query read the process's
// arguments; arguments that cannot be had leave an empty store, silently.
ZORSIM_SCENARIO(CmdLineFinalize) {
    Fill({"explicit", "-x"});
    int tally = 0;
    ZORSimUtt_finalize(tally);
    std::printf("tally %d registered %d\n", tally,
                omi_SingletonRegistry::Instance()->Contains(typeid(ZORSimCommandLineImpl).name()));
    PrintStore();
    Singleton::Finalize();
    ZORSimUttOSFault::Arm(ZORSimUttOS::Service::ProcessArguments, ZORSimUttOS::Error::IoError);
    std::printf("member %d\n", ZORSimCommandLine::IsMember("x", true));
    return PrintStore();
}

} // namespace

// A key takes the next argument unless that is a key too; the first of a
// repeated key wins. (The fuzz target checks the pairs against a model.)
TEST(CmdLineStore, PairsPositionalArgumentsAndNumbers) {
    const Strings args = {"-prog", "a", "-k", "v", "-k", "w", "-n", "-f", "3.4e39"};
    EXPECT_EQ(Fill(args), Strings{});
    EXPECT_EQ(Stored(), args);
    EXPECT_STREQ(ZORSimCommandLine::GetString("k", ZORString()).c_str(), "v");
    // Numbers as atoi and atof read them; a key without a value gives the default.
    EXPECT_EQ(ZORSimCommandLine::ConstGetValueAsInt("k", 7), 0); // no number: 0, not the default
    EXPECT_EQ(ZORSimCommandLine::GetInt("n", 7), 7);
    EXPECT_EQ(ZORSimCommandLine::GetFloat("f", 7.5f), INFINITY);
    EXPECT_EQ(ZORSimCommandLine::GetFloat("n", 7.5f), 7.5f);
    const ZORString fallback("d"); // GetString hands back the caller's own default
    EXPECT_EQ(&ZORSimCommandLine::GetString("absent", fallback), &fallback);
    // A filled store ignores a further fill of its own; each vector replaces the one before.
    Singleton::Instance()->InitFromArgs(0, nullptr);
    EXPECT_EQ(ZORSimCommandLine::NumArgs(), 9);
    ZORSimCommandLine none(0, nullptr);
    EXPECT_EQ(ZORSimCommandLine::NumArgs() + ZORSimCommandLine::NumPairs(), 0);
}

TEST(CmdLineStore, BadStringsStopEveryQuery) {
    ZORSimUttAssertDisableExcReport();
    const ZORString bad("\xff"), good("k");
    const cow_String badCow("\xc3");
    const std::function<void()> queries[] = {[&] { ZORSimCommandLine::IsMember(bad); },
                                             [&] { ZORSimCommandLine::IsMember(bad, true); },
                                             [&] { ZORSimCommandLine::GetInt(bad, 0); },
                                             [&] { ZORSimCommandLine::GetFloat(bad, 0.0f); },
                                             [&] { ZORSimCommandLine::GetString(bad, good); },
                                             [&] { ZORSimCommandLine::GetString(good, bad); },
                                             [&] { ZORSimCommandLine::ConstGetValue(badCow, "d"); },
                                             [&] { ZORSimCommandLine::ConstGetValue("k", badCow); },
                                             [&] { ZORSimCommandLine::ConstGetValueAsInt(badCow, 0); }};
    for (const auto& query : queries)
        EXPECT_THROW(query(), ZORSimExcBadStringArgument);
}

// Arguments from the file named after "-clargsfile", one a line; the
// arguments after its name are dropped, and the option counts only first.
TEST(CmdLineArgsFile, LinesBecomeArgumentsWithTheReadersLimitsAndWarnings) {
    ScopedEnv display("SIM_CMD_DISPLAY_BYTES", "1"); // for the process's own arguments only
    TempDir dir;
    const std::string kUnable = "ERROR: Unable to open command line arguments file ",
                      missing = dir / "missing", late = dir.File("late", "-n\n");
    Strings first1023(1024); // the 1024th line is one too many
    first1023[0] = "prog";
    // A piece without a line feed is reported, but kept: so is each piece of a
    // long line but the last (the fuzz target checks the cuts against a model).
    const std::tuple<Strings, Strings, Strings> rows[] = {
        {{"prog", "-clargsfile", dir.File("a", "-a\nlast"), "-dropped", "x"},
         {"ERROR: Command line argument in command line file is too long - maximum = 1023"},
         {"prog", "-a", "last"}},
        {{"prog", "-clargsfile", dir.File("b", std::string(1024, '\n'))},
         {"ERROR: There are more than 1024 command line arguments. All arguments beyond",
          "argument 1024 will be ignored."},
         first1023},
        {{"prog", "-clargsfile", missing}, {kUnable + missing}, {"prog"}},
        {{"prog", "-clargsfile"}, {kUnable + "(null)"}, {"prog"}},
        // Lines are taken whole, without trimming; empty lines count.
        {{"prog", "-clargsfile", dir.File("c", " s \n\n-n\n5\n")}, {}, {"prog", " s ", "", "-n", "5"}},
        {{"prog", "-x", "-clargsfile", late}, {}, {"prog", "-x", "-clargsfile", late}},
    };
    for (const auto& [args, warnings, stored] : rows) {
        SCOPED_TRACE(args.back());
        EXPECT_EQ(Fill(args), warnings);
        EXPECT_EQ(Stored(), stored);
    }
}

// Each child runs a scenario on the store of its own arguments. A dashed
// program name counts one pair too many, an empty key.
TEST(CmdLineProcess, StoreHoldsWhatMainReceived) {
    const std::tuple<const char*, Strings, std::string> rows[] = {
        {"CmdLineStore",
         {"-p", "-n", "5", "", "a b"},
         "args 5 pairs 2\narg 0 [-p]\narg 1 [-n]\narg 2 [5]\narg 3 []\narg 4 [a b]\nn=5 empty-key=1\n"},
        {"CmdLineFinalize",
         {"child", "-k"},
         "tally -1 registered 0\nargs 2 pairs 1\narg 0 [child]\narg 1 [-k]\nmember 0\nargs 0 pairs 0\n"},
    };
    for (const auto& [scenario, args, expected] : rows) {
        const ProcessResult run = RunScenario(scenario, args);
        EXPECT_EQ(run.exitCode, 0) << scenario;
        EXPECT_EQ(run.out + run.err, expected) << scenario;
    }
    // Each argument as UTF-16 units, low byte first, then as UTF-8 bytes; once.
    const ScopedEnv displayOn("SIM_CMD_DISPLAY_BYTES", "1");
    EXPECT_EQ(RunScenario("CmdLineStore", {"\xe2\x82\xac", "\xf0\x9d\x84\x9e"}).err,
              "=== Arg 0: \"\xe2\x82\xac\"\n===   Wide: ac 20\n===   UTF8: e2 82 ac\n"
              "=== Arg 1: \"\xf0\x9d\x84\x9e\"\n===   Wide: 34 d8 1e dd\n===   UTF8: f0 9d 84 9e\n");
}

// Threads racing to the first query of a fresh store all see one store,
// filled once; it is registered until Finalize.
TEST(CmdLineSingleton, ConcurrentFirstQueriesShareOneFilledStoreRegisteredUntilFinalize) {
    for (int round = 0; round < 20; ++round) {
        Singleton::Finalize();
        std::latch start(8);
        std::vector<std::pair<ZORSimCommandLineImpl*, const ZORString*>> seen(8);
        std::vector<std::jthread> threads;
        for (int t = 0; t < 8; ++t)
            threads.emplace_back([&, t] {
                start.arrive_and_wait();
                seen[t] = {Singleton::Instance(), &ZORSimCommandLine::GetPosition(0)};
            });
        threads.clear();
        EXPECT_EQ(std::count(seen.begin(), seen.end(), seen[0]), 8);
    }
    EXPECT_TRUE(omi_SingletonRegistry::Instance()->Contains(typeid(ZORSimCommandLineImpl).name()));
    Singleton::Finalize();
    Singleton::Finalize(); // nothing left: harmless
    // A mutex kept by CreateLocks serves Instance, even when no new one can be made.
    Singleton::CreateLocks();
    ZORBasAtiThreadingModel::FailNextForTesting(1);
    EXPECT_NE(Singleton::Instance(), nullptr);
}

TEST(CmdLineSingletonDeathTest, MissingMutexOrStoreIsFatal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const std::pair<void (*)(), const char*> rows[] = {
        {[] { ZORBasAtiThreadingModel::FailNextForTesting(1), ZORSimCommandLine::NumArgs(); },
         "m_lock != 0 \\(ZORBasAtiGlobalSingleton:70"},
        {[] { ZORBasAtiThreadingModel::FailNextForTesting(1), Singleton::CreateLocks(); },
         "m_lock != 0 \\(ZORBasAtiGlobalSingleton:70"},
        {[] { mem_FailNextAllocationsForTesting(1), ZORSimCommandLine::IsMember("x"); },
         "inst2 != 0 \\(ZORBasAtiGlobalSingleton:85"},
    };
    for (const auto& [run, fatal] : rows)
        EXPECT_DEATH((Singleton::Finalize(), run()),
                     std::string("PLXFatalError: AssertionFailed:") + fatal + "\\)\n");
}
