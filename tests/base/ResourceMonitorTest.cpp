// The resource monitor: timers, marks, the report and the report at exit.
#include "ZORSimTestSupport.h"

#include "bcu_ResourceMonitor.h"

#include <gmock/gmock.h>

#include <chrono>
#include <regex>
#include <thread>

using namespace zorsim_test;

namespace {

// Spends a little wall and CPU time, enough for both clocks to move.
void Work() {
    const auto start = std::chrono::steady_clock::now();
    volatile double sink = 0;
    while (std::chrono::steady_clock::now() == start)
        sink = sink + 1;
    for (int i = 0; i < 200000; ++i)
        sink = sink + i;
}

// "timer label starts running|stopped;" for each row.
std::string Rows(const bcu_ResourceMonitor& monitor) {
    std::string out;
    for (const auto& row : monitor.Timers())
        out += std::to_string(row.timer) + " " + row.label + " " + std::to_string(row.starts) +
               (row.running ? " running;" : " stopped;");
    return out;
}

TEST(BaseResourceMonitor, TimersCountCompletedRunsAndIgnoreRepeatedCalls) {
    bcu_ResourceMonitor monitor;
    monitor.StopTimer(9);  // never started: makes no row
    monitor.StartTimer(1); // never labelled: still counted
    monitor.StartTimer(1); // already running: ignored
    EXPECT_EQ(Rows(monitor), "1  1 running;");
    EXPECT_EQ(monitor.Timers()[0].wallSeconds, 0.0); // only completed runs count
    monitor.IniTimer(1, "load");
    EXPECT_EQ(Rows(monitor), "1 load 1 running;"); // labelling keeps it running
    Work();
    monitor.StopTimer(1);
    monitor.StopTimer(1); // already stopped: ignored
    EXPECT_EQ(Rows(monitor), "1 load 1 stopped;");
    const bcu_ResourceMonitor::TimerRow first = monitor.Timers()[0];
    EXPECT_GT(first.wallSeconds, 0.0);
    monitor.StartTimer(1);
    Work();
    monitor.StopTimer(1);
    EXPECT_EQ(Rows(monitor), "1 load 2 stopped;");
    EXPECT_GT(monitor.Timers()[0].wallSeconds, first.wallSeconds);
    EXPECT_GE(monitor.Timers()[0].cpuSeconds, first.cpuSeconds);

    // Marks keep their order and time.
    monitor.Mark("first");
    Work();
    monitor.Mark("second");
    monitor.Mark(nullptr);
    const auto marks = monitor.Marks();
    ASSERT_EQ(marks.size(), 3u);
    EXPECT_EQ(marks[0].text + "|" + marks[1].text + "|" + marks[2].text, "first|second|");
    EXPECT_GT(marks[1].atSeconds, marks[0].atSeconds);
    EXPECT_GE(marks[2].atSeconds, marks[1].atSeconds);
}

TEST(BaseResourceMonitor, ReportIsAnAlignedTable) {
    bcu_ResourceMonitor monitor;
    EXPECT_EQ(monitor.Report(), "Resource monitor\n Timer  Label      Starts        Wall s         CPU s\n");
    monitor.Initialize("run", 7);
    monitor.IniTimer(12, "a much longer label");
    monitor.IniTimer(2, "io");
    monitor.StartTimer(2);
    monitor.StopTimer(2);
    monitor.StartTimer(12); // left running
    monitor.Mark("checkpoint");
    // Rows in timer order, the label column as wide as the longest label,
    // numbers right-aligned under their headings.
    const std::string number = "  [ 0-9]{5}\\.[0-9]{6}";
    EXPECT_TRUE(std::regex_match(monitor.Report(), std::regex("Resource monitor: run \\(7\\)\n"
                                                              " Timer  Label {20}Starts {8}Wall s {9}CPU s\n"
                                                              " {5}2  io {17} {11}1" +
                                                              number + number +
                                                              "\n"
                                                              " {4}12  a much longer label {11}1" +
                                                              number + number +
                                                              "  running\n"
                                                              "Marks:\n"
                                                              "[ 0-9]{5}\\.[0-9]{6} s  checkpoint\n")))
        << monitor.Report();
}

TEST(BaseResourceMonitor, ThreadsUpdateTheirTimersAndMarksSafely) {
    bcu_ResourceMonitor monitor;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&monitor, t] {
            monitor.IniTimer(t, "worker");
            for (int i = 0; i < 2000; ++i) {
                monitor.StartTimer(t);
                monitor.StopTimer(t);
                monitor.Mark("tick");
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(Rows(monitor),
              "0 worker 2000 stopped;1 worker 2000 stopped;2 worker 2000 stopped;3 worker 2000 stopped;");
    EXPECT_EQ(monitor.Marks().size(), 4u * 2000);
}

// The process-wide monitor writes its table to standard error when the
// process ends, if SIM_RESOURCE_MONITOR is set then.
TEST(BaseResourceMonitor, ReportsAtProcessEndOnlyWhenSwitchedOn) {
    const auto use = [] {
        bcu_ResourceMonitor& monitor = omi_Singleton<bcu_ResourceMonitor>::Instance();
        monitor.IniTimer(901, "exit check");
        monitor.StartTimer(901);
        monitor.StopTimer(901);
        monitor.Mark("about to exit");
    };
    ExpectInFreshProcess(
        [&] {
            SetEnv("SIM_RESOURCE_MONITOR", "1");
            use();
        },
        "Resource monitor\n.*\n +901  exit check +1 .*\nMarks:\n +[0-9.]+ s  about to exit\n");
    ExpectInFreshProcess(
        [&] {
            SetEnv("SIM_RESOURCE_MONITOR", nullptr);
            use();
        },
        ::testing::Matcher<const std::string&>(::testing::Not(::testing::HasSubstr("Resource monitor"))));
}

} // namespace
