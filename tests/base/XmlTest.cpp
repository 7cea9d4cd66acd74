// The XML error queries against a real expat parser.
#include "xmp_XML.h"

#include <expat.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

class ParserScope {
public:
    ParserScope() : m_parser(XML_ParserCreate(nullptr)) {}
    ~ParserScope() { XML_ParserFree(m_parser); }
    ParserScope(const ParserScope&) = delete;
    ParserScope& operator=(const ParserScope&) = delete;
    XML_Parser Get() const { return m_parser; }
    bool Parse(const char* text) {
        return XML_Parse(m_parser, text, static_cast<int>(std::strlen(text)), 1) == XML_STATUS_OK;
    }

private:
    XML_Parser m_parser;
};

TEST(BaseXml, ReportsTheParsersErrorAndPlace) {
    ParserScope parser;
    ASSERT_NE(parser.Get(), nullptr);
    ASSERT_FALSE(parser.Parse("<pool>\n  <item></pool>\n"));
    const int code = xmp_XML_GetErrorCode(parser.Get());
    EXPECT_EQ(code, XML_ERROR_TAG_MISMATCH);
    EXPECT_STREQ(xmp_XML_ErrorString(code), "mismatched tag");
    EXPECT_EQ(xmp_XML_GetCurrentLineNumber(parser.Get()), 2);
    EXPECT_EQ(xmp_XML_GetCurrentColumnNumber(parser.Get()), 10); // expat counts columns from 0
}

TEST(BaseXml, OtherErrorsAndTheirTexts) {
    ParserScope unclosed;
    ASSERT_FALSE(unclosed.Parse("<a attr=\"x"));
    EXPECT_EQ(xmp_XML_GetErrorCode(unclosed.Get()), XML_ERROR_UNCLOSED_TOKEN);
    EXPECT_EQ(xmp_XML_GetCurrentLineNumber(unclosed.Get()), 1);

    ParserScope junk;
    ASSERT_FALSE(junk.Parse("<a/>\n\n<b/>"));
    EXPECT_EQ(xmp_XML_GetErrorCode(junk.Get()), XML_ERROR_JUNK_AFTER_DOC_ELEMENT);
    EXPECT_EQ(xmp_XML_GetCurrentLineNumber(junk.Get()), 3);
    EXPECT_EQ(xmp_XML_GetCurrentColumnNumber(junk.Get()), 0);
    EXPECT_EQ(std::string(xmp_XML_ErrorString(XML_ERROR_JUNK_AFTER_DOC_ELEMENT)),
              XML_ErrorString(XML_ERROR_JUNK_AFTER_DOC_ELEMENT));

    ParserScope good;
    ASSERT_TRUE(good.Parse("<a><b/></a>"));
    EXPECT_EQ(xmp_XML_GetErrorCode(good.Get()), XML_ERROR_NONE);
}

TEST(BaseXml, NullParserAndUnknownCodesAreHarmless) {
    EXPECT_EQ(xmp_XML_GetErrorCode(nullptr), 0);
    EXPECT_EQ(xmp_XML_GetCurrentLineNumber(nullptr), 0);
    EXPECT_EQ(xmp_XML_GetCurrentColumnNumber(nullptr), 0);
    EXPECT_STREQ(xmp_XML_ErrorString(0), "no error");
    EXPECT_STREQ(xmp_XML_ErrorString(-1), "unknown error");
    EXPECT_STREQ(xmp_XML_ErrorString(9999), "unknown error");
}

} // namespace
