// The banners of the three report hooks, the report mode read once from
// SIM_DISABLE_EXCEPTION_REPORT, and the switch that silences exception
// reports. Each scenario runs in a fresh process.
#include "ReportTestSupport.h"

#include "ZORSimExceptions.h"
#include "ZORSimUttAssert.h"

#include <cstdlib>

using namespace zorsim_report_test;

namespace {

const char* const kNotice = "!!! - SIM Exception throw reports are disabled.\n";
const char* const kLogicBanner = "!!! THE API HAS DETECTED AN INTERNAL LOGIC ERROR.\n!!! broken invariant\n";
const char* const kClientBanner =
    "!!! THE API HAS DETECTED AN ARGUMENT ERROR OR INCORRECT USE BY THE CLIENT.\n!!! bad argument\n";

} // namespace

TEST(ReportBanner, ExceptionReportIsBannerThenTraceByDefault) {
    ExpectInFreshProcess([] {
        unsetenv("SIM_DISABLE_EXCEPTION_REPORT");
        StderrCapture capture;
        ZORSimUttAssert::ReportException("I/O out of bounds - start: 1, end: 2, limit: 3");
        const std::string out = capture.Finish();
        EXPECT_TRUE(StartsWith(out, "!!! EXCEPTION:\n!!!   I/O out of bounds - start: 1, end: 2, limit: 3\n"
                                    "!!! TRACEBACK:\n!!!   "))
            << out;
    });
}

TEST(ReportBanner, DisablingVariableKeepsBannersAndWritesNoticeOnce) {
    ExpectInFreshProcess([] {
        setenv("SIM_DISABLE_EXCEPTION_REPORT", "", 1); // any value counts, even an empty one
        StderrCapture capture;
        ZORSimUttAssert::ReportException("first");
        EXPECT_THROW(ZORSimExcNoSuchFile("missing.sim").Propagate(), ZORSimExcNoSuchFile);
        const std::string out = capture.Finish();
        EXPECT_EQ(std::string(kNotice) + "!!! EXCEPTION:\n!!!   first\n" +
                      "!!! EXCEPTION:\n!!!   No such file: missing.sim\n",
                  out);
    });
}

TEST(ReportBanner, ReportModeIsDecidedOnFirstReportOnly) {
    ExpectInFreshProcess([] {
        unsetenv("SIM_DISABLE_EXCEPTION_REPORT");
        StderrCapture capture;
        ZORSimUttAssert::ReportException("before");
        setenv("SIM_DISABLE_EXCEPTION_REPORT", "1", 1);
        ZORSimUttAssert::ReportException("after");
        const std::string out = capture.Finish();
        EXPECT_EQ(out.find(kNotice), std::string::npos) << out;
        const std::size_t after = out.find("!!! EXCEPTION:\n!!!   after\n!!! TRACEBACK:\n");
        EXPECT_NE(after, std::string::npos) << out;
    });
    ExpectInFreshProcess([] {
        setenv("SIM_DISABLE_EXCEPTION_REPORT", "1", 1);
        StderrCapture capture;
        ZORSimUttAssert::ReportException("before");
        unsetenv("SIM_DISABLE_EXCEPTION_REPORT");
        ZORSimUttAssert::ReportException("after");
        EXPECT_EQ(std::string(kNotice) + "!!! EXCEPTION:\n!!!   before\n!!! EXCEPTION:\n!!!   after\n",
                  capture.Finish());
    });
}

TEST(ReportBanner, DisabledExceptionReportsPrintNothingButFailuresStillReport) {
    ExpectInFreshProcess([] {
        unsetenv("SIM_DISABLE_EXCEPTION_REPORT");
        ZORSimUttAssertDisableExcReport();
        StderrCapture capture;
        ZORSimUttAssert::ReportException("silenced");
        EXPECT_THROW(ZORSimExcIOBounds(1, 2, 3).Propagate(), ZORSimExcIOBounds);
        EXPECT_EQ("", capture.Finish());

        StderrCapture assertion;
        EXPECT_THROW(ZORSimUttAssert::ReportAssertionFailure("broken invariant"), ZORBasAssertException);
        const std::string logic = assertion.Finish();
        EXPECT_TRUE(StartsWith(logic, std::string(kLogicBanner) + "!!! TRACEBACK:\n!!!   ")) << logic;

        StderrCapture validation;
        EXPECT_THROW(ZORSimUttAssert::ReportValidationFailure("bad argument"), ZORSimExcValidationFailure);
        const std::string client = validation.Finish();
        EXPECT_TRUE(StartsWith(client, std::string(kClientBanner) + "!!! TRACEBACK:\n!!!   ")) << client;
    });
}

TEST(ReportBanner, FailureReportsTraceEvenWhenTheVariableIsSet) {
    ExpectInFreshProcess([] {
        setenv("SIM_DISABLE_EXCEPTION_REPORT", "1", 1);
        StderrCapture capture;
        EXPECT_THROW(ZORSimUttAssert::ReportAssertionFailure("broken invariant"), ZORBasAssertException);
        const std::string out = capture.Finish();
        EXPECT_TRUE(StartsWith(out, std::string(kLogicBanner) + "!!! TRACEBACK:\n!!!   ")) << out;
        EXPECT_EQ(out.find(kNotice), std::string::npos) << out; // the notice belongs to exception reports
    });
}
