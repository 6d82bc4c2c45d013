// Stress: thousands of instances of every class under concurrent traffic.
//
// Writer threads route query answers, progress-gather answers, strategy
// reports (each fresh snapshot followed by a stale one), status and modify pushes; reader
// threads run every registry query, look legs up and read figures under the
// content lock, remembering what they saw; a producer pushes log lines while a
// consumer pops them; the T0 profit timer fires back to back. Afterwards every
// instance must hold the figures of its last non-stale record, no reader may
// have seen a figure go back, and every log line must be popped exactly once.
//
// Bounded by counts (kPerClass instances per class, kRounds rounds each), not
// by time; a 10-minute cap only turns a deadlock into a failure.

#include <algologic.h>

#include "exampleinstances.h"

#include <QtTest>

#include <atomic>
#include <thread>
#include <vector>

namespace {

using ExampleInstances::InstanceClass;
namespace S = Tessel_Fields::Strategy;

constexpr int kPerClass = 1000;
constexpr int kClasses = int(InstanceClass::Count);
constexpr int kRounds = 10;
constexpr int kWriters = 4;
constexpr int kReaders = 2;
constexpr int kLogLines = 20000;

InstanceMgr* mgr()
{
    return InstanceMgr::instance();
}

QString idOf(int cls, int index)
{
    return QString("st%1-%2").arg(cls).arg(index, 4, 10, QChar('0'));
}

QString json(const QVariantMap& map)
{
    return QString::fromUtf8(QJsonDocument::fromVariant(map).toJson(QJsonDocument::Compact));
}

// The figure each class's traffic drives up, as readers see it.
double watchedFigure(InstanceInfoBase* inst, InstanceClass cls)
{
    if (cls == InstanceClass::Multi)
        return static_cast<MultiInstanceInfo*>(inst)->getMultiFilledQty().toDouble();
    return inst->filledQty();
}

// Round `round` of one instance's traffic. Figures rise with the round; each
// multi-strategy snapshot is followed by a stale one (an older update count
// carrying a lower fill) that must be refused.
// Returns the number of router calls made.
int routeRound(InstanceClass cls, const QString& id, int round)
{
    const VariantMap header{{S::strategyID, id}};
    switch (cls) {
    case InstanceClass::Normal:
        mgr()->OnRecv_StrategyProgressGatherResponse(
            {header,
             {{"symbol", "600000.SH"}, {"side", "1"}, {"orderQty", 2000 * round},
              {"cumQty", 1000 * round}, {"StrategyCumAmount", 10240.0 * round},
              {"avgPx", 10.24}, {"onTradingAmount", 0.0}}});
        break;
    case InstanceClass::T0:
        mgr()->OnRecv_StrategyProgressGatherResponse(
            {{{S::strategyID, id},
              {S::strategyReport,
               QString("[{\"Symbol\":\"600519.SH\",\"TargetQty\":1000,\"buyOrderQty\":%1,"
                       "\"buyDealQty\":%1,\"sellOrderQty\":%1,\"sellDealQty\":%1,"
                       "\"buyAmount\":%2,\"sellAmount\":%2,\"AchieveProfit\":%1}]")
                   .arg(10 * round)
                   .arg(17100.0 * round)}}});
        break;
    case InstanceClass::Multi:
        for (int count : {2 * round, 2 * round - 1}) {
            const int filled = count == 2 * round ? 10 * round : 1;
            mgr()->OnRecv_StrategyReportResponse(
                {header,
                 {{S::reportType, "ui"},
                  {S::strategyReport,
                   json({{"UpdateCnt", count},
                         {"RunningData", QVariantMap{{"FilledQty", QString::number(filled)}}}})}}});
        }
        break;
    case InstanceClass::RushLimitUp:
        mgr()->OnRecv_StrategyReportResponse(
            {header,
             {{S::reportType, "ui"},
              {S::strategyReport,
               json({{"symbol", "600000"}, {"Timestamp", round}, {"filledQty", 100 * round}})}}});
        break;
    case InstanceClass::Count:
        break;
    }
    if (round == 2)
        mgr()->OnRecv_InstStatusUpdate(id, {{{S::strategyStatus, "1"}}});
    if (round == 3) // acknowledged, with the parameters the instance already has
        mgr()->onRecv_InstModifyPush(
            id, {{{S::strategyStatus, "1"},
                  {"ExecAckStatus", "1"},
                  {"StrategyAlterComment", "modified"},
                  {S::strategyParas,
                   ExampleInstances::prototype(cls).record.value(S::strategyParas)}}});
    if (round == 4)
        mgr()->OnRecv_QueryAlgoStrategyResponse({{{S::strategyID, id}, {S::strategyStatus, "1"}}});
    if (round == kRounds)
        mgr()->OnRecv_InstStatusUpdate(id, {{{S::strategyStatus, "2"}}});
    const bool push = round == 2 || round == 3 || round == 4 || round == kRounds;
    return (cls == InstanceClass::Multi ? 2 : 1) + (push ? 1 : 0);
}

double expectedFigure(InstanceClass cls)
{
    switch (cls) {
    case InstanceClass::Normal:
        return 1000.0 * kRounds;
    case InstanceClass::Multi:
        return 10.0 * kRounds;
    default:
        return 0.0; // the T0 and rush figures live on the legs
    }
}

} // namespace

