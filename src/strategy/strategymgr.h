#pragma once

// The library's single access point to the algo catalogue and to the user's
// authority per account. Catalogue lookups are forwarded to the terminal's
// business-data manager (KxAlgoDataMgr); its readiness signals are relayed to
// the library's own listeners; the authority table is cached here, replaced
// whole on every update, and read by the authority queries.
//
// Thread-safe: queries may come from any thread. The authority table is
// guarded by m_lock; the forwarding operations take no lock of their own.

#include "common/algologicglobal.h"
#include "platform/aesstrategy.h"
#include "platform/kxthread.h"
#include "platform/varianttypes.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QReadWriteLock>
#include <QString>
#include <QStringList>

// Whether an algo trades one security or several.
enum ALGO_SYMBOL_FLAG {
    ALGO_SYMBOL_MULTI = 0,
    ALGO_SYMBOL_SINGLE = 1,
};

class ALGOLOGIC_EXPORT StrategyMgr : public QObject
{
    Q_OBJECT
public:
    // Created on the first call (thread-safe), no parent, never destroyed.
    static StrategyMgr* instance();

    // Connects to the business-data manager's signals (handlers run in this
    // manager's thread), publishes what it already holds (getCacheData), then
    // asks it to load. Call once, after instance(); later calls do not
    // connect again.
    void init();

    // Publishes the current catalogue and authority table of the data
    // manager, each only when it is ready, independently of the other.
    void getCacheData();

    // ---- catalogue, forwarded to KxAlgoDataMgr ----
    AesStrategy GetStrategy(const QString& algoName) const;
    QMap<QString, AesStrategy> GetStrategyList(QMap<QString, QString> filter) const;
    void GetAllStrategies(QList<AesStrategy>& out, const QString& algoType) const;
    void GetStrategyCnt(int& count) const;
    QString GetFeeId(const QString& algoName) const;
    QString GetReportFormat(const QString& algoName) const;
    QString GetUnderlyingMaxNum(const QString& algoName) const;
    bool ContainsStrategy(const QString& algoName) const;

    // 1 when the algo's underlying property is "1", 0 for any other text
    // ("2" included, and the empty text of an unknown algo).
    ALGO_SYMBOL_FLAG GetAlgoSymbolType(const QString& algoName) const;

    // The authority node of table[account][category][algoName], or an empty
    // text where a level is missing. Note the argument order.
    QString GetAlgoNode(QString account, QString algoName, QString category) const;

    // ---- authority queries ----
    // An algo is authorised for (account, category) when its name is a key of
    // table[account][category]. Names come back sorted by code unit; lookups
    // never insert into the table.

    // Names authorised for every listed account (none for an empty list).
    QStringList GetAuthorityNameIntersection(QStringList accounts, QString category) const;
    // The same names as catalogue entries (the default entry for a name the
    // catalogue does not know).
    QList<AesStrategy> GetAuthorityIntersection(QStringList accounts, QString category) const;
    // The intersection over every account of the table.
    QList<AesStrategy> GetAuthorityIntersection(QString category) const;
    // Names authorised for at least one account, as catalogue entries.
    QList<AesStrategy> GetAuthorityUnion(QString category) const;
    QList<AesStrategy> GetAuthorityAlgo(QString account, QString category) const;
    QStringList GetAuthorityAlgoName(QString account, QString category) const;
    // Aliases of GetAuthorityAlgo's entries, in the order of their names.
    QStringList GetAuthorityAlgoAlias(QString account, QString category) const;
    // Accounts for which the algo is authorised, ascending. Algo name first.
    QStringList GetAuthorityAccountList(QString algoName, QString category) const;
    bool hasCorrespAuthority(QString account, QString algoName, QString category) const;

signals:
    void sigAlgoInfoReady();
    void sigQryAlgoStrategiesRsp(const QList<AesStrategy>& strategies);
    void signalNewAuthority(QMap<QString, QMap<QString, QMap<QString, QString>>> table);

private:
    explicit StrategyMgr(QObject* parent = nullptr);
    ~StrategyMgr() override;
    Q_DISABLE_COPY(StrategyMgr)

    // Replaces the cached table under the write lock.
    void replaceAuthority(const AuthorityTable& table);

    KxThread m_thread; // reserved worker thread; not started
    AuthorityTable m_authorityMap; // guarded by m_lock
    mutable QReadWriteLock m_lock;
    bool m_connected = false; // set once by init()
};
