// Windows side of the base library's operating-system services.
#include "../ZORBasPlatform.h"

#include <windows.h>

#include <cwchar>
#include <mutex>
#include <set>
#include <string>

namespace zorbas_os {
namespace {

std::string ToUTF8(const std::wstring& wide) {
    const int size = static_cast<int>(wide.size());
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(bytes > 0 ? bytes : 0), '\0');
    if (bytes > 0)
        WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, utf8.data(), bytes, nullptr, nullptr);
    return utf8;
}

} // namespace

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
    utf8 = ToUTF8(wide);
    return !utf8.empty();
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

void WaitWhile(std::atomic<int>& word, int value) {
    WaitOnAddress(reinterpret_cast<volatile void*>(&word), &value, sizeof value, INFINITE);
}

void WakeOne(std::atomic<int>& word) {
    WakeByAddressSingle(reinterpret_cast<void*>(&word));
}

// The C runtime's narrow environment is in the ANSI code page: read the
// process's own, in UTF-16, and keep each value met in UTF-8, never freed,
// as getenv's pointers live on too.
const char* GetEnv(const char* name) {
    const std::wstring wideName = ZORString(name).ToWChar();
    // Unset: even an empty value needs room for its terminator.
    DWORD size = GetEnvironmentVariableW(wideName.c_str(), nullptr, 0);
    if (size == 0)
        return nullptr;
    std::wstring value;
    while (size > value.size()) { // the value may grow between the calls
        value.resize(size);
        size = GetEnvironmentVariableW(wideName.c_str(), value.data(), size);
    }
    value.resize(size);
    static auto* mutex = new std::mutex;
    static auto* values = new std::set<std::string>;
    const std::lock_guard<std::mutex> lock(*mutex);
    return values->insert(ToUTF8(value)).first->c_str();
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
    return ToUTF8(wide);
}

ZORBAS_HOT unsigned long long Ticks() {
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    return static_cast<unsigned long long>(now.QuadPart);
}

bool TicksAreCounter() {
    return false;
}

double SecondsPerTick() {
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return 1.0 / static_cast<double>(frequency.QuadPart);
}

} // namespace zorbas_os