class TestStress : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void everyClassUnderConcurrentTraffic();

private:
    QStringList m_ids;
};

void TestStress::initTestCase()
{
    CBusinessDataBase::GetInstance()->SetLoginAccount("trader01");
    CommonQuotaHandler::instance().SetLatestPrice("600519.SH", 1712.0);
    for (int cls = 0; cls < kClasses; ++cls)
        for (int i = 0; i < kPerClass; ++i) {
            m_ids.append(idOf(cls, i));
            QVERIFY(ExampleInstances::registerInstance(InstanceClass(cls), m_ids.last()));
        }
}

void TestStress::everyClassUnderConcurrentTraffic()
{
    std::atomic<int> writersLeft{kWriters}, regressions{0}, queryFaults{0};
    std::atomic<long> reads{0}, routed{0};
    std::atomic<bool> logsDone{false};
    std::atomic<int> modifyNotices{0};
    QObject context;
    connect(mgr(), &InstanceMgr::signalModifyPush, &context, [&] { ++modifyNotices; },
            Qt::DirectConnection);

    auto writer = [&](int w) {
        for (int round = 1; round <= kRounds; ++round)
            for (int n = w; n < m_ids.size(); n += kWriters) {
                routed += routeRound(InstanceClass(n / kPerClass), m_ids.at(n), round);
            }
        --writersLeft;
    };
    auto reader = [&](unsigned seed) {
        QHash<QString, double> seen; // the last figure this reader saw per instance
        const QMap<QString, InstanceInfoBase*> all = mgr()->GetInstanceInfoForAllType();
        for (int pass = 0; writersLeft > 0; ++pass) {
            if (pass % 16 == 0) { // the whole-registry queries, now and then
                queryFaults += mgr()->GetInstanceInfoForAllType().size() != m_ids.size();
                queryFaults += mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::all).size()
                               != m_ids.size();
                mgr()->GetAllInstanceIDsExceptDeleted("Normal", false);
                mgr()->GetAllInstanceIDsExceptDeletedForAllType(true);
                mgr()->GetInstanceIDsForSpecialAlgoName({"AITWAP", "BasisArb"});
            }
            for (int k = 0; k < 64; ++k) {
                seed = seed * 1103515245u + 12345u;
                const int n = int(seed % unsigned(m_ids.size()));
                const QString& id = m_ids.at(n);
                const auto cls = InstanceClass(n / kPerClass);
                queryFaults += mgr()->GetInstanceIDByClInstID("cl-" + id) != id;
                QString symbol, side;
                mgr()->getOneSymbol(id, symbol, side);
                // Registry lookups first: the registry lock comes before the content lock.
                SymbolInfoBase* leg = mgr()->getSymbolInfo(
                    InstanceMgr::GetSymbolExtInfoKey(id, symbol, side));
                AlgoLogic::ReadLocker locker(mgr()->getLocker());
                InstanceInfoBase* inst = all.value(id);
                const double figure = watchedFigure(inst, cls);
                regressions += figure < seen.value(id);
                seen.insert(id, figure);
                if (leg)
                    regressions += leg->filledQty() < 0 || leg->getKey().isEmpty();
                inst->standardProgress();
                inst->instanceAlias();
                ++reads;
            }
        }
    };
    QHash<QString, int> popped; // log line -> times popped
    auto logProducer = [&] {
        for (int line = 0; line < kLogLines; ++line)
            LogMgr::instance()->slotRecvGatherStrategyReport(QVariantList{
                VariantMap{{S::reportType, "console"},
                           {S::strategyID, m_ids.at(line % m_ids.size())},
                           {S::strategyReport, QString("line %1").arg(line)}}});
        logsDone = true;
    };
    auto popAll = [&] {
        for (const QString& id : qAsConst(m_ids)) {
            QList<QString> lines;
            LogMgr::instance()->popInstLog(id, lines);
            for (const QString& line : qAsConst(lines))
                ++popped[line];
        }
    };
    auto logConsumer = [&] {
        while (!logsDone)
            popAll();
        popAll();
    };
    auto profitTimer = [&] {
        while (writersLeft > 0)
            mgr()->slotCalculateTimer(QString());
    };

    std::vector<std::thread> threads;
    for (int w = 0; w < kWriters; ++w)
        threads.emplace_back(writer, w);
    for (int r = 0; r < kReaders; ++r)
        threads.emplace_back(reader, unsigned(r + 1));
    threads.emplace_back(logProducer);
    threads.emplace_back(logConsumer);
    threads.emplace_back(profitTimer);
    for (int i = 0; i < 60000 && (writersLeft > 0 || !logsDone); ++i)
        QThread::msleep(10);
    const bool finished = writersLeft == 0 && logsDone;
    for (std::thread& thread : threads)
        finished ? thread.join() : thread.detach();
    QVERIFY2(finished, "the traffic did not finish: deadlock");
    qInfo("%d threads, %ld messages routed, %ld reads under the content lock, %d log lines",
          int(threads.size()), routed.load(), reads.load(), kLogLines);

    QCOMPARE(regressions.load(), 0);
    QCOMPARE(queryFaults.load(), 0);
    QCOMPARE(modifyNotices.load(), m_ids.size());
    QCOMPARE(popped.size(), kLogLines);
    for (auto it = popped.cbegin(); it != popped.cend(); ++it)
        QVERIFY2(it.value() == 1, qPrintable(it.key()));

    const QMap<QString, InstanceInfoBase*> all = mgr()->GetInstanceInfoForAllType();
    AlgoLogic::ReadLocker locker(mgr()->getLocker());
    for (int n = 0; n < m_ids.size(); ++n) {
        const QString& id = m_ids.at(n);
        const auto cls = InstanceClass(n / kPerClass);
        InstanceInfoBase* inst = all.value(id);
        QVERIFY2(inst, qPrintable(id));
        QCOMPARE(inst->status(), QString("2"));
        if (cls == InstanceClass::Normal || cls == InstanceClass::Multi)
            QCOMPARE(watchedFigure(inst, cls), expectedFigure(cls));
        if (cls == InstanceClass::T0) {
            auto* leg = dynamic_cast<T0SymbolInfo*>(
                inst->getSymbolInfo(InstanceMgr::GetSymbolExtInfoKey(id, "600519.SH", "All")));
            QVERIFY2(leg, qPrintable(id));
            QCOMPARE(leg->buyDealQty(), 10.0 * kRounds);
        }
        if (cls == InstanceClass::RushLimitUp) {
            SymbolInfoBase* leg =
                inst->getSymbolInfo(InstanceMgr::GetSymbolExtInfoKey(id, "600000", "Buy"));
            QVERIFY2(leg, qPrintable(id));
            QCOMPARE(leg->filledQty(), 100.0 * kRounds);
        }
    }
}

QTEST_GUILESS_MAIN(TestStress)
#include "tst_stress.moc"
