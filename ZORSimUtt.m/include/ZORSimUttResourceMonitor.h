// Timer facade over the process-wide resource monitor. The plain functions
// always forward; the Sim variants forward only when SIM_RESOURCE_MONITOR was
// set when the utility layer started, so the library's own instrumentation
// costs one test of a flag otherwise.
#pragma once

#include "ZORSimContainersExport.h"

// The plain ZORSimUttResourceMonitor* functions.
#include "ZORSimContainersC.h"

class ZORSIM_API ZORSimUttResourceMonitor {
public:
    static void SimIniTimer(int timer, const char* label);
    static void SimStartTimer(int timer);
    static void SimStopTimer(int timer);
    // True once SIM_RESOURCE_MONITOR has switched the Sim variants on.
    static bool IsOn();
};
