#include "ZORSimExcTransaction.h"

#define ZORSIM_EXC ZORSIM_EXC_DEFINE
#include "ZORSimExcTransaction.tbl"
#undef ZORSIM_EXC
