// StrategyMgr is the library's one door to the algo catalogue and to the
// authority table. Both it and the business-data manager behind it are
// process singletons and init() wires them together only once, so
// initTestCase() performs the one first init() against a data manager that
// is already loaded and records what happened; the test functions then
// check the record and go on with the wired pair.

#include "logcapture.h"

#include <platform/aesstrategy.h>
#include <platform/algodefines.h>
#include <platform/kxalgodatamgr.h>
#include <platform/varianttypes.h>
#include <strategy/strategymgr.h>

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QSignalBlocker>
#include <QSignalSpy>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>
#include <vector>

namespace {

const QString kReady = QStringLiteral("sigAlgoInfoReady");
const QString kList = QStringLiteral("sigQryAlgoStrategiesRsp");
const QString kAuthority = QStringLiteral("signalNewAuthority");

AesStrategy makeStrategy(const QString& name, const QString& algoType,
                         const QString& underlyingProp, const QString& feeId = QString(),
                         const QString& reportFormat = QString(),
                         const QString& underlyingMaxNum = QString())
{
    AesStrategy strategy(name, name + QStringLiteral("-alias"), algoType, underlyingProp);
    strategy.setFeeId(feeId);
    strategy.setReportFormat(reportFormat);
    strategy.setUnderlyingMaxNum(underlyingMaxNum);
    return strategy;
}

QList<AesStrategy> sampleCatalogue()
{
    using namespace Algo_Values::AlgoGlobalType;
    return {
        makeStrategy(QStringLiteral("T0Alpha"), T0, QStringLiteral("1"), QStringLiteral("F-T0A"),
                     QStringLiteral("fmt-t0"), QStringLiteral("1")),
        makeStrategy(QStringLiteral("Pair"), multiStr, QStringLiteral("2"),
                     QStringLiteral("F-PAIR"), QStringLiteral("fmt-pair"), QStringLiteral("2")),
        makeStrategy(QStringLiteral("T0Beta"), T0, QStringLiteral("1"), QStringLiteral("F-T0B"),
                     QStringLiteral("fmt-t0b"), QStringLiteral("1")),
        makeStrategy(QStringLiteral("Basket"), instruction, QStringLiteral("3"), QString(),
                     QString(), QStringLiteral("50")),
        makeStrategy(QStringLiteral("Vault"), deposit, QString()),
    };
}

// Three accounts; categories and algo names chosen so that swapping the
// category and algo arguments of GetAlgoNode lands on nothing.
AuthorityTable sampleAuthority()
{
    AuthorityTable table;
    table[QStringLiteral("10001")][QStringLiteral("trade")][QStringLiteral("T0Alpha")] =
        QStringLiteral("node-1-trade-T0Alpha");
    table[QStringLiteral("10001")][QStringLiteral("trade")][QStringLiteral("Pair")] =
        QStringLiteral("node-1-trade-Pair");
    table[QStringLiteral("10001")][QStringLiteral("view")][QStringLiteral("T0Alpha")] =
        QStringLiteral("node-1-view-T0Alpha");
    table[QStringLiteral("10002")][QStringLiteral("trade")][QStringLiteral("Pair")] =
        QStringLiteral("node-2-trade-Pair");
    table[QStringLiteral("10003")][QStringLiteral("view")][QStringLiteral("Basket")] =
        QStringLiteral("node-3-view-Basket");
    return table;
}

AuthorityTable singleAccountAuthority(const QString& account, const QString& node)
{
    AuthorityTable table;
    table[account][QStringLiteral("trade")][QStringLiteral("T0Alpha")] = node;
    return table;
}

QStringList namesOf(const QList<AesStrategy>& list)
{
    QStringList names;
    for (const AesStrategy& strategy : list)
        names << strategy.name();
    return names;
}

QStringList debugTexts(const QList<CapturedMessage>& messages)
{
    QStringList texts;
    for (const CapturedMessage& message : messages) {
        if (message.type == QtDebugMsg)
            texts << message.text;
    }
    return texts;
}

// Whether a debug message of the strategy category contains `fragment` and
// the number `value` as a word of its own.
bool loggedWithNumber(const QList<CapturedMessage>& messages, const QString& fragment, int value)
{
    for (const CapturedMessage& message : messages) {
        if (message.type != QtDebugMsg || message.category != QLatin1String("algologic.strategy")
            || !message.text.contains(fragment))
            continue;
        const QStringList words = message.text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        if (words.contains(QString::number(value)))
            return true;
    }
    return false;
}

// Runs a GetAlgoNode read on another thread and waits a bounded time, so
// that a lock still held by the emitting thread fails the test instead of
// hanging it. `pending` must outlive the emission.
bool readNodeWithin(std::future<QString>& pending, const QString& account,
                    const QString& algoName, const QString& category)
{
    pending = std::async(std::launch::async, [=] {
        return StrategyMgr::instance()->GetAlgoNode(account, algoName, category);
    });
    return pending.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
}

} // namespace

