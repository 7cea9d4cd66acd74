// Start and stop hooks of the base libraries, and the journal of hook calls.
#include "ZORBasModules.h"

#include <atomic>
#include <cstdio>
#include <thread>

// ---- journal ---------------------------------------------------------------------

namespace {

constexpr int kJournalSize = 256;

// Only trivially destructible storage: hooks are still recorded while the
// process runs its static destructors and unloads libraries. The names are
// copied: the module that recorded one may be unloaded before it is read.
char g_journal[kJournalSize][64];
unsigned long long g_journalTotal = 0;
std::atomic_flag g_journalLock = ATOMIC_FLAG_INIT;

class JournalGuard {
public:
    JournalGuard() {
        while (g_journalLock.test_and_set(std::memory_order_acquire))
            std::this_thread::yield();
    }
    ~JournalGuard() { g_journalLock.clear(std::memory_order_release); }
    JournalGuard(const JournalGuard&) = delete;
    JournalGuard& operator=(const JournalGuard&) = delete;
};

int KeptLocked() {
    return g_journalTotal < kJournalSize ? static_cast<int>(g_journalTotal) : kJournalSize;
}

} // namespace

void ZORBasHookJournal::Record(const char* hook) {
    JournalGuard guard;
    std::snprintf(g_journal[g_journalTotal % kJournalSize], sizeof g_journal[0], "%s", hook);
    ++g_journalTotal;
}

int ZORBasHookJournal::Size() {
    JournalGuard guard;
    return KeptLocked();
}

const char* ZORBasHookJournal::At(int index) {
    JournalGuard guard;
    const int kept = KeptLocked();
    if (index < 0 || index >= kept)
        return nullptr;
    return g_journal[(g_journalTotal - static_cast<unsigned long long>(kept) + static_cast<unsigned>(index)) %
                     kJournalSize];
}

void ZORBasHookJournal::Clear() {
    JournalGuard guard;
    g_journalTotal = 0;
}

// ---- hooks -------------------------------------------------------------------------

namespace {

std::atomic<int> g_xmlParserCount{0};
std::atomic<int> g_sharedCount{0};
std::atomic<int> g_coreUtilsCount{0};
std::atomic<int> g_genericsLibCount{0};
std::atomic<int> g_allocCount{0};

void Start(std::atomic<int>& count, int& tally, const char* hook) {
    ZORBasHookJournal::Record(hook);
    if (count.fetch_add(1) == 0)
        ++tally;
}

void Stop(std::atomic<int>& count, int& tally, const char* hook) {
    ZORBasHookJournal::Record(hook);
    if (count.fetch_sub(1) == 1)
        --tally;
}

} // namespace

void ZORBasXmlParser_initialize(int& tally) {
    Start(g_xmlParserCount, tally, "ZORBasXmlParser_initialize");
}
void ZORBasShared_initialize(int& tally) {
    Start(g_sharedCount, tally, "ZORBasShared_initialize");
}
void ZORBasCoreUtils_initialize(int& tally) {
    Start(g_coreUtilsCount, tally, "ZORBasCoreUtils_initialize");
}
void ZORBasGenericsLib_initialize(int& tally) {
    Start(g_genericsLibCount, tally, "ZORBasGenericsLib_initialize");
}
void ZORBasAlloc_initialize(int& tally) {
    Start(g_allocCount, tally, "ZORBasAlloc_initialize");
}

void ZORBasXmlParser_finalize(int& tally) {
    Stop(g_xmlParserCount, tally, "ZORBasXmlParser_finalize");
}
void ZORBasShared_finalize(int& tally) {
    Stop(g_sharedCount, tally, "ZORBasShared_finalize");
}
void ZORBasCoreUtils_finalize(int& tally) {
    Stop(g_coreUtilsCount, tally, "ZORBasCoreUtils_finalize");
}
void ZORBasGenericsLib_finalize(int& tally) {
    Stop(g_genericsLibCount, tally, "ZORBasGenericsLib_finalize");
}
void ZORBasAlloc_finalize(int& tally) {
    Stop(g_allocCount, tally, "ZORBasAlloc_finalize");
}
