// The command-line store: lazy filling from the process's own arguments or
// from an explicit vector (optionally redirected to an arguments file), the
// "-key value" pairs and the queries.
#include "ZORSimCommandLine.h"

#include "ZORSimBadZORString.h"
#include "ZORSimUttOS.h"

#include "ZORBasShared.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

template class ZORSIM_INSTANTIATION_API ZORBasAtiGlobalSingleton<ZORSimCommandLineImpl>;

namespace {

using Singleton = ZORBasAtiGlobalSingleton<ZORSimCommandLineImpl>;

// Holding area of an arguments file: the program name and up to 1023 lines.
constexpr int kMaxFileArgs = 1024;
// Lines are read in pieces of at most 1023 characters.
constexpr int kLineBuffer = 1024;

// Holds the singleton's mutex for a scope.
class StoreLock {
public:
    StoreLock() { Singleton::Lock(); }
    ~StoreLock() { Singleton::Unlock(); }
    StoreLock(const StoreLock&) = delete;
    StoreLock& operator=(const StoreLock&) = delete;
};

char* CopyText(const char* text) {
    const std::size_t size = std::strlen(text) + 1;
    char* copy = new char[size];
    std::memcpy(copy, text, size);
    return copy;
}

// The arguments read from a file, freed when done with.
struct FileArguments {
    int count = 0;
    char* items[kMaxFileArgs] = {};
    ~FileArguments() {
        for (char* item : items)
            delete[] item;
    }
};

// Fills `out` with the program name followed by the lines of the file named
// after "-clargsfile", and sets `count`. Problems are reported on standard
// error; none stops the program.
void ReadClArgsFile(int argc, char** argv, int& count, char** out) {
    if (std::strcmp(argv[1], "-clargsfile") != 0)
        return;
    count = 0;
    out[0] = CopyText(argv[0] != nullptr ? argv[0] : "");
    count = 1;
    // "-clargsfile" as the last argument names no file: that is reported as a
    // file that cannot be opened, without reading past the vector.
    const char* name = argc > 2 ? argv[2] : nullptr;
    std::FILE* file = nullptr;
    if (name != nullptr) {
        bool decoded = true;
        file = ZORBasFileOps::Fopen(ZORString::BuildFromLocale(name, decoded), "r");
    }
    if (file == nullptr) {
        std::fprintf(stderr, "ERROR: Unable to open command line arguments file %s\n",
                     name != nullptr ? name : "(null)");
        std::fflush(stderr);
        return;
    }
    char line[kLineBuffer];
    while (std::fgets(line, kLineBuffer, file) != nullptr) {
        if (count < kMaxFileArgs) {
            // The check is on the line feed, not on the length: a last line
            // without one is reported as well, though it is kept whole.
            const std::size_t size = std::strlen(line);
            if (size > 0 && line[size - 1] == '\n')
                line[size - 1] = '\0';
            else
                std::fprintf(
                    stderr,
                    "ERROR: Command line argument in command line file is too long - maximum = 1023\n");
            out[count] = CopyText(line);
            ++count;
        } else {
            std::fprintf(stderr,
                         "ERROR: There are more than %d command line arguments. All arguments beyond\n",
                         kMaxFileArgs);
            std::fprintf(stderr, "argument %d will be ignored.\n", kMaxFileArgs);
        }
    }
    std::fclose(file);
}

// UTF-16 code units of a wide argument: the form the Windows build shows.
std::vector<unsigned> UTF16Units(const std::wstring& wide) {
    std::vector<unsigned> units;
    units.reserve(wide.size());
    for (const wchar_t c : wide) {
        const auto value = static_cast<unsigned long>(c);
        if (sizeof(wchar_t) > 2 && value >= 0x10000 && value <= 0x10FFFF) {
            units.push_back(static_cast<unsigned>(0xD800 + ((value - 0x10000) >> 10)));
            units.push_back(static_cast<unsigned>(0xDC00 + ((value - 0x10000) & 0x3FF)));
        } else {
            units.push_back(static_cast<unsigned>(value & 0xFFFF));
        }
    }
    return units;
}

// Dumps argument i, its wide form and its UTF-8 form byte by byte, for
// tracking down character-set problems in arguments.
void DisplayBytes(int i, const std::wstring& wide, const ZORString& converted) {
    std::string text = "=== Arg " + std::to_string(i) + ": \"" + converted.c_str() + "\"\n===   Wide:";
    char hex[16];
    for (const unsigned unit : UTF16Units(wide)) {
        std::snprintf(hex, sizeof hex, " %02x %02x", unit & 0xFF, (unit >> 8) & 0xFF);
        text += hex;
    }
    text += "\n===   UTF8:";
    for (const char* p = converted.c_str(); *p != '\0'; ++p) {
        std::snprintf(hex, sizeof hex, " %02x", static_cast<unsigned char>(*p));
        text += hex;
    }
    text += "\n";
    std::fputs(text.c_str(), stderr);
    std::fflush(stderr);
}

} // namespace

