// The business-data manager is the terminal-wide owner of the algo catalogue
// and of the authority table. Every module of the terminal reads it from its
// own thread while the host replaces the data, so besides the lookup rules
// these tests pin down the order of its signals, that a replacement is seen
// whole or not at all, and that its signals can cross threads.

#include "logcapture.h"

#include <platform/aesstrategy.h>
#include <platform/algodefines.h>
#include <platform/kxalgodatamgr.h>
#include <platform/varianttypes.h>

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QMutex>
#include <QMutexLocker>
#include <QSignalSpy>
#include <QScopeGuard>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>
#include <vector>

namespace {

AesStrategy makeStrategy(const QString& name, const QString& alias, const QString& algoType,
                         const QString& underlyingProp, const QString& feeId = QString(),
                         const QString& reportFormat = QString(),
                         const QString& underlyingMaxNum = QString())
{
    AesStrategy strategy(name, alias, algoType, underlyingProp);
    strategy.setFeeId(feeId);
    strategy.setReportFormat(reportFormat);
    strategy.setUnderlyingMaxNum(underlyingMaxNum);
    return strategy;
}

// A catalogue with two entries of one type, so that type filters have to
// keep catalogue order, and an entry without optional fields.
QList<AesStrategy> sampleCatalogue()
{
    using namespace Algo_Values::AlgoGlobalType;
    return {
        makeStrategy(QStringLiteral("T0Alpha"), QStringLiteral("日内阿尔法"), T0,
                     QStringLiteral("1"), QStringLiteral("F-T0A"), QStringLiteral("fmt-t0"),
                     QStringLiteral("1")),
        makeStrategy(QStringLiteral("Pair"), QStringLiteral("配对"), multiStr,
                     QStringLiteral("2"), QStringLiteral("F-PAIR"), QStringLiteral("fmt-pair"),
                     QStringLiteral("2")),
        makeStrategy(QStringLiteral("T0Beta"), QStringLiteral("日内贝塔"), T0,
                     QStringLiteral("1"), QStringLiteral("F-T0B"), QStringLiteral("fmt-t0b"),
                     QStringLiteral("1")),
        makeStrategy(QStringLiteral("Basket"), QStringLiteral("篮子"), instruction,
                     QStringLiteral("2"), QString(), QString(), QStringLiteral("50")),
        makeStrategy(QStringLiteral("Vault"), QStringLiteral("存管"), deposit, QString()),
    };
}

AuthorityTable sampleAuthority()
{
    AuthorityTable table;
    table[QStringLiteral("10001")][QStringLiteral("trade")][QStringLiteral("T0Alpha")] =
        QStringLiteral("1");
    table[QStringLiteral("10001")][QStringLiteral("view")][QStringLiteral("Pair")] =
        QStringLiteral("0");
    table[QStringLiteral("10002")][QStringLiteral("trade")][QStringLiteral("Pair")] =
        QStringLiteral("1");
    return table;
}

QStringList namesOf(const QList<AesStrategy>& list)
{
    QStringList names;
    for (const AesStrategy& strategy : list)
        names << strategy.name();
    return names;
}

AesStrategy equalityBase()
{
    return makeStrategy(QStringLiteral("N"), QStringLiteral("A"), QStringLiteral("T"),
                        QStringLiteral("1"), QStringLiteral("F"), QStringLiteral("R"),
                        QStringLiteral("M"));
}

// A catalogue generation whose every entry carries the generation's tag in
// its alias and fee id, so that a reader can tell which write it observed.
QList<AesStrategy> generation(const QString& tag, int size)
{
    QList<AesStrategy> list;
    for (int i = 0; i < size; ++i) {
        list << makeStrategy(QStringLiteral("S%1").arg(i), tag, Algo_Values::AlgoGlobalType::T0,
                             QStringLiteral("1"), QStringLiteral("%1-%2").arg(tag).arg(i));
    }
    return list;
}

} // namespace

