#include "ZORSimExcAssocSchema.h"

#define ZORSIM_EXC ZORSIM_EXC_DEFINE
#include "ZORSimExcAssocSchema.tbl"
#undef ZORSIM_EXC
