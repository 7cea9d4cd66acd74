// File utilities on real files in a fresh directory; OS failures come both
// from the file system itself and from the seam's fault injection.
#include "ZORSimUttFileUtils.h"

#include "../osfile/OSFileTestSupport.h"
#include "ZORSimUttAssert.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

namespace FU = ZORSimUttFileUtils;
using namespace zorsim_test;

class FileUtils : public OSFileTest {
protected:
    void SetUp() override { ZORSimUttAssertDisableExcReport(); }
    // A path in the temporary directory, as a library argument.
    ZORString At(const std::string& name) const { return ZORString(m_dir / name); }
};

// Moves into `path` for the life of the scope.
struct ScopedCwd {
    explicit ScopedCwd(const std::string& path) { std::filesystem::current_path(path); }
    ~ScopedCwd() { std::filesystem::current_path(old); }
    const std::filesystem::path old = std::filesystem::current_path();
};

TEST_F(FileUtils, IdentityIsTheFileNotTheNameAndKeepsDeviceAndInode) {
    WriteBytes(m_dir / "a", "1");
    WriteBytes(m_dir / "b", "1");
    ASSERT_EQ(::link((m_dir / "a").c_str(), (m_dir / "hard").c_str()), 0);
    ASSERT_EQ(::mkdir((m_dir / "sub").c_str(), 0700), 0);
    EXPECT_TRUE(FU::GetFileID(At("a")) == FU::GetFileID(At("hard")));
    EXPECT_FALSE(FU::GetFileID(At("a")) == FU::GetFileID(At("b")));
    for (const char* same : {"hard", "sub/../a"})
        EXPECT_TRUE(FU::SameFile(At("a"), At(same))) << same;
    EXPECT_TRUE(FU::SameFile(At("a"), ZORString(m_dir.Path() + "\\.\\a"))) << "either separator";
    // A missing name is no error.
    EXPECT_FALSE(FU::SameFile(At("a"), At("b")) || FU::SameFile(At("a"), At("missing")) ||
                 FU::SameFile(At("missing"), At("missing")));

    struct stat status;
    ASSERT_EQ(::stat((m_dir / "a").c_str(), &status), 0);
    ASSERT_EQ(::chmod((m_dir / "a").c_str(), 0), 0); // an unreadable file still has an identity
    const FU::FileId id = FU::GetFileID(At("a"));
    const auto inode = static_cast<unsigned long long>(status.st_ino);
    EXPECT_EQ(id.fileIndexHigh, static_cast<unsigned>(inode >> 32));
    EXPECT_EQ(id.fileIndexLow, static_cast<unsigned>(inode));
    EXPECT_EQ(id.volumeSerialNumber, (major(status.st_dev) << 20) | minor(status.st_dev));
}

TEST_F(FileUtils, GetFileIdFailures) {
    const auto missing =
        Raised<ZORSimExcNoSuchFile>([&] { FU::GetFileID(ZORString(m_dir.Path() + "\\nothing")); });
    EXPECT_EQ(m_dir / "nothing", missing ? missing->GetFile_name().AsString() : "") << "the normalised name";
    // A missing directory is the path-not-found case, not "no such file".
    ExpectSystemError([&] { FU::GetFileID(At("nodir/x")); }, "CreateFile", ENOENT);
    WriteBytes(m_dir / "a", "");
    ExpectSystemError([&] { FU::GetFileID(At("a/x")); }, "CreateFile", ENOTDIR);
    ZORSimUttOSFault::Arm("CreateFile", EACCES);
    ExpectSystemError([&] { FU::GetFileID(At("a")); }, "CreateFile", EACCES);
    // The descriptor is closed on the way out: the next open reuses it.
    const int probe = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(probe);
    ZORSimUttOSFault::Arm("GetFileInformationByHandle", EIO);
    ExpectSystemError([&] { FU::GetFileID(At("a")); }, "GetFileInformationByHandle", EIO);
    const int again = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(again, probe);
    ::close(again);
}

