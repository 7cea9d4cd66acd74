// The wildcard rules a Windows user expects of a file-name pattern.
#include "ZORSimTestSupport.h"

#include "ZORSimUttWildcard.h"

#include <string>
#include <vector>

namespace W = ZORSimUttWildcard;

namespace {

TEST(ZORSimUttWildcard, MatchesAsTheWindowsFindCallsDo) {
    const std::string a200(200, 'a'), x300(300, 'x');
    const struct {
        std::string pattern;
        std::vector<std::string> listed, unlisted;
    } rows[] = {
        // Case is ignored beyond ASCII (É é, ŁÓDŹ łódź, ΣΟΦΟΣ σοφος, ЖУК жук,
        // ÿ Ÿ, ā Ā), a character against a character, and no accent stripping.
        {"\xC3\x89t\xC3\xA9.txt", {"\xC3\xA9T\xC3\x89.TXT"}, {}},
        {"*\xC5\x81\xC3\x93\x44\xC5\xB9*", {"\xC5\x82\xC3\xB3\x64\xC5\xBA"}, {}},
        {"\xCE\xA3\xCE\x9F\xCE\xA6\xCE\x9F\xCE\xA3", {"\xCF\x83\xCE\xBF\xCF\x86\xCE\xBF\xCF\x82"}, {}},
        {"\xD0\x96\xD0\xA3\xD0\x9A.*", {"\xD0\xB6\xD1\x83\xD0\xBA.log"}, {}},
        {"\xC3\xBF", {"\xC5\xB8"}, {}},
        {"\xC4\x81", {"\xC4\x80"}, {}},
        {"\xC3\x97", {}, {"\xC3\xB7"}}, // × and ÷ sit among the letters but have no case
        {"k", {"K"}, {"\xE2\x84\xAA"}}, // the Kelvin sign is no K
        {"stra\xC3\x9F\x65", {}, {"STRASSE"}},
        {"\xC3\xA9", {}, {"e", "\xC3"}},
        {"?", {"\xC3\xA9", "a", ""}, {"ab"}},
        {"??", {"\xC3\xA9"}, {}},
        {"a?c", {"a\xE2\x82\xAC\x63", "axc"}, {}},
        {"*.TXT", {"Notes.Txt"}, {}},
        // A star takes any run, dots included, and may take nothing.
        {"*", {"Makefile", "a.b.c", ".hidden"}, {}},
        {"*.*", {"a.b", "Makefile"}, {}},
        {"*.tmp", {"a.b.tmp"}, {"a.tmpx"}},
        {"a*", {"a"}, {}},
        {"a*b", {"ab", "a.x.b"}, {"a.x.bc"}},
        {"**", {"x"}, {}},
        {"*a*a*a*a*a*a*a*a*b", {a200 + "b"}, {a200}},
        // A question mark never takes a dot; at a dot or the end it takes
        // nothing, but in the middle it needs a character.
        {"a?", {"a"}, {"a."}},
        {"a??", {"a"}, {}},
        {"a?.txt", {"a.txt", "ab.txt"}, {"abc.txt"}},
        {"a?b", {"axb"}, {"ab", "a.b"}},
        {"???", {}, {"x.y"}},
        {"???.y", {"x.y"}, {}},
        {"?.?", {"x."}, {}},
        {"*.t?p", {}, {"x.tp"}},
        {"log.??.tmp", {"log.7.tmp"}, {}},
        // A dot before a wildcard also takes the end of the name.
        {"name.*", {"name", "name.txt", "name."}, {"namex"}},
        {"file.?", {"file", "file.c"}, {"file.cc"}},
        {"a.??", {"a"}, {}},
        {"a.b", {"a.b"}, {"a"}},
        // Trailing dots are dropped; a final lone star then stops at the
        // last dot.
        {"abc.", {"abc"}, {"abc."}},
        {"abc..", {"abc"}, {}},
        {"*.", {"Makefile"}, {"notes.txt", ".profile"}},
        {"a*.", {"abc"}, {"a.b"}},
        {"x.*.", {"x.y"}, {"x.y.z"}},
        {"**.", {"a.b"}, {}},
        {".", {}, {"."}},
        {"..", {}, {".."}},
        // Everything else is plain, and only long names count.
        {"[ab]", {"[AB]"}, {"a"}},
        {"{a,b}", {"{a,b}"}, {"a"}},
        {"~!;=+'^& 1", {"~!;=+'^& 1"}, {}},
        {"a b", {}, {"ab"}},
        {"abc", {"ABC"}, {"abcd"}},
        {"*.htm", {}, {"page.html"}},
        {"PAGE~1.HTM", {}, {"page.html"}},
        {"", {""}, {"a"}},
        // Bytes that are no UTF-8 stand for themselves.
        {"a\xFF", {"a\xFF"}, {"a\xFE"}},
        {"a?", {"a\xFF"}, {}},
        {"*\xC3", {"x\xC3"}, {}},
        // Long patterns need no special treatment.
        {x300, {x300}, {}},
        {std::string(150, '?') + "*" + std::string(150, '?'), {x300}, {}},
        {std::string(301, '?') + "y", {}, {x300}},
    };
    for (const auto& row : rows) {
        for (const std::string& name : row.listed)
            EXPECT_TRUE(W::Match(row.pattern, name))
                << "pattern \"" << row.pattern << "\", name \"" << name << '"';
        for (const std::string& name : row.unlisted)
            EXPECT_FALSE(W::Match(row.pattern, name))
                << "pattern \"" << row.pattern << "\", name \"" << name << '"';
    }
    EXPECT_TRUE(W::Pattern("a.b").IsLiteral());
    EXPECT_FALSE(W::Pattern("a.*").IsLiteral());
}

} // namespace
