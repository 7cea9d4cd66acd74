// Start and stop of the library: use counts, tallies and the order of hooks.
// The counters are process-wide, so every scenario runs in a fresh process.
// Loading the library already counts as one process attach: each child
// starts with a use count of 1 and everything started once.
#include "ModuleJournal.h"

using namespace zorsim_test;

TEST(ZORSimContainersModule, LoadingStartedEverythingOnceAndLaterUsesOnlyCount) {
    ExpectInFreshProcess([] {
        EXPECT_EQ(TakeJournal(), kStart);
        EXPECT_EQ(ZORSimContainers_Marker(), 1);
        for (DWORD reason : {DWORD{ZORSIM_THREAD_ATTACH}, DWORD{ZORSIM_THREAD_DETACH}, DWORD{77}})
            EXPECT_EQ(DllMain(nullptr, reason, nullptr), 1);
        int tally = 5, specific = 0;
        ZORSimContainers_initialize(tally);
        EXPECT_EQ(ZORSimContainers_initializeC(), 3); // the new use count
        ZORSimContainers_finalizeC();
        ZORSimContainers_finalize(tally);
        ZORSimUtt_initialize(tally);
        ZORSimUtt_finalize(tally);
        EXPECT_EQ(tally, 5);
        EXPECT_EQ(TakeJournal(), (Journal{"ZORSimUtt_initialize", "ZORSimUtt_finalize"}));
        // The loader's start bumped the specific count once: releasing that reaches zero.
        ZORSimContainers_specific_initialize(specific);
        ZORSimContainers_specific_finalize(specific);
        ZORSimContainers_specific_finalize(specific);
        EXPECT_EQ(specific, -1);
        ZORSimContainers_specific_initialize(specific);
        EXPECT_EQ(ZORSimContainers_initializeC(), 2); // only the loader's use is left
        ZORSimContainers_finalizeC();
        StopLoaderUse();                                                // the loader's use is the last one
        EXPECT_EQ(DllMain(nullptr, ZORSIM_PROCESS_ATTACH, nullptr), 1); // starts everything again
        EXPECT_EQ(TakeJournal(), kStart);
    });
}

TEST(ZORSimContainersModule, FromZeroEachPathStartsAndStopsEverythingWithItsOwnTally) {
    ExpectInFreshProcess([] {
        StopLoaderUse();
        int tally = 100;
        ZORSimContainers_initialize(tally);
        EXPECT_EQ(tally, 100 + kFullStart);
        EXPECT_EQ(TakeJournal(), kStart);
        ZORSimContainers_finalize(tally);
        EXPECT_EQ(tally, 100);
        EXPECT_EQ(TakeJournal(), kStop);
        EXPECT_EQ(ZORSimContainers_initializeC(), 1); // the new specific count
        EXPECT_EQ(TakeJournal(), kStart);
        ZORSimContainers_finalizeC();
        EXPECT_EQ(TakeJournal(), kStop);
        tally = 0;
        ZORSimUtt_initialize(tally); // the utility layer on its own
        ZORSimUtt_initialize(tally);
        EXPECT_EQ(tally, 1);
        ZORSimUtt_finalize(tally);
        ZORSimUtt_finalize(tally);
        EXPECT_EQ(tally, 0);
        // Paths share one use count: the last stop, here the loader's, stops
        // everything with its own tally, and the first caller keeps its gain.
        ZORSimContainers_initialize(tally);
        EXPECT_EQ(ZORSimContainers_initializeC(), 2);
        DllMain(nullptr, ZORSIM_PROCESS_ATTACH, nullptr);
        ZORSimContainers_finalize(tally);
        ZORSimContainers_finalizeC();
        StopLoaderUse();
        EXPECT_EQ(tally, kFullStart);
    });
}

TEST(ZORSimContainersModule, SpecificFirstLeavesItsShareAndUnmatchedFinaliseGoesBelowZero) {
    ExpectInFreshProcess([] {
        StopLoaderUse();
        int tally = 0, full = 0;
        ZORSimContainers_specific_initialize(tally);
        EXPECT_EQ(tally, 1);
        EXPECT_EQ(TakeJournal(), Journal{});
        // A full start finds a specific initialisation outstanding: it adds no
        // second 1 (the plain entry reports the new specific count), both ways.
        EXPECT_EQ(ZORSimContainers_initializeC(), 2);
        EXPECT_EQ(TakeJournal(), kStart);
        ZORSimContainers_finalizeC();
        EXPECT_EQ(TakeJournal(), kStop);
        ZORSimContainers_initialize(full);
        EXPECT_EQ(full, kFullStart - 1);
        ZORSimContainers_finalize(full);
        EXPECT_EQ(full, 0);
        ZORSimContainers_specific_finalize(tally);
        EXPECT_EQ(tally, 0);
        TakeJournal();
        // An unmatched finalise goes below zero; later initialises only count
        // until zero is reached again.
        ZORSimContainers_finalize(tally);             // use count -1
        EXPECT_EQ(ZORSimContainers_initializeC(), 0); // back at 0, reported, nothing started
        ZORSimContainers_finalize(tally);
        ZORSimContainers_initialize(tally);
        EXPECT_EQ(tally, 0);
        EXPECT_EQ(TakeJournal(), Journal{});
        ZORSimContainers_initialize(tally); // at zero: starts everything again
        EXPECT_EQ(tally, kFullStart);
        EXPECT_EQ(TakeJournal(), kStart);
    });
}
