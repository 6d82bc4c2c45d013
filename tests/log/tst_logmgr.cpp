// The log manager sorts the server's report pushes into per-instance buffers
// that the user interface drains. The slots are called directly here, so they
// run in the test thread; the manager is a process singleton that keeps every
// trade message, so each case uses instance IDs of its own, and every test
// starts from drained buffers.

#include "logcapture.h"

#include <common/logging.h>
#include <log/logmgr.h>
#include <platform/algodefines.h>
#include <platform/businessdata.h>
#include <platform/varianttypes.h>

#include <QJsonDocument>
#include <QJsonParseError>
#include <QLoggingCategory>
#include <QSignalSpy>
#include <QThread>
#include <QtTest>

#include <algorithm>

namespace {

const QString kLogin = QStringLiteral("trader-1");
const QString kUi = Algo_Values::ReportType::ui;
const QString kConsole = Algo_Values::ReportType::console;
const QString kMessage = Algo_Values::ReportType::message;
const QString kDiff = Algo_Values::ReportType::diff;
const QString kTrade = Algo_Values::ReportType::tradeMsg;

QVariant record(const QString& type, const QString& id, const QString& body,
                const QString& perfType = QString(), const QVariant& user = kLogin)
{
    VariantMap map{{Tessel_Fields::Strategy::reportType, type},
                   {Tessel_Fields::Strategy::strategyID, id},
                   {Tessel_Fields::Strategy::strategyReport, body}};
    if (user.isValid())
        map.insert(Tessel_Fields::UserAccount::userID, user);
    if (!perfType.isEmpty())
        map.insert(Algo_Fields::HelmStrategy::perfType, perfType);
    return map;
}

QVariant push(const QVariantList& records)
{
    return QVariant(records);
}

// Every buffer drained into "kind|id|text" lines: kinds in a fixed order,
// instances sorted, texts in arrival order. Console lines are drained per
// instance, so the instances to look for are passed in.
QStringList drainAll(const QStringList& logIds)
{
    LogMgr* mgr = LogMgr::instance();
    QStringList lines;
    const auto add = [&lines](const QString& kind, const auto& hash) {
        QStringList ids = hash.keys();
        ids.sort();
        for (const QString& id : qAsConst(ids))
            for (const QString& text : QStringList(hash.value(id)))
                lines << kind + QLatin1Char('|') + id + QLatin1Char('|') + text;
    };
    QHash<QString, QList<QString>> progress, logs;
    mgr->popInstProgress(progress);
    add(kUi, progress);
    for (const QString& id : logIds) {
        QList<QString> drained;
        mgr->popInstLog(id, drained);
        if (!drained.isEmpty())
            logs.insert(id, drained);
    }
    add(kConsole, logs);
    QHash<QString, QStringList> messages;
    mgr->popInstMsg(messages);
    add(kMessage, messages);
    QHash<QString, QString> diffs;
    mgr->popInstDiff(diffs);
    add(kDiff, diffs);
    return lines;
}

QStringList idsOf(const QVariantList& records)
{
    QStringList ids;
    for (const QVariant& r : records)
        ids << r.toMap().value(Tessel_Fields::Strategy::strategyID).toString();
    return ids;
}

// Whether one captured message of `type` holds every fragment.
bool oneHoldsAll(const LogCapture& capture, QtMsgType type, const QStringList& fragments)
{
    const QList<CapturedMessage> all = capture.messages();
    return std::any_of(all.cbegin(), all.cend(), [&](const CapturedMessage& m) {
        return m.type == type && std::all_of(fragments.cbegin(), fragments.cend(),
                                             [&m](const QString& f) { return m.text.contains(f); });
    });
}

} // namespace

class TestLogMgr : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void initLogsAndRunsOwnThread();
    void popsExchangeBuffers();
    void gatherReport_data();
    void gatherReport();
    void otherUsersRecordLogged_data();
    void otherUsersRecordLogged();
    void tradeMessagesStored();
    void tradeMessagesByInstance_data();
    void tradeMessagesByInstance();
    void t0Report_data();
    void t0Report();
};

