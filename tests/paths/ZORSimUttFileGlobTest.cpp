// Globbing real directories, and the file tests.
#include "ZORSimTestSupport.h"

#include "ZORSimExcDocument.h"
#include "ZORSimExcPoolFormat.h"
#include "ZORSimExcStorage.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttFileGlob.h"
#include "ZORSimUttOS.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "GlobTestDir.h"

using namespace zorsim_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using ::testing::UnorderedElementsAreArray;
using ZORSimUttFileUtils::GlobRange;

namespace {

std::vector<std::string> Glob(const std::string& pattern) {
    std::vector<std::string> found;
    for (GlobRange range{ZORString(pattern)}; !range.Empty(); range.Next())
        found.push_back(range.Front().c_str());
    return found;
}

class ZORSimUttFileGlob : public ::testing::Test {
protected:
    void SetUp() override { ZORSimUttAssertDisableExcReport(); }
    void TearDown() override { ZORSimUttOSFault::DisarmAll(); }
    GlobTestDir dir;
};

TEST_F(ZORSimUttFileGlob, ListsTheMatchesJoinedToThePatternsDirectory) {
    dir.File("a");
    dir.File("b");
    dir.File("c.txt");
    const std::string d = dir.Path();
    // A backslash in the pattern makes it Windows-style; Front joins with '/'.
    EXPECT_THAT(Glob(d + "\\*"), UnorderedElementsAre(d + "/a", d + "/b", d + "/c.txt", d + "/empty"));
    EXPECT_THAT(Glob(d + "/?"), UnorderedElementsAre(d + "/a", d + "/b"));
    EXPECT_THAT(Glob(d + "/*.TXT"), ElementsAre(d + "/c.txt"));
    EXPECT_THAT(Glob(d + "/C.txt"), ElementsAre(d + "/c.txt")); // no wildcard: the name, case ignored
}

TEST_F(ZORSimUttFileGlob, EntriesComeInTheOrderTheOSListsThem) {
    for (int i = 0; i < 50; ++i)
        dir.File("f" + std::to_string(i));
    std::vector<std::string> listed;
    for (const auto& entry : std::filesystem::directory_iterator(dir.Path()))
        listed.push_back(entry.path().string());
    EXPECT_EQ(Glob(dir.Path() + "/*"), listed);
}

TEST_F(ZORSimUttFileGlob, NoMatchIsAnEmptyRangeWithoutAnError) {
    dir.File("a.txt");
    StderrCapture capture;
    GlobRange range{ZORString(dir.Path() + "/*.none")};
    EXPECT_TRUE(range.Empty());
    range.Next(); // stays empty
    EXPECT_TRUE(range.Empty());
    EXPECT_EQ(capture.Finish(), "");
    EXPECT_THAT(Glob(dir.Path() + "/empty/*"), IsEmpty()) << "an empty directory";
}

TEST_F(ZORSimUttFileGlob, AMissingDirectoryIsAFindFirstFileFailure) {
    const std::string pattern = dir.Path() + "/missing\\*.x";
    StderrCapture capture;
    try {
        GlobRange range{ZORString(pattern)};
        ADD_FAILURE() << "no exception";
    } catch (const ZORSimExcSystemError& e) {
        EXPECT_STREQ(e.GetServiceName().AsString(), "FindFirstFile");
        EXPECT_EQ(e.GetSystemErrorCode().Code(), ENOENT);
    }
    EXPECT_EQ(capture.Finish(), "!!! Error in FindFirstFile.  Pattern: \"" + pattern + "\"\n");
    // A file where the directory should be fails the same way.
    dir.File("plain");
    EXPECT_THROW(GlobRange(ZORString(dir.Path() + "/plain/*")), ZORSimExcSystemError);
}

TEST_F(ZORSimUttFileGlob, DotsAreNeverListedButDirectoriesAre) {
    dir.File(".hidden");
    dir.Dir("sub");
    dir.File("sub.d/x"); // a directory with a dot
    const std::string d = dir.Path();
    EXPECT_THAT(Glob(d + "/*"), UnorderedElementsAre(d + "/.hidden", d + "/sub", d + "/sub.d", d + "/empty"));
    EXPECT_THAT(Glob(d + "/.*"), ElementsAre(d + "/.hidden"));
    EXPECT_THAT(Glob(d + "/."), IsEmpty());
    EXPECT_THAT(Glob(d + "/.."), IsEmpty());
    EXPECT_THAT(Glob(d + "/*."), UnorderedElementsAre(d + "/sub", d + "/empty"));
    EXPECT_THAT(Glob(d + "/sub.d/*"), ElementsAre(d + "/sub.d/x"));
}

TEST_F(ZORSimUttFileGlob, CaseIsIgnoredBeyondAscii) {
    dir.File("\xC3\x89t\xC3\xA9.Txt"); // Été.Txt
    dir.File("other.txt");
    const std::string d = dir.Path();
    EXPECT_THAT(Glob(d + "/\xC3\xA9T\xC3\x89.*"), ElementsAre(d + "/\xC3\x89t\xC3\xA9.Txt"));
    EXPECT_THAT(Glob(d + "/*.TXT"), UnorderedElementsAre(d + "/\xC3\x89t\xC3\xA9.Txt", d + "/other.txt"));
}

TEST_F(ZORSimUttFileGlob, TheExampleTableOnRealFiles) {
    struct Row {
        const char* pattern;
        const char* name;
        bool listed;
    };
    const Row rows[] = {
        {"*.*", "Makefile", true},
        {"*.", "Makefile", true},
        {"*.", "notes.txt", false},
        {"a?", "a", true},
        {"log.??.tmp", "log.7.tmp", true},
        {"???", "x.y", false},
        {"file.?", "file", true},
        {"*.t?p", "x.tp", false},
        {"*.TXT", "Notes.Txt", true},
        {"*.tmp", "a.tmpx", false},
        {"abc.", "abc", true},
        {"*.tmp", "a.b.tmp", true},
        {"[x]", "x", false},
        {"name.*", "name", true},
    };
    int index = 0;
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.pattern) + " / " + row.name);
        const std::string sub = "row" + std::to_string(index++);
        dir.File(sub + "/" + row.name);
        const std::string pattern = dir.Path() + "/" + sub + "/" + row.pattern;
        const std::vector<std::string> found = Glob(pattern);
        if (row.listed)
            EXPECT_THAT(found, ElementsAre(dir.Path() + "/" + sub + "/" + row.name));
        else
            EXPECT_THAT(found, IsEmpty());
    }
}

