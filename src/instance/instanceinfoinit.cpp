// Initialisation of an instance from the algo server's description of it: the
// first full record, the legs of its parameters, the answers to a strategy
// query, and the parsing of its parameter text.

#include "instance/instanceinfobase.h"

#include "common/algoconstants.h"
#include "common/logging.h"
#include "instance/instancemgr.h"
#include "instance/paramtextcache.h"
#include "platform/algodefines.h"
#include "platform/helmbusinessdata.h"
#include "strategy/strategymgr.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

namespace {

const QString kParamDateTimeFormat = QStringLiteral("yyyy-MM-dd HH:mm:ss");
const QString kParamTimeFormat = QStringLiteral("HH:mm:ss");

constexpr int kNewInstanceWithTime = 0xFFFF;
constexpr int kNewInstanceWithoutTime = 0xFFFE;
constexpr int kTimeChanged = 0x1;
constexpr int kStatusChanged = 0x2;

QDateTime serverTime(const VariantMap& record, const QString& key)
{
    return QDateTime::fromString(record.value(key).toString(),
                                 HelmConstants::DateTimeFormatString::ALGO_DATE_TIME_FORMAT);
}

// The security list of a request's parameter map: a list of maps, or the
// JSON text of one.
QVariantList securityList(const VariantMap& params)
{
    const QString keys[] = {Algo_Fields::AlgoInstContentInfo::SymbolParamKey,
                            Algo_Values::AlgoParamId::AlgoSecurityList,
                            Algo_Values::AlgoParamId::InstructionAlgoSecurityList};
    for (const QString& key : keys) {
        const auto it = params.constFind(key);
        if (it == params.constEnd())
            continue;
        if (it.value().type() == QVariant::String)
            return QJsonDocument::fromJson(it.value().toString().toUtf8()).array().toVariantList();
        return it.value().toList();
    }
    return QVariantList();
}

// `key` of the leg entry, else of the instance record, else empty.
QString entryText(const VariantMap& entry, const VariantMap& record, const QString& key)
{
    const auto it = entry.constFind(key);
    return it != entry.constEnd() ? it.value().toString() : record.value(key).toString();
}

bool hasKey(const VariantMap& entry, const VariantMap& record, const QString& key)
{
    return entry.contains(key) || record.contains(key);
}

// A parameter time, "yyyy-MM-dd HH:mm:ss" or "HH:mm:ss" (today), as a full
// date-time and as the time of day shown.
bool parseParamTime(const QString& text, QDateTime& full, QString& timeOfDay)
{
    const QDateTime dateTime = QDateTime::fromString(text, kParamDateTimeFormat);
    if (dateTime.isValid()) {
        full = dateTime;
        timeOfDay = dateTime.toString(kParamTimeFormat);
        return true;
    }
    const QTime time = QTime::fromString(text, kParamTimeFormat);
    if (time.isValid()) {
        full = QDateTime(QDate::currentDate(), time);
        timeOfDay = time.toString(kParamTimeFormat);
        return true;
    }
    return false;
}

void mergeInto(VariantMap& target, const VariantMap& record)
{
    for (auto it = record.cbegin(); it != record.cend(); ++it)
        target.insert(it.key(), it.value());
}

} // namespace

QString InstanceInfoBase::getParamFromJosn(const QString& json, const QString& key)
{
    // Callers ask for several keys of one text in a row: the parse is shared.
    const AlgoLogic::ParsedParamText parsed = AlgoLogic::parseParamText(json);
    if (parsed.error.error != QJsonParseError::NoError) {
        qCDebug(lcAlgoInstance).noquote() << "InstanceInfoBase::getParamFromJosn"
                                          << "###json error info:" << parsed.error.errorString();
        return QString();
    }
    // A text that is not an object has no keys.
    return parsed.object.value(key).toString();
}

QString InstanceInfoBase::fillMetaData(const QString& metaData)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(metaData.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !document.isArray())
        return QString();
    QString orderInfo;
    QString basePrice;
    const QVariantList items = document.array().toVariantList();
    for (const QVariant& item : items) {
        const VariantMap map = item.toMap();
        if (orderInfo.isEmpty())
            orderInfo = map.value(Algo_Fields::AlgoInstProgressFields::orderInfo).toString();
        if (basePrice.isEmpty())
            basePrice = map.value(Algo_Fields::AlgoMetaDataFields::basePrice).toString();
    }
    return QStringLiteral("%1-%2").arg(orderInfo, basePrice);
}

