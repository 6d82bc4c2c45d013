#pragma once

// Registration of every type that crosses threads in a signal of the
// library, so that queued connections (Qt::AutoConnection across threads,
// or string-based connects of a host) can copy the arguments.

#include "common/algologicglobal.h"

namespace AlgoLogic {

// Registers the metatypes once per process; later calls return at once.
// The managers call it on construction; a host may call it earlier.
ALGOLOGIC_EXPORT void registerMetaTypes();

} // namespace AlgoLogic
