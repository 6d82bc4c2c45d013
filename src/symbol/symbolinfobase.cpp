#include "symbol/symbolinfobase.h"

#include "common/algoconstants.h"
#include "common/logging.h"
#include "common/numbers.h"
#include "platform/algodefines.h"
#include "platform/helmbusinessdata.h"

#include <QDateTime>
#include <QList>

#include <utility>

namespace {

namespace Progress = Algo_Fields::AlgoInstProgressFields;

// Leg status codes used by the transition guard. "2" and "5" are final; a leg
// in "0" or "1" has to pass through another state before it may enter "3".
const QString StatusNew = QStringLiteral("0");
const QString StatusOne = QStringLiteral("1");
const QString StatusThree = QStringLiteral("3");

const QString DeleteFlagLive = QStringLiteral("0");
const QString DeleteFlagDeleted = Algo_Values::AlgoDeleteStatus::deleted;

const QString EntrustTimeUnknown = QStringLiteral("-");
const QString EntrustTimeFormat = QStringLiteral("HH:mm:ss");

// A missing key reads as 0, like any text that does not convert.
double numberOf(const VariantMap& report, const QString& key)
{
    return report.value(key).toDouble();
}

} // namespace

SymbolInfoBase::SymbolInfoBase()
    : m_key(QLatin1String(""))
    , m_symbol(QLatin1String(""))
    , m_exchange(QLatin1String(""))
    , m_orderSide(QLatin1String(""))
    , m_entrustProp(QLatin1String(""))
    , m_limitPrice(QLatin1String(""))
    , m_instanceID(QLatin1String(""))
    , m_ortherInfo(QLatin1String(""))
    , m_entrustTime(EntrustTimeUnknown)
    , m_clParentID(QLatin1String(""))
    , m_status(QLatin1String(""))
    , m_deleteFlag(DeleteFlagLive)
    , m_tradingAccount(QLatin1String(""))
    , m_fundAccount(QLatin1String(""))
    , m_fundAccountName(QLatin1String(""))
    , m_securityAccout(QLatin1String(""))
    , m_strategyName(QLatin1String(""))
    , m_tipMsg(QLatin1String(""))
{
}

SymbolInfoBase::~SymbolInfoBase() = default;

void SymbolInfoBase::updateBySingleProgressReport(VariantMap report)
{
    const double filledQty = numberOf(report, Progress::FilledQty);
    const double dealAvgPrice = numberOf(report, Progress::DealAvgPrice);
    const double entrustQty = numberOf(report, Progress::EntrustQty);
    const double targetQty = numberOf(report, Progress::TargetQty);
    const double entrustProgress = AlgoLogic::safeRatio(entrustQty, targetQty);
    const double dealProgress = AlgoLogic::safeRatio(filledQty, targetQty);

    const double dealAmount = numberOf(report, Progress::DealAmount);
    const double entrustAmount = numberOf(report, Progress::EntrustAmount);
    const double targetAmount = numberOf(report, Progress::TargetAmount);
    const double amountEntrustProgress = AlgoLogic::safeRatio(entrustAmount, targetAmount);
    const double amountDealProgress = AlgoLogic::safeRatio(dealAmount, targetAmount);

    if (report.contains(Progress::otherInfo)) {
        const QString otherInfo = report.value(Progress::otherInfo).toString();
        if (!otherInfo.isEmpty())
            setOrtherInfo(otherInfo);
    }

    // The server sends milliseconds since the epoch; 0 or garbage means "no
    // order yet" and must not wipe a time already shown.
    bool ok = false;
    const qint64 lastOrderMs =
        report.value(Progress::lastOrderTime).toString().toLongLong(&ok, 10);
    if (lastOrderMs != 0)
        m_entrustTime = QDateTime::fromMSecsSinceEpoch(lastOrderMs).toString(EntrustTimeFormat);

    // Each guarded setter compares against its own stored value, so a stale
    // report cannot lower the dealt figures; the fixed order keeps the log
    // lines of one report in a predictable sequence.
    setDealAvgPrice(dealAvgPrice);
    setEntrustProgress(entrustProgress);
    setEntrustQty(entrustQty);
    setFilledQty(filledQty);
    setProgress(dealProgress);
    setTargetQty(targetQty);
    setTargetAmount(targetAmount);
    setDealBalance(dealAmount);
    setEntrustAmount(entrustAmount);
    setAmountEntrustProgress(amountEntrustProgress);
    setAmountDealProgress(amountDealProgress);
}

