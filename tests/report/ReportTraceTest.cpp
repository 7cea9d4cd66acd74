// The symbolic stack trace: frames start at the hook's caller, name the
// function, file and line of each call (also in a library loaded later), stop
// at main, and stay the same when they come from the frame cache. Each
// scenario runs in a fresh process.
#include "ZORSimTestLibrary.h"
#include "ZORSimTestSupport.h"

#include "ZORSimExceptions.h"
#include "ZORSimUttAssert.h"

#include <thread>

using namespace zorsim_test;

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
        if (inTrace && StartsWith(line, "!!!   "))
            traces.back().push_back(line);
        else if ((inTrace = line == "!!! TRACEBACK:"))
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
            if (c.callerAt == 1) {
                EXPECT_TRUE(StartsWith(frames[0], "!!!   ZORSimExcIOBounds::Propagate() const")) << frames[0];
            }
            EXPECT_EQ("!!!   zorsim_report_test::" + std::string(c.function) + "() in " + __FILE__ + ":" +
                          std::to_string(g_callLine),
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
        EXPECT_EQ(std::string("!!!   zorsim_report_plugin_raise in ") + file + ":" + std::to_string(line),
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
