// The resource monitor: timers, marks, the report and the report at exit.
#include "bcu_ResourceMonitor.h"

#include <gtest/gtest.h>

#include <chrono>
#include <regex>
#include <cstdlib>
#include <sstream>
#include <thread>
#include <vector>

namespace {

bool Matches(const std::string& text, const char* pattern) {
    return std::regex_match(text, std::regex(pattern));
}

// Standard error of a child that must not mention `text`.
class Lacks : public ::testing::MatcherInterface<const std::string&> {
public:
    explicit Lacks(std::string text) : m_text(std::move(text)) {}
    bool MatchAndExplain(const std::string& output, ::testing::MatchResultListener*) const override {
        return output.find(m_text) == std::string::npos;
    }
    void DescribeTo(std::ostream* os) const override { *os << "has no \"" << m_text << "\""; }

private:
    std::string m_text;
};

// Spends a little wall and CPU time, enough for both clocks to move.
void Work() {
    const auto start = std::chrono::steady_clock::now();
    volatile double sink = 0;
    while (std::chrono::steady_clock::now() == start)
        sink = sink + 1;
    for (int i = 0; i < 200000; ++i)
        sink = sink + i;
}

const bcu_ResourceMonitor::TimerRow* Find(const std::vector<bcu_ResourceMonitor::TimerRow>& rows, int timer) {
    for (const auto& row : rows) {
        if (row.timer == timer)
            return &row;
    }
    return nullptr;
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

TEST(BaseResourceMonitor, TimersCountStartsAndAccumulate) {
    bcu_ResourceMonitor monitor;
    monitor.IniTimer(1, "load");
    monitor.StartTimer(1);
    monitor.StartTimer(1); // already running: ignored
    Work();
    monitor.StopTimer(1);
    monitor.StopTimer(1); // already stopped: ignored

    auto rows = monitor.Timers();
    const auto* row = Find(rows, 1);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->label, "load");
    EXPECT_EQ(row->starts, 1);
    EXPECT_FALSE(row->running);
    EXPECT_GT(row->wallSeconds, 0.0);
    EXPECT_GE(row->cpuSeconds, 0.0);
    const double wall = row->wallSeconds;
    const double cpu = row->cpuSeconds;

    monitor.StartTimer(1);
    Work();
    monitor.StopTimer(1);
    rows = monitor.Timers();
    row = Find(rows, 1);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->starts, 2);
    EXPECT_GT(row->wallSeconds, wall);
    EXPECT_GE(row->cpuSeconds, cpu);
}

TEST(BaseResourceMonitor, UnnamedAndUnknownTimers) {
    bcu_ResourceMonitor monitor;
    monitor.StopTimer(9); // never started: makes no row
    EXPECT_TRUE(monitor.Timers().empty());
    monitor.StartTimer(3); // never labelled: still counted
    auto rows = monitor.Timers();
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].timer, 3);
    EXPECT_EQ(rows[0].label, "");
    EXPECT_TRUE(rows[0].running);
    EXPECT_EQ(rows[0].wallSeconds, 0.0); // only completed pairs count
    monitor.IniTimer(3, "late label");
    EXPECT_EQ(monitor.Timers()[0].label, "late label");
    EXPECT_TRUE(monitor.Timers()[0].running); // relabelling keeps it running
}

TEST(BaseResourceMonitor, MarksKeepOrderAndTime) {
    bcu_ResourceMonitor monitor;
    monitor.Mark("first");
    Work();
    monitor.Mark("second");
    monitor.Mark(nullptr);
    const auto marks = monitor.Marks();
    ASSERT_EQ(marks.size(), 3u);
    EXPECT_EQ(marks[0].text, "first");
    EXPECT_EQ(marks[1].text, "second");
    EXPECT_EQ(marks[2].text, "");
    EXPECT_GE(marks[0].atSeconds, 0.0);
    EXPECT_GT(marks[1].atSeconds, marks[0].atSeconds);
    EXPECT_GE(marks[2].atSeconds, marks[1].atSeconds);
}

