// The loader entry of the library. On Windows the loader calls it; on other
// systems the shared object's load and unload hooks call it with reasons 1
// and 0. Tests drive it directly.
#pragma once

#include "ZORSimContainersExport.h"

#if defined(_WIN32)
#    include <windows.h>
#    define ZORSIM_DLLMAIN_CALL WINAPI
#else
using HINSTANCE = void*;
using DWORD = unsigned int;
using LPVOID = void*;
using BOOL = int;
#    define ZORSIM_DLLMAIN_CALL
#endif

enum : DWORD {
    ZORSIM_PROCESS_DETACH = 0,
    ZORSIM_PROCESS_ATTACH = 1,
    ZORSIM_THREAD_ATTACH = 2,
    ZORSIM_THREAD_DETACH = 3
};

extern "C" ZORSIM_API BOOL ZORSIM_DLLMAIN_CALL DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);
