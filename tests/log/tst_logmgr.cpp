// The log manager sorts the server's report pushes into per-instance buffers
// that the user interface drains. The slots are called directly, in the test
// thread; the manager is a process singleton that keeps every trade message,
// so each case uses instance IDs of its own, and every test starts drained.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

namespace {

namespace Type = Algo_Values::ReportType;
namespace Strat = Tessel_Fields::Strategy;
const QString kLogin = QStringLiteral("trader-1"), kCon = QStringLiteral("con");
const QString kT0 = Algo_Values::PerfType::t0;
// to the T0 entry point (else the gather one); the records; the buffers afterwards; a text
// found in one debug line; one in the one warning (none when empty)
using Reports = std::tuple<bool, QVariantList, QStringList, QString, QString>;

QVariant record(const QString& type, const QString& id, const QString& body,
                const QString& perfType = QString(), const QString& user = kLogin)
{
    return VariantMap{{Strat::reportType, type}, {Strat::strategyID, id},
                      {Strat::strategyReport, body}, {Tessel_Fields::UserAccount::userID, user},
                      {Algo_Fields::HelmStrategy::perfType, perfType}};
}

// Every buffer drained into "kind|id|text" lines: kinds in a fixed order, texts in
// arrival order (one instance per kind at a time); console lines of instance kCon only.
QStringList drainAll()
{
    QHash<QString, QList<QString>> progress, logs;
    QHash<QString, QStringList> messages;
    QHash<QString, QString> diffs;
    LogMgr::instance()->popInstProgress(progress);
    LogMgr::instance()->popInstLog(kCon, logs[kCon]);
    LogMgr::instance()->popInstMsg(messages);
    LogMgr::instance()->popInstDiff(diffs);
    QStringList lines;
    const auto add = [&lines](const char* kind, const auto& hash) {
        for (auto it = hash.cbegin(); it != hash.cend(); ++it)
            for (const QString& text : QStringList(it.value()))
                lines << kind + ("|" + it.key()) + "|" + text;
    };
    add("ui", progress);
    add("console", logs);
    add("message", messages);
    add("diff", diffs);
    return lines;
}

} // namespace

Q_DECLARE_METATYPE(Reports)

class TestLogMgr : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init() { drainAll(); }
    void popsExchange();
    void reports_data();
    void reports();
    void tradeMessages();
};

void TestLogMgr::initTestCase()
{
    const_cast<QLoggingCategory&>(lcAlgoLog()).setEnabled(QtDebugMsg, true);
    CBusinessDataBase::GetInstance()->SetLoginAccount(kLogin);
}

void TestLogMgr::popsExchange()
{
    // Each pop hands over its buffer (here empty) in exchange for what the caller held.
    QHash<QString, QList<QString>> progress{{"seed", {"s1"}}};
    QHash<QString, QStringList> messages{{"seed", {"s2"}}};
    QHash<QString, QString> diffs{{"seed", "s3"}};
    LogMgr::instance()->popInstProgress(progress);
    LogMgr::instance()->popInstMsg(messages);
    LogMgr::instance()->popInstDiff(diffs);
    QVERIFY(progress.isEmpty() && messages.isEmpty() && diffs.isEmpty());
    QCOMPARE(drainAll(), (QStringList{"ui|seed|s1", "message|seed|s2", "diff|seed|s3"}));
    QList<QString> out{"kept"}; // no console lines: the caller's list is left as it was
    LogMgr::instance()->popInstLog(kCon, out);
    QCOMPARE(out, QList<QString>{"kept"});
}

