// Per-file I/O statistics: bytes, calls and time for each transfer kind
// (1 read, 2 write), fed by the OS file class.
#pragma once

#include "VEXZORBasExport.h"
#include "ZORBasAti.h"
#include "ZORString.h"

#include <atomic>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

// A Windows DLL cannot share its thread-local data with its callers, so
// there the transfer timer stays out of line, in the base library.
#if defined(_WIN32)
#    define ZORBAS_IO_TIMER_INLINE 0
#else
#    define ZORBAS_IO_TIMER_INLINE 1
#endif

template <class T> using ZORBasSharedPtr = std::shared_ptr<T>;

class ZORBAS_API ZORBasUtlIOFileStats {
public:
    static constexpr int kRead = 1;
    static constexpr int kWrite = 2;
    static bool ValidKind(int kind) { return kind == kRead || kind == kWrite; }
    struct Totals {
        unsigned long long bytes = 0;
        unsigned long long calls = 0;
        double seconds = 0;
    };

    explicit ZORBasUtlIOFileStats(const ZORString& name);
    const ZORString& Name() const { return m_name; }
    // Totals of one kind (1 or 2); other kinds give zeros.
    Totals Get(int kind) const;
    int Opens() const;
    bool IsOpen() const;

private:
    friend class ZORBasUtlIOStats;
    // Counted per OS call: atomics, so that a transfer takes no lock here.
    struct Counters {
        std::atomic<unsigned long long> bytes{0};
        std::atomic<unsigned long long> calls{0};
        std::atomic<unsigned long long> ticks{0}; // of the base's transfer clock
    };
    ZORString m_name;
    Counters m_counters[3];
    std::atomic<int> m_opens{0};
    std::atomic<int> m_openNow{0};
};

class ZORBAS_API ZORBasUtlIOStats {
public:
    ZORBasUtlIOStats();
    ~ZORBasUtlIOStats();
    ZORBasUtlIOStats(const ZORBasUtlIOStats&) = delete;
    ZORBasUtlIOStats& operator=(const ZORBasUtlIOStats&) = delete;

    // The record of a file, made on its first open and reused on later ones.
    ZORBasSharedPtr<ZORBasUtlIOFileStats> usefile_Open(const ZORString& name);
    void usefile_Close(const ZORBasSharedPtr<ZORBasUtlIOFileStats>& stats);
    // Times one OS transfer of the calling thread: StartTimer before the call,
    // StopTimer after a successful one with the bytes it moved. Neither
    // allocates or locks. Inline where a library can share thread-local data
    // with its callers, so that a transfer costs no call into this one.
    void StartTimer(int kind);
    void StopTimer(unsigned long long bytes, int kind, const ZORBasSharedPtr<ZORBasUtlIOFileStats>& stats);

    std::vector<ZORBasSharedPtr<ZORBasUtlIOFileStats>> Files() const;
    // One line per file: bytes, calls and seconds for reads and writes.
    std::string Report() const;
    void Report(std::FILE* out) const;

private:
    // The calling thread's transfers in progress, and the clock it reads
    // (chosen on the thread's first transfer; kept here beside the start ticks
    // so that reading the clock touches nothing else).
    struct ThreadTimer {
        unsigned long long start[3];
        bool started[3];
        unsigned char clock; // one of the k...Clock values
    };
    static constexpr unsigned char kUnchosenClock = 0;
    static constexpr unsigned char kCounterClock = 1; // the processor's time-stamp counter
    static constexpr unsigned char kOsClock = 2;
    static ThreadTimer& Timer();
    static unsigned long long Ticks(ThreadTimer& timer);
    // The clock through the OS; chooses the thread's clock on its first call.
    static unsigned long long OsTicks(ThreadTimer& timer);
#if ZORBAS_IO_TIMER_INLINE
    // Constant-initialised: callers then read it without a per-access check
    // for a thread-local constructor (C++20; older callers still work).
#    if defined(__cpp_constinit)
    static constinit ZORBAS_FAST_TLS thread_local ThreadTimer t_timer;
#    else
    static ZORBAS_FAST_TLS thread_local ThreadTimer t_timer;
#    endif
#endif

    struct Impl;
    Impl* m_impl;
};

#if ZORBAS_IO_TIMER_INLINE
#    define ZORBAS_IO_TIMER_DEFINITION inline
#    include "ZORBasUtlIOTimer.inc"
#endif

extern template class ZORBAS_API omi_Singleton<ZORBasUtlIOStats>;
