#include "variants/t0instanceinfo.h"

#include "common/algoconstants.h"
#include "common/logging.h"
#include "instance/instancemgr.h"
#include "platform/algodefines.h"
#include "symbol/t0symbolinfo.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>

namespace {

// The occupied amount under its Chinese label, used when the content lacks
// the protocol key.
const QString kOccupyAmountLabel = QStringLiteral("占用金额");

} // namespace

T0InstanceInfo::T0InstanceInfo()
    : m_t0StartTime(QLatin1String(""))
    , m_t0EndTime(QLatin1String(""))
    , m_occupyAmount(QLatin1String(""))
{
    // The registry sets the tag too; a T0 instance made by a host is tagged
    // all the same, so that its copies keep T0 legs.
    setClassType(AlgoConst::ClassTypeT0);
}

T0InstanceInfo::T0InstanceInfo(const T0InstanceInfo& other)
    : InstanceInfoBase(other)
    , m_t0StartTime(other.m_t0StartTime)
    , m_t0EndTime(other.m_t0EndTime)
    , m_occupyAmount(other.m_occupyAmount)
{
}

// Moving copies: the base owns raw leg pointers and has no move of its own.
T0InstanceInfo::T0InstanceInfo(T0InstanceInfo&& other)
    : T0InstanceInfo(static_cast<const T0InstanceInfo&>(other))
{
}

T0InstanceInfo& T0InstanceInfo::operator=(const T0InstanceInfo& other)
{
    InstanceInfoBase::operator=(other);
    m_t0StartTime = other.m_t0StartTime;
    m_t0EndTime = other.m_t0EndTime;
    m_occupyAmount = other.m_occupyAmount;
    return *this;
}

T0InstanceInfo& T0InstanceInfo::operator=(T0InstanceInfo&& other)
{
    return *this = static_cast<const T0InstanceInfo&>(other);
}

T0InstanceInfo::~T0InstanceInfo() = default;

void T0InstanceInfo::initSymbolInfo(const VariantMap& content, const VariantMap& legStates)
{
    namespace ContentKey = Algo_Fields::AlgoInstContentInfo;

    // Legs whose symbol would spoil their key are dropped first: content left
    // without a usable leg changes nothing, like content without legs.
    QVariantList list;
    for (const QVariant& item : content.value(ContentKey::SymbolParamKey).toList()) {
        const QString symbol = item.toMap().value(ContentKey::Symbol).toString();
        if (keyPartsUsable("T0InstanceInfo::initSymbolInfo", symbol))
            list.append(item);
    }
    if (list.isEmpty()) {
        qCDebug(lcAlgoInstance).noquote() << "T0InstanceInfo::initSymbolInfo"
                                          << "symbol empty" << content;
        return;
    }

    QString occupyAmount = content.value(ContentKey::occupyAmount).toString();
    if (!content.contains(ContentKey::occupyAmount) && content.contains(kOccupyAmountLabel))
        occupyAmount = content.value(kOccupyAmountLabel).toString();
    m_t0StartTime = content.value(AlgoConst::LabelStartTime).toString();
    m_t0EndTime = content.value(AlgoConst::LabelEndTime).toString();
    m_occupyAmount = occupyAmount;

    QStringList symbols;
    QStringList accounts;
    for (const QVariant& item : list) {
        const VariantMap entry = item.toMap();
        const QString symbol = entry.value(ContentKey::Symbol).toString();
        const QString key = InstanceMgr::GetSymbolExtInfoKey(m_instanceID, symbol,
                                                             Algo_Values::AlgoGlobalType::all);
        const QString exchange = entry.value(ContentKey::Exchange).toString();
        const double targetQty = entry.value(AlgoConst::LabelTargetQty).toDouble();
        const QString buyType = entry.value(AlgoConst::LabelBuyType).toString();
        const QString sellType = entry.value(AlgoConst::LabelSellType).toString();
        const QString account = entry.value(ContentKey::TradingAccount).toString();
        const QString comment = entry.value(Algo_Values::AlgoParamId::comment).toString();
        const QString endDate = entry.value(AlgoConst::LabelDeadlineDate).toString();

        auto* leg = dynamic_cast<T0SymbolInfo*>(getSymbolInfo(key));
        if (!leg)
            leg = new T0SymbolInfo;
        leg->setInstanceID(m_instanceID);
        leg->setStrategyName(m_strategyName);
        leg->setSymbol(symbol);
        leg->setOrderSide(Algo_Values::AlgoGlobalType::all);
        leg->setExchande(exchange);
        leg->setTargetQty(targetQty);
        leg->setBuyType(buyType);
        leg->setSellType(sellType);
        leg->setKey(key);
        leg->setTradingAccount(account);
        leg->setComment(comment);
        leg->setEndDate(endDate);

        const auto state = legStates.constFind(key);
        if (state != legStates.constEnd()) {
            const VariantMap legState = state.value().toMap();
            leg->setClParentID(
                legState.value(Algo_Fields::HelmStrategy::ClParentOrderID).toString());
            leg->setStatus(legState.value(Tessel_Fields::Strategy::strategyStatus).toString());
        }
        AddSymbolInfo(leg);
        if (!symbols.contains(symbol))
            symbols.append(symbol);
        if (!accounts.contains(account))
            accounts.append(account);
    }
    setSymbolList(symbols);
    setSymbolTradingAccountList(accounts);
}

void T0InstanceInfo::OnRecv_StrategyProgressGatherResponse(const VariantMapList& records)
{
    if (records.isEmpty())
        return;
    const VariantMap& first = records.first();
    const QString strategyID = first.value(Tessel_Fields::Strategy::strategyID).toString();
    const QString report = first.value(Tessel_Fields::Strategy::strategyReport).toString();

    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(report.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError) {
        qCDebug(lcAlgoInstance).noquote() << "json error: progress json: " << report;
        return;
    }

    const QVariantList elements = document.array().toVariantList();
    for (const QVariant& element : elements) {
        const VariantMap record = element.toMap();
        const QString symbol = record.value(Algo_Fields::AlgoInstProgressFields::Symbol).toString();
        if (symbol.isEmpty()) {
            qCDebug(lcAlgoInstance).noquote()
                << "T0InstanceInfo::OnRecv_StrategyProgressGatherResponse"
                << "symbol is empty" << record << report;
            return;
        }
        const QString key =
            InstanceMgr::GetSymbolExtInfoKey(strategyID, symbol, Algo_Values::AlgoGlobalType::all);
        SymbolInfoBase* leg = getSymbolInfo(key);
        if (!leg) {
            qCDebug(lcAlgoInstance).noquote()
                << "T0InstanceInfo::OnRecv_StrategyProgressGatherResponse"
                << "symbol null" << key;
            continue;
        }
        leg->OnRecvSymbolProgressGatherInfo(record);
    }

    if (isFinalStatus()) {
        qCDebug(lcAlgoInstance).noquote() << "T0InstanceInfo::OnRecv_StrategyProgressGatherResponse"
                                          << "rcv final status";
        setFinalProgress(true);
    }
}
