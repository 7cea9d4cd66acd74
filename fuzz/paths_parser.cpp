// Path-string functions on arbitrary bytes: no crash, and the relations
// between their answers hold.
#include "ZORBasException.h"
#include "ZORSimExcPoolFormat.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttFilePathParser.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

void CheckOne(const ZORString& path) {
    const ZORString tail = P::Tail(path), extension = P::Extension(path), dir = P::DirPath(path);
    Require(V(P::BaseName(path) + extension) == V(tail), "BaseName + Extension == Tail");
    Require(P::HasExtension(path) == (V(tail).find('.') != std::string_view::npos), "HasExtension");
    Require(V(extension).empty() || V(extension)[0] == '.', "Extension starts with its dot");
    Require(V(path).ends_with(V(tail)), "Tail ends the path");
    Require(V(path).starts_with(V(P::BasePath(path))), "BasePath begins the path");
    Require(V(path).starts_with(V(dir)) && dir.Bytes() < path.Bytes() + (path.IsEmpty() ? 1 : 0),
            "DirPath is a proper beginning");
    P::IsAbsolute(path);
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
        // Fuzzing runs on Linux: the OS form has slashes only.
        Require(os.Bytes() == path.Bytes() && V(os).find('\\') == std::string_view::npos, "POSIX form");
    } catch (const ZORSimExcBadStringArgument&) {
        Require(path.IsBAD(), "only a BAD string is refused");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    [[maybe_unused]] static const bool quiet = (ZORSimUttAssertDisableExcReport(), true);
    // Two strings: before and after the first zero byte.
    const char* text = reinterpret_cast<const char*>(data);
    const std::size_t split = std::strlen(std::string(text, size).c_str());
    const ZORString a = ZORString::BuildFromUTF8(text, split);
    const ZORString b =
        split < size ? ZORString::BuildFromUTF8(text + split + 1, size - split - 1) : ZORString();
    CheckOne(a);
    CheckOne(b);
    Require(P::CompareFilePaths(a, b) == -P::CompareFilePaths(b, a), "comparison is antisymmetric");
    Require(V(P::Join(ZORString(), b)) == V(b), "Join with an empty head is the tail");
    const ZORString joined = P::Join(a, b);
    if (!a.IsEmpty() && !b.IsEmpty() && (V(b)[0] == '/' || V(b)[0] == '\\'))
        Require(V(joined) == V(b), "a rooted tail is kept");
    Require(V(joined).ends_with(V(b)), "Join ends in the tail");
    return 0;
}
