#pragma once

// One security leg ("symbol") of an algo instance: the security, its side and
// target, how far the algo has got with it, the accounts it trades on, its
// status and delete flag, and the last progress report received for it.
//
// A plain value type with a virtual interface: copyable (every member is
// copied, the report map by implicit sharing), with two virtual hooks that
// T0SymbolInfo overrides. Not thread-safe by itself: every access happens under
// the library-wide instance-content lock (InstanceMgr::getLocker()).

#include "common/algologicglobal.h"
#include "platform/varianttypes.h"

#include <QString>

class ALGOLOGIC_EXPORT SymbolInfoBase
{
public:
    SymbolInfoBase();
    SymbolInfoBase(const SymbolInfoBase& other) = default;
    SymbolInfoBase& operator=(const SymbolInfoBase& other) = default;
    virtual ~SymbolInfoBase();

    // Applies one progress report of this leg (fields converted to double,
    // missing ones read as 0). Filled quantity, dealt amount and amount-deal
    // progress never go backwards; entrust figures and the average price may.
    virtual void updateBySingleProgressReport(VariantMap report);

    // One per-symbol record of a progress-gather answer. Does nothing here;
    // T0 legs override it.
    virtual void OnRecvSymbolProgressGatherInfo(const VariantMap& info);

    // The progress shown for the leg: the amount-deal progress for the
    // amount-driven algos of StandardProgressAlgoNames, the quantity progress
    // otherwise.
    double standardProgress() const;

    // Merges `report` into the last-report map: every key of the report is
    // inserted or overwritten, keys it lacks keep their earlier values.
    void updateLastReportMap(const VariantMap& report);

    QString getKey() const { return m_key; }
    void setKey(QString key);

    QString symbol() const { return m_symbol; }
    void setSymbol(const QString& symbol);

    QString exchange() const { return m_exchange; }
    void setExchande(QString exchange);

    QString orderSide() const { return m_orderSide; }
    void setOrderSide(QString side);

    QString entrustProp() const { return m_entrustProp; }
    void setEntrustProp(QString prop);

    double targetQty() const { return m_targetQty; }
    void setTargetQty(double qty);

    // Monotonic: a value below the stored one is logged and refused.
    double filledQty() const { return m_filledQty; }
    void setFilledQty(double qty);

    // A value below the stored one is logged but stored all the same.
    double progress() const { return m_progress; }
    void setProgress(double progress);

    QString limitPrice() const { return m_limitPrice; }
    void setLimitPrice(QString price);

    QString instanceID() const { return m_instanceID; }
    void setInstanceID(const QString& id);

    double entrustQty() const { return m_entrustQty; }
    void setEntrustQty(double qty);

    double entrustProgress() const { return m_entrustProgress; }
    void setEntrustProgress(double progress);

    double dealAvgPrice() const { return m_dealAvgPrice; }
    void setDealAvgPrice(double price);

    // Monotonic like setFilledQty.
    double dealBalance() const { return m_dealBalance; }
    void setDealBalance(double balance);

    double minEntrustProgress() const { return m_minEntrustProgress; }
    void setMinEntrustProgress(double progress);

    double maxEntrustProgress() const { return m_maxEntrustProgress; }
    void setMaxEntrustProgress(double progress);

    double minProgress() const { return m_minProgress; }
    void setMinProgress(double progress);

    double maxProgress() const { return m_maxProgress; }
    void setMaxProgress(double progress);

    // Logs the old and new text at debug level, then stores.
    QString getOrtherInfo() const { return m_ortherInfo; }
    void setOrtherInfo(QString info);

    // "HH:mm:ss" of the last order, "-" until one is known.
    QString getEntrustTime() const { return m_entrustTime; }
    void setEntrustTime(const QString& time);

    // A parent id once known is never cleared: an empty id is ignored when
    // one is stored.
    QString getClParentID() const { return m_clParentID; }
    void setClParentID(const QString& id);

    // Guarded leg status: returns false for no change and for a refused
    // transition. A leg never leaves "2" or "5", and never goes from "0" or
    // "1" straight to "3".
    QString getStatus() const { return m_status; }
    bool setStatus(const QString& status);

    // Sticky deletion: "0" after "1" is ignored.
    QString getDeleteFlag() const { return m_deleteFlag; }
    void setDeleteFlag(const QString& flag);

    // An empty account is ignored. Otherwise stores it and, when the business
    // data knows it, derives the fund account and its name from the first
    // entry of its account list.
    QString getTradingAccount() const { return m_tradingAccount; }
    void setTradingAccount(const QString& account);

    QString getFundAccount() const { return m_fundAccount; }
    void setFundAccount(const QString& account);

    QString getFundAccountName() const { return m_fundAccountName; }
    void setFundAccountName(const QString& name);

    QString getSecurityAccout() const { return m_securityAccout; }
    void setSecurityAccout(const QString& account);

    QString strategyName() const { return m_strategyName; }
    void setStrategyName(QString name);

    double targetAmount() const { return m_targetAmount; }
    void setTargetAmount(double amount);

    double entrustAmount() const { return m_entrustAmount; }
    void setEntrustAmount(double amount);

    double amountEntrustProgress() const { return m_amountEntrustProgress; }
    void setAmountEntrustProgress(double progress);

    // Monotonic; the getter/setter names are uneven on purpose.
    double amoutDealProgress() const { return m_amoutDealProgress; }
    void setAmountDealProgress(double progress);

    QString getTipMsg() const { return m_tipMsg; }
    void setTipMsg(const QString& msg);

    // Queue-position figures; -1 means unknown. Only rush-limit-up progress
    // writes them.
    double getFrontQty() const { return m_frontQty; }
    void setFrontQty(double qty);

    int getFrontOrderNum() const { return m_frontOrderNum; }
    void setFrontOrderNum(int num);

    double getFrontPosition() const { return m_frontPosition; }
    void setFrontPosition(double position);

    int getSameQtyOrderCnt() const { return m_sameQtyOrderCnt; }
    void setSameQtyOrderCnt(int count);

    VariantMap getLastReportMap() const { return m_lastReportMap; }
    void setLastReportMap(const VariantMap& report);

private:
    QString m_key;
    QString m_symbol;
    QString m_exchange;
    QString m_orderSide;
    QString m_entrustProp;
    double m_targetQty = 0.0;
    double m_filledQty = 0.0;
    double m_progress = 0.0;
    QString m_limitPrice;
    QString m_instanceID;
    double m_entrustQty = 0.0;
    double m_entrustProgress = 0.0;
    double m_dealAvgPrice = 0.0;
    double m_dealBalance = 0.0;
    double m_minEntrustProgress = 0.0;
    double m_maxEntrustProgress = 0.0;
    double m_minProgress = 0.0;
    double m_maxProgress = 0.0;
    QString m_ortherInfo;
    QString m_entrustTime;
    QString m_clParentID;
    QString m_status;
    QString m_deleteFlag;
    QString m_tradingAccount;
    QString m_fundAccount;
    QString m_fundAccountName;
    QString m_securityAccout;
    QString m_strategyName;
    double m_targetAmount = 0.0;
    double m_entrustAmount = 0.0;
    double m_amountEntrustProgress = 0.0;
    double m_amoutDealProgress = 0.0;
    QString m_tipMsg;
    double m_frontQty = -1.0;
    int m_frontOrderNum = -1;
    double m_frontPosition = -1.0;
    int m_sameQtyOrderCnt = -1;
    VariantMap m_lastReportMap;
};
