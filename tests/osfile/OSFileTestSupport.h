// Shared by the OS file and file utility tests: a fresh directory, file
// helpers that go straight to the OS, and checks of what was raised.
#pragma once

#include "ZORSimExceptions.h"
#include "ZORSimUttOS.h"
#include "ZORSimUttOSFile.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <sys/stat.h>

namespace zorsim_test {

// A fresh directory under /tmp; with `atExit` it is removed when the process
// exits (for children that end without unwinding), else with the object.
class TempDir {
public:
    explicit TempDir(bool atExit = false) : m_path("/tmp/zorsim-file-XXXXXX"), m_atExit(atExit) {
        EXPECT_NE(mkdtemp(m_path.data()), nullptr);
        static std::string removed;
        if (atExit) {
            removed = m_path;
            std::atexit([] { std::filesystem::remove_all(removed); });
        }
    }
    ~TempDir() {
        std::error_code ignored;
        if (!m_atExit)
            std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::string& Path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
    bool m_atExit;
};

inline void WriteBytes(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}
inline std::string ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}
inline bool Exists(const std::string& path) {
    struct stat status;
    return ::lstat(path.c_str(), &status) == 0;
}

// What `action` raised, if it was an E; a test failure otherwise.
template <class E> std::optional<E> Raised(const std::function<void()>& action) {
    try {
        action();
        ADD_FAILURE() << "nothing raised";
    } catch (const E& e) {
        return e;
    } catch (const ZORBasException& e) {
        ADD_FAILURE() << "raised " << e.AsString(ZORBasStringMode(false)).c_str();
    }
    return std::nullopt;
}
// For the classes that carry the OS error: its code and the OS's own text.
template <class E> std::optional<E> ExpectRaised(const std::function<void()>& action, int code) {
    const auto e = Raised<E>(action);
    if (e) {
        EXPECT_EQ(code, e->GetSystemErrorCode().Code());
        EXPECT_STREQ(std::strerror(code), e->GetSystemErrorCode().AsString());
    }
    return e;
}
inline void ExpectSystemError(const std::function<void()>& action, const char* service, int code) {
    if (const auto e = ExpectRaised<ZORSimExcSystemError>(action, code)) {
        EXPECT_STREQ(service, e->GetServiceName().AsString());
    }
}

class OSFileTest : public ::testing::Test {
protected:
    void TearDown() override { ZORSimUttOSFault::DisarmAll(); }
    TempDir m_dir;
};

} // namespace zorsim_test
