// Progress of an instance: the gather answer summed into the instance and
// spread over its legs, the per-leg report texts summed back up, and the
// notifications of both, called directly and through the registry.

#include <algologic.h>

#include "logcapture.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QSignalSpy>
#include <QtTest>

#include <functional>
#include <future>
#include <memory>
#include <thread>

namespace {

namespace Sec = Tessel_Fields::Security;
namespace Helm = Algo_Fields::HelmStrategy;

using Doubles = QList<double>;
using Remaining = QHash<QString, double>;

const QString kId = QStringLiteral("9100");
const QString kWide = QStringLiteral("600000"); // display factor 100
const QString kSym = QStringLiteral("000001");  // display factor 1
const QString kBuy = QStringLiteral("Buy");
const QString kSell = QStringLiteral("Sell");

VariantMap header(const QString& id = kId)
{
    return {{Tessel_Fields::Strategy::strategyID, id}};
}

// One security of a gather answer.
VariantMap sec(const QString& symbol, const QString& side, double ordered, double filled,
               double amount = 0, double avgPx = 0, double working = 0)
{
    return {{Sec::symbol, symbol}, {Sec::side, side}, {Sec::orderQty, ordered},
            {Sec::cumQty, filled}, {Sec::avgPx, avgPx}, {Helm::StrategyCumAmount, amount},
            {Helm::onTradingAmount, working}};
}

SymbolInfoBase* addLeg(InstanceInfoBase& inst, const QString& symbol, const QString& side,
                       double targetQty, double targetAmount = 0)
{
    auto* leg = new SymbolInfoBase;
    leg->setKey(InstanceMgr::GetSymbolExtInfoKey(inst.instanceID(), symbol, side));
    leg->setSymbol(symbol);
    leg->setOrderSide(side);
    leg->setTargetQty(targetQty);
    leg->setTargetAmount(targetAmount);
    inst.AddSymbolInfo(leg);
    return leg;
}

// A leg report text; its figures sit in the orderInfo part (object or text),
// which outweighs the report's own stale entrusted quantity.
QString rep(const QString& symbol, const QString& side, qint64 ts, const QJsonObject& info,
            bool infoAsText = false)
{
    QJsonObject o{{QStringLiteral("Symbol"), symbol}, {QStringLiteral("OrderSide"), side},
                  {QStringLiteral("Timestamp"), ts}, {QStringLiteral("EntrustQty"), -1}};
    o.insert(QStringLiteral("orderInfo"),
             infoAsText ? QJsonValue(QString::fromUtf8(QJsonDocument(info).toJson()))
                        : QJsonValue(info));
    return QString::fromUtf8(QJsonDocument(o).toJson(QJsonDocument::Compact));
}

QString rep(const QString& symbol, const QString& side, qint64 ts, double entrusted,
            bool infoAsText = false)
{
    return rep(symbol, side, ts, {{QStringLiteral("EntrustQty"), entrusted}}, infoAsText);
}

// Runs `work` in a thread of its own; false when it has not ended in time
// (a deadlocked thread is left behind).
bool endsInTime(const std::function<void()>& work)
{
    auto done = std::make_shared<std::promise<void>>();
    std::future<void> ended = done->get_future();
    std::thread([work, done] {
        work();
        done->set_value();
    }).detach();
    return ended.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
}

} // namespace

class TestInstanceProgress : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void gatherSums_data();
    void gatherSums();
    void gatherWithEmptyKeyChangesNothing();
    void gatherLegs_data();
    void gatherLegs();
    void gatherSignals_data();
    void gatherSignals();
    void finalStatusMarksFinalProgress_data();
    void finalStatusMarksFinalProgress();
    void reportResponseType_data();
    void reportResponseType();
    void progressReports_data();
    void progressReports();
    void reportsRecomputeInstance_data();
    void reportsRecomputeInstance();
    void routersEmitAfterReleasingLock_data();
    void routersEmitAfterReleasingLock();

private:
    InstanceMgr* m_mgr = nullptr;
};

