// Rules of the base symbol leg: the guarded setters (monotonic figures, status
// transitions, sticky delete flag, parent id, trading account), the progress
// computed from a single report, the last-report merge and copy semantics.

#include "symbol/symbolinfobase.h"

#include "platform/algodefines.h"
#include "platform/helmbusinessdata.h"

#include "logcapture.h"

#include <QDateTime>
#include <QLoggingCategory>
#include <QtTest>

#include <cmath>
#include <limits>

namespace Progress = Algo_Fields::AlgoInstProgressFields;

namespace {

enum class Monotonic { FilledQty, Progress, DealBalance, AmountDealProgress };
enum class Sticky { DeleteFlag, ClParentID };

const double NaN = std::numeric_limits<double>::quiet_NaN();

void setFigure(SymbolInfoBase& leg, Monotonic figure, double value)
{
    switch (figure) {
    case Monotonic::FilledQty: leg.setFilledQty(value); break;
    case Monotonic::Progress: leg.setProgress(value); break;
    case Monotonic::DealBalance: leg.setDealBalance(value); break;
    case Monotonic::AmountDealProgress: leg.setAmountDealProgress(value); break;
    }
}

double figureOf(const SymbolInfoBase& leg, Monotonic figure)
{
    switch (figure) {
    case Monotonic::FilledQty: return leg.filledQty();
    case Monotonic::Progress: return leg.progress();
    case Monotonic::DealBalance: return leg.dealBalance();
    case Monotonic::AmountDealProgress: return leg.amoutDealProgress();
    }
    return 0.0;
}

bool sameDouble(double actual, double expected)
{
    return actual == expected || (std::isnan(actual) && std::isnan(expected));
}

// Milliseconds since the epoch of local `time` on a day without a clock change.
qint64 localMs(const QTime& time)
{
    return QDateTime(QDate(2024, 3, 15), time).toMSecsSinceEpoch();
}

} // namespace

Q_DECLARE_METATYPE(Monotonic)
Q_DECLARE_METATYPE(Sticky)

class TestSymbolInfoBase : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup();

    void freshLeg();
    void monotonicSetters_data();
    void monotonicSetters();
    void setStatus_data();
    void setStatus();
    void stickyTexts_data();
    void stickyTexts();
    void setTradingAccount_data();
    void setTradingAccount();
    void standardProgress_data();
    void standardProgress();
    void updateLastReportMap_data();
    void updateLastReportMap();
    void reportProgress_data();
    void reportProgress();
    void staleReportKeepsDealtFigures();
    void reportOtherInfo_data();
    void reportOtherInfo();
    void reportLastOrderTime_data();
    void reportLastOrderTime();
    void copiesAreIndependent();
};

void TestSymbolInfoBase::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("algologic.symbol.debug=true"));
}

void TestSymbolInfoBase::cleanup()
{
    HelmBusinessDataInterface::Reset();
}

void TestSymbolInfoBase::freshLeg()
{
    const SymbolInfoBase leg;
    QCOMPARE(leg.getEntrustTime(), QStringLiteral("-"));
    QCOMPARE(leg.getDeleteFlag(), QStringLiteral("0"));
    QCOMPARE(leg.getFrontQty(), -1.0);
    QCOMPARE(leg.getFrontOrderNum(), -1);
    QCOMPARE(leg.getFrontPosition(), -1.0);
    QCOMPARE(leg.getSameQtyOrderCnt(), -1);
    // Texts start empty, not null.
    const QStringList texts = {leg.getKey(), leg.symbol(), leg.exchange(), leg.orderSide(),
                               leg.entrustProp(), leg.limitPrice(), leg.instanceID(),
                               leg.getOrtherInfo(), leg.getClParentID(), leg.getStatus(),
                               leg.getTradingAccount(), leg.getFundAccount(),
                               leg.getFundAccountName(), leg.getSecurityAccout(),
                               leg.strategyName(), leg.getTipMsg()};
    for (const QString& text : texts) {
        QVERIFY(text.isEmpty());
        QVERIFY(!text.isNull());
    }
}

