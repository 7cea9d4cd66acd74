#include "ZORSimExcStorage.h"

#define ZORSIM_EXC ZORSIM_EXC_DEFINE
#include "ZORSimExcStorage.tbl"
#undef ZORSIM_EXC
