// Failure reports: the hooks' banners and what they throw, the report mode
// and switches, the symbolic stack trace, and failures below the trace
// printer injected through the OS seam. Each scenario runs in a fresh process.
#include "ZORSimTestLibrary.h"
#include "ZORSimTestSupport.h"

#include "ZORSimExceptions.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttOS.h"

#include <regex>
#include <stdexcept>
#include <thread>

using namespace zorsim_test;
namespace OS = ZORSimUttOS;
namespace Fault = ZORSimUttOSFault;

namespace {

// The frame lines of each trace in `out`.
std::vector<std::vector<std::string>> Traces(const std::string& out) {
    std::vector<std::vector<std::string>> traces;
    bool inTrace = false;
    for (const std::string& line : Lines(out)) {
        if (inTrace && StartsWith(line, "!!!   ")) {
            std::string frame = line; // without the "()" that some symbolizers add
            for (std::size_t at; (at = frame.find("()")) != std::string::npos;)
                frame.erase(at, 2);
            // and with its file in one form, whichever the symbolizer gives
            const std::size_t in = frame.find(" in "), colon = frame.rfind(':');
            if (in != std::string::npos && colon != std::string::npos && colon > in + 4)
                frame.replace(in + 4, colon - in - 4, GenericPath(frame.substr(in + 4, colon - in - 4)));
            traces.back().push_back(frame);
        } else if ((inTrace = line == "!!! TRACEBACK:"))
            traces.emplace_back();
    }
    return traces;
}

// The first trace (a validation failure is followed by the report of the
// exception it raises) ends at main.
std::vector<std::string> Frames(const std::string& out) {
    const auto traces = Traces(out);
    if (traces.empty() || traces[0].empty())
        return {};
    const std::string& last = traces[0].back();
    EXPECT_TRUE(last == "!!!   main" || StartsWith(last, "!!!   main in ")) << last;
    return traces[0];
}

} // namespace

// The variable, read at the first report, drops the traces of exception
// reports for good; the switch silences them; the failure hooks write their
// banner and trace whatever either says, and throw.
TEST(ReportBanner, VariableDropsTracesForTheProcessAndSwitchSilencesExceptionReportsOnly) {
    ExpectInFreshProcess([] {
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", "0"); // any value counts, even "0"
        StderrCapture capture;
        ZORSimUttAssert::ReportException("first");
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", nullptr); // too late: decided on the first report
        EXPECT_THROW(ZORSimExcNoSuchFile("missing.sim").Propagate(), ZORSimExcNoSuchFile);
        EXPECT_EQ("!!! - SIM Exception throw reports are disabled.\n"
                  "!!! EXCEPTION:\n!!!   first\n!!! EXCEPTION:\n!!!   No such file: missing.sim\n",
                  capture.Finish());

        ZORSimUttAssertDisableExcReport();
        StderrCapture silenced;
        ZORSimUttAssert::ReportException("silenced");
        EXPECT_THROW(ZORSimUttAssert::ReportAssertionFailure("broken invariant"), ZORBasAssertException);
        EXPECT_THROW(ZORSimUttAssert::ReportValidationFailure("bad argument"), ZORSimExcValidationFailure);
        const std::string out = silenced.Finish();
        EXPECT_TRUE(StartsWith(out, "!!! THE API HAS")) << "silenced: " << out;
        for (const char* banner : {"AN INTERNAL LOGIC ERROR.\n!!! broken invariant\n",
                                   "AN ARGUMENT ERROR OR INCORRECT USE BY THE CLIENT.\n!!! bad argument\n"})
            EXPECT_NE(out.find("!!! THE API HAS DETECTED " + std::string(banner) + "!!! TRACEBACK:\n!!!   "),
                      std::string::npos)
                << out;
    });
}

TEST(ReportFault, SymbolSetUpFailsOnceThenFramesAreUnavailableAndStacksLostAsOftenAsArmed) {
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
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", "1"); // too late: the first report chose traces
        // Set-up would succeed now, but it is not tried again: a traced
        // report ('.') has every frame unavailable; 'x' lost its stack.
        Fault::Arm(OS::Service::CaptureStack, OS::Error::BadAddress, 3);
        Fault::Arm(OS::Service::CaptureStack, OS::Error::BadAddress, 2, 1); // replaces; one passes first
        const std::string banner = "!!! EXCEPTION:\n!!!   probe\n!!! TRACEBACK:\n";
        const std::regex lost(banner + "!!! TRACEBACK NOT AVAILABLE\\.\n"),
            unavailable(banner + "(!!!   <stack frame not available>\n)+");
        std::string pattern, outs;
        for (int i = 0; i < 4; ++i) {
            StderrCapture capture;
            ZORSimUttAssert::ReportException("probe");
            const std::string out = capture.Finish();
            pattern += std::regex_match(out, lost) ? 'x' : std::regex_match(out, unavailable) ? '.' : '?';
            outs += out;
        }
        EXPECT_EQ(".xx.", pattern) << outs;
    });
}

