// Rules of the base symbol leg: guarded setters, the progress it shows, what a
// single progress report changes. Copies are the compiler's.

#include "../common/tabletest.h"

namespace {

// A report from "TARGET AMOUNT [FILLED DEALT [TIME]]" (filled 50, dealt 525, entrusted 100 and
// amount 1000); TIME is hh:mm:ss[.zzz] of 2024-03-15 in ms since the epoch, or a text as it is.
VariantMap report(const QString& cell)
{
    const QStringList f = cell.split(' ');
    QTime time = QTime::fromString(f.value(4), "hh:mm:ss.zzz");
    time = time.isValid() ? time : QTime::fromString(f.value(4), "hh:mm:ss");
    const qint64 at = QDateTime(QDate(2024, 3, 15), time).toMSecsSinceEpoch();
    return {{"TargetQty", f[0].toDouble()},
            {"EntrustQty", 100},
            {"FilledQty", f.value(2, "50").toDouble()},
            {"TargetAmount", f[1].toDouble()},
            {"EntrustAmount", 1000},
            {"DealAmount", f.value(3, "525").toDouble()},
            {"lastOrderTime", time.isValid() ? QString::number(at) : f.value(4)}};
}

// As text: exact for doubles (shortest round-trip form) and NaN-aware. A report reads as
// entrust, deal, amount entrust and amount deal progress, filled quantity, dealt amount and
// entrust time.
QString readBack(const SymbolInfoBase& l, const QString& field)
{
    QStringList report;
    for (double d : {l.entrustProgress(), l.progress(), l.amountEntrustProgress(),
                     l.amoutDealProgress(), l.filledQty(), l.dealBalance()})
        report << QVariant(d).toString();
    const QJsonDocument last(QJsonObject::fromVariantMap(l.getLastReportMap()));
    return QVariantMap{{"filledQty", l.filledQty()},
                       {"dealBalance", l.dealBalance()},
                       {"amountDealProgress", l.amoutDealProgress()},
                       {"progress", l.progress()},
                       {"status", l.getStatus()},
                       {"deleteFlag", l.getDeleteFlag()},
                       {"clParentID", l.getClParentID()},
                       {"strategy", l.standardProgress()},
                       {"tradingAccount", l.getTradingAccount() + '/' + l.getFundAccount() + '/'
                                              + l.getFundAccountName()},
                       {"lastReportMap", QString(last.toJson(QJsonDocument::Compact))},
                       {"report", (report << l.getEntrustTime()).join(' ')}}
        .value(field)
        .toString();
}

} // namespace

class TestSymbolInfoBase : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { HelmBusinessDataInterface::Reset(); }
    void writes_data();
    void writes();
};

void TestSymbolInfoBase::writes_data()
{
    // Write `first` (unless empty) then `then` through the operation `field`; afterwards the leg
    // reads `expected` (see readBack) and the second write logged exactly `log` ("W Figure old
    // new": a guarded setter's warning; lines ";"-separated). T100 has two fund accounts (the
    // first counts), T200 one, T999 none. With progress 0.75 and amount-deal progress 0.25,
    // amount-driven algos show 0.25.
    TableTest::addRows(R"(
filled falls: refused | filledQty | 200 | 150 | 200 | W FilledQty 200 150
filled 1e-9 lower: refused, no tolerance | filledQty | 100 | 99.999999999 | 100 | W FilledQty 100 100
filled equal | filledQty | 100 | 100 | 100 |
balance falls: refused | dealBalance | 5 | 4.5 | 5 | W DealBalance 5 4.5
amount progress falls: refused | amountDealProgress | 0.5 | 0.25 | 0.5 | W Progress 0.5 0.25
progress falls: stored, warned | progress | 0.5 | 0.25 | 0.25 | W Progress 0.5 0.25
live to deleted | deleteFlag | 0 | 1 | 1 |
deleted back to live ignored | deleteFlag | 1 | 0 | 1 |
deleted to other code | deleteFlag | 1 | 2 | 2 |
empty parent id keeps the known one | clParentID | P1 | "" | P1 |
new parent id replaces | clParentID | P1 | P2 | P2 |
account takes its first fund | tradingAccount | T200 | T100 | T100/F100/甲 |
unknown account keeps fund | tradingAccount | T200 | T999 | T999/F200/乙 |
empty account ignored | tradingAccount | T200 | "" | T200/F200/乙 |
last report merged, not replaced | lastReportMap | {"a":1,"b":2} | {"b":3,"c":4} | {"a":1,"b":3,"c":4} |
report: quantity and amount | report | | 200 2000 | 0.5 0.25 0.5 0.2625 50 525 - |
report: target qty 1e-15 | report | | 1e-15 2000 | 0 0 0.5 0.2625 50 525 - |
report: target amount 1e-16 | report | | 200 1e-16 | 0.5 0.25 0 0 50 525 - |
stale report keeps dealt figures, takes progress | report | 1000 10000 400 4200 | 1000 10000 300 3000 | 0.1 0.3 0.1 0.42 400 4200 - | W FilledQty 400 300; W Progress 0.4 0.3; W DealBalance 4200 3000; W Progress 0.42 0.3
time in ms, ms dropped | report | | 200 2000 50 525 09:30:05.999 | 0.5 0.25 0.5 0.2625 50 525 09:30:05 |
later time replaces | report | 200 2000 50 525 14:56:59 | 200 2000 50 525 09:30:05 | 0.5 0.25 0.5 0.2625 50 525 09:30:05 |
non-digit time keeps dash | report | | 200 2000 50 525 abc | 0.5 0.25 0.5 0.2625 50 525 - |
time 0 keeps earlier time | report | 200 2000 50 525 14:56:59 | 200 2000 50 525 0 | 0.5 0.25 0.5 0.2625 50 525 14:56:59 |
)");
    // from, to, stored; "-" is a fresh leg, "4" a code without a rule
    for (const char* s :
         {"1 1 1", "0 3 0", "1 3 1", "1 2 2", "3 0 0", "2 1 2", "5 0 5", "- 3 3", "4 3 3"}) {
        const QStringList c = QString(s).replace('-', "").split(' ');
        const QString log = "debug: SymbolInfoBase::setStatus invalid status " + c[0] + " " + c[1];
        QTest::addRow("status %s", s)
            << QStringList{"status", c[0], c[1], c[2], c[0] != c[1] && c[1] != c[2] ? log : ""};
    }
    for (const char* name :
         {"AITWAP7", "AIPOV7", "AITWAP8", "AIPOV8", "PursueHighLimitGY", "PursueHighLimitPLUS",
          "PursueHighLimit", "PursueHighLimitB", "DoubleConditionOrderPLUS", "DoubleConditionOrder",
          "AIPOV9", "AITWAP9"})
        QTest::addRow("%s shows amount progress", name)
            << QStringList{"strategy", "", name, "0.25"};
    for (const char* name : {"pursuehighlimit", "AITWAP", "\"\""})
        QTest::addRow("%s shows quantity progress", name)
            << QStringList{"strategy", "", name, "0.75"};
}

