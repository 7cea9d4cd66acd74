// Process-wide resource monitor: numbered, labelled timers that accumulate
// wall-clock and CPU time and count their starts, and timestamped marks.
// When SIM_RESOURCE_MONITOR is set, the table is written to standard error
// at process end.
#pragma once

#include "VEXZORBasExport.h"
#include "ZORBasAti.h"

#include <cstdio>
#include <string>
#include <vector>

class ZORBAS_API bcu_ResourceMonitor {
public:
    struct TimerRow {
        int timer;
        std::string label;
        long long starts;
        double wallSeconds; // accumulated over completed start/stop pairs
        double cpuSeconds;
        bool running;
    };
    struct MarkRow {
        double atSeconds; // since the monitor was made
        std::string text;
    };

    bcu_ResourceMonitor();
    ~bcu_ResourceMonitor();
    bcu_ResourceMonitor(const bcu_ResourceMonitor&) = delete;
    bcu_ResourceMonitor& operator=(const bcu_ResourceMonitor&) = delete;

    // Names the monitored run; value is kept with it (a run number, a level).
    void Initialize(const char* name, int value);
    void IniTimer(int timer, const char* label);
    // Starting a running timer, or stopping a stopped one, is ignored.
    void StartTimer(int timer);
    void StopTimer(int timer);
    void Mark(const char* text);

    std::vector<TimerRow> Timers() const;
    std::vector<MarkRow> Marks() const;
    std::string Name() const;
    // The readable table.
    std::string Report() const;
    void Report(std::FILE* out) const;

private:
    struct Impl;
    Impl* m_impl;
};

extern template class ZORBAS_API omi_Singleton<bcu_ResourceMonitor>;