void TestInstanceProgress::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("algologic.*.debug=true"));
    m_mgr = InstanceMgr::instance(); // registers the signal argument types
}

void TestInstanceProgress::init()
{
    HelmBusinessDataInterface::Reset();
    HelmBusinessDataInterface::SetDispFactor(kWide, 100);
}

void TestInstanceProgress::gatherSums_data()
{
    QTest::addColumn<VariantMapList>("records");
    QTest::addColumn<Doubles>("before");  // filled, balance, progress, amount progress
    QTest::addColumn<Doubles>("targets"); // quantity, amount
    QTest::addColumn<Doubles>("after");
    QTest::addColumn<QString>("sumLog");
    QTest::addColumn<int>("warnings");

    const Doubles none{0, 0, 0, 0};
    QTest::newRow("display factor scales quantities, not amounts")
        << VariantMapList{header(), sec(kWide, kBuy, 10, 5, 300)} << none << Doubles{2000, 600}
        << Doubles{500, 300, 0.25, 0.5}
        << "###sumDealQty:  500 ###sumTargetQty:  1000 ###sumDealBalance:  300" << 0;
    QTest::newRow("same symbol and side twice adds both")
        << VariantMapList{header(), sec(kSym, kBuy, 10, 2, 100), sec(kSym, kBuy, 10, 3, 50)}
        << none << Doubles{10, 300} << Doubles{5, 150, 0.5, 0.5}
        << "###sumDealQty:  5 ###sumTargetQty:  20 ###sumDealBalance:  150" << 0;
    QTest::newRow("header only: fills and amount progress kept, progress drops")
        << VariantMapList{header()} << Doubles{10, 20, 0.3, 0.4} << Doubles{100, 100}
        << Doubles{10, 20, 0, 0.4}
        << "###sumDealQty:  0 ###sumTargetQty:  0 ###sumDealBalance:  0" << 4;
    QTest::newRow("zero targets")
        << VariantMapList{header(), sec(kSym, kBuy, 10, 5, 50)} << none << Doubles{0, 0}
        << Doubles{5, 50, 0, 0} << "###sumDealQty:  5" << 0;
    QTest::newRow("targets at the threshold")
        << VariantMapList{header(), sec(kSym, kBuy, 10, 5, 50)} << none
        << Doubles{1e-15, -1e-15} << Doubles{5, 50, 0, 0} << "###sumDealQty:  5" << 0;
    QTest::newRow("target just above the threshold")
        << VariantMapList{header(), sec(kSym, kBuy, 10, 5, 50)} << none
        << Doubles{2e-15, 4e-15} << Doubles{5, 50, 5 / 2e-15, 50 / 4e-15}
        << "###sumDealQty:  5" << 0;
}

void TestInstanceProgress::gatherSums()
{
    QFETCH(VariantMapList, records);
    QFETCH(Doubles, before);
    QFETCH(Doubles, targets);
    QFETCH(Doubles, after);
    QFETCH(QString, sumLog);
    QFETCH(int, warnings);

    InstanceInfoBase inst;
    inst.setInstanceID(kId);
    inst.setFilledQty(before[0]);
    inst.setFilledBalance(before[1]);
    inst.setProgrees(before[2]);
    inst.setAmountProgress(before[3]);
    inst.setTargetQty(targets[0]);
    inst.setTargetAmount(targets[1]);

    LogCapture log;
    inst.OnRecv_StrategyProgressGatherResponse(records);

    QCOMPARE(Doubles({inst.filledQty(), inst.filledBalance(), inst.progrees(),
                      inst.amountProgress()}),
             after);
    QCOMPARE(Doubles({inst.targetQty(), inst.targetAmount()}), targets); // sums only logged
    QVERIFY2(log.contains(QtDebugMsg, sumLog), qPrintable(log.last(QtDebugMsg)));
    QCOMPARE(log.countOfType(QtWarningMsg), warnings);
}

