// The process-wide resource monitor: labelled timers and marks.
#include "bcu_ResourceMonitor.h"

#include "ZORBasPlatform.h"
#include "omi_SingletonImpl.h"

#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <map>
#include <mutex>

template class ZORBAS_INSTANTIATION_API omi_Singleton<bcu_ResourceMonitor>;

namespace {

using Clock = std::chrono::steady_clock;

double SecondsBetween(Clock::time_point from, Clock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

ZORBAS_PRINTF_FORMAT(2, 3) void AppendFormatted(std::string& out, const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list again;
    va_copy(again, args);
    const int n = std::vsnprintf(nullptr, 0, format, args);
    va_end(args);
    if (n > 0) {
        const std::size_t at = out.size();
        out.resize(at + static_cast<std::size_t>(n) + 1);
        std::vsnprintf(out.data() + at, static_cast<std::size_t>(n) + 1, format, again);
        out.resize(at + static_cast<std::size_t>(n));
    }
    va_end(again);
}

} // namespace

struct bcu_ResourceMonitor::Impl {
    struct Timer {
        std::string label;
        long long starts = 0;
        double wall = 0;
        double cpu = 0;
        bool running = false;
        Clock::time_point wallStart;
        double cpuStart = 0;
    };

    mutable std::mutex lock;
    std::string name;
    int value = 0;
    Clock::time_point origin = Clock::now();
    std::map<int, Timer> timers; // by number, so the report is in order
    std::vector<MarkRow> marks;
};

bcu_ResourceMonitor::bcu_ResourceMonitor() : m_impl(new Impl) {}

bcu_ResourceMonitor::~bcu_ResourceMonitor() {
    // The process-wide monitor is destroyed by the singleton registry as the
    // process ends; that is when the table is wanted.
    if (ZORBasGetEnv("SIM_RESOURCE_MONITOR") != nullptr)
        Report(stderr);
    delete m_impl;
}

void bcu_ResourceMonitor::Initialize(const char* name, int value) {
    std::lock_guard<std::mutex> guard(m_impl->lock);
    m_impl->name = name != nullptr ? name : "";
    m_impl->value = value;
}

void bcu_ResourceMonitor::IniTimer(int timer, const char* label) {
    std::lock_guard<std::mutex> guard(m_impl->lock);
    m_impl->timers[timer].label = label != nullptr ? label : "";
}

void bcu_ResourceMonitor::StartTimer(int timer) {
    // Read the clocks before taking the lock, so waiting for it is not counted.
    const Clock::time_point wall = Clock::now();
    const double cpu = zorbas_os::ProcessCpuSeconds();
    std::lock_guard<std::mutex> guard(m_impl->lock);
    Impl::Timer& t = m_impl->timers[timer];
    if (t.running)
        return;
    t.running = true;
    ++t.starts;
    t.wallStart = wall;
    t.cpuStart = cpu;
}

void bcu_ResourceMonitor::StopTimer(int timer) {
    const Clock::time_point wall = Clock::now();
    const double cpu = zorbas_os::ProcessCpuSeconds();
    std::lock_guard<std::mutex> guard(m_impl->lock);
    auto it = m_impl->timers.find(timer);
    if (it == m_impl->timers.end() || !it->second.running)
        return;
    Impl::Timer& t = it->second;
    t.running = false;
    t.wall += SecondsBetween(t.wallStart, wall);
    t.cpu += std::max(0.0, cpu - t.cpuStart);
}

void bcu_ResourceMonitor::Mark(const char* text) {
    const Clock::time_point now = Clock::now();
    std::lock_guard<std::mutex> guard(m_impl->lock);
    m_impl->marks.push_back({SecondsBetween(m_impl->origin, now), text != nullptr ? text : ""});
}

std::vector<bcu_ResourceMonitor::TimerRow> bcu_ResourceMonitor::Timers() const {
    std::lock_guard<std::mutex> guard(m_impl->lock);
    std::vector<TimerRow> rows;
    rows.reserve(m_impl->timers.size());
    for (const auto& [number, t] : m_impl->timers)
        rows.push_back({number, t.label, t.starts, t.wall, t.cpu, t.running});
    return rows;
}

std::vector<bcu_ResourceMonitor::MarkRow> bcu_ResourceMonitor::Marks() const {
    std::lock_guard<std::mutex> guard(m_impl->lock);
    return m_impl->marks;
}

std::string bcu_ResourceMonitor::Name() const {
    std::lock_guard<std::mutex> guard(m_impl->lock);
    return m_impl->name;
}

std::string bcu_ResourceMonitor::Report() const {
    const std::vector<TimerRow> timers = Timers();
    const std::vector<MarkRow> marks = Marks();
    std::string name;
    int value;
    {
        std::lock_guard<std::mutex> guard(m_impl->lock);
        name = m_impl->name;
        value = m_impl->value;
    }

    std::string out;
    if (name.empty())
        out += "Resource monitor\n";
    else
        AppendFormatted(out, "Resource monitor: %s (%d)\n", name.c_str(), value);

    int labelWidth = 5; // "Label"
    for (const TimerRow& row : timers)
        labelWidth = std::max(labelWidth, static_cast<int>(row.label.size()));
    AppendFormatted(out, "%6s  %-*s  %10s  %12s  %12s\n", "Timer", labelWidth, "Label", "Starts", "Wall s",
                    "CPU s");
    for (const TimerRow& row : timers) {
        AppendFormatted(out, "%6d  %-*s  %10lld  %12.6f  %12.6f%s\n", row.timer, labelWidth,
                        row.label.c_str(), row.starts, row.wallSeconds, row.cpuSeconds,
                        row.running ? "  running" : "");
    }
    if (!marks.empty()) {
        out += "Marks:\n";
        for (const MarkRow& mark : marks)
            AppendFormatted(out, "%12.6f s  %s\n", mark.atSeconds, mark.text.c_str());
    }
    return out;
}

void bcu_ResourceMonitor::Report(std::FILE* out) const {
    if (out == nullptr)
        return;
    const std::string text = Report();
    std::fwrite(text.data(), 1, text.size(), out);
    std::fflush(out);
}