void TestSymbolInfoBase::monotonicSetters_data()
{
    QTest::addColumn<Monotonic>("figure");
    QTest::addColumn<double>("stored");
    QTest::addColumn<double>("incoming");
    QTest::addColumn<double>("expected");
    QTest::addColumn<QString>("warning");

    const struct {
        Monotonic figure;
        const char* name;
        const char* prefix; // then "old <word> <stored> new <word> <incoming>"
        const char* word;
    } refusing[] = {
        {Monotonic::FilledQty, "filledQty",
         "SymbolInfoBase::setFilledQty invalid filledQty, instid: inst-7", "filledQty"},
        {Monotonic::DealBalance, "dealBalance",
         "SymbolInfoBase::setDealBalance invalid dealBalance, instid: inst-7", "dealBalance"},
        {Monotonic::AmountDealProgress, "amountDealProgress",
         "SymbolInfoBase::setProgress invalid progress, instid: inst-7", "progress"},
    };
    for (const auto& f : refusing) {
        const auto row = [&f](const char* what) {
            return &QTest::newRow((QByteArray(f.name) + what).constData());
        };
        const auto warning = [&f](const char* stored, const char* incoming) {
            return QString::asprintf("%s old %s %s new %s %s", f.prefix, f.word, stored, f.word,
                                     incoming);
        };
        const QString none;
        *row(" rises") << f.figure << 100.0 << 150.0 << 150.0 << none;
        *row(" equal") << f.figure << 100.0 << 100.0 << 100.0 << none;
        *row(" falls: refused") << f.figure << 200.0 << 150.0 << 200.0 << warning("200", "150");
        // Unlike the T0 deal figures there is no tolerance: any drop is refused.
        *row(" falls by 1e-9: refused") << f.figure << 100.0 << 100.0 - 1e-9 << 100.0
                                        << warning("100", "100");
        *row(" NaN incoming") << f.figure << 100.0 << NaN << NaN << none;
        *row(" NaN stored") << f.figure << NaN << 5.0 << 5.0 << none;
    }
    QTest::newRow("progress falls: stored with warning")
        << Monotonic::Progress << 0.5 << 0.25 << 0.25
        << "SymbolInfoBase::setProgress invalid progress, instid: inst-7 old progress 0.5 "
           "new progress 0.25";
    QTest::newRow("progress rises") << Monotonic::Progress << 0.25 << 0.5 << 0.5 << QString();
    QTest::newRow("progress NaN incoming") << Monotonic::Progress << 0.5 << NaN << NaN
                                           << QString();
}

void TestSymbolInfoBase::monotonicSetters()
{
    QFETCH(Monotonic, figure);
    QFETCH(double, stored);
    QFETCH(double, incoming);
    QFETCH(double, expected);
    QFETCH(QString, warning);

    SymbolInfoBase leg;
    leg.setInstanceID(QStringLiteral("inst-7"));
    setFigure(leg, figure, stored); // from 0 upwards (or to NaN): always taken
    QVERIFY(sameDouble(figureOf(leg, figure), stored));

    LogCapture log;
    setFigure(leg, figure, incoming);
    const double actual = figureOf(leg, figure);
    QVERIFY2(sameDouble(actual, expected), qPrintable(QString::number(actual)));
    if (warning.isEmpty()) {
        QCOMPARE(log.countOfType(QtWarningMsg), 0);
    } else {
        QCOMPARE(log.countOfType(QtWarningMsg), 1);
        QCOMPARE(log.last(QtWarningMsg), warning);
        QCOMPARE(log.messages().constFirst().category, QStringLiteral("algologic.symbol"));
    }
}

void TestSymbolInfoBase::setStatus_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QString>("debugLine");

    const QString none;
    QTest::newRow("same status") << "1" << "1" << false << none;
    QTest::newRow("same final status, no log") << "2" << "2" << false << none;
    QTest::newRow("0 to 1") << "0" << "1" << true << none;
    QTest::newRow("1 to 2") << "1" << "2" << true << none;
    QTest::newRow("1 to 5") << "1" << "5" << true << none;
    QTest::newRow("0 to 3 refused")
        << "0" << "3" << false << "SymbolInfoBase::setStatus invalid status 0 3";
    QTest::newRow("1 to 3 refused")
        << "1" << "3" << false << "SymbolInfoBase::setStatus invalid status 1 3";
    QTest::newRow("3 to 0") << "3" << "0" << true << none;
    QTest::newRow("3 to 2") << "3" << "2" << true << none;
    QTest::newRow("2 to 1 refused")
        << "2" << "1" << false << "SymbolInfoBase::setStatus invalid status 2 1";
    QTest::newRow("2 to 3 refused")
        << "2" << "3" << false << "SymbolInfoBase::setStatus invalid status 2 3";
    QTest::newRow("5 to 0 refused")
        << "5" << "0" << false << "SymbolInfoBase::setStatus invalid status 5 0";
    QTest::newRow("5 to 2 refused")
        << "5" << "2" << false << "SymbolInfoBase::setStatus invalid status 5 2";
    QTest::newRow("fresh leg to 3") << "" << "3" << true << none;
    QTest::newRow("unknown code 4 to 3") << "4" << "3" << true << none;
}

