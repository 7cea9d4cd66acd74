// A fresh temporary directory for the globbing tests, removed with all it
// holds at the end of the test.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace zorsim_test {

class GlobTestDir {
public:
    GlobTestDir() {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/zorsim_glob_XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr)
            ADD_FAILURE() << "cannot create a temporary directory";
        m_path = pattern;
        Dir("empty");
    }
    ~GlobTestDir() {
        std::error_code error;
        // Read-only entries made by the test must not stop the clean-up.
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_path, error))
            if (entry.is_directory())
                chmod(entry.path().c_str(), 0755);
        std::filesystem::remove_all(m_path, error);
    }
    GlobTestDir(const GlobTestDir&) = delete;
    GlobTestDir& operator=(const GlobTestDir&) = delete;

    const std::string& Path() const { return m_path; }

    // A file at a relative path, its directories created as needed.
    void File(const std::string& relative, int mode = 0644) {
        const std::filesystem::path path = std::filesystem::path(m_path) / relative;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << "x";
        chmod(path.c_str(), static_cast<mode_t>(mode));
    }
    void Dir(const std::string& relative, int mode = 0755) {
        const std::filesystem::path path = std::filesystem::path(m_path) / relative;
        std::filesystem::create_directories(path);
        chmod(path.c_str(), static_cast<mode_t>(mode));
    }

private:
    std::string m_path;
};

// Changes the working directory for a scope.
class ScopedWorkingDirectory {
public:
    explicit ScopedWorkingDirectory(const std::string& path) : m_old(std::filesystem::current_path()) {
        std::filesystem::current_path(path);
    }
    ~ScopedWorkingDirectory() { std::filesystem::current_path(m_old); }

private:
    std::filesystem::path m_old;
};

} // namespace zorsim_test
