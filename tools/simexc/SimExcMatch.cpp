#include "SimExcMatch.h"

#include "atr_String.h"

#include <algorithm>
#include <cstring>

namespace simexc {

namespace {

// Calls literal(c) for each character of fixed text and gap(index, begin,
// end) for each placeholder, in order.
template <class Literal, class Gap> void Scan(std::string_view f, Literal literal, Gap gap) {
    int index = 0;
    for (std::size_t i = 0; i < f.size();) {
        if (f[i] != '%') {
            literal(f[i++]);
            continue;
        }
        if (i + 1 < f.size() && f[i + 1] == '%') {
            literal('%');
            i += 2;
            continue;
        }
        const std::size_t end = atr_PlaceholderEnd(f.data(), f.size(), i);
        if (end == 0) {
            literal(f[i++]); // a '%' that starts no placeholder stays as it is
            continue;
        }
        gap(++index, i, end);
        i = end;
    }
}

// ---- blanks ------------------------------------------------------------------

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

std::string_view Trim(std::string_view s) {
    while (!s.empty() && IsBlank(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && IsBlank(s.back()))
        s.remove_suffix(1);
    return s;
}

// One line with every run of blanks made one space, none at either end.
std::string Squeeze(std::string_view line) {
    std::string out;
    for (char c : Trim(line)) {
        if (IsBlank(c)) {
            if (out.back() != ' ')
                out.push_back(' ');
        } else {
            out.push_back(c);
        }
    }
    return out;
}

bool Starts(std::string_view s, std::string_view prefix) {
    return s.substr(0, prefix.size()) == prefix;
}

// Counts toward a match's rank: fixed text other than blanks and line ends.
bool Weighs(int item) {
    return item >= 0 && item != ' ' && item != '\n';
}

} // namespace

std::vector<Placeholder> FindPlaceholders(std::string_view format) {
    std::vector<Placeholder> found;
    Scan(
        format, [](char) {},
        [&](int, std::size_t begin, std::size_t end) {
            found.push_back({begin, end});
        });
    return found;
}

std::string CleanReportText(std::string_view text) {
    std::vector<std::string> lines;
    bool sawMessage = false;
    while (!text.empty()) {
        const std::size_t eol = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, eol);
        text.remove_prefix(std::min(eol + 1, text.size()));

        std::string_view rest = Trim(line);
        if (Starts(rest, "!!!")) {
            rest = Trim(rest.substr(3));
            // The trace follows the message, and a second banner starts the
            // next report: either ends this one.
            if (Starts(rest, "TRACEBACK"))
                break;
            if (Starts(rest, "EXCEPTION:")) {
                if (sawMessage)
                    break;
                rest = Trim(rest.substr(std::strlen("EXCEPTION:")));
                if (rest.empty())
                    continue;
            } else if (Starts(rest, "- SIM Exception throw reports are disabled.") ||
                       Starts(rest, "THE API HAS DETECTED")) {
                continue;
            }
        }
        lines.push_back(Squeeze(rest));
        sawMessage = sawMessage || !lines.back().empty();
    }
    while (!lines.empty() && lines.back().empty())
        lines.pop_back();
    std::string out;
    for (const std::string& line : lines) {
        if (out.empty() && line.empty())
            continue; // blank lines before the message
        if (!out.empty())
            out.push_back('\n');
        out += line;
    }
    return out;
}

MessagePattern::MessagePattern(std::string_view format, int valueCount) {
    std::vector<int> raw;
    Scan(
        format, [&](char c) { raw.push_back(static_cast<unsigned char>(c)); },
        [&](int index, std::size_t begin, std::size_t end) {
            if (index <= valueCount) {
                raw.push_back(kGap);
            } else {
                // No value: the message shows the placeholder as written.
                for (std::size_t i = begin; i < end; ++i)
                    raw.push_back(static_cast<unsigned char>(format[i]));
            }
        });

    // Blanks as CleanReportText leaves them in a text; the message is framed
    // by line ends so that a text can only match whole lines.
    m_items.push_back('\n');
    for (int item : raw) {
        if (item != kGap && IsBlank(static_cast<char>(item)))
            item = ' ';
        const int last = m_items.back();
        if (item == ' ' && (last == ' ' || last == '\n'))
            continue;
        if (item == '\n' && last == ' ')
            m_items.pop_back();
        if (item == kGap && last == kGap)
            continue; // two gaps side by side match what one does
        m_items.push_back(item);
    }
    if (m_items.back() == ' ')
        m_items.pop_back();
    m_items.push_back('\n');
    m_literalSize = static_cast<int>(std::count_if(m_items.begin(), m_items.end(), Weighs));
}

// A gap may stand for no text at all, and so may a space beside a gap: an
// empty value leaves a blank that a trimmed text no longer shows.
bool MessagePattern::Skippable(std::size_t position) const {
    const int item = m_items[position];
    if (item == kGap)
        return true;
    return item == ' ' && ((position > 0 && m_items[position - 1] == kGap) ||
                           (position + 1 < m_items.size() && m_items[position + 1] == kGap));
}

std::optional<int> MessagePattern::Match(std::string_view text) const {
    // A set of positions in m_items, each with the best rank of a way to get
    // there, advanced one character at a time: linear in the text, no
    // backtracking. The match may start and end anywhere in the message; the
    // line ends that frame the text make it start and end at whole lines.
    const std::size_t size = m_items.size();
    std::vector<int> best(size + 1, -1), nextBest(size + 1, -1);
    std::vector<std::size_t> active, next;

    const auto reach = [&](std::vector<int>& scores, std::vector<std::size_t>& set, std::size_t position,
                           int score) {
        if (scores[position] >= score)
            return;
        if (scores[position] < 0)
            set.push_back(position);
        scores[position] = score;
        // Follow what may stand for nothing; a better score is passed on again.
        while (position < size && Skippable(position) && scores[position + 1] < score) {
            if (scores[position + 1] < 0)
                set.push_back(position + 1);
            scores[++position] = score;
        }
    };

    for (std::size_t position = 0; position <= size; ++position)
        reach(best, active, position, 0);

    const std::size_t length = text.size() + 2;
    for (std::size_t i = 0; i < length && !active.empty(); ++i) {
        const int c = (i == 0 || i + 1 == length) ? '\n' : static_cast<unsigned char>(text[i - 1]);
        for (std::size_t position : active) {
            if (position == size)
                continue;
            const int item = m_items[position];
            const int score = best[position];
            if (item == kGap && c != '\n')
                reach(nextBest, next, position, score);
            else if (item == c)
                reach(nextBest, next, position + 1, score + (Weighs(item) ? 1 : 0));
        }
        for (std::size_t position : active)
            best[position] = -1;
        active.swap(next);
        best.swap(nextBest);
        next.clear();
    }
    if (active.empty())
        return std::nullopt;
    int top = 0;
    for (std::size_t position : active)
        top = std::max(top, best[position]);
    return top;
}

} // namespace simexc
