#include "variants/multiinstanceinfo.h"

#include "common/algoconstants.h"
#include "common/logging.h"
#include "common/numbers.h"
#include "instance/contentwritesection.h"
#include "instance/instancemgr.h"
#include "instance/paramtextcache.h"
#include "platform/algodefines.h"
#include "platform/helmbusinessdata.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <QTime>

namespace {

namespace ProgressKey = Multi_Fields::MultiInstProgressFields;
namespace DetailKey = Multi_Fields::MulitStrDetailInfo;
namespace BasisKey = Multi_Fields::MulitStrBasis;
namespace TableKey = Multi_Fields::MulitTableInfo;
namespace EffectKey = Multi_Fields::MulitEffectTime;

// Keys of the algo's progress snapshot that are words of its own.
const QString kStrategyStatusKey = QStringLiteral("策略状态");
const QString kUpdateTimeKey = QStringLiteral("更新时间");

const QString kAcknowledged = QStringLiteral("1");
const QString kRangeTimeFormat = QStringLiteral("hh:mm:ss");
const QString kSideBuy = QStringLiteral("Buy");
const QString kSideSell = QStringLiteral("Sell");

QVariantList asList(const QVariant& value)
{
    if (value.type() == QVariant::String)
        return QJsonDocument::fromJson(value.toString().toUtf8()).toVariant().toList();
    return value.toList();
}

void appendDistinct(QStringList& list, const QString& value)
{
    if (!value.isEmpty() && !list.contains(value))
        list.append(value);
}

// Trading accounts of the legs of a symbol list: a map holding lists of leg
// maps, or such a list itself.
void collectLegAccounts(const QVariant& symbolList, QStringList& accounts)
{
    QVariantList lists;
    if (symbolList.type() == QVariant::List)
        lists.append(symbolList);
    else
        lists = symbolList.toMap().values();
    for (const QVariant& list : qAsConst(lists)) {
        const QVariantList legs = list.toList();
        for (const QVariant& leg : legs)
            appendDistinct(accounts, leg.toMap().value(TableKey::TradingAccount).toString());
    }
}

} // namespace

// The fields of one progress snapshot, shared by the detail and push forms.
struct MultiInstanceInfo::Snapshot
{
    QString filledQty;
    QString entrustQty;
    QString progress;
    QString openQty;
    QString lamenessRate;
    double realBasis = 0.0;
    double expectBasis = 0.0;
    double singleOrderQty = 0.0;
    double totalOrderQty = 0.0;
    double batch = 0.0;
    QString entrustRatio;
    bool lamenessState = false;
    QString tradingState;
    QString strategyStatus;
    int updateCnt = 0;
    bool countUsable = true; // false for a count beyond int: the snapshot is refused
    QString remarks;

    static Snapshot read(const VariantMap& top)
    {
        Snapshot s;
        const VariantMap run = top.value(ProgressKey::RunningData).toMap();
        s.filledQty = run.value(ProgressKey::FilledQty).toString();
        s.entrustQty = run.value(ProgressKey::EntrustQty).toString();
        s.progress = run.value(ProgressKey::Progress).toString();
        s.openQty = run.value(ProgressKey::OpenQty).toString();
        s.lamenessRate = run.value(ProgressKey::LamenessRate).toString();
        s.realBasis = top.value(ProgressKey::RealBasis).toDouble();
        s.expectBasis = top.value(ProgressKey::ExpectBasis).toDouble();
        s.singleOrderQty = top.value(ProgressKey::SingleOrderQty).toDouble();
        s.totalOrderQty = top.value(ProgressKey::TotalOrderQty).toDouble();
        s.batch = top.value(ProgressKey::Batch).toDouble();
        s.entrustRatio = top.value(ProgressKey::EntrustRatio).toString();
        s.lamenessState = top.value(ProgressKey::LamenessState).toBool();
        s.tradingState = top.value(ProgressKey::TradingState).toString();
        s.strategyStatus = top.value(kStrategyStatusKey).toString();
        // A wrapped count would let the snapshot through and poison the counter.
        s.countUsable = AlgoLogic::fitsInt(top.value(ProgressKey::UpdateCnt));
        s.updateCnt = s.countUsable ? top.value(ProgressKey::UpdateCnt).toInt() : 0;
        s.remarks = top.value(ProgressKey::Remarks).toString();
        return s;
    }
};

