// The store filled from the process's own arguments. Each case starts this
// test program again with a known argument vector; the child runs one
// scenario before the test framework starts, prints what the store holds and
// ends.
#include "CmdLineTestSupport.h"
#include "ZORSimTestSupport.h"

#include "ZORSimCommandLine.h"
#include "ZORSimContainersModule.h"

#include "ZORSimUttOS.h"

#include <cerrno>
#include <cstdio>
#include <latch>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <typeinfo>

extern char** environ;

using namespace zorsim_cmdline_test;
using Strings = std::vector<std::string>;

namespace {

constexpr const char* kScenarioVariable = "ZORSIM_CMDLINE_SCENARIO";

void PrintStore() {
    std::printf("args %d pairs %d\n", ZORSimCommandLine::NumArgs(), ZORSimCommandLine::NumPairs());
    for (int i = 0; i < ZORSimCommandLine::NumArgs(); ++i) {
        const ZORString& arg = ZORSimCommandLine::GetPosition(i);
        std::printf("arg %d%s [%s]\n", i, arg.IsBAD() ? " BAD" : "", arg.c_str());
    }
}

void RunScenario(const std::string& name) {
    if (name == "dump") {
        PrintStore();
        std::printf("n=%d v=%s empty-key=%d\n", ZORSimCommandLine::GetInt("n", -1),
                    ZORSimCommandLine::GetString("v", "dflt").c_str(),
                    ZORSimCommandLine::IsMember("") ? 1 : 0);
    } else if (name == "finalize") {
        Argv given{"explicit", "-x"};
        ZORSimCommandLine set(given.argc(), given.argv());
        std::printf("explicit %d\n", ZORSimCommandLine::NumArgs());
        int tally = 0;
        ZORSimUtt_finalize(tally); // the layer's last stop
        const bool registered =
            omi_SingletonRegistry::Instance()->Contains(typeid(ZORSimCommandLineImpl).name());
        std::printf("tally %d registered %d\n", tally, registered ? 1 : 0);
        PrintStore();
    } else if (name == "display") {
        ZORSimCommandLine::NumArgs();
        ZORSimCommandLine::NumPairs(); // filled, and shown, once
    } else if (name == "unavailable") {
        ZORSimUttOSFault::Arm("ProcessArguments", EIO);
        PrintStore();
        std::printf("member %d\n", ZORSimCommandLine::IsMember("x", true) ? 1 : 0);
    }
}

// In a child started by the cases below: run the scenario and end here.
const bool g_child = [] {
    const char* scenario = std::getenv(kScenarioVariable);
    if (scenario == nullptr)
        return false;
    RunScenario(scenario);
    std::fflush(stdout);
    std::_Exit(0);
}();

// Starts this program with exactly `args` (argument 0 included) and the
// scenario in its environment; SIM_CMD_DISPLAY_BYTES is set only on request.
// Returns its standard output and error together.
std::string RunChild(const char* scenario, const Strings& args, bool display = false) {
    zorsim_test::ScopedEnv scenarioOn(kScenarioVariable, scenario);
    zorsim_test::ScopedEnv displayOn("SIM_CMD_DISPLAY_BYTES", display ? "" : nullptr); // any value
    Argv argv(args);
    std::FILE* out = std::tmpfile();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fileno(out), 1);
    posix_spawn_file_actions_adddup2(&actions, fileno(out), 2);
    pid_t pid = 0;
    int status = -1;
    std::string result;
    EXPECT_EQ(posix_spawn(&pid, "/proc/self/exe", &actions, nullptr, argv.argv(), environ), 0);
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    std::rewind(out);
    for (int c; (c = std::fgetc(out)) != EOF;)
        result += static_cast<char>(c);
    posix_spawn_file_actions_destroy(&actions);
    std::fclose(out);
    return result;
}

} // namespace