class TestStrategyMgr : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();

    void readyBeforeInitIsPublishedOnceDuringInit();
    void authorityEmptyUntilInit();
    void initLogs();

    void getCacheDataPublishesEachReadyPart_data();
    void getCacheDataPublishesEachReadyPart();
    void catalogueRelayed_data();
    void catalogueRelayed();
    void authorityRelayed_data();
    void authorityRelayed();
    void listenerReadsNewTableAtOnce_data();
    void listenerReadsNewTableAtOnce();
    void relayRunsInManagerThread();
    void repeatedInitDoesNotConnectAgain();

    void lookupsForwarded_data();
    void lookupsForwarded();
    void allStrategiesForwarded_data();
    void allStrategiesForwarded();
    void strategyListForwarded_data();
    void strategyListForwarded();
    void strategyCountForwarded_data();
    void strategyCountForwarded();

    void algoSymbolType_data();
    void algoSymbolType();
    void algoNode_data();
    void algoNode();
    void missingNodeLookupsFromManyThreads();
    void authorityReplacementIsAtomicForReaders();

private:
    // What the first init() did.
    QStringList m_initOrder;
    QList<QList<QVariant>> m_initReady;
    QList<QList<QVariant>> m_initList;
    QList<QList<QVariant>> m_initAuthority;
    QList<CapturedMessage> m_initLog;
    QString m_nodeBeforeInit;
    QString m_nodeAfterInit;
};

void TestStrategyMgr::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("algologic.*.debug=true"));

    // The terminal may have loaded everything before the library starts.
    KxAlgoDataMgr& data = KxAlgoDataMgr::instance();
    data.clear();
    data.setStrategies(sampleCatalogue());
    data.setAuthority(sampleAuthority());

    StrategyMgr* mgr = StrategyMgr::instance();
    QVERIFY(mgr);
    QCOMPARE(StrategyMgr::instance(), mgr);
    QVERIFY(!mgr->parent());
    m_nodeBeforeInit = mgr->GetAlgoNode(QStringLiteral("10001"), QStringLiteral("T0Alpha"),
                                        QStringLiteral("trade"));

    QSignalSpy readySpy(mgr, &StrategyMgr::sigAlgoInfoReady);
    QSignalSpy listSpy(mgr, &StrategyMgr::sigQryAlgoStrategiesRsp);
    QSignalSpy authoritySpy(mgr, &StrategyMgr::signalNewAuthority);
    QList<QMetaObject::Connection> order{
        connect(mgr, &StrategyMgr::sigAlgoInfoReady, this, [this] { m_initOrder << kReady; }),
        connect(mgr, &StrategyMgr::sigQryAlgoStrategiesRsp, this,
                [this](const QList<AesStrategy>&) { m_initOrder << kList; }),
        connect(mgr, &StrategyMgr::signalNewAuthority, this,
                [this](const AuthorityTable&) { m_initOrder << kAuthority; }),
    };
    {
        LogCapture log;
        mgr->init();
        m_initLog = log.messages();
    }
    for (const QMetaObject::Connection& connection : qAsConst(order))
        disconnect(connection);

    m_initReady = readySpy;
    m_initList = listSpy;
    m_initAuthority = authoritySpy;
    m_nodeAfterInit = mgr->GetAlgoNode(QStringLiteral("10001"), QStringLiteral("T0Alpha"),
                                       QStringLiteral("trade"));
}

void TestStrategyMgr::init()
{
    // Through the live connections, so the manager's cached table follows.
    KxAlgoDataMgr& data = KxAlgoDataMgr::instance();
    data.clear();
    data.setStrategies(sampleCatalogue());
    data.setAuthority(sampleAuthority());
}

void TestStrategyMgr::readyBeforeInitIsPublishedOnceDuringInit()
{
    QCOMPARE(m_initOrder, QStringList({kReady, kList, kAuthority}));
    QCOMPARE(m_initReady.count(), 1);
    QCOMPARE(m_initList.count(), 1);
    QCOMPARE(m_initAuthority.count(), 1);
    QVERIFY(m_initList.first().first().value<QList<AesStrategy>>() == sampleCatalogue());
    QCOMPARE(m_initAuthority.first().first().value<AuthorityTable>(), sampleAuthority());
}

void TestStrategyMgr::authorityEmptyUntilInit()
{
    // The data manager held the table all along; the manager's own copy is
    // only taken by init().
    QCOMPARE(m_nodeBeforeInit, QString());
    QCOMPARE(m_nodeAfterInit, QStringLiteral("node-1-trade-T0Alpha"));
}

