// The timer facade over the base library's resource monitor. The switch of
// the Sim variants is read when the library starts, at load, so each case
// runs in a fresh process with SIM_RESOURCE_MONITOR set or unset.

#include "ZORSimUttResourceMonitor.h"

#include "ZORBasAti.h"
#include "bcu_ResourceMonitor.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

namespace {

bcu_ResourceMonitor& Monitor() {
    return omi_Singleton<bcu_ResourceMonitor>::Instance();
}

std::optional<bcu_ResourceMonitor::TimerRow> FindTimer(int timer) {
    for (const auto& row : Monitor().Timers())
        if (row.timer == timer)
            return row;
    return std::nullopt;
}

bool HasMark(const std::string& text) {
    for (const auto& row : Monitor().Marks())
        if (row.text == text)
            return true;
    return false;
}

[[noreturn]] void Fail(int line, const char* what) {
    std::fprintf(stderr, "line %d: %s\n", line, what);
    std::fflush(stderr);
    std::_Exit(1);
}
#define CHILD_CHECK(condition)                                                                               \
    do {                                                                                                     \
        if (!(condition))                                                                                    \
            Fail(__LINE__, #condition);                                                                      \
    } while (0)

// Sets or clears an environment variable for the children started while it
// lives, and restores it afterwards.
class EnvSetting {
public:
    EnvSetting(const char* name, const char* value) : m_name(name) {
        if (const char* old = std::getenv(name))
            m_old = old;
        if (value)
            setenv(name, value, 1);
        else
            unsetenv(name);
    }
    ~EnvSetting() {
        if (m_old)
            setenv(m_name, m_old->c_str(), 1);
        else
            unsetenv(m_name);
    }

private:
    const char* m_name;
    std::optional<std::string> m_old;
};

} // namespace

class ZORSimUttResourceMonitorTest : public ::testing::Test {
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ZORSimUttResourceMonitorTest, WithoutTheSwitchOnlyThePlainFunctionsForward) {
    EnvSetting unset("SIM_RESOURCE_MONITOR", nullptr);
    EXPECT_EXIT(
        {
            CHILD_CHECK(!ZORSimUttResourceMonitor::IsOn());
            ZORSimUttResourceMonitor::SimIniTimer(3, "sim three");
            ZORSimUttResourceMonitor::SimStartTimer(3);
            ZORSimUttResourceMonitor::SimStopTimer(3);
            ZORSimUttResourceMonitorSimMark("sim mark");
            CHILD_CHECK(!FindTimer(3));
            CHILD_CHECK(!HasMark("sim mark"));

            ZORSimUttResourceMonitorIniTimer(3, "three");
            ZORSimUttResourceMonitorStartTimer(3);
            auto row = FindTimer(3);
            CHILD_CHECK(row && row->label == "three" && row->starts == 1 && row->running);
            ZORSimUttResourceMonitor::SimStopTimer(3); // still switched off
            CHILD_CHECK(FindTimer(3)->running);
            ZORSimUttResourceMonitorStopTimer(3);
            CHILD_CHECK(!FindTimer(3)->running);
            ZORSimUttResourceMonitorMark("plain mark");
            CHILD_CHECK(HasMark("plain mark"));
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(ZORSimUttResourceMonitorTest, WithTheSwitchTheSimVariantsForwardUnchanged) {
    EnvSetting set("SIM_RESOURCE_MONITOR", "1");
    EXPECT_EXIT(
        {
            CHILD_CHECK(ZORSimUttResourceMonitor::IsOn());
            ZORSimUttResourceMonitor::SimIniTimer(4, "four");
            ZORSimUttResourceMonitor::SimStartTimer(4);
            auto row = FindTimer(4);
            CHILD_CHECK(row && row->label == "four" && row->starts == 1 && row->running);
            ZORSimUttResourceMonitor::SimStopTimer(4);
            CHILD_CHECK(!FindTimer(4)->running);
            ZORSimUttResourceMonitorSimMark("sim mark");
            CHILD_CHECK(HasMark("sim mark"));
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(ZORSimUttResourceMonitorTest, SwitchIsSetByAnyValueAndNeverCleared) {
    EnvSetting unset("SIM_RESOURCE_MONITOR", nullptr);
    EXPECT_EXIT(
        {
            CHILD_CHECK(!ZORSimUttResourceMonitor::IsOn());
            setenv("SIM_RESOURCE_MONITOR", "", 1);
            ZORSimUttResourceMonitorInitialize(nullptr, 0);
            CHILD_CHECK(ZORSimUttResourceMonitor::IsOn());
            unsetenv("SIM_RESOURCE_MONITOR");
            ZORSimUttResourceMonitorInitialize(nullptr, 0);
            CHILD_CHECK(ZORSimUttResourceMonitor::IsOn());
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(ZORSimUttResourceMonitorTest, InitializeForwardsOnlyANamedRun) {
    EnvSetting unset("SIM_RESOURCE_MONITOR", nullptr);
    EXPECT_EXIT(
        {
            // The library's own start passed no name.
            CHILD_CHECK(Monitor().Name().empty());
            ZORSimUttResourceMonitorInitialize(nullptr, 5);
            CHILD_CHECK(Monitor().Name().empty());
            ZORSimUttResourceMonitorInitialize("solver run", 5);
            CHILD_CHECK(Monitor().Name() == "solver run");
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}
