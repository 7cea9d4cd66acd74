// Exception classes generated from ZORSimExcHandleSchema.tbl.
#pragma once

#include "ZORSimExcContract.h"

#define ZORSIM_EXC ZORSIM_EXC_DECLARE
#include "ZORSimExcHandleSchema.tbl"
#undef ZORSIM_EXC