void TestStrategyMgr::initLogs()
{
    const QStringList texts = debugTexts(m_initLog);
    const QString all = texts.join(QLatin1Char('\n'));

    // One line opens init() (function name, layer, phrase), then getCacheData's
    // entry line.
    QVERIFY2(texts.size() >= 2, qPrintable(all));
    QCOMPARE(texts.mid(0, 2),
             QStringList({QStringLiteral("StrategyMgr::init 算法逻辑层 StrategyMgr init"),
                          QStringLiteral("StrategyMgr::getCacheData")}));
    // What getCacheData published: the catalogue size and the account count.
    QVERIFY2(loggedWithNumber(m_initLog, QStringLiteral("StrategyMgr::getCacheData"),
                              sampleCatalogue().size()),
             qPrintable(all));
    QVERIFY2(loggedWithNumber(m_initLog, QStringLiteral("StrategyMgr::getCacheData"),
                              sampleAuthority().size()),
             qPrintable(all));

    // The data manager is asked to load last of all, once.
    int request = -1;
    int lastCache = -1;
    int requests = 0;
    for (int i = 0; i < texts.size(); ++i) {
        if (texts.at(i).contains(QStringLiteral("KxAlgoDataMgr::requestAlgoData"))) {
            request = i;
            ++requests;
        }
        if (texts.at(i).contains(QStringLiteral("StrategyMgr::getCacheData")))
            lastCache = i;
    }
    QCOMPARE(requests, 1);
    QVERIFY2(request > lastCache, qPrintable(all));
}

void TestStrategyMgr::getCacheDataPublishesEachReadyPart_data()
{
    QTest::addColumn<bool>("catalogueReady");
    QTest::addColumn<bool>("authorityReady");

    QTest::newRow("neither ready") << false << false;
    QTest::newRow("catalogue only") << true << false;
    QTest::newRow("authority only") << false << true;
    QTest::newRow("both ready") << true << true;
}

void TestStrategyMgr::getCacheDataPublishesEachReadyPart()
{
    QFETCH(bool, catalogueReady);
    QFETCH(bool, authorityReady);
    StrategyMgr* mgr = StrategyMgr::instance();
    KxAlgoDataMgr& data = KxAlgoDataMgr::instance();

    const QList<AesStrategy> catalogue = sampleCatalogue().mid(1, 2);
    const AuthorityTable table = singleAccountAuthority(QStringLiteral("30003"),
                                                        QStringLiteral("node-cached"));
    {
        // Loaded while nobody listens, as before the manager connected.
        const QSignalBlocker silence(&data);
        data.clear();
        if (catalogueReady)
            data.setStrategies(catalogue);
        if (authorityReady)
            data.setAuthority(table);
    }

    QSignalSpy readySpy(mgr, &StrategyMgr::sigAlgoInfoReady);
    QSignalSpy listSpy(mgr, &StrategyMgr::sigQryAlgoStrategiesRsp);
    QSignalSpy authoritySpy(mgr, &StrategyMgr::signalNewAuthority);
    LogCapture log;
    mgr->getCacheData();

    QCOMPARE(readySpy.count(), catalogueReady ? 1 : 0);
    QCOMPARE(listSpy.count(), catalogueReady ? 1 : 0);
    QCOMPARE(authoritySpy.count(), authorityReady ? 1 : 0);
    if (catalogueReady)
        QVERIFY(listSpy.first().first().value<QList<AesStrategy>>() == catalogue);
    if (authorityReady)
        QCOMPARE(authoritySpy.first().first().value<AuthorityTable>(), table);

    const QStringList texts = debugTexts(log.messages());
    QVERIFY(!texts.isEmpty());
    QCOMPARE(texts.first(), QStringLiteral("StrategyMgr::getCacheData"));
    QCOMPARE(log.count(QtDebugMsg, QStringLiteral("StrategyMgr::getCacheData")),
             1 + (catalogueReady ? 1 : 0) + (authorityReady ? 1 : 0));
    if (catalogueReady)
        QVERIFY(loggedWithNumber(log.messages(), QStringLiteral("StrategyMgr::getCacheData"),
                                 catalogue.size()));

    // The cached table was taken from the data manager only when ready.
    QCOMPARE(mgr->GetAlgoNode(QStringLiteral("30003"), QStringLiteral("T0Alpha"),
                              QStringLiteral("trade")),
             authorityReady ? QStringLiteral("node-cached") : QString());
    QCOMPARE(mgr->GetAlgoNode(QStringLiteral("10001"), QStringLiteral("T0Alpha"),
                              QStringLiteral("trade")),
             authorityReady ? QString() : QStringLiteral("node-1-trade-T0Alpha"));
}