void TestSymbolInfoBase::setStatus()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    QFETCH(bool, accepted);
    QFETCH(QString, debugLine);

    SymbolInfoBase leg;
    if (!from.isEmpty())
        QVERIFY(leg.setStatus(from));

    LogCapture log;
    QCOMPARE(leg.setStatus(to), accepted);
    QCOMPARE(leg.getStatus(), accepted ? to : from);
    if (debugLine.isEmpty()) {
        QCOMPARE(log.countOfType(QtDebugMsg), 0);
    } else {
        QCOMPARE(log.countOfType(QtDebugMsg), 1);
        QCOMPARE(log.last(QtDebugMsg), debugLine);
    }
}

void TestSymbolInfoBase::stickyTexts_data()
{
    QTest::addColumn<Sticky>("field");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("then");
    QTest::addColumn<QString>("expected");

    const Sticky flag = Sticky::DeleteFlag;
    QTest::newRow("live to deleted") << flag << "0" << "1" << "1";
    QTest::newRow("deleted back to live ignored") << flag << "1" << "0" << "1";
    QTest::newRow("deleted to other code") << flag << "1" << "2" << "2";
    QTest::newRow("deleted to empty") << flag << "1" << "" << "";
    QTest::newRow("other code to live") << flag << "2" << "0" << "0";
    const Sticky parent = Sticky::ClParentID;
    QTest::newRow("first parent id stored") << parent << "" << "P1" << "P1";
    QTest::newRow("empty id keeps the known one") << parent << "P1" << "" << "P1";
    QTest::newRow("new parent id replaces") << parent << "P1" << "P2" << "P2";
}

void TestSymbolInfoBase::stickyTexts()
{
    QFETCH(Sticky, field);
    QFETCH(QString, first);
    QFETCH(QString, then);
    QFETCH(QString, expected);

    SymbolInfoBase leg;
    const auto set = field == Sticky::DeleteFlag ? &SymbolInfoBase::setDeleteFlag
                                                 : &SymbolInfoBase::setClParentID;
    (leg.*set)(first);
    (leg.*set)(then);
    QCOMPARE(field == Sticky::DeleteFlag ? leg.getDeleteFlag() : leg.getClParentID(), expected);
}

void TestSymbolInfoBase::setTradingAccount_data()
{
    QTest::addColumn<QString>("account");
    QTest::addColumn<QString>("tradingAccount");
    QTest::addColumn<QString>("fundAccount");
    QTest::addColumn<QString>("fundAccountName");

    QTest::newRow("known account: first entry") << "T100" << "T100" << "F100" << "甲基金";
    QTest::newRow("first entry with empty name") << "T300" << "T300" << "F300" << "";
    QTest::newRow("unknown account keeps fund") << "T999" << "T999" << "F-old" << "旧名";
    QTest::newRow("empty account ignored") << "" << "T-old" << "F-old" << "旧名";
}

void TestSymbolInfoBase::setTradingAccount()
{
    QFETCH(QString, account);
    QFETCH(QString, tradingAccount);
    QFETCH(QString, fundAccount);
    QFETCH(QString, fundAccountName);

    const auto add = [](const char* trading, const char* fund, const QString& name) {
        HelmBusinessDataInterface::AddAccountInfo(
            {QString::fromUtf8(trading), QString::fromUtf8(fund), name, QString()});
    };
    add("T100", "F100", QStringLiteral("甲基金"));
    add("T100", "F101", QStringLiteral("乙基金"));
    add("T300", "F300", QString());

    SymbolInfoBase leg;
    leg.setTradingAccount(QStringLiteral("T-old"));
    leg.setFundAccount(QStringLiteral("F-old"));
    leg.setFundAccountName(QStringLiteral("旧名"));

    leg.setTradingAccount(account);
    QCOMPARE(leg.getTradingAccount(), tradingAccount);
    QCOMPARE(leg.getFundAccount(), fundAccount);
    QCOMPARE(leg.getFundAccountName(), fundAccountName);
}

