// Testing hooks of the failure reports. Not for production code: they undo
// the once-per-process decisions so that benchmarks can measure a first
// report again within one process.
#pragma once

#include "ZORSimContainersExport.h"

namespace ZORSimUttAssertTesting {

// Reports enabled again and the report mode undecided, so the next report
// reads SIM_DISABLE_EXCEPTION_REPORT again.
ZORSIM_API void ResetReportState();
// Forgets the symbol handler and every cached frame; the next trace sets
// symbol look-up up from scratch.
ZORSIM_API void ResetSymbolHandler();

} // namespace ZORSimUttAssertTesting
