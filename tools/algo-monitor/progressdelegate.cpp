#include "progressdelegate.h"

#include <algologic.h>

#include <QApplication>
#include <QPainter>
#include <QStyleOptionProgressBar>

namespace {

constexpr int kSteps = 1000;

} // namespace

void ProgressDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const
{
    const QVariant value = index.data(SnapshotTableModel::SortRole);
    bool isNumber = false;
    const double fraction = value.toDouble(&isNumber);
    if (!value.isValid() || !isNumber) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }

    // The cell's background (selection, alternating rows) without its text.
    QStyleOptionViewItem cell(option);
    initStyleOption(&cell, index);
    cell.text.clear();
    QStyle* style = option.widget ? option.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &cell, painter, option.widget);

    QStyleOptionProgressBar bar;
    bar.state = (option.state & QStyle::State_Enabled) | QStyle::State_Horizontal;
    bar.direction = option.direction;
    bar.palette = option.palette;
    bar.fontMetrics = option.fontMetrics;
    bar.rect = option.rect.adjusted(2, 2, -2, -2);
    bar.minimum = 0;
    bar.maximum = kSteps;
    // Over-filled legs exist; the bar stops at full, the text says how much.
    bar.progress = qBound(0, qRound(fraction * kSteps), kSteps);
    bar.text = index.data(Qt::DisplayRole).toString();
    bar.textVisible = true;
    bar.textAlignment = Qt::AlignCenter;
    painter->save();
    style->drawControl(QStyle::CE_ProgressBar, &bar, painter, option.widget);
    painter->restore();
}
