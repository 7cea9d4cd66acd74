// Exception classes generated from ZORSimExcDocument.tbl.
#pragma once

#include "ZORSimExcContract.h"

#define ZORSIM_EXC ZORSIM_EXC_DECLARE
#include "ZORSimExcDocument.tbl"
#undef ZORSIM_EXC
