#include "ZORSimExcLink.h"

#define ZORSIM_EXC ZORSIM_EXC_DEFINE
#include "ZORSimExcLink.tbl"
#undef ZORSIM_EXC