void TestLogMgr::initTestCase()
{
    // The debug lines are part of what is checked, whatever the environment's rules.
    const_cast<QLoggingCategory&>(lcAlgoLog()).setEnabled(QtDebugMsg, true);
    CBusinessDataBase::GetInstance()->SetLoginAccount(kLogin);

    // Trade messages read by tradeMessagesByInstance: tr-A has one without a
    // report time, tr-B one time in between tr-A's two.
    LogMgr::instance()->slotRecvGatherStrategyReport(push({
        record(kTrade, "tr-A", "{\"Tag\":\"a2\",\"ReportTime\":\"2024-01-02 09:30:02\"}"),
        record(kTrade, "tr-B", "{\"Tag\":\"b1\",\"ReportTime\":\"2024-01-02 09:30:01\"}"),
        record(kTrade, "tr-A", "{\"Tag\":\"a0\"}"),
        record(kTrade, "tr-A", "{\"Tag\":\"a1\",\"ReportTime\":\"2024-01-02 09:30:00\"}")}));
}

void TestLogMgr::init()
{
    drainAll({});
}

void TestLogMgr::initLogsAndRunsOwnThread()
{
    LogCapture capture;
    LogMgr::instance()->init();
    QString debug;
    for (const CapturedMessage& m : capture.messages())
        if (m.type == QtDebugMsg)
            debug += m.text + QLatin1Char('\n');
    const int a = debug.indexOf(QStringLiteral("LogMgr::init"));
    const int b = debug.indexOf(QStringLiteral("算法逻辑层-日志初始化"));
    const int c = debug.indexOf(QStringLiteral("LogMgr init"));
    QVERIFY2(a >= 0 && a < b && b < c, qPrintable(debug));

    QThread* thread = LogMgr::instance()->thread();
    QCOMPARE(thread->objectName(), QStringLiteral("LogMgr_Thread"));
    QVERIFY(thread != QThread::currentThread());
    QVERIFY(thread->isRunning());
}

void TestLogMgr::popsExchangeBuffers()
{
    LogMgr* mgr = LogMgr::instance();
    mgr->slotRecvGatherStrategyReport(push({record(kUi, "px", "{\"p\":1}"),
                                            record(kMessage, "px", "m"),
                                            record(kDiff, "px", "d")}));
    // What the caller held goes into the buffer in exchange.
    QHash<QString, QList<QString>> progress{{"seed", {"s1"}}};
    QHash<QString, QStringList> messages{{"seed", {"s2"}}};
    QHash<QString, QString> diffs{{"seed", "s3"}};
    mgr->popInstProgress(progress);
    mgr->popInstMsg(messages);
    mgr->popInstDiff(diffs);
    QCOMPARE(progress, (QHash<QString, QList<QString>>{{"px", {"{\"p\":1}"}}}));
    QCOMPARE(messages, (QHash<QString, QStringList>{{"px", {"m"}}}));
    QCOMPARE(diffs, (QHash<QString, QString>{{"px", "d"}}));
    QCOMPARE(drainAll({}), (QStringList{"ui|seed|s1", "message|seed|s2", "diff|seed|s3"}));

    // Drained buffers come back empty.
    QHash<QString, QStringList> again;
    mgr->popInstMsg(again);
    QVERIFY(again.isEmpty());
    QCOMPARE(drainAll({}), QStringList());

    // Console lines drain one instance at a time.
    mgr->slotRecvGatherStrategyReport(push({record(kConsole, "la", "a1"),
                                            record(kConsole, "lb", "b1"),
                                            record(kConsole, "la", "a2")}));
    QList<QString> out{"kept"};
    mgr->popInstLog("unknown-log", out);
    QCOMPARE(out, QList<QString>{"kept"});
    mgr->popInstLog("la", out);
    QCOMPARE(out, (QList<QString>{"a1", "a2"}));
    mgr->popInstLog("la", out);
    QCOMPARE(out, (QList<QString>{"a1", "a2"})); // drained: left as it was
    out.clear();
    mgr->popInstLog("lb", out);
    QCOMPARE(out, QList<QString>{"b1"});
}

