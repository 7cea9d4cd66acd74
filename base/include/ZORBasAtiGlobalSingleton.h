// A process-wide instance made on first use under the framework's global
// lock, with a mutex of its own that the instance's users may take.
//
// The members are defined here but are not inline: the library that owns T
// instantiates the class explicitly (and exports it), and its header declares
// that instantiation extern, so every module of the process shares the one
// instance and the one mutex.
#pragma once

#include "ZORBasAti.h"
#include "ZORBasException.h"

#include <atomic>
#include <new>
#include <typeinfo>

template <class T> class ZORBasAtiGlobalSingleton {
public:
    // The instance, made (empty, by T's default constructor) when there is
    // none. Safe to call from several threads.
    static T* Instance();
    // Makes the mutex unless one is kept already.
    static void CreateLocks();
    static void Lock();
    static void Unlock();
    // Destroys the instance, if any, and the mutex. The next Instance()
    // starts afresh.
    static void Finalize();

private:
    // Under the global lock: keeps `mutex` when none is kept yet.
    static void KeepMutex(ZORBasAtiMutex* mutex);
    static void Destroy(T* instance);
    // Called by the singleton registry when it goes away at process end
    // while the instance still exists.
    static void DestroyFromRegistry(void* object);

    // Read without the global lock, hence atomic.
    static std::atomic<T*> m_instance;
    static std::atomic<ZORBasAtiMutex*> m_lock;
};

template <class T> std::atomic<T*> ZORBasAtiGlobalSingleton<T>::m_instance{nullptr};
template <class T> std::atomic<ZORBasAtiMutex*> ZORBasAtiGlobalSingleton<T>::m_lock{nullptr};

template <class T> void ZORBasAtiGlobalSingleton<T>::KeepMutex(ZORBasAtiMutex* mutex) {
    if (m_lock.load(std::memory_order_relaxed) == nullptr)
        m_lock.store(mutex, std::memory_order_release);
    else if (mutex != nullptr)
        ZORBasAtiThreadingModel::deleteMutex(mutex); // a surplus one is not kept
}

template <class T> T* ZORBasAtiGlobalSingleton<T>::Instance() {
    if (T* existing = m_instance.load(std::memory_order_acquire))
        return existing;
    {
        ZORBasAtiGlobalLock::Guard guard;
        KeepMutex(ZORBasAtiThreadingModel::newMutex());
        if (m_lock.load(std::memory_order_relaxed) == nullptr)
            PLXFatalError("AssertionFailed:m_lock != 0", "ZORBasAtiGlobalSingleton", 70);
        // Another thread may have made it while this one waited for the lock.
        if (T* existing = m_instance.load(std::memory_order_acquire))
            return existing;
        void* storage = mem_OperatorNewThrow(sizeof(T));
        if (storage == nullptr)
            PLXFatalError("AssertionFailed:inst2 != 0", "ZORBasAtiGlobalSingleton", 85);
        T* inst2;
        try {
            inst2 = new (storage) T();
        } catch (...) {
            mem_OperatorDelete(storage);
            throw;
        }
        if (omi_SingletonRegistry* registry = omi_SingletonRegistry::Instance())
            registry->Add(typeid(T).name(), inst2, &DestroyFromRegistry);
        m_instance.store(inst2, std::memory_order_release);
    }
    T* instance = m_instance.load(std::memory_order_acquire);
    if (instance == nullptr)
        PLXFatalError("AssertionFailed:static_cast<volatile Class* volatile>(m_instance) != 0",
                      "ZORBasAtiGlobalSingleton", 88);
    return instance;
}

template <class T> void ZORBasAtiGlobalSingleton<T>::CreateLocks() {
    ZORBasAtiGlobalLock::Guard guard;
    KeepMutex(ZORBasAtiThreadingModel::newMutex());
    if (m_lock.load(std::memory_order_relaxed) == nullptr)
        PLXFatalError("AssertionFailed:m_lock != 0", "ZORBasAtiGlobalSingleton", 70);
}

template <class T> void ZORBasAtiGlobalSingleton<T>::Lock() {
    ZORBasAtiMutex* mutex = m_lock.load(std::memory_order_acquire);
    if (mutex == nullptr) {
        CreateLocks();
        mutex = m_lock.load(std::memory_order_acquire);
    }
    mutex->Lock();
}

template <class T> void ZORBasAtiGlobalSingleton<T>::Unlock() {
    if (ZORBasAtiMutex* mutex = m_lock.load(std::memory_order_acquire))
        mutex->Unlock();
}

template <class T> void ZORBasAtiGlobalSingleton<T>::Destroy(T* instance) {
    instance->~T();
    mem_OperatorDelete(instance);
}

template <class T> void ZORBasAtiGlobalSingleton<T>::Finalize() {
    ZORBasAtiGlobalLock::Guard guard;
    if (T* instance = m_instance.load(std::memory_order_acquire)) {
        if (omi_SingletonRegistry* registry = omi_SingletonRegistry::Instance())
            registry->Remove(instance);
        m_instance.store(nullptr, std::memory_order_release);
        Destroy(instance);
    }
    ZORBasAtiThreadingModel::deleteMutex(m_lock.exchange(nullptr, std::memory_order_acq_rel));
}

template <class T> void ZORBasAtiGlobalSingleton<T>::DestroyFromRegistry(void* object) {
    // Whichever comes first at process end, the registry or Finalize, destroys
    // the instance; the other then finds nothing left to do.
    ZORBasAtiGlobalLock::Guard guard;
    T* instance = m_instance.load(std::memory_order_acquire);
    if (instance == nullptr || instance != object)
        return;
    m_instance.store(nullptr, std::memory_order_release);
    Destroy(instance);
}
