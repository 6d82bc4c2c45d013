// Pushes reach the log manager from several producer threads through queued
// connections and are parsed on "LogMgr_Thread", while a consumer thread
// drains the buffers the whole time. Every report must come out exactly
// once, in the order it was pushed for its instance.

#include <log/logmgr.h>
#include <platform/algodefines.h>
#include <platform/businessdata.h>
#include <platform/varianttypes.h>

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <memory>
#include <vector>

namespace {

const QString kLogin = QStringLiteral("trader-t");
constexpr int kProducers = 3;
constexpr int kInstancesPerProducer = 2;
constexpr int kPushesPerInstance = 1000;
constexpr qint64 kDeadlineMs = 2000;

class Producer : public QObject
{
    Q_OBJECT
signals:
    void push(const QVariant& reports);
};

QVariant record(const QString& type, const QString& id, const QString& body)
{
    return VariantMap{{Tessel_Fields::Strategy::reportType, type},
                      {Tessel_Fields::Strategy::strategyID, id},
                      {Tessel_Fields::Strategy::strategyReport, body},
                      {Tessel_Fields::UserAccount::userID, kLogin}};
}

QString progressText(int n) { return QStringLiteral("{\"seq\":%1}").arg(n); }
QString tradeTime(int n) { return QStringLiteral("%1").arg(n, 5, 10, QLatin1Char('0')); }

// What the consumer saw for one instance, in the order it popped it.
struct Seen
{
    QStringList logs, messages, progress, diffs;
};

} // namespace

class TestLogMgrThreads : public QObject
{
    Q_OBJECT
private slots:
    void queuedPushesPoppedOnceInOrder();
};

void TestLogMgrThreads::queuedPushesPoppedOnceInOrder()
{
    CBusinessDataBase::GetInstance()->SetLoginAccount(kLogin);
    LogMgr* mgr = LogMgr::instance();
    QStringList ids;
    for (int p = 0; p < kProducers; ++p)
        for (int i = 0; i < kInstancesPerProducer; ++i)
            ids << QStringLiteral("thr-%1-%2").arg(p).arg(i);
    QSignalSpy trades(mgr, &LogMgr::signalTradeMsgUpdated);

    // The consumer drains until it has every line of every instance.
    QHash<QString, Seen> seen;
    std::atomic<bool> consumerDone{false};
    QElapsedTimer clock;
    clock.start();
    std::unique_ptr<QThread> consumer(QThread::create([&] {
        int complete = 0;
        while (complete < ids.size() && clock.elapsed() < kDeadlineMs) {
            QHash<QString, QList<QString>> progress;
            QHash<QString, QStringList> messages;
            QHash<QString, QString> diffs;
            mgr->popInstProgress(progress);
            mgr->popInstMsg(messages);
            mgr->popInstDiff(diffs);
            complete = 0;
            for (const QString& id : qAsConst(ids)) {
                QList<QString> logs;
                mgr->popInstLog(id, logs);
                Seen& s = seen[id];
                s.logs += logs;
                s.messages += messages.value(id);
                s.progress += progress.value(id);
                if (diffs.contains(id))
                    s.diffs << diffs.value(id);
                if (s.logs.size() >= kPushesPerInstance && s.messages.size() >= kPushesPerInstance
                    && s.progress.size() >= kPushesPerInstance
                    && s.diffs.value(s.diffs.size() - 1) == QString::number(kPushesPerInstance - 1))
                    ++complete;
            }
            mgr->GetTradeMsgByInstIdList(ids, 1); // readers alongside the writer
        }
        consumerDone = true;
    }));
    consumer->start();

    std::vector<std::unique_ptr<Producer>> producers;
    std::vector<std::unique_ptr<QThread>> threads;
    for (int p = 0; p < kProducers; ++p) {
        producers.emplace_back(new Producer);
        Producer* producer = producers.back().get();
        connect(producer, &Producer::push, mgr, &LogMgr::slotRecvGatherStrategyReport);
        const QStringList own = ids.mid(p * kInstancesPerProducer, kInstancesPerProducer);
        threads.emplace_back(QThread::create([producer, own] {
            for (int n = 0; n < kPushesPerInstance; ++n) {
                for (const QString& id : own) {
                    const QString text = id + QLatin1Char('#') + QString::number(n);
                    emit producer->push(QVariantList{
                        record(Algo_Values::ReportType::console, id, text),
                        record(Algo_Values::ReportType::message, id, text),
                        record(Algo_Values::ReportType::ui, id, progressText(n)),
                        record(Algo_Values::ReportType::diff, id, QString::number(n)),
                        record(Algo_Values::ReportType::tradeMsg, id,
                               QStringLiteral("{\"ReportTime\":\"%1\"}").arg(tradeTime(n)))});
                }
            }
        }));
        threads.back()->start();
    }
    for (auto& thread : threads)
        QVERIFY(thread->wait(kDeadlineMs));
    QVERIFY(consumer->wait(kDeadlineMs + 1000));
    QVERIFY(consumerDone);
    QVERIFY2(clock.elapsed() < kDeadlineMs, "the consumer did not get every report in time");

    // Let the manager finish anything still queued; nothing may be left over.
    QVERIFY(QMetaObject::invokeMethod(mgr, [] {}, Qt::BlockingQueuedConnection));
    QHash<QString, QList<QString>> progressLeft;
    QHash<QString, QStringList> messagesLeft;
    QHash<QString, QString> diffsLeft;
    mgr->popInstProgress(progressLeft);
    mgr->popInstMsg(messagesLeft);
    mgr->popInstDiff(diffsLeft);
    QVERIFY(progressLeft.isEmpty() && messagesLeft.isEmpty() && diffsLeft.isEmpty());

    QCOMPARE(trades.count(), ids.size() * kPushesPerInstance);
    QHash<QString, int> tradesPerInstance;
    for (const QList<QVariant>& args : qAsConst(trades))
        ++tradesPerInstance[args.at(0).toString()];

    for (const QString& id : qAsConst(ids)) {
        QList<QString> logsLeft;
        mgr->popInstLog(id, logsLeft);
        QVERIFY(logsLeft.isEmpty());

        QStringList texts, progress, times;
        for (int n = 0; n < kPushesPerInstance; ++n) {
            texts << id + QLatin1Char('#') + QString::number(n);
            progress << progressText(n);
            times << tradeTime(n);
        }
        const Seen& s = seen[id];
        QCOMPARE(s.logs, texts);
        QCOMPARE(s.messages, texts);
        QCOMPARE(s.progress, progress);
        // Diffs replace each other: what was seen only ever moves forward.
        for (int k = 1; k < s.diffs.size(); ++k)
            QVERIFY(s.diffs.at(k - 1).toInt() < s.diffs.at(k).toInt());

        QCOMPARE(tradesPerInstance.value(id), kPushesPerInstance);
        QStringList stored;
        for (const VariantMap& m : mgr->GetTradeMsgByInstIdList({id}, 1))
            stored << m.value(Algo_Fields::Report::ReportTime).toString();
        QCOMPARE(stored, times);
    }
}

QTEST_GUILESS_MAIN(TestLogMgrThreads)
#include "tst_logmgrthreads.moc"
