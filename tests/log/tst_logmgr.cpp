// The log manager sorts the server's report pushes into per-instance buffers
// that the user interface drains. The slots are called directly, in the test
// thread; the manager is a process singleton that keeps every trade message,
// so each case uses instance IDs of its own, and every test starts drained.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

namespace {

const QString kLogin = QStringLiteral("trader-1"), kCon = QStringLiteral("con");

// A record from "TYPE ID BODY [t0] [@USER]": BODY "-" is empty, "legs" a report map of two
// members, "_" a space; t0 marks T0 performance; the user is the logged-in one unless given.
QVariant record(const QString& text)
{
    QStringList f = text.split(' ');
    const QString user = f.last().startsWith('@') ? f.takeLast().mid(1) : kLogin;
    const QString body = f.value(2) == "-" ? QString()
                         : f.value(2) == "legs"
                             ? R"({"progressReportMap":{"b":{"t":"b"},"a":{"t":"a","n":[1, 2]}}})"
                             : f.value(2).replace('_', ' ');
    return VariantMap{{"reportType", f.value(0) == "-" ? QString() : f.value(0)},
                      {"strategyID", f.value(1)},
                      {"strategyReport", body},
                      {"userID", user},
                      {"perfType", f.value(3) == "t0" ? "t0" : ""}};
}

// Every buffer drained into "kind|id|text" lines: kinds in a fixed order, texts in arrival
// order (one instance per kind at a time); console lines of instance kCon only.
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
    add("ui", progress), add("console", logs), add("message", messages), add("diff", diffs);
    return lines;
}

} // namespace

class TestLogMgr : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init() { drainAll(); }
    void gather();
    void tradeMessages();
};

void TestLogMgr::initTestCase()
{
    const_cast<QLoggingCategory&>(lcAlgoLog()).setEnabled(QtDebugMsg, true);
    CBusinessDataBase::GetInstance()->SetLoginAccount(kLogin);
}

// By type and instance, in order; a report for another user logged; T0 progress left to its
// own entry point (that one: tst_badinput); a record without type ends the push.
void TestLogMgr::gather()
{
    QVariantList list;
    for (const char* text :
         {"console con c1", "message g2 m1", "console con -", "diff g1 d1",
          "console con c2 - @trader-2", "message g2 -", "diff g1 d2", "diff g1 -", "Console con c3",
          "ui g3 legs", "ui g3 not-json", "ui g3 -", "ui g3 legs t0", "ui g3 {_\"b\"_:_2_}",
          "- g2 m2", "message g2 m3"})
        list << record(text);
    LogCapture capture;
    LogMgr::instance()->slotRecvGatherStrategyReport(list);
    QCOMPARE(drainAll(), QStringList({R"(ui|g3|{"n":[1,2],"t":"a"})", R"(ui|g3|{"t":"b"})",
                                      R"(ui|g3|{ "b" : 2 })", "console|con|c1", "console|con|c2",
                                      "message|g2|m1", "diff|g1|d2"}));
    QVERIFY(drainAll().isEmpty()); // popped exactly once
    QCOMPARE(capture.count(QtDebugMsg, "trader-2"), 1);
    QCOMPARE(capture.countOfType(QtWarningMsg), 0);
    // Each pop hands over its buffer in exchange for what the caller held; a console pop
    // without lines leaves the caller's list as it was.
    QHash<QString, QList<QString>> progress{{"seed", {"s1"}}};
    QHash<QString, QStringList> messages{{"seed", {"s2"}}};
    QHash<QString, QString> diffs{{"seed", "s3"}};
    QList<QString> kept{"kept"};
    LogMgr::instance()->popInstProgress(progress), LogMgr::instance()->popInstMsg(messages);
    LogMgr::instance()->popInstDiff(diffs), LogMgr::instance()->popInstLog(kCon, kept);
    QVERIFY(progress.isEmpty() && messages.isEmpty() && diffs.isEmpty());
    QCOMPARE(kept, QList<QString>{"kept"});
    QCOMPARE(drainAll(), (QStringList{"ui|seed|s1", "message|seed|s2", "diff|seed|s3"}));
}

void TestLogMgr::tradeMessages()
{
    LogMgr* mgr = LogMgr::instance();
    QSignalSpy spy(mgr, &LogMgr::signalTradeMsgUpdated);
    mgr->slotRecvGatherStrategyReport(QVariantList{
        record(R"(tradeMsg tr-A {"Tag":"a2","Symbol":"S","ReportTime":"9:02"})"),
        record(R"(tradeMsg tr-B {"Tag":"b1","ReportTime":"9:01"})"),
        record("tradeMsg tr-A {}"), // converts to nothing: neither stored nor announced
        record(R"(tradeMsg tr-A {"Tag":"a0"})"),
        record(R"(tradeMsg tr-A {"Tag":"a1","ReportTime":"9:00"})")});
    QCOMPARE(spy.count(), 4); // each tagged with its instance and its symbol
    const VariantMap a2{{"Tag", "a2"},
                        {"Symbol", "S"},
                        {"ReportTime", "9:02"},
                        {"strategyID", "tr-A"},
                        {"symbol", "S"}};
    QCOMPARE(spy[0], (QVariantList{"tr-A", a2}));
    const auto tags = [mgr](const QStringList& ids, int sortOrder) {
        QStringList got;
        for (const VariantMap& m : mgr->GetTradeMsgByInstIdList(ids, sortOrder))
            got << m.value("Tag").toString();
        return got.join(' ');
    };
    QCOMPARE(tags({}, 1) + tags({"tr-none"}, 2), QString());
    // Ascending by report time, none first; descending for any order but 0 and 1.
    QCOMPARE(tags({"tr-B", "tr-none", "tr-A"}, 1), QStringLiteral("a0 a1 b1 a2"));
    QCOMPARE(tags({"tr-A", "tr-B"}, 2), QStringLiteral("a2 b1 a1 a0"));
    QCOMPARE(tags({"tr-A"}, -1), QStringLiteral("a2 a1 a0"));
    QStringList any = tags({"tr-A", "tr-B"}, 0).split(' '); // read again: nothing is removed
    any.sort();
    QCOMPARE(any.join(' '), QStringLiteral("a0 a1 a2 b1"));
}

QTEST_GUILESS_MAIN(TestLogMgr)
#include "tst_logmgr.moc"
