// Shared by the fuzz targets: the library's exception reports off (not under
// test, they would bury libFuzzer's output), and a check whose failure ends
// the run, naming it (libFuzzer keeps the input).
#pragma once

#include "ZORSimUttAssert.h"

#include <cstdio>
#include <cstdlib>

inline const bool g_reportsOff = (ZORSimUttAssertDisableExcReport(), true);

#define REQUIRE(condition)                                                                                   \
    ((condition) ? void() : (std::fprintf(stderr, "line %d: %s\n", __LINE__, #condition), std::abort()))
