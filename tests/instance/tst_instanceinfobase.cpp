// The instance record: status rule, guarded progress setters, progress shown,
// mode and trade order, the delete answer, legs and display derivations.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

namespace {

// With the strategy `algo`, `op` writes `first` (unless null) and then `then`;
// afterwards the record reads `expected` (see readBack) and the second write
// logged exactly `log`.
struct Row
{
    QString op, algo;
    QVariant first, then;
    QString expected, log;
};

SymbolInfoBase* makeLeg(const QString& key, const QString& symbol, const QString& side)
{
    auto* leg = new SymbolInfoBase;
    leg->setKey(key);
    leg->setSymbol(symbol);
    leg->setOrderSide(side);
    return leg;
}

// Numbers as text: exact (shortest round-trip form) and NaN-aware.
QString readBack(InstanceInfoBase& i, const QString& op)
{
    if (op == "status")
        return i.status() + (i.isFinalStatus() ? " final" : "");
    const QMap<QString, double> numbers{{"progrees", i.progrees()},
                                        {"amountProgress", i.amountProgress()},
                                        {"filledQty", i.filledQty()},
                                        {"filledBalance", i.filledBalance()},
                                        {"standardProgress", i.standardProgress()}};
    if (numbers.contains(op))
        return QVariant(numbers[op]).toString();
    if (op == "instMode" || op == "rename")
        return i.getInstMode();
    if (op == "tradeOrder")
        return i.getInstanceTradeOrder();
    if (op == "deleteAnswer")
        return i.getStrategyDeleted() + ' ' + i.status();
    if (op == "accounts")
        return QStringList{i.getTradingAccount(), i.getFundAccount(), i.getFundAccountName(),
                           i.getStockAccount(),   i.getProductName(), i.getProductName_Inst()}
            .join('|');
    return i.getOrderSide(QStringLiteral("204001.SH")) + '|' + i.getOrderSide_Inst() + '|'
           + i.getOrderSide("OTHER");
}

} // namespace

Q_DECLARE_METATYPE(Row)

class TestInstanceInfoBase : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        KxAlgoDataMgr::instance().setStrategies(
            {AesStrategy("SingleAlgo", {}, {}, "1"), AesStrategy("PairAlgo", {}, {}, "2")});
    }
    void writes_data();
    void writes();
    void legs();
};