MultiInstanceInfo::MultiInstanceInfo()
    : m_multiExecStatus(QLatin1String(""))
    , m_multiTradeStatus(QLatin1String(""))
    , m_multiOpenOrClose(QLatin1String(""))
    , m_multiTradeSide(QLatin1String(""))
    , m_multiRatio(QLatin1String(""))
    , m_multiOrderQty(QLatin1String(""))
    , m_multiFilledQty(QLatin1String(""))
    , m_multiProgress(QLatin1String(""))
    , m_multiOpenQty(QLatin1String(""))
    , m_multiLamenessRate(QLatin1String(""))
    , m_multiBasisCompare(QLatin1String(""))
{
    // Tagged like the registry tags it, so that copies keep their legs.
    setClassType(AlgoConst::ClassTypeMulti);
}

MultiInstanceInfo::MultiInstanceInfo(const MultiInstanceInfo& other)
    : MultiInstanceInfo()
{
    *this = other;
}

// Moving copies: the base owns raw leg pointers and has no move of its own.
MultiInstanceInfo::MultiInstanceInfo(MultiInstanceInfo&& other)
    : MultiInstanceInfo(static_cast<const MultiInstanceInfo&>(other))
{
}

MultiInstanceInfo& MultiInstanceInfo::operator=(const MultiInstanceInfo& other)
{
    if (this == &other)
        return *this;
    InstanceInfoBase::operator=(other);
    m_multiExecStatus = other.m_multiExecStatus;
    m_multiTradeStatus = other.m_multiTradeStatus;
    m_multiOpenOrClose = other.m_multiOpenOrClose;
    m_multiTradeSide = other.m_multiTradeSide;
    m_multiRatio = other.m_multiRatio;
    m_multiOrderQty = other.m_multiOrderQty;
    m_multiFilledQty = other.m_multiFilledQty;
    m_multiProgress = other.m_multiProgress;
    m_multiBatch = other.m_multiBatch;
    m_multiOpenQty = other.m_multiOpenQty;
    m_multiLamenessRate = other.m_multiLamenessRate;
    m_multiLamenessState = other.m_multiLamenessState;
    m_multiLamenessFlag = other.m_multiLamenessFlag;
    m_multiUpdateCnt = other.m_multiUpdateCnt;
    m_multiTargetQty = other.m_multiTargetQty;
    m_multiTotalQty = other.m_multiTotalQty;
    m_multiRealBasis = other.m_multiRealBasis;
    m_multiExpectBasis = other.m_multiExpectBasis;
    m_multiBasisCompare = other.m_multiBasisCompare;
    m_multiValidTime = other.m_multiValidTime;
    m_multiTradingAccountLst = other.m_multiTradingAccountLst;
    return *this;
}

MultiInstanceInfo& MultiInstanceInfo::operator=(MultiInstanceInfo&& other)
{
    return *this = static_cast<const MultiInstanceInfo&>(other);
}

MultiInstanceInfo::~MultiInstanceInfo() = default;

bool MultiInstanceInfo::setMultiUpdateCnt(int count)
{
    if (m_multiUpdateCnt > count)
        return false;
    m_multiUpdateCnt = count;
    return true;
}

void MultiInstanceInfo::applySnapshot(const Snapshot& s, bool lamenessFlag)
{
    setMultiUpdateCnt(s.updateCnt);
    m_multiRatio = s.entrustRatio;
    m_multiOrderQty = s.entrustQty;
    m_multiFilledQty = s.filledQty;
    m_multiRealBasis = s.realBasis;
    m_multiExpectBasis = s.expectBasis;
    m_multiTargetQty = s.singleOrderQty;
    m_multiTotalQty = s.totalOrderQty;
    m_multiProgress = s.progress;
    m_multiBatch = s.batch;
    m_multiOpenQty = s.openQty;
    m_multiLamenessRate = s.lamenessRate;
    m_multiLamenessState = s.lamenessState;
    m_multiLamenessFlag = lamenessFlag;
    m_multiExecStatus = s.strategyStatus;
    m_multiTradeStatus = s.tradingState;
    setInstanceComments(s.remarks);
}

QString MultiInstanceInfo::fillMultiProgressReport(const QString& json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError) {
        qCDebug(lcAlgoInstance).noquote() << "MultiInstanceInfo::fillMultiProgressReport"
                                          << "json error: progress json: " << json;
        return QString();
    }
    const QVariantList list = document.array().toVariantList();
    if (list.isEmpty()) {
        qCWarning(lcAlgoInstance).noquote() << "MultiInstanceInfo::fillMultiProgressReport"
                                            << QStringLiteral("解析失败：%1").arg(json);
        return QString();
    }
    const Snapshot snapshot = Snapshot::read(list.first().toMap());
    if (!snapshot.countUsable || m_multiUpdateCnt > snapshot.updateCnt)
        return QString();
    applySnapshot(snapshot, true);
    return m_instanceID;
}

