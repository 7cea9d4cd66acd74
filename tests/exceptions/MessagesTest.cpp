// Messages checked by hand where the tables are irregular, the string field
// cut, the XML fields from a parser that really failed, the check that turns
// BAD strings away, and atr<...>.
#include "ZORSimBadZORString.h"
#include "ZORSimExcAtr.h"
#include "ZORSimExceptions.h"

#include <expat.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

namespace {

const bool kReportsOff = (ZORSimUttAssertDisableExcReport(), true);

std::string Text(const ZORBasException& e) {
    return e.AsString(ZORBasStringMode(false)).str();
}

// Cut and zero fill are those of ZORSimUttUtils::Copy.
TEST(ExceptionString, TakesTextsAndZORStringsAndCopiesWhole) {
    EXPECT_STREQ(ZORSimUttExceptionString<1024>(ZORString()).AsString(), "");
    EXPECT_STREQ(ZORSimUttExceptionString<1024>(ZORString("r\xC3\xA9sum\xC3\xA9")).AsString(),
                 "r\xC3\xA9sum\xC3\xA9");
    EXPECT_STREQ(ZORSimUttExceptionString<64>(static_cast<const char*>(nullptr)).AsString(), "");
    const ZORSimUttExceptionString<32> shortText("ab");
    const ZORSimUttExceptionString<32> copy = shortText; // the whole array travels
    EXPECT_EQ(std::memcmp(&copy, &shortText, 32), 0);
}

TEST(Messages, IrregularTextsOfTheTables) {
    const std::pair<std::string, std::string> cases[] = {
        {Text(ZORSimExcIOBounds(1, 2, 18446744073709551615ULL)),
         "I/O out of bounds - start: 1, end: 2, limit: 18446744073709551615"},
        {Text(ZORSimExcShortBuffer(7, 3)),
         "Insufficient data (Internalization) or space (Externalization) in "
         "buffer - requested: 7, available: 3"},
        {Text(ZORSimExcSystemError("CreateFile", ZORBasSystemError(ENOENT))),
         std::string("System Error CreateFile: ") + std::strerror(ENOENT)},
        {Text(ZORSimExcFileCloseFailed(ZORBasSystemError(EIO))),
         std::string("Error occurred when closing file: ") + std::strerror(EIO) + "."},
        {Text(ZORSimExcNoSuchForm("ABCDEFGHIJKLMNOP")), "No such form: ABCDEFGHI"},
        {Text(ZORSimExcValidationFailure()), "Validation failure - inconsistent state has been reached."},
        {Text(ZORSimExcNeedUpgrade(3, 4, "/data/a.sim")),
         "Binary format incompatible. Upgrade or downgrade required.\n applicationVersion: 3\n "
         "databaseVersion: 4\n file: /data/a.sim\n"},
        // Three values, two placeholders: the bulk ID stands where the first
        // GUID is named and the second GUID is not shown.
        {Text(ZORSimExcInconsistentGUID(17, "{guid-one}", "{guid-two}")),
         "SIM Document is inconsistent. Bulk GUID mismatch: 17 != {guid-one}"},
        {Text(ZORSimExcCantCreateFile("a.b")), "Can't creat file: a.b. Already present in document."},
        {Text(ZORSimExcInvalidGUID()), "Invalid GUID has been provided when creating pool.\n"},
        {Text(ZORSimExcInconsistentBulkID(-1, 2)), "SIM Document is inconsistent. Bulk ID mismatch: -1 != 2"},
        {Text(ZORSimExcXMLBadContentEncoding("b64")), "Unrecognized content encoding (\"base\"): b64\n"},
        {Text(ZORSimExcBulkFileBlocked("/b/1.bulk")),
         "Bulk file access blocked: /b/1.bulk\n remove SIM_BULK_LAZY_LOAD enviroment variable to unblock\n"},
        {Text(ZORSimExcZlibCompressError(-3)), "Zlib Bulk Compression/Inflation failed. ZLib error code: -3"},
        {Text(ZORSimExcBadStringArgument()),
         "String passed into SIM is BAD. set/setenv _ZOR_FAIL_ON_BAD and rerun."},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(text, expected);
}

TEST(Messages, XmlFieldsFromAParserThatFailed) {
    XML_Parser parser = XML_ParserCreate(nullptr);
    const char broken[] = "<root>\n  <item/>\n  <oops></root>";
    ASSERT_EQ(XML_Parse(parser, broken, sizeof broken - 1, 1), XML_STATUS_ERROR);
    ASSERT_EQ(XML_GetCurrentLineNumber(parser), 3u);
    const std::string at =
        " At line 3, column: " + std::to_string(XML_GetCurrentColumnNumber(parser)) + " in the XML stream.\n";
    const ZORSimUttSerParserPlace place(parser);

    ZORSimExcXMLExpatParseError parse{ZORSimUttSerParserError(parser), place};
    EXPECT_EQ(Text(parse), std::string("Expat parser encountered an error: ") +
                               XML_ErrorString(XML_ERROR_TAG_MISMATCH) + "\n" + at);
    // A string shown through "%d", and the place that follows it.
    EXPECT_EQ(Text(ZORSimExcXMLBadTypeSize("eight", place)), "Bad type size attribute value: eight\n" + at);
    const std::string csv = "Corrupt comma separated value stream near line 3, column: " +
                            std::to_string(XML_GetCurrentColumnNumber(parser)) + " in the XML stream.\n ";
    EXPECT_EQ(Text(ZORSimExcXMLBadCSV(place, "row 9")), csv + "row 9\n");
    EXPECT_EQ(Text(ZORSimExcXMLBadCSV(place, nullptr)), csv + "(null)\n");

    // Text pointers are kept, not copied: a clone shares the pointer.
    static const char kExpected[] = "item";
    ZORSimExcXMLWrongEndTag tag("oops", kExpected, place);
    EXPECT_EQ(Text(tag),
              "XML parser encountered the wrong end tag: \"oops\", when expecting \"item\"\n" + at);
    std::unique_ptr<ZORBasException> clone(tag.Clone());
    EXPECT_EQ(dynamic_cast<ZORSimExcXMLWrongEndTag&>(*clone).GetExpectedName(), kExpected);
    XML_ParserFree(parser);

    // The runtime error is errno of a real failing call, kept as it was.
    ASSERT_EQ(std::fopen("/nonexistent-zorsim-dir/none.txt", "rb"), nullptr);
    const ZORSimExcXMLReadError read{ZORSimUttSerSystemError()};
    errno = EACCES;
    EXPECT_EQ(Text(read),
              std::string("An error occurred while reading XML stream: ") + std::strerror(ENOENT) + "\n");
}

TEST(Messages, BadStringsAreTurnedAwayWithTheCheckAsSource) {
    EXPECT_NO_THROW(ZORSimBadZORString::Check(ZORString("result.sim")));
    EXPECT_NO_THROW(ZORSimBadZORString::Check(ZORString("")));
    for (const ZORString& bad : {ZORString::BAD(), ZORString("\xff\xfe not UTF-8")}) {
        try {
            ZORSimBadZORString::Check(bad);
            ADD_FAILURE() << "no exception";
        } catch (const ZORSimExcBadStringArgument& error) {
            EXPECT_STREQ("ZORSimBadZORString", error.ThrowFile());
            EXPECT_EQ(16, error.ThrowLine());
        }
    }
}

TEST(Messages, ExportedFormatterAgreesWithTheClasses) {
    const ZORBasStringMode mode(true);
    EXPECT_EQ((atr<unsigned long long, unsigned long long, unsigned long long>(
                   "I/O out of bounds - start: %lld, end: %lld, limit: %lld", 1, 2, 3, mode)
                   .str()),
              Text(ZORSimExcIOBounds(1, 2, 3)));
    EXPECT_EQ((atr<const char*>("%s and %s", "one", mode).str()), "one and %s");
}

// The base class's own Clone has nothing to copy.
TEST(Messages, BaseCloneIsNull) {
    struct Minimal : ZORBasException {
        atr_String AsString(ZORBasStringMode) const override { return atr_String("m"); }
        void Propagate() const override { throw Minimal(*this); }
        int GetCode() const override { return 0; }
        ZORBasException* Clone() const override { return ZORBasException::Clone(); }
    };
    EXPECT_EQ(Minimal().Clone(), nullptr);
}

} // namespace
