// Path strings. Every special character here (separators, dot, colon) is
// ASCII, and UTF-8 never uses ASCII bytes inside a longer character, so the
// functions work on the bytes directly: an index found by searching for one
// of them is a character boundary, and byte order is character-code order.
#include "ZORSimUttFilePathParser.h"

#include "ZORSimBadZORString.h"
#include "ZORSimUttOS.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace ZORSimUttFilePathParser {
namespace {

constexpr std::size_t kLongPathCharacters = 260;
constexpr std::string_view kLongPathPrefix = "\\\\?\\";

enum class Style { Undecided, Windows, Posix };

std::string_view View(const ZORString& s) {
    return {s.c_str(), s.Bytes()};
}

ZORString Make(std::string_view bytes) {
    return ZORString(std::string(bytes));
}

bool HasDrivePrefix(std::string_view p) {
    if (p.size() < 2 || p[1] != ':')
        return false;
    const char lowered = p[0] >= 'A' && p[0] <= 'Z' ? static_cast<char>(p[0] - 'A' + 'a') : p[0];
    return lowered >= 'a' && lowered <= 'z';
}

Style StyleOf(std::string_view p) {
    if (p.find('\\') != std::string_view::npos)
        return Style::Windows;
    if (!p.empty() && p[0] == '/')
        return Style::Posix;
    if (HasDrivePrefix(p))
        return Style::Windows;
    for (const char c : p) {
        const auto u = static_cast<unsigned char>(c);
        if (c == '<' || c == '>' || c == '"' || c == '|' || (u >= 1 && u <= 31))
            return Style::Posix;
    }
    return Style::Undecided;
}

// Index of the last `\` or `/`, npos when there is neither.
std::size_t LastSeparator(std::string_view p) {
    const std::size_t back = p.rfind('\\');
    const std::size_t forward = p.rfind('/');
    if (back == std::string_view::npos)
        return forward;
    if (forward == std::string_view::npos)
        return back;
    return std::max(back, forward);
}

// Byte offset of the character at index `index` (the size when beyond).
std::size_t OffsetOfCharacter(std::string_view p, std::size_t index) {
    std::size_t offset = 0;
    for (std::size_t i = 0; i < index && offset < p.size(); ++i) {
        ++offset;
        while (offset < p.size() && (static_cast<unsigned char>(p[offset]) & 0xC0) == 0x80)
            ++offset;
    }
    return offset;
}

std::string_view TailOf(std::string_view p) {
    if (StyleOf(p) != Style::Windows) {
        const std::size_t slash = p.rfind('/');
        return slash == std::string_view::npos ? p : p.substr(slash + 1);
    }
    std::string_view rest;
    if (HasDrivePrefix(p)) {
        rest = p.substr(2);
    } else if (!p.empty() && p[0] != '\\') {
        // A relative Windows path has no rooted part; see below.
    } else {
        // `\\host\share\...` or `\dir\...`: the root ends at the first
        // separator from the third character on.
        const std::size_t from = OffsetOfCharacter(p, 2);
        const std::size_t back = p.find('\\', from);
        const std::size_t forward = p.find('/', from);
        const std::size_t first = std::min(back, forward);
        if (first != std::string_view::npos)
            rest = p.substr(first + 1);
    }
    const std::size_t last = LastSeparator(rest);
    // Without a separator after the root the whole path is the tail, on
    // purpose: callers rely on `dir\f.txt` and `C:f.txt` coming back whole.
    return last == std::string_view::npos ? p : rest.substr(last + 1);
}

std::string LongPathOf(std::string_view p) {
    std::string result;
    const bool isLong = OffsetOfCharacter(p, kLongPathCharacters - 1) < p.size();
    if (isLong && p.substr(0, 3) != kLongPathPrefix.substr(0, 3))
        result = kLongPathPrefix;
    result += p;
    return result;
}

} // namespace

ZORString BaseName(const ZORString& path) {
    const std::string_view tail = TailOf(View(path));
    return Make(tail.substr(0, tail.rfind('.')));
}

ZORString BasePath(const ZORString& path) {
    const std::string_view p = View(path);
    return Make(p.substr(0, p.rfind('.')));
}

ZORString DirPath(const ZORString& path) {
    const std::string_view p = View(path);
    const std::size_t last = StyleOf(p) == Style::Windows ? LastSeparator(p) : p.rfind('/');
    return last == std::string_view::npos ? ZORString() : Make(p.substr(0, last));
}

ZORString Tail(const ZORString& path) {
    return Make(TailOf(View(path)));
}

ZORString Extension(const ZORString& path) {
    const std::string_view tail = TailOf(View(path));
    const std::size_t dot = tail.rfind('.');
    return dot == std::string_view::npos ? ZORString() : Make(tail.substr(dot));
}

bool HasExtension(const ZORString& path) {
    return TailOf(View(path)).find('.') != std::string_view::npos;
}

bool IsAbsolute(const ZORString& path) {
    const std::string_view p = View(path);
    return p.substr(0, 2) == "\\\\" || (!p.empty() && p[0] == '/') || HasDrivePrefix(p);
}

ZORString Join(const ZORString& head, const ZORString& tail) {
    const std::string_view h = View(head);
    const std::string_view t = View(tail);
    if (h.empty())
        return tail;
    if (!t.empty() && (t[0] == '\\' || t[0] == '/'))
        return tail;
    if (HasDrivePrefix(t) && StyleOf(t) != Style::Posix)
        return tail;
    // Trailing backslashes first, then trailing slashes: `a\/` keeps its `\`.
    std::size_t end = h.find_last_not_of('\\');
    end = end == std::string_view::npos ? 0 : end + 1;
    end = h.substr(0, end).find_last_not_of('/');
    end = end == std::string_view::npos ? 0 : end + 1;
    std::string joined(h.substr(0, end));
    joined += '/';
    joined += t;
    return ZORString(joined);
}

int CompareFilePaths(const ZORString& a, const ZORString& b) {
    const std::string_view x = View(a);
    const std::string_view y = View(b);
    if (x.empty())
        return y.empty() ? 0 : -1;
    if (y.empty())
        return 1;
    const std::size_t common = std::min(x.size(), y.size());
    for (std::size_t i = 0; i < common; ++i) {
        const auto cx = static_cast<unsigned char>(x[i]);
        const auto cy = static_cast<unsigned char>(y[i]);
        const bool separators = (cx == '/' || cx == '\\') && (cy == '/' || cy == '\\');
        if (cx != cy && !separators)
            return cx < cy ? -1 : 1;
    }
    if (x.size() == y.size())
        return 0;
    return x.size() < y.size() ? -1 : 1;
}

ZORString FixPathForOS(const ZORString& path) {
    ZORSimBadZORString::Check(path);
    const ZORSimUttOS::PathForm& form = ZORSimUttOS::OsPathForm();
    std::string result = form.longPathPrefix ? LongPathOf(View(path)) : std::string(View(path));
    std::replace(result.begin(), result.end(), form.foreign, form.separator);
    return ZORString(result);
}

ZORString GetLongPathNameW(const ZORString& path) {
    return ZORString(LongPathOf(View(path)));
}

} // namespace ZORSimUttFilePathParser
