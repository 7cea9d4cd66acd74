// The wildcard rules a Windows user expects of a file-name pattern (the
// example table runs on real files in the globbing tests).
#include "ZORSimTestSupport.h"

#include "ZORSimUttWildcard.h"

#include <string>

namespace W = ZORSimUttWildcard;

namespace {

struct Row {
    const char* pattern;
    const char* name;
    bool listed;
};

void ExpectRows(std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string("pattern \"") + row.pattern + "\", name \"" + row.name + "\"");
        EXPECT_EQ(W::Match(row.pattern, row.name), row.listed);
    }
}

TEST(ZORSimUttWildcard, CaseIsIgnoredBeyondAscii) {
    ExpectRows({
        {"\xC3\x89t\xC3\xA9.txt", "\xC3\xA9T\xC3\x89.TXT", true}, // É é
        {"*\xC5\x81\xC3\x93"
         "D\xC5\xB9*",
         "\xC5\x82\xC3\xB3\x64\xC5\xBA", true}, // ŁÓDŹ / łódź
        {"\xCE\xA3\xCE\x9F\xCE\xA6\xCE\x9F\xCE\xA3", "\xCF\x83\xCE\xBF\xCF\x86\xCE\xBF\xCF\x82",
         true},                                                               // ΣΟΦΟΣ / σοφος
        {"\xD0\x96\xD0\xA3\xD0\x9A.*", "\xD0\xB6\xD1\x83\xD0\xBA.log", true}, // ЖУК / жук
        {"\xC3\xBF", "\xC5\xB8", true},                                       // ÿ / Ÿ
        {"stra\xC3\x9F"
         "e",
         "STRASSE", false},       // one character never matches two
        {"\xC3\xA9", "e", false}, // no accent stripping
        {"?", "\xC3\xA9", true},  // ? takes a whole character
        {"??", "\xC3\xA9", true},
        {"a?c",
         "a\xE2\x82\xAC"
         "c",
         true},
    });
    EXPECT_EQ(W::FoldCase(U'\u00E9'), U'\u00C9');
    EXPECT_EQ(W::FoldCase(U'\u0101'), U'\u0100');
    EXPECT_EQ(W::FoldCase(U'\u03C2'), U'\u03A3');
    EXPECT_EQ(W::FoldCase(U'\u0451'), U'\u0401');
    EXPECT_EQ(W::FoldCase(U'\u00C9'), U'\u00C9');
    EXPECT_EQ(W::FoldCase(U'\u00D7'), U'\u00D7'); // the multiplication sign sits among letters
    EXPECT_EQ(W::FoldCase(U'\u212A'), U'\u212A'); // upper case already
}

TEST(ZORSimUttWildcard, StarTakesAnyRunDotsIncluded) {
    ExpectRows({
        {"*", "Makefile", true},
        {"*", "a.b.c", true},
        {"*", ".hidden", true},
        {"*.*", "a.b", true},
        {"*.tmp", "a.b.tmp", true}, // rule 6
        {"a*", "a", true},
        {"a*b", "ab", true},
        {"a*b", "a.x.b", true},
        {"a*b", "a.x.bc", false},
        {"**", "x", true},
        {"*a*a*a*a*a*a*a*a*b", std::string(200, 'a').c_str(), false},
        {"*a*a*a*a*a*a*a*a*b", (std::string(200, 'a') + "b").c_str(), true},
    });
}

TEST(ZORSimUttWildcard, QuestionMarkNeverTakesADot) {
    ExpectRows({
        {"?", "a", true},
        {"?", "", true}, // no name is empty, but the rule holds
        {"?", "ab", false},
        {"a?", "a", true}, // trailing ? may take nothing
        {"a??", "a", true},
        {"a?", "a.", false}, // ...but not the dot
        {"a?.txt", "a.txt", true},
        {"a?.txt", "ab.txt", true},
        {"a?.txt", "abc.txt", false},
        {"a?b", "ab", false}, // in the middle it needs a character
        {"a?b", "a.b", false},
        {"a?b", "axb", true},
        {"???", "x.y", false},
        {"???.y", "x.y", true},
        {"?.?", "x.", true}, // the dot, then nothing at the end
    });
}

TEST(ZORSimUttWildcard, DotBeforeAWildcardAlsoTakesTheEnd) {
    ExpectRows({
        {"name.*", "name", true}, // rule 4
        {"name.*", "name.txt", true},
        {"name.*", "name.", true},
        {"name.*", "namex", false},
        {"file.?", "file", true},
        {"file.?", "file.c", true},
        {"file.?", "file.cc", false},
        {"a.??", "a", true},
        {"a.b", "a", false}, // a plain dot is a plain character
        {"a.b", "a.b", true},
    });
}

TEST(ZORSimUttWildcard, TrailingDotsAreDropped) {
    ExpectRows({
        {"abc.", "abc", true}, // rule 5
        {"abc..", "abc", true},
        {"abc.", "abc.", false},
        {"*.", "Makefile", true},
        {"*.", "notes.txt", false},
        {"*.", ".profile", false},
        {"a*.", "abc", true},
        {"a*.", "a.b", false},
        {"x.*.", "x.y", true}, // the final star may take what follows the last dot
        {"x.*.", "x.y.z", false},
        {"**.", "a.b", true}, // only a lone final star stops at the dot
        {".", ".", false},
        {"..", "..", false},
    });
}

TEST(ZORSimUttWildcard, EverythingElseIsPlain) {
    ExpectRows({
        {"[ab]", "a", false},
        {"[ab]", "[AB]", true},
        {"{a,b}", "a", false},
        {"{a,b}", "{a,b}", true},
        {"~!;=+'^& 1", "~!;=+'^& 1", true},
        {"a b", "ab", false},
        {"abc", "ABC", true}, // rule 7
        {"abc", "abcd", false},
        {"*.htm", "page.html", false}, // rule 10: no short-name aliases
        {"PAGE~1.HTM", "page.html", false},
        {"", "", true},
        {"", "a", false},
    });
    EXPECT_TRUE(W::Pattern("abc").IsLiteral());
    EXPECT_TRUE(W::Pattern("a.b").IsLiteral());
    EXPECT_FALSE(W::Pattern("a?").IsLiteral());
    EXPECT_FALSE(W::Pattern("a.*").IsLiteral());
}

TEST(ZORSimUttWildcard, BytesThatAreNoUtf8StandForThemselves) {
    ExpectRows({
        {"a\xFF", "a\xFF", true},
        {"a?", "a\xFF", true},
        {"a\xFF", "a\xFE", false},
        {"*\xC3", "x\xC3", true},
        {"\xC3\xA9", "\xC3", false},
    });
}

TEST(ZORSimUttWildcard, LongPatternsNeedNoSpecialTreatment) {
    const std::string name(300, 'x');
    EXPECT_TRUE(W::Match(name, name));
    EXPECT_TRUE(W::Match(std::string(150, '?') + "*" + std::string(150, '?'), name));
    EXPECT_FALSE(W::Match(std::string(301, '?') + "y", name));
}

} // namespace
