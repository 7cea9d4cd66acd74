// Per-file I/O statistics.
#include "ZORBasUtlIOStats.h"

#include "ZORBasPlatform.h"
#include "omi_SingletonImpl.h"

#include <map>
#include <mutex>

template class ZORBAS_INSTANTIATION_API omi_Singleton<ZORBasUtlIOStats>;

// ---- ZORBasUtlIOFileStats --------------------------------------------------------

ZORBasUtlIOFileStats::ZORBasUtlIOFileStats(const ZORString& name) : m_name(name) {}

ZORBasUtlIOFileStats::Totals ZORBasUtlIOFileStats::Get(int kind) const {
    if (!ValidKind(kind))
        return Totals{};
    const Counters& counters = m_counters[kind];
    Totals totals;
    totals.bytes = counters.bytes.load(std::memory_order_relaxed);
    totals.calls = counters.calls.load(std::memory_order_relaxed);
    totals.seconds =
        static_cast<double>(counters.ticks.load(std::memory_order_relaxed)) * zorbas_os::SecondsPerTick();
    return totals;
}

int ZORBasUtlIOFileStats::Opens() const {
    return m_opens.load(std::memory_order_relaxed);
}

bool ZORBasUtlIOFileStats::IsOpen() const {
    return m_openNow.load(std::memory_order_relaxed) > 0;
}

// ---- ZORBasUtlIOStats --------------------------------------------------------------

struct ZORBasUtlIOStats::Impl {
    mutable std::mutex lock;
    std::map<std::string, ZORBasSharedPtr<ZORBasUtlIOFileStats>> byName;
    std::vector<ZORBasSharedPtr<ZORBasUtlIOFileStats>> files; // in order of first open
};

ZORBasUtlIOStats::ZORBasUtlIOStats() : m_impl(new Impl) {}

ZORBasUtlIOStats::~ZORBasUtlIOStats() {
    delete m_impl;
}

ZORBasSharedPtr<ZORBasUtlIOFileStats> ZORBasUtlIOStats::usefile_Open(const ZORString& name) {
    ZORBasSharedPtr<ZORBasUtlIOFileStats> record;
    {
        std::lock_guard<std::mutex> guard(m_impl->lock);
        auto& slot = m_impl->byName[std::string(name.c_str(), name.Bytes())];
        if (!slot) {
            slot = std::make_shared<ZORBasUtlIOFileStats>(name);
            m_impl->files.push_back(slot);
        }
        record = slot;
    }
    record->m_opens.fetch_add(1, std::memory_order_relaxed);
    record->m_openNow.fetch_add(1, std::memory_order_relaxed);
    return record;
}

void ZORBasUtlIOStats::usefile_Close(const ZORBasSharedPtr<ZORBasUtlIOFileStats>& stats) {
    if (!stats)
        return;
    int open = stats->m_openNow.load(std::memory_order_relaxed);
    while (open > 0 && !stats->m_openNow.compare_exchange_weak(open, open - 1, std::memory_order_relaxed)) {
    }
}

#if ZORBAS_IO_TIMER_INLINE
constinit ZORBAS_FAST_TLS thread_local ZORBasUtlIOStats::ThreadTimer ZORBasUtlIOStats::t_timer{};
#else
ZORBAS_HOT ZORBasUtlIOStats::ThreadTimer& ZORBasUtlIOStats::Timer() {
    static thread_local ThreadTimer timer{};
    return timer;
}
#    define ZORBAS_IO_TIMER_DEFINITION ZORBAS_HOT
#    include "ZORBasUtlIOTimer.inc"
#endif

ZORBAS_HOT unsigned long long ZORBasUtlIOStats::OsTicks(ThreadTimer& timer) {
    if (timer.clock == kUnchosenClock)
        timer.clock = zorbas_os::TicksAreCounter() ? kCounterClock : kOsClock;
    return zorbas_os::Ticks();
}

std::vector<ZORBasSharedPtr<ZORBasUtlIOFileStats>> ZORBasUtlIOStats::Files() const {
    std::lock_guard<std::mutex> guard(m_impl->lock);
    return m_impl->files;
}

std::string ZORBasUtlIOStats::Report() const {
    std::string out;
    for (const auto& file : Files()) {
        const auto read = file->Get(ZORBasUtlIOFileStats::kRead);
        const auto write = file->Get(ZORBasUtlIOFileStats::kWrite);
        char line[256];
        std::snprintf(
            line, sizeof line,
            ": opens %d, read %llu bytes in %llu calls, %.6f s; write %llu bytes in %llu calls, %.6f s\n",
            file->Opens(), read.bytes, read.calls, read.seconds, write.bytes, write.calls, write.seconds);
        out += file->Name().c_str();
        out += line;
    }
    return out;
}

void ZORBasUtlIOStats::Report(std::FILE* out) const {
    if (out == nullptr)
        return;
    const std::string text = Report();
    std::fwrite(text.data(), 1, text.size(), out);
    std::fflush(out);
}
