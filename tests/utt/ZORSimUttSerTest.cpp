// The XML and runtime error descriptions, from a real expat parser and a
// real failing call.

#include "ZORSimExcPoolFormat.h"
#include "ZORSimUttSer.h"

#include <gtest/gtest.h>

#include <expat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

// An expat parser that has stopped on a broken document.
class BrokenDocument {
public:
    explicit BrokenDocument(const char* xml) : m_parser(XML_ParserCreate(nullptr)) {
        m_status = XML_Parse(m_parser, xml, static_cast<int>(std::strlen(xml)), 1);
    }
    ~BrokenDocument() { XML_ParserFree(m_parser); }
    XML_Parser Parser() const { return m_parser; }
    XML_Status Status() const { return m_status; }

private:
    XML_Parser m_parser;
    XML_Status m_status;
};

} // namespace

TEST(ZORSimUttSer, ParserErrorIsExpatsCodeAndText) {
    BrokenDocument doc("<a>\n  <b></a>");
    ASSERT_EQ(doc.Status(), XML_STATUS_ERROR);
    const ZORSimUttSerParserError error(doc.Parser());
    EXPECT_EQ(error.Code(), XML_ERROR_TAG_MISMATCH);
    EXPECT_STREQ(error.AsString(), XML_ErrorString(XML_ERROR_TAG_MISMATCH));
}

TEST(ZORSimUttSer, ParserPlaceSaysLineAndColumn) {
    BrokenDocument doc("<a>\n\n  <b></a>");
    ASSERT_EQ(doc.Status(), XML_STATUS_ERROR);
    const ZORSimUttSerParserPlace place(doc.Parser());
    const std::string expected = "line " + std::to_string(XML_GetCurrentLineNumber(doc.Parser())) +
                                 ", column: " + std::to_string(XML_GetCurrentColumnNumber(doc.Parser()));
    EXPECT_EQ(place.AsString(), expected);
    EXPECT_EQ(std::string(place.AsString()).rfind("line 3, column: ", 0), 0u);
}

TEST(ZORSimUttSer, DescriptionsFillTheExpatParseErrorMessage) {
    BrokenDocument doc("<root attr='1' attr='2'/>");
    ASSERT_EQ(doc.Status(), XML_STATUS_ERROR);
    const ZORSimExcXMLExpatParseError e{ZORSimUttSerParserError(doc.Parser()),
                                        ZORSimUttSerParserPlace(doc.Parser())};
    const std::string expected =
        std::string("Expat parser encountered an error: ") + XML_ErrorString(XML_ERROR_DUPLICATE_ATTRIBUTE) +
        "\n At line 1, column: " + std::to_string(XML_GetCurrentColumnNumber(doc.Parser())) +
        " in the XML stream.\n";
    EXPECT_EQ(e.AsString(ZORBasStringMode()).str(), expected);
}

TEST(ZORSimUttSer, SystemErrorKeepsErrnoOfTheFailure) {
    errno = 0;
    std::FILE* f = std::fopen("/nonexistent-zorsim-dir/none.txt", "rb");
    ASSERT_EQ(f, nullptr);
    const ZORSimUttSerSystemError error;
    EXPECT_EQ(error.Code(), ENOENT);
    const std::string text = error.AsString();
    EXPECT_EQ(text, std::strerror(ENOENT));

    // Later changes of errno do not reach the description.
    errno = EACCES;
    EXPECT_EQ(error.Code(), ENOENT);
    EXPECT_EQ(std::string(error.AsString()), std::strerror(ENOENT));
}
