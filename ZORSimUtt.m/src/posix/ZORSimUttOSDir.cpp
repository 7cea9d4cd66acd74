// Directories and file attributes on POSIX systems.
#include "ZORSimUttOSPlatform.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>

struct ZORSimUttOS::DirListing {
    DIR* dir = nullptr;
};

namespace ZORSimUttOS::Platform {

// readdir knows no patterns: every entry is listed, the caller matches.
int OpenDir(const ZOROsString& path, const ZOROsString&, DirListing*& listing) {
    listing = nullptr;
    DIR* dir = opendir(path.size() == 0 ? "." : path.c_str());
    if (dir == nullptr)
        return errno;
    listing = new DirListing{dir};
    return 0;
}

bool ReadDir(DirListing* listing, const char*& name, std::size_t& length, int& error) {
    // readdir tells the end from a failure only through errno.
    errno = 0;
    const dirent* entry = readdir(listing->dir);
    if (entry == nullptr) {
        error = errno;
        return false;
    }
    error = 0;
    name = entry->d_name;
    length = std::strlen(entry->d_name);
    return true;
}

void CloseDir(DirListing* listing) {
    if (listing == nullptr)
        return;
    closedir(listing->dir);
    delete listing;
}

int QueryAttributes(const ZOROsString& path, FileAttributes& attributes) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0)
        return errno;
    attributes.isDirectory = S_ISDIR(status.st_mode);
    // The owner-write bit stands for the Windows read-only attribute.
    attributes.writable = (status.st_mode & S_IWUSR) != 0;
    return 0;
}

} // namespace ZORSimUttOS::Platform
