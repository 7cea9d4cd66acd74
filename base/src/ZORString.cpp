// Copy-on-write byte strings, UTF-8 strings and their OS form.
#include "ZORString.h"

#include "ZORBasException.h"
#include "ZORBasPlatform.h"

#include <cstdint>
#include <cstring>

int ZORBasDecodeUTF8(const unsigned char* p, const unsigned char* end, char32_t& cp) {
    const unsigned char b0 = p[0];
    if (b0 < 0x80) {
        cp = b0;
        return 1;
    }
    int need;
    unsigned char lo = 0x80; // allowed range of the second byte
    unsigned char hi = 0xBF;
    if (b0 >= 0xC2 && b0 <= 0xDF) {
        need = 1;
        cp = b0 & 0x1F;
    } else if (b0 >= 0xE0 && b0 <= 0xEF) {
        need = 2;
        cp = b0 & 0x0F;
        if (b0 == 0xE0)
            lo = 0xA0; // overlong below U+0800
        else if (b0 == 0xED)
            hi = 0x9F; // surrogates U+D800..U+DFFF
    } else if (b0 >= 0xF0 && b0 <= 0xF4) {
        need = 3;
        cp = b0 & 0x07;
        if (b0 == 0xF0)
            lo = 0x90; // overlong below U+10000
        else if (b0 == 0xF4)
            hi = 0x8F; // beyond U+10FFFF
    } else {
        return 0; // continuation byte, C0/C1 overlong lead, or F5..FF
    }
    if (end - p <= need)
        return 0;
    if (p[1] < lo || p[1] > hi)
        return 0;
    cp = (cp << 6) | (p[1] & 0x3F);
    for (int i = 2; i <= need; ++i) {
        if ((p[i] & 0xC0) != 0x80)
            return 0;
        cp = (cp << 6) | (p[i] & 0x3F);
    }
    return need + 1;
}

namespace {

constexpr char32_t kReplacement = 0xFFFD;

const std::string& EmptyBytes() {
    static const std::string empty;
    return empty;
}

bool IsValidUTF8(const char* text, std::size_t size) {
    const auto* p = reinterpret_cast<const unsigned char*>(text);
    const auto* end = p + size;
    while (p < end) {
        // Plain ASCII runs are the common case; skip them eight bytes at a time.
        while (end - p >= 8) {
            std::uint64_t word;
            std::memcpy(&word, p, 8);
            if (word & 0x8080808080808080ull)
                break;
            p += 8;
        }
        if (p == end)
            break;
        if (*p < 0x80) {
            ++p;
            continue;
        }
        char32_t cp;
        const int n = ZORBasDecodeUTF8(p, end, cp);
        if (n == 0)
            return false;
        p += n;
    }
    return true;
}

// Calls f(code point) for each character; bytes that are no UTF-8 come out
// one by one as U+FFFD, so a BAD string still has a length and characters.
template <class F> void ForEachChar(const std::string& bytes, F&& f) {
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    const auto* end = p + bytes.size();
    while (p < end) {
        char32_t cp;
        const int n = ZORBasDecodeUTF8(p, end, cp);
        if (n == 0) {
            f(kReplacement);
            ++p;
        } else {
            f(cp);
            p += n;
        }
    }
}

void AppendUTF8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
}

void AppendWide(std::wstring& out, char32_t cp) {
    if constexpr (sizeof(wchar_t) == 2) {
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out.push_back(static_cast<wchar_t>(0xD800 + (cp >> 10)));
            out.push_back(static_cast<wchar_t>(0xDC00 + (cp & 0x3FF)));
            return;
        }
    }
    out.push_back(static_cast<wchar_t>(cp));
}

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

} // namespace

// ---- cow_String --------------------------------------------------------------

cow_String::cow_String() = default;

cow_String::cow_String(const char* bytes) {
    if (bytes != nullptr && *bytes != '\0')
        m_data = std::make_shared<std::string>(bytes);
}

cow_String::cow_String(const char* bytes, std::size_t size) {
    if (bytes != nullptr && size > 0)
        m_data = std::make_shared<std::string>(bytes, size);
}

