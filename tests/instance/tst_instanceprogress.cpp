// Progress of an instance: the gather answer summed into the instance and
// spread over its legs, per-leg report texts summed back up, and their
// notifications.

#include "../common/tabletest.h"

namespace {

using Remaining = QHash<QString, double>;
// An instance; a security of display factor 100 and one of display factor 1.
const QString kId = QStringLiteral("9100"), kWide = QStringLiteral("600000"),
              kSym = QStringLiteral("000001");

// Numbers from "a b c", each a number or "x/y".
QList<double> numbers(const QString& text)
{
    QList<double> out;
    for (const QString& n : text.split(' ', Qt::SkipEmptyParts))
        out << (n.contains('/') ? n.section('/', 0, 0).toDouble() / n.section('/', 1).toDouble()
                                : n.toDouble());
    return out;
}

// A buy leg's report from "SYMBOL@TIMESTAMP:ENTRUSTED[{more orderInfo}]" whose orderInfo part
// (TargetQty 50, the entrusted quantity, more) outweighs the report's own entrusted quantity
// (-1). Other texts are taken as they are.
QString report(const QString& token)
{
    const QRegularExpressionMatch m = QRegularExpression("^(\\w*)@(\\d+):(\\d+)(.*)$").match(token);
    if (!m.hasMatch())
        return token;
    QJsonObject info = QJsonDocument::fromJson(m.captured(4).toUtf8()).object();
    info.insert("TargetQty", info.value("TargetQty").toDouble(50));
    info.insert("EntrustQty", m.captured(3).toDouble());
    return QJsonDocument(QJsonObject{{"Symbol", m.captured(1)},
                                     {"OrderSide", "Buy"},
                                     {"Timestamp", m.captured(2).toLongLong()},
                                     {"EntrustQty", -1},
                                     {"orderInfo", info}})
        .toJson(QJsonDocument::Compact);
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

} // namespace

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
    // The strategy and status of instance 9100, whose one leg (000001, side Buy, All for a
    // grid) has its targets (quantity, amount); the records (600000 counts 100 times); the
    // figures afterwards: the
    // instance's filled, balance, progress, amount progress (0, 0, 0.3, 0 before), the leg's
    // dealt, filled, avg price, entrusted, entrust progress, progress, entrusted amount,
    // amount entrust progress, amount deal progress; the side announced for the leg ("none":
    // nothing announced) and its announced remaining value; a debug line.
    TableTest::addRows(R"(
quantity algo; display factor scales the sums | TWAP | 3 | [{"strategyID":"9100"},{"symbol":"600000","side":"Buy","orderQty":10,"cumQty":5,"StrategyCumAmount":300},{"symbol":"000001","side":"Buy","orderQty":100,"cumQty":50,"StrategyCumAmount":400,"avgPx":8,"onTradingAmount":100}] | 1000 800 | 550 700 0.55 0.875 400 50 8 100 0.1 0.05 500 0.625 0.5 | Buy | 900 | ###sumDealQty:  550 ###sumTargetQty:  1100 ###sumDealBalance:  700
header only: progress drops; final; no entry: amount target remains | AIPOV9 | 5 | [{"strategyID":"9100"}] | 100 800 | 0 0 0 0 0 0 0 0 0 0 0 0 0 | | 800 | rcv final status 9100
amount-driven algo leg, tiny targets: ratios 0 | AITWAP7 | 3 | [{"strategyID":"9100"},{"symbol":"000001","side":"Buy","orderQty":100,"cumQty":50,"StrategyCumAmount":400,"avgPx":8,"onTradingAmount":100}] | 1e-15 -1e-15 | 50 400 0 0 400 50 8 100 0 0 500 0 0 | Buy | -500 |
grid leg of both sides: quantities summed, no amounts | GridTradingStrategy | 3 | [{"strategyID":"9100"},{"symbol":"000001","side":"Buy","orderQty":30,"cumQty":10,"StrategyCumAmount":99,"avgPx":5,"onTradingAmount":1},{"symbol":"000001","side":"Sell","orderQty":20,"cumQty":5,"StrategyCumAmount":50,"avgPx":6,"onTradingAmount":2}] | 100 1000 | 15 149 0.15 0.149 0 15 0 50 0.5 0.15 0 0 0 | All | 50 | ###sumDealQty:  15
empty key changes nothing, final or not | TWAP | 2 | [{},{"symbol":"000001","side":"Buy","orderQty":100,"cumQty":50,"StrategyCumAmount":400,"avgPx":8,"onTradingAmount":100}] | 200 800 | 0 0 0.3 0 0 0 0 0 0 0 0 0 0 | none | | GatherResponse empty key
)");
}