// Lives in another thread; its slots spell the signal's types the way the
// data manager's meta-object does, as a host connecting by signature would.
class CrossThreadReceiver : public QObject
{
    Q_OBJECT
public:
    QList<AesStrategy> strategies() const
    {
        QMutexLocker locker(&m_mutex);
        return m_strategies;
    }
    AuthorityTable authority() const
    {
        QMutexLocker locker(&m_mutex);
        return m_authority;
    }
    int deliveries() const { return m_deliveries.load(); }
    bool allInOwnThread() const { return m_allInOwnThread.load(); }

public slots:
    void onStrategies(const QList<AesStrategy>& strategies)
    {
        noteThread();
        QMutexLocker locker(&m_mutex);
        m_strategies = strategies;
        ++m_deliveries;
    }
    void onAuthority(QMap<QString, QMap<QString, QMap<QString, QString>>> table)
    {
        noteThread();
        QMutexLocker locker(&m_mutex);
        m_authority = table;
        ++m_deliveries;
    }

private:
    void noteThread()
    {
        if (QThread::currentThread() != thread())
            m_allInOwnThread = false;
    }

    mutable QMutex m_mutex;
    QList<AesStrategy> m_strategies;
    AuthorityTable m_authority;
    std::atomic<int> m_deliveries{0};
    std::atomic<bool> m_allInOwnThread{true};
};

class TestAlgoDataMgr : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();

    void aesStrategyEqualityCoversEveryField_data();
    void aesStrategyEqualityCoversEveryField();

    void setStrategiesAnnouncesReadinessThenList_data();
    void setStrategiesAnnouncesReadinessThenList();
    void readiness_data();
    void readiness();
    void lookupsByName_data();
    void lookupsByName();
    void duplicateNamesLaterEntryWins();
    void allStrategiesOfType_data();
    void allStrategiesOfType();
    void strategyListFilter_data();
    void strategyListFilter();
    void strategyCount_data();
    void strategyCount();

    void setAuthorityReplacesAndAnnounces_data();
    void setAuthorityReplacesAndAnnounces();
    void clearEmitsNothingAndUnreadies();
    void requestAlgoDataOnlyLogs();

    void concurrentReadersNeverSeeTornData();
    void queuedCrossThreadDelivery();
};

void TestAlgoDataMgr::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("algologic.*.debug=true"));
}

void TestAlgoDataMgr::init()
{
    KxAlgoDataMgr::instance().clear();
}

void TestAlgoDataMgr::aesStrategyEqualityCoversEveryField_data()
{
    QTest::addColumn<AesStrategy>("other");

    // Each row differs from equalityBase() in one field only.
    const auto differing = [](const QString& field) {
        const auto pick = [&field](const char* name, const char* same, const char* changed) {
            return QString::fromLatin1(field == QLatin1String(name) ? changed : same);
        };
        return makeStrategy(pick("name", "N", "n"), pick("alias", "A", "a"),
                            pick("algoType", "T", "t"), pick("underlyingProp", "1", "2"),
                            pick("feeId", "F", "f"), pick("reportFormat", "R", "r"),
                            pick("underlyingMaxNum", "M", "m"));
    };
    for (const char* field : {"name", "alias", "algoType", "underlyingProp", "feeId",
                              "reportFormat", "underlyingMaxNum"})
        QTest::newRow(field) << differing(QString::fromLatin1(field));
    QTest::newRow("default entry") << AesStrategy();
}

void TestAlgoDataMgr::aesStrategyEqualityCoversEveryField()
{
    QFETCH(AesStrategy, other);
    const AesStrategy base = equalityBase();
    QVERIFY(base == equalityBase());
    QVERIFY(!(base == other));
    QVERIFY(base != other);
    const AesStrategy copy = other;
    QVERIFY(copy == other);
}

void TestAlgoDataMgr::setStrategiesAnnouncesReadinessThenList_data()
{
    QTest::addColumn<QList<AesStrategy>>("catalogue");

    QTest::newRow("sample catalogue") << sampleCatalogue();
    QTest::newRow("single entry") << sampleCatalogue().mid(1, 1);
    // An empty answer is still an answer: listeners must learn it arrived.
    QTest::newRow("empty catalogue") << QList<AesStrategy>();
}

