// File utilities on real files in a fresh directory; OS failures come both
// from the file system itself and from the seam's fault injection.
#include "ZORSimTestErrors.h"

#include "ZORSimUttAssert.h"
#include "ZORSimUttFilePathParser.h"
#include "ZORSimUttFileUtils.h"
#include "ZORSimUttOSFile.h"

#include <algorithm>
#include <filesystem>

namespace {

namespace FU = ZORSimUttFileUtils;
const auto OsName = &ZORSimUttFilePathParser::FixPathForOS; // not constant where it is imported from a DLL
namespace fs = std::filesystem;
using namespace zorsim_test;

class FileUtils : public FileTest {
protected:
    void SetUp() override { ZORSimUttAssertDisableExcReport(); }
    // A path in the temporary directory, as a library argument.
    ZORString At(const std::string& name) const { return ZORString(m_dir / name); }
};

TEST_F(FileUtils, IdentityMoveAndLink) {
    m_dir.File("a", "old and longer");
    m_dir.File("b", "new");
    EXPECT_TRUE(FU::SameFile(At("a"), ZORString(m_dir.Path() + "\\.\\a")));
    // A missing name is no error.
    EXPECT_FALSE(FU::SameFile(At("a"), At("b")) || FU::SameFile(At("a"), At("missing")) ||
                 FU::SameFile(At("missing"), At("a")));
    const auto missing =
        Raised<ZORSimExcNoSuchFile>([&] { FU::GetFileID(ZORString(m_dir.Path() + "\\no")); });
    EXPECT_EQ(OsName(m_dir / "no"), missing ? missing->GetFile_name().AsString() : "") << "the OS form";
    // A missing directory is the path-not-found case, not "no such file".
    ExpectSystemError([&] { FU::GetFileID(At("nodir/x")); }, Service::CreateFile, Error::PathNotFound);
    ZORSimUttOSFault::Arm(Service::GetFileInformationByHandle, Error::IoError);
    ExpectSystemError([&] { FU::GetFileID(At("a")); }, Service::GetFileInformationByHandle, Error::IoError);

    FU::Move(At("b"), At("a"));
    EXPECT_TRUE(!Exists(m_dir / "b") && ReadBytes(m_dir / "a") == "new");
    ExpectSystemError([&] { FU::Move(At("b"), At("a")); }, Service::MoveFileEx, Error::FileNotFound);
    EXPECT_TRUE(FU::LinkIfUnique(At("a"), At("link")));
    EXPECT_FALSE(FU::LinkIfUnique(At("a"), At("link"))); // a taken name is no link
    EXPECT_TRUE(FU::SameFile(At("a"), At("link")));
    ExpectSystemError([&] { FU::LinkIfUnique(At("missing"), At("link2")); }, Service::CreateHardLink,
                      Error::FileNotFound);
}

TEST_F(FileUtils, CopyReproducesEmptyAndMultiChunkFiles) {
    m_dir.File("empty");
    m_dir.File("target", "old contents");
    FU::Copy(At("empty"), At("target"));
    EXPECT_TRUE(Exists(m_dir / "target") && ReadBytes(m_dir / "target").empty());
    // Three whole chunks and a bit, each chunk unlike the others.
    std::string big(3 * 262144 + 123, '\0');
    for (std::size_t i = 0; i < big.size(); ++i)
        big[i] = static_cast<char>(i % 251);
    FU::Copy(ZORString(m_dir.File("big", big)), At("target"));
    EXPECT_TRUE(ReadBytes(m_dir / "target") == big);
    // Into an open file: at its position, and it stays open.
    ZORSimUttOSFile out;
    out.OpenWrite(At("out"));
    out.WriteAll("head", 4);
    FU::Copy(At("big"), out);
    out.WriteAll("tail", 4);
    out.Close();
    EXPECT_TRUE(ReadBytes(m_dir / "out") == "head" + big + "tail");

    Raised<ZORSimExcNoSuchFile>([&] { FU::Copy(At("nope"), At("new")); });
    EXPECT_FALSE(Exists(m_dir / "new")) << "nothing is created for a missing source";
}

TEST_F(FileUtils, RemoveFilesAndMakeAndRemoveDirectories) {
    EXPECT_FALSE(FU::RemoveNoThrow(At("a")));
    m_dir.File("b");
    EXPECT_TRUE(FU::RemoveNoThrow(At("b")) && !Exists(m_dir / "b"));
    EXPECT_THROW(FU::RemoveNoThrow(ZORString("bad\xff")), ZORSimExcBadStringArgument); // still checked

    const char* const names[] = {"1.tmp", "2.tmp", "3.TMP"};
    const auto left = [&] {
        return std::ranges::count_if(names, [&](auto name) { return Exists(m_dir / name); });
    };
    for (const char* name : names)
        m_dir.File(name);
    ZORSimUttOSFault::Arm(Service::DeleteFile, Error::AccessDenied, 1, 1);
    ExpectSystemError([&] { FU::RemoveAll(At("*.tmp")); }, Service::DeleteFile, Error::AccessDenied);
    EXPECT_EQ(left(), 2) << "the first was removed, the second failed, the third was not reached";
    FU::RemoveAll(ZORString(m_dir.Path() + "\\*.tmp"));
    FU::RemoveAll(At("*.none")); // no match: nothing happens
    EXPECT_EQ(left(), 0);

    // Directories: made and removed one level at a time, removed only when
    // empty, and never by the removal of files.
    FU::MakeDir(At("d.tmp"));
    ExpectSystemError([&] { FU::MakeDir(At("d.tmp")); }, Service::CreateDirectory, Error::AlreadyExists);
    ExpectSystemError([&] { FU::RemoveAll(At("*.tmp")); }, Service::DeleteFile, Error::IsDirectory);
    m_dir.File("d.tmp/f");
    ExpectSystemError([&] { FU::RemoveDir(At("d.tmp")); }, Service::RemoveDirectory, Error::NotEmpty);
    fs::remove(m_dir / "d.tmp/f");
    FU::RemoveDir(At("d.tmp"));
    ExpectSystemError([&] { FU::RemoveDir(At("d.tmp")); }, Service::RemoveDirectory, Error::FileNotFound);
}

TEST_F(FileUtils, AbsoluteShortenedAndReroutedNames) {
    m_dir.File("d/f.txt");
    fs::current_path(m_dir.Path());
    const std::string here = fs::current_path().generic_string();
    // Joined with the working directory, by name alone.
    const std::pair<const char*, std::string> absolute[] = {
        {"a/./b/../c", "/a/c"}, {"a\\b\\c.txt", "/a/b/c.txt"}, {"a//b/", "/a/b/"}, {".", ""}};
    for (const auto& [path, expected] : absolute)
        EXPECT_EQ(FU::AbsolutePath(ZORString(path)), OsName(here + expected)) << "'" << path << "'";

    // Names under the directory come back relative, never as a ".." name;
    // others absolute (flag set), and all in the OS form.
    const std::tuple<const char*, const char*, const char*, bool> shorten[] = {
        {"data", "data/run/x.dat", "run/x.dat", false},
        {"data", "data2/x", "/data2/x", true},
        {"data", "data", "/data", true},
        {"Data", "data/x", "/data/x", true}}; // case counts
    for (const auto& [directory, file, expected, isAbsolute] : shorten)
        EXPECT_EQ(FU::ShortenFileName(ZORString(directory), ZORString(file)),
                  OsName(isAbsolute ? here + expected : expected))
            << "'" << directory << "', '" << file << "'";
    EXPECT_EQ(FU::ShortenFileName(ZORString(""), ZORString("rel\\x")), ZORString("rel\\x")); // as given

    // The branch goes inside a directory or beside a file.
    const std::tuple<std::string, const char*, std::string> reroot[] = {
        {m_dir / "d", "b\\c", m_dir / "d/b/c"}, {m_dir / "d/missing.txt", "b", m_dir / "d/b"}};
    for (const auto& [path, branch, expected] : reroot)
        EXPECT_EQ(FU::RerootBranch(ZORString(path), ZORString(branch)), OsName(expected))
            << "'" << path << "', '" << branch << "'";
    fs::current_path(fs::temp_directory_path());
}

// Not in the fixture: the child ends without unwinding, and would leave a
// temporary directory behind.
TEST(FileUtilsExit, AbsolutePathWithoutAResultEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            ZORSimUttOSFault::Arm(Service::FullPath, Error::PathNotFound);
            FU::AbsolutePath(ZORString("x"));
        },
        ::testing::ExitedWithCode(1), "INTERNAL LOGIC ERROR.\n!!! absolutePath.s != 0\n");
}

} // namespace
