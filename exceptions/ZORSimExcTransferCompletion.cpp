#include "ZORSimExcTransferCompletion.h"

#define ZORSIM_EXC ZORSIM_EXC_DEFINE
#include "ZORSimExcTransferCompletion.tbl"
#undef ZORSIM_EXC
