// The registry under concurrent traffic: writer threads register instances and
// route query answers, status and modify pushes while reader threads run the
// queries and read instance fields under the content lock. Afterwards the model
// must hold every instance with the outcome of its last record.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

namespace {

namespace S = Tessel_Fields::Strategy;
constexpr int kWriters = 4;
constexpr int kPerWriter = 250;
const QString kPlainType = QStringLiteral("Normal");

InstanceMgr* mgr()
{
    return InstanceMgr::instance();
}

QString idOf(int writer, int index)
{
    return QString("cc%1x%2").arg(writer).arg(index, 3, 10, QChar('0'));
}

QString finalStatus(int index)
{
    return QStringList{"1", "2", "5"}.at(index % 3);
} // reachable from "0"

bool sorted(const QStringList& ids)
{
    return std::is_sorted(ids.begin(), ids.end());
}

// Odd indices are inserted as this class and take status and modify pushes;
// even ones are created by the query router from the catalogue.
struct CountingInstance : InstanceInfoBase
{
    explicit CountingInstance(const QString& id) { m_instanceID = id, m_clInstanceID = "cl-" + id; }
    void OnRecv_InstStatusUpdate(const VariantMapList& records) override
    {
        ++statusPushes, m_status = records.first().value(S::strategyStatus).toString();
    }
    // The remark and the counter change together: a reader under the lock sees both or neither.
    void OnRecv_InstModifyPush(const VariantMapList&) override
    {
        m_remark = QString::number(++modifies);
    }
    int statusPushes = 0, modifies = 0;
};

VariantMapList record(const QString& id, const QString& status, const QString& name = {})
{
    return {{{S::strategyID, id},
             {S::strategyStatus, status},
             {S::strategyName, name},
             {Helm_Fields::Strategy::clAlgoID, "cl-" + id}}};
}

} // namespace

class TestInstanceConcurrency : public QObject
{
    Q_OBJECT
private slots:
    void writersAndReadersInParallel();
};

void TestInstanceConcurrency::writersAndReadersInParallel()
{
    KxAlgoDataMgr::instance().setStrategies(
        {AesStrategy("CcPlain", "Plain", kPlainType, "1"),
         AesStrategy("CcT0", "T0", Algo_Values::AlgoGlobalType::T0, "1")});
    LogCapture log; // keeps the many debug lines off the console; counts warnings
    std::atomic<int> signalled{0}, violations{0}, writersLeft{kWriters};
    QObject context;
    connect(
        mgr(), &InstanceMgr::signalStatusUpdated, &context, [&] { signalled++; },
        Qt::DirectConnection);
    std::mutex publishedMutex;
    std::vector<CountingInstance*> published;

    auto writer = [&](int w) {
        for (int i = 0; i < kPerWriter; ++i) {
            const QString id = idOf(w, i);
            if (i % 2) {
                auto* inst = new CountingInstance(id);
                mgr()->InsertNewInstance(inst);
                std::lock_guard<std::mutex>{publishedMutex}, published.push_back(inst);
                violations += mgr()->OnRecv_InstStatusUpdate(id, record(id, "1")) != 0;
                violations += !mgr()->onRecv_InstModifyPush(id, record(id, "1"));
                violations += mgr()->OnRecv_InstStatusUpdate(id, record(id, finalStatus(i))) != 0;
            } else { // created, then updated
                for (const QString& status : {QString("0"), finalStatus(i)})
                    mgr()->OnRecv_QueryAlgoStrategyResponse(
                        record(id, status, i % 4 ? "CcPlain" : "CcT0"));
            }
        }
        --writersLeft;
    };
    auto reader = [&](unsigned pick) {
        for (int lastSize = 0; writersLeft > 0;) {
            const QStringList all = mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown);
            violations += !sorted(all) || all.size() < lastSize; // in ID order, never shrinking
            lastSize = all.size();
            violations += !sorted(mgr()->GetAllInstanceIDsExceptDeleted(kPlainType, false));
            violations += !sorted(mgr()->GetInstanceIDsForSpecialAlgoName({"CcT0"}));
            violations += !sorted(mgr()->GetAllInstanceIDsExceptDeletedForAllType(true));
            pick = pick * 1103515245u + 12345u;
            std::unique_lock<std::mutex> guard(publishedMutex);
            CountingInstance* inst =
                published.empty() ? nullptr : published.at(pick % published.size());
            guard.unlock();
            AlgoLogic::ReadLocker locker(mgr()->getLocker());
            violations +=
                inst && inst->remark() != (inst->modifies ? QString::number(inst->modifies) : "");
        }
    };
    std::vector<std::thread> threads; // two readers, then the writers
    for (int t = 0; t < 2 + kWriters; ++t)
        threads.emplace_back([&, t] { t < 2 ? reader(unsigned(t)) : writer(t - 2); });
    for (int i = 0; i < 3000 && writersLeft > 0; ++i) // at most 30 s
        QThread::msleep(10);
    const bool finished = writersLeft == 0;
    for (std::thread& t : threads)
        finished ? t.join() : t.detach();
    QVERIFY2(finished, "the writers did not finish: deadlock");

    QCOMPARE(violations.load(), 0);
    QCOMPARE(log.countOfType(QtWarningMsg), 0);
    QCOMPARE(signalled.load(), kWriters * kPerWriter); // two pushes per odd index
    const QMap<QString, InstanceInfoBase*> registry = mgr()->GetInstanceInfoForAllType();
    QCOMPARE(registry.size(), kWriters * kPerWriter);
    for (int w = 0; w < kWriters; ++w) {
        for (int i = 0; i < kPerWriter; ++i) {
            const QString id = idOf(w, i);
            InstanceInfoBase* inst = registry.value(id);
            auto* counting = dynamic_cast<CountingInstance*>(inst);
            QVERIFY2(inst && (counting != nullptr) == (i % 2 == 1), qPrintable(id));
            QCOMPARE(inst->status(), finalStatus(i));
            QCOMPARE(mgr()->GetInstanceIDByClInstID("cl-" + id), id);
            if (counting)
                QCOMPARE(QString("%1 %2").arg(counting->statusPushes).arg(counting->modifies),
                         QString("2 1"));
            else
                QCOMPARE(inst->getClassType(), QString(i % 4 ? "info" : "T0"));
        }
    }
}

QTEST_GUILESS_MAIN(TestInstanceConcurrency)
#include "tst_instanceconcurrency.moc"
