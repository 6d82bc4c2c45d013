#pragma once

// Internal to the library.
//
// Cell builders shared by the item models: each pairs the raw value that
// sorts with the text a trader reads. Texts use grouped digits ("60,000")
// whatever the system locale, so that columns line up in every terminal.

#include "models/snapshottablemodel.h"

#include <QDateTime>
#include <QString>

#include <initializer_list>
#include <utility>

namespace AlgoLogic {
namespace Cells {

SnapshotCell text(const QString& value, const QString& toolTip = QString());
// Whole numbers without decimals, others with two.
SnapshotCell quantity(double value, const QString& toolTip = QString());
// Money: two decimals.
SnapshotCell amount(double value, const QString& toolTip = QString());
// Three decimals; an empty text for 0, which means "no deal yet".
SnapshotCell price(double value, const QString& toolTip = QString());
// A fraction shown as a percentage with one decimal ("45.0%").
SnapshotCell ratio(double value, const QString& toolTip = QString());
// "yyyy-MM-dd hh:mm:ss"; an empty text for an invalid time.
SnapshotCell time(const QDateTime& value);
// The display label of a status code, the code in the tooltip.
SnapshotCell status(const QString& code, const QString& toolTip = QString());
// A queue figure, which the library keeps at -1 while unknown: an empty
// text then (the raw -1 still sorts).
SnapshotCell queueFigure(double value);
// A column that does not apply to the row: no value, no text.
SnapshotCell none();

// The label of an instance or leg status code ("1" -> "运行中"); the code
// itself for a code without a label.
QString statusLabel(const QString& code);
// "label: value" lines for the values that are not empty, for tooltips.
QString describe(std::initializer_list<std::pair<const char*, QString>> lines);
// Text forms used in tooltips.
QString quantityText(double value);
QString ratioText(double value);

} // namespace Cells
} // namespace AlgoLogic
