// Exception classes generated from ZORSimExcTransferCompletion.tbl.
#pragma once

#include "ZORSimExcContract.h"
#include "ZORSimExcTransferRequest.h"

#define ZORSIM_EXC ZORSIM_EXC_DECLARE
#include "ZORSimExcTransferCompletion.tbl"
#undef ZORSIM_EXC
