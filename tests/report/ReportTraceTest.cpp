// The symbolic stack trace: frames start at the hook's caller, name the
// function, file and line of each call (also in a library loaded later), stop
// at main, and stay the same when they come from the frame cache. Each
// scenario runs in a fresh process.
#include "ZORSimTestSupport.h"

#include "ZORSimExceptions.h"
#include "ZORSimUttAssert.h"

#include <atomic>
#include <dlfcn.h>
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

// The first trace. (A validation failure is followed by the report of the
// exception it raises, with a trace of its own.)
std::vector<std::string> Frames(const std::string& out) {
    const auto traces = Traces(out);
    return traces.empty() ? std::vector<std::string>() : traces[0];
}

void ExpectEndsAtMain(const std::vector<std::string>& frames) {
    ASSERT_FALSE(frames.empty());
    EXPECT_TRUE(frames.back() == "!!!   main" || StartsWith(frames.back(), "!!!   main in "))
        << frames.back();
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
            ExpectEndsAtMain(frames);
        }

        // Code mapped after symbol look-up was set up is found too.
        void* plugin = dlopen(ZORSIM_REPORT_PLUGIN, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(nullptr, plugin) << dlerror();
        using Raise = void (*)(const char**, int*);
        const auto raise = reinterpret_cast<Raise>(dlsym(plugin, "zorsim_report_plugin_raise"));
        ASSERT_NE(nullptr, raise);
        const char* file = nullptr;
        int line = 0;
        StderrCapture capture;
        EXPECT_THROW(raise(&file, &line), ZORSimExcNoSuchForm);
        const std::vector<std::string> frames = Frames(capture.Finish());
        ASSERT_GE(frames.size(), 2u);
        EXPECT_EQ(std::string("!!!   zorsim_report_plugin_raise in ") + file + ":" + std::to_string(line),
                  frames[1]);
        ExpectEndsAtMain(frames);
    });
}

TEST(ReportTrace, ConcurrentReportsEachPrintAWholeTrace) {
    ExpectInFreshProcess([] {
        SetEnv("SIM_DISABLE_EXCEPTION_REPORT", nullptr);
        constexpr int kThreads = 4;
        constexpr int kReports = 25;
        std::atomic<int> thrown{0};
        StderrCapture capture;
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t)
            threads.emplace_back([&thrown] {
                for (int i = 0; i < kReports; ++i) {
                    try {
                        ZORSimExcIOBounds(1, 2, 3).Propagate();
                    } catch (const ZORSimExcIOBounds&) {
                        ++thrown;
                    }
                }
            });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(kThreads * kReports, thrown.load());
        // The threads run the same code: unbroken traces are all alike.
        const auto traces = Traces(capture.Finish());
        ASSERT_EQ(kThreads * kReports, traces.size());
        EXPECT_GE(traces[0].size(), 2u);
        for (const auto& trace : traces)
            EXPECT_EQ(traces[0], trace);
    });
}
