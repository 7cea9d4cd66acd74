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

#if defined(__GNUC__)
#    define ZORSIM_NOINLINE __attribute__((noinline))
#elif defined(_MSC_VER)
#    define ZORSIM_NOINLINE __declspec(noinline)
#else
#    define ZORSIM_NOINLINE
#endif
