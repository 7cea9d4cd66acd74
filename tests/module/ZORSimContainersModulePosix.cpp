// POSIX (ELF): the base hooks are interposed here, the executable's
// definitions taking the library's calls, so that the tally each one receives
// can be seen and the unload at process end heard. Each records the call and
// forwards to the base library's own hook.
#include "ModuleJournal.h"

#include <cstring>
#include <dlfcn.h>
#include <unistd.h>

using namespace zorsim_test;

namespace {
bool g_trace = false; // writes each hook and the tally it receives

void Forward(const char* hook, int& tally) {
    if (g_trace) {
        const std::string line = std::string(hook) + " " + std::to_string(tally) + "\n";
        (void)!write(2, line.data(), line.size()); // also during the unload at exit
    }
    const std::string mangled = "_Z" + std::to_string(std::strlen(hook)) + hook + "Ri";
    reinterpret_cast<void (*)(int&)>(dlsym(RTLD_NEXT, mangled.c_str()))(tally);
}
} // namespace

#define ZORSIM_INTERPOSE(library)                                                                            \
    __attribute__((visibility("default"))) void library##_initialize(int& tally) {                           \
        Forward(#library "_initialize", tally);                                                              \
    }                                                                                                        \
    __attribute__((visibility("default"))) void library##_finalize(int& tally) {                             \
        Forward(#library "_finalize", tally);                                                                \
    }
ZORSIM_INTERPOSE(ZORBasXmlParser)
ZORSIM_INTERPOSE(ZORBasShared)
ZORSIM_INTERPOSE(ZORBasCoreUtils)
ZORSIM_INTERPOSE(ZORBasGenericsLib)
ZORSIM_INTERPOSE(ZORBasAlloc)
#undef ZORSIM_INTERPOSE

TEST(ZORSimContainersModulePosix, UnloadingTheLibraryStopsEverything) {
    ExpectInFreshProcess([] { g_trace = true; }, "ZORBasXmlParser_finalize");
}

// 1 is added before the first base hook, each adds its own 1, and the
// specific count's 1 comes after all of them; on the way down both module 1s
// and the utility layer's go before the first base library stops.
TEST(ZORSimContainersModulePosix, TallySettlesAroundTheBaseHooksInOrder) {
    std::string expected;
    for (int i = 0; i < 5; ++i)
        expected += kStart[i] + " " + std::to_string(101 + i) + "\n";
    for (int i = 0; i < 5; ++i)
        expected += kStop[i + 1] + " " + std::to_string(100 + kFullStart - 3 - i) + "\n";
    ExpectInFreshProcess(
        [] {
            StopLoaderUse();
            int tally = 100;
            g_trace = true;
            ZORSimContainers_initialize(tally);
            ZORSimContainers_finalize(tally);
            g_trace = false;
        },
        "^" + expected + "$");
}
