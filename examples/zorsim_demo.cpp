// A tour of the library as a database module sees it: start the module,
// raise and catch a few catalogue exceptions (each throw is reported on
// standard error with its stack trace), time the work with the resource
// monitor and print its table.
#include <ZORSimContainers.h>

#include <cstdio>
#include <memory>

namespace {

void OpenResultFile(const char* name) {
    ZORSimUttResourceMonitorStartTimer(1);
    // A module that cannot find its file reports it in one way: build the
    // class with its fields and propagate it.
    ZORSimExcNoSuchFile(name).Propagate();
}

void CheckBounds(unsigned long long start, unsigned long long end, unsigned long long limit) {
    if (end > limit)
        ZORSimExcIOBounds(start, end, limit).Propagate();
}

} // namespace

int main() {
    // Reports go to standard error; keep this program's own lines in step with them.
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    const int uses = ZORSimContainers_initializeC();
    std::printf("=== module started (use count %d)\n", uses);

    ZORSimUttResourceMonitorInitialize("zorsim_demo", 1);
    ZORSimUttResourceMonitorIniTimer(1, "open result file");
    ZORSimUttResourceMonitorIniTimer(2, "bounds check");

    try {
        OpenResultFile("/data/run.1.tmp");
    } catch (const ZORBasException& e) {
        ZORSimUttResourceMonitorStopTimer(1);
        std::printf("=== caught code %d: %s\n", e.GetCode(), e.AsString(ZORBasStringMode(false)).c_str());
    }

    ZORSimUttResourceMonitorStartTimer(2);
    try {
        CheckBounds(4096, 1u << 20, 65536);
    } catch (const ZORSimExcIOBounds& e) {
        std::unique_ptr<ZORBasException> kept(e.Clone());
        std::printf("=== caught code %d, kept a clone: %s\n", kept->GetCode(),
                    kept->AsString(ZORBasStringMode(false)).c_str());
    }
    ZORSimUttResourceMonitorStopTimer(2);

    // A real refusal of the OS: a file in a directory that is not there.
    try {
        ZORSimUttOSFile file;
        file.OpenWrite("no-such-directory/results.dat");
    } catch (const ZORBasException& e) {
        std::printf("=== caught code %d: %s\n", e.GetCode(), e.AsString(ZORBasStringMode(false)).c_str());
    }
    ZORSimUttResourceMonitorMark("demo done");

    std::printf("=== resource monitor\n");
    omi_Singleton<bcu_ResourceMonitor>::Instance().Report(stdout);
    ZORSimContainers_finalizeC();
    return 0;
}
