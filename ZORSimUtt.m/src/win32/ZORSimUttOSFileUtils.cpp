// Windows side of the file utilities: identity, rename, links, removal,
// directories and absolute names.
#include "ZORSimUttOSPlatform.h"
#include "ZORSimUttOSWin32.h"

#include <cerrno>
#include <cstdlib>

namespace ZORSimUttOS::Platform {

int QueryFileIdentity(const ZOROsString& path, FileIdentity& identity, Service& failed) {
    failed = Service::CreateFile;
    // No access to the data is asked for: a file the caller may not read
    // still has an identity.
    const HANDLE file = CreateFileW(path.c_str(), 0, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_RANDOM_ACCESS | FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return static_cast<int>(GetLastError());
    failed = Service::GetFileInformationByHandle;
    BY_HANDLE_FILE_INFORMATION information{};
    const int error = LastErrorUnless(GetFileInformationByHandle(file, &information));
    if (error == 0) {
        identity.volume = information.dwVolumeSerialNumber;
        identity.indexHigh = information.nFileIndexHigh;
        identity.indexLow = information.nFileIndexLow;
    }
    CloseHandle(file);
    return error;
}

int RenameFile(const ZOROsString& from, const ZOROsString& to) {
    return LastErrorUnless(MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING));
}

int MakeHardLink(const ZOROsString& link, const ZOROsString& existing) {
    return LastErrorUnless(CreateHardLinkW(link.c_str(), existing.c_str(), nullptr));
}

int RemoveFile(const ZOROsString& path) {
    return LastErrorUnless(DeleteFileW(path.c_str()));
}

int MakeDirectory(const ZOROsString& path) {
    return LastErrorUnless(CreateDirectoryW(path.c_str(), nullptr));
}

int DeleteDirectory(const ZOROsString& path) {
    return LastErrorUnless(RemoveDirectoryW(path.c_str()));
}

// The runtime's own absolute form, with backslashes; it allocates.
int FullPath(const ZOROsString& path, ZORString& full) {
    wchar_t* absolute = _wfullpath(nullptr, path.c_str(), 0);
    if (absolute == nullptr)
        return errno != 0 ? errno : EINVAL;
    full = ZORString::BuildFromWChar(absolute);
    std::free(absolute);
    return 0;
}

} // namespace ZORSimUttOS::Platform