// ---- the store -----------------------------------------------------------------

ZORSimCommandLineImpl::ZORSimCommandLineImpl() = default;

ZORSimCommandLineImpl::~ZORSimCommandLineImpl() {
    Clear();
}

void ZORSimCommandLineImpl::Clear() {
    delete[] m_pairs;
    m_pairs = nullptr;
    m_numPairs = 0;
    delete[] m_args;
    m_args = nullptr;
    m_numArgs = 0;
}

// Concurrent first queries are safe: the store is filled once, under the
// singleton's mutex, and published by the flag.
void ZORSimCommandLineImpl::Init() {
    if (m_initialised.load(std::memory_order_acquire) == 1)
        return;
    StoreLock lock;
    if (m_initialised.load(std::memory_order_relaxed) == 1)
        return;
    Clear();
    const bool display = ZORBasGetEnv("SIM_CMD_DISPLAY_BYTES") != nullptr;
    // Arguments that cannot be had leave an empty store, without a report.
    std::vector<std::wstring> wide;
    if (!ZORSimUttOS::ProcessArguments(wide))
        wide.clear();
    const int count = static_cast<int>(wide.size());
    m_args = new ZORString[count];
    m_numArgs = count;
    for (int i = 0; i < count; ++i) {
        m_args[i] = ZORString::BuildFromWChar(wide[i].c_str());
        if (display)
            DisplayBytes(i, wide[i], m_args[i]);
    }
    InitPairs();
    m_initialised.store(1, std::memory_order_release);
}

void ZORSimCommandLineImpl::InitFromArgs(int argc, char** argv) {
    if (m_initialised.load(std::memory_order_acquire) == 1)
        return;
    StoreLock lock;
    if (m_initialised.load(std::memory_order_relaxed) == 1)
        return;
    int count = argv != nullptr && argc > 0 ? argc : 0;
    char** list = argv;
    FileArguments fromFile;
    if (count >= 2 && argv[1] != nullptr && std::strcmp(argv[1], "-clargsfile") == 0) {
        // Arguments after the file's name are dropped.
        ReadClArgsFile(argc, argv, fromFile.count, fromFile.items);
        count = fromFile.count;
        list = fromFile.items;
    }
    auto args = std::make_unique<ZORString[]>(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        bool decoded = true;
        args[i] = ZORString::BuildFromLocale(list[i], decoded);
        if (!decoded)
            ZORBasToUTF8Exception(list[i]).Throw("ZORSimCommandLine", 258);
    }
    Clear();
    m_args = args.release();
    m_numArgs = count;
    InitPairs();
    m_initialised.store(1, std::memory_order_release);
}

// Every argument but the program name that begins with "-" is a key, and
// the argument after it its value unless that is a key too. The count of
// pairs includes the program name, so a name beginning with "-" adds one
// pair that stays empty; lookups may find that empty key.
void ZORSimCommandLineImpl::InitPairs() {
    int pairs = 0;
    for (int i = 0; i < m_numArgs; ++i) {
        if (m_args[i].c_str()[0] == '-')
            ++pairs;
    }
    m_numPairs = pairs;
    m_pairs = new ZORString[2 * static_cast<std::size_t>(pairs)];
    int key = -1;
    bool expectValue = false;
    for (int i = 1; i < m_numArgs; ++i) {
        const ZORString& arg = m_args[i];
        if (arg.c_str()[0] == '-') {
            ++key;
            m_pairs[2 * key] = ZORString::BuildFromUTF8(arg.c_str() + 1, arg.Bytes() - 1);
            expectValue = true;
        } else if (expectValue) {
            m_pairs[2 * key + 1] = arg;
            expectValue = false;
        }
    }
}

int ZORSimCommandLineImpl::GetKey(const ZORString& name) {
    if (m_numPairs < 1)
        return -1;
    for (int i = 0; i < m_numPairs; ++i) {
        if (std::strcmp(name.c_str(), m_pairs[2 * i].c_str()) == 0)
            return 2 * i;
    }
    return -1;
}

