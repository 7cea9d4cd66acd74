// Failures below the trace printer, injected through the OS seam: symbol
// set-up that cannot be done (tried once only), a stack that cannot be
// captured, and the fault registry itself. Each runs in a fresh process.
#include "ZORSimTestSupport.h"

#include "ZORSimExceptions.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttOS.h"

#include <cerrno>
#include <stdexcept>

using namespace zorsim_test;

TEST(ReportFault, SymbolSetUpFailureEscapesTheHookOnceThenFramesAreUnavailable) {
    struct Case {
        const char* hook;
        void (*call)();
        const char* banner;
    };
    const Case cases[] = {
        {"exception report", [] { ZORSimExcNoSuchFile("a.sim").Propagate(); },
         "!!! EXCEPTION:\n!!!   No such file: a.sim\n"},
        {"assertion failure", [] { ZORSimUttAssert::ReportAssertionFailure("invariant"); },
         "!!! THE API HAS DETECTED AN INTERNAL LOGIC ERROR.\n!!! invariant\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.hook);
        ExpectInFreshProcess([&c] {
            SetEnv("SIM_DISABLE_EXCEPTION_REPORT", nullptr);
            ZORSimUttOSFault::Arm("InitializeSymbols", ENOMEM);
            StderrCapture first;
            try {
                c.call();
                ADD_FAILURE() << "no exception";
            } catch (const std::logic_error& error) {
                EXPECT_STREQ("Can't initialize symbol handler", error.what());
            }
            EXPECT_EQ(c.banner, first.Finish());

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
                if (lost)
                    EXPECT_EQ("!!! EXCEPTION:\n!!!   probe\n!!! TRACEBACK:\n!!! TRACEBACK NOT AVAILABLE.\n",
                              out);
                else
                    EXPECT_TRUE(StartsWith(out, "!!! EXCEPTION:\n!!!   probe\n!!! TRACEBACK:\n!!!   "))
                        << out;
                result += lost ? 'x' : '.';
            }
            return result;
        };
        ZORSimUttOSFault::Arm("CaptureStack", EFAULT);
        EXPECT_EQ("x.", pattern(2));
        ZORSimUttOSFault::Arm("CaptureStack", EFAULT, 2);
        EXPECT_EQ("xx.", pattern(3));
        ZORSimUttOSFault::Arm("CaptureStack", EFAULT, 3);
        ZORSimUttOSFault::Arm("CaptureStack", EFAULT, 1); // re-arming replaces the count
        EXPECT_EQ("x.", pattern(2));
        ZORSimUttOSFault::Arm("CaptureStack", EFAULT, 2, 1); // one call passes first
        EXPECT_EQ(".xx.", pattern(4));
        ZORSimUttOSFault::Arm("CaptureStack", EFAULT, 5);
        ZORSimUttOSFault::DisarmAll();
        EXPECT_EQ("..", pattern(2));
        ZORSimUttOSFault::Arm("InitializeSymbols", EIO); // another call's arm leaves capture alone
        ZORSimUttOSFault::DisarmAll();
        EXPECT_EQ(".", pattern(1));
    });
}
