// The banners of the three report hooks and what the failure hooks throw,
// the report mode read once from SIM_DISABLE_EXCEPTION_REPORT, the switch
// that silences exception reports, and failures below the trace printer
// injected through the OS seam. Each scenario runs in a fresh process.
#include "ZORSimTestSupport.h"

#include "ZORSimExceptions.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttOS.h"

#include <stdexcept>
#include <typeinfo>

using namespace zorsim_test;
namespace OS = ZORSimUttOS;
namespace Fault = ZORSimUttOSFault;

namespace {

const std::string kNotice = "!!! - SIM Exception throw reports are disabled.\n";
const std::string kTrace = "!!! TRACEBACK:\n!!!   ";

// The failure hooks write their banner and a trace whatever the report
// switches say, then throw with the raising source and line recorded (the
// validation failure without the caller's text).
void ExpectFailureReportsAndThrows() {
    const struct {
        void (*raise)();
        std::string banner, text;
        const std::type_info& type;
        int line;
    } failures[] = {
        {[] { ZORSimUttAssert::ReportAssertionFailure("broken invariant"); },
         "!!! THE API HAS DETECTED AN INTERNAL LOGIC ERROR.\n!!! broken invariant\n", "broken invariant",
         typeid(ZORBasAssertException), 213},
        {[] { ZORSimUttAssert::ReportValidationFailure("bad argument"); },
         "!!! THE API HAS DETECTED AN ARGUMENT ERROR OR INCORRECT USE BY THE CLIENT.\n!!! bad argument\n",
         "Validation failure - inconsistent state has been reached.", typeid(ZORSimExcValidationFailure),
         220}};
    for (const auto& f : failures) {
        StderrCapture capture;
        try {
            f.raise();
            ADD_FAILURE() << "no exception";
        } catch (const ZORBasException& error) {
            EXPECT_EQ(typeid(error), f.type);
            EXPECT_EQ(f.text, error.AsString(ZORBasStringMode(false)).str());
            EXPECT_STREQ("ZORSimUttAssert", error.ThrowFile());
            EXPECT_EQ(f.line, error.ThrowLine());
        }
        const std::string out = capture.Finish();
        EXPECT_TRUE(StartsWith(out, f.banner + kTrace)) << out;
        EXPECT_EQ(out.find(kNotice), std::string::npos) << out; // the notice belongs to exception reports
    }
}

} // namespace

TEST(ReportBanner, ExceptionReportIsBannerThenTraceTheModeIsKeptAndTheSwitchSilencesIt) {
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

        ZORSimUttAssertDisableExcReport(); // silences exception reports only
        StderrCapture silenced;
        ZORSimUttAssert::ReportException("silenced");
        EXPECT_THROW(ZORSimExcIOBounds(1, 2, 3).Propagate(), ZORSimExcIOBounds);
        EXPECT_EQ("", silenced.Finish());
        ExpectFailureReportsAndThrows();
    });
}

TEST(ReportBanner, DisablingVariableDropsTracesOnlyAndWritesNoticeOnce) {
    ExpectInFreshProcess([] {
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", "0"); // any value counts, even "0"
        StderrCapture capture;
        ZORSimUttAssert::ReportException("first");
        EXPECT_THROW(ZORSimExcNoSuchFile("missing.sim").Propagate(), ZORSimExcNoSuchFile);
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", nullptr);
        ZORSimUttAssert::ReportException("after");
        EXPECT_EQ(kNotice + "!!! EXCEPTION:\n!!!   first\n!!! EXCEPTION:\n!!!   No such file: missing.sim\n" +
                      "!!! EXCEPTION:\n!!!   after\n",
                  capture.Finish());
        ExpectFailureReportsAndThrows();
    });
}

// Symbol set-up that cannot be done is tried once only.
TEST(ReportFault, SymbolSetUpFailureEscapesTheHookOnceThenFramesAreUnavailable) {
    ExpectInFreshProcess([] {
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", nullptr);
        Fault::Arm(OS::Service::InitializeSymbols, OS::Error::OutOfMemory);
        StderrCapture first;
        try {
            ZORSimExcNoSuchFile("a.sim").Propagate();
            ADD_FAILURE() << "no exception";
        } catch (const std::logic_error& error) {
            EXPECT_STREQ("Can't initialize symbol handler", error.what());
        }
        EXPECT_EQ("!!! EXCEPTION:\n!!!   No such file: a.sim\n", first.Finish());
        // Set-up would succeed now, but it is not tried again.
        StderrCapture later;
        ZORSimUttAssert::ReportException("again");
        const std::vector<std::string> lines = Lines(later.Finish());
        ASSERT_GE(lines.size(), 4u);
        EXPECT_EQ("!!! TRACEBACK:", lines[2]);
        for (std::size_t i = 3; i < lines.size(); ++i)
            EXPECT_EQ("!!!   <stack frame not available>", lines[i]);
    });
}

TEST(ReportFault, UncapturedStacksAreNotAvailableAsOftenAsArmed) {
    ExpectInFreshProcess([] {
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", nullptr);
        // Which of the next reports lost their stack: 'x' lost, '.' traced.
        const auto pattern = [](int reports) {
            std::string result;
            for (int i = 0; i < reports; ++i) {
                StderrCapture capture;
                ZORSimUttAssert::ReportException("probe");
                const std::string out = capture.Finish();
                const bool lost = out.find("NOT AVAILABLE") != std::string::npos;
                EXPECT_TRUE(
                    lost
                        ? out == "!!! EXCEPTION:\n!!!   probe\n!!! TRACEBACK:\n!!! TRACEBACK NOT AVAILABLE.\n"
                        : StartsWith(out, "!!! EXCEPTION:\n!!!   probe\n!!! TRACEBACK:\n!!!   "))
                    << out;
                result += lost ? 'x' : '.';
            }
            return result;
        };
        const auto arm = [](int times, int after = 0) {
            Fault::Arm(OS::Service::CaptureStack, OS::Error::BadAddress, times, after);
        };
        arm(2);
        EXPECT_EQ("xx.", pattern(3));
        arm(3);
        arm(2, 1); // arming again replaces; one call passes first
        EXPECT_EQ(".xx.", pattern(4));
        arm(5);
        Fault::DisarmAll();
        EXPECT_EQ("..", pattern(2));
    });
}
