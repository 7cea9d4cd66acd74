// Export macro of the base stand-in library VEXZORBas.
#pragma once

#if defined(_WIN32)
#    if defined(VEXZORBAS_BUILDING)
#        define ZORBAS_API __declspec(dllexport)
#    else
#        define ZORBAS_API __declspec(dllimport)
#    endif
#else
#    define ZORBAS_API __attribute__((visibility("default")))
#endif

// An explicit instantiation of an exported template: the extern declaration
// carries the export attribute; MinGW's GCC wants it here as well, clang
// ignores it here.
#if defined(_WIN32) && !defined(__clang__)
#    define ZORBAS_INSTANTIATION_API ZORBAS_API
#else
#    define ZORBAS_INSTANTIATION_API
#endif

// Thread-local data read on every OS transfer: the initial-exec model (one
// load off the thread pointer) where the object format has it.
#if defined(__ELF__)
#    define ZORBAS_FAST_TLS __attribute__((tls_model("initial-exec")))
#else
#    define ZORBAS_FAST_TLS
#endif

// The code of each OS transfer (the file class, the OS layer, the statistics
// timer and the mutex): kept together in one place of each library, so that
// a transfer touches as few code pages as it can. On a kernel that flushes
// the TLB on every system call, each page touched costs a miss per call.
#if defined(__GNUC__)
#    define ZORBAS_HOT __attribute__((hot))
#else
#    define ZORBAS_HOT
#endif

// printf-style argument checking; MinGW GCC's plain printf check is the
// Microsoft one, which does not know the C99 formats.
#if defined(__MINGW32__) && !defined(__clang__)
#    define ZORBAS_PRINTF_FORMAT(string, first) __attribute__((format(gnu_printf, string, first)))
#elif defined(__GNUC__)
#    define ZORBAS_PRINTF_FORMAT(string, first) __attribute__((format(printf, string, first)))
#else
#    define ZORBAS_PRINTF_FORMAT(string, first)
#endif
