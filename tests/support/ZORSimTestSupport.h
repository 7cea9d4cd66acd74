// What several test programs need: a scenario run in a fresh process, an
// environment variable set for a scope, and a capture of standard error.
#pragma once

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace zorsim_test {

// Sets the variable, or clears it when `value` is null.
inline void SetEnv(const char* name, const char* value) {
    if (value != nullptr)
        setenv(name, value, 1);
    else
        unsetenv(name);
}

// Sets or clears a variable until the end of the scope; children started
// meanwhile inherit it.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const char* value) : m_name(name) {
        if (const char* old = std::getenv(name))
            m_old = old;
        SetEnv(name, value);
    }
    ~ScopedEnv() { SetEnv(m_name, m_old ? m_old->c_str() : nullptr); }

private:
    const char* m_name;
    std::optional<std::string> m_old;
};

// Runs `scenario` in a child started afresh from main (a "threadsafe" death
// test re-executes the program), for state that a process decides once.
// EXPECT_* inside count: the child prints their failures and exits with 1.
// Otherwise it ends through std::exit, so what runs at process end runs too,
// and its standard error must match `output` (a regular expression or a
// matcher).
template <class Output = const char*>
void ExpectInFreshProcess(const std::function<void()>& scenario, Output output = "") {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            ::testing::TestPartResultArray results;
            {
                ::testing::ScopedFakeTestPartResultReporter collect(
                    ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &results);
                scenario();
            }
            bool failed = false;
            for (int i = 0; i < results.size(); ++i) {
                const ::testing::TestPartResult& result = results.GetTestPartResult(i);
                failed = failed || result.failed();
                if (result.failed())
                    std::fprintf(stderr, "%s:%d: %s\n", result.file_name() ? result.file_name() : "?",
                                 result.line_number(), result.message());
            }
            std::fflush(stderr);
            if (failed)
                std::_Exit(1);
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), output);
}

// Redirects file descriptor 2 into a temporary file until Finish.
class StderrCapture {
public:
    StderrCapture() : m_file(std::tmpfile()) {
        std::fflush(stderr);
        m_saved = dup(2);
        dup2(fileno(m_file), 2);
    }
    ~StderrCapture() { Finish(); }

    // Restores standard error and returns what was written meanwhile.
    std::string Finish() {
        if (m_saved >= 0) {
            std::fflush(stderr);
            dup2(m_saved, 2);
            close(m_saved);
            m_saved = -1;
            std::rewind(m_file);
            for (int c; (c = std::fgetc(m_file)) != EOF;)
                m_text += static_cast<char>(c);
            std::fclose(m_file);
        }
        return m_text;
    }

private:
    std::FILE* m_file;
    int m_saved;
    std::string m_text;
};

inline std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

inline bool StartsWith(const std::string& text, const std::string& prefix) {
    return text.rfind(prefix, 0) == 0;
}

} // namespace zorsim_test
