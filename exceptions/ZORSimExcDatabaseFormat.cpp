#include "ZORSimExcDatabaseFormat.h"

#define ZORSIM_EXC ZORSIM_EXC_DEFINE
#include "ZORSimExcDatabaseFormat.tbl"
#undef ZORSIM_EXC
