// Exception classes generated from ZORSimExcStorage.tbl.
#pragma once

#include "ZORSimExcContract.h"

#define ZORSIM_EXC ZORSIM_EXC_DECLARE
#include "ZORSimExcStorage.tbl"
#undef ZORSIM_EXC
