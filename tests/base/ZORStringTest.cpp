// Strings of the base library: UTF-8 validity, characters, wide and locale
// conversion, the small text operations and the copy-on-write buffer.
#include "ZORBasException.h"
#include "ZORBasShared.h"
#include "ZORString.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#if !defined(_WIN32)
#    include <langinfo.h>
#    include <unistd.h>
#endif

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
        EXPECT_TRUE(ZORString(text + "\xc3").IsBAD()) << prefix;
        EXPECT_TRUE(ZORString(text + "\xc3" + std::string(10, 'y')).IsBAD()) << prefix;
    }
    // With a size, only the given bytes count.
    const char* euro = "\xe2\x82\xac!";
    EXPECT_FALSE(ZORString::BuildFromUTF8(euro, 4).IsBAD());
    EXPECT_TRUE(ZORString::BuildFromUTF8(euro, 2).IsBAD());
    EXPECT_EQ(ZORString::BuildFromUTF8(euro, 3), ZORString("\xe2\x82\xac"));
    EXPECT_EQ(ZORString::BuildFromUTF8(nullptr, 0), ZORString(""));
    EXPECT_EQ(ZORString::BuildFromUTF8(nullptr), ZORString(""));
}

TEST(BaseZORString, LengthAndAtCountCodePoints) {
    ZORString s("a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"); // a é € 😀
    EXPECT_EQ(s.Bytes(), 10u);
    EXPECT_EQ(s.Length(), 4u);
    EXPECT_EQ(s.Characters(), std::u32string(U"a\u00e9\u20ac\U0001F600"));
    EXPECT_EQ(s.At(2), U'\u20ac');
    EXPECT_EQ(s.At(3), U'\U0001F600');
    EXPECT_EQ(s.At(4), 0u);
    EXPECT_EQ(ZORString().Length(), 0u);

    // A BAD string still has characters: each stray byte is one U+FFFD.
    ZORString bad("a\xff\xc3z");
    ASSERT_TRUE(bad.IsBAD());
    EXPECT_EQ(bad.Length(), 4u);
    EXPECT_EQ(bad.Characters(), std::u32string(U"a\uFFFD\uFFFDz"));
    EXPECT_EQ(bad.At(1), U'\uFFFD');
    EXPECT_EQ(bad.At(3), U'z');
}

TEST(BaseZORString, WideTextRoundTripsAndTextWithoutUnicodeFormIsBad) {
    const wchar_t* wide = L"a\u00e9\u20ac\U0001F600\U0010FFFF";
    ZORString s = ZORString::BuildFromWChar(wide);
    ASSERT_FALSE(s.IsBAD());
    EXPECT_STREQ(s.c_str(), "a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80\xf4\x8f\xbf\xbf");
    EXPECT_EQ(s.ToWChar(), std::wstring(wide)); // surrogate pairs where wchar_t is UTF-16
    EXPECT_EQ(ZORString::BuildFromWChar(nullptr), ZORString(""));

    const auto w = [](unsigned u) { return static_cast<wchar_t>(u); };
    std::vector<std::wstring> bad = {{L'a', w(0xD800)}, {w(0x110000)}, {w(0xFFFFFFFF)}};
    if (sizeof(wchar_t) == 2) // lone or swapped surrogates
        bad = {{L'a', w(0xD83D), L'b'}, {w(0xDE00)}, {w(0xDE00), w(0xD83D)}};
    for (const std::wstring& text : bad)
        EXPECT_TRUE(ZORString::BuildFromWChar(text.c_str()).IsBAD()) << static_cast<unsigned>(text.back());
}

