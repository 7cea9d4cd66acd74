// Cost of the OS file against the raw system calls on a file in the page
// cache: 4 KiB positioned reads and writes at random offsets, 4 KiB and
// 1 MiB sequential reads, and creating a numbered file beside many others.
//
// Each transfer case alternates blocks of raw calls and blocks of calls of
// the class in one run and reports both times per call ("raw_ns", "ours_ns")
// and their ratio "x_raw" (time of ours / time of raw; for throughput, the
// inverse is "throughput_vs_raw"). Times are the thread's CPU time (user and
// system), so that a busy machine taking the CPU away does not count.
#include "BenchPaired.h"
#include "ZORSimUttOSFile.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using bench::Paired;

constexpr std::size_t kFileSize = 64u << 20;
constexpr std::size_t kBlock = 4096;
constexpr std::size_t kChunk = 1u << 20;
constexpr int kCallsPerBlock = 256;

// A scratch directory for the whole run, removed at the end.
class Scratch {
public:
    explicit Scratch(const char* root) {
        std::string pattern = std::string(root) + "/zorsim-bench-osfile-XXXXXX";
        if (mkdtemp(pattern.data()) != nullptr)
            m_path = pattern;
    }
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

Scratch& Dir() {
    static Scratch scratch("/tmp");
    return scratch;
}

// For the creation cases: memory-backed where there is such a file system,
// so that the disk file system's inode allocation, which slows down on its
// own under a stream of creates and deletes, does not drown the listing.
Scratch& CreationDir() {
    static Scratch scratch(std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp");
    return scratch;
}

// A file of kFileSize bytes, written and read once so that it sits in the
// page cache.
const std::string& DataFile() {
    static const std::string path = [] {
        const std::string name = Dir().Path() + "/data";
        const int fd = open(name.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        std::vector<char> chunk(kChunk, 'x');
        for (std::size_t done = 0; done < kFileSize; done += kChunk)
            if (write(fd, chunk.data(), kChunk) != static_cast<ssize_t>(kChunk))
                std::perror("write");
        for (std::size_t done = 0; done < kFileSize; done += kChunk)
            if (pread(fd, chunk.data(), kChunk, static_cast<off_t>(done)) < 0)
                std::perror("pread");
        close(fd);
        return name;
    }();
    return path;
}

const std::vector<unsigned long long>& RandomOffsets() {
    static const std::vector<unsigned long long> offsets = [] {
        std::mt19937_64 random(20240601);
        std::uniform_int_distribution<unsigned long long> slot(0, kFileSize / kBlock - 1);
        std::vector<unsigned long long> result(1u << 16);
        for (auto& offset : result)
            offset = slot(random) * kBlock;
        return result;
    }();
    return offsets;
}

void BM_ReadAtomic4K_vs_pread(benchmark::State& state) {
    const auto& offsets = RandomOffsets();
    const int fd = open(DataFile().c_str(), O_RDONLY | O_CLOEXEC);
    ZORSimUttOSFile file;
    file.OpenRead(DataFile());
    std::vector<char> buffer(kBlock);
    Paired(
        state, kCallsPerBlock,
        [&](std::size_t i) {
            benchmark::DoNotOptimize(
                pread(fd, buffer.data(), kBlock, static_cast<off_t>(offsets[i % offsets.size()])));
        },
        [&](std::size_t i) {
            benchmark::DoNotOptimize(
                file.ReadAtomic(offsets[(i + 7919) % offsets.size()], buffer.data(), kBlock));
        });
    close(fd);
}
BENCHMARK(BM_ReadAtomic4K_vs_pread)->MinTime(1.0)->MeasureProcessCPUTime();

void BM_WriteAtomic4K_vs_pwrite(benchmark::State& state) {
    const auto& offsets = RandomOffsets();
    const int fd = open(DataFile().c_str(), O_RDWR | O_CLOEXEC);
    ZORSimUttOSFile file;
    file.OpenUpdate(DataFile());
    const std::vector<char> buffer(kBlock, 'w');
    Paired(
        state, kCallsPerBlock,
        [&](std::size_t i) {
            benchmark::DoNotOptimize(
                pwrite(fd, buffer.data(), kBlock, static_cast<off_t>(offsets[i % offsets.size()])));
        },
        [&](std::size_t i) {
            file.WriteAtomic(offsets[(i + 7919) % offsets.size()], buffer.data(), kBlock);
        });
    close(fd);
}
BENCHMARK(BM_WriteAtomic4K_vs_pwrite)->MinTime(1.0)->MeasureProcessCPUTime();

// Sequential reads of `size` bytes, from the start again at the end.
void PairedSequentialReads(benchmark::State& state, std::size_t size, int calls) {
    const int fd = open(DataFile().c_str(), O_RDONLY | O_CLOEXEC);
    ZORSimUttOSFile file;
    file.OpenRead(DataFile());
    std::vector<char> buffer(size);
    Paired(
        state, calls,
        [&](std::size_t) {
            if (read(fd, buffer.data(), size) <= 0)
                lseek(fd, 0, SEEK_SET);
        },
        [&](std::size_t) {
            if (file.Read(buffer.data(), size) == 0)
                file.Seek(0);
        });
    close(fd);
}

// Sequential 4 KiB reads: the class's own work per OS call shows here most.
void BM_Read4K_vs_read(benchmark::State& state) {
    PairedSequentialReads(state, kBlock, kCallsPerBlock);
}
BENCHMARK(BM_Read4K_vs_read)->MinTime(1.0)->MeasureProcessCPUTime();

void BM_Read1M_vs_read(benchmark::State& state) {
    PairedSequentialReads(state, kChunk, 16);
    state.counters["throughput_vs_raw"] = 1.0 / state.counters["x_raw"];
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 16 * 2 * static_cast<int64_t>(kChunk));
}
BENCHMARK(BM_Read1M_vs_read)->MinTime(1.0)->MeasureProcessCPUTime();

// A directory of `count` numbered files; each call creates the next number
// (listing the directory for the largest) and removes it again. The raw
// baseline creates and removes one fixed name in the same directory, which
// is the part of the cost that the listing does not add.
void BM_CreateGenerated_vs_create(benchmark::State& state) {
    const auto count = static_cast<int>(state.range(0));
    const std::string dir = CreationDir().Path() + "/gen" + std::to_string(count);
    std::filesystem::create_directory(dir);
    for (int i = 1; i <= count; ++i)
        close(
            open((dir + "/run." + std::to_string(i) + ".dat").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    const std::string base = dir + "/run";
    const std::string fixed = dir + "/fixed.dat";
    Paired(
        state, 4,
        [&](std::size_t) {
            close(open(fixed.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
            unlink(fixed.c_str());
        },
        [&](std::size_t) {
            ZORSimUttOSFile file;
            file.CreateGenerated(base, ".dat", false);
            file.Close();
            unlink(file.m_name.c_str());
        });
    std::filesystem::remove_all(dir);
}
BENCHMARK(BM_CreateGenerated_vs_create)
    ->Arg(10)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMicrosecond)
    ->MeasureProcessCPUTime();

} // namespace
