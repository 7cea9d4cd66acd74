// The check every string argument passes on its way into the library.
#include "ZORSimBadZORString.h"

#include "ZORSimExcPoolFormat.h"

void ZORSimBadZORString::Check(const ZORString& s) {
    if (s.IsBAD())
        ZORSimExcBadStringArgument().Throw("ZORSimBadZORString", 16);
}
