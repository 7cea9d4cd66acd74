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
#include <fcntl.h>
#include <fstream>
#include <latch>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <typeinfo>

extern char** environ;

using namespace zorsim_cmdline_test;
using zorsim_test::Lines;

namespace {

constexpr const char* kScenarioVariable = "ZORSIM_CMDLINE_SCENARIO";

void PrintStore() {
    std::printf("args %d pairs %d\n", ZORSimCommandLine::NumArgs(), ZORSimCommandLine::NumPairs());
    for (int i = 0; i < ZORSimCommandLine::NumArgs(); ++i) {
        const ZORString& arg = ZORSimCommandLine::GetPosition(i);
        std::printf("arg %d%s [%s]\n", i, arg.IsBAD() ? " BAD" : "", arg.c_str());
    }
}

int RunScenario(const std::string& name) {
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
        std::printf("tally %d registered %d\n", tally,
                    omi_SingletonRegistry::Instance()->Contains(typeid(ZORSimCommandLineImpl).name()) ? 1
                                                                                                      : 0);
        PrintStore();
    } else if (name == "display") {
        ZORSimCommandLine::NumArgs();
        ZORSimCommandLine::NumPairs(); // filled, and shown, once
    } else if (name == "unavailable") {
        ZORSimUttOSFault::Arm("ProcessArguments", EIO);
        PrintStore();
        std::printf("member %d\n", ZORSimCommandLine::IsMember("x", true) ? 1 : 0);
    } else {
        return 2;
    }
    return 0;
}

// In a child started by the cases below: run the scenario and end here.
const bool g_child = [] {
    const char* scenario = std::getenv(kScenarioVariable);
    if (scenario == nullptr)
        return false;
    const int status = RunScenario(scenario);
    std::fflush(stdout);
    std::fflush(stderr);
    std::_Exit(status);
}();

struct ChildResult {
    int status = -1;
    std::string out;
    std::string err;
};

std::string ReadAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Starts this program with exactly `args` (argument 0 included) and the
// scenario in its environment; SIM_CMD_DISPLAY_BYTES is set only on request.
ChildResult RunChild(const std::string& scenario, std::vector<std::string> args, bool display = false) {
    ChildResult result;
    TempDir dir;
    if (!dir.Ok())
        return result;
    const std::string outPath = dir.Path() + "/out";
    const std::string errPath = dir.Path() + "/err";
    std::vector<std::string> env;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (!zorsim_test::StartsWith(text, std::string(kScenarioVariable) + "=") &&
            !zorsim_test::StartsWith(text, "SIM_CMD_DISPLAY_BYTES="))
            env.push_back(text);
    }
    env.push_back(std::string(kScenarioVariable) + "=" + scenario);
    if (display)
        env.push_back("SIM_CMD_DISPLAY_BYTES="); // set, whatever its value
    Argv argv(std::move(args));
    Argv envp(std::move(env));

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t pid = 0;
    const int rc = posix_spawn(&pid, "/proc/self/exe", &actions, nullptr, argv.argv(), envp.argv());
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0)
        return result;
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.out = ReadAll(outPath);
    result.err = ReadAll(errPath);
    return result;
}

} // namespace

TEST(CmdLineProcess, StoreHoldsWhatMainReceived) {
    const ChildResult child =
        RunChild("dump", {"-prog", "-n", "5", "caf\xc3\xa9", "", "bad\xff", "two words", "-v"});
    ASSERT_EQ(child.status, 0) << child.err;
    EXPECT_EQ(Lines(child.out), (std::vector<std::string>{
                                    "args 8 pairs 3",
                                    "arg 0 [-prog]",
                                    "arg 1 [-n]",
                                    "arg 2 [5]",
                                    "arg 3 [caf\xc3\xa9]",
                                    "arg 4 []",
                                    // A byte no codeset decodes is kept, as a BAD string.
                                    "arg 5 BAD [bad\xed\xb3\xbf]",
                                    "arg 6 [two words]",
                                    "arg 7 [-v]",
                                    // The dashed program name adds an empty pair.
                                    "n=5 v=dflt empty-key=1",
                                }));
    EXPECT_EQ(child.err, "");
}

TEST(CmdLineProcess, FinalizeAtTheLastStopLetsTheNextQueryReadTheProcessArguments) {
    const ChildResult child = RunChild("finalize", {"child", "-k", "v"});
    ASSERT_EQ(child.status, 0) << child.err;
    EXPECT_EQ(Lines(child.out),
              (std::vector<std::string>{"explicit 2", "tally -1 registered 0", "args 3 pairs 1",
                                        "arg 0 [child]", "arg 1 [-k]", "arg 2 [v]"}));
}

TEST(CmdLineProcess, ArgumentsThatCannotBeHadLeaveAnEmptyStoreSilently) {
    const ChildResult child = RunChild("unavailable", {"child", "-x"});
    ASSERT_EQ(child.status, 0) << child.err;
    EXPECT_EQ(Lines(child.out), (std::vector<std::string>{"args 0 pairs 0", "member 0"}));
    EXPECT_EQ(child.err, "");
}

TEST(CmdLineProcess, ByteDisplayShowsUTF16UnitsLowByteFirstAndUTF8Bytes) {
    const ChildResult child =
        RunChild("display", {"prog", "\xc3\xa9", "\xf0\x9d\x84\x9e", "bad\xff", ""}, true);
    ASSERT_EQ(child.status, 0) << child.err;
    EXPECT_EQ(Lines(child.err), (std::vector<std::string>{
                                    "=== Arg 0: \"prog\"",
                                    "===   Wide: 70 00 72 00 6f 00 67 00",
                                    "===   UTF8: 70 72 6f 67",
                                    "=== Arg 1: \"\xc3\xa9\"",
                                    "===   Wide: e9 00",
                                    "===   UTF8: c3 a9",
                                    "=== Arg 2: \"\xf0\x9d\x84\x9e\"",
                                    "===   Wide: 34 d8 1e dd",
                                    "===   UTF8: f0 9d 84 9e",
                                    "=== Arg 3: \"bad\xed\xb3\xbf\"",
                                    "===   Wide: 62 00 61 00 64 00 ff dc",
                                    "===   UTF8: 62 61 64 ed b3 bf",
                                    "=== Arg 4: \"\"",
                                    "===   Wide:",
                                    "===   UTF8:",
                                }));

    // Nothing is shown without the variable,
    EXPECT_EQ(RunChild("display", {"prog", "\xc3\xa9"}).err, "");
    // nor when the arguments come from an explicit vector.
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
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t)
            threads.emplace_back([&, t] {
                start.arrive_and_wait();
                stores[t] = ZORBasAtiGlobalSingleton<ZORSimCommandLineImpl>::Instance();
                counts[t] = t % 2 == 0 ? ZORSimCommandLine::NumArgs() : ZORSimCommandLine::NumPairs();
                ZORSimCommandLine::IsMember("no-such-key", true);
                names[t] = &ZORSimCommandLine::GetPosition(0);
            });
        for (std::thread& thread : threads)
            thread.join();
        for (int t = 1; t < kThreads; ++t) {
            EXPECT_EQ(stores[t], stores[0]);
            EXPECT_EQ(names[t], names[0]);
            EXPECT_EQ(counts[t], counts[t % 2]);
        }
        EXPECT_GE(counts[0], 1);
    }
}
