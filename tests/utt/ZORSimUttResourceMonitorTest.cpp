// The timer facade over the base library's resource monitor. The switch of
// the Sim variants is read when the library starts, at load, so each case
// runs in a fresh process with SIM_RESOURCE_MONITOR set or unset.
#include "ZORSimTestSupport.h"

#include "ZORSimUttResourceMonitor.h"

#include "ZORBasAti.h"
#include "bcu_ResourceMonitor.h"

using namespace zorsim_test;

namespace {

bcu_ResourceMonitor& Monitor() {
    return omi_Singleton<bcu_ResourceMonitor>::Instance();
}

// "label starts running|stopped" of timer 3, or "none"; then the marks.
std::string State() {
    std::string out = "none";
    for (const auto& row : Monitor().Timers())
        if (row.timer == 3)
            out = row.label + " " + std::to_string(row.starts) + (row.running ? " running" : " stopped");
    for (const auto& mark : Monitor().Marks())
        out += "; " + mark.text;
    return out;
}

} // namespace

TEST(ZORSimUttResourceMonitor, SimVariantsForwardOnlyWithTheSwitchAtLoadAndPlainOnesAlways) {
    for (const char* value : {"1", static_cast<const char*>(nullptr)}) {
        ScopedEnv monitor("SIM_RESOURCE_MONITOR", value);
        ExpectInFreshProcess([on = value != nullptr] {
            EXPECT_EQ(ZORSimUttResourceMonitor::IsOn(), on);
            ZORSimUttResourceMonitor::SimIniTimer(3, "sim");
            ZORSimUttResourceMonitor::SimStartTimer(3);
            ZORSimUttResourceMonitorSimMark("sim mark");
            EXPECT_EQ(State(), on ? "sim 1 running; sim mark" : "none");
            ZORSimUttResourceMonitorIniTimer(3, "three");
            ZORSimUttResourceMonitorStartTimer(3);
            ZORSimUttResourceMonitorMark(nullptr);
            const std::string marks = on ? "; sim mark; " : "; ";
            ZORSimUttResourceMonitor::SimStopTimer(3);
            EXPECT_EQ(State(), (on ? "three 1 stopped" : "three 1 running") + marks);
            ZORSimUttResourceMonitorStopTimer(3);
            EXPECT_EQ(State(), "three 1 stopped" + marks);
        });
    }
}

TEST(ZORSimUttResourceMonitor, ALaterStartSeesTheSwitchWhichIsNeverCleared) {
    ScopedEnv off("SIM_RESOURCE_MONITOR", nullptr);
    ExpectInFreshProcess([] {
        // The library's own start passed no name, nor does this one.
        ZORSimUttResourceMonitorInitialize(nullptr, 5);
        EXPECT_EQ(Monitor().Name(), "");
        ZORSimUttResourceMonitorInitialize("solver run", 5);
        EXPECT_EQ(Monitor().Name(), "solver run");
        EXPECT_FALSE(ZORSimUttResourceMonitor::IsOn());
        SetEnv("SIM_RESOURCE_MONITOR", "0"); // any value sets the switch
        ZORSimUttResourceMonitorInitialize(nullptr, 0);
        EXPECT_TRUE(ZORSimUttResourceMonitor::IsOn());
        SetEnv("SIM_RESOURCE_MONITOR", nullptr);
        ZORSimUttResourceMonitorInitialize(nullptr, 0);
        EXPECT_TRUE(ZORSimUttResourceMonitor::IsOn());
    });
}
