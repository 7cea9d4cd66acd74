// Per-file I/O statistics.
#include "ZORBasUtlIOStats.h"

#include "omi_SingletonImpl.h"

#include <chrono>
#include <map>

template class ZORBAS_INSTANTIATION_API omi_Singleton<ZORBasUtlIOStats>;

namespace {

using Clock = std::chrono::steady_clock;

bool ValidKind(int kind) {
    return kind == ZORBasUtlIOFileStats::kRead || kind == ZORBasUtlIOFileStats::kWrite;
}

// Start times of the calling thread's transfer in progress, one per kind.
struct ThreadTimer {
    Clock::time_point start[3];
    bool started[3];
};
thread_local ThreadTimer t_timer{};

} // namespace

// ---- ZORBasUtlIOFileStats --------------------------------------------------------

ZORBasUtlIOFileStats::ZORBasUtlIOFileStats(const ZORString& name) : m_name(name) {}

ZORBasUtlIOFileStats::Totals ZORBasUtlIOFileStats::Get(int kind) const {
    if (!ValidKind(kind))
        return Totals{};
    std::lock_guard<std::mutex> guard(m_lock);
    return m_totals[kind];
}

int ZORBasUtlIOFileStats::Opens() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_opens;
}

bool ZORBasUtlIOFileStats::IsOpen() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_openNow > 0;
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
    std::lock_guard<std::mutex> guard(record->m_lock);
    ++record->m_opens;
    ++record->m_openNow;
    return record;
}

void ZORBasUtlIOStats::usefile_Close(const ZORBasSharedPtr<ZORBasUtlIOFileStats>& stats) {
    if (!stats)
        return;
    std::lock_guard<std::mutex> guard(stats->m_lock);
    if (stats->m_openNow > 0)
        --stats->m_openNow;
}

void ZORBasUtlIOStats::StartTimer(int kind) {
    if (!ValidKind(kind))
        return;
    t_timer.start[kind] = Clock::now();
    t_timer.started[kind] = true;
}

void ZORBasUtlIOStats::StopTimer(unsigned long long bytes, int kind,
                                 ZORBasSharedPtr<ZORBasUtlIOFileStats> stats) {
    if (!ValidKind(kind))
        return;
    double seconds = 0;
    if (t_timer.started[kind]) {
        seconds = std::chrono::duration<double>(Clock::now() - t_timer.start[kind]).count();
        t_timer.started[kind] = false;
    }
    if (!stats)
        return;
    std::lock_guard<std::mutex> guard(stats->m_lock);
    ZORBasUtlIOFileStats::Totals& totals = stats->m_totals[kind];
    totals.bytes += bytes;
    totals.calls += 1;
    totals.seconds += seconds;
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
