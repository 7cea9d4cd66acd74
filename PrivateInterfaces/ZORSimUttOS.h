// The narrow seam between the library and the operating system. Portable
// code above it never calls the OS itself; posix/ and win32/ each implement
// these functions once.
#pragma once

#include "ZORSimContainersExport.h"

#include <string>

namespace ZORSimUttOS {

// Each area below keeps its own section; an implementation per platform in
// posix/ZORSimUttOS<Area>.cpp and win32/ZORSimUttOS<Area>.cpp.

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

// ---- command line ----------------------------------------------------------

// ---- directories, globbing and file tests ----------------------------------

// ---- files -------------------------------------------------------------------

} // namespace ZORSimUttOS

// Fault injection into the seam, for tests of the error paths: an armed call
// fails in the OS layer as if the OS had refused it with `error`. Calls are
// named by the service name the library reports for them ("CreateFile",
// "WriteFile", "FindNextFile", ...) or, for calls without one, by the seam
// function's name ("InitializeSymbols", "CaptureStack").
namespace ZORSimUttOSFault {

// After `after` further calls of `call` succeed, the next `times` calls fail
// with `error` (an errno value on POSIX, a GetLastError value on Windows).
// Arming a call again replaces its earlier arming. A transfer call armed with
// error 0 "succeeds" having moved no bytes.
ZORSIM_API void Arm(const char* call, int error, int times = 1, int after = 0);
ZORSIM_API void DisarmAll();
// Used by the OS layer: true (and the error) when this call is to fail.
bool Take(const char* call, int& error);

} // namespace ZORSimUttOSFault
