// Strings of the base library where the library's tests do not reach them:
// UTF-8 validity at every boundary, wide conversion, file names, and the
// message formatter's rule beyond what the catalogue's formats use.
#include "ZORSimTestSupport.h"

#include "ZORBasException.h"
#include "ZORBasShared.h"
#include "ZORString.h"
#include "atr_String.h"

#include <cfloat>
#include <climits>
#include <cstdio>
#include <string>
#include <vector>

namespace {

TEST(BaseZORString, UTF8IsCheckedAtEveryBoundaryAndKeptAsGiven) {
    // The first and last code point of each length, and those next to the surrogates.
    for (const char* text : {"", "\x7f", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf",
                             "\xee\x80\x80", "\xef\xbf\xbf", "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf"})
        EXPECT_FALSE(ZORString(text).IsBAD()) << testing::PrintToString(text);
    // Overlong forms (also just below U+0800 and U+10000), both surrogate ends,
    // U+110000, leads beyond the range, sequences cut short or broken in the
    // middle, and a stray continuation byte.
    for (const char* text :
         {"\xc0\xaf", "\xc1\xbf", "\xe0\x80\xaf", "\xe0\x9f\xbf", "\xf0\x80\x80\xaf", "\xf0\x8f\xbf\xbf",
          "\xed\xa0\x80", "\xed\xbf\xbf", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xc3", "\xe2\x82",
          "\xf0\x9f\x98", "\xe2\x28\xa1", "a\x80", "\xff", "\xfe"}) {
        EXPECT_TRUE(ZORString(text).IsBAD()) << testing::PrintToString(text);
        EXPECT_STREQ(ZORString(text).c_str(), text); // kept as given
    }
    // Past the eight-byte ASCII skipping, at every alignment.
    for (int prefix = 0; prefix < 24; ++prefix) {
        const std::string text(static_cast<std::size_t>(prefix), 'x');
        EXPECT_FALSE(ZORString(text + "\xc3\xa9").IsBAD()) << prefix;
        EXPECT_TRUE(ZORString(text + "\xc3" + std::string(10, 'y')).IsBAD()) << prefix;
    }
}

TEST(BaseZORString, WideTextRoundTripsAndTextWithoutUnicodeFormIsBad) {
    const wchar_t* wide = L"a\u00e9\u20ac\U0001F600\U0010FFFF";
    ZORString fromWide = ZORString::BuildFromWChar(wide);
    EXPECT_STREQ(fromWide.c_str(), "a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80\xf4\x8f\xbf\xbf");
    EXPECT_EQ(fromWide.ToWChar(), std::wstring(wide)); // surrogate pairs where wchar_t is UTF-16
    const auto w = [](unsigned u) { return static_cast<wchar_t>(u); };
    std::vector<std::wstring> bad = {{L'a', w(0xD800)}, {w(0x110000)}, {w(0xFFFFFFFF)}};
    if (sizeof(wchar_t) == 2) // lone or swapped surrogates
        bad = {{L'a', w(0xD83D), L'b'}, {w(0xDE00)}, {w(0xDE00), w(0xD83D)}};
    for (const std::wstring& text : bad)
        EXPECT_TRUE(ZORString::BuildFromWChar(text.c_str()).IsBAD()) << static_cast<unsigned>(text.back());
}

// Checks before the library's own: they are not reached through it.
TEST(BaseZORString, CopiesShareUntilOneWritesAndBadTextMakesNoOSName) {
    const ZORString mixed("AB\xc3\x89");
    EXPECT_EQ(mixed.ASCIIToLower(), ZORString("ab\xc3\x89")); // only ASCII letters
    EXPECT_EQ(mixed, ZORString("AB\xc3\x89"));                // the copy was written, not the original
    cow_String a("text"), b = a;
    b.Mutable() += "!";
    EXPECT_STREQ(a.c_str(), "text");
    EXPECT_THROW(ZOROsString{ZORString("bad\xc0\xaf")}, ZORBasOsStringConversion);
    EXPECT_EQ(ZORBasFileOps::Fopen(ZORString("bad\xff"), "r"), nullptr);
}

TEST(BaseFileOps, FopenTakesUTF8Names) {
    const zorsim_test::TempDir dir;
    std::FILE* f = ZORBasFileOps::Fopen(ZORString(dir / "caf\xc3\xa9.txt"), "w");
    ASSERT_NE(f, nullptr);
    std::fclose(f);
    EXPECT_TRUE(zorsim_test::Exists(dir / "caf\xc3\xa9.txt"));
}

template <class... Ts> std::string Format(const char* format, Ts... values) {
    const ZORBasStringMode mode(false);
    atr_translate t(format, mode);
    int index = 0;
    (atr_SubstituteFormat(t, ++index, values, mode), ...);
    return t.Result(mode).str();
}

// More placeholders than are kept inline, then what is no placeholder.
TEST(Formatter, PlaceholdersAreReplacedWholeByIndexWithValuesRenderedByTheirType) {
    EXPECT_EQ(Format("<%d|%-+ #0d|%08.3f|%12s|%.s|%hhd|%hd|%lld|%Lf|%qd|%jd|%zu|%td|%I64d|%I32u|%Id|%Q>", "a",
                     "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l", "m", "n", "o", "p", "q"),
              "<a|b|c|d|e|f|g|h|i|j|k|l|m|n|o|p|q>");
    // Whatever the letter says (the catalogue's properties cover the kinds).
    EXPECT_EQ(Format("%s|%x|%d", 255U, LLONG_MIN, -0.0000004), "255|-9223372036854775808|-0.000000");
    EXPECT_EQ(Format("%f", DBL_MAX).size(), 309u + 7u);
    EXPECT_EQ(Format("%s", static_cast<const char*>(nullptr)), "(null)");
    // "% %" is a space flag and no letter; '*' is not in the rule; a length
    // needs a letter after it ("%l." is "%l"); substituted text is not read
    // again; a missing value leaves its placeholder.
    EXPECT_EQ(Format("%s|100%%|50% %|%5%|%*d|%l.|%hello|%I64|%s|%-3.1lld|a%", "%s", "B", "C", "D", "E"),
              "%s|100%|50% %|%5%|%*d|B.|Cllo|D64|E|%-3.1lld|a%");
    EXPECT_EQ(Format("only %d", 1, 2), "only 1");
    EXPECT_EQ(Format(nullptr, 1), "");
}

} // namespace