void SymbolInfoBase::OnRecvSymbolProgressGatherInfo(const VariantMap& info)
{
    Q_UNUSED(info)
}

double SymbolInfoBase::standardProgress() const
{
    return StandardProgressAlgoNames.contains(m_strategyName, Qt::CaseSensitive)
               ? m_amoutDealProgress
               : m_progress;
}

void SymbolInfoBase::updateLastReportMap(const VariantMap& report)
{
    for (auto it = report.cbegin(); it != report.cend(); ++it)
        m_lastReportMap.insert(it.key(), it.value());
}

void SymbolInfoBase::setKey(QString key)
{
    m_key = std::move(key);
}

void SymbolInfoBase::setSymbol(const QString& symbol)
{
    m_symbol = symbol;
}

void SymbolInfoBase::setExchande(QString exchange)
{
    m_exchange = std::move(exchange);
}

void SymbolInfoBase::setOrderSide(QString side)
{
    m_orderSide = std::move(side);
}

void SymbolInfoBase::setEntrustProp(QString prop)
{
    m_entrustProp = std::move(prop);
}

void SymbolInfoBase::setTargetQty(double qty)
{
    m_targetQty = qty;
}

void SymbolInfoBase::setFilledQty(double qty)
{
    // A NaN on either side compares false and is stored: only a real
    // regression is refused.
    if (m_filledQty > qty) {
        qCWarning(lcAlgoSymbol).noquote()
            << "SymbolInfoBase::setFilledQty invalid filledQty, instid:" << m_instanceID
            << "old filledQty" << m_filledQty << "new filledQty" << qty;
        return;
    }
    m_filledQty = qty;
}

void SymbolInfoBase::setProgress(double progress)
{
    // Reported but not refused: a progress recomputed against a larger target
    // legitimately goes down.
    if (m_progress > progress) {
        qCWarning(lcAlgoSymbol).noquote()
            << "SymbolInfoBase::setProgress invalid progress, instid:" << m_instanceID
            << "old progress" << m_progress << "new progress" << progress;
    }
    m_progress = progress;
}

void SymbolInfoBase::setLimitPrice(QString price)
{
    m_limitPrice = std::move(price);
}

void SymbolInfoBase::setInstanceID(const QString& id)
{
    m_instanceID = id;
}

void SymbolInfoBase::setEntrustQty(double qty)
{
    m_entrustQty = qty;
}

void SymbolInfoBase::setEntrustProgress(double progress)
{
    m_entrustProgress = progress;
}

void SymbolInfoBase::setDealAvgPrice(double price)
{
    m_dealAvgPrice = price;
}

void SymbolInfoBase::setDealBalance(double balance)
{
    if (m_dealBalance > balance) {
        qCWarning(lcAlgoSymbol).noquote()
            << "SymbolInfoBase::setDealBalance invalid dealBalance, instid:" << m_instanceID
            << "old dealBalance" << m_dealBalance << "new dealBalance" << balance;
        return;
    }
    m_dealBalance = balance;
}

void SymbolInfoBase::setMinEntrustProgress(double progress)
{
    m_minEntrustProgress = progress;
}

void SymbolInfoBase::setMaxEntrustProgress(double progress)
{
    m_maxEntrustProgress = progress;
}

void SymbolInfoBase::setMinProgress(double progress)
{
    m_minProgress = progress;
}

void SymbolInfoBase::setMaxProgress(double progress)
{
    m_maxProgress = progress;
}

