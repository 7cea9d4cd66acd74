// File utilities by name, over the OS seam and the OS file class.
#include "ZORSimUttFileUtils.h"

#include "ZORBasException.h"
#include "ZORSimBadZORString.h"
#include "ZORSimExceptions.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttFilePathParser.h"
#include "ZORSimUttOS.h"
#include "ZORSimUttOSFile.h"

#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

namespace ZORSimUttFileUtils {
namespace {

namespace OS = ZORSimUttOS;
using ZORSimUttFilePathParser::FixPathForOS;

constexpr const char* kSource = "ZORSimUttFileUtils";
// Large enough that a copy costs a few system calls per megabyte, small
// enough to stay in the cache between the read and the write.
constexpr unsigned long long kCopyChunk = 262144;

[[noreturn]] void RaiseSystemError(OS::Service service, int error, int line) {
    OS::RaiseSystemError(service, error, kSource, line);
}

// Every name entering: checked, normalised, converted (a name without an OS
// form raises ZORBasOsStringConversion here).
ZOROsString OsName(const ZORString& path) {
    ZORSimBadZORString::Check(path);
    return ZOROsString(FixPathForOS(path));
}

void CopyContents(ZORSimUttOSFile& from, ZORSimUttOSFile& to) {
    const auto buffer = std::make_unique_for_overwrite<char[]>(kCopyChunk);
    for (;;) {
        const unsigned long long got = from.Read(buffer.get(), kCopyChunk);
        if (got == 0)
            return;
        to.WriteAll(buffer.get(), got);
    }
}

} // namespace

FileId GetFileID(const ZORString& path) {
    ZORSimBadZORString::Check(path);
    const ZORString name = FixPathForOS(path);
    const ZOROsString osName(name);
    OS::FileIdentity identity;
    OS::Service service = OS::Service::CreateFile;
    const int error = OS::QueryFileIdentity(osName, identity, service);
    if (error != 0) {
        if (service == OS::Service::CreateFile && OS::IsFileNotFound(error, osName))
            ZORSimExcNoSuchFile(name).Throw(kSource, __LINE__);
        RaiseSystemError(service, error, __LINE__);
    }
    return FileId{identity.volume, identity.indexHigh, identity.indexLow};
}

bool SameFile(const ZORString& a, const ZORString& b) {
    if (!FileExists(a) || !FileExists(b))
        return false;
    return GetFileID(b) == GetFileID(a);
}

void Copy(const ZORString& from, const ZORString& to) {
    ZORSimUttOSFile source;
    source.OpenRead(from);
    ZORSimUttOSFile target;
    target.OpenWrite(to);
    CopyContents(source, target);
}

void Copy(const ZORString& from, ZORSimUttOSFile& to) {
    ZORSimUttOSFile source;
    source.OpenRead(from);
    CopyContents(source, to);
}

void Move(const ZORString& from, const ZORString& to) {
    const ZOROsString osFrom = OsName(from);
    const ZOROsString osTo = OsName(to);
    if (const int error = OS::RenameFile(osFrom, osTo))
        RaiseSystemError(OS::Service::MoveFileEx, error, __LINE__);
}

bool LinkIfUnique(const ZORString& existing, const ZORString& link) {
    const ZOROsString osExisting = OsName(existing);
    const ZOROsString osLink = OsName(link);
    const int error = OS::MakeHardLink(osLink, osExisting);
    if (error == 0)
        return true;
    if (OS::IsFileExists(error))
        return false;
    RaiseSystemError(OS::Service::CreateHardLink, error, __LINE__);
}

void Remove(const ZORString& path) {
    if (const int error = OS::RemoveFile(OsName(path)))
        RaiseSystemError(OS::Service::DeleteFile, error, __LINE__);
}

bool RemoveNoThrow(const ZORString& path) {
    return OS::RemoveFile(OsName(path)) == 0;
}

void RemoveAll(const ZORString& pattern) {
    ZORSimBadZORString::Check(pattern);
    // The entry just listed is removed before the next is read; the OS keeps
    // its listing valid across that.
    for (GlobRange range(pattern); !range.Empty(); range.Next())
        Remove(range.Front());
}

void MakeDir(const ZORString& path) {
    if (const int error = OS::MakeDirectory(OsName(path)))
        RaiseSystemError(OS::Service::CreateDirectory, error, __LINE__);
}

void RemoveDir(const ZORString& path) {
    if (const int error = OS::DeleteDirectory(OsName(path)))
        RaiseSystemError(OS::Service::RemoveDirectory, error, __LINE__);
}

ZORString AbsolutePath(const ZORString& path) {
    const ZOROsString osName = OsName(path);
    ZORString absolutePath;
    if (OS::FullPath(osName, absolutePath) != 0) {
        // Only a broken working directory gets here; there is no name to
        // give back, and callers cannot go on without one.
        try {
            ZORSimUttAssert::ReportAssertionFailure("absolutePath.s != 0");
        } catch (...) {
        }
        std::exit(1);
    }
    if (absolutePath.IsBAD())
        ZORBasToUTF8Exception("_wfullpath").Throw(kSource, __LINE__);
    return absolutePath;
}

ZORString RerootBranch(const ZORString& path, const ZORString& branch) {
    using ZORSimUttFilePathParser::DirPath;
    using ZORSimUttFilePathParser::Join;
    if (IsDir(path))
        return FixPathForOS(Join(path, branch));
    return FixPathForOS(Join(DirPath(path), branch));
}

ZORString ShortenFileName(const ZORString& directory, const ZORString& file) {
    if (directory.IsEmpty())
        return file;
    const ZORString absoluteFile = AbsolutePath(file);
    const ZORString absoluteDirectory = AbsolutePath(directory);
    // Byte comparison of the UTF-8 forms: a whole-character prefix of valid
    // UTF-8 is a byte prefix, and the separators are single bytes.
    const std::string_view a(absoluteFile.c_str(), absoluteFile.Bytes());
    const std::string_view d(absoluteDirectory.c_str(), absoluteDirectory.Bytes());
    if (!a.starts_with(d))
        return absoluteFile;
    // A file named like the directory, or one beside it with a longer name
    // ("data2" next to "data"), is not under it.
    if (a.size() == d.size() || (a[d.size()] != '/' && a[d.size()] != '\\'))
        return absoluteFile;
    return FixPathForOS(ZORString(std::string(a.substr(d.size() + 1))));
}

} // namespace ZORSimUttFileUtils
