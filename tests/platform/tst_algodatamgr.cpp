// The business-data manager owns the algo catalogue and the authority table.
// Every module reads it from its own thread while the host replaces the data,
// so besides the lookup rules these tests pin down the order of its signals,
// that a replacement is seen whole, and that its signals cross threads.

#include <platform/kxalgodatamgr.h>

#include <QtTest>

#include <atomic>
#include <thread>

namespace {

const QList<AesStrategy> kCatalogue{
    {"T0Alpha", "a", "T0", "1"}, {"Pair", "b", "Multi", "2"}, {"T0Beta", "c", "T0", "1"}};
const AuthorityTable kAuthority{{"10001", {{"trade", {{"T0Alpha", "1"}}}}},
                                {"10002", {{"trade", {{"Pair", "1"}}}}}};

// Names of `list`, "?" for an entry that is not a whole catalogue entry.
QStringList names(const QList<AesStrategy>& list)
{
    QStringList out;
    for (const AesStrategy& s : list)
        out << (kCatalogue.contains(s) ? s.name() : "?");
    return out;
}

} // namespace

class TestAlgoDataMgr : public QObject
{
    Q_OBJECT
    KxAlgoDataMgr& mgr = KxAlgoDataMgr::instance();

private slots:
    void init()
    {
        mgr.setStrategies(kCatalogue);
        mgr.setAuthority(kAuthority);
    }

    // setStrategies announces readiness, then the list; clear() and
    // requestAlgoData() emit nothing, and clear() empties and unreadies both.
    void signalsAndReadiness()
    {
        QStringList seen;
        QObject ctx;
        connect(&mgr, &KxAlgoDataMgr::sigAlgoInfoReady, &ctx, [&] { seen << "ready"; });
        connect(&mgr, &KxAlgoDataMgr::sigQryAlgoStrategiesRsp, &ctx,
                [&](const QList<AesStrategy>& l) { seen << (l == kCatalogue ? "list" : "?"); });
        connect(&mgr, &KxAlgoDataMgr::signalNewAuthority, &ctx,
                [&](const AuthorityTable& t) { seen << (t == kAuthority ? "table" : "?"); });
        mgr.setStrategies(kCatalogue);
        QCOMPARE(seen, QStringList({"ready", "list"}));
        mgr.setAuthority(kAuthority);
        mgr.clear();
        mgr.requestAlgoData();
        QCOMPARE(seen, QStringList({"ready", "list", "table"}));
        QVERIFY(!mgr.isAlgoStrategyReady() && !mgr.isNewAuthorityReady());
        QVERIFY(mgr.GetAllStrategies().isEmpty() && mgr.GetAllAuthorityInfo().isEmpty());
    }

    // GetAllStrategies by algo type (catalogue order, all for an empty type),
    // GetStrategyList by the keys of its filter (by name, all for no keys).
    void lookups_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QStringList>("ofType");
        QTest::addColumn<QStringList>("keys");
        QTest::addColumn<QStringList>("listed");
        QTest::newRow("everything") << "" << QStringList{"T0Alpha", "Pair", "T0Beta"}
                                    << QStringList() << QStringList{"Pair", "T0Alpha", "T0Beta"};
        QTest::newRow("narrowed") << "T0" << QStringList{"T0Alpha", "T0Beta"}
                                  << QStringList{"T0Beta", "Nope"} << QStringList{"T0Beta"};
        QTest::newRow("exact, case-sensitive match")
            << "t0" << QStringList() << QStringList{"t0beta", "b"} << QStringList();
    }
    void lookups()
    {
        QFETCH(QString, type);
        QFETCH(QStringList, ofType);
        QFETCH(QStringList, keys);
        QFETCH(QStringList, listed);
        QList<AesStrategy> out{AesStrategy()}; // replaced, not appended to
        mgr.GetAllStrategies(out, type);
        QCOMPARE(names(out), ofType);
        QMap<QString, QString> filter;
        for (const QString& key : keys)
            filter.insert(key, "ignored");
        QCOMPARE(names(mgr.GetStrategyList(filter).values()), listed);
        QVERIFY(mgr.GetStrategy("t0beta") == AesStrategy()); // unknown: the default entry
    }

    // Readers on other threads see the old or the new data, never a mixture.
    void readersSeeWholeReplacements()
    {
        const QList<AesStrategy> large = kCatalogue + QList<AesStrategy>{{"X", "x", "T0", "1"}};
        const AuthorityTable other{{"20001", {{"view", {{"X", "0"}}}}}};
        std::atomic<bool> writing{true};
        std::atomic<int> torn{0};
        std::thread reader([&] {
            do {
                const QList<AesStrategy> all = mgr.GetAllStrategies();
                const AuthorityTable table = mgr.GetAllAuthorityInfo();
                torn +=
                    (all != kCatalogue && all != large) + (table != kAuthority && table != other);
            } while (writing);
        });
        for (int i = 0; i < 3000; ++i) {
            mgr.setStrategies(i % 2 ? kCatalogue : large);
            mgr.setAuthority(i % 2 ? kAuthority : other);
        }
        writing = false;
        reader.join();
        QCOMPARE(torn.load(), 0);
    }

    // Auto connections to a receiver in another thread are queued, which
    // only works when the argument types are known by the names the signals
    // spell.
    void queuedCrossThreadDelivery()
    {
        QThread worker;
        QObject receiver;
        receiver.moveToThread(&worker);
        worker.start();
        const auto stop = qScopeGuard([&] { worker.quit(), worker.wait(); });
        std::atomic<int> delivered{0};
        const auto check = [&](bool ok) {
            delivered += ok && QThread::currentThread() == &worker ? 1 : 9;
        };
        connect(&mgr, &KxAlgoDataMgr::sigQryAlgoStrategiesRsp, &receiver,
                [=](const QList<AesStrategy>& l) { check(l == kCatalogue); });
        connect(&mgr, &KxAlgoDataMgr::signalNewAuthority, &receiver,
                [=](const AuthorityTable& t) { check(t == kAuthority); });
        mgr.setStrategies(kCatalogue);
        mgr.setAuthority(kAuthority);
        QTRY_COMPARE(delivered.load(), 2);
    }
};

QTEST_GUILESS_MAIN(TestAlgoDataMgr)

#include "tst_algodatamgr.moc"
