#include "ZORSimExcTypeForm.h"

#define ZORSIM_EXC ZORSIM_EXC_DEFINE
#include "ZORSimExcTypeForm.tbl"
#undef ZORSIM_EXC
