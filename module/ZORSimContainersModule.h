// Reference-counted start and stop of VEXZORSimContainers and of the base
// libraries and utility layer it brings up. The int& is a tally owned by the
// caller: each module that actually starts adds 1, each that stops takes 1.
#pragma once

#include "ZORSimContainersExport.h"

ZORSIM_API void ZORSimContainers_initialize(int& tally);
ZORSIM_API void ZORSimContainers_finalize(int& tally);
ZORSIM_API void ZORSimContainers_specific_initialize(int& tally);
ZORSIM_API void ZORSimContainers_specific_finalize(int& tally);
ZORSIM_API void ZORSimUtt_initialize(int& tally);
ZORSIM_API void ZORSimUtt_finalize(int& tally);

extern "C" {
// Plain pair for callers in other languages. initializeC returns the new use
// count when the module was already started, otherwise the new specific count.
ZORSIM_API int ZORSimContainers_initializeC(void);
ZORSIM_API void ZORSimContainers_finalizeC(void);
// Marker export; always 1.
ZORSIM_API int ZORSimContainers_Marker(void);
}
