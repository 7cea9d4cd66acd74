// Start and stop of VEXZORSimContainers.
//
// The counters are plain ints without a lock: the hooks are called from one
// thread at a time (the loader lock serialises DllMain), and the order of the
// hook calls must not change, so no synchronisation is added. An unmatched
// finalise is not guarded either: it takes the use count to -1, and the next
// initialise only brings it back to 0 without starting anything.

#include "ZORSimContainersModule.h"
#include "ZORSimContainersLoader.h"
#include "ZORSimCommandLine.h"
#include "ZORSimUttResourceMonitor.h"

#include "ZORBasModules.h"

namespace {

int g_useCount = 0;      // outstanding initialisations, all paths together
int g_specificCount = 0; // outstanding specific initialisations
int g_plainTally = 0;    // the tally of the plain pair
int g_loaderTally = 0;   // the tally of DllMain
int g_uttCount = 0;      // the utility layer's own use count

// Returns the value the plain entry reports: the new use count when the
// module was already started, otherwise the new specific count.
int StartModule(int& tally) {
    const int oldUse = g_useCount++;
    if (oldUse != 0)
        return oldUse + 1;
    tally += 1;
    ZORBasXmlParser_initialize(tally);
    ZORBasShared_initialize(tally);
    ZORBasCoreUtils_initialize(tally);
    ZORBasGenericsLib_initialize(tally);
    ZORBasAlloc_initialize(tally);
    ZORSimUtt_initialize(tally);
    const int oldSpecific = g_specificCount++;
    if (oldSpecific == 0)
        tally += 1;
    return oldSpecific + 1;
}

void StopModule(int& tally) {
    if (g_useCount-- != 1)
        return;
    // The tally and the specific count are settled before anything stops.
    tally -= 1;
    if (g_specificCount-- == 1)
        tally -= 1;
    ZORSimUtt_finalize(tally);
    ZORBasAlloc_finalize(tally);
    ZORBasGenericsLib_finalize(tally);
    ZORBasCoreUtils_finalize(tally);
    ZORBasShared_finalize(tally);
    ZORBasXmlParser_finalize(tally);
}

} // namespace

void ZORSimContainers_initialize(int& tally) {
    StartModule(tally);
}

void ZORSimContainers_finalize(int& tally) {
    StopModule(tally);
}

void ZORSimContainers_specific_initialize(int& tally) {
    if (g_specificCount++ == 0)
        tally += 1;
}

void ZORSimContainers_specific_finalize(int& tally) {
    if (--g_specificCount == 0)
        tally -= 1;
}

void ZORSimUtt_initialize(int& tally) {
    ZORBasHookJournal::Record("ZORSimUtt_initialize");
    if (g_uttCount++ != 0)
        return;
    tally += 1;
    ZORSimUttResourceMonitorInitialize(nullptr, 0);
}

// The resource monitor stays up on purpose: start and stop of this layer are
// not mirror images, and the monitor reports at process end.
void ZORSimUtt_finalize(int& tally) {
    ZORBasHookJournal::Record("ZORSimUtt_finalize");
    if (--g_uttCount != 0)
        return;
    tally -= 1;
    ZORBasAtiGlobalSingleton<ZORSimCommandLineImpl>::Finalize();
}

extern "C" {

int ZORSimContainers_initializeC(void) {
    return StartModule(g_plainTally);
}

void ZORSimContainers_finalizeC(void) {
    StopModule(g_plainTally);
}

int ZORSimContainers_Marker(void) {
    return 1;
}

BOOL ZORSIM_DLLMAIN_CALL DllMain(HINSTANCE, DWORD reason, LPVOID) {
    switch (reason) {
    case ZORSIM_PROCESS_ATTACH:
        StartModule(g_loaderTally);
        break;
    case ZORSIM_PROCESS_DETACH:
        StopModule(g_loaderTally);
        break;
    default: // thread attach and detach: nothing to do
        break;
    }
    return 1;
}

} // extern "C"
