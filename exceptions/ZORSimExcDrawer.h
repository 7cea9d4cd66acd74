// Exception classes generated from ZORSimExcDrawer.tbl.
#pragma once

#include "ZORSimExcContract.h"

#define ZORSIM_EXC ZORSIM_EXC_DECLARE
#include "ZORSimExcDrawer.tbl"
#undef ZORSIM_EXC
