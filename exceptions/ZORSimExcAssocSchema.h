// Exception classes generated from ZORSimExcAssocSchema.tbl.
#pragma once

#include "ZORSimExcContract.h"

#define ZORSIM_EXC ZORSIM_EXC_DECLARE
#include "ZORSimExcAssocSchema.tbl"
#undef ZORSIM_EXC
