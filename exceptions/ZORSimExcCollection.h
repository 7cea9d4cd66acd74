// Exception classes generated from ZORSimExcCollection.tbl.
#pragma once

#include "ZORSimExcContract.h"

#define ZORSIM_EXC ZORSIM_EXC_DECLARE
#include "ZORSimExcCollection.tbl"
#undef ZORSIM_EXC
