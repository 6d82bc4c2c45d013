#include "instance/instancemgr.h"
#include "common/locking.h"

#include "common/algoconstants.h"
#include "common/logging.h"
#include "common/metatypes.h"
#include "instance/instancefilterindex.h"
#include "instance/instanceinfobase.h"
#include "instance/symbolkeyparts.h"
#include "platform/algodefines.h"
#include "platform/businessdata.h"
#include "symbol/t0symbolinfo.h"
#include "variants/RushLimitUpInstanceInfo.h"
#include "variants/multiinstanceinfo.h"
#include "variants/t0instanceinfo.h"

#include <QTimer>

namespace {

// The instance-content lock: created when the library is loaded, never
// destroyed, so that it outlives every thread that may still read instances.
QReadWriteLock* const g_instanceContentLock = new QReadWriteLock(QReadWriteLock::Recursive);

constexpr int kT0CalculateIntervalMs = 30000;
const QString kKeySeparator = QStringLiteral("_");

} // namespace

InstanceMgr* InstanceMgr::instance()
{
    static InstanceMgr* const s_instance = new InstanceMgr(nullptr);
    return s_instance;
}

InstanceMgr::InstanceMgr(QObject* parent)
    : QObject(parent)
{
    AlgoLogic::registerMetaTypes();
    m_thread.setObjectName(QStringLiteral("InstanceMgr_Thread"));
    moveToThread(&m_thread);
    m_thread.start(QThread::InheritPriority);
}

InstanceMgr::~InstanceMgr() = default;

void InstanceMgr::init()
{
    qCDebug(lcAlgoInstance).noquote() << "InstanceMgr::init" << "InstanceMgr init";
    m_timerT0CalculateNew = new QTimer;
    m_timerT0CalculateNew->setObjectName(QStringLiteral("m_timerT0CalculateNew"));
    m_timerT0CalculateNew->setInterval(kT0CalculateIntervalMs);
    m_timerT0CalculateNew->setSingleShot(false);
    // The manager is the context object: the call is queued into its thread.
    connect(m_timerT0CalculateNew, &QTimer::timeout, this,
            [this] { slotCalculateTimer(QString()); });
    m_timerT0CalculateNew->start();
}

QReadWriteLock* InstanceMgr::getLocker()
{
    return g_instanceContentLock;
}

// ---- creation and registry ------------------------------------------------------

InstanceInfoBase* InstanceMgr::CreateInstance(const QString& algoType, const VariantMap& record,
                                              const QString& algoName)
{
    Q_UNUSED(algoName)
    InstanceInfoBase* inst = nullptr;
    if (algoType == Algo_Values::AlgoGlobalType::multiStr) {
        inst = new MultiInstanceInfo;
        inst->setClassType(AlgoConst::ClassTypeMulti);
    } else if (algoType == Algo_Values::AlgoGlobalType::T0) {
        inst = new T0InstanceInfo;
        inst->setClassType(AlgoConst::ClassTypeT0);
    } else if (algoType == Algo_Values::AlgoGlobalType::feature) {
        inst = new RushLimitUpInstanceInfo;
        inst->setClassType(AlgoConst::ClassTypeInfo);
    } else {
        inst = new InstanceInfoBase;
        inst->setClassType(AlgoConst::ClassTypeInfo);
    }

    if (record.isEmpty())
        return inst;

    inst->initInfo(record);
    InsertNewInstance(inst);
    qCDebug(lcAlgoInstance).noquote() << "InstanceMgr::CreateInstance" << "InsertNewInstance"
                                      << inst->instanceID() << inst;
    return inst;
}

SymbolInfoBase* InstanceMgr::CreateSymbolInfo(const QString& algoType, const QString& symbol)
{
    Q_UNUSED(symbol)
    if (algoType == Algo_Values::AlgoGlobalType::T0)
        return new T0SymbolInfo;
    return new SymbolInfoBase;
}

void InstanceMgr::InsertNewInstance(InstanceInfoBase* inst)
{
    if (!inst)
        return;
    AlgoLogic::WriteLocker locker(&m_lockInstance);
    const QString instanceID = inst->instanceID();
    InstanceInfoBase* previous = m_mapInstance.value(instanceID, nullptr);
    if (previous && previous != inst)
        m_retiredInstances.append(previous);
    m_mapInstance.insert(instanceID, inst);
    m_hashInstance.insert(instanceID, inst);
    InstanceFilterIndex::noteKeyChanged(instanceID);
    const QString clInstanceID = inst->clInstanceID();
    if (clInstanceID.isEmpty())
        return;
    m_mapClInstToInst.insert(clInstanceID, instanceID);
}