void InstanceInfoBase::applyParamDerivedFields(bool withTradeOrder)
{
    m_instanceComments = getParamFromJosn(m_params, Algo_Values::AlgoParamId::comment);
    if (withTradeOrder)
        setInstanceTradeOrder(getParamFromJosn(m_params, Algo_Values::AlgoParamId::traderOrder));
    setInstMode(getParamFromJosn(m_params, Algo_Fields::AlgoInstContentInfo::instMode));
    m_marketRate = getParamFromJosn(m_params, Algo_Fields::AlgoInstContentInfo::participationrate);
    m_openSide = getParamFromJosn(m_params, Algo_Values::AlgoParamId::OpenClose);
    m_investType = getParamFromJosn(m_params, Algo_Values::AlgoParamId::InvestType);
}

void InstanceInfoBase::initInfo(VariantMap record)
{
    using namespace Tessel_Fields;
    namespace ProgressKey = Algo_Fields::AlgoInstProgressFields;

    m_instanceID = record.value(Strategy::strategyID).toString();
    m_params = record.value(Strategy::strategyParas).toString();
    m_strategyName = record.value(Strategy::strategyName).toString();
    m_instAlgoType = record.value(Strategy::strategyType).toString();
    const QString status = record.value(Strategy::strategyStatus).toString();
    m_instanceAlias = record.value(Strategy::StrategyInstanceAlias).toString();
    m_targetQty = record.value(ProgressKey::TargetQty).toDouble();
    const double filledQty = record.value(ProgressKey::FilledQty).toDouble();
    const double filledAmount = record.value(ProgressKey::DealAmount).toDouble();
    const double progress = record.value(ProgressKey::Progress).toDouble();
    m_remark = record.value(UserAccount::reMarks).toString();
    m_strategyDeleted = record.value(Algo_Fields::HelmStrategy::strategyDeleted).toString();
    m_targetAmount = record.value(ProgressKey::TargetAmount).toDouble();

    m_createTime = serverTime(record, Algo_Fields::HelmStrategy::AlgCreateTime);
    m_clInstanceID = record.value(Helm_Fields::Strategy::clAlgoID).toString();

    setStatus(status);
    setFilledQty(filledQty);
    setFilledBalance(filledAmount);
    setProgrees(progress);

    applyParamDerivedFields(true);
    m_createUser = record.value(UserAccount::userID).toString();
    m_dataMap = record;
    noteFilterFieldsChanged();
}

void InstanceInfoBase::initSymbolInfo(const VariantMap& record, const VariantMap& params)
{
    namespace ContentKey = Algo_Fields::AlgoInstContentInfo;

    const QVariantList securities = securityList(record);
    for (const QVariant& item : securities) {
        const VariantMap entry = item.toMap();
        const QString symbol = entryText(entry, record, ContentKey::Symbol);
        const QString side = entryText(entry, record, ContentKey::OrderSide);
        if (!keyPartsUsable("InstanceInfoBase::initSymbolInfo", symbol, side))
            continue;
        const QString key = InstanceMgr::GetSymbolExtInfoKey(m_instanceID, symbol, side);
        if (m_symbolMap.value(key, nullptr))
            continue;

        const QString priceKey =
            hasKey(entry, record, ContentKey::StockPriceLimit) ? ContentKey::StockPriceLimit
                                                            : ContentKey::PriceLimits;
        SymbolInfoBase* leg = InstanceMgr::CreateSymbolInfo(m_instAlgoType, symbol);
        leg->setInstanceID(m_instanceID);
        leg->setStrategyName(m_strategyName);
        leg->setFilledQty(0);
        leg->setProgress(0);
        leg->setAmountEntrustProgress(0);
        leg->setAmountDealProgress(0);
        leg->setSymbol(symbol);
        leg->setTradingAccount(entryText(entry, record, ContentKey::TradingAccount));
        leg->setSecurityAccout(entryText(entry, record, ContentKey::SecurityAccount));
        leg->setExchande(entryText(entry, record, ContentKey::Exchange));
        leg->setOrderSide(side);
        leg->setEntrustProp(entryText(entry, record, Algo_Values::AlgoParamId::entrustProp));
        leg->setLimitPrice(entryText(entry, record, priceKey));
        leg->setTargetAmount(entryText(entry, record, ContentKey::Quantity_Amount).toDouble());
        leg->setTargetQty(entryText(entry, record, ContentKey::Quantity).toDouble());
        leg->setKey(key);

        const VariantMap legState = params.value(key).toMap();
        leg->setClParentID(legState.value(Algo_Fields::HelmStrategy::ClParentOrderID).toString());
        leg->setStatus(legState.value(Tessel_Fields::Strategy::strategyStatus).toString());
        AddSymbolInfo(leg);
    }

    // The instance counts in display units: each leg's target scaled by its
    // security's display factor.
    double targetSum = 0.0;
    for (const SymbolInfoBase* leg : qAsConst(m_symbolMap)) {
        if (leg) {
            targetSum += leg->targetQty()
                       * HelmBusinessDataInterface::GetDispFactorBySymbol(leg->symbol());
        }
    }
    m_targetQty = targetSum;
    qCDebug(lcAlgoInstance).noquote() << "###instTargetQty: " << targetSum;
}