void TestStrategyMgr::catalogueRelayed_data()
{
    QTest::addColumn<QList<AesStrategy>>("catalogue");

    QTest::newRow("new catalogue") << sampleCatalogue().mid(2);
    QTest::newRow("empty catalogue") << QList<AesStrategy>();
}

void TestStrategyMgr::catalogueRelayed()
{
    QFETCH(QList<AesStrategy>, catalogue);
    StrategyMgr* mgr = StrategyMgr::instance();

    QSignalSpy readySpy(mgr, &StrategyMgr::sigAlgoInfoReady);
    QSignalSpy listSpy(mgr, &StrategyMgr::sigQryAlgoStrategiesRsp);
    QSignalSpy authoritySpy(mgr, &StrategyMgr::signalNewAuthority);
    QStringList order;
    const QList<QMetaObject::Connection> connections{
        connect(mgr, &StrategyMgr::sigAlgoInfoReady, this, [&order] { order << kReady; }),
        connect(mgr, &StrategyMgr::sigQryAlgoStrategiesRsp, this,
                [&order](const QList<AesStrategy>&) { order << kList; }),
    };
    LogCapture log;
    KxAlgoDataMgr::instance().setStrategies(catalogue);
    for (const QMetaObject::Connection& connection : connections)
        disconnect(connection);

    QCOMPARE(order, QStringList({kReady, kList}));
    QCOMPARE(readySpy.count(), 1);
    QCOMPARE(listSpy.count(), 1);
    QVERIFY(listSpy.first().first().value<QList<AesStrategy>>() == catalogue);
    QCOMPARE(authoritySpy.count(), 0);
    QCOMPARE(debugTexts(log.messages()).count(QStringLiteral("StrategyMgr init")), 1);
}

void TestStrategyMgr::authorityRelayed_data()
{
    QTest::addColumn<AuthorityTable>("table");

    AuthorityTable twoAccounts;
    twoAccounts[QStringLiteral("40004")][QStringLiteral("trade")][QStringLiteral("Pair")] =
        QStringLiteral("node-4");
    twoAccounts[QStringLiteral("50005")][QStringLiteral("view")][QStringLiteral("Vault")] =
        QStringLiteral("node-5");

    QTest::newRow("replacement with other accounts") << twoAccounts;
    QTest::newRow("one account") << singleAccountAuthority(QStringLiteral("10001"),
                                                           QStringLiteral("node-changed"));
    QTest::newRow("empty table") << AuthorityTable();
}

void TestStrategyMgr::authorityRelayed()
{
    QFETCH(AuthorityTable, table);
    StrategyMgr* mgr = StrategyMgr::instance();

    QSignalSpy readySpy(mgr, &StrategyMgr::sigAlgoInfoReady);
    QSignalSpy listSpy(mgr, &StrategyMgr::sigQryAlgoStrategiesRsp);
    QSignalSpy authoritySpy(mgr, &StrategyMgr::signalNewAuthority);
    LogCapture log;
    KxAlgoDataMgr::instance().setAuthority(table);

    QCOMPARE(authoritySpy.count(), 1);
    QCOMPARE(authoritySpy.first().first().value<AuthorityTable>(), table);
    QCOMPARE(readySpy.count(), 0);
    QCOMPARE(listSpy.count(), 0);
    QVERIFY(loggedWithNumber(log.messages(), QString(), table.size()));

    // Replaced whole: every node of the old table is gone unless the new
    // one has it, and the new nodes are there.
    const AuthorityTable old = sampleAuthority();
    for (auto account = old.cbegin(); account != old.cend(); ++account) {
        for (auto category = account->cbegin(); category != account->cend(); ++category) {
            for (auto algo = category->cbegin(); algo != category->cend(); ++algo) {
                QCOMPARE(mgr->GetAlgoNode(account.key(), algo.key(), category.key()),
                         table.value(account.key()).value(category.key()).value(algo.key()));
            }
        }
    }
    for (auto account = table.cbegin(); account != table.cend(); ++account) {
        for (auto category = account->cbegin(); category != account->cend(); ++category) {
            for (auto algo = category->cbegin(); algo != category->cend(); ++algo)
                QCOMPARE(mgr->GetAlgoNode(account.key(), algo.key(), category.key()), *algo);
        }
    }
}

void TestStrategyMgr::listenerReadsNewTableAtOnce_data()
{
    QTest::addColumn<bool>("throughGetCacheData");

    QTest::newRow("relayed update") << false;
    QTest::newRow("getCacheData") << true;
}

