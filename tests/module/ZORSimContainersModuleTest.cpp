// Start and stop of the library: use counts, tallies and the order of hooks.
//
// The counters are process-wide and unguarded, so every scenario runs in a
// fresh process. Loading the library already counts as one process attach:
// each child starts with a use count of 1 and everything started once.
#include "ZORSimTestSupport.h"

#include "ZORSimContainersLoader.h"
#include "ZORSimContainersModule.h"

#include "ZORBasModules.h"

#include <cstring>
#include <utility>

#if defined(__linux__)
#    include <dlfcn.h>
#endif

using namespace zorsim_test;

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

// The hooks called since the last call.
Journal TakeJournal() {
    Journal entries;
    for (int i = 0; i < ZORBasHookJournal::Size(); ++i)
        entries.emplace_back(ZORBasHookJournal::At(i));
    ZORBasHookJournal::Clear();
    return entries;
}

// Takes the use count from the loader's 1 to 0, stopping everything.
void StopLoaderUse() {
    TakeJournal();
    EXPECT_EQ(DllMain(nullptr, ZORSIM_PROCESS_DETACH, nullptr), 1);
    EXPECT_EQ(TakeJournal(), kStop);
}

// The use count without changing it (valid while it is above 0).
int UseCount() {
    const int count = ZORSimContainers_initializeC() - 1;
    ZORSimContainers_finalizeC();
    return count;
}

} // namespace

#if defined(__linux__)
// The base hooks are interposed here so that the tally each one receives can
// be seen; each records the value and calls the base library's own hook.
namespace {
using Seen = std::vector<std::pair<std::string, int>>;
std::pair<const char*, int> g_seen[64];
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
    const auto real = reinterpret_cast<void (*)(int&)>(dlsym(RTLD_NEXT, mangled.c_str()));
    if (real == nullptr)
        std::abort();
    real(tally);
}

// The tallies seen by the interposed hooks since the last call.
Seen TakeSeen() {
    Seen seen(g_seen, g_seen + g_seenCount);
    g_seenCount = 0;
    return seen;
}
} // namespace

#    define ZORSIM_INTERPOSE(library)                                                                        \
        __attribute__((visibility("default"))) void library##_initialize(int& tally) {                       \
            Forward(#library "_initialize", tally);                                                          \
        }                                                                                                    \
        __attribute__((visibility("default"))) void library##_finalize(int& tally) {                         \
            Forward(#library "_finalize", tally);                                                            \
        }
ZORSIM_INTERPOSE(ZORBasXmlParser)
ZORSIM_INTERPOSE(ZORBasShared)
ZORSIM_INTERPOSE(ZORBasCoreUtils)
ZORSIM_INTERPOSE(ZORBasGenericsLib)
ZORSIM_INTERPOSE(ZORBasAlloc)
#    undef ZORSIM_INTERPOSE

TEST(ZORSimContainersModule, UnloadingTheLibraryStopsEverything) {
    ExpectInFreshProcess([] { g_announceUnload = true; }, "unload reached ZORBasXmlParser_finalize");
}
#endif

TEST(ZORSimContainersModule, LoadingStartedEverythingOnceAndLaterUsesOnlyCount) {
    ExpectInFreshProcess([] {
        EXPECT_EQ(TakeJournal(), kStart);
        EXPECT_EQ(ZORSimContainers_initializeC(), 2); // only the loader's use is outstanding
        ZORSimContainers_finalizeC();
        EXPECT_EQ(ZORSimContainers_Marker(), 1);
        for (DWORD reason : {DWORD{ZORSIM_THREAD_ATTACH}, DWORD{ZORSIM_THREAD_DETACH}, DWORD{77}})
            EXPECT_EQ(DllMain(nullptr, reason, nullptr), 1);

        // The loader's start bumped the specific count once already.
        int specific = 0;
        ZORSimContainers_specific_initialize(specific);
        ZORSimContainers_specific_finalize(specific);
        EXPECT_EQ(specific, 0);
        ZORSimContainers_specific_finalize(specific); // releasing the loader's bump reaches zero
        EXPECT_EQ(specific, -1);
        ZORSimContainers_specific_initialize(specific);
        EXPECT_EQ(specific, 0);

        int tally = 5;
        ZORSimContainers_initialize(tally);
        ZORSimContainers_initialize(tally);
        EXPECT_EQ(tally, 5);
        EXPECT_EQ(UseCount(), 3);
        ZORSimContainers_finalize(tally);
        ZORSimContainers_finalize(tally);
        EXPECT_EQ(tally, 5);
        EXPECT_EQ(UseCount(), 1);
        EXPECT_EQ(TakeJournal(), Journal{});
        // The loader's use is the last one: detaching stops everything.
        StopLoaderUse();
    });
}

