// The OS file: opening and creating, transfers, truncation, flushing and the
// whole-file lock. Every OS call goes through the platform layer; the
// decisions on its error codes are made here, once.
#include "ZORSimUttOSFile.h"

#include "ZORSimBadZORString.h"
#include "ZORSimExceptions.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttFileGlob.h"
#include "ZORSimUttFilePathParser.h"
#include "ZORSimUttOS.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>

namespace OS = ZORSimUttOS;

namespace {

constexpr const char* kSource = "ZORSimUttOSFile";
// Transfer kinds of the I/O statistics.
constexpr int kReadKind = 1;
constexpr int kWriteKind = 2;
// Longest number text CreateGenerated looks at.
constexpr std::size_t kMaxNumberText = 1048576;

// Long names take the \\?\ prefix only where the OS wants it.
ZORString LongPathForOS(const ZORString& path) {
    return OS::OsPathForm().longPathPrefix ? ZORSimUttFilePathParser::GetLongPathNameW(path) : path;
}

// Kept here after the first call: each transfer then reads it beside the
// fault switch instead of calling into the base library for it.
ZORBAS_HOT ZORBasUtlIOStats& Stats() {
    static ZORBasUtlIOStats& stats = omi_Singleton<ZORBasUtlIOStats>::Instance();
    return stats;
}

[[noreturn]] void RaiseSystemError(OS::Service service, int error, int line) {
    OS::RaiseSystemError(service, error, kSource, line);
}

// Disk full wins over the operation's own failure class.
[[noreturn]] void RaiseDiskFullOrSystemError(OS::Service service, int error, int line) {
    if (OS::IsDiskFull(error))
        ZORSimExcDiskFull().Throw(kSource, line);
    RaiseSystemError(service, error, line);
}

// An internal invariant that the caller cannot recover from: report it and
// end the process.
[[noreturn]] void AssertionFailedExit(const char* text) {
    try {
        ZORSimUttAssert::ReportAssertionFailure(text);
    } catch (...) {
    }
    std::exit(1);
}

// The number of a generated name's middle part as "%u" reads it; 0 when it
// does not read.
unsigned int GeneratedNumber(const ZORString& stem) {
    const ZORString extension = ZORSimUttFilePathParser::Extension(stem);
    if (extension.Bytes() < 1)
        return 0;
    const std::string text(extension.c_str() + 1, std::min(extension.Bytes() - 1, kMaxNumberText));
    unsigned int number = 0;
    if (std::sscanf(text.c_str(), "%u", &number) != 1)
        return 0;
    return number;
}

// Charges `bytes` (modulo 2^64) to the storage budget; true when the budget
// is now exceeded.
bool ChargeStorage(unsigned long long bytes) {
    const unsigned long long total =
        ZORSimUttOSFile::s_storageTotal.fetch_add(bytes, std::memory_order_relaxed) + bytes;
    return ZORSimUttOSFile::s_storageLimit < total;
}

void ReadStorageLimit() {
    const char* value = ZORBasGetEnv("SIM_STORAGE_LIMIT");
    unsigned long long limit = 0;
    if (value == nullptr || std::sscanf(value, "%llu", &limit) != 1)
        return;
    ZORSimUttOSFile::s_storageLimit = limit;
    std::fputs("=== SIM Storage limit: ", stderr);
    std::fprintf(stderr, "%llu", limit);
    std::fputs("\n", stderr);
    std::fflush(stderr);
}

// Locking is off only when all three variables are set; one missing keeps it on.
void ReadLockingSwitch() {
    for (const char* name :
         {"BAS_DISABLE_FILE_LOCKING", "VEX_DISABLE_FILE_LOCKING", "QRT_DISABLE_FILE_LOCKING"})
        if (ZORBasGetEnv(name) == nullptr)
            return;
    ZORSimUttOSFile::s_lockingDisabled = true;
}

// The first construction reads the environment. The mutex only keeps two
// threads that construct the first objects at once from reading it twice.
void ReadProcessSwitches() {
    if (ZORSimUttOSFile::s_storageLimitRead.load(std::memory_order_acquire) &&
        ZORSimUttOSFile::s_lockingSwitchRead.load(std::memory_order_acquire))
        return;
    static std::mutex mutex;
    const std::lock_guard<std::mutex> guard(mutex);
    if (!ZORSimUttOSFile::s_storageLimitRead.load(std::memory_order_relaxed)) {
        ReadStorageLimit();
        ZORSimUttOSFile::s_storageLimitRead.store(true, std::memory_order_release);
    }
    if (!ZORSimUttOSFile::s_lockingSwitchRead.load(std::memory_order_relaxed)) {
        ReadLockingSwitch();
        ZORSimUttOSFile::s_lockingSwitchRead.store(true, std::memory_order_release);
    }
}

} // namespace

