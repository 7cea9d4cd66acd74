// Directory entries matching a wildcard pattern, and the file tests.
//
// The pattern's last component holds the wildcards (`*`, `?`), matched the
// way a Windows user expects, case ignored; the part before it names the
// directory (the working directory when there is none).
#pragma once

#include "ZORSimContainersC.h" // the plain ZORSimUttFileUtils_Glob* functions
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