void TestLogMgr::gatherReport_data()
{
    QTest::addColumn<QVariantList>("records");
    QTest::addColumn<QStringList>("expected");

    const QString t0 = Algo_Values::PerfType::t0;
    QTest::newRow("console and message in order, empty bodies dropped")
        << QVariantList{record(kConsole, "g1", "c1"), record(kMessage, "g1", "m1"),
                        record(kConsole, "g1", ""), record(kMessage, "g1", ""),
                        record(kConsole, "g1", "c2"), record(kMessage, "g1", "m2")}
        << QStringList{"console|g1|c1", "console|g1|c2", "message|g1|m1", "message|g1|m2"};
    QTest::newRow("instances kept apart")
        << QVariantList{record(kMessage, "g2b", "x"), record(kMessage, "g2a", "y"),
                        record(kConsole, "g2b", "z"), record(kMessage, "g2b", "w")}
        << QStringList{"console|g2b|z", "message|g2a|y", "message|g2b|x", "message|g2b|w"};
    QTest::newRow("diff keeps the latest non-empty")
        << QVariantList{record(kDiff, "g3", "d1"), record(kDiff, "g3", "d2"),
                        record(kDiff, "g3", "")}
        << QStringList{"diff|g3|d2"};
    QTest::newRow("ui without progressReportMap kept raw")
        << QVariantList{record(kUi, "g4", "{ \"b\" : 2, \"a\" : [1] }"), record(kUi, "g4", "[3]")}
        << QStringList{"ui|g4|{ \"b\" : 2, \"a\" : [1] }", "ui|g4|[3]"};
    QTest::newRow("ui members compact, by member name")
        << QVariantList{record(kUi, "g5",
                               "{\"x\":0, \"progressReportMap\": {\"leg2\": {\"z\": 1, \"a\": "
                               "\"s\"}, \"leg1\": {\"q\": [1, 2]}, \"leg3\": {}}}")}
        << QStringList{"ui|g5|{\"q\":[1,2]}", "ui|g5|{\"a\":\"s\",\"z\":1}", "ui|g5|{}"};
    QTest::newRow("ui not JSON, empty or T0 skipped, push goes on")
        << QVariantList{record(kUi, "g6", "not json"), record(kUi, "g6", ""),
                        record(kUi, "g6", "{\"t0\":1}", t0), record(kUi, "g6", "{\"ok\":1}")}
        << QStringList{"ui|g6|{\"ok\":1}"};
    QTest::newRow("unknown type ignored, push goes on")
        << QVariantList{record("bogus", "g7", "b"), record("Console", "g7", "c"),
                        record(kMessage, "g7", "m")}
        << QStringList{"message|g7|m"};
    QTest::newRow("empty ID ends the push")
        << QVariantList{record(kConsole, "g8", "first"), record(kConsole, "", "second"),
                        record(kConsole, "g8", "third")}
        << QStringList{"console|g8|first"};
    QTest::newRow("empty type ends the push")
        << QVariantList{record(kMessage, "g9", "first"), record("", "g9", "second"),
                        record(kMessage, "g9", "third"), record(kDiff, "g9", "fourth")}
        << QStringList{"message|g9|first"};
    QTest::newRow("empty push") << QVariantList() << QStringList();
}

void TestLogMgr::gatherReport()
{
    QFETCH(QVariantList, records);
    QFETCH(QStringList, expected);
    LogCapture capture;
    QSignalSpy trades(LogMgr::instance(), &LogMgr::signalTradeMsgUpdated);
    LogMgr::instance()->slotRecvGatherStrategyReport(push(records));
    QCOMPARE(drainAll(idsOf(records)), expected);
    QCOMPARE(capture.countOfType(QtWarningMsg), 0); // bad JSON is dropped silently
    QCOMPARE(trades.count(), 0);
}

void TestLogMgr::otherUsersRecordLogged_data()
{
    QTest::addColumn<QVariant>("user");
    QTest::addColumn<bool>("logged");
    QTest::newRow("login account") << QVariant(kLogin) << false;
    QTest::newRow("other account") << QVariant("trader-2") << true;
    QTest::newRow("case differs") << QVariant("Trader-1") << true;
    QTest::newRow("no user") << QVariant() << true;
}

void TestLogMgr::otherUsersRecordLogged()
{
    QFETCH(QVariant, user);
    QFETCH(bool, logged);
    const QString id = QStringLiteral("u-") + QTest::currentDataTag();
    LogCapture capture;
    LogMgr::instance()->slotRecvGatherStrategyReport(
        push({record(kConsole, id, "line-for-user", QString(), user)}));
    const QStringList fragments{id, "line-for-user", user.toString()};
    QCOMPARE(oneHoldsAll(capture, QtDebugMsg, fragments), logged);
    QCOMPARE(capture.count(QtDebugMsg, "line-for-user"), logged ? 1 : 0);
    QCOMPARE(drainAll({id}), QStringList{"console|" + id + "|line-for-user"}); // still stored
}