TEST_F(ZORSimUttFileGlob, ABarePatternListsTheWorkingDirectoryWithBareNames) {
    dir.File("one.txt");
    dir.File("two.txt");
    ScopedWorkingDirectory cwd(dir.Path());
    EXPECT_THAT(Glob("*.txt"), UnorderedElementsAre("one.txt", "two.txt"));
    EXPECT_THAT(Glob("./one.*"), ElementsAre("./one.txt"));
}

TEST_F(ZORSimUttFileGlob, OsFailuresWhileListing) {
    dir.File("a");
    dir.File("b");
    const std::string d = dir.Path();
    {
        // Past the first match, a failure is the find-next call's.
        GlobRange range{ZORString(d + "/*")};
        ASSERT_FALSE(range.Empty());
        ZORSimUttOSFault::Arm("FindNextFile", EIO);
        try {
            range.Next();
            ADD_FAILURE() << "no exception";
        } catch (const ZORSimExcSystemError& e) {
            EXPECT_STREQ(e.GetServiceName().AsString(), "FindNextFile");
            EXPECT_EQ(e.GetSystemErrorCode().Code(), EIO);
        }
        EXPECT_TRUE(range.Empty());
    }
    for (const char* call : {"FindFirstFile", "FindNextFile"}) {
        // Until the first match, every failure is the find-first call's.
        SCOPED_TRACE(call);
        ZORSimUttOSFault::Arm(call, EACCES);
        StderrCapture capture;
        try {
            GlobRange range{ZORString(d + "/*")};
            ADD_FAILURE() << "no exception";
        } catch (const ZORSimExcSystemError& e) {
            EXPECT_STREQ(e.GetServiceName().AsString(), "FindFirstFile");
            EXPECT_EQ(e.GetSystemErrorCode().Code(), EACCES);
        }
        EXPECT_TRUE(StartsWith(capture.Finish(), "!!! Error in FindFirstFile."));
    }
    EXPECT_THROW(GlobRange(ZORString("a\xFF/*")), ZORSimExcBadStringArgument);
}

TEST_F(ZORSimUttFileGlob, FileTests) {
    dir.File("file");
    dir.File("readonly", 0444);
    dir.Dir("rodir", 0555);
    const std::string d = dir.Path();
    using namespace ZORSimUttFileUtils;
    EXPECT_TRUE(FileExists(ZORString(d)));
    EXPECT_TRUE(FileExists(ZORString(d + "/file")));
    EXPECT_TRUE(FileExists(ZORString(d + "\\file"))); // the OS form of a Windows-style path
    EXPECT_FALSE(FileExists(ZORString(d + "/missing")));
    EXPECT_FALSE(FileExists(ZORString("")));
    EXPECT_TRUE(IsDir(ZORString(d)));
    EXPECT_FALSE(IsDir(ZORString(d + "/file")));
    EXPECT_FALSE(IsDir(ZORString(d + "/missing")));
    EXPECT_TRUE(IsWriteable(ZORString(d + "/file")));
    EXPECT_FALSE(IsWriteable(ZORString(d + "/readonly")));
    EXPECT_TRUE(IsWriteable(ZORString(d + "/rodir"))); // a directory always is
    EXPECT_FALSE(IsWriteable(ZORString(d + "/missing")));

    ZORSimUttOSFault::Arm("GetFileAttributes", EIO, 3);
    EXPECT_FALSE(FileExists(ZORString(d)));
    EXPECT_FALSE(IsDir(ZORString(d)));
    EXPECT_FALSE(IsWriteable(ZORString(d)));
    EXPECT_THROW(FileExists(ZORString("\xFF")), ZORSimExcBadStringArgument);
}

} // namespace
