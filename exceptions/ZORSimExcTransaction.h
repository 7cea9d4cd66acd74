// Exception classes generated from ZORSimExcTransaction.tbl.
#pragma once

#include "ZORSimExcContract.h"

#define ZORSIM_EXC ZORSIM_EXC_DECLARE
#include "ZORSimExcTransaction.tbl"
#undef ZORSIM_EXC
