// Failure reports on standard error: a banner and a symbolic stack trace.
#pragma once

#include "ZORSimContainersExport.h"

class ZORSIM_API ZORSimUttAssert {
public:
    // A broken internal invariant: banner, trace, then ZORBasAssertException.
    [[noreturn]] static void ReportAssertionFailure(const char* text);
    // Misuse by the client: banner, trace, then ZORSimExcValidationFailure.
    [[noreturn]] static void ReportValidationFailure(const char* text);
    // Called by every exception's Propagate just before it throws.
    static void ReportException(const char* text);
    // False once reports are switched off: ReportException would print
    // nothing, so Propagate need not format the text it would be handed.
    static bool WillReportException();
};

// Switches exception reports off for the rest of the process.
ZORSIM_API void ZORSimUttAssertDisableExcReport();
