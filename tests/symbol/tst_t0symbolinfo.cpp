// Rules of the T0 leg: the tolerant guarded setters, the staleness test shared
// by both feeds (and its deliberately odd error text), what each feed applies,
// and how the leg behaves when copied or used through its base.

#include "symbol/t0symbolinfo.h"

#include "platform/algodefines.h"

#include "logcapture.h"

#include <QLoggingCategory>
#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>

namespace Progress = Algo_Fields::AlgoInstProgressFields;

namespace {

enum class Guarded { BuyDealQty, BuyAmount, SellDealQty, SellAmount };

using Figures = QMap<QString, double>;
using Getter = double (T0SymbolInfo::*)() const;

const double NaN = std::numeric_limits<double>::quiet_NaN();
const QString Symbol = QStringLiteral("600000");

void setGuarded(T0SymbolInfo& leg, Guarded field, double value)
{
    switch (field) {
    case Guarded::BuyDealQty: leg.setBuyDealQty(value); break;
    case Guarded::BuyAmount: leg.setBuyAmount(value); break;
    case Guarded::SellDealQty: leg.setSellDealQty(value); break;
    case Guarded::SellAmount: leg.setSellAmount(value); break;
    }
}

double guardedOf(const T0SymbolInfo& leg, Guarded field)
{
    switch (field) {
    case Guarded::BuyDealQty: return leg.buyDealQty();
    case Guarded::BuyAmount: return leg.buyAmount();
    case Guarded::SellDealQty: return leg.sellDealQty();
    case Guarded::SellAmount: return leg.sellAmount();
    }
    return 0.0;
}

bool sameDouble(double actual, double expected)
{
    return actual == expected || (std::isnan(actual) && std::isnan(expected));
}

// Every number a feed may write, keyed by the record key that carries it
// (progress and profitAmount come with none).
Figures figures(const T0SymbolInfo& leg)
{
    static const QMap<QString, Getter> getters = {
        {Progress::TargetQty, &T0SymbolInfo::targetQty},
        {Progress::FilledQty, &T0SymbolInfo::filledQty},
        {QStringLiteral("progress"), &T0SymbolInfo::progress},
        {Progress::buyOrderQty, &T0SymbolInfo::buyOrderQty},
        {Progress::buyDealQty, &T0SymbolInfo::buyDealQty},
        {Progress::buyCloseQty, &T0SymbolInfo::buyCloseQty},
        {Progress::buyAvgPrice, &T0SymbolInfo::buyAvgPrice},
        {Progress::buyAmount, &T0SymbolInfo::buyAmount},
        {Progress::buyCancelQty, &T0SymbolInfo::buyCancelQty},
        {Progress::buyFee, &T0SymbolInfo::buyFee},
        {Progress::sellOrderQty, &T0SymbolInfo::sellOrderQty},
        {Progress::sellDealQty, &T0SymbolInfo::sellDealQty},
        {Progress::sellCloseQty, &T0SymbolInfo::sellCloseQty},
        {Progress::sellAvgPrice, &T0SymbolInfo::sellAvgPrice},
        {Progress::sellAmount, &T0SymbolInfo::sellAmount},
        {Progress::sellCancelQty, &T0SymbolInfo::sellCancelQty},
        {Progress::sellFee, &T0SymbolInfo::sellFee},
        {QStringLiteral("profitAmount"), &T0SymbolInfo::profitAmount},
        {Progress::AchieveProfit, &T0SymbolInfo::achieveProfit},
    };
    Figures result;
    for (auto it = getters.cbegin(); it != getters.cend(); ++it)
        result.insert(it.key(), (leg.*it.value())());
    return result;
}

// The names whose values differ, with both values; empty when all are equal.
QString differences(const Figures& actual, const Figures& expected)
{
    QStringList lines;
    for (auto it = expected.cbegin(); it != expected.cend(); ++it) {
        const double value = actual.value(it.key(), NaN);
        if (!sameDouble(value, it.value())) {
            lines << QStringLiteral("%1: actual %2, expected %3")
                         .arg(it.key())
                         .arg(value, 0, 'g', 17)
                         .arg(it.value(), 0, 'g', 17);
        }
    }
    return lines.join(QLatin1Char('\n'));
}

// `base` with the values that `changes` gives for its figures; keys that name
// no figure (Symbol, ...) are skipped, so a record can serve as its own
// expectation.
Figures withChanges(Figures base, const VariantMap& changes)
{
    for (auto it = changes.cbegin(); it != changes.cend(); ++it) {
        if (base.contains(it.key()))
            base.insert(it.key(), it.value().toDouble());
    }
    return base;
}

VariantMap edited(VariantMap record, const VariantMap& changes, const QStringList& removed = {})
{
    for (auto it = changes.cbegin(); it != changes.cend(); ++it)
        record.insert(it.key(), it.value());
    for (const QString& key : removed)
        record.remove(key);
    return record;
}

// A leg that has traded on both sides of the round trip.
T0SymbolInfo primedLeg()
{
    T0SymbolInfo leg;
    leg.setSymbol(Symbol);
    leg.setInstanceID(QStringLiteral("t0-1"));
    leg.setTargetQty(1000);
    leg.setFilledQty(250);
    leg.setProgress(0.25);
    leg.setBuyOrderQty(1000);
    leg.setBuyDealQty(150);
    leg.setBuyCloseQty(50);
    leg.setBuyAvgPrice(10);
    leg.setBuyAmount(1500);
    leg.setBuyCancelQty(20);
    leg.setBuyFee(1.5);
    leg.setSellOrderQty(800);
    leg.setSellDealQty(100);
    leg.setSellCloseQty(40);
    leg.setSellAvgPrice(11);
    leg.setSellAmount(1100);
    leg.setSellCancelQty(10);
    leg.setSellFee(1.25);
    leg.setProfitAmount(3);
    leg.setAchieveProfit(55);
    return leg;
}

// A progress-gather record that is newer than primedLeg() on both sides.
VariantMap currentRecord()
{
    return {{Progress::Symbol, Symbol},        {Progress::TargetQty, 2000},
            {Progress::buyOrderQty, 1200},     {Progress::buyDealQty, 200},
            {Progress::buyCloseQty, 60},       {Progress::buyAvgPrice, 10.25},
            {Progress::buyAmount, 2050},       {Progress::buyCancelQty, 22},
            {Progress::buyFee, 2},             {Progress::sellOrderQty, 900},
            {Progress::sellDealQty, 120},      {Progress::sellCloseQty, 60},
            {Progress::sellAvgPrice, 11.5},    {Progress::sellAmount, 1380},
            {Progress::sellCancelQty, 12},     {Progress::sellFee, 1.75},
            {Progress::AchieveProfit, 66}};
}

// What currentRecord() leaves on primedLeg(): close quantities, base progress
// and the marked profit are not the gather feed's.
Figures afterCurrentRecord()
{
    const QStringList notGathered = {Progress::buyCloseQty, Progress::sellCloseQty};
    return withChanges(figures(primedLeg()), edited(currentRecord(), {}, notGathered));
}

QString staleLine(const char* feed, const QString& error)
{
    return QString::fromLatin1(feed) + QStringLiteral(" 收到过时数据: ") + Symbol
           + QLatin1Char(' ') + error;
}

QString buyError(const QString& first)
{
    return QStringLiteral("内存: 买入成交数量") + first
           + QStringLiteral(", 买入撤单数量%2; reportData: 买入成交数量%3, 买入撤单数量%4");
}

QString sellError(const QString& first)
{
    return QStringLiteral("内存: 卖出成交数量") + first
           + QStringLiteral(", 卖出撤单数量%2; reportData: 卖出成交数量%3, 卖出撤单数量%4");
}

int t0DebugLines(const LogCapture& log)
{
    return log.count(QtDebugMsg, QStringLiteral("T0SymbolInfo::"));
}

} // namespace