void TestStrategyMgr::listenerReadsNewTableAtOnce()
{
    QFETCH(bool, throughGetCacheData);
    StrategyMgr* mgr = StrategyMgr::instance();
    KxAlgoDataMgr& data = KxAlgoDataMgr::instance();
    const AuthorityTable table = singleAccountAuthority(QStringLiteral("60006"),
                                                        QStringLiteral("node-fresh"));

    std::future<QString> pending;
    bool returnedInTime = false;
    QString seenInSlot;
    int calls = 0;
    const QMetaObject::Connection connection = connect(
        mgr, &StrategyMgr::signalNewAuthority, this,
        [&](const AuthorityTable&) {
            ++calls;
            returnedInTime = readNodeWithin(pending, QStringLiteral("60006"),
                                            QStringLiteral("T0Alpha"), QStringLiteral("trade"));
            // Safe to read in this thread too once the other one got through.
            if (returnedInTime)
                seenInSlot = mgr->GetAlgoNode(QStringLiteral("60006"), QStringLiteral("T0Alpha"),
                                              QStringLiteral("trade"));
        },
        Qt::DirectConnection);

    if (throughGetCacheData) {
        {
            const QSignalBlocker silence(&data);
            data.setAuthority(table);
        }
        mgr->getCacheData();
    } else {
        data.setAuthority(table);
    }
    disconnect(connection);

    QCOMPARE(calls, 1);
    QVERIFY2(returnedInTime, "authority table still locked while signalNewAuthority was emitted");
    QCOMPARE(pending.get(), QStringLiteral("node-fresh"));
    QCOMPARE(seenInSlot, QStringLiteral("node-fresh"));
}

void TestStrategyMgr::relayRunsInManagerThread()
{
    StrategyMgr* mgr = StrategyMgr::instance();
    QSignalSpy readySpy(mgr, &StrategyMgr::sigAlgoInfoReady);
    QSignalSpy listSpy(mgr, &StrategyMgr::sigQryAlgoStrategiesRsp);
    QSignalSpy authoritySpy(mgr, &StrategyMgr::signalNewAuthority);
    QList<QThread*> threads;
    const QMetaObject::Connection connection = connect(
        mgr, &StrategyMgr::signalNewAuthority, this,
        [&threads](const AuthorityTable&) { threads << QThread::currentThread(); },
        Qt::DirectConnection);

    const AuthorityTable table = singleAccountAuthority(QStringLiteral("70007"),
                                                        QStringLiteral("node-from-worker"));
    const QList<AesStrategy> catalogue = sampleCatalogue().mid(0, 1);
    std::thread host([&] {
        KxAlgoDataMgr::instance().setStrategies(catalogue);
        KxAlgoDataMgr::instance().setAuthority(table);
    });
    host.join();

    QTRY_COMPARE(authoritySpy.count(), 1);
    QTRY_COMPARE(listSpy.count(), 1);
    disconnect(connection);
    QCOMPARE(readySpy.count(), 1);
    QCOMPARE(threads, QList<QThread*>{mgr->thread()});
    QCOMPARE(authoritySpy.first().first().value<AuthorityTable>(), table);
    QVERIFY(listSpy.first().first().value<QList<AesStrategy>>() == catalogue);
    QCOMPARE(mgr->GetAlgoNode(QStringLiteral("70007"), QStringLiteral("T0Alpha"),
                              QStringLiteral("trade")),
             QStringLiteral("node-from-worker"));
}

void TestStrategyMgr::repeatedInitDoesNotConnectAgain()
{
    StrategyMgr* mgr = StrategyMgr::instance();
    {
        // A second init() still publishes what is ready, once.
        QSignalSpy readySpy(mgr, &StrategyMgr::sigAlgoInfoReady);
        QSignalSpy listSpy(mgr, &StrategyMgr::sigQryAlgoStrategiesRsp);
        QSignalSpy authoritySpy(mgr, &StrategyMgr::signalNewAuthority);
        mgr->init();
        QCOMPARE(readySpy.count(), 1);
        QCOMPARE(listSpy.count(), 1);
        QCOMPARE(authoritySpy.count(), 1);
    }

    QSignalSpy readySpy(mgr, &StrategyMgr::sigAlgoInfoReady);
    QSignalSpy listSpy(mgr, &StrategyMgr::sigQryAlgoStrategiesRsp);
    QSignalSpy authoritySpy(mgr, &StrategyMgr::signalNewAuthority);
    KxAlgoDataMgr::instance().setStrategies(sampleCatalogue());
    KxAlgoDataMgr::instance().setAuthority(sampleAuthority());
    QCoreApplication::processEvents();

    QCOMPARE(readySpy.count(), 1);
    QCOMPARE(listSpy.count(), 1);
    QCOMPARE(authoritySpy.count(), 1);
}

