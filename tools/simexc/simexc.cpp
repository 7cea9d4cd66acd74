// simexc: explains the exception catalogue to whoever reads a log. Looks a
// class up by code or name, finds the classes whose message could have
// produced a line of a report, and lists or exports the whole catalogue.
#include "SimExcMatch.h"
#include "ZORSimExcRegistry.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::string_view kClassPrefix = "ZORSimExc";
// Longer than any message with its values; keeps a stray paste from taking long.
constexpr std::size_t kMaxMatchText = 64 * 1024;
// Matches listed after --match; the weakest ones say little.
constexpr std::size_t kMaxListed = 20;
constexpr int kMaxEchoedLines = 8;
constexpr std::size_t kMaxEchoedWidth = 160;

enum Status { kFound = 0, kNotFound = 1, kBadUsage = 2 };

const char kUsage[] = "usage: simexc CODE|NAME...\n"
                      "       simexc --match TEXT...\n"
                      "       simexc --match -\n"
                      "       simexc --list | --json | --help\n";

const char kHelp[] = R"(Explains the exception classes of the SIM container library.

  simexc CODE          every class with that code (two classes share 1013, and
                       two share 1836): name, code, bases, fields with their
                       getters and types, and the message format
  simexc NAME          the same for a class name, with or without the
                       ZORSimExc prefix, in any case (NoSuchFile, nosuchfile)
  simexc --match TEXT  the classes whose message could have produced TEXT,
                       best first, and the details of the best one
  simexc --match -     the same, reading TEXT from standard input
  simexc --list        one line per class: code, name, message format
  simexc --json        the whole catalogue as JSON
  simexc --help        this text

Several CODE and NAME arguments may be given. The words after --match form
one TEXT, joined by spaces.

How --match reads TEXT:
  - TEXT may be copied from a report as it stands: the banner lines
    ("!!! EXCEPTION:"), the "!!!" prefix of the message line and the
    traceback after the message are ignored.
  - TEXT must be whole lines of a message: all of it, or one or more complete
    consecutive lines of a message that spans several lines. Part of a line
    does not match.
  - Every placeholder that receives a value (%s, %d, %lld, %5.2f, ...) matches
    any text within one line: a value is taken to hold no line break, or a
    line of TEXT would fit every format with a value at a line end. Blanks at
    the ends of lines are ignored and a run of blanks counts as one space;
    letter case must agree.
  - Classes are ranked by how many characters of their fixed text the TEXT
    matched (blanks not counted), then by how little fixed text is left over,
    then by catalogue order; the first 20 are listed and the best explained.
    A match that covers no fixed text at all is not shown: a format such as
    "%s" could have produced anything.

Exit status: 0 when something was found, 1 for an unknown code or name or
when nothing matches, 2 for wrong usage.
)";

int Usage(const char* problem) {
    if (problem != nullptr)
        std::fprintf(stderr, "simexc: %s\n", problem);
    std::fputs(kUsage, stderr);
    std::fputs("Try 'simexc --help' for more.\n", stderr);
    return kBadUsage;
}

// ---- text forms -------------------------------------------------------------

// Text in double quotes with quotes, backslashes and control characters
// escaped: as C source writes it ("\x1b"), so that line ends and trailing
// blanks of a format show, or as JSON writes it ("\u001b").
std::string QuotedAs(const char* text, bool json) {
    std::string out = "\"";
    for (const char* p = text != nullptr ? text : ""; *p != '\0'; ++p) {
        const unsigned char c = static_cast<unsigned char>(*p);
        switch (c) {
        case '\n':
            out += "\\n";
            break;
        case '\t':
            out += "\\t";
            break;
        case '\r':
            out += "\\r";
            break;
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        default:
            if (c < 0x20 || (!json && c == 0x7f)) {
                char escape[8];
                std::snprintf(escape, sizeof escape, json ? "\\u%04x" : "\\x%02x", c);
                out += escape;
            } else {
                out.push_back(static_cast<char>(c));
            }
        }
    }
    return out + "\"";
}

std::string Quoted(const char* text) {
    return QuotedAs(text, false);
}
std::string Json(const char* text) {
    return QuotedAs(text, true);
}