// Each row: the scenario, the child's argument vector, whether the byte
// display is on, and the child's whole output.
TEST(CmdLineProcess, StoreHoldsWhatMainReceived) {
    const struct {
        const char* scenario;
        Strings args;
        bool display;
        std::string output;
    } rows[] = {
        // A byte no codeset decodes is kept, as a BAD string; the dashed
        // program name adds an empty pair.
        {"dump",
         {"-prog", "-n", "5", "caf\xc3\xa9", "", "bad\xff", "two words", "-v"},
         false,
         "args 8 pairs 3\narg 0 [-prog]\narg 1 [-n]\narg 2 [5]\narg 3 [caf\xc3\xa9]\narg 4 []\n"
         "arg 5 BAD [bad\xed\xb3\xbf]\narg 6 [two words]\narg 7 [-v]\nn=5 v=dflt empty-key=1\n"},
        // Finalize at the layer's last stop lets the next query read the
        // process's arguments.
        {"finalize",
         {"child", "-k", "v"},
         false,
         "explicit 2\ntally -1 registered 0\nargs 3 pairs 1\narg 0 [child]\narg 1 [-k]\narg 2 [v]\n"},
        // Arguments that cannot be had leave an empty store, silently.
        {"unavailable", {"child", "-x"}, false, "args 0 pairs 0\nmember 0\n"},
        // UTF-16 units low byte first, then the UTF-8 bytes.
        {"display",
         {"prog", "\xc3\xa9", "\xf0\x9d\x84\x9e", "bad\xff", ""},
         true,
         "=== Arg 0: \"prog\"\n===   Wide: 70 00 72 00 6f 00 67 00\n===   UTF8: 70 72 6f 67\n"
         "=== Arg 1: \"\xc3\xa9\"\n===   Wide: e9 00\n===   UTF8: c3 a9\n"
         "=== Arg 2: \"\xf0\x9d\x84\x9e\"\n===   Wide: 34 d8 1e dd\n===   UTF8: f0 9d 84 9e\n"
         "=== Arg 3: \"bad\xed\xb3\xbf\"\n===   Wide: 62 00 61 00 64 00 ff dc\n"
         "===   UTF8: 62 61 64 ed b3 bf\n=== Arg 4: \"\"\n===   Wide:\n===   UTF8:\n"},
        {"display", {"prog", "\xc3\xa9"}, false, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.scenario);
        EXPECT_EQ(RunChild(row.scenario, row.args, row.display), row.output);
    }
}

TEST(CmdLineProcess, NoByteDisplayForAnExplicitVector) {
    zorsim_test::ScopedEnv displayOn("SIM_CMD_DISPLAY_BYTES", "1");
    Argv given{"prog", "\xc3\xa9"};
    zorsim_test::StderrCapture capture;
    ZORSimCommandLine set(given.argc(), given.argv());
    EXPECT_EQ(ZORSimCommandLine::NumArgs(), 2);
    EXPECT_EQ(capture.Finish(), "");
}

// Threads racing to the first query of a fresh store all see one store,
// filled once.
TEST(CmdLineProcess, ConcurrentFirstQueriesShareOneFilledStore) {
    constexpr int kThreads = 8;
    for (int round = 0; round < 20; ++round) {
        ZORBasAtiGlobalSingleton<ZORSimCommandLineImpl>::Finalize();
        std::latch start(kThreads);
        std::vector<int> counts(kThreads);
        std::vector<const ZORString*> names(kThreads);
        std::vector<ZORSimCommandLineImpl*> stores(kThreads);
        std::vector<std::jthread> threads;
        for (int t = 0; t < kThreads; ++t)
            threads.emplace_back([&, t] {
                start.arrive_and_wait();
                stores[t] = ZORBasAtiGlobalSingleton<ZORSimCommandLineImpl>::Instance();
                counts[t] = t % 2 == 0 ? ZORSimCommandLine::NumArgs() : ZORSimCommandLine::NumPairs();
                ZORSimCommandLine::IsMember("no-such-key", true);
                names[t] = &ZORSimCommandLine::GetPosition(0);
            });
        threads.clear(); // joins
        for (int t = 1; t < kThreads; ++t) {
            EXPECT_EQ(stores[t], stores[0]);
            EXPECT_EQ(names[t], names[0]);
            EXPECT_EQ(counts[t], counts[t % 2]);
        }
        EXPECT_GE(counts[0], 1);
    }
}
