// The unit-test monitor and the base of test cases.
#include "uts_UnitTest.h"

#include <string>

uts_UnitTestMonitor::uts_UnitTestMonitor(std::FILE* out, int verbose)
    : m_out(out != nullptr ? out : stdout), m_verbose(verbose) {}

void uts_UnitTestMonitor::incrementUnitAssertCount() {
    m_asserts.fetch_add(1, std::memory_order_relaxed);
}

void uts_UnitTestMonitor::incrementUnitAssertFailureCount() {
    m_failures.fetch_add(1, std::memory_order_relaxed);
}

long long uts_UnitTestMonitor::getUnitAssertCount() const {
    return m_asserts.load(std::memory_order_relaxed);
}

long long uts_UnitTestMonitor::getUnitAssertFailureCount() const {
    return m_failures.load(std::memory_order_relaxed);
}

long long uts_UnitTestMonitor::getPassThroughCount() const {
    return m_passThroughs.load(std::memory_order_relaxed);
}

void uts_UnitTestMonitor::reportAssertFailure(const char* file, int line, const char* expression) {
    write("*** UNIT ASSERTION FAILED: ", file, line, expression);
}

void uts_UnitTestMonitor::reportAssertPassThrough(const char* file, int line, const char* expression) {
    m_passThroughs.fetch_add(1, std::memory_order_relaxed);
    write("--- unit assertion passed: ", file, line, expression);
}

void uts_UnitTestMonitor::reportSummary() {
    const std::string text = "=== Unit assertions: " + std::to_string(getUnitAssertCount()) +
                             ", failed: " + std::to_string(getUnitAssertFailureCount()) + "\n";
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::fwrite(text.data(), 1, text.size(), m_out);
    std::fflush(m_out);
}

void uts_UnitTestMonitor::setOutput(std::FILE* out) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_out = out != nullptr ? out : stdout;
}

void uts_UnitTestMonitor::reset() {
    m_asserts.store(0, std::memory_order_relaxed);
    m_failures.store(0, std::memory_order_relaxed);
    m_passThroughs.store(0, std::memory_order_relaxed);
}

void uts_UnitTestMonitor::write(const char* prefix, const char* file, int line, const char* expression) {
    // Built first and written in one call, so that reports from several
    // threads do not interleave.
    std::string text = prefix;
    text += file != nullptr ? file : "?";
    text += "(" + std::to_string(line) + "): ";
    text += expression != nullptr ? expression : "";
    text += "\n";
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::fwrite(text.data(), 1, text.size(), m_out);
    std::fflush(m_out);
}

uts_UnitTest::uts_UnitTest(uts_UnitTestMonitor& monitor)
    : m_monitor(monitor), m_verbose(monitor.getVerbose()) {}

uts_UnitTest::~uts_UnitTest() = default;

bool uts_UnitTest::utsAssert(bool passed, const char* file, int line, const char* expression) {
    if (!passed) {
        m_monitor.incrementUnitAssertFailureCount();
        m_monitor.reportAssertFailure(file, line, expression);
    }
    m_monitor.incrementUnitAssertCount();
    // Reported above verbosity 1 whatever the outcome: the trace of a verbose
    // run shows every assertion that was reached.
    if (getVerbose() > 1)
        m_monitor.reportAssertPassThrough(file, line, expression);
    return passed;
}