void TestInstanceProgress::gatherWithEmptyKeyChangesNothing()
{
    InstanceInfoBase inst;
    inst.setInstanceID(kId);
    inst.setTargetQty(10);
    inst.setStatus(Algo_Values::InstanceStates::COMPLETE);
    SymbolInfoBase* leg = addLeg(inst, kSym, kBuy, 10);
    QSignalSpy progress(m_mgr, &InstanceMgr::signalProgressUpdated);
    QSignalSpy remaining(m_mgr, &InstanceMgr::sigSymbolRemainQty);
    LogCapture log;

    inst.OnRecv_StrategyProgressGatherResponse({header(QString()), sec(kSym, kBuy, 10, 5, 50)});

    QVERIFY(log.contains(QtDebugMsg, "OnRecv_StrategyProgressGatherResponse empty key"));
    QCOMPARE(inst.filledQty(), 0.0);
    QCOMPARE(inst.progrees(), 0.0);
    QVERIFY(!inst.finalProgress());
    QCOMPARE(leg->entrustQty(), 0.0);
    QCOMPARE(leg->orderSide(), kBuy);
    QCOMPARE(progress.count() + remaining.count(), 0);
}

void TestInstanceProgress::gatherLegs_data()
{
    QTest::addColumn<QString>("strategy");
    QTest::addColumn<QString>("tradeOrder");
    QTest::addColumn<QString>("legSide");
    QTest::addColumn<Doubles>("legBefore"); // target qty, target amount, filled, dealt
    QTest::addColumn<VariantMapList>("records");
    // dealt, filled, avg price, entrusted, entrust progress, progress,
    // entrusted amount, amount entrust progress, amount deal progress
    QTest::addColumn<Doubles>("leg");
    QTest::addColumn<QString>("side");
    QTest::addColumn<double>("remaining");

    const Doubles fresh{200, 1000, 0, 0};
    const VariantMap buy = sec(kSym, kBuy, 100, 50, 400, 8, 100);
    const Doubles fromBuy{400, 50, 8, 100, 0.5, 0.25, 500, 0.5, 0.4};
    const Doubles zeros{0, 0, 0, 0, 0, 0, 0, 0, 0};
    QTest::newRow("quantity algo") << "TWAP" << "" << kBuy << fresh
                                   << VariantMapList{header(), buy} << fromBuy << kBuy << 100.0;
    QTest::newRow("amount-driven algo") << "AITWAP7" << "" << kBuy << fresh
                                        << VariantMapList{header(), buy} << fromBuy << kBuy
                                        << 500.0;
    QTest::newRow("later record wins")
        << "TWAP" << "" << kBuy << fresh
        << VariantMapList{header(), sec(kSym, kBuy, 150, 90, 800, 9), buy} << fromBuy << kBuy
        << 100.0;
    QTest::newRow("side empty: the trade order's")
        << "TWAP" << kBuy << kBuy << fresh
        << VariantMapList{header(), sec(kSym, "", 100, 50, 400, 8, 100)} << fromBuy << kBuy
        << 100.0;
    QTest::newRow("no entry: quantity target remains")
        << "TWAP" << "" << kBuy << fresh
        << VariantMapList{header(), sec(kSym, kSell, 100, 50, 400)} << zeros << "" << 200.0;
    QTest::newRow("no entry: amount target remains")
        << "AIPOV9" << "" << kBuy << fresh << VariantMapList{header()} << zeros << "" << 1000.0;
    QTest::newRow("zero leg targets")
        << "TWAP" << "" << kBuy << Doubles{0, 1e-16, 0, 0} << VariantMapList{header(), buy}
        << Doubles{400, 50, 8, 100, 0, 0, 500, 0, 0} << kBuy << -100.0;
    QTest::newRow("leg fills never go back")
        << "TWAP" << "" << kBuy << Doubles{200, 1000, 80, 900} << VariantMapList{header(), buy}
        << Doubles{900, 80, 8, 100, 0.5, 0.25, 500, 0.5, 0.4} << kBuy << 100.0;
    QTest::newRow("grid leg of both sides: quantities summed, no amounts")
        << "GridTradingStrategy" << "" << "All" << Doubles{100, 1000, 0, 0}
        << VariantMapList{header(), sec(kSym, kBuy, 30, 10, 99, 5, 1),
                          sec(kSym, kSell, 20, 5, 50, 6, 2)}
        << Doubles{0, 15, 0, 50, 0.5, 0.15, 0, 0, 0} << "All" << 50.0;
    QTest::newRow("grid leg of one side")
        << "GridTradingYmdStrategy" << "" << kSell << Doubles{100, 1000, 0, 0}
        << VariantMapList{header(), sec(kSym, kBuy, 30, 10, 99, 5, 1),
                          sec(kSym, kSell, 20, 5, 50, 6, 2)}
        << Doubles{50, 5, 6, 20, 0.2, 0.05, 52, 0.052, 0.05} << kSell << 80.0;
}

