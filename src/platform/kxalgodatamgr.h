#pragma once

// The terminal's business-data manager for algos: the strategy catalogue (one
// AesStrategy per algo name) and the authority table (which algos each account
// may use). The library reads it through StrategyMgr; the host feeds it with
// setStrategies() and setAuthority().
//
// Thread-safe: every operation may be called from any thread. Signals are
// emitted in the thread of the host-side setter, after the internal lock has
// been released.

#include "common/algologicglobal.h"
#include "platform/aesstrategy.h"
#include "platform/varianttypes.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QReadWriteLock>
#include <QString>

class ALGOLOGIC_EXPORT KxAlgoDataMgr : public QObject
{
    Q_OBJECT
public:
    static KxAlgoDataMgr& instance();

    // ---- catalogue ----
    // The entry of `algoName`, or a default AesStrategy when unknown.
    AesStrategy GetStrategy(const QString& algoName) const;
    // Entries whose name is a key of `filter` (all when it is empty), by name.
    QMap<QString, AesStrategy> GetStrategyList(QMap<QString, QString> filter) const;
    // Fills `out` with the entries of `algoType` (all when it is empty), in
    // catalogue order. `out` is replaced, not appended to.
    void GetAllStrategies(QList<AesStrategy>& out, const QString& algoType) const;
    QList<AesStrategy> GetAllStrategies() const;
    void GetStrategyCnt(int& count) const;
    QString getFeeId(const QString& algoName) const;
    QString GetReportFormat(const QString& algoName) const;
    QString GetUnderlyingMaxNum(const QString& algoName) const;
    bool ContainsStrategy(const QString& algoName) const;

    // ---- authority ----
    QMap<QString, QMap<QString, QMap<QString, QString>>> GetAllAuthorityInfo() const;

    // ---- readiness ----
    bool isAlgoStrategyReady() const;
    bool isNewAuthorityReady() const;

    // Asks the data source to start loading. The stand-in has no server to
    // ask: it only logs the call and emits nothing.
    virtual void requestAlgoData();

    // ---- host side ----
    // Replaces the catalogue, marks it ready, emits sigAlgoInfoReady() and
    // then sigQryAlgoStrategiesRsp(list). With duplicate names the later
    // entry wins for lookups by name.
    void setStrategies(const QList<AesStrategy>& list);
    // Replaces the authority table, marks it ready, emits signalNewAuthority.
    void setAuthority(const QMap<QString, QMap<QString, QMap<QString, QString>>>& table);
    // Empties catalogue and table and marks neither ready; emits nothing.
    void clear();

signals:
    void sigAlgoInfoReady();
    void sigQryAlgoStrategiesRsp(const QList<AesStrategy>& strategies);
    void signalNewAuthority(QMap<QString, QMap<QString, QMap<QString, QString>>> table);

protected:
    KxAlgoDataMgr();
    ~KxAlgoDataMgr() override;

private:
    Q_DISABLE_COPY(KxAlgoDataMgr)

    // Index of `algoName` in m_strategies, or -1. REQUIRES: m_lock held.
    int indexOfLocked(const QString& algoName) const;

    mutable QReadWriteLock m_lock;
    // Guarded by m_lock:
    QList<AesStrategy> m_strategies;
    QMap<QString, int> m_indexByName;
    AuthorityTable m_authority;
    bool m_strategiesReady = false;
    bool m_authorityReady = false;
};