// Exact, NaN-aware and naming the field: QCOMPARE on doubles is fuzzy, and the
// tolerance rules under test are not.
#define COMPARE_FIGURES(actual, expected)                                        \
    do {                                                                         \
        const QString diff_ = differences((actual), (expected));                 \
        QVERIFY2(diff_.isEmpty(), qPrintable(diff_));                            \
    } while (false)

Q_DECLARE_METATYPE(Guarded)

class TestT0SymbolInfo : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();

    void guardedSetters_data();
    void guardedSetters();
    void staleErrorText_data();
    void staleErrorText();
    void gatherStaleRecordRefusedWhole_data();
    void gatherStaleRecordRefusedWhole();
    void gatherRecord_data();
    void gatherRecord();
    void gatherWithoutSymbol_data();
    void gatherWithoutSymbol();
    void reportStaleRefusedWhole_data();
    void reportStaleRefusedWhole();
    void reportSides_data();
    void reportSides();
    void copiesAreIndependent();
    void copyThroughBaseKeepsBaseOnly();
    void assignThroughBaseKeepsT0Fields();
    void feedsDispatchThroughBase();
};

void TestT0SymbolInfo::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("algologic.symbol.debug=true"));
}

void TestT0SymbolInfo::guardedSetters_data()
{
    QTest::addColumn<Guarded>("field");
    QTest::addColumn<double>("stored");
    QTest::addColumn<double>("incoming");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QString>("debugLine");

    const struct {
        Guarded field;
        const char* name;
        const char* prefix;
    } fields[] = {
        {Guarded::BuyDealQty, "buyDealQty", "T0SymbolInfo::setBuyDealQty buyDeal error "},
        {Guarded::BuyAmount, "buyAmount", "T0SymbolInfo::setBuyAmount error  "},
        {Guarded::SellDealQty, "sellDealQty", "T0SymbolInfo::setSellDealQty sellDeal error "},
        {Guarded::SellAmount, "sellAmount", "T0SymbolInfo::setSellAmount error  "},
    };
    for (const auto& f : fields) {
        const auto row = [&f](const char* what) {
            return &QTest::newRow((QByteArray(f.name) + what).constData());
        };
        const QString prefix = QString::fromLatin1(f.prefix);
        const QString none;
        *row(" rises") << f.field << 100.0 << 150.0 << true << none;
        *row(" equal") << f.field << 100.0 << 100.0 << true << none;
        *row(" 5e-11 lower: accepted") << f.field << 1000.0 << 1000.0 - 5e-11 << true << none;
        *row(" 1e-9 lower: refused") << f.field << 1000.0 << 1000.0 - 1e-9 << false
                                     << prefix + QStringLiteral("1000 1000");
        *row(" clear drop: refused") << f.field << 150.0 << 100.0 << false
                                     << prefix + QStringLiteral("150 100");
        *row(" NaN: accepted") << f.field << 100.0 << NaN << true << none;
    }
}