void TestInstanceInfoBase::writes_data()
{
    QTest::addColumn<Row>("row");
    const auto warn = [](const char* setter, const char* name, const char* word, const char* old,
                         const char* incoming) {
        return QStringLiteral(
                   "InstanceInfoBase::set%1 invalid %2, instid: 100023 old %3 %4 new %3 %5")
            .arg(setter, name, word, old, incoming);
    };
    // from, to, stored; "-" is a fresh record, "4" a code without a rule
    for (const char* s : {"1 1 1", "2 2 2", "0 3 0", "1 3 1", "0 1 1", "1 2 2", "3 0 0", "2 1 2",
                          "5 3 5", "- 7 7", "4 3 3"}) {
        const QStringList c = QString::fromLatin1(s).split(' ');
        const QString log = QStringLiteral(
            "InstanceInfoBase::setStatus InstanceInfoBase::setStatus invalid status %1 %2");
        QTest::addRow("status %s", s)
            << Row{"status",
                   {},
                   c[0] == "-" ? QVariant() : c[0],
                   c[1],
                   c[2] + (c[2] == "2" || c[2] == "5" ? " final" : ""),
                   c[0] != c[1] && c[1] != c[2] ? log.arg(c[0], c[1]) : ""};
    }
    QTest::newRow("progress regression is stored") << Row{
        "progrees", {}, 0.5, 0.4, "0.4", warn("Progrees", "progress", "progress", "0.5", "0.4")};
    QTest::newRow("amount progress regression is refused")
        << Row{"amountProgress",
               {},
               0.5,
               0.25,
               "0.5",
               warn("Progrees", "progress", "progress", "0.5", "0.25")};
    QTest::newRow("filled regression is refused") << Row{
        "filledQty", {}, 100.0, 90.0, "100", warn("FilledQty", "filledQty", "qty", "100", "90")};
    QTest::newRow("filled equal") << Row{"filledQty", {}, 100.0, 100.0, "100", {}};
    QTest::newRow("filled NaN") << Row{"filledQty", {}, 100.0, qQNaN(), "nan", {}};
    QTest::newRow("balance regression is refused") << Row{
        "filledBalance", {},
        5000.0,          4999.5,
        "5000",          warn("FilledBalance", "filledBalance", "filledBalance", "5000", "4999.5")};
    // Quantity progress 0.8, amount progress 0.3.
    QTest::newRow("AIPOV7 shows amount progress")
        << Row{"standardProgress", "AIPOV7", {}, {}, "0.3", {}};
    QTest::newRow("aipov7 shows quantity progress")
        << Row{"standardProgress", "aipov7", {}, {}, "0.8", {}};
    QTest::newRow("single-security algo: single mode")
        << Row{"instMode", "SingleAlgo", {}, "", "single", {}};
    QTest::newRow("pair algo: multi mode") << Row{"instMode", "PairAlgo", {}, "", "multi", {}};
    QTest::newRow("given mode wins") << Row{"instMode", "PairAlgo", {}, "single", "single", {}};
    QTest::newRow("derived mode kept after a rename")
        << Row{"rename", "SingleAlgo", {}, "PairAlgo", "single", {}};
    QTest::newRow("grid without order: All")
        << Row{"tradeOrder", "GridTradingStrategy", {}, "", "All", {}};
    QTest::newRow("grid ymd without order: All")
        << Row{"tradeOrder", "GridTradingYmdStrategy", {}, "", "All", {}};
    QTest::newRow("grid with order")
        << Row{"tradeOrder", "GridTradingStrategy", {}, "Buy", "Buy", {}};
    QTest::newRow("other without order") << Row{"tradeOrder", "AITWAP", {}, "", "", {}};
    QTest::newRow("delete answer marks deleted, ignores the record")
        << Row{"deleteAnswer", {}, {}, "5", "1 ", {}};
    // Security type, then leg side: the words for the leg's symbol, the instance, another symbol.
    QTest::newRow("buy code") << Row{"orderSide", {}, "", "1", "Buy|Buy|", {}};
    QTest::newRow("sell code") << Row{"orderSide", {}, "Stock", "2", "Sell|Sell|", {}};
    QTest::newRow("sell of a bond is a reverse repo")
        << Row{"orderSide", {}, "Bond", "2", "Antirepo|Antirepo|", {}};
    QTest::newRow("unknown code shown as given") << Row{"orderSide", {}, "", "All", "All|All|", {}};
    // Accounts T<n> belong to fund F<n> ("Fund T<n>") of product P<n>; every leg has stock account
    // S1.
    QTest::newRow("accounts of one leg")
        << Row{"accounts", {}, {}, "T1", "T1|F1|Fund T1|S1|P1|P1", {}};
    QTest::newRow("accounts of two legs")
        << Row{"accounts", {}, {}, "T1,T2", "T1,T2|F1,F2|Fund T1,Fund T2|S1|P1,P2|P1,P2", {}};
}

