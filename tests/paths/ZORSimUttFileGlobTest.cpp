// Globbing real directories, the file tests, and the plain globbing entry
// points called as a C client calls them.
#include "ZORSimTestSupport.h"

#include "ZORBasException.h"
#include "ZORSimExcDocument.h"
#include "ZORSimExcPoolFormat.h"
#include "ZORSimExcStorage.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttFileGlob.h"
#include "ZORSimUttOS.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <sys/stat.h>
#include <vector>

using namespace zorsim_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using ZORSimUttFileUtils::GlobRange;

namespace {

std::vector<std::string> Glob(const std::string& pattern) {
    std::vector<std::string> found;
    for (GlobRange range{ZORString(pattern)}; !range.Empty(); range.Next())
        found.push_back(range.Front().c_str());
    return found;
}

// Expects `make` to raise the system error of `service` with `code`.
template <class Make> void ExpectSystemError(Make make, const char* service, int code) {
    try {
        make();
        ADD_FAILURE() << "no exception";
    } catch (const ZORSimExcSystemError& e) {
        EXPECT_STREQ(e.GetServiceName().AsString(), service);
        EXPECT_EQ(e.GetSystemErrorCode().Code(), code);
    }
}

// Each test works in a fresh temporary directory, removed at the end.
class ZORSimUttFileGlob : public ::testing::Test {
protected:
    ZORSimUttFileGlob() : d((std::filesystem::temp_directory_path() / "zorsim_glob_XXXXXX").string()) {
        if (mkdtemp(d.data()) == nullptr)
            ADD_FAILURE() << "cannot create a temporary directory";
        Dir("empty");
        ZORSimUttAssertDisableExcReport();
    }
    ~ZORSimUttFileGlob() override {
        ZORSimUttOSFault::DisarmAll();
        std::error_code error;
        std::filesystem::remove_all(d, error); // read-only directories made here stay empty
    }
    // A file at a relative path, its directories created as needed.
    void File(const std::string& relative, int mode = 0644) {
        const std::filesystem::path path = std::filesystem::path(d) / relative;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << "x";
        chmod(path.c_str(), static_cast<mode_t>(mode));
    }
    void Dir(const std::string& relative, int mode = 0755) {
        std::filesystem::create_directories(std::filesystem::path(d) / relative);
        chmod((std::filesystem::path(d) / relative).c_str(), static_cast<mode_t>(mode));
    }
    std::string d;
};

TEST_F(ZORSimUttFileGlob, ListsTheMatchesJoinedToThePatternsDirectory) {
    for (const char* name : {"a", "b", "c.txt", "\xC3\x89t\xC3\xA9.Txt", ".hidden", "sub.d/x"})
        File(name);
    const std::string ete = d + "/\xC3\x89t\xC3\xA9.Txt"; // Été.Txt
    // A backslash in the pattern makes it Windows-style; Front joins with '/'.
    EXPECT_THAT(Glob(d + "\\*"), UnorderedElementsAre(d + "/a", d + "/b", d + "/c.txt", ete, d + "/.hidden",
                                                      d + "/sub.d", d + "/empty"));
    EXPECT_THAT(Glob(d + "/?"), UnorderedElementsAre(d + "/a", d + "/b"));
    EXPECT_THAT(Glob(d + "/*.TXT"), UnorderedElementsAre(d + "/c.txt", ete));
    EXPECT_THAT(Glob(d + "/\xC3\xA9T\xC3\x89.*"), ElementsAre(ete)); // case ignored beyond ASCII
    EXPECT_THAT(Glob(d + "/C.txt"), ElementsAre(d + "/c.txt"));      // no wildcard: the name, case ignored
    // "." and ".." are never listed; directories are.
    EXPECT_THAT(Glob(d + "/.*"), ElementsAre(d + "/.hidden"));
    EXPECT_THAT(Glob(d + "/."), IsEmpty());
    EXPECT_THAT(Glob(d + "/.."), IsEmpty());
    EXPECT_THAT(Glob(d + "/*."), UnorderedElementsAre(d + "/a", d + "/b", d + "/empty"));
    EXPECT_THAT(Glob(d + "/sub.d/*"), ElementsAre(d + "/sub.d/x"));
    // A bare pattern lists the working directory with bare names.
    const std::filesystem::path old = std::filesystem::current_path();
    std::filesystem::current_path(d);
    EXPECT_THAT(Glob("*.txt"), UnorderedElementsAre("c.txt", "\xC3\x89t\xC3\xA9.Txt"));
    EXPECT_THAT(Glob("./c.*"), ElementsAre("./c.txt"));
    std::filesystem::current_path(old);
}

TEST_F(ZORSimUttFileGlob, EntriesComeInTheOrderTheOSListsThem) {
    for (int i = 0; i < 50; ++i)
        File("f" + std::to_string(i));
    std::vector<std::string> listed;
    for (const auto& entry : std::filesystem::directory_iterator(d))
        listed.push_back(entry.path().string());
    EXPECT_EQ(Glob(d + "/*"), listed);
}

TEST_F(ZORSimUttFileGlob, NoMatchIsAnEmptyRangeWithoutAnError) {
    File("a.txt");
    StderrCapture capture;
    GlobRange range{ZORString(d + "/*.none")};
    EXPECT_TRUE(range.Empty());
    range.Next(); // stays empty
    EXPECT_TRUE(range.Empty());
    EXPECT_THAT(Glob(d + "/empty/*"), IsEmpty());
    EXPECT_EQ(capture.Finish(), "");
}

TEST_F(ZORSimUttFileGlob, AMissingDirectoryIsAFindFirstFileFailure) {
    const std::string pattern = d + "/missing\\*.x";
    File("plain");
    StderrCapture capture;
    ExpectSystemError([&] { GlobRange range{ZORString(pattern)}; }, "FindFirstFile", ENOENT);
    EXPECT_EQ(capture.Finish(), "!!! Error in FindFirstFile.  Pattern: \"" + pattern + "\"\n");
    StderrCapture quiet; // a file where the directory should be
    ExpectSystemError([&] { GlobRange range{ZORString(d + "/plain/*")}; }, "FindFirstFile", ENOTDIR);
}

TEST_F(ZORSimUttFileGlob, OsFailuresWhileListing) {
    File("a");
    File("b");
    {
        // Past the first match, a failure is the find-next call's.
        GlobRange range{ZORString(d + "/*")};
        ASSERT_FALSE(range.Empty());
        ZORSimUttOSFault::Arm("FindNextFile", EIO);
        ExpectSystemError([&] { range.Next(); }, "FindNextFile", EIO);
        EXPECT_TRUE(range.Empty());
    }
    for (const char* call : {"FindFirstFile", "FindNextFile"}) {
        // Until the first match, every failure is the find-first call's.
        SCOPED_TRACE(call);
        ZORSimUttOSFault::Arm(call, EACCES);
        StderrCapture capture;
        ExpectSystemError([&] { GlobRange range{ZORString(d + "/*")}; }, "FindFirstFile", EACCES);
        EXPECT_TRUE(StartsWith(capture.Finish(), "!!! Error in FindFirstFile."));
    }
    EXPECT_THROW(GlobRange(ZORString("a\xFF/*")), ZORSimExcBadStringArgument);
}

TEST_F(ZORSimUttFileGlob, FileTests) {
    File("file");
    File("readonly", 0444);
    Dir("rodir", 0555);
    using namespace ZORSimUttFileUtils;
    const struct {
        std::string path;
        bool exists, isDir, writeable;
    } rows[] = {
        {d, true, true, true},
        {d + "/file", true, false, true},
        {d + "\\file", true, false, true}, // the OS form of a Windows-style path
        {d + "/readonly", true, false, false},
        {d + "/rodir", true, true, true}, // a directory always is writeable
        {d + "/missing", false, false, false},
        {"", false, false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(FileExists(ZORString(row.path)), row.exists);
        EXPECT_EQ(IsDir(ZORString(row.path)), row.isDir);
        EXPECT_EQ(IsWriteable(ZORString(row.path)), row.writeable);
    }
    ZORSimUttOSFault::Arm("GetFileAttributes", EIO, 3);
    EXPECT_FALSE(FileExists(ZORString(d)));
    EXPECT_FALSE(IsDir(ZORString(d)));
    EXPECT_FALSE(IsWriteable(ZORString(d)));
    EXPECT_THROW(FileExists(ZORString("\xFF")), ZORSimExcBadStringArgument);
}

constexpr unsigned int kCapacity = 256;

// An error buffer whose untouched bytes show.
struct ErrorBuffer {
    ErrorBuffer() { std::memset(bytes, 'X', sizeof bytes); }
    // The text up to and including its terminator, or "X..." when untouched.
    std::string Text() const {
        const char* end = std::find(bytes, bytes + sizeof bytes, 'X');
        const char* stop = std::find(bytes, end, '\0');
        return stop != end ? std::string(bytes, stop + 1) : std::string(bytes, end) + "X";
    }
    char bytes[kCapacity + 8];
};

// Lists a pattern the way a binding does. Each text is copied right after
// GlobFront and read after nothing else: one that died with the call shows
// in the sanitizer build.
std::vector<std::string> ListAll(const std::string& pattern) {
    std::vector<std::string> names;
    ErrorBuffer error;
    void* handle = nullptr;
    EXPECT_EQ(ZORSimUttFileUtils_GlobInit(pattern.c_str(), &handle, kCapacity, error.bytes), 1);
    for (unsigned char empty = 2;;) {
        EXPECT_EQ(ZORSimUttFileUtils_GlobEmpty(handle, &empty, kCapacity, error.bytes), 1);
        if (empty != 0)
            break;
        const char* front = nullptr;
        EXPECT_EQ(ZORSimUttFileUtils_GlobFront(handle, &front, kCapacity, error.bytes), 1);
        names.emplace_back(front);
        EXPECT_EQ(ZORSimUttFileUtils_GlobNext(handle, kCapacity, error.bytes), 1);
    }
    EXPECT_EQ(error.Text(), "X") << "success leaves the buffer alone";
    // Always "Glob Error", and the handle is freed all the same (the
    // sanitizer build's leak checker would see it otherwise).
    EXPECT_EQ(ZORSimUttFileUtils_GlobFree(handle, kCapacity, error.bytes), 0);
    EXPECT_EQ(error.Text(), std::string("Glob Error: unknown error") + '\0');
    return names;
}

class ZORSimUttGlobExport : public ZORSimUttFileGlob {};

TEST_F(ZORSimUttGlobExport, ListsLikeTheRange) {
    for (const char* name : {"a.txt", "b.TXT", "c.dat"})
        File(name);
    EXPECT_THAT(ListAll(d + "\\*.txt"), UnorderedElementsAre(d + "/a.txt", d + "/b.TXT"));
    EXPECT_THAT(ListAll(d + "/*.none"), IsEmpty());
}

TEST_F(ZORSimUttGlobExport, FailuresBecomeTextCutToTheCapacity) {
    const std::string pattern = d + "/missing\\*.x";
    const std::string message =
        std::string("System Error FindFirstFile: ") + ZORBasSystemError(ENOENT).AsString();
    const std::string bad = "String passed into SIM is BAD. set/setenv _ZOR_FAIL_ON_BAD and rerun.";
    const struct {
        std::string pattern;
        unsigned int capacity;
        std::string text; // "X" when the buffer is left alone
    } rows[] = {
        {pattern, kCapacity, message + '\0'}, {pattern, 8, message.substr(0, 7) + '\0'},
        {pattern, 1, std::string(1, '\0')},   {pattern, 0, "X"},
        {"bad\xFF/*", kCapacity, bad + '\0'},
    };
    StderrCapture quiet;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.capacity);
        ErrorBuffer error;
        void* handle = reinterpret_cast<void*>(0x1);
        EXPECT_EQ(ZORSimUttFileUtils_GlobInit(row.pattern.c_str(), &handle, row.capacity, error.bytes), 0);
        EXPECT_EQ(handle, reinterpret_cast<void*>(0x1)) << "no handle on failure";
        EXPECT_EQ(error.Text(), row.text);
    }
    void* handle = nullptr;
    EXPECT_EQ(ZORSimUttFileUtils_GlobInit(pattern.c_str(), &handle, kCapacity, nullptr), 0);
}

