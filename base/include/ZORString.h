// Strings of the base library: UTF-8 inside, measured in characters (ZORChar,
// one Unicode code point). Text that is not valid UTF-8 gives the BAD state,
// which every entry point of the SIM library rejects.
#pragma once

#include "VEXZORBasExport.h"

#include <cstddef>
#include <memory>
#include <string>

using ZORChar = char32_t;

// Copy-on-write byte string: copies share one buffer until one of them writes.
class ZORBAS_API cow_String {
public:
    cow_String();
    cow_String(const char* bytes);
    cow_String(const char* bytes, std::size_t size);
    cow_String(const std::string& bytes);

    const char* c_str() const;
    std::size_t size() const;
    bool empty() const { return size() == 0; }
    const std::string& str() const;

    // Unshares the buffer and gives write access.
    std::string& Mutable();
    // True when this and other use the same buffer (for tests of the sharing).
    bool SharesBufferWith(const cow_String& other) const;

    bool operator==(const cow_String& other) const { return str() == other.str(); }

private:
    std::shared_ptr<const std::string> m_data;
};

class ZORBAS_API ZORString {
public:
    ZORString();
    // UTF-8 text; invalid UTF-8 gives the BAD state. A null pointer gives "".
    ZORString(const char* utf8);
    ZORString(const std::string& utf8);

    static ZORString BuildFromUTF8(const char* utf8);
    static ZORString BuildFromUTF8(const char* utf8, std::size_t bytes);
    // Wide text: UTF-16 where wchar_t has 16 bits, UTF-32 otherwise.
    // Unpaired surrogates and values beyond U+10FFFF give the BAD state.
    static ZORString BuildFromWChar(const wchar_t* text);
    // Narrow text in the codeset of the process locale; the C/POSIX locale
    // counts as UTF-8. Text that does not decode raises ZORBasToUTF8Exception.
    static ZORString BuildFromLocale(const char* text);
    // The same without the exception, for callers that report the failure
    // themselves: `decoded` is false when the text does not decode, and the
    // result is then BAD and holds the bytes as given.
    static ZORString BuildFromLocale(const char* text, bool& decoded);
    static ZORString BAD();

    bool IsBAD() const { return m_bad; }
    bool IsEmpty() const { return m_text.empty(); }
    // The UTF-8 bytes (for a BAD string, the bytes as they were given).
    const char* c_str() const { return m_text.c_str(); }
    std::size_t Bytes() const { return m_text.size(); }
    // Number of characters (code points).
    std::size_t Length() const;
    // Character at a code-point index; 0 beyond the end.
    ZORChar At(std::size_t index) const;
    std::u32string Characters() const;
    // Wide text: UTF-16 where wchar_t has 16 bits, UTF-32 otherwise. Bytes of
    // a BAD string that are no UTF-8 become U+FFFD.
    std::wstring ToWChar() const;

    // Lower-cases A-Z only; other characters are left as they are.
    ZORString ASCIIToLower() const;
    // Removes leading and trailing white space (space, tab, CR, LF, VT, FF).
    ZORString Strip() const;

    ZORString& operator+=(const ZORString& other);
    bool operator==(const ZORString& other) const;
    bool operator!=(const ZORString& other) const { return !(*this == other); }
    bool operator<(const ZORString& other) const;

private:
    cow_String m_text;
    bool m_bad = false;
};

ZORBAS_API ZORString operator+(const ZORString& a, const ZORString& b);

// Length of the well-formed UTF-8 sequence at p (1 to 4 bytes, p < end),
// storing its code point, or 0 when the bytes there are not well formed: a
// stray continuation byte, an overlong form, a surrogate, a value beyond
// U+10FFFF or a sequence cut short.
ZORBAS_API int ZORBasDecodeUTF8(const unsigned char* p, const unsigned char* end, char32_t& cp);

// A ZORString in the form the operating system takes: UTF-16 (wchar_t) on
// Windows, UTF-8 bytes elsewhere. Converting a BAD string raises
// ZORBasOsStringConversion.
class ZORBAS_API ZOROsString {
public:
#if defined(_WIN32)
    using CharType = wchar_t;
#else
    using CharType = char;
#endif
    explicit ZOROsString(const ZORString& text);
    const CharType* c_str() const {
        return m_text.c_str();
    }
    std::size_t size() const {
        return m_text.size();
    }

private:
    std::basic_string<CharType> m_text;
};