void InstanceMgr::DeleteInstance(const QString& instanceID)
{
    qCDebug(lcAlgoInstance).noquote() << "InstanceMgr::DeleteInstance" << instanceID;
    AlgoLogic::WriteLocker locker(&m_lockInstance);
    const auto it = m_mapInstance.constFind(instanceID);
    if (it == m_mapInstance.constEnd())
        return;
    InstanceInfoBase* inst = it.value();
    if (inst) {
        // The query router may set the client ID under the content lock.
        QString clInstanceID;
        {
            AlgoLogic::ReadLocker contentLocker(g_instanceContentLock);
            clInstanceID = inst->clInstanceID();
        }
        m_mapClInstToInst.remove(clInstanceID);
        m_retiredInstances.append(inst);
    }
    m_mapInstance.remove(instanceID);
    m_hashInstance.remove(instanceID);
    InstanceFilterIndex::noteKeyChanged(instanceID);
}

bool InstanceMgr::ContainsInstance(const QString& instanceID)
{
    AlgoLogic::ReadLocker locker(&m_lockInstance);
    return m_hashInstance.contains(instanceID);
}

InstanceInfoBase* InstanceMgr::GetInstanceInfo(const QString& instanceID)
{
    AlgoLogic::ReadLocker locker(&m_lockInstance);
    return m_hashInstance.value(instanceID, nullptr);
}

// ---- queries --------------------------------------------------------------------------

// The filtering queries answer from the registry's index of the filter fields
// (InstanceFilterIndex) rather than by reading every instance: the index is
// brought up to date under the same locks the walk over the registry takes,
// so the answers are the walk's. The registry never holds a null pointer
// (InsertNewInstance refuses one), so the walk's null-pointer branch is moot.

QList<QString> InstanceMgr::GetAllInstanceIDs(const QString& algoType)
{
    AlgoLogic::ReadLocker registryLocker(&m_lockInstance);
    qCDebug(lcAlgoInstance).noquote() << "GetAllInstanceIDs:" << algoType;
    if (algoType == Algo_Values::AlgoGlobalType::unknown)
        return m_mapInstance.keys();

    AlgoLogic::ReadLocker contentLocker(g_instanceContentLock);
    return InstanceFilterIndex::registryIndex().ids(
        m_mapInstance, algoType, algoType == Algo_Values::AlgoGlobalType::all);
}

QStringList InstanceMgr::GetAllInstanceIDsExceptDeleted(const QString& algoType, bool allCreators)
{
    AlgoLogic::ReadLocker registryLocker(&m_lockInstance);
    qCDebug(lcAlgoInstance).noquote() << "InstanceMgr::GetAllInstanceIDsExceptDeleted"
                                      << "GetAllInstanceIDs:" << algoType;
    if (algoType == Algo_Values::AlgoGlobalType::unknown)
        return m_mapInstance.keys();

    const QString login =
        allCreators ? QString() : CBusinessDataBase::GetInstance()->GetLoginAccount();
    AlgoLogic::ReadLocker contentLocker(g_instanceContentLock);
    // Here "All" is a type text like any other, not a wildcard.
    return InstanceFilterIndex::registryIndex().liveIds(m_mapInstance, algoType, false,
                                                         allCreators, login);
}

QStringList InstanceMgr::GetAllInstanceIDsExceptDeletedForAllType(bool allCreators)
{
    AlgoLogic::ReadLocker registryLocker(&m_lockInstance);
    const QString login =
        allCreators ? QString() : CBusinessDataBase::GetInstance()->GetLoginAccount();
    AlgoLogic::ReadLocker contentLocker(g_instanceContentLock);
    return InstanceFilterIndex::registryIndex().liveIds(m_mapInstance, QString(), true,
                                                         allCreators, login);
}

QStringList InstanceMgr::GetInstanceIDsForSpecialAlgoName(const QStringList& algoNames)
{
    AlgoLogic::ReadLocker registryLocker(&m_lockInstance);
    qCDebug(lcAlgoInstance).noquote() << "InstanceMgr::GetInstanceIDsForSpecialAlgoName"
                                      << algoNames;
    AlgoLogic::ReadLocker contentLocker(g_instanceContentLock);
    return InstanceFilterIndex::registryIndex().idsWithNames(m_mapInstance, algoNames);
}

QMap<QString, InstanceInfoBase*> InstanceMgr::GetInstanceInfoForAllType()
{
    // The copy shares the map's data; taking it while another thread inserts
    // would race, so it is taken under the registry lock. The objects it
    // points to are never freed, so the copy stays usable without a lock.
    AlgoLogic::ReadLocker locker(&m_lockInstance);
    return m_mapInstance;
}

