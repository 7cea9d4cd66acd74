// The OS file class within one process: opens and creations, transfers,
// truncation, locking, and every failure the OS can report to them.
#include "ZORSimTestErrors.h"

#include "ZORSimUttAssert.h"
#include "ZORSimUttFilePathParser.h"
#include "ZORSimUttOSFile.h"

#include <atomic>
#include <chrono>
#include <thread>

using namespace zorsim_test;
using Op = std::function<void()>;

namespace {

const bool g_quiet = (ZORSimUttAssertDisableExcReport(), true); // the tests compare standard error

const auto OsName = &ZORSimUttFilePathParser::FixPathForOS; // not constant where it is imported from a DLL

// "0123456789" in a file open for update.
class OSFile : public FileTest {
protected:
    void SetUp() override { m_file.OpenUpdate(m_dir.File("data", "0123456789")); }
    unsigned long long Calls(int kind) const { return m_file.m_stats->Get(kind).calls; }
    const std::string m_path = m_dir / "data";
    ZORSimUttOSFile m_file;
};

} // namespace

TEST_F(OSFile, FourOpensAndTheirFailures) {
    using Open = void (ZORSimUttOSFile::*)(const ZORString&);
    // The open, whether read-only, the content after writing "XY" to "abcdef".
    const std::tuple<Open, bool, const char*> opens[] = {{&ZORSimUttOSFile::OpenRead, true, "abcdef"},
                                                         {&ZORSimUttOSFile::OpenUpdate, false, "XYcdef"},
                                                         {&ZORSimUttOSFile::OpenAppend, false, "abcdefXY"},
                                                         {&ZORSimUttOSFile::OpenWrite, false, "XY"}};
    const std::string name = m_dir / "f", missing = m_dir / "missing", shown = OsName(missing).c_str();
    for (const auto& [openOf, readOnly, written] : opens) {
        const Open open = openOf; // a lambda may not capture a binding before clang 16
        m_dir.File("f", "abcdef");
        ZORSimUttOSFile file;
        // A missing directory is "path not found", never "no such file".
        ExpectSystemError([&] { (file.*open)(m_dir / "no-dir/f"); }, Service::CreateFile,
                          Error::PathNotFound);
        (file.*open)(name);
        EXPECT_TRUE(file.IsOpen() && file.m_stats->IsOpen());
        if (readOnly)
            Raised<ZORSimExcReadOnly>([&] { file.WriteAll("XY", 2); });
        else
            file.WriteAll("XY", 2);
        file.Close();
        EXPECT_FALSE(file.IsOpen() || file.m_stats->IsOpen());
        EXPECT_EQ(written, ReadBytes(name));
        // A missing file: made by the writing opens (appending first, then
        // writing finds it made), ZORSimExcNoSuchFile from the others, after
        // two lines from OpenRead only.
        StderrCapture capture;
        if (open == &ZORSimUttOSFile::OpenRead || open == &ZORSimUttOSFile::OpenUpdate) {
            const auto e = Raised<ZORSimExcNoSuchFile>([&] { (file.*open)(missing); });
            EXPECT_STREQ(shown.c_str(), e ? e->GetFile_name().AsString() : "");
        } else {
            (file.*open)(missing);
        }
        EXPECT_EQ(readOnly ? "!!! Throwing ZORSimExcNoSuchFile:\n!!!  " + shown + "\n" : "",
                  capture.Finish());
    }
    // Appending has no not-found branch. A failed open forgets the handle
    // it held: callers close first.
    ZORSimUttOSFile file, keeper;
    ZORSimUttOSFault::Arm(Service::CreateFile, Error::FileNotFound);
    ExpectSystemError([&] { file.OpenAppend(name); }, Service::CreateFile, Error::FileNotFound);
    file.OpenRead(name);
    keeper.m_handle = file.m_handle;
    ExpectSystemError([&] { file.OpenRead(m_dir.Path()); }, Service::CreateFile, Error::IsDirectory);
    EXPECT_FALSE(file.IsOpen());
}