void TestSymbolInfoBase::standardProgress_data()
{
    QTest::addColumn<QString>("strategy");
    QTest::addColumn<double>("expected");

    const double byAmount = 0.75;
    const double byQty = 0.25;
    for (const char* name : {"AITWAP7", "AIPOV7", "AITWAP8", "AIPOV8", "PursueHighLimitGY",
                             "PursueHighLimitPLUS", "PursueHighLimit", "PursueHighLimitB",
                             "DoubleConditionOrderPLUS", "DoubleConditionOrder", "AIPOV9",
                             "AITWAP9"}) {
        QTest::newRow(name) << QString::fromLatin1(name) << byAmount;
    }
    QTest::newRow("lower case") << "pursuehighlimit" << byQty;
    QTest::newRow("trailing blank") << "PursueHighLimit " << byQty;
    QTest::newRow("prefix of a listed name") << "AITWAP" << byQty;
    QTest::newRow("other algo") << "AIVWAP" << byQty;
    QTest::newRow("no algo") << "" << byQty;
}

void TestSymbolInfoBase::standardProgress()
{
    QFETCH(QString, strategy);
    QFETCH(double, expected);

    SymbolInfoBase leg;
    leg.setStrategyName(strategy);
    leg.setProgress(0.25);
    leg.setAmountDealProgress(0.75);
    QCOMPARE(leg.standardProgress(), expected);
}

void TestSymbolInfoBase::updateLastReportMap_data()
{
    QTest::addColumn<VariantMap>("initial");
    QTest::addColumn<VariantMap>("report");
    QTest::addColumn<VariantMap>("expected");

    const VariantMap ab{{QStringLiteral("a"), 1}, {QStringLiteral("b"), 2}};
    QTest::newRow("into empty map") << VariantMap() << ab << ab;
    QTest::newRow("overwrites, keeps absent keys")
        << ab << VariantMap{{QStringLiteral("b"), QStringLiteral("x")}, {QStringLiteral("c"), 4}}
        << VariantMap{{QStringLiteral("a"), 1}, {QStringLiteral("b"), QStringLiteral("x")},
                      {QStringLiteral("c"), 4}};
    QTest::newRow("empty report changes nothing") << ab << VariantMap() << ab;
}

void TestSymbolInfoBase::updateLastReportMap()
{
    QFETCH(VariantMap, initial);
    QFETCH(VariantMap, report);
    QFETCH(VariantMap, expected);

    SymbolInfoBase leg;
    leg.setLastReportMap(initial);
    leg.updateLastReportMap(report);
    QCOMPARE(leg.getLastReportMap(), expected);
}

void TestSymbolInfoBase::reportProgress_data()
{
    QTest::addColumn<VariantMap>("report");
    QTest::addColumn<double>("entrustProgress");
    QTest::addColumn<double>("progress");
    QTest::addColumn<double>("amountEntrustProgress");
    QTest::addColumn<double>("amountDealProgress");

    const auto report = [](QVariant target, QVariant targetAmount) {
        return VariantMap{{Progress::TargetQty, target},
                          {Progress::EntrustQty, 100},
                          {Progress::FilledQty, 50},
                          {Progress::TargetAmount, targetAmount},
                          {Progress::EntrustAmount, 1000.0},
                          {Progress::DealAmount, 525.0}};
    };
    QTest::newRow("quantity and amount") << report(200, 2000) << 0.5 << 0.25 << 0.5 << 0.2625;
    QTest::newRow("numbers as text")
        << report(QStringLiteral("200"), QStringLiteral("2000")) << 0.5 << 0.25 << 0.5 << 0.2625;
    QTest::newRow("target qty 0") << report(0, 2000) << 0.0 << 0.0 << 0.5 << 0.2625;
    QTest::newRow("target qty below 1e-15") << report(1e-16, 2000) << 0.0 << 0.0 << 0.5 << 0.2625;
    QTest::newRow("target qty -1e-16") << report(-1e-16, 2000) << 0.0 << 0.0 << 0.5 << 0.2625;
    QTest::newRow("target qty exactly 1e-15") << report(1e-15, 2000) << 0.0 << 0.0 << 0.5
                                              << 0.2625;
    QTest::newRow("negative target qty") << report(-200, 2000) << -0.5 << -0.25 << 0.5 << 0.2625;
    QTest::newRow("target amount 0") << report(200, 0) << 0.5 << 0.25 << 0.0 << 0.0;
    QTest::newRow("target amount below 1e-15") << report(200, 1e-16) << 0.5 << 0.25 << 0.0
                                               << 0.0;
    QTest::newRow("empty report") << VariantMap() << 0.0 << 0.0 << 0.0 << 0.0;
}

