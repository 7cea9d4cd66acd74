// Copy throughput of the file utilities against a raw read/write loop with
// the same 256 KiB chunks, and, for information, against cp(1). The source
// file sits in the page cache; each copy goes to a fresh target.
//
// ZORSIM_BENCH_COPY_MIB sets the file size in MiB (default 512).
#include "ZORSimUttAssert.h"
#include "ZORSimUttFileUtils.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <ctime>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kChunk = 262144;

// The source file and a target name in a fresh temporary directory, made
// on first use and removed at process end.
class CopyFiles {
public:
    static CopyFiles& Get() {
        static CopyFiles files;
        return files;
    }
    bool Ok() const { return m_ok; }
    const std::string& Source() const { return m_source; }
    const std::string& Target() const { return m_target; }
    std::size_t Bytes() const { return m_bytes; }

private:
    CopyFiles() {
        const char* mib = std::getenv("ZORSIM_BENCH_COPY_MIB");
        m_bytes = static_cast<std::size_t>(mib != nullptr && std::atoll(mib) > 0 ? std::atoll(mib) : 512)
                  << 20;
        std::string dir = (std::filesystem::temp_directory_path() / "zorsim-bench-copy-XXXXXX").string();
        if (mkdtemp(dir.data()) == nullptr)
            return;
        m_dir = dir;
        m_source = dir + "/source.bin";
        m_target = dir + "/target.bin";
        // Varied bytes, written once and read back so the page cache holds them.
        std::vector<char> chunk(kChunk);
        unsigned state = 1;
        for (char& c : chunk) {
            state = state * 1103515245u + 12345u;
            c = static_cast<char>(state >> 16);
        }
        const int fd = ::open(m_source.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (fd < 0)
            return;
        bool written = true;
        for (std::size_t done = 0; done < m_bytes && written; done += kChunk) {
            chunk[0] = static_cast<char>(done >> 18); // no two chunks alike
            written = ::write(fd, chunk.data(), kChunk) == static_cast<ssize_t>(kChunk);
        }
        // On disk before any timing, so that no copy competes with its
        // write-back; the pages stay cached.
        written = written && ::fsync(fd) == 0;
        ::close(fd);
        const int in = ::open(m_source.c_str(), O_RDONLY | O_CLOEXEC);
        while (in >= 0 && ::read(in, chunk.data(), kChunk) > 0) {
        }
        if (in >= 0)
            ::close(in);
        m_ok = written;
    }
    ~CopyFiles() {
        std::error_code ignored;
        if (!m_dir.empty())
            std::filesystem::remove_all(m_dir, ignored);
    }

    bool m_ok = false;
    std::size_t m_bytes = 0;
    std::string m_dir, m_source, m_target;
};

struct Times {
    double wall = 0; // seconds
    double cpu = 0;  // seconds, user and system, this thread and its children
};

// CPU time of the calling thread plus that of waited-for children: on a
// busy machine the wall time partly measures the scheduler.
double CpuSeconds() {
    timespec thread{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &thread);
    rusage children{};
    ::getrusage(RUSAGE_CHILDREN, &children);
    const auto seconds = [](const timeval& t) { return static_cast<double>(t.tv_sec) + t.tv_usec * 1e-6; };
    return static_cast<double>(thread.tv_sec) + thread.tv_nsec * 1e-9 + seconds(children.ru_utime) +
           seconds(children.ru_stime);
}

bool CopyRaw(const CopyFiles& files) {
    static const auto buffer = std::make_unique_for_overwrite<char[]>(kChunk);
    const int in = ::open(files.Source().c_str(), O_RDONLY | O_CLOEXEC);
    const int out = ::open(files.Target().c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    bool ok = in >= 0 && out >= 0;
    for (ssize_t got; ok && (got = ::read(in, buffer.get(), kChunk)) > 0;)
        ok = ::write(out, buffer.get(), static_cast<std::size_t>(got)) == got;
    if (in >= 0)
        ::close(in);
    if (out >= 0)
        ::close(out);
    return ok;
}

bool CopyFileUtils(const CopyFiles& files) {
    ZORSimUttFileUtils::Copy(ZORString(files.Source()), ZORString(files.Target()));
    return true;
}

bool CopyCp(const CopyFiles& files) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::execlp("cp", "cp", files.Source().c_str(), files.Target().c_str(), static_cast<char*>(nullptr));
        ::_exit(127);
    }
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

// One copy to a fresh target; the old target goes first, untimed.
bool TimeOne(bool (*copy)(const CopyFiles&), const CopyFiles& files, Times& times) {
    ::unlink(files.Target().c_str());
    const auto start = Clock::now();
    const double cpuStart = CpuSeconds();
    const bool ok = copy(files);
    times.cpu = CpuSeconds() - cpuStart;
    times.wall = std::chrono::duration<double>(Clock::now() - start).count();
    return ok;
}

double Median(std::vector<double> values) {
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const std::size_t mid = values.size() / 2;
    return values.size() % 2 != 0 ? values[mid] : (values[mid - 1] + values[mid]) / 2;
}

// Each iteration copies the file once in each of the three ways, in an order
// that rotates, so that the ratios compare copies made side by side under
// the same load. Counters: the median per-iteration ratio of the raw loop's
// time to ours ("x_raw_copy" wall, "x_raw_copy_cpu" CPU; 1.0 is as fast,
// above 1 faster), the same against cp(1) ("x_cp"), and median times in ms.
void BM_CopyVsRawAndCp(benchmark::State& state) {
    ZORSimUttAssertDisableExcReport();
    CopyFiles& files = CopyFiles::Get();
    if (!files.Ok()) {
        state.SkipWithError("cannot make the source file");
        return;
    }
    bool (*const ways[])(const CopyFiles&) = {CopyRaw, CopyFileUtils, CopyCp};
    // An untimed round first: the first copies after the file system has
    // been busy elsewhere are often several times slower.
    Times ignored;
    for (auto* way : ways)
        if (!TimeOne(way, files, ignored)) {
            state.SkipWithError("copy failed");
            return;
        }
    std::vector<double> rawWall, rawCpu, oursWall, oursCpu, cpWall, xWall, xCpu, xCp;
    int round = 0;
    for (auto _ : state) {
        Times times[3];
        for (int k = 0; k < 3; ++k) {
            const int way = (round + k) % 3;
            if (!TimeOne(ways[way], files, times[way])) {
                state.SkipWithError("copy failed");
                break;
            }
        }
        ++round;
        rawWall.push_back(times[0].wall);
        rawCpu.push_back(times[0].cpu);
        oursWall.push_back(times[1].wall);
        oursCpu.push_back(times[1].cpu);
        cpWall.push_back(times[2].wall);
        xWall.push_back(times[0].wall / times[1].wall);
        xCpu.push_back(times[0].cpu / times[1].cpu);
        xCp.push_back(times[2].wall / times[1].wall);
    }
    ::unlink(files.Target().c_str());
    state.SetBytesProcessed(static_cast<long long>(state.iterations() * 3 * files.Bytes()));
    state.counters["MiB"] = static_cast<double>(files.Bytes() >> 20);
    state.counters["raw_ms"] = Median(rawWall) * 1e3;
    state.counters["ours_ms"] = Median(oursWall) * 1e3;
    state.counters["cp_ms"] = Median(cpWall) * 1e3;
    state.counters["raw_cpu_ms"] = Median(rawCpu) * 1e3;
    state.counters["ours_cpu_ms"] = Median(oursCpu) * 1e3;
    state.counters["x_raw_copy"] = Median(xWall);
    state.counters["x_raw_copy_cpu"] = Median(xCpu);
    state.counters["x_cp"] = Median(xCp);
}

BENCHMARK(BM_CopyVsRawAndCp)->Unit(benchmark::kMillisecond)->Iterations(9)->UseRealTime();

} // namespace
