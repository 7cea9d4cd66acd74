// Files on POSIX: a descriptor with a file pointer kept beside it, so that a
// seek is no system call and every transfer is one pread or pwrite; the
// whole-file lock is an flock(2) lock of the open file.
#include "ZORSimUttOSPlatform.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <limits>
#include <mutex>
#include <set>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace ZORSimUttOS::Platform {
namespace {

struct PosixFile {
    int fd = -1; // -1 once a failed close has released the descriptor
    unsigned long long pointer = 0;
    bool append = false;
    // A temporary file: removed when the handle is closed, or at process end
    // by the process that made it.
    std::string temporaryPath;
    pid_t creator = 0;
};

PosixFile* FromHandle(FileHandle handle) {
    auto* file = static_cast<PosixFile*>(handle);
    return file != nullptr && file->fd >= 0 ? file : nullptr;
}

// Temporary files still open, removed at process end (best effort). Never
// destroyed, so that it outlives every other static at exit.
struct Temporaries {
    std::mutex mutex;
    std::set<PosixFile*> open;
};
Temporaries& OpenTemporaries() {
    static Temporaries* temporaries = new Temporaries;
    return *temporaries;
}

void RemoveTemporariesAtExit() {
    Temporaries& temporaries = OpenTemporaries();
    const std::lock_guard<std::mutex> guard(temporaries.mutex);
    const pid_t self = getpid();
    for (PosixFile* file : temporaries.open)
        if (file->creator == self)
            unlink(file->temporaryPath.c_str());
}

void RegisterTemporary(PosixFile* file) {
    static std::once_flag atExit;
    std::call_once(atExit, [] { std::atexit(RemoveTemporariesAtExit); });
    Temporaries& temporaries = OpenTemporaries();
    const std::lock_guard<std::mutex> guard(temporaries.mutex);
    temporaries.open.insert(file);
}

void ForgetTemporary(PosixFile* file) {
    Temporaries& temporaries = OpenTemporaries();
    const std::lock_guard<std::mutex> guard(temporaries.mutex);
    temporaries.open.erase(file);
}

// Releases the descriptor; a temporary file goes first. Returns the error
// of close(2). The descriptor is gone even when close fails (Linux releases
// it before reporting), and an interrupted close must not be repeated.
int ReleaseDescriptor(PosixFile* file) {
    if (!file->temporaryPath.empty()) {
        unlink(file->temporaryPath.c_str());
        ForgetTemporary(file);
        file->temporaryPath.clear();
    }
    const int result = close(file->fd);
    const int error = result == 0 || errno == EINTR ? 0 : errno;
    file->fd = -1;
    return error;
}

int Flags(FileOpenKind kind) {
    switch (kind) {
    case FileOpenKind::Read:
        return O_RDONLY;
    case FileOpenKind::Update:
        return O_RDWR;
    case FileOpenKind::Write:
        return O_RDWR | O_CREAT | O_TRUNC;
    case FileOpenKind::Append:
        return O_WRONLY | O_APPEND | O_CREAT;
    case FileOpenKind::CreateNew:
    case FileOpenKind::CreateNewTemporary:
        return O_RDWR | O_CREAT | O_EXCL;
    }
    return O_RDONLY;
}

constexpr unsigned long long kMaxOffset = static_cast<unsigned long long>(std::numeric_limits<off_t>::max());

} // namespace

int OpenFile(const ZOROsString& path, FileOpenKind kind, FileHandle& handle) {
    // Windows share modes have no POSIX counterpart: nothing here keeps other
    // openers out. A temporary file is for its creator's eyes only.
    const mode_t mode = kind == FileOpenKind::CreateNewTemporary ? 0600 : 0666;
    int fd;
    do
        fd = open(path.c_str(), Flags(kind) | O_CLOEXEC, mode);
    while (fd < 0 && errno == EINTR);
    if (fd < 0)
        return errno;
    if (kind == FileOpenKind::Read) {
        // Windows refuses to open a directory as a file; so do we.
        struct stat status;
        if (fstat(fd, &status) == 0 && S_ISDIR(status.st_mode)) {
            close(fd);
            return EISDIR;
        }
    }
    // The random-access hint; only a hint, so its failure does not count.
    if (kind != FileOpenKind::Append)
        (void)posix_fadvise(fd, 0, 0, POSIX_FADV_RANDOM);

    auto* file = new PosixFile;
    file->fd = fd;
    file->append = kind == FileOpenKind::Append;
    if (kind == FileOpenKind::CreateNewTemporary) {
        file->temporaryPath.assign(path.c_str(), path.size());
        file->creator = getpid();
        RegisterTemporary(file);
    }
    handle = file;
    return 0;
}

