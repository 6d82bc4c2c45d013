#include "models/instancetablemodel.h"

#include "common/locking.h"
#include "common/logging.h"
#include "instance/instancemgr.h"
#include "models/instancerow.h"
#include "platform/algodefines.h"

#include <algorithm>

InstanceTableModel::InstanceTableModel(QObject* parent)
    : InstanceTableModel(Algo_Values::AlgoGlobalType::all, false, parent)
{
}

InstanceTableModel::InstanceTableModel(const QString& algoType, bool allCreators,
                                       QObject* parent)
    : SnapshotTableModel(AlgoLogic::instanceColumnHeaders(), parent)
    , m_algoType(algoType)
    , m_allCreators(allCreators)
{
    followRegistry([this](const QString& id) { markDirty(id); },
                   [this](const QStringList& ids) { markDirty(ids, true); });
    reload();
}

void InstanceTableModel::setFilter(const QString& algoType, bool allCreators)
{
    if (algoType == m_algoType && allCreators == m_allCreators)
        return;
    m_algoType = algoType;
    m_allCreators = allCreators;
    reload();
}

QStringList InstanceTableModel::queryInstanceIds() const
{
    InstanceMgr* mgr = InstanceMgr::instance();
    if (m_algoType == Algo_Values::AlgoGlobalType::all)
        return mgr->GetAllInstanceIDsExceptDeletedForAllType(m_allCreators);
    return mgr->GetAllInstanceIDsExceptDeleted(m_algoType, m_allCreators);
}

void InstanceTableModel::refresh()
{
    m_allDirty = true;
    requestFlush();
}

void InstanceTableModel::markDirty(const QString& instanceID)
{
    if (instanceID.isEmpty())
        return;
    m_dirty.insert(instanceID);
    requestFlush();
}

void InstanceTableModel::markDirty(const QStringList& instanceIDs, bool membershipChanged)
{
    for (const QString& id : instanceIDs) {
        if (!id.isEmpty())
            m_dirty.insert(id);
    }
    m_membershipDirty = m_membershipDirty || membershipChanged;
    requestFlush();
}

void InstanceTableModel::reload()
{
    m_dirty.clear();
    m_membershipDirty = false;
    m_allDirty = false;
    QStringList ids = queryInstanceIds();
    QSet<QString> gone;
    const QHash<QString, Row> rows = readRows(QSet<QString>(ids.cbegin(), ids.cend()), gone);
    qCDebug(lcAlgoModels).noquote() << "InstanceTableModel::reload" << m_algoType
                                    << m_allCreators << rows.size();
    resetRows(ids, rows);
}

void InstanceTableModel::flush()
{
    // An instance that notifies without having a row is new, or changed
    // whether the filter takes it: the query decides.
    bool requery = m_membershipDirty || m_allDirty;
    for (auto it = m_dirty.cbegin(); !requery && it != m_dirty.cend(); ++it)
        requery = rowOfKey(*it) < 0;

    QStringList ids = requery ? queryInstanceIds() : keys();
    QSet<QString> toRead;
    for (const QString& id : qAsConst(ids)) {
        if (m_allDirty || m_dirty.contains(id) || rowOfKey(id) < 0)
            toRead.insert(id);
    }
    m_dirty.clear();
    m_membershipDirty = false;
    m_allDirty = false;

    QSet<QString> gone;
    const QHash<QString, Row> rows = readRows(toRead, gone);
    qCDebug(lcAlgoModels).noquote() << "InstanceTableModel::flush" << "read" << rows.size()
                                    << "gone" << gone.size() << "query" << requery;
    if (!gone.isEmpty()) {
        ids.erase(std::remove_if(ids.begin(), ids.end(),
                                 [&gone](const QString& id) { return gone.contains(id); }),
                  ids.end());
    }
    syncRows(ids, rows);
}

QHash<QString, SnapshotTableModel::Row> InstanceTableModel::readRows(const QSet<QString>& ids,
                                                                      QSet<QString>& gone) const
{
    QHash<QString, Row> rows;
    if (ids.isEmpty())
        return rows;
    InstanceMgr* mgr = InstanceMgr::instance();
    // The registry lock comes before the content lock: the copy of the
    // registry is taken (and its lock released) before reading instances.
    const QMap<QString, InstanceInfoBase*> registry = mgr->GetInstanceInfoForAllType();
    AlgoLogic::ReadLocker locker(mgr->getLocker());
    for (const QString& id : ids) {
        const InstanceInfoBase* inst = registry.value(id, nullptr);
        if (inst)
            rows.insert(id, AlgoLogic::readInstanceRow(*inst));
        else
            gone.insert(id);
    }
    return rows;
}
