// Directory searches and file attributes on Windows: the find calls match
// the wildcards themselves.
#include "ZORSimUttOSPlatform.h"
#include "ZORSimUttOSWin32.h"

struct ZORSimUttOS::DirListing {
    HANDLE find = INVALID_HANDLE_VALUE;
    WIN32_FIND_DATAW data{};
    bool pending = false; // the find-first entry is still to be handed out
    std::string name;
};

namespace ZORSimUttOS::Platform {

int OpenDir(const ZOROsString& directory, const ZOROsString& pattern, DirListing*& listing) {
    std::wstring query(directory.c_str(), directory.size());
    query.append(pattern.c_str(), pattern.size());
    auto* found = new DirListing;
    found->find = FindFirstFileW(query.c_str(), &found->data);
    if (found->find == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        // No match in an existing directory: an empty listing.
        if (error != ERROR_FILE_NOT_FOUND) {
            delete found;
            return static_cast<int>(error);
        }
    } else {
        found->pending = true;
    }
    listing = found;
    return 0;
}

bool ReadDir(DirListing* listing, const char*& name, std::size_t& length, int& error) {
    error = 0;
    if (listing->find == INVALID_HANDLE_VALUE)
        return false;
    if (!listing->pending && !FindNextFileW(listing->find, &listing->data)) {
        const DWORD code = GetLastError();
        error = code == ERROR_NO_MORE_FILES ? 0 : static_cast<int>(code);
        return false;
    }
    listing->pending = false;
    listing->name = Narrow(listing->data.cFileName, wcslen(listing->data.cFileName));
    name = listing->name.c_str();
    length = listing->name.size();
    return true;
}

void CloseDir(DirListing* listing) {
    if (listing == nullptr)
        return;
    if (listing->find != INVALID_HANDLE_VALUE)
        FindClose(listing->find);
    delete listing;
}

int QueryAttributes(const ZOROsString& path, FileAttributes& attributes) {
    const DWORD value = GetFileAttributesW(path.c_str());
    if (value == INVALID_FILE_ATTRIBUTES)
        return static_cast<int>(GetLastError());
    attributes.isDirectory = (value & FILE_ATTRIBUTE_DIRECTORY) != 0;
    attributes.writable = (value & FILE_ATTRIBUTE_READONLY) == 0;
    return 0;
}

} // namespace ZORSimUttOS::Platform
