// The portable front of the OS seam: every seam function passes through
// here, where an armed fault fails it before the platform call is made. The
// platform files (posix/, win32/) then hold nothing but their OS calls.
#include "ZORSimUttOS.h"
#include "ZORSimUttOSPlatform.h"

#include "ZORSimExcStorage.h"

#include <atomic>
#include <mutex>

namespace ZORSimUttOSFault {
namespace {

constexpr int kServices = 0
#define ZORSIM_OS_SERVICE(name, text) +1
#include "ZORSimUttOSServices.def"
#undef ZORSIM_OS_SERVICE
    ;

struct Arming {
    int error = 0;
    int times = 0; // 0: not armed
    int after = 0;
};

std::mutex g_mutex;
Arming g_armings[kServices];
// Services with failures still to come; production code reads only this.
std::atomic<int> g_armed{0};

} // namespace

void Arm(ZORSimUttOS::Service service, ZORSimUttOS::Error error, int times, int after) {
    const auto index = static_cast<int>(service);
    if (index < 0 || index >= kServices)
        return;
    const std::lock_guard<std::mutex> lock(g_mutex);
    Arming& arming = g_armings[index];
    if (arming.times > 0)
        g_armed.fetch_sub(1, std::memory_order_relaxed);
    arming = Arming{};
    if (times <= 0)
        return;
    arming = Arming{ZORSimUttOS::ErrorCode(error), times, after < 0 ? 0 : after};
    g_armed.fetch_add(1, std::memory_order_release);
}

void DisarmAll() {
    const std::lock_guard<std::mutex> lock(g_mutex);
    for (Arming& arming : g_armings)
        arming = Arming{};
    g_armed.store(0, std::memory_order_release);
}

ZORBAS_HOT bool Take(ZORSimUttOS::Service service, int& error) {
    if (g_armed.load(std::memory_order_acquire) == 0)
        return false;
    const std::lock_guard<std::mutex> lock(g_mutex);
    Arming& arming = g_armings[static_cast<int>(service)];
    if (arming.times == 0)
        return false;
    if (arming.after > 0) {
        --arming.after;
        return false;
    }
    error = arming.error;
    if (--arming.times == 0)
        g_armed.fetch_sub(1, std::memory_order_relaxed);
    return true;
}

} // namespace ZORSimUttOSFault