void TestAlgoDataMgr::setStrategiesAnnouncesReadinessThenList()
{
    QFETCH(QList<AesStrategy>, catalogue);
    KxAlgoDataMgr& mgr = KxAlgoDataMgr::instance();

    QSignalSpy readySpy(&mgr, &KxAlgoDataMgr::sigAlgoInfoReady);
    QSignalSpy listSpy(&mgr, &KxAlgoDataMgr::sigQryAlgoStrategiesRsp);
    QSignalSpy authoritySpy(&mgr, &KxAlgoDataMgr::signalNewAuthority);

    // A listener reacting to readiness reads the catalogue at once, from
    // another thread so that a lock still held by the emitter fails the
    // test instead of hanging it.
    QStringList order;
    std::future<int> countSeenOnReady;
    bool readReturnedInTime = false;
    QMetaObject::Connection readyConnection =
        connect(&mgr, &KxAlgoDataMgr::sigAlgoInfoReady, this, [&] {
            order << QStringLiteral("ready");
            countSeenOnReady = std::async(std::launch::async, [] {
                int count = -1;
                KxAlgoDataMgr::instance().GetStrategyCnt(count);
                return count;
            });
            readReturnedInTime = countSeenOnReady.wait_for(std::chrono::seconds(5))
                == std::future_status::ready;
        });
    QMetaObject::Connection listConnection = connect(
        &mgr, &KxAlgoDataMgr::sigQryAlgoStrategiesRsp, this,
        [&](const QList<AesStrategy>&) { order << QStringLiteral("list"); });

    mgr.setStrategies(catalogue);
    disconnect(readyConnection);
    disconnect(listConnection);

    QCOMPARE(order, QStringList({QStringLiteral("ready"), QStringLiteral("list")}));
    QCOMPARE(readySpy.count(), 1);
    QCOMPARE(readySpy.first().count(), 0);
    QCOMPARE(listSpy.count(), 1);
    QCOMPARE(namesOf(listSpy.first().first().value<QList<AesStrategy>>()), namesOf(catalogue));
    QVERIFY(listSpy.first().first().value<QList<AesStrategy>>() == catalogue);
    QCOMPARE(authoritySpy.count(), 0);

    QVERIFY2(readReturnedInTime, "catalogue still locked while sigAlgoInfoReady was emitted");
    QCOMPARE(countSeenOnReady.get(), catalogue.size());
    QVERIFY(mgr.isAlgoStrategyReady());
    QVERIFY(!mgr.isNewAuthorityReady());
}

void TestAlgoDataMgr::readiness_data()
{
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<bool>("catalogueReady");
    QTest::addColumn<bool>("authorityReady");

    const QString strategies = QStringLiteral("strategies");
    const QString authority = QStringLiteral("authority");
    const QString clear = QStringLiteral("clear");

    QTest::newRow("nothing loaded") << QStringList() << false << false;
    QTest::newRow("catalogue only") << QStringList{strategies} << true << false;
    QTest::newRow("authority only") << QStringList{authority} << false << true;
    QTest::newRow("both") << QStringList{strategies, authority} << true << true;
    QTest::newRow("both then cleared") << QStringList{strategies, authority, clear} << false
                                       << false;
    QTest::newRow("reloaded after clear")
        << QStringList{strategies, authority, clear, authority} << false << true;
    QTest::newRow("empty catalogue counts as loaded") << QStringList{QStringLiteral("empty")}
                                                      << true << false;
}

void TestAlgoDataMgr::readiness()
{
    QFETCH(QStringList, steps);
    QFETCH(bool, catalogueReady);
    QFETCH(bool, authorityReady);
    KxAlgoDataMgr& mgr = KxAlgoDataMgr::instance();

    for (const QString& step : steps) {
        if (step == QLatin1String("strategies"))
            mgr.setStrategies(sampleCatalogue());
        else if (step == QLatin1String("empty"))
            mgr.setStrategies({});
        else if (step == QLatin1String("authority"))
            mgr.setAuthority(sampleAuthority());
        else if (step == QLatin1String("clear"))
            mgr.clear();
    }

    QCOMPARE(mgr.isAlgoStrategyReady(), catalogueReady);
    QCOMPARE(mgr.isNewAuthorityReady(), authorityReady);
}

