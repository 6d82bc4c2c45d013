// StrategyMgr forwards catalogue lookups to the business-data manager, relays
// its signals and caches the authority table. Both are process singletons
// wired once, so initTestCase() performs that first init() against a data
// manager that is already loaded and checks what it published.

#include "logcapture.h"

#include <platform/kxalgodatamgr.h>
#include <strategy/strategymgr.h>

#include <QtTest>

#include <future>
#include <thread>

namespace {

// Every field differs per entry, so a forwarder reading the wrong one shows.
AesStrategy entry(const QString& name, const QString& type, const QString& prop)
{
    AesStrategy s(name, name + "-alias", type, prop);
    s.setFeeId("F-" + name);
    s.setReportFormat("R-" + name);
    s.setUnderlyingMaxNum("M-" + name);
    return s;
}

const QList<AesStrategy> kCatalogue{entry("T0Alpha", "T0", "1"), entry("Pair", "Multi", "2"),
                                    entry("Basket", "T0", "3")};
const AuthorityTable kAuthority{
    {"10001", {{"trade", {{"T0Alpha", "n1"}, {"Pair", "n2"}}}, {"view", {{"T0Alpha", "n3"}}}}},
    {"10002", {{"trade", {{"Pair", "n4"}}}}}};

} // namespace

// lookups and algoNode run on what initTestCase loaded; publishesReadyParts,
// last, changes it.
class TestStrategyMgr : public QObject
{
    Q_OBJECT
    StrategyMgr* const mgr = StrategyMgr::instance();
    std::future<QString> read; // a pending read outlives the slot that started it

    // Records the manager's signals as "ready", "list", "table <node>", adding
    // "?" to one emitted outside the manager's thread (the slots run where the
    // signal is emitted) or carrying other data than expected. On the table
    // another thread reads node 10002/trade/Pair at once, which only succeeds
    // if the write lock was released before the emit.
    void watch(QObject* ctx, QStringList& seen, const QList<AesStrategy>& list,
               const AuthorityTable& table)
    {
        const auto note = [&seen, this](const QString& what, bool ok) {
            seen << (ok && QThread::currentThread() == mgr->thread() ? what : what + "?");
        };
        connect(
            mgr, &StrategyMgr::sigAlgoInfoReady, ctx, [=] { note("ready", true); },
            Qt::DirectConnection);
        connect(
            mgr, &StrategyMgr::sigQryAlgoStrategiesRsp, ctx,
            [=](const QList<AesStrategy>& l) { note("list", l == list); }, Qt::DirectConnection);
        connect(
            mgr, &StrategyMgr::signalNewAuthority, ctx,
            [=](const AuthorityTable& t) {
                read = std::async(std::launch::async,
                                  [this] { return mgr->GetAlgoNode("10002", "Pair", "trade"); });
                const bool unlocked =
                    read.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
                note("table " + (unlocked ? read.get() : "locked"), t == table);
            },
            Qt::DirectConnection);
    }

private slots:
    void initTestCase()
    {
        KxAlgoDataMgr::instance().setStrategies(kCatalogue);
        KxAlgoDataMgr::instance().setAuthority(kAuthority);
        QObject ctx;
        QStringList seen;
        watch(&ctx, seen, kCatalogue, kAuthority);
        LogCapture log;
        mgr->init();
        QCOMPARE(seen, QStringList({"ready", "list", "table n4"}));
        QCOMPARE(log.count(QtDebugMsg, "StrategyMgr::init 算法逻辑层 StrategyMgr init"), 1);
        QVERIFY(log.last(QtDebugMsg).contains("requestAlgoData")); // asked to load, last of all
    }