#if !defined(_WIN32)
// Sets LC_CTYPE to a locale whose codeset is ISO-8859-1: an installed one, or
// one compiled into `dir` when the system has the sources.
bool UseLatin1(const std::string& dir) {
    const auto use = [](const char* name) {
        return std::setlocale(LC_CTYPE, name) != nullptr && std::string(nl_langinfo(CODESET)) == "ISO-8859-1";
    };
    bool found = false;
    if (FILE* list = popen("locale -a 2>/dev/null", "r")) {
        for (char line[256]; !found && std::fgets(line, sizeof line, list) != nullptr;)
            found = use(std::string(line, std::strcspn(line, "\r\n")).c_str());
        pclose(list);
    }
    const std::string command = "localedef -i en_US -f ISO-8859-1 " + dir + "/latin1 >/dev/null 2>&1";
    return found ||
           (std::system(command.c_str()) == 0 && setenv("LOCPATH", dir.c_str(), 1) == 0 && use("latin1"));
}

TEST(BaseZORString, BuildFromLocaleConvertsFromTheLocalesCodeset) {
    // In the C locale the bytes are taken as UTF-8, and must be valid.
    ASSERT_NE(std::setlocale(LC_CTYPE, "C"), nullptr);
    EXPECT_EQ(ZORString::BuildFromLocale("caf\xc3\xa9"), ZORString("caf\xc3\xa9"));
    EXPECT_EQ(ZORString::BuildFromLocale(nullptr), ZORString(""));
    try {
        ZORString::BuildFromLocale("caf\xe9");
        ADD_FAILURE() << "invalid bytes were accepted";
    } catch (const ZORBasToUTF8Exception& e) {
        EXPECT_STREQ(e.Text(), "caf\xe9");
        EXPECT_NE(e.ThrowFile(), nullptr);
    }
    // The form without the exception says so and keeps the bytes, as BAD.
    bool decoded = false;
    EXPECT_EQ(ZORString::BuildFromLocale("caf\xc3\xa9", decoded), ZORString("caf\xc3\xa9"));
    EXPECT_TRUE(decoded);
    const ZORString undecoded = ZORString::BuildFromLocale("caf\xe9", decoded);
    EXPECT_FALSE(decoded);
    EXPECT_TRUE(undecoded.IsBAD());
    EXPECT_STREQ(undecoded.c_str(), "caf\xe9");

    char dir[] = "/tmp/zorbas-locale-XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    const bool latin1 = UseLatin1(dir);
    if (latin1) {
        EXPECT_EQ(ZORString::BuildFromLocale("caf\xe9 \xbd"), ZORString("caf\xc3\xa9 \xc2\xbd"));
    }
    std::setlocale(LC_CTYPE, "C");
    unsetenv("LOCPATH");
    std::filesystem::remove_all(dir);
    if (!latin1)
        GTEST_SKIP() << "no ISO-8859-1 locale on this machine";
}
#endif // !_WIN32

