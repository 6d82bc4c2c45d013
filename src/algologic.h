#pragma once

// Umbrella header of the AlgoLogic library: every exported class, the host
// stand-ins, both constants headers and the item models.

#include "common/algologicglobal.h"
#include "common/algoconstants.h"
#include "common/locking.h"
#include "common/logging.h"
#include "common/metatypes.h"
#include "common/numbers.h"
#include "common/version.h"

#include "platform/algodefines.h"
#include "platform/varianttypes.h"
#include "platform/kxthread.h"
#include "platform/aesstrategy.h"
#include "platform/kxalgodatamgr.h"
#include "platform/businessdata.h"
#include "platform/helmbusinessdata.h"
#include "platform/helmutils.h"
#include "platform/quotehandler.h"

#include "symbol/symbolinfobase.h"
#include "symbol/t0symbolinfo.h"

#include "instance/instanceinfobase.h"
#include "instance/instancemgr.h"

#include "strategy/strategymgr.h"

#include "log/logmgr.h"

#include "variants/multiinstanceinfo.h"
#include "variants/t0instanceinfo.h"

#include "models/snapshottablemodel.h"
#include "models/instancetablemodel.h"
#include "models/symboltablemodel.h"
