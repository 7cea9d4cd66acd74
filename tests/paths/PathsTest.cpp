// The path-string functions on Windows-style and POSIX-style paths, odd
// answers included (the file classes depend on them), and the wildcard rules
// a Windows user expects of a file-name pattern. The fuzz targets check both
// against their invariants and a reference matcher; these are the cases
// worth naming.
#include "ZORSimTestSupport.h"

#include "ZORSimExcPoolFormat.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttFilePathParser.h"
#include "ZORSimUttWildcard.h"

#include <map>

namespace P = ZORSimUttFilePathParser;

namespace {

template <class R> std::string Str(const R& r) {
    if constexpr (std::is_arithmetic_v<R>)
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

TEST(FilePathParser, AnswersOnBothPathStyles) {
    const std::string x256(256, 'x'), x257(257, 'x');
    std::string e259;
    for (int i = 0; i < 259; ++i)
        e259 += "\xC3\xA9";
    // Each case: the argument(s), then the expected answer. The fuzz target
    // checks how the answers relate to each other.
    // clang-format off
    const std::map<std::string, Call> calls = {
        {"BaseName", Unary(P::BaseName)}, {"BasePath", Unary(P::BasePath)}, {"DirPath", Unary(P::DirPath)},
        {"Tail", Unary(P::Tail)}, {"Extension", Unary(P::Extension)}, {"IsAbsolute", Unary(P::IsAbsolute)},
        {"Join", Binary(P::Join)}, {"Compare", Binary(P::CompareFilePaths)},
        {"LongPath", Unary(P::GetLongPathNameW)}};
    const std::vector<std::pair<std::string, std::vector<std::vector<std::string>>>> lines = {
        // Names, extensions and dots wherever they stand.
        {"BaseName", {{"dir/file.tar.gz", "file.tar"}, {"C:\\dir\\f.txt", "f"}, {".profile", ""}, {"dir.d/file", "file"}}},
        {"BasePath", {{"dir.d/file", "dir"}, {"run.3.tmp", "run.3"}, {"C:\\x.y\\z", "C:\\x"}, {"a/b", "a/b"}}},
        {"Extension", {{"run.3.tmp", ".tmp"}, {"dir.d/file", ""}, {".profile", ".profile"}, {"x.", "."}}},
        // A backslash makes the path Windows-style, and then both separators count.
        {"DirPath", {{"C:\\a\\b.txt", "C:\\a"}, {"a/b\\c", "a/b"}, {"C:/a/b", "C:/a"}, {"file", ""}, {"/x", ""}}},
        // The root is taken off first; without a separator after it the
        // whole input comes back, as does a relative Windows path.
        {"Tail", {{"/abs/f", "f"}, {"a/", ""}, {"C:\\dir\\f.txt", "f.txt"}, {"C:\\", ""}, {"C:f.txt", "C:f.txt"}}},
        {"Tail", {{"\\\\host\\share\\f.txt", "f.txt"}, {"\\\\host\\share", "\\\\host\\share"}, {"dir\\f.txt", "dir\\f.txt"}}},
        {"Tail", {{"\\dir\\f.txt", "\\dir\\f.txt"}, {"\\dir\\sub\\f.txt", "f.txt"}}},
        // Two leading backslashes, a slash or a drive.
        {"IsAbsolute", {{"\\x", "0"}, {"c:x", "1"}, {"1:x", "0"}, {"\\\\h\\s", "1"}, {"/a", "1"}}},
        // Always a forward slash between; backslashes are stripped before slashes.
        {"Join", {{"a/", "b", "a/b"}, {"C:\\w\\", "f", "C:\\w/f"}, {"a", "\\b", "\\b"}, {"a", "c:x", "c:x"}}},
        {"Join", {{"h", "1:x", "h/1:x"}, {"a", "", "a/"}, {"a/\\\\", "f", "a/f"}, {"a\\/", "f", "a\\/f"}}},
        // The separators are equal, nothing else is normalised.
        {"Compare", {{"a/b", "a\\b", "0"}, {"ab", "abc", "-1"}, {"A", "a", "-1"}, {"a//b", "a/b", "-1"}, {"\xC3\xA9", "z", "1"}}},
        // The prefix only from 260 characters on, counted in characters; forward slashes stay.
        {"LongPath", {{"C:\\" + x256, "C:\\" + x256}, {"C:/" + x257, "\\\\?\\C:/" + x257}, {e259, e259}}},
        {"LongPath", {{"\\\\?\\" + x257, "\\\\?\\" + x257}, {e259 + "\xC3\xA9", "\\\\?\\" + e259 + "\xC3\xA9"}}},
    };
    // clang-format on
    for (const auto& [name, cases] : lines)
        for (const auto& c : cases) {
            const std::string b = c.size() > 2 ? c[1] : "";
            EXPECT_EQ(calls.at(name)(ZORString(c[0]), ZORString(b)), c.back())
                << name << "(\"" << c[0] << "\", \"" << b << "\")";
        }
    // Only the OS form checks its argument (the fuzz target: the others take what they get).
    ZORSimUttAssertDisableExcReport();
    EXPECT_THROW(P::FixPathForOS(ZORString("a\xFF")), ZORSimExcBadStringArgument);
}

// What the reference matcher of the fuzz target cannot tell: case beyond its
// alphabet, bytes that are no UTF-8, long names, and the plain characters.
TEST(Wildcard, MatchesAsTheWindowsFindCallsDo) {
    const std::string a200(200, 'a'), x300(300, 'x');
    // clang-format off
    const std::tuple<std::string, std::vector<std::string>, std::vector<std::string>> rows[] = {
        // pattern, names it lists, names it does not.
        // Case beyond ASCII, a character against a character, no accent
        // stripping (ŁÓDŹ łódź, ЖУК жук, ÿ Ÿ; × ÷ have no case, the Kelvin
        // sign is no K, ß no SS).
        {"*\xC5\x81\xC3\x93\x44\xC5\xB9*", {"\xC5\x82\xC3\xB3\x64\xC5\xBA"}, {}},
        {"\xD0\x96\xD0\xA3\xD0\x9A.*", {"\xD0\xB6\xD1\x83\xD0\xBA.log"}, {}},
        {"\xC3\xBF", {"\xC5\xB8"}, {}}, {"\xC3\x97", {}, {"\xC3\xB7"}}, {"k", {"K"}, {"\xE2\x84\xAA"}},
        {"stra\xC3\x9F\x65", {}, {"STRASSE"}}, {"\xC3\xA9", {}, {"e", "\xC3"}},
        // The rules in brief: `*` takes any run, `?` no dot, a dot before a
        // wildcard also the end, trailing dots dropped, a lone star before a
        // dot not the last dot.
        {"a?.txt", {"a.txt", "ab.txt"}, {"abc.txt"}}, {"name.*", {"name", "name."}, {"namex"}},
        {"*.", {"Makefile"}, {"a.txt"}}, {"*.?", {"abc.d", "abc"}, {"abc.de", ".ab"}},
        {"*.??", {"a.b.cd"}, {"10.txt"}}, {"*.t*", {"a.txt.bak"}, {}}, {"*1.*", {"a1.b.c"}, {}},
        // Everything else is plain, and only long names count; bytes that are
        // no UTF-8 stand for themselves.
        {"[ab]", {"[AB]"}, {"a"}}, {"~!;=+'^& {1}", {"~!;=+'^& {1}"}, {}}, {"PAGE~1.HTM", {}, {"page.html"}},
        {"a\xFF", {"a\xFF"}, {"a\xFE"}}, {"*\xC3", {"x\xC3"}, {}},
        // Long patterns and names need no special treatment.
        {std::string(150, '?') + "*" + std::string(150, '?'), {x300}, {}}, {std::string(301, '?') + "y", {}, {x300}},
        {"*a*a*a*a*a*a*a*a*b", {a200 + "b"}, {a200}}};
    // clang-format on
    for (const auto& [pattern, listed, unlisted] : rows) {
        for (const std::string& name : listed)
            EXPECT_TRUE(ZORSimUttWildcard::Match(pattern, name)) << '"' << pattern << "\", \"" << name << '"';
        for (const std::string& name : unlisted)
            EXPECT_FALSE(ZORSimUttWildcard::Match(pattern, name))
                << '"' << pattern << "\", \"" << name << '"';
    }
    EXPECT_TRUE(ZORSimUttWildcard::Pattern("a.b").IsLiteral());
    EXPECT_FALSE(ZORSimUttWildcard::Pattern("a.*").IsLiteral());
}

} // namespace
