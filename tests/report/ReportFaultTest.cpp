// Failures below the trace printer, injected through the OS seam: symbol
// set-up that cannot be done (tried once only) and a stack that cannot be
// captured; and the fault registry itself.
#include "ReportTestSupport.h"

#include "ZORSimExceptions.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttOS.h"

#include <cerrno>
#include <cstdlib>
#include <stdexcept>

using namespace zorsim_report_test;
using ZORSimUttOSFault::Call;

TEST(ReportFault, SymbolSetUpFailureThrowsOnceThenFramesAreUnavailable) {
    ExpectInFreshProcess([] {
        unsetenv("SIM_DISABLE_EXCEPTION_REPORT");
        ZORSimUttOSFault::Arm(Call::InitializeSymbols, ENOMEM);
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

TEST(ReportFault, SymbolSetUpFailureEscapesTheFailureHooks) {
    ExpectInFreshProcess([] {
        ZORSimUttOSFault::Arm(Call::InitializeSymbols, EIO);
        StderrCapture capture;
        EXPECT_THROW(ZORSimUttAssert::ReportAssertionFailure("invariant"), std::logic_error);
        EXPECT_EQ("!!! THE API HAS DETECTED AN INTERNAL LOGIC ERROR.\n!!! invariant\n", capture.Finish());
    });
}

TEST(ReportFault, UncapturedStackIsReportedAsNotAvailable) {
    ExpectInFreshProcess([] {
        unsetenv("SIM_DISABLE_EXCEPTION_REPORT");
        ZORSimUttOSFault::Arm(Call::CaptureStack, EFAULT);
        StderrCapture capture;
        ZORSimUttAssert::ReportException("no stack");
        EXPECT_EQ("!!! EXCEPTION:\n!!!   no stack\n!!! TRACEBACK:\n!!! TRACEBACK NOT AVAILABLE.\n",
                  capture.Finish());

        StderrCapture next; // only the armed call failed
        ZORSimUttAssert::ReportException("stack");
        const std::string out = next.Finish();
        EXPECT_TRUE(StartsWith(out, "!!! EXCEPTION:\n!!!   stack\n!!! TRACEBACK:\n!!!   ")) << out;
        EXPECT_EQ(out.find("NOT AVAILABLE"), std::string::npos) << out;
    });
}

TEST(ReportFault, ArmedFailuresCountDownAndCanBeReplacedOrCleared) {
    ExpectInFreshProcess([] {
        unsetenv("SIM_DISABLE_EXCEPTION_REPORT");
        // Which of the next reports lost their stack, as a string of 'x' (lost) and '.' (traced).
        const auto pattern = [](int reports) {
            std::string result;
            for (int i = 0; i < reports; ++i) {
                StderrCapture capture;
                ZORSimUttAssert::ReportException("probe");
                result +=
                    capture.Finish().find("!!! TRACEBACK NOT AVAILABLE.") != std::string::npos ? 'x' : '.';
            }
            return result;
        };
        ZORSimUttOSFault::Arm(Call::CaptureStack, EFAULT, 2);
        EXPECT_EQ("xx.", pattern(3));
        ZORSimUttOSFault::Arm(Call::CaptureStack, EFAULT, 3);
        ZORSimUttOSFault::Arm(Call::CaptureStack, EFAULT, 1); // re-arming replaces the count
        EXPECT_EQ("x.", pattern(2));
        ZORSimUttOSFault::Arm(Call::CaptureStack, EFAULT, 5);
        ZORSimUttOSFault::DisarmAll();
        EXPECT_EQ("..", pattern(2));
        ZORSimUttOSFault::Arm(Call::InitializeSymbols, EIO); // another call's arm leaves capture alone
        ZORSimUttOSFault::DisarmAll();
        EXPECT_EQ(".", pattern(1));
    });
}
