#pragma once

// The instance class of multi-strategy (basis / pair) algos: one instance
// trades two symbol lists against each other on a basis, in batches, possibly
// across several trading accounts. Besides the base record it keeps the
// pair's running state as the algo reports it and the plan fields.
//
// Progress arrives as JSON text, from the detail query (an array whose first
// object is the snapshot) or as a push (a batch of objects). A snapshot is
// applied only when its update counter has not gone backwards.

#include "instance/instanceinfobase.h"

class ALGOLOGIC_EXPORT MultiInstanceInfo : public InstanceInfoBase
{
public:
    MultiInstanceInfo();
    MultiInstanceInfo(const MultiInstanceInfo& other);
    MultiInstanceInfo(MultiInstanceInfo&& other);
    MultiInstanceInfo& operator=(const MultiInstanceInfo& other);
    MultiInstanceInfo& operator=(MultiInstanceInfo&& other);
    ~MultiInstanceInfo() override;

    // The progress push through the one-argument form: lameness flag false.
    void OnRecvInstProgressInfo(const QList<QString>& reports) override;
    // The progress push: each text one JSON object. An unreadable text, an
    // update time older than one seen earlier in the batch, or a stale
    // counter ends the batch without signal; a clean batch ends with one
    // signalMultiProgressUpdated. `changed` is not used.
    void OnRecvInstProgressInfo(const QList<QString>& reports, const bool& lamenessFlag,
                                QMap<QString, QList<QString>>& changed) override;
    // The base refresh, then the metadata as a progress text.
    void OnRect_QueryAlgoStrategyResponse_Detail(const VariantMap& record) override;
    // Applies an acknowledged modification and re-runs the pair initialisation.
    void OnRecv_InstModifyPush(const VariantMapList& records) override;
    // The base parsing, then the basis comparison of the plan.
    void UpdateParamMap(const QString& params) override;
    // The base initialisation, then the execution status.
    void initInfo(VariantMap record) override;
    // The plan: basis side and effect, order quantities, trading accounts,
    // valid time ranges. `legStates` is not read.
    void initSymbolInfo(const VariantMap& content, const VariantMap& legStates) override;

    // Applies one progress text (a JSON array; its first object is the
    // snapshot). Returns the instance ID when applied, an empty text when the
    // text is unreadable, empty or stale.
    QString fillMultiProgressReport(const QString& json);

    QString getMultiExecStatus() const { return m_multiExecStatus; }
    void setMultiExecStatus(const QString& status) { m_multiExecStatus = status; }
    QString getMultiTradeStatus() const { return m_multiTradeStatus; }
    void setMultiTradeStatus(const QString& status) { m_multiTradeStatus = status; }
    QString getMultiOpenOrClose() const { return m_multiOpenOrClose; }
    void setMultiOpenOrClose(const QString& effect) { m_multiOpenOrClose = effect; }
    QString getMultiTradeSide() const { return m_multiTradeSide; }
    void setMultiTradeSide(const QString& side) { m_multiTradeSide = side; }
    QString getMultiRatio() const { return m_multiRatio; }
    void setMultiRatio(const QString& ratio) { m_multiRatio = ratio; }
    QString getMultiOrderQty() const { return m_multiOrderQty; }
    void setMultiOrderQty(const QString& qty) { m_multiOrderQty = qty; }
    QString getMultiFilledQty() const { return m_multiFilledQty; }
    void setMultiFilledQty(const QString& qty) { m_multiFilledQty = qty; }
    QString getMultiProgress() const { return m_multiProgress; }
    void setMultiProgress(const QString& progress) { m_multiProgress = progress; }
    double getMultiBatch() const { return m_multiBatch; }
    void setMultiBatch(const double& batch) { m_multiBatch = batch; }
    QString getMultiOpenQty() const { return m_multiOpenQty; }
    void setMultiOpenQty(const QString& qty) { m_multiOpenQty = qty; }
    QString getMultiLamenessRate() const { return m_multiLamenessRate; }
    void setMultiLamenessRate(const QString& rate) { m_multiLamenessRate = rate; }
    bool getMultiLamenessState() const { return m_multiLamenessState; }
    void setMultiLamenessState(const bool& state) { m_multiLamenessState = state; }
    bool getMultiLamenessFlag() const { return m_multiLamenessFlag; }
    void setMultiLamenessFlag(const bool& flag) { m_multiLamenessFlag = flag; }
    // Refuses (false) a counter below the stored one; an equal one is taken.
    int getMultiUpdateCnt() const { return m_multiUpdateCnt; }
    bool setMultiUpdateCnt(int count);
    double getMultiTargetQty() const { return m_multiTargetQty; }
    void setMultiTargetQty(const double& qty) { m_multiTargetQty = qty; }
    double getMultiTotalQty() const { return m_multiTotalQty; }
    void setMultiTotalQty(const double& qty) { m_multiTotalQty = qty; }
    double getMultiRealBasis() const { return m_multiRealBasis; }
    void setMultiRealBasis(const double& basis) { m_multiRealBasis = basis; }
    double getMultiExpectBasis() const { return m_multiExpectBasis; }
    void setMultiExpectBasis(const double& basis) { m_multiExpectBasis = basis; }
    QString getMultiBasisCompare() const { return m_multiBasisCompare; }
    void setMultiBasisCompare(const QString& compare) { m_multiBasisCompare = compare; }
    QStringList getMultiValidTime() const { return m_multiValidTime; }
    void setMultiValidTime(const QStringList& ranges) { m_multiValidTime = ranges; }
    QStringList getMultiTradingAccountLst() const { return m_multiTradingAccountLst; }
    void setMultiTradingAccountLst(const QStringList& accounts)
    {
        m_multiTradingAccountLst = accounts;
    }

private:
    struct Snapshot;
    // Stores a snapshot's fields; `lamenessFlag` as given.
    void applySnapshot(const Snapshot& snapshot, bool lamenessFlag);

    QString m_multiExecStatus;
    QString m_multiTradeStatus;
    QString m_multiOpenOrClose;
    QString m_multiTradeSide;
    QString m_multiRatio;
    QString m_multiOrderQty;
    QString m_multiFilledQty;
    QString m_multiProgress;
    double m_multiBatch = 0.0;
    QString m_multiOpenQty;
    QString m_multiLamenessRate;
    bool m_multiLamenessState = false;
    bool m_multiLamenessFlag = false;
    int m_multiUpdateCnt = 0;
    double m_multiTargetQty = 0.0;
    double m_multiTotalQty = 0.0;
    double m_multiRealBasis = 0.0;
    double m_multiExpectBasis = 0.0;
    QString m_multiBasisCompare;
    QStringList m_multiValidTime;
    QStringList m_multiTradingAccountLst;
};