TEST_F(OSFile, GeneratedFiles) {
    for (const char* name : {"out.7.dat", "out.2.dat", "out.12abc.dat", "out.x.dat", "out.3.tmp"})
        m_dir.File(name); // the largest number as "%u" reads it; gaps are not filled
    ZORSimUttOSFile file;
    file.CreateGenerated(m_dir / "out", ".dat", false);
    EXPECT_TRUE(file.m_name == OsName(m_dir / "out.13.dat") && !file.m_readOnly);
    file.Close(); // a failed creation below would forget the handle
    // Taken between the listing and the creation, as by another process: a
    // listing cut short misses them, and the creations find them.
    m_dir.File("run.1.tmp");
    m_dir.File("run.2.tmp");
    ZORSimUttOSFault::Arm(Service::FindNextFile, Error::None);
    file.CreateGenerated(m_dir / "run", ".tmp", false);
    EXPECT_EQ(OsName(m_dir / "run.3.tmp"), file.m_name);
    file.Close();
    ZORSimUttOSFault::Arm(Service::CreateFile, Error::AccessDenied);
    ExpectSystemError([&] { file.CreateGenerated(m_dir / "g", ".dat", false); }, Service::CreateFile,
                      Error::AccessDenied);
    ZORSimUttOSFault::Arm(Service::CreateFile, Error::FileNotFound);
    const auto e = Raised<ZORSimExcNoSuchFile>([&] { file.CreateGenerated(m_dir / "g", ".dat", false); });
    EXPECT_STREQ(OsName(m_dir / "g.1.dat").c_str(), e ? e->GetFile_name().AsString() : "");
}

TEST(OSFileGenerated, MatchWithAnotherExtensionEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const TempDir dir(true); // the child ends without unwinding
    dir.File("out.5.DAT");   // the listing ignores case; the extension check does not
    EXPECT_EXIT(ZORSimUttOSFile().CreateGenerated(dir / "out", ".dat", false), ::testing::ExitedWithCode(1),
                "!!! ZORSimUttFilePathParser::Extension\\(fileName\\) == extension");
}

TEST_F(OSFile, TransfersSeeksAndTheOneSidedPositionOfTruncate) {
    char buffer[16] = {};
    EXPECT_EQ(0u, m_file.Read(buffer, 0)); // no OS call at all
    EXPECT_EQ(4u, m_file.Read(buffer, 4));
    EXPECT_EQ(6u, m_file.Read(buffer, sizeof buffer)); // across the end: two calls
    // Requests are cut to their low 32 bits: 2^32 + 2 reads 2, then asks for nothing.
    EXPECT_EQ(2u, m_file.ReadAtomic(0, buffer, (1ull << 32) + 2));
    EXPECT_EQ(12u, m_file.m_stats->Get(ZORBasUtlIOFileStats::kRead).bytes);
    EXPECT_EQ(5u, Calls(ZORBasUtlIOFileStats::kRead));
    m_file.WriteAll("ab", 2);
    m_file.WriteAtomic(12, "!", 1); // beyond the end: a hole
    EXPECT_EQ(13u, m_file.m_position);
    EXPECT_EQ(std::string("01ab456789\0\0!", 13), ReadBytes(m_path));
    EXPECT_EQ(2u, Calls(ZORBasUtlIOFileStats::kWrite));
    // Two seeks to one place make one OS call: the third call fails as armed.
    ZORSimUttOSFault::Arm(Service::SetFilePointer, Error::InvalidArgument, 1, 1);
    m_file.Seek(3);
    m_file.Seek(3);
    ExpectSystemError([&] { m_file.Seek(4); }, Service::SetFilePointer, Error::InvalidArgument);
    ExpectSystemError([&] { m_file.Seek(1ull << 63); }, Service::SetFilePointer, Error::NegativeSeek);
    // Truncation raises the cached position but never lowers it: the OS
    // pointer stands at 5, the cached one at 20, so the seek to 20 is
    // skipped and the write lands at 5.
    m_file.Truncate(20);
    m_file.Truncate(5);
    EXPECT_TRUE(m_file.FileSize() == 5 && m_file.m_position == 20);
    m_file.WriteAtomic(20, "xy", 2);
    EXPECT_EQ("01ab4xy", ReadBytes(m_path));
}