void TestT0SymbolInfo::guardedSetters()
{
    QFETCH(Guarded, field);
    QFETCH(double, stored);
    QFETCH(double, incoming);
    QFETCH(bool, accepted);
    QFETCH(QString, debugLine);

    T0SymbolInfo leg;
    setGuarded(leg, field, stored);
    QVERIFY(guardedOf(leg, field) == stored);

    LogCapture log;
    setGuarded(leg, field, incoming);
    // Exact comparison: QCOMPARE would call 1000 and 1000 - 5e-11 equal.
    const double actual = guardedOf(leg, field);
    QVERIFY2(sameDouble(actual, accepted ? incoming : stored),
             qPrintable(QString::number(actual, 'g', 17)));
    if (debugLine.isEmpty()) {
        QCOMPARE(log.countOfType(QtDebugMsg), 0);
    } else {
        QCOMPARE(log.countOfType(QtDebugMsg), 1);
        QCOMPARE(log.last(QtDebugMsg), debugLine);
    }
}

void TestT0SymbolInfo::staleErrorText_data()
{
    QTest::addColumn<bool>("buySide");
    QTest::addColumn<double>("storedDeal");
    QTest::addColumn<double>("storedCancel");
    QTest::addColumn<double>("reportedDeal");
    QTest::addColumn<double>("reportedCancel");
    QTest::addColumn<QString>("error");

    // Only %1 is replaced: by the stored deal quantity, padded to the stored
    // cancel quantity, in the format whose character code is the reported deal
    // quantity ('d' = 100 is no format: fixed), with the reported cancel
    // quantity as precision.
    QTest::newRow("buy deal lower, plain") << true << 150.0 << 0.0 << 100.0 << 0.0
                                           << buyError(QStringLiteral("150"));
    QTest::newRow("buy deal lower, padded, 'f'")
        << true << 150.5 << 8.0 << 102.0 << 2.0 << buyError(QStringLiteral("  150.50"));
    QTest::newRow("buy deal lower, 101.9 truncated to 'e'")
        << true << 150.5 << 0.0 << 101.9 << 3.0 << buyError(QStringLiteral("1.505e+02"));
    QTest::newRow("sell deal lower, padded, 'g'")
        << false << 300.0 << 12.0 << 103.0 << 40.0
        << sellError(QString(9, QLatin1Char(' ')) + QStringLiteral("300"));
    QTest::newRow("sell cancel lower only")
        << false << 50.0 << 30.0 << 60.0 << 0.0
        << sellError(QString(28, QLatin1Char(' ')) + QStringLiteral("50"));
}

