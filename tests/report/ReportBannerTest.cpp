// The banners of the three report hooks and what the failure hooks throw,
// the report mode read once from SIM_DISABLE_EXCEPTION_REPORT, and the switch
// that silences exception reports. Each scenario runs in a fresh process.
#include "ZORSimTestSupport.h"

#include "ZORSimExceptions.h"
#include "ZORSimUttAssert.h"

using namespace zorsim_test;

namespace {

const std::string kNotice = "!!! - SIM Exception throw reports are disabled.\n";
const std::string kTrace = "!!! TRACEBACK:\n!!!   ";

// The failure hooks write their banner and a trace whatever the report
// switches say, then throw with the raising source and line recorded.
void ExpectFailureReportsAndThrows() {
    StderrCapture assertion;
    try {
        ZORSimUttAssert::ReportAssertionFailure("broken invariant");
        ADD_FAILURE() << "no exception";
    } catch (const ZORBasAssertException& error) {
        EXPECT_STREQ("broken invariant", error.Text());
        EXPECT_STREQ("ZORSimUttAssert", error.ThrowFile());
        EXPECT_EQ(213, error.ThrowLine());
    }
    const std::string logic = assertion.Finish();
    EXPECT_TRUE(StartsWith(
        logic, "!!! THE API HAS DETECTED AN INTERNAL LOGIC ERROR.\n!!! broken invariant\n" + kTrace))
        << logic;
    EXPECT_EQ(logic.find(kNotice), std::string::npos) << logic; // the notice belongs to exception reports

    StderrCapture validation;
    try {
        ZORSimUttAssert::ReportValidationFailure("bad argument");
        ADD_FAILURE() << "no exception";
    } catch (const ZORSimExcValidationFailure& error) {
        // The caller's text was for the log only.
        EXPECT_EQ("Validation failure - inconsistent state has been reached.",
                  error.AsString(ZORBasStringMode(false)).str());
        EXPECT_STREQ("ZORSimUttAssert", error.ThrowFile());
        EXPECT_EQ(220, error.ThrowLine());
    }
    const std::string client = validation.Finish();
    EXPECT_TRUE(
        StartsWith(client, "!!! THE API HAS DETECTED AN ARGUMENT ERROR OR INCORRECT USE BY THE CLIENT.\n"
                           "!!! bad argument\n" +
                               kTrace))
        << client;
}

} // namespace

TEST(ReportBanner, ExceptionReportIsBannerThenTraceAndTheModeIsKept) {
    ExpectInFreshProcess([] {
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", nullptr);
        StderrCapture capture;
        ZORSimUttAssert::ReportException("I/O out of bounds - start: 1, end: 2, limit: 3");
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", "1"); // too late: decided on the first report
        ZORSimUttAssert::ReportException("after");
        const std::string out = capture.Finish();
        EXPECT_TRUE(StartsWith(out, "!!! EXCEPTION:\n!!!   I/O out of bounds - start: 1, end: 2, limit: 3\n" +
                                        kTrace))
            << out;
        EXPECT_NE(out.find("!!! EXCEPTION:\n!!!   after\n" + kTrace), std::string::npos) << out;
        EXPECT_EQ(out.find(kNotice), std::string::npos) << out;
        ExpectFailureReportsAndThrows();
    });
}

TEST(ReportBanner, DisablingVariableDropsTracesOnlyAndWritesNoticeOnce) {
    ExpectInFreshProcess([] {
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", ""); // any value counts, even an empty one
        StderrCapture capture;
        ZORSimUttAssert::ReportException("first");
        EXPECT_THROW(ZORSimExcNoSuchFile("missing.sim").Propagate(), ZORSimExcNoSuchFile);
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", nullptr);
        ZORSimUttAssert::ReportException("after");
        EXPECT_EQ(kNotice + "!!! EXCEPTION:\n!!!   first\n!!! EXCEPTION:\n!!!   No such file: missing.sim\n" +
                      "!!! EXCEPTION:\n!!!   after\n",
                  capture.Finish());
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", "1");
        ExpectFailureReportsAndThrows();
    });
}

TEST(ReportBanner, DisabledExceptionReportsPrintNothingButFailuresStillReport) {
    ExpectInFreshProcess([] {
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", nullptr);
        ZORSimUttAssertDisableExcReport();
        StderrCapture capture;
        ZORSimUttAssert::ReportException("silenced");
        EXPECT_THROW(ZORSimExcIOBounds(1, 2, 3).Propagate(), ZORSimExcIOBounds);
        EXPECT_EQ("", capture.Finish());
        ExpectFailureReportsAndThrows();
    });
}