TEST(BaseResourceMonitor, ReportIsAnAlignedTable) {
    bcu_ResourceMonitor monitor;
    monitor.Initialize("run", 7);
    EXPECT_EQ(monitor.Name(), "run");
    monitor.IniTimer(12, "a much longer label");
    monitor.IniTimer(2, "io");
    monitor.StartTimer(2);
    monitor.StopTimer(2);
    monitor.StartTimer(12); // left running
    monitor.Mark("checkpoint");

    const auto lines = Lines(monitor.Report());
    ASSERT_EQ(lines.size(), 6u) << monitor.Report();
    EXPECT_EQ(lines[0], "Resource monitor: run (7)");
    const std::string& header = lines[1];
    for (const char* column : {"Timer", "Label", "Starts", "Wall s", "CPU s"})
        EXPECT_NE(header.find(column), std::string::npos) << column;
    // Rows in timer order, every column where the header puts it.
    EXPECT_TRUE(Matches(lines[2], " +2  io +1 +[0-9.]+ +[0-9.]+")) << lines[2];
    EXPECT_TRUE(Matches(lines[3], " +12  a much longer label +1 +[0-9.]+ +[0-9.]+  running")) << lines[3];
    // Numbers end under the last letter of their heading.
    const std::size_t ends[] = {header.find("Starts") + 5, header.find("Wall s") + 5,
                                header.find("CPU s") + 4};
    for (int i : {2, 3}) {
        for (std::size_t end : ends) {
            ASSERT_LT(end, lines[i].size());
            EXPECT_TRUE(lines[i][end] >= '0' && lines[i][end] <= '9') << lines[i];
            EXPECT_TRUE(end + 1 == lines[i].size() || lines[i][end + 1] == ' ') << lines[i];
        }
    }
    EXPECT_EQ(lines[2].size(), header.size());
    EXPECT_EQ(header.find("Label"), lines[2].find("io"));
    EXPECT_EQ(header.find("Label"), lines[3].find("a much"));
    EXPECT_EQ(lines[4], "Marks:");
    EXPECT_TRUE(Matches(lines[5], " +[0-9]+\\.[0-9]{6} s  checkpoint")) << lines[5];
}

TEST(BaseResourceMonitor, ReportWithoutNameOrMarks) {
    bcu_ResourceMonitor monitor;
    const auto lines = Lines(monitor.Report());
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "Resource monitor");
    EXPECT_NE(lines[1].find("Starts"), std::string::npos);
}

TEST(BaseResourceMonitor, ThreadsUpdateTheirTimersSafely) {
    bcu_ResourceMonitor monitor;
    constexpr int kThreads = 4;
    constexpr int kRounds = 2000;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&monitor, t] {
            monitor.IniTimer(t, "worker");
            for (int i = 0; i < kRounds; ++i) {
                monitor.StartTimer(t);
                monitor.StopTimer(t);
                if (i % 100 == 0)
                    monitor.Mark("tick");
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    const auto rows = monitor.Timers();
    ASSERT_EQ(rows.size(), static_cast<std::size_t>(kThreads));
    for (const auto& row : rows) {
        EXPECT_EQ(row.starts, kRounds);
        EXPECT_FALSE(row.running);
    }
    EXPECT_EQ(monitor.Marks().size(), static_cast<std::size_t>(kThreads * kRounds / 100));
}

// The process-wide monitor writes its table to standard error when the
// process ends, if SIM_RESOURCE_MONITOR is set.
void UseSingletonAndExit() {
    bcu_ResourceMonitor& monitor = omi_Singleton<bcu_ResourceMonitor>::Instance();
    monitor.IniTimer(901, "exit check");
    monitor.StartTimer(901);
    monitor.StopTimer(901);
    monitor.Mark("about to exit");
    std::exit(0);
}

TEST(BaseResourceMonitorDeathTest, ReportsAtProcessEndWhenSwitchedOn) {
    EXPECT_EXIT(
        {
            setenv("SIM_RESOURCE_MONITOR", "1", 1);
            UseSingletonAndExit();
        },
        ::testing::ExitedWithCode(0),
        "Resource monitor.*Timer +Label.*\n +901  exit check +1 .*Marks:\n +[0-9.]+ s  about to exit\n");
}

TEST(BaseResourceMonitorDeathTest, SilentAtProcessEndWhenSwitchedOff) {
    EXPECT_EXIT(
        {
            unsetenv("SIM_RESOURCE_MONITOR");
            UseSingletonAndExit();
        },
        ::testing::ExitedWithCode(0), ::testing::Matcher<const std::string&>(new Lacks("Resource monitor")));
}

} // namespace
