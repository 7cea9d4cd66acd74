// What a process decides once (storage budget, locking switch, where
// temporary files go), clean-up at process end, and the lock between
// processes. Decisions made once are tested in a fresh process each.
#include "OSFileTestSupport.h"
#include "ZORSimTestSupport.h"

#include "ZORSimUttFilePathParser.h"

#include <cstring>
#include <sched.h>
#include <sys/wait.h>
#include <vector>

using namespace zorsim_test;

namespace {

// The switches must not come from the environment the tests run in.
const bool g_cleanEnvironment = [] {
    for (const char* name : {"SIM_STORAGE_LIMIT", "BAS_DISABLE_FILE_LOCKING", "VEX_DISABLE_FILE_LOCKING",
                             "QRT_DISABLE_FILE_LOCKING"})
        unsetenv(name);
    return true;
}();

} // namespace

TEST(OSFileStorage, LimitIsReadOnceAndAnnounced) {
    for (const char* value : {"1000", "abc", static_cast<const char*>(nullptr)}) {
        SCOPED_TRACE(value ? value : "unset");
        ExpectInFreshProcess(
            [value] {
                SetEnv("SIM_STORAGE_LIMIT", value);
                ZORSimUttOSFile first;
                SetEnv("SIM_STORAGE_LIMIT", "5");
                ZORSimUttOSFile second;
                EXPECT_EQ(value && *value == '1' ? 1000u : 0u, ZORSimUttOSFile::s_storageLimit);
            },
            value && *value == '1' ? "^=== SIM Storage limit: 1000\n$" : "^$");
    }
}

TEST(OSFileStorage, WritesTruncationsAndOpensAreCharged) {
    ExpectInFreshProcess(
        [] {
            SetEnv("SIM_STORAGE_LIMIT", "100");
            const auto total = [] { return ZORSimUttOSFile::s_storageTotal.load(); };
            TempDir dir;
            ZORSimUttOSFile file;
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
    const char* const names[] = {"BAS_DISABLE_FILE_LOCKING", "VEX_DISABLE_FILE_LOCKING",
                                 "QRT_DISABLE_FILE_LOCKING"};
    for (int missing = -1; missing < 3; ++missing) {
        SCOPED_TRACE(missing);
        ExpectInFreshProcess([&] {
            for (int i = 0; i < 3; ++i)
                SetEnv(names[i], i == missing ? nullptr : "");
            // The switch comes first: with locking off even a closed file says false.
            ZORSimUttOSFile closed;
            if (missing < 0)
                EXPECT_FALSE(closed.Lock());
            else
                Raised<ZORSimExcFileNotOpen>([&] { closed.Lock(); });
        });
    }
}

TEST(OSFileTemporary, DirectoryCandidatesInOrder) {
    // TMPDIR, TEMP, TMP, a tab-led "\temp" in the working directory, then
    // the working directory; the first usable directory is taken. "file" is
    // a plain file, no directory; an empty value is skipped.
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        {"a", "b", "\temp", "a"},
        {"missing", "b", "\temp", "b"},
        {"file", "", "\temp", "\temp"},
        {nullptr, nullptr, "c", "."},
    };
    for (const auto& [tmpdir, temp, made, expected] : cases) {
        SCOPED_TRACE(expected);
        ExpectInFreshProcess([&] {
            TempDir dir;
            ASSERT_EQ(0, chdir(dir.Path().c_str()));
            for (const char* name : {"a", "b", made})
                mkdir(name, 0700);
            WriteBytes("file", "");
            SetEnv("TMPDIR", tmpdir);
            SetEnv("TEMP", temp);
            SetEnv("TMP", nullptr);
            ZORSimUttOSFile file;
            file.CreateTemporary("");
            const std::string name = std::string(expected) + "/SimTemp.1.tmp";
            EXPECT_EQ(ZORSimUttFilePathParser::FixPathForOS(name), file.m_name);
            EXPECT_TRUE(Exists(name));
            file.Close();
            EXPECT_EQ(0, chdir("/"));
        });
    }
}

TEST(OSFileTemporary, StillOpenAtProcessEndAreRemoved) {
    ExpectInFreshProcess(
        [] {
            static const TempDir dir(true);
            // Runs after the library's own clean-up, which is set up later.
            std::atexit([] { std::fputs(Exists(dir / "SimTemp.1.tmp") ? "left\n" : "removed\n", stderr); });
            static ZORSimUttOSFile* const file = new ZORSimUttOSFile; // never closed
            file->CreateTemporary(dir.Path());
            EXPECT_TRUE(Exists(dir / "SimTemp.1.tmp"));
        },
        "^removed\n$");
}

TEST(OSFileLock, ProcessesTakingTheLockLoseNoUpdate) {
    constexpr int kProcesses = 4, kRounds = 300;
    TempDir dir;
    const std::string counter = dir / "counter";
    WriteBytes(counter, std::string(sizeof(long), '\0'));
    // Held while the children start, so that they all queue up on it.
    ZORSimUttOSFile gate;
    gate.OpenUpdate(counter);
    ASSERT_TRUE(gate.Lock());
    std::vector<pid_t> children;
    for (int p = 0; p < kProcesses; ++p) {
        children.push_back(fork());
        ASSERT_GE(children.back(), 0);
        if (children.back() == 0) { // an exception ends the child abnormally
            ZORSimUttOSFile file;   // opened after the fork: a lock of its own
            file.OpenUpdate(counter);
            int refused = 0;
            for (int round = 0; round < kRounds; ++round) {
                refused += file.Lock() ? 0 : 1;
                long value = 0;
                file.ReadAtomic(0, reinterpret_cast<char*>(&value), sizeof value);
                ++value;
                sched_yield(); // invites the others into the gap the lock closes
                file.WriteAtomic(0, reinterpret_cast<const char*>(&value), sizeof value);
                file.Unlock();
            }
            _exit(refused);
        }
    }
    gate.Unlock();
    for (pid_t pid : children) {
        int status = 0;
        ASSERT_EQ(pid, waitpid(pid, &status, 0));
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }
    long total = 0;
    std::memcpy(&total, ReadBytes(counter).data(), sizeof total);
    EXPECT_EQ(kProcesses * kRounds, total);
}
