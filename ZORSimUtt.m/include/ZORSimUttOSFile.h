// The one class through which the SIM database touches a file on disk: open,
// create, read, write, truncate, flush and lock, with a per-file mutex for
// positioned transfers, a process-wide storage budget and I/O statistics.
#pragma once

#include "ZORSimContainersExport.h"
#include "ZORBasAti.h"
#include "ZORBasUtlIOStats.h"
#include "ZORString.h"

#include <atomic>

// A mutex of the base library's threading model: Lock and Unlock forward to
// the first and second operation of the ZORBasAtiMutex it owns.
class ZORSIM_API ZORSimUttMutex {
public:
    // Raises an assertion report when the threading model has no mutex to give.
    ZORSimUttMutex();
    ~ZORSimUttMutex();
    ZORSimUttMutex(const ZORSimUttMutex&) = delete;
    ZORSimUttMutex& operator=(const ZORSimUttMutex&) = delete;

    // Inline: every positioned transfer takes and releases the mutex, and
    // each call into another library costs as much again after a system call.
    void Lock() { m_mutex->Lock(); }
    void Unlock() { m_mutex->Unlock(); }

private:
    ZORBasAtiMutex* m_mutex;
};

// Scoped lock of a ZORSimUttMutex.
class ZORSIM_API ZORSimRpm_TidyLock {
public:
    explicit ZORSimRpm_TidyLock(ZORSimUttMutex& mutex) : m_mutex(&mutex) { m_mutex->Lock(); }
    // Unlocks if still held.
    ~ZORSimRpm_TidyLock() { Unlock(); }
    ZORSimRpm_TidyLock(const ZORSimRpm_TidyLock&) = delete;
    ZORSimRpm_TidyLock& operator=(const ZORSimRpm_TidyLock&) = delete;

    // Unlocks if still held and forgets the mutex.
    void Unlock() {
        if (m_mutex != nullptr) {
            m_mutex->Unlock();
            m_mutex = nullptr;
        }
    }

private:
    ZORSimUttMutex* m_mutex;
};

class ZORSIM_API ZORSimUttOSFile {
public:
    // The OS file handle as the platform layer hands it out; null when no
    // file is open.
    using Handle = void*;

    // Closed: no handle, read-only, position 0. The first construction in the
    // process reads SIM_STORAGE_LIMIT and the three *_DISABLE_FILE_LOCKING
    // variables; construct the first object before other threads make more.
    ZORSimUttOSFile();
    // Closes a held handle, ignoring failures; raises nothing.
    ~ZORSimUttOSFile();
    ZORSimUttOSFile(const ZORSimUttOSFile&) = delete;
    ZORSimUttOSFile& operator=(const ZORSimUttOSFile&) = delete;

    // ---- open, create, close ----
    // An existing file for reading. A missing file prints two "!!!" lines and
    // raises ZORSimExcNoSuchFile.
    void OpenRead(const ZORString& name);
    // Creates or empties the file; reading and writing.
    void OpenWrite(const ZORString& name);
    // An existing file for reading and writing.
    void OpenUpdate(const ZORString& name);
    // Opens or creates the file; every write goes to its end.
    void OpenAppend(const ZORString& name);
    // Creates <base>.<N><extension> with N one more than the largest number in
    // use; `extension` begins with its dot. A temporary file is removed when
    // its handle is closed.
    void CreateGenerated(const ZORString& base, const ZORString& extension, bool temporary);
    // A temporary <directory>/SimTemp.<N>.tmp; an empty directory means the
    // first usable of TMPDIR, TEMP, TMP and two fixed candidates.
    void CreateTemporary(const ZORString& directory);
    // Does not test whether a file is open; the handle stays when it fails.
    void Close();
    bool IsOpen() const;
    unsigned long long FileSize() const;
    // For callers that bracket several transfers.
    ZORSimUttMutex& Mutex();

    // ---- transfers and control ----
    // Reads at the current position; less than `size` only at end of file.
    // Each OS request asks for the low 32 bits of what is still wanted.
    unsigned long long Read(char* buffer, unsigned long long size);
    // Seek and read under the mutex.
    unsigned long long ReadAtomic(unsigned long long offset, char* buffer, unsigned long long size);
    // Writes all bytes at the current position or raises.
    void WriteAll(const char* buffer, unsigned long long size);
    // Seek and write under the mutex.
    void WriteAtomic(unsigned long long offset, const char* buffer, unsigned long long size);
    // Moves the OS file pointer; no OS call when it equals the cached position.
    void Seek(const unsigned long long& position);
    // Sets the end of file at `size`; the cached position only ever rises here.
    void Truncate(const unsigned long long& size);
    // Forces buffered data of a writable file to disk; a read-only one is skipped.
    void Flush();
    // Takes the whole-file exclusive lock between processes, waiting for it;
    // false when file locking is switched off.
    bool Lock();
    void Unlock();

    // ---- fields ----
    ZORString m_name;              // as FixPathForOS gave it; the full generated name
    Handle m_handle;               // null when closed
    bool m_readOnly;               // refuses writes and skips flushes
    unsigned long long m_position; // cached OS file pointer
    ZORSimUttMutex m_mutex;        // makes the positioned transfers atomic
    ZORBasSharedPtr<ZORBasUtlIOFileStats> m_stats;

    // ---- process-wide, set at the first construction ----
    static unsigned long long s_storageLimit; // SIM_STORAGE_LIMIT; 0 = no budget
    // Charged by writes and truncations while the limit is non-zero. Updated
    // without a lock across threads: races only blur the budget.
    static std::atomic<unsigned long long> s_storageTotal;
    static bool s_lockingDisabled; // all three *_DISABLE_FILE_LOCKING set
    static std::atomic<bool> s_storageLimitRead;
    static std::atomic<bool> s_lockingSwitchRead;
};