void TestInstanceInfoBase::writes()
{
    QFETCH(Row, row);
    InstanceInfoBase inst;
    inst.setInstanceID(QStringLiteral("100023"));
    inst.setStrategyName(row.algo);
    inst.setProgrees(0.8), inst.setAmountProgress(0.3);
    bool accepted = false;
    const auto write = [&](const QVariant& v) {
        const QString& op = row.op;
        if (op == "status")
            accepted = inst.setStatus(v.toString()); // a fresh record takes every status
        if (op == "progrees")
            inst.setProgrees(v.toDouble());
        if (op == "amountProgress")
            inst.setAmountProgress(v.toDouble());
        if (op == "filledQty")
            inst.setFilledQty(v.toDouble());
        if (op == "filledBalance")
            inst.setFilledBalance(v.toDouble());
        if (op == "instMode")
            inst.setInstMode(v.toString());
        if (op == "rename")
            inst.getInstMode(), inst.setStrategyName(v.toString());
        if (op == "tradeOrder")
            inst.setInstanceTradeOrder(v.toString());
        if (op == "deleteAnswer")
            inst.OnRecv_DeleteAlgoInstanceResponse({{Tessel_Fields::Strategy::strategyStatus, v}});
        if (op == "orderSide")
            CBusinessDataBase::GetInstance()->SetSecurityType("204001.SH", row.first.toString()),
                inst.AddSymbolInfo(
                    makeLeg("1_204001.SH_" + v.toString(), "204001.SH", v.toString()));
        for (const QString& a : op == "accounts" ? v.toString().split(',') : QStringList()) {
            HelmBusinessDataInterface::AddAccountInfo(
                {a, "F" + a.mid(1), "Fund " + a, "P" + a.mid(1)});
            SymbolInfoBase* leg = makeLeg("1_" + a + "_1", a, "1");
            leg->setTradingAccount(a), leg->setSecurityAccout("S1"), inst.AddSymbolInfo(leg);
        }
    };
    if (!row.first.isNull() && row.op != "orderSide")
        write(row.first);
    LogCapture log;
    if (!row.then.isNull())
        write(row.then);
    QCOMPARE(log.messages().size(), row.log.isEmpty() ? 0 : 1);
    QCOMPARE(log.last(row.op == "status" ? QtDebugMsg : QtWarningMsg), row.log);
    QCOMPARE(readBack(inst, row.op), row.expected);
    if (row.op == "status") // true exactly when the new status was taken
        QCOMPARE(accepted,
                 row.then.toString() == row.expected.section(' ', 0, 0) && row.first != row.then);
}

void TestInstanceInfoBase::legs()
{
    InstanceInfoBase inst; // destroyed at the end: frees every leg exactly once (sanitizer builds)
    QString symbol = QStringLiteral("keep"), side = QStringLiteral("me");
    inst.getOneSymbol(symbol, side); // without legs the outputs stay
    QCOMPARE(symbol + side, QStringLiteral("keepme"));
    SymbolInfoBase* first = makeLeg("1_600001.SH_2", "600001.SH", "2");
    auto* t0 = new T0SymbolInfo;
    t0->setKey("1_000001.SZ_1"), t0->setSymbol("000001.SZ"), t0->setOrderSide("1");
    inst.AddSymbolInfo(first);
    inst.AddSymbolInfo(t0);
    QCOMPARE(inst.GetAllSymbolNames(), QStringList({"000001.SZ", "600001.SH"})); // in key order
    inst.getOneSymbol(symbol, side);
    QCOMPARE(symbol + side, QStringLiteral("000001.SZ1"));
    QCOMPARE(inst.GetAllSymbols_Ptr<T0SymbolInfo>(), QList<T0SymbolInfo*>{t0});
    QCOMPARE(inst.getSymbolInfo("1_600001.SH_1"), nullptr);
    SymbolInfoBase* replacement = makeLeg("1_600001.SH_2", "600001.SH", "2");
    inst.AddSymbolInfo(first); // the same leg again is no replacement
    inst.AddSymbolInfo(replacement);
    QCOMPARE(inst.getSymbolInfo("1_600001.SH_2"), replacement);
    QCOMPARE(first->symbol(), QStringLiteral("600001.SH")); // still alive
}

QTEST_GUILESS_MAIN(TestInstanceInfoBase)
#include "tst_instanceinfobase.moc"
