// The path-string functions on Windows-style and POSIX-style paths, their
// odd answers included: the file classes depend on them.
#include "ZORSimTestSupport.h"

#include "ZORSimExcPoolFormat.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttFilePathParser.h"

#include <functional>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

namespace P = ZORSimUttFilePathParser;

namespace {

template <class R> std::string Str(const R& r) {
    if constexpr (std::is_same_v<R, bool>)
        return r ? "true" : "false";
    else if constexpr (std::is_same_v<R, int>)
        return std::to_string(r);
    else
        return r.c_str();
}

using Call = std::function<std::string(const ZORString&, const ZORString&)>;
template <class R> Call Unary(R (*f)(const ZORString&)) {
    return [f](const ZORString& a, const ZORString&) { return Str(f(a)); };
}
template <class R> Call Binary(R (*f)(const ZORString&, const ZORString&)) {
    return [f](const ZORString& a, const ZORString& b) { return Str(f(a, b)); };
}

TEST(ZORSimUttFilePathParser, AnswersOnBothPathStyles) {
    const std::map<std::string, Call> calls = {
        {"BaseName", Unary(P::BaseName)},         {"BasePath", Unary(P::BasePath)},
        {"DirPath", Unary(P::DirPath)},           {"Tail", Unary(P::Tail)},
        {"Extension", Unary(P::Extension)},       {"HasExtension", Unary(P::HasExtension)},
        {"IsAbsolute", Unary(P::IsAbsolute)},     {"Join", Binary(P::Join)},
        {"Compare", Binary(P::CompareFilePaths)}, {"LongPath", Unary(P::GetLongPathNameW)}};
    const std::string x256(256, 'x'), x257(257, 'x'), x300(300, 'x');
    std::string e259; // counted in characters, not bytes
    for (int i = 0; i < 259; ++i)
        e259 += "\xC3\xA9";
    // Each case: the argument(s), then the expected answer.
    const std::vector<std::pair<std::string, std::vector<std::vector<std::string>>>> lines = {
        // Names, extensions and dots wherever they stand; the tail of a
        // relative Windows path is all of it.
        {"BaseName", {{"dir/file.tar.gz", "file.tar"}, {"C:\\dir\\f.txt", "f"}, {".profile", ""}}},
        {"BaseName", {{"dir.d/file", "file"}, {"dir\\f.txt", "dir\\f"}}},
        {"BasePath",
         {{"dir.d/file", "dir"}, {"run.3.tmp", "run.3"}, {"C:\\x.y\\z", "C:\\x"}, {"a/b", "a/b"}}},
        {"Extension", {{"run.3.tmp", ".tmp"}, {"dir.d/file", ""}, {".profile", ".profile"}}},
        {"Extension", {{"x.", "."}, {"C:\\a.b\\c", ""}}},
        {"HasExtension", {{".profile", "true"}, {"dir.d/file", "false"}, {"dir\\f.txt", "true"}}},
        {"HasExtension", {{"C:\\d.x\\f", "false"}}},
        // A backslash makes the path Windows-style, and then both separators
        // count.
        {"DirPath", {{"C:\\a\\b.txt", "C:\\a"}, {"a/b\\c", "a/b"}, {"/a/b\\c", "/a/b"}, {"C:/a/b", "C:/a"}}},
        {"DirPath", {{"a/b/c", "a/b"}, {"file", ""}, {"/x", ""}, {"", ""}}},
        // The root is taken off first; without a separator after it the
        // whole input comes back.
        {"Tail", {{"a/b/c", "c"}, {"/abs/f", "f"}, {"a/", ""}, {"plain", "plain"}, {"a<b/c", "c"}}},
        {"Tail", {{"C:\\dir\\f.txt", "f.txt"}, {"C:/x/y", "y"}, {"C:\\", ""}, {"C:f.txt", "C:f.txt"}}},
        {"Tail", {{"\\\\host\\share\\f.txt", "f.txt"}, {"\\\\host\\share", "\\\\host\\share"}}},
        {"Tail", {{"\\\\host", "\\\\host"}, {"dir\\f.txt", "dir\\f.txt"}, {"\\dir\\f.txt", "\\dir\\f.txt"}}},
        {"Tail", {{"\\dir\\sub\\f.txt", "f.txt"}, {"\\\xC3\xA9\\x\\y", "y"}}},
        // Two leading backslashes, a slash or a drive.
        {"IsAbsolute", {{"\\x", "false"}, {"c:x", "true"}, {"Z:", "true"}, {"1:x", "false"}}},
        {"IsAbsolute", {{"\\\\h\\s", "true"}, {"/a", "true"}, {"a/b", "false"}, {"", "false"}}},
        // Always a forward slash between; backslashes are stripped before
        // slashes.
        {"Join", {{"a/", "b", "a/b"}, {"C:\\w\\", "f", "C:\\w/f"}, {"a", "/b", "/b"}, {"a", "\\b", "\\b"}}},
        {"Join", {{"a", "c:x", "c:x"}, {"h", "1:x", "h/1:x"}, {"", "b", "b"}, {"a", "", "a/"}}},
        {"Join", {{"/", "x", "/x"}, {"a/\\\\", "f", "a/f"}, {"a\\/", "f", "a\\/f"}}},
        // The separators are equal, nothing else is normalised.
        {"Compare", {{"a/b", "a\\b", "0"}, {"ab", "abc", "-1"}, {"abc", "ab", "1"}, {"", "", "0"}}},
        {"Compare", {{"", "a", "-1"}, {"a", "", "1"}, {"A", "a", "-1"}, {"a//b", "a/b", "-1"}}},
        {"Compare", {{"a\\c", "a/b", "1"}, {"\xC3\xA9", "z", "1"}}},
        // The prefix only from 260 characters on; forward slashes stay.
        {"LongPath",
         {{"C:/short", "C:/short"}, {"C:\\" + x256, "C:\\" + x256}, {"C:/" + x257, "\\\\?\\C:/" + x257}}},
        {"LongPath", {{"\\\\?\\" + x300, "\\\\?\\" + x300}, {"\\\\srv\\" + x300, "\\\\?\\\\\\srv\\" + x300}}},
        {"LongPath", {{e259, e259}, {e259 + "\xC3\xA9", "\\\\?\\" + e259 + "\xC3\xA9"}}},
    };
    for (const auto& [name, cases] : lines)
        for (const auto& c : cases) {
            const std::string b = c.size() > 2 ? c[1] : "";
            SCOPED_TRACE(name + "(\"" + c[0] + "\", \"" + b + "\")");
            EXPECT_EQ(calls.at(name)(ZORString(c[0]), ZORString(b)), c.back());
        }
}

TEST(ZORSimUttFilePathParser, FixPathForOSGivesTheFormOfThisOS) {
    const std::string x300(300, 'x');
#if defined(_WIN32)
    EXPECT_EQ(Str(P::FixPathForOS(ZORString("a/b/c.txt"))), "a\\b\\c.txt");
    EXPECT_EQ(Str(P::FixPathForOS(ZORString("C:\\" + x300 + "/f"))), "\\\\?\\C:\\" + x300 + "\\f");
#else
    EXPECT_EQ(Str(P::FixPathForOS(ZORString("a\\b\\c.txt"))), "a/b/c.txt");
    EXPECT_EQ(Str(P::FixPathForOS(ZORString("\\\\host\\share"))), "//host/share");
    EXPECT_EQ(Str(P::FixPathForOS(ZORString("C:\\" + x300 + "/f"))), "C:/" + x300 + "/f");
#endif
    EXPECT_EQ(Str(P::FixPathForOS(ZORString(""))), "");
    ZORSimUttAssertDisableExcReport();
    EXPECT_THROW(P::FixPathForOS(ZORString("a\xFF")), ZORSimExcBadStringArgument);
    // The other functions are pure string functions and take what they get.
    EXPECT_NO_THROW(P::Tail(ZORString("a/\xFF")));
    EXPECT_EQ(P::CompareFilePaths(ZORString("a\\\xFF"), ZORString("a/\xFF")), 0);
}

} // namespace
