// Globbing real directories, the file tests, and the plain globbing entry
// points called as a C client calls them.
#include "ZORSimTestErrors.h"

#include "ZORSimUttAssert.h"
#include "ZORSimUttFileGlob.h"

#include <gmock/gmock.h>

#include <cstring>
#include <filesystem>

using namespace zorsim_test;
using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;
using ZORSimUttFileUtils::GlobRange;

namespace {

std::vector<std::string> Glob(const std::string& pattern) {
    std::vector<std::string> found;
    for (GlobRange range{ZORString(pattern)}; !range.Empty(); range.Next())
        found.push_back(range.Front().c_str());
    return found;
}

class FileGlob : public FileTest {
protected:
    void SetUp() override { ZORSimUttAssertDisableExcReport(); }
    const std::string d = m_dir.Path();
};

TEST_F(FileGlob, ListsTheMatchesJoinedToThePatternsDirectory) {
    for (const char* name : {"a", "b", "c.txt", "\xC3\x89t\xC3\xA9.Txt", ".hidden", "sub.d/x"})
        m_dir.File(name);
    m_dir.Dir("empty");
    const std::string ete = d + "/\xC3\x89t\xC3\xA9.Txt"; // Été.Txt
    // Every entry, in the order the OS lists them. A backslash in the pattern
    // makes it Windows-style; Front joins with '/'.
    std::vector<std::string> listed;
    for (const auto& entry : std::filesystem::directory_iterator(d))
        listed.push_back(d + "/" + entry.path().filename().string());
    EXPECT_EQ(Glob(d + "\\*"), listed);
    EXPECT_THAT(Glob(d + "/*.TXT"), UnorderedElementsAre(d + "/c.txt", ete));
    EXPECT_THAT(Glob(d + "/C.txt"), ElementsAre(d + "/c.txt")); // no wildcard: the name, case ignored
    // "." and ".." are never listed; no match is an empty range, silently.
    EXPECT_THAT(Glob(d + "/.*"), ElementsAre(d + "/.hidden"));
    StderrCapture capture;
    // (Windows' own search takes dir\.. for the parent, and lists its name.)
    EXPECT_THAT(Glob(d + "/.."), ::testing::Each(::testing::Not(::testing::EndsWith("/.."))));
    EXPECT_TRUE(Glob(d + "/empty/*").empty());
    EXPECT_EQ(capture.Finish(), "");
    // A bare pattern lists the working directory with bare names.
    std::filesystem::current_path(d);
    EXPECT_THAT(Glob("*.txt"), UnorderedElementsAre("c.txt", "\xC3\x89t\xC3\xA9.Txt"));
    EXPECT_THAT(Glob("./c.*"), ElementsAre("./c.txt"));
    std::filesystem::current_path("..");
}

TEST_F(FileGlob, FileTests) {
    using namespace ZORSimUttFileUtils;
    const std::tuple<std::string, bool, bool, bool> rows[] = {
        // path, exists, is a directory, writeable
        {m_dir.File("file"), true, false, true},
        {m_dir.File("readonly", "", true), true, false, false},
        {m_dir.Dir("rodir", true), true, true, true}, // a directory always is writeable
        {d + "/missing", false, false, false},
    };
    for (const auto& [path, exists, isDir, writeable] : rows) {
        EXPECT_EQ(FileExists(ZORString(path)), exists) << path;
        EXPECT_EQ(IsDir(ZORString(path)), isDir) << path;
        EXPECT_EQ(IsWriteable(ZORString(path)), writeable) << path;
    }
    EXPECT_THROW(FileExists(ZORString("\xFF")), ZORSimExcBadStringArgument);
}

constexpr unsigned int kCapacity = 256;

// OS failures before and after the first match, as the plain entry points
// report them to a binding (the C client test covers null pointers and
// capacities): an exception's text in the error buffer, which success leaves
// alone.
TEST_F(FileGlob, OSFailuresBeforeAndAfterTheFirstMatchThroughTheExports) {
    m_dir.File("a");
    const auto systemError = [](const char* service, Error error) {
        return std::string("System Error ") + service + ": " +
               ZORBasSystemError(OS::ErrorCode(error)).AsString();
    };
    const std::string missing = d + "/missing\\*.x";
    char error[kCapacity];
    void* handle = &error;
    StderrCapture capture;
    EXPECT_EQ(ZORSimUttFileUtils_GlobInit(missing.c_str(), &handle, kCapacity, error), 0);
    EXPECT_EQ(capture.Finish(), "!!! Error in FindFirstFile.  Pattern: \"" + missing + "\"\n");
    EXPECT_EQ(handle, &error) << "no handle on failure";
    EXPECT_EQ(std::string(error), systemError("FindFirstFile", Error::PathNotFound));
    StderrCapture quiet;
    // Until the first match, every failure is the find-first call's.
    ZORSimUttOSFault::Arm(Service::FindNextFile, Error::AccessDenied);
    ExpectSystemError([&] { GlobRange range{ZORString(d + "/*")}; }, Service::FindFirstFile,
                      Error::AccessDenied);
    EXPECT_THROW(GlobRange(ZORString("a\xFF/*")), ZORSimExcBadStringArgument);
    std::memset(error, 'X', sizeof error);
    const char* front = nullptr;
    ASSERT_EQ(ZORSimUttFileUtils_GlobInit((d + "/*").c_str(), &handle, kCapacity, error), 1);
    EXPECT_EQ(ZORSimUttFileUtils_GlobFront(handle, &front, kCapacity, error), 1);
    // Read at once: a text that died with the call shows in the sanitizer build.
    EXPECT_EQ(std::string(front), d + "/a");
    EXPECT_EQ(error[0], 'X') << "success leaves the buffer alone";
    ZORSimUttOSFault::Arm(Service::FindNextFile, Error::IoError);
    EXPECT_EQ(ZORSimUttFileUtils_GlobNext(handle, kCapacity, error), 0);
    EXPECT_EQ(std::string(error), systemError("FindNextFile", Error::IoError));
    unsigned char empty = 0;
    EXPECT_TRUE(ZORSimUttFileUtils_GlobEmpty(handle, &empty, kCapacity, error) && empty == 1);
    ZORSimUttFileUtils_GlobFree(handle, kCapacity, error);
}

// No fixture: the children end through exit and would leave its directory.
TEST(GlobExportNullHandle, EndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    unsigned char empty = 0;
    const char* front = nullptr;
    const std::function<void()> calls[] = {
        [&] { ZORSimUttFileUtils_GlobEmpty(nullptr, &empty, 0, nullptr); },
        [&] { ZORSimUttFileUtils_GlobFront(nullptr, &front, 0, nullptr); },
        [&] { ZORSimUttFileUtils_GlobNext(nullptr, 0, nullptr); },
        [&] { ZORSimUttFileUtils_GlobFree(nullptr, 0, nullptr); },
    };
    for (const auto& call : calls)
        EXPECT_EXIT(call(), ::testing::ExitedWithCode(1),
                    "!!! THE API HAS DETECTED AN INTERNAL LOGIC ERROR.\n!!! nullptr != glob\n");
}

} // namespace
