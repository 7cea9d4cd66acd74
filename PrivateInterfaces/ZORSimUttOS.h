// The narrow seam between the library and the operating system. Portable
// code above it never calls the OS itself; posix/ and win32/ each implement
// these functions once.
#pragma once

#include "ZORSimContainersExport.h"
#include "ZORString.h"

#include <cstddef>
#include <string>
#include <vector>

namespace ZORSimUttOS {

// The services the library calls, by the name its reports give them.
enum class Service {
#define ZORSIM_OS_SERVICE(name, text) name,
#include "ZORSimUttOSServices.def"
#undef ZORSIM_OS_SERVICE
};
// "CreateFile", "ReadFile", ...: the service name of reports and faults.
ZORSIM_API const char* ServiceName(Service service);

// OS errors by meaning; None is success.
enum class Error {
    None,
#define ZORSIM_OS_ERROR(name, posixCode, windowsCode) name,
#include "ZORSimUttOSErrors.def"
#undef ZORSIM_OS_ERROR
};
// This platform's code for `error` (errno on POSIX, GetLastError on
// Windows); 0 for None.
ZORSIM_API int ErrorCode(Error error);

// ---- the OS path form --------------------------------------------------------

// The one place that knows how this OS writes paths.
struct PathForm {
    char separator;      // '\\' on Windows, '/' elsewhere
    char foreign;        // the other platform's separator, replaced by FixPathForOS
    bool longPathPrefix; // long paths take the \\?\ prefix
    bool findMatches;    // the OS's directory search matches wildcards itself
};
const PathForm& OsPathForm();

// Each area below keeps its own section; an implementation per platform in
// posix/ZORSimUttOS<Area>.cpp and win32/ZORSimUttOS<Area>.cpp.

// ---- stack traces ----------------------------------------------------------

// Captures up to `capacity` return addresses of the calling thread,
// innermost first. skip 0 starts at the caller of CaptureStack; each unit
// of skip leaves out one more frame above it.
int CaptureStack(void** frames, int capacity, int skip);

// Sets up symbol look-up for the process. False when it cannot be set up.
// Calling it again drops the earlier set-up and starts afresh. Neither this
// nor Symbolize is thread-safe: the caller serialises them.
bool InitializeSymbols();

struct SymbolInfo {
    bool hasFunction = false;
    std::string function; // demangled
    bool hasLine = false;
    std::string file;
    int line = 0;
};
// Looks up a return address captured by CaptureStack.
SymbolInfo Symbolize(void* returnAddress);

// ---- command line ----------------------------------------------------------

// The arguments the process was started with, argument 0 (the program name)
// first, as main received them, in the wide form (UTF-16 on Windows, UTF-32
// elsewhere). Narrow arguments are decoded in the codeset of the process
// locale, the C/POSIX locale counting as UTF-8; a byte that does not decode
// becomes the lone surrogate U+DC80 + (byte - 0x80), so the argument ends as
// a BAD string. False, with no arguments, when they cannot be had.
bool ProcessArguments(std::vector<std::wstring>& args);

// ---- directories, globbing and file tests ----------------------------------

// A directory opened for listing. Names are UTF-8 (the bytes the OS keeps
// on POSIX), without any directory part.
struct DirListing;
// Starts listing the entries of `directory` ("" is the working directory;
// given with its closing separator) whose names match `pattern`. Where the
// OS matches names itself (OsPathForm().findMatches: Windows' find calls),
// the listing holds the OS's matches only, and none at all is an empty
// listing; elsewhere it holds every entry and the caller matches. 0, or the
// OS error: a missing directory gives the path-not-found code (ENOENT;
// ERROR_PATH_NOT_FOUND on Windows). Service FindFirstFile.
int OpenDir(const ZOROsString& directory, const ZOROsString& pattern, DirListing*& listing);
// The next entry, "." and ".." included, in the order the OS gives them.
// True with `name` set (valid until the next call on the listing); false at
// the end (error 0) or on failure (the OS error). Service FindNextFile.
bool ReadDir(DirListing* listing, const char*& name, std::size_t& length, int& error);
// Releases a listing from OpenDir; null is ignored.
void CloseDir(DirListing* listing);

struct FileAttributes {
    bool isDirectory = false;
    // The owner may write (on Windows: not FILE_ATTRIBUTE_READONLY).
    bool writable = false;
};
// The attributes of `path`: 0, or the OS error when they cannot be read (a
// missing path among them). Service GetFileAttributes.
int QueryAttributes(const ZOROsString& path, FileAttributes& attributes);

// ---- files -------------------------------------------------------------------

// An open file as the OS layer hands it out; null for none. The layer keeps
// the file pointer of the handle (as Windows does): ReadFile and WriteFile
// transfer at it and advance it, except that every write of an append handle
// goes to the end of the file.
using FileHandle = void*;

enum class FileOpenKind {
    Read,              // existing file, reading only
    Update,            // existing file, reading and writing
    Write,             // created or emptied, reading and writing
    Append,            // opened or created, writing at the end only
    CreateNew,         // created, must not exist, reading and writing
    CreateNewTemporary // as CreateNew; removed when its handle is closed
};

// Every function below returns 0 or the OS error code (errno on POSIX,
// GetLastError on Windows); a null or closed handle gives the OS code for a
// bad handle. The services are named in brackets.

// Opens `path` (already in the OS form) ["CreateFile"].
int OpenFile(const ZOROsString& path, FileOpenKind kind, FileHandle& handle);
// Closes the handle and frees it ["CloseHandle"]. On failure the handle
// stays valid for a later CloseFile, which then only frees it.
int CloseFile(FileHandle handle);
// Transfers at most `size` bytes at the file pointer ["ReadFile",
// "WriteFile"]; `moved` 0 on a read is the end of the file.
int ReadFile(FileHandle handle, char* buffer, unsigned int size, unsigned int& moved);
int WriteFile(FileHandle handle, const char* buffer, unsigned int size, unsigned int& moved);
// Sets the file pointer, from the start of the file ["SetFilePointer"].
int SetFilePointer(FileHandle handle, unsigned long long position);
// Ends the file at the file pointer ["SetEndOfFile"].
int SetEndOfFile(FileHandle handle);
int FlushFileBuffers(FileHandle handle);                      // ["FlushFileBuffers"]
int GetFileSize(FileHandle handle, unsigned long long& size); // ["GetFileSize"]
// The exclusive whole-file lock between processes and between handles of
// one process; waits until granted ["LockFileEx", "UnlockFile"].
int LockFile(FileHandle handle);
int UnlockFile(FileHandle handle);

// Raises ZORSimExcSystemError with the service's name and the OS error.
[[noreturn]] void RaiseSystemError(Service service, int error, const char* source, int line);

// How the portable code reads an error code of the calls above.
// The disk or the user's quota is full.
bool IsDiskFull(int error);
// An open found no file at `path` although its directory exists; a missing
// directory is the path-not-found case and answers false.
bool IsFileNotFound(int error, const ZOROsString& path);
// A create found the name taken.
bool IsFileExists(int error);

// file utilities
// (Named apart from the Windows calls, which windows.h turns into macros.)

// The identity of a file on its volume: equal exactly for the same file.
struct FileIdentity {
    unsigned int volume = 0;    // volume serial number; device number on POSIX
    unsigned int indexHigh = 0; // file index; inode number on POSIX
    unsigned int indexLow = 0;
};
// Opens `path` without data access ["CreateFile"], reads its identity
// ["GetFileInformationByHandle"] and closes it again. On failure `failed`
// names the call that failed.
int QueryFileIdentity(const ZOROsString& path, FileIdentity& identity, Service& failed);
// Renames `from` to `to`, replacing an existing `to`; no copy across volumes
// ["MoveFileEx"].
int RenameFile(const ZOROsString& from, const ZOROsString& to);
// A second name `link` for the file `existing` ["CreateHardLink"]; a taken
// name answers IsFileExists.
int MakeHardLink(const ZOROsString& link, const ZOROsString& existing);
// Removes one name of a file; a directory is refused ["DeleteFile"].
int RemoveFile(const ZOROsString& path);
// One level: the parent must exist, the name must be free ["CreateDirectory"].
int MakeDirectory(const ZOROsString& path);
// An empty directory only ["RemoveDirectory"].
int DeleteDirectory(const ZOROsString& path);
// The absolute form of `path`: joined with the working directory, `.` and
// `..` resolved by name alone (no links followed, no existence check).
// `full` is BAD when the result has no UTF-8 form ["FullPath"].
int FullPath(const ZOROsString& path, ZORString& full);

} // namespace ZORSimUttOS

// Fault injection into the seam, for tests of the error paths: an armed
// service fails in front of the platform call, as if the OS had refused it.
// The check is made once, in the portable layer that every seam function
// passes through, so that a platform file holds nothing but its OS calls.
namespace ZORSimUttOSFault {

// After `after` further calls of `service` succeed, the next `times` calls
// fail with `error`. Arming a service again replaces its earlier arming. A
// transfer armed with Error::None "succeeds" having moved no bytes.
ZORSIM_API void Arm(ZORSimUttOS::Service service, ZORSimUttOS::Error error, int times = 1, int after = 0);
ZORSIM_API void DisarmAll();
// Used by the seam: true, with the platform's code for the armed error, when
// this call of `service` is to fail.
bool Take(ZORSimUttOS::Service service, int& error);

} // namespace ZORSimUttOSFault
