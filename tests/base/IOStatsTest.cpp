// Per-file I/O statistics.
#include "ZORBasUtlIOStats.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

namespace {

using Stats = ZORBasUtlIOFileStats;

TEST(BaseIOStats, OneRecordPerNameCountingOpensAndCloses) {
    ZORBasUtlIOStats stats;
    EXPECT_EQ(stats.Report(), "");
    auto a = stats.usefile_Open(ZORString("a.dat"));
    auto b = stats.usefile_Open(ZORString("b.dat"));
    EXPECT_EQ(stats.usefile_Open(ZORString("a.dat")), a);
    EXPECT_NE(a, b);
    stats.usefile_Close(a);
    EXPECT_TRUE(a->IsOpen()); // one open remains
    stats.usefile_Close(a);
    EXPECT_FALSE(a->IsOpen());
    stats.usefile_Close(a); // closing more often than opened does no harm
    stats.usefile_Close(nullptr);
    // A closed file that opens again keeps its record and its totals.
    EXPECT_EQ(stats.usefile_Open(ZORString("a.dat")), a);
    EXPECT_TRUE(a->IsOpen());
    stats.usefile_Close(a);
    EXPECT_FALSE(a->IsOpen());
    EXPECT_EQ(a->Opens(), 3);
    EXPECT_EQ(stats.Files(), (std::vector<ZORBasSharedPtr<Stats>>{a, b})); // in order of first open

    // Transfers add up per kind and per file; the report has a line per file.
    stats.StartTimer(Stats::kRead);
    stats.StopTimer(4000, Stats::kRead, a);
    stats.StopTimer(96, Stats::kRead, a);
    stats.StopTimer(12, Stats::kWrite, a);
    stats.StopTimer(5, Stats::kWrite, b);
    EXPECT_EQ(a->Get(Stats::kRead).bytes, 4096u);
    EXPECT_EQ(a->Get(Stats::kRead).calls, 2u);
    EXPECT_GE(a->Get(Stats::kRead).seconds, 0.0);
    EXPECT_EQ(b->Get(Stats::kRead).calls, 0u);
    EXPECT_EQ(b->Get(Stats::kWrite).bytes, 5u);
    // Unknown kinds and a missing record are ignored.
    stats.StartTimer(3);
    stats.StopTimer(9, 3, a);
    stats.StopTimer(9, 0, a);
    stats.StopTimer(9, Stats::kRead, nullptr);
    EXPECT_EQ(a->Get(3).calls + a->Get(0).calls, 0u);
    EXPECT_EQ(a->Get(Stats::kRead).calls, 2u);
    const std::string report = stats.Report();
    EXPECT_EQ(report.rfind("a.dat: opens 3, read 4096 bytes in 2 calls, ", 0), 0u) << report;
    EXPECT_NE(report.find("; write 12 bytes in 1 calls, "), std::string::npos) << report;
    EXPECT_NE(report.find("\nb.dat: opens 1, read 0 bytes in 0 calls, "), std::string::npos) << report;
    EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), 2);
}

TEST(BaseIOStats, StartTimesBelongToTheCallingThread) {
    ZORBasUtlIOStats stats;
    auto a = stats.usefile_Open(ZORString("a.dat"));
    std::thread other([&] { stats.StartTimer(Stats::kRead); });
    other.join();
    // This thread never started a read: the call counts, with no time.
    stats.StopTimer(10, Stats::kRead, a);
    EXPECT_EQ(a->Get(Stats::kRead).calls, 1u);
    EXPECT_EQ(a->Get(Stats::kRead).seconds, 0.0);
}

TEST(BaseIOStats, ConcurrentTransfersAndOpensOnOneFile) {
    ZORBasUtlIOStats stats;
    auto shared = stats.usefile_Open(ZORString("shared.dat"));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 20000; ++i) {
                stats.StartTimer(Stats::kRead);
                stats.StopTimer(3, Stats::kRead, shared);
                if (i % 500 == 0)
                    stats.usefile_Open(ZORString("shared.dat"));
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(shared->Get(Stats::kRead).bytes, 3u * 4 * 20000);
    EXPECT_EQ(shared->Opens(), 1 + 4 * 40);
    EXPECT_EQ(stats.Files().size(), 1u);
}

} // namespace
