#include "symbol/t0symbolinfo.h"

#include "common/logging.h"
#include "platform/algodefines.h"

#include <cmath>
#include <limits>
#include <utility>

namespace {

namespace Progress = Algo_Fields::AlgoInstProgressFields;

// A dealt figure may come back a rounding error lower than the stored one;
// only a larger drop is a regression.
constexpr double kRegressionTolerance = 1e-10;

const QString BuyStaleTemplate = QStringLiteral(
    "内存: 买入成交数量%1, 买入撤单数量%2; reportData: 买入成交数量%3, 买入撤单数量%4");
const QString SellStaleTemplate = QStringLiteral(
    "内存: 卖出成交数量%1, 卖出撤单数量%2; reportData: 卖出成交数量%3, 卖出撤单数量%4");

double numberOf(const VariantMap& record, const QString& key)
{
    return record.value(key).toDouble();
}

// Truncates toward zero like a cast to int, but stays defined for NaN (0) and
// for values beyond the range of int (the nearest bound).
int truncatedToInt(double value)
{
    if (std::isnan(value))
        return 0;
    if (value >= static_cast<double>(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    if (value <= static_cast<double>(std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

// The error text of a stale side. The odd rendering is deliberate and kept: one
// single-number arg() call replaces only %1 (by the stored deal quantity), the
// other three numbers become field width, format character and precision of
// that one replacement, and %2, %3 and %4 stay in the text.
QString staleText(const QString& tmpl, double storedDeal, double storedCancel, double reportedDeal,
                  double reportedCancel)
{
    return tmpl.arg(storedDeal, truncatedToInt(storedCancel),
                    static_cast<char>(truncatedToInt(reportedDeal)), truncatedToInt(reportedCancel),
                    QLatin1Char(' '));
}

// The staleness test of one side. A record that does not carry the side's
// order quantity says nothing about that side and passes.
bool sideIsCurrent(const VariantMap& record, const QString& orderQtyKey, const QString& dealQtyKey,
                   const QString& cancelQtyKey, double storedDeal, double storedCancel,
                   const QString& tmpl, QString& error)
{
    if (!record.contains(orderQtyKey))
        return true;
    const double reportedDeal = record.value(dealQtyKey, 0.0).toDouble();
    const double reportedCancel = record.value(cancelQtyKey, 0.0).toDouble();
    if (storedDeal > reportedDeal || storedCancel > reportedCancel) {
        error = staleText(tmpl, storedDeal, storedCancel, reportedDeal, reportedCancel);
        return false;
    }
    return true;
}

} // namespace

T0SymbolInfo::T0SymbolInfo()
    : m_buyType(QLatin1String(""))
    , m_sellType(QLatin1String(""))
    , m_comment(QLatin1String(""))
    , m_endDate(QLatin1String(""))
{
}

T0SymbolInfo::~T0SymbolInfo() = default;

bool T0SymbolInfo::isLastReportData(const VariantMap& report, QString& error) const
{
    return sideIsCurrent(report, Progress::buyOrderQty, Progress::buyDealQty,
                         Progress::buyCancelQty, m_buyDealQty, m_buyCancelQty, BuyStaleTemplate,
                         error)
           && sideIsCurrent(report, Progress::sellOrderQty, Progress::sellDealQty,
                            Progress::sellCancelQty, m_sellDealQty, m_sellCancelQty,
                            SellStaleTemplate, error);
}

void T0SymbolInfo::updateBySingleProgressReport(VariantMap report)
{
    QString error;
    if (!isLastReportData(report, error)) {
        qCInfo(lcAlgoSymbol).noquote() << "T0SymbolInfo::updateBySingleProgressReport"
                                       << QStringLiteral("收到过时数据:") << symbol() << error;
        return;
    }

    SymbolInfoBase::updateBySingleProgressReport(report);

    // A report carries a side only together with its order quantity; without
    // it the side's other keys are not trusted and the side is left alone.
    if (report.contains(Progress::buyOrderQty)) {
        const double orderQty = numberOf(report, Progress::buyOrderQty);
        const double dealQty = numberOf(report, Progress::buyDealQty);
        const double closeQty = numberOf(report, Progress::buyCloseQty);
        const double avgPrice = numberOf(report, Progress::buyAvgPrice);
        const double amount = numberOf(report, Progress::buyAmount);
        const double cancelQty = numberOf(report, Progress::buyCancelQty);
        const double fee = numberOf(report, Progress::buyFee);
        setBuyOrderQty(orderQty);
        setBuyDealQty(dealQty);
        setBuyCloseQty(closeQty);
        setBuyAvgPrice(avgPrice);
        setBuyAmount(amount);
        setBuyCancelQty(cancelQty);
        setBuyFee(fee);
    }

    if (report.contains(Progress::sellOrderQty)) {
        const double orderQty = numberOf(report, Progress::sellOrderQty);
        const double dealQty = numberOf(report, Progress::sellDealQty);
        const double closeQty = numberOf(report, Progress::sellCloseQty);
        const double avgPrice = numberOf(report, Progress::sellAvgPrice);
        const double amount = numberOf(report, Progress::sellAmount);
        const double cancelQty = numberOf(report, Progress::sellCancelQty);
        const double fee = numberOf(report, Progress::sellFee);
        setSellOrderQty(orderQty);
        setSellDealQty(dealQty);
        setSellCloseQty(closeQty);
        setSellAvgPrice(avgPrice);
        setSellAmount(amount);
        setSellCancelQty(cancelQty);
        setSellFee(fee);
    }

    // Every report states the realised profit; a report without it means none.
    setAchieveProfit(numberOf(report, Progress::AchieveProfit));
}

void T0SymbolInfo::OnRecvSymbolProgressGatherInfo(const VariantMap& info)
{
    const QString symbolCode = info.value(Progress::Symbol, QString()).toString();
    if (symbolCode.isEmpty()) {
        qCDebug(lcAlgoSymbol).noquote() << "T0SymbolInfo::OnRecvSymbolProgressGatherInfo"
                                        << "symbol is empty" << info;
        return;
    }

    QString error;
    if (!isLastReportData(info, error)) {
        qCInfo(lcAlgoSymbol).noquote() << "T0SymbolInfo::OnRecvSymbolProgressGatherInfo"
                                       << QStringLiteral("收到过时数据:") << symbolCode << error;
        return;
    }

    const double targetQty = info.value(Progress::TargetQty, 0).toDouble();
    const double buyOrderQty = numberOf(info, Progress::buyOrderQty);
    const double buyDealQty = numberOf(info, Progress::buyDealQty);
    const double buyAvgPrice = numberOf(info, Progress::buyAvgPrice);
    const double buyAmount = numberOf(info, Progress::buyAmount);
    const double buyCancelQty = numberOf(info, Progress::buyCancelQty);
    const double buyFee = numberOf(info, Progress::buyFee);
    const double sellOrderQty = numberOf(info, Progress::sellOrderQty);
    const double sellDealQty = numberOf(info, Progress::sellDealQty);
    const double sellAvgPrice = numberOf(info, Progress::sellAvgPrice);
    const double sellAmount = numberOf(info, Progress::sellAmount);
    const double sellCancelQty = numberOf(info, Progress::sellCancelQty);
    const double sellFee = numberOf(info, Progress::sellFee);
    const double achieveProfit = numberOf(info, Progress::AchieveProfit);

    // The gather answer carries no close quantities; those come only with
    // single progress reports.
    setTargetQty(targetQty);
    setBuyOrderQty(buyOrderQty);
    setBuyDealQty(buyDealQty);
    setBuyAvgPrice(buyAvgPrice);
    setBuyAmount(buyAmount);
    setBuyCancelQty(buyCancelQty);
    setBuyFee(buyFee);
    setSellOrderQty(sellOrderQty);
    setSellDealQty(sellDealQty);
    setSellAvgPrice(sellAvgPrice);
    setSellAmount(sellAmount);
    setSellCancelQty(sellCancelQty);
    setSellFee(sellFee);
    setAchieveProfit(achieveProfit);
}

void T0SymbolInfo::setBuyType(QString type)
{
    m_buyType = std::move(type);
}

void T0SymbolInfo::setSellType(QString type)
{
    m_sellType = std::move(type);
}

void T0SymbolInfo::setComment(QString comment)
{
    m_comment = std::move(comment);
}

void T0SymbolInfo::setEndDate(QString date)
{
    m_endDate = std::move(date);
}

void T0SymbolInfo::setBuyOrderQty(double qty)
{
    m_buyOrderQty = qty;
}

void T0SymbolInfo::setBuyDealQty(double qty)
{
    if (m_buyDealQty > qty + kRegressionTolerance) {
        qCDebug(lcAlgoSymbol).noquote() << "T0SymbolInfo::setBuyDealQty"
                                        << "buyDeal error" << m_buyDealQty << qty;
        return;
    }
    m_buyDealQty = qty;
}

void T0SymbolInfo::setBuyCloseQty(double qty)
{
    m_buyCloseQty = qty;
}

void T0SymbolInfo::setBuyAvgPrice(double price)
{
    m_buyAvgPrice = price;
}

void T0SymbolInfo::setBuyAmount(double amount)
{
    if (m_buyAmount > amount + kRegressionTolerance) {
        qCDebug(lcAlgoSymbol).noquote() << "T0SymbolInfo::setBuyAmount"
                                        << "error " << m_buyAmount << amount;
        return;
    }
    m_buyAmount = amount;
}

void T0SymbolInfo::setBuyCancelQty(double qty)
{
    m_buyCancelQty = qty;
}

void T0SymbolInfo::setSellOrderQty(double qty)
{
    m_sellOrderQty = qty;
}

void T0SymbolInfo::setSellDealQty(double qty)
{
    if (m_sellDealQty > qty + kRegressionTolerance) {
        qCDebug(lcAlgoSymbol).noquote() << "T0SymbolInfo::setSellDealQty"
                                        << "sellDeal error" << m_sellDealQty << qty;
        return;
    }
    m_sellDealQty = qty;
}

void T0SymbolInfo::setSellCloseQty(double qty)
{
    m_sellCloseQty = qty;
}

void T0SymbolInfo::setSellAvgPrice(double price)
{
    m_sellAvgPrice = price;
}

void T0SymbolInfo::setSellAmount(double amount)
{
    if (m_sellAmount > amount + kRegressionTolerance) {
        qCDebug(lcAlgoSymbol).noquote() << "T0SymbolInfo::setSellAmount"
                                        << "error " << m_sellAmount << amount;
        return;
    }
    m_sellAmount = amount;
}

void T0SymbolInfo::setSellCancelQty(double qty)
{
    m_sellCancelQty = qty;
}

void T0SymbolInfo::setProfitAmount(double amount)
{
    m_profitAmount = amount;
}

void T0SymbolInfo::setAchieveProfit(double profit)
{
    m_achieveProfit = profit;
}

void T0SymbolInfo::setBuyFee(double fee)
{
    m_buyFee = fee;
}

void T0SymbolInfo::setSellFee(double fee)
{
    m_sellFee = fee;
}
