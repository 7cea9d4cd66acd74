// Timer facade over the process-wide resource monitor. The plain functions
// always forward; the Sim variants forward only when SIM_RESOURCE_MONITOR was
// set when the utility layer started, so the library's own instrumentation
// costs one test of a flag otherwise.
#pragma once

#include "ZORSimContainersExport.h"

extern "C" {
ZORSIM_API void ZORSimUttResourceMonitorInitialize(const char* name, int value);
ZORSIM_API void ZORSimUttResourceMonitorIniTimer(int timer, const char* label);
ZORSIM_API void ZORSimUttResourceMonitorStartTimer(int timer);
ZORSIM_API void ZORSimUttResourceMonitorStopTimer(int timer);
ZORSIM_API void ZORSimUttResourceMonitorMark(const char* text);
ZORSIM_API void ZORSimUttResourceMonitorSimMark(const char* text);
}

class ZORSIM_API ZORSimUttResourceMonitor {
public:
    static void SimIniTimer(int timer, const char* label);
    static void SimStartTimer(int timer);
    static void SimStopTimer(int timer);
    // True once SIM_RESOURCE_MONITOR has switched the Sim variants on.
    static bool IsOn();
};
