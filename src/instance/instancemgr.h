#pragma once

// The one registry of algo strategy instances. It creates the instance class
// that suits an algo type, inserts, finds, lists and forgets instances, routes
// every algo-server response to the instances concerned under the proper
// locks, composes and splits symbol keys, recalculates T0 profit on a timer,
// and emits every change notification of the instance model.
//
// Locks: the registry lock (non-recursive, member) guards the maps; the
// library-wide instance-content lock (recursive, getLocker()) guards the
// fields of every instance and leg. Where both are held the registry lock
// comes first; the single-instance paths release it before taking the content
// lock. Instances are never freed: DeleteInstance only forgets them, so
// pointers that other threads obtained stay valid for the life of the process.
//
// The manager lives in its own worker thread ("InstanceMgr_Thread"), where its
// queued slot runs; its public operations are plain calls that run in the
// calling thread.

#include "common/algologicglobal.h"
#include "platform/kxthread.h"
#include "platform/varianttypes.h"

#include <QHash>
#include <QList>
#include <QMap>
#include <QObject>
#include <QReadWriteLock>
#include <QString>
#include <QStringList>

#include <utility>

class InstanceInfoBase;
class SymbolInfoBase;
class QTimer;

class ALGOLOGIC_EXPORT InstanceMgr : public QObject
{
    Q_OBJECT
public:
    // Created on the first call (thread-safe), no parent, never destroyed.
    static InstanceMgr* instance();

    // Creates and starts the 30 s T0 profit timer. Call once, after
    // instance(), from a thread with an event loop.
    void init();

    // The library-wide instance-content lock (recursive). Read an instance's
    // or leg's fields under it for reading.
    QReadWriteLock* getLocker();

    ~InstanceMgr() override;

    // ---- creation and registry ----------------------------------------------

    // Makes an instance of the class for `algoType`. With an empty record it
    // returns the object uninitialised and unregistered (the caller owns it
    // and inserts it); otherwise it runs initInfo(record) and registers it.
    // `algoName` is accepted and not used.
    InstanceInfoBase* CreateInstance(const QString& algoType, const VariantMap& record,
                                     const QString& algoName);
    // A T0SymbolInfo for the T0 algo type, a SymbolInfoBase otherwise.
    static SymbolInfoBase* CreateSymbolInfo(const QString& algoType, const QString& symbol);

    // Registers `inst` under its instance ID (an earlier object under the same
    // ID is forgotten, not freed) and maps its client ID when it has one.
    void InsertNewInstance(InstanceInfoBase* inst);
    // Forgets the instance and its client-ID entries; the object stays alive.
    void DeleteInstance(const QString& instanceID);
    bool ContainsInstance(const QString& instanceID);

    // ---- queries (ascending instance-ID order) --------------------------------

    // IDs of the instances of `algoType` ("All" matches every type, "Unknown"
    // gives every ID unfiltered). Deleted instances are included.
    QList<QString> GetAllInstanceIDs(const QString& algoType);
    // IDs of the live instances of exactly `algoType` ("Unknown" gives every
    // ID unfiltered); unless `allCreators`, only instances created by the
    // logged-in account or by nobody.
    QStringList GetAllInstanceIDsExceptDeleted(const QString& algoType, bool allCreators);
    // As above for every algo type, without logging.
    QStringList GetAllInstanceIDsExceptDeletedForAllType(bool allCreators);
    // IDs of the instances whose strategy name is in `algoNames` (deleted and
    // other creators' instances included).
    QStringList GetInstanceIDsForSpecialAlgoName(const QStringList& algoNames);
    // A copy of the registry (taken under the registry lock); the pointers stay
    // valid for the life of the process.
    QMap<QString, InstanceInfoBase*> GetInstanceInfoForAllType();
    QString GetAlgoTypeByInstID(const QString& instanceID);
    // The server instance ID for a client instance ID, or a null text.
    QString GetInstanceIDByClInstID(const QString& clInstanceID);

    // ---- symbol keys and legs --------------------------------------------------

    // "instanceID_symbol_side", unescaped.
    static QString GetSymbolExtInfoKey(const QString& instanceID, const QString& symbol,
                                       QString side);
    // Part 0 of a key with at least 2 parts, else empty.
    static QString getInstIdFromSymbolKey(const QString& key);
    // Part 1 of a key with at least 2 parts, else empty.
    static QString getSymbolFromSymbolKey(const QString& key);
    // Part 2 of a key with at least 3 parts, else empty.
    static QString getSideFromSymbolKey(const QString& key);
    // Parts 1 and 2 joined with "_" for a key with at least 3 parts, else empty.
    static QString getSymbolOrdeSideFromKey(QString key);
    // The leg named by `key`, or null.
    SymbolInfoBase* getSymbolInfo(QString key);
    // The first leg's symbol and side of the instance; untouched outputs when
    // the instance is unknown or has no leg.
    void getOneSymbol(QString instanceID, QString& symbol, QString& side);

    // ---- create errors ------------------------------------------------------------

    void setCreateErrorInfoByClInst(const QString& clInstanceID, const QString& errorCode,
                                    const QString& errorText);
    // The (code, text) pair stored for the client ID, or two empty texts.
    std::pair<QString, QString> getCreateErrorInfoByClInst(const QString& clInstanceID);

