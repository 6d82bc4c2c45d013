// Routing of algo-server responses to the instances they concern. Every router
// looks the instance up under the registry lock, releases it, then runs the
// instance's handler under the instance-content lock for writing, and emits
// its notifications after that lock is released.

#include "instance/instancemgr.h"

#include "common/logging.h"
#include "instance/contentwritesection.h"
#include "instance/instancefilterindex.h"
#include "instance/instanceinfobase.h"
#include "platform/algodefines.h"
#include "strategy/strategymgr.h"

namespace {

const QString kRequestSucceeded = QStringLiteral("0");

} // namespace

bool InstanceMgr::routeByFirstRecord(const VariantMapList& records, RecordsHandler handler,
                                     const char* trace, QString& instanceID)
{
    if (records.isEmpty())
        return false;
    // Records after the first are not looked at here: the handler gets them all.
    const VariantMap& first = records.first();
    instanceID = first.value(Tessel_Fields::Strategy::strategyID).toString();
    InstanceInfoBase* inst = GetInstanceInfo(instanceID);
    if (trace)
        qCDebug(lcAlgoInstance).noquote() << trace << instanceID << inst;
    if (!inst)
        return false;
    ContentWriteSection section;
    FilterFieldsWatch watch(inst);
    (inst->*handler)(records);
    return true;
}

void InstanceMgr::OnRecv_QueryAlgoStrategyResponse(const VariantMapList& records)
{
    if (records.isEmpty())
        return;
    const VariantMapList list = records;
    QStringList changed;
    QStringList deleted;

    for (const VariantMap& record : list) {
        const QString instanceID = record.value(Tessel_Fields::Strategy::strategyID).toString();
        if (instanceID.isEmpty())
            continue;

        int flags = 0;
        InstanceInfoBase* inst = GetInstanceInfo(instanceID);
        if (inst) {
            QString status;
            bool isDeleted = false;
            {
                ContentWriteSection section;
                FilterFieldsWatch watch(inst);
                if (inst->clInstanceID().isEmpty()) {
                    const QString clId = record.value(Helm_Fields::Strategy::clAlgoID).toString();
                    if (!clId.isEmpty())
                        inst->setclInstanceID(clId);
                }
                flags = inst->OnRecv_QueryAlgoStrategyResponse(record, false);
                status = inst->status();
                isDeleted =
                    inst->getStrategyDeleted() == Algo_Values::AlgoDeleteStatus::deleted;
            }
            if (isDeleted)
                deleted.append(instanceID);
            if (flags & 0x1)
                emit signalTimeUpdate(instanceID, status);
        } else {
            const QString strategyName =
                record.value(Tessel_Fields::Strategy::strategyName).toString();
            const QString algoType = StrategyMgr::instance()->GetStrategy(strategyName).algoType();
            inst = CreateInstance(algoType, VariantMap(), strategyName);
            inst->setInstanceID(instanceID);
            const QString clId = record.value(Helm_Fields::Strategy::clAlgoID).toString();
            if (!clId.isEmpty())
                inst->setclInstanceID(clId);
            InsertNewInstance(inst);
            // From the insertion on, readers in other threads can reach the
            // object: its handler writes it under the content lock like any
            // other. A new instance gets no time signal.
            bool isDeleted = false;
            {
                ContentWriteSection section;
                FilterFieldsWatch watch(inst);
                flags = inst->OnRecv_QueryAlgoStrategyResponse(record, true);
                isDeleted =
                    inst->getStrategyDeleted() == Algo_Values::AlgoDeleteStatus::deleted;
            }
            if (isDeleted)
                deleted.append(instanceID);
        }

        if (flags & 0x2)
            changed.append(instanceID);
        if (flags != 0) {
            qCDebug(lcAlgoInstance).noquote() << "InstanceMgr::OnRecv_QueryAlgoStrategyResponse"
                                              << instanceID << flags;
        }
    }

    if (!changed.isEmpty())
        emit sigInstUpdated(changed);
    if (!deleted.isEmpty())
        emit signalInsListToLogic(deleted);
}

