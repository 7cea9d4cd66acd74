// Cost of the failure path: message formatting, Propagate with and without
// reports, and the stack trace cold and warm. Each measured case also states
// its time as a ratio ("x_<baseline>") to a raw baseline of the same run:
// snprintf for the message, a bare throw and catch for Propagate (the quiet
// one in alternating blocks with it).
#include "BenchPaired.h"
#include "ZORSimExceptions.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttAssertInternal.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <string>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

// Nanoseconds per iteration of the last run of each baseline.
std::map<std::string, double>& Baselines() {
    static std::map<std::string, double> baselines;
    return baselines;
}

double Nanoseconds(Clock::duration d) {
    return std::chrono::duration<double, std::nano>(d).count();
}

void RecordBaseline(benchmark::State& state, const char* name, Clock::duration total) {
    if (state.iterations() > 0)
        Baselines()[name] = Nanoseconds(total) / static_cast<double>(state.iterations());
}

void ReportRatio(benchmark::State& state, const char* baseline, Clock::duration total) {
    const auto found = Baselines().find(baseline);
    if (found == Baselines().end() || found->second <= 0 || state.iterations() == 0)
        return;
    const double perIteration = Nanoseconds(total) / static_cast<double>(state.iterations());
    state.counters[std::string("x_") + baseline] = perIteration / found->second;
}

// Reports go to /dev/null while a case runs.
class SilentStderr {
public:
    SilentStderr() {
        std::fflush(stderr);
        m_saved = dup(2);
        const int null = open("/dev/null", O_WRONLY);
        if (null >= 0) {
            dup2(null, 2);
            close(null);
        }
    }
    ~SilentStderr() {
        std::fflush(stderr);
        if (m_saved >= 0) {
            dup2(m_saved, 2);
            close(m_saved);
        }
    }
    SilentStderr(const SilentStderr&) = delete;
    SilentStderr& operator=(const SilentStderr&) = delete;

private:
    int m_saved = -1;
};

enum class Mode { Disabled, BannerOnly, BannerAndTrace };

void SetMode(Mode mode) {
    ZORSimUttAssertTesting::ResetReportState();
    if (mode == Mode::BannerOnly)
        setenv("SIM_DISABLE_EXCEPTION_REPORT", "1", 1);
    else
        unsetenv("SIM_DISABLE_EXCEPTION_REPORT");
    if (mode == Mode::Disabled)
        ZORSimUttAssertDisableExcReport();
}

// A trace of realistic depth: a few dozen frames between main and the throw.
ZORSIM_NOINLINE int PropagateAtDepth(int depth) {
    if (depth > 0) {
        int code = PropagateAtDepth(depth - 1);
        benchmark::DoNotOptimize(code); // keeps the recursion a real one
        return code;
    }
    try {
        ZORSimExcIOBounds(4096, 8192, 6144).Propagate();
    } catch (const ZORBasException& error) {
        return error.GetCode();
    }
    return 0;
}
constexpr int kDepth = 20;

const char* const kIOBoundsFormat = "I/O out of bounds - start: %lld, end: %lld, limit: %lld";

// ---- message ----------------------------------------------------------------

void BM_Snprintf_IOBounds(benchmark::State& state) {
    unsigned long long start = 4096, end = 8192, limit = 6144;
    char buffer[128];
    const auto t0 = Clock::now();
    for (auto _ : state) {
        benchmark::DoNotOptimize(start);
        std::snprintf(buffer, sizeof buffer, kIOBoundsFormat, start, end, limit);
        benchmark::DoNotOptimize(buffer);
    }
    RecordBaseline(state, "snprintf", Clock::now() - t0);
}
BENCHMARK(BM_Snprintf_IOBounds);

void BM_AsString_IOBounds(benchmark::State& state) {
    const ZORSimExcIOBounds error(4096, 8192, 6144);
    const auto t0 = Clock::now();
    for (auto _ : state) {
        atr_String text = error.AsString(ZORBasStringMode(false));
        benchmark::DoNotOptimize(text);
    }
    ReportRatio(state, "snprintf", Clock::now() - t0);
}
BENCHMARK(BM_AsString_IOBounds);

// ---- Propagate --------------------------------------------------------------

struct SmallError {
    int code;
    unsigned long long value;
};

ZORSIM_NOINLINE void ThrowSmall(unsigned long long value) {
    throw SmallError{1010, value};
}

void BareThrowCatch(unsigned long long value) {
    try {
        ThrowSmall(value);
    } catch (const SmallError& error) {
        benchmark::DoNotOptimize(error.value);
    }
}

void BM_BareThrowCatch(benchmark::State& state) {
    const auto t0 = Clock::now();
    for (auto _ : state)
        BareThrowCatch(4096);
    RecordBaseline(state, "throw", Clock::now() - t0);
}
BENCHMARK(BM_BareThrowCatch);

// For the life of a case: standard error silenced and the report mode set,
// decided and the frame cache warm; full reports again afterwards.
class ReportMode {
public:
    explicit ReportMode(Mode mode) {
        SetMode(mode);
        PropagateAtDepth(kDepth);
    }
    ~ReportMode() { SetMode(Mode::BannerAndTrace); }
    ReportMode(const ReportMode&) = delete;
    ReportMode& operator=(const ReportMode&) = delete;

private:
    SilentStderr m_silent;
};

void RunPropagate(benchmark::State& state, Mode mode) {
    const ReportMode reports(mode);
    const auto t0 = Clock::now();
    for (auto _ : state)
        benchmark::DoNotOptimize(PropagateAtDepth(kDepth));
    ReportRatio(state, "throw", Clock::now() - t0);
}

// Side by side with the bare throw: the ratio a quiet throw is held to.
void BM_Propagate_ReportsDisabled(benchmark::State& state) {
    const ReportMode reports(Mode::Disabled);
    bench::Paired(
        state, 64, [](std::size_t i) { BareThrowCatch(i); },
        [](std::size_t) { benchmark::DoNotOptimize(PropagateAtDepth(kDepth)); }, "throw");
}
BENCHMARK(BM_Propagate_ReportsDisabled);

void BM_Propagate_BannerOnly(benchmark::State& state) {
    RunPropagate(state, Mode::BannerOnly);
}
BENCHMARK(BM_Propagate_BannerOnly);

// Every iteration starts with a fresh symbol handler and an empty frame cache.
void BM_Propagate_FullTrace_Cold(benchmark::State& state) {
    const ReportMode reports(Mode::BannerAndTrace);
    Clock::duration total{};
    for (auto _ : state) {
        state.PauseTiming();
        ZORSimUttAssertTesting::ResetSymbolHandler();
        state.ResumeTiming();
        const auto t0 = Clock::now();
        benchmark::DoNotOptimize(PropagateAtDepth(kDepth));
        total += Clock::now() - t0;
    }
    ReportRatio(state, "throw", total);
}
BENCHMARK(BM_Propagate_FullTrace_Cold)->Unit(benchmark::kMillisecond)->Iterations(20);

void BM_Propagate_FullTrace_Warm(benchmark::State& state) {
    RunPropagate(state, Mode::BannerAndTrace);
}
BENCHMARK(BM_Propagate_FullTrace_Warm)->Unit(benchmark::kMicrosecond);

} // namespace
