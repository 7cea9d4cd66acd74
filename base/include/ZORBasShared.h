// File helpers of the base library.
#pragma once

#include "VEXZORBasExport.h"
#include "ZORString.h"

#include <cstdio>

class ZORBAS_API ZORBasFileOps {
public:
    // fopen for a ZORString name; null with errno set on failure, and for a
    // BAD name (errno EINVAL).
    static std::FILE* Fopen(const ZORString& name, const char* mode);
};