void TestSymbolInfoBase::reportProgress()
{
    QFETCH(VariantMap, report);
    QFETCH(double, entrustProgress);
    QFETCH(double, progress);
    QFETCH(double, amountEntrustProgress);
    QFETCH(double, amountDealProgress);

    SymbolInfoBase leg;
    leg.updateBySingleProgressReport(report);
    QCOMPARE(leg.entrustProgress(), entrustProgress);
    QCOMPARE(leg.progress(), progress);
    QCOMPARE(leg.amountEntrustProgress(), amountEntrustProgress);
    QCOMPARE(leg.amoutDealProgress(), amountDealProgress);
}

void TestSymbolInfoBase::staleReportKeepsDealtFigures()
{
    const auto report = [](double entrust, double filled, double price, double dealAmount) {
        return VariantMap{{Progress::TargetQty, 1000.0},
                          {Progress::EntrustQty, entrust},
                          {Progress::FilledQty, filled},
                          {Progress::DealAvgPrice, price},
                          {Progress::TargetAmount, 10000.0},
                          {Progress::EntrustAmount, entrust * 10},
                          {Progress::DealAmount, dealAmount}};
    };
    SymbolInfoBase leg;
    leg.setInstanceID(QStringLiteral("inst-1"));
    leg.updateBySingleProgressReport(report(600, 400, 10.5, 4200));

    VariantMap stale = report(500, 300, 10.0, 3000);
    stale.insert(QStringLiteral("frontQty"), 7);
    LogCapture log;
    leg.updateBySingleProgressReport(stale);

    // Dealt figures hold; entrust figures, price and quantity progress follow.
    QCOMPARE(leg.filledQty(), 400.0);
    QCOMPARE(leg.dealBalance(), 4200.0);
    QCOMPARE(leg.amoutDealProgress(), 0.42);
    QCOMPARE(leg.progress(), 0.3);
    QCOMPARE(leg.entrustQty(), 500.0);
    QCOMPARE(leg.entrustProgress(), 0.5);
    QCOMPARE(leg.entrustAmount(), 5000.0);
    QCOMPARE(leg.amountEntrustProgress(), 0.5);
    QCOMPARE(leg.dealAvgPrice(), 10.0);
    QCOMPARE(leg.targetQty(), 1000.0);
    QCOMPARE(leg.targetAmount(), 10000.0);
    QCOMPARE(leg.getFrontQty(), -1.0); // queue figures are not part of this report

    QStringList warnings;
    for (const CapturedMessage& message : log.messages())
        warnings << QString::number(message.type) + QLatin1Char(' ') + message.text;
    const QString w = QString::number(QtWarningMsg) + QLatin1Char(' ');
    QCOMPARE(warnings,
             QStringList({w + "SymbolInfoBase::setFilledQty invalid filledQty, instid: inst-1 "
                              "old filledQty 400 new filledQty 300",
                          w + "SymbolInfoBase::setProgress invalid progress, instid: inst-1 "
                              "old progress 0.4 new progress 0.3",
                          w + "SymbolInfoBase::setDealBalance invalid dealBalance, instid: "
                              "inst-1 old dealBalance 4200 new dealBalance 3000",
                          w + "SymbolInfoBase::setProgress invalid progress, instid: inst-1 "
                              "old progress 0.42 new progress 0.3"}));
}

void TestSymbolInfoBase::reportOtherInfo_data()
{
    QTest::addColumn<QVariant>("otherInfo");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("debugLine");

    QTest::newRow("new text") << QVariant(QStringLiteral("挂单中")) << "挂单中"
                              << "SymbolInfoBase::setOrtherInfo earlier 挂单中";
    QTest::newRow("empty text ignored") << QVariant(QString()) << "earlier" << QString();
    QTest::newRow("key missing") << QVariant() << "earlier" << QString();
}

void TestSymbolInfoBase::reportOtherInfo()
{
    QFETCH(QVariant, otherInfo);
    QFETCH(QString, expected);
    QFETCH(QString, debugLine);

    SymbolInfoBase leg;
    leg.setOrtherInfo(QStringLiteral("earlier"));
    VariantMap report;
    if (otherInfo.isValid())
        report.insert(Progress::otherInfo, otherInfo);

    LogCapture log;
    leg.updateBySingleProgressReport(report);
    QCOMPARE(leg.getOrtherInfo(), expected);
    QCOMPARE(log.count(QtDebugMsg, QStringLiteral("SymbolInfoBase::setOrtherInfo")),
             debugLine.isEmpty() ? 0 : 1);
    if (!debugLine.isEmpty())
        QCOMPARE(log.last(QtDebugMsg), debugLine);
}

