// Files on Windows: the handle is the OS handle itself, which keeps its own
// file pointer; a temporary file goes with its last handle.
#include "ZORSimUttOSPlatform.h"
#include "ZORSimUttOSWin32.h"

namespace ZORSimUttOS::Platform {
namespace {

struct OpenArguments {
    DWORD access;
    DWORD share;
    DWORD disposition;
    DWORD flags;
};

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD kShareNoWrite = FILE_SHARE_READ | FILE_SHARE_DELETE;
constexpr DWORD kRandom = FILE_FLAG_RANDOM_ACCESS | FILE_ATTRIBUTE_NORMAL;

OpenArguments ArgumentsOf(FileOpenKind kind) {
    switch (kind) {
    case FileOpenKind::Read:
        return {GENERIC_READ, kShareAll, OPEN_EXISTING, kRandom};
    case FileOpenKind::Update:
        return {GENERIC_READ | GENERIC_WRITE, kShareNoWrite, OPEN_EXISTING, kRandom};
    case FileOpenKind::Write:
        return {GENERIC_READ | GENERIC_WRITE, kShareNoWrite, CREATE_ALWAYS, kRandom};
    case FileOpenKind::Append:
        return {FILE_APPEND_DATA, kShareNoWrite, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL};
    case FileOpenKind::CreateNew:
        return {GENERIC_READ | GENERIC_WRITE, kShareNoWrite, CREATE_NEW, kRandom};
    case FileOpenKind::CreateNewTemporary:
        return {GENERIC_READ | GENERIC_WRITE, kShareNoWrite, CREATE_NEW,
                kRandom | FILE_FLAG_DELETE_ON_CLOSE | FILE_ATTRIBUTE_TEMPORARY};
    }
    return {GENERIC_READ, kShareAll, OPEN_EXISTING, kRandom};
}

// No file is the null handle, which every call refuses as invalid.
// (INVALID_HANDLE_VALUE would not do: it is also the handle of the current
// process, which CloseHandle closes without complaint.)
HANDLE Os(FileHandle handle) {
    return static_cast<HANDLE>(handle);
}

} // namespace

int OpenFile(const ZOROsString& path, FileOpenKind kind, FileHandle& handle) {
    const OpenArguments arguments = ArgumentsOf(kind);
    const HANDLE file = CreateFileW(path.c_str(), arguments.access, arguments.share, nullptr,
                                    arguments.disposition, arguments.flags, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return static_cast<int>(GetLastError());
    handle = file;
    return 0;
}

int CloseFile(FileHandle handle) {
    return LastErrorUnless(CloseHandle(Os(handle)));
}

ZORBAS_HOT int ReadFile(FileHandle handle, char* buffer, unsigned int size, unsigned int& moved) {
    DWORD got = 0;
    const int error = LastErrorUnless(::ReadFile(Os(handle), buffer, size, &got, nullptr));
    moved = got;
    return error;
}

ZORBAS_HOT int WriteFile(FileHandle handle, const char* buffer, unsigned int size, unsigned int& moved) {
    DWORD put = 0;
    const int error = LastErrorUnless(::WriteFile(Os(handle), buffer, size, &put, nullptr));
    moved = put;
    return error;
}

ZORBAS_HOT int SetFilePointer(FileHandle handle, unsigned long long position) {
    LONG high = static_cast<LONG>(position >> 32);
    SetLastError(NO_ERROR);
    const DWORD low =
        ::SetFilePointer(Os(handle), static_cast<LONG>(position & 0xFFFFFFFFu), &high, FILE_BEGIN);
    // The low part may be all ones for a valid position: the last error tells.
    return low == INVALID_SET_FILE_POINTER ? static_cast<int>(GetLastError()) : 0;
}

int SetEndOfFile(FileHandle handle) {
    return LastErrorUnless(::SetEndOfFile(Os(handle)));
}

int FlushFileBuffers(FileHandle handle) {
    return LastErrorUnless(::FlushFileBuffers(Os(handle)));
}

int GetFileSize(FileHandle handle, unsigned long long& size) {
    DWORD high = 0;
    SetLastError(NO_ERROR);
    const DWORD low = ::GetFileSize(Os(handle), &high);
    if (low == INVALID_FILE_SIZE && GetLastError() != NO_ERROR)
        return static_cast<int>(GetLastError());
    size = (static_cast<unsigned long long>(high) << 32) | low;
    return 0;
}

// A lock of zero bytes at offset 0: a token between processes that all take
// it, guarding no bytes against plain transfers. Waits until granted.
int LockFile(FileHandle handle) {
    OVERLAPPED at{};
    return LastErrorUnless(LockFileEx(Os(handle), LOCKFILE_EXCLUSIVE_LOCK, 0, 0, 0, &at));
}

int UnlockFile(FileHandle handle) {
    return LastErrorUnless(::UnlockFile(Os(handle), 0, 0, 0, 0));
}

} // namespace ZORSimUttOS::Platform
