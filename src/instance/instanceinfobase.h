#pragma once

// The in-memory record of one algo strategy instance and the base of every
// instance class: identity, status, parameters, progress figures, times,
// display texts, and the instance's security legs, which it owns.
//
// Not thread-safe by itself: the registry (InstanceMgr) serialises access with
// the library-wide instance-content lock. Readers take it for reading, every
// handler that changes an instance runs with it held for writing.

#include "common/algologicglobal.h"
#include "common/logging.h"
#include "platform/varianttypes.h"
#include "symbol/symbolinfobase.h"

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

class ALGOLOGIC_EXPORT InstanceInfoBase
{
public:
    InstanceInfoBase();
    // Default-constructs, then copy-assigns (legs deep-copied by class tag).
    InstanceInfoBase(const InstanceInfoBase& other);
    // Copies every member, then rebuilds the legs as deep copies whose class
    // follows the (copied) class tag: "info" and "Multi" make SymbolInfoBase
    // legs, "T0" makes T0SymbolInfo legs, any other tag copies no legs. The
    // legs held before are deleted.
    InstanceInfoBase& operator=(const InstanceInfoBase& other);
    // Deletes every leg the instance holds.
    virtual ~InstanceInfoBase();

    // ---- handlers, in virtual-table order --------------------------------
    // All are called by the registry's routers with the content lock held
    // for writing (or before the instance is shared). Subclasses override
    // them to read their algo family's records.

    // Progress report texts of a strategy report response: record 0 is a
    // header, the others carry one report text each.
    virtual void OnRecv_StrategyReportResponse(const VariantMapList& records);
    // Progress report texts of this instance (JSON objects, one per leg).
    virtual void OnRecvInstProgressInfo(const QList<QString>& reports);
    // As above; records the changed leg keys in `updatedByInstance` under
    // this instance's ID. The base ignores `flag`.
    virtual void OnRecvInstProgressInfo(const QList<QString>& reports, const bool& flag,
                                        QMap<QString, QList<QString>>& updatedByInstance);
    // Progress-gather answer: record 0 names the instance, each further
    // record carries one security's progress.
    virtual void OnRecv_StrategyProgressGatherResponse(const VariantMapList& records);
    // One record of a query answer. Returns change flags: bit 0 a time
    // changed, bit 1 the displayed data (status) changed.
    virtual int OnRecv_QueryAlgoStrategyResponse(const VariantMap& record, bool isNew);
    // Refreshes a known instance from a detail record.
    virtual void OnRect_QueryAlgoStrategyResponse_Detail(const VariantMap& record);
    // Status push: record 0 is the instance, further records are legs.
    virtual void OnRecv_InstStatusUpdate(const VariantMapList& records);
    // Acknowledgement of a modification of the instance's parameters.
    virtual void OnRecv_InstModifyPush(const VariantMapList& records);
    // Ignores the record and marks the instance deleted.
    virtual void OnRecv_DeleteAlgoInstanceResponse(const VariantMap& record);
    // Parses the parameter text into the parameter-derived display fields.
    virtual void UpdateParamMap(const QString& params);
    // Fills the instance from its first full server record.
    virtual void initInfo(VariantMap record);
    // Builds the legs: `record` holds the security list, `params` the
    // per-leg results keyed by symbol key.
    virtual void initSymbolInfo(const VariantMap& record, const VariantMap& params);

    // ---- status and progress rules ---------------------------------------

    // Guarded transition; false when unchanged or refused. "2" and "5" are
    // never left, "0" and "1" never go straight to "3".
    QString status() const { return m_status; }
    bool setStatus(const QString& status);

    // True in the final statuses COMPLETE and STOP.
    bool isFinalStatus() const;

    // The progress the user interface shows: the amount progress for the
    // amount-driven algos of StandardProgressAlgoNames, else the quantity
    // progress.
    double standardProgress() const;

    // Quantity progress: a regression is logged as a warning but stored.
    double progrees() const { return m_progrees; }
    void setProgrees(double progress);

    // A regression is logged as a warning and refused.
    double filledQty() const { return m_filledQty; }
    void setFilledQty(double qty);

    // A regression is logged as a warning and refused.
    double filledBalance() const { return m_filledBalance; }
    void setFilledBalance(double balance);

