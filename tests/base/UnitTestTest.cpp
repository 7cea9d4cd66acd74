// The unit-test monitor and the base of test cases.
#include "uts_UnitTest.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace {

std::string ReadAll(std::FILE* file) {
    std::fflush(file);
    std::rewind(file);
    std::string text;
    for (int c; (c = std::fgetc(file)) != EOF;)
        text += static_cast<char>(c);
    return text;
}

class Probe : public uts_UnitTest {
public:
    using uts_UnitTest::uts_UnitTest;
    bool Check(bool passed, const char* text) { return utsAssert(passed, "Probe", 7, text); }
    bool CheckHere(int value) { return UTS_ASSERT(value == 3); }
};

class UnitTestMonitor : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_NE(out, nullptr); }
    void TearDown() override { std::fclose(out); }
    std::FILE* out = std::tmpfile();
};

TEST_F(UnitTestMonitor, QuietTestCountsEveryAssertionAndReportsOnlyFailures) {
    uts_UnitTestMonitor monitor(out);
    Probe probe(monitor);
    EXPECT_EQ(probe.getVerbose(), 0);
    EXPECT_TRUE(probe.Check(true, "a == a"));
    EXPECT_FALSE(probe.Check(false, "a == b"));
    EXPECT_TRUE(probe.Check(true, "b == b"));
    EXPECT_EQ(monitor.getUnitAssertCount(), 3);
    EXPECT_EQ(monitor.getUnitAssertFailureCount(), 1);
    EXPECT_EQ(monitor.getPassThroughCount(), 0);
    EXPECT_EQ(ReadAll(out), "*** UNIT ASSERTION FAILED: Probe(7): a == b\n");
}

TEST_F(UnitTestMonitor, AboveVerbosityOneEveryAssertionIsReportedAsPassedThrough) {
    uts_UnitTestMonitor monitor(out, 1);
    Probe probe(monitor);
    monitor.setVerbose(3);
    EXPECT_EQ(probe.getVerbose(), 1) << "a test starts with the monitor's verbosity and keeps it";
    probe.Check(true, "one");
    EXPECT_EQ(monitor.getPassThroughCount(), 0);
    probe.setVerbose(2);
    probe.Check(true, "two");
    probe.Check(false, "three");
    EXPECT_EQ(monitor.getPassThroughCount(), 2);
    EXPECT_EQ(ReadAll(out), "--- unit assertion passed: Probe(7): two\n"
                            "*** UNIT ASSERTION FAILED: Probe(7): three\n"
                            "--- unit assertion passed: Probe(7): three\n");
}

TEST_F(UnitTestMonitor, MacroLocatesTheAssertionAtItsOwnLineWithItsText) {
    uts_UnitTestMonitor monitor(out);
    Probe probe(monitor);
    EXPECT_FALSE(probe.CheckHere(4));
    const std::string text = ReadAll(out);
    EXPECT_NE(text.find("UnitTestTest.cpp("), std::string::npos) << text;
    EXPECT_NE(text.find("): value == 3\n"), std::string::npos) << text;
}

TEST_F(UnitTestMonitor, SummaryAndReset) {
    uts_UnitTestMonitor monitor(out);
    Probe probe(monitor);
    probe.Check(false, "x");
    probe.Check(true, "y");
    monitor.reportSummary();
    monitor.reset();
    EXPECT_EQ(monitor.getUnitAssertCount(), 0);
    EXPECT_EQ(monitor.getUnitAssertFailureCount(), 0);
    monitor.reportSummary();
    EXPECT_EQ(ReadAll(out), "*** UNIT ASSERTION FAILED: Probe(7): x\n"
                            "=== Unit assertions: 2, failed: 1\n"
                            "=== Unit assertions: 0, failed: 0\n");
}

TEST_F(UnitTestMonitor, ThreadsCountWithoutLossAndReportsStayWhole) {
    uts_UnitTestMonitor monitor(out);
    constexpr int kThreads = 4;
    constexpr int kEach = 500;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&monitor] {
            Probe probe(monitor);
            probe.setVerbose(2);
            for (int i = 0; i < kEach; ++i)
                probe.Check(i % 5 != 0, "some rather long expression text that would show tearing");
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(monitor.getUnitAssertCount(), kThreads * kEach);
    EXPECT_EQ(monitor.getUnitAssertFailureCount(), kThreads * kEach / 5);
    EXPECT_EQ(monitor.getPassThroughCount(), kThreads * kEach);
    const std::string text = ReadAll(out);
    std::size_t lines = 0;
    for (std::size_t at = 0, end; (end = text.find('\n', at)) != std::string::npos; at = end + 1, ++lines) {
        const std::string line = text.substr(at, end - at);
        ASSERT_TRUE(
            line == "*** UNIT ASSERTION FAILED: Probe(7): some rather long expression text that would "
                    "show tearing" ||
            line == "--- unit assertion passed: Probe(7): some rather long expression text that would "
                    "show tearing")
            << line;
    }
    EXPECT_EQ(lines, static_cast<std::size_t>(kThreads * kEach + kThreads * kEach / 5));
}

} // namespace
