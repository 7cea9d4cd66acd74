// File utilities on real files in a fresh directory; OS failures come both
// from the file system itself and from the seam's fault injection.
#include "ZORSimUttFileUtils.h"

#include "FileUtilsTestSupport.h"
#include "ZORSimExceptions.h"
#include "ZORSimTestSupport.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttOS.h"
#include "ZORSimUttOSFile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

namespace FU = ZORSimUttFileUtils;
using zorsim_test::Exists;
using zorsim_test::Raised;
using zorsim_test::ReadBytes;
using zorsim_test::ScopedCwd;
using zorsim_test::TempDir;
using zorsim_test::WriteBytes;

class FileUtils : public ::testing::Test {
protected:
    void SetUp() override {
        ZORSimUttAssertDisableExcReport();
        ASSERT_TRUE(dir.Ok());
    }
    void TearDown() override { ZORSimUttOSFault::DisarmAll(); }

    // A path in the temporary directory, as a library argument.
    ZORString At(const std::string& name) const { return ZORString(dir / name); }

    TempDir dir;
};

// ---- identity ----------------------------------------------------------------

TEST_F(FileUtils, IdentityIsTheFileNotTheName) {
    WriteBytes(dir / "a", "1");
    WriteBytes(dir / "b", "1");
    ASSERT_EQ(::link((dir / "a").c_str(), (dir / "hard").c_str()), 0);
    ASSERT_EQ(::mkdir((dir / "sub").c_str(), 0700), 0);

    EXPECT_TRUE(FU::GetFileID(At("a")) == FU::GetFileID(At("hard")));
    EXPECT_FALSE(FU::GetFileID(At("a")) == FU::GetFileID(At("b")));
    EXPECT_TRUE(FU::SameFile(At("a"), At("hard")));
    EXPECT_TRUE(FU::SameFile(At("a"), At("sub/../a")));
    EXPECT_TRUE(FU::SameFile(At("a"), ZORString(dir.Path() + "\\.\\a"))) << "either separator";
    EXPECT_FALSE(FU::SameFile(At("a"), At("b")));
    EXPECT_FALSE(FU::SameFile(At("a"), At("missing"))) << "a missing name is no error";
    EXPECT_FALSE(FU::SameFile(At("missing"), At("missing")));
}

TEST_F(FileUtils, FileIdCarriesDeviceAndInodeWithoutLoss) {
    WriteBytes(dir / "a", "");
    struct stat status;
    ASSERT_EQ(::stat((dir / "a").c_str(), &status), 0);
    const FU::FileId id = FU::GetFileID(At("a"));
    const auto inode = static_cast<unsigned long long>(status.st_ino);
    EXPECT_EQ(id.fileIndexHigh, static_cast<unsigned>(inode >> 32));
    EXPECT_EQ(id.fileIndexLow, static_cast<unsigned>(inode));
    EXPECT_EQ(id.volumeSerialNumber, (major(status.st_dev) << 20) | minor(status.st_dev));
    // An unreadable file still has an identity.
    ASSERT_EQ(::chmod((dir / "a").c_str(), 0), 0);
    EXPECT_TRUE(FU::GetFileID(At("a")) == id);
}

TEST_F(FileUtils, GetFileIdOfAMissingFileOrDirectory) {
    const auto missing =
        Raised<ZORSimExcNoSuchFile>([&] { FU::GetFileID(ZORString(dir.Path() + "\\nothing")); });
    ASSERT_TRUE(missing);
    EXPECT_EQ(std::string(missing->GetFile_name().AsString()), dir / "nothing") << "the normalised name";
    // A missing directory is the path-not-found case, not "no such file".
    EXPECT_SYSTEM_ERROR(FU::GetFileID(At("nodir/x")), "CreateFile", ENOENT);
    WriteBytes(dir / "file", "");
    EXPECT_SYSTEM_ERROR(FU::GetFileID(At("file/x")), "CreateFile", ENOTDIR);
}

