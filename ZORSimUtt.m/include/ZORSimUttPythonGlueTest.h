// String round trip for the script bindings' error path.
#pragma once

#include "ZORSimContainersExport.h"

extern "C" {
// Copies the UTF-8 `input` into a new malloc'd block stored in *output (the
// caller frees it with free) and returns 1. The text "Bad string." raises
// ZORSimExcBadStringArgument; any exception is described in errorBuffer
// (cut to errorCapacity - 1 characters, always terminated) and 0 returned.
ZORSIM_API unsigned char ZORSimUttPythonGlueTest_CheckString(const char* input, char** output,
                                                            char* errorBuffer, unsigned int errorCapacity);
}