TEST(ZORSimContainersModule, StartFromZeroSettlesTheTallyAroundTheHooksInOrder) {
    ExpectInFreshProcess([] {
        StopLoaderUse();
#if defined(__linux__)
        TakeSeen();
#endif
        int tally = 100;
        ZORSimContainers_initialize(tally);
        EXPECT_EQ(tally, 100 + kFullStart);
        EXPECT_EQ(TakeJournal(), kStart);
        ZORSimContainers_finalize(tally);
        EXPECT_EQ(tally, 100);
        EXPECT_EQ(TakeJournal(), kStop);
#if defined(__linux__)
        // 1 is added before the first base hook, each adds its own 1, and
        // the specific count's 1 comes after all of them; on the way down
        // both module 1s and the utility layer's go before the first base
        // library stops.
        Seen expected;
        for (int i = 0; i < 5; ++i)
            expected.emplace_back(kStart[i], 101 + i);
        for (int i = 0; i < 5; ++i)
            expected.emplace_back(kStop[i + 1], 100 + kFullStart - 3 - i);
        EXPECT_EQ(TakeSeen(), expected);
#endif
        // A later process attach starts everything again.
        EXPECT_EQ(DllMain(nullptr, ZORSIM_PROCESS_ATTACH, nullptr), 1);
        EXPECT_EQ(TakeJournal(), kStart);
        EXPECT_EQ(UseCount(), 1);
    });
}

TEST(ZORSimContainersModule, PlainPairReturnsUseCountOrSpecificCount) {
    ExpectInFreshProcess([] {
        StopLoaderUse();
        // From zero the plain entry starts everything and reports the new
        // specific count.
        EXPECT_EQ(ZORSimContainers_initializeC(), 1);
        EXPECT_EQ(TakeJournal(), kStart);
        EXPECT_EQ(ZORSimContainers_initializeC(), 2);
        EXPECT_EQ(ZORSimContainers_initializeC(), 3);
        ZORSimContainers_finalizeC();
        ZORSimContainers_finalizeC();
        EXPECT_EQ(TakeJournal(), Journal{});
        ZORSimContainers_finalizeC();
        EXPECT_EQ(TakeJournal(), kStop);
    });
}

TEST(ZORSimContainersModule, SpecificInitialiseFirstLeavesItsShareOfTheTally) {
    ExpectInFreshProcess([] {
        StopLoaderUse();
        int tally = 0;
        ZORSimContainers_specific_initialize(tally);
        EXPECT_EQ(tally, 1);
        EXPECT_EQ(TakeJournal(), Journal{});
        // The full start finds a specific initialisation outstanding: it adds
        // no second 1 and reports the new specific count.
        EXPECT_EQ(ZORSimContainers_initializeC(), 2);
        EXPECT_EQ(TakeJournal(), kStart);
        ZORSimContainers_finalizeC();
        EXPECT_EQ(TakeJournal(), kStop);
        // The reference pair likewise leaves out the specific 1, in both
        // directions, and the specific initialisation stays outstanding.
        int full = 0;
        ZORSimContainers_initialize(full);
        EXPECT_EQ(full, kFullStart - 1);
        ZORSimContainers_finalize(full);
        EXPECT_EQ(full, 0);
        ZORSimContainers_specific_finalize(tally);
        EXPECT_EQ(tally, 0);
    });
}

TEST(ZORSimContainersModule, UnmatchedFinaliseGoesBelowZeroAndALaterInitialiseStartsNothing) {
    ExpectInFreshProcess([] {
        StopLoaderUse();
        int tally = 0;
        ZORSimContainers_finalize(tally); // use count -1
        EXPECT_EQ(tally, 0);
        EXPECT_EQ(ZORSimContainers_initializeC(), 0); // back at 0, reported, nothing started
        ZORSimContainers_finalize(tally);
        ZORSimContainers_initialize(tally);
        EXPECT_EQ(tally, 0);
        EXPECT_EQ(TakeJournal(), Journal{});
        // At zero, the next initialise starts everything again.
        ZORSimContainers_initialize(tally);
        EXPECT_EQ(tally, kFullStart);
        EXPECT_EQ(TakeJournal(), kStart);
    });
}

TEST(ZORSimContainersModule, PathsShareOneUseCountButKeepTheirOwnTallies) {
    ExpectInFreshProcess([] {
        StopLoaderUse();
        int tally = 0;
        ZORSimContainers_initialize(tally);               // starts, with the caller's tally
        EXPECT_EQ(ZORSimContainers_initializeC(), 2);     // only counts
        DllMain(nullptr, ZORSIM_PROCESS_ATTACH, nullptr); // only counts
        ZORSimContainers_finalize(tally);
        ZORSimContainers_finalizeC();
        EXPECT_EQ(tally, kFullStart);
        EXPECT_EQ(TakeJournal(), kStart);
        // The loader's finalise is the last one: it stops everything with the
        // loader's tally, so the caller's keeps what it gained.
        DllMain(nullptr, ZORSIM_PROCESS_DETACH, nullptr);
        EXPECT_EQ(TakeJournal(), kStop);
        EXPECT_EQ(tally, kFullStart);
    });
}

TEST(ZORSimContainersModule, UtilityLayerCountsItself) {
    ExpectInFreshProcess([] {
        TakeJournal();
        int tally = 0;
        ZORSimUtt_initialize(tally); // already started by the loader: only counted
        ZORSimUtt_finalize(tally);
        EXPECT_EQ(tally, 0);
        EXPECT_EQ(TakeJournal(), (Journal{"ZORSimUtt_initialize", "ZORSimUtt_finalize"}));

        StopLoaderUse();
        ZORSimUtt_initialize(tally);
        EXPECT_EQ(tally, 1);
        ZORSimUtt_initialize(tally);
        ZORSimUtt_finalize(tally);
        EXPECT_EQ(tally, 1);
        ZORSimUtt_finalize(tally);
        EXPECT_EQ(tally, 0);
    });
}
