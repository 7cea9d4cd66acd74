#include "ZORSimExcDocument.h"

#define ZORSIM_EXC ZORSIM_EXC_DEFINE
#include "ZORSimExcDocument.tbl"
#undef ZORSIM_EXC
