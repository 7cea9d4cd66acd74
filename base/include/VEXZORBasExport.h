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

// An explicit instantiation of an exported template: GCC takes the export
// attribute from the extern declaration alone, MinGW wants it here as well.
#if defined(_WIN32)
#    define ZORBAS_INSTANTIATION_API ZORBAS_API
#else
#    define ZORBAS_INSTANTIATION_API
#endif

// printf-style argument checking; MinGW's plain printf check is the
// Microsoft one, which does not know the C99 formats.
#if defined(__MINGW32__)
#    define ZORBAS_PRINTF_FORMAT(string, first) __attribute__((format(gnu_printf, string, first)))
#elif defined(__GNUC__)
#    define ZORBAS_PRINTF_FORMAT(string, first) __attribute__((format(printf, string, first)))
#else
#    define ZORBAS_PRINTF_FORMAT(string, first)
#endif