namespace ZORSimUttOS {
namespace {

// The platform call, unless a fault is armed for its service.
template <class Call> int Checked(Service service, Call call) {
    int error = 0;
    if (ZORSimUttOSFault::Take(service, error))
        return error;
    return call();
}

bool Faulted(Service service) {
    int error = 0;
    return ZORSimUttOSFault::Take(service, error);
}

} // namespace

const char* ServiceName(Service service) {
    static constexpr const char* kNames[] = {
#define ZORSIM_OS_SERVICE(name, text) text,
#include "ZORSimUttOSServices.def"
#undef ZORSIM_OS_SERVICE
    };
    const auto index = static_cast<std::size_t>(service);
    return index < std::size(kNames) ? kNames[index] : "?";
}

void RaiseSystemError(Service service, int error, const char* source, int line) {
    ZORSimExcSystemError(ServiceName(service), ZORBasSystemError(error)).Throw(source, line);
}

bool IsDiskFull(int error) {
    return error != 0 && (error == ErrorCode(Error::DiskFull) || error == ErrorCode(Error::HandleDiskFull) ||
                          error == ErrorCode(Error::QuotaExceeded));
}

bool IsFileExists(int error) {
    return error != 0 && (error == ErrorCode(Error::FileExists) || error == ErrorCode(Error::AlreadyExists));
}

// The frame of this function counts for the platform's skip, and must stay
// a frame of its own: no inlining, no tail call.
ZORSIM_NOINLINE int CaptureStack(void** frames, int capacity, int skip) {
    if (Faulted(Service::CaptureStack))
        return 0;
    const int count = Platform::CaptureStack(frames, capacity, (skip > 0 ? skip : 0) + 1);
    ZORSIM_NO_TAIL_CALL();
    return count;
}

bool InitializeSymbols() {
    return !Faulted(Service::InitializeSymbols) && Platform::InitializeSymbols();
}

SymbolInfo Symbolize(void* returnAddress) {
    return Platform::Symbolize(returnAddress);
}

bool ProcessArguments(std::vector<std::wstring>& args) {
    args.clear();
    return !Faulted(Service::ProcessArguments) && Platform::ProcessArguments(args);
}

int OpenDir(const ZOROsString& directory, const ZOROsString& pattern, DirListing*& listing) {
    listing = nullptr;
    return Checked(Service::FindFirstFile, [&] { return Platform::OpenDir(directory, pattern, listing); });
}

bool ReadDir(DirListing* listing, const char*& name, std::size_t& length, int& error) {
    error = 0;
    if (ZORSimUttOSFault::Take(Service::FindNextFile, error))
        return false;
    return Platform::ReadDir(listing, name, length, error);
}

void CloseDir(DirListing* listing) {
    Platform::CloseDir(listing);
}

int QueryAttributes(const ZOROsString& path, FileAttributes& attributes) {
    return Checked(Service::GetFileAttributes, [&] { return Platform::QueryAttributes(path, attributes); });
}

int OpenFile(const ZOROsString& path, FileOpenKind kind, FileHandle& handle) {
    handle = nullptr;
    return Checked(Service::CreateFile, [&] { return Platform::OpenFile(path, kind, handle); });
}

// A failed close leaves the handle to a later CloseFile, as the contract has it.
int CloseFile(FileHandle handle) {
    return Checked(Service::CloseHandle, [&] { return Platform::CloseFile(handle); });
}

ZORBAS_HOT int ReadFile(FileHandle handle, char* buffer, unsigned int size, unsigned int& moved) {
    moved = 0;
    return Checked(Service::ReadFile, [&] { return Platform::ReadFile(handle, buffer, size, moved); });
}

ZORBAS_HOT int WriteFile(FileHandle handle, const char* buffer, unsigned int size, unsigned int& moved) {
    moved = 0;
    return Checked(Service::WriteFile, [&] { return Platform::WriteFile(handle, buffer, size, moved); });
}

ZORBAS_HOT int SetFilePointer(FileHandle handle, unsigned long long position) {
    return Checked(Service::SetFilePointer, [&] { return Platform::SetFilePointer(handle, position); });
}

int SetEndOfFile(FileHandle handle) {
    return Checked(Service::SetEndOfFile, [&] { return Platform::SetEndOfFile(handle); });
}

int FlushFileBuffers(FileHandle handle) {
    return Checked(Service::FlushFileBuffers, [&] { return Platform::FlushFileBuffers(handle); });
}

int GetFileSize(FileHandle handle, unsigned long long& size) {
    size = 0;
    return Checked(Service::GetFileSize, [&] { return Platform::GetFileSize(handle, size); });
}

int LockFile(FileHandle handle) {
    return Checked(Service::LockFileEx, [&] { return Platform::LockFile(handle); });
}

int UnlockFile(FileHandle handle) {
    return Checked(Service::UnlockFile, [&] { return Platform::UnlockFile(handle); });
}

// Two calls in one: the open's fault comes first; the query's fault only
// after the open has really succeeded, as the OS would fail them.
int QueryFileIdentity(const ZOROsString& path, FileIdentity& identity, Service& failed) {
    failed = Service::CreateFile;
    int error = 0;
    if (ZORSimUttOSFault::Take(Service::CreateFile, error))
        return error;
    error = Platform::QueryFileIdentity(path, identity, failed);
    if (error == 0 && ZORSimUttOSFault::Take(Service::GetFileInformationByHandle, error)) {
        failed = Service::GetFileInformationByHandle;
        identity = FileIdentity{};
    }
    return error;
}

int RenameFile(const ZOROsString& from, const ZOROsString& to) {
    return Checked(Service::MoveFileEx, [&] { return Platform::RenameFile(from, to); });
}

int MakeHardLink(const ZOROsString& link, const ZOROsString& existing) {
    return Checked(Service::CreateHardLink, [&] { return Platform::MakeHardLink(link, existing); });
}

int RemoveFile(const ZOROsString& path) {
    return Checked(Service::DeleteFile, [&] { return Platform::RemoveFile(path); });
}

int MakeDirectory(const ZOROsString& path) {
    return Checked(Service::CreateDirectory, [&] { return Platform::MakeDirectory(path); });
}

int DeleteDirectory(const ZOROsString& path) {
    return Checked(Service::RemoveDirectory, [&] { return Platform::DeleteDirectory(path); });
}

int FullPath(const ZOROsString& path, ZORString& full) {
    return Checked(Service::FullPath, [&] { return Platform::FullPath(path, full); });
}

} // namespace ZORSimUttOS
