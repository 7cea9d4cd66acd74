#include "ZORSimExcTransferRequest.h"

#define ZORSIM_EXC ZORSIM_EXC_DEFINE
#include "ZORSimExcTransferRequest.tbl"
#undef ZORSIM_EXC