void TestInstanceProgress::gatherLegs()
{
    QFETCH(QString, strategy);
    QFETCH(QString, tradeOrder);
    QFETCH(QString, legSide);
    QFETCH(Doubles, legBefore);
    QFETCH(VariantMapList, records);
    QFETCH(Doubles, leg);
    QFETCH(QString, side);
    QFETCH(double, remaining);

    InstanceInfoBase inst;
    inst.setInstanceID(kId);
    inst.setStrategyName(strategy);
    inst.setInstanceTradeOrder(tradeOrder);
    SymbolInfoBase* l = addLeg(inst, kSym, legSide, legBefore[0], legBefore[1]);
    l->setFilledQty(legBefore[2]);
    l->setDealBalance(legBefore[3]);
    QSignalSpy progressSpy(m_mgr, &InstanceMgr::signalProgressUpdated);
    QSignalSpy remainSpy(m_mgr, &InstanceMgr::sigSymbolRemainQty);

    inst.OnRecv_StrategyProgressGatherResponse(records);

    QCOMPARE(Doubles({l->dealBalance(), l->filledQty(), l->dealAvgPrice(), l->entrustQty(),
                      l->entrustProgress(), l->progress(), l->entrustAmount(),
                      l->amountEntrustProgress(), l->amoutDealProgress()}),
             leg);
    QCOMPARE(l->orderSide(), side);
    QCOMPARE(progressSpy.count(), 1);
    QCOMPARE(progressSpy.at(0).at(0).toString(), kId);
    QCOMPARE(progressSpy.at(0).at(1).value<QList<QString>>(), QList<QString>{kSym + "_" + side});
    QCOMPARE(remainSpy.count(), 1);
    QCOMPARE(remainSpy.at(0).at(0).toString(), kId);
    QCOMPARE(remainSpy.at(0).at(1).value<Remaining>(), (Remaining{{kSym + "_" + legSide,
                                                                   remaining}}));
}

void TestInstanceProgress::gatherSignals_data()
{
    QTest::addColumn<QStringList>("legs"); // symbol/side
    QTest::addColumn<QStringList>("keys");
    QTest::addColumn<Remaining>("remaining");

    QTest::newRow("no legs: nothing emitted") << QStringList() << QStringList() << Remaining();
    QTest::newRow("every leg in key order")
        << QStringList{kWide + "/" + kBuy, kSym + "/" + kSell, kSym + "/" + kBuy}
        << QStringList{kSym + "_Buy", kSym + "_", kWide + "_"}
        << Remaining{{kSym + "_Buy", 6}, {kSym + "_Sell", 10}, {kWide + "_Buy", 10}};
}

