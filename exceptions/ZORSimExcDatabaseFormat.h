// Exception classes generated from ZORSimExcDatabaseFormat.tbl.
#pragma once

#include "ZORSimExcContract.h"

#define ZORSIM_EXC ZORSIM_EXC_DECLARE
#include "ZORSimExcDatabaseFormat.tbl"
#undef ZORSIM_EXC
