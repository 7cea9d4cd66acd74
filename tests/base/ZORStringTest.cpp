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
#include <filesystem>
#include <string>

#if !defined(_WIN32)
#    include <langinfo.h>
#    include <unistd.h>
#endif

namespace {

TEST(BaseZORString, AcceptsWellFormedUTF8AtEveryBoundary) {
    const char* valid[] = {
        "",
        "plain ascii",
        "\x7f",
        "\xc2\x80",         // U+0080, first two-byte
        "\xdf\xbf",         // U+07FF
        "\xe0\xa0\x80",     // U+0800, first three-byte
        "\xed\x9f\xbf",     // U+D7FF, just below the surrogates
        "\xee\x80\x80",     // U+E000, just above them
        "\xef\xbf\xbf",     // U+FFFF
        "\xf0\x90\x80\x80", // U+10000, first four-byte
        "\xf4\x8f\xbf\xbf", // U+10FFFF, the last code point
    };
    for (const char* text : valid) {
        ZORString s(text);
        EXPECT_FALSE(s.IsBAD()) << "bytes: " << text;
        EXPECT_STREQ(s.c_str(), text);
    }
}

TEST(BaseZORString, RejectsMalformedUTF8) {
    const char* bad[] = {
        "\xc0\xaf",         // overlong '/'
        "\xc1\xbf",         // overlong, C1 lead
        "\xe0\x80\xaf",     // overlong three-byte
        "\xe0\x9f\xbf",     // overlong just below U+0800
        "\xf0\x80\x80\xaf", // overlong four-byte
        "\xf0\x8f\xbf\xbf", // overlong just below U+10000
        "\xed\xa0\x80",     // high surrogate U+D800
        "\xed\xbf\xbf",     // low surrogate U+DFFF
        "\xf4\x90\x80\x80", // U+110000
        "\xf5\x80\x80\x80", // lead byte beyond the range
        "\xc3",             // truncated two-byte
        "\xe2\x82",         // truncated three-byte
        "\xf0\x9f\x98",     // truncated four-byte
        "\xe2\x28\xa1",     // continuation missing in the middle
        "a\x80",            // stray continuation byte
        "\xff",
        "\xfe",
    };
    for (const char* text : bad) {
        ZORString s(text);
        EXPECT_TRUE(s.IsBAD()) << "case " << (&text - bad);
        // The bytes are kept as they were given.
        EXPECT_STREQ(s.c_str(), text);
    }
}

TEST(BaseZORString, FindsBadBytesBehindLongAsciiRuns) {
    // Past the eight-byte ASCII skipping, at every alignment.
    for (int prefix = 0; prefix < 24; ++prefix) {
        std::string text(static_cast<std::size_t>(prefix), 'x');
        EXPECT_FALSE(ZORString(text + "\xc3\xa9").IsBAD()) << prefix;
        EXPECT_TRUE(ZORString(text + "\xc3").IsBAD()) << prefix;
        EXPECT_TRUE(ZORString(text + "\xc3" + std::string(10, 'y')).IsBAD()) << prefix;
    }
}

TEST(BaseZORString, BuildFromUTF8WithSizeValidatesOnlyTheGivenBytes) {
    const char* euro = "\xe2\x82\xac!";
    EXPECT_FALSE(ZORString::BuildFromUTF8(euro, 4).IsBAD());
    EXPECT_TRUE(ZORString::BuildFromUTF8(euro, 2).IsBAD()); // cuts the sequence
    EXPECT_EQ(ZORString::BuildFromUTF8(euro, 3), ZORString("\xe2\x82\xac"));
    EXPECT_EQ(ZORString::BuildFromUTF8(nullptr, 0), ZORString(""));
    EXPECT_EQ(ZORString(static_cast<const char*>(nullptr)), ZORString(""));
    EXPECT_FALSE(ZORString::BuildFromUTF8(nullptr).IsBAD());
}

TEST(BaseZORString, LengthAndAtCountCodePoints) {
    ZORString s("a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"); // a é € 😀
    EXPECT_EQ(s.Bytes(), 10u);
    EXPECT_EQ(s.Length(), 4u);
    EXPECT_EQ(s.At(0), U'a');
    EXPECT_EQ(s.At(1), U'\u00e9');
    EXPECT_EQ(s.At(2), U'\u20ac');
    EXPECT_EQ(s.At(3), U'\U0001F600');
    EXPECT_EQ(s.At(4), 0u);
    EXPECT_EQ(s.Characters(), std::u32string(U"a\u00e9\u20ac\U0001F600"));
    EXPECT_EQ(ZORString().Length(), 0u);

    // A BAD string still has characters: each stray byte is one U+FFFD.
    ZORString bad("a\xff\xc3z");
    ASSERT_TRUE(bad.IsBAD());
    EXPECT_EQ(bad.Length(), 4u);
    EXPECT_EQ(bad.Characters(), std::u32string(U"a\uFFFD\uFFFDz"));
    EXPECT_EQ(bad.At(3), U'z');
}

TEST(BaseZORString, WideTextRoundTripsIncludingNonBmp) {
    const wchar_t* wide = L"a\u00e9\u20ac\U0001F600\U0010FFFF";
    ZORString s = ZORString::BuildFromWChar(wide);
    ASSERT_FALSE(s.IsBAD());
    EXPECT_STREQ(s.c_str(), "a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80\xf4\x8f\xbf\xbf");
    EXPECT_EQ(s.Length(), 5u);
    EXPECT_EQ(s.ToWChar(), std::wstring(wide));
    EXPECT_EQ(s.ToWChar().size(), sizeof(wchar_t) == 2 ? 7u : 5u); // surrogate pairs on UTF-16
    EXPECT_EQ(ZORString::BuildFromWChar(nullptr), ZORString(""));
}

TEST(BaseZORString, WideTextWithoutUnicodeFormIsBad) {
    if constexpr (sizeof(wchar_t) == 2) {
        const wchar_t loneHigh[] = {L'a', static_cast<wchar_t>(0xD83D), L'b', 0};
        const wchar_t loneLow[] = {static_cast<wchar_t>(0xDE00), 0};
        const wchar_t swapped[] = {static_cast<wchar_t>(0xDE00), static_cast<wchar_t>(0xD83D), 0};
        EXPECT_TRUE(ZORString::BuildFromWChar(loneHigh).IsBAD());
        EXPECT_TRUE(ZORString::BuildFromWChar(loneLow).IsBAD());
        EXPECT_TRUE(ZORString::BuildFromWChar(swapped).IsBAD());
    } else {
        const wchar_t surrogate[] = {L'a', static_cast<wchar_t>(0xD800), 0};
        const wchar_t tooLarge[] = {static_cast<wchar_t>(0x110000), 0};
        const wchar_t negative[] = {static_cast<wchar_t>(-1), 0};
        EXPECT_TRUE(ZORString::BuildFromWChar(surrogate).IsBAD());
        EXPECT_TRUE(ZORString::BuildFromWChar(tooLarge).IsBAD());
        EXPECT_TRUE(ZORString::BuildFromWChar(negative).IsBAD());
    }
}

#if !defined(_WIN32)
// Switches LC_CTYPE for one test and puts the previous setting back.
class LocaleScope {
public:
    LocaleScope() : m_saved(std::setlocale(LC_CTYPE, nullptr)) {}
    ~LocaleScope() {
        std::setlocale(LC_CTYPE, m_saved.c_str());
        if (!m_tempDir.empty()) {
            unsetenv("LOCPATH");
            std::error_code ignored;
            std::filesystem::remove_all(m_tempDir, ignored);
        }
    }
    LocaleScope(const LocaleScope&) = delete;
    LocaleScope& operator=(const LocaleScope&) = delete;

