// A library that the report tests load only after their first trace, so its
// code is mapped after symbol look-up was set up. (Its one export: a MinGW
// DLL exports everything when nothing is marked.)
#include "ZORSimExceptions.h"

extern "C" __attribute__((visibility("default"))) ZORSIM_NOINLINE void
zorsim_report_plugin_raise(const char** file, int* line) {
    *file = __FILE__;
    *line = __LINE__ + 1;
    ZORSimExcNoSuchForm("plugin").Propagate();
    *line = 0; // not reached; keeps the call above from being a tail call
}
