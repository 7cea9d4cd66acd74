// Per-file I/O statistics.
#include "ZORBasUtlIOStats.h"

#include <gtest/gtest.h>

#include <sstream>
#include <thread>
#include <vector>

namespace {

using Stats = ZORBasUtlIOFileStats;

TEST(BaseIOStats, OneRecordPerNameCountingOpens) {
    ZORBasUtlIOStats stats;
    auto a = stats.usefile_Open(ZORString("a.dat"));
    auto again = stats.usefile_Open(ZORString("a.dat"));
    auto b = stats.usefile_Open(ZORString("b.dat"));
    ASSERT_TRUE(a && b);
    EXPECT_EQ(a, again);
    EXPECT_NE(a, b);
    EXPECT_EQ(a->Name(), ZORString("a.dat"));
    EXPECT_EQ(a->Opens(), 2);
    EXPECT_EQ(b->Opens(), 1);

    stats.usefile_Close(a);
    EXPECT_TRUE(a->IsOpen()); // one open remains
    stats.usefile_Close(a);
    EXPECT_FALSE(a->IsOpen());
    stats.usefile_Close(a); // closing more often than opened does no harm
    stats.usefile_Close(nullptr);
    EXPECT_FALSE(a->IsOpen());

    // A closed file that opens again keeps its record and its totals.
    EXPECT_EQ(stats.usefile_Open(ZORString("a.dat")), a);
    EXPECT_EQ(a->Opens(), 3);
    const auto files = stats.Files();
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[0], a); // in order of first open
    EXPECT_EQ(files[1], b);
}

TEST(BaseIOStats, TransfersAddUpPerKindAndPerFile) {
    ZORBasUtlIOStats stats;
    auto a = stats.usefile_Open(ZORString("a.dat"));
    auto b = stats.usefile_Open(ZORString("b.dat"));

    stats.StartTimer(Stats::kRead);
    stats.StopTimer(100, Stats::kRead, a);
    stats.StartTimer(Stats::kRead);
    stats.StopTimer(28, Stats::kRead, a);
    stats.StartTimer(Stats::kWrite);
    stats.StopTimer(7, Stats::kWrite, a);
    stats.StartTimer(Stats::kWrite);
    stats.StopTimer(5, Stats::kWrite, b);

    EXPECT_EQ(a->Get(Stats::kRead).bytes, 128u);
    EXPECT_EQ(a->Get(Stats::kRead).calls, 2u);
    EXPECT_GE(a->Get(Stats::kRead).seconds, 0.0);
    EXPECT_EQ(a->Get(Stats::kWrite).bytes, 7u);
    EXPECT_EQ(a->Get(Stats::kWrite).calls, 1u);
    EXPECT_EQ(b->Get(Stats::kRead).calls, 0u);
    EXPECT_EQ(b->Get(Stats::kWrite).bytes, 5u);

    // Unknown kinds and a missing record are ignored.
    stats.StartTimer(3);
    stats.StopTimer(9, 3, a);
    stats.StopTimer(9, 0, a);
    stats.StopTimer(9, Stats::kRead, nullptr);
    EXPECT_EQ(a->Get(3).calls, 0u);
    EXPECT_EQ(a->Get(0).bytes, 0u);
    EXPECT_EQ(a->Get(Stats::kRead).calls, 2u);
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

TEST(BaseIOStats, ConcurrentTransfersOnOneFile) {
    ZORBasUtlIOStats stats;
    auto shared = stats.usefile_Open(ZORString("shared.dat"));
    constexpr int kThreads = 4;
    constexpr int kRounds = 5000;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            const int kind = t % 2 == 0 ? Stats::kRead : Stats::kWrite;
            for (int i = 0; i < kRounds; ++i) {
                stats.StartTimer(kind);
                stats.StopTimer(3, kind, shared);
                if (i % 500 == 0)
                    stats.usefile_Open(ZORString("shared.dat"));
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    for (int kind : {Stats::kRead, Stats::kWrite}) {
        EXPECT_EQ(shared->Get(kind).calls, 2u * kRounds);
        EXPECT_EQ(shared->Get(kind).bytes, 6u * kRounds);
    }
    EXPECT_EQ(shared->Opens(), 1 + kThreads * (kRounds / 500));
    EXPECT_EQ(stats.Files().size(), 1u);
}

TEST(BaseIOStats, ReportHasOneLinePerFile) {
    ZORBasUtlIOStats stats;
    EXPECT_EQ(stats.Report(), "");
    auto a = stats.usefile_Open(ZORString("first.dat"));
    stats.usefile_Open(ZORString("second.dat"));
    stats.StopTimer(4096, Stats::kRead, a);
    stats.StopTimer(12, Stats::kWrite, a);

    std::istringstream in(stats.Report());
    std::string line;
    ASSERT_TRUE(std::getline(in, line));
    EXPECT_EQ(line.rfind("first.dat: opens 1, read 4096 bytes in 1 calls", 0), 0u) << line;
    EXPECT_NE(line.find("write 12 bytes in 1 calls"), std::string::npos) << line;
    ASSERT_TRUE(std::getline(in, line));
    EXPECT_EQ(line.rfind("second.dat: opens 1, read 0 bytes in 0 calls", 0), 0u) << line;
    EXPECT_FALSE(std::getline(in, line));
}

} // namespace