void TestSymbolInfoBase::reportLastOrderTime_data()
{
    QTest::addColumn<qint64>("earlierMs");
    QTest::addColumn<QVariant>("lastOrderTime");
    QTest::addColumn<QString>("expected");

    const qint64 morning = localMs(QTime(9, 30, 5));
    const qint64 afternoon = localMs(QTime(14, 56, 59));
    const qint64 none = 0;
    QTest::newRow("digits") << none << QVariant(QString::number(morning)) << "09:30:05";
    QTest::newRow("number") << none << QVariant(morning) << "09:30:05";
    QTest::newRow("milliseconds dropped")
        << none << QVariant(QString::number(morning + 999)) << "09:30:05";
    QTest::newRow("later time replaces")
        << afternoon << QVariant(QString::number(morning)) << "09:30:05";
    QTest::newRow("0 keeps dash") << none << QVariant(QStringLiteral("0")) << "-";
    QTest::newRow("non-digits keep dash") << none << QVariant(QStringLiteral("abc")) << "-";
    QTest::newRow("digits with suffix keep dash")
        << none << QVariant(QString::number(morning) + QStringLiteral("ms")) << "-";
    QTest::newRow("decimal text keeps dash")
        << none << QVariant(QString::number(morning) + QStringLiteral(".5")) << "-";
    QTest::newRow("empty text keeps dash") << none << QVariant(QString()) << "-";
    QTest::newRow("missing key keeps dash") << none << QVariant() << "-";
    QTest::newRow("0 keeps earlier time") << afternoon << QVariant(QStringLiteral("0"))
                                          << "14:56:59";
    QTest::newRow("non-digits keep earlier time")
        << afternoon << QVariant(QStringLiteral("x1")) << "14:56:59";
}

void TestSymbolInfoBase::reportLastOrderTime()
{
    QFETCH(qint64, earlierMs);
    QFETCH(QVariant, lastOrderTime);
    QFETCH(QString, expected);

    SymbolInfoBase leg;
    if (earlierMs != 0)
        leg.updateBySingleProgressReport({{Progress::lastOrderTime, QString::number(earlierMs)}});
    VariantMap report;
    if (lastOrderTime.isValid())
        report.insert(Progress::lastOrderTime, lastOrderTime);
    leg.updateBySingleProgressReport(report);
    QCOMPARE(leg.getEntrustTime(), expected);
}

void TestSymbolInfoBase::copiesAreIndependent()
{
    SymbolInfoBase original;
    original.setSymbol(QStringLiteral("600000"));
    QVERIFY(original.setStatus(QStringLiteral("1")));
    original.updateBySingleProgressReport(
        {{Progress::TargetQty, 100.0}, {Progress::FilledQty, 40.0}});
    original.updateLastReportMap({{QStringLiteral("a"), 1}});

    SymbolInfoBase copy(original);
    QCOMPARE(copy.symbol(), original.symbol());
    QCOMPARE(copy.filledQty(), 40.0);
    QCOMPARE(copy.progress(), 0.4);
    QVERIFY(!copy.setStatus(QStringLiteral("3"))); // the guard state travels too

    copy.setSymbol(QStringLiteral("000001"));
    copy.updateBySingleProgressReport({{Progress::TargetQty, 100.0}, {Progress::FilledQty, 90.0}});
    copy.updateLastReportMap({{QStringLiteral("a"), 2}, {QStringLiteral("b"), 3}});
    QCOMPARE(original.symbol(), QStringLiteral("600000"));
    QCOMPARE(original.filledQty(), 40.0);
    QCOMPARE(original.getLastReportMap(), VariantMap({{QStringLiteral("a"), 1}}));

    SymbolInfoBase assigned;
    assigned = copy;
    QVERIFY(assigned.setStatus(QStringLiteral("2")));
    assigned.setDeleteFlag(QStringLiteral("1"));
    QCOMPARE(copy.getStatus(), QStringLiteral("1"));
    QCOMPARE(copy.getDeleteFlag(), QStringLiteral("0"));
    QCOMPARE(assigned.filledQty(), 90.0);
    QCOMPARE(assigned.getLastReportMap().value(QStringLiteral("b")).toInt(), 3);
}

QTEST_GUILESS_MAIN(TestSymbolInfoBase)
#include "tst_symbolinfobase.moc"
