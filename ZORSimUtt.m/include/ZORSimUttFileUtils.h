// Files and directories by name: identity, copy, move, hard links, removal,
// directories, and absolute and relative names. Every name is checked, put
// in the OS form (FixPathForOS) and converted before use; OS failures raise
// ZORSimExcSystemError with the service name of the failed call.
#pragma once

#include "ZORSimContainersExport.h"
#include "ZORSimUttFileGlob.h"
#include "ZORString.h"

class ZORSimUttOSFile;

namespace ZORSimUttFileUtils {

// The identity of a file on its volume. Two names denote the same file
// exactly when their FileIds are equal. On POSIX the volume is the device
// number and the index the inode number.
struct FileId {
    unsigned int volumeSerialNumber = 0;
    unsigned int fileIndexHigh = 0;
    unsigned int fileIndexLow = 0;

    bool operator==(const FileId& other) const {
        return volumeSerialNumber == other.volumeSerialNumber && fileIndexHigh == other.fileIndexHigh &&
               fileIndexLow == other.fileIndexLow;
    }
};

// ZORSimExcNoSuchFile when the file is missing from an existing directory;
// ZORSimExcSystemError "CreateFile" or "GetFileInformationByHandle" otherwise.
ZORSIM_API FileId GetFileID(const ZORString& path);
// False, without raising, when either name does not exist.
ZORSIM_API bool SameFile(const ZORString& a, const ZORString& b);

// Copies the whole of `from` into `to`, which is created or emptied.
ZORSIM_API void Copy(const ZORString& from, const ZORString& to);
// Copies the whole of `from` into an open file at its position; `to` stays open.
ZORSIM_API void Copy(const ZORString& from, ZORSimUttOSFile& to);
// Renames, replacing an existing `to`; nothing is copied across volumes.
// ZORSimExcSystemError "MoveFileEx".
ZORSIM_API void Move(const ZORString& from, const ZORString& to);
// Makes `link` a hard link to `existing`: true when made, false when `link`
// already exists. ZORSimExcSystemError "CreateHardLink" otherwise.
ZORSIM_API bool LinkIfUnique(const ZORString& existing, const ZORString& link);
// A missing file is a failure: ZORSimExcSystemError "DeleteFile".
ZORSIM_API void Remove(const ZORString& path);
// Whether the file was removed; OS failures raise nothing.
ZORSIM_API bool RemoveNoThrow(const ZORString& path);
// Removes every file matching the wildcard pattern, without recursion. A
// matching directory stops it with ZORSimExcSystemError "DeleteFile".
ZORSIM_API void RemoveAll(const ZORString& pattern);
// One level; an existing directory is a failure. ZORSimExcSystemError
// "CreateDirectory".
ZORSIM_API void MakeDir(const ZORString& path);
// An empty directory only. ZORSimExcSystemError "RemoveDirectory".
ZORSIM_API void RemoveDir(const ZORString& path);

// The absolute name in the OS form: joined with the working directory, `.`
// and `..` taken out by name (no links followed, no existence check).
ZORSIM_API ZORString AbsolutePath(const ZORString& path);
// `branch` inside `path` when that is an existing directory, else beside it.
ZORSIM_API ZORString RerootBranch(const ZORString& path, const ZORString& branch);
// `file` relative to `directory` when it lies under it, else its absolute
// name (never with `..`); `file` unchanged when `directory` is empty.
ZORSIM_API ZORString ShortenFileName(const ZORString& directory, const ZORString& file);

} // namespace ZORSimUttFileUtils
