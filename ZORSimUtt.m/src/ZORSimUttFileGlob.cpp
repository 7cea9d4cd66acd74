// Directory globbing and the file tests. The directory is listed through the
// OS seam and every name matched here, so a pattern lists the same entries
// on every platform.
#include "ZORSimUttFileGlob.h"

#include "ZORBasException.h"
#include "ZORSimBadZORString.h"
#include "ZORSimExcDocument.h"
#include "ZORSimExcStorage.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttFilePathParser.h"
#include "ZORSimUttOS.h"
#include "ZORSimUttWildcard.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>
#include <string_view>

namespace ZORSimUttFileUtils {
namespace {

[[noreturn]] void RaiseSystemError(ZORSimUttOS::Service service, int code) {
    ZORSimUttOS::RaiseSystemError(service, code, "ZORSimUttFileUtils", __LINE__);
}

bool IsDots(std::string_view name) {
    return name == "." || name == "..";
}

} // namespace

struct GlobRange::GlobRangeImpl {
    GlobRangeImpl() = default;
    GlobRangeImpl(const GlobRangeImpl&) = delete;
    GlobRangeImpl& operator=(const GlobRangeImpl&) = delete;
    // Also when the constructor of the range fails half-way.
    ~GlobRangeImpl() { ZORSimUttOS::CloseDir(listing); }

    // The pattern's directory part as given, for Front.
    ZORString directory;
    ZORString currentName;
    ZORSimUttOS::DirListing* listing = nullptr;
    bool exhausted = true;
    // The name part of the pattern in the OS form, compiled, for an OS whose
    // listing does not match names itself.
    ZORSimUttWildcard::Pattern pattern{std::string_view()};
    bool osMatches = ZORSimUttOS::OsPathForm().findMatches;

    // Reads on to the next matching entry. False at the end of the listing;
    // on failure the OS error in `error`.
    bool FindMatch(int& error) {
        const char* name = nullptr;
        std::size_t length = 0;
        while (ZORSimUttOS::ReadDir(listing, name, length, error)) {
            const std::string_view entry(name, length);
            if (osMatches || pattern.Matches(entry)) {
                currentName = ZORString(std::string(entry));
                return true;
            }
        }
        return false;
    }
};

GlobRange::GlobRange(const ZORString& pattern) : m_impl(std::make_unique<GlobRangeImpl>()) {
    ZORSimBadZORString::Check(pattern);
    m_impl->directory = ZORSimUttFilePathParser::DirPath(pattern);

    // The OS form splits at its last separator into the directory to list
    // (separator kept, so that `/x*` lists the root) and the name pattern.
    const ZORString osPattern = ZORSimUttFilePathParser::FixPathForOS(pattern);
    const std::string_view text(osPattern.c_str(), osPattern.Bytes());
    const std::size_t split = text.rfind(ZORSimUttOS::OsPathForm().separator);
    const std::size_t nameStart = split == std::string_view::npos ? 0 : split + 1;
    const ZOROsString listDirectory(ZORString(std::string(text.substr(0, nameStart))));
    const ZOROsString namePattern(ZORString(std::string(text.substr(nameStart))));
    if (!m_impl->osMatches)
        m_impl->pattern = ZORSimUttWildcard::Pattern(text.substr(nameStart));

    // Finding the first match is what the OS's find-first call does, so any
    // failure until then, a missing directory among them, is reported as
    // its failure. No match at all is an empty range.
    int error = ZORSimUttOS::OpenDir(listDirectory, namePattern, m_impl->listing);
    if (error == 0) {
        if (m_impl->FindMatch(error))
            m_impl->exhausted = false;
    }
    if (error != 0) {
        std::fprintf(stderr, "!!! Error in FindFirstFile.  Pattern: \"%s\"\n", pattern.c_str());
        std::fflush(stderr);
        RaiseSystemError(ZORSimUttOS::Service::FindFirstFile, error);
    }
    SkipDots();
}

GlobRange::~GlobRange() = default;

bool GlobRange::Empty() const {
    return m_impl->exhausted;
}

ZORString GlobRange::Front() const {
    if (m_impl->directory.IsEmpty())
        return m_impl->currentName;
    return ZORSimUttFilePathParser::Join(m_impl->directory, m_impl->currentName);
}

void GlobRange::Next() {
    Advance();
    SkipDots();
}

void GlobRange::Advance() {
    if (m_impl->exhausted)
        return;
    int error = 0;
    if (m_impl->FindMatch(error))
        return;
    m_impl->exhausted = true;
    m_impl->currentName = ZORString();
    if (error != 0)
        RaiseSystemError(ZORSimUttOS::Service::FindNextFile, error);
}

void GlobRange::SkipDots() {
    while (!m_impl->exhausted &&
           IsDots(std::string_view(m_impl->currentName.c_str(), m_impl->currentName.Bytes())))
        Advance();
}

namespace {

// Attributes of a path, or false when they cannot be read.
bool Attributes(const ZORString& path, ZORSimUttOS::FileAttributes& attributes) {
    ZORSimBadZORString::Check(path);
    const ZOROsString os(ZORSimUttFilePathParser::FixPathForOS(path));
    return ZORSimUttOS::QueryAttributes(os, attributes) == 0;
}

} // namespace

bool FileExists(const ZORString& path) {
    ZORSimUttOS::FileAttributes attributes;
    return Attributes(path, attributes);
}

bool IsDir(const ZORString& path) {
    ZORSimUttOS::FileAttributes attributes;
    return Attributes(path, attributes) && attributes.isDirectory;
}

bool IsWriteable(const ZORString& path) {
    ZORSimUttOS::FileAttributes attributes;
    return Attributes(path, attributes) && (attributes.isDirectory || attributes.writable);
}

} // namespace ZORSimUttFileUtils

