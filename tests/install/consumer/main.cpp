#include <ZORSimContainers.h>

#include <cstdio>
#include <cstring>

int main() {
    try { // reported, with a trace
        ZORSimExcNoSuchFile("/data/run.1.tmp").Propagate();
    } catch (const ZORBasException& e) {
        if (e.GetCode() != 1013 ||
            std::strcmp(e.AsString(ZORBasStringMode(false)).c_str(), "No such file: /data/run.1.tmp"))
            return 1;
    }
    std::puts("consumer ok");
    return 0;
}