void InstanceMgr::OnRecv_StrategyProgressGatherResponse(const VariantMapList& records)
{
    QString instanceID;
    if (routeByFirstRecord(records, &InstanceInfoBase::OnRecv_StrategyProgressGatherResponse,
                           "InstanceMgr::OnRecv_StrategyProgressGatherResponse", instanceID))
        emit signalProgreeDelayUpadaete(instanceID);
}

void InstanceMgr::OnRecv_StrategyReportResponse(const VariantMapList& records)
{
    QString instanceID;
    routeByFirstRecord(records, &InstanceInfoBase::OnRecv_StrategyReportResponse, nullptr,
                       instanceID);
}

void InstanceMgr::OnRecv_DeleteAlgoInstanceResponse(const VariantMapList& records)
{
    // The terminal refreshes the instance's figures from the answer; removal
    // is the host's business (DeleteInstance).
    QString instanceID;
    routeByFirstRecord(records, &InstanceInfoBase::OnRecv_StrategyProgressGatherResponse, nullptr,
                       instanceID);
}

int InstanceMgr::OnRecv_InstStatusUpdate(const QString& instanceID, const VariantMapList& records)
{
    qCDebug(lcAlgoInstance).noquote() << "###" << "InstanceMgr::OnRecv_InstStatusUpdate"
                                      << "###instId: " << instanceID;
    if (records.isEmpty())
        return 1;
    if (!records.first().contains(Tessel_Fields::Strategy::strategyStatus)) {
        qCDebug(lcAlgoInstance).noquote() << "###: " << "InstanceMgr::OnRecv_InstStatusUpdate"
                                          << "no status field";
        return 1;
    }
    InstanceInfoBase* inst = GetInstanceInfo(instanceID);
    if (!inst) {
        qCWarning(lcAlgoInstance).noquote() << "InstanceMgr::OnRecv_InstStatusUpdate" << "instId "
                                            << instanceID << " not find";
        return 2;
    }
    QString status;
    {
        ContentWriteSection section;
        FilterFieldsWatch watch(inst);
        inst->OnRecv_InstStatusUpdate(records);
        status = inst->status();
    }
    emit signalStatusUpdated(instanceID, status);
    return 0;
}

bool InstanceMgr::onRecv_InstModifyPush(const QString& instanceID, const VariantMapList& records)
{
    qCDebug(lcAlgoInstance).noquote() << "###" << "InstanceMgr::onRecv_InstModifyPush"
                                      << "###instId: " << instanceID;
    if (records.isEmpty())
        return false;
    InstanceInfoBase* inst = GetInstanceInfo(instanceID);
    if (!inst) {
        // The wording speaks of a status update; hosts grep for it as it is.
        qCWarning(lcAlgoInstance).noquote()
            << Q_FUNC_INFO
            << "###update instance status failed, can not find instance info: " << instanceID;
        return false;
    }
    ContentWriteSection section;
    FilterFieldsWatch watch(inst);
    inst->OnRecv_InstModifyPush(records);
    return true;
}

void InstanceMgr::UpdateSymbolExtInfoByParams(InstanceInfoBase* inst, const VariantMap& params,
                                              const VariantMapList& records)
{
    if (!inst)
        return;
    VariantMap extInfo;
    if (records.size() >= 2) {
        const QString instanceID = inst->instanceID();
        for (int i = 1; i < records.size(); ++i) {
            const VariantMap& record = records.at(i);
            if (record.value(Tessel_Fields::System::requestExeStatus).toString()
                != kRequestSucceeded)
                continue;
            const QString side = record.contains(Tessel_Fields::Security::side)
                                   ? record.value(Tessel_Fields::Security::side).toString()
                                   : Algo_Values::AlgoGlobalType::all;
            const QString symbol = record.value(Tessel_Fields::Security::symbol).toString();
            extInfo.insert(GetSymbolExtInfoKey(instanceID, symbol, side), QVariant(record));
        }
    }
    FilterFieldsWatch watch(inst);
    inst->initSymbolInfo(params, extInfo);
}
