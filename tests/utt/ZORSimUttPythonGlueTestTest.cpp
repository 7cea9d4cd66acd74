// The script bindings' string round trip and its error texts.
#include "ZORSimTestSupport.h"

#include "ZORSimUttPythonGlueTest.h"
#include "ZORSimUttPythonGlueTestFault.h"

#include <cstring>

using namespace zorsim_test;
using namespace std::string_literals;
using Fault = ZORSimUttPythonGlueTestFault::Kind;

namespace {

struct Outcome {
    unsigned char result;
    char* output;
    std::string error; // the buffer, up to the first untouched byte
};

Outcome Check(const char* input, unsigned int capacity = 256, bool wantOutput = true) {
    char buffer[257];
    std::memset(buffer, 'X', sizeof buffer);
    buffer[256] = '\0';
    Outcome outcome{0, nullptr, {}};
    outcome.result =
        ZORSimUttPythonGlueTest_CheckString(input, wantOutput ? &outcome.output : nullptr, buffer, capacity);
    outcome.error.assign(buffer, std::strcspn(buffer, "X") + 1);
    return outcome;
}

TEST(ZORSimUttPythonGlueTest, GoodTextComesBackAsAFreshMallocedCopy) {
    for (const char* text : {"x", "", "Gr\xC3\xBC\xC3\x9F", "Bad string. "}) {
        const Outcome outcome = Check(text);
        ASSERT_EQ(outcome.result, 1) << text;
        EXPECT_NE(outcome.output, text);
        EXPECT_STREQ(outcome.output, text);
        EXPECT_EQ(outcome.error, "X"); // no error written
        std::free(outcome.output);
    }
}

TEST(ZORSimUttPythonGlueTest, FailuresGiveNoCopyAndTheirTextCutToTheCapacity) {
    const std::string bad = "String passed into SIM is BAD. set/setenv _ZOR_FAIL_ON_BAD and rerun.\0"s,
                      null = "ZORSimUttPythonGlueTest_CheckString: ";
    const struct {
        const char* input;
        unsigned int capacity;
        bool wantOutput;
        Fault fault;
        std::string error;
    } cases[] = {{"Bad string.", 256, true, Fault::None, bad},
                 {"\xFF\xFE", 256, true, Fault::None, bad},
                 {"abc\xC3", 256, true, Fault::None, bad},
                 {"\xED\xA0\x80", 256, true, Fault::None, bad},
                 {"Bad string.", 7, true, Fault::None, "String\0"s},
                 {"Bad string.", 1, true, Fault::None, "\0"s},
                 {"Bad string.", 0, true, Fault::None, "X"}, // no room at all: nothing is written
                 {nullptr, 256, true, Fault::None, null + "input is a null pointer.\0"s},
                 {"fine", 256, false, Fault::None, null + "output is a null pointer.\0"s},
                 {"x", 256, true, Fault::AllocationFails, "Memory allocation failed.\0"s},
                 {"x", 256, true, Fault::StdException, "injected failure\0"s}, // its own text, no prefix
                 {"x", 256, true, Fault::Foreign, "Unrecognized exception.\0"s}};
    for (const auto& c : cases) {
        ZORSimUttPythonGlueTestFault::Arm(c.fault);
        const Outcome outcome = Check(c.input, c.capacity, c.wantOutput);
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.output, nullptr);
        EXPECT_EQ(outcome.error, c.error);
    }
    char* output = nullptr;
    EXPECT_EQ(ZORSimUttPythonGlueTest_CheckString("Bad string.", &output, nullptr, 16), 0); // no buffer
    EXPECT_EQ(output, nullptr);
    ZORSimUttPythonGlueTestFault::Arm(Fault::Foreign); // a fault is spent by the call that takes it
    EXPECT_EQ(Check("x").result, 0);
    const Outcome spent = Check("x");
    EXPECT_EQ(spent.result, 1);
    std::free(spent.output);
}

TEST(ZORSimUttPythonGlueTest, BadStringIsReportedBeforeItIsCaught) {
    ScopedEnv reports("SIM_DISABLE_EXCEPTION_REPORT", nullptr);
    ExpectInFreshProcess([] { EXPECT_EQ(Check("Bad string.").result, 0); },
                         "!!! EXCEPTION:\n!!!   String passed into SIM is BAD.*\n!!! TRACEBACK:");
}

} // namespace
