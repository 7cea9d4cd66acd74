// Transfers, seeking, truncation, flushing and locking within one process,
// and every failure the OS can report to them.
#include "OSFileTestSupport.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>
#include <vector>

using namespace zorsim_test;

namespace {

class OSFileIO : public OSFileTest {
protected:
    void SetUp() override {
        WriteBytes(m_path, "0123456789");
        m_file.OpenUpdate(m_path);
    }
    unsigned long long Calls(int kind) const { return m_file.m_stats->Get(kind).calls; }
    const std::string m_path = m_dir / "data";
    ZORSimUttOSFile m_file;
};

} // namespace

TEST_F(OSFileIO, ReadsStopAtTheEndAndCountEachOSCall) {
    char buffer[16] = {};
    EXPECT_EQ(0u, m_file.Read(buffer, 0)); // no OS call at all
    EXPECT_EQ(4u, m_file.Read(buffer, 4));
    EXPECT_EQ(6u, m_file.Read(buffer, sizeof buffer)); // across the end: two calls
    EXPECT_EQ("456789", std::string(buffer, 6));
    EXPECT_EQ(0u, m_file.Read(buffer, sizeof buffer)); // at the end
    EXPECT_EQ(10u, m_file.m_position);
    EXPECT_EQ(3u, m_file.ReadAtomic(7, buffer, 8));
    EXPECT_EQ("789", std::string(buffer, 3));
    EXPECT_EQ(13u, m_file.m_stats->Get(ZORBasUtlIOFileStats::kRead).bytes);
    EXPECT_EQ(6u, Calls(ZORBasUtlIOFileStats::kRead));

    // Requests are cut to their low 32 bits: 2^32 asks the OS for nothing,
    // 2^32 + 2 reads 2 and then asks for nothing.
    EXPECT_EQ(0u, m_file.ReadAtomic(8, buffer, 1ull << 32));
    EXPECT_EQ(7u, Calls(ZORBasUtlIOFileStats::kRead));
    EXPECT_EQ(2u, m_file.ReadAtomic(0, buffer, (1ull << 32) + 2));
    EXPECT_EQ(9u, Calls(ZORBasUtlIOFileStats::kRead));
}

TEST_F(OSFileIO, WritesSeeksAndTheOneSidedPositionOfTruncate) {
    m_file.WriteAll("ab", 2);
    m_file.WriteAtomic(8, "yz", 2);
    m_file.WriteAtomic(12, "!", 1); // beyond the end: a hole
    EXPECT_EQ(13u, m_file.m_position);
    EXPECT_EQ(std::string("ab234567yz\0\0!", 13), ReadBytes(m_path));
    EXPECT_EQ(3u, Calls(ZORBasUtlIOFileStats::kWrite));

    // Two seeks to one place make one OS call: the third call fails as armed.
    ZORSimUttOSFault::Arm("SetFilePointer", EINVAL, 1, 1);
    m_file.Seek(3);
    m_file.Seek(3);
    ExpectSystemError([&] { m_file.Seek(4); }, "SetFilePointer", EINVAL);
    EXPECT_EQ(3u, m_file.m_position);
    ExpectSystemError([&] { m_file.Seek(1ull << 63); }, "SetFilePointer", EINVAL);

    // Truncation raises the cached position but never lowers it.
    m_file.Truncate(20);
    EXPECT_TRUE(m_file.FileSize() == 20 && m_file.m_position == 20);
    m_file.Truncate(5);
    EXPECT_TRUE(m_file.FileSize() == 5 && m_file.m_position == 20);
    // The OS pointer stands at 5 while the cached one says 20: the seek to 20
    // is skipped and the write lands at 5.
    m_file.WriteAtomic(20, "xy", 2);
    EXPECT_EQ("ab234xy", ReadBytes(m_path));
}

