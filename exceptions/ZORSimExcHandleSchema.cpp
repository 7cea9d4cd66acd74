#include "ZORSimExcHandleSchema.h"

#define ZORSIM_EXC ZORSIM_EXC_DEFINE
#include "ZORSimExcHandleSchema.tbl"
#undef ZORSIM_EXC
