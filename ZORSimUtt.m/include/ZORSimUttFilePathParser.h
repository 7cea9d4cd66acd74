// Path strings in either manner, Windows (`\`, drive letters, `\\host`) or
// POSIX (`/`): split, join, compare and prepare for the OS. Pure string
// functions; none touches the file system. Several answers on unusual input
// look odd (Tail of a relative Windows path, BasePath of a dotted directory)
// and are kept on purpose: the file classes rely on them.
#pragma once

#include "ZORSimContainersExport.h"
#include "ZORString.h"

namespace ZORSimUttFilePathParser {

// Tail(path) without its extension: everything before the tail's last dot.
ZORSIM_API ZORString BaseName(const ZORString& path);
// The path without everything from its last dot on, wherever the dot stands.
ZORSIM_API ZORString BasePath(const ZORString& path);
// Everything before the last separator (a `\` counts only in a Windows path);
// empty when there is none. The separator itself is never included.
ZORSIM_API ZORString DirPath(const ZORString& path);
// The last component. A Windows path without a root-relative separator
// (`dir\f.txt`, `C:f.txt`) comes back whole.
ZORSIM_API ZORString Tail(const ZORString& path);
// The tail's last dot and what follows; empty when the tail has no dot.
ZORSIM_API ZORString Extension(const ZORString& path);
// True when the tail holds a dot anywhere (".profile" has an extension).
ZORSIM_API bool HasExtension(const ZORString& path);
// `\\...`, `/...` or a drive prefix (`c:x` too). A single leading `\` is not.
ZORSIM_API bool IsAbsolute(const ZORString& path);
// head + "/" + tail, head's trailing separators removed; tail alone when
// head is empty or tail is rooted (leading separator, or a Windows drive).
ZORSIM_API ZORString Join(const ZORString& head, const ZORString& tail);
// -1, 0 or 1 by character code; `/` and `\` compare equal, nothing else is
// normalised (case and doubled separators count).
ZORSIM_API int CompareFilePaths(const ZORString& a, const ZORString& b);
// The path in the form the OS of this build takes. Raises
// ZORSimExcBadStringArgument for a BAD string.
ZORSIM_API ZORString FixPathForOS(const ZORString& path);
// `\\?\` + path for paths of 260 characters or more that do not start with
// `\\?`; the path unchanged otherwise. A string function on every platform.
ZORSIM_API ZORString GetLongPathNameW(const ZORString& path);

} // namespace ZORSimUttFilePathParser
