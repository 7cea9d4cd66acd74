// The message formatter's rule: which texts are placeholders, which value
// fills which, and how each type is rendered.
#include "atr_String.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <string>

namespace {

template <class... Ts> std::string Format(const char* format, Ts... values) {
    const ZORBasStringMode mode(false);
    atr_translate t(format, mode);
    int index = 0;
    (atr_SubstituteFormat(t, ++index, values, mode), ...);
    return t.Result(mode).str();
}

TEST(Formatter, EveryPlaceholderFormIsReplacedWhole) {
    for (const char* placeholder :
         {"%d",      "%s",   "%u",   "%x",  "%-5d",  "%+d",   "% d",  "%#x", "%08.3f",
          "%-+ #0d", "%12s", "%.5s", "%.s", "%hhd",  "%hd",   "%lld", "%ld", "%Lf",
          "%qd",     "%jd",  "%zu",  "%td", "%I64d", "%I32u", "%Id",  "%Q",  "%e"}) {
        const std::string format = std::string("<") + placeholder + ">";
        EXPECT_EQ(Format(format.c_str(), "v"), "<v>") << placeholder;
    }
}

TEST(Formatter, ValueIsRenderedByItsTypeWhateverTheLetterSays) {
    EXPECT_EQ(Format("%s|%x|%f|%d", 42, 255U, 7LL, "text"), "42|255|7|text");
    EXPECT_EQ(Format("%d %d", INT_MIN, UINT_MAX), "-2147483648 4294967295");
    EXPECT_EQ(Format("%d %d", LLONG_MIN, ULLONG_MAX), "-9223372036854775808 18446744073709551615");
    EXPECT_EQ(Format("%d %s", true, false), "1 0");
    EXPECT_EQ(Format("%d %s %.2f", 1.5, -0.0000004, 2.0F), "1.500000 -0.000000 2.000000");
    EXPECT_EQ(Format("%f", 1e20), "100000000000000000000.000000");
    EXPECT_EQ(Format("%f", DBL_MAX).size(), 309u + 7u);
    EXPECT_EQ(Format("%s", static_cast<const char*>(nullptr)), "(null)");
}

TEST(Formatter, WhatIsNoPlaceholderStaysAsItIs) {
    EXPECT_EQ(Format("100%% of %d", 3), "100% of 3");
    EXPECT_EQ(Format("%%d %d", 1), "%d 1");
    EXPECT_EQ(Format("50% %", 1), "50% %"); // "% %": a space flag, then no letter
    EXPECT_EQ(Format("a%", 1), "a%");
    EXPECT_EQ(Format("%5% %d", 1), "%5% 1");
    EXPECT_EQ(Format("%*d %d", 1), "%*d 1"); // '*' is not part of the rule
    EXPECT_EQ(Format("%%%d%%", 9), "%9%");
    // A length modifier needs a letter after it: "%l." is the placeholder "%l".
    EXPECT_EQ(Format("%l.", "X"), "X.");
    EXPECT_EQ(Format("%I6", "X"), "X6");
    EXPECT_EQ(Format("%hello", "X"), "Xllo");
    EXPECT_EQ(Format("%I64", "X"), "X64");
    EXPECT_EQ(Format("%lld%llx", "A", "B"), "AB");
    // Substituted text is not read again.
    EXPECT_EQ(Format("%s %s", "%s", "b"), "%s b");
    EXPECT_EQ(Format("%s", "100%%"), "100%%");
}

TEST(Formatter, ValuesGoByIndexAndMissingOnesLeaveThePlaceholder) {
    EXPECT_EQ(Format("%s and %-3.1lld", "one"), "one and %-3.1lld");
    EXPECT_EQ(Format("only %d", 1, 2, 3), "only 1");
    EXPECT_EQ(Format("%%s"), "%s");
    EXPECT_EQ(Format(nullptr, 1), "");

    const ZORBasStringMode mode(false);
    atr_translate t("%s-%s-%s", mode);
    EXPECT_EQ(t.PlaceholderCount(), 3);
    atr_SubstituteFormat(t, 3, "c", mode);
    atr_SubstituteFormat(t, 1, "a", mode);
    atr_SubstituteFormat(t, 0, "zero", mode);
    atr_SubstituteFormat(t, 4, "four", mode);
    EXPECT_EQ(t.Result(mode).str(), "a-%s-c");
    atr_SubstituteFormat(t, 1, "again", mode);
    EXPECT_EQ(t.Result(mode).str(), "again-%s-c");

    // Past the placeholders kept inline.
    std::string format, expected;
    for (int i = 1; i <= 30; ++i) {
        format += "%d,";
        expected += std::to_string(i) + ",";
    }
    atr_translate many(format.c_str(), mode);
    for (int i = 1; i <= 30; ++i)
        atr_SubstituteFormat(many, i, i, mode);
    EXPECT_EQ(many.Result(mode).str(), expected);
}

} // namespace
