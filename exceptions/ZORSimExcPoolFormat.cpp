#include "ZORSimExcPoolFormat.h"

#define ZORSIM_EXC ZORSIM_EXC_DEFINE
#include "ZORSimExcPoolFormat.tbl"
#undef ZORSIM_EXC
