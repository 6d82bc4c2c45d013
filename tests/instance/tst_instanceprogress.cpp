// Progress of an instance: the gather answer summed into the instance and
// spread over its legs, per-leg report texts summed back up, and their
// notifications.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

namespace {

using Doubles = QList<double>;
using Remaining = QHash<QString, double>;
// An instance; a security of display factor 100 and one of display factor 1.
const QString kId = QStringLiteral("9100"), kWide = QStringLiteral("600000"),
              kSym = QStringLiteral("000001");

// strategy, status, records, targets (quantity, amount: the instance's and its leg's), the
// figures afterwards (see gather_data), the leg's side afterwards (null: nothing announced),
// its announced remaining value, a debug line.
using Gather = std::tuple<QString, QString, VariantMapList, Doubles, Doubles, QString, double,
                          QString>;
// report texts, their record types ("ui" when not given), how many keys are announced, the
// figures afterwards (see reports_data), debug lines.
using Reports = std::tuple<QStringList, QStringList, int, Doubles, QStringList>;

// One security of a gather answer.
VariantMap sec(const QString& symbol, const QString& side, double ordered, double filled,
               double amount = 0, double avgPx = 0, double working = 0)
{
    namespace S = Tessel_Fields::Security;
    namespace H = Algo_Fields::HelmStrategy;
    return {{S::symbol, symbol}, {S::side, side}, {S::orderQty, ordered}, {S::cumQty, filled},
            {S::avgPx, avgPx}, {H::StrategyCumAmount, amount}, {H::onTradingAmount, working}};
}

SymbolInfoBase* addLeg(InstanceInfoBase& inst, const QString& symbol, const QString& side,
                       double targetQty, double targetAmount = 0)
{
    auto* leg = new SymbolInfoBase;
    leg->setKey(InstanceMgr::GetSymbolExtInfoKey(inst.instanceID(), symbol, side));
    leg->setSymbol(symbol);
    leg->setTargetQty(targetQty);
    leg->setTargetAmount(targetAmount);
    inst.AddSymbolInfo(leg);
    return leg;
}

// A buy leg's report whose orderInfo part outweighs the report's own entrusted quantity.
QString rep(const QString& symbol, qint64 ts, double entrusted,
            QJsonObject info = {{"TargetQty", 50}})
{
    info.insert("EntrustQty", entrusted);
    return QJsonDocument(QJsonObject{{"Symbol", symbol}, {"OrderSide", "Buy"}, {"Timestamp", ts},
                                     {"EntrustQty", -1}, {"orderInfo", info}})
        .toJson(QJsonDocument::Compact);
}

} // namespace

Q_DECLARE_METATYPE(Gather)
Q_DECLARE_METATYPE(Reports)

class TestInstanceProgress : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void gather_data();
    void gather();
    void reports_data();
    void reports();
};

void TestInstanceProgress::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("algologic.*.debug=true"));
    HelmBusinessDataInterface::SetDispFactor(kWide, 100);
}

void TestInstanceProgress::gather_data()
{
    // Figures: the instance's filled, balance, progress, amount progress (0, 0, 0.3, 0
    // before); the leg's dealt, filled, avg price, entrusted, entrust progress, progress,
    // entrusted amount, amount entrust progress, amount deal progress.
    QTest::addColumn<Gather>("row");
    const VariantMap head{{Tessel_Fields::Strategy::strategyID, kId}}; // {}: no key
    const VariantMap buy = sec(kSym, "Buy", 100, 50, 400, 8, 100);
    const Doubles zeros{0, 0, 0, 0, 0, 0, 0, 0, 0};
    QTest::newRow("quantity algo; display factor scales the sums")
        << Gather{"TWAP", "3", {head, sec(kWide, "Buy", 10, 5, 300), buy}, {1000, 800},
                  {550, 700, 0.55, 0.875, 400, 50, 8, 100, 0.1, 0.05, 500, 0.625, 0.5}, "Buy", 900,
                  "###sumDealQty:  550 ###sumTargetQty:  1100 ###sumDealBalance:  700"};
    QTest::newRow("header only: progress drops; final; no entry: amount target remains")
        << Gather{"AIPOV9", Algo_Values::InstanceStates::STOP, {head}, {100, 800},
                  Doubles{0, 0, 0, 0} + zeros, "", 800, "rcv final status " + kId};
    QTest::newRow("amount-driven algo leg, tiny targets: ratios 0")
        << Gather{"AITWAP7", "3", {head, buy}, {1e-15, -1e-15},
                  {50, 400, 0, 0, 400, 50, 8, 100, 0, 0, 500, 0, 0}, "Buy", -1e-15 - 500, ""};
    QTest::newRow("grid leg of both sides: quantities summed, no amounts")
        << Gather{"GridTradingStrategy", "3",
                  {head, sec(kSym, "Buy", 30, 10, 99, 5, 1), sec(kSym, "Sell", 20, 5, 50, 6, 2)},
                  {100, 1000}, {15, 149, 0.15, 0.149, 0, 15, 0, 50, 0.5, 0.15, 0, 0, 0}, "All", 50,
                  "###sumDealQty:  15"};
    QTest::newRow("empty key changes nothing, final or not")
        << Gather{"TWAP", Algo_Values::InstanceStates::COMPLETE, {{}, buy}, {200, 800},
                  Doubles{0, 0, 0.3, 0} + zeros, QString(), 0, "GatherResponse empty key"};
}