void TestLogMgr::tradeMessagesStored()
{
    LogMgr* mgr = LogMgr::instance();
    QSignalSpy spy(mgr, &LogMgr::signalTradeMsgUpdated);
    mgr->slotRecvGatherStrategyReport(push({
        record(kTrade, "ts-1", "{\"Tag\":\"t1\",\"Symbol\":\"600000.SH\",\"Qty\":100,"
                               "\"Fill\":{\"px\":1.5},\"List\":[1,\"b\"]}"),
        record(kTrade, "ts-1", "{}"),
        record(kTrade, "ts-1", "not json"),
        record(kTrade, "ts-1", "[1,2]"),
        record(kTrade, "ts-1", ""),
        record(kTrade, "ts-2", "{\"Tag\":\"t2\",\"Symbol\":\"000001.SZ\"}"),
        record(kTrade, "ts-1", "{\"Tag\":\"t3\",\"strategyID\":\"forged\"}"),
    }));

    VariantMap first{{"Tag", "t1"}, {"Symbol", "600000.SH"}, {"Qty", 100.0},
                     {"Fill", VariantMap{{"px", 1.5}}}, {"List", QVariantList{1.0, "b"}},
                     {Tessel_Fields::Strategy::strategyID, "ts-1"},
                     {Tessel_Fields::Security::symbol, "600000.SH"}};
    VariantMap second{{"Tag", "t2"}, {"Symbol", "000001.SZ"},
                      {Tessel_Fields::Strategy::strategyID, "ts-2"},
                      {Tessel_Fields::Security::symbol, "000001.SZ"}};
    // No Symbol of its own: symbol carries the missing value.
    VariantMap third{{"Tag", "t3"}, {Tessel_Fields::Strategy::strategyID, "ts-1"},
                     {Tessel_Fields::Security::symbol, QVariant()}};

    // Messages that convert to nothing are neither stored nor announced.
    QCOMPARE(spy.count(), 3);
    const QList<QPair<QString, VariantMap>> expected{{"ts-1", first}, {"ts-2", second},
                                                     {"ts-1", third}};
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(spy.at(i).at(0).toString(), expected.at(i).first);
        QCOMPARE(spy.at(i).at(1).value<VariantMap>(), expected.at(i).second);
    }
    const VariantMapList ts1 = mgr->GetTradeMsgByInstIdList({"ts-1"}, 0);
    QCOMPARE(ts1.size(), 2);
    QVERIFY(ts1.contains(first) && ts1.contains(third));
    QCOMPARE(mgr->GetTradeMsgByInstIdList({"ts-2"}, 1), VariantMapList{second});
    QCOMPARE(drainAll({"ts-1", "ts-2"}), QStringList()); // trade messages fill no buffer
}

void TestLogMgr::tradeMessagesByInstance_data()
{
    QTest::addColumn<QStringList>("ids");
    QTest::addColumn<int>("sortOrder");
    QTest::addColumn<QStringList>("tags");

    QTest::newRow("no IDs") << QStringList() << 1 << QStringList();
    QTest::newRow("unknown IDs only") << QStringList{"tr-none", "tr-a"} << 2 << QStringList();
    QTest::newRow("ascending, no time first")
        << QStringList{"tr-A"} << 1 << QStringList{"a0", "a1", "a2"};
    QTest::newRow("descending 2") << QStringList{"tr-A"} << 2 << QStringList{"a2", "a1", "a0"};
    QTest::newRow("descending -1") << QStringList{"tr-A"} << -1
                                   << QStringList{"a2", "a1", "a0"};
    QTest::newRow("descending 7") << QStringList{"tr-A"} << 7 << QStringList{"a2", "a1", "a0"};
    QTest::newRow("union ascending")
        << QStringList{"tr-B", "tr-none", "tr-A"} << 1 << QStringList{"a0", "a1", "b1", "a2"};
    QTest::newRow("union descending, IDs repeated")
        << QStringList{"tr-A", "tr-B", "tr-A"} << 3 << QStringList{"a2", "b1", "a1", "a0"};
    QTest::newRow("order 0, compared as a set")
        << QStringList{"tr-A", "tr-B"} << 0 << QStringList{"a0", "a1", "a2", "b1"};
}

