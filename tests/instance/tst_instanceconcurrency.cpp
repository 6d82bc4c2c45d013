// The registry under concurrent traffic: writer threads route query answers,
// status pushes and modify pushes for many instances while reader threads run
// the queries and read instance fields under the content lock. Afterwards the
// model must hold every instance with the outcome of its last record, and the
// client-ID map must agree with the instances.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

namespace {

constexpr int kWriters = 4;
constexpr int kPerWriter = 200;
constexpr int kReaders = 3;
constexpr int kMaxReaderRounds = 20000;
constexpr auto kReaderDeadline = std::chrono::seconds(20);

const QString kPlainAlgo = QStringLiteral("CcPlainAlgo");
const QString kPlainType = QStringLiteral("Normal");
const QString kT0Algo = QStringLiteral("CcT0Algo");
const QString kPrefix = QStringLiteral("cc");

InstanceMgr* mgr()
{
    return InstanceMgr::instance();
}

QString instanceIdOf(int writer, int index)
{
    return QStringLiteral("cc%1x%2").arg(writer).arg(index, 3, 10, QLatin1Char('0'));
}

QString clientIdOf(const QString& instanceID)
{
    return QStringLiteral("ccl-") + instanceID;
}

QString legKeyOf(const QString& instanceID)
{
    return InstanceMgr::GetSymbolExtInfoKey(instanceID, QStringLiteral("600000.SH"),
                                            QStringLiteral("1"));
}

// Odd indices are inserted by the writer as this class and take status and
// modify pushes; even indices are created by the query router from the
// catalogue.
bool isInserted(int index)
{
    return index % 2 == 1;
}

QString finalStatusOf(int index)
{
    if (isInserted(index))
        return index % 3 == 0 ? QStringLiteral("2") : QStringLiteral("5");
    return index % 4 == 0 ? QStringLiteral("2") : QStringLiteral("1");
}

// Counts what the routers hand it; every member is guarded by the content lock.
class CountingInstance : public InstanceInfoBase
{
public:
    CountingInstance(const QString& id, const QString& clientID)
    {
        m_instanceID = id;
        m_clInstanceID = clientID;
        m_instAlgoType = kPlainType;
        m_strategyName = kPlainAlgo;
    }

    int OnRecv_QueryAlgoStrategyResponse(const VariantMap& record, bool isNew) override
    {
        ++queries;
        newQueries += isNew ? 1 : 0;
        m_status = record.value(Tessel_Fields::Strategy::strategyStatus).toString();
        return 2;
    }
    void OnRecv_InstStatusUpdate(const VariantMapList& records) override
    {
        ++statusPushes;
        m_status = records.first().value(Tessel_Fields::Strategy::strategyStatus).toString();
    }
    void OnRecv_InstModifyPush(const VariantMapList&) override
    {
        ++modifies;
        // Written together with the counter: a reader under the lock must
        // never see one without the other.
        m_remark = QString::number(modifies);
    }

