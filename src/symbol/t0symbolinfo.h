#pragma once

// The leg of a T0 (intraday round-trip) instance. Besides the base leg it
// keeps the buy and sell halves of the round trip separately (ordered, dealt,
// closed and cancelled quantity, average price, amount, fee) plus the realised
// and the marked-to-market profit.
//
// Both feeds (progress-gather records and single progress reports) first
// refuse stale data whole: a record whose dealt or cancelled quantity is below
// what the leg holds changes nothing. Same threading rules as SymbolInfoBase.

#include "symbol/symbolinfobase.h"

class ALGOLOGIC_EXPORT T0SymbolInfo : public SymbolInfoBase
{
public:
    T0SymbolInfo();
    T0SymbolInfo(const T0SymbolInfo& other) = default;
    T0SymbolInfo& operator=(const T0SymbolInfo& other) = default;
    ~T0SymbolInfo() override;

    // One progress report: refused whole when stale; otherwise the base part
    // is applied, then the buy half when the report carries buyOrderQty, the
    // sell half when it carries sellOrderQty, and always the achieved profit.
    void updateBySingleProgressReport(VariantMap report) override;

    // One per-symbol record of the T0 progress-gather answer. A record without
    // symbol or a stale one changes nothing. Close quantities are not touched.
    void OnRecvSymbolProgressGatherInfo(const VariantMap& info) override;

    QString buyType() const { return m_buyType; }
    void setBuyType(QString type);

    QString sellType() const { return m_sellType; }
    void setSellType(QString type);

    QString comment() const { return m_comment; }
    void setComment(QString comment);

    QString endDate() const { return m_endDate; }
    void setEndDate(QString date);

    double buyOrderQty() const { return m_buyOrderQty; }
    void setBuyOrderQty(double qty);

    // Guarded: refuses a value more than 1e-10 below the stored one.
    double buyDealQty() const { return m_buyDealQty; }
    void setBuyDealQty(double qty);

    double buyCloseQty() const { return m_buyCloseQty; }
    void setBuyCloseQty(double qty);

    double buyAvgPrice() const { return m_buyAvgPrice; }
    void setBuyAvgPrice(double price);

    // Guarded like setBuyDealQty.
    double buyAmount() const { return m_buyAmount; }
    void setBuyAmount(double amount);

    double buyCancelQty() const { return m_buyCancelQty; }
    void setBuyCancelQty(double qty);

    double sellOrderQty() const { return m_sellOrderQty; }
    void setSellOrderQty(double qty);

    // Guarded like setBuyDealQty.
    double sellDealQty() const { return m_sellDealQty; }
    void setSellDealQty(double qty);

    double sellCloseQty() const { return m_sellCloseQty; }
    void setSellCloseQty(double qty);

    double sellAvgPrice() const { return m_sellAvgPrice; }
    void setSellAvgPrice(double price);

    // Guarded like setBuyDealQty.
    double sellAmount() const { return m_sellAmount; }
    void setSellAmount(double amount);

    double sellCancelQty() const { return m_sellCancelQty; }
    void setSellCancelQty(double qty);

    // Profit marked to the latest price; written by the registry's profit timer.
    double profitAmount() const { return m_profitAmount; }
    void setProfitAmount(double amount);

    double achieveProfit() const { return m_achieveProfit; }
    void setAchieveProfit(double profit);

    double buyFee() const { return m_buyFee; }
    void setBuyFee(double fee);

    double sellFee() const { return m_sellFee; }
    void setSellFee(double fee);

private:
    // The staleness test shared by both feeds. False (with `error` set) when
    // the record carries a side's order quantity and that side's dealt or
    // cancelled quantity is below the stored one.
    bool isLastReportData(const VariantMap& report, QString& error) const;

    QString m_buyType;
    QString m_sellType;
    QString m_comment;
    QString m_endDate;
    double m_buyOrderQty = 0.0;
    double m_buyDealQty = 0.0;
    double m_buyCloseQty = 0.0;
    double m_buyAvgPrice = 0.0;
    double m_buyAmount = 0.0;
    double m_buyCancelQty = 0.0;
    double m_sellOrderQty = 0.0;
    double m_sellDealQty = 0.0;
    double m_sellCloseQty = 0.0;
    double m_sellAvgPrice = 0.0;
    double m_sellAmount = 0.0;
    double m_sellCancelQty = 0.0;
    double m_profitAmount = 0.0;
    double m_achieveProfit = 0.0;
    double m_buyFee = 0.0;
    double m_sellFee = 0.0;
};
