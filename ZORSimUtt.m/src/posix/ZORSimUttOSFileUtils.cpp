// POSIX side of the file utilities: identity, rename, links, removal,
// directories and absolute names.
#include "ZORSimUttOSPlatform.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <vector>

namespace ZORSimUttOS::Platform {
namespace {

// Runs a call again while a signal interrupts it; 0 or its errno.
template <class Call> int Retried(Call call) {
    int result;
    do
        result = call();
    while (result < 0 && errno == EINTR);
    return result < 0 ? errno : 0;
}

// The device number in 32 bits. Linux keeps device numbers in 32 bits
// itself (12-bit major, 20-bit minor), so this is exact there. A system with
// wider device numbers would have its excess bits folded in, and two devices
// could then share a volume number.
unsigned int VolumeOf(dev_t device) {
    const unsigned long long majorNumber = major(device);
    const unsigned long long minorNumber = minor(device);
    if (majorNumber < (1ull << 12) && minorNumber < (1ull << 20))
        return static_cast<unsigned int>((majorNumber << 20) | minorNumber);
    const auto wide = static_cast<unsigned long long>(device);
    return static_cast<unsigned int>(wide ^ (wide >> 32));
}

// The working directory, however long.
int WorkingDirectory(std::string& directory) {
    std::vector<char> buffer(256);
    for (;;) {
        if (::getcwd(buffer.data(), buffer.size()) != nullptr) {
            directory = buffer.data();
            return 0;
        }
        if (errno != ERANGE)
            return errno;
        buffer.resize(buffer.size() * 2);
    }
}

} // namespace

int QueryFileIdentity(const ZOROsString& path, FileIdentity& identity, Service& failed) {
    failed = Service::CreateFile;
    // No access to the data is asked for, as with an open of access 0: a file
    // the caller may not read still has an identity.
#if defined(O_PATH)
    constexpr int kFlags = O_PATH | O_CLOEXEC;
#else
    constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
#endif
    int fd = -1;
    if (const int openError = Retried([&] { return fd = ::open(path.c_str(), kFlags); }))
        return openError;

    failed = Service::GetFileInformationByHandle;
    int error = 0;
    struct stat status;
    if (::fstat(fd, &status) != 0) {
        error = errno;
    } else {
        const auto inode = static_cast<unsigned long long>(status.st_ino);
        identity.volume = VolumeOf(status.st_dev);
        identity.indexHigh = static_cast<unsigned int>(inode >> 32);
        identity.indexLow = static_cast<unsigned int>(inode);
    }
    ::close(fd);
    return error;
}

int RenameFile(const ZOROsString& from, const ZOROsString& to) {
    // rename(2) replaces an existing target atomically and never copies.
    return Retried([&] { return ::rename(from.c_str(), to.c_str()); });
}

int MakeHardLink(const ZOROsString& link, const ZOROsString& existing) {
    return Retried([&] { return ::link(existing.c_str(), link.c_str()); });
}

int RemoveFile(const ZOROsString& path) {
    // unlink(2) refuses a directory (EISDIR), as DeleteFile does.
    return Retried([&] { return ::unlink(path.c_str()); });
}

int MakeDirectory(const ZOROsString& path) {
    // The umask narrows the permissions, as for any file the library makes.
    return Retried([&] { return ::mkdir(path.c_str(), 0777); });
}

int DeleteDirectory(const ZOROsString& path) {
    return Retried([&] { return ::rmdir(path.c_str()); });
}

int FullPath(const ZOROsString& path, ZORString& full) {
    const std::string_view name(path.c_str(), path.size());
    std::string joined;
    if (name.empty() || name.front() != '/') {
        if (const int cwdError = WorkingDirectory(joined))
            return cwdError;
        joined += '/';
    }
    joined += name;

    // By name alone: ".." drops the component before it whatever that is (a
    // link is not followed), and goes no higher than the root.
    std::vector<std::string_view> parts;
    const std::string_view text(joined);
    for (std::size_t at = 0; at <= text.size();) {
        std::size_t end = text.find('/', at);
        if (end == std::string_view::npos)
            end = text.size();
        const std::string_view part = text.substr(at, end - at);
        if (part == "..") {
            if (!parts.empty())
                parts.pop_back();
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
        at = end + 1;
    }
    std::string result;
    for (const std::string_view part : parts) {
        result += '/';
        result += part;
    }
    // A name given with a trailing separator keeps it, as a directory name.
    if (result.empty() || (!name.empty() && name.back() == '/'))
        result += '/';
    full = ZORString::BuildFromUTF8(result.data(), result.size());
    return 0;
}

} // namespace ZORSimUttOS::Platform