std::string Pattern(std::size_t size) {
    std::string bytes(size, '\0');
    unsigned state = 12345;
    for (char& c : bytes)
        c = static_cast<char>((state = state * 1103515245u + 12345u) >> 16);
    return bytes;
}

TEST_F(FileUtils, CopyReproducesEmptyAndMultiChunkFiles) {
    WriteBytes(m_dir / "empty", "");
    WriteBytes(m_dir / "target", "old contents");
    FU::Copy(At("empty"), At("target"));
    EXPECT_TRUE(Exists(m_dir / "target") && ReadBytes(m_dir / "target").empty());
    FU::Copy(At("empty"), At("fresh"));
    EXPECT_TRUE(Exists(m_dir / "fresh")) << "an empty source still creates the target";
    // Three whole chunks and a bit, and exactly two chunks.
    for (const std::size_t size : {3 * 262144 + 123, 2 * 262144}) {
        WriteBytes(m_dir / "big", Pattern(size));
        FU::Copy(At("big"), At("target"));
        EXPECT_TRUE(ReadBytes(m_dir / "target") == Pattern(size)) << size;
    }
    // Into an open file: at its position, and it stays open.
    ZORSimUttOSFile out;
    out.OpenWrite(At("out"));
    out.WriteAll("head", 4);
    FU::Copy(At("big"), out);
    out.WriteAll("tail", 4);
    out.Close();
    EXPECT_TRUE(ReadBytes(m_dir / "out") == "head" + Pattern(2 * 262144) + "tail");
}

TEST_F(FileUtils, CopyFailures) {
    Raised<ZORSimExcNoSuchFile>([&] { FU::Copy(At("nope"), At("target")); });
    EXPECT_FALSE(Exists(m_dir / "target")) << "nothing is created for a missing source";
    WriteBytes(m_dir / "src", Pattern(3 * 262144));
    ZORSimUttOSFault::Arm("ReadFile", EIO, 1, 1);
    ExpectRaised<ZORSimExcReadError>([&] { FU::Copy(At("src"), At("target")); }, EIO);
    EXPECT_EQ(ReadBytes(m_dir / "target").size(), 262144u) << "what was copied before the failure stays";
    ZORSimUttOSFault::Arm("WriteFile", ENOSPC);
    Raised<ZORSimExcDiskFull>([&] { FU::Copy(At("src"), At("target")); });
    ZORSimUttOSFile readOnly;
    readOnly.OpenRead(At("src"));
    Raised<ZORSimExcReadOnly>([&] { FU::Copy(At("src"), readOnly); });
}

TEST_F(FileUtils, MoveOntoAnExistingTargetAndLinkIfUniqueTwice) {
    WriteBytes(m_dir / "from", "new");
    WriteBytes(m_dir / "to", "old and longer");
    FU::Move(At("from"), At("to"));
    EXPECT_TRUE(!Exists(m_dir / "from") && ReadBytes(m_dir / "to") == "new");
    ExpectSystemError([&] { FU::Move(At("from"), At("to")); }, "MoveFileEx", ENOENT);
    ZORSimUttOSFault::Arm("MoveFileEx", EXDEV);
    ExpectSystemError([&] { FU::Move(At("to"), At("elsewhere")); }, "MoveFileEx", EXDEV);
    EXPECT_EQ(ReadBytes(m_dir / "to"), "new");

    EXPECT_TRUE(FU::LinkIfUnique(At("to"), At("link")));
    EXPECT_FALSE(FU::LinkIfUnique(At("to"), At("link")));
    EXPECT_TRUE(FU::SameFile(At("to"), At("link")));
    // A taken name is no link, whatever it holds.
    WriteBytes(m_dir / "other", "y");
    EXPECT_FALSE(FU::LinkIfUnique(At("to"), At("other")));
    EXPECT_EQ(ReadBytes(m_dir / "other"), "y");
    ExpectSystemError([&] { FU::LinkIfUnique(At("missing"), At("link2")); }, "CreateHardLink", ENOENT);
    EXPECT_FALSE(Exists(m_dir / "link2")) << "nothing is copied when no link can be made";
    ZORSimUttOSFault::Arm("CreateHardLink", EXDEV);
    ExpectSystemError([&] { FU::LinkIfUnique(At("to"), At("link3")); }, "CreateHardLink", EXDEV);
}

