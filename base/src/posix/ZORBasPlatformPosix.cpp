// POSIX side of the base library's operating-system services.
#include "../ZORBasPlatform.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#if defined(__x86_64__)
#    include <cpuid.h>
#    include <x86intrin.h>
#endif
#include <iconv.h>
#include <langinfo.h>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace zorbas_os {

namespace {

// Codesets whose text is passed on as UTF-8. Programs running in the C locale
// still receive UTF-8 arguments from the shell, so ASCII counts as UTF-8.
bool IsUTF8Codeset(const char* codeset) {
    static const char* const kNames[] = {"UTF-8",          "utf8",  "UTF8",    "utf-8",
                                         "ANSI_X3.4-1968", "ASCII", "US-ASCII"};
    for (const char* name : kNames) {
        if (std::strcmp(codeset, name) == 0)
            return true;
    }
    return false;
}

} // namespace

bool LocaleToUTF8(const char* text, std::size_t size, std::string& utf8) {
    const char* codeset = nl_langinfo(CODESET);
    if (codeset == nullptr || *codeset == '\0' || IsUTF8Codeset(codeset)) {
        utf8.assign(text, size);
        return true;
    }
    iconv_t cd = iconv_open("UTF-8", codeset);
    if (cd == reinterpret_cast<iconv_t>(-1)) {
        // A codeset iconv does not know: the bytes are the best guess we have.
        utf8.assign(text, size);
        return true;
    }
    std::string out(size * 4 + 16, '\0');
    std::size_t used = 0;
    char* in = const_cast<char*>(text); // iconv's prototype is not const-correct
    std::size_t inLeft = size;
    bool ok = true;
    bool flushed = false;
    while (!flushed) {
        char* dst = out.data() + used;
        std::size_t outLeft = out.size() - used;
        // Once the input is used up, a call without input flushes the shift
        // state of a stateful codeset.
        const bool flushing = inLeft == 0;
        std::size_t rc =
            flushing ? iconv(cd, nullptr, nullptr, &dst, &outLeft) : iconv(cd, &in, &inLeft, &dst, &outLeft);
        used = out.size() - outLeft;
        if (rc != static_cast<std::size_t>(-1)) {
            flushed = flushing;
        } else if (errno == E2BIG) {
            out.resize(out.size() * 2);
        } else {
            ok = false; // EILSEQ or EINVAL: bytes that are no text in this codeset
            break;
        }
    }
    iconv_close(cd);
    if (!ok)
        return false;
    out.resize(used);
    utf8 = std::move(out);
    return true;
}

double ProcessCpuSeconds() {
    timespec ts{};
    if (clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts) != 0)
        return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

void WaitWhile(std::atomic<int>& word, int value) {
    syscall(SYS_futex, reinterpret_cast<int*>(&word), FUTEX_WAIT_PRIVATE, value, nullptr, nullptr, 0);
}

void WakeOne(std::atomic<int>& word) {
    syscall(SYS_futex, reinterpret_cast<int*>(&word), FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

const char* GetEnv(const char* name) {
    return std::getenv(name);
}

std::FILE* OpenFile(const ZORString& name, const char* mode) {
    return std::fopen(name.c_str(), mode);
}

std::string SystemErrorText(int code) {
    char buffer[256];
    // The GNU strerror_r returns its text, which need not be in the buffer.
    return std::string(strerror_r(code, buffer, sizeof buffer));
}

namespace {

// An invariant counter runs at one rate whatever the core, its frequency or
// sleep state; without one, ticks are the monotonic clock's nanoseconds.
bool HasInvariantTsc() {
#if defined(__x86_64__)
    unsigned int eax = 0, ebx = 0, ecx = 0, edx = 0;
    __cpuid(0x80000000u, eax, ebx, ecx, edx);
    if (eax < 0x80000007u)
        return false;
    __cpuid(0x80000007u, eax, ebx, ecx, edx);
    return (edx & (1u << 8)) != 0;
#else
    return false;
#endif
}
const bool g_tsc = HasInvariantTsc();

unsigned long long MonotonicNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<unsigned long long>(now.tv_sec) * 1000000000ull +
           static_cast<unsigned long long>(now.tv_nsec);
}

// The counter and the monotonic clock read at one instant: the counter is
// read on both sides of the clock, and again while a thread switch or a long
// pause falls between the two, which would skew the pair.
struct ClockPair {
    unsigned long long ticks;
    unsigned long long nanoseconds;
};
ClockPair ReadClocks() {
    ClockPair pair{};
    for (int attempt = 0; attempt < 100; ++attempt) {
        const unsigned long long before = Ticks();
        pair.nanoseconds = MonotonicNanoseconds();
        const unsigned long long after = Ticks();
        pair.ticks = before + (after - before) / 2;
        if (after - before < 100000) // some 30 us at today's rates
            break;
    }
    return pair;
}

// Both clocks at load, for the counter's rate.
const ClockPair g_load = g_tsc ? ReadClocks() : ClockPair{};

} // namespace

ZORBAS_HOT unsigned long long Ticks() {
#if defined(__x86_64__)
    if (g_tsc)
        return __rdtsc();
#endif
    return MonotonicNanoseconds();
}

bool TicksAreCounter() {
    return g_tsc;
}

// The counter's rate measured against the monotonic clock since load, over
// at least 10 ms so that the readings' own cost does not count.
double SecondsPerTick() {
    if (!g_tsc)
        return 1e-9;
    ClockPair now{};
    do
        now = ReadClocks();
    while (now.nanoseconds - g_load.nanoseconds < 10000000ull);
    const unsigned long long ticks = now.ticks - g_load.ticks;
    return ticks == 0 ? 1e-9
                      : static_cast<double>(now.nanoseconds - g_load.nanoseconds) * 1e-9 /
                            static_cast<double>(ticks);
}

} // namespace zorbas_os