void TestStrategyMgr::lookupsForwarded_data()
{
    QTest::addColumn<QString>("algoName");
    QTest::addColumn<bool>("known");
    QTest::addColumn<QString>("feeId");
    QTest::addColumn<QString>("reportFormat");
    QTest::addColumn<QString>("underlyingMaxNum");

    QTest::newRow("known") << QStringLiteral("Pair") << true << QStringLiteral("F-PAIR")
                           << QStringLiteral("fmt-pair") << QStringLiteral("2");
    QTest::newRow("known, other entry") << QStringLiteral("T0Beta") << true
                                        << QStringLiteral("F-T0B") << QStringLiteral("fmt-t0b")
                                        << QStringLiteral("1");
    QTest::newRow("known without optional fields") << QStringLiteral("Vault") << true
                                                   << QString() << QString() << QString();
    QTest::newRow("unknown") << QStringLiteral("Nope") << false << QString() << QString()
                             << QString();
    QTest::newRow("empty name") << QString() << false << QString() << QString() << QString();
}

void TestStrategyMgr::lookupsForwarded()
{
    QFETCH(QString, algoName);
    QFETCH(bool, known);
    QFETCH(QString, feeId);
    QFETCH(QString, reportFormat);
    QFETCH(QString, underlyingMaxNum);
    StrategyMgr* mgr = StrategyMgr::instance();
    KxAlgoDataMgr& data = KxAlgoDataMgr::instance();

    const AesStrategy strategy = mgr->GetStrategy(algoName);
    QVERIFY(strategy == data.GetStrategy(algoName));
    QCOMPARE(strategy.name(), known ? algoName : QString());
    QCOMPARE(mgr->ContainsStrategy(algoName), known);
    QCOMPARE(mgr->GetFeeId(algoName), feeId);
    QCOMPARE(mgr->GetReportFormat(algoName), reportFormat);
    QCOMPARE(mgr->GetUnderlyingMaxNum(algoName), underlyingMaxNum);

    // A later catalogue is seen at once: nothing is cached on this side.
    AesStrategy changed = makeStrategy(algoName, Algo_Values::AlgoGlobalType::T0,
                                       QStringLiteral("1"), QStringLiteral("F-NEW"),
                                       QStringLiteral("fmt-new"), QStringLiteral("9"));
    data.setStrategies({changed});
    QVERIFY(mgr->GetStrategy(algoName) == changed);
    QCOMPARE(mgr->GetFeeId(algoName), QStringLiteral("F-NEW"));
    QCOMPARE(mgr->GetReportFormat(algoName), QStringLiteral("fmt-new"));
    QCOMPARE(mgr->GetUnderlyingMaxNum(algoName), QStringLiteral("9"));
    QVERIFY(mgr->ContainsStrategy(algoName));
}

void TestStrategyMgr::allStrategiesForwarded_data()
{
    QTest::addColumn<QString>("algoType");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("all") << QString()
                         << QStringList{QStringLiteral("T0Alpha"), QStringLiteral("Pair"),
                                        QStringLiteral("T0Beta"), QStringLiteral("Basket"),
                                        QStringLiteral("Vault")};
    QTest::newRow("one type") << Algo_Values::AlgoGlobalType::T0
                              << QStringList{QStringLiteral("T0Alpha"), QStringLiteral("T0Beta")};
    QTest::newRow("type nobody has") << Algo_Values::AlgoGlobalType::feature << QStringList();
}

void TestStrategyMgr::allStrategiesForwarded()
{
    QFETCH(QString, algoType);
    QFETCH(QStringList, expected);

    QList<AesStrategy> out{makeStrategy(QStringLiteral("Stale"), algoType, QString())};
    StrategyMgr::instance()->GetAllStrategies(out, algoType);
    QList<AesStrategy> direct;
    KxAlgoDataMgr::instance().GetAllStrategies(direct, algoType);

    QCOMPARE(namesOf(out), expected);
    QVERIFY(out == direct);
}

void TestStrategyMgr::strategyListForwarded_data()
{
    QTest::addColumn<QStringList>("filterKeys");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("empty filter") << QStringList()
                                  << QStringList{QStringLiteral("Basket"), QStringLiteral("Pair"),
                                                 QStringLiteral("T0Alpha"),
                                                 QStringLiteral("T0Beta"),
                                                 QStringLiteral("Vault")};
    QTest::newRow("known and unknown")
        << QStringList{QStringLiteral("Pair"), QStringLiteral("Nope")}
        << QStringList{QStringLiteral("Pair")};
}