void TestInstanceProgress::gatherSignals()
{
    QFETCH(QStringList, legs);
    QFETCH(QStringList, keys);
    QFETCH(Remaining, remaining);

    InstanceInfoBase inst;
    inst.setInstanceID(kId);
    inst.setTargetQty(100);
    for (const QString& leg : legs)
        addLeg(inst, leg.section('/', 0, 0), leg.section('/', 1), 10);
    QSignalSpy progressSpy(m_mgr, &InstanceMgr::signalProgressUpdated);
    QSignalSpy remainSpy(m_mgr, &InstanceMgr::sigSymbolRemainQty);

    inst.OnRecv_StrategyProgressGatherResponse({header(), sec(kSym, kBuy, 4, 2)});

    QCOMPARE(inst.filledQty(), 2.0); // the instance is updated with or without legs
    QCOMPARE(progressSpy.count(), keys.isEmpty() ? 0 : 1);
    QCOMPARE(remainSpy.count(), remaining.isEmpty() ? 0 : 1);
    if (!keys.isEmpty()) {
        QCOMPARE(progressSpy.at(0).at(1).value<QList<QString>>(), keys);
        QCOMPARE(remainSpy.at(0).at(1).value<Remaining>(), remaining);
    }
}

void TestInstanceProgress::finalStatusMarksFinalProgress_data()
{
    QTest::addColumn<QString>("status");
    QTest::addColumn<bool>("final");
    QTest::newRow("complete") << Algo_Values::InstanceStates::COMPLETE << true;
    QTest::newRow("stopped") << Algo_Values::InstanceStates::STOP << true;
    QTest::newRow("running") << "3" << false;
}

void TestInstanceProgress::finalStatusMarksFinalProgress()
{
    QFETCH(QString, status);
    QFETCH(bool, final);
    InstanceInfoBase inst;
    inst.setInstanceID(kId);
    inst.setStatus(status);
    LogCapture log;
    inst.OnRecv_StrategyProgressGatherResponse({header()});
    QCOMPARE(inst.finalProgress(), final);
    QCOMPARE(log.contains(QtDebugMsg, "rcv final status " + kId), final);
}

void TestInstanceProgress::reportResponseType_data()
{
    QTest::addColumn<QStringList>("types"); // one record each after the header
    QTest::addColumn<bool>("applied");
    QTest::newRow("header only") << QStringList() << false;
    QTest::newRow("ui") << QStringList{"ui"} << true;
    QTest::newRow("console") << QStringList{"console"} << false;
    QTest::newRow("first type decides") << QStringList{"ui", "console"} << true;
    QTest::newRow("later ui does not count") << QStringList{"console", "ui"} << false;
    QTest::newRow("empty type passed over") << QStringList{"", "ui"} << true;
}

void TestInstanceProgress::reportResponseType()
{
    QFETCH(QStringList, types);
    QFETCH(bool, applied);
    InstanceInfoBase inst;
    inst.setInstanceID(kId);
    SymbolInfoBase* leg = addLeg(inst, kSym, kBuy, 10);
    VariantMapList records{header()};
    for (const QString& type : types) {
        records.append({{Tessel_Fields::Strategy::reportType, type},
                        {Tessel_Fields::Strategy::strategyReport, rep(kSym, kBuy, 1, 7)}});
    }
    QSignalSpy progressSpy(m_mgr, &InstanceMgr::signalProgressUpdated);
    inst.OnRecv_StrategyReportResponse(records);
    QCOMPARE(leg->entrustQty(), applied ? 7.0 : 0.0);
    QCOMPARE(progressSpy.count(), applied ? 1 : 0);
}