void TestSymbolInfoBase::writes()
{
    const std::array<QString, 5> c = TableTest::cells<5>();
    QString field = c[0], first = c[1], then = c[2], expected = c[3], log = c[4];
    HelmBusinessDataInterface::AddAccountInfo({"T100", "F100", "甲", ""});
    HelmBusinessDataInterface::AddAccountInfo({"T100", "F101", "丙", ""});
    HelmBusinessDataInterface::AddAccountInfo({"T200", "F200", "乙", ""});
    SymbolInfoBase leg;
    leg.setInstanceID("inst-7");
    bool accepted = false;
    const auto write = [&](QString v) {
        v = v == "\"\"" ? QString() : v;
        if (field == "filledQty")
            leg.setFilledQty(v.toDouble());
        if (field == "dealBalance")
            leg.setDealBalance(v.toDouble());
        if (field == "amountDealProgress")
            leg.setAmountDealProgress(v.toDouble());
        if (field == "progress")
            leg.setProgress(v.toDouble());
        if (field == "status")
            accepted = leg.setStatus(v);
        if (field == "deleteFlag")
            leg.setDeleteFlag(v);
        if (field == "clParentID")
            leg.setClParentID(v);
        if (field == "tradingAccount")
            leg.setTradingAccount(v);
        if (field == "lastReportMap")
            leg.updateLastReportMap(QJsonDocument::fromJson(v.toUtf8()).object().toVariantMap());
        if (field == "strategy")
            leg.setStrategyName(v), leg.setProgress(0.75), leg.setAmountDealProgress(0.25);
        if (field == "report")
            leg.updateBySingleProgressReport(report(v));
    };
    if (!first.isEmpty() || field == "status")
        write(first);
    LogCapture capture;
    write(then);
    QStringList lines;
    for (const CapturedMessage& m : capture.messages())
        lines << (m.type == QtWarningMsg ? "" : "debug: ") + m.text;
    QStringList logs;
    for (const QString& line : log.split("; ", Qt::SkipEmptyParts)) {
        const QStringList w = line.split(' '); // "W Figure old new"
        logs << (w[0] != "W" ? line
                             : QStringLiteral("SymbolInfoBase::set%1 invalid %2, instid: inst-7 "
                                              "old %2 %3 new %2 %4")
                                   .arg(w[1], w[1].left(1).toLower() + w[1].mid(1), w[2], w[3]));
    }
    QCOMPARE(lines.join('\n'), logs.join('\n'));
    QCOMPARE(readBack(leg, field), expected);
    if (field == "status") // true exactly when the new code was taken
        QCOMPARE(accepted, expected == then && first != then);
}

QTEST_GUILESS_MAIN(TestSymbolInfoBase)
#include "tst_symbolinfobase.moc"