void TestStrategyMgr::strategyListForwarded()
{
    QFETCH(QStringList, filterKeys);
    QFETCH(QStringList, expected);

    QMap<QString, QString> filter;
    for (const QString& key : qAsConst(filterKeys))
        filter.insert(key, QString());
    const QMap<QString, AesStrategy> result = StrategyMgr::instance()->GetStrategyList(filter);

    QCOMPARE(result.keys(), expected);
    QVERIFY(result == KxAlgoDataMgr::instance().GetStrategyList(filter));
}

void TestStrategyMgr::strategyCountForwarded_data()
{
    QTest::addColumn<QList<AesStrategy>>("catalogue");

    QTest::newRow("sample") << sampleCatalogue();
    QTest::newRow("two") << sampleCatalogue().mid(3);
    QTest::newRow("empty") << QList<AesStrategy>();
}

void TestStrategyMgr::strategyCountForwarded()
{
    QFETCH(QList<AesStrategy>, catalogue);
    KxAlgoDataMgr::instance().setStrategies(catalogue);

    int count = -1;
    StrategyMgr::instance()->GetStrategyCnt(count);
    int direct = -2;
    KxAlgoDataMgr::instance().GetStrategyCnt(direct);
    QCOMPARE(count, catalogue.size());
    QCOMPARE(count, direct);
}

void TestStrategyMgr::algoSymbolType_data()
{
    QTest::addColumn<QString>("underlyingProp");
    QTest::addColumn<bool>("inCatalogue");
    QTest::addColumn<int>("expected");

    QTest::newRow("\"1\" is single") << QStringLiteral("1") << true << 1;
    QTest::newRow("\"2\" gives 0") << QStringLiteral("2") << true << 0;
    QTest::newRow("other text gives 0") << QStringLiteral("3") << true << 0;
    QTest::newRow("empty text gives 0") << QString() << true << 0;
    QTest::newRow("padded \"1\" is not \"1\"") << QStringLiteral(" 1") << true << 0;
    QTest::newRow("\"01\" is not \"1\"") << QStringLiteral("01") << true << 0;
    QTest::newRow("unknown algo gives 0") << QStringLiteral("1") << false << 0;
}

void TestStrategyMgr::algoSymbolType()
{
    QFETCH(QString, underlyingProp);
    QFETCH(bool, inCatalogue);
    QFETCH(int, expected);

    const QString name = QStringLiteral("Probe");
    QList<AesStrategy> catalogue = sampleCatalogue();
    // The flag follows the named entry, not its neighbours.
    catalogue.insert(1, makeStrategy(inCatalogue ? name : QStringLiteral("Other"),
                                     Algo_Values::AlgoGlobalType::T0, underlyingProp));
    KxAlgoDataMgr::instance().setStrategies(catalogue);

    QCOMPARE(static_cast<int>(StrategyMgr::instance()->GetAlgoSymbolType(name)), expected);
}

void TestStrategyMgr::algoNode_data()
{
    QTest::addColumn<QString>("account");
    QTest::addColumn<QString>("algoName");
    QTest::addColumn<QString>("category");
    QTest::addColumn<QString>("expected");

    const QString trade = QStringLiteral("trade");
    const QString view = QStringLiteral("view");
    QTest::newRow("hit") << QStringLiteral("10001") << QStringLiteral("T0Alpha") << trade
                         << QStringLiteral("node-1-trade-T0Alpha");
    QTest::newRow("same algo, other category") << QStringLiteral("10001")
                                               << QStringLiteral("T0Alpha") << view
                                               << QStringLiteral("node-1-view-T0Alpha");
    QTest::newRow("same category, other algo") << QStringLiteral("10001")
                                               << QStringLiteral("Pair") << trade
                                               << QStringLiteral("node-1-trade-Pair");
    QTest::newRow("other account") << QStringLiteral("10002") << QStringLiteral("Pair") << trade
                                   << QStringLiteral("node-2-trade-Pair");
    QTest::newRow("category and algo swapped") << QStringLiteral("10001") << trade
                                               << QStringLiteral("T0Alpha") << QString();
    QTest::newRow("unknown account") << QStringLiteral("99999") << QStringLiteral("T0Alpha")
                                     << trade << QString();
    QTest::newRow("unknown category") << QStringLiteral("10001") << QStringLiteral("T0Alpha")
                                      << QStringLiteral("admin") << QString();
    QTest::newRow("unknown algo") << QStringLiteral("10001") << QStringLiteral("Nope") << trade
                                  << QString();
    QTest::newRow("algo of another account") << QStringLiteral("10002")
                                             << QStringLiteral("T0Alpha") << trade << QString();
    QTest::newRow("all empty") << QString() << QString() << QString() << QString();
}

