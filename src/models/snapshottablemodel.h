#pragma once

// The base of the library's item models: a table whose rows are snapshots of
// library objects (instances, legs), each row named by a key (instance ID,
// symbol key) and held as one cell per column.
//
// The cells are copies taken under the instance-content lock, so data() never
// touches a library object and never takes a lock. Subclasses decide when to
// read the library again; they hand the fresh rows to syncRows(), which turns
// the difference into the model's signals: rowsRemoved and rowsInserted for
// keys that went and came, and dataChanged only for the rows whose cells
// differ, spanning the first to the last column that differs, with the roles
// that differ.
//
// Not thread-safe: a model lives in the thread that created it (the GUI
// thread) and receives the library's notifications through queued
// connections.

#include "common/algologicglobal.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <functional>
#include <vector>

// One cell of a snapshot row.
struct SnapshotCell
{
    QVariant value;  // the raw value (number, date-time, code): SortRole
    QString text;    // Qt::DisplayRole
    QString toolTip; // Qt::ToolTipRole

    bool operator==(const SnapshotCell& other) const
    {
        return value == other.value && text == other.text && toolTip == other.toolTip;
    }
    bool operator!=(const SnapshotCell& other) const { return !(*this == other); }
};

class ALGOLOGIC_EXPORT SnapshotTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Role {
        // The raw value of a cell, for sorting (QSortFilterProxyModel::setSortRole)
        // and for delegates: a fraction for progress columns, a number for
        // quantities, a date-time for times, the code for statuses.
        SortRole = Qt::UserRole,
        // The row's key, the same in every column.
        KeyRole,
    };

    // One cell per column.
    using Row = std::vector<SnapshotCell>;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    // The keys of the rows, in row order.
    QStringList keys() const { return m_keys; }
    // The key of `row`, or an empty text out of range.
    QString keyAt(int row) const;
    // The row of `key`, or -1.
    int rowOfKey(const QString& key) const;

protected:
    // `headers` fixes the column count; every row a subclass hands over has
    // exactly that many cells.
    explicit SnapshotTableModel(const QStringList& headers, QObject* parent = nullptr);

    // Brings the rows in line with `keys` (in that order) and `fresh`:
    // - a row whose key is not in `keys` is removed;
    // - a key without a row is inserted when `fresh` holds its cells, and
    //   skipped otherwise;
    // - a kept row takes its cells from `fresh` when they are there (dataChanged
    //   when they differ) and keeps its cells otherwise.
    // When the kept rows are not in the order `keys` gives, the model is reset.
    void syncRows(const QStringList& keys, const QHash<QString, Row>& fresh);
    // Replaces every row (a model reset); keys without cells are skipped.
    void resetRows(const QStringList& keys, const QHash<QString, Row>& fresh);

    // Asks for flush() on a later turn of this object's event loop; asking
    // again before it has run changes nothing. This is how a burst of
    // notifications becomes one read of the library and at most one update
    // of each row.
    void requestFlush();
    // Reads what changed since the last flush and calls syncRows().
    virtual void flush() = 0;

    // Follows every registry notification that names instances, through
    // queued connections even when the library emits in this thread: the
    // handlers only mark what to read, and a flush must not run inside a
    // router's call. `onInstance` gets each instance named (a leg-status
    // push names the instances of its legs); `onList` gets the lists of the
    // query answers.
    void followRegistry(std::function<void(const QString&)> onInstance,
                        std::function<void(const QStringList&)> onList);

private:
    void updateRow(int row, const Row& cells);
    void rebuildIndex();

    QStringList m_headers;     // constant after construction
    QStringList m_keys;        // row order
    QVector<Row> m_rows;       // parallel to m_keys
    QHash<QString, int> m_rowOf; // key -> row
    bool m_flushPending = false;
};