    // ---- routing of server responses (caller's thread) -------------------------

    // Query answer, one record per instance: updates known instances, creates
    // unknown ones; emits signalTimeUpdate per instance whose times changed,
    // then sigInstUpdated and signalInsListToLogic.
    void OnRecv_QueryAlgoStrategyResponse(const VariantMapList& records);
    // Progress gather for the instance of record 0; emits
    // signalProgreeDelayUpadaete when the instance is known.
    void OnRecv_StrategyProgressGatherResponse(const VariantMapList& records);
    // Strategy report for the instance of record 0.
    void OnRecv_StrategyReportResponse(const VariantMapList& records);
    // Delete answer for the instance of record 0: runs the instance's
    // progress-gather handler and leaves the instance registered.
    void OnRecv_DeleteAlgoInstanceResponse(const VariantMapList& records);
    // Status push: 0 handled, 1 empty list or no status field, 2 unknown
    // instance. Emits signalStatusUpdated when handled.
    int OnRecv_InstStatusUpdate(const QString& instanceID, const VariantMapList& records);
    // Modify push: false for an empty list or an unknown instance.
    bool onRecv_InstModifyPush(const QString& instanceID, const VariantMapList& records);
    // Builds the legs of `inst` from a create/modify request's parameters and
    // the server's per-leg results (record 0 is a header; only records with
    // requestExeStatus "0" count). Takes no lock: the caller holds what it needs.
    void UpdateSymbolExtInfoByParams(InstanceInfoBase* inst, const VariantMap& params,
                                     const VariantMapList& records);

    // ---- notifications raised by the host or the instance classes --------------

    void SendSignalModifyPush(const QString& instanceID, const QString& ack,
                              const QString& comment);
    void SendSignalMultiProgress(const QString& instanceID);
    void SendSignalProgressDelay(const QString& instanceID);
    void SendSignalProgressUpdated(const QString& instanceID, const QList<QString>& keys);
    void SendSignalStatusUpdate(const QString& instanceID, const QString& status);
    void SendSignalSymbolRemainQty(const QString& instanceID,
                                   const QHash<QString, double>& remaining);
    void SendSignalSymbolStatusUpdate(const QMap<QString, QMap<QString, QVariant>>& legs);
    void SendSignalTimeUpdate(const QString& instanceID, const QString& status);

signals:
    void sigInstUpdated(QStringList instanceIDs);
    void signalInsListToLogic(const QStringList& instanceIDs);
    void signalMultiProgressUpdated(const QString& instanceID);
    void signalProgressUpdated(const QString& instanceID, const QList<QString>& symbolKeys);
    void sigSymbolRemainQty(const QString& instanceID, const QHash<QString, double>& remaining);
    void signalTimeUpdate(const QString& instanceID, const QString& status);
    void signalProgreeDelayUpadaete(const QString& instanceID);
    void signalStatusUpdated(const QString& instanceID, const QString& status);
    void signalSymbolStatusUpdate(const QMap<QString, QMap<QString, QVariant>>& legs);
    void signalModifyPush(const QString& instanceID, const QString& ack, const QString& comment);
    void signalCalcProfitAmountFinished();

public slots:
    // Recalculates the marked-to-market profit of every T0 leg from the quote
    // service's latest prices. Runs in the manager's thread; the argument is
    // not used.
    void slotCalculateTimer(QString unused);

private:
    explicit InstanceMgr(QObject* parent);
    Q_DISABLE_COPY(InstanceMgr)

    // The registered instance, or null. Takes the registry lock for reading.
    InstanceInfoBase* GetInstanceInfo(const QString& instanceID);
    using RecordsHandler = void (InstanceInfoBase::*)(const VariantMapList&);
    // Runs `handler` of the instance named by record 0's strategy ID under the
    // content write lock (the registry lock released first). False when the
    // list is empty or the instance unknown. `trace`, when given, logs the
    // lookup.
    bool routeByFirstRecord(const VariantMapList& records, RecordsHandler handler,
                            const char* trace, QString& instanceID);
    // The registered instances of `algoType` whose class is T, in ID order;
    // none for the unknown type.
    template <typename T>
    QList<T*> GetInstanceInfoList(const QString& algoType);

    QMap<QString, InstanceInfoBase*> m_mapInstance; // guarded by m_lockInstance
    // The same entries hashed, for the routers' lookups by ID: constant time
    // however many instances are registered. Guarded by m_lockInstance.
    QHash<QString, InstanceInfoBase*> m_hashInstance;
    QMap<QString, QString> m_mapClInstToInst;       // guarded by m_lockInstance
    QReadWriteLock m_lockInstance;                  // the registry lock
    // Forgotten or replaced instances, kept reachable and alive.
    QList<InstanceInfoBase*> m_retiredInstances; // guarded by m_lockInstance
    QMap<QString, std::pair<QString, QString>> m_mapCreateErrorInfo; // m_lockCreateErrorInfo
    QReadWriteLock m_lockCreateErrorInfo;
    KxThread m_thread;
    QTimer* m_timerT0CalculateNew = nullptr;
};
