// Umbrella header: every public header of VEXZORSimContainers and of the
// base library it stands on.
#pragma once

// base library
#include "VEXZORBasExport.h"
#include "ZORBasStringMode.h"
#include "ZORString.h"
#include "atr_String.h"
#include "ZORBasException.h"
#include "ZORBasAti.h"
#include "ZORBasAtiGlobalSingleton.h"
#include "ZORBasShared.h"
#include "bcu_ResourceMonitor.h"
#include "ZORBasUtlIOStats.h"
#include "xmp_XML.h"
#include "ZORBasModules.h"
#include "uts_UnitTest.h"

// VEXZORSimContainers
#include "ZORSimContainersExport.h"
#include "ZORSimContainersModule.h"
#include "ZORSimUttUtils.h"
#include "ZORSimUttExceptionString.h"
#include "ZORSimUttSer.h"
#include "ZORSimUttXMLUtils.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttResourceMonitor.h"
#include "ZORSimUttPythonGlueTest.h"
#include "ZORSimCommandLine.h"
#include "ZORSimUttOSFile.h"
#include "ZORSimUttFilePathParser.h"
#include "ZORSimUttFileGlob.h"
#include "ZORSimExcContract.h"
#include "ZORSimExcAtr.h"
#include "ZORSimExceptions.h"
#include "ZORSimExcRegistry.h"
#include "ZORSimUttFileUtils.h"
#include "ZORSimFileHeaderDiff.h"