void TestT0SymbolInfo::staleErrorText()
{
    QFETCH(bool, buySide);
    QFETCH(double, storedDeal);
    QFETCH(double, storedCancel);
    QFETCH(double, reportedDeal);
    QFETCH(double, reportedCancel);
    QFETCH(QString, error);

    T0SymbolInfo leg;
    VariantMap record{{Progress::Symbol, Symbol}};
    if (buySide) {
        leg.setBuyDealQty(storedDeal);
        leg.setBuyCancelQty(storedCancel);
        record.insert(Progress::buyOrderQty, 1000);
        record.insert(Progress::buyDealQty, reportedDeal);
        record.insert(Progress::buyCancelQty, reportedCancel);
    } else {
        leg.setSellDealQty(storedDeal);
        leg.setSellCancelQty(storedCancel);
        record.insert(Progress::sellOrderQty, 1000);
        record.insert(Progress::sellDealQty, reportedDeal);
        record.insert(Progress::sellCancelQty, reportedCancel);
    }

    LogCapture log;
    leg.OnRecvSymbolProgressGatherInfo(record);
    QCOMPARE(log.countOfType(QtInfoMsg), 1);
    QCOMPARE(log.last(QtInfoMsg),
             staleLine("T0SymbolInfo::OnRecvSymbolProgressGatherInfo", error));
}

void TestT0SymbolInfo::gatherStaleRecordRefusedWhole_data()
{
    QTest::addColumn<VariantMap>("record");
    QTest::addColumn<QString>("side");

    const VariantMap current = currentRecord();
    const QString buy = QStringLiteral("买入");
    const QString sell = QStringLiteral("卖出");
    QTest::newRow("buy deal 100 below stored 150")
        << edited(current, {{Progress::buyDealQty, 100}}) << buy;
    QTest::newRow("buy cancel below stored")
        << edited(current, {{Progress::buyCancelQty, 19}}) << buy;
    QTest::newRow("buy deal missing reads 0") << edited(current, {}, {Progress::buyDealQty})
                                              << buy;
    QTest::newRow("buy current, sell deal below stored")
        << edited(current, {{Progress::sellDealQty, 99.5}}) << sell;
    QTest::newRow("sell cancel missing reads 0")
        << edited(current, {}, {Progress::sellCancelQty}) << sell;
}

void TestT0SymbolInfo::gatherStaleRecordRefusedWhole()
{
    QFETCH(VariantMap, record);
    QFETCH(QString, side);

    T0SymbolInfo leg = primedLeg();
    LogCapture log;
    leg.OnRecvSymbolProgressGatherInfo(record);

    // Nothing of the record lands: not the fresh sell side, target or profit.
    COMPARE_FIGURES(figures(leg), figures(primedLeg()));
    QCOMPARE(log.countOfType(QtInfoMsg), 1);
    const QString line = log.last(QtInfoMsg);
    QVERIFY2(line.startsWith(staleLine("T0SymbolInfo::OnRecvSymbolProgressGatherInfo",
                                       QStringLiteral("内存: ") + side)),
             qPrintable(line));
    for (const char* marker : {"%2", "%3", "%4"})
        QVERIFY2(line.contains(QLatin1String(marker)), marker);
    QCOMPARE(t0DebugLines(log), 0);
}