void TestInstanceProgress::progressReports_data()
{
    QTest::addColumn<QStringList>("reports");
    QTest::addColumn<QList<QString>>("updated");
    QTest::addColumn<double>("buyEntrusted");
    QTest::addColumn<QString>("log");

    const QString buyKey = kId + "_" + kSym + "_Buy";
    const QString sellKey = kId + "_" + kSym + "_Sell";
    QTest::newRow("orderInfo object") << QStringList{rep(kSym, kBuy, 1, 40)}
                                      << QList<QString>{buyKey} << 40.0 << "";
    QTest::newRow("orderInfo text") << QStringList{rep(kSym, kBuy, 1, 40, true)}
                                    << QList<QString>{buyKey} << 40.0 << "";
    QTest::newRow("broken json skipped")
        << QStringList{"{oops", rep(kSym, kBuy, 1, 40)} << QList<QString>{buyKey} << 40.0
        << "json error: progress json:  {oops";
    QTest::newRow("no symbol") << QStringList{rep("", kBuy, 1, 40)} << QList<QString>() << 0.0
                               << "parseSymbolProgressReport symbol is empty";
    QTest::newRow("leg not held") << QStringList{rep(kWide, kBuy, 1, 40)} << QList<QString>()
                                  << 0.0 << "symbolInfo null " + kId + "_" + kWide + "_Buy";
    QTest::newRow("older report dropped")
        << QStringList{rep(kSym, kBuy, 200, 40), rep(kSym, kBuy, 100, 30)}
        << QList<QString>{buyKey} << 40.0 << "new timestamp: 100 smaller than old timestamp: 200";
    QTest::newRow("equal timestamp taken")
        << QStringList{rep(kSym, kBuy, 200, 40), rep(kSym, kBuy, 200, 30)}
        << QList<QString>{buyKey, buyKey} << 30.0 << "";
    QTest::newRow("sides ordered apart")
        << QStringList{rep(kSym, kSell, 200, 10), rep(kSym, kBuy, 100, 40)}
        << QList<QString>{sellKey, buyKey} << 40.0 << "";
    QTest::newRow("empty list") << QStringList() << QList<QString>() << 0.0 << "";
}

void TestInstanceProgress::progressReports()
{
    QFETCH(QStringList, reports);
    QFETCH(QList<QString>, updated);
    QFETCH(double, buyEntrusted);
    QFETCH(QString, log);

    InstanceInfoBase inst;
    inst.setInstanceID(kId);
    SymbolInfoBase* buy = addLeg(inst, kSym, kBuy, 10);
    addLeg(inst, kSym, kSell, 10);
    QMap<QString, QList<QString>> byInstance{{"other", {"x"}}, {kId, {"stale"}}};
    QSignalSpy progressSpy(m_mgr, &InstanceMgr::signalProgressUpdated);
    LogCapture capture;

    inst.OnRecvInstProgressInfo(reports, false, byInstance);

    QCOMPARE(buy->entrustQty(), buyEntrusted);
    if (!log.isEmpty())
        QVERIFY2(capture.contains(QtDebugMsg, log), qPrintable(log));
    QCOMPARE(byInstance.value("other"), QList<QString>{"x"});
    QCOMPARE(byInstance.value(kId), updated.isEmpty() ? QList<QString>{"stale"} : updated);
    QCOMPARE(progressSpy.count(), updated.isEmpty() ? 0 : 1);
    if (!updated.isEmpty()) {
        QCOMPARE(progressSpy.at(0).at(0).toString(), kId);
        QCOMPARE(progressSpy.at(0).at(1).value<QList<QString>>(), updated);
    }
    if (updated.contains(buy->getKey())) { // merged flat into the last-report map
        const VariantMap last = buy->getLastReportMap();
        QCOMPARE(last.value("EntrustQty").toDouble(), buyEntrusted);
        QCOMPARE(last.value("Symbol").toString(), kSym);
        QVERIFY(!last.contains("orderInfo"));
    }
}

void TestInstanceProgress::reportsRecomputeInstance_data()
{
    QTest::addColumn<QStringList>("reports");
    // target qty, filled, balance, progress, target amount, amount progress
    QTest::addColumn<Doubles>("instance");
    QTest::addColumn<int>("emitted");

    const QJsonObject info{{"TargetQty", 50}, {"FilledQty", 25}, {"DealAmount", 100},
                           {"TargetAmount", 200}};
    QTest::newRow("leg report summed with display factors")
        << QStringList{rep(kSym, kBuy, 1, info)}
        << Doubles{1050, 225, 130, 225.0 / 1050, 500, 130.0 / 500} << 1;
    QTest::newRow("nothing taken still recomputes")
        << QStringList{rep(kSym, kSell, 1, info)} << Doubles{1050, 200, 30, 200.0 / 1050, 300, 0.1}
        << 0;
    const QJsonObject none{{"TargetQty", 0}, {"FilledQty", 0}, {"DealAmount", 0},
                           {"TargetAmount", 0}};
    QTest::newRow("zero target sums overwrite, ratios 0") // fills never go back on a leg
        << QStringList{rep(kSym, kBuy, 1, none), rep(kWide, kBuy, 1, none)}
        << Doubles{0, 200, 30, 0, 0, 0} << 1;
    QTest::newRow("empty list leaves the instance") << QStringList() << Doubles{5, 0, 0, 0, 7, 0}
                                                    << 0;
}