QString InstanceMgr::GetAlgoTypeByInstID(const QString& instanceID)
{
    QString algoType;
    InstanceInfoBase* inst = GetInstanceInfo(instanceID);
    if (!inst) {
        qCDebug(lcAlgoInstance).noquote() << "InstanceMgr::GetAlgoTypeByInstID" << "null ptr"
                                          << instanceID;
        return algoType;
    }
    AlgoLogic::ReadLocker contentLocker(g_instanceContentLock);
    algoType = inst->instAlgoType();
    return algoType;
}

QString InstanceMgr::GetInstanceIDByClInstID(const QString& clInstanceID)
{
    AlgoLogic::ReadLocker locker(&m_lockInstance);
    return m_mapClInstToInst.value(clInstanceID);
}

// ---- symbol keys and legs ----------------------------------------------------------

QString InstanceMgr::GetSymbolExtInfoKey(const QString& instanceID, const QString& symbol,
                                         QString side)
{
    // Plain concatenation gives what "%1_%2_%3".arg(...) gives: a multi-argument
    // arg() substitutes in one pass, so a "%" inside a part stays as it is.
    return instanceID % kKeySeparator % symbol % kKeySeparator % side;
}

QString InstanceMgr::getInstIdFromSymbolKey(const QString& key)
{
    return AlgoLogic::SymbolKeyParts(key).instanceID();
}

QString InstanceMgr::getSymbolFromSymbolKey(const QString& key)
{
    return AlgoLogic::SymbolKeyParts(key).symbol();
}

QString InstanceMgr::getSideFromSymbolKey(const QString& key)
{
    return AlgoLogic::SymbolKeyParts(key).side();
}

QString InstanceMgr::getSymbolOrdeSideFromKey(QString key)
{
    return AlgoLogic::SymbolKeyParts(key).symbolSide();
}

SymbolInfoBase* InstanceMgr::getSymbolInfo(QString key)
{
    const QString instanceID = getInstIdFromSymbolKey(key);
    InstanceInfoBase* inst = GetInstanceInfo(instanceID);
    if (!inst) {
        qCDebug(lcAlgoInstance).noquote() << "InstanceMgr::getSymbolInfo" << "null ptr"
                                          << instanceID;
        return nullptr;
    }
    AlgoLogic::ReadLocker contentLocker(g_instanceContentLock);
    return inst->getSymbolInfo(key);
}

void InstanceMgr::getOneSymbol(QString instanceID, QString& symbol, QString& side)
{
    InstanceInfoBase* inst = GetInstanceInfo(instanceID);
    if (!inst) {
        qCDebug(lcAlgoInstance).noquote() << "InstanceMgr::getOneSymbol" << "null ptr"
                                          << instanceID;
        return;
    }
    AlgoLogic::ReadLocker contentLocker(g_instanceContentLock);
    inst->getOneSymbol(symbol, side);
}

// ---- create errors --------------------------------------------------------------------

void InstanceMgr::setCreateErrorInfoByClInst(const QString& clInstanceID,
                                             const QString& errorCode, const QString& errorText)
{
    AlgoLogic::WriteLocker locker(&m_lockCreateErrorInfo);
    m_mapCreateErrorInfo.insert(clInstanceID, std::make_pair(errorCode, errorText));
}

std::pair<QString, QString> InstanceMgr::getCreateErrorInfoByClInst(const QString& clInstanceID)
{
    AlgoLogic::ReadLocker locker(&m_lockCreateErrorInfo);
    return m_mapCreateErrorInfo.value(clInstanceID,
                                      std::make_pair(QStringLiteral(""), QStringLiteral("")));
}

// ---- notifications ----------------------------------------------------------------------

void InstanceMgr::SendSignalModifyPush(const QString& instanceID, const QString& ack,
                                       const QString& comment)
{
    emit signalModifyPush(instanceID, ack, comment);
}

void InstanceMgr::SendSignalMultiProgress(const QString& instanceID)
{
    emit signalMultiProgressUpdated(instanceID);
}

void InstanceMgr::SendSignalProgressDelay(const QString& instanceID)
{
    emit signalProgreeDelayUpadaete(instanceID);
}

void InstanceMgr::SendSignalProgressUpdated(const QString& instanceID, const QList<QString>& keys)
{
    emit signalProgressUpdated(instanceID, keys);
}

void InstanceMgr::SendSignalStatusUpdate(const QString& instanceID, const QString& status)
{
    emit signalStatusUpdated(instanceID, status);
}

void InstanceMgr::SendSignalSymbolRemainQty(const QString& instanceID,
                                            const QHash<QString, double>& remaining)
{
    emit sigSymbolRemainQty(instanceID, remaining);
}

void InstanceMgr::SendSignalSymbolStatusUpdate(const QMap<QString, QMap<QString, QVariant>>& legs)
{
    emit signalSymbolStatusUpdate(legs);
}

void InstanceMgr::SendSignalTimeUpdate(const QString& instanceID, const QString& status)
{
    emit signalTimeUpdate(instanceID, status);
}
