// Locks, the mutex factory, singletons and the host's fatal-error routine.
#pragma once

#include "VEXZORBasExport.h"

#include <mutex>
#include <typeinfo>

// The host framework's fatal error: prints the text, source and line to
// standard error and aborts the process.
[[noreturn]] ZORBAS_API void PLXFatalError(const char* text, const char* source, int line);

// The framework's one process-wide recursive lock.
class ZORBAS_API ZORBasAtiGlobalLock {
public:
    static void Lock();
    static void Unlock();
    // Holds the lock for the life of the guard.
    class Guard {
    public:
        Guard() { ZORBasAtiGlobalLock::Lock(); }
        ~Guard() { ZORBasAtiGlobalLock::Unlock(); }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;
    };
};

// Mutex interface handed out by the threading model: lock first, unlock second.
class ZORBAS_API ZORBasAtiMutex {
public:
    virtual void Lock() = 0;
    virtual void Unlock() = 0;
    virtual ~ZORBasAtiMutex();
};

class ZORBAS_API ZORBasAtiThreadingModel {
public:
    // A new mutex, or null when none can be made.
    static ZORBasAtiMutex* newMutex();
    static void deleteMutex(ZORBasAtiMutex* mutex);
    // Fault injection for tests: the next `count` calls of newMutex return
    // null, as when the system has no mutex to give.
    static void FailNextForTesting(int count);
};

// Registry of live singletons by name. Whatever is still registered is
// destroyed, newest first, when the registry goes away at process end.
class ZORBAS_API omi_SingletonRegistry {
public:
    using Destroyer = void (*)(void* object);
    // The registry, or null once it has been torn down at process end.
    static omi_SingletonRegistry* Instance();
    void Add(const char* name, void* object, Destroyer destroy);
    // Forgets the object without destroying it; false when it is unknown.
    bool Remove(void* object);
    bool Contains(const char* name) const;
    int Count() const;
    ~omi_SingletonRegistry();

private:
    omi_SingletonRegistry();
    struct Impl;
    Impl* m_impl;
};

// A lazily made process-wide instance of T, registered with the singleton
// registry. Instance() is safe to call from several threads. The definition
// lives in omi_SingletonImpl.h and is instantiated once, in the library that
// owns T, so every module of the process shares the one instance.
template <class T> class omi_Singleton {
public:
    static T& Instance();
};

// Value of an environment variable, or null when it is not set.
ZORBAS_API const char* ZORBasGetEnv(const char* name);
