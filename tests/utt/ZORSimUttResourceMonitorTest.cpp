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

// "label starts running" of a timer, or "none".
std::string Timer(int timer) {
    for (const auto& row : Monitor().Timers())
        if (row.timer == timer)
            return row.label + " " + std::to_string(row.starts) + (row.running ? " running" : " stopped");
    return "none";
}

bool HasMark(const std::string& text) {
    for (const auto& row : Monitor().Marks())
        if (row.text == text)
            return true;
    return false;
}

// Times timer 3 through the Sim variants.
void TimeWithTheSimVariants() {
    ZORSimUttResourceMonitor::SimIniTimer(3, "sim");
    ZORSimUttResourceMonitor::SimStartTimer(3);
    ZORSimUttResourceMonitorSimMark("sim mark");
}

} // namespace

TEST(ZORSimUttResourceMonitor, WithTheSwitchAtLoadTheSimVariantsForward) {
    ScopedEnv on("SIM_RESOURCE_MONITOR", "1");
    ExpectInFreshProcess([] {
        EXPECT_TRUE(ZORSimUttResourceMonitor::IsOn());
        TimeWithTheSimVariants();
        EXPECT_EQ(Timer(3), "sim 1 running");
        ZORSimUttResourceMonitor::SimStopTimer(3);
        EXPECT_EQ(Timer(3), "sim 1 stopped");
        EXPECT_TRUE(HasMark("sim mark"));
    });
}

TEST(ZORSimUttResourceMonitor, WithoutItOnlyThePlainFunctionsForwardUntilALaterStartSeesIt) {
    ScopedEnv off("SIM_RESOURCE_MONITOR", nullptr);
    ExpectInFreshProcess([] {
        EXPECT_FALSE(ZORSimUttResourceMonitor::IsOn());
        TimeWithTheSimVariants();
        EXPECT_EQ(Timer(3), "none");
        EXPECT_FALSE(HasMark("sim mark"));

        ZORSimUttResourceMonitorIniTimer(3, "three");
        ZORSimUttResourceMonitorStartTimer(3);
        ZORSimUttResourceMonitor::SimStopTimer(3); // still switched off
        EXPECT_EQ(Timer(3), "three 1 running");
        ZORSimUttResourceMonitorStopTimer(3);
        EXPECT_EQ(Timer(3), "three 1 stopped");
        ZORSimUttResourceMonitorMark("plain mark");
        EXPECT_TRUE(HasMark("plain mark"));

        // The library's own start passed no name, nor does this one.
        ZORSimUttResourceMonitorInitialize(nullptr, 5);
        EXPECT_EQ(Monitor().Name(), "");
        ZORSimUttResourceMonitorInitialize("solver run", 5);
        EXPECT_EQ(Monitor().Name(), "solver run");

        // Any value sets the switch, and it is never cleared.
        SetEnv("SIM_RESOURCE_MONITOR", "");
        ZORSimUttResourceMonitorInitialize(nullptr, 0);
        EXPECT_TRUE(ZORSimUttResourceMonitor::IsOn());
        SetEnv("SIM_RESOURCE_MONITOR", nullptr);
        ZORSimUttResourceMonitorInitialize(nullptr, 0);
        EXPECT_TRUE(ZORSimUttResourceMonitor::IsOn());
    });
}
