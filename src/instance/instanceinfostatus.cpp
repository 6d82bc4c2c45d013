// Server-side changes of a known instance: status pushes (instance and legs)
// and acknowledged modifications of its parameters.

#include "instance/instanceinfobase.h"

#include "common/logging.h"
#include "instance/contentwritesection.h"
#include "instance/instancemgr.h"
#include "instance/paramtextcache.h"
#include "platform/algodefines.h"
#include "platform/businessdata.h"
#include "platform/helmbusinessdata.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

namespace {

const QString kPushTimeFormat = QStringLiteral("yyyyMMdd-hh:mm:ss");
const QString kAcknowledged = QStringLiteral("1");
// Instructions of this alias carry their limit price under PriceLimitsPOV.
const QString kInstructionPovAlias = QStringLiteral("指令POV扩展策略");

QVariantList listValue(const VariantMap& map, const QString& key)
{
    const QVariant value = map.value(key);
    if (value.type() == QVariant::String)
        return QJsonDocument::fromJson(value.toString().toUtf8()).array().toVariantList();
    return value.toList();
}

} // namespace

void InstanceInfoBase::applyPushTimes(const VariantMap& record)
{
    const auto take = [&record](const QString& key, QDateTime& target) {
        if (!record.contains(key))
            return;
        const QDateTime time = QDateTime::fromString(record.value(key).toString(), kPushTimeFormat);
        if (time.isValid())
            target = time;
    };
    take(Algo_Fields::HelmStrategy::AlgStartTime, m_startTime);
    take(Algo_Fields::HelmStrategy::AlgEndTime, m_endTime);
}

InstanceInfoBase::PushHeader InstanceInfoBase::PushHeader::read(const VariantMap& record)
{
    PushHeader header;
    header.status = record.value(Tessel_Fields::Strategy::strategyStatus).toString();
    header.hasAlterComment = record.contains(Algo_Fields::HelmStrategy::StrategyAlterComment);
    header.alterComment = record.value(Algo_Fields::HelmStrategy::StrategyAlterComment).toString();
    header.ack = record.value(Algo_Fields::HelmStrategy::ExecAckStatus).toString();
    header.alias = record.value(Tessel_Fields::Strategy::StrategyInstanceAlias).toString();
    header.params = record.value(Tessel_Fields::Strategy::strategyParas).toString();
    return header;
}

void InstanceInfoBase::notifyModifyPush(const QString& ack, const QString& comment) const
{
    InstanceMgr* mgr = InstanceMgr::instance();
    const QString instanceID = m_instanceID;
    ContentWriteSection::notify([mgr, instanceID, ack, comment] {
        emit mgr->signalModifyPush(instanceID, ack, comment);
    });
}

void InstanceInfoBase::takeParameters(const QString& paras)
{
    m_params = paras;
    UpdateParamMap(paras);
    // A pushed parameter text leaves the trade order as it is.
    applyParamDerivedFields(false);
}

void InstanceInfoBase::OnRecv_InstStatusUpdate(const VariantMapList& records)
{
    if (records.isEmpty())
        return;
    const VariantMap& first = records.first();
    const PushHeader header = PushHeader::read(first);
    if (!header.params.isEmpty())
        takeParameters(header.params);
    setStatus(header.status);
    if (header.hasAlterComment)
        m_remark = header.alterComment;
    applyPushTimes(first);

    QMap<QString, QMap<QString, QVariant>> changedLegs;
    for (int i = 1; i < records.size(); ++i) {
        const VariantMap& record = records.at(i);
        const QString legStatus = record.value(Tessel_Fields::Strategy::strategyStatus).toString();
        const QString side = record.contains(Tessel_Fields::Security::side)
                               ? record.value(Tessel_Fields::Security::side).toString()
                               : Algo_Values::AlgoGlobalType::all;
        const QString symbol = record.value(Tessel_Fields::Security::symbol).toString();
        const QString key = InstanceMgr::GetSymbolExtInfoKey(m_instanceID, symbol, side);
        SymbolInfoBase* leg = getSymbolInfo(key);
        if (!leg) {
            qCDebug(lcAlgoInstance).noquote() << "InstanceInfoBase::OnRecv_InstStatusUpdate"
                                              << "symbolInfo null" << key;
            continue;
        }
        leg->setStatus(legStatus);
        changedLegs.insert(key, record);
    }

    InstanceMgr* mgr = InstanceMgr::instance();
    ContentWriteSection::notify(
        [mgr, changedLegs] { emit mgr->signalSymbolStatusUpdate(changedLegs); });
}

void InstanceInfoBase::OnRecv_InstModifyPush(const VariantMapList& records)
{
    if (records.isEmpty())
        return;
    const VariantMap& first = records.first();
    const PushHeader header = PushHeader::read(first);

    const bool instruction = m_instAlgoType == Algo_Values::AlgoGlobalType::instruction;
    if (instruction) {
        const QString user = first.value(Tessel_Fields::UserAccount::userID).toString();
        const QString login = CBusinessDataBase::GetInstance()->GetLoginAccount();
        if (user != login) {
            // Another user changed the instruction: the server's word stands,
            // the change is applied all the same.
            qCDebug(lcAlgoInstance).noquote() << "InstanceInfoBase::OnRecv_InstModifyPush"
                                              << "modified by another user" << m_instanceID
                                              << user << login;
        }
    }

    if (header.ack == kAcknowledged) {
        const QString& paras = header.params;
        if (!paras.isEmpty())
            takeParameters(paras);

        // The same text takeParameters() has just read: its parse is reused.
        const VariantMap params = AlgoLogic::parseParamText(paras).object;
        namespace ContentKey = Algo_Fields::AlgoInstContentInfo;
        const QVariantList securities =
            listValue(params, instruction ? Algo_Values::AlgoParamId::InstructionAlgoSecurityList
                                          : ContentKey::SymbolParamKey);
        const QString& priceKey =
            header.alias == kInstructionPovAlias ? ContentKey::PriceLimitsPOV
                                                 : ContentKey::PriceLimits;
        double targetSum = 0.0;
        int legsTaken = 0;
        for (const QVariant& item : securities) {
            const VariantMap entry = item.toMap();
            const QString symbol = entry.value(ContentKey::Symbol).toString();
            const QString side = entry.value(ContentKey::OrderSide).toString();
            if (!keyPartsUsable("InstanceInfoBase::OnRecv_InstModifyPush", symbol, side))
                continue;
            // A leg the modification adds belongs to the instance from now on.
            SymbolInfoBase* leg = findOrAddLeg(symbol, side);
            const double quantity = entry.value(ContentKey::Quantity).toDouble();
            leg->setLimitPrice(entry.value(priceKey).toString());
            leg->setTargetQty(quantity);
            leg->setTargetAmount(entry.value(ContentKey::Quantity_Amount).toDouble());
            targetSum += quantity * HelmBusinessDataInterface::GetDispFactorBySymbol(symbol);
            ++legsTaken;
        }
        if (legsTaken > 0)
            m_targetQty = targetSum;
    }

    setStatus(header.status);
    applyPushTimes(first);
    notifyModifyPush(header.ack, header.alterComment);
}
