#include "ZORSimUttPythonGlueTest.h"
#include "ZORSimContainersC.h"
#include "ZORSimUttPythonGlueTestFault.h"

#include "ZORBasException.h"
#include "ZORSimBadZORString.h"
#include "ZORSimExcPoolFormat.h"
#include "ZORString.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <stdexcept>

namespace {

ZORSimUttPythonGlueTestFault::Kind g_fault = ZORSimUttPythonGlueTestFault::Kind::None;

// Cut to capacity - 1 characters and always terminated; nothing is written
// where there is no room at all.
void WriteError(char* buffer, unsigned int capacity, const char* text) {
    if (buffer == nullptr || capacity == 0)
        return;
    if (text == nullptr)
        text = "";
    const std::size_t limit = capacity - 1;
    const void* end = std::memchr(text, 0, limit);
    const std::size_t length = end ? static_cast<std::size_t>(static_cast<const char*>(end) - text) : limit;
    std::memcpy(buffer, text, length);
    buffer[length] = '\0';
}

// A null pointer the call would read or write through: 0 and a text that
// names the argument.
unsigned char NullArgument(char* buffer, unsigned int capacity, const char* argument) {
    char text[128];
    std::snprintf(text, sizeof text, "ZORSimUttPythonGlueTest_CheckString: %s is a null pointer.", argument);
    WriteError(buffer, capacity, text);
    return 0;
}

} // namespace

void ZORSimUttPythonGlueTestFault::Arm(Kind kind) {
    g_fault = kind;
}

ZORSimUttPythonGlueTestFault::Kind ZORSimUttPythonGlueTestFault::Take() {
    const Kind kind = g_fault;
    g_fault = Kind::None;
    return kind;
}

extern "C" unsigned char ZORSimUttPythonGlueTest_CheckString(const char* input, char** output,
                                                             char* errorBuffer, unsigned int errorCapacity) {
    if (input == nullptr)
        return NullArgument(errorBuffer, errorCapacity, "input");
    if (output == nullptr)
        return NullArgument(errorBuffer, errorCapacity, "output");
    try {
        const ZORString text(input);
        // Text that is not UTF-8 is refused like every string entering SIM.
        ZORSimBadZORString::Check(text);
        if (text == ZORString("Bad string."))
            ZORSimExcBadStringArgument().Throw("ZORSimUttPythonGlueTest", __LINE__);
        using ZORSimUttPythonGlueTestFault::Kind;
        const Kind fault = ZORSimUttPythonGlueTestFault::Take();
        if (fault == Kind::StdException)
            throw std::runtime_error("injected failure");
        if (fault == Kind::Foreign)
            throw 42;
        const std::size_t bytes = text.Bytes();
        char* copy = fault == Kind::AllocationFails ? nullptr : static_cast<char*>(std::malloc(bytes + 1));
        if (copy == nullptr)
            throw std::bad_alloc();
        std::memcpy(copy, text.c_str(), bytes);
        copy[bytes] = '\0';
        *output = copy;
        return 1;
    } catch (const ZORBasException& e) {
        WriteError(errorBuffer, errorCapacity, e.AsString(ZORBasStringMode(false)).c_str());
    } catch (const std::bad_alloc&) {
        WriteError(errorBuffer, errorCapacity, "Memory allocation failed.");
    } catch (const std::exception& e) {
        WriteError(errorBuffer, errorCapacity, e.what());
    } catch (...) {
        WriteError(errorBuffer, errorCapacity, "Unrecognized exception.");
    }
    return 0;
}
