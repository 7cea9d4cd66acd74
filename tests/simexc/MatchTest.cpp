// The matching logic of simexc, driven directly: it must read formats as the
// formatter does, and find every catalogue message it is shown, whole or a
// line at a time.
#include "SimExcMatch.h"
#include "ZORSimExcRegistry.h"
#include "ZORSimExceptions.h"
#include "atr_String.h"

#include <expat.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <string>
#include <vector>

namespace {

using simexc::CleanReportText;
using simexc::MessagePattern;

// The formatter's own result for `format` with `count` values "<1>", "<2>"...
std::string Formatted(const char* format, int count) {
    atr_translate translation(format, ZORBasStringMode(false));
    for (int k = 1; k <= count; ++k)
        atr_SubstituteFormat(translation, k, ("<" + std::to_string(k) + ">").c_str(),
                             ZORBasStringMode(false));
    return translation.Result(ZORBasStringMode(false)).str();
}

TEST(SimexcMatcherPlaceholders, ReadAsTheFormatterReadsThem) {
    // Every form of placeholder, escapes and stray '%': what the formatter
    // fills must be exactly what the pattern leaves open.
    const char* const formats[] = {"%s",
                                   "a %d b %u c %lld d %llu",
                                   "%5.2f|%-+ #012.3hhd|%I64d|%I32u|%Iu|%zu|%jd|%td|%qd|%Lf",
                                   "100%% done, %s%%",
                                   "%%%s%%%%",
                                   "%l. and %h-%s",
                                   "% %%d %5%% %s",
                                   "trailing %",
                                   "%%",
                                   "%s%s%s",
                                   "x%.d%.5s%0d%#x%+i"};
    for (const char* format : formats) {
        SCOPED_TRACE(format);
        const int count = static_cast<int>(simexc::FindPlaceholders(format).size());
        EXPECT_EQ(count, atr_translate(format, ZORBasStringMode(false)).PlaceholderCount());
        for (const int values : {count, count > 0 ? count - 1 : 0}) {
            const MessagePattern pattern(format, values);
            const std::string message = Formatted(format, values);
            EXPECT_EQ(pattern.Match(CleanReportText(message)), pattern.LiteralSize()) << message;
        }
    }
    EXPECT_EQ(simexc::FindPlaceholders("%lld").front().end, 4u);
    EXPECT_EQ(simexc::FindPlaceholders("ab %I64d").front().begin, 3u);

    // One value for two placeholders: the second shows as "%d", fixed text.
    const MessagePattern pattern("a %s b %d", 1);
    EXPECT_EQ(pattern.LiteralSize(), 4); // "a", "b", "%d"
    EXPECT_EQ(pattern.Match("a x b %d"), 4);
    EXPECT_FALSE(pattern.Match("a x b 7"));
}

TEST(SimexcMatcherCleanText, DropsReportFrame) {
    EXPECT_EQ(CleanReportText("!!!   No such file: /data/run.1.tmp"), "No such file: /data/run.1.tmp");
    EXPECT_EQ(CleanReportText("!!! EXCEPTION: No such file: x"), "No such file: x");
    EXPECT_EQ(CleanReportText("!!! - SIM Exception throw reports are disabled.\n"
                              "!!! EXCEPTION:\r\n!!!   first\r\n second line\n\n"
                              "!!! TRACEBACK:\n!!!   Frame in f.cpp:3\n"),
              "first\nsecond line");
    // Banner-only reports follow each other directly: the first one is taken.
    EXPECT_EQ(CleanReportText("!!! EXCEPTION:\n!!!   one\n!!! EXCEPTION:\n!!!   two\n"), "one");
    EXPECT_EQ(CleanReportText("\n\n  a \t  b  \n\n  c\n\n"), "a b\n\nc");
    EXPECT_EQ(CleanReportText("!!! EXCEPTION:\n!!! TRACEBACK:\n"), "");
}

TEST(SimexcMatcher, WholeLinesOnlyRankedByFixedTextCovered) {
    const MessagePattern single("No such file: %s", 1);
    EXPECT_EQ(single.Match("No such file: /x"), 11);
    EXPECT_FALSE(single.Match("such file: /x"));
    EXPECT_FALSE(single.Match("No such file"));
    EXPECT_FALSE(single.Match("No such file: /x\nmore"));
    EXPECT_FALSE(single.Match("no such file: /x")) << "letter case must agree";
    EXPECT_EQ(single.Match("No such file:"), 11) << "an empty value leaves a blank the text lost";

    const MessagePattern multi("Head %d.\n At %s in the XML stream.\n tail\n", 2);
    EXPECT_EQ(multi.LiteralSize(), 26);
    EXPECT_EQ(multi.Match("Head 3.\nAt line 1 in the XML stream.\ntail"), 26);
    EXPECT_EQ(multi.Match("At line 1 in the XML stream."), 17);
    EXPECT_EQ(multi.Match("At x in the XML stream.\ntail"), 21);
    EXPECT_EQ(multi.Match("tail"), 4);
    EXPECT_FALSE(multi.Match("Head 3.\ntail")) << "lines must be consecutive";
    EXPECT_FALSE(multi.Match("in the XML stream."));
    // A value holds no line break, so a line cannot hide in one.
    EXPECT_FALSE(multi.Match("At a\nb in the XML stream."));

    // Gaps can also take the fixed text; the best reading counts it as fixed.
    const MessagePattern pattern("%s: %s: end", 2);
    EXPECT_EQ(pattern.Match("a: b: c: end"), 5);
    EXPECT_EQ(MessagePattern("%s", 1).Match("anything at all"), 0);
    // Long text against many gaps stays linear: no backtracking blow-up.
    const std::string text(60000, 'a');
    EXPECT_FALSE(MessagePattern("%s a %s a %s a %s a %s a %s b", 6).Match(text));
    EXPECT_EQ(MessagePattern("%s%s%s%s%s%s%sa", 7).Match(text), 1);
}

// A value of each kind whose text holds no line break.
ZORSimExcValue ValueFor(const ZORSimExcFieldInfo& field, int i, XML_Parser parser) {
    ZORSimExcValue v;
    v.integer = 40 + i;
    v.unsignedInteger = 4000000000U + static_cast<unsigned>(i);
    v.real = 2.5 + i;
    v.parser = parser;
    // Blanks, '%' and a placeholder-like "%d" must all pass through a gap.
    v.text = "v" + std::to_string(i) + "  %d 100%";
    if (field.kind == ZORSimExcFieldKind::String)
        v.text.resize(static_cast<std::size_t>(field.capacity) + 3, 'x');
    if (field.kind == ZORSimExcFieldKind::SystemError || field.kind == ZORSimExcFieldKind::SerSystemError)
        v.integer = ENOENT;
    return v;
}

// The property that makes --match useful: a report of any catalogue class
// leads back to that class, ranked first, and so does each line of a
// message that spans lines.
TEST(SimexcMatcher, EveryCatalogueMessageLeadsToItsClass) {
    XML_Parser parser = XML_ParserCreate(nullptr);
    const char broken[] = "<a>\n<b></a>";
    ASSERT_EQ(XML_Parse(parser, broken, sizeof broken - 1, 1), XML_STATUS_ERROR);

    std::vector<MessagePattern> patterns;
    for (int c = 0; c < ZORSimExcRegistry::Count(); ++c)
        patterns.emplace_back(ZORSimExcRegistry::At(c).format, ZORSimExcRegistry::At(c).fieldCount);

    int multiLine = 0;
    for (int c = 0; c < ZORSimExcRegistry::Count(); ++c) {
        const ZORSimExcClassInfo& info = ZORSimExcRegistry::At(c);
        SCOPED_TRACE(info.name);
        std::vector<ZORSimExcValue> values;
        for (int f = 0; f < info.fieldCount; ++f)
            values.push_back(ValueFor(info.fields[f], f, parser));
        const std::unique_ptr<ZORBasException> instance(info.create(values.data()));
        const std::string message = instance->AsString(ZORBasStringMode(false)).str();
        const std::string report = "!!! EXCEPTION:\n!!!   " + message + "\n!!! TRACEBACK:\n!!!   main\n";

        const std::string text = CleanReportText(report);
        const std::optional<int> own = patterns[static_cast<std::size_t>(c)].Match(text);
        ASSERT_TRUE(own) << message;
        EXPECT_EQ(*own, patterns[static_cast<std::size_t>(c)].LiteralSize()) << message;
        for (const MessagePattern& other : patterns)
            EXPECT_LE(other.Match(text).value_or(0), *own) << message;

        const std::string lines = CleanReportText(message);
        if (lines.find('\n') == std::string::npos)
            continue;
        ++multiLine;
        for (std::size_t at = 0; at < lines.size();) {
            const std::size_t end = std::min(lines.find('\n', at), lines.size());
            const std::string line = lines.substr(at, end - at);
            EXPECT_TRUE(patterns[static_cast<std::size_t>(c)].Match(line)) << line;
            at = end + 1;
        }
    }
    EXPECT_GT(multiLine, 5);
    XML_ParserFree(parser);
}

} // namespace
