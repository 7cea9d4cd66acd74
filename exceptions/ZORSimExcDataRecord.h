// Exception classes generated from ZORSimExcDataRecord.tbl.
#pragma once

#include "ZORSimExcContract.h"
#include "ZORSimExcTypeForm.h"

#define ZORSIM_EXC ZORSIM_EXC_DECLARE
#include "ZORSimExcDataRecord.tbl"
#undef ZORSIM_EXC
