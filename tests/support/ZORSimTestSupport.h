// What the tests need from the operating system, in one place: environment,
// child processes, temporary files, standard error, platform facts; posix/
// and win32/ implement it. Text and paths are UTF-8 on every platform.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zorsim_test {

// Sets the variable, or clears it when `value` is null. (Windows keeps no
// empty variables: tests use values that are not empty.)
void SetEnv(const char* name, const char* value);

// Sets or clears a variable until the end of the scope.
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

struct ProcessResult {
    int exitCode = -1; // -1: killed, crashed or never started
    std::string out, err;
};
// Runs a child with exactly `args` (argument 0 first), this environment and
// `input` on its standard input, to its end.
class Process {
public:
    Process(const std::string& program, const std::vector<std::string>& args, const std::string& input = {});
    ProcessResult Wait() const { return m_result; }

private:
    ProcessResult m_result;
};

// A scenario runs instead of the tests in a child that RunScenario starts
// from this test program; it returns the exit code. Define one as
// ZORSIM_SCENARIO(Name) { ... }, with `args` the child's arguments.
using Scenario = int (*)(const std::vector<std::string>& args);
bool RegisterScenario(const char* name, Scenario scenario);
#define ZORSIM_SCENARIO(name)                                                                                \
    static int ZorsimScenario_##name(const std::vector<std::string>& args);                                  \
    [[maybe_unused]] static const bool ZorsimScenarioAdded_##name =                                          \
        ::zorsim_test::RegisterScenario(#name, ZorsimScenario_##name);                                       \
    static int ZorsimScenario_##name([[maybe_unused]] const std::vector<std::string>& args)
ProcessResult RunScenario(const std::string& name, const std::vector<std::string>& args);

// Runs `scenario` in a child started afresh (a "threadsafe" death test),
// for state that a process decides once. Failed EXPECT_* inside are printed
// and end it with 1; else it ends through std::exit and its standard error
// must match `output` (a regular expression or a matcher).
template <class Output = const char*>
void ExpectInFreshProcess(const std::function<void()>& scenario, Output output = "") {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            scenario();
            const ::testing::TestResult& result =
                *::testing::UnitTest::GetInstance()->current_test_info()->result();
            for (int i = 0; i < result.total_part_count(); ++i)
                if (result.GetTestPartResult(i).failed())
                    std::cerr << result.GetTestPartResult(i) << std::endl;
            result.Failed() ? std::_Exit(1) : std::exit(0);
        },
        ::testing::ExitedWithCode(0), output);
}

// A fresh directory, removed with all it holds at the end of the scope, or
// with `atExit` at process exit (for children that end without unwinding).
class TempDir {
public:
    explicit TempDir(bool atExit = false);
    ~TempDir();
    const std::string& Path() const { return m_path; }
    std::string operator/(const std::string& relative) const { return m_path + "/" + relative; }
    // Makes a file or directory, and its parents; returns its path.
    std::string File(const std::string& relative, const std::string& bytes = "", bool readOnly = false) const;
    std::string Dir(const std::string& relative, bool readOnly = false) const;

private:
    std::string m_path;
    bool m_atExit;
};

std::string ReadBytes(const std::string& path);
bool Exists(const std::string& path); // a link counts, whatever it points to
// Absolute, with '/' between names: one form for paths the OS gives in its
// own (Windows' symbol handler names source files so).
std::string GenericPath(const std::string& path);

// A file that every write fails as on a full disk; "" where there is none.
std::string FullDiskPath();

// Redirects standard error (the descriptor: the library's output too) until
// Finish, which returns what was written.
class StderrCapture {
public:
    StderrCapture();
    ~StderrCapture() { Finish(); }
    std::string Finish();

private:
    std::FILE* m_file;
    int m_saved = -1;
    std::string m_text;
};

std::vector<std::string> Lines(const std::string& text);
inline bool StartsWith(const std::string& text, const std::string& prefix) {
    return text.rfind(prefix, 0) == 0;
}

} // namespace zorsim_test