namespace zorsim_report_test {

int g_callLine = 0;
volatile int g_sink = 0;

// g_sink is touched after each call so that none is a tail call: the
// caller's frame must stay on the stack.
ZORSIM_NOINLINE void AssertFromHere() {
    g_callLine = __LINE__ + 1;
    ZORSimUttAssert::ReportAssertionFailure("invariant");
}

ZORSIM_NOINLINE void ValidateFromHere() {
    g_callLine = __LINE__ + 1;
    ZORSimUttAssert::ReportValidationFailure("argument");
}

ZORSIM_NOINLINE void PropagateFromHere() {
    g_callLine = __LINE__ + 1;
    ZORSimExcIOBounds(1, 2, 3).Propagate();
    g_sink = g_sink + 1;
}

} // namespace zorsim_report_test

TEST(ReportTrace, HooksThrowAndTheirFramesNameCallerFileAndLineAndStopAtMain) {
    ExpectInFreshProcess([] {
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", nullptr);
        using namespace zorsim_report_test;
        struct Case {
            const char* function;
            void (*call)();
            std::size_t callerAt; // Propagate shows itself above its caller
            std::string thrown;   // the developer's report: code, text and the source a hook records
        };
        for (const Case& c :
             {Case{"AssertFromHere", AssertFromHere, 0, "[1] invariant (raised in ZORSimUttAssert:213)"},
              Case{"ValidateFromHere", ValidateFromHere, 0, // without the caller's text
                   "[1032] Validation failure - inconsistent state has been reached. (raised in "
                   "ZORSimUttAssert:220)"},
              Case{"PropagateFromHere", PropagateFromHere, 1,
                   "[1010] I/O out of bounds - start: 1, end: 2, limit: 3"}}) {
            SCOPED_TRACE(c.function);
            StderrCapture capture;
            try {
                c.call();
                ADD_FAILURE() << "no exception";
            } catch (const ZORBasException& error) {
                EXPECT_EQ(c.thrown, error.DeveloperReport(ZORBasStringMode(false)).str());
            }
            const std::string out = capture.Finish();
            const std::vector<std::string> frames = Frames(out);
            ASSERT_GT(frames.size(), c.callerAt) << out;
            EXPECT_EQ("!!!   zorsim_report_test::" + std::string(c.function) + " in " +
                          GenericPath(__FILE__) + ":" + std::to_string(g_callLine),
                      frames[c.callerAt]);
        }

        // Code mapped after symbol look-up was set up is found too.
        const LoadedLibrary plugin(ZORSIM_REPORT_PLUGIN);
        ASSERT_TRUE(plugin.IsLoaded()) << plugin.Error();
        const auto raise = plugin.Find<void(const char**, int*)>("zorsim_report_plugin_raise");
        ASSERT_NE(nullptr, raise);
        const char* file = nullptr;
        int line = 0;
        StderrCapture capture;
        EXPECT_THROW(raise(&file, &line), ZORSimExcNoSuchForm);
        const std::vector<std::string> frames = Frames(capture.Finish());
        ASSERT_GE(frames.size(), 2u);
        EXPECT_EQ("!!!   zorsim_report_plugin_raise in " + GenericPath(file) + ":" + std::to_string(line),
                  frames[1]);
    });
}

TEST(ReportTrace, ConcurrentReportsEachPrintAWholeTrace) {
    ExpectInFreshProcess([] {
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", nullptr);
        StderrCapture capture;
        std::thread threads[4];
        for (std::thread& thread : threads)
            thread = std::thread([] {
                for (int i = 0; i < 25; ++i)
                    EXPECT_THROW(ZORSimExcIOBounds(1, 2, 3).Propagate(), ZORSimExcIOBounds);
            });
        for (std::thread& thread : threads)
            thread.join();
        // The threads run the same code: unbroken traces are all alike, the
        // first printed from fresh look-ups, the others from the frame cache.
        const auto traces = Traces(capture.Finish());
        ASSERT_EQ(100u, traces.size());
        EXPECT_GE(traces[0].size(), 2u);
        for (const auto& trace : traces)
            EXPECT_EQ(traces[0], trace);
    });
}
