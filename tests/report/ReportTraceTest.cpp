// The symbolic stack trace: frames start at the hook's caller, name the
// function, file and line of each call, stop at main, and stay the same when
// they come from the frame cache. Each scenario runs in a fresh process.
#include "ReportTestSupport.h"

#include "ZORSimExceptions.h"
#include "ZORSimUttAssert.h"

#include <atomic>
#include <dlfcn.h>
#include <cstdlib>
#include <thread>

using namespace zorsim_report_test;

namespace zorsim_report_test {

int g_callLine = 0;
volatile int g_sink = 0;

ZORSIM_NOINLINE void ReportFromHere() {
    g_callLine = __LINE__ + 1;
    ZORSimUttAssert::ReportException("direct");
    g_sink = g_sink + 1; // no tail call: this frame must stay on the stack
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

// The frame lines of the first trace in `out`. (A validation failure is
// followed by the report of the exception it raises, with a trace of its own.)
std::vector<std::string> Frames(const std::string& out) {
    std::vector<std::string> frames;
    bool inTrace = false;
    for (const std::string& line : Lines(out)) {
        if (!inTrace) {
            inTrace = line == "!!! TRACEBACK:";
            continue;
        }
        if (!StartsWith(line, "!!!   "))
            break;
        frames.push_back(line);
    }
    return frames;
}

std::string FrameOf(const char* function) {
    return std::string("!!!   zorsim_report_test::") + function + "() in " + __FILE__ + ":" +
           std::to_string(g_callLine);
}

bool IsMain(const std::string& frame) {
    return frame == "!!!   main" || StartsWith(frame, "!!!   main in ");
}

void ExpectEndsAtMain(const std::vector<std::string>& frames) {
    ASSERT_FALSE(frames.empty());
    EXPECT_TRUE(IsMain(frames.back())) << frames.back();
    int mains = 0;
    for (const std::string& frame : frames)
        mains += IsMain(frame) ? 1 : 0;
    EXPECT_EQ(1, mains);
}

void ClearEnvironment() {
    unsetenv("SIM_DISABLE_EXCEPTION_REPORT");
}

} // namespace

TEST(ReportTrace, EachHookStartsAtItsCallerAndStopsAtMain) {
    ExpectInFreshProcess([] {
        ClearEnvironment();
        StderrCapture direct;
        ReportFromHere();
        std::vector<std::string> frames = Frames(direct.Finish());
        ASSERT_FALSE(frames.empty());
        EXPECT_EQ(FrameOf("ReportFromHere"), frames[0]);
        ExpectEndsAtMain(frames);

        StderrCapture assertion;
        EXPECT_THROW(AssertFromHere(), ZORBasAssertException);
        frames = Frames(assertion.Finish());
        ASSERT_FALSE(frames.empty());
        EXPECT_EQ(FrameOf("AssertFromHere"), frames[0]);
        ExpectEndsAtMain(frames);

        StderrCapture validation;
        EXPECT_THROW(ValidateFromHere(), ZORSimExcValidationFailure);
        frames = Frames(validation.Finish());
        ASSERT_FALSE(frames.empty());
        EXPECT_EQ(FrameOf("ValidateFromHere"), frames[0]);
        ExpectEndsAtMain(frames);
    });
}

TEST(ReportTrace, PropagateShowsItselfThenItsCallerAndCachedTracesMatch) {
    ExpectInFreshProcess([] {
        ClearEnvironment();
        std::string first;
        std::string second;
        for (std::string* out : {&first, &second}) {
            StderrCapture capture;
            EXPECT_THROW(PropagateFromHere(), ZORSimExcIOBounds);
            *out = capture.Finish();
        }
        const std::vector<std::string> frames = Frames(first);
        ASSERT_GE(frames.size(), 2u) << first;
        EXPECT_TRUE(StartsWith(frames[0], "!!!   ZORSimExcIOBounds::Propagate() const")) << frames[0];
        EXPECT_EQ(FrameOf("PropagateFromHere"), frames[1]);
        ExpectEndsAtMain(frames);
        EXPECT_EQ(first, second); // the second trace comes from the frame cache
    });
}

TEST(ReportTrace, ConcurrentReportsEachPrintAWholeTrace) {
    ExpectInFreshProcess([] {
        ClearEnvironment();
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
        const std::string out = capture.Finish();
        EXPECT_EQ(kThreads * kReports, thrown.load());
        int traces = 0;
        for (const std::string& line : Lines(out))
            traces += line == "!!! TRACEBACK:" ? 1 : 0;
        EXPECT_EQ(kThreads * kReports, traces);
    });
}

TEST(ReportTrace, LibraryLoadedAfterSetUpIsNamed) {
    ExpectInFreshProcess([] {
        ClearEnvironment();
        {
            StderrCapture setUp; // the first trace sets symbol look-up up
            ReportFromHere();
        }
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
