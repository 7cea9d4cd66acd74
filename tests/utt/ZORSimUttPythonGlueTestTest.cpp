// The script bindings' string round trip and its error texts.

#include "ZORSimUttPythonGlueTest.h"
#include "ZORSimUttPythonGlueTestFault.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

const char kBadStringMessage[] = "String passed into SIM is BAD. set/setenv _ZOR_FAIL_ON_BAD and rerun.";

struct Outcome {
    unsigned char result;
    char* output;
    std::string error;
};

Outcome Check(const char* input, unsigned int capacity = 256) {
    char buffer[256];
    std::memset(buffer, 'X', sizeof buffer);
    Outcome outcome{0, nullptr, {}};
    outcome.result = ZORSimUttPythonGlueTest_CheckString(input, &outcome.output, buffer, capacity);
    if (outcome.result == 0)
        outcome.error = buffer;
    return outcome;
}

} // namespace

TEST(ZORSimUttPythonGlueTest, GoodTextComesBackAsAFreshMallocedCopy) {
    for (const char* text : {"x", "",
                             "Gr\xC3\xBC\xC3\x9F"
                             "e \xE2\x9C\x93",
                             "bad string.", "Bad string", "Bad string. "}) {
        const Outcome outcome = Check(text);
        ASSERT_EQ(outcome.result, 1) << text;
        ASSERT_NE(outcome.output, nullptr);
        EXPECT_NE(outcome.output, text);
        EXPECT_STREQ(outcome.output, text);
        std::free(outcome.output);
    }
}

TEST(ZORSimUttPythonGlueTest, NullInputIsTheEmptyText) {
    const Outcome outcome = Check(nullptr);
    ASSERT_EQ(outcome.result, 1);
    EXPECT_STREQ(outcome.output, "");
    std::free(outcome.output);
}

TEST(ZORSimUttPythonGlueTest, BadStringGivesTheCatalogueMessage) {
    const Outcome outcome = Check("Bad string.");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.output, nullptr);
    EXPECT_EQ(outcome.error, kBadStringMessage);
}

TEST(ZORSimUttPythonGlueTest, BadStringIsReportedBeforeItIsCaught) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const char* disabled = std::getenv("SIM_DISABLE_EXCEPTION_REPORT");
    const std::string saved = disabled ? disabled : "";
    unsetenv("SIM_DISABLE_EXCEPTION_REPORT");
    EXPECT_EXIT(
        {
            char* output = nullptr;
            char error[8];
            std::exit(ZORSimUttPythonGlueTest_CheckString("Bad string.", &output, error, sizeof error) == 0
                          ? 0
                          : 1);
        },
        ::testing::ExitedWithCode(0), "!!! EXCEPTION:.*String passed into SIM is BAD");
    if (disabled)
        setenv("SIM_DISABLE_EXCEPTION_REPORT", saved.c_str(), 1);
}

TEST(ZORSimUttPythonGlueTest, TextThatIsNotUTF8IsABadString) {
    for (const char* text : {"\xFF\xFE", "abc\xC3", "\xC0\xAF", "\xED\xA0\x80"}) {
        const Outcome outcome = Check(text);
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.output, nullptr);
        EXPECT_EQ(outcome.error, kBadStringMessage);
    }
}

TEST(ZORSimUttPythonGlueTest, ErrorTextIsCutToTheCapacityAndTerminated) {
    char buffer[16];
    std::memset(buffer, 'X', sizeof buffer);
    char* output = nullptr;
    EXPECT_EQ(ZORSimUttPythonGlueTest_CheckString("Bad string.", &output, buffer, 7), 0);
    EXPECT_EQ(std::string(buffer, 8), std::string("String\0X", 8));

    std::memset(buffer, 'X', sizeof buffer);
    EXPECT_EQ(ZORSimUttPythonGlueTest_CheckString("Bad string.", &output, buffer, 1), 0);
    EXPECT_EQ(std::string(buffer, 2), std::string("\0X", 2));

    // No room at all: nothing is written.
    std::memset(buffer, 'X', sizeof buffer);
    EXPECT_EQ(ZORSimUttPythonGlueTest_CheckString("Bad string.", &output, buffer, 0), 0);
    EXPECT_EQ(buffer[0], 'X');
    EXPECT_EQ(ZORSimUttPythonGlueTest_CheckString("Bad string.", &output, nullptr, 16), 0);
    EXPECT_EQ(output, nullptr);
}

TEST(ZORSimUttPythonGlueTest, WithoutAnOutputPointerTheCallOnlyChecks) {
    char buffer[128];
    EXPECT_EQ(ZORSimUttPythonGlueTest_CheckString("fine", nullptr, buffer, sizeof buffer), 1);
    EXPECT_EQ(ZORSimUttPythonGlueTest_CheckString("Bad string.", nullptr, buffer, sizeof buffer), 0);
    EXPECT_STREQ(buffer, kBadStringMessage);
}

TEST(ZORSimUttPythonGlueTest, FailuresOtherThanSIMExceptionsHaveTheirOwnTexts) {
    using ZORSimUttPythonGlueTestFault::Kind;
    ZORSimUttPythonGlueTestFault::Arm(Kind::AllocationFails);
    Outcome outcome = Check("x");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.output, nullptr);
    EXPECT_EQ(outcome.error, "Memory allocation failed.");

    // A standard exception shows its own text, without a prefix.
    ZORSimUttPythonGlueTestFault::Arm(Kind::StdException);
    EXPECT_EQ(Check("x").error, "injected failure");

    ZORSimUttPythonGlueTestFault::Arm(Kind::Foreign);
    EXPECT_EQ(Check("x").error, "Unrecognized exception.");
    ZORSimUttPythonGlueTestFault::Arm(Kind::Foreign);
    EXPECT_EQ(Check("x", 5).error, "Unre");

    // A fault is spent by the call that takes it.
    outcome = Check("x");
    EXPECT_EQ(outcome.result, 1);
    std::free(outcome.output);
}
