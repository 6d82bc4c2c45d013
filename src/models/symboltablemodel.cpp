#include "models/symboltablemodel.h"

#include "common/locking.h"
#include "common/logging.h"
#include "instance/instanceinfobase.h"
#include "instance/instancemgr.h"
#include "models/legrow.h"

SymbolTableModel::SymbolTableModel(QObject* parent)
    : SnapshotTableModel(AlgoLogic::legColumnHeaders(), parent)
{
    followRegistry([this](const QString& id) { onNotified(id); },
                   [this](const QStringList& ids) {
                       if (ids.contains(m_instanceID))
                           onNotified(m_instanceID);
                   });
    // The profit timer changes T0 legs' floating profit without naming them.
    connect(InstanceMgr::instance(), &InstanceMgr::signalCalcProfitAmountFinished, this,
            [this] { onNotified(m_instanceID); }, Qt::QueuedConnection);
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
