// Directory entries matching a wildcard pattern, and the file tests.
//
// The pattern's last component holds the wildcards (`*`, `?`), matched the
// way a Windows user expects, case ignored; the part before it names the
// directory (the working directory when there is none).
#pragma once

#include "ZORSimContainersExport.h"
#include "ZORString.h"

#include <memory>

namespace ZORSimUttFileUtils {

// An input range over the matching entries, in the order the OS lists them;
// "." and ".." never appear, directories come like files.
//
//   for (GlobRange r(pattern); !r.Empty(); r.Next()) use(r.Front());
//
// A missing directory raises ZORSimExcSystemError "FindFirstFile" (after a
// line on standard error); no match at all is simply an empty range.
class ZORSIM_API GlobRange {
public:
    explicit GlobRange(const ZORString& pattern);
    ~GlobRange();
    GlobRange(const GlobRange&) = delete;
    GlobRange& operator=(const GlobRange&) = delete;

    bool Empty() const;
    // The current entry: its name, joined to the pattern's directory part
    // with `/` when the pattern has one.
    ZORString Front() const;
    // Moves to the next match. Raises ZORSimExcSystemError "FindNextFile"
    // when the OS fails to list the directory further.
    void Next();

private:
    struct GlobRangeImpl;

    void Advance();
    void SkipDots();

    std::unique_ptr<GlobRangeImpl> m_impl;
};

// None of the tests raises for a missing path; each answers false then.
ZORSIM_API bool FileExists(const ZORString& path);
ZORSIM_API bool IsDir(const ZORString& path);
// False for a missing path and for a read-only file; a directory is always
// writable by this test. No access check is made.
ZORSIM_API bool IsWriteable(const ZORString& path);

} // namespace ZORSimUttFileUtils

// The globbing for callers in other languages. Each returns 1 on success; on
// failure 0, with the error's text in `buffer` (cut to capacity - 1 bytes and
// always terminated). A null handle is an internal error that ends the
// process with status 1.
extern "C" {
// Opens a range on the UTF-8 pattern and stores its handle in *handle.
ZORSIM_API unsigned char ZORSimUttFileUtils_GlobInit(const char* pattern, void** handle,
                                                     unsigned int capacity, char* buffer);
ZORSIM_API unsigned char ZORSimUttFileUtils_GlobEmpty(void* handle, unsigned char* empty,
                                                      unsigned int capacity, char* buffer);
// The current entry as UTF-8, valid until the next call on the same handle.
ZORSIM_API unsigned char ZORSimUttFileUtils_GlobFront(void* handle, const char** front, unsigned int capacity,
                                                      char* buffer);
ZORSIM_API unsigned char ZORSimUttFileUtils_GlobNext(void* handle, unsigned int capacity, char* buffer);
// Destroys the range and frees the handle. Its result is always 0 with the
// text "Glob Error: unknown error"; callers ignore it.
ZORSIM_API unsigned char ZORSimUttFileUtils_GlobFree(void* handle, unsigned int capacity, char* buffer);
}
