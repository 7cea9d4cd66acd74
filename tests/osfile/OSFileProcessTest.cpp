// What a process decides once (storage budget, locking switch, where
// temporary files go), each in a fresh process, and clean-up at process end.
#include "ZORSimTestErrors.h"

#include "ZORSimUttFilePathParser.h"
#include "ZORSimUttOSFile.h"

#include <filesystem>

using namespace zorsim_test;

namespace {

const char* const kLockSwitches[] = {"BAS_DISABLE_FILE_LOCKING", "VEX_DISABLE_FILE_LOCKING",
                                     "QRT_DISABLE_FILE_LOCKING"};
// The switches must not come from the environment the tests run in.
const bool g_cleanEnvironment = [] {
    for (const char* name : {"SIM_STORAGE_LIMIT", kLockSwitches[0], kLockSwitches[1], kLockSwitches[2]})
        SetEnv(name, nullptr);
    return true;
}();

// A temporary file still open when the process ends.
ZORSIM_SCENARIO(TemporaryLeftOpen) {
    static ZORSimUttOSFile* const file = new ZORSimUttOSFile; // never closed, still reachable
    file->CreateTemporary(args.at(1));
    return Exists(args.at(1) + "/SimTemp.1.tmp") ? 0 : 1;
}

} // namespace

TEST(OSFileStorage, LimitIsReadOnceAnnouncedAndCharged) {
    ExpectInFreshProcess(
        [] {
            SetEnv("SIM_STORAGE_LIMIT", "100");
            ZORSimUttOSFile file;
            SetEnv("SIM_STORAGE_LIMIT", "5"); // read once
            const auto total = [] { return ZORSimUttOSFile::s_storageTotal.load(); };
            TempDir dir;
            file.OpenWrite(dir / "f"); // creating charges nothing
            file.WriteAll(std::string(60, 'a').data(), 60);
            Raised<ZORSimExcDiskFull>([&] { file.WriteAll(std::string(60, 'b').data(), 60); });
            EXPECT_EQ(60u, file.FileSize()); // refused before any byte went out,
            EXPECT_EQ(120u, total());        // but charged all the same
            Raised<ZORSimExcDiskFull>([&] { file.WriteAll("", 0); });
            file.Truncate(10); // shrinking gives credit
            EXPECT_EQ(70u, total());
            Raised<ZORSimExcDiskFull>([&] { file.Truncate(41); });
            EXPECT_EQ(10u, file.FileSize());
            file.Close();
            // Opening an existing file to read or update charges its size.
            ZORSimUttOSFile::s_storageTotal = 0;
            for (auto open : {&ZORSimUttOSFile::OpenRead, &ZORSimUttOSFile::OpenUpdate,
                              &ZORSimUttOSFile::OpenAppend, &ZORSimUttOSFile::OpenWrite}) {
                (file.*open)(dir / "f");
                file.Close();
            }
            EXPECT_EQ(20u, total());
        },
        "^=== SIM Storage limit: 100\n$");
}

TEST(OSFileLocking, OffOnlyWhenAllThreeVariablesAreSet) {
    for (int missing = -1; missing < 3; ++missing)
        ExpectInFreshProcess([&] {
            for (int i = 0; i < 3; ++i)
                SetEnv(kLockSwitches[i], i == missing ? nullptr : "1");
            // The switch comes first: with locking off even a closed file says false.
            ZORSimUttOSFile closed;
            if (missing < 0)
                EXPECT_FALSE(closed.Lock());
            else
                Raised<ZORSimExcFileNotOpen>([&] { closed.Lock(); });
        });
}

TEST(OSFileTemporary, DirectoryCandidatesInOrderAndRemovalAtProcessEnd) {
    // TMPDIR, TEMP, TMP, then the working directory: the first usable
    // directory. "file" is a plain file; an empty value is skipped. Each
    // file is gone with its object, so that the next is number 1 again. The
    // first name is no ASCII: the environment is read in UTF-8 everywhere.
    const char* const a = "\xC3\xA4\xE2\x82\xAC"; // U+00E4 U+20AC
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        {a, "b", "c", a}, {"missing", a, "c", a}, {"file", "", "c", "c"}, {nullptr, nullptr, "missing", "."}};
    const TempDir dir;
    for (const char* name : {a, "b", "c"})
        dir.Dir(name);
    dir.File("file");
    std::filesystem::current_path(dir.Path());
    for (const auto& [tmpdir, temp, tmp, expected] : cases) {
        const ScopedEnv first("TMPDIR", tmpdir), second("TEMP", temp), third("TMP", tmp);
        ZORSimUttOSFile file;
        file.CreateTemporary("");
        EXPECT_EQ(ZORSimUttFilePathParser::FixPathForOS(std::string(expected) + "/SimTemp.1.tmp"),
                  file.m_name);
    }
    std::filesystem::current_path("..");
    // One still open when its process ends is removed.
    EXPECT_EQ(0, RunScenario("TemporaryLeftOpen", {"child", dir.Path()}).exitCode);
    EXPECT_FALSE(Exists(dir / "SimTemp.1.tmp"));
}
