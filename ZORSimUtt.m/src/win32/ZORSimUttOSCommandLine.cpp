// The process's arguments on Windows: its command line, split by the shell's
// own rules.
#include "ZORSimUttOSPlatform.h"
#include "ZORSimUttOSWin32.h"

#include <shellapi.h>

namespace ZORSimUttOS::Platform {

bool ProcessArguments(std::vector<std::wstring>& args) {
    int count = 0;
    LPWSTR* split = CommandLineToArgvW(GetCommandLineW(), &count);
    if (split == nullptr)
        return false;
    for (int i = 0; i < count; ++i)
        args.emplace_back(split[i]);
    LocalFree(split);
    return true;
}

} // namespace ZORSimUttOS::Platform
