// Pushes reach the log manager from several producer threads through queued
// connections and are parsed on "LogMgr_Thread", while a consumer thread
// drains the buffers the whole time. Every report must come out exactly
// once, in the order it was pushed for its instance.

#include <algologic.h>

#include <QtTest>

namespace {

namespace Strat = Tessel_Fields::Strategy;
const QString kLogin = QStringLiteral("trader-t");
constexpr int kPushes = 1000; // per producer, each with its own instance

class Producer : public QObject
{
    Q_OBJECT
signals:
    void push(const QVariant& reports);
};

// What producer p pushes n-th, in each of its reports (a JSON text, as a ui report needs).
QString body(int p, int n)
{
    return QStringLiteral("[%1,%2]").arg(p).arg(n);
}

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
    const QStringList ids{"thr-0", "thr-1", "thr-2"};
    const QStringList types{Algo_Values::ReportType::console, Algo_Values::ReportType::message,
                            Algo_Values::ReportType::ui};

    // The consumer drains until it has as many reports as were pushed, or time is up.
    QHash<QString, QStringList> seen; // per "instance type", in the order popped
    std::unique_ptr<QThread> consumer(QThread::create([&] {
        QElapsedTimer clock;
        clock.start();
        for (int popped = 0; popped < 9 * kPushes && clock.elapsed() < 5000;) {
            QHash<QString, QList<QString>> progress;
            QHash<QString, QStringList> messages;
            mgr->popInstProgress(progress);
            mgr->popInstMsg(messages);
            for (const QString& id : ids) {
                QList<QString> logs;
                mgr->popInstLog(id, logs);
                seen[id + " " + types[0]] += logs;
                seen[id + " " + types[1]] += messages.value(id);
                seen[id + " " + types[2]] += progress.value(id);
                popped += logs.size() + messages.value(id).size() + progress.value(id).size();
            }
        }
    }));
    consumer->start();

    Producer producers[3];
    std::unique_ptr<QThread> threads[3];
    for (int p = 0; p < 3; ++p) {
        connect(&producers[p], &Producer::push, mgr, &LogMgr::slotRecvGatherStrategyReport);
        threads[p].reset(QThread::create([producer = &producers[p], p, &ids, &types] {
            for (int n = 0; n < kPushes; ++n) {
                QVariantList reports;
                for (const QString& type : types)
                    reports << VariantMap{{Strat::reportType, type}, {Strat::strategyID, ids[p]},
                                          {Strat::strategyReport, body(p, n)},
                                          {Tessel_Fields::UserAccount::userID, kLogin}};
                emit producer->push(reports);
            }
        }));
        threads[p]->start();
    }
    for (auto& thread : threads)
        QVERIFY(thread->wait(5000));
    QVERIFY(consumer->wait(6000));

    for (int p = 0; p < 3; ++p) {
        QStringList pushed;
        for (int n = 0; n < kPushes; ++n)
            pushed << body(p, n);
        for (const QString& type : types)
            QCOMPARE(seen.value(ids[p] + " " + type), pushed);
    }
    // Nothing is left over once the manager has handled what is still queued.
    QVERIFY(QMetaObject::invokeMethod(mgr, [] {}, Qt::BlockingQueuedConnection));
    QHash<QString, QList<QString>> progress;
    QHash<QString, QStringList> messages;
    mgr->popInstProgress(progress);
    mgr->popInstMsg(messages);
    QVERIFY(progress.isEmpty() && messages.isEmpty());
}

QTEST_GUILESS_MAIN(TestLogMgrThreads)
#include "tst_logmgrthreads.moc"