int InstanceInfoBase::OnRecv_QueryAlgoStrategyResponse(const VariantMap& record, bool isNew)
{
    using namespace Tessel_Fields;
    namespace HelmKey = Algo_Fields::HelmStrategy;

    const QString status = record.value(Strategy::strategyStatus).toString();
    const bool hasDeletion = record.contains(HelmKey::strategyDeleted);
    const QString deletion = record.value(HelmKey::strategyDeleted).toString();
    const QString strategyName = record.value(Strategy::strategyName).toString();
    const AesStrategy strategy = StrategyMgr::instance()->GetStrategy(strategyName);
    if (strategy.name().isEmpty()
        || strategy.algoType() == Algo_Values::AlgoGlobalType::deposit) {
        qCDebug(lcAlgoInstance).noquote() << "InstanceInfoBase::OnRecv_QueryAlgoStrategyResponse"
                                          << " strategy name" << strategy.name() << " algo type"
                                          << strategy.algoType();
        return 0;
    }
    mergeInto(m_dataMap, record);

    const QString timeKeys[] = {HelmKey::AlgStartTime, HelmKey::AlgEndTime, HelmKey::AlgCreateTime};
    QDateTime* const times[] = {&m_startTime, &m_endTime, &m_createTime};

    // The deletion state travels with every answer: the router reports
    // deleted instances from it.
    if (hasDeletion && m_strategyDeleted != deletion) {
        m_strategyDeleted = deletion;
        noteFilterFieldsChanged();
    }

    if (isNew) {
        m_instanceAlias = record.value(Strategy::StrategyInstanceAlias).toString();
        setStatus(status);
        // A new instance knows its algo only from this answer.
        if (m_instAlgoType != strategy.algoType() || m_strategyName != strategyName) {
            m_instAlgoType = strategy.algoType();
            m_strategyName = strategyName;
            noteFilterFieldsChanged();
        }
        bool anyTime = false;
        for (int i = 0; i < 3; ++i) {
            if (record.contains(timeKeys[i])) {
                *times[i] = serverTime(record, timeKeys[i]);
                anyTime = true;
            }
        }
        return anyTime ? kNewInstanceWithTime : kNewInstanceWithoutTime;
    }

    if ((strategy.algoType() == Algo_Values::AlgoGlobalType::multiStr || m_instAlgoType.isEmpty())
        && (m_strategyName != strategyName || m_instAlgoType != strategy.algoType())) {
        m_strategyName = strategyName;
        m_instAlgoType = strategy.algoType();
        noteFilterFieldsChanged();
    }
    if (record.contains(Strategy::StrategyInstanceAlias))
        m_instanceAlias = record.value(Strategy::StrategyInstanceAlias).toString();
    const bool statusChanged = setStatus(status);
    int flags = statusChanged ? kStatusChanged : 0;
    for (int i = 0; i < 3; ++i) {
        if (!record.contains(timeKeys[i]) || (!statusChanged && times[i]->isValid()))
            continue;
        // As with pushed times, one that does not parse must not blank the
        // time shown.
        const QDateTime time = serverTime(record, timeKeys[i]);
        if (!time.isValid()) {
            qCDebug(lcAlgoInstance).noquote()
                << "InstanceInfoBase::OnRecv_QueryAlgoStrategyResponse"
                << "unparsable time, ignored" << m_instanceID << timeKeys[i]
                << record.value(timeKeys[i]).toString();
            continue;
        }
        *times[i] = time;
        flags |= kTimeChanged;
    }
    return flags;
}