void TestT0SymbolInfo::gatherRecord_data()
{
    QTest::addColumn<VariantMap>("record");
    QTest::addColumn<VariantMap>("changes"); // to afterCurrentRecord(), by record key
    QTest::addColumn<QString>("debugLine");

    const VariantMap current = currentRecord();
    const QString none;
    QTest::newRow("current record, close quantities untouched")
        << current << VariantMap() << none;
    QTest::newRow("AchieveProfit missing reads 0")
        << edited(current, {}, {Progress::AchieveProfit})
        << VariantMap{{Progress::AchieveProfit, 0}} << none;
    QTest::newRow("TargetQty missing reads 0") << edited(current, {}, {Progress::TargetQty})
                                               << VariantMap{{Progress::TargetQty, 0}}
                                               << none;
    QTest::newRow("buy amount 5e-11 below stored accepted")
        << edited(current, {{Progress::buyAmount, 1500 - 5e-11}})
        << VariantMap{{Progress::buyAmount, 1500 - 5e-11}} << none;
    QTest::newRow("buy amount 1e-9 below stored refused")
        << edited(current, {{Progress::buyAmount, 1500 - 1e-9}})
        << VariantMap{{Progress::buyAmount, 1500}}
        << "T0SymbolInfo::setBuyAmount error  1500 1500";
    QTest::newRow("sell amount below stored refused")
        << edited(current, {{Progress::sellAmount, 1000}})
        << VariantMap{{Progress::sellAmount, 1100}}
        << "T0SymbolInfo::setSellAmount error  1100 1000";
    // Without order quantities the staleness test passes; the guarded setter
    // still refuses the lower deal, and the missing order quantities read 0.
    const QStringList noOrderQty = {Progress::buyOrderQty, Progress::sellOrderQty};
    const VariantMap orderQtyZero{{Progress::buyOrderQty, 0}, {Progress::sellOrderQty, 0}};
    QTest::newRow("no order quantities, buy deal lower")
        << edited(current, {{Progress::buyDealQty, 100}}, noOrderQty)
        << edited(orderQtyZero, {{Progress::buyDealQty, 150}})
        << "T0SymbolInfo::setBuyDealQty buyDeal error 150 100";
    QTest::newRow("no order quantities, sell deal lower")
        << edited(current, {{Progress::sellDealQty, 90}}, noOrderQty)
        << edited(orderQtyZero, {{Progress::sellDealQty, 100}})
        << "T0SymbolInfo::setSellDealQty sellDeal error 100 90";
}

void TestT0SymbolInfo::gatherRecord()
{
    QFETCH(VariantMap, record);
    QFETCH(VariantMap, changes);
    QFETCH(QString, debugLine);

    T0SymbolInfo leg = primedLeg();
    LogCapture log;
    leg.OnRecvSymbolProgressGatherInfo(record);

    COMPARE_FIGURES(figures(leg), withChanges(afterCurrentRecord(), changes));
    QCOMPARE(log.countOfType(QtInfoMsg), 0);
    QCOMPARE(t0DebugLines(log), debugLine.isEmpty() ? 0 : 1);
    if (!debugLine.isEmpty())
        QCOMPARE(log.last(QtDebugMsg), debugLine);
}

void TestT0SymbolInfo::gatherWithoutSymbol_data()
{
    QTest::addColumn<VariantMap>("record");

    QTest::newRow("Symbol missing") << edited(currentRecord(), {}, {Progress::Symbol});
    QTest::newRow("Symbol empty") << edited(currentRecord(), {{Progress::Symbol, QString()}});
    QTest::newRow("stale and without symbol")
        << edited(currentRecord(), {{Progress::buyDealQty, 1}}, {Progress::Symbol});
}

void TestT0SymbolInfo::gatherWithoutSymbol()
{
    QFETCH(VariantMap, record);

    T0SymbolInfo leg = primedLeg();
    LogCapture log;
    leg.OnRecvSymbolProgressGatherInfo(record);

    COMPARE_FIGURES(figures(leg), figures(primedLeg()));
    QCOMPARE(log.countOfType(QtInfoMsg), 0); // the symbol check comes first
    QCOMPARE(t0DebugLines(log), 1);
    const QString line = log.last(QtDebugMsg);
    QVERIFY2(line.startsWith(QStringLiteral("T0SymbolInfo::OnRecvSymbolProgressGatherInfo"
                                            " symbol is empty QMap(")),
             qPrintable(line));
    QVERIFY2(line.contains(Progress::buyOrderQty), qPrintable(line)); // the whole record
}

