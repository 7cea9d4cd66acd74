// Wildcard matching of file names, the same on every platform.
#include "ZORSimUttWildcard.h"

#include "ZORString.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

namespace ZORSimUttWildcard {
namespace {

// Simple (one character to one character) upper-case mappings of Unicode
// 14, as runs: every `step`-th character from `first` to `last` maps to
// itself plus `delta`. Windows compares names by upper-casing both, so the
// fold is towards upper case: `ſ` matches `s`, the Kelvin sign only itself.
struct FoldRun {
    char32_t first;
    char32_t last;
    int delta;
    int step;
};
constexpr FoldRun kFoldRuns[] = {
    {0x0061, 0x007A, -32, 1},    {0x00B5, 0x00B5, 743, 1},   {0x00E0, 0x00F6, -32, 1},
    {0x00F8, 0x00FE, -32, 1},    {0x00FF, 0x00FF, 121, 1},   {0x0101, 0x012F, -1, 2},
    {0x0131, 0x0131, -232, 1},   {0x0133, 0x0137, -1, 2},    {0x013A, 0x0148, -1, 2},
    {0x014B, 0x0177, -1, 2},     {0x017A, 0x017E, -1, 2},    {0x017F, 0x017F, -300, 1},
    {0x0180, 0x0180, 195, 1},    {0x0183, 0x0185, -1, 2},    {0x0188, 0x0188, -1, 1},
    {0x018C, 0x018C, -1, 1},     {0x0192, 0x0192, -1, 1},    {0x0195, 0x0195, 97, 1},
    {0x0199, 0x0199, -1, 1},     {0x019A, 0x019A, 163, 1},   {0x019E, 0x019E, 130, 1},
    {0x01A1, 0x01A5, -1, 2},     {0x01A8, 0x01A8, -1, 1},    {0x01AD, 0x01AD, -1, 1},
    {0x01B0, 0x01B0, -1, 1},     {0x01B4, 0x01B6, -1, 2},    {0x01B9, 0x01B9, -1, 1},
    {0x01BD, 0x01BD, -1, 1},     {0x01BF, 0x01BF, 56, 1},    {0x01C5, 0x01C5, -1, 1},
    {0x01C6, 0x01C6, -2, 1},     {0x01C8, 0x01C8, -1, 1},    {0x01C9, 0x01C9, -2, 1},
    {0x01CB, 0x01CB, -1, 1},     {0x01CC, 0x01CC, -2, 1},    {0x01CE, 0x01DC, -1, 2},
    {0x01DD, 0x01DD, -79, 1},    {0x01DF, 0x01EF, -1, 2},    {0x01F2, 0x01F2, -1, 1},
    {0x01F3, 0x01F3, -2, 1},     {0x01F5, 0x01F5, -1, 1},    {0x01F9, 0x021F, -1, 2},
    {0x0223, 0x0233, -1, 2},     {0x023C, 0x023C, -1, 1},    {0x023F, 0x0240, 10815, 1},
    {0x0242, 0x0242, -1, 1},     {0x0247, 0x024F, -1, 2},    {0x0250, 0x0250, 10783, 1},
    {0x0251, 0x0251, 10780, 1},  {0x0252, 0x0252, 10782, 1}, {0x0253, 0x0253, -210, 1},
    {0x0254, 0x0254, -206, 1},   {0x0256, 0x0257, -205, 1},  {0x0259, 0x0259, -202, 1},
    {0x025B, 0x025B, -203, 1},   {0x025C, 0x025C, 42319, 1}, {0x0260, 0x0260, -205, 1},
    {0x0261, 0x0261, 42315, 1},  {0x0263, 0x0263, -207, 1},  {0x0265, 0x0265, 42280, 1},
    {0x0266, 0x0266, 42308, 1},  {0x0268, 0x0268, -209, 1},  {0x0269, 0x0269, -211, 1},
    {0x026A, 0x026A, 42308, 1},  {0x026B, 0x026B, 10743, 1}, {0x026C, 0x026C, 42305, 1},
    {0x026F, 0x026F, -211, 1},   {0x0271, 0x0271, 10749, 1}, {0x0272, 0x0272, -213, 1},
    {0x0275, 0x0275, -214, 1},   {0x027D, 0x027D, 10727, 1}, {0x0280, 0x0280, -218, 1},
    {0x0282, 0x0282, 42307, 1},  {0x0283, 0x0283, -218, 1},  {0x0287, 0x0287, 42282, 1},
    {0x0288, 0x0288, -218, 1},   {0x0289, 0x0289, -69, 1},   {0x028A, 0x028B, -217, 1},
    {0x028C, 0x028C, -71, 1},    {0x0292, 0x0292, -219, 1},  {0x029D, 0x029D, 42261, 1},
    {0x029E, 0x029E, 42258, 1},  {0x0345, 0x0345, 84, 1},    {0x0371, 0x0373, -1, 2},
    {0x0377, 0x0377, -1, 1},     {0x037B, 0x037D, 130, 1},   {0x03AC, 0x03AC, -38, 1},
    {0x03AD, 0x03AF, -37, 1},    {0x03B1, 0x03C1, -32, 1},   {0x03C2, 0x03C2, -31, 1},
    {0x03C3, 0x03CB, -32, 1},    {0x03CC, 0x03CC, -64, 1},   {0x03CD, 0x03CE, -63, 1},
    {0x03D0, 0x03D0, -62, 1},    {0x03D1, 0x03D1, -57, 1},   {0x03D5, 0x03D5, -47, 1},
    {0x03D6, 0x03D6, -54, 1},    {0x03D7, 0x03D7, -8, 1},    {0x03D9, 0x03EF, -1, 2},
    {0x03F0, 0x03F0, -86, 1},    {0x03F1, 0x03F1, -80, 1},   {0x03F2, 0x03F2, 7, 1},
    {0x03F3, 0x03F3, -116, 1},   {0x03F5, 0x03F5, -96, 1},   {0x03F8, 0x03F8, -1, 1},
    {0x03FB, 0x03FB, -1, 1},     {0x0430, 0x044F, -32, 1},   {0x0450, 0x045F, -80, 1},
    {0x0461, 0x0481, -1, 2},     {0x048B, 0x04BF, -1, 2},    {0x04C2, 0x04CE, -1, 2},
    {0x04CF, 0x04CF, -15, 1},    {0x04D1, 0x052F, -1, 2},    {0x0561, 0x0586, -48, 1},
    {0x10D0, 0x10FA, 3008, 1},   {0x10FD, 0x10FF, 3008, 1},  {0x13F8, 0x13FD, -8, 1},
    {0x1C80, 0x1C80, -6254, 1},  {0x1C81, 0x1C81, -6253, 1}, {0x1C82, 0x1C82, -6244, 1},
    {0x1C83, 0x1C84, -6242, 1},  {0x1C85, 0x1C85, -6243, 1}, {0x1C86, 0x1C86, -6236, 1},
    {0x1C87, 0x1C87, -6181, 1},  {0x1C88, 0x1C88, 35266, 1}, {0x1D79, 0x1D79, 35332, 1},
    {0x1D7D, 0x1D7D, 3814, 1},   {0x1D8E, 0x1D8E, 35384, 1}, {0x1E01, 0x1E95, -1, 2},
    {0x1E9B, 0x1E9B, -59, 1},    {0x1EA1, 0x1EFF, -1, 2},    {0x1F00, 0x1F07, 8, 1},
    {0x1F10, 0x1F15, 8, 1},      {0x1F20, 0x1F27, 8, 1},     {0x1F30, 0x1F37, 8, 1},
    {0x1F40, 0x1F45, 8, 1},      {0x1F51, 0x1F57, 8, 2},     {0x1F60, 0x1F67, 8, 1},
    {0x1F70, 0x1F71, 74, 1},     {0x1F72, 0x1F75, 86, 1},    {0x1F76, 0x1F77, 100, 1},
    {0x1F78, 0x1F79, 128, 1},    {0x1F7A, 0x1F7B, 112, 1},   {0x1F7C, 0x1F7D, 126, 1},
    {0x1F80, 0x1F87, 8, 1},      {0x1F90, 0x1F97, 8, 1},     {0x1FA0, 0x1FA7, 8, 1},
    {0x1FB0, 0x1FB1, 8, 1},      {0x1FB3, 0x1FB3, 9, 1},     {0x1FBE, 0x1FBE, -7205, 1},
    {0x1FC3, 0x1FC3, 9, 1},      {0x1FD0, 0x1FD1, 8, 1},     {0x1FE0, 0x1FE1, 8, 1},
    {0x1FE5, 0x1FE5, 7, 1},      {0x1FF3, 0x1FF3, 9, 1},     {0x214E, 0x214E, -28, 1},
    {0x2170, 0x217F, -16, 1},    {0x2184, 0x2184, -1, 1},    {0x24D0, 0x24E9, -26, 1},
    {0x2C30, 0x2C5F, -48, 1},    {0x2C61, 0x2C61, -1, 1},    {0x2C65, 0x2C65, -10795, 1},
    {0x2C66, 0x2C66, -10792, 1}, {0x2C68, 0x2C6C, -1, 2},    {0x2C73, 0x2C73, -1, 1},
    {0x2C76, 0x2C76, -1, 1},     {0x2C81, 0x2CE3, -1, 2},    {0x2CEC, 0x2CEE, -1, 2},
    {0x2CF3, 0x2CF3, -1, 1},     {0x2D00, 0x2D25, -7264, 1}, {0x2D27, 0x2D27, -7264, 1},
    {0x2D2D, 0x2D2D, -7264, 1},  {0xA641, 0xA66D, -1, 2},    {0xA681, 0xA69B, -1, 2},
    {0xA723, 0xA72F, -1, 2},     {0xA733, 0xA76F, -1, 2},    {0xA77A, 0xA77C, -1, 2},
    {0xA77F, 0xA787, -1, 2},     {0xA78C, 0xA78C, -1, 1},    {0xA791, 0xA793, -1, 2},
    {0xA794, 0xA794, 48, 1},     {0xA797, 0xA7A9, -1, 2},    {0xA7B5, 0xA7C3, -1, 2},
    {0xA7C8, 0xA7CA, -1, 2},     {0xA7D1, 0xA7D1, -1, 1},    {0xA7D7, 0xA7D9, -1, 2},
    {0xA7F6, 0xA7F6, -1, 1},     {0xAB53, 0xAB53, -928, 1},  {0xAB70, 0xABBF, -38864, 1},
    {0xFF41, 0xFF5A, -32, 1},    {0x10428, 0x1044F, -40, 1}, {0x104D8, 0x104FB, -40, 1},
    {0x10597, 0x105A1, -39, 1},  {0x105A3, 0x105B1, -39, 1}, {0x105B3, 0x105B9, -39, 1},
    {0x105BB, 0x105BC, -39, 1},  {0x10CC0, 0x10CF2, -64, 1}, {0x118C0, 0x118DF, -32, 1},
    {0x16E60, 0x16E7F, -32, 1},  {0x1E922, 0x1E943, -34, 1}};

// Bytes that are no UTF-8 become lone surrogates, which valid text never
// holds: such a byte then equals only the same byte.
constexpr char32_t kRawByte = 0xDC00;

// Decodes the character at `text[pos]`; returns its length in bytes. A byte
// that starts no well-formed character stands for itself.
std::size_t Decode(std::string_view text, std::size_t pos, char32_t& out) {
    const auto* p = reinterpret_cast<const unsigned char*>(text.data());
    if (p[pos] < 0x80) {
        out = p[pos];
        return 1;
    }
    const int length = ZORBasDecodeUTF8(p + pos, p + text.size(), out);
    if (length == 0) {
        out = kRawByte | p[pos];
        return 1;
    }
    return static_cast<std::size_t>(length);
}

constexpr char32_t FoldAscii(char32_t c) {
    return c >= U'a' && c <= U'z' ? c - (U'a' - U'A') : c;
}

// One row of the match table: which pattern positions are reachable after
// the name's first i characters. Patterns of ordinary length need no heap.
class Row {
public:
    explicit Row(std::size_t size) : m_size(size) {
        if (size > m_local.size()) {
            m_heap.resize(size);
            m_data = m_heap.data();
        }
    }
    Row(const Row&) = delete;
    Row& operator=(const Row&) = delete;
    unsigned char* data() { return m_data; }
    void Clear() { std::memset(m_data, 0, m_size); }

private:
    std::array<unsigned char, 128> m_local{};
    std::vector<unsigned char> m_heap;
    std::size_t m_size;
    unsigned char* m_data = m_local.data();
};

} // namespace

char32_t FoldCase(char32_t c) {
    if (c < 0x80)
        return FoldAscii(c);
    const auto after = std::upper_bound(std::begin(kFoldRuns), std::end(kFoldRuns), c,
                                        [](char32_t value, const FoldRun& run) { return value < run.first; });
    if (after == std::begin(kFoldRuns))
        return c;
    const FoldRun& run = *(after - 1);
    if (c > run.last || (c - run.first) % static_cast<char32_t>(run.step) != 0)
        return c;
    return static_cast<char32_t>(static_cast<int>(c) + run.delta);
}

Pattern::Pattern(std::string_view pattern) {
    std::vector<char32_t> characters;
    characters.reserve(pattern.size());
    for (std::size_t pos = 0; pos < pattern.size();) {
        char32_t c;
        pos += Decode(pattern, pos, c);
        characters.push_back(c);
    }
    // Trailing dots are dropped; a star they leave at the end may not take
    // the name's last dot.
    std::size_t end = characters.size();
    const bool droppedDots = end > 0 && characters[end - 1] == U'.';
    while (end > 0 && characters[end - 1] == U'.')
        --end;

    std::size_t starRun = 0;
    for (std::size_t k = 0; k < end; ++k) {
        const char32_t c = characters[k];
        if (c == U'*') {
            m_literal = false;
            // A run of stars takes what one star takes.
            if (starRun++ == 0)
                m_elements.push_back({Kind::Star, 0});
            continue;
        }
        // A lone star directly before a dot never takes the name's last dot:
        // `*.?` lists `abc.d` and `abc`, not `abc.de`.
        if (c == U'.' && starRun == 1)
            m_elements.back().kind = Kind::LastStar;
        starRun = 0;
        if (c == U'?') {
            m_literal = false;
            m_elements.push_back({Kind::AnyOne, 0});
        } else if (c == U'.' && k + 1 < end && (characters[k + 1] == U'*' || characters[k + 1] == U'?')) {
            m_elements.push_back({Kind::DotOrEnd, 0});
        } else {
            m_elements.push_back({Kind::Char, FoldCase(c)});
        }
    }
    // Only a lone final star stops at the last dot: in `**.` the first star
    // may take the dot itself.
    if (droppedDots && starRun == 1)
        m_elements.back().kind = Kind::LastStar;

    for (auto it = m_elements.rbegin(); it != m_elements.rend() && it->kind == Kind::Char && it->ch < 0x80;
         ++it)
        m_asciiSuffix.insert(m_asciiSuffix.begin(), static_cast<char>(it->ch));
}

// True when the name cannot end in the pattern's closing literal characters.
// Decides only on ASCII bytes; a name whose tail holds other characters
// (which may fold to ASCII, like `ſ`) is left to the full match.
bool Pattern::SuffixRulesOut(std::string_view name) const {
    const std::size_t k = m_asciiSuffix.size();
    if (k == 0)
        return false;
    if (name.size() < k)
        return true;
    for (std::size_t t = 1; t <= k; ++t) {
        const auto byte = static_cast<unsigned char>(name[name.size() - t]);
        if (byte >= 0x80)
            return false;
        if (FoldAscii(byte) != static_cast<unsigned char>(m_asciiSuffix[k - t]))
            return true;
    }
    return false;
}

bool Pattern::Matches(std::string_view name) const {
    if (SuffixRulesOut(name))
        return false;
    const std::size_t m = m_elements.size();
    const std::size_t n = name.size();
    const std::size_t lastDot = name.rfind('.');

    Row rowA(m + 1);
    Row rowB(m + 1);
    unsigned char* current = rowA.data();
    unsigned char* next = rowB.data();
    rowA.Clear();

    // Moves along the elements that can take nothing at byte `pos`.
    const auto close = [&](unsigned char* row, std::size_t pos) {
        const bool atDotOrEnd = pos == n || name[pos] == '.';
        for (std::size_t j = 0; j < m; ++j) {
            if (!row[j])
                continue;
            switch (m_elements[j].kind) {
            case Kind::Star:
            case Kind::LastStar:
                row[j + 1] = 1;
                break;
            case Kind::AnyOne:
                if (atDotOrEnd)
                    row[j + 1] = 1;
                break;
            case Kind::DotOrEnd:
                if (pos == n)
                    row[j + 1] = 1;
                break;
            case Kind::Char:
                break;
            }
        }
    };

    current[0] = 1;
    close(current, 0);
    for (std::size_t pos = 0; pos < n;) {
        char32_t c;
        const std::size_t length = Decode(name, pos, c);
        const char32_t folded = FoldCase(c);
        std::memset(next, 0, m + 1);
        bool alive = false;
        for (std::size_t j = 0; j < m; ++j) {
            if (!current[j])
                continue;
            const Element& e = m_elements[j];
            bool stay = false;
            bool step = false;
            switch (e.kind) {
            case Kind::Char:
                step = folded == e.ch;
                break;
            case Kind::Star:
                stay = true;
                break;
            case Kind::LastStar:
                stay = pos != lastDot;
                break;
            case Kind::AnyOne:
                step = c != U'.';
                break;
            case Kind::DotOrEnd:
                step = c == U'.';
                break;
            }
            if (stay || step) {
                next[stay ? j : j + 1] = 1;
                alive = true;
            }
        }
        if (!alive)
            return false;
        pos += length;
        close(next, pos);
        std::swap(current, next);
    }
    return current[m] != 0;
}

bool Match(std::string_view pattern, std::string_view name) {
    return Pattern(pattern).Matches(name);
}

} // namespace ZORSimUttWildcard