// ---- plain exports ---------------------------------------------------------

// The C declarations too, so that the compiler holds them to these
// definitions.
#include "ZORSimContainersC.h"

namespace {

using ZORSimUttFileUtils::GlobRange;

// What a plain handle points to. The text handed out by GlobFront lives here
// until the next call on the handle.
struct GlobHandle {
    std::unique_ptr<GlobRange> range;
    std::string front;
};

// Cut to capacity - 1 bytes and always terminated; nothing is written where
// there is no room at all.
void WriteError(char* buffer, unsigned int capacity, const char* text) {
    if (buffer == nullptr || capacity == 0)
        return;
    const std::size_t limit = capacity - 1;
    const void* end = std::memchr(text, 0, limit);
    const std::size_t length = end ? static_cast<std::size_t>(static_cast<const char*>(end) - text) : limit;
    std::memcpy(buffer, text, length);
    buffer[length] = '\0';
}

// A null handle is a broken invariant of the caller's binding: report it and
// end the process, as there is no sane way to go on.
GlobHandle* Checked(void* handle) {
    if (handle == nullptr) {
        try {
            ZORSimUttAssert::ReportAssertionFailure("nullptr != glob");
        } catch (...) {
        }
        std::exit(1);
    }
    return static_cast<GlobHandle*>(handle);
}

// A null pointer the call would read or write through: 0 and a text that
// names the argument, without raising (nothing has gone wrong inside).
unsigned char NullArgument(unsigned int capacity, char* buffer, const char* function, const char* argument) {
    char text[128];
    std::snprintf(text, sizeof text, "%s: %s is a null pointer.", function, argument);
    WriteError(buffer, capacity, text);
    return 0;
}

// Runs `body`; any exception becomes text in the caller's buffer and 0.
template <class Body> unsigned char Guarded(unsigned int capacity, char* buffer, Body&& body) {
    try {
        body();
        return 1;
    } catch (const ZORBasException& e) {
        WriteError(buffer, capacity, e.AsString(ZORBasStringMode(false)).c_str());
    } catch (const std::exception& e) {
        WriteError(buffer, capacity, (std::string("System exception: ") + e.what()).c_str());
    } catch (...) {
        WriteError(buffer, capacity, "Unrecognized exception.");
    }
    return 0;
}

} // namespace

extern "C" unsigned char ZORSimUttFileUtils_GlobInit(const char* pattern, void** handle,
                                                     unsigned int capacity, char* buffer) {
    if (pattern == nullptr)
        return NullArgument(capacity, buffer, "ZORSimUttFileUtils_GlobInit", "pattern");
    if (handle == nullptr)
        return NullArgument(capacity, buffer, "ZORSimUttFileUtils_GlobInit", "handle");
    return Guarded(capacity, buffer, [&] {
        auto range = std::make_unique<GlobRange>(ZORString(pattern));
        auto* glob = new GlobHandle{std::move(range), {}};
        *handle = glob;
    });
}

extern "C" unsigned char ZORSimUttFileUtils_GlobEmpty(void* handle, unsigned char* empty,
                                                      unsigned int capacity, char* buffer) {
    GlobHandle* glob = Checked(handle);
    if (empty == nullptr)
        return NullArgument(capacity, buffer, "ZORSimUttFileUtils_GlobEmpty", "empty");
    return Guarded(capacity, buffer, [&] { *empty = glob->range->Empty() ? 1 : 0; });
}

extern "C" unsigned char ZORSimUttFileUtils_GlobFront(void* handle, const char** front, unsigned int capacity,
                                                      char* buffer) {
    GlobHandle* glob = Checked(handle);
    if (front == nullptr)
        return NullArgument(capacity, buffer, "ZORSimUttFileUtils_GlobFront", "front");
    return Guarded(capacity, buffer, [&] {
        const ZORString current = glob->range->Front();
        glob->front.assign(current.c_str(), current.Bytes());
        *front = glob->front.c_str();
    });
}

extern "C" unsigned char ZORSimUttFileUtils_GlobNext(void* handle, unsigned int capacity, char* buffer) {
    GlobHandle* glob = Checked(handle);
    return Guarded(capacity, buffer, [&] { glob->range->Next(); });
}

extern "C" unsigned char ZORSimUttFileUtils_GlobFree(void* handle, unsigned int capacity, char* buffer) {
    GlobHandle* glob = Checked(handle);
    return Guarded(capacity, buffer, [&] {
        delete glob;
        // The result has always been this error; callers ignore it.
        ZORSimExcGlobError("unknown error").Throw("ZORSimUttFileUtils", __LINE__);
    });
}
