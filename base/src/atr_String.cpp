#include "atr_String.h"

#include <charconv>
#include <cstring>
#include <limits>

namespace {

bool IsFlag(char c) {
    return c == '-' || c == '+' || c == ' ' || c == '#' || c == '0';
}
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Length modifiers in the order they are tried: the longer spelling first,
// so that "%lld" takes "ll", and a modifier is dropped again when no letter
// follows it ("%l." is the placeholder "%l").
const char* const kModifiers[] = {"hh", "h", "ll", "l", "L", "q", "j", "z", "t", "I64", "I32", "I"};

} // namespace

std::size_t atr_PlaceholderEnd(const char* f, std::size_t n, std::size_t start) {
    std::size_t j = start + 1;
    while (j < n && IsFlag(f[j]))
        ++j;
    while (j < n && IsDigit(f[j]))
        ++j;
    if (j < n && f[j] == '.') {
        ++j;
        while (j < n && IsDigit(f[j]))
            ++j;
    }
    for (const char* modifier : kModifiers) {
        const std::size_t len = std::strlen(modifier);
        if (j + len < n && std::memcmp(f + j, modifier, len) == 0 && IsLetter(f[j + len]))
            return j + len + 1;
    }
    if (j < n && IsLetter(f[j]))
        return j + 1;
    return 0;
}

namespace {

// Appends f[begin, end) with every "%%" turned into "%".
void AppendLiteral(std::string& out, const char* f, std::size_t begin, std::size_t end, bool hasEscapes) {
    if (!hasEscapes) {
        out.append(f + begin, end - begin);
        return;
    }
    for (std::size_t i = begin; i < end; ++i) {
        out.push_back(f[i]);
        if (f[i] == '%' && i + 1 < end && f[i + 1] == '%')
            ++i;
    }
}

template <class T> void SetInteger(atr_translate& t, int index, T value) {
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    t.Set(index, buffer, static_cast<std::size_t>(result.ptr - buffer));
}

void SetReal(atr_translate& t, int index, double value) {
    // Room for the widest fixed rendering of a double (309 digits) and six decimals.
    char buffer[std::numeric_limits<double>::max_exponent10 + 32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 6);
    t.Set(index, buffer, static_cast<std::size_t>(result.ptr - buffer));
}

} // namespace

atr_translate::atr_translate(const char* format, ZORBasStringMode)
    : m_format(format ? format : ""), m_formatSize(std::strlen(m_format)) {
    const char* f = m_format;
    const std::size_t n = m_formatSize;
    std::size_t i = 0;
    while (i < n) {
        const char* percent = static_cast<const char*>(std::memchr(f + i, '%', n - i));
        if (percent == nullptr)
            break;
        i = static_cast<std::size_t>(percent - f);
        if (i + 1 < n && f[i + 1] == '%') {
            m_hasEscapes = true;
            i += 2;
            continue;
        }
        const std::size_t end = atr_PlaceholderEnd(f, n, i);
        if (end == 0) {
            ++i; // a '%' that starts no placeholder stays as it is
            continue;
        }
        AddSlot(static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(end));
        i = end;
    }
}

atr_translate::~atr_translate() {
    if (m_slots != m_inline)
        delete[] m_slots;
}

void atr_translate::AddSlot(std::uint32_t begin, std::uint32_t end) {
    if (m_count == m_capacity) {
        Slot* grown = new Slot[static_cast<std::size_t>(m_capacity) * 2];
        std::memcpy(grown, m_slots, sizeof(Slot) * static_cast<std::size_t>(m_count));
        if (m_slots != m_inline)
            delete[] m_slots;
        m_slots = grown;
        m_capacity *= 2;
    }
    m_slots[m_count++] = Slot{begin, end, UINT32_MAX, 0};
}

void atr_translate::Set(int index, const char* text, std::size_t size) {
    if (index < 1 || index > m_count)
        return; // no placeholder takes this value
    Slot& slot = m_slots[index - 1];
    slot.value = static_cast<std::uint32_t>(m_values.size());
    slot.size = static_cast<std::uint32_t>(size);
    m_values.append(text, size);
}

atr_String atr_translate::Result(ZORBasStringMode) const {
    std::size_t total = m_formatSize;
    for (int k = 0; k < m_count; ++k)
        if (m_slots[k].value != UINT32_MAX)
            total = total - (m_slots[k].end - m_slots[k].begin) + m_slots[k].size;
    std::string out;
    out.reserve(total);
    std::size_t at = 0;
    for (int k = 0; k < m_count; ++k) {
        const Slot& slot = m_slots[k];
        AppendLiteral(out, m_format, at, slot.begin, m_hasEscapes);
        if (slot.value != UINT32_MAX)
            out.append(m_values, slot.value, slot.size);
        else
            out.append(m_format + slot.begin, slot.end - slot.begin);
        at = slot.end;
    }
    AppendLiteral(out, m_format, at, m_formatSize, m_hasEscapes);
    return atr_String(std::move(out));
}

void atr_SubstituteFormat(atr_translate& t, int index, int value, ZORBasStringMode) {
    SetInteger(t, index, value);
}
void atr_SubstituteFormat(atr_translate& t, int index, unsigned int value, ZORBasStringMode) {
    SetInteger(t, index, value);
}
void atr_SubstituteFormat(atr_translate& t, int index, long long value, ZORBasStringMode) {
    SetInteger(t, index, value);
}
void atr_SubstituteFormat(atr_translate& t, int index, unsigned long long value, ZORBasStringMode) {
    SetInteger(t, index, value);
}
void atr_SubstituteFormat(atr_translate& t, int index, float value, ZORBasStringMode) {
    SetReal(t, index, static_cast<double>(value));
}
void atr_SubstituteFormat(atr_translate& t, int index, double value, ZORBasStringMode) {
    SetReal(t, index, value);
}
void atr_SubstituteFormat(atr_translate& t, int index, const char* value, ZORBasStringMode) {
    if (value == nullptr)
        value = "(null)";
    t.Set(index, value, std::strlen(value));
}
