// Which message formats could have produced a given text: the pure part of
// simexc, kept apart from the tool so that its tests can drive it directly.
//
// A format is read with the formatter's own placeholder grammar. Every
// placeholder that receives a value becomes a gap matching any text within
// a line; one that receives none stays as written, as it does
// in the real message. Matching is linear in the text for each format: no
// backtracking, whatever the input.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace simexc {

// A placeholder as the formatter finds it: format[begin, end).
struct Placeholder {
    std::size_t begin;
    std::size_t end;
};

// The placeholders of `format`, left to right ("%%" is none).
std::vector<Placeholder> FindPlaceholders(std::string_view format);

// The message lines of `text`, as a report or a log shows them, ready for
// MessagePattern::Match: report banners and the "!!!" prefix go, the stack
// trace after the message goes, blank lines around the message go, and in
// every line runs of blanks become one space and blanks at both ends go.
std::string CleanReportText(std::string_view text);

class MessagePattern {
public:
    // `valueCount` values fill the first placeholders of `format`.
    MessagePattern(std::string_view format, int valueCount);

    // Characters of fixed text in the format, blanks and line ends not counted.
    int LiteralSize() const { return m_literalSize; }

    // For cleaned `text`: if some message of this format holds it as whole
    // lines (all of the message, or one or more complete lines of it), the
    // largest number of fixed-text characters such a match covers. Values
    // are taken to hold no line break.
    std::optional<int> Match(std::string_view text) const;

private:
    static constexpr int kGap = -1;
    bool Skippable(std::size_t position) const;

    std::vector<int> m_items; // a character (0..255) or kGap
    int m_literalSize = 0;
};

} // namespace simexc
