// How Windows writes paths, and its error codes by meaning.
#include "ZORSimUttOS.h"

const ZORSimUttOS::PathForm& ZORSimUttOS::OsPathForm() {
    static constexpr PathForm kForm{'\\', '/', true, true};
    return kForm;
}

int ZORSimUttOS::ErrorCode(Error error) {
    switch (error) {
    case Error::None:
        return 0;
#define ZORSIM_OS_ERROR(name, posixCode, windowsCode)                                                        \
    case Error::name:                                                                                        \
        return windowsCode;
#include "ZORSimUttOSErrors.def"
#undef ZORSIM_OS_ERROR
    }
    return 87; // ERROR_INVALID_PARAMETER
}

// Windows tells a missing file (2) from a missing directory (3) itself.
bool ZORSimUttOS::IsFileNotFound(int error, const ZOROsString&) {
    return error == ErrorCode(Error::FileNotFound);
}