    int queries = 0;
    int newQueries = 0;
    int statusPushes = 0;
    int modifies = 0;
};

VariantMap queryRecord(const QString& id, const QString& name, const QString& status,
                       bool withTime)
{
    VariantMap record;
    record.insert(Tessel_Fields::Strategy::strategyID, id);
    record.insert(Tessel_Fields::Strategy::strategyName, name);
    record.insert(Tessel_Fields::Strategy::strategyStatus, status);
    record.insert(Helm_Fields::Strategy::clAlgoID, clientIdOf(id));
    if (withTime)
        record.insert(Algo_Fields::HelmStrategy::AlgStartTime, QStringLiteral("20240102-09:30:00"));
    return record;
}

VariantMapList statusPush(const QString& id, const QString& status)
{
    VariantMap record;
    record.insert(Tessel_Fields::Strategy::strategyID, id);
    record.insert(Tessel_Fields::Strategy::strategyStatus, status);
    return {record};
}

VariantMapList modifyPush(const QString& id)
{
    VariantMap record;
    record.insert(Tessel_Fields::Strategy::strategyID, id);
    return {record};
}

QStringList ownIds(const QList<QString>& ids)
{
    QStringList own;
    for (const QString& id : ids) {
        if (id.startsWith(kPrefix))
            own.append(id);
    }
    return own;
}

// What the threads saw that they should not have.
struct Violations
{
    std::atomic<int> statusResults{0};  // status router did not return 0
    std::atomic<int> modifyResults{0};  // modify router did not return true
    std::atomic<int> unsorted{0};       // a query result out of ID order
    std::atomic<int> shrunk{0};         // the registry lost an instance
    std::atomic<int> vanished{0};       // a listed ID no longer contained
    std::atomic<int> badFields{0};      // a field read under the lock is inconsistent
    std::atomic<int> badLegs{0};        // a leg lookup gave a wrong leg
};

} // namespace

class TestInstanceConcurrency : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void concurrentRoutingAndQueries();
};

void TestInstanceConcurrency::initTestCase()
{
    KxAlgoDataMgr::instance().setStrategies({
        AesStrategy(kPlainAlgo, QStringLiteral("Plain"), kPlainType, QStringLiteral("1")),
        AesStrategy(kT0Algo, QStringLiteral("T0"), Algo_Values::AlgoGlobalType::T0,
                    QStringLiteral("1")),
    });
    CBusinessDataBase::GetInstance()->SetLoginAccount(QStringLiteral("trader01"));
}

void TestInstanceConcurrency::cleanupTestCase()
{
    const QList<QString> ids = mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown);
    for (const QString& id : ids)
        mgr()->DeleteInstance(id);
}