void MultiInstanceInfo::OnRecvInstProgressInfo(const QList<QString>& reports)
{
    QMap<QString, QList<QString>> scratch;
    OnRecvInstProgressInfo(reports, false, scratch);
}

void MultiInstanceInfo::OnRecvInstProgressInfo(const QList<QString>& reports,
                                               const bool& lamenessFlag,
                                               QMap<QString, QList<QString>>& changed)
{
    Q_UNUSED(changed)
    qint64 newestUpdateTime = 0; // within this batch
    for (const QString& text : reports) {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
        if (error.error != QJsonParseError::NoError) {
            qCDebug(lcAlgoInstance).noquote() << "MultiInstanceInfo::OnRecvInstProgressInfo"
                                              << "json error: progress json: " << text;
            return;
        }
        const VariantMap top = document.object().toVariantMap();
        const qint64 updateTime = top.value(kUpdateTimeKey).toLongLong();
        if (updateTime < newestUpdateTime) {
            qCDebug(lcAlgoInstance).noquote()
                << Q_FUNC_INFO << m_instanceID << "new timestamp:" << updateTime
                << "smaller than old timestamp:" << newestUpdateTime << text;
            return;
        }
        newestUpdateTime = updateTime;
        const Snapshot snapshot = Snapshot::read(top);
        if (!snapshot.countUsable || m_multiUpdateCnt > snapshot.updateCnt)
            return; // a stale snapshot ends the batch
        applySnapshot(snapshot, lamenessFlag);
    }
    InstanceMgr* mgr = InstanceMgr::instance();
    const QString instanceID = m_instanceID;
    ContentWriteSection::notify(
        [mgr, instanceID] { emit mgr->signalMultiProgressUpdated(instanceID); });
}

void MultiInstanceInfo::OnRect_QueryAlgoStrategyResponse_Detail(const VariantMap& record)
{
    InstanceInfoBase::OnRect_QueryAlgoStrategyResponse_Detail(record);
    fillMultiProgressReport(record.value(Algo_Fields::HelmStrategy::Metadata).toString());
}

void MultiInstanceInfo::initInfo(VariantMap record)
{
    InstanceInfoBase::initInfo(record);
    m_multiExecStatus = record.value(Tessel_Fields::Strategy::strategyStatus).toString();
}

void MultiInstanceInfo::UpdateParamMap(const QString& params)
{
    InstanceInfoBase::UpdateParamMap(params);
    const VariantMap map = AlgoLogic::parseParamText(params).object;
    const QVariantList basis = asList(map.value(DetailKey::Basis));
    if (!basis.isEmpty())
        m_multiBasisCompare = basis.first().toMap().value(BasisKey::BasisCompare).toString();
}

void MultiInstanceInfo::initSymbolInfo(const VariantMap& content, const VariantMap& legStates)
{
    Q_UNUSED(legStates)
    const QVariantList basis = asList(content.value(DetailKey::Basis));
    if (!basis.isEmpty()) {
        const QString type = basis.first().toMap().value(BasisKey::BasisType).toString();
        if (type == BasisKey::ForwardOpen || type == BasisKey::ForwardClose)
            m_multiTradeSide = kSideBuy;
        else if (type == BasisKey::ReverseOpen || type == BasisKey::ReverseClose)
            m_multiTradeSide = kSideSell;
        if (type == BasisKey::ForwardOpen || type == BasisKey::ReverseOpen)
            m_multiOpenOrClose = Tessel_Values::PositionEffect::open;
        else if (type == BasisKey::ForwardClose || type == BasisKey::ReverseClose)
            m_multiOpenOrClose = Tessel_Values::PositionEffect::close;
    }

    // The plan's status is the algo's execution status until a snapshot says
    // otherwise.
    const QString status = content.value(Tessel_Fields::Strategy::strategyStatus).toString();
    if (!status.isEmpty())
        m_multiExecStatus = status;
    m_multiTargetQty = content.value(DetailKey::SingleOrderQty).toDouble();
    m_multiTotalQty = content.value(DetailKey::TotalOrderQty).toDouble();

    // Accounts and time ranges follow the latest plan: rebuilt on each call.
    QStringList accounts;
    const QVariantList table = asList(content.value(DetailKey::StrategyID));
    for (const QVariant& item : table) {
        const VariantMap row = item.toMap();
        appendDistinct(accounts, row.value(TableKey::TradingAccount).toString());
        // The principal ratios stay in the parameter text, which the views
        // read; the active row is the one the algo leads with.
        const bool active =
            row.value(TableKey::ActivePassive).toString() == Multi_Values::ActivePassive::Active;
        qCDebug(lcAlgoInstance).noquote()
            << "MultiInstanceInfo::initSymbolInfo" << (active ? "active" : "passive")
            << row.value(TableKey::TradingAccount).toString()
            << row.value(TableKey::PrincipalRatio).toString();
    }
    collectLegAccounts(content.value(DetailKey::SymbolListA), accounts);
    collectLegAccounts(content.value(DetailKey::SymbolListB), accounts);
    m_multiTradingAccountLst = accounts;

    const QVariant effect = content.value(DetailKey::EffectTime);
    if (!effect.isValid())
        return;
    QStringList ranges;
    if (effect.type() == QVariant::List) {
        const QVariantList list = effect.toList();
        for (const QVariant& item : list) {
            const VariantMap range = item.toMap();
            const QTime start = QTime::fromString(
                range.value(EffectKey::EffectTimeStart).toString(), kRangeTimeFormat);
            const QTime end = QTime::fromString(range.value(EffectKey::EffectTimeEnd).toString(),
                                                kRangeTimeFormat);
            ranges.append(start.toString(kRangeTimeFormat) + QLatin1Char('-')
                          + end.toString(kRangeTimeFormat));
        }
    } else {
        const VariantMap range = effect.toMap();
        ranges.append(
            QStringLiteral("%1-%2").arg(range.value(EffectKey::EffectTimeStart).toString(),
                                        range.value(EffectKey::EffectTimeEnd).toString()));
    }
    m_multiValidTime = ranges;
}