void TestInstanceProgress::gather()
{
    QFETCH(Gather, row);
    const auto& [strategy, status, records, targets, after, side, remaining, log] = row;
    const QString legSide = strategy.startsWith("Grid") ? "All" : "Buy";
    InstanceInfoBase inst;
    inst.setInstanceID(kId);
    inst.setStrategyName(strategy);
    inst.setStatus(status);
    inst.setProgrees(0.3);
    inst.setTargetQty(targets[0]);
    inst.setTargetAmount(targets[1]);
    SymbolInfoBase* l = addLeg(inst, kSym, legSide, targets[0], targets[1]);
    QSignalSpy progress(InstanceMgr::instance(), &InstanceMgr::signalProgressUpdated);
    QSignalSpy remain(InstanceMgr::instance(), &InstanceMgr::sigSymbolRemainQty);
    LogCapture capture;

    inst.OnRecv_StrategyProgressGatherResponse(records);

    QCOMPARE(Doubles({inst.filledQty(), inst.filledBalance(), inst.progrees(),
                      inst.amountProgress(), l->dealBalance(), l->filledQty(), l->dealAvgPrice(),
                      l->entrustQty(), l->entrustProgress(), l->progress(), l->entrustAmount(),
                      l->amountEntrustProgress(), l->amoutDealProgress()}), after);
    QVERIFY2(capture.contains(QtDebugMsg, log), qPrintable(log));
    QCOMPARE(inst.finalProgress(), log.startsWith("rcv final status"));
    QCOMPARE(progress.count() + remain.count(), side.isNull() ? 0 : 2);
    if (!side.isNull()) {
        QCOMPARE(progress[0][1].value<QList<QString>>(), QList<QString>{kSym + "_" + side});
        QCOMPARE(remain[0][1].value<Remaining>(), (Remaining{{kSym + "_" + legSide, remaining}}));
    }
}

void TestInstanceProgress::reports_data()
{
    // Figures: the instance's target qty, filled, balance, progress, target amount, amount
    // progress (all 0 before); the buy leg's entrusted quantity.
    QTest::addColumn<Reports>("row");
    QTest::newRow("first record's type, console: ignored") << Reports{
        {rep(kSym, 1, 40), rep(kSym, 1, 40)}, {"console", "ui"}, 0, {0, 0, 0, 0, 0, 0, 0}, {}};
    QTest::newRow("orderInfo overlaid; instance recomputed with display factors")
        << Reports{{rep(kSym, 1, 40, {{"TargetQty", 50}, {"FilledQty", 25}, {"DealAmount", 100},
                                      {"TargetAmount", 200}})},
                   {}, 1, {1050, 225, 100, 225.0 / 1050, 500, 0.2, 40}, {}};
    QTest::newRow("bad JSON, no symbol, older report: logged, skipped; equal one taken") << Reports{
        {"{oops", rep("", 1, 30), rep(kSym, 200, 40), rep(kSym, 100, 30), rep(kSym, 200, 35)},
        {}, 2, {1050, 200, 0, 200.0 / 1050, 300, 0, 35},
        {"json error: progress json:  {oops", "ProgressReport symbol is empty",
         "new timestamp: 100 smaller than old timestamp: 200"}};
}

// Through the router, which finds the instance by the response's first record; a receiver
// connected directly reads the instance under the content lock when told.
void TestInstanceProgress::reports()
{
    QFETCH(Reports, row);
    const auto& [reports, types, updated, after, logs] = row;
    InstanceMgr* mgr = InstanceMgr::instance();
    auto* inst = new InstanceInfoBase; // replaces the previous row's
    inst->setInstanceID(kId);
    addLeg(*inst, kWide, "Buy", 10, 300)->setFilledQty(2);
    SymbolInfoBase* buy = addLeg(*inst, kSym, "Buy", 50);
    mgr->InsertNewInstance(inst);
    VariantMapList records{{{Tessel_Fields::Strategy::strategyID, kId}}};
    for (int i = 0; i < reports.size(); ++i)
        records.append({{Tessel_Fields::Strategy::reportType, types.value(i, "ui")},
                        {Tessel_Fields::Strategy::strategyReport, reports[i]}});
    QList<QVariantList> told; // the keys announced, and the buy leg's entrusted quantity then
    QObject ctx;
    const auto read = [&](const QString&, const QList<QString>& keys) {
        AlgoLogic::ReadLocker locker(mgr->getLocker());
        told << QVariantList{keys.size(), buy->entrustQty()};
    };
    connect(mgr, &InstanceMgr::signalProgressUpdated, &ctx, read, Qt::DirectConnection);
    LogCapture capture;
    QThread* router = QThread::create([&] { mgr->OnRecv_StrategyReportResponse(records); });
    router->start();
    QVERIFY2(router->wait(5000), "a direct receiver reading under the content lock deadlocked");
    delete router;

    QCOMPARE(Doubles({inst->targetQty(), inst->filledQty(), inst->filledBalance(), inst->progrees(),
                      inst->targetAmount(), inst->amountProgress(), buy->entrustQty()}), after);
    for (const QString& log : logs)
        QVERIFY2(capture.contains(QtDebugMsg, log), qPrintable(log));
    QCOMPARE(told, (updated ? QList<QVariantList>{{updated, after[6]}} : QList<QVariantList>()));
}

QTEST_GUILESS_MAIN(TestInstanceProgress)
#include "tst_instanceprogress.moc"