TEST_F(FileUtils, RemoveAndRemoveNoThrow) {
    WriteBytes(m_dir / "a", "");
    FU::Remove(At("a"));
    EXPECT_FALSE(Exists(m_dir / "a"));
    ExpectSystemError([&] { FU::Remove(At("a")); }, "DeleteFile", ENOENT);
    ASSERT_EQ(::mkdir((m_dir / "d").c_str(), 0700), 0);
    ExpectSystemError([&] { FU::Remove(At("d")); }, "DeleteFile", EISDIR);
    EXPECT_FALSE(FU::RemoveNoThrow(At("a")));
    WriteBytes(m_dir / "b", "");
    ZORSimUttOSFault::Arm("DeleteFile", EBUSY);
    EXPECT_FALSE(FU::RemoveNoThrow(At("b")));
    EXPECT_TRUE(FU::RemoveNoThrow(At("b")) && !Exists(m_dir / "b"));
    EXPECT_THROW(FU::RemoveNoThrow(ZORString("bad\xff")), ZORSimExcBadStringArgument); // still checked
}

TEST_F(FileUtils, RemoveAllDeletesMatchingFilesAndStopsAtTheFirstFailure) {
    for (const char* name : {"1.tmp", "2.tmp", "3.TMP", "keep.dat", "tmp"})
        WriteBytes(m_dir / name, "");
    FU::RemoveAll(ZORString(m_dir.Path() + "\\*.tmp"));
    FU::RemoveAll(At("*.none")); // no match: nothing happens
    // Names match as on Windows, case ignored.
    EXPECT_FALSE(Exists(m_dir / "1.tmp") || Exists(m_dir / "2.tmp") || Exists(m_dir / "3.TMP"));
    EXPECT_TRUE(Exists(m_dir / "keep.dat") && Exists(m_dir / "tmp"));

    ASSERT_EQ(::mkdir((m_dir / "d.tmp").c_str(), 0700), 0);
    ExpectSystemError([&] { FU::RemoveAll(At("*.tmp")); }, "DeleteFile", EISDIR);
    EXPECT_TRUE(Exists(m_dir / "d.tmp")) << "directories are never removed";
    ExpectSystemError([&] { FU::RemoveAll(At("nodir/*.tmp")); }, "FindFirstFile", ENOENT);
    ASSERT_EQ(::rmdir((m_dir / "d.tmp").c_str()), 0);
    for (const char* name : {"1.tmp", "2.tmp", "3.tmp"})
        WriteBytes(m_dir / name, "");
    ZORSimUttOSFault::Arm("DeleteFile", EACCES, 1, 1);
    ExpectSystemError([&] { FU::RemoveAll(At("*.tmp")); }, "DeleteFile", EACCES);
    int left = 0;
    for (const char* name : {"1.tmp", "2.tmp", "3.tmp"})
        left += Exists(m_dir / name) ? 1 : 0;
    EXPECT_EQ(left, 2) << "the first was removed, the second failed, the third was not reached";
    // Every entry matches "*", so only the first listing call belongs to
    // the first search; the second is a find-next.
    ZORSimUttOSFault::Arm("FindNextFile", EIO, 1, 1);
    ExpectSystemError([&] { FU::RemoveAll(At("*")); }, "FindNextFile", EIO);
}