TEST_F(OSFile, EveryOSFailureRaisesItsClass) {
    char buffer[4];
    const Op write = [&] { m_file.WriteAtomic(0, "ab", 2); }, truncate = [&] { m_file.Truncate(3); },
             flush = [&] { m_file.Flush(); }, close = [&] { m_file.Close(); };
    const auto full = [](Op op) { return [op] { Raised<ZORSimExcDiskFull>(op); }; };
    const auto sys = [](Service service, Op op) {
        return [=] { ExpectSystemError(op, service, Error::IoError); };
    };
    const std::tuple<Service, Error, Op> cases[] = {
        {Service::WriteFile, Error::DiskFull, full(write)},
        {Service::WriteFile, Error::QuotaExceeded, full(write)},
        {Service::WriteFile, Error::IoError,
         [&] { ExpectRaised<ZORSimExcWriteError>(write, Error::IoError); }},
        {Service::WriteFile, Error::None, [&] { Raised<ZORSimExcShortWrite>(write); }}, // moved no bytes
        {Service::ReadFile, Error::IoError,
         [&] { ExpectRaised<ZORSimExcReadError>([&] { m_file.ReadAtomic(0, buffer, 4); }, Error::IoError); }},
        {Service::SetFilePointer, Error::IoError, sys(Service::SetFilePointer, truncate)},
        {Service::SetEndOfFile, Error::HandleDiskFull, full(truncate)},
        {Service::SetEndOfFile, Error::IoError, sys(Service::SetEndOfFile, truncate)},
        {Service::FlushFileBuffers, Error::DiskFull, full(flush)},
        {Service::FlushFileBuffers, Error::IoError, sys(Service::FlushFileBuffers, flush)},
        {Service::GetFileSize, Error::IoError, sys(Service::GetFileSize, [&] { (void)m_file.FileSize(); })},
        {Service::LockFileEx, Error::IoError, sys(Service::LockFileEx, [&] { m_file.Lock(); })},
        // Releasing is reported under the name of the locking call.
        {Service::UnlockFile, Error::IoError, sys(Service::LockFileEx, [&] { m_file.Unlock(); })},
        // A failed close keeps the handle.
        {Service::CloseHandle, Error::DiskFull, full(close)},
        {Service::CloseHandle, Error::IoError,
         [&] { ExpectRaised<ZORSimExcFileCloseFailed>(close, Error::IoError); }},
    };
    for (const auto& [service, error, check] : cases) {
        SCOPED_TRACE(OS::ServiceName(service));
        ZORSimUttOSFault::Arm(service, error);
        check(); // the atomic transfers release the mutex every time, or this hangs
    }
    EXPECT_TRUE(m_file.IsOpen());
    ZORSimUttOSFile reader; // read-only: flushes skipped
    reader.OpenRead(m_path);
    ZORSimUttOSFault::Arm(Service::FlushFileBuffers, Error::IoError);
    reader.Flush();
    // A closed object: nothing is checked before the OS, which sees a bad handle.
    ZORSimUttOSFile closed; // (Lock: in the test of the locking switch)
    Raised<ZORSimExcFileNotOpen>([&] { closed.Unlock(); });
    ExpectSystemError([&] { (void)closed.FileSize(); }, Service::GetFileSize, Error::BadHandle);
    ExpectRaised<ZORSimExcFileCloseFailed>([&] { closed.Close(); }, Error::BadHandle);
    ZORSimRpm_TidyLock(closed.Mutex()).Unlock(); // unlocked once, not again on destruction
    ZORSimRpm_TidyLock again(closed.Mutex());    // would hang if still held
    ZORBasAtiThreadingModel::FailNextForTesting(1);
    StderrCapture capture;
    EXPECT_THROW(ZORSimUttOSFile noMutex, ZORBasAssertException);
    EXPECT_TRUE(StartsWith(capture.Finish(), "!!! THE API HAS DETECTED AN INTERNAL LOGIC ERROR."));
}

TEST(OSFileDevice, WritesToAFullDiskRaiseDiskFull) {
    if (FullDiskPath().empty())
        GTEST_SKIP() << "no full disk here (under Wine: mounting a small tmpfs needs root)";
    ZORSimUttOSFile device;
    device.OpenWrite(FullDiskPath());
    Raised<ZORSimExcDiskFull>([&] { device.WriteAll("abc", 3); });
    device.Flush(); // a device has nothing to flush
}

TEST_F(OSFile, PositionedTransfersExcludeEachOtherAndLocksExcludeOtherOpens) {
    std::atomic<int> mismatches{0};
    std::vector<std::jthread> threads;
    for (char t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            const std::string mine(512, static_cast<char>('A' + t));
            std::string back(512, '\0');
            for (int round = 0; round < 200; ++round) {
                m_file.WriteAtomic(512 * t, mine.data(), 512);
                mismatches += m_file.ReadAtomic(512 * t, back.data(), 512) != 512 || back != mine;
            }
        });
    threads.clear();
    EXPECT_EQ(0, mismatches.load());
    ASSERT_TRUE(m_file.Lock());
    ZORSimUttOSFile().OpenRead(m_path); // closing another open of the file keeps the lock
    std::atomic<bool> granted{false};
    std::jthread waiter([&] {
        ZORSimUttOSFile second;
        second.OpenRead(m_path); // a read-only handle may take it too
        EXPECT_TRUE(second.Lock());
        granted = true;
        second.Unlock();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_FALSE(granted.load());
    m_file.Unlock();
    waiter.join();
    EXPECT_TRUE(granted.load());
}
