// Start and stop of the library: use counts, tallies and the order of hooks.
// The counters are process-wide, so the scenario runs in a fresh process,
// where loading the library already counted as one process attach (a use
// count of 1, everything started once); from there it goes to zero and below.
#include "ModuleJournal.h"

using namespace zorsim_test;

TEST(ZORSimContainersModule, UseCountsAndTalliesFromLoadToZeroAndBelow) {
    ExpectInFreshProcess([] {
        EXPECT_EQ(TakeJournal(), kStart);
        EXPECT_EQ(ZORSimContainers_Marker(), 1);
        for (DWORD reason : {DWORD{ZORSIM_THREAD_ATTACH}, DWORD{ZORSIM_THREAD_DETACH}, DWORD{77}})
            EXPECT_EQ(DllMain(nullptr, reason, nullptr), 1);
        int tally = 5, full = 0;
        ZORSimContainers_initialize(tally);
        EXPECT_EQ(ZORSimContainers_initializeC(), 3); // the new use count
        ZORSimContainers_finalizeC();
        ZORSimContainers_finalize(tally);
        ZORSimUtt_initialize(tally);
        ZORSimUtt_finalize(tally);
        EXPECT_EQ(tally, 5);
        EXPECT_EQ(TakeJournal(), (Journal{"ZORSimUtt_initialize", "ZORSimUtt_finalize"}));

        StopLoaderUse(); // from zero
        tally = 0;
        ZORSimContainers_initialize(tally);
        EXPECT_EQ(tally, kFullStart);
        EXPECT_EQ(TakeJournal(), kStart);
        ZORSimContainers_finalize(tally);
        EXPECT_EQ(tally, 0);
        EXPECT_EQ(TakeJournal(), kStop);
        // Paths share one use count: the last stop, here the loader's, stops
        // everything with its own tally, and the first caller keeps its gain.
        ZORSimContainers_initialize(tally);
        EXPECT_EQ(ZORSimContainers_initializeC(), 2);
        DllMain(nullptr, ZORSIM_PROCESS_ATTACH, nullptr);
        ZORSimContainers_finalize(tally);
        ZORSimContainers_finalizeC();
        StopLoaderUse();
        EXPECT_EQ(tally, kFullStart);

        // Everything stopped again: a specific initialisation first.
        tally = 0;
        ZORSimContainers_specific_initialize(tally);
        EXPECT_EQ(tally, 1);
        // A full start finds a specific initialisation outstanding: it adds no
        // second 1 (the plain entry reports the new specific count), both ways.
        EXPECT_EQ(ZORSimContainers_initializeC(), 2);
        ZORSimContainers_finalizeC();
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
        EXPECT_EQ(TakeJournal(), Journal{});
        ZORSimContainers_initialize(tally); // at zero: starts everything again
        EXPECT_EQ(tally, kFullStart);
        EXPECT_EQ(TakeJournal(), kStart);
    });
}
