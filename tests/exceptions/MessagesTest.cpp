// Messages checked by hand where the tables are irregular, the string field
// cut, the XML fields from a parser that really failed, and atr<...>.
#include "ZORSimExcAtr.h"
#include "ZORSimExceptions.h"

#include <expat.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>

namespace {

const bool kReportsOff = (ZORSimUttAssertDisableExcReport(), true);

std::string Text(const ZORBasException& e) {
    return e.AsString(ZORBasStringMode(false)).str();
}

TEST(ExceptionString, KeepsAtMostCapacityMinusOneCharactersAndZeroFills) {
    ZORSimUttExceptionString<64> cut(std::string(64, 'x').c_str());
    EXPECT_EQ(std::strlen(cut.AsString()), 63u);
    ZORSimUttExceptionString<10> form("abcdefghijkl");
    EXPECT_STREQ(form.AsString(), "abcdefghi");
    ZORSimUttExceptionString<32> shortText("ab");
    for (int i = 2; i < 32; ++i)
        EXPECT_EQ(shortText.AsString()[i], '\0') << i;
    EXPECT_STREQ(ZORSimUttExceptionString<1024>(ZORString()).AsString(), "");
    EXPECT_STREQ(ZORSimUttExceptionString<1024>(ZORString("r\xC3\xA9sum\xC3\xA9")).AsString(),
                 "r\xC3\xA9sum\xC3\xA9");
    EXPECT_STREQ(ZORSimUttExceptionString<64>(static_cast<const char*>(nullptr)).AsString(), "");
    // A copy carries the whole array.
    ZORSimUttExceptionString<32> copy = shortText;
    EXPECT_EQ(std::memcmp(&copy, &shortText, 32), 0);
}

TEST(Messages, StorageBlock) {
    EXPECT_EQ(Text(ZORSimExcIOBounds(1, 2, 18446744073709551615ULL)),
              "I/O out of bounds - start: 1, end: 2, limit: 18446744073709551615");
    EXPECT_EQ(Text(ZORSimExcShortBuffer(7, 3)),
              "Insufficient data (Internalization) or space (Externalization) in buffer - requested: 7, "
              "available: 3");
    EXPECT_EQ(Text(ZORSimExcSystemError("CreateFile", ZORBasSystemError(ENOENT))),
              std::string("System Error CreateFile: ") + std::strerror(ENOENT));
    EXPECT_EQ(Text(ZORSimExcFileCloseFailed(ZORBasSystemError(EIO))),
              std::string("Error occurred when closing file: ") + std::strerror(EIO) + ".");
    EXPECT_EQ(ZORSimExcSystemError("x", ZORBasSystemError(EIO)).GetSystemErrorCode().Code(), EIO);
    ZORSimExcNoSuchForm form("ABCDEFGHIJKLMNOP");
    EXPECT_STREQ(form.GetForm_name().AsString(), "ABCDEFGHI");
    EXPECT_EQ(Text(form), "No such form: ABCDEFGHI");
    EXPECT_EQ(form.GetCode(), ZORSimExcNoSuchFile("f").GetCode());
    EXPECT_EQ(Text(ZORSimExcValidationFailure()),
              "Validation failure - inconsistent state has been reached.");
}

TEST(Messages, DocumentBlock) {
    EXPECT_EQ(Text(ZORSimExcNeedUpgrade(3, 4, "/data/a.sim")),
              "Binary format incompatible. Upgrade or downgrade required.\n applicationVersion: 3\n "
              "databaseVersion: 4\n file: /data/a.sim\n");
    // Three values, two placeholders: the bulk ID stands where the first GUID
    // is named and the second GUID is not shown.
    ZORSimExcInconsistentGUID guid(17, "{guid-one}", "{guid-two}");
    EXPECT_EQ(Text(guid), "SIM Document is inconsistent. Bulk GUID mismatch: 17 != {guid-one}");
    EXPECT_STREQ(guid.GetGuid2().AsString(), "{guid-two}");
    EXPECT_EQ(Text(ZORSimExcCantCreateFile("a.b")), "Can't creat file: a.b. Already present in document.");
    ZORSimExcGlobError glob(std::string(40, 'g').c_str());
    EXPECT_EQ(std::strlen(glob.GetFile_name().AsString()), 31u);
    EXPECT_EQ(Text(ZORSimExcInvalidGUID()), "Invalid GUID has been provided when creating pool.\n");
    EXPECT_EQ(Text(ZORSimExcInconsistentBulkID(-1, 2)),
              "SIM Document is inconsistent. Bulk ID mismatch: -1 != 2");
}

// An expat parser stopped by a mismatched tag on line 3.
struct BrokenDocument {
    XML_Parser parser = XML_ParserCreate(nullptr);
    BrokenDocument() {
        const char text[] = "<root>\n  <item/>\n  <oops></root>";
        EXPECT_EQ(XML_Parse(parser, text, sizeof text - 1, 1), XML_STATUS_ERROR);
    }
    ~BrokenDocument() { XML_ParserFree(parser); }
    std::string Place() const {
        return "line " + std::to_string(XML_GetCurrentLineNumber(parser)) +
               ", column: " + std::to_string(XML_GetCurrentColumnNumber(parser));
    }
};

TEST(Messages, PoolFormatAndXmlBlock) {
    BrokenDocument doc;
    EXPECT_EQ(XML_GetCurrentLineNumber(doc.parser), 3u);
    const std::string place = doc.Place();

    ZORSimExcXMLExpatParseError parse{ZORSimUttSerParserError(doc.parser),
                                      ZORSimUttSerParserPlace(doc.parser)};
    EXPECT_EQ(Text(parse), std::string("Expat parser encountered an error: ") +
                               XML_ErrorString(XML_ERROR_TAG_MISMATCH) + "\n At " + place +
                               " in the XML stream.\n");
    EXPECT_EQ(parse.GetErrorString().Code(), XML_ERROR_TAG_MISMATCH);

    // A string shown through "%d", and the place that follows it.
    EXPECT_EQ(Text(ZORSimExcXMLBadTypeSize("eight", ZORSimUttSerParserPlace(doc.parser))),
              "Bad type size attribute value: eight\n At " + place + " in the XML stream.\n");
    EXPECT_EQ(Text(ZORSimExcXMLUnsupContentEncode("base85", ZORSimUttSerParserPlace(doc.parser))),
              "Unsupported content encoding: base85\n At " + place + " in the XML stream.\n");
    EXPECT_EQ(Text(ZORSimExcXMLBadContentEncoding("b64")), "Unrecognized content encoding (\"base\"): b64\n");

    // Text pointers are kept, not copied: a clone shares the pointer.
    static const char kExpected[] = "item";
    ZORSimExcXMLWrongEndTag tag("oops", kExpected, ZORSimUttSerParserPlace(doc.parser));
    EXPECT_EQ(Text(tag), "XML parser encountered the wrong end tag: \"oops\", when expecting \"item\"\n At " +
                             place + " in the XML stream.\n");
    std::unique_ptr<ZORBasException> clone(tag.Clone());
    EXPECT_EQ(dynamic_cast<ZORSimExcXMLWrongEndTag&>(*clone).GetExpectedName(), kExpected);
    EXPECT_EQ(Text(ZORSimExcXMLBadCSV(ZORSimUttSerParserPlace(doc.parser), "row 9")),
              "Corrupt comma separated value stream near " + place + " in the XML stream.\n row 9\n");
    EXPECT_EQ(Text(ZORSimExcXMLBadCSV(ZORSimUttSerParserPlace(doc.parser), nullptr)),
              "Corrupt comma separated value stream near " + place + " in the XML stream.\n (null)\n");

    errno = ENOSPC;
    ZORSimExcXMLReadError read{ZORSimUttSerSystemError()};
    EXPECT_EQ(Text(read),
              std::string("An error occurred while reading XML stream: ") + std::strerror(ENOSPC) + "\n");
    EXPECT_EQ(
        Text(ZORSimExcBulkFileBlocked("/b/1.bulk")),
        "Bulk file access blocked: /b/1.bulk\n remove SIM_BULK_LAZY_LOAD enviroment variable to unblock\n");
    EXPECT_EQ(Text(ZORSimExcZlibCompressError(-3)),
              "Zlib Bulk Compression/Inflation failed. ZLib error code: -3");
    EXPECT_EQ(Text(ZORSimExcBadStringArgument()),
              "String passed into SIM is BAD. set/setenv _ZOR_FAIL_ON_BAD and rerun.");
}

TEST(Messages, ExportedFormatterAgreesWithTheClasses) {
    const ZORBasStringMode mode(true);
    const std::string bounds = atr<unsigned long long, unsigned long long, unsigned long long>(
                                   "I/O out of bounds - start: %lld, end: %lld, limit: %lld", 1, 2, 3, mode)
                                   .str();
    EXPECT_EQ(bounds, Text(ZORSimExcIOBounds(1, 2, 3)));
    EXPECT_EQ((atr<bool, int, long long, float, double, const char*>("%d %d %lld %f %f %s", true, -2, -3LL,
                                                                     0.5F, 2.0, "s", mode)
                   .str()),
              "1 -2 -3 0.500000 2.000000 s");
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
