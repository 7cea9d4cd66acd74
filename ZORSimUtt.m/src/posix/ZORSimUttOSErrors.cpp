// The errno value of each error meaning.
#include "ZORSimUttOS.h"

#include <cerrno>

int ZORSimUttOS::ErrorCode(Error error) {
    switch (error) {
    case Error::None:
        return 0;
#define ZORSIM_OS_ERROR(name, posixCode, windowsCode)                                                        \
    case Error::name:                                                                                        \
        return posixCode;
#include "ZORSimUttOSErrors.def"
#undef ZORSIM_OS_ERROR
    }
    return EINVAL;
}
