#include "ZORSimUttSer.h"

#include "xmp_XML.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

ZORSimUttSerParserError::ZORSimUttSerParserError(void* parser) : m_code(xmp_XML_GetErrorCode(parser)) {}

const char* ZORSimUttSerParserError::AsString() const {
    return xmp_XML_ErrorString(m_code);
}

ZORSimUttSerParserPlace::ZORSimUttSerParserPlace(void* parser) {
    std::snprintf(m_text, sizeof m_text, "line %d, column: %d",
                  static_cast<int>(xmp_XML_GetCurrentLineNumber(parser)),
                  static_cast<int>(xmp_XML_GetCurrentColumnNumber(parser)));
}

ZORSimUttSerSystemError::ZORSimUttSerSystemError() : m_code(errno) {}

const char* ZORSimUttSerSystemError::AsString() const {
    return std::strerror(m_code);
}