std::string Lower(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

std::string Ordinal(int n) {
    const char* suffix = "th";
    if (n % 100 < 11 || n % 100 > 13) {
        if (n % 10 == 1)
            suffix = "st";
        else if (n % 10 == 2)
            suffix = "nd";
        else if (n % 10 == 3)
            suffix = "rd";
    }
    return std::to_string(n) + suffix;
}

// ---- the catalogue ----------------------------------------------------------

std::vector<const ZORSimExcClassInfo*> AllClasses() {
    std::vector<const ZORSimExcClassInfo*> all;
    for (int i = 0; i < ZORSimExcRegistry::Count(); ++i)
        all.push_back(&ZORSimExcRegistry::At(i));
    return all;
}

// The direct base, its base and so on, up to the first class outside the
// catalogue (ZORBasException).
std::vector<std::string> BaseChain(const ZORSimExcClassInfo& info) {
    std::vector<std::string> chain{info.base};
    // The bound only guards against a cycle in a broken table.
    for (int depth = 0; depth < 32; ++depth) {
        const ZORSimExcClassInfo* base = ZORSimExcRegistry::FindByName(chain.back().c_str());
        if (base == nullptr)
            break;
        chain.push_back(base->base);
    }
    return chain;
}

std::string Describe(const ZORSimExcFieldInfo& field) {
    std::string kind = ZORSimExcRegistry::KindName(field.kind);
    if (field.kind == ZORSimExcFieldKind::String)
        return kind + " of at most " + std::to_string(field.capacity - 1) + " characters";
    if (field.kind == ZORSimExcFieldKind::TextPointer)
        return kind + ", kept without copying";
    return kind;
}

void Explain(const ZORSimExcClassInfo& info) {
    const std::vector<simexc::Placeholder> placeholders = simexc::FindPlaceholders(info.format);
    const std::string_view format = info.format;

    std::printf("%s\n", info.name);
    std::string shared;
    for (const ZORSimExcClassInfo* other : ZORSimExcRegistry::FindByCode(info.code))
        if (other != &info)
            shared += (shared.empty() ? " (also the code of " : ", ") + std::string(other->name);
    std::printf("  code:         %d%s\n", info.code, shared.empty() ? "" : (shared + ")").c_str());
    std::printf("  block:        %s\n", info.block);

    std::string chain;
    for (const std::string& base : BaseChain(info))
        chain += (chain.empty() ? "" : " -> ") + base;
    std::printf("  derives from: %s\n", chain.c_str());
    if (info.baseArgCount > 0) {
        std::string handed;
        for (int i = 0; i < info.baseArgCount; ++i) {
            const int k = info.baseArgs[i];
            handed += (i ? ", " : "") + std::to_string(k);
            if (k >= 1 && k <= info.fieldCount)
                handed += std::string(" (") + info.fields[k - 1].getter + ")";
        }
        std::printf("                its constructor hands values %s to %s\n", handed.c_str(), info.base);
    }
    std::printf("  message:      %s\n", Quoted(info.format).c_str());

    if (info.fieldCount == 0) {
        std::printf("  fields:       none\n");
    } else {
        std::printf("  fields:       (value k fills the k-th placeholder)\n");
        std::size_t getterWidth = 0, typeWidth = 0;
        for (int i = 0; i < info.fieldCount; ++i) {
            getterWidth = std::max(getterWidth, std::strlen(info.fields[i].getter) + 2);
            typeWidth = std::max(typeWidth, std::strlen(info.fields[i].type));
        }
        for (int i = 0; i < info.fieldCount; ++i) {
            const ZORSimExcFieldInfo& field = info.fields[i];
            std::string shown = "not shown in the message";
            if (static_cast<std::size_t>(i) < placeholders.size()) {
                const simexc::Placeholder& p = placeholders[static_cast<std::size_t>(i)];
                shown = "fills the " + Ordinal(i + 1) + " placeholder, " +
                        std::string(format.substr(p.begin, p.end - p.begin));
            }
            const std::string getter = std::string(field.getter) + "()";
            std::printf("    %d  %-*s  %-*s  %s; %s\n", i + 1, static_cast<int>(getterWidth), getter.c_str(),
                        static_cast<int>(typeWidth), field.type, Describe(field).c_str(), shown.c_str());
        }
    }
    for (std::size_t i = static_cast<std::size_t>(info.fieldCount); i < placeholders.size(); ++i) {
        const simexc::Placeholder& p = placeholders[i];
        std::printf("  note:         the %s placeholder, %s, gets no value and stays as written\n",
                    Ordinal(static_cast<int>(i) + 1).c_str(),
                    std::string(format.substr(p.begin, p.end - p.begin)).c_str());
    }
}

// ---- commands ----------------------------------------------------------------

// A CODE is all digits; one too long for an int has no class either.
std::optional<int> ParseCode(const std::string& arg) {
    if (arg.empty() || !std::all_of(arg.begin(), arg.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    return arg.size() > 9 ? -1 : std::atoi(arg.c_str());
}

std::vector<const ZORSimExcClassInfo*> FindByName(const std::string& arg) {
    std::string wanted = Lower(arg);
    const std::string prefix = Lower(kClassPrefix);
    if (wanted.compare(0, prefix.size(), prefix) != 0)
        wanted = prefix + wanted;
    std::vector<const ZORSimExcClassInfo*> found;
    for (const ZORSimExcClassInfo* info : AllClasses())
        if (Lower(info->name) == wanted)
            found.push_back(info);
    return found;
}

// Class names holding `arg`, for a hint after a miss.
std::vector<std::string> Similar(const std::string& arg) {
    std::vector<std::string> similar;
    const std::string part = Lower(arg);
    if (part.size() < 3)
        return similar;
    for (const ZORSimExcClassInfo* info : AllClasses())
        if (Lower(info->name).find(part) != std::string::npos)
            similar.push_back(info->name);
    return similar;
}

int Lookup(const std::vector<std::string>& args) {
    int status = kFound;
    bool first = true;
    for (const std::string& arg : args) {
        const std::optional<int> code = ParseCode(arg);
        const std::vector<const ZORSimExcClassInfo*> found =
            code ? ZORSimExcRegistry::FindByCode(*code) : FindByName(arg);
        if (found.empty()) {
            status = kNotFound;
            if (code) {
                std::fprintf(stderr, "simexc: no class has the code %s (codes run from 1001 to 1840)\n",
                             arg.c_str());
                continue;
            }
            std::fprintf(stderr, "simexc: no class is named '%s'\n", arg.c_str());
            const std::vector<std::string> similar = Similar(arg);
            for (std::size_t i = 0; i < similar.size() && i < 10; ++i)
                std::fprintf(stderr, "%s %s\n", i == 0 ? "  perhaps:" : "          ", similar[i].c_str());
            if (similar.size() > 10)
                std::fprintf(stderr, "           ... and %zu more (simexc --list)\n", similar.size() - 10);
            std::fputs("  (to look for a message, use simexc --match TEXT)\n", stderr);
            continue;
        }
        for (const ZORSimExcClassInfo* info : found) {
            if (!first)
                std::printf("\n");
            first = false;
            Explain(*info);
        }
    }
    return status;
}

int List() {
    std::size_t width = 0;
    for (const ZORSimExcClassInfo* info : AllClasses())
        width = std::max(width, std::strlen(info->name));
    for (const ZORSimExcClassInfo* info : AllClasses())
        std::printf("%d  %-*s  %s\n", info->code, static_cast<int>(width), info->name,
                    Quoted(info->format).c_str());
    return kFound;
}

int JsonDump() {
    const std::vector<const ZORSimExcClassInfo*> all = AllClasses();
    std::printf("{\n  \"count\": %zu,\n  \"classes\": [\n", all.size());
    for (std::size_t c = 0; c < all.size(); ++c) {
        const ZORSimExcClassInfo& info = *all[c];
        std::string bases;
        for (const std::string& base : BaseChain(info))
            bases += (bases.empty() ? "" : ", ") + Json(base.c_str());
        std::string handed;
        for (int i = 0; i < info.baseArgCount; ++i)
            handed += (i ? ", " : "") + std::to_string(info.baseArgs[i]);
        std::printf("    {\"name\": %s, \"code\": %d, \"block\": %s,\n", Json(info.name).c_str(), info.code,
                    Json(info.block).c_str());
        std::printf("     \"base\": %s, \"bases\": [%s], \"baseArgs\": [%s],\n", Json(info.base).c_str(),
                    bases.c_str(), handed.c_str());
        std::printf("     \"format\": %s, \"placeholders\": %zu,\n", Json(info.format).c_str(),
                    simexc::FindPlaceholders(info.format).size());
        std::printf("     \"fields\": [");
        for (int i = 0; i < info.fieldCount; ++i) {
            const ZORSimExcFieldInfo& field = info.fields[i];
            std::printf("%s{\"getter\": %s, \"type\": %s, \"kind\": %s, \"capacity\": %d}",
                        i ? ",\n                " : "", Json(field.getter).c_str(), Json(field.type).c_str(),
                        Json(ZORSimExcRegistry::KindName(field.kind)).c_str(), field.capacity);
        }
        std::printf("]}%s\n", c + 1 < all.size() ? "," : "");
    }
    std::printf("  ]\n}\n");
    return kFound;
}

struct Candidate {
    const ZORSimExcClassInfo* info;
    int matched;  // characters of fixed text the text matched
    int leftOver; // characters of fixed text it did not
    int order;    // catalogue order
};

int MatchText(const std::string& raw) {
    const std::string text = simexc::CleanReportText(raw);
    if (text.empty())
        return Usage("TEXT holds no message to match");
    if (text.size() > kMaxMatchText)
        return Usage("TEXT is too long to be one message");

    std::vector<Candidate> candidates;
    for (int i = 0; i < ZORSimExcRegistry::Count(); ++i) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(i);
        const simexc::MessagePattern pattern(info.format, info.fieldCount);
        const std::optional<int> matched = pattern.Match(text);
        if (matched && *matched > 0)
            candidates.push_back({&info, *matched, pattern.LiteralSize() - *matched, i});
    }
    if (candidates.empty()) {
        std::fprintf(stderr, "simexc: no message of the catalogue could have produced this text:\n");
        // Echo enough of the text to see what was read, not a whole paste.
        std::size_t at = 0;
        for (int shown = 0; at < text.size() && shown < kMaxEchoedLines; ++shown) {
            const std::size_t end = std::min(text.find('\n', at), text.size());
            const std::string line = text.substr(at, std::min<std::size_t>(end - at, kMaxEchoedWidth));
            std::fprintf(stderr, "  | %s%s\n", line.c_str(), end - at > kMaxEchoedWidth ? " ..." : "");
            at = end + 1;
        }
        if (at < text.size())
            std::fprintf(stderr, "  | ...\n");
        return kNotFound;
    }
    std::stable_sort(candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
        if (a.matched != b.matched)
            return a.matched > b.matched;
        return a.leftOver < b.leftOver;
    });

    std::size_t width = 0;
    for (const Candidate& c : candidates)
        width = std::max(width, std::strlen(c.info->name));
    std::printf("%zu %s could have produced this text, best first:\n", candidates.size(),
                candidates.size() == 1 ? "class" : "classes");
    for (std::size_t i = 0; i < candidates.size() && i < kMaxListed; ++i) {
        const Candidate& c = candidates[i];
        std::printf("  %d  %-*s  %d of %d characters of fixed text matched\n", c.info->code,
                    static_cast<int>(width), c.info->name, c.matched, c.matched + c.leftOver);
    }
    if (candidates.size() > kMaxListed)
        std::printf("  ... and %zu weaker matches\n", candidates.size() - kMaxListed);
    for (const Candidate& c : candidates) {
        if (c.matched != candidates.front().matched || c.leftOver != candidates.front().leftOver)
            break;
        std::printf("\n");
        Explain(*c.info);
    }
    return kFound;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + (argc > 0 ? 1 : 0), argv + argc);
    if (args.empty())
        return Usage(nullptr);
    const std::string& command = args.front();

    if (command == "--help" || command == "-h") {
        if (args.size() != 1)
            return Usage("--help takes no argument");
        std::fputs(kUsage, stdout);
        std::fputs("\n", stdout);
        std::fputs(kHelp, stdout);
        return kFound;
    }
    if (command == "--list" || command == "--json") {
        if (args.size() != 1)
            return Usage((command + " takes no argument").c_str());
        return command == "--list" ? List() : JsonDump();
    }
    if (command == "--match") {
        if (args.size() < 2)
            return Usage("--match needs a TEXT");
        std::string text;
        if (args.size() == 2 && args[1] == "-") {
            text.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
        } else {
            for (std::size_t i = 1; i < args.size(); ++i)
                text += (i > 1 ? " " : "") + args[i];
        }
        return MatchText(text);
    }
    for (const std::string& arg : args)
        if (arg.empty() || arg.front() == '-')
            return Usage(arg.empty() ? "an empty CODE or NAME" : ("unknown option " + arg).c_str());
    return Lookup(args);
}