int CloseFile(FileHandle handle) {
    auto* file = static_cast<PosixFile*>(handle);
    if (file == nullptr)
        return EBADF;
    // Its descriptor went with an earlier failed close: only free it.
    if (file->fd < 0) {
        delete file;
        return 0;
    }
    const int error = ReleaseDescriptor(file);
    if (error == 0)
        delete file;
    return error;
}

ZORBAS_HOT int ReadFile(FileHandle handle, char* buffer, unsigned int size, unsigned int& moved) {
    moved = 0;
    PosixFile* file = FromHandle(handle);
    if (file == nullptr)
        return EBADF;
    ssize_t got;
    do
        got = pread(file->fd, buffer, size, static_cast<off_t>(file->pointer));
    while (got < 0 && errno == EINTR);
    if (got < 0)
        return errno;
    moved = static_cast<unsigned int>(got);
    file->pointer += moved;
    return 0;
}

ZORBAS_HOT int WriteFile(FileHandle handle, const char* buffer, unsigned int size, unsigned int& moved) {
    moved = 0;
    PosixFile* file = FromHandle(handle);
    if (file == nullptr)
        return EBADF;
    ssize_t put;
    do
        put = file->append ? write(file->fd, buffer, size)
                           : pwrite(file->fd, buffer, size, static_cast<off_t>(file->pointer));
    while (put < 0 && errno == EINTR);
    if (put < 0)
        return errno;
    moved = static_cast<unsigned int>(put);
    file->pointer += moved;
    return 0;
}

ZORBAS_HOT int SetFilePointer(FileHandle handle, unsigned long long position) {
    PosixFile* file = FromHandle(handle);
    if (file == nullptr)
        return EBADF;
    // What lseek would refuse: a position beyond the largest offset.
    if (position > kMaxOffset)
        return EINVAL;
    file->pointer = position;
    return 0;
}

int SetEndOfFile(FileHandle handle) {
    PosixFile* file = FromHandle(handle);
    if (file == nullptr)
        return EBADF;
    int result;
    do
        result = ftruncate(file->fd, static_cast<off_t>(file->pointer));
    while (result < 0 && errno == EINTR);
    return result < 0 ? errno : 0;
}

int FlushFileBuffers(FileHandle handle) {
    PosixFile* file = FromHandle(handle);
    if (file == nullptr)
        return EBADF;
    int result;
    do
        result = fsync(file->fd);
    while (result < 0 && errno == EINTR);
    // A device or pipe that cannot be synchronised has nothing to flush.
    if (result < 0 && (errno == EINVAL || errno == EROFS))
        return 0;
    return result < 0 ? errno : 0;
}

int GetFileSize(FileHandle handle, unsigned long long& size) {
    size = 0;
    PosixFile* file = FromHandle(handle);
    if (file == nullptr)
        return EBADF;
    struct stat status;
    if (fstat(file->fd, &status) < 0)
        return errno;
    size = static_cast<unsigned long long>(status.st_size);
    return 0;
}

namespace {

// flock(2) locks belong to the open file, not the process: two opens in one
// process exclude each other as two Windows handles do, closing another
// descriptor of the same file does not drop it, and, as on Windows, a handle
// open for reading only may take the exclusive lock.
int WholeFileLock(PosixFile* file, int operation) {
    int result;
    do
        result = flock(file->fd, operation);
    while (result < 0 && errno == EINTR);
    return result < 0 ? errno : 0;
}

} // namespace

int LockFile(FileHandle handle) {
    PosixFile* file = FromHandle(handle);
    if (file == nullptr)
        return EBADF;
    return WholeFileLock(file, LOCK_EX);
}

// Unlike Windows, releasing a lock that is not held succeeds.
int UnlockFile(FileHandle handle) {
    PosixFile* file = FromHandle(handle);
    if (file == nullptr)
        return EBADF;
    return WholeFileLock(file, LOCK_UN);
}

} // namespace ZORSimUttOS::Platform

namespace ZORSimUttOS {

// ENOENT stands for both of the Windows codes "file not found" and "path not
// found"; the directory tells them apart.
bool IsFileNotFound(int error, const ZOROsString& path) {
    if (error != ENOENT)
        return false;
    const std::string text(path.c_str(), path.size());
    const std::string::size_type slash = text.find_last_of('/');
    const std::string directory = slash == std::string::npos ? "." : slash == 0 ? "/" : text.substr(0, slash);
    struct stat status;
    return stat(directory.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

} // namespace ZORSimUttOS
