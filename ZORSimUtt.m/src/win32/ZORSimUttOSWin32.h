// What the Windows side of the seam shares: windows.h without its min/max
// macros, and the UTF-8 form of a wide text.
#pragma once

#ifndef NOMINMAX
#    define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#    define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

// windows.h maps these names onto its A and W calls; here they name the
// library's services, and the calls are made by their W names.
#undef CreateFile
#undef DeleteFile
#undef MoveFileEx
#undef CreateHardLink
#undef CreateDirectory
#undef RemoveDirectory
#undef GetFileAttributes
#undef FindFirstFile
#undef FindNextFile

#include <string>

namespace ZORSimUttOS::Platform {

// UTF-8 of a UTF-16 text; a lone surrogate becomes U+FFFD.
inline std::string Narrow(const wchar_t* text, std::size_t length) {
    if (length == 0)
        return {};
    const int size = static_cast<int>(length);
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text, size, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<std::size_t>(bytes > 0 ? bytes : 0), '\0');
    if (bytes > 0)
        WideCharToMultiByte(CP_UTF8, 0, text, size, out.data(), bytes, nullptr, nullptr);
    return out;
}

// 0 for success, else the thread's last error.
inline int LastErrorUnless(BOOL ok) {
    return ok ? 0 : static_cast<int>(GetLastError());
}

} // namespace ZORSimUttOS::Platform