void TestAlgoDataMgr::lookupsByName_data()
{
    QTest::addColumn<QString>("algoName");
    QTest::addColumn<bool>("known");
    QTest::addColumn<QString>("alias");
    QTest::addColumn<QString>("feeId");
    QTest::addColumn<QString>("reportFormat");
    QTest::addColumn<QString>("underlyingMaxNum");

    QTest::newRow("first entry") << QStringLiteral("T0Alpha") << true
                                 << QStringLiteral("日内阿尔法") << QStringLiteral("F-T0A")
                                 << QStringLiteral("fmt-t0") << QStringLiteral("1");
    QTest::newRow("middle entry") << QStringLiteral("T0Beta") << true
                                  << QStringLiteral("日内贝塔") << QStringLiteral("F-T0B")
                                  << QStringLiteral("fmt-t0b") << QStringLiteral("1");
    QTest::newRow("multi-security entry") << QStringLiteral("Pair") << true
                                          << QStringLiteral("配对") << QStringLiteral("F-PAIR")
                                          << QStringLiteral("fmt-pair") << QStringLiteral("2");
    QTest::newRow("entry without optional fields") << QStringLiteral("Vault") << true
                                                   << QStringLiteral("存管") << QString()
                                                   << QString() << QString();
    QTest::newRow("unknown name") << QStringLiteral("Nope") << false << QString() << QString()
                                  << QString() << QString();
    QTest::newRow("empty name") << QString() << false << QString() << QString() << QString()
                                << QString();
    QTest::newRow("names are case-sensitive") << QStringLiteral("t0alpha") << false << QString()
                                              << QString() << QString() << QString();
    QTest::newRow("alias is not a name") << QStringLiteral("配对") << false << QString()
                                         << QString() << QString() << QString();
}

void TestAlgoDataMgr::lookupsByName()
{
    QFETCH(QString, algoName);
    QFETCH(bool, known);
    QFETCH(QString, alias);
    QFETCH(QString, feeId);
    QFETCH(QString, reportFormat);
    QFETCH(QString, underlyingMaxNum);
    KxAlgoDataMgr& mgr = KxAlgoDataMgr::instance();
    mgr.setStrategies(sampleCatalogue());

    const AesStrategy strategy = mgr.GetStrategy(algoName);
    QCOMPARE(mgr.ContainsStrategy(algoName), known);
    if (known) {
        QCOMPARE(strategy.name(), algoName);
        QCOMPARE(strategy.alias(), alias);
    } else {
        // The unknown entry is the default one, not some neighbour.
        QVERIFY(strategy == AesStrategy());
    }
    QCOMPARE(mgr.getFeeId(algoName), feeId);
    QCOMPARE(mgr.GetReportFormat(algoName), reportFormat);
    QCOMPARE(mgr.GetUnderlyingMaxNum(algoName), underlyingMaxNum);
}

void TestAlgoDataMgr::duplicateNamesLaterEntryWins()
{
    KxAlgoDataMgr& mgr = KxAlgoDataMgr::instance();
    const AesStrategy first = makeStrategy(QStringLiteral("Dup"), QStringLiteral("old"),
                                           QStringLiteral("T0"), QStringLiteral("1"),
                                           QStringLiteral("F-OLD"));
    const AesStrategy second = makeStrategy(QStringLiteral("Dup"), QStringLiteral("new"),
                                            QStringLiteral("T0"), QStringLiteral("2"),
                                            QStringLiteral("F-NEW"));
    mgr.setStrategies({first, second});

    QVERIFY(mgr.GetStrategy(QStringLiteral("Dup")) == second);
    QCOMPARE(mgr.getFeeId(QStringLiteral("Dup")), QStringLiteral("F-NEW"));
    const QMap<QString, AesStrategy> byName = mgr.GetStrategyList({});
    QCOMPARE(byName.size(), 1);
    QVERIFY(byName.value(QStringLiteral("Dup")) == second);
}

