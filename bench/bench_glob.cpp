// Globbing a large directory against a raw readdir loop with fnmatch, and
// the wildcard matcher on a pattern that would backtrack exponentially. The
// globbing case states its time as a ratio ("x_readdir") to the raw loop of
// the same run, in CPU time of the thread (system time included), which a
// busy machine disturbs less than the wall clock.
#include "ZORSimUttFileGlob.h"
#include "ZORSimUttWildcard.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fnmatch.h>
#include <string>
#include <ctime>
#include <unistd.h>
#include <vector>

namespace {

// CPU time of the calling thread.
struct Clock {
    using duration = std::chrono::nanoseconds;
    static std::chrono::nanoseconds now() {
        timespec t{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
        return std::chrono::seconds(t.tv_sec) + std::chrono::nanoseconds(t.tv_nsec);
    }
};

constexpr int kEntries = 100000;
// Matches the names ending in 42 before the extension: 1% of them.
constexpr const char* kPattern = "*42.DAT";

// A directory of kEntries empty files, made on first use and removed when
// the program ends.
class BigDirectory {
public:
    static const std::string& Path() {
        static BigDirectory directory;
        return directory.m_path;
    }

private:
    BigDirectory() {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/zorsim_bench_glob_XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) {
            std::perror("mkdtemp");
            std::exit(1);
        }
        m_path = pattern;
        char name[64];
        for (int i = 0; i < kEntries; ++i) {
            std::snprintf(name, sizeof name, "/entry_%06d.dat", i);
            const int fd = open((m_path + name).c_str(), O_CREAT | O_WRONLY, 0644);
            if (fd < 0) {
                std::perror("open");
                std::exit(1);
            }
            close(fd);
        }
    }
    ~BigDirectory() {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }
    std::string m_path;
};

double g_readdirNanoseconds = 0;

double Nanoseconds(Clock::duration d) {
    return std::chrono::duration<double, std::nano>(d).count();
}

// The baseline: what a POSIX program would write, results joined to the
// directory like the range's.
void BM_GlobBaselineReaddirFnmatch(benchmark::State& state) {
    const std::string& dir = BigDirectory::Path();
    Clock::duration total{};
    std::size_t found = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        std::vector<std::string> names;
        DIR* d = opendir(dir.c_str());
        while (const dirent* entry = readdir(d)) {
            if (fnmatch(kPattern, entry->d_name, FNM_CASEFOLD) == 0)
                names.push_back(dir + "/" + entry->d_name);
        }
        closedir(d);
        total += Clock::now() - start;
        found = names.size();
        benchmark::DoNotOptimize(names);
    }
    g_readdirNanoseconds = Nanoseconds(total) / static_cast<double>(state.iterations());
    state.counters["matches"] = static_cast<double>(found);
}
BENCHMARK(BM_GlobBaselineReaddirFnmatch)->Unit(benchmark::kMillisecond);

void BM_GlobRange(benchmark::State& state) {
    const std::string& dir = BigDirectory::Path();
    const ZORString pattern(dir + "/" + kPattern);
    Clock::duration total{};
    std::size_t found = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        std::vector<ZORString> names;
        for (ZORSimUttFileUtils::GlobRange range(pattern); !range.Empty(); range.Next())
            names.push_back(range.Front());
        total += Clock::now() - start;
        found = names.size();
        benchmark::DoNotOptimize(names);
    }
    state.counters["matches"] = static_cast<double>(found);
    if (g_readdirNanoseconds > 0)
        state.counters["x_readdir"] =
            Nanoseconds(total) / static_cast<double>(state.iterations()) / g_readdirNanoseconds;
}
BENCHMARK(BM_GlobRange)->Unit(benchmark::kMillisecond);

// Many stars against a long name that never matches: a backtracking matcher
// takes exponential time here. The name's last character already rules this
// one out...
void BM_WildcardManyStars(benchmark::State& state) {
    const ZORSimUttWildcard::Pattern pattern("*a*a*a*a*a*a*a*a*b");
    const std::string name(200, 'a');
    for (auto _ : state)
        benchmark::DoNotOptimize(pattern.Matches(name));
}
BENCHMARK(BM_WildcardManyStars)->Unit(benchmark::kMicrosecond);

// ...so here the whole table is walked: 200 rows of 19 places.
void BM_WildcardManyStarsFullTable(benchmark::State& state) {
    const ZORSimUttWildcard::Pattern pattern("*a*a*a*a*a*a*a*a*b*");
    const std::string name(200, 'a');
    for (auto _ : state)
        benchmark::DoNotOptimize(pattern.Matches(name));
}
BENCHMARK(BM_WildcardManyStarsFullTable)->Unit(benchmark::kMicrosecond);

void BM_WildcardManyStarsCompiledEachTime(benchmark::State& state) {
    const std::string name(200, 'a');
    for (auto _ : state)
        benchmark::DoNotOptimize(ZORSimUttWildcard::Match("*a*a*a*a*a*a*a*a*b", name));
}
BENCHMARK(BM_WildcardManyStarsCompiledEachTime)->Unit(benchmark::kMicrosecond);

} // namespace