    bool Use(const char* name) { return std::setlocale(LC_CTYPE, name) != nullptr; }

    // Switches to a locale whose codeset is ISO-8859-1: an installed one, or
    // one compiled into a private folder when the system has the sources.
    bool UseLatin1() {
        if (FILE* list = popen("locale -a 2>/dev/null", "r")) {
            char line[256];
            while (std::fgets(line, sizeof line, list) != nullptr) {
                std::string name(line);
                while (!name.empty() && (name.back() == '\n' || name.back() == '\r'))
                    name.pop_back();
                if (Use(name.c_str()) && IsLatin1()) {
                    pclose(list);
                    return true;
                }
            }
            pclose(list);
        }
        char pattern[] = "/tmp/zorbas-locale-XXXXXX";
        if (mkdtemp(pattern) == nullptr)
            return false;
        m_tempDir = pattern;
        const std::string command =
            "localedef -i en_US -f ISO-8859-1 " + m_tempDir + "/en_US.ISO-8859-1 >/dev/null 2>&1";
        if (std::system(command.c_str()) != 0)
            return false;
        setenv("LOCPATH", m_tempDir.c_str(), 1);
        return Use("en_US.ISO-8859-1") && IsLatin1();
    }

private:
    static bool IsLatin1() { return std::string(nl_langinfo(CODESET)) == "ISO-8859-1"; }
    std::string m_saved;
    std::string m_tempDir;
};

TEST(BaseZORString, BuildFromLocaleInTheCLocaleTakesUTF8) {
    LocaleScope scope;
    ASSERT_TRUE(scope.Use("C"));
    ZORString s = ZORString::BuildFromLocale("caf\xc3\xa9");
    EXPECT_FALSE(s.IsBAD());
    EXPECT_EQ(s.Length(), 4u);
    EXPECT_EQ(ZORString::BuildFromLocale(nullptr), ZORString(""));

    try {
        ZORString::BuildFromLocale("caf\xe9");
        FAIL() << "invalid bytes were accepted";
    } catch (const ZORBasToUTF8Exception& e) {
        EXPECT_STREQ(e.Text(), "caf\xe9");
        EXPECT_EQ(e.GetCode(), ZORBasToUTF8Exception::Code);
        EXPECT_NE(e.ThrowFile(), nullptr);
    }
}

TEST(BaseZORString, BuildFromLocaleDecodesLatin1) {
    LocaleScope scope;
    if (!scope.UseLatin1())
        GTEST_SKIP() << "no ISO-8859-1 locale on this machine";
    ZORString s = ZORString::BuildFromLocale("caf\xe9 \xbd");
    ASSERT_FALSE(s.IsBAD());
    EXPECT_STREQ(s.c_str(), "caf\xc3\xa9 \xc2\xbd");
    EXPECT_EQ(s.Length(), 6u);
}

#endif // !_WIN32

TEST(BaseZORString, ASCIIToLowerLeavesOtherCharactersAlone) {
    ZORString s("MiXeD \xc3\x80\xc3\x89 Z \xc3\xa9"); // "MiXeD ÀÉ Z é"
    EXPECT_EQ(s.ASCIIToLower(), ZORString("mixed \xc3\x80\xc3\x89 z \xc3\xa9"));
    EXPECT_EQ(s, ZORString("MiXeD \xc3\x80\xc3\x89 Z \xc3\xa9")); // the original is untouched
    ZORString bad("AB\xff");
    EXPECT_TRUE(bad.ASCIIToLower().IsBAD());
    EXPECT_STREQ(bad.ASCIIToLower().c_str(), "ab\xff");
}

TEST(BaseZORString, StripRemovesAsciiWhiteSpaceOnly) {
    EXPECT_EQ(ZORString(" \t\r\n\v\fa b\t \n").Strip(), ZORString("a b"));
    EXPECT_EQ(ZORString(" \t \n").Strip(), ZORString(""));
    EXPECT_EQ(ZORString("x").Strip(), ZORString("x"));
    // A no-break space is not ASCII white space.
    EXPECT_EQ(ZORString("\xc2\xa0x\xc2\xa0").Strip(), ZORString("\xc2\xa0x\xc2\xa0"));
    ZORString bad(" \xff ");
    EXPECT_TRUE(bad.Strip().IsBAD());
    EXPECT_STREQ(bad.Strip().c_str(), "\xff");
}

TEST(BaseZORString, ComparisonAndConcatenation) {
    EXPECT_EQ(ZORString("abc"), ZORString(std::string("abc")));
    EXPECT_NE(ZORString("abc"), ZORString("abd"));
    EXPECT_NE(ZORString::BAD(), ZORString(""));
    EXPECT_TRUE(ZORString::BAD().IsEmpty());
    // Byte order is code-point order, also across sequence lengths.
    EXPECT_LT(ZORString("z"), ZORString("\xc3\xa9"));
    EXPECT_LT(ZORString("\xef\xbf\xbf"), ZORString("\xf0\x90\x80\x80"));
    EXPECT_FALSE(ZORString("a") < ZORString("a"));

    ZORString joined = ZORString("ab") + ZORString("\xc3\xa9");
    EXPECT_EQ(joined, ZORString("ab\xc3\xa9"));
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

    // A sole owner writes in place.
    const char* before = b.c_str();
    b.Mutable()[0] = 'S';
    EXPECT_EQ(b.c_str(), before);

    cow_String empty;
    EXPECT_TRUE(empty.empty());
    EXPECT_STREQ(empty.c_str(), "");
    EXPECT_EQ(cow_String(static_cast<const char*>(nullptr)), empty);
    empty.Mutable() = "filled";
    EXPECT_EQ(empty.str(), "filled");
    EXPECT_EQ(cow_String("a\0b", 3).size(), 3u);
}

TEST(BaseOsString, ValidTextPassesBadTextRaises) {
    ZOROsString os(ZORString("dir/f\xc3\xa9.txt"));
    EXPECT_EQ(std::basic_string<ZOROsString::CharType>(os.c_str(), os.size()),
              ZORString("dir/f\xc3\xa9.txt").ToWChar().size() > 0 && sizeof(ZOROsString::CharType) == 1
                  ? std::basic_string<ZOROsString::CharType>(os.c_str())
                  : std::basic_string<ZOROsString::CharType>());
    EXPECT_STREQ(reinterpret_cast<const char*>(os.c_str()), "dir/f\xc3\xa9.txt");

    try {
        ZOROsString failed(ZORString("bad\xc0\xaf"));
        FAIL() << "a BAD string was converted";
    } catch (const ZORBasOsStringConversion& e) {
        EXPECT_EQ(e.GetCode(), ZORBasOsStringConversion::Code);
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
    EXPECT_GE(std::fputs("x", f), 0);
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
