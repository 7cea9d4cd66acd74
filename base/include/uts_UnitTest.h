// The unit-test framework of the base library: a monitor that counts and
// reports the assertions of a test run, and the base class of test cases.
#pragma once

#include "VEXZORBasExport.h"

#include <atomic>
#include <cstdio>
#include <mutex>

// Collects the assertions of one test run. Counting is thread-safe; each
// report is written whole.
class ZORBAS_API uts_UnitTestMonitor {
public:
    // Reports go to `out` (standard output when null).
    explicit uts_UnitTestMonitor(std::FILE* out = nullptr, int verbose = 0);
    uts_UnitTestMonitor(const uts_UnitTestMonitor&) = delete;
    uts_UnitTestMonitor& operator=(const uts_UnitTestMonitor&) = delete;

    void incrementUnitAssertCount();
    void incrementUnitAssertFailureCount();
    long long getUnitAssertCount() const;
    long long getUnitAssertFailureCount() const;
    // Number of pass-through reports written.
    long long getPassThroughCount() const;

    // "*** UNIT ASSERTION FAILED: <file>(<line>): <expression>"
    void reportAssertFailure(const char* file, int line, const char* expression);
    // "--- unit assertion passed: <file>(<line>): <expression>"
    void reportAssertPassThrough(const char* file, int line, const char* expression);
    // "=== Unit assertions: <n>, failed: <m>"
    void reportSummary();

    // The verbosity new test cases start with.
    int getVerbose() const { return m_verbose; }
    void setVerbose(int verbose) { m_verbose = verbose; }
    void setOutput(std::FILE* out);

    // All counts back to zero.
    void reset();

private:
    void write(const char* prefix, const char* file, int line, const char* expression);

    std::FILE* m_out;
    int m_verbose;
    std::atomic<long long> m_asserts{0};
    std::atomic<long long> m_failures{0};
    std::atomic<long long> m_passThroughs{0};
    std::mutex m_mutex;
};

// Base of a test case: reaches the run's monitor and has its own verbosity
// (0 quiet; above 1 every passed assertion is reported too).
class ZORBAS_API uts_UnitTest {
public:
    explicit uts_UnitTest(uts_UnitTestMonitor& monitor);
    virtual ~uts_UnitTest();
    uts_UnitTest(const uts_UnitTest&) = delete;
    uts_UnitTest& operator=(const uts_UnitTest&) = delete;

    int getVerbose() const { return m_verbose; }
    void setVerbose(int verbose) { m_verbose = verbose; }
    uts_UnitTestMonitor& getMonitor() const { return m_monitor; }

protected:
    // One assertion: a failure is counted and reported, every assertion is
    // counted, and above verbosity 1 it is reported as passed through.
    // Returns `passed`; the caller carries on either way.
    bool utsAssert(bool passed, const char* file, int line, const char* expression);

private:
    uts_UnitTestMonitor& m_monitor;
    int m_verbose;
};

// An assertion located at its own source line.
#define UTS_ASSERT(expression) utsAssert(static_cast<bool>(expression), __FILE__, __LINE__, #expression)