TEST_F(FileUtils, GetFileIdFailuresNameTheFailedCall) {
    WriteBytes(dir / "a", "");
    ZORSimUttOSFault::Arm("CreateFile", EACCES);
    EXPECT_SYSTEM_ERROR(FU::GetFileID(At("a")), "CreateFile", EACCES);
    ZORSimUttOSFault::Arm("GetFileInformationByHandle", EIO);
    EXPECT_SYSTEM_ERROR(FU::GetFileID(At("a")), "GetFileInformationByHandle", EIO);
    // The descriptor was closed on the way out: the next open reuses it.
    const int probe = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(probe);
    ZORSimUttOSFault::Arm("GetFileInformationByHandle", EIO, 50);
    for (int i = 0; i < 50; ++i)
        EXPECT_ANY_THROW(FU::GetFileID(At("a")));
    const int again = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(again, probe);
    ::close(again);
}

// ---- copy ----------------------------------------------------------------------

std::string Pattern(std::size_t size) {
    std::string bytes(size, '\0');
    unsigned state = 12345;
    for (char& c : bytes) {
        state = state * 1103515245u + 12345u;
        c = static_cast<char>(state >> 16);
    }
    return bytes;
}

TEST_F(FileUtils, CopyReproducesEmptyAndMultiChunkFilesAndEmptiesTheTarget) {
    WriteBytes(dir / "empty", "");
    WriteBytes(dir / "target", "old contents");
    FU::Copy(At("empty"), At("target"));
    EXPECT_TRUE(Exists(dir / "target"));
    EXPECT_EQ(ReadBytes(dir / "target"), "");

    FU::Copy(At("empty"), At("fresh"));
    EXPECT_TRUE(Exists(dir / "fresh")) << "an empty source still creates the target";

    // Three whole chunks and a bit, and exactly two chunks.
    for (const std::size_t size : {3 * 262144 + 123, 2 * 262144}) {
        const std::string bytes = Pattern(size);
        WriteBytes(dir / "big", bytes);
        FU::Copy(At("big"), At("target"));
        EXPECT_TRUE(ReadBytes(dir / "target") == bytes) << size;
    }
}

TEST_F(FileUtils, CopyIntoAnOpenFileWritesAtItsPositionAndLeavesItOpen) {
    const std::string bytes = Pattern(262144 + 7);
    WriteBytes(dir / "src", bytes);
    ZORSimUttOSFile out;
    out.OpenWrite(At("out"));
    out.WriteAll("head", 4);
    FU::Copy(At("src"), out);
    ASSERT_TRUE(out.IsOpen());
    out.WriteAll("tail", 4);
    out.Close();
    EXPECT_TRUE(ReadBytes(dir / "out") == "head" + bytes + "tail");
}

TEST_F(FileUtils, CopyFailures) {
    // A missing source: nothing is created.
    const auto missing = Raised<ZORSimExcNoSuchFile>([&] { FU::Copy(At("nope"), At("target")); });
    EXPECT_TRUE(missing);
    EXPECT_FALSE(Exists(dir / "target"));

    WriteBytes(dir / "src", Pattern(3 * 262144));
    ZORSimUttOSFault::Arm("ReadFile", EIO, 1, 1);
    EXPECT_TRUE(Raised<ZORSimExcReadError>([&] { FU::Copy(At("src"), At("target")); }));
    EXPECT_EQ(ReadBytes(dir / "target").size(), 262144u) << "what was copied before the failure stays";

    ZORSimUttOSFault::Arm("WriteFile", ENOSPC);
    EXPECT_TRUE(Raised<ZORSimExcDiskFull>([&] { FU::Copy(At("src"), At("target")); }));

    ZORSimUttOSFile readOnly;
    readOnly.OpenRead(At("src"));
    EXPECT_TRUE(Raised<ZORSimExcReadOnly>([&] { FU::Copy(At("src"), readOnly); }));
}

// ---- move and links --------------------------------------------------------------

