// The path-string functions on Windows-style and POSIX-style paths, their
// odd answers included: the file classes depend on them.
#include "ZORSimTestSupport.h"

#include "ZORSimExcPoolFormat.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttFilePathParser.h"

#include <string>
#include <vector>

namespace P = ZORSimUttFilePathParser;

namespace {

enum class Fn {
    BaseName,
    BasePath,
    DirPath,
    Tail,
    Extension,
    HasExtension,
    IsAbsolute,
    Join,
    Compare,
    LongPath
};

struct Case {
    Fn fn;
    std::string a;
    std::string b; // second argument of Join and CompareFilePaths
    std::string expected;
};

std::string Text(const ZORString& s) {
    return s.c_str();
}

std::string Call(const Case& c) {
    const ZORString a(c.a);
    const ZORString b(c.b);
    switch (c.fn) {
    case Fn::BaseName:
        return Text(P::BaseName(a));
    case Fn::BasePath:
        return Text(P::BasePath(a));
    case Fn::DirPath:
        return Text(P::DirPath(a));
    case Fn::Tail:
        return Text(P::Tail(a));
    case Fn::Extension:
        return Text(P::Extension(a));
    case Fn::HasExtension:
        return P::HasExtension(a) ? "true" : "false";
    case Fn::IsAbsolute:
        return P::IsAbsolute(a) ? "true" : "false";
    case Fn::Join:
        return Text(P::Join(a, b));
    case Fn::Compare:
        return std::to_string(P::CompareFilePaths(a, b));
    case Fn::LongPath:
        return Text(P::GetLongPathNameW(a));
    }
    return "?";
}

const char* Name(Fn fn) {
    static const char* const names[] = {"BaseName",         "BasePath",        "DirPath",    "Tail",
                                        "Extension",        "HasExtension",    "IsAbsolute", "Join",
                                        "CompareFilePaths", "GetLongPathNameW"};
    return names[static_cast<int>(fn)];
}

const std::vector<Case>& Cases() {
    static const std::vector<Case> cases = {
        // Names, extensions and dots wherever they stand.
        {Fn::BaseName, "dir/file.tar.gz", "", "file.tar"},
        {Fn::BaseName, "C:\\dir\\f.txt", "", "f"},
        {Fn::BaseName, ".profile", "", ""},
        {Fn::BaseName, "dir.d/file", "", "file"},
        {Fn::BaseName, "dir\\f.txt", "", "dir\\f"}, // the tail of a relative Windows path is all of it
        {Fn::BasePath, "dir.d/file", "", "dir"},
        {Fn::BasePath, "run.3.tmp", "", "run.3"},
        {Fn::BasePath, "C:\\x.y\\z", "", "C:\\x"},
        {Fn::BasePath, "a/b", "", "a/b"},
        {Fn::Extension, "run.3.tmp", "", ".tmp"},
        {Fn::Extension, "dir.d/file", "", ""},
        {Fn::Extension, ".profile", "", ".profile"},
        {Fn::Extension, "x.", "", "."},
        {Fn::Extension, "C:\\a.b\\c", "", ""},
        {Fn::HasExtension, ".profile", "", "true"},
        {Fn::HasExtension, "dir.d/file", "", "false"},
        {Fn::HasExtension, "dir\\f.txt", "", "true"},
        {Fn::HasExtension, "C:\\d.x\\f", "", "false"},
        // Directory part: a backslash makes the path Windows-style, and then
        // both separators count.
        {Fn::DirPath, "C:\\a\\b.txt", "", "C:\\a"},
        {Fn::DirPath, "a/b\\c", "", "a/b"},
        {Fn::DirPath, "/a/b\\c", "", "/a/b"},
        {Fn::DirPath, "C:/a/b", "", "C:/a"},
        {Fn::DirPath, "a/b/c", "", "a/b"},
        {Fn::DirPath, "file", "", ""},
        {Fn::DirPath, "/x", "", ""},
        {Fn::DirPath, "", "", ""},
        // Tail: the root is taken off first; without a separator after it
        // the whole input comes back.
        {Fn::Tail, "a/b/c", "", "c"},
        {Fn::Tail, "/abs/f", "", "f"},
        {Fn::Tail, "a/", "", ""},
        {Fn::Tail, "plain", "", "plain"},
        {Fn::Tail, "C:\\dir\\f.txt", "", "f.txt"},
        {Fn::Tail, "C:/x/y", "", "y"},
        {Fn::Tail, "C:\\", "", ""},
        {Fn::Tail, "\\\\host\\share\\f.txt", "", "f.txt"},
        {Fn::Tail, "\\\\host\\share", "", "\\\\host\\share"},
        {Fn::Tail, "\\\\host", "", "\\\\host"},
        {Fn::Tail, "dir\\f.txt", "", "dir\\f.txt"},
        {Fn::Tail, "C:f.txt", "", "C:f.txt"},
        {Fn::Tail, "\\dir\\f.txt", "", "\\dir\\f.txt"},
        {Fn::Tail, "\\dir\\sub\\f.txt", "", "f.txt"},
        {Fn::Tail, "\\\xC3\xA9\\x\\y", "", "y"},
        {Fn::Tail, "a<b/c", "", "c"},
        // Absolute: two leading backslashes, a slash or a drive.
        {Fn::IsAbsolute, "\\x", "", "false"},
        {Fn::IsAbsolute, "c:x", "", "true"},
        {Fn::IsAbsolute, "Z:", "", "true"},
        {Fn::IsAbsolute, "1:x", "", "false"},
        {Fn::IsAbsolute, "\\\\h\\s", "", "true"},
        {Fn::IsAbsolute, "/a", "", "true"},
        {Fn::IsAbsolute, "a/b", "", "false"},
        {Fn::IsAbsolute, "", "", "false"},
        // Join always puts a forward slash between.
        {Fn::Join, "a/", "b", "a/b"},
        {Fn::Join, "C:\\w\\", "f", "C:\\w/f"},
        {Fn::Join, "a", "/b", "/b"},
        {Fn::Join, "a", "\\b", "\\b"},
        {Fn::Join, "a", "c:x", "c:x"},
        {Fn::Join, "h", "1:x", "h/1:x"},
        {Fn::Join, "", "b", "b"},
        {Fn::Join, "a", "", "a/"},
        {Fn::Join, "/", "x", "/x"},
        {Fn::Join, "a/\\\\", "f", "a/f"},
        {Fn::Join, "a\\/", "f", "a\\/f"}, // backslashes are stripped before slashes
        // Comparison: the separators are equal, nothing else is normalised.
        {Fn::Compare, "a/b", "a\\b", "0"},
        {Fn::Compare, "ab", "abc", "-1"},
        {Fn::Compare, "abc", "ab", "1"},
        {Fn::Compare, "", "", "0"},
        {Fn::Compare, "", "a", "-1"},
        {Fn::Compare, "a", "", "1"},
        {Fn::Compare, "A", "a", "-1"},
        {Fn::Compare, "a//b", "a/b", "-1"},
        {Fn::Compare, "a\\c", "a/b", "1"},
        {Fn::Compare, "\xC3\xA9", "z", "1"},
        // Long paths get the prefix only from 260 characters on; forward
        // slashes stay.
        {Fn::LongPath, "C:/short", "", "C:/short"},
        {Fn::LongPath, "C:\\" + std::string(256, 'x'), "", "C:\\" + std::string(256, 'x')},
        {Fn::LongPath, "C:/" + std::string(257, 'x'), "", "\\\\?\\C:/" + std::string(257, 'x')},
        {Fn::LongPath, "\\\\?\\" + std::string(300, 'x'), "", "\\\\?\\" + std::string(300, 'x')},
        {Fn::LongPath, "\\\\srv\\" + std::string(300, 'x'), "", "\\\\?\\\\\\srv\\" + std::string(300, 'x')},
    };
    return cases;
}

TEST(ZORSimUttFilePathParser, AnswersOnBothPathStyles) {
    for (const Case& c : Cases()) {
        SCOPED_TRACE(std::string(Name(c.fn)) + "(\"" + c.a + "\", \"" + c.b + "\")");
        EXPECT_EQ(Call(c), c.expected);
    }
}

TEST(ZORSimUttFilePathParser, LongPathsAreCountedInCharacters) {
    std::string e259;
    for (int i = 0; i < 259; ++i)
        e259 += "\xC3\xA9";
    EXPECT_EQ(Text(P::GetLongPathNameW(ZORString(e259))), e259);
    const std::string e260 = e259 + "\xC3\xA9";
    EXPECT_EQ(Text(P::GetLongPathNameW(ZORString(e260))), "\\\\?\\" + e260);
}

TEST(ZORSimUttFilePathParser, FixPathForOSGivesTheFormOfThisOS) {
    const std::string longPath = "C:\\" + std::string(300, 'x') + "/f";
#if defined(_WIN32)
    EXPECT_EQ(Text(P::FixPathForOS(ZORString("a/b/c.txt"))), "a\\b\\c.txt");
    EXPECT_EQ(Text(P::FixPathForOS(ZORString("a\\b"))), "a\\b");
    EXPECT_EQ(Text(P::FixPathForOS(ZORString(longPath))), "\\\\?\\C:\\" + std::string(300, 'x') + "\\f");
#else
    EXPECT_EQ(Text(P::FixPathForOS(ZORString("a\\b\\c.txt"))), "a/b/c.txt");
    EXPECT_EQ(Text(P::FixPathForOS(ZORString("a/b"))), "a/b");
    EXPECT_EQ(Text(P::FixPathForOS(ZORString("\\\\host\\share"))), "//host/share");
    EXPECT_EQ(Text(P::FixPathForOS(ZORString(longPath))), "C:/" + std::string(300, 'x') + "/f");
#endif
    EXPECT_EQ(Text(P::FixPathForOS(ZORString(""))), "");
}

TEST(ZORSimUttFilePathParser, FixPathForOSRefusesABadString) {
    ZORSimUttAssertDisableExcReport();
    EXPECT_THROW(P::FixPathForOS(ZORString("a\xFF")), ZORSimExcBadStringArgument);
    // The other functions are pure string functions and take what they get.
    EXPECT_NO_THROW(P::Tail(ZORString("a/\xFF")));
    EXPECT_EQ(P::CompareFilePaths(ZORString("a\\\xFF"), ZORString("a/\xFF")), 0);
}

} // namespace
