// Rules of the base symbol leg: guarded setters, the progress it shows, what a
// single progress report changes, and copies.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

namespace Progress = Algo_Fields::AlgoInstProgressFields;

namespace {

// Write `first` then `then` through the operation `field`; afterwards the leg
// reads `expected` (see readBack) and the second write logged exactly `log`.
struct Row
{
    QString field;
    QVariant first, then, expected;
    QString log;
};

QString warn(const QString& figure, const char* old, const char* incoming)
{
    return QStringLiteral("SymbolInfoBase::set%1 invalid %2, instid: inst-7 old %2 %3 new %2 %4")
        .arg(figure, figure.left(1).toLower() + figure.mid(1), old, incoming);
}

// As text: exact for doubles (shortest round-trip form) and NaN-aware. A
// report reads as entrust, deal, amount entrust and amount deal progress,
// filled quantity, dealt amount and entrust time.
QString readBack(const SymbolInfoBase& l, const QString& field)
{
    const QString report = QStringLiteral("%1 %2 %3 %4 %5 %6 ")
                               .arg(l.entrustProgress())
                               .arg(l.progress())
                               .arg(l.amountEntrustProgress())
                               .arg(l.amoutDealProgress())
                               .arg(l.filledQty())
                               .arg(l.dealBalance())
                           + l.getEntrustTime();
    return QVariantMap{
        {"filledQty", l.filledQty()},
        {"dealBalance", l.dealBalance()},
        {"amountDealProgress", l.amoutDealProgress()},
        {"progress", l.progress()},
        {"status", l.getStatus()},
        {"deleteFlag", l.getDeleteFlag()},
        {"clParentID", l.getClParentID()},
        {"strategy", l.standardProgress()},
        {"tradingAccount",
         QStringList{l.getTradingAccount(), l.getFundAccount(), l.getFundAccountName()}.join('|')},
        {"report", report}}
        .value(field)
        .toString();
}

} // namespace

Q_DECLARE_METATYPE(Row)

class TestSymbolInfoBase : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { HelmBusinessDataInterface::Reset(); }
    void writes_data();
    void writes();
    void copiesAreIndependent();
};

void TestSymbolInfoBase::writes_data()
{
    QTest::addColumn<Row>("row");
    QTest::newRow("filled falls: refused")
        << Row{"filledQty", 200.0, 150.0, 200.0, warn("FilledQty", "200", "150")};
    QTest::newRow("filled 1e-9 lower: refused")
        << Row{"filledQty", 100.0, 100 - 1e-9, 100.0, warn("FilledQty", "100", "100")};
    QTest::newRow("filled equal") << Row{"filledQty", 100.0, 100.0, 100.0, {}};
    QTest::newRow("filled NaN taken") << Row{"filledQty", 100.0, qQNaN(), qQNaN(), {}};
    QTest::newRow("balance falls: refused")
        << Row{"dealBalance", 5.0, 4.5, 5.0, warn("DealBalance", "5", "4.5")};
    QTest::newRow("amount progress falls: refused")
        << Row{"amountDealProgress", 0.5, 0.25, 0.5, warn("Progress", "0.5", "0.25")};
    QTest::newRow("progress falls: stored, warned")
        << Row{"progress", 0.5, 0.25, 0.25, warn("Progress", "0.5", "0.25")};
    // from, to, stored; "-" is a fresh leg, "4" a code without a rule
    for (const char* s : {"1 1 1", "2 2 2", "0 3 0", "1 3 1", "1 2 2", "3 0 0", "2 1 2", "5 0 5",
                          "- 3 3", "4 3 3"}) {
        const QStringList c = QString::fromLatin1(s).replace('-', "").split(' ');
        const bool logged = c[0] != c[1] && c[1] != c[2];
        QTest::addRow("status %s", s)
            << Row{"status", c[0], c[1], c[2],
                   logged ? QStringLiteral("debug: SymbolInfoBase::setStatus invalid status %1 %2")
                                .arg(c[0], c[1])
                          : QString()};
    }
    QTest::newRow("live to deleted") << Row{"deleteFlag", "0", "1", "1", {}};
    QTest::newRow("deleted back to live ignored") << Row{"deleteFlag", "1", "0", "1", {}};
    QTest::newRow("deleted to other code") << Row{"deleteFlag", "1", "2", "2", {}};
    QTest::newRow("empty parent id keeps the known one") << Row{"clParentID", "P1", "", "P1", {}};
    QTest::newRow("new parent id replaces") << Row{"clParentID", "P1", "P2", "P2", {}};
    // T100 has two fund accounts (the first counts), T200 one, T999 none.
    QTest::newRow("account takes its first fund")
        << Row{"tradingAccount", "T200", "T100", "T100|F100|甲", {}};
    QTest::newRow("unknown account keeps fund")
        << Row{"tradingAccount", "T200", "T999", "T999|F200|乙", {}};
    QTest::newRow("empty account ignored") << Row{"tradingAccount", "T200", "", "T200|F200|乙", {}};
    // With progress 0.75 and amount-deal progress 0.25, amount-driven algos show 0.25.
    for (const char* name :
         {"AITWAP7", "AIPOV7", "AITWAP8", "AIPOV8", "PursueHighLimitGY", "PursueHighLimitPLUS",
          "PursueHighLimit", "PursueHighLimitB", "DoubleConditionOrderPLUS", "DoubleConditionOrder",
          "AIPOV9", "AITWAP9"})
        QTest::addRow("%s shows amount progress", name) << Row{"strategy", {}, name, 0.25, {}};
    for (const char* name : {"pursuehighlimit", "AITWAP", ""})
        QTest::addRow("'%s' shows quantity progress", name) << Row{"strategy", {}, name, 0.75, {}};

    const auto report = [](QVariant target, QVariant amount, double filled = 50, double dealt = 525,
                           QVariant time = {}) {
        return VariantMap{{Progress::TargetQty, target},   {Progress::EntrustQty, 100},
                          {Progress::FilledQty, filled},   {Progress::TargetAmount, amount},
                          {Progress::EntrustAmount, 1000}, {Progress::DealAmount, dealt},
                          {Progress::lastOrderTime, time}};
    };
    QTest::newRow("report: quantity and amount")
        << Row{"report", {}, report(200, 2000), "0.5 0.25 0.5 0.2625 50 525 -", {}};
    QTest::newRow("report: target qty 0")
        << Row{"report", {}, report(0, 2000), "0 0 0.5 0.2625 50 525 -", {}};
    QTest::newRow("report: target qty 1e-15")
        << Row{"report", {}, report(1e-15, 2000), "0 0 0.5 0.2625 50 525 -", {}};
    QTest::newRow("report: target amount 1e-16")
        << Row{"report", {}, report(200, 1e-16), "0.5 0.25 0 0 50 525 -", {}};
    QTest::newRow("stale report keeps dealt figures, takes progress")
        << Row{"report", report(1000, 10000, 400, 4200), report(1000, 10000, 300, 3000),
               "0.1 0.3 0.1 0.42 400 4200 -",
               warn("FilledQty", "400", "300") + '\n' + warn("Progress", "0.4", "0.3") + '\n'
                   + warn("DealBalance", "4200", "3000") + '\n' + warn("Progress", "0.42", "0.3")};
    const QDate day(2024, 3, 15);
    const qint64 morning = QDateTime(day, QTime(9, 30, 5)).toMSecsSinceEpoch();
    const VariantMap earlier =
        report(200, 2000, 50, 525, QDateTime(day, QTime(14, 56, 59)).toMSecsSinceEpoch());
    const auto time = [&](const char* name, const VariantMap& first, QVariant at,
                          const char* shown) {
        QTest::newRow(name) << Row{"report",
                                   first,
                                   report(200, 2000, 50, 525, at),
                                   QStringLiteral("0.5 0.25 0.5 0.2625 50 525 ") + shown,
                                   {}};
    };
    time("time in ms, ms dropped", {}, QString::number(morning + 999), "09:30:05");
    time("later time replaces", earlier, morning, "09:30:05");
    time("time 0 keeps dash", {}, "0", "-");
    time("non-digit time keeps dash", {}, "abc", "-");
    time("time 0 keeps earlier time", earlier, "0", "14:56:59");
}