void TestAlgoDataMgr::allStrategiesOfType_data()
{
    QTest::addColumn<QString>("algoType");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("empty type gives all, in catalogue order")
        << QString()
        << QStringList{QStringLiteral("T0Alpha"), QStringLiteral("Pair"),
                       QStringLiteral("T0Beta"), QStringLiteral("Basket"),
                       QStringLiteral("Vault")};
    QTest::newRow("two of a type keep catalogue order")
        << Algo_Values::AlgoGlobalType::T0
        << QStringList{QStringLiteral("T0Alpha"), QStringLiteral("T0Beta")};
    QTest::newRow("one of a type") << Algo_Values::AlgoGlobalType::multiStr
                                   << QStringList{QStringLiteral("Pair")};
    QTest::newRow("type nobody has") << Algo_Values::AlgoGlobalType::feature << QStringList();
    QTest::newRow("type is matched exactly") << QStringLiteral("t0") << QStringList();
}

void TestAlgoDataMgr::allStrategiesOfType()
{
    QFETCH(QString, algoType);
    QFETCH(QStringList, expected);
    KxAlgoDataMgr& mgr = KxAlgoDataMgr::instance();
    mgr.setStrategies(sampleCatalogue());

    // Whatever the caller had in the list is replaced, not appended to.
    QList<AesStrategy> out{makeStrategy(QStringLiteral("Stale"), QString(), algoType, QString())};
    mgr.GetAllStrategies(out, algoType);

    QCOMPARE(namesOf(out), expected);
    for (const AesStrategy& strategy : qAsConst(out)) {
        QVERIFY(strategy == mgr.GetStrategy(strategy.name()));
        if (!algoType.isEmpty())
            QCOMPARE(strategy.algoType(), algoType);
    }
}

void TestAlgoDataMgr::strategyListFilter_data()
{
    QTest::addColumn<QStringList>("filterKeys");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("empty filter gives all")
        << QStringList()
        << QStringList{QStringLiteral("Basket"), QStringLiteral("Pair"),
                       QStringLiteral("T0Alpha"), QStringLiteral("T0Beta"),
                       QStringLiteral("Vault")};
    QTest::newRow("one name") << QStringList{QStringLiteral("Pair")}
                              << QStringList{QStringLiteral("Pair")};
    QTest::newRow("unknown names are dropped")
        << QStringList{QStringLiteral("T0Beta"), QStringLiteral("Nope"), QStringLiteral("Vault")}
        << QStringList{QStringLiteral("T0Beta"), QStringLiteral("Vault")};
    QTest::newRow("only unknown names") << QStringList{QStringLiteral("Nope")} << QStringList();
    QTest::newRow("alias does not match") << QStringList{QStringLiteral("配对")} << QStringList();
}

void TestAlgoDataMgr::strategyListFilter()
{
    QFETCH(QStringList, filterKeys);
    QFETCH(QStringList, expected);
    KxAlgoDataMgr& mgr = KxAlgoDataMgr::instance();
    mgr.setStrategies(sampleCatalogue());

    // Only the keys of the filter matter; its values are arbitrary texts.
    QMap<QString, QString> filter;
    for (const QString& key : qAsConst(filterKeys))
        filter.insert(key, QStringLiteral("ignored-") + key);

    const QMap<QString, AesStrategy> result = mgr.GetStrategyList(filter);
    QCOMPARE(result.keys(), expected);
    for (auto it = result.cbegin(); it != result.cend(); ++it) {
        QCOMPARE(it.value().name(), it.key());
        QVERIFY(it.value() == mgr.GetStrategy(it.key()));
    }
}

void TestAlgoDataMgr::strategyCount_data()
{
    QTest::addColumn<QList<AesStrategy>>("catalogue");
    QTest::addColumn<bool>("clearAfter");
    QTest::addColumn<int>("expected");

    QTest::newRow("empty catalogue") << QList<AesStrategy>() << false << 0;
    QTest::newRow("one entry") << sampleCatalogue().mid(0, 1) << false << 1;
    QTest::newRow("sample catalogue") << sampleCatalogue() << false << sampleCatalogue().size();
    QTest::newRow("after clear") << sampleCatalogue() << true << 0;
}