cow_String::cow_String(const std::string& bytes) {
    if (!bytes.empty())
        m_data = std::make_shared<std::string>(bytes);
}

const char* cow_String::c_str() const {
    return m_data ? m_data->c_str() : "";
}

std::size_t cow_String::size() const {
    return m_data ? m_data->size() : 0;
}

const std::string& cow_String::str() const {
    return m_data ? *m_data : EmptyBytes();
}

std::string& cow_String::Mutable() {
    if (!m_data)
        m_data = std::make_shared<std::string>();
    else if (m_data.use_count() > 1)
        m_data = std::make_shared<std::string>(*m_data);
    // Every buffer is made as a non-const std::string above, so writing is fine.
    return const_cast<std::string&>(*m_data);
}

bool cow_String::SharesBufferWith(const cow_String& other) const {
    return m_data && m_data == other.m_data;
}

// ---- ZORString -----------------------------------------------------------------

ZORString::ZORString() = default;

ZORString::ZORString(const char* utf8) : m_text(utf8) {
    m_bad = !IsValidUTF8(m_text.c_str(), m_text.size());
}

ZORString::ZORString(const std::string& utf8) : m_text(utf8) {
    m_bad = !IsValidUTF8(m_text.c_str(), m_text.size());
}

ZORString ZORString::BuildFromUTF8(const char* utf8) {
    return ZORString(utf8);
}

ZORString ZORString::BuildFromUTF8(const char* utf8, std::size_t bytes) {
    ZORString result;
    result.m_text = cow_String(utf8, bytes);
    result.m_bad = !IsValidUTF8(result.m_text.c_str(), result.m_text.size());
    return result;
}

ZORString ZORString::BuildFromWChar(const wchar_t* text) {
    ZORString result;
    if (text == nullptr)
        return result;
    std::string bytes;
    bool bad = false;
    for (const wchar_t* p = text; *p != L'\0'; ++p) {
        char32_t cp;
        if constexpr (sizeof(wchar_t) == 2) {
            const auto unit = static_cast<char32_t>(static_cast<std::uint16_t>(*p));
            if (unit >= 0xD800 && unit <= 0xDBFF) {
                const auto next = static_cast<char32_t>(static_cast<std::uint16_t>(p[1]));
                if (next >= 0xDC00 && next <= 0xDFFF) {
                    cp = 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00);
                    ++p;
                } else {
                    cp = unit; // unpaired high surrogate
                }
            } else {
                cp = unit;
            }
        } else {
            cp = static_cast<char32_t>(static_cast<std::uint32_t>(*p));
        }
        if (cp > 0x10FFFF) {
            bad = true;
            cp = kReplacement;
        } else if (cp >= 0xD800 && cp <= 0xDFFF) {
            // Kept in its three-byte form so the text can still be shown.
            bad = true;
        }
        AppendUTF8(bytes, cp);
    }
    result.m_text = cow_String(bytes);
    result.m_bad = bad;
    return result;
}

ZORString ZORString::BuildFromLocale(const char* text) {
    bool decoded = true;
    ZORString result = BuildFromLocale(text, decoded);
    if (!decoded)
        ZORBasToUTF8Exception(text).Throw(__FILE__, __LINE__);
    return result;
}

ZORString ZORString::BuildFromLocale(const char* text, bool& decoded) {
    decoded = true;
    ZORString result;
    if (text == nullptr)
        return result;
    std::string utf8;
    const std::size_t size = std::strlen(text);
    if (!zorbas_os::LocaleToUTF8(text, size, utf8) || !IsValidUTF8(utf8.data(), utf8.size())) {
        decoded = false;
        result.m_text = cow_String(text, size);
        result.m_bad = true;
        return result;
    }
    result.m_text = cow_String(utf8);
    return result;
}

ZORString ZORString::BAD() {
    ZORString result;
    result.m_bad = true;
    return result;
}

