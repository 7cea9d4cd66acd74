// Exception classes generated from ZORSimExcTransferRequest.tbl.
#pragma once

#include "ZORSimExcContract.h"

#define ZORSIM_EXC ZORSIM_EXC_DECLARE
#include "ZORSimExcTransferRequest.tbl"
#undef ZORSIM_EXC
