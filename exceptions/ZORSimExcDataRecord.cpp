#include "ZORSimExcDataRecord.h"

#define ZORSIM_EXC ZORSIM_EXC_DEFINE
#include "ZORSimExcDataRecord.tbl"
#undef ZORSIM_EXC
