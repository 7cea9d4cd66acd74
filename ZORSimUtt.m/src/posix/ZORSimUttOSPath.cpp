// How POSIX writes paths.
#include "ZORSimUttOS.h"

const ZORSimUttOS::PathForm& ZORSimUttOS::OsPathForm() {
    static constexpr PathForm kForm{'/', '\\', false, false};
    return kForm;
}
