#include "ZORSimExcFTable.h"

#define ZORSIM_EXC ZORSIM_EXC_DEFINE
#include "ZORSimExcFTable.tbl"
#undef ZORSIM_EXC