void TestAlgoDataMgr::strategyCount()
{
    QFETCH(QList<AesStrategy>, catalogue);
    QFETCH(bool, clearAfter);
    QFETCH(int, expected);
    KxAlgoDataMgr& mgr = KxAlgoDataMgr::instance();
    mgr.setStrategies(sampleCatalogue());
    mgr.setStrategies(catalogue);
    if (clearAfter)
        mgr.clear();

    int count = -1;
    mgr.GetStrategyCnt(count);
    QCOMPARE(count, expected);
}

void TestAlgoDataMgr::setAuthorityReplacesAndAnnounces_data()
{
    QTest::addColumn<AuthorityTable>("before");
    QTest::addColumn<AuthorityTable>("table");

    AuthorityTable other;
    other[QStringLiteral("20001")][QStringLiteral("trade")][QStringLiteral("Basket")] =
        QStringLiteral("1");

    QTest::newRow("first table") << AuthorityTable() << sampleAuthority();
    QTest::newRow("replacement drops old accounts") << sampleAuthority() << other;
    QTest::newRow("empty table still announced") << sampleAuthority() << AuthorityTable();
}

void TestAlgoDataMgr::setAuthorityReplacesAndAnnounces()
{
    QFETCH(AuthorityTable, before);
    QFETCH(AuthorityTable, table);
    KxAlgoDataMgr& mgr = KxAlgoDataMgr::instance();
    if (!before.isEmpty())
        mgr.setAuthority(before);

    QSignalSpy authoritySpy(&mgr, &KxAlgoDataMgr::signalNewAuthority);
    QSignalSpy readySpy(&mgr, &KxAlgoDataMgr::sigAlgoInfoReady);
    QSignalSpy listSpy(&mgr, &KxAlgoDataMgr::sigQryAlgoStrategiesRsp);

    // A listener reads the stored table while the signal is delivered.
    std::future<AuthorityTable> seenOnSignal;
    bool readReturnedInTime = false;
    const QMetaObject::Connection connection =
        connect(&mgr, &KxAlgoDataMgr::signalNewAuthority, this, [&](const AuthorityTable&) {
            seenOnSignal = std::async(std::launch::async, [] {
                return KxAlgoDataMgr::instance().GetAllAuthorityInfo();
            });
            readReturnedInTime = seenOnSignal.wait_for(std::chrono::seconds(5))
                == std::future_status::ready;
        });
    mgr.setAuthority(table);
    disconnect(connection);

    QCOMPARE(authoritySpy.count(), 1);
    QCOMPARE(authoritySpy.first().first().value<AuthorityTable>(), table);
    QCOMPARE(readySpy.count(), 0);
    QCOMPARE(listSpy.count(), 0);
    QVERIFY2(readReturnedInTime, "authority still locked while signalNewAuthority was emitted");
    QCOMPARE(seenOnSignal.get(), table);
    QCOMPARE(mgr.GetAllAuthorityInfo(), table);
    QVERIFY(mgr.isNewAuthorityReady());
}

void TestAlgoDataMgr::clearEmitsNothingAndUnreadies()
{
    KxAlgoDataMgr& mgr = KxAlgoDataMgr::instance();
    mgr.setStrategies(sampleCatalogue());
    mgr.setAuthority(sampleAuthority());

    QSignalSpy readySpy(&mgr, &KxAlgoDataMgr::sigAlgoInfoReady);
    QSignalSpy listSpy(&mgr, &KxAlgoDataMgr::sigQryAlgoStrategiesRsp);
    QSignalSpy authoritySpy(&mgr, &KxAlgoDataMgr::signalNewAuthority);
    mgr.clear();
    QCoreApplication::processEvents();

    QCOMPARE(readySpy.count(), 0);
    QCOMPARE(listSpy.count(), 0);
    QCOMPARE(authoritySpy.count(), 0);
    QVERIFY(!mgr.isAlgoStrategyReady());
    QVERIFY(!mgr.isNewAuthorityReady());
    QVERIFY(mgr.GetAllStrategies().isEmpty());
    QVERIFY(mgr.GetStrategyList({}).isEmpty());
    QVERIFY(!mgr.ContainsStrategy(QStringLiteral("T0Alpha")));
    QVERIFY(mgr.GetStrategy(QStringLiteral("T0Alpha")) == AesStrategy());
    QVERIFY(mgr.GetAllAuthorityInfo().isEmpty());
}

