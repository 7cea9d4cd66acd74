// The few operating-system services of the base library. Everything that
// differs between platforms sits behind these functions; each platform
// supplies one source file (posix/, win32/).
#pragma once

#include "ZORString.h"

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <string>

namespace zorbas_os {

// Decodes narrow text in the codeset of the process locale into UTF-8 bytes.
// False when the text does not decode. The C/POSIX locale is taken as UTF-8:
// the bytes are passed on unchanged, and the caller validates them.
bool LocaleToUTF8(const char* text, std::size_t size, std::string& utf8);

// CPU time of the whole process (all threads), in seconds.
double ProcessCpuSeconds();

// The cheapest monotonic clock that still times one OS call: ticks of the
// processor's invariant time-stamp counter where there is one (the
// performance counter on Windows), else nanoseconds.
unsigned long long Ticks();
// Whether Ticks reads the time-stamp counter, which callers may then read
// themselves.
bool TicksAreCounter();
// The length of one tick in seconds.
double SecondsPerTick();

// The system's text for an OS error code (errno, or GetLastError on Windows).
std::string SystemErrorText(int code);

// Sleeps while `word` holds `value` (it may return early, so callers
// re-check); wakes one thread sleeping on `word`. The C++ library's own
// atomic wait loses wake-ups on some Windows toolchains.
void WaitWhile(std::atomic<int>& word, int value);
void WakeOne(std::atomic<int>& word);

// The value of an environment variable in UTF-8; null when it is unset. The
// text stays valid for the life of the process.
const char* GetEnv(const char* name);

// Opens a file by a valid (not BAD) name.
std::FILE* OpenFile(const ZORString& name, const char* mode);

} // namespace zorbas_os
