// The XML error queries against a real expat parser.
#include "xmp_XML.h"

#include <expat.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

TEST(BaseXml, ReportsTheParsersErrorAndPlace) {
    struct Case {
        const char* text;
        int code;
        long line;
        long column; // expat counts columns from 0
    };
    for (const Case& c : {Case{"<pool>\n  <item></pool>\n", XML_ERROR_TAG_MISMATCH, 2, 10},
                          Case{"<a attr=\"x", XML_ERROR_UNCLOSED_TOKEN, 1, 0},
                          Case{"<a/>\n\n<b/>", XML_ERROR_JUNK_AFTER_DOC_ELEMENT, 3, 0},
                          Case{"<a><b/></a>", XML_ERROR_NONE, 1, 11}}) {
        SCOPED_TRACE(c.text);
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_Parse(parser, c.text, static_cast<int>(std::strlen(c.text)), 1);
        EXPECT_EQ(xmp_XML_GetErrorCode(parser), c.code);
        EXPECT_EQ(xmp_XML_GetCurrentLineNumber(parser), c.line);
        EXPECT_EQ(xmp_XML_GetCurrentColumnNumber(parser), c.column);
        XML_ParserFree(parser);
        if (c.code != XML_ERROR_NONE) {
            EXPECT_STREQ(xmp_XML_ErrorString(c.code), XML_ErrorString(static_cast<XML_Error>(c.code)));
        }
    }
    EXPECT_STREQ(xmp_XML_ErrorString(XML_ERROR_TAG_MISMATCH), "mismatched tag");
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
