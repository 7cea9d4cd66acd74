// Exception classes generated from ZORSimExcPoolFormat.tbl.
#pragma once

#include "ZORSimExcContract.h"

#define ZORSIM_EXC ZORSIM_EXC_DECLARE
#include "ZORSimExcPoolFormat.tbl"
#undef ZORSIM_EXC
