#include "variants/RushLimitUpInstanceInfo.h"

#include "common/algoconstants.h"
#include "common/logging.h"
#include "common/numbers.h"
#include "instance/contentwritesection.h"
#include "instance/instancemgr.h"
#include "platform/algodefines.h"
#include "platform/helmutils.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

#include <algorithm>

namespace {

const QString kLegSide = QStringLiteral("Buy");
const QString kAcknowledged = QStringLiteral("1");

// Progress keys of the rush-limit-up reports.
const QString kFilledQty = QStringLiteral("filledQty");
const QString kFilledAmount = QStringLiteral("filledAmount");
const QString kAlertMsg = QStringLiteral("strAlertMsg");
const QString kFrontQty = QStringLiteral("frontQty");
const QString kFrontOrderNum = QStringLiteral("frontOrderNum");
const QString kFrontPosition = QStringLiteral("frontPoistion"); // spelt so on the wire
const QString kObjectOrderNum = QStringLiteral("objectOrderNum");

// Orders reports by Timestamp; a report without one comes first.
bool earlierReport(const VariantMap& a, const VariantMap& b)
{
    const QVariant left = a.value(Algo_Fields::AlgoInstProgressFields::Timestamp);
    const QVariant right = b.value(Algo_Fields::AlgoInstProgressFields::Timestamp);
    if (!left.isValid() || !right.isValid())
        return !left.isValid() && right.isValid();
    return left.toDouble() < right.toDouble();
}

} // namespace

RushLimitUpInstanceInfo::RushLimitUpInstanceInfo() = default;

RushLimitUpInstanceInfo::~RushLimitUpInstanceInfo() = default;

void RushLimitUpInstanceInfo::initSymbolInfo(const VariantMap& params, const VariantMap& extInfo)
{
    Q_UNUSED(extInfo)
    if (!params.contains(AlgoConst::ParamSymbol))
        return;
    const QString symbol = params.value(AlgoConst::ParamSymbol).toString();
    if (!keyPartsUsable("RushLimitUpInstanceInfo::initSymbolInfo", symbol))
        return;
    SymbolInfoBase* leg = InstanceMgr::CreateSymbolInfo(m_instAlgoType, m_strategyName);
    leg->setInstanceID(m_instanceID);
    leg->setStrategyName(m_strategyName);

    const QString market = params.value(AlgoConst::ParamMarket).toString();
    const QString account = params.value(AlgoConst::ParamTradingAccount).toString();
    leg->setKey(InstanceMgr::GetSymbolExtInfoKey(m_instanceID, symbol, kLegSide));
    leg->setSymbol(symbol);
    leg->setTradingAccount(account);
    leg->setSecurityAccout(params.value(AlgoConst::ParamSecurityAccount).toString());
    leg->setExchande(market);
    leg->setOrderSide(params.value(AlgoConst::ParamSide).toString());
    leg->setEntrustProp(params.value(AlgoConst::ParamEntrustProp).toString());
    leg->setTargetQty(params.value(AlgoConst::ParamOrderQty).toDouble());
    leg->setTargetAmount(params.value(AlgoConst::ParamOrderAmount).toDouble());
    AddSymbolInfo(leg);

    setTradingAccount_Inst(account);
    setSymbolList(QStringList{symbol});
    setSymbolTradingAccountList(QStringList{account});
}

void RushLimitUpInstanceInfo::UpdateParamMap(const QString& json)
{
    if (json.isEmpty())
        return;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError)
        return;
    const VariantMap params = document.toVariant().toMap();
    const QString symbol = params.value(AlgoConst::ParamSymbol).toString();
    SymbolInfoBase* leg =
        getSymbolInfo(InstanceMgr::GetSymbolExtInfoKey(m_instanceID, symbol, kLegSide));
    if (leg) {
        leg->setTargetQty(params.value(AlgoConst::ParamOrderQty).toDouble());
        leg->setTargetAmount(params.value(AlgoConst::ParamOrderAmount).toDouble());
    }
    setInstanceComments(params.value(Algo_Values::AlgoParamId::comment).toString());
}

void RushLimitUpInstanceInfo::OnRecv_InstModifyPush(const VariantMapList& records)
{
    if (records.isEmpty())
        return;
    const PushHeader header = PushHeader::read(records.first());
    if (header.ack == kAcknowledged) {
        if (!header.params.isEmpty())
            setParams(header.params);
        setStatus(header.status);
    }
    notifyModifyPush(header.ack, header.alterComment);
}

void RushLimitUpInstanceInfo::OnRecvInstProgressInfo(const QList<QString>& reports,
                                                     const bool& flag,
                                                     QMap<QString, QList<QString>>& changed)
{
    Q_UNUSED(flag)
    if (reports.isEmpty())
        return;
    QElapsedTimer stopwatch;
    stopwatch.start();

    VariantMapList parsed;
    for (const QString& text : reports) {
        VariantMap report;
        if (HelmUtils::TransStr2Map(text, report).isEmpty())
            parsed.append(report);
    }
    std::stable_sort(parsed.begin(), parsed.end(), earlierReport);
    VariantMap merged;
    for (const VariantMap& report : qAsConst(parsed)) {
        for (auto it = report.cbegin(); it != report.cend(); ++it)
            merged.insert(it.key(), it.value());
    }

    if (!merged.isEmpty()) {
        const QString symbol = merged.value(AlgoConst::ParamSymbol).toString();
        const QString key = InstanceMgr::GetSymbolExtInfoKey(m_instanceID, symbol, kLegSide);
        SymbolInfoBase* leg = getSymbolInfo(key);
        if (!leg) {
            qCDebug(lcAlgoInstance).noquote() << "RushLimitUpInstanceInfo::OnRecvInstProgressInfo"
                                              << QStringLiteral("未找到相关证券代码：") << symbol;
        } else {
            if (merged.contains(kFilledQty))
                leg->setFilledQty(merged.value(kFilledQty).toDouble());
            if (merged.contains(kFilledAmount))
                leg->setDealBalance(merged.value(kFilledAmount).toDouble());
            if (merged.contains(kAlertMsg))
                leg->setTipMsg(merged.value(kAlertMsg).toString());
            if (merged.contains(kFrontQty))
                leg->setFrontQty(merged.value(kFrontQty).toDouble());
            if (merged.contains(kFrontOrderNum) && AlgoLogic::fitsInt(merged.value(kFrontOrderNum)))
                leg->setFrontOrderNum(merged.value(kFrontOrderNum).toInt());
            if (merged.contains(kFrontPosition))
                leg->setFrontPosition(merged.value(kFrontPosition).toDouble());
            if (merged.contains(kObjectOrderNum)
                && AlgoLogic::fitsInt(merged.value(kObjectOrderNum)))
                leg->setSameQtyOrderCnt(merged.value(kObjectOrderNum).toInt());
            leg->updateLastReportMap(merged);
            // Views refresh the leg's queue figures on this signal.
            InstanceMgr* mgr = InstanceMgr::instance();
            const QString instanceID = m_instanceID;
            ContentWriteSection::notify([mgr, instanceID, key] {
                emit mgr->signalProgressUpdated(instanceID, QList<QString>{key});
            });
        }
    }

    changed.insert(m_instanceID, QList<QString>());
    qCDebug(lcAlgoInstance).noquote()
        << "RushLimitUpInstanceInfo::OnRecvInstProgressInfo" << m_instanceID << stopwatch.elapsed();
}
