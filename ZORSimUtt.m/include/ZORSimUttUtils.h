// Bounded copy and comparison of zero-terminated strings.
#pragma once

#include "ZORSimContainersExport.h"

class ZORSIM_API ZORSimUttUtils {
public:
    // With a capacity above 0: zero-fills all `capacity` bytes of destination,
    // copies at most capacity - 1 characters and ends with a zero byte at
    // capacity - 1. With a capacity of 0: copies the whole source with its
    // terminator, unbounded. A null source copies as "".
    static void Copy(char* destination, const char* source, int capacity);
    // Copies exactly `count` bytes; adds no terminator.
    static void CopyNoZB(char* destination, const char* source, int count);
    // ASCII case-insensitive equality, over whole strings when count is 0,
    // otherwise over at most `count` characters.
    static bool SameStr(const char* a, const char* b, int count);
};
