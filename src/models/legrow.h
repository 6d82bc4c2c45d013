#pragma once

// Internal to the library.
//
// The cells of one SymbolTableModel row, in SymbolTableModel::Column order.

#include "models/symboltablemodel.h"

class InstanceInfoBase;
class SymbolInfoBase;

namespace AlgoLogic {

QStringList legColumnHeaders();

// `owner` is the instance that holds `leg`.
// REQUIRES: the instance-content lock held for reading.
SnapshotTableModel::Row readLegRow(const InstanceInfoBase& owner, const SymbolInfoBase& leg);

} // namespace AlgoLogic
