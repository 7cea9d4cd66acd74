// Path-string functions on arbitrary bytes: no crash, and the relations
// between their answers hold.
#include "ZORBasException.h"
#include "ZORSimExcPoolFormat.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttFilePathParser.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace P = ZORSimUttFilePathParser;

namespace {

void Require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "invariant broken: %s\n", what);
        std::abort();
    }
}

std::string_view V(const ZORString& s) {
    return {s.c_str(), s.Bytes()};
}

bool StartsWith(std::string_view s, std::string_view prefix) {
    return s.substr(0, prefix.size()) == prefix;
}
bool EndsWith(std::string_view s, std::string_view suffix) {
    return s.size() >= suffix.size() && s.substr(s.size() - suffix.size()) == suffix;
}

void CheckOne(const ZORString& path) {
    const ZORString tail = P::Tail(path);
    const ZORString base = P::BaseName(path);
    const ZORString extension = P::Extension(path);
    Require(V(base + extension) == V(tail), "BaseName + Extension == Tail");
    Require(P::HasExtension(path) == (V(tail).find('.') != std::string_view::npos), "HasExtension");
    Require(V(extension).empty() || V(extension)[0] == '.', "Extension starts with its dot");
    Require(EndsWith(V(path), V(tail)), "Tail ends the path");
    Require(StartsWith(V(path), V(P::BasePath(path))), "BasePath begins the path");
    const ZORString dir = P::DirPath(path);
    Require(StartsWith(V(path), V(dir)) && dir.Bytes() < path.Bytes() + (path.IsEmpty() ? 1 : 0),
            "DirPath is a proper beginning");
    P::IsAbsolute(path);

    Require(P::CompareFilePaths(path, path) == 0, "a path equals itself");
    std::string swapped(V(path));
    for (char& c : swapped)
        c = c == '/' ? '\\' : c == '\\' ? '/' : c;
    Require(P::CompareFilePaths(path, ZORString(swapped)) == 0, "separators compare equal");

    const ZORString longPath = P::GetLongPathNameW(path);
    Require(V(longPath) == V(path) || V(longPath) == "\\\\?\\" + std::string(V(path)),
            "long-path prefix only");
    Require(V(P::GetLongPathNameW(longPath)) == V(longPath), "the prefix is added once");

    try {
        const ZORString os = P::FixPathForOS(path);
        Require(!path.IsBAD(), "a BAD string is refused");
#if !defined(_WIN32)
        Require(os.Bytes() == path.Bytes() && V(os).find('\\') == std::string_view::npos, "POSIX form");
#endif
    } catch (const ZORSimExcBadStringArgument&) {
        Require(path.IsBAD(), "only a BAD string is refused");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool quiet = (ZORSimUttAssertDisableExcReport(), true);
    (void)quiet;
    // Two strings: before and after the first zero byte.
    const char* text = reinterpret_cast<const char*>(data);
    const void* zero = std::memchr(text, 0, size);
    const std::size_t split = zero ? static_cast<std::size_t>(static_cast<const char*>(zero) - text) : size;
    const ZORString a = ZORString::BuildFromUTF8(text, split);
    const ZORString b =
        split < size ? ZORString::BuildFromUTF8(text + split + 1, size - split - 1) : ZORString();

    CheckOne(a);
    CheckOne(b);

    const int ab = P::CompareFilePaths(a, b);
    Require(ab == -P::CompareFilePaths(b, a), "comparison is antisymmetric");
    Require(V(P::Join(ZORString(), b)) == V(b), "Join with an empty head is the tail");
    const ZORString joined = P::Join(a, b);
    if (!a.IsEmpty() && !b.IsEmpty() && (V(b)[0] == '/' || V(b)[0] == '\\'))
        Require(V(joined) == V(b), "a rooted tail is kept");
    Require(EndsWith(V(joined), V(b)), "Join ends in the tail");
    return 0;
}
