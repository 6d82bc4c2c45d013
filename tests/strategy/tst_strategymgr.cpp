// StrategyMgr forwards catalogue lookups to the business-data manager, relays
// its signals and caches the authority table. Both are process singletons
// wired once, so initTestCase() performs that first init() against a data
// manager that is already loaded and checks what it published. Queries of the
// table: tst_strategyauthority; unknown accounts and names: tst_badinput.

#include "logcapture.h"

#include <platform/kxalgodatamgr.h>
#include <strategy/strategymgr.h>

#include <QtTest>

#include <future>
#include <thread>

namespace {

const QList<AesStrategy> kCatalogue{
    {"T0Alpha", "T0", "T0", "1"}, {"Pair", "Pair", "Multi", "2"}, {"Basket", "Basket", "T0", "3"}};
const AuthorityTable kAuthority{
    {"10001", {{"trade", {{"T0Alpha", "n1"}, {"Pair", "n2"}}}, {"view", {{"T0Alpha", "n3"}}}}},
    {"10002", {{"trade", {{"Pair", "n4"}}}}}};

} // namespace

// lookups run on what initTestCase loaded; publishesReadyParts, last, changes it.
class TestStrategyMgr : public QObject
{
    Q_OBJECT
    StrategyMgr* const mgr = StrategyMgr::instance();
    std::future<QString> read; // a pending read outlives the slot that started it

    // Records the manager's signals as "ready", "list", "table <node>", adding "?" to one
    // emitted outside the manager's thread (the slots run where the signal is emitted) or
    // carrying other data than expected. On the table another thread reads node
    // 10002/trade/Pair at once, which only succeeds if the write lock was released before
    // the emit.
    void watch(QObject* ctx, QStringList& seen, const QList<AesStrategy>& list,
               const AuthorityTable& table)
    {
        const auto note = [&seen, this](const QString& what, bool ok) {
            seen << (ok && QThread::currentThread() == mgr->thread() ? what : what + "?");
        };
        const auto direct = Qt::DirectConnection;
        connect(
            mgr, &StrategyMgr::sigAlgoInfoReady, ctx, [=] { note("ready", true); }, direct);
        connect(
            mgr, &StrategyMgr::sigQryAlgoStrategiesRsp, ctx,
            [=](const QList<AesStrategy>& l) { note("list", l == list); }, direct);
        connect(
            mgr, &StrategyMgr::signalNewAuthority, ctx,
            [=](const AuthorityTable& t) {
                read = std::async(std::launch::async,
                                  [this] { return mgr->GetAlgoNode("10002", "Pair", "trade"); });
                const bool unlocked =
                    read.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
                note("table " + (unlocked ? read.get() : "locked"), t == table);
            },
            direct);
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

    // The symbol type (1 only for the text "1") and the authority node of account 10001 in
    // category trade; the lookups that only forward to the catalogue: tst_algodatamgr.
    void lookups_data()
    {
        QTest::addColumn<QString>("algo");
        QTest::addColumn<int>("symbolType");
        QTest::addColumn<QString>("node");
        QTest::newRow("\"1\" is single") << "T0Alpha" << 1 << "n1";
        QTest::newRow("\"2\" gives 0") << "Pair" << 0 << "n2";
        QTest::newRow("unknown algo gives 0") << "Nope" << 0 << "";
    }
    void lookups()
    {
        QFETCH(QString, algo);
        QFETCH(int, symbolType);
        QFETCH(QString, node);
        QCOMPARE(int(mgr->GetAlgoSymbolType(algo)), symbolType);
        QCOMPARE(mgr->GetAlgoNode("10001", algo, "trade"), node);
        QCOMPARE(mgr->GetAlgoNode("10001", "trade", algo), QString()); // algo and category swapped
        QVERIFY(mgr->GetAuthorityIntersection(QString("trade")) == kCatalogue.mid(1, 1));
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
