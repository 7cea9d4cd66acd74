// Every exception class of the catalogue.
#pragma once

#include "ZORSimExcStorage.h"
#include "ZORSimExcDocument.h"
#include "ZORSimExcPoolFormat.h"
