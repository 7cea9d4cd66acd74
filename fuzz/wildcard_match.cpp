// The wildcard matcher against a slow reference that follows the rules one
// by one, by plain recursion, on short patterns and names.
#include "ZORSimUttWildcard.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace W = ZORSimUttWildcard;

namespace {

// Characters worth combining: the wildcards, dots, letters in two cases
// (ASCII, Latin-1, Greek with its final sigma), and a few plain ones.
const char* const kAlphabet[] = {"*",        "?", ".",        ".",        "a",        "A",
                                 "b",        "B", "\xC3\xA9", "\xC3\x89", "\xCF\x83", "\xCF\x82",
                                 "\xCE\xA3", "[", "~",        " ",        "1",        "\xE2\x82\xAC"};
constexpr std::size_t kAlphabetSize = sizeof kAlphabet / sizeof kAlphabet[0];

// Characters of the UTF-8 text made above (always valid).
std::u32string Decode(const std::string& s) {
    std::u32string out;
    for (std::size_t i = 0; i < s.size();) {
        const auto c = static_cast<unsigned char>(s[i]);
        if (c < 0x80) {
            out += c;
            i += 1;
        } else if (c < 0xE0) {
            out += static_cast<char32_t>(((c & 0x1F) << 6) | (s[i + 1] & 0x3F));
            i += 2;
        } else {
            out += static_cast<char32_t>(((c & 0x0F) << 12) | ((s[i + 1] & 0x3F) << 6) | (s[i + 2] & 0x3F));
            i += 3;
        }
    }
    return out;
}

struct Reference {
    std::u32string p;
    std::u32string n;
    bool finalStarStops = false;
    std::size_t lastDot = std::u32string::npos;

    Reference(std::u32string pattern, std::u32string name) : p(std::move(pattern)), n(std::move(name)) {
        // Trailing dots are dropped; a star then at the end stops at the
        // name's last dot.
        bool dropped = false;
        while (!p.empty() && p.back() == U'.') {
            p.pop_back();
            dropped = true;
        }
        finalStarStops = dropped && !p.empty() && p.back() == U'*';
        lastDot = n.rfind(U'.');
    }

    bool At(std::size_t i, std::size_t j) const {
        if (j == p.size())
            return i == n.size();
        const char32_t c = p[j];
        if (c == U'*') {
            if (At(i, j + 1))
                return true;
            const bool stops = finalStarStops && j + 1 == p.size();
            for (std::size_t k = i; k < n.size(); ++k) { // the star takes n[i..k]
                if (stops && k == lastDot)
                    return false;
                if (At(k + 1, j + 1))
                    return true;
            }
            return false;
        }
        if (c == U'?') {
            if (i < n.size() && n[i] != U'.')
                return At(i + 1, j + 1);
            return At(i, j + 1); // at a dot or the end it takes nothing
        }
        if (c == U'.' && j + 1 < p.size() && (p[j + 1] == U'*' || p[j + 1] == U'?')) {
            if (i < n.size())
                return n[i] == U'.' && At(i + 1, j + 1);
            return At(i, j + 1);
        }
        return i < n.size() && W::FoldCase(n[i]) == W::FoldCase(c) && At(i + 1, j + 1);
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Raw bytes first: anything must be taken without a crash.
    {
        const std::string raw(reinterpret_cast<const char*>(data), size);
        const std::size_t cut = raw.find('\n');
        if (cut != std::string::npos)
            W::Match(raw.substr(0, cut), raw.substr(cut + 1));
    }
    // Then pattern and name over the alphabet: byte 0xFF separates them.
    std::string pattern;
    std::string name;
    std::string* into = &pattern;
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] == 0xFF) {
            into = &name;
            continue;
        }
        *into += kAlphabet[data[i] % kAlphabetSize];
    }
    const std::u32string p = Decode(pattern);
    const std::u32string n = Decode(name);
    if (p.size() > 12 || n.size() > 14)
        return 0;
    const bool expected = Reference(p, n).At(0, 0);
    const bool actual = W::Pattern(pattern).Matches(name);
    if (actual != expected) {
        std::fprintf(stderr, "pattern \"%s\" name \"%s\": matcher %d, reference %d\n", pattern.c_str(),
                     name.c_str(), actual, expected);
        std::abort();
    }
    return 0;
}