void TestLogMgr::tradeMessagesByInstance()
{
    QFETCH(QStringList, ids);
    QFETCH(int, sortOrder);
    QFETCH(QStringList, tags);
    QStringList got;
    for (const VariantMap& m : LogMgr::instance()->GetTradeMsgByInstIdList(ids, sortOrder))
        got << m.value(QStringLiteral("Tag")).toString();
    if (sortOrder == 0)
        got.sort();
    QCOMPARE(got, tags);
    // Reading removes nothing.
    QCOMPARE(LogMgr::instance()->GetTradeMsgByInstIdList(ids, sortOrder).size(), tags.size());
}

void TestLogMgr::t0Report_data()
{
    QTest::addColumn<QVariantList>("records");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<int>("logType"); // QtMsgType of the one line holding every fragment
    QTest::addColumn<QStringList>("fragments");

    const QString t0 = Algo_Values::PerfType::t0;
    const auto legs = [](const QString& tag) {
        return QStringLiteral("{\"progressReportMap\":{\"b\":{\"tag\":\"%1b\"},"
                              "\"a\":{\"tag\":\"%1a\"}}}")
            .arg(tag);
    };
    const auto stored = [](const QString& id, const QString& tag) {
        return QStringList{QStringLiteral("ui|%1|{\"tag\":\"%2a\"}").arg(id, tag),
                           QStringLiteral("ui|%1|{\"tag\":\"%2b\"}").arg(id, tag)};
    };
    const QString bad = QStringLiteral("{\"progressReportMap\": {\"a\": }");
    QJsonParseError error;
    QJsonDocument::fromJson(bad.toUtf8(), &error);
    const QString where = QStringLiteral("LogMgr::slotRecvT0ProgressPerformanceReport");

    QTest::newRow("members compact, by member name")
        << QVariantList{record(kUi, "t1", legs("r1"), t0), record(kUi, "t1", legs("r2"))}
        << stored("t1", "r1") + stored("t1", "r2") << -1 << QStringList();
    QTest::newRow("ui without progressReportMap stores nothing")
        << QVariantList{record(kUi, "t2", "{\"a\":1}", t0), record(kUi, "t2", legs("r"), t0)}
        << stored("t2", "r") << -1 << QStringList();
    QTest::newRow("console ends the push")
        << QVariantList{record(kUi, "t3", legs("r1"), t0),
                        record(kConsole, "t3", "line-in-t0-push", t0),
                        record(kUi, "t3", legs("tail"), t0)}
        << stored("t3", "r1") << int(QtDebugMsg)
        << QStringList{where, t0, "t3", kConsole, "line-in-t0-push", "tail"};
    QTest::newRow("broken JSON warned, push goes on")
        << QVariantList{record(kUi, "t4", bad, t0), record(kUi, "t4", legs("r"), t0)}
        << stored("t4", "r") << int(QtWarningMsg)
        << QStringList{where, kUi, "t4", QString::number(error.error), error.errorString()};
    QTest::newRow("empty ID ends the push")
        << QVariantList{record(kUi, "t5", legs("r1"), t0), record(kUi, "", legs("r2"), t0),
                        record(kUi, "t5", legs("r3"), t0)}
        << stored("t5", "r1") << -1 << QStringList();
}

void TestLogMgr::t0Report()
{
    QFETCH(QVariantList, records);
    QFETCH(QStringList, expected);
    QFETCH(int, logType);
    QFETCH(QStringList, fragments);
    LogCapture capture;
    LogMgr::instance()->slotRecvT0ProgressPerformanceReport(push(records));
    QCOMPARE(drainAll(idsOf(records)), expected);
    QCOMPARE(capture.countOfType(QtWarningMsg), logType == QtWarningMsg ? 1 : 0);
    if (logType >= 0)
        QVERIFY(oneHoldsAll(capture, QtMsgType(logType), fragments));
}

QTEST_GUILESS_MAIN(TestLogMgr)
#include "tst_logmgr.moc"