void TestT0SymbolInfo::reportStaleRefusedWhole_data()
{
    QTest::addColumn<VariantMap>("changes");
    QTest::addColumn<QString>("error");

    // primedLeg() holds buy 150 dealt / 20 cancelled, sell 100 / 10; the
    // report's buy cancel of 22 becomes the precision of the buy text.
    QTest::newRow("buy deal below stored")
        << VariantMap{{Progress::buyDealQty, 100}}
        << buyError(QStringLiteral("150.") + QString(22, QLatin1Char('0')));
    QTest::newRow("sell cancel below stored")
        << VariantMap{{Progress::sellCancelQty, 5}, {Progress::sellDealQty, 120}}
        << sellError(QStringLiteral(" 100.00000"));
}

void TestT0SymbolInfo::reportStaleRefusedWhole()
{
    QFETCH(VariantMap, changes);
    QFETCH(QString, error);

    VariantMap report = edited(currentRecord(), changes);
    report.insert(Progress::FilledQty, 400);
    report.insert(Progress::TargetQty, 1000);
    report.insert(Progress::otherInfo, QStringLiteral("late"));
    report.insert(Progress::lastOrderTime, QStringLiteral("1710466205000"));

    T0SymbolInfo leg = primedLeg();
    LogCapture log;
    leg.updateBySingleProgressReport(report);

    // The base part is refused too: filled quantity, progress, texts.
    COMPARE_FIGURES(figures(leg), figures(primedLeg()));
    QCOMPARE(leg.getOrtherInfo(), QString());
    QCOMPARE(leg.getEntrustTime(), QStringLiteral("-"));
    QCOMPARE(log.countOfType(QtInfoMsg), 1);
    QCOMPARE(log.last(QtInfoMsg), staleLine("T0SymbolInfo::updateBySingleProgressReport", error));
    QCOMPARE(log.countOfType(QtWarningMsg), 0);
}

void TestT0SymbolInfo::reportSides_data()
{
    QTest::addColumn<VariantMap>("report");
    QTest::addColumn<VariantMap>("changes"); // to primedLeg(), by record key
    QTest::addColumn<QString>("debugLine");

    // Every report below also carries TargetQty 1000 and FilledQty 300.
    const VariantMap buyHalf{{Progress::buyOrderQty, 1200}, {Progress::buyDealQty, 200},
                             {Progress::buyCloseQty, 60},   {Progress::buyAvgPrice, 10.25},
                             {Progress::buyAmount, 2050},   {Progress::buyCancelQty, 25},
                             {Progress::buyFee, 2}};
    const VariantMap sellHalf{{Progress::sellOrderQty, 900}, {Progress::sellDealQty, 120},
                              {Progress::sellCloseQty, 70},  {Progress::sellAvgPrice, 11.5},
                              {Progress::sellAmount, 1380},  {Progress::sellCancelQty, 12},
                              {Progress::sellFee, 1.75},     {Progress::AchieveProfit, 66}};
    const VariantMap both = edited(buyHalf, sellHalf);
    const QString none;

    QTest::newRow("both halves, close quantities included") << both << both << none;
    QTest::newRow("sell half only") << sellHalf << sellHalf << none;
    // Without buyOrderQty the lower buy deal passes the staleness test, and
    // the buy half is skipped, so not even the guarded setter sees it.
    QTest::newRow("no buyOrderQty, lower buy deal ignored")
        << edited(both, {{Progress::buyDealQty, 100}, {Progress::buyAmount, 5}},
                  {Progress::buyOrderQty})
        << sellHalf << none;
    QTest::newRow("AchieveProfit missing reads 0")
        << VariantMap() << VariantMap{{Progress::AchieveProfit, 0}} << none;
    const VariantMap lowerAmount = edited(buyHalf, {{Progress::buyAmount, 1500 - 1e-9}});
    QTest::newRow("buy amount 1e-9 lower refused")
        << lowerAmount
        << edited(lowerAmount, {{Progress::buyAmount, 1500}, {Progress::AchieveProfit, 0}})
        << "T0SymbolInfo::setBuyAmount error  1500 1500";
}

