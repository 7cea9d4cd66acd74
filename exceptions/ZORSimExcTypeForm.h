// Exception classes generated from ZORSimExcTypeForm.tbl.
#pragma once

#include "ZORSimExcContract.h"

#define ZORSIM_EXC ZORSIM_EXC_DECLARE
#include "ZORSimExcTypeForm.tbl"
#undef ZORSIM_EXC
