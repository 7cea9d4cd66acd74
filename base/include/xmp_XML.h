// Thin wrappers over libexpat; the void* is an expat XML_Parser.
#pragma once

#include "VEXZORBasExport.h"

ZORBAS_API int xmp_XML_GetErrorCode(void* parser);
ZORBAS_API const char* xmp_XML_ErrorString(int code);
ZORBAS_API long xmp_XML_GetCurrentLineNumber(void* parser);
ZORBAS_API long xmp_XML_GetCurrentColumnNumber(void* parser);
