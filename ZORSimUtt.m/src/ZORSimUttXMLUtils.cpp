#include "ZORSimUttXMLUtils.h"
#include "ZORSimUttUtils.h"

const char* ZORSimUttXMLUtils::GetAttr(const char** attributes, const char* name) {
    if (attributes == nullptr || name == nullptr)
        return nullptr;
    for (const char** pair = attributes; pair[0] != nullptr; pair += 2) {
        if (ZORSimUttUtils::SameStr(pair[0], name, 0))
            return pair[1];
    }
    return nullptr;
}