TEST_F(FileUtils, MoveReplacesAnExistingTarget) {
    WriteBytes(dir / "from", "new");
    WriteBytes(dir / "to", "old and longer");
    FU::Move(At("from"), At("to"));
    EXPECT_FALSE(Exists(dir / "from"));
    EXPECT_EQ(ReadBytes(dir / "to"), "new");

    EXPECT_SYSTEM_ERROR(FU::Move(At("from"), At("to")), "MoveFileEx", ENOENT);
    EXPECT_EQ(ReadBytes(dir / "to"), "new");
    ZORSimUttOSFault::Arm("MoveFileEx", EXDEV);
    EXPECT_SYSTEM_ERROR(FU::Move(At("to"), At("elsewhere")), "MoveFileEx", EXDEV);
    EXPECT_TRUE(Exists(dir / "to"));
}

TEST_F(FileUtils, LinkIfUniqueLinksOnceThenAnswersFalse) {
    WriteBytes(dir / "data", "x");
    EXPECT_TRUE(FU::LinkIfUnique(At("data"), At("link")));
    EXPECT_FALSE(FU::LinkIfUnique(At("data"), At("link")));
    EXPECT_TRUE(FU::SameFile(At("data"), At("link")));
    // A taken name is no link, whatever it holds.
    WriteBytes(dir / "other", "y");
    EXPECT_FALSE(FU::LinkIfUnique(At("data"), At("other")));
    EXPECT_EQ(ReadBytes(dir / "other"), "y");

    EXPECT_SYSTEM_ERROR(FU::LinkIfUnique(At("missing"), At("link2")), "CreateHardLink", ENOENT);
    EXPECT_FALSE(Exists(dir / "link2")) << "nothing is copied when no link can be made";
    ZORSimUttOSFault::Arm("CreateHardLink", EXDEV);
    EXPECT_SYSTEM_ERROR(FU::LinkIfUnique(At("data"), At("link3")), "CreateHardLink", EXDEV);
}

// ---- removal ---------------------------------------------------------------------

TEST_F(FileUtils, RemoveAndRemoveNoThrow) {
    WriteBytes(dir / "a", "");
    FU::Remove(At("a"));
    EXPECT_FALSE(Exists(dir / "a"));
    EXPECT_SYSTEM_ERROR(FU::Remove(At("a")), "DeleteFile", ENOENT);
    ASSERT_EQ(::mkdir((dir / "d").c_str(), 0700), 0);
    EXPECT_SYSTEM_ERROR(FU::Remove(At("d")), "DeleteFile", EISDIR);

    EXPECT_FALSE(FU::RemoveNoThrow(At("a")));
    WriteBytes(dir / "b", "");
    ZORSimUttOSFault::Arm("DeleteFile", EBUSY);
    EXPECT_FALSE(FU::RemoveNoThrow(At("b")));
    EXPECT_TRUE(FU::RemoveNoThrow(At("b")));
    EXPECT_FALSE(Exists(dir / "b"));
    // The string check still raises.
    EXPECT_THROW(FU::RemoveNoThrow(ZORString("bad\xff")), ZORSimExcBadStringArgument);
}

TEST_F(FileUtils, RemoveAllDeletesMatchingFilesOnly) {
    for (const char* name : {"1.tmp", "2.tmp", "3.TMP", "keep.dat", "tmp"})
        WriteBytes(dir / name, "");
    FU::RemoveAll(ZORString(dir.Path() + "\\*.tmp"));
    EXPECT_FALSE(Exists(dir / "1.tmp"));
    EXPECT_FALSE(Exists(dir / "2.tmp"));
    EXPECT_FALSE(Exists(dir / "3.TMP")) << "names match as on Windows, case ignored";
    EXPECT_TRUE(Exists(dir / "keep.dat"));
    EXPECT_TRUE(Exists(dir / "tmp"));

    FU::RemoveAll(At("*.none")); // no match: nothing happens
    EXPECT_TRUE(Exists(dir / "keep.dat"));
}

