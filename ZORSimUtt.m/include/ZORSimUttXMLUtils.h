#pragma once

#include "ZORSimContainersExport.h"

class ZORSIM_API ZORSimUttXMLUtils {
public:
    // `attributes` alternates names and values and ends with a null name.
    // Returns the value of the first name equal to `name` ignoring ASCII
    // case, or null.
    static const char* GetAttr(const char** attributes, const char* name);
};
