// Every exception class of the catalogue.
#pragma once

#include "ZORSimExcStorage.h"
#include "ZORSimExcDocument.h"
#include "ZORSimExcPoolFormat.h"
#include "ZORSimExcHandleSchema.h"
#include "ZORSimExcFTable.h"
#include "ZORSimExcTransaction.h"
#include "ZORSimExcTypeForm.h"
#include "ZORSimExcDataRecord.h"
#include "ZORSimExcAssocSchema.h"
#include "ZORSimExcLink.h"
#include "ZORSimExcTransferRequest.h"
#include "ZORSimExcTransferCompletion.h"
#include "ZORSimExcDrawer.h"
#include "ZORSimExcCollection.h"
#include "ZORSimExcDatabaseFormat.h"
