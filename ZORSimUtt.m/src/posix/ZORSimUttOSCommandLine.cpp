// The process's own arguments on Linux: /proc/self/cmdline holds them as main
// received them, each ended by a NUL.
#include "ZORSimUttOSPlatform.h"
#include "ZORString.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace ZORSimUttOS::Platform {
namespace {

// Text that the locale cannot decode: what is UTF-8 is taken as such, every
// other byte is kept as a lone surrogate, which no valid text contains.
std::wstring EscapeUndecodable(const std::string& bytes) {
    std::wstring wide;
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    const auto* end = p + bytes.size();
    while (p < end) {
        char32_t cp = 0;
        const int n = ZORBasDecodeUTF8(p, end, cp);
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

} // namespace ZORSimUttOS::Platform
