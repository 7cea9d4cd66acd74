// The script bindings' string round trip and its error texts.
#include "ZORSimTestSupport.h"

#include "ZORSimUttPythonGlueTest.h"
#include "ZORSimUttPythonGlueTestFault.h"

#include <cstring>

using namespace zorsim_test;

namespace {

const char kBadStringMessage[] = "String passed into SIM is BAD. set/setenv _ZOR_FAIL_ON_BAD and rerun.";

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

TEST(ZORSimUttPythonGlueTest, GoodTextComesBackAsAFreshMallocedCopy) {
    for (const char* text :
         {"x", "",
          "Gr\xC3\xBC\xC3\x9F"
          "e \xE2\x9C\x93",
          "bad string.", "Bad string", "Bad string. ", static_cast<const char*>(nullptr)}) {
        SCOPED_TRACE(text ? text : "null");
        const Outcome outcome = Check(text);
        ASSERT_EQ(outcome.result, 1);
        ASSERT_NE(outcome.output, nullptr);
        EXPECT_NE(outcome.output, text);
        EXPECT_STREQ(outcome.output, text ? text : "");
        EXPECT_EQ(outcome.error, "X"); // no error written
        std::free(outcome.output);
    }
}

TEST(ZORSimUttPythonGlueTest, BadStringsGiveTheCatalogueMessageCutToTheCapacity) {
    for (const char* text : {"Bad string.", "\xFF\xFE", "abc\xC3", "\xC0\xAF", "\xED\xA0\x80"}) {
        const Outcome outcome = Check(text);
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.output, nullptr);
        EXPECT_EQ(outcome.error, std::string(kBadStringMessage) + '\0');
    }
    EXPECT_EQ(Check("Bad string.", 7).error, std::string("String\0", 7));
    EXPECT_EQ(Check("Bad string.", 1).error, std::string("\0", 1));
    EXPECT_EQ(Check("Bad string.", 0).error, "X"); // no room at all: nothing is written
    char* output = nullptr;
    EXPECT_EQ(ZORSimUttPythonGlueTest_CheckString("Bad string.", &output, nullptr, 16), 0);
    EXPECT_EQ(output, nullptr);
}

TEST(ZORSimUttPythonGlueTest, WithoutAnOutputPointerTheCallOnlyChecks) {
    char buffer[128];
    EXPECT_EQ(ZORSimUttPythonGlueTest_CheckString("fine", nullptr, buffer, sizeof buffer), 1);
    EXPECT_EQ(ZORSimUttPythonGlueTest_CheckString("Bad string.", nullptr, buffer, sizeof buffer), 0);
    EXPECT_STREQ(buffer, kBadStringMessage);
}

TEST(ZORSimUttPythonGlueTest, BadStringIsReportedBeforeItIsCaught) {
    ScopedEnv reports("SIM_DISABLE_EXCEPTION_REPORT", nullptr);
    ExpectInFreshProcess([] { EXPECT_EQ(Check("Bad string.").result, 0); },
                         "!!! EXCEPTION:\n!!!   String passed into SIM is BAD.*\n!!! TRACEBACK:");
}

TEST(ZORSimUttPythonGlueTest, FailuresOtherThanSIMExceptionsHaveTheirOwnTexts) {
    using ZORSimUttPythonGlueTestFault::Kind;
    ZORSimUttPythonGlueTestFault::Arm(Kind::AllocationFails);
    const Outcome outcome = Check("x");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.output, nullptr);
    EXPECT_EQ(outcome.error, std::string("Memory allocation failed.") + '\0');
    // A standard exception shows its own text, without a prefix.
    ZORSimUttPythonGlueTestFault::Arm(Kind::StdException);
    EXPECT_EQ(Check("x").error, std::string("injected failure") + '\0');
    ZORSimUttPythonGlueTestFault::Arm(Kind::Foreign);
    EXPECT_EQ(Check("x", 5).error, std::string("Unre") + '\0');

    // A fault is spent by the call that takes it.
    ZORSimUttPythonGlueTestFault::Arm(Kind::Foreign);
    EXPECT_EQ(Check("x").error, std::string("Unrecognized exception.") + '\0');
    const Outcome spent = Check("x");
    EXPECT_EQ(spent.result, 1);
    std::free(spent.output);
}

} // namespace
