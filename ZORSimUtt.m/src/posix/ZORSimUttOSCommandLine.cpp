// The process's own arguments on Linux: /proc/self/cmdline holds them as main
// received them, each ended by a NUL.
#include "ZORSimUttOS.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace ZORSimUttOS {
namespace {

// Length of the well-formed UTF-8 sequence at p, storing its code point, or 0.
int DecodeUTF8(const unsigned char* p, const unsigned char* end, char32_t& cp) {
    const unsigned char b0 = *p;
    if (b0 < 0x80) {
        cp = b0;
        return 1;
    }
    int need;
    unsigned char lo = 0x80;
    unsigned char hi = 0xBF;
    if (b0 >= 0xC2 && b0 <= 0xDF) {
        need = 1;
        cp = b0 & 0x1F;
    } else if (b0 >= 0xE0 && b0 <= 0xEF) {
        need = 2;
        cp = b0 & 0x0F;
        lo = b0 == 0xE0 ? 0xA0 : 0x80; // no overlong forms
        hi = b0 == 0xED ? 0x9F : 0xBF; // no surrogates
    } else if (b0 >= 0xF0 && b0 <= 0xF4) {
        need = 3;
        cp = b0 & 0x07;
        lo = b0 == 0xF0 ? 0x90 : 0x80;
        hi = b0 == 0xF4 ? 0x8F : 0xBF; // nothing beyond U+10FFFF
    } else {
        return 0;
    }
    if (end - p <= need || p[1] < lo || p[1] > hi)
        return 0;
    for (int i = 1; i <= need; ++i) {
        if ((p[i] & 0xC0) != 0x80)
            return 0;
        cp = (cp << 6) | (p[i] & 0x3F);
    }
    return need + 1;
}

// Text that the locale cannot decode: what is UTF-8 is taken as such, every
// other byte is kept as a lone surrogate, which no valid text contains.
std::wstring EscapeUndecodable(const std::string& bytes) {
    std::wstring wide;
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    const auto* end = p + bytes.size();
    while (p < end) {
        char32_t cp = 0;
        const int n = DecodeUTF8(p, end, cp);
        if (n == 0) {
            wide.push_back(static_cast<wchar_t>(0xDC00 + *p));
            ++p;
        } else {
            wide.push_back(static_cast<wchar_t>(cp));
            p += n;
        }
    }
    return wide;
}

std::wstring Decode(const std::string& bytes) {
    bool decoded = true;
    const ZORString text = ZORString::BuildFromLocale(bytes.c_str(), decoded);
    return decoded ? text.ToWChar() : EscapeUndecodable(bytes);
}

} // namespace

bool ProcessArguments(std::vector<std::wstring>& args) {
    args.clear();
    int error = 0;
    if (ZORSimUttOSFault::Take("ProcessArguments", error)) {
        errno = error;
        return false;
    }
    const int fd = ::open("/proc/self/cmdline", O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    std::string bytes;
    char chunk[4096];
    for (;;) {
        const ssize_t got = ::read(fd, chunk, sizeof chunk);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            const int saved = errno;
            ::close(fd);
            errno = saved;
            return false;
        }
        if (got == 0)
            break;
        bytes.append(chunk, static_cast<std::size_t>(got));
    }
    ::close(fd);
    // Every argument, the last included, ends with a NUL; an empty argument
    // is a NUL alone.
    std::size_t start = 0;
    while (start < bytes.size()) {
        std::size_t end = bytes.find('\0', start);
        if (end == std::string::npos)
            end = bytes.size();
        args.push_back(Decode(bytes.substr(start, end - start)));
        start = end + 1;
    }
    return true;
}

} // namespace ZORSimUttOS
