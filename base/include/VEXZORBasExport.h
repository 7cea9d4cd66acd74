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
