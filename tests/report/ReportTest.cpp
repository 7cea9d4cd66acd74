// Failure reports: the hooks' banners and what they throw, the report mode
// and switches, the symbolic stack trace, and failures below the trace
// printer injected through the OS seam. Each scenario runs in a fresh process.
#include "ZORSimTestLibrary.h"
#include "ZORSimTestSupport.h"

#include "ZORSimExceptions.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttOS.h"

#include <stdexcept>
#include <thread>
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
        Fault::Arm(OS::Service::CaptureStack, OS::Error::BadAddress, 3);
        Fault::Arm(OS::Service::CaptureStack, OS::Error::BadAddress, 2, 1); // replaces; one passes first
        EXPECT_EQ(".xx.", pattern(4));
    });
}

namespace zorsim_report_test {

int g_callLine = 0;
volatile int g_sink = 0;

// g_sink is touched after each call so that none is a tail call: the
// caller's frame must stay on the stack.
ZORSIM_NOINLINE void ReportFromHere() {
    g_callLine = __LINE__ + 1;
    ZORSimUttAssert::ReportException("direct");
    g_sink = g_sink + 1;
}

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

TEST(ReportTrace, FramesNameCallerFileAndLineAndStopAtMain) {
    ExpectInFreshProcess([] {
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", nullptr);
        using namespace zorsim_report_test;
        struct Case {
            const char* function;
            void (*call)();
            std::size_t callerAt; // Propagate shows itself above its caller
        };
        for (const Case& c :
             {Case{"ReportFromHere", ReportFromHere, 0}, Case{"AssertFromHere", AssertFromHere, 0},
              Case{"ValidateFromHere", ValidateFromHere, 0},
              Case{"PropagateFromHere", PropagateFromHere, 1}}) {
            SCOPED_TRACE(c.function);
            std::string out[2]; // the second trace comes from the frame cache
            for (std::string& text : out) {
                StderrCapture capture;
                try {
                    c.call();
                } catch (const ZORBasException&) {
                }
                text = capture.Finish();
            }
            EXPECT_EQ(out[0], out[1]);
            const std::vector<std::string> frames = Frames(out[0]);
            ASSERT_GT(frames.size(), c.callerAt) << out[0];
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
        // The threads run the same code: unbroken traces are all alike.
        const auto traces = Traces(capture.Finish());
        ASSERT_EQ(100u, traces.size());
        EXPECT_GE(traces[0].size(), 2u);
        for (const auto& trace : traces)
            EXPECT_EQ(traces[0], trace);
    });
}
