// The narrow seam between the library and the operating system. Portable
// code above it never calls the OS itself; posix/ and win32/ each implement
// these functions once.
#pragma once

#include "ZORSimContainersExport.h"

#include <string>

namespace ZORSimUttOS {

// ---- stack traces ----------------------------------------------------------

// Captures up to `capacity` return addresses of the calling thread,
// innermost first. skip 0 starts at the caller of CaptureStack; each unit
// of skip leaves out one more frame above it.
int CaptureStack(void** frames, int capacity, int skip);

// Sets up symbol look-up for the process. False when it cannot be set up.
// Calling it again drops the earlier set-up and starts afresh. Neither this
// nor Symbolize is thread-safe: the caller serialises them.
bool InitializeSymbols();

struct SymbolInfo {
    bool hasFunction = false;
    std::string function; // demangled
    bool hasLine = false;
    std::string file;
    int line = 0;
};
// Looks up a return address captured by CaptureStack.
SymbolInfo Symbolize(void* returnAddress);

} // namespace ZORSimUttOS

// Fault injection into the seam, for tests of the error paths: an armed call
// fails in the OS layer as if the OS had refused it with `error`.
namespace ZORSimUttOSFault {

enum class Call { InitializeSymbols, CaptureStack, Count };

// The next `times` calls of `call` fail with `error` (an errno value on
// POSIX, a GetLastError value on Windows).
ZORSIM_API void Arm(Call call, int error, int times = 1);
ZORSIM_API void DisarmAll();
// Used by the OS layer: true (and the error) when this call is to fail.
bool Take(Call call, int& error);

} // namespace ZORSimUttOSFault
