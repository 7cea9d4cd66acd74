// A fresh temporary directory per test, and small file helpers that go
// straight to the OS (so the code under test is not checked by itself).
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <optional>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace zorsim_test {

class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "zorsim-futil-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr)
            m_path = pattern;
    }
    ~TempDir() {
        std::error_code ignored;
        if (!m_path.empty()) {
            // Tests make directories read-only; make them removable again.
            for (auto& entry : std::filesystem::recursive_directory_iterator(m_path, ignored))
                if (entry.is_directory(ignored))
                    std::filesystem::permissions(entry.path(), std::filesystem::perms::owner_all,
                                                 std::filesystem::perm_options::add, ignored);
            std::filesystem::remove_all(m_path, ignored);
        }
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    bool Ok() const { return !m_path.empty(); }
    const std::string& Path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

inline void WriteBytes(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    ASSERT_TRUE(out.good()) << path;
}

inline std::string ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline bool Exists(const std::string& path) {
    struct stat st;
    return ::lstat(path.c_str(), &st) == 0;
}

// Moves into `path` for the life of the scope.
class ScopedCwd {
public:
    explicit ScopedCwd(const std::string& path) : m_old(std::filesystem::current_path()) {
        std::filesystem::current_path(path);
    }
    ~ScopedCwd() {
        std::error_code ignored;
        std::filesystem::current_path(m_old, ignored);
    }
    ScopedCwd(const ScopedCwd&) = delete;
    ScopedCwd& operator=(const ScopedCwd&) = delete;

private:
    std::filesystem::path m_old;
};

// The exception of class E that `action` raised; a test failure when it
// raised nothing or something else.
template <class E> std::optional<E> Raised(const std::function<void()>& action) {
    try {
        action();
        ADD_FAILURE() << "nothing was raised";
    } catch (const E& e) {
        return e;
    } catch (...) {
        ADD_FAILURE() << "something else was raised";
    }
    return std::nullopt;
}

// `action` raised ZORSimExcSystemError with this service name and errno.
#define EXPECT_SYSTEM_ERROR(action, service, code)                                                           \
    do {                                                                                                     \
        const auto raised = ::zorsim_test::Raised<ZORSimExcSystemError>([&] { action; });                    \
        if (raised) {                                                                                        \
            EXPECT_STREQ(raised->GetServiceName().AsString(), service);                                      \
            EXPECT_EQ(raised->GetSystemErrorCode().Code(), code) << raised->GetSystemErrorCode().AsString(); \
            EXPECT_STREQ(raised->GetSystemErrorCode().AsString(), std::strerror(code));                      \
        }                                                                                                    \
    } while (false)

} // namespace zorsim_test
