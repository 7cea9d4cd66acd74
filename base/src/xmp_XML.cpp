// The XML parser's error queries, over libexpat.
#include "xmp_XML.h"

#include <expat.h>

namespace {

XML_Parser AsParser(void* parser) {
    return static_cast<XML_Parser>(parser);
}

} // namespace

int xmp_XML_GetErrorCode(void* parser) {
    return parser != nullptr ? static_cast<int>(XML_GetErrorCode(AsParser(parser))) : 0;
}

const char* xmp_XML_ErrorString(int code) {
    if (code == XML_ERROR_NONE)
        return "no error"; // expat itself has no text for this one
    const XML_LChar* text = code > 0 ? XML_ErrorString(static_cast<XML_Error>(code)) : nullptr;
    return text != nullptr ? text : "unknown error";
}

long xmp_XML_GetCurrentLineNumber(void* parser) {
    return parser != nullptr ? static_cast<long>(XML_GetCurrentLineNumber(AsParser(parser))) : 0;
}

long xmp_XML_GetCurrentColumnNumber(void* parser) {
    return parser != nullptr ? static_cast<long>(XML_GetCurrentColumnNumber(AsParser(parser))) : 0;
}
