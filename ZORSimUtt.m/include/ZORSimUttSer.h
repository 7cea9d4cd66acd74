// Error descriptions used by the XML-reading exceptions.
#pragma once

#include "ZORSimContainersExport.h"

// The XML parser's error code; shown as expat's text for it.
class ZORSIM_API ZORSimUttSerParserError {
public:
    explicit ZORSimUttSerParserError(void* parser);
    int Code() const { return m_code; }
    const char* AsString() const;

private:
    int m_code;
};

// Where the XML parser stands: "line %d, column: %d".
class ZORSIM_API ZORSimUttSerParserPlace {
public:
    explicit ZORSimUttSerParserPlace(void* parser);
    const char* AsString() const { return m_text; }

private:
    char m_text[64];
};

// The runtime library's errno at construction; shown as its strerror text.
class ZORSIM_API ZORSimUttSerSystemError {
public:
    ZORSimUttSerSystemError();
    int Code() const { return m_code; }
    const char* AsString() const;

private:
    int m_code;
};