int ZORSimCommandLineImpl::GetKey_CaseInsensitivity(const ZORString& name) {
    if (m_numPairs < 1)
        return -1;
    const ZORString lowerName = name.ASCIIToLower();
    for (int i = 0; i < m_numPairs; ++i) {
        if (std::strcmp(lowerName.c_str(), m_pairs[2 * i].ASCIIToLower().c_str()) == 0)
            return 2 * i;
    }
    return -1;
}

int ZORSimCommandLineImpl::NumArgs() {
    Init();
    return m_numArgs;
}

int ZORSimCommandLineImpl::NumPairs() {
    Init();
    return m_numPairs;
}

const ZORString& ZORSimCommandLineImpl::GetPosition(int i) {
    Init();
    return m_args[i];
}

bool ZORSimCommandLineImpl::IsMember(const ZORString& key) {
    ZORSimBadZORString::Check(key);
    Init();
    return GetKey(key) != -1;
}

bool ZORSimCommandLineImpl::IsMember(const ZORString& key, bool caseInsensitive) {
    ZORSimBadZORString::Check(key);
    Init();
    return (caseInsensitive ? GetKey_CaseInsensitivity(key) : GetKey(key)) != -1;
}

int ZORSimCommandLineImpl::GetInt(const ZORString& key, int defaultValue) {
    ZORSimBadZORString::Check(key);
    Init();
    const int index = GetKey(key);
    if (index == -1 || m_pairs[index + 1].Bytes() == 0)
        return defaultValue;
    return std::atoi(m_pairs[index + 1].c_str());
}

float ZORSimCommandLineImpl::GetFloat(const ZORString& key, float defaultValue) {
    ZORSimBadZORString::Check(key);
    Init();
    const int index = GetKey(key);
    if (index == -1 || m_pairs[index + 1].Bytes() == 0)
        return defaultValue;
    return static_cast<float>(std::atof(m_pairs[index + 1].c_str()));
}

const ZORString& ZORSimCommandLineImpl::GetString(const ZORString& key, const ZORString& defaultValue) {
    ZORSimBadZORString::Check(key);
    ZORSimBadZORString::Check(defaultValue);
    Init();
    const int index = GetKey(key);
    if (index == -1 || m_pairs[index + 1].Bytes() == 0)
        return defaultValue;
    return m_pairs[index + 1];
}

// ---- the facade ------------------------------------------------------------------

ZORSimCommandLine::ZORSimCommandLine(int argc, char** argv) {
    Singleton::Finalize();
    Singleton::Instance()->InitFromArgs(argc, argv);
}

int ZORSimCommandLine::NumArgs() {
    return Singleton::Instance()->NumArgs();
}

int ZORSimCommandLine::NumPairs() {
    return Singleton::Instance()->NumPairs();
}

const ZORString& ZORSimCommandLine::GetPosition(int i) {
    return Singleton::Instance()->GetPosition(i);
}

bool ZORSimCommandLine::IsMember(const ZORString& key) {
    return Singleton::Instance()->IsMember(key);
}

bool ZORSimCommandLine::IsMember(const ZORString& key, bool caseInsensitive) {
    return Singleton::Instance()->IsMember(key, caseInsensitive);
}

int ZORSimCommandLine::GetInt(const ZORString& key, int defaultValue) {
    return Singleton::Instance()->GetInt(key, defaultValue);
}

float ZORSimCommandLine::GetFloat(const ZORString& key, float defaultValue) {
    return Singleton::Instance()->GetFloat(key, defaultValue);
}

const ZORString& ZORSimCommandLine::GetString(const ZORString& key, const ZORString& defaultValue) {
    return Singleton::Instance()->GetString(key, defaultValue);
}

cow_String ZORSimCommandLine::ConstGetValue(const cow_String& key, const cow_String& defaultValue) {
    const ZORString name = ZORString::BuildFromUTF8(key.c_str());
    const ZORString fallback = ZORString::BuildFromUTF8(defaultValue.c_str());
    ZORSimBadZORString::Check(name);
    ZORSimBadZORString::Check(fallback);
    const ZORString& chosen = Singleton::Instance()->GetString(name, fallback);
    return cow_String(chosen.c_str(), chosen.Bytes());
}

int ZORSimCommandLine::ConstGetValueAsInt(const cow_String& key, int defaultValue) {
    const ZORString name = ZORString::BuildFromUTF8(key.c_str());
    ZORSimBadZORString::Check(name);
    return Singleton::Instance()->GetInt(name, defaultValue);
}