void InstanceInfoBase::OnRect_QueryAlgoStrategyResponse_Detail(const VariantMap& record)
{
    using namespace Tessel_Fields;

    const QString instanceID = record.value(Strategy::strategyID).toString();
    if (!instanceID.isEmpty() && !m_instanceID.isEmpty() && instanceID != m_instanceID) {
        qCDebug(lcAlgoInstance).noquote()
            << "InstanceInfoBase::OnRect_QueryAlgoStrategyResponse_Detail"
            << "record of another instance, ignored" << m_instanceID << instanceID;
        return;
    }
    if (!instanceID.isEmpty())
        m_instanceID = instanceID;
    if (record.contains(Strategy::strategyName))
        m_strategyName = record.value(Strategy::strategyName).toString();
    if (record.contains(Strategy::StrategyInstanceAlias))
        m_instanceAlias = record.value(Strategy::StrategyInstanceAlias).toString();
    const QString params = record.value(Strategy::strategyParas).toString();
    if (!params.isEmpty())
        setParams(params);
    const QString status = record.value(Strategy::strategyStatus).toString();
    const QString clInstanceID = record.value(Helm_Fields::Strategy::clAlgoID).toString();
    if (!clInstanceID.isEmpty())
        m_clInstanceID = clInstanceID;

    applyParamDerivedFields(true);
    if (record.contains(Strategy::strategyStatus))
        setStatus(status);

    const AesStrategy strategy = StrategyMgr::instance()->GetStrategy(m_strategyName);
    if (!strategy.algoType().isEmpty())
        m_instAlgoType = strategy.algoType();

    const QDateTime created = QDateTime::fromString(
        record.value(System::createTime).toString(),
        HelmConstants::DateTimeFormatString::ALGO_DATE_TIME_FORMAT);
    if (created.isValid())
        m_createTime = created;
    if (record.contains(Algo_Fields::HelmStrategy::Metadata))
        m_basePrice = fillMetaData(record.value(Algo_Fields::HelmStrategy::Metadata).toString());
    mergeInto(m_dataMap, record);
    // The ID, name and algo type may have been taken from the record.
    noteFilterFieldsChanged();
}

void InstanceInfoBase::UpdateParamMap(const QString& params)
{
    if (params.isEmpty())
        return;
    const AlgoLogic::ParsedParamText parsed = AlgoLogic::parseParamText(params);
    if (parsed.error.error != QJsonParseError::NoError || !parsed.isObject) {
        qCDebug(lcAlgoInstance).noquote() << "InstanceInfoBase::UpdateParamMap"
                                          << "###json error info:" << parsed.error.errorString();
        return;
    }
    const VariantMap& map = parsed.object;
    namespace ContentKey = Algo_Fields::AlgoInstContentInfo;

    QString startOfDay;
    QString endOfDay;
    QDateTime full;
    if (parseParamTime(map.value(ContentKey::AlgoStartTime).toString(), full, startOfDay))
        m_startDateTime = full;
    if (parseParamTime(map.value(ContentKey::AlgoEndTime).toString(), full, endOfDay))
        m_endDateTime = full;
    if (!startOfDay.isEmpty() || !endOfDay.isEmpty())
        m_runTimeInParam = startOfDay + QLatin1Char('-') + endOfDay;

    if (map.contains(AlgoConst::LabelContinueAfterExpiry))
        m_continueTrade = map.value(AlgoConst::LabelContinueAfterExpiry).toString();
    if (map.contains(AlgoConst::LabelStartAfterCreate))
        m_createStart = map.value(AlgoConst::LabelStartAfterCreate).toString();
    if (map.contains(AlgoConst::LabelDeadlineDate))
        m_endDate = map.value(AlgoConst::LabelDeadlineDate).toString();

    QString account = map.value(ContentKey::TradingAccount).toString();
    if (account.isEmpty()) {
        const QVariantList securities = securityList(map);
        if (!securities.isEmpty())
            account = securities.first().toMap().value(ContentKey::TradingAccount).toString();
    }
    if (account.isEmpty())
        return;
    m_tradingAccount_Inst = account;
    const QList<tagUserAccountInfo> infos =
        HelmBusinessDataInterface::GetAccountInfoListFromTrade(account, true);
    if (infos.isEmpty())
        return;
    m_fundAccount_Inst = infos.first().fundAccount;
    m_fundAccountName_Inst = infos.first().fundAccountName;
    if (!infos.first().productName.isEmpty())
        m_productName_Inst = infos.first().productName;
}
