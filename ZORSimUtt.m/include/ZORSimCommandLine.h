// The process-wide store of the program's arguments and its "-key value"
// pairs, filled once and then queried by name.
#pragma once

#include "ZORBasAtiGlobalSingleton.h"
#include "ZORSimContainersExport.h"
#include "ZORString.h"

#include <atomic>

// The store. Filled on the first query from the process's own arguments, or
// explicitly by InitFromArgs; once filled it does not change.
class ZORSIM_API ZORSimCommandLineImpl {
public:
    ZORSimCommandLineImpl();
    ~ZORSimCommandLineImpl();
    ZORSimCommandLineImpl(const ZORSimCommandLineImpl&) = delete;
    ZORSimCommandLineImpl& operator=(const ZORSimCommandLineImpl&) = delete;

    int NumArgs();
    int NumPairs();
    // Argument i, argument 0 being the program name. No range check.
    const ZORString& GetPosition(int i);
    // Whether "-key" was given, with the key's exact case.
    bool IsMember(const ZORString& key);
    // With caseInsensitive true, ASCII case is ignored.
    bool IsMember(const ZORString& key, bool caseInsensitive);
    // The key's value through atoi / atof; the default when the key is
    // absent or has no value. A value that is no number gives 0.
    int GetInt(const ZORString& key, int defaultValue);
    float GetFloat(const ZORString& key, float defaultValue);
    // The key's value; the default when the key is absent or has no value.
    const ZORString& GetString(const ZORString& key, const ZORString& defaultValue);

    // Fills an empty store from a narrow argument vector in the process
    // locale's codeset. When argv[1] is "-clargsfile", the arguments come from
    // the file named by argv[2] instead, one per line. Text that does not
    // decode raises ZORBasToUTF8Exception and leaves the store empty.
    void InitFromArgs(int argc, char** argv);

private:
    void Init();
    void InitPairs();
    // Index of the key's entry in the pair array (the value follows it), or
    // -1 when the key is absent.
    int GetKey(const ZORString& name);
    int GetKey_CaseInsensitivity(const ZORString& name);
    void Clear();

    std::atomic<int> m_initialised{0};
    int m_numArgs = 0;
    ZORString* m_args = nullptr;
    int m_numPairs = 0;
    ZORString* m_pairs = nullptr; // key, value, key, value, ...
};

extern template class ZORSIM_API ZORBasAtiGlobalSingleton<ZORSimCommandLineImpl>;

// The queries, answered by the one store of the process.
class ZORSIM_API ZORSimCommandLine {
public:
    ZORSimCommandLine() = default;
    // Discards the current store and fills a new one from the given vector:
    // constructing it again replaces the arguments.
    ZORSimCommandLine(int argc, char** argv);

    static int NumArgs();
    static int NumPairs();
    static const ZORString& GetPosition(int i);
    static bool IsMember(const ZORString& key);
    static bool IsMember(const ZORString& key, bool caseInsensitive);
    static int GetInt(const ZORString& key, int defaultValue);
    static float GetFloat(const ZORString& key, float defaultValue);
    static const ZORString& GetString(const ZORString& key, const ZORString& defaultValue);
    // For callers holding UTF-8 byte strings: text that is no valid UTF-8
    // raises ZORSimExcBadStringArgument.
    static cow_String ConstGetValue(const cow_String& key, const cow_String& defaultValue);
    static int ConstGetValueAsInt(const cow_String& key, int defaultValue);
};