void TestAlgoDataMgr::requestAlgoDataOnlyLogs()
{
    KxAlgoDataMgr& mgr = KxAlgoDataMgr::instance();
    mgr.setStrategies(sampleCatalogue());

    QSignalSpy readySpy(&mgr, &KxAlgoDataMgr::sigAlgoInfoReady);
    QSignalSpy listSpy(&mgr, &KxAlgoDataMgr::sigQryAlgoStrategiesRsp);
    QSignalSpy authoritySpy(&mgr, &KxAlgoDataMgr::signalNewAuthority);
    LogCapture log;
    mgr.requestAlgoData();
    QCoreApplication::processEvents();

    QCOMPARE(log.count(QtDebugMsg, QStringLiteral("KxAlgoDataMgr::requestAlgoData")), 1);
    QCOMPARE(readySpy.count(), 0);
    QCOMPARE(listSpy.count(), 0);
    QCOMPARE(authoritySpy.count(), 0);
    // Nothing is loaded or dropped either.
    QVERIFY(mgr.isAlgoStrategyReady());
    QVERIFY(!mgr.isNewAuthorityReady());
    QCOMPARE(namesOf(mgr.GetAllStrategies()), namesOf(sampleCatalogue()));
}

void TestAlgoDataMgr::concurrentReadersNeverSeeTornData()
{
    KxAlgoDataMgr& mgr = KxAlgoDataMgr::instance();
    const QList<AesStrategy> small = generation(QStringLiteral("A"), 3);
    const QList<AesStrategy> large = generation(QStringLiteral("B"), 7);
    AuthorityTable tableA = sampleAuthority();
    AuthorityTable tableB;
    for (int i = 0; i < 20; ++i)
        tableB[QStringLiteral("acc%1").arg(i)][QStringLiteral("trade")][QStringLiteral("S0")] =
            QString::number(i);
    mgr.setStrategies(small);
    mgr.setAuthority(tableA);

    // A list read is whole when its size and every entry's tag belong to the
    // same write.
    const auto wholeList = [&](const QList<AesStrategy>& list) {
        const QString tag = list.size() == small.size()   ? QStringLiteral("A")
                            : list.size() == large.size() ? QStringLiteral("B")
                                                          : QString();
        if (tag.isEmpty())
            return false;
        for (int i = 0; i < list.size(); ++i) {
            if (list.at(i).alias() != tag || list.at(i).name() != QStringLiteral("S%1").arg(i)
                || list.at(i).feeId() != QStringLiteral("%1-%2").arg(tag).arg(i))
                return false;
        }
        return true;
    };

    std::atomic<bool> writing{true};
    std::atomic<int> torn{0};
    std::atomic<int> reads{0};
    QStringList firstProblems;
    QMutex problemsMutex;
    const auto note = [&](const QString& what) {
        ++torn;
        QMutexLocker locker(&problemsMutex);
        if (firstProblems.size() < 5)
            firstProblems << what;
    };

    const auto reader = [&] {
        do {
            const QList<AesStrategy> all = mgr.GetAllStrategies();
            if (!wholeList(all))
                note(QStringLiteral("GetAllStrategies size %1").arg(all.size()));

            QList<AesStrategy> ofType;
            mgr.GetAllStrategies(ofType, Algo_Values::AlgoGlobalType::T0);
            if (!wholeList(ofType))
                note(QStringLiteral("GetAllStrategies(T0) size %1").arg(ofType.size()));

            const QMap<QString, AesStrategy> byName = mgr.GetStrategyList({});
            if (!wholeList(byName.values()))
                note(QStringLiteral("GetStrategyList size %1").arg(byName.size()));

            int count = -1;
            mgr.GetStrategyCnt(count);
            if (count != small.size() && count != large.size())
                note(QStringLiteral("GetStrategyCnt %1").arg(count));

            const AesStrategy one = mgr.GetStrategy(QStringLiteral("S1"));
            if (one.feeId() != one.alias() + QStringLiteral("-1"))
                note(QStringLiteral("GetStrategy fee %1 alias %2").arg(one.feeId(), one.alias()));

            const AuthorityTable table = mgr.GetAllAuthorityInfo();
            if (table != tableA && table != tableB)
                note(QStringLiteral("GetAllAuthorityInfo accounts %1").arg(table.size()));
            ++reads;
        } while (writing.load());
    };

    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i)
        readers.emplace_back(reader);
    std::thread writer([&] {
        // Long enough for the readers to overlap many replacements.
        QElapsedTimer elapsed;
        elapsed.start();
        for (int i = 0; i < 2000 || elapsed.elapsed() < 300; ++i) {
            mgr.setStrategies(i % 2 ? small : large);
            mgr.setAuthority(i % 2 ? tableA : tableB);
        }
        writing = false;
    });
    writer.join();
    for (std::thread& thread : readers)
        thread.join();

    QVERIFY2(torn.load() == 0, qPrintable(firstProblems.join(QStringLiteral("; "))));
    QVERIFY(reads.load() >= 3);
}