TEST_F(FileUtils, RemoveAllStopsAtTheFirstFailure) {
    ASSERT_EQ(::mkdir((dir / "d.tmp").c_str(), 0700), 0);
    EXPECT_SYSTEM_ERROR(FU::RemoveAll(At("*.tmp")), "DeleteFile", EISDIR);
    EXPECT_TRUE(Exists(dir / "d.tmp")) << "directories are never removed";
    EXPECT_SYSTEM_ERROR(FU::RemoveAll(At("nodir/*.tmp")), "FindFirstFile", ENOENT);

    ASSERT_EQ(::rmdir((dir / "d.tmp").c_str()), 0);
    for (const char* name : {"1.tmp", "2.tmp", "3.tmp"})
        WriteBytes(dir / name, "");
    ZORSimUttOSFault::Arm("DeleteFile", EACCES, 1, 1);
    EXPECT_SYSTEM_ERROR(FU::RemoveAll(At("*.tmp")), "DeleteFile", EACCES);
    int left = 0;
    for (const char* name : {"1.tmp", "2.tmp", "3.tmp"})
        left += Exists(dir / name) ? 1 : 0;
    EXPECT_EQ(left, 2) << "the first was removed, the second failed, the third was not reached";

    // Every entry matches "*", so only the first listing call belongs to
    // the first search; the second is a find-next.
    ZORSimUttOSFault::Arm("FindNextFile", EIO, 1, 1);
    EXPECT_SYSTEM_ERROR(FU::RemoveAll(At("*")), "FindNextFile", EIO);
    FU::RemoveAll(At("*.tmp"));
    EXPECT_FALSE(Exists(dir / "1.tmp") || Exists(dir / "2.tmp") || Exists(dir / "3.tmp"));
}

// ---- directories ------------------------------------------------------------------

TEST_F(FileUtils, MakeDirAndRemoveDirWorkOneLevelOnEmptyDirectories) {
    FU::MakeDir(At("d"));
    EXPECT_TRUE(std::filesystem::is_directory(dir / "d"));
    EXPECT_SYSTEM_ERROR(FU::MakeDir(At("d")), "CreateDirectory", EEXIST);
    EXPECT_SYSTEM_ERROR(FU::MakeDir(At("x/y")), "CreateDirectory", ENOENT);
    EXPECT_FALSE(Exists(dir / "x")) << "no parents are made";

    WriteBytes(dir / "d/f", "");
    EXPECT_SYSTEM_ERROR(FU::RemoveDir(At("d")), "RemoveDirectory", ENOTEMPTY);
    EXPECT_SYSTEM_ERROR(FU::RemoveDir(At("d/f")), "RemoveDirectory", ENOTDIR);
    ASSERT_EQ(::unlink((dir / "d/f").c_str()), 0);
    FU::RemoveDir(At("d"));
    EXPECT_FALSE(Exists(dir / "d"));
    EXPECT_SYSTEM_ERROR(FU::RemoveDir(At("d")), "RemoveDirectory", ENOENT);

    ZORSimUttOSFault::Arm("CreateDirectory", ENOSPC);
    EXPECT_SYSTEM_ERROR(FU::MakeDir(At("e")), "CreateDirectory", ENOSPC);
    FU::MakeDir(At("e"));
    ZORSimUttOSFault::Arm("RemoveDirectory", EBUSY);
    EXPECT_SYSTEM_ERROR(FU::RemoveDir(At("e")), "RemoveDirectory", EBUSY);
    EXPECT_TRUE(Exists(dir / "e"));
}

// ---- names ---------------------------------------------------------------------------

