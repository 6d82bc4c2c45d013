#include "models/symboltablemodel.h"

#include "common/locking.h"
#include "common/logging.h"
#include "instance/instanceinfobase.h"
#include "instance/instancemgr.h"
#include "models/legrow.h"

SymbolTableModel::SymbolTableModel(QObject* parent)
    : SnapshotTableModel(AlgoLogic::legColumnHeaders(), parent)
{
    connectRegistry();
}

void SymbolTableModel::setInstanceID(const QString& instanceID)
{
    if (instanceID == m_instanceID)
        return;
    m_instanceID = instanceID;
    QHash<QString, Row> rows;
    const QStringList keys = readLegs(rows);
    qCDebug(lcAlgoModels).noquote() << "SymbolTableModel::setInstanceID" << instanceID
                                    << keys.size();
    resetRows(keys, rows);
}

void SymbolTableModel::refresh()
{
    requestFlush();
}

void SymbolTableModel::connectRegistry()
{
    // Queued for the reasons InstanceTableModel gives: mark, then flush once.
    InstanceMgr* mgr = InstanceMgr::instance();
    const auto queued = Qt::QueuedConnection;
    using M = InstanceMgr;
    const auto one = [this](const QString& id) { onNotified(id); };
    const auto list = [this](const QStringList& ids) {
        if (ids.contains(m_instanceID))
            onNotified(m_instanceID);
    };
    connect(mgr, &M::sigInstUpdated, this, list, queued);
    connect(mgr, &M::signalInsListToLogic, this, list, queued);
    connect(mgr, &M::signalMultiProgressUpdated, this, one, queued);
    connect(mgr, &M::signalProgreeDelayUpadaete, this, one, queued);
    connect(mgr, &M::signalProgressUpdated, this, one, queued);
    connect(mgr, &M::sigSymbolRemainQty, this, one, queued);
    connect(mgr, &M::signalTimeUpdate, this, one, queued);
    connect(mgr, &M::signalStatusUpdated, this, one, queued);
    connect(mgr, &M::signalModifyPush, this, one, queued);
    connect(mgr, &M::signalSymbolStatusUpdate, this,
            [this](const QMap<QString, QMap<QString, QVariant>>& legs) {
                for (auto it = legs.cbegin(); it != legs.cend(); ++it)
                    onNotified(InstanceMgr::getInstIdFromSymbolKey(it.key()));
            },
            queued);
    // The profit timer changes T0 legs' floating profit without naming them.
    connect(mgr, &M::signalCalcProfitAmountFinished, this,
            [this] { onNotified(m_instanceID); }, queued);
}

void SymbolTableModel::onNotified(const QString& instanceID)
{
    if (!m_instanceID.isEmpty() && instanceID == m_instanceID)
        requestFlush();
}

void SymbolTableModel::flush()
{
    QHash<QString, Row> rows;
    const QStringList keys = readLegs(rows);
    qCDebug(lcAlgoModels).noquote() << "SymbolTableModel::flush" << m_instanceID << keys.size();
    syncRows(keys, rows);
}

QStringList SymbolTableModel::readLegs(QHash<QString, Row>& rows) const
{
    QStringList keys;
    if (m_instanceID.isEmpty())
        return keys;
    InstanceMgr* mgr = InstanceMgr::instance();
    // Registry first (its lock is released on return), then the content lock.
    const InstanceInfoBase* inst = mgr->GetInstanceInfoForAllType().value(m_instanceID, nullptr);
    if (!inst)
        return keys;
    AlgoLogic::ReadLocker locker(mgr->getLocker());
    const QList<SymbolInfoBase*> legs = inst->GetAllSymbols_Ptr<SymbolInfoBase>();
    for (const SymbolInfoBase* leg : legs) {
        const QString key = leg->getKey();
        keys.append(key);
        rows.insert(key, AlgoLogic::readLegRow(*inst, *leg));
    }
    return keys;
}