void TestInstanceConcurrency::concurrentRoutingAndQueries()
{
    LogCapture log; // keeps the many debug lines off the console, and counts warnings

    std::atomic<int> statusSignals{0};
    std::atomic<int> updatedIds{0};
    QObject context;
    connect(
        mgr(), &InstanceMgr::signalStatusUpdated, &context,
        [&statusSignals](const QString&, const QString&) { ++statusSignals; },
        Qt::DirectConnection);
    connect(
        mgr(), &InstanceMgr::sigInstUpdated, &context,
        [&updatedIds](QStringList ids) { updatedIds += ids.size(); }, Qt::DirectConnection);

    Violations violations;
    std::mutex publishedMutex;
    std::vector<CountingInstance*> published; // guarded by publishedMutex
    std::atomic<int> writersLeft{kWriters};
    std::atomic<long> readerRounds{0};

    auto writer = [&](int w) {
        // Round 1: every instance comes into being.
        for (int i = 0; i < kPerWriter; ++i) {
            const QString id = instanceIdOf(w, i);
            if (isInserted(i)) {
                auto* inst = new CountingInstance(id, clientIdOf(id));
                auto* leg = new SymbolInfoBase;
                leg->setInstanceID(id);
                leg->setSymbol(QStringLiteral("600000.SH"));
                leg->setOrderSide(QStringLiteral("1"));
                leg->setKey(legKeyOf(id));
                inst->AddSymbolInfo(leg);
                mgr()->InsertNewInstance(inst);
                std::lock_guard<std::mutex> guard(publishedMutex);
                published.push_back(inst);
            } else {
                const QString name = i % 4 == 0 ? kT0Algo : kPlainAlgo;
                mgr()->OnRecv_QueryAlgoStrategyResponse(
                    {queryRecord(id, name, QStringLiteral("0"), false)});
            }
        }
        // Round 2: updates of every kind.
        for (int i = 0; i < kPerWriter; ++i) {
            const QString id = instanceIdOf(w, i);
            if (isInserted(i)) {
                mgr()->OnRecv_QueryAlgoStrategyResponse(
                    {queryRecord(id, kPlainAlgo, QStringLiteral("0"), false)});
                if (mgr()->OnRecv_InstStatusUpdate(id, statusPush(id, QStringLiteral("1"))) != 0)
                    ++violations.statusResults;
                if (!mgr()->onRecv_InstModifyPush(id, modifyPush(id)))
                    ++violations.modifyResults;
            } else {
                const QString name = i % 4 == 0 ? kT0Algo : kPlainAlgo;
                mgr()->OnRecv_QueryAlgoStrategyResponse(
                    {queryRecord(id, name, QStringLiteral("1"), true)});
            }
        }
        // Round 3: the last records.
        for (int i = 0; i < kPerWriter; ++i) {
            const QString id = instanceIdOf(w, i);
            if (isInserted(i)) {
                if (mgr()->OnRecv_InstStatusUpdate(id, statusPush(id, finalStatusOf(i))) != 0)
                    ++violations.statusResults;
                if (!mgr()->onRecv_InstModifyPush(id, modifyPush(id)))
                    ++violations.modifyResults;
            } else if (finalStatusOf(i) != QLatin1String("1")) {
                const QString name = i % 4 == 0 ? kT0Algo : kPlainAlgo;
                mgr()->OnRecv_QueryAlgoStrategyResponse(
                    {queryRecord(id, name, finalStatusOf(i), true)});
            }
        }
        --writersLeft;
    };

    auto reader = [&](int r) {
        const auto deadline = std::chrono::steady_clock::now() + kReaderDeadline;
        int lastSize = 0;
        unsigned pick = unsigned(r) * 7919u;
        for (int round = 0; round < kMaxReaderRounds; ++round) {
            const bool writersDone = writersLeft.load() == 0;
            const QStringList all =
                ownIds(mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown));
            if (!std::is_sorted(all.begin(), all.end()))
                ++violations.unsorted;
            if (all.size() < lastSize)
                ++violations.shrunk;
            lastSize = all.size();

            const QStringList plain = ownIds(mgr()->GetAllInstanceIDs(kPlainType));
            if (!std::is_sorted(plain.begin(), plain.end()))
                ++violations.unsorted;
            const QStringList live = mgr()->GetAllInstanceIDsExceptDeleted(kPlainType, false);
            if (!std::is_sorted(live.begin(), live.end()))
                ++violations.unsorted;
            mgr()->GetAllInstanceIDsExceptDeletedForAllType(true);
            const QStringList t0 = mgr()->GetInstanceIDsForSpecialAlgoName({kT0Algo});
            if (!std::is_sorted(t0.begin(), t0.end()))
                ++violations.unsorted;

            if (!all.isEmpty()) {
                pick = pick * 1103515245u + 12345u;
                const QString id = all.at(int(pick % unsigned(all.size())));
                if (!mgr()->ContainsInstance(id))
                    ++violations.vanished;
                mgr()->GetAlgoTypeByInstID(id);
                QString symbol;
                QString side;
                mgr()->getOneSymbol(id, symbol, side);
                if (SymbolInfoBase* leg = mgr()->getSymbolInfo(legKeyOf(id))) {
                    QReadLocker locker(mgr()->getLocker());
                    if (leg->getKey() != legKeyOf(id)
                        || leg->symbol() != QLatin1String("600000.SH"))
                        ++violations.badLegs;
                }
            }

            CountingInstance* inst = nullptr;
            {
                std::lock_guard<std::mutex> guard(publishedMutex);
                if (!published.empty()) {
                    pick = pick * 1103515245u + 12345u;
                    inst = published.at(pick % published.size());
                }
            }
            if (inst) {
                QReadLocker locker(mgr()->getLocker());
                const QString status = inst->status();
                const bool knownStatus = status.isEmpty() || status == QLatin1String("0")
                                      || status == QLatin1String("1")
                                      || status == QLatin1String("2")
                                      || status == QLatin1String("5");
                const bool pairedRemark = inst->modifies == 0
                                        ? inst->remark().isEmpty()
                                        : inst->remark() == QString::number(inst->modifies);
                if (!knownStatus || !pairedRemark || !inst->instanceID().startsWith(kPrefix)
                    || inst->clInstanceID() != clientIdOf(inst->instanceID()))
                    ++violations.badFields;
            }
            ++readerRounds;
            if (writersDone || std::chrono::steady_clock::now() > deadline)
                break;
        }
    };

    std::vector<std::thread> threads;
    for (int r = 0; r < kReaders; ++r)
        threads.emplace_back(reader, r);
    for (int w = 0; w < kWriters; ++w)
        threads.emplace_back(writer, w);
    for (std::thread& t : threads)
        t.join();

    QCOMPARE(writersLeft.load(), 0);
    QCOMPARE(violations.statusResults.load(), 0);
    QCOMPARE(violations.modifyResults.load(), 0);
    QCOMPARE(violations.unsorted.load(), 0);
    QCOMPARE(violations.shrunk.load(), 0);
    QCOMPARE(violations.vanished.load(), 0);
    QCOMPARE(violations.badFields.load(), 0);
    QCOMPARE(violations.badLegs.load(), 0);
    QVERIFY(readerRounds.load() > 0);
    QCOMPARE(log.countOfType(QtWarningMsg), 0);

    // ---- the final model ----
    QStringList expectedIds;
    for (int w = 0; w < kWriters; ++w) {
        for (int i = 0; i < kPerWriter; ++i)
            expectedIds.append(instanceIdOf(w, i));
    }
    std::sort(expectedIds.begin(), expectedIds.end());
    QCOMPARE(ownIds(mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown)), expectedIds);

    const QMap<QString, InstanceInfoBase*> registry = mgr()->GetInstanceInfoForAllType();
    int expectedUpdatedIds = 0;
    QReadLocker locker(mgr()->getLocker());
    for (int w = 0; w < kWriters; ++w) {
        for (int i = 0; i < kPerWriter; ++i) {
            const QString id = instanceIdOf(w, i);
            InstanceInfoBase* inst = registry.value(id);
            QVERIFY2(inst, qPrintable(id));
            QCOMPARE(inst->instanceID(), id);
            QCOMPARE(inst->status(), finalStatusOf(i));
            QCOMPARE(inst->clInstanceID(), clientIdOf(id));
            QCOMPARE(mgr()->GetInstanceIDByClInstID(clientIdOf(id)), id);
            if (isInserted(i)) {
                auto* counting = dynamic_cast<CountingInstance*>(inst);
                QVERIFY2(counting, qPrintable(id));
                QCOMPARE(counting->queries, 1);
                QCOMPARE(counting->newQueries, 0);
                QCOMPARE(counting->statusPushes, 2);
                QCOMPARE(counting->modifies, 2);
                QCOMPARE(counting->remark(), QStringLiteral("2"));
                QVERIFY(counting->getSymbolInfo(legKeyOf(id)) != nullptr);
                expectedUpdatedIds += 1;
            } else {
                const bool t0 = i % 4 == 0;
                QCOMPARE(inst->instAlgoType(), t0 ? Algo_Values::AlgoGlobalType::T0 : kPlainType);
                QCOMPARE(inst->getClassType(), t0 ? QStringLiteral("T0") : QStringLiteral("info"));
                // Created (every flag), then each status change.
                expectedUpdatedIds += finalStatusOf(i) == QLatin1String("1") ? 2 : 3;
            }
        }
    }
    QCOMPARE(statusSignals.load(), kWriters * kPerWriter); // two pushes per odd index
    QCOMPARE(updatedIds.load(), expectedUpdatedIds);
}

QTEST_GUILESS_MAIN(TestInstanceConcurrency)
#include "tst_instanceconcurrency.moc"
