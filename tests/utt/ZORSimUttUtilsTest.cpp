// Bounded copy, case-insensitive comparison, the XML attribute lookup, the
// script bindings' string round trip and its error texts, and the timer
// facade over the base's resource monitor (its switch is read when the
// library starts, at load, so each case runs in a fresh process).
#include "ZORSimTestSupport.h"

#include "ZORSimUttPythonGlueTest.h"
#include "ZORSimUttResourceMonitor.h"
#include "ZORSimUttPythonGlueTestFault.h"
#include "ZORSimUttUtils.h"
#include "ZORSimUttXMLUtils.h"

#include "ZORBasAti.h"
#include "bcu_ResourceMonitor.h"

#include <cstring>
#include <string>
#include <tuple>

using namespace zorsim_test;
using namespace std::string_literals;
using Fault = ZORSimUttPythonGlueTestFault::Kind;

namespace {

// The first `shown` bytes of a buffer pre-filled with 'X' after the call,
// so that untouched bytes can be told from written ones.
template <class F> std::string Written(F&& call, std::size_t shown) {
    char bytes[16];
    std::memset(bytes, 'X', sizeof bytes);
    call(bytes);
    return std::string(bytes, shown);
}

TEST(ZORSimUttUtils, CopyCutsZeroFillsTheCapacityAndTerminates) {
    // Capacity 0 means no bound: all of the source and the terminator.
    using Case = std::tuple<const char*, int, std::string>;
    const Case cases[] = {{"abcdef", 4, std::string("abc\0X", 5)},
                          {"ab", 8, std::string("ab\0\0\0\0\0\0X", 9)},
                          {nullptr, 3, std::string("\0\0\0X", 4)},
                          {"abcdefghij", 0, std::string("abcdefghij\0X", 12)}};
    for (const auto& [source, capacity, expected] : cases) {
        const auto copy = [s = source, n = capacity](char* to) { ZORSimUttUtils::Copy(to, s, n); };
        EXPECT_EQ(Written(copy, expected.size()), expected) << capacity;
    }
    // CopyNoZB copies exactly count bytes, terminators included.
    EXPECT_EQ(Written([](char* to) { ZORSimUttUtils::CopyNoZB(to, "a\0bc", 3); }, 4),
              std::string("a\0bX", 4));
}

// The attribute lookup compares whole names through SameStr.
TEST(ZORSimUttUtils, SameStrFoldsOnlyASCIILettersUpToCountAndGetAttrFindsTheFirstName) {
    const char* attributes[] = {"id", "7", "Type", "t", "type", "second", nullptr};
    EXPECT_EQ(ZORSimUttXMLUtils::GetAttr(attributes, "type"), attributes[3]);
    EXPECT_EQ(ZORSimUttXMLUtils::GetAttr(attributes, "ID"), attributes[1]);
    EXPECT_EQ(ZORSimUttXMLUtils::GetAttr(attributes, "7"), nullptr); // values are not names
    EXPECT_EQ(ZORSimUttXMLUtils::GetAttr(attributes, "typ"), nullptr);
    const char* none[] = {nullptr};
    EXPECT_EQ(ZORSimUttXMLUtils::GetAttr(none, "id"), nullptr);
    EXPECT_EQ(ZORSimUttXMLUtils::GetAttr(nullptr, "id"), nullptr);
    // Count 0 compares the whole strings; a count beyond both ends stops at
    // the terminators. The last three pairs differ by 0x20 but are no letters.
    using Case = std::tuple<const char*, const char*, int, bool>;
    const Case cases[] = {{"abc", "abcd", 0, false},   {"abcX", "abcY", 3, true},
                          {"abcX", "abcY", 4, false},  {"abc", "ABC", 100, true},
                          {"abc", "ABCD", 100, false}, {"@", "`", 0, false},
                          {"[", "{", 0, false},        {"\xC3\x84", "\xC3\xA4", 0, false}};
    for (const auto& [a, b, count, same] : cases)
        EXPECT_EQ(ZORSimUttUtils::SameStr(a, b, count), same) << a << " / " << b << " / " << count;
}

struct Outcome {
    unsigned char result;
    char* output;
    std::string error; // the buffer, up to the first untouched byte
};

Outcome Check(const char* input, unsigned int capacity = 256) {
    char buffer[257];
    std::memset(buffer, 'X', sizeof buffer);
    buffer[256] = '\0';
    Outcome outcome{0, nullptr, {}};
    outcome.result = ZORSimUttPythonGlueTest_CheckString(input, &outcome.output, buffer, capacity);
    outcome.error.assign(buffer, std::strcspn(buffer, "X") + 1);
    return outcome;
}

TEST(ZORSimUttPythonGlueTest, FailuresGiveNoCopyAndTheirTextCutToTheCapacityGoodTextAFreshCopy) {
    // Null pointers, missing buffers and no room at all are the C client's.
    const std::string bad = "String passed into SIM is BAD. set/setenv _ZOR_FAIL_ON_BAD and rerun.\0"s;
    using Case = std::tuple<const char*, Fault, std::string>;
    const Case cases[] = {{"Bad string.", Fault::None, bad},
                          {"\xFF\xFE", Fault::None, bad},
                          {"x", Fault::AllocationFails, "Memory allocation failed.\0"s},
                          {"x", Fault::StdException, "injected failure\0"s}, // its own text, no prefix
                          {"x", Fault::Foreign, "Unrecognized exception.\0"s}};
    for (const auto& [input, fault, error] : cases) {
        ZORSimUttPythonGlueTestFault::Arm(fault);
        const Outcome outcome = Check(input);
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.output, nullptr);
        EXPECT_EQ(outcome.error, error);
    }
    EXPECT_EQ(Check("Bad string.", 7).error + Check("Bad string.", 1).error, "String\0\0"s);
    const char* text = "Gr\xC3\xBC\xC3\x9F"; // the last fault was spent by the call that took it
    const Outcome spent = Check(text);       // good text: a fresh malloced copy, no error written
    ASSERT_EQ(spent.result, 1);
    EXPECT_NE(spent.output, text);
    EXPECT_STREQ(spent.output, text);
    EXPECT_EQ(spent.error, "X");
    std::free(spent.output);
}