// ---- process-wide state ----------------------------------------------------------

unsigned long long ZORSimUttOSFile::s_storageLimit = 0;
std::atomic<unsigned long long> ZORSimUttOSFile::s_storageTotal{0};
bool ZORSimUttOSFile::s_lockingDisabled = false;
std::atomic<bool> ZORSimUttOSFile::s_storageLimitRead{false};
std::atomic<bool> ZORSimUttOSFile::s_lockingSwitchRead{false};

// ---- ZORSimUttMutex, ZORSimRpm_TidyLock --------------------------------------------

ZORSimUttMutex::ZORSimUttMutex() : m_mutex(ZORBasAtiThreadingModel::newMutex()) {
    if (m_mutex == nullptr)
        ZORSimUttAssert::ReportAssertionFailure("ZORBasAtiThreadingModel::newMutex() != 0");
}

ZORSimUttMutex::~ZORSimUttMutex() {
    ZORBasAtiThreadingModel::deleteMutex(m_mutex);
}

// ---- open, create, close -----------------------------------------------------------

ZORSimUttOSFile::ZORSimUttOSFile() : m_handle(nullptr), m_readOnly(true), m_position(0) {
    ReadProcessSwitches();
}

ZORSimUttOSFile::~ZORSimUttOSFile() {
    if (m_handle != nullptr) {
        Stats().usefile_Close(m_stats);
        // A handle whose close failed is released by one more close.
        if (OS::CloseFile(m_handle) != 0)
            OS::CloseFile(m_handle);
    }
}

namespace {

// How each of the four opens differs.
struct OpenRule {
    OS::FileOpenKind kind;
    bool readOnly;
    bool notFoundBranch; // a missing file raises ZORSimExcNoSuchFile
    bool printMissing;   // ... after two lines on standard error
    bool chargeSize;     // the file's size counts against the storage budget
};

constexpr OpenRule kOpenRead{OS::FileOpenKind::Read, true, true, true, true};
constexpr OpenRule kOpenUpdate{OS::FileOpenKind::Update, false, true, false, true};
constexpr OpenRule kOpenWrite{OS::FileOpenKind::Write, false, true, false, false};
constexpr OpenRule kOpenAppend{OS::FileOpenKind::Append, false, false, false, false};

} // namespace

namespace {

// One body for the four opens; the rule says where they differ.
void Open(ZORSimUttOSFile& file, const ZORString& name, const OpenRule& rule) {
    ZORSimBadZORString::Check(name);
    file.m_name = ZORSimUttFilePathParser::FixPathForOS(name);
    const ZOROsString osName(file.m_name);
    file.m_readOnly = rule.readOnly;
    file.m_position = 0;
    // An open handle is not closed first: the caller closes before reopening.
    OS::FileHandle handle = nullptr;
    const int error = OS::OpenFile(osName, rule.kind, handle);
    if (error != 0) {
        file.m_handle = nullptr;
        if (rule.notFoundBranch && OS::IsFileNotFound(error, osName)) {
            if (rule.printMissing) {
                std::fprintf(stderr, "!!! Throwing ZORSimExcNoSuchFile:\n!!!  %s\n", file.m_name.c_str());
                std::fflush(stderr);
            }
            ZORSimExcNoSuchFile(file.m_name).Throw(kSource, __LINE__);
        }
        RaiseSystemError(OS::Service::CreateFile, error, __LINE__);
    }
    file.m_handle = handle;
    file.m_stats = Stats().usefile_Open(file.m_name);
    if (rule.chargeSize && ZORSimUttOSFile::s_storageLimit != 0)
        ChargeStorage(file.FileSize());
}

} // namespace

// Share modes: Windows lets other processes read a file opened for update or
// writing, and read or write one opened for reading. POSIX has no mandatory
// sharing, so there every other opener is admitted.
void ZORSimUttOSFile::OpenRead(const ZORString& name) {
    Open(*this, name, kOpenRead);
}

void ZORSimUttOSFile::OpenWrite(const ZORString& name) {
    Open(*this, name, kOpenWrite);
}

void ZORSimUttOSFile::OpenUpdate(const ZORString& name) {
    Open(*this, name, kOpenUpdate);
}

void ZORSimUttOSFile::OpenAppend(const ZORString& name) {
    Open(*this, name, kOpenAppend);
}

