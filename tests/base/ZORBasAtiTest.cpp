// Locks, the singleton registry's end, the start hooks and the monitors of
// the base, where the library's tests do not reach them.
#include "ZORSimTestSupport.h"

#include "ZORBasAti.h"
#include "ZORBasModules.h"
#include "ZORBasUtlIOStats.h"
#include "bcu_ResourceMonitor.h"

#include <gmock/gmock.h>

#include <chrono>
#include <regex>
#include <thread>

using namespace zorsim_test;

namespace {

// Four threads bump a counter by read, yield, write: the total comes out
// right only when the lock keeps the others out, and the yield makes them
// queue on it, so that a release must wake a waiter.
template <class Lock, class Unlock> void ExpectExclusion(Lock lock, Unlock unlock) {
    long counter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 5000; ++i) {
                lock();
                const long seen = counter;
                std::this_thread::yield();
                counter = seen + 1;
                unlock();
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(counter, 4 * 5000);
}

TEST(BaseLocks, RecursiveGlobalLockAndThreadingModelMutexExcludeOtherThreads) {
    ExpectExclusion([] { ZORBasAtiGlobalLock::Lock(), ZORBasAtiGlobalLock::Lock(); }, // the same thread again
                    [] { ZORBasAtiGlobalLock::Unlock(), ZORBasAtiGlobalLock::Unlock(); });
    ZORBasAtiMutex* mutex = ZORBasAtiThreadingModel::newMutex();
    ExpectExclusion([&] { mutex->Lock(); }, [&] { mutex->Unlock(); });
    ZORBasAtiThreadingModel::deleteMutex(mutex);
}

// At process end the registry destroys what it holds, newest first, and is
// no longer reachable from inside the destroyers.
TEST(BaseSingletonRegistry, DestroysNewestFirstAtProcessEnd) {
    ExpectInFreshProcess(
        [] {
            static char older[] = "older";
            static char newer[] = "newer";
            const auto report = [](void* object) {
                std::fprintf(stderr, "destroyed %s, registry %s\n", static_cast<const char*>(object),
                             omi_SingletonRegistry::Instance() == nullptr ? "gone" : "alive");
            };
            omi_SingletonRegistry::Instance()->Add("older", older, report);
            omi_SingletonRegistry::Instance()->Add("newer", newer, report);
        },
        "destroyed newer, registry gone\ndestroyed older, registry gone\n");
}

// Each base library counts its own starts: only the first start and the
// last stop move the caller's tally (the library nests none).
TEST(BaseModules, OnlyTheFirstStartAndTheLastStopMoveTheTally) {
    int tally = 0;
    ZORBasShared_initialize(tally);
    ZORBasShared_initialize(tally);
    ZORBasShared_finalize(tally);
    EXPECT_EQ(tally, 1);
    ZORBasShared_finalize(tally);
    EXPECT_EQ(tally, 0);
}

// One record per name, shared by every open of it. Transfers are timed in
// seconds from a thread's very first timer (its clock still to be chosen); a
// stop without a start counts no time, an unknown kind nothing.
TEST(BaseIOStats, OneRecordPerNameTimesTransfersInSeconds) {
    ZORBasUtlIOStats stats;
    auto a = stats.usefile_Open(ZORString("a.dat"));
    EXPECT_EQ(stats.usefile_Open(ZORString("a.dat")), a);
    for (int i = 0; i < 3; ++i) // once more than opened: no harm
        stats.usefile_Close(a);
    EXPECT_FALSE(a->IsOpen());
    EXPECT_TRUE(stats.usefile_Open(ZORString("a.dat")) == a && a->IsOpen()); // reopened: the same record
    EXPECT_EQ(a->Opens(), 3);
    std::thread([&] {
        for (int kind : {ZORBasUtlIOFileStats::kRead, ZORBasUtlIOFileStats::kWrite, 3}) {
            stats.StartTimer(kind);
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            stats.StopTimer(100, kind, a);
        }
        stats.StopTimer(1, ZORBasUtlIOFileStats::kRead, a);
    }).join();
    const auto read = a->Get(ZORBasUtlIOFileStats::kRead), write = a->Get(ZORBasUtlIOFileStats::kWrite);
    EXPECT_TRUE(read.bytes == 101 && read.calls == 2 && write.bytes == 100 && write.calls == 1);
    for (double seconds : {read.seconds, write.seconds})
        EXPECT_TRUE(seconds >= 0.019 && seconds < 2.0) << seconds;
}

// "timer label starts running|stopped;" for each row.
std::string Rows(const bcu_ResourceMonitor& monitor) {
    std::string out;
    for (const auto& row : monitor.Timers())
        out += std::to_string(row.timer) + " " + row.label + " " + std::to_string(row.starts) +
               (row.running ? " running;" : " stopped;");
    return out;
}

TEST(BaseResourceMonitor, TimersAddUpCompletedRunsAndIgnoreRepeatedCalls) {
    bcu_ResourceMonitor monitor;
    monitor.StopTimer(9);  // never started: makes no row
    monitor.StartTimer(1); // never labelled: still counted
    EXPECT_EQ(Rows(monitor), "1  1 running;");
    EXPECT_EQ(monitor.Timers()[0].wallSeconds, 0.0); // only completed runs count
    monitor.IniTimer(1, "load");
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    monitor.StopTimer(1);
    monitor.StopTimer(1); // already stopped: ignored
    const double first = monitor.Timers()[0].wallSeconds;
    EXPECT_GT(first, 0.0);
    monitor.StartTimer(1);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    monitor.StopTimer(1);
    EXPECT_EQ(Rows(monitor), "1 load 2 stopped;"); // labelling kept it running
    EXPECT_GT(monitor.Timers()[0].wallSeconds, first);
}

// The process-wide monitor writes its table to standard error when the
// process ends, if SIM_RESOURCE_MONITOR is set then: rows in timer order, the
// label column as wide as the longest label, numbers right-aligned under
// their headings.
TEST(BaseResourceMonitor, ReportsAnAlignedTableAtProcessEndOnlyWhenSwitchedOn) {
    const std::string number = "  [ 0-9]{5}\\.[0-9]{6}";
    const std::regex table(
        "Resource monitor: run \\(7\\)\n Timer  Label {20}Starts {8}Wall s {9}CPU s\n {5}2  io {17} "
        "{11}1" +
        number + number + "\n {4}12  a much longer label {11}1" + number + number +
        "  running\nMarks:\n[ 0-9]{5}\\.[0-9]{6} s  checkpoint\n");
    for (const char* value : {"1", static_cast<const char*>(nullptr)})
        ExpectInFreshProcess(
            [value] {
                SetEnv("SIM_RESOURCE_MONITOR", value);
                bcu_ResourceMonitor& monitor = omi_Singleton<bcu_ResourceMonitor>::Instance();
                monitor.Initialize("run", 7);
                monitor.IniTimer(12, "a much longer label");
                monitor.IniTimer(2, "io");
                monitor.StartTimer(2);
                monitor.StopTimer(2);
                monitor.StartTimer(12); // left running
                monitor.Mark("checkpoint");
            },
            ::testing::Truly(
                [&](const std::string& out) { return std::regex_search(out, table) == (value != nullptr); }));
}

} // namespace
