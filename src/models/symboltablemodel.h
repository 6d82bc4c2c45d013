#pragma once

// A table of the legs of one instance for a view: one row per leg, keyed and
// ordered by symbol key, with the leg's progress and entrust figures, the buy
// and sell halves and profit of T0 legs (T0SymbolInfo), and the queue
// position of rush-limit-up legs. Columns that do not apply to a leg hold no
// value and an empty text; a queue figure the algo has not reported yet
// (-1) shows as an empty text.
//
// The model follows the registry's notifications that concern its instance
// (progress, remaining quantity, gather, status, leg status, times, modify
// push, multi-strategy progress, query updates) and the T0 profit
// recalculation, through queued connections, coalesced like
// InstanceTableModel: at most one read and one dataChanged per leg per turn
// of the event loop. Legs that appear or disappear become inserted or removed
// rows; an instance that the registry no longer holds leaves no row.
//
// Lives in the GUI thread; reads the instance under the content lock for
// reading, looking it up again by ID each time.

#include "models/snapshottablemodel.h"

class ALGOLOGIC_EXPORT SymbolTableModel : public SnapshotTableModel
{
    Q_OBJECT
public:
    enum Column {
        SymbolColumn,
        SideColumn,
        StatusColumn,
        ProgressColumn, // standardProgress(): by amount for amount-driven algos
        TargetColumn,
        FilledColumn,
        AvgPriceColumn,
        DealAmountColumn,
        EntrustColumn,
        EntrustProgressColumn,
        EntrustTimeColumn,
        // T0 legs only.
        BuyFilledColumn,
        BuyAvgPriceColumn,
        SellFilledColumn,
        SellAvgPriceColumn,
        FeeColumn,
        AchievedProfitColumn,
        FloatingProfitColumn,
        // Reported by rush-limit-up algos only.
        FrontQtyColumn,
        FrontOrderNumColumn,
        FrontPositionColumn,
        SameQtyOrderCntColumn,
        InfoColumn, // the tip message, else the algo's other information
        ColumnCount
    };
    Q_ENUM(Column)

    explicit SymbolTableModel(QObject* parent = nullptr);

    QString instanceID() const { return m_instanceID; }
    // Shows the legs of `instanceID` (none for an empty or unknown ID): a
    // model reset, read at once.
    void setInstanceID(const QString& instanceID);

    // Reads the legs again on the next turn of the event loop, for changes
    // that raise no notification (leg building, detail refresh).
    void refresh();

private:
    void onNotified(const QString& instanceID);
    void flush() override;
    // The legs' keys in key order and their rows; none when the instance is
    // unknown.
    QStringList readLegs(QHash<QString, Row>& rows) const;

    QString m_instanceID;
};