    // A regression is logged (with the quantity-progress text) and refused.
    double amountProgress() const { return m_amountProgress; }
    void setAmountProgress(double progress);

    // Derives the mode from the catalogue when none is set: single-security
    // algos are "single", the others "multi".
    QString getInstMode();
    void setInstMode(QString mode);

    // Grid strategies default an empty trade order to "All".
    QString getInstanceTradeOrder() const { return m_instanceTradeOrder; }
    void setInstanceTradeOrder(const QString& order);

    // The report format of this instance in the strategy catalogue.
    QString reportFmt() const;

    // ---- parameter texts ---------------------------------------------------

    // The value of `key` in the JSON object `json`, as text; empty when the
    // key is absent or the text is not JSON (logged).
    QString getParamFromJosn(const QString& json, const QString& key);
    // "orderInfo-basePrice" from a metadata text that is a JSON array of
    // objects; empty for any other text.
    QString fillMetaData(const QString& metaData);

    // ---- legs --------------------------------------------------------------

    // Stores `leg` under its own getKey() and takes ownership. A leg already
    // stored under that key is replaced but kept alive until the instance is
    // destroyed, so pointers handed out earlier stay valid.
    void AddSymbolInfo(SymbolInfoBase* leg);
    // The leg stored under `key`, or null.
    SymbolInfoBase* getSymbolInfo(const QString& key) const;
    int getSymbolSize() const;
    // symbol() of every leg, in key order.
    QStringList GetAllSymbolNames() const;
    // Every leg whose dynamic type is T, in key order.
    template <typename T>
    QList<T*> GetAllSymbols_Ptr() const;
    // The first leg's symbol and side; untouched outputs when there is none.
    void getOneSymbol(QString& symbol, QString& orderSide) const;

    // ---- display derivations ---------------------------------------------
    // Texts for the user interface, built from the legs and the last server
    // record. Several values are joined with ",".

    // Side words ("Buy", "Sell", "Antirepo", or the code as given) of the
    // legs of `symbol` (all legs when it is empty).
    QString getOrderSide(const QString& symbol) const;
    QString getOrderSide_Inst() const;
    QString getEntrustProp_Inst() const;
    // The target as text: the amount for amount-driven algos, else the quantity.
    QString getEntrustQtyStr() const;
    QString getTradingAccount() const;
    QString getFundAccount() const;
    QString getFundAccountName() const;
    QString getStockAccount() const;
    QString getProductName() const;

    // ---- plain accessors ---------------------------------------------------

    QString instAlgoType() const { return m_instAlgoType; }
    void setInstAlgoType(const QString& type);

    QString instanceID() const { return m_instanceID; }
    void setInstanceID(const QString& id);

    QString clInstanceID() const { return m_clInstanceID; }
    void setclInstanceID(const QString& id) { m_clInstanceID = id; }

    QString strategyName() const { return m_strategyName; }
    void setStrategyName(const QString& name);

    // Stores the text, then calls UpdateParamMap with it.
    QString params() const { return m_params; }
    void setParams(const QString& params);

    QString instanceAlias() const { return m_instanceAlias; }
    void setInstanceAlias(const QString& alias) { m_instanceAlias = alias; }

    QString getMarketRate() const { return m_marketRate; }
    void setMarketRate(QString rate) { m_marketRate = rate; }

    double targetQty() const { return m_targetQty; }
    void setTargetQty(double qty) { m_targetQty = qty; }

    double avgPrice() const { return m_avgPrice; }
    void setAvgPrice(double price) { m_avgPrice = price; }

    QString remark() const { return m_remark; }
    void setRemark(const QString& remark) { m_remark = remark; }

    QDateTime startTime() const { return m_startTime; }
    void setStartTime(const QDateTime& time) { m_startTime = time; }

    QDateTime modifyTime() const { return m_modifyTime; }
    void setModifyTime(const QDateTime& time) { m_modifyTime = time; }

    QDateTime endTime() const { return m_endTime; }
    void setEndTime(const QDateTime& time) { m_endTime = time; }

    QDateTime getCreateTime() const { return m_createTime; }
    void setCreateTime(const QDateTime& time) { m_createTime = time; }

