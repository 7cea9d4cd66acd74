// The base library's message formatter.
//
// A placeholder is '%', then any of the flags "-+ #0", an optional width, an
// optional ".precision", an optional length modifier (hh h ll l L q j z t I64
// I32 I) and one ASCII letter. "%%" is a literal '%'; a '%' that starts no
// placeholder stays as it is. Placeholders are numbered from 1 on the left;
// value k replaces the whole k-th placeholder, rendered by its own type
// whatever the placeholder says. A placeholder without a value stays as
// written; values beyond the last placeholder are dropped.
#pragma once

#include "VEXZORBasExport.h"
#include "ZORBasStringMode.h"

#include <cstddef>
#include <cstdint>
#include <string>

// A formatted text.
class ZORBAS_API atr_String {
public:
    atr_String() = default;
    explicit atr_String(std::string text) : m_text(std::move(text)) {}
    const char* c_str() const { return m_text.c_str(); }
    std::size_t size() const { return m_text.size(); }
    const std::string& str() const { return m_text; }
    bool operator==(const atr_String& other) const { return m_text == other.m_text; }

private:
    std::string m_text;
};

// One message being translated and filled.
class ZORBAS_API atr_translate {
public:
    atr_translate(const char* format, ZORBasStringMode mode);
    ~atr_translate();
    atr_translate(const atr_translate&) = delete;
    atr_translate& operator=(const atr_translate&) = delete;

    // Number of placeholders found in the format.
    int PlaceholderCount() const { return m_count; }
    // Fills placeholder `index` (1-based) with already rendered text; an
    // index with no placeholder is ignored.
    void Set(int index, const char* text, std::size_t size);
    atr_String Result(ZORBasStringMode mode) const;

private:
    struct Slot {
        std::uint32_t begin; // offset of '%' in the format
        std::uint32_t end;   // one past the placeholder's letter
        std::uint32_t value; // offset into m_values, or npos
        std::uint32_t size;
    };
    static constexpr int kInline = 12;
    void AddSlot(std::uint32_t begin, std::uint32_t end);

    const char* m_format;
    std::size_t m_formatSize;
    bool m_hasEscapes = false; // the format holds "%%"
    int m_count = 0;
    int m_capacity = kInline;
    Slot m_inline[kInline];
    Slot* m_slots = m_inline;
    std::string m_values;
};

ZORBAS_API void atr_SubstituteFormat(atr_translate& t, int index, int value, ZORBasStringMode mode);

// End of the placeholder whose '%' is at `start` of format[0, n), or 0 when
// none starts there: '%', flags "-+ #0", width, ".precision", a length
// modifier that counts only when a letter follows, one ASCII letter. Tools
// that read formats share the formatter's own grammar through it.
ZORBAS_API std::size_t atr_PlaceholderEnd(const char* format, std::size_t n, std::size_t start);
ZORBAS_API void atr_SubstituteFormat(atr_translate& t, int index, unsigned int value, ZORBasStringMode mode);
ZORBAS_API void atr_SubstituteFormat(atr_translate& t, int index, long long value, ZORBasStringMode mode);
ZORBAS_API void atr_SubstituteFormat(atr_translate& t, int index, unsigned long long value,
                                     ZORBasStringMode mode);
ZORBAS_API void atr_SubstituteFormat(atr_translate& t, int index, float value, ZORBasStringMode mode);
ZORBAS_API void atr_SubstituteFormat(atr_translate& t, int index, double value, ZORBasStringMode mode);
// A null text is shown as "(null)".
ZORBAS_API void atr_SubstituteFormat(atr_translate& t, int index, const char* value, ZORBasStringMode mode);
// Shown as 0 or 1, as the int overload does.
inline void atr_SubstituteFormat(atr_translate& t, int index, bool value, ZORBasStringMode mode) {
    atr_SubstituteFormat(t, index, value ? 1 : 0, mode);
}
