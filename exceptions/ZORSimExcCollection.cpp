#include "ZORSimExcCollection.h"

#define ZORSIM_EXC ZORSIM_EXC_DEFINE
#include "ZORSimExcCollection.tbl"
#undef ZORSIM_EXC