    // Forwarded lookups, and the symbol type: 1 only for the text "1".
    void lookups_data()
    {
        QTest::addColumn<int>("index"); // in kCatalogue, -1 for an unknown algo
        QTest::addColumn<int>("symbolType");
        QTest::newRow("\"1\" is single") << 0 << 1;
        QTest::newRow("\"2\" gives 0") << 1 << 0;
        QTest::newRow("unknown algo gives 0") << -1 << 0;
    }
    void lookups()
    {
        QFETCH(int, index);
        QFETCH(int, symbolType);
        const AesStrategy e = kCatalogue.value(index); // the default entry when unknown
        const QString name = index < 0 ? QStringLiteral("Nope") : e.name();
        QCOMPARE(int(mgr->GetAlgoSymbolType(name)), symbolType);
        QVERIFY(mgr->GetStrategy(name) == e);
        QCOMPARE(mgr->ContainsStrategy(name), index >= 0);
        QCOMPARE(mgr->GetFeeId(name), e.feeId());
        QCOMPARE(mgr->GetReportFormat(name), e.reportFormat());
        QCOMPARE(mgr->GetUnderlyingMaxNum(name), e.underlyingMaxNum());
        QCOMPARE(mgr->GetStrategyList({{name, "x"}}).keys(),
                 index < 0 ? QStringList() : QStringList{name});
        QList<AesStrategy> out{AesStrategy()};
        mgr->GetAllStrategies(out, "Multi");
        QVERIFY(out == kCatalogue.mid(1, 1));
        int count = -1;
        mgr->GetStrategyCnt(count);
        QCOMPARE(count, kCatalogue.size());
    }

    // Arguments: account, algo, category. A miss inserts nothing: a new
    // account would empty the intersection over the table, a new algo key
    // would show among the account's names.
    void algoNode_data()
    {
        QTest::addColumn<QStringList>("args"); // account, algo, category, expected
        QTest::newRow("hit") << QStringList{"10001", "Pair", "trade", "n2"};
        QTest::newRow("algo and category swapped") << QStringList{"10001", "trade", "Pair", ""};
        QTest::newRow("unknown account") << QStringList{"99999", "Pair", "trade", ""};
        QTest::newRow("unknown algo") << QStringList{"10002", "T0Alpha", "trade", ""};
    }
    void algoNode()
    {
        QFETCH(QStringList, args);
        QCOMPARE(mgr->GetAlgoNode(args[0], args[1], args[2]), args[3]);
        QVERIFY(mgr->GetAuthorityIntersection(QString("trade")) == kCatalogue.mid(1, 1));
        QCOMPARE(mgr->GetAuthorityAlgoName(args[0], args[2]), kAuthority[args[0]][args[2]].keys());
    }

    // Each ready part is published on its own; the table is replaced whole.
    void publishesReadyParts_data()
    {
        QTest::addColumn<QStringList>("parts"); // loaded, hence published
        QTest::addColumn<bool>("relayed");
        QTest::newRow("getCacheData, catalogue only") << QStringList{"ready", "list"} << false;
        QTest::newRow("getCacheData, authority only") << QStringList{"table x4"} << false;
        QTest::newRow("relayed from a host thread")
            << QStringList{"ready", "list", "table x4"} << true;
    }
    void publishesReadyParts()
    {
        QFETCH(QStringList, parts);
        QFETCH(bool, relayed);
        const AuthorityTable fresh{{"10002", {{"trade", {{"Pair", "x4"}}}}}};
        QObject ctx;
        QStringList seen;
        watch(&ctx, seen, kCatalogue.mid(1), fresh);
        const auto load = [&] {
            // getCacheData rows: loaded while nobody listens, as before init().
            const QSignalBlocker silence(relayed ? nullptr : &KxAlgoDataMgr::instance());
            KxAlgoDataMgr::instance().clear();
            if (parts.contains("list"))
                KxAlgoDataMgr::instance().setStrategies(kCatalogue.mid(1));
            if (parts.contains("table x4"))
                KxAlgoDataMgr::instance().setAuthority(fresh);
        };
        relayed ? std::thread(load).join() : (load(), mgr->getCacheData());
        QTRY_COMPARE(seen, parts);
        QCOMPARE(mgr->GetAlgoNode("10001", "Pair", "trade").isEmpty(), parts.contains("table x4"));
    }
};

QTEST_GUILESS_MAIN(TestStrategyMgr)

#include "tst_strategymgr.moc"
