// Start and stop of the library: use counts, tallies and the order of hooks.
//
// The counters are process-wide and unguarded, so every scenario runs in a
// fresh process (a death-test child that re-executes this program). Loading
// the library already counts as one process attach, so each child starts
// with a use count of 1 and everything started once. A child checks as it
// goes and exits with 1 at the first mismatch, after saying what differed.

#include "ZORSimContainersLoader.h"
#include "ZORSimContainersModule.h"

#include "ZORBasModules.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#if defined(__linux__)
#    include <dlfcn.h>
#    include <unistd.h>
#    define ZORSIM_TEST_INTERPOSE 1
#endif

namespace {

using Journal = std::vector<std::string>;

const Journal kStart = {"ZORBasXmlParser_initialize", "ZORBasShared_initialize",
                        "ZORBasCoreUtils_initialize", "ZORBasGenericsLib_initialize",
                        "ZORBasAlloc_initialize",     "ZORSimUtt_initialize"};
const Journal kStop = {"ZORSimUtt_finalize",       "ZORBasAlloc_finalize",  "ZORBasGenericsLib_finalize",
                       "ZORBasCoreUtils_finalize", "ZORBasShared_finalize", "ZORBasXmlParser_finalize"};

// What a start from nothing adds to the caller's tally: 1 before the hooks,
// 1 from each of the five base libraries and the utility layer, and 1 for
// the specific count.
constexpr int kFullStart = 8;

Journal ReadJournal() {
    Journal entries;
    for (int i = 0; i < ZORBasHookJournal::Size(); ++i)
        entries.emplace_back(ZORBasHookJournal::At(i));
    return entries;
}

std::string Show(const Journal& journal) {
    std::string text = "{";
    for (const std::string& entry : journal)
        text += " " + entry;
    return text + " }";
}

[[noreturn]] void Fail(const char* file, int line, const std::string& what) {
    std::fprintf(stderr, "%s:%d: %s\n", file, line, what.c_str());
    std::fflush(stderr);
    std::_Exit(1);
}

#define CHILD_EQ(actual, expected)                                                                           \
    do {                                                                                                     \
        const long long a_ = (actual), e_ = (expected);                                                      \
        if (a_ != e_)                                                                                        \
            Fail(__FILE__, __LINE__,                                                                         \
                 std::string(#actual) + " is " + std::to_string(a_) + ", expected " + std::to_string(e_));   \
    } while (0)

// Compares the hooks called since the last ClearJournal.
#define CHILD_JOURNAL(expected)                                                                              \
    do {                                                                                                     \
        const Journal j_ = ReadJournal();                                                                    \
        if (j_ != (expected))                                                                                \
            Fail(__FILE__, __LINE__, "journal " + Show(j_) + ", expected " + Show(expected));                \
    } while (0)

void ClearJournal() {
    ZORBasHookJournal::Clear();
}

// Takes the use count from the loader's 1 to 0, stopping everything.
void StopLoaderUse() {
    ClearJournal();
    CHILD_EQ(DllMain(nullptr, ZORSIM_PROCESS_DETACH, nullptr), 1);
    CHILD_JOURNAL(kStop);
    ClearJournal();
}

// The use count without changing it (valid while it is above 0).
int UseCount() {
    const int count = ZORSimContainers_initializeC() - 1;
    ZORSimContainers_finalizeC();
    return count;
}

} // namespace

#if defined(ZORSIM_TEST_INTERPOSE)
// The base hooks are interposed here so that the tally each one receives can
// be seen; each records the value and calls the base library's own hook.
namespace {
struct TallySeen {
    const char* hook;
    int tally;
};
TallySeen g_seen[64];
int g_seenCount = 0;
bool g_announceUnload = false;

void Forward(const char* hook, int& tally) {
    if (g_seenCount < 64)
        g_seen[g_seenCount++] = {hook, tally};
    if (g_announceUnload && std::strcmp(hook, "ZORBasXmlParser_finalize") == 0) {
        static const char line[] = "unload reached ZORBasXmlParser_finalize\n";
        (void)!write(2, line, sizeof line - 1);
    }
    const std::string mangled = "_Z" + std::to_string(std::strlen(hook)) + hook + "Ri";
    auto real = reinterpret_cast<void (*)(int&)>(dlsym(RTLD_NEXT, mangled.c_str()));
    if (real == nullptr)
        Fail(__FILE__, __LINE__, std::string("no base hook ") + hook);
    real(tally);
}

// The tallies seen by the interposed hooks since the last call.
std::vector<std::pair<std::string, int>> TakeSeen() {
    std::vector<std::pair<std::string, int>> seen;
    for (int i = 0; i < g_seenCount; ++i)
        seen.emplace_back(g_seen[i].hook, g_seen[i].tally);
    g_seenCount = 0;
    return seen;
}
} // namespace

#    define ZORSIM_INTERPOSE(hook)                                                                           \
        __attribute__((visibility("default"))) void hook(int& tally) {                                       \
            Forward(#hook, tally);                                                                           \
        }
ZORSIM_INTERPOSE(ZORBasXmlParser_initialize)
ZORSIM_INTERPOSE(ZORBasShared_initialize)
ZORSIM_INTERPOSE(ZORBasCoreUtils_initialize)
ZORSIM_INTERPOSE(ZORBasGenericsLib_initialize)
ZORSIM_INTERPOSE(ZORBasAlloc_initialize)
ZORSIM_INTERPOSE(ZORBasXmlParser_finalize)
ZORSIM_INTERPOSE(ZORBasShared_finalize)
ZORSIM_INTERPOSE(ZORBasCoreUtils_finalize)
ZORSIM_INTERPOSE(ZORBasGenericsLib_finalize)
ZORSIM_INTERPOSE(ZORBasAlloc_finalize)
#    undef ZORSIM_INTERPOSE
#endif

class ZORSimContainersModule : public ::testing::Test {
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

// Runs a scenario in a child process that must end with status 0.
#define IN_FRESH_PROCESS(scenario)                                                                           \
    EXPECT_EXIT(                                                                                             \
        {                                                                                                    \
            scenario();                                                                                      \
            std::exit(0);                                                                                    \
        },                                                                                                   \
        ::testing::ExitedWithCode(0), "")

static void LoadingTheLibraryStartedEverythingOnce() {
    CHILD_JOURNAL(kStart);
    // Only the loader's use is outstanding: the plain entry sees 2.
    CHILD_EQ(ZORSimContainers_initializeC(), 2);
    ZORSimContainers_finalizeC();
    CHILD_EQ(ZORSimContainers_Marker(), 1);
    CHILD_JOURNAL(kStart);
}
TEST_F(ZORSimContainersModule, LoadingTheLibraryStartedEverythingOnce) {
    IN_FRESH_PROCESS(LoadingTheLibraryStartedEverythingOnce);
}

#if defined(ZORSIM_TEST_INTERPOSE)
TEST_F(ZORSimContainersModule, UnloadingTheLibraryStopsEverything) {
    EXPECT_EXIT(
        {
            g_announceUnload = true;
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "unload reached ZORBasXmlParser_finalize");
}
#endif

static void FirstStartFromZeroAndLastStopCountAndOrderTheHooks() {
    StopLoaderUse();
    int tally = 100;
    ZORSimContainers_initialize(tally);
    CHILD_EQ(tally, 100 + kFullStart);
    CHILD_JOURNAL(kStart);

    ClearJournal();
    ZORSimContainers_finalize(tally);
    CHILD_EQ(tally, 100);
    CHILD_JOURNAL(kStop);

    // A later process attach starts everything again.
    ClearJournal();
    CHILD_EQ(DllMain(nullptr, ZORSIM_PROCESS_ATTACH, nullptr), 1);
    CHILD_JOURNAL(kStart);
    CHILD_EQ(UseCount(), 1);
}
TEST_F(ZORSimContainersModule, FirstStartFromZeroAndLastStopCountAndOrderTheHooks) {
    IN_FRESH_PROCESS(FirstStartFromZeroAndLastStopCountAndOrderTheHooks);
}

#if defined(ZORSIM_TEST_INTERPOSE)
static void TallyIsSettledBeforeTheBaseHooksRun() {
    StopLoaderUse();
    TakeSeen();
    int tally = 0;
    ZORSimContainers_initialize(tally);
    // 1 is added before the first hook; each base hook adds its own 1;
    // the specific count's 1 comes after all of them.
    const auto started = TakeSeen();
    CHILD_EQ(started.size(), 5u);
    for (int i = 0; i < 5; ++i) {
        if (started[i].first != kStart[i])
            Fail(__FILE__, __LINE__, "hook " + started[i].first + ", expected " + kStart[i]);
        CHILD_EQ(started[i].second, 1 + i);
    }
    CHILD_EQ(tally, kFullStart);

    ZORSimContainers_finalize(tally);
    // Both of the module's own 1s and the utility layer's are gone
    // before the first base library stops.
    const auto stopped = TakeSeen();
    CHILD_EQ(stopped.size(), 5u);
    for (int i = 0; i < 5; ++i) {
        if (stopped[i].first != kStop[i + 1])
            Fail(__FILE__, __LINE__, "hook " + stopped[i].first + ", expected " + kStop[i + 1]);
        CHILD_EQ(stopped[i].second, kFullStart - 3 - i);
    }
    CHILD_EQ(tally, 0);
}
TEST_F(ZORSimContainersModule, TallyIsSettledBeforeTheBaseHooksRun) {
    IN_FRESH_PROCESS(TallyIsSettledBeforeTheBaseHooksRun);
}
#endif

static void NestedInitialiseAndFinaliseAboveOneDoNothing() {
    ClearJournal();
    int tally = 5;
    ZORSimContainers_initialize(tally);
    ZORSimContainers_initialize(tally);
    CHILD_EQ(tally, 5);
    CHILD_EQ(UseCount(), 3);
    ZORSimContainers_finalize(tally);
    ZORSimContainers_finalize(tally);
    CHILD_EQ(tally, 5);
    CHILD_EQ(UseCount(), 1);
    CHILD_JOURNAL(Journal{});

    // The loader's use is the last one: detaching stops everything, and
    // the explicit calls above did not disturb its tally.
    StopLoaderUse();
}
TEST_F(ZORSimContainersModule, NestedInitialiseAndFinaliseAboveOneDoNothing) {
    IN_FRESH_PROCESS(NestedInitialiseAndFinaliseAboveOneDoNothing);
}

static void PlainPairReturnsUseCountOrSpecificCount() {
    StopLoaderUse();
    // From zero the plain entry starts everything and reports the new
    // specific count.
    CHILD_EQ(ZORSimContainers_initializeC(), 1);
    CHILD_JOURNAL(kStart);
    ClearJournal();
    CHILD_EQ(ZORSimContainers_initializeC(), 2);
    CHILD_EQ(ZORSimContainers_initializeC(), 3);
    ZORSimContainers_finalizeC();
    ZORSimContainers_finalizeC();
    CHILD_JOURNAL(Journal{});
    ZORSimContainers_finalizeC();
    CHILD_JOURNAL(kStop);
}
TEST_F(ZORSimContainersModule, PlainPairReturnsUseCountOrSpecificCount) {
    IN_FRESH_PROCESS(PlainPairReturnsUseCountOrSpecificCount);
}

static void SpecificInitialiseFirstLeavesItsShareOfTheTally() {
    StopLoaderUse();
    int tally = 0;
    ZORSimContainers_specific_initialize(tally);
    CHILD_EQ(tally, 1);
    CHILD_JOURNAL(Journal{});
    // The full start finds a specific initialisation outstanding: it adds
    // no second 1 and reports the new specific count.
    CHILD_EQ(ZORSimContainers_initializeC(), 2);
    CHILD_JOURNAL(kStart);

    ClearJournal();
    ZORSimContainers_finalizeC();
    CHILD_JOURNAL(kStop);
    // The reference pair likewise leaves out the specific 1, in both
    // directions, and the specific initialisation stays outstanding.
    int full = 0;
    ZORSimContainers_initialize(full);
    CHILD_EQ(full, kFullStart - 1);
    ZORSimContainers_finalize(full);
    CHILD_EQ(full, 0);
    ZORSimContainers_specific_finalize(tally);
    CHILD_EQ(tally, 0);
}
TEST_F(ZORSimContainersModule, SpecificInitialiseFirstLeavesItsShareOfTheTally) {
    IN_FRESH_PROCESS(SpecificInitialiseFirstLeavesItsShareOfTheTally);
}

static void SpecificPairCountsAloneAndTouchesNothingElse() {
    ClearJournal();
    // The loader's start bumped the specific count once already.
    int tally = 0;
    ZORSimContainers_specific_initialize(tally);
    CHILD_EQ(tally, 0);
    ZORSimContainers_specific_finalize(tally);
    CHILD_EQ(tally, 0);
    // Releasing the loader's bump as well reaches zero.
    ZORSimContainers_specific_finalize(tally);
    CHILD_EQ(tally, -1);
    ZORSimContainers_specific_initialize(tally);
    CHILD_EQ(tally, 0);
    CHILD_JOURNAL(Journal{});
    CHILD_EQ(UseCount(), 1);
}
TEST_F(ZORSimContainersModule, SpecificPairCountsAloneAndTouchesNothingElse) {
    IN_FRESH_PROCESS(SpecificPairCountsAloneAndTouchesNothingElse);
}

static void UnmatchedFinaliseGoesBelowZeroAndALaterInitialiseStartsNothing() {
    StopLoaderUse();
    int tally = 0;
    ZORSimContainers_finalize(tally); // use count -1
    CHILD_EQ(tally, 0);
    CHILD_JOURNAL(Journal{});
    // The plain entry from -1 reaches 0, reports it and starts nothing.
    CHILD_EQ(ZORSimContainers_initializeC(), 0);
    CHILD_JOURNAL(Journal{});
    ZORSimContainers_finalize(tally); // -1 again
    ZORSimContainers_initialize(tally);
    CHILD_EQ(tally, 0);
    CHILD_JOURNAL(Journal{});
    // Back at zero, the next initialise starts everything again.
    ZORSimContainers_initialize(tally);
    CHILD_EQ(tally, kFullStart);
    CHILD_JOURNAL(kStart);
}
TEST_F(ZORSimContainersModule, UnmatchedFinaliseGoesBelowZeroAndALaterInitialiseStartsNothing) {
    IN_FRESH_PROCESS(UnmatchedFinaliseGoesBelowZeroAndALaterInitialiseStartsNothing);
}

static void ThreadAttachAndDetachChangeNothing() {
    ClearJournal();
    CHILD_EQ(DllMain(nullptr, ZORSIM_THREAD_ATTACH, nullptr), 1);
    CHILD_EQ(DllMain(nullptr, ZORSIM_THREAD_DETACH, nullptr), 1);
    CHILD_EQ(DllMain(nullptr, 77, nullptr), 1);
    CHILD_JOURNAL(Journal{});
    CHILD_EQ(UseCount(), 1);
}
TEST_F(ZORSimContainersModule, ThreadAttachAndDetachChangeNothing) {
    IN_FRESH_PROCESS(ThreadAttachAndDetachChangeNothing);
}

static void PathsShareOneUseCountButKeepTheirOwnTallies() {
    StopLoaderUse();
    int tally = 0;
    ZORSimContainers_initialize(tally);               // starts, tally of the caller
    CHILD_EQ(ZORSimContainers_initializeC(), 2);      // only counts
    DllMain(nullptr, ZORSIM_PROCESS_ATTACH, nullptr); // only counts
    ZORSimContainers_finalize(tally);
    ZORSimContainers_finalizeC();
    CHILD_EQ(tally, kFullStart);
    CHILD_JOURNAL(kStart);
    ClearJournal();
    // The loader's finalise is the last one: it stops everything with the
    // loader's tally, so the caller's tally keeps what it gained.
    DllMain(nullptr, ZORSIM_PROCESS_DETACH, nullptr);
    CHILD_JOURNAL(kStop);
    CHILD_EQ(tally, kFullStart);
}
TEST_F(ZORSimContainersModule, PathsShareOneUseCountButKeepTheirOwnTallies) {
    IN_FRESH_PROCESS(PathsShareOneUseCountButKeepTheirOwnTallies);
}

static void UtilityLayerCountsItself() {
    ClearJournal();
    int tally = 0;
    // Already started by the loader: only counted.
    ZORSimUtt_initialize(tally);
    ZORSimUtt_finalize(tally);
    CHILD_EQ(tally, 0);
    CHILD_JOURNAL((Journal{"ZORSimUtt_initialize", "ZORSimUtt_finalize"}));

    StopLoaderUse();
    ZORSimUtt_initialize(tally);
    CHILD_EQ(tally, 1);
    ZORSimUtt_initialize(tally);
    ZORSimUtt_finalize(tally);
    CHILD_EQ(tally, 1);
    ZORSimUtt_finalize(tally);
    CHILD_EQ(tally, 0);
}
TEST_F(ZORSimContainersModule, UtilityLayerCountsItself) {
    IN_FRESH_PROCESS(UtilityLayerCountsItself);
}
