// Fault injection into ZORSimUttPythonGlueTest_CheckString, for tests of its
// error paths that no real input can reach.
#pragma once

#include "ZORSimContainersExport.h"

namespace ZORSimUttPythonGlueTestFault {

enum class Kind {
    None,
    AllocationFails, // the copy's malloc gives null
    StdException,    // a std::runtime_error with the text "injected failure"
    Foreign          // something that is not a std::exception
};

// The next call of CheckString fails this way once its input has passed the
// string checks.
ZORSIM_API void Arm(Kind kind);
// Used by CheckString: the armed fault, which is disarmed by taking it.
Kind Take();

} // namespace ZORSimUttPythonGlueTestFault
