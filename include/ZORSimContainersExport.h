// Export macro of VEXZORSimContainers.
#pragma once

#if defined(_WIN32)
#    if defined(VEXZORSIMCONTAINERS_BUILDING)
#        define ZORSIM_API __declspec(dllexport)
#    else
#        define ZORSIM_API __declspec(dllimport)
#    endif
#else
#    define ZORSIM_API __attribute__((visibility("default")))
#endif

// An explicit instantiation of an exported template: the extern declaration
// carries the export attribute; MinGW's GCC wants it here as well, clang
// ignores it here.
#if defined(_WIN32) && !defined(__clang__)
#    define ZORSIM_INSTANTIATION_API ZORSIM_API
#else
#    define ZORSIM_INSTANTIATION_API
#endif

#if defined(__GNUC__)
#    define ZORSIM_NOINLINE __attribute__((noinline))
#elif defined(_MSC_VER)
#    define ZORSIM_NOINLINE __declspec(noinline)
#else
#    define ZORSIM_NOINLINE
#endif

// Keeps a frame off the tail-call path, so that a frame count holds.
#if defined(__GNUC__)
#    define ZORSIM_NO_TAIL_CALL() __asm__ __volatile__("" ::: "memory")
#else
#    define ZORSIM_NO_TAIL_CALL() ((void)0)
#endif