void ZORSimUttOSFile::CreateGenerated(const ZORString& base, const ZORString& extension, bool temporary) {
    ZORSimBadZORString::Check(base);
    ZORSimBadZORString::Check(extension);
    const ZORString fixedBase = ZORSimUttFilePathParser::FixPathForOS(base);
    m_readOnly = false;
    m_position = 0;

    // The largest number in use; gaps below it are never filled.
    unsigned int number = 0;
    {
        const ZORString pattern = LongPathForOS(fixedBase + ".*" + extension);
        for (ZORSimUttFileUtils::GlobRange range(pattern); !range.Empty(); range.Next()) {
            const ZORString fileName = range.Front();
            if (!(ZORSimUttFilePathParser::Extension(fileName) == extension))
                AssertionFailedExit("ZORSimUttFilePathParser::Extension(fileName) == extension");
            const ZORString stem = ZORSimUttFilePathParser::BasePath(fileName);
            if (ZORSimUttFilePathParser::HasExtension(stem))
                number = std::max(number, GeneratedNumber(stem));
        }
    }

    const OS::FileOpenKind kind =
        temporary ? OS::FileOpenKind::CreateNewTemporary : OS::FileOpenKind::CreateNew;
    for (;;) {
        ++number;
        m_name = LongPathForOS(fixedBase + "." + std::to_string(number) + extension);
        const ZOROsString osName(m_name);
        OS::FileHandle handle = nullptr;
        const int error = OS::OpenFile(osName, kind, handle);
        if (error == 0) {
            m_handle = handle;
            m_stats = Stats().usefile_Open(m_name);
            return;
        }
        // Another creator took the number: try the next one, without limit.
        if (OS::IsFileExists(error))
            continue;
        m_handle = nullptr;
        if (OS::IsFileNotFound(error, osName))
            ZORSimExcNoSuchFile(m_name).Throw(kSource, __LINE__);
        RaiseSystemError(OS::Service::CreateFile, error, __LINE__);
    }
}

void ZORSimUttOSFile::CreateTemporary(const ZORString& directory) {
    ZORSimBadZORString::Check(directory);
    ZORString chosen = directory;
    if (chosen.IsEmpty()) {
        auto environment = [](const char* name) {
            const char* value = ZORBasGetEnv(name);
            return ZORString(value != nullptr ? value : "");
        };
        // The fourth candidate starts with a tab and practically never
        // passes; it is kept as it always was.
        const ZORString candidates[] = {environment("TMPDIR"), environment("TEMP"), environment("TMP"),
                                        ZORString("\temp"), ZORString(".")};
        for (const ZORString& candidate : candidates) {
            if (!candidate.IsEmpty() && ZORSimUttFileUtils::FileExists(candidate) &&
                ZORSimUttFileUtils::IsDir(candidate) && ZORSimUttFileUtils::IsWriteable(candidate)) {
                chosen = candidate;
                break;
            }
        }
    }
    CreateGenerated(chosen + "/SimTemp", ".tmp", true);
}

void ZORSimUttOSFile::Close() {
    Stats().usefile_Close(m_stats);
    const int error = OS::CloseFile(m_handle);
    if (error == 0) {
        m_handle = nullptr;
        return;
    }
    if (OS::IsDiskFull(error))
        ZORSimExcDiskFull().Throw(kSource, __LINE__);
    ZORSimExcFileCloseFailed(ZORBasSystemError(error)).Throw(kSource, __LINE__);
}

bool ZORSimUttOSFile::IsOpen() const {
    return m_handle != nullptr;
}

unsigned long long ZORSimUttOSFile::FileSize() const {
    unsigned long long size = 0;
    const int error = OS::GetFileSize(m_handle, size);
    if (error != 0)
        RaiseSystemError(OS::Service::GetFileSize, error, __LINE__);
    return size;
}

ZORSimUttMutex& ZORSimUttOSFile::Mutex() {
    return m_mutex;
}

// ---- transfers -----------------------------------------------------------------------

ZORBAS_HOT unsigned long long ZORSimUttOSFile::Read(char* buffer, unsigned long long size) {
    if (size == 0)
        return 0;
    ZORBasUtlIOStats& stats = Stats();
    unsigned long long total = 0;
    unsigned long long wanted = size;
    for (;;) {
        // Only the low 32 bits of what is still wanted: a request of 4 GiB or
        // more comes back short, as it always has.
        const auto request = static_cast<unsigned int>(wanted);
        unsigned int got = 0;
        stats.StartTimer(kReadKind);
        const int error = OS::ReadFile(m_handle, buffer, request, got);
        if (error != 0)
            ZORSimExcReadError(ZORBasSystemError(error)).Throw(kSource, __LINE__);
        stats.StopTimer(got, kReadKind, m_stats);
        if (got == 0)
            return total;
        total += got;
        m_position += got;
        buffer += got;
        if (wanted == got)
            return total;
        wanted -= got;
    }
}

