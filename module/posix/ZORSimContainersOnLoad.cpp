// Without a loader entry, the shared object's load and unload stand for
// process attach and detach, so that loading the library starts it exactly
// as on Windows.
#include "ZORSimContainersLoader.h"

namespace {
__attribute__((constructor)) void ZORSimContainersOnLoad() {
    DllMain(nullptr, ZORSIM_PROCESS_ATTACH, nullptr);
}
__attribute__((destructor)) void ZORSimContainersOnUnload() {
    DllMain(nullptr, ZORSIM_PROCESS_DETACH, nullptr);
}
} // namespace