TEST_F(FileUtils, AbsolutePathJoinsAndCollapsesByNameAlone) {
    ASSERT_EQ(::mkdir((dir / "real").c_str(), 0700), 0);
    ASSERT_EQ(::mkdir((dir / "real/in").c_str(), 0700), 0);
    ASSERT_EQ(::symlink("real/in", (dir / "link").c_str()), 0);
    const ScopedCwd cwd(dir.Path());
    const std::string here = std::filesystem::current_path().string();
    const struct {
        const char* path;
        std::string expected;
    } cases[] = {
        {"x.dat", here + "/x.dat"},
        {"a/./b/../c", here + "/a/c"},
        {"a\\b\\c.txt", here + "/a/b/c.txt"},
        {"missing/deeper/x", here + "/missing/deeper/x"}, // no existence check
        {"link/..", here},                                // links are not followed
        {"a//b", here + "/a/b"},
        {"a/", here + "/a/"},
        {".", here},
        {"", here},
        {"/abs/../x", "/x"},
        {"/a/../../b", "/b"},
        {"/..", "/"},
        {"\\", "/"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(std::string(FU::AbsolutePath(ZORString(c.path)).c_str()), c.expected)
            << "'" << c.path << "'";
    EXPECT_THROW(FU::AbsolutePath(ZORString("a\xc3")), ZORSimExcBadStringArgument);
}

TEST_F(FileUtils, AbsolutePathInAWorkingDirectoryWithoutUtf8Name) {
    const std::string odd = dir / "odd\xff";
    ASSERT_EQ(::mkdir(odd.c_str(), 0700), 0);
    const ScopedCwd cwd(odd);
    const auto raised = Raised<ZORBasToUTF8Exception>([] { FU::AbsolutePath(ZORString("x")); });
    ASSERT_TRUE(raised);
    EXPECT_STREQ(raised->Text(), "_wfullpath");
}

// Not in the fixture: the child ends without unwinding, and would leave a
// temporary directory behind.
TEST(FileUtilsExit, AbsolutePathWithoutAResultEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            ZORSimUttOSFault::Arm("FullPath", ENOENT);
            FU::AbsolutePath(ZORString("x"));
        },
        ::testing::ExitedWithCode(1), "INTERNAL LOGIC ERROR.\n!!! absolutePath.s != 0\n");
}

TEST_F(FileUtils, ShortenFileNameGivesNamesUnderTheDirectoryRelatively) {
    const ScopedCwd cwd(dir.Path());
    const std::string here = std::filesystem::current_path().string();
    const struct {
        const char* directory;
        const char* file;
        std::string expected;
    } cases[] = {
        {"/data", "/data/run/x.dat", "run/x.dat"},
        {"/data", "/data2/x", "/data2/x"},
        {"/data", "/data", "/data"},
        {"/data", "/dat", "/dat"},
        {"/data", "/other/x", "/other/x"},
        {"/data/sub/..", "/data/../data/x", "x"},
        {"C:\\data", "C:\\data\\run\\x.dat", "run/x.dat"},
        {"C:\\data", "C:\\data2\\x", here + "/C:/data2/x"},
        {"C:\\Data", "C:\\data\\x", here + "/C:/data/x"}, // case counts
        {"sub", "sub/x", "x"},
        {"sub", "x", here + "/x"}, // never a ".." name
        {"", "rel\\x", "rel\\x"},  // returned as given
    };
    for (const auto& c : cases)
        EXPECT_EQ(std::string(FU::ShortenFileName(ZORString(c.directory), ZORString(c.file)).c_str()),
                  c.expected)
            << "'" << c.directory << "', '" << c.file << "'";
}

TEST_F(FileUtils, RerootBranchPutsTheBranchInsideADirectoryOrBesideAFile) {
    ASSERT_EQ(::mkdir((dir / "d").c_str(), 0700), 0);
    WriteBytes(dir / "d/f.txt", "");
    const struct {
        std::string path;
        const char* branch;
        std::string expected;
    } cases[] = {
        {dir / "d", "b", dir / "d/b"},
        {dir / "d/", "b\\c", dir / "d/b/c"},
        {dir / "d/f.txt", "b", dir / "d/b"},
        {dir / "d/missing.txt", "b", dir / "d/b"},
        {dir.Path() + "\\d\\f.txt", "b", dir / "d/b"},
        {"f.txt", "b", "b"},
        {dir / "d", "/abs", "/abs"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(std::string(FU::RerootBranch(ZORString(c.path), ZORString(c.branch)).c_str()), c.expected)
            << "'" << c.path << "', '" << c.branch << "'";
}

} // namespace
