// Stack traces on Windows: frames from RtlCaptureStackBackTrace, names and
// lines from DbgHelp, which reads the PDB of each module.
#include "ZORSimUttOSPlatform.h"
#include "ZORSimUttOSWin32.h"

#include "ZORBasAti.h"

#include <dbghelp.h>
#include <psapi.h>

#include <cstdint>
#include <vector>

namespace ZORSimUttOS::Platform {
namespace {

// DbgHelp knows the set-up by a handle value of our choice: the address of a
// variable of this module, so that no other user of DbgHelp in the process
// shares it.
char g_symbolTag;
HANDLE SymbolHandle() {
    return reinterpret_cast<HANDLE>(&g_symbolTag);
}
bool g_ready = false;

constexpr DWORD kModuleNameCharacters = 4096;
constexpr DWORD kSymbolNameCharacters = 1024;
// Undecorated names, deferred loads, line numbers.
constexpr DWORD kSymbolOptions = 0x16;

// Registers every module of the process with the symbol handler; a module
// registered before is left as it is.
bool LoadModules() {
    const HANDLE process = GetCurrentProcess();
    DWORD needed = 0;
    if (!K32EnumProcessModules(process, nullptr, 0, &needed))
        return false;
    std::vector<HMODULE> modules(needed / sizeof(HMODULE));
    if (!K32EnumProcessModules(process, modules.data(), static_cast<DWORD>(modules.size() * sizeof(HMODULE)),
                               &needed))
        return false;
    modules.resize(std::min<std::size_t>(modules.size(), needed / sizeof(HMODULE)));
    std::vector<wchar_t> path(kModuleNameCharacters);
    std::vector<wchar_t> base(kModuleNameCharacters);
    for (const HMODULE module : modules) {
        MODULEINFO information{};
        if (!K32GetModuleInformation(process, module, &information, sizeof information))
            continue;
        if (K32GetModuleFileNameExW(process, module, path.data(), kModuleNameCharacters) == 0)
            continue;
        if (K32GetModuleBaseNameW(process, module, base.data(), kModuleNameCharacters) == 0)
            continue;
        SymLoadModuleExW(SymbolHandle(), nullptr, path.data(), base.data(),
                         reinterpret_cast<DWORD64>(information.lpBaseOfDll), information.SizeOfImage, nullptr,
                         0);
    }
    return true;
}

} // namespace

// FramesToSkip 0 is this function itself.
ZORSIM_NOINLINE int CaptureStack(void** frames, int capacity, int skip) {
    if (frames == nullptr || capacity <= 0)
        return 0;
    const int count = RtlCaptureStackBackTrace(static_cast<DWORD>(1 + (skip > 0 ? skip : 0)),
                                               static_cast<DWORD>(capacity), frames, nullptr);
    ZORSIM_NO_TAIL_CALL();
    return count;
}

bool InitializeSymbols() {
    if (g_ready) {
        SymCleanup(SymbolHandle());
        g_ready = false;
    }
    // In UTF-8 from the base, so that no directory is lost to the ANSI code page.
    const char* path = ZORBasGetEnv("PATH");
    const std::wstring searchPath = ZORString(path).ToWChar();
    if (!SymInitializeW(SymbolHandle(), path != nullptr ? searchPath.c_str() : nullptr, FALSE))
        return false;
    SymSetOptions(SymGetOptions() | kSymbolOptions);
    g_ready = true;
    LoadModules();
    return true;
}

SymbolInfo Symbolize(void* returnAddress) {
    SymbolInfo info;
    if (!g_ready || returnAddress == nullptr)
        return info;
    // One byte back lands inside the call instruction, so the name and line
    // are the call's even when the call ends its function.
    const DWORD64 address = reinterpret_cast<std::uintptr_t>(returnAddress) - 1;

    alignas(
        SYMBOL_INFOW) unsigned char storage[sizeof(SYMBOL_INFOW) + kSymbolNameCharacters * sizeof(wchar_t)];
    auto* symbol = reinterpret_cast<SYMBOL_INFOW*>(storage);
    const auto lookUp = [&] {
        *symbol = SYMBOL_INFOW{};
        symbol->SizeOfStruct = sizeof(SYMBOL_INFOW);
        symbol->MaxNameLen = kSymbolNameCharacters;
        DWORD64 displacement = 0;
        return SymFromAddrW(SymbolHandle(), address, &displacement, symbol) != FALSE;
    };
    // A module loaded since the set-up is registered on first need.
    bool found = lookUp();
    if (!found && LoadModules())
        found = lookUp();
    if (found) {
        info.hasFunction = true;
        info.function = Narrow(symbol->Name, std::min<std::size_t>(symbol->NameLen, kSymbolNameCharacters));
    }

    IMAGEHLP_LINEW64 line{};
    line.SizeOfStruct = sizeof line;
    DWORD column = 0;
    if (SymGetLineFromAddrW64(SymbolHandle(), address, &column, &line) && line.FileName != nullptr) {
        info.hasLine = true;
        info.file = Narrow(line.FileName, wcslen(line.FileName));
        info.line = static_cast<int>(line.LineNumber);
    }
    return info;
}

} // namespace ZORSimUttOS::Platform
