// The check every string argument passes before the library uses it.
#pragma once

#include "ZORSimContainersExport.h"
#include "ZORString.h"

class ZORSIM_API ZORSimBadZORString {
public:
    // Raises ZORSimExcBadStringArgument when the string is BAD.
    static void Check(const ZORString& s);
};
