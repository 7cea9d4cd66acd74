// Fatal errors, the global lock, the mutex factory and the singleton registry.
#include "ZORBasAti.h"

#include "ZORBasPlatform.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

void PLXFatalError(const char* text, const char* source, int line) {
    std::fprintf(stderr, "PLXFatalError: %s (%s:%d)\n", text != nullptr ? text : "(null)",
                 source != nullptr ? source : "(null)", line);
    std::fflush(stderr);
    std::abort();
}

// ---- global lock ---------------------------------------------------------------

namespace {

// Never destroyed: the lock must still work while the process tears down its
// statics.
std::recursive_mutex& GlobalMutex() {
    static std::recursive_mutex* mutex = new std::recursive_mutex;
    return *mutex;
}

} // namespace

void ZORBasAtiGlobalLock::Lock() {
    GlobalMutex().lock();
}

void ZORBasAtiGlobalLock::Unlock() {
    GlobalMutex().unlock();
}

// ---- threading model -------------------------------------------------------------

ZORBasAtiMutex::~ZORBasAtiMutex() = default;

namespace {

// One atomic word: 0 free, 1 held, 2 held with threads waiting. Taking and
// releasing a free mutex is one atomic instruction each, with no call into
// the C library: every positioned transfer takes the file's mutex.
class StdAtiMutex final : public ZORBasAtiMutex {
public:
    ZORBAS_HOT void Lock() override {
        int seen = 0;
        if (!m_state.compare_exchange_strong(seen, 1, std::memory_order_acquire))
            Contended(seen);
    }
    ZORBAS_HOT void Unlock() override {
        if (m_state.exchange(0, std::memory_order_release) == 2)
            zorbas_os::WakeOne(m_state);
    }

private:
    // Marks the mutex as waited for and sleeps until it is released.
    void Contended(int seen) {
        if (seen != 2)
            seen = m_state.exchange(2, std::memory_order_acquire);
        while (seen != 0) {
            zorbas_os::WaitWhile(m_state, 2);
            seen = m_state.exchange(2, std::memory_order_acquire);
        }
    }

    std::atomic<int> m_state{0};
};

std::atomic<int> g_failNextMutexes{0};

} // namespace

ZORBasAtiMutex* ZORBasAtiThreadingModel::newMutex() {
    int pending = g_failNextMutexes.load();
    while (pending > 0) {
        if (g_failNextMutexes.compare_exchange_weak(pending, pending - 1))
            return nullptr;
    }
    return new (std::nothrow) StdAtiMutex();
}

void ZORBasAtiThreadingModel::deleteMutex(ZORBasAtiMutex* mutex) {
    delete mutex;
}

void ZORBasAtiThreadingModel::FailNextForTesting(int count) {
    g_failNextMutexes.store(count > 0 ? count : 0);
}

// ---- singleton registry ----------------------------------------------------------

struct omi_SingletonRegistry::Impl {
    struct Entry {
        std::string name;
        void* object;
        Destroyer destroy;
    };
    mutable std::mutex lock;
    std::vector<Entry> entries; // oldest first
};

namespace {

// Set once the registry's static has been destroyed; a plain atomic flag has
// no destructor of its own, so it stays readable to the very end.
std::atomic<bool> g_registryGone{false};

} // namespace

omi_SingletonRegistry* omi_SingletonRegistry::Instance() {
    if (g_registryGone.load(std::memory_order_acquire))
        return nullptr;
    static omi_SingletonRegistry registry;
    return g_registryGone.load(std::memory_order_acquire) ? nullptr : &registry;
}

omi_SingletonRegistry::omi_SingletonRegistry() : m_impl(new Impl) {}

omi_SingletonRegistry::~omi_SingletonRegistry() {
    // From here on, singletons (and their destructors) see no registry.
    g_registryGone.store(true, std::memory_order_release);
    std::vector<Impl::Entry> entries;
    {
        std::lock_guard<std::mutex> guard(m_impl->lock);
        entries.swap(m_impl->entries);
    }
    for (auto it = entries.rbegin(); it != entries.rend(); ++it) {
        if (it->destroy != nullptr)
            it->destroy(it->object);
    }
    delete m_impl;
    m_impl = nullptr;
}

void omi_SingletonRegistry::Add(const char* name, void* object, Destroyer destroy) {
    if (object == nullptr)
        return;
    std::lock_guard<std::mutex> guard(m_impl->lock);
    m_impl->entries.push_back({name != nullptr ? name : "", object, destroy});
}

bool omi_SingletonRegistry::Remove(void* object) {
    std::lock_guard<std::mutex> guard(m_impl->lock);
    auto& entries = m_impl->entries;
    for (auto it = entries.rbegin(); it != entries.rend(); ++it) {
        if (it->object == object) {
            entries.erase(std::next(it).base());
            return true;
        }
    }
    return false;
}

bool omi_SingletonRegistry::Contains(const char* name) const {
    if (name == nullptr)
        return false;
    std::lock_guard<std::mutex> guard(m_impl->lock);
    for (const auto& entry : m_impl->entries) {
        if (entry.name == name)
            return true;
    }
    return false;
}

int omi_SingletonRegistry::Count() const {
    std::lock_guard<std::mutex> guard(m_impl->lock);
    return static_cast<int>(m_impl->entries.size());
}

// ---- environment ---------------------------------------------------------------

const char* ZORBasGetEnv(const char* name) {
    return name != nullptr ? zorbas_os::GetEnv(name) : nullptr;
}