void TestInstanceProgress::reportsRecomputeInstance()
{
    QFETCH(QStringList, reports);
    QFETCH(Doubles, instance);
    QFETCH(int, emitted);

    InstanceInfoBase inst;
    inst.setInstanceID(kId);
    inst.setTargetQty(5);
    inst.setTargetAmount(7);
    SymbolInfoBase* wide = addLeg(inst, kWide, kBuy, 10, 300);
    wide->setFilledQty(2);
    wide->setDealBalance(30);
    addLeg(inst, kSym, kBuy, 50);
    QSignalSpy progressSpy(m_mgr, &InstanceMgr::signalProgressUpdated);

    inst.OnRecvInstProgressInfo(reports);

    QCOMPARE(Doubles({inst.targetQty(), inst.filledQty(), inst.filledBalance(), inst.progrees(),
                      inst.targetAmount(), inst.amountProgress()}),
             instance);
    QCOMPARE(progressSpy.count(), emitted);
}

void TestInstanceProgress::routersEmitAfterReleasingLock_data()
{
    QTest::addColumn<bool>("gather");
    QTest::addColumn<QStringList>("order");
    QTest::newRow("gather") << true << QStringList{"progress 6", "remain 6", "delay 6"};
    QTest::newRow("report") << false << QStringList{"progress 6"};
}

void TestInstanceProgress::routersEmitAfterReleasingLock()
{
    QFETCH(bool, gather);
    QFETCH(QStringList, order);

    static int serial = 0;
    const QString id = QStringLiteral("prog-router-%1").arg(++serial);
    auto* inst = new InstanceInfoBase;
    inst->setInstanceID(id);
    addLeg(*inst, kSym, kBuy, 10);
    m_mgr->InsertNewInstance(inst);

    // Receivers connected directly read the instance under the content lock.
    QStringList seen;
    QObject context;
    auto reader = [&seen, inst](const QString& name) {
        return [&seen, inst, name] {
            QReadLocker locker(InstanceMgr::instance()->getLocker());
            seen.append(name + " " + QString::number(inst->filledQty()));
        };
    };
    connect(m_mgr, &InstanceMgr::signalProgressUpdated, &context, reader("progress"),
            Qt::DirectConnection);
    connect(m_mgr, &InstanceMgr::sigSymbolRemainQty, &context, reader("remain"),
            Qt::DirectConnection);
    connect(m_mgr, &InstanceMgr::signalProgreeDelayUpadaete, &context, reader("delay"),
            Qt::DirectConnection);

    const VariantMapList records =
        gather ? VariantMapList{header(id), sec(kSym, kBuy, 8, 6)}
               : VariantMapList{header(id),
                                {{Tessel_Fields::Strategy::reportType, "ui"},
                                 {Tessel_Fields::Strategy::strategyReport,
                                  rep(kSym, kBuy, 1, {{"FilledQty", 6}, {"TargetQty", 10}})}}};
    const bool ended = endsInTime([this, gather, records] {
        if (gather)
            m_mgr->OnRecv_StrategyProgressGatherResponse(records);
        else
            m_mgr->OnRecv_StrategyReportResponse(records);
    });
    QVERIFY2(ended, "a direct receiver reading under the content lock deadlocked");
    QCOMPARE(seen, order);
    m_mgr->DeleteInstance(id);
}

QTEST_GUILESS_MAIN(TestInstanceProgress)
#include "tst_instanceprogress.moc"
