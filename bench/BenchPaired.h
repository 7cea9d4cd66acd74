// Side-by-side measurement: a raw baseline and the library's counterpart run
// in alternating blocks of the same benchmark, so that a slow spell of the
// machine falls on both and their ratio stays meaningful.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <ctime>
#include <string>

namespace bench {

// CPU time of the calling thread, system calls included: a busy machine
// taking the CPU away does not count.
struct ThreadClock {
    using duration = std::chrono::nanoseconds;
    using time_point = std::chrono::time_point<ThreadClock>;
    static time_point now() {
        timespec ts;
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
        return time_point(duration(static_cast<long long>(ts.tv_sec) * 1000000000LL + ts.tv_nsec));
    }
};

inline double Nanoseconds(ThreadClock::duration d) {
    return std::chrono::duration<double, std::nano>(d).count();
}

// Runs `raw(i)` and `ours(i)` in alternating blocks of `calls` and reports
// the time per call of each ("raw_ns", "ours_ns") and their ratio
// ("x_" + `baseline`: time of ours over time of raw).
template <class Raw, class Ours>
void Paired(benchmark::State& state, int calls, Raw raw, Ours ours, const std::string& baseline = "raw") {
    ThreadClock::duration rawTotal{}, oursTotal{};
    std::size_t index = 0;
    // Which goes first alternates, so that neither always finds the caches
    // as the other left them.
    bool rawFirst = true;
    const auto block = [&](auto& call, ThreadClock::duration& total) {
        const auto t0 = ThreadClock::now();
        for (int i = 0; i < calls; ++i)
            call(index + i);
        total += ThreadClock::now() - t0;
    };
    for (auto _ : state) {
        if (rawFirst) {
            block(raw, rawTotal);
            block(ours, oursTotal);
        } else {
            block(ours, oursTotal);
            block(raw, rawTotal);
        }
        rawFirst = !rawFirst;
        index += calls;
    }
    const double n = static_cast<double>(state.iterations()) * calls;
    if (n == 0)
        return;
    state.counters["raw_ns"] = Nanoseconds(rawTotal) / n;
    state.counters["ours_ns"] = Nanoseconds(oursTotal) / n;
    state.counters["x_" + baseline] = Nanoseconds(oursTotal) / Nanoseconds(rawTotal);
}

} // namespace bench
