// Helpers of the report tests: a fresh process for each scenario (report mode,
// symbol handler and the disabled flag are decided once per process) and a
// capture of what goes to standard error.
#pragma once

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace zorsim_report_test {

// Redirects file descriptor 2 into a temporary file until Finish.
class StderrCapture {
public:
    StderrCapture() {
        std::fflush(stderr);
        m_file = std::tmpfile();
        m_saved = dup(2);
        if (m_file != nullptr && m_saved >= 0)
            dup2(fileno(m_file), 2);
    }
    ~StderrCapture() { Finish(); }
    StderrCapture(const StderrCapture&) = delete;
    StderrCapture& operator=(const StderrCapture&) = delete;

    // Restores standard error and returns what was written meanwhile.
    std::string Finish() {
        if (m_saved < 0)
            return m_text;
        std::fflush(stderr);
        dup2(m_saved, 2);
        close(m_saved);
        m_saved = -1;
        if (m_file != nullptr) {
            std::rewind(m_file);
            char buffer[4096];
            std::size_t got;
            while ((got = std::fread(buffer, 1, sizeof buffer, m_file)) > 0)
                m_text.append(buffer, got);
            std::fclose(m_file);
            m_file = nullptr;
        }
        return m_text;
    }

private:
    std::FILE* m_file = nullptr;
    int m_saved = -1;
    std::string m_text;
};

// Runs `scenario` in a child process started afresh from main (a death test
// in the "threadsafe" style re-executes the test program). Checks inside the
// scenario use EXPECT_*; the child collects their failures, writes them to
// standard error (shown by the failing EXPECT_EXIT) and exits with status 1.
inline void ExpectInFreshProcess(const std::function<void()>& scenario) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            ::testing::TestPartResultArray results;
            {
                ::testing::ScopedFakeTestPartResultReporter collect(
                    ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &results);
                scenario();
            }
            int failures = 0;
            for (int i = 0; i < results.size(); ++i) {
                const ::testing::TestPartResult& result = results.GetTestPartResult(i);
                if (!result.failed())
                    continue;
                ++failures;
                std::fprintf(stderr, "%s:%d: %s\n", result.file_name() ? result.file_name() : "?",
                             result.line_number(), result.message());
            }
            std::fflush(stderr);
            std::_Exit(failures == 0 ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

inline std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

inline bool StartsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

} // namespace zorsim_report_test
