#include "ZORSimExcDrawer.h"

#define ZORSIM_EXC ZORSIM_EXC_DEFINE
#include "ZORSimExcDrawer.tbl"
#undef ZORSIM_EXC