void TestT0SymbolInfo::reportSides()
{
    QFETCH(VariantMap, report);
    QFETCH(VariantMap, changes);
    QFETCH(QString, debugLine);

    report.insert(Progress::TargetQty, 1000);
    report.insert(Progress::FilledQty, 300);
    T0SymbolInfo leg = primedLeg();
    LogCapture log;
    leg.updateBySingleProgressReport(report);

    const Figures base = withChanges(figures(primedLeg()),
                                     {{Progress::FilledQty, 300},
                                      {QStringLiteral("progress"), 0.3}});
    COMPARE_FIGURES(figures(leg), withChanges(base, changes));
    QCOMPARE(log.countOfType(QtInfoMsg), 0);
    QCOMPARE(t0DebugLines(log), debugLine.isEmpty() ? 0 : 1);
    if (!debugLine.isEmpty())
        QCOMPARE(log.last(QtDebugMsg), debugLine);
}

void TestT0SymbolInfo::copiesAreIndependent()
{
    const T0SymbolInfo original = primedLeg();
    T0SymbolInfo copy(original);
    COMPARE_FIGURES(figures(copy), figures(original));

    copy.OnRecvSymbolProgressGatherInfo(currentRecord());
    COMPARE_FIGURES(figures(copy), afterCurrentRecord());
    COMPARE_FIGURES(figures(original), figures(primedLeg()));

    T0SymbolInfo assigned;
    assigned = copy;
    assigned.updateBySingleProgressReport({{Progress::AchieveProfit, 1}});
    QCOMPARE(assigned.achieveProfit(), 1.0);
    QCOMPARE(copy.achieveProfit(), 66.0);
    // The staleness baseline travels with the copy: 150 is stale for it.
    assigned.OnRecvSymbolProgressGatherInfo(
        edited(currentRecord(), {{Progress::buyDealQty, 150}}));
    QCOMPARE(assigned.buyDealQty(), 200.0);
    QCOMPARE(assigned.achieveProfit(), 1.0);
}

void TestT0SymbolInfo::copyThroughBaseKeepsBaseOnly()
{
    const T0SymbolInfo t0 = primedLeg();
    const SymbolInfoBase& asBase = t0;
    SymbolInfoBase sliced(asBase);
    QCOMPARE(sliced.symbol(), Symbol);
    QCOMPARE(sliced.filledQty(), 250.0);
    QCOMPARE(sliced.targetQty(), 1000.0);

    // The slice has base behaviour only: no gather handling, no staleness test.
    sliced.OnRecvSymbolProgressGatherInfo(currentRecord());
    QCOMPARE(sliced.targetQty(), 1000.0);
    const VariantMap staleForT0 = edited(currentRecord(), {{Progress::buyDealQty, 100},
                                                           {Progress::FilledQty, 400}});
    sliced.updateBySingleProgressReport(staleForT0);
    QCOMPARE(sliced.filledQty(), 400.0);
    QCOMPARE(sliced.targetQty(), 2000.0);
}

void TestT0SymbolInfo::assignThroughBaseKeepsT0Fields()
{
    T0SymbolInfo target;
    target.setSymbol(QStringLiteral("000001"));
    target.setBuyDealQty(5);
    target.setAchieveProfit(-2);

    SymbolInfoBase& asBase = target;
    asBase = primedLeg();
    QCOMPARE(target.symbol(), Symbol);
    QCOMPARE(target.filledQty(), 250.0);
    QCOMPARE(target.buyDealQty(), 5.0);
    QCOMPARE(target.achieveProfit(), -2.0);
    QCOMPARE(target.sellAmount(), 0.0);
}

void TestT0SymbolInfo::feedsDispatchThroughBase()
{
    const std::unique_ptr<SymbolInfoBase> leg = std::make_unique<T0SymbolInfo>(primedLeg());
    LogCapture log;
    leg->updateBySingleProgressReport(
        edited(currentRecord(), {{Progress::buyDealQty, 100}, {Progress::FilledQty, 400}}));
    QCOMPARE(leg->filledQty(), 250.0);
    QCOMPARE(log.countOfType(QtInfoMsg), 1);

    leg->OnRecvSymbolProgressGatherInfo(currentRecord());
    QCOMPARE(leg->targetQty(), 2000.0);
}

QTEST_GUILESS_MAIN(TestT0SymbolInfo)
#include "tst_t0symbolinfo.moc"
