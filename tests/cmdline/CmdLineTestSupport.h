// Argument vectors and temporary files for the command-line tests.
#pragma once

#include "ZORSimCommandLine.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <vector>

namespace zorsim_cmdline_test {

// An argument vector as main receives it: argc entries and a null after them.
class Argv {
public:
    Argv(std::initializer_list<std::string> args) : Argv(std::vector<std::string>(args)) {}
    explicit Argv(std::vector<std::string> args) : m_args(std::move(args)) {
        for (std::string& arg : m_args)
            m_pointers.push_back(arg.data());
        m_pointers.push_back(nullptr);
    }
    Argv(const Argv&) = delete;
    int argc() const { return static_cast<int>(m_args.size()); }
    char** argv() { return m_pointers.data(); }

private:
    std::vector<std::string> m_args;
    std::vector<char*> m_pointers;
};

inline std::vector<std::string> StoredArgs() {
    std::vector<std::string> args;
    for (int i = 0; i < ZORSimCommandLine::NumArgs(); ++i)
        args.emplace_back(ZORSimCommandLine::GetPosition(i).c_str());
    return args;
}

// A fresh directory, removed with everything in it at the end of the scope.
struct TempDir {
    std::string path = (std::filesystem::temp_directory_path() / "zorsim-cmdline-XXXXXX").string();
    TempDir() {
        if (mkdtemp(path.data()) == nullptr)
            path.clear();
    }
    ~TempDir() {
        std::error_code ignored;
        if (!path.empty())
            std::filesystem::remove_all(path, ignored);
    }

    // Writes `bytes` to a file in the directory and returns its path.
    std::string Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(path + "/" + name, std::ios::binary) << bytes;
        return path + "/" + name;
    }
};

} // namespace zorsim_cmdline_test
