// The wildcard matcher against a slow reference that follows the rules one
// by one, by plain recursion, on short patterns and names.
#include "FuzzCheck.h"
#include "ZORSimUttWildcard.h"

#include <cstdint>
#include <string>

namespace W = ZORSimUttWildcard;

namespace {

// Characters worth combining: the wildcards, dots, letters in two cases
// (ASCII, Latin-1, Greek with its final sigma), and a few plain ones; each
// as UTF-8 and as the character.
// clang-format off
const std::pair<const char*, char32_t> kAlphabet[] = {
    {"*", U'*'}, {"?", U'?'}, {".", U'.'}, {".", U'.'}, {"a", U'a'}, {"A", U'A'}, {"b", U'b'}, {"B", U'B'},
    {"\xC3\xA9", U'\u00E9'}, {"\xC3\x89", U'\u00C9'}, {"\xCF\x83", U'\u03C3'}, {"\xCF\x82", U'\u03C2'},
    {"\xCE\xA3", U'\u03A3'}, {"[", U'['}, {"~", U'~'}, {" ", U' '}, {"1", U'1'}, {"\xE2\x82\xAC", U'\u20AC'}};
// clang-format on

struct Reference {
    std::u32string p, n;
    bool dropped = false;

    Reference(std::u32string pattern, std::u32string name) : p(std::move(pattern)), n(std::move(name)) {
        while (!p.empty() && p.back() == U'.') // trailing dots are dropped
            p.pop_back(), dropped = true;
    }
    // A lone star directly before a dot, or left at the end by dropped dots,
    // may not take the name's last dot.
    bool Stops(std::size_t j) const {
        return (j == 0 || p[j - 1] != U'*') && (j + 1 == p.size() ? dropped : p[j + 1] == U'.');
    }
    bool At(std::size_t i, std::size_t j) const {
        if (j == p.size())
            return i == n.size();
        const char32_t c = p[j];
        if (c == U'*') {
            for (std::size_t k = i; k <= n.size(); ++k) { // the star takes n[i..k)
                if (At(k, j + 1))
                    return true;
                if (k < n.size() && Stops(j) && k == n.rfind(U'.'))
                    return false;
            }
            return false;
        }
        if (c == U'?') // never a dot; at a dot or the end it takes nothing
            return i < n.size() && n[i] != U'.' ? At(i + 1, j + 1) : At(i, j + 1);
        if (c == U'.' && j + 1 < p.size() && (p[j + 1] == U'*' || p[j + 1] == U'?'))
            return i < n.size() ? n[i] == U'.' && At(i + 1, j + 1) : At(i, j + 1); // a dot or the end
        return i < n.size() && W::FoldCase(n[i]) == W::FoldCase(c) && At(i + 1, j + 1);
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Raw bytes first, pattern and name split at a line feed: anything is taken without a crash.
    const std::string raw(reinterpret_cast<const char*>(data), size);
    if (const std::size_t cut = raw.find('\n'); cut != std::string::npos)
        W::Match(raw.substr(0, cut), raw.substr(cut + 1));
    // Then pattern and name over the alphabet; byte 0xFF separates them.
    std::string text[2];
    std::u32string chars[2];
    for (std::size_t i = 0, part = 0; i < size; ++i) {
        if (data[i] == 0xFF)
            part = 1;
        else
            text[part] += kAlphabet[data[i] % std::size(kAlphabet)].first,
                chars[part] += kAlphabet[data[i] % std::size(kAlphabet)].second;
    }
    if (chars[0].size() > 12 || chars[1].size() > 14)
        return 0;
    REQUIRE(W::Pattern(text[0]).Matches(text[1]) == Reference(chars[0], chars[1]).At(0, 0));
    return 0;
}