ZORBAS_HOT unsigned long long ZORSimUttOSFile::ReadAtomic(unsigned long long offset, char* buffer,
                                                          unsigned long long size) {
    ZORSimRpm_TidyLock lock(m_mutex);
    Seek(offset);
    return Read(buffer, size);
}

ZORBAS_HOT void ZORSimUttOSFile::WriteAll(const char* buffer, unsigned long long size) {
    if (m_readOnly)
        ZORSimExcReadOnly().Throw(kSource, __LINE__);
    // The charge stays even when the write is refused.
    if (s_storageLimit != 0 && ChargeStorage(size))
        ZORSimExcDiskFull().Throw(kSource, __LINE__);
    if (size == 0)
        return;
    ZORBasUtlIOStats& stats = Stats();
    unsigned long long remaining = size;
    for (;;) {
        const auto request =
            static_cast<unsigned int>(std::min<unsigned long long>(remaining, 0xFFFFFFFFull));
        unsigned int put = 0;
        stats.StartTimer(kWriteKind);
        const int error = OS::WriteFile(m_handle, buffer, request, put);
        if (error != 0) {
            if (OS::IsDiskFull(error))
                ZORSimExcDiskFull().Throw(kSource, __LINE__);
            ZORSimExcWriteError(ZORBasSystemError(error)).Throw(kSource, __LINE__);
        }
        stats.StopTimer(put, kWriteKind, m_stats);
        if (put == 0)
            ZORSimExcShortWrite().Throw(kSource, __LINE__);
        m_position += put;
        if (put == remaining)
            return;
        buffer += put;
        remaining -= put;
    }
}

ZORBAS_HOT void ZORSimUttOSFile::WriteAtomic(unsigned long long offset, const char* buffer,
                                             unsigned long long size) {
    ZORSimRpm_TidyLock lock(m_mutex);
    Seek(offset);
    WriteAll(buffer, size);
}

// ---- control ------------------------------------------------------------------------

ZORBAS_HOT void ZORSimUttOSFile::Seek(const unsigned long long& position) {
    if (position == m_position)
        return;
    const int error = OS::SetFilePointer(m_handle, position);
    if (error != 0)
        RaiseSystemError(OS::Service::SetFilePointer, error, __LINE__);
    m_position = position;
}

void ZORSimUttOSFile::Truncate(const unsigned long long& size) {
    // Shrinking gives credit: the difference wraps around.
    if (s_storageLimit != 0 && ChargeStorage(size - FileSize()))
        ZORSimExcDiskFull().Throw(kSource, __LINE__);
    int error = OS::SetFilePointer(m_handle, size);
    if (error != 0)
        RaiseSystemError(OS::Service::SetFilePointer, error, __LINE__);
    error = OS::SetEndOfFile(m_handle);
    if (error != 0)
        RaiseDiskFullOrSystemError(OS::Service::SetEndOfFile, error, __LINE__);
    // Only ever raised here, although the OS pointer now stands at `size`:
    // callers rely on this one-sided update.
    if (size > m_position)
        m_position = size;
}

void ZORSimUttOSFile::Flush() {
    if (m_readOnly)
        return;
    const int error = OS::FlushFileBuffers(m_handle);
    if (error != 0)
        RaiseDiskFullOrSystemError(OS::Service::FlushFileBuffers, error, __LINE__);
}

bool ZORSimUttOSFile::Lock() {
    if (s_lockingDisabled)
        return false;
    if (m_handle == nullptr)
        ZORSimExcFileNotOpen().Throw(kSource, __LINE__);
    const int error = OS::LockFile(m_handle);
    if (error != 0)
        RaiseSystemError(OS::Service::LockFileEx, error, __LINE__);
    return true;
}

void ZORSimUttOSFile::Unlock() {
    if (m_handle == nullptr)
        ZORSimExcFileNotOpen().Throw(kSource, __LINE__);
    // Reported under the name of the locking call, as it always has been.
    const int error = OS::UnlockFile(m_handle);
    if (error != 0)
        RaiseSystemError(OS::Service::LockFileEx, error, __LINE__);
}
