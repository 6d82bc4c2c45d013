#include "models/legrow.h"

#include "instance/instanceinfobase.h"
#include "models/cellformat.h"
#include "symbol/t0symbolinfo.h"

namespace AlgoLogic {

namespace {

using Column = SymbolTableModel::Column;

// The ordered, dealt, closed and cancelled quantities and the fee of one half
// of a round trip.
QString halfTip(double ordered, double dealt, double closed, double cancelled, double fee)
{
    using Cells::quantityText;
    return Cells::describe({{"Ordered", quantityText(ordered)},
                            {"Dealt", quantityText(dealt)},
                            {"Closed", quantityText(closed)},
                            {"Cancelled", quantityText(cancelled)},
                            {"Fee", quantityText(fee)}});
}

void fillT0(SnapshotTableModel::Row& row, const T0SymbolInfo& leg)
{
    using namespace Cells;
    const QString buyTip = halfTip(leg.buyOrderQty(), leg.buyDealQty(), leg.buyCloseQty(),
                                   leg.buyCancelQty(), leg.buyFee());
    const QString sellTip = halfTip(leg.sellOrderQty(), leg.sellDealQty(), leg.sellCloseQty(),
                                    leg.sellCancelQty(), leg.sellFee());
    row[Column::BuyFilledColumn] = quantity(leg.buyDealQty(), buyTip);
    row[Column::BuyAvgPriceColumn] = price(leg.buyAvgPrice(), buyTip);
    row[Column::SellFilledColumn] = quantity(leg.sellDealQty(), sellTip);
    row[Column::SellAvgPriceColumn] = price(leg.sellAvgPrice(), sellTip);
    row[Column::FeeColumn] = amount(leg.buyFee() + leg.sellFee());
    row[Column::AchievedProfitColumn] = amount(leg.achieveProfit());
    row[Column::FloatingProfitColumn] = amount(
        leg.profitAmount(), QStringLiteral("Marked to the latest price by the profit timer"));
}

} // namespace

QStringList legColumnHeaders()
{
    QStringList headers;
    for (const char* header :
         {"Symbol", "Side", "Status", "Progress", "Target", "Filled", "Avg price", "Deal amount",
          "Entrusted", "Entrust progress", "Last order", "Buy filled", "Buy avg", "Sell filled",
          "Sell avg", "Fees", "Realised P&L", "Floating P&L", "Queue ahead", "Orders ahead",
          "Queue position", "Same-qty orders", "Info"})
        headers.append(QLatin1String(header));
    Q_ASSERT(headers.size() == SymbolTableModel::ColumnCount);
    return headers;
}

SnapshotTableModel::Row readLegRow(const InstanceInfoBase& owner, const SymbolInfoBase& leg)
{
    using namespace Cells;
    SnapshotTableModel::Row row(SymbolTableModel::ColumnCount);
    row[Column::SymbolColumn] =
        text(leg.symbol(), describe({{"Key", leg.getKey()},
                                     {"Exchange", leg.exchange()},
                                     {"Trading account", leg.getTradingAccount()},
                                     {"Fund account", leg.getFundAccount()},
                                     {"Fund account name", leg.getFundAccountName()},
                                     {"Securities account", leg.getSecurityAccout()},
                                     {"Entrust property", leg.entrustProp()},
                                     {"Limit price", leg.limitPrice()},
                                     {"Parent order", leg.getClParentID()}}));
    // The side word as the instance derives it for the leg's symbol; the code sorts.
    SnapshotCell side = text(owner.getOrderSide(leg.symbol()),
                             describe({{"Side code", leg.orderSide()}}));
    side.value = leg.orderSide();
    row[Column::SideColumn] = side;
    const bool deleted = leg.getDeleteFlag() == QLatin1String("1");
    row[Column::StatusColumn] =
        status(leg.getStatus(), deleted ? QStringLiteral("Leg deleted") : QString());
    row[Column::TargetColumn] =
        quantity(leg.targetQty(), describe({{"Target amount", quantityText(leg.targetAmount())}}));
    row[Column::FilledColumn] = quantity(leg.filledQty());
    const QString progressTip = describe({{"By quantity", ratioText(leg.progress())},
                                          {"By amount", ratioText(leg.amoutDealProgress())}});
    row[Column::ProgressColumn] = ratio(leg.standardProgress(), progressTip);
    row[Column::EntrustColumn] = quantity(
        leg.entrustQty(), describe({{"Entrusted amount", quantityText(leg.entrustAmount())}}));
    row[Column::EntrustProgressColumn] =
        ratio(leg.entrustProgress(),
              describe({{"By amount", ratioText(leg.amountEntrustProgress())}}));
    row[Column::AvgPriceColumn] = price(leg.dealAvgPrice());
    row[Column::DealAmountColumn] = amount(leg.dealBalance());
    const QString entrustTime = leg.getEntrustTime();
    row[Column::EntrustTimeColumn] =
        text(entrustTime == QLatin1String("-") ? QString() : entrustTime);

    if (const auto* t0 = dynamic_cast<const T0SymbolInfo*>(&leg))
        fillT0(row, *t0);
    row[Column::FrontQtyColumn] = queueFigure(leg.getFrontQty());
    row[Column::FrontOrderNumColumn] = queueFigure(leg.getFrontOrderNum());
    row[Column::FrontPositionColumn] = queueFigure(leg.getFrontPosition());
    row[Column::SameQtyOrderCntColumn] = queueFigure(leg.getSameQtyOrderCnt());
    const QString tip = leg.getTipMsg();
    const QString other = leg.getOrtherInfo();
    row[Column::InfoColumn] = text(tip.isEmpty() ? other : tip,
                                   describe({{"Tip", tip}, {"Other information", other}}));
    return row;
}

} // namespace AlgoLogic