void TestAlgoDataMgr::queuedCrossThreadDelivery()
{
    KxAlgoDataMgr& mgr = KxAlgoDataMgr::instance();
    QThread worker;
    CrossThreadReceiver receiver;
    receiver.moveToThread(&worker);
    worker.start();
    // Stopped on every way out, failures included.
    const auto stopWorker = qScopeGuard([&worker] {
        worker.quit();
        worker.wait();
    });

    // Connected by meta-method, as a host using signatures does: each
    // argument's type is looked up by the name the signal spells and the
    // value copied into the receiver's thread.
    const QMetaObject* receiverMeta = receiver.metaObject();
    const QMetaMethod onStrategies = receiverMeta->method(receiverMeta->indexOfSlot(
        QMetaObject::normalizedSignature("onStrategies(QList<AesStrategy>)").constData()));
    const QMetaMethod onAuthority = receiverMeta->method(receiverMeta->indexOfSlot(
        QMetaObject::normalizedSignature(
            "onAuthority(QMap<QString,QMap<QString,QMap<QString,QString>>>)")
            .constData()));
    QVERIFY(onStrategies.isValid());
    QVERIFY(onAuthority.isValid());

    LogCapture log;
    const QMetaObject::Connection strategiesConnection =
        connect(&mgr, QMetaMethod::fromSignal(&KxAlgoDataMgr::sigQryAlgoStrategiesRsp),
                &receiver, onStrategies, Qt::QueuedConnection);
    const QMetaObject::Connection authorityConnection =
        connect(&mgr, QMetaMethod::fromSignal(&KxAlgoDataMgr::signalNewAuthority), &receiver,
                onAuthority, Qt::QueuedConnection);
    QVERIFY(strategiesConnection);
    QVERIFY(authorityConnection);

    mgr.setStrategies(sampleCatalogue());
    mgr.setAuthority(sampleAuthority());
    QTRY_COMPARE(receiver.deliveries(), 2);

    disconnect(strategiesConnection);
    disconnect(authorityConnection);

    QVERIFY(receiver.strategies() == sampleCatalogue());
    QCOMPARE(receiver.authority(), sampleAuthority());
    QVERIFY(receiver.allInOwnThread());
    QCOMPARE(log.count(QtWarningMsg, QStringLiteral("Cannot queue arguments")), 0);
}

QTEST_GUILESS_MAIN(TestAlgoDataMgr)

#include "tst_algodatamgr.moc"
