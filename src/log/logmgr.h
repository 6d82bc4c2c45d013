#pragma once

// Collects the text reports the algo server pushes for running instances
// (progress reports, console lines, messages, parameter differences, trade
// messages) and hands them to the user interface.
//
// The report slots run on the manager's own thread ("LogMgr_Thread") when
// pushes are connected to them from other threads; the user interface drains
// the buffers from its own thread with the pop operations. Each buffer has its
// own lock, so a producer filling one never blocks a consumer of another.

#include "common/algologicglobal.h"
#include "platform/kxthread.h"
#include "platform/varianttypes.h"

#include <QHash>
#include <QList>
#include <QMap>
#include <QMutex>
#include <QObject>
#include <QReadWriteLock>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariant>

class ALGOLOGIC_EXPORT LogMgr : public QObject
{
    Q_OBJECT
public:
    // Created on the first call (thread-safe), no parent, never destroyed.
    static LogMgr* instance();

    // Only logs: the worker thread already runs.
    void init();

    // Each pop exchanges the whole buffer with `out` under the buffer's lock:
    // the caller gets everything gathered since the last pop, and the buffer
    // goes on with what `out` held (pass an empty container).
    void popInstProgress(QHash<QString, QList<QString>>& out);
    void popInstMsg(QHash<QString, QStringList>& out);
    void popInstDiff(QHash<QString, QString>& out);
    // Drains the console lines of one instance into `out`; leaves `out` as it
    // was when the instance has none.
    void popInstLog(const QString& instId, QList<QString>& out);

    // The trade messages of the listed instances. sortOrder 0: unspecified
    // order; 1: ascending by ReportTime text; any other value: descending.
    // Nothing is removed.
    VariantMapList GetTradeMsgByInstIdList(const QStringList& instIds, int sortOrder);

signals:
    // Emitted for each trade message stored, while the trade-message lock is
    // still held for writing: a receiver connected directly must not call
    // GetTradeMsgByInstIdList from inside it.
    void signalTradeMsgUpdated(const QString& instId, const VariantMap& tradeMsg);

public slots:
    // A push of strategy reports of every type.
    void slotRecvGatherStrategyReport(const QVariant& reports);
    // A push of ui reports of T0 instances.
    void slotRecvT0ProgressPerformanceReport(const QVariant& reports);

private:
    LogMgr();
    ~LogMgr() override;
    Q_DISABLE_COPY(LogMgr)

    void appendProgress(const QString& instId, const QStringList& texts);
    void storeTradeMessage(const QString& instId, const QString& body);

    KxThread m_thread;
    QMutex m_progressMutex;
    QHash<QString, QList<QString>> m_instProgressHash; // guarded by m_progressMutex
    QMutex m_logMutex;
    QHash<QString, QList<QString>> m_instLogHash; // guarded by m_logMutex
    QMutex m_msgMutex;
    QHash<QString, QStringList> m_instMsgHash; // guarded by m_msgMutex
    QMutex m_diffMutex;
    QHash<QString, QString> m_instDiffHash; // guarded by m_diffMutex
    QReadWriteLock m_tradeMsgLock;
    QMap<int, VariantMap> m_tradeMsgMap;          // guarded by m_tradeMsgLock
    QHash<QString, QSet<int>> m_instTradeMsgIds; // guarded by m_tradeMsgLock
};
