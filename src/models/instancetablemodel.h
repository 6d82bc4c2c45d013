#pragma once

// A table of algo instances for a view: one row per instance that the
// registry's "except deleted" query gives for an algo type and creator
// filter, in that query's order (ascending instance ID), one column per
// figure a trader watches.
//
// The model follows InstanceMgr's notifications through queued connections.
// A notification only marks its instances dirty; on the next turn of the
// model's event loop one flush re-reads the dirty instances (and, when an
// instance came, went or was marked deleted, re-runs the query), so a burst
// of pushes costs one read and at most one dataChanged per row. Rows are
// snapshots: data() never touches an instance.
//
// Creating an instance with InstanceMgr::CreateInstance, building legs with
// UpdateSymbolExtInfoByParams, a detail refresh and InstanceMgr::DeleteInstance
// raise no notification; a host that does them calls refresh() afterwards.
//
// Lives in the GUI thread; not thread-safe itself. The library may change and
// forget instances from any thread meanwhile: the model looks each instance
// up again by ID and reads it under the content lock for reading.

#include "models/snapshottablemodel.h"

#include <QSet>

class InstanceInfoBase;

class ALGOLOGIC_EXPORT InstanceTableModel : public SnapshotTableModel
{
    Q_OBJECT
public:
    enum Column {
        IdColumn,
        AliasColumn,
        StrategyColumn,
        StatusColumn,
        ProgressColumn, // standardProgress(): by amount for amount-driven algos
        SideColumn,
        SymbolColumn,
        TargetColumn,
        FilledColumn,
        AvgPriceColumn,
        FilledAmountColumn,
        TargetAmountColumn,
        AmountProgressColumn,
        AccountColumn,
        StartColumn,
        EndColumn,
        CommentColumn,
        RemarkColumn,
        ColumnCount
    };
    Q_ENUM(Column)

    // Every algo type (Algo_Values::AlgoGlobalType::all), the instances of the
    // logged-in account and those without creator.
    explicit InstanceTableModel(QObject* parent = nullptr);
    // `algoType` as InstanceMgr::GetAllInstanceIDsExceptDeleted takes it, or
    // Algo_Values::AlgoGlobalType::all for every type; `allCreators` as there.
    InstanceTableModel(const QString& algoType, bool allCreators, QObject* parent = nullptr);

    QString algoType() const { return m_algoType; }
    bool allCreators() const { return m_allCreators; }
    // Changes the filter and reloads (a model reset).
    void setFilter(const QString& algoType, bool allCreators);

    // The registry's answer for this model's filter: the keys the rows have
    // once every notification has been handled.
    QStringList queryInstanceIds() const;

    // Reads every instance again on the next turn of the event loop, and
    // re-runs the query; rows change through the usual signals, no reset.
    void refresh();

private:
    void markDirty(const QString& instanceID);
    void markDirty(const QStringList& instanceIDs, bool membershipChanged);
    void reload();
    void flush() override;
    // Rows for `ids` read under the content lock; ids the registry no longer
    // holds are added to `gone`.
    QHash<QString, Row> readRows(const QSet<QString>& ids, QSet<QString>& gone) const;

    QString m_algoType;
    bool m_allCreators = false;
    // What the next flush reads.
    QSet<QString> m_dirty;
    bool m_membershipDirty = false;
    bool m_allDirty = false;
};
