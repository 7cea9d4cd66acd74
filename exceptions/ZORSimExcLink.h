// Exception classes generated from ZORSimExcLink.tbl.
#pragma once

#include "ZORSimExcContract.h"

#define ZORSIM_EXC ZORSIM_EXC_DECLARE
#include "ZORSimExcLink.tbl"
#undef ZORSIM_EXC