    QDateTime startDateTime() const { return m_startDateTime; }
    QDateTime endDateTime() const { return m_endDateTime; }
    QString runTimeInParam() const { return m_runTimeInParam; }

    double minProgress() const { return m_minProgress; }
    void setMinProgress(double progress) { m_minProgress = progress; }

    double maxProgress() const { return m_maxProgress; }
    void setMaxProgress(double progress) { m_maxProgress = progress; }

    QString smpProgress() const { return m_smpProgress; }
    void setSmpProgress(const QString& progress) { m_smpProgress = progress; }

    QString getInstanceComments() const { return m_instanceComments; }
    void setInstanceComments(const QString& comments) { m_instanceComments = comments; }

    QString getResultInfo() const { return m_resultInfo; }
    void setResultInfo(const QString& info) { m_resultInfo = info; }

    // The cached display texts; when empty the getters derive them.
    QString getTradingAccount_Inst() const;
    void setTradingAccount_Inst(QString account) { m_tradingAccount_Inst = account; }
    QString getFundAccount_Inst() const;
    void setFundAccount_Inst(QString account) { m_fundAccount_Inst = account; }
    QString getFundAccountName_Inst() const;
    void setFundAccountName_Inst(QString name) { m_fundAccountName_Inst = name; }
    QString getProductName_Inst() const;
    void setProductName_Inst(QString name) { m_productName_Inst = name; }

    QString getOpenSide() const { return m_openSide; }
    void setOpenSide(const QString& side) { m_openSide = side; }

    QString getInvestType() const { return m_investType; }
    void setInvestType(const QString& type) { m_investType = type; }

    bool finalProgress() const { return m_finalProgress; }
    void setFinalProgress(const bool& final) { m_finalProgress = final; }

    QStringList getSymbolList() const { return m_symbolList; }
    void setSymbolList(const QStringList& symbols) { m_symbolList = symbols; }

    QStringList getSymbolTradingAccountList() const { return m_symbolTradingAccountList; }
    void setSymbolTradingAccountList(const QStringList& accounts)
    {
        m_symbolTradingAccountList = accounts;
    }

    double targetAmount() const { return m_targetAmount; }
    void setTargetAmount(double amount) { m_targetAmount = amount; }

    QString getContinueTrade() const { return m_continueTrade; }
    QString getCreateStart() const { return m_createStart; }
    QString getEndDate() const { return m_endDate; }

    QString getMemory() const { return m_memory; }
    void setMemory(QString memory) { m_memory = memory; }

    double getCPU() const { return m_CPU; }
    void setCPU(double cpu) { m_CPU = cpu; }

    QString getStrategyDeleted() const { return m_strategyDeleted; }
    void setStrategyDeleted(const QString& deleted);

    // "info", "Multi" or "T0"; decides the leg class of a copy.
    QString getClassType() const { return m_classType; }
    void setClassType(const QString& type) { m_classType = type; }

    QString getBasePrice() const { return m_basePrice; }
    void setBasePrice(const QString& price) { m_basePrice = price; }

    QString getCreateUser() const { return m_createUser; }
    void setCreateUser(const QString& user);

protected:
    // Tells the registry's query index that the instance ID, algo type,
    // creator, strategy name or deleted flag may have changed. The library
    // calls it wherever it writes those members (the setters above included);
    // a subclass that writes them itself must call it too, before the
    // content lock it writes under is released. (Handlers that the routers
    // call are watched by the routers as well.)
    void noteFilterFieldsChanged() const;

    // The instance-level fields of record 0 of a status or modify push.
    struct PushHeader
    {
        QString status;
        QString alterComment;
        bool hasAlterComment = false;
        QString ack;
        QString alias;
        QString params;

        static PushHeader read(const VariantMap& record);
    };

    // Raises InstanceMgr::signalModifyPush for this instance, after the
    // router's write lock when called inside one.
    void notifyModifyPush(const QString& ack, const QString& comment) const;

    // Comments, mode, market rate, open side and invest type (and, when
    // asked, the trade order) from the parameter text m_params.
    void applyParamDerivedFields(bool withTradeOrder);