void TestStrategyMgr::algoNode()
{
    QFETCH(QString, account);
    QFETCH(QString, algoName);
    QFETCH(QString, category);
    QFETCH(QString, expected);
    StrategyMgr* mgr = StrategyMgr::instance();

    QCOMPARE(mgr->GetAlgoNode(account, algoName, category), expected);
    // Asking again, after a miss, still finds exactly the same.
    QCOMPARE(mgr->GetAlgoNode(account, algoName, category), expected);
    QCOMPARE(mgr->GetAlgoNode(QStringLiteral("10003"), QStringLiteral("Basket"),
                              QStringLiteral("view")),
             QStringLiteral("node-3-view-Basket"));
}

void TestStrategyMgr::missingNodeLookupsFromManyThreads()
{
    // Readers share the read lock; a lookup that added the missing levels
    // would write to the table under it and corrupt concurrent readers.
    StrategyMgr* mgr = StrategyMgr::instance();
    constexpr int kReaders = 4;
    std::atomic<int> waiting{kReaders};
    std::atomic<int> wrong{0};
    const auto reader = [&](int seed) {
        // All start together, so that the lookups really overlap.
        --waiting;
        while (waiting.load() > 0)
            std::this_thread::yield();
        for (int i = 0; i < 20000; ++i) {
            const QString missing = QStringLiteral("m%1-%2").arg(seed).arg(i);
            if (!mgr->GetAlgoNode(missing, QStringLiteral("T0Alpha"), QStringLiteral("trade"))
                     .isEmpty()
                || !mgr->GetAlgoNode(QStringLiteral("10001"), missing, QStringLiteral("trade"))
                        .isEmpty()
                || !mgr->GetAlgoNode(QStringLiteral("10001"), QStringLiteral("T0Alpha"), missing)
                        .isEmpty())
                ++wrong;
            if (mgr->GetAlgoNode(QStringLiteral("10001"), QStringLiteral("T0Alpha"),
                                 QStringLiteral("trade"))
                != QLatin1String("node-1-trade-T0Alpha"))
                ++wrong;
        }
    };
    std::vector<std::thread> readers;
    for (int seed = 0; seed < kReaders; ++seed)
        readers.emplace_back(reader, seed);
    for (std::thread& thread : readers)
        thread.join();

    QCOMPARE(wrong.load(), 0);
}

void TestStrategyMgr::authorityReplacementIsAtomicForReaders()
{
    // Two tables whose every node carries its table's tag: a reader sees
    // one tag or the other for a node both have, never a missing node.
    const auto tagged = [](const QString& tag, int accounts) {
        AuthorityTable table;
        for (int i = 0; i < accounts; ++i) {
            table[QStringLiteral("acc%1").arg(i)][QStringLiteral("trade")]
                 [QStringLiteral("T0Alpha")] = tag;
            table[QStringLiteral("acc%1").arg(i)][QStringLiteral("view")][QStringLiteral("Pair")] =
                tag;
        }
        return table;
    };
    const AuthorityTable tableA = tagged(QStringLiteral("A"), 3);
    const AuthorityTable tableB = tagged(QStringLiteral("B"), 40);
    StrategyMgr* mgr = StrategyMgr::instance();
    KxAlgoDataMgr& data = KxAlgoDataMgr::instance();
    data.setAuthority(tableA);

    std::atomic<bool> writing{true};
    std::atomic<int> torn{0};
    std::atomic<int> reads{0};
    const auto reader = [&] {
        do {
            for (int i = 0; i < 3; ++i) {
                const QString node = mgr->GetAlgoNode(QStringLiteral("acc%1").arg(i),
                                                      QStringLiteral("T0Alpha"),
                                                      QStringLiteral("trade"));
                if (node != QLatin1String("A") && node != QLatin1String("B"))
                    ++torn;
            }
            ++reads;
        } while (writing.load());
    };
    std::vector<std::thread> readers;
    for (int i = 0; i < 4; ++i)
        readers.emplace_back(reader);
    // Replacements come from the manager's own thread, as relayed updates
    // do, long enough for the readers to overlap many of them.
    QElapsedTimer elapsed;
    elapsed.start();
    for (int i = 0; i < 2000 || elapsed.elapsed() < 500; ++i)
        data.setAuthority(i % 2 ? tableA : tableB);
    data.setAuthority(tableA);
    writing = false;
    for (std::thread& thread : readers)
        thread.join();

    QCOMPARE(torn.load(), 0);
    QVERIFY(reads.load() >= 3);
    QCOMPARE(mgr->GetAlgoNode(QStringLiteral("acc0"), QStringLiteral("T0Alpha"),
                              QStringLiteral("trade")),
             QStringLiteral("A"));
}

QTEST_GUILESS_MAIN(TestStrategyMgr)

#include "tst_strategymgr.moc"
