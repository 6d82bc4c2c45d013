#pragma once

// Draws a progress column as a bar: the fraction is the cell's raw value
// (SnapshotTableModel::SortRole), the text on the bar its display text. A
// cell without a value is drawn as plain text.

#include <QStyledItemDelegate>

class ProgressDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
};
