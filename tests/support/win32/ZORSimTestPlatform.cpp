// The support layer on Windows, natively or under Wine. Text crosses the
// API as UTF-16.
#include "ZORSimTestLibrary.h"
#include "ZORSimTestSupport.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>

#include <filesystem>

namespace zorsim_test {
namespace {

std::wstring Wide(const std::string& text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end())).wstring();
}

std::string Narrow(const std::wstring& wide) {
    const std::u8string text = std::filesystem::path(wide).u8string();
    return {text.begin(), text.end()};
}

// Quoted so that the child's C runtime splits the argument off unchanged:
// backslashes double only before a quote, the closing one included.
std::wstring Quoted(const std::wstring& arg) {
    if (!arg.empty() && arg.find_first_of(L" \t\"") == std::wstring::npos)
        return arg;
    std::wstring quoted = L"\"";
    for (std::size_t i = 0, slashes = 0; i <= arg.size(); ++i) {
        if (i < arg.size() && arg[i] == L'\\') {
            ++slashes;
            continue;
        }
        quoted.append(i == arg.size() || arg[i] == L'"' ? 2 * slashes : slashes, L'\\');
        slashes = 0;
        if (i < arg.size())
            quoted += arg[i] == L'"' ? L"\\\"" : std::wstring(1, arg[i]);
    }
    return quoted + L"\"";
}

bool IsWine() {
    const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
}

} // namespace

// The parent reads the standard streams as bytes: no line-end translation.
std::vector<std::string> ScenarioArguments(int, char**) {
    for (int fd = 0; fd < 3; ++fd)
        _setmode(fd, _O_BINARY);
    int count = 0;
    wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> args;
    for (int i = 0; i < count; ++i)
        args.push_back(Narrow(wide[i]));
    LocalFree(wide);
    return args;
}

// The C runtime's copy for getenv, the system's for children.
void SetEnv(const char* name, const char* value) {
    _putenv_s(name, value != nullptr ? value : ""); // "" clears the variable
    SetEnvironmentVariableW(Wide(name).c_str(), value != nullptr ? Wide(value).c_str() : nullptr);
}

std::intptr_t Spawn(const std::string& program, const std::vector<std::string>& args,
                    std::FILE* const files[3]) {
    std::wstring command;
    for (const std::string& arg : args)
        command += (command.empty() ? L"" : L" ") + Quoted(Wide(arg));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    HANDLE* handles[3] = {&startup.hStdInput, &startup.hStdOutput, &startup.hStdError};
    for (int i = 0; i < 3; ++i) {
        *handles[i] = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(files[i])));
        SetHandleInformation(*handles[i], HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    }
    PROCESS_INFORMATION info{};
    const bool started = CreateProcessW(Wide(program).c_str(), command.data(), nullptr, nullptr, TRUE, 0,
                                        nullptr, nullptr, &startup, &info);
    EXPECT_TRUE(started) << "cannot start " << program << ": error " << GetLastError();
    CloseHandle(info.hThread);
    return reinterpret_cast<std::intptr_t>(info.hProcess);
}

// An unhandled exception ends a process with its NTSTATUS code.
int Reap(std::intptr_t child) {
    const HANDLE process = reinterpret_cast<HANDLE>(child);
    DWORD code = 0;
    WaitForSingleObject(process, INFINITE);
    const bool exited = GetExitCodeProcess(process, &code) && code < 0xC0000000u;
    CloseHandle(process);
    return exited ? static_cast<int>(code) : -1;
}

std::string SelfPath() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return Narrow(path);
}

// Under Wine, run as root: a small tmpfs, mounted and filled here and
// unmounted at process end. Wine starts Unix programs (its drive Z: is the
// root) but cannot wait for them: the script leaves a mark when done.
std::string FullDiskPath() {
    static const std::string mount = "/tmp/zorsim-full-" + std::to_string(GetCurrentProcessId());
    static const auto shell = [](const std::string& script) { Process("Z:/bin/sh", {"sh", "-c", script}); };
    static const bool full = IsWine() && [] {
        shell("mkdir " + mount + " && mount -t tmpfs -o size=1m zorsim " + mount + " && cat /dev/zero >" +
              mount + "/fill; : >" + mount + ".done");
        std::atexit([] { shell("umount -l " + mount + "; rm -rf " + mount + " " + mount + ".done"); });
        for (int wait = 0; wait < 500 && !Exists("Z:" + mount + ".done"); ++wait)
            Sleep(10);
        ULARGE_INTEGER free{}; // none in the tmpfs, if mounting was allowed
        return GetDiskFreeSpaceExW(Wide("Z:" + mount).c_str(), &free, nullptr, nullptr) && free.QuadPart == 0;
    }();
    return full ? "Z:" + mount + "/full" : "";
}

LoadedLibrary::LoadedLibrary(const std::string& path) : m_handle(LoadLibraryW(Wide(path).c_str())) {
    if (m_handle == nullptr)
        m_error = "LoadLibraryW failed with " + std::to_string(GetLastError());
}
bool LoadedLibrary::Unload() {
    return FreeLibrary(static_cast<HMODULE>(m_handle)) != 0;
}
void* LoadedLibrary::Symbol(const char* name) const {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(m_handle), name));
}

} // namespace zorsim_test