TEST_F(FileUtils, MakeDirAndRemoveDirWorkOneLevelOnEmptyDirectories) {
    FU::MakeDir(At("d"));
    EXPECT_TRUE(std::filesystem::is_directory(m_dir / "d"));
    ExpectSystemError([&] { FU::MakeDir(At("d")); }, "CreateDirectory", EEXIST);
    ExpectSystemError([&] { FU::MakeDir(At("x/y")); }, "CreateDirectory", ENOENT);
    WriteBytes(m_dir / "d/f", "");
    ExpectSystemError([&] { FU::RemoveDir(At("d")); }, "RemoveDirectory", ENOTEMPTY);
    ExpectSystemError([&] { FU::RemoveDir(At("d/f")); }, "RemoveDirectory", ENOTDIR);
    ASSERT_EQ(::unlink((m_dir / "d/f").c_str()), 0);
    FU::RemoveDir(At("d"));
    ExpectSystemError([&] { FU::RemoveDir(At("d")); }, "RemoveDirectory", ENOENT);
    ZORSimUttOSFault::Arm("CreateDirectory", ENOSPC);
    ExpectSystemError([&] { FU::MakeDir(At("e")); }, "CreateDirectory", ENOSPC);
    FU::MakeDir(At("e"));
    ZORSimUttOSFault::Arm("RemoveDirectory", EBUSY);
    ExpectSystemError([&] { FU::RemoveDir(At("e")); }, "RemoveDirectory", EBUSY);
    EXPECT_TRUE(Exists(m_dir / "e"));
}

TEST_F(FileUtils, AbsolutePathJoinsAndCollapsesByNameAlone) {
    ASSERT_EQ(::mkdir((m_dir / "real").c_str(), 0700), 0);
    ASSERT_EQ(::mkdir((m_dir / "real/in").c_str(), 0700), 0);
    ASSERT_EQ(::symlink("real/in", (m_dir / "link").c_str()), 0);
    const ScopedCwd cwd(m_dir.Path());
    const std::string here = std::filesystem::current_path().string();
    const std::pair<const char*, std::string> cases[] = {
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
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(std::string(FU::AbsolutePath(ZORString(path)).c_str()), expected) << "'" << path << "'";
    EXPECT_THROW(FU::AbsolutePath(ZORString("a\xc3")), ZORSimExcBadStringArgument);

    ASSERT_EQ(::mkdir((m_dir / "odd\xff").c_str(), 0700), 0);
    const ScopedCwd odd(m_dir / "odd\xff"); // a working directory without a UTF-8 name
    const auto raised = Raised<ZORBasToUTF8Exception>([] { FU::AbsolutePath(ZORString("x")); });
    EXPECT_STREQ(raised ? raised->Text() : "", "_wfullpath");
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

TEST_F(FileUtils, ShortenFileNameAndRerootBranch) {
    ASSERT_EQ(::mkdir((m_dir / "d").c_str(), 0700), 0);
    WriteBytes(m_dir / "d/f.txt", "");
    const ScopedCwd cwd(m_dir.Path());
    const std::string here = std::filesystem::current_path().string();
    // Names under the directory come back relative, never as a ".." name.
    const std::tuple<const char*, const char*, std::string> shorten[] = {
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
        {"sub", "x", here + "/x"},
        {"", "rel\\x", "rel\\x"}, // returned as given
    };
    for (const auto& [directory, file, expected] : shorten)
        EXPECT_EQ(std::string(FU::ShortenFileName(ZORString(directory), ZORString(file)).c_str()), expected)
            << "'" << directory << "', '" << file << "'";
    // The branch goes inside a directory or beside a file.
    const std::tuple<std::string, const char*, std::string> reroot[] = {
        {m_dir / "d", "b", m_dir / "d/b"},
        {m_dir / "d/", "b\\c", m_dir / "d/b/c"},
        {m_dir / "d/f.txt", "b", m_dir / "d/b"},
        {m_dir / "d/missing.txt", "b", m_dir / "d/b"},
        {m_dir.Path() + "\\d\\f.txt", "b", m_dir / "d/b"},
        {"f.txt", "b", "b"},
        {m_dir / "d", "/abs", "/abs"},
    };
    for (const auto& [path, branch, expected] : reroot)
        EXPECT_EQ(std::string(FU::RerootBranch(ZORString(path), ZORString(branch)).c_str()), expected)
            << "'" << path << "', '" << branch << "'";
}

} // namespace