void SymbolInfoBase::setOrtherInfo(QString info)
{
    qCDebug(lcAlgoSymbol).noquote() << "SymbolInfoBase::setOrtherInfo" << m_ortherInfo << info;
    m_ortherInfo = std::move(info);
}

void SymbolInfoBase::setEntrustTime(const QString& time)
{
    m_entrustTime = time;
}

void SymbolInfoBase::setClParentID(const QString& id)
{
    // Later pushes may omit the parent id; that must not forget a known one.
    if (id.isEmpty() && !m_clParentID.isEmpty())
        return;
    m_clParentID = id;
}

bool SymbolInfoBase::setStatus(const QString& status)
{
    if (status == m_status)
        return false;

    if (m_status == StatusThree) {
        m_status = status;
        return true;
    }

    const bool isFinal = m_status == Algo_Values::InstanceStates::COMPLETE
                         || m_status == Algo_Values::InstanceStates::STOP;
    const bool isEarly = m_status == StatusNew || m_status == StatusOne;
    if (isFinal || (isEarly && status == StatusThree)) {
        qCDebug(lcAlgoSymbol).noquote()
            << "SymbolInfoBase::setStatus invalid status" << m_status << status;
        return false;
    }

    m_status = status;
    return true;
}

void SymbolInfoBase::setDeleteFlag(const QString& flag)
{
    // Deletion is sticky: a late "live" push must not resurrect the leg.
    if (m_deleteFlag == DeleteFlagDeleted && flag == DeleteFlagLive)
        return;
    m_deleteFlag = flag;
}

void SymbolInfoBase::setTradingAccount(const QString& account)
{
    if (account.isEmpty())
        return;
    m_tradingAccount = account;

    const QList<tagUserAccountInfo> accounts =
        HelmBusinessDataInterface::GetAccountInfoListFromTrade(account, true);
    if (accounts.isEmpty())
        return;
    const tagUserAccountInfo& first = accounts.first();
    m_fundAccount = first.fundAccount;
    m_fundAccountName = first.fundAccountName;
}

void SymbolInfoBase::setFundAccount(const QString& account)
{
    m_fundAccount = account;
}

void SymbolInfoBase::setFundAccountName(const QString& name)
{
    m_fundAccountName = name;
}

void SymbolInfoBase::setSecurityAccout(const QString& account)
{
    m_securityAccout = account;
}

void SymbolInfoBase::setStrategyName(QString name)
{
    m_strategyName = std::move(name);
}

void SymbolInfoBase::setTargetAmount(double amount)
{
    m_targetAmount = amount;
}

void SymbolInfoBase::setEntrustAmount(double amount)
{
    m_entrustAmount = amount;
}

void SymbolInfoBase::setAmountEntrustProgress(double progress)
{
    m_amountEntrustProgress = progress;
}

void SymbolInfoBase::setAmountDealProgress(double progress)
{
    // Deliberately shares the log text of setProgress: both are deal progress,
    // one by quantity, one by amount.
    if (m_amoutDealProgress > progress) {
        qCWarning(lcAlgoSymbol).noquote()
            << "SymbolInfoBase::setProgress invalid progress, instid:" << m_instanceID
            << "old progress" << m_amoutDealProgress << "new progress" << progress;
        return;
    }
    m_amoutDealProgress = progress;
}

void SymbolInfoBase::setTipMsg(const QString& msg)
{
    m_tipMsg = msg;
}

void SymbolInfoBase::setFrontQty(double qty)
{
    m_frontQty = qty;
}

void SymbolInfoBase::setFrontOrderNum(int num)
{
    m_frontOrderNum = num;
}

void SymbolInfoBase::setFrontPosition(double position)
{
    m_frontPosition = position;
}

void SymbolInfoBase::setSameQtyOrderCnt(int count)
{
    m_sameQtyOrderCnt = count;
}

void SymbolInfoBase::setLastReportMap(const VariantMap& report)
{
    m_lastReportMap = report;
}
