#include "ZORSimUttResourceMonitor.h"
#include "ZORSimContainersC.h"

#include "ZORBasAti.h"
#include "bcu_ResourceMonitor.h"

namespace {

// Set once, when the utility layer first starts with SIM_RESOURCE_MONITOR in
// the environment; never cleared.
bool g_simMonitorOn = false;

bcu_ResourceMonitor& Monitor() {
    return omi_Singleton<bcu_ResourceMonitor>::Instance();
}

// Callers in other languages may pass no text at all; the monitor gets an
// empty one rather than relying on it to cope.
const char* Text(const char* text) {
    return text != nullptr ? text : "";
}

} // namespace

extern "C" {

void ZORSimUttResourceMonitorInitialize(const char* name, int value) {
    if (ZORBasGetEnv("SIM_RESOURCE_MONITOR") != nullptr)
        g_simMonitorOn = true;
    if (name != nullptr)
        Monitor().Initialize(name, value);
}

void ZORSimUttResourceMonitorIniTimer(int timer, const char* label) {
    Monitor().IniTimer(timer, Text(label));
}

void ZORSimUttResourceMonitorStartTimer(int timer) {
    Monitor().StartTimer(timer);
}

void ZORSimUttResourceMonitorStopTimer(int timer) {
    Monitor().StopTimer(timer);
}

void ZORSimUttResourceMonitorMark(const char* text) {
    Monitor().Mark(Text(text));
}

void ZORSimUttResourceMonitorSimMark(const char* text) {
    if (g_simMonitorOn)
        Monitor().Mark(Text(text));
}

} // extern "C"

void ZORSimUttResourceMonitor::SimIniTimer(int timer, const char* label) {
    if (g_simMonitorOn)
        Monitor().IniTimer(timer, Text(label));
}

void ZORSimUttResourceMonitor::SimStartTimer(int timer) {
    if (g_simMonitorOn)
        Monitor().StartTimer(timer);
}

void ZORSimUttResourceMonitor::SimStopTimer(int timer) {
    if (g_simMonitorOn)
        Monitor().StopTimer(timer);
}

bool ZORSimUttResourceMonitor::IsOn() {
    return g_simMonitorOn;
}
