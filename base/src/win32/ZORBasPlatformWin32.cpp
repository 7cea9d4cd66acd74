// Windows side of the base library's operating-system services.
#include "../ZORBasPlatform.h"

#include <windows.h>

#include <cwchar>
#include <string>

namespace zorbas_os {

bool LocaleToUTF8(const char* text, std::size_t size, std::string& utf8) {
    utf8.clear();
    if (size == 0)
        return true;
    const int inSize = static_cast<int>(size);
    // Narrow text on Windows is in the ANSI code page; go through UTF-16.
    const int wideSize = MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, text, inSize, nullptr, 0);
    if (wideSize <= 0)
        return false;
    std::wstring wide(static_cast<std::size_t>(wideSize), L'\0');
    if (MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, text, inSize, wide.data(), wideSize) != wideSize)
        return false;
    const int outSize = WideCharToMultiByte(CP_UTF8, 0, wide.data(), wideSize, nullptr, 0, nullptr, nullptr);
    if (outSize <= 0)
        return false;
    utf8.resize(static_cast<std::size_t>(outSize));
    return WideCharToMultiByte(CP_UTF8, 0, wide.data(), wideSize, utf8.data(), outSize, nullptr, nullptr) ==
           outSize;
}

double ProcessCpuSeconds() {
    FILETIME created, exited, kernel, user;
    if (!GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernel, &user))
        return 0.0;
    auto ticks = [](const FILETIME& t) {
        return (static_cast<unsigned long long>(t.dwHighDateTime) << 32) | t.dwLowDateTime;
    };
    // FILETIME counts 100 ns ticks.
    return static_cast<double>(ticks(kernel) + ticks(user)) * 1e-7;
}

std::FILE* OpenFile(const ZORString& name, const char* mode) {
    const std::wstring wideName = name.ToWChar();
    std::wstring wideMode;
    for (const char* m = mode; *m != '\0'; ++m)
        wideMode.push_back(static_cast<wchar_t>(static_cast<unsigned char>(*m)));
    return _wfopen(wideName.c_str(), wideMode.c_str());
}

// The system's own wording, in UTF-8, without the line end it carries.
std::string SystemErrorText(int code) {
    wchar_t* text = nullptr;
    const DWORD size = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        static_cast<DWORD>(code), 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::wstring wide(text != nullptr ? text : L"", size);
    if (text != nullptr)
        LocalFree(text);
    while (!wide.empty() && (wide.back() == L'\n' || wide.back() == L'\r' || wide.back() == L' '))
        wide.pop_back();
    if (wide.empty())
        return "Unknown error " + std::to_string(code);
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), nullptr, 0,
                                          nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(bytes > 0 ? bytes : 0), '\0');
    if (bytes > 0)
        WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), utf8.data(), bytes,
                            nullptr, nullptr);
    return utf8;
}

ZORBAS_HOT unsigned long long Ticks() {
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    return static_cast<unsigned long long>(now.QuadPart);
}

double SecondsPerTick() {
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return 1.0 / static_cast<double>(frequency.QuadPart);
}

} // namespace zorbas_os
