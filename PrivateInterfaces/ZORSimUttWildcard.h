// File-name wildcards with the rules of the Windows find functions, so that
// a pattern lists the same entries on every platform:
//  - case is ignored, beyond ASCII too (simple Unicode upper-casing);
//  - `*` takes any run of characters, dots included;
//  - `?` takes one character other than `.`; at a `.` or at the end of the
//    name it takes nothing;
//  - a `.` followed by `*` or `?` takes a `.` or the end of the name;
//  - a `*` directly before a `.` may not take the name's last dot (`*.?`
//    lists `a.b` and `ab`, not `a.bc`; `*.tmp` still lists `a.b.tmp`);
//  - trailing dots of the pattern are dropped, and a `*` left at the end by
//    that may not take the name's last dot either (`*.` lists names without
//    one);
//  - every other character stands for itself: no classes, no braces.
// No 8.3 short-name aliases take part.
#pragma once

#include "ZORSimContainersExport.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ZORSimUttWildcard {

// The character `c` stands for in a case-blind comparison.
ZORSIM_API char32_t FoldCase(char32_t c);

// A pattern compiled once and matched against many names. Matching walks a
// table of (name position, pattern position) one row at a time, so its cost
// is bounded by name length times pattern length whatever the stars.
class ZORSIM_API Pattern {
public:
    // UTF-8 text; bytes that are not UTF-8 stand for themselves.
    explicit Pattern(std::string_view pattern);

    // The name as the OS gives it, UTF-8 (other bytes stand for themselves).
    bool Matches(std::string_view name) const;
    // The pattern matches at most names equal to it but for case.
    bool IsLiteral() const { return m_literal; }

private:
    enum class Kind : std::uint8_t {
        Char,     // the folded character
        Star,     // any run
        LastStar, // any run that leaves the name's last dot alone
        AnyOne,   // `?`
        DotOrEnd, // `.` before a wildcard
    };
    struct Element {
        Kind kind;
        char32_t ch;
    };

    bool SuffixRulesOut(std::string_view name) const;

    std::vector<Element> m_elements;
    // Literal characters after the last star that are all ASCII: a name
    // must end in them (case-blind) to stand any chance.
    std::string m_asciiSuffix;
    bool m_literal = true;
};

// One-off match of a pattern against a name.
ZORSIM_API bool Match(std::string_view pattern, std::string_view name);

} // namespace ZORSimUttWildcard