void MultiInstanceInfo::OnRecv_InstModifyPush(const VariantMapList& records)
{
    if (records.isEmpty())
        return;
    const VariantMap& first = records.first();
    const PushHeader header = PushHeader::read(first);
    if (header.ack != kAcknowledged) {
        notifyModifyPush(header.ack, header.alterComment);
        return;
    }

    namespace ContentKey = Algo_Fields::AlgoInstContentInfo;
    const QString& params = header.params;
    if (!params.isEmpty()) {
        // The comment is taken only once the text has been read as JSON: a
        // broken text must not wipe the one shown.
        setParams(params);
        setInstMode(getParamFromJosn(params, ContentKey::instMode));
        setMarketRate(getParamFromJosn(params, ContentKey::participationrate));
        setOpenSide(getParamFromJosn(params, Algo_Values::AlgoParamId::OpenClose));
        setInvestType(getParamFromJosn(params, Algo_Values::AlgoParamId::InvestType));

        const AlgoLogic::ParsedParamText parsed = AlgoLogic::parseParamText(params);
        if (parsed.error.error != QJsonParseError::NoError)
            return;
        const VariantMap& paramMap = parsed.object;
        const QString side = paramMap.value(ContentKey::OrderSide).toString();
        double total = 0.0;
        const QVariantList legs = asList(paramMap.value(ContentKey::SymbolParamKey));
        for (const QVariant& item : legs) {
            const VariantMap entry = item.toMap();
            const QString symbol = entry.value(ContentKey::Symbol).toString();
            if (!keyPartsUsable("MultiInstanceInfo::OnRecv_InstModifyPush", symbol))
                continue;
            // A leg the modification adds belongs to the instance from now on.
            SymbolInfoBase* leg = findOrAddLeg(symbol, side);
            qCDebug(lcAlgoInstance).noquote()
                << "MultiInstanceInfo::OnRecv_InstModifyPush" << leg->getKey();
            const double quantity = entry.value(ContentKey::Quantity).toDouble();
            leg->setLimitPrice(entry.value(ContentKey::PriceLimits).toString());
            leg->setTargetQty(quantity);
            total += quantity * HelmBusinessDataInterface::GetDispFactorBySymbol(symbol);
        }
        setTargetQty(total);
        initSymbolInfo(paramMap, VariantMap());
        setInstanceComments(getParamFromJosn(params, Algo_Values::AlgoParamId::comment));
    }

    setStatus(header.status);
    if (header.hasAlterComment)
        setRemark(header.alterComment);
    if (first.contains(Algo_Fields::HelmStrategy::AlgStartTime)) {
        qCDebug(lcAlgoInstance).noquote() << "MultiInstanceInfo::OnRecv_InstModifyPush"
                                          << "contains AlgStartTime" << m_instanceID;
    }
    applyPushTimes(first);
    setInstanceAlias(header.alias);
    notifyModifyPush(header.ack, header.alterComment);
}
