/* The plain entry points of VEXZORSimContainers, for C and for other
 * languages' foreign-function interfaces. Usable from C and C++; the C++
 * headers include this one.
 *
 * Functions that can fail return 1 on success and 0 on failure, with the
 * error's text in the caller's `buffer` of `capacity` bytes (cut to
 * capacity - 1 bytes and always terminated). A null `buffer` or a capacity
 * of 0 is never written. A null pointer among the other arguments is a
 * failure with a text that names the argument; a null glob handle, though,
 * is an internal error that ends the process with status 1. */
#ifndef ZORSIMCONTAINERSC_H
#define ZORSIMCONTAINERSC_H

#include "ZORSimContainersExport.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Start and stop of the library and the base libraries under it, counted:
 * each initializeC needs one finalizeC. */
ZORSIM_API int ZORSimContainers_initializeC(void);
ZORSIM_API void ZORSimContainers_finalizeC(void);

/* Directory entries matching a wildcard pattern (`*`, `?` in the last
 * component, case ignored): open, test, read, step, free. */
ZORSIM_API unsigned char ZORSimUttFileUtils_GlobInit(const char* pattern, void** handle,
                                                     unsigned int capacity, char* buffer);
ZORSIM_API unsigned char ZORSimUttFileUtils_GlobEmpty(void* handle, unsigned char* empty,
                                                      unsigned int capacity, char* buffer);
/* The current entry as UTF-8, valid until the next call on the handle. */
ZORSIM_API unsigned char ZORSimUttFileUtils_GlobFront(void* handle, const char** front, unsigned int capacity,
                                                      char* buffer);
ZORSIM_API unsigned char ZORSimUttFileUtils_GlobNext(void* handle, unsigned int capacity, char* buffer);
/* Frees the handle. The result is always 0 with "Glob Error: unknown error"
 * (reported on standard error like every error raised), which callers
 * ignore. */
ZORSIM_API unsigned char ZORSimUttFileUtils_GlobFree(void* handle, unsigned int capacity, char* buffer);

/* Copies `input` into a new block in *output, to be released with free(). */
ZORSIM_API unsigned char ZORSimUttPythonGlueTest_CheckString(const char* input, char** output,
                                                             char* errorBuffer, unsigned int errorCapacity);

/* Named timers and marks of the process-wide resource monitor. A null label
 * or text counts as empty. */
ZORSIM_API void ZORSimUttResourceMonitorInitialize(const char* name, int value);
ZORSIM_API void ZORSimUttResourceMonitorIniTimer(int timer, const char* label);
ZORSIM_API void ZORSimUttResourceMonitorStartTimer(int timer);
ZORSIM_API void ZORSimUttResourceMonitorStopTimer(int timer);
ZORSIM_API void ZORSimUttResourceMonitorMark(const char* text);
/* Marks only when SIM_RESOURCE_MONITOR was set when the library started. */
ZORSIM_API void ZORSimUttResourceMonitorSimMark(const char* text);

#ifdef __cplusplus
}
#endif

#endif