std::size_t ZORString::Length() const {
    const std::string& bytes = m_text.str();
    if (!m_bad) {
        // Every character has exactly one byte that is not a continuation byte.
        std::size_t count = 0;
        for (char c : bytes)
            count += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
        return count;
    }
    std::size_t count = 0;
    ForEachChar(bytes, [&](char32_t) { ++count; });
    return count;
}

ZORChar ZORString::At(std::size_t index) const {
    const auto* p = reinterpret_cast<const unsigned char*>(m_text.c_str());
    const auto* end = p + m_text.size();
    std::size_t i = 0;
    while (p < end) {
        char32_t cp;
        const int n = ZORBasDecodeUTF8(p, end, cp);
        if (i == index)
            return n == 0 ? kReplacement : cp;
        p += n == 0 ? 1 : n;
        ++i;
    }
    return 0;
}

std::u32string ZORString::Characters() const {
    std::u32string out;
    out.reserve(m_text.size());
    ForEachChar(m_text.str(), [&](char32_t cp) { out.push_back(cp); });
    return out;
}

std::wstring ZORString::ToWChar() const {
    std::wstring out;
    out.reserve(m_text.size());
    ForEachChar(m_text.str(), [&](char32_t cp) { AppendWide(out, cp); });
    return out;
}

ZORString ZORString::ASCIIToLower() const {
    ZORString result = *this;
    const std::string& bytes = m_text.str();
    std::size_t i = 0;
    while (i < bytes.size() && !(bytes[i] >= 'A' && bytes[i] <= 'Z'))
        ++i;
    if (i == bytes.size())
        return result; // nothing to change: keep sharing the buffer
    std::string& out = result.m_text.Mutable();
    for (; i < out.size(); ++i) {
        if (out[i] >= 'A' && out[i] <= 'Z')
            out[i] = static_cast<char>(out[i] - 'A' + 'a');
    }
    return result;
}

ZORString ZORString::Strip() const {
    const std::string& bytes = m_text.str();
    std::size_t first = 0;
    std::size_t last = bytes.size();
    while (first < last && IsSpace(bytes[first]))
        ++first;
    while (last > first && IsSpace(bytes[last - 1]))
        --last;
    if (first == 0 && last == bytes.size())
        return *this;
    // White space is ASCII and never part of a longer sequence, so stripping
    // cannot change whether the text is valid.
    ZORString result;
    result.m_text = cow_String(bytes.data() + first, last - first);
    result.m_bad = m_bad;
    return result;
}

ZORString& ZORString::operator+=(const ZORString& other) {
    if (other.m_text.empty()) {
        m_bad = m_bad || other.m_bad;
        return *this;
    }
    if (m_text.empty()) {
        const bool bad = m_bad || other.m_bad;
        m_text = other.m_text;
        m_bad = bad;
        return *this;
    }
    m_text.Mutable().append(other.m_text.str());
    // Two valid texts joined are valid; a BAD part keeps the whole BAD.
    m_bad = m_bad || other.m_bad;
    return *this;
}

bool ZORString::operator==(const ZORString& other) const {
    return m_bad == other.m_bad &&
           (m_text.SharesBufferWith(other.m_text) || m_text.str() == other.m_text.str());
}

bool ZORString::operator<(const ZORString& other) const {
    // Byte order of UTF-8 is code-point order.
    const int c = m_text.str().compare(other.m_text.str());
    if (c != 0)
        return c < 0;
    return !m_bad && other.m_bad;
}

ZORString operator+(const ZORString& a, const ZORString& b) {
    ZORString result = a;
    result += b;
    return result;
}

// ---- ZOROsString ---------------------------------------------------------------

namespace {
// The OS form by the character type of this platform's OS strings.
[[maybe_unused]] void AssignOsForm(std::string& out, const ZORString& text) {
    out.assign(text.c_str(), text.Bytes());
}
[[maybe_unused]] void AssignOsForm(std::wstring& out, const ZORString& text) {
    out = text.ToWChar();
}
} // namespace

ZOROsString::ZOROsString(const ZORString& text) {
    if (text.IsBAD())
        ZORBasOsStringConversion(text.c_str()).Throw(__FILE__, __LINE__);
    AssignOsForm(m_text, text);
}
