// File helpers of the base library.
#include "ZORBasShared.h"

#include "ZORBasPlatform.h"

#include <cerrno>

std::FILE* ZORBasFileOps::Fopen(const ZORString& name, const char* mode) {
    if (name.IsBAD() || mode == nullptr) {
        errno = EINVAL;
        return nullptr;
    }
    return zorbas_os::OpenFile(name, mode);
}