void TestInstanceProgress::gather()
{
    const std::array<QString, 8> c = TableTest::cells<8>();
    QString strategy = c[0], status = c[1], records = c[2], targets = c[3], after = c[4],
            side = c[5], remaining = c[6], log = c[7];
    const QString legSide = strategy.startsWith("Grid") ? "All" : "Buy";
    const QList<double> target = numbers(targets);
    InstanceInfoBase inst;
    inst.setInstanceID(kId);
    inst.setStrategyName(strategy);
    inst.setStatus(status);
    inst.setProgrees(0.3);
    inst.setTargetQty(target[0]);
    inst.setTargetAmount(target[1]);
    SymbolInfoBase* l = addLeg(inst, kSym, legSide, target[0], target[1]);
    QSignalSpy progress(InstanceMgr::instance(), &InstanceMgr::signalProgressUpdated);
    QSignalSpy remain(InstanceMgr::instance(), &InstanceMgr::sigSymbolRemainQty);
    LogCapture capture;

    VariantMapList list;
    for (const QVariant& record : QJsonDocument::fromJson(records.toUtf8()).toVariant().toList())
        list << record.toMap();
    inst.OnRecv_StrategyProgressGatherResponse(list);

    QCOMPARE(
        QList<double>({inst.filledQty(), inst.filledBalance(), inst.progrees(),
                       inst.amountProgress(), l->dealBalance(), l->filledQty(), l->dealAvgPrice(),
                       l->entrustQty(), l->entrustProgress(), l->progress(), l->entrustAmount(),
                       l->amountEntrustProgress(), l->amoutDealProgress()}),
        numbers(after));
    QVERIFY2(capture.contains(QtDebugMsg, log), qPrintable(log));
    QCOMPARE(inst.finalProgress(), log.startsWith("rcv final status"));
    QCOMPARE(progress.count() + remain.count(), side == "none" ? 0 : 2);
    if (side != "none") {
        QCOMPARE(progress[0][1].value<QList<QString>>(), QList<QString>{kSym + "_" + side});
        QCOMPARE(remain[0][1].value<Remaining>(),
                 (Remaining{{kSym + "_" + legSide, remaining.toDouble()}}));
    }
}

void TestInstanceProgress::reports_data()
{
    // Report texts (see report()); their record types ("ui" when not given); how many keys are
    // announced; the figures afterwards: the instance's target qty, filled, balance, progress,
    // target amount, amount progress (all 0 before), the buy leg's entrusted quantity; debug
    // lines (";"-separated).
    TableTest::addRows(R"(
first record's type, console: ignored | 000001@1:40 000001@1:40 | console ui | 0 | 0 0 0 0 0 0 0 |
orderInfo overlaid; instance recomputed with display factors | 000001@1:40{"FilledQty":25,"DealAmount":100,"TargetAmount":200} | | 1 | 1050 225 100 225/1050 500 0.2 40 |
bad JSON, no symbol, older report: logged, skipped; equal one taken | {oops @1:30 000001@200:40 000001@100:30 000001@200:35 | | 2 | 1050 200 0 200/1050 300 0 35 | json error: progress json:  {oops; ProgressReport symbol is empty; new timestamp: 100 smaller than old timestamp: 200
)");
}

// Through the router, which finds the instance by the response's first record; a receiver
// connected directly reads the instance under the content lock when told.
void TestInstanceProgress::reports()
{
    const std::array<QString, 5> c = TableTest::cells<5>();
    QString texts = c[0], types = c[1], updated = c[2], after = c[3], logs = c[4];
    InstanceMgr* mgr = InstanceMgr::instance();
    auto* inst = new InstanceInfoBase; // replaces the previous row's
    inst->setInstanceID(kId);
    addLeg(*inst, kWide, "Buy", 10, 300)->setFilledQty(2);
    SymbolInfoBase* buy = addLeg(*inst, kSym, "Buy", 50);
    mgr->InsertNewInstance(inst);
    VariantMapList records{{{"strategyID", kId}}};
    const QStringList reports = texts.split(' '), typeList = types.split(' ');
    for (int i = 0; i < reports.size(); ++i)
        records.append({{"reportType", typeList.value(i).isEmpty() ? "ui" : typeList.value(i)},
                        {"strategyReport", report(reports[i])}});
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

    const QList<double> expected = numbers(after);
    QCOMPARE(QList<double>({inst->targetQty(), inst->filledQty(), inst->filledBalance(),
                            inst->progrees(), inst->targetAmount(), inst->amountProgress(),
                            buy->entrustQty()}),
             expected);
    for (const QString& log : logs.split("; ", Qt::SkipEmptyParts))
        QVERIFY2(capture.contains(QtDebugMsg, log), qPrintable(log));
    QCOMPARE(told, (updated != "0" ? QList<QVariantList>{{updated.toInt(), expected[6]}}
                                   : QList<QVariantList>()));
}

QTEST_GUILESS_MAIN(TestInstanceProgress)
#include "tst_instanceprogress.moc"
