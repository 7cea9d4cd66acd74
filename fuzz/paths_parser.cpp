// Path-string functions on arbitrary bytes: no crash, and the relations
// between their answers hold.
#include "FuzzCheck.h"
#include "ZORBasException.h"
#include "ZORSimExcPoolFormat.h"
#include "ZORSimUttFilePathParser.h"

#include <cstdint>
#include <cstring>
#include <string_view>

namespace P = ZORSimUttFilePathParser;

namespace {

std::string_view V(const ZORString& s) {
    return {s.c_str(), s.Bytes()};
}

void CheckOne(const ZORString& path) {
    const ZORString tail = P::Tail(path), extension = P::Extension(path), dir = P::DirPath(path);
    REQUIRE(V(P::BaseName(path) + extension) == V(tail));
    REQUIRE(P::HasExtension(path) == (V(tail).find('.') != std::string_view::npos));
    REQUIRE(V(extension).empty() || V(extension)[0] == '.');
    REQUIRE(V(path).ends_with(V(tail)));
    REQUIRE(V(path).starts_with(V(P::BasePath(path))));
    REQUIRE(V(path).starts_with(V(dir)) && dir.Bytes() < path.Bytes() + (path.IsEmpty() ? 1 : 0));
    P::IsAbsolute(path);
    std::string swapped(V(path));
    for (char& c : swapped)
        c = c == '/' ? '\\' : c == '\\' ? '/' : c;
    REQUIRE(P::CompareFilePaths(path, ZORString(swapped)) == 0);
    const ZORString longPath = P::GetLongPathNameW(path);
    REQUIRE(V(longPath) == V(path) || V(longPath) == "\\\\?\\" + std::string(V(path)));
    REQUIRE(V(P::GetLongPathNameW(longPath)) == V(longPath));
    try {
        const ZORString os = P::FixPathForOS(path);
        REQUIRE(!path.IsBAD());
        // Fuzzing runs on Linux: the OS form has slashes only.
        REQUIRE(os.Bytes() == path.Bytes() && V(os).find('\\') == std::string_view::npos);
    } catch (const ZORSimExcBadStringArgument&) {
        REQUIRE(path.IsBAD());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Two strings: before and after the first zero byte.
    const char* text = reinterpret_cast<const char*>(data);
    const std::size_t split = std::strlen(std::string(text, size).c_str());
    const ZORString a = ZORString::BuildFromUTF8(text, split);
    const ZORString b =
        split < size ? ZORString::BuildFromUTF8(text + split + 1, size - split - 1) : ZORString();
    CheckOne(a);
    CheckOne(b);
    REQUIRE(P::CompareFilePaths(a, b) == -P::CompareFilePaths(b, a));
    REQUIRE(V(P::Join(ZORString(), b)) == V(b));
    const ZORString joined = P::Join(a, b);
    if (!a.IsEmpty() && !b.IsEmpty() && (V(b)[0] == '/' || V(b)[0] == '\\'))
        REQUIRE(V(joined) == V(b));
    REQUIRE(V(joined).ends_with(V(b)));
    return 0;
}
