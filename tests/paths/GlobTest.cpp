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
    // A backslash in the pattern makes it Windows-style; Front joins with '/'.
    EXPECT_THAT(Glob(d + "\\*"), UnorderedElementsAre(d + "/a", d + "/b", d + "/c.txt", ete, d + "/.hidden",
                                                      d + "/sub.d", d + "/empty"));
    EXPECT_THAT(Glob(d + "/*.TXT"), UnorderedElementsAre(d + "/c.txt", ete));
    EXPECT_THAT(Glob(d + "/\xC3\xA9T\xC3\x89.*"), ElementsAre(ete)); // case ignored beyond ASCII
    EXPECT_THAT(Glob(d + "/C.txt"), ElementsAre(d + "/c.txt"));      // no wildcard: the name, case ignored
    // "." and ".." are never listed; no match is an empty range, silently.
    EXPECT_THAT(Glob(d + "/.*"), ElementsAre(d + "/.hidden"));
    StderrCapture capture;
    // (Windows' own search takes dir\.. for the parent, and lists its name.)
    EXPECT_THAT(Glob(d + "/.."), ::testing::Each(::testing::Not(::testing::EndsWith("/.."))));
    EXPECT_THAT(Glob(d + "/empty/*"), IsEmpty());
    EXPECT_EQ(capture.Finish(), "");
    // A bare pattern lists the working directory with bare names.
    std::filesystem::current_path(d);
    EXPECT_THAT(Glob("*.txt"), UnorderedElementsAre("c.txt", "\xC3\x89t\xC3\xA9.Txt"));
    EXPECT_THAT(Glob("./c.*"), ElementsAre("./c.txt"));
    std::filesystem::current_path("..");
    // In the order the OS lists them.
    std::vector<std::string> listed;
    for (const auto& entry : std::filesystem::directory_iterator(d))
        listed.push_back(d + "/" + entry.path().filename().string());
    EXPECT_EQ(Glob(d + "/*"), listed);
}

TEST_F(FileGlob, OSFailuresBeforeAndAfterTheFirstMatch) {
    m_dir.File("a");
    m_dir.File("b");
    const std::string pattern = d + "/missing\\*.x";
    StderrCapture capture;
    ExpectSystemError([&] { GlobRange range{ZORString(pattern)}; }, Service::FindFirstFile,
                      Error::PathNotFound);
    EXPECT_EQ(capture.Finish(), "!!! Error in FindFirstFile.  Pattern: \"" + pattern + "\"\n");
    StderrCapture quiet;
    // Until the first match, every failure is the find-first call's.
    for (Service service : {Service::FindFirstFile, Service::FindNextFile}) {
        ZORSimUttOSFault::Arm(service, Error::AccessDenied);
        ExpectSystemError([&] { GlobRange range{ZORString(d + "/*")}; }, Service::FindFirstFile,
                          Error::AccessDenied);
    }
    GlobRange range{ZORString(d + "/*")};
    ZORSimUttOSFault::Arm(Service::FindNextFile, Error::IoError);
    ExpectSystemError([&] { range.Next(); }, Service::FindNextFile, Error::IoError);
    EXPECT_TRUE(range.Empty());
    EXPECT_THROW(GlobRange(ZORString("a\xFF/*")), ZORSimExcBadStringArgument);
}

TEST_F(FileGlob, FileTests) {
    using namespace ZORSimUttFileUtils;
    const std::tuple<std::string, bool, bool, bool> rows[] = {
        // path, exists, is a directory, writeable
        {d, true, true, true},
        {m_dir.File("file"), true, false, true},
        {d + "\\file", true, false, true}, // the OS form of a Windows-style path
        {m_dir.File("readonly", "", true), true, false, false},
        {m_dir.Dir("rodir", true), true, true, true}, // a directory always is writeable
        {d + "/missing", false, false, false},
        {"", false, false, false},
    };
    for (const auto& [path, exists, isDir, writeable] : rows) {
        EXPECT_EQ(FileExists(ZORString(path)), exists) << path;
        EXPECT_EQ(IsDir(ZORString(path)), isDir) << path;
        EXPECT_EQ(IsWriteable(ZORString(path)), writeable) << path;
    }
    ZORSimUttOSFault::Arm(Service::GetFileAttributes, Error::IoError, 3);
    EXPECT_FALSE(FileExists(ZORString(d)) || IsDir(ZORString(d)) || IsWriteable(ZORString(d)));
    EXPECT_THROW(FileExists(ZORString("\xFF")), ZORSimExcBadStringArgument);
}

constexpr unsigned int kCapacity = 256;

// The plain entry points as a binding calls them (the C client test covers
// null pointers and capacities): an exception's text in the error buffer,
// which success leaves alone.
TEST_F(FileGlob, ExportsReportFailuresAsText) {
    m_dir.File("a");
    m_dir.File("b");
    const std::string system = "System Error ";
    const std::pair<std::string, std::string> rows[] = {
        {d + "/missing\\*.x",
         system + "FindFirstFile: " + ZORBasSystemError(OS::ErrorCode(Error::PathNotFound)).AsString()},
        {"bad\xFF/*", "String passed into SIM is BAD. set/setenv _ZOR_FAIL_ON_BAD and rerun."}};
    StderrCapture quiet;
    char error[kCapacity];
    for (const auto& [pattern, text] : rows) {
        void* handle = &error;
        EXPECT_EQ(ZORSimUttFileUtils_GlobInit(pattern.c_str(), &handle, kCapacity, error), 0);
        EXPECT_EQ(handle, &error) << "no handle on failure";
        EXPECT_EQ(std::string(error), text);
    }
    void* handle = nullptr;
    std::memset(error, 'X', sizeof error);
    unsigned char empty = 2;
    const char* front = nullptr;
    ASSERT_EQ(ZORSimUttFileUtils_GlobInit((d + "/*").c_str(), &handle, kCapacity, error), 1);
    EXPECT_TRUE(ZORSimUttFileUtils_GlobEmpty(handle, &empty, kCapacity, error) == 1 && empty == 0);
    EXPECT_EQ(ZORSimUttFileUtils_GlobFront(handle, &front, kCapacity, error), 1);
    const std::string first =
        front; // copied at once: a text that died with the call shows in the sanitizer build
    EXPECT_THAT(first, ::testing::AnyOf(d + "/a", d + "/b"));
    EXPECT_EQ(error[0], 'X') << "success leaves the buffer alone";
    ZORSimUttOSFault::Arm(Service::FindNextFile, Error::IoError);
    EXPECT_EQ(ZORSimUttFileUtils_GlobNext(handle, kCapacity, error), 0);
    EXPECT_EQ(std::string(error),
              system + "FindNextFile: " + ZORBasSystemError(OS::ErrorCode(Error::IoError)).AsString());
    ZORSimUttFileUtils_GlobFree(handle, kCapacity, error);
}

// No fixture: the children end through exit and would leave its directory.
TEST(GlobExportNullHandle, EndsTheProcess) {
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