TEST_F(ZORSimUttGlobExport, NextReportsAFindNextFileFailure) {
    File("a");
    File("b");
    char error[kCapacity];
    void* handle = nullptr;
    ASSERT_EQ(ZORSimUttFileUtils_GlobInit((d + "/*").c_str(), &handle, kCapacity, error), 1);
    ZORSimUttOSFault::Arm("FindNextFile", EIO);
    EXPECT_EQ(ZORSimUttFileUtils_GlobNext(handle, kCapacity, error), 0);
    EXPECT_EQ(std::string(error),
              std::string("System Error FindNextFile: ") + ZORBasSystemError(EIO).AsString());
    ZORSimUttFileUtils_GlobFree(handle, kCapacity, error);
}

// No fixture: the children end through exit and would leave its directory.
TEST(ZORSimUttGlobExportNullHandle, EndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    char error[kCapacity];
    unsigned char empty = 0;
    const char* front = nullptr;
    const std::function<void()> calls[] = {
        [&] { ZORSimUttFileUtils_GlobEmpty(nullptr, &empty, kCapacity, error); },
        [&] { ZORSimUttFileUtils_GlobFront(nullptr, &front, kCapacity, error); },
        [&] { ZORSimUttFileUtils_GlobNext(nullptr, kCapacity, error); },
        [&] { ZORSimUttFileUtils_GlobFree(nullptr, kCapacity, error); },
    };
    for (const auto& call : calls)
        EXPECT_EXIT(call(), ::testing::ExitedWithCode(1),
                    "!!! THE API HAS DETECTED AN INTERNAL LOGIC ERROR.\n!!! nullptr != glob\n");
}

} // namespace