    // Takes a new, non-empty parameter text: stores it, runs UpdateParamMap,
    // then the mode, market rate, open side, invest type and comments.
    void takeParameters(const QString& paras);
    // False, with a warning naming `function`, when the symbol or side
    // contains "_", the separator of symbol keys: such a leg could never be
    // found again by its key.
    bool keyPartsUsable(const char* function, const QString& symbol,
                        const QString& side = QString()) const;
    // The leg of `symbol` and `side`, created and added (owned by the
    // instance) when the instance lacks it.
    SymbolInfoBase* findOrAddLeg(const QString& symbol, const QString& side);

    // AlgStartTime and AlgEndTime of a push ("yyyyMMdd-hh:mm:ss") into the
    // start and end times; an absent or unreadable time keeps the stored one.
    void applyPushTimes(const VariantMap& record);

    // Applies progress report texts to the legs of `instanceID`; within the
    // batch an older report of a symbol and side never overwrites a newer
    // one. Returns the symbol keys of the legs updated.
    QList<QString> parseSymbolProgressReport(const QString& instanceID,
                                             const QList<QString>& reports);
    // Recomputes the instance's targets, fills and progress from its legs.
    void parseInsPorgressReport();

    // Distinct non-empty values of `field` over the legs, in key order.
    template <typename Field>
    QStringList distinctLegValues(Field field) const;

    // Members in declaration order; the handlers of the subclasses and of the
    // initialisation, progress and status flows write them directly.
    QString m_instAlgoType;
    QString m_instanceID;
    QString m_clInstanceID;
    QString m_strategyName;
    QString m_params;
    QString m_status;
    QString m_instanceAlias;
    VariantMap m_dataMap;
    QString m_instMode;
    QString m_marketRate;
    double m_targetQty = 0.0;
    double m_progrees = 0.0;
    double m_filledQty = 0.0;
    double m_filledBalance = 0.0;
    double m_avgPrice = 0.0;
    QString m_remark;
    QDateTime m_startTime;
    QDateTime m_modifyTime;
    QDateTime m_endTime;
    QDateTime m_createTime;
    QDateTime m_startDateTime;
    QDateTime m_endDateTime;
    QString m_runTimeInParam;
    double m_minProgress = 0.0;
    double m_maxProgress = 0.0;
    QString m_smpProgress;
    QString m_instanceComments;
    QString m_instanceTradeOrder;
    QString m_resultInfo;
    QString m_tradingAccount_Inst;
    QString m_fundAccount_Inst;
    QString m_fundAccountName_Inst;
    QString m_productName_Inst;
    QString m_openSide;
    QString m_investType;
    bool m_finalProgress = false;
    QStringList m_symbolList;
    QStringList m_symbolTradingAccountList;
    double m_targetAmount = 0.0;
    double m_amountProgress = 0.0;
    QString m_continueTrade;
    QString m_createStart;
    QString m_endDate;
    QString m_memory;
    double m_CPU = 0.0;
    QString m_strategyDeleted;
    // Owned; keyed by each leg's own getKey().
    QMap<QString, SymbolInfoBase*> m_symbolMap;
    QString m_classType;
    QString m_basePrice;
    QString m_createUser;

private:
    // Deletes every leg held in m_symbolMap and m_replacedLegs, each once.
    void deleteLegs();

    // Legs displaced by AddSymbolInfo under an existing key; owned, freed
    // with the instance.
    QList<SymbolInfoBase*> m_replacedLegs;
};

template <typename T>
QList<T*> InstanceInfoBase::GetAllSymbols_Ptr() const
{
    QList<T*> result;
    for (auto it = m_symbolMap.cbegin(); it != m_symbolMap.cend(); ++it) {
        if (!it.value()) {
            qCDebug(lcAlgoInstance).noquote() << "InstanceInfoBase::GetAllSymbols_Ptr"
                                              << "symbolInfo is null" << it.key();
            continue;
        }
        if (T* leg = dynamic_cast<T*>(it.value()))
            result.append(leg);
    }
    return result;
}

template <typename Field>
QStringList InstanceInfoBase::distinctLegValues(Field field) const
{
    QStringList values;
    for (const SymbolInfoBase* leg : m_symbolMap) {
        if (!leg)
            continue;
        const QString value = (leg->*field)();
        if (!value.isEmpty() && !values.contains(value))
            values.append(value);
    }
    return values;
}
