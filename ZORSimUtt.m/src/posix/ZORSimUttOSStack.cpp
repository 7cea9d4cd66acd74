// Stack capture and symbol look-up on Linux: the unwinder of the C++ runtime
// for the return addresses, elfutils libdwfl for names, files and lines.
// The portable trace printer serialises InitializeSymbols and Symbolize;
// nothing here is safe to call from two threads at once.
#include "ZORSimUttOSPlatform.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cxxabi.h>
#include <elfutils/libdwfl.h>
#include <unistd.h>
#include <unwind.h>

namespace ZORSimUttOS::Platform {
namespace {

struct Unwinding {
    void** frames;
    int capacity;
    int toSkip;
    int count;
};

_Unwind_Reason_Code CollectFrame(struct _Unwind_Context* context, void* argument) {
    auto* unwinding = static_cast<Unwinding*>(argument);
    const _Unwind_Ptr ip = _Unwind_GetIP(context);
    if (ip == 0)
        return _URC_END_OF_STACK;
    if (unwinding->toSkip > 0) {
        --unwinding->toSkip;
        return _URC_NO_REASON;
    }
    if (unwinding->count >= unwinding->capacity)
        return _URC_END_OF_STACK;
    unwinding->frames[unwinding->count++] = reinterpret_cast<void*>(ip);
    return _URC_NO_REASON;
}

// Debug files are looked for on this machine only, by build id: the
// standard search ends at debuginfod servers, and a failure report must
// never wait on the network.
const Dwfl_Callbacks kCallbacks = {
    .find_elf = dwfl_linux_proc_find_elf,
    .find_debuginfo = dwfl_build_id_find_debuginfo,
    .section_address = nullptr,
    .debuginfo_path = nullptr,
};

Dwfl* g_dwfl = nullptr;

// (Re)reads the process's modules from /proc. Modules already known keep
// what they have loaded; unloaded ones drop out.
bool ReportModules(Dwfl* dwfl) {
    dwfl_report_begin(dwfl);
    const int reported = dwfl_linux_proc_report(dwfl, getpid());
    const int ended = dwfl_report_end(dwfl, nullptr, nullptr);
    return reported == 0 && ended == 0;
}

// The module holding `pc`, or null. dwfl_addrmodule may answer with the
// module just below an unmapped gap (where a library loaded later may now
// sit), so the module's own range is checked too.
Dwfl_Module* FindModule(Dwarf_Addr pc) {
    Dwfl_Module* module = dwfl_addrmodule(g_dwfl, pc);
    if (module == nullptr)
        return nullptr;
    Dwarf_Addr low = 0;
    Dwarf_Addr high = 0;
    dwfl_module_info(module, nullptr, &low, &high, nullptr, nullptr, nullptr, nullptr);
    return pc >= low && pc < high ? module : nullptr;
}

std::string Demangle(const char* name) {
    int status = 0;
    char* demangled = abi::__cxa_demangle(name, nullptr, nullptr, &status);
    if (demangled == nullptr)
        return name; // not a C++ name ("main", C functions)
    std::string result(demangled);
    std::free(demangled);
    return result;
}

} // namespace

// The first frame handed to the unwinder's callback is CaptureStack itself.
ZORSIM_NOINLINE int CaptureStack(void** frames, int capacity, int skip) {
    if (frames == nullptr || capacity <= 0)
        return 0;
    Unwinding unwinding{frames, capacity, 1 + (skip > 0 ? skip : 0), 0};
    _Unwind_Backtrace(CollectFrame, &unwinding);
    // Keeps this frame off the tail-call path so that the skip count holds.
    ZORSIM_NO_TAIL_CALL();
    return unwinding.count;
}

bool InitializeSymbols() {
    if (g_dwfl != nullptr) {
        dwfl_end(g_dwfl);
        g_dwfl = nullptr;
    }
    Dwfl* dwfl = dwfl_begin(&kCallbacks);
    if (dwfl == nullptr)
        return false;
    if (!ReportModules(dwfl)) {
        dwfl_end(dwfl);
        return false;
    }
    g_dwfl = dwfl;
    return true;
}

SymbolInfo Symbolize(void* returnAddress) {
    SymbolInfo info;
    if (g_dwfl == nullptr || returnAddress == nullptr)
        return info;
    // One byte back lands inside the call instruction, so the line shown is
    // the call's and not the next statement's.
    const Dwarf_Addr pc = reinterpret_cast<std::uintptr_t>(returnAddress) - 1;
    Dwfl_Module* module = FindModule(pc);
    if (module == nullptr && ReportModules(g_dwfl)) // a library loaded since
        module = FindModule(pc);
    if (module == nullptr)
        return info;

    if (const char* name = dwfl_module_addrname(module, pc)) {
        info.hasFunction = true;
        info.function = Demangle(name);
    }
    if (Dwfl_Line* line = dwfl_module_getsrc(module, pc)) {
        int lineNumber = 0;
        const char* file = dwfl_lineinfo(line, nullptr, &lineNumber, nullptr, nullptr, nullptr);
        if (file != nullptr) {
            info.hasLine = true;
            info.file = file;
            info.line = lineNumber;
        }
    }
    return info;
}

} // namespace ZORSimUttOS::Platform
