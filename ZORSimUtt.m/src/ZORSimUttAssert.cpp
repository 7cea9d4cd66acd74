// Assertion, validation and exception reports on standard error.
//
// Each report is a banner and, by default, a symbolic stack trace of the
// calling thread, so that a failure deep in a long run can be traced from its
// log. The trace printer is portable; capture and symbol look-up sit behind
// the OS seam.
#include "ZORSimUttAssert.h"

#include "ZORBasAti.h"
#include "ZORBasException.h"
#include "ZORSimExcStorage.h"
#include "ZORSimUttAssertInternal.h"
#include "ZORSimUttOS.h"

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <mutex>
#include <stdexcept>
#include <string>
#include <unordered_map>

namespace {

// ---- report switches -------------------------------------------------------

std::atomic<bool> g_reportsDisabled{false};

enum ReportMode : int { kUndecided, kBannerOnly, kBannerAndTrace };
std::atomic<int> g_reportMode{kUndecided};
std::mutex g_reportModeMutex;

// Decided on the first exception report and kept for the life of the process.
// The lock only makes sure that the notice is written once.
int DecideReportMode() {
    int mode = g_reportMode.load(std::memory_order_acquire);
    if (mode != kUndecided)
        return mode;
    std::lock_guard<std::mutex> lock(g_reportModeMutex);
    mode = g_reportMode.load(std::memory_order_relaxed);
    if (mode == kUndecided) {
        if (ZORBasGetEnv("SIM_DISABLE_EXCEPTION_REPORT") != nullptr) {
            std::fputs("!!! - SIM Exception throw reports are disabled.\n", stderr);
            mode = kBannerOnly;
        } else {
            mode = kBannerAndTrace;
        }
        g_reportMode.store(mode, std::memory_order_release);
    }
    return mode;
}

const char* Printable(const char* text) {
    return text != nullptr ? text : "(null)";
}

// ---- stack-trace printer -----------------------------------------------------

constexpr int kMaxFrames = 1024;
// Distinct call sites are few, but a bound keeps a pathological run from
// growing the cache without end.
constexpr std::size_t kMaxCachedFrames = 1u << 16;

enum class SymbolState { kNotTried, kReady, kFailed };

// A printed frame line, ready to be written again.
struct FrameLine {
    std::string text;
    bool isMain = false;
};

// The platform's symbol functions and the frame cache are not thread-safe:
// concurrent reports take turns here.
struct SymbolHandler {
    std::mutex mutex;
    SymbolState state = SymbolState::kNotTried;
    std::unordered_map<void*, FrameLine> frames;
};

SymbolHandler& Symbols() {
    static SymbolHandler* handler = new SymbolHandler; // outlives static destruction
    return *handler;
}

FrameLine FormatFrame(void* address) {
    const ZORSimUttOS::SymbolInfo info = ZORSimUttOS::Symbolize(address);
    FrameLine frame;
    frame.text = "!!!   ";
    frame.text += info.hasFunction ? info.function : std::string("<stack frame not available>");
    if (info.hasLine) {
        frame.text += " in ";
        frame.text += info.file;
        frame.text += ':';
        frame.text += std::to_string(info.line);
    }
    frame.text += '\n';
    frame.isMain = info.hasFunction && info.function == "main";
    return frame;
}

// Writes the trace of the calling thread, leaving out the `skip` innermost
// frames (this printer counts as one). Frames outside the program's main
// function are not shown.
ZORSIM_NOINLINE void PrintStackTrace(int skip) {
    SymbolHandler& symbols = Symbols();
    std::lock_guard<std::mutex> lock(symbols.mutex);

    if (symbols.state == SymbolState::kNotTried) {
        // Marked before the attempt: a failed set-up is not tried again.
        symbols.state = SymbolState::kFailed;
        if (!ZORSimUttOS::InitializeSymbols())
            throw std::logic_error("Can't initialize symbol handler");
        symbols.state = SymbolState::kReady;
    }

    void* addresses[kMaxFrames];
    const int count = ZORSimUttOS::CaptureStack(addresses, kMaxFrames, skip);

    // One write for the whole trace: stderr is unbuffered.
    std::string out = "!!! TRACEBACK:\n";
    if (count <= 0)
        out += "!!! TRACEBACK NOT AVAILABLE.\n";
    for (int i = 0; i < count; ++i) {
        if (symbols.state != SymbolState::kReady) {
            out += "!!!   <stack frame not available>\n";
            continue;
        }
        auto cached = symbols.frames.find(addresses[i]);
        if (cached == symbols.frames.end()) {
            if (symbols.frames.size() >= kMaxCachedFrames)
                symbols.frames.clear();
            cached = symbols.frames.emplace(addresses[i], FormatFrame(addresses[i])).first;
        }
        out += cached->second.text;
        if (cached->second.isMain)
            break;
    }
    std::fwrite(out.data(), 1, out.size(), stderr);
    std::fflush(stderr);
}

// One report at a time: a C runtime may cut a long write to standard error
// into pieces (Windows' text mode does), and another thread's report must
// not land between them. Recursive, as a report may raise another.
std::recursive_mutex& ReportMutex() {
    static std::recursive_mutex mutex;
    return mutex;
}

} // namespace

void ZORSimUttAssert::ReportAssertionFailure(const char* text) {
    {
        std::lock_guard<std::recursive_mutex> whole(ReportMutex());
        std::fprintf(stderr, "!!! THE API HAS DETECTED AN INTERNAL LOGIC ERROR.\n!!! %s\n", Printable(text));
        PrintStackTrace(2);
    }
    ZORBasAssertException(Printable(text)).Throw("ZORSimUttAssert", 213);
}

void ZORSimUttAssert::ReportValidationFailure(const char* text) {
    {
        std::lock_guard<std::recursive_mutex> whole(ReportMutex());
        std::fprintf(stderr,
                     "!!! THE API HAS DETECTED AN ARGUMENT ERROR OR INCORRECT USE BY THE CLIENT.\n!!! %s\n",
                     Printable(text));
        PrintStackTrace(2);
    }
    // The caller's text was only for the log; the exception carries none.
    ZORSimExcValidationFailure().Throw("ZORSimUttAssert", 220);
}

void ZORSimUttAssert::ReportException(const char* text) {
    if (g_reportsDisabled.load(std::memory_order_relaxed))
        return;
    const int mode = DecideReportMode();
    std::lock_guard<std::recursive_mutex> whole(ReportMutex());
    // The variable only silences the trace; the banner is always written.
    std::fprintf(stderr, "!!! EXCEPTION:\n!!!   %s\n", Printable(text));
    if (mode == kBannerAndTrace)
        PrintStackTrace(2);
    // Keeps this frame on the stack (no tail call), so skipping two frames
    // in the printer lands on our caller.
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

bool ZORSimUttAssert::WillReportException() {
    return !g_reportsDisabled.load(std::memory_order_relaxed);
}

void ZORSimUttAssertDisableExcReport() {
    g_reportsDisabled.store(true, std::memory_order_relaxed);
}

namespace ZORSimUttAssertTesting {

void ResetReportState() {
    std::lock_guard<std::mutex> lock(g_reportModeMutex);
    g_reportsDisabled.store(false, std::memory_order_relaxed);
    g_reportMode.store(kUndecided, std::memory_order_release);
}

void ResetSymbolHandler() {
    SymbolHandler& symbols = Symbols();
    std::lock_guard<std::mutex> lock(symbols.mutex);
    symbols.state = SymbolState::kNotTried;
    symbols.frames.clear();
}

} // namespace ZORSimUttAssertTesting
