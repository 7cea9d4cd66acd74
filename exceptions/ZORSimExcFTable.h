// Exception classes generated from ZORSimExcFTable.tbl.
#pragma once

#include "ZORSimExcContract.h"

#define ZORSIM_EXC ZORSIM_EXC_DECLARE
#include "ZORSimExcFTable.tbl"
#undef ZORSIM_EXC
