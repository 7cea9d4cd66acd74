// Start and stop hooks of the five base libraries this stand-in replaces.
// Each is reference-counted: its first start adds 1 to the caller's tally,
// its last stop subtracts 1.
#pragma once

#include "VEXZORBasExport.h"

ZORBAS_API void ZORBasXmlParser_initialize(int& tally);
ZORBAS_API void ZORBasShared_initialize(int& tally);
ZORBAS_API void ZORBasCoreUtils_initialize(int& tally);
ZORBAS_API void ZORBasGenericsLib_initialize(int& tally);
ZORBAS_API void ZORBasAlloc_initialize(int& tally);
ZORBAS_API void ZORBasXmlParser_finalize(int& tally);
ZORBAS_API void ZORBasShared_finalize(int& tally);
ZORBAS_API void ZORBasCoreUtils_finalize(int& tally);
ZORBAS_API void ZORBasGenericsLib_finalize(int& tally);
ZORBAS_API void ZORBasAlloc_finalize(int& tally);

// Journal of hook calls, so that the order in which modules start and stop
// can be checked. Each entry names the hook (a copy of the name, at most 63
// bytes); the journal keeps the most recent 256 entries. Modules above the
// base record their own hooks here.
class ZORBAS_API ZORBasHookJournal {
public:
    static void Record(const char* hook);
    static int Size();
    static const char* At(int index);
    static void Clear();
};
