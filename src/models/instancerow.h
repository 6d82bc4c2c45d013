#pragma once

// Internal to the library.
//
// The cells of one InstanceTableModel row, in InstanceTableModel::Column order.

#include "models/instancetablemodel.h"

namespace AlgoLogic {

QStringList instanceColumnHeaders();

// REQUIRES: the instance-content lock held for reading.
SnapshotTableModel::Row readInstanceRow(const InstanceInfoBase& instance);

} // namespace AlgoLogic