TEST(BaseZORString, LowerStripCompareAndJoinKeepBADness) {
    const ZORString mixed("MiXeD \xc3\x80\xc3\x89 Z \xc3\xa9"); // "MiXeD ÀÉ Z é"
    EXPECT_EQ(mixed.ASCIIToLower(), ZORString("mixed \xc3\x80\xc3\x89 z \xc3\xa9"));
    EXPECT_EQ(mixed, ZORString("MiXeD \xc3\x80\xc3\x89 Z \xc3\xa9")); // the original is untouched
    EXPECT_TRUE(ZORString("AB\xff").ASCIIToLower().IsBAD());
    EXPECT_STREQ(ZORString("AB\xff").ASCIIToLower().c_str(), "ab\xff");

    EXPECT_EQ(ZORString(" \t\r\n\v\fa b\t \n").Strip(), ZORString("a b"));
    EXPECT_EQ(ZORString(" \t \n").Strip(), ZORString(""));
    // A no-break space is not ASCII white space.
    EXPECT_EQ(ZORString("\xc2\xa0x\xc2\xa0").Strip(), ZORString("\xc2\xa0x\xc2\xa0"));
    EXPECT_TRUE(ZORString(" \xff ").Strip().IsBAD());
    EXPECT_STREQ(ZORString(" \xff ").Strip().c_str(), "\xff");

    EXPECT_EQ(ZORString("abc"), ZORString(std::string("abc")));
    EXPECT_NE(ZORString("abc"), ZORString("abd"));
    EXPECT_NE(ZORString::BAD(), ZORString(""));
    EXPECT_TRUE(ZORString::BAD().IsEmpty());
    // Byte order is code-point order, also across sequence lengths.
    EXPECT_LT(ZORString("z"), ZORString("\xc3\xa9"));
    EXPECT_LT(ZORString("\xef\xbf\xbf"), ZORString("\xf0\x90\x80\x80"));
    EXPECT_FALSE(ZORString("a") < ZORString("a"));

    ZORString joined = ZORString("ab") + ZORString("\xc3\xa9");
    EXPECT_EQ(joined.Length(), 3u);
    joined += joined;
    EXPECT_EQ(joined, ZORString("ab\xc3\xa9"
                                "ab\xc3\xa9"));
    EXPECT_TRUE((ZORString("ok") + ZORString("\xff")).IsBAD());
    EXPECT_TRUE((ZORString("ok") + ZORString::BAD()).IsBAD());
    EXPECT_TRUE((ZORString() + ZORString("\xc3")).IsBAD());
}

TEST(BaseCowString, CopiesShareUntilOneWrites) {
    cow_String a("shared text");
    cow_String b = a;
    EXPECT_TRUE(a.SharesBufferWith(b));
    b.Mutable() += "!";
    EXPECT_FALSE(a.SharesBufferWith(b));
    EXPECT_STREQ(a.c_str(), "shared text");
    EXPECT_STREQ(b.c_str(), "shared text!");
    const char* before = b.c_str(); // a sole owner writes in place
    b.Mutable()[0] = 'S';
    EXPECT_EQ(b.c_str(), before);

    cow_String empty(static_cast<const char*>(nullptr));
    EXPECT_STREQ(empty.c_str(), "");
    empty.Mutable() = "filled"; // from no buffer at all
    EXPECT_EQ(empty.str(), "filled");
    EXPECT_EQ(cow_String("a\0b", 3).size(), 3u);
}

TEST(BaseOsString, ValidTextPassesBadTextRaises) {
    const ZORString name("dir/f\xc3\xa9.txt");
    const ZOROsString os(name);
#if defined(_WIN32)
    EXPECT_EQ(std::wstring(os.c_str(), os.size()), name.ToWChar());
#else
    EXPECT_EQ(std::string(os.c_str(), os.size()), name.c_str());
#endif
    try {
        ZOROsString failed(ZORString("bad\xc0\xaf"));
        FAIL() << "a BAD string was converted";
    } catch (const ZORBasOsStringConversion& e) {
        EXPECT_STREQ(e.Text(), "bad\xc0\xaf");
    }
    EXPECT_THROW(ZOROsString{ZORString::BAD()}, ZORBasException);
}

TEST(BaseFileOps, FopenOpensByUTF8NameAndRefusesBadNames) {
    const std::filesystem::path dir = std::filesystem::temp_directory_path();
    const std::string name =
        (dir / ("zorbas-fopen-\xc3\xa9-" +
                std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) + ".txt"))
            .string();
    std::FILE* f = ZORBasFileOps::Fopen(ZORString(name), "w");
    ASSERT_NE(f, nullptr);
    std::fclose(f);
    EXPECT_TRUE(std::filesystem::exists(name));
    std::filesystem::remove(name);

    errno = 0;
    EXPECT_EQ(ZORBasFileOps::Fopen(ZORString("bad\xff"), "r"), nullptr);
    EXPECT_EQ(errno, EINVAL);
    errno = 0;
    EXPECT_EQ(ZORBasFileOps::Fopen(ZORString((dir / "zorbas-no-such-dir/x").string()), "r"), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

} // namespace