void TestLogMgr::reports_data()
{
    QTest::addColumn<Reports>("row");
    const QString legs = R"({"progressReportMap":{"b":{"t":"b"},"a":{"t":"a","n":[1, 2]}}})";
    QTest::newRow("gather: by type and instance, in order; other user logged; empty type ends")
        << Reports{false,
                   {record(Type::console, kCon, "c1"), record(Type::message, "g2", "m1"),
                    record(Type::console, kCon, ""), record(Type::diff, "g1", "d1"),
                    record(Type::console, kCon, "c2", QString(), "trader-2"),
                    record(Type::message, "g2", ""), record(Type::diff, "g1", "d2"),
                    record(Type::diff, "g1", ""), record("Console", kCon, "c3"),
                    record(Type::ui, "g3", legs), record(Type::ui, "g3", "not json"),
                    record(Type::ui, "g3", ""), record(Type::ui, "g3", legs, kT0),
                    record(Type::ui, "g3", R"({ "b" : 2 })"), record("", "g2", "m2"),
                    record(Type::message, "g2", "m3")},
                   {R"(ui|g3|{"n":[1,2],"t":"a"})", R"(ui|g3|{"t":"b"})", R"(ui|g3|{ "b" : 2 })",
                    "console|con|c1", "console|con|c2", "message|g2|m1", "diff|g1|d2"},
                   "trader-2", ""};
    QTest::newRow("T0: broken JSON warned, the push goes on; a console record logged, ends it")
        << Reports{true,
                   {record(Type::ui, "t1", R"({"progressReportMap": {"a": })", kT0),
                    record(Type::ui, "t1", legs, kT0), record(Type::ui, "t1", "{}", kT0),
                    record(Type::console, "t1", "line-in-t0-push", kT0),
                    record(Type::ui, "t1", legs, kT0)},
                   {R"(ui|t1|{"n":[1,2],"t":"a"})", R"(ui|t1|{"t":"b"})"}, "line-in-t0-push",
                   "LogMgr::slotRecvT0ProgressPerformanceReport"};
}

void TestLogMgr::reports()
{
    QFETCH(Reports, row);
    const auto& [t0, records, expected, debug, warning] = row;
    LogCapture capture;
    t0 ? LogMgr::instance()->slotRecvT0ProgressPerformanceReport(records)
       : LogMgr::instance()->slotRecvGatherStrategyReport(records);
    QCOMPARE(drainAll(), expected);
    QCOMPARE(capture.count(QtDebugMsg, debug), 1);
    QCOMPARE(capture.countOfType(QtWarningMsg), warning.isEmpty() ? 0 : 1);
    QVERIFY2(capture.contains(QtWarningMsg, warning) || warning.isEmpty(), qPrintable(warning));
}

void TestLogMgr::tradeMessages()
{
    LogMgr* mgr = LogMgr::instance();
    QSignalSpy spy(mgr, &LogMgr::signalTradeMsgUpdated);
    mgr->slotRecvGatherStrategyReport(QVariantList{
        record(Type::tradeMsg, "tr-A", "{\"Tag\":\"a2\",\"Symbol\":\"S\",\"ReportTime\":\"9:02\"}"),
        record(Type::tradeMsg, "tr-B", "{\"Tag\":\"b1\",\"ReportTime\":\"9:01\"}"),
        record(Type::tradeMsg, "tr-A", "{}"), // converts to nothing: neither stored nor announced
        record(Type::tradeMsg, "tr-A", "{\"Tag\":\"a0\"}"),
        record(Type::tradeMsg, "tr-A", "{\"Tag\":\"a1\",\"ReportTime\":\"9:00\"}")});

    QCOMPARE(spy.count(), 4); // each tagged with its instance and its symbol
    const VariantMap a2{{"Tag", "a2"}, {"Symbol", "S"}, {"ReportTime", "9:02"},
                        {Strat::strategyID, "tr-A"}, {Tessel_Fields::Security::symbol, "S"}};
    QCOMPARE(spy[0], (QVariantList{"tr-A", a2}));
    const auto tags = [mgr](const QStringList& ids, int sortOrder) {
        QStringList got;
        for (const VariantMap& m : mgr->GetTradeMsgByInstIdList(ids, sortOrder))
            got << m.value("Tag").toString();
        return got;
    };
    QCOMPARE(tags({}, 1) + tags({"tr-none"}, 2), QStringList());
    // Ascending by report time, none first; descending for any order but 0 and 1.
    QCOMPARE(tags({"tr-B", "tr-none", "tr-A"}, 1), (QStringList{"a0", "a1", "b1", "a2"}));
    QCOMPARE(tags({"tr-A", "tr-B"}, 2), (QStringList{"a2", "b1", "a1", "a0"}));
    QCOMPARE(tags({"tr-A"}, -1), (QStringList{"a2", "a1", "a0"}));
    QStringList any = tags({"tr-A", "tr-B"}, 0); // read again: nothing is removed
    any.sort();
    QCOMPARE(any, (QStringList{"a0", "a1", "a2", "b1"}));
}

QTEST_GUILESS_MAIN(TestLogMgr)
#include "tst_logmgr.moc"
