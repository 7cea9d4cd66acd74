// Argument vectors and temporary files for the command-line tests.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

namespace zorsim_cmdline_test {

// An argument vector as main receives it: argc entries and a null after them.
class Argv {
public:
    Argv(std::initializer_list<std::string> args) : m_args(args) { Point(); }
    explicit Argv(std::vector<std::string> args) : m_args(std::move(args)) { Point(); }
    Argv(const Argv&) = delete;
    Argv& operator=(const Argv&) = delete;

    int argc() const { return static_cast<int>(m_args.size()); }
    char** argv() { return m_pointers.data(); }

private:
    void Point() {
        for (std::string& arg : m_args)
            m_pointers.push_back(arg.data());
        m_pointers.push_back(nullptr);
    }
    std::vector<std::string> m_args;
    std::vector<char*> m_pointers;
};

// A fresh directory, removed with everything in it at the end of the scope.
class TempDir {
public:
    TempDir() {
        const char* base = std::getenv("TMPDIR");
        std::string pattern =
            std::string(base != nullptr && *base != '\0' ? base : "/tmp") + "/zorsim-cmdline-XXXXXX";
        if (mkdtemp(pattern.data()) != nullptr)
            m_path = pattern;
    }
    ~TempDir() {
        std::error_code ignored;
        if (!m_path.empty())
            std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    bool Ok() const { return !m_path.empty(); }
    const std::string& Path() const { return m_path; }

    // Writes `bytes` to a file in the directory and returns its path.
    std::string Write(const std::string& name, const std::string& bytes) const {
        const std::string path = m_path + "/" + name;
        if (std::FILE* file = std::fopen(path.c_str(), "wb")) {
            std::fwrite(bytes.data(), 1, bytes.size(), file);
            std::fclose(file);
        }
        return path;
    }

private:
    std::string m_path;
};

} // namespace zorsim_cmdline_test