void TestSymbolInfoBase::writes()
{
    QFETCH(Row, row);
    HelmBusinessDataInterface::AddAccountInfo({"T100", "F100", "甲", ""});
    HelmBusinessDataInterface::AddAccountInfo({"T100", "F101", "丙", ""});
    HelmBusinessDataInterface::AddAccountInfo({"T200", "F200", "乙", ""});
    SymbolInfoBase leg;
    leg.setInstanceID(QStringLiteral("inst-7"));
    bool accepted = false;
    const auto write = [&](const QVariant& v) {
        if (row.field == "filledQty")
            leg.setFilledQty(v.toDouble());
        if (row.field == "dealBalance")
            leg.setDealBalance(v.toDouble());
        if (row.field == "amountDealProgress")
            leg.setAmountDealProgress(v.toDouble());
        if (row.field == "progress")
            leg.setProgress(v.toDouble());
        if (row.field == "status")
            accepted = leg.setStatus(v.toString());
        if (row.field == "deleteFlag")
            leg.setDeleteFlag(v.toString());
        if (row.field == "clParentID")
            leg.setClParentID(v.toString());
        if (row.field == "tradingAccount")
            leg.setTradingAccount(v.toString());
        if (row.field == "strategy")
            leg.setStrategyName(v.toString()), leg.setProgress(0.75),
                leg.setAmountDealProgress(0.25);
        if (row.field == "report")
            leg.updateBySingleProgressReport(v.toMap());
    };
    write(row.first);
    LogCapture log;
    write(row.then);
    QStringList lines;
    for (const CapturedMessage& m : log.messages())
        lines << (m.type == QtWarningMsg ? "" : "debug: ") + m.text;
    QCOMPARE(lines.join('\n'), row.log);
    QCOMPARE(readBack(leg, row.field), row.expected.toString());
    if (row.field == "status") // true exactly when the new code was taken
        QCOMPARE(accepted, row.expected == row.then && row.first != row.then);
}

void TestSymbolInfoBase::copiesAreIndependent()
{
    SymbolInfoBase original;
    QVERIFY(original.setStatus(QStringLiteral("1")));
    original.updateLastReportMap({{"a", 1}, {"b", 2}});
    SymbolInfoBase copy(original), assigned;
    assigned = original;
    for (SymbolInfoBase* leg : {&copy, &assigned}) {
        QVERIFY(!leg->setStatus(QStringLiteral("3")));  // the guard state travels too
        leg->updateLastReportMap({{"b", 3}, {"c", 4}}); // merges: "a" stays
        QCOMPARE(leg->getLastReportMap(), VariantMap({{"a", 1}, {"b", 3}, {"c", 4}}));
    }
    QCOMPARE(original.getLastReportMap(), VariantMap({{"a", 1}, {"b", 2}}));
}

QTEST_GUILESS_MAIN(TestSymbolInfoBase)
#include "tst_symbolinfobase.moc"