TEST_F(OSFileIO, EveryOSFailureRaisesItsClass) {
    using Op = std::function<void()>;
    char buffer[4];
    const Op write = [&] { m_file.WriteAtomic(0, "ab", 2); }, truncate = [&] { m_file.Truncate(3); },
             flush = [&] { m_file.Flush(); };
    const auto full = [](Op op) { return [op] { Raised<ZORSimExcDiskFull>(op); }; };
    const auto sys = [](const char* service, int code, Op op) {
        return [=] { ExpectSystemError(op, service, code); };
    };
    const std::tuple<const char*, int, Op> cases[] = {
        {"WriteFile", ENOSPC, full(write)},
        {"WriteFile", EDQUOT, full(write)},
        {"WriteFile", EIO, [&] { ExpectRaised<ZORSimExcWriteError>(write, EIO); }},
        {"WriteFile", 0, [&] { Raised<ZORSimExcShortWrite>(write); }}, // moved no bytes
        {"ReadFile", EIO,
         [&] { ExpectRaised<ZORSimExcReadError>([&] { m_file.ReadAtomic(0, buffer, 4); }, EIO); }},
        {"SetFilePointer", EIO, sys("SetFilePointer", EIO, truncate)},
        {"SetEndOfFile", ENOSPC, full(truncate)},
        {"SetEndOfFile", EDQUOT, full(truncate)},
        {"SetEndOfFile", EIO, sys("SetEndOfFile", EIO, truncate)},
        {"FlushFileBuffers", ENOSPC, full(flush)},
        {"FlushFileBuffers", EDQUOT, full(flush)},
        {"FlushFileBuffers", EIO, sys("FlushFileBuffers", EIO, flush)},
        {"GetFileSize", EIO, sys("GetFileSize", EIO, [&] { (void)m_file.FileSize(); })},
        {"LockFileEx", EDEADLK, sys("LockFileEx", EDEADLK, [&] { m_file.Lock(); })},
        // Releasing is reported under the name of the locking call.
        {"UnlockFile", EIO, sys("LockFileEx", EIO, [&] { m_file.Unlock(); })},
    };
    for (const auto& [call, error, check] : cases) {
        SCOPED_TRACE(std::string(call) + " " + std::to_string(error));
        ZORSimUttOSFault::Arm(call, error);
        check(); // the atomic transfers release the mutex every time, or this hangs
    }
    EXPECT_EQ("0123456789", ReadBytes(m_path)); // no failed call reached the file

    ZORSimUttOSFile reader; // read-only: writes refused, flushes skipped
    reader.OpenRead(m_path);
    ZORSimUttOSFault::Arm("FlushFileBuffers", EIO);
    reader.Flush();
    ZORSimUttOSFault::DisarmAll();
    Raised<ZORSimExcReadOnly>([&] { reader.WriteAtomic(0, "x", 1); });

    ZORSimUttOSFile device; // a real disk-full condition
    device.OpenWrite("/dev/full");
    Raised<ZORSimExcDiskFull>([&] { device.WriteAll("abc", 3); });
    device.Flush(); // a device has nothing to flush
}

TEST_F(OSFileIO, PositionedTransfersFromSeveralThreadsDoNotInterleave) {
    constexpr int kThreads = 4, kBlocks = 16, kRounds = 50;
    constexpr std::size_t kBlock = 512;
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            const std::string mine(kBlock, static_cast<char>('A' + t));
            std::string back(kBlock, '\0');
            for (int round = 0; round < kRounds; ++round)
                for (int b = t; b < kBlocks; b += kThreads) {
                    m_file.WriteAtomic(b * kBlock, mine.data(), kBlock);
                    if (m_file.ReadAtomic(b * kBlock, back.data(), kBlock) != kBlock || back != mine)
                        ++mismatches;
                }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(0, mismatches.load());
    const std::string content = ReadBytes(m_path);
    for (int b = 0; b < kBlocks; ++b)
        EXPECT_EQ(std::string(kBlock, static_cast<char>('A' + b % kThreads)),
                  content.substr(b * kBlock, kBlock));
}

TEST_F(OSFileIO, LockExcludesASecondObjectOfTheSameProcess) {
    ZORSimUttOSFile closed;
    Raised<ZORSimExcFileNotOpen>([&] { closed.Lock(); });
    Raised<ZORSimExcFileNotOpen>([&] { closed.Unlock(); });

    ASSERT_TRUE(m_file.Lock());
    ZORSimUttOSFile().OpenUpdate(m_path); // closing another open of the file keeps the lock
    std::atomic<bool> granted{false};
    std::thread waiter([&] {
        ZORSimUttOSFile second;
        second.OpenUpdate(m_path);
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
