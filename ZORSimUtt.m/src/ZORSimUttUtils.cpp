#include "ZORSimUttUtils.h"

#include <cstring>

namespace {

// ASCII only, so that the result never depends on the process locale.
inline unsigned char LowerASCII(unsigned char c) {
    return (c >= 'A' && c <= 'Z') ? c + ('a' - 'A') : c;
}

} // namespace

void ZORSimUttUtils::Copy(char* destination, const char* source, int capacity) {
    if (destination == nullptr || capacity < 0)
        return;
    if (source == nullptr)
        source = "";
    if (capacity == 0) {
        std::strcpy(destination, source);
        return;
    }
    // The whole buffer is zeroed: fixed-capacity fields are copied and
    // compared bytewise, so nothing may be left behind the terminator.
    std::memset(destination, 0, static_cast<std::size_t>(capacity));
    const std::size_t limit = static_cast<std::size_t>(capacity) - 1;
    const void* end = std::memchr(source, 0, limit);
    const std::size_t length = end ? static_cast<std::size_t>(static_cast<const char*>(end) - source) : limit;
    std::memcpy(destination, source, length);
}

void ZORSimUttUtils::CopyNoZB(char* destination, const char* source, int count) {
    if (destination == nullptr || source == nullptr || count <= 0)
        return;
    std::memcpy(destination, source, static_cast<std::size_t>(count));
}

bool ZORSimUttUtils::SameStr(const char* a, const char* b, int count) {
    if (a == nullptr)
        a = "";
    if (b == nullptr)
        b = "";
    const unsigned char* x = reinterpret_cast<const unsigned char*>(a);
    const unsigned char* y = reinterpret_cast<const unsigned char*>(b);
    // count 0 (or less) compares the whole strings.
    for (long long i = 0; count <= 0 || i < count; ++i) {
        if (LowerASCII(x[i]) != LowerASCII(y[i]))
            return false;
        if (x[i] == 0)
            return true;
    }
    return true;
}