TEST(ZORSimUttPythonGlueTest, BadStringIsReportedBeforeItIsCaught) {
    ScopedEnv reports("SIM_DISABLE_EXCEPTION_REPORT", nullptr);
    ExpectInFreshProcess([] { EXPECT_EQ(Check("Bad string.").result, 0); },
                         "!!! EXCEPTION:\n!!!   String passed into SIM is BAD.*\n!!! TRACEBACK:");
}

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

// The plain functions always forward: the Python package's test shows it.
TEST(ZORSimUttResourceMonitor, SimVariantsForwardOnlyWithTheSwitch) {
    for (const char* value : {"1", static_cast<const char*>(nullptr)}) {
        ScopedEnv monitor("SIM_RESOURCE_MONITOR", value);
        ExpectInFreshProcess([on = value != nullptr] {
            EXPECT_EQ(ZORSimUttResourceMonitor::IsOn(), on);
            ZORSimUttResourceMonitor::SimIniTimer(3, "sim");
            ZORSimUttResourceMonitor::SimStartTimer(3);
            ZORSimUttResourceMonitorSimMark("sim mark");
            EXPECT_EQ(State(), on ? "sim 1 running; sim mark" : "none");
            Monitor().StartTimer(3); // running either way
            ZORSimUttResourceMonitor::SimStopTimer(3);
            EXPECT_EQ(State(), on ? "sim 1 stopped; sim mark" : " 1 running");

            // A later start names the run only if given a name, and sees the
            // switch (any value), which is then never cleared.
            ZORSimUttResourceMonitorInitialize("solver run", 5);
            SetEnv("SIM_RESOURCE_MONITOR", "0");
            ZORSimUttResourceMonitorInitialize(nullptr, 0);
            SetEnv("SIM_RESOURCE_MONITOR", nullptr);
            ZORSimUttResourceMonitorInitialize(nullptr, 0);
            EXPECT_EQ(Monitor().Name(), "solver run");
            EXPECT_TRUE(ZORSimUttResourceMonitor::IsOn());
        });
    }
}

} // namespace
