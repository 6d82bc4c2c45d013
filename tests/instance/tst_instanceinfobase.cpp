// The instance record: status rule, guarded progress setters, progress shown,
// mode and trade order, the delete answer, legs and display derivations.

#include "../common/tabletest.h"

#include <functional>

namespace {

SymbolInfoBase* makeLeg(const QString& key, const QString& symbol, const QString& side)
{
    auto* leg = new SymbolInfoBase;
    leg->setKey(key), leg->setSymbol(symbol), leg->setOrderSide(side);
    return leg;
}

QString text(double d) // exact (shortest round-trip form) and NaN-aware
{
    return QVariant(d).toString();
}

} // namespace

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
    // With the strategy `algo`, `op` writes `first` (unless empty) and then `then` ('""' is an
    // empty text); afterwards the record reads `expected` and the second write logged exactly
    // `log`. Before: quantity progress 0.8, amount progress 0.3. Order sides: `first` is the
    // security type of the leg's symbol; the words for the leg's symbol, the instance, another
    // symbol. Accounts T<n> belong to fund F<n> ("Fund T<n>") of product P<n>; every leg has
    // stock account S1: trading/fund/fund name/stock/product/product of the instance.
    TableTest::addRows(R"(
progress regression is stored | progrees | | 0.5 | 0.4 | 0.4 | InstanceInfoBase::setProgrees invalid progress, instid: 100023 old progress 0.5 new progress 0.4
amount progress regression is refused | amountProgress | | 0.5 | 0.25 | 0.5 | InstanceInfoBase::setProgrees invalid progress, instid: 100023 old progress 0.5 new progress 0.25
filled regression is refused | filledQty | | 100 | 90 | 100 | InstanceInfoBase::setFilledQty invalid filledQty, instid: 100023 old qty 100 new qty 90
filled equal | filledQty | | 100 | 100 | 100 |
balance regression is refused | filledBalance | | 5000 | 4999.5 | 5000 | InstanceInfoBase::setFilledBalance invalid filledBalance, instid: 100023 old filledBalance 5000 new filledBalance 4999.5
AIPOV7 shows amount progress | standardProgress | AIPOV7 | | | 0.3 |
aipov7 shows quantity progress | standardProgress | aipov7 | | | 0.8 |
single-security algo: single mode | instMode | SingleAlgo | | "" | single |
pair algo: multi mode | instMode | PairAlgo | | "" | multi |
given mode wins | instMode | PairAlgo | | single | single |
derived mode kept after a rename | rename | SingleAlgo | | PairAlgo | single |
grid without order: All | tradeOrder | GridTradingStrategy | | "" | All |
grid ymd without order: All | tradeOrder | GridTradingYmdStrategy | | "" | All |
grid with order | tradeOrder | GridTradingStrategy | | Buy | Buy |
other without order | tradeOrder | AITWAP | | "" | |
delete answer marks deleted, ignores the record | deleteAnswer | | | 5 | 1/ |
buy code | orderSide | | | 1 | Buy/Buy/ |
sell code | orderSide | | Stock | 2 | Sell/Sell/ |
sell of a bond is a reverse repo | orderSide | | Bond | 2 | Antirepo/Antirepo/ |
unknown code shown as given | orderSide | | | All | All/All/ |
accounts of two legs, distinct | accounts | | | T1,T2 | T1,T2/F1,F2/Fund T1,Fund T2/S1/P1,P2/P1,P2 |
)");
    // from, to, stored; "-" is a fresh record (it takes every status), "4" a code without a rule
    for (const char* s :
         {"1 1 1", "0 3 0", "1 3 1", "0 1 1", "3 0 0", "2 1 2", "5 3 5", "- 7 7", "4 3 3"}) {
        const QStringList c = QString(s).replace('-', "").split(' ');
        const QString log =
            "InstanceInfoBase::setStatus InstanceInfoBase::setStatus invalid status";
        QTest::addRow("status %s", s)
            << QStringList{"status",
                           "",
                           c[0],
                           c[1],
                           c[2] + (c[2] == "2" || c[2] == "5" ? " final" : ""),
                           c[0] != c[1] && c[1] != c[2] ? log + " " + c[0] + " " + c[1] : ""};
    }
}

void TestInstanceInfoBase::writes()
{
    const std::array<QString, 6> c = TableTest::cells<6>();
    const QString op = c[0], algo = c[1], first = c[2], then = c[3], expected = c[4], log = c[5];
    InstanceInfoBase inst;
    inst.setInstanceID("100023"), inst.setStrategyName(algo);
    inst.setProgrees(0.8), inst.setAmountProgress(0.3);
    bool accepted = false;
    using Op = std::function<void(const QString&)>;
    const QMap<QString, Op> writers{
        {"status", [&](const QString& v) { accepted = inst.setStatus(v); }},
        {"progrees", [&](const QString& v) { inst.setProgrees(v.toDouble()); }},
        {"amountProgress", [&](const QString& v) { inst.setAmountProgress(v.toDouble()); }},
        {"filledQty", [&](const QString& v) { inst.setFilledQty(v.toDouble()); }},
        {"filledBalance", [&](const QString& v) { inst.setFilledBalance(v.toDouble()); }},
        {"instMode", [&](const QString& v) { inst.setInstMode(v); }},
        {"rename", [&](const QString& v) { inst.getInstMode(), inst.setStrategyName(v); }},
        {"tradeOrder", [&](const QString& v) { inst.setInstanceTradeOrder(v); }},
        {"deleteAnswer",
         [&](const QString& v) {
             inst.OnRecv_DeleteAlgoInstanceResponse({{"strategyStatus", v}});
         }},
        {"orderSide",
         [&](const QString& v) {
             CBusinessDataBase::GetInstance()->SetSecurityType("204001.SH", first);
             inst.AddSymbolInfo(makeLeg("1_204001.SH_" + v, "204001.SH", v));
         }},
        {"accounts", [&](const QString& v) {
             for (const QString& a : v.split(',')) {
                 HelmBusinessDataInterface::AddAccountInfo(
                     {a, "F" + a.mid(1), "Fund " + a, "P" + a.mid(1)});
                 SymbolInfoBase* leg = makeLeg("1_" + a + "_1", a, "1");
                 leg->setTradingAccount(a), leg->setSecurityAccout("S1"), inst.AddSymbolInfo(leg);
             }
         }}};
    const Op write = [&](const QString& v) {
        writers.value(op, [](auto) {})(v == "\"\"" ? "" : v);
    };
    if (!first.isEmpty() && op != "orderSide")
        write(first);
    LogCapture capture;
    if (!then.isEmpty())
        write(then);
    QCOMPARE(capture.messages().size(), log.isEmpty() ? 0 : 1);
    QCOMPARE(capture.last(op == "status" ? QtDebugMsg : QtWarningMsg), log);
    const QMap<QString, QString> read{
        {"status", inst.status() + (inst.isFinalStatus() ? " final" : "")},
        {"progrees", text(inst.progrees())},
        {"amountProgress", text(inst.amountProgress())},
        {"filledQty", text(inst.filledQty())},
        {"filledBalance", text(inst.filledBalance())},
        {"standardProgress", text(inst.standardProgress())},
        {"instMode", inst.getInstMode()},
        {"rename", inst.getInstMode()},
        {"tradeOrder", inst.getInstanceTradeOrder()},
        {"deleteAnswer", inst.getStrategyDeleted() + '/' + inst.status()},
        {"orderSide", inst.getOrderSide("204001.SH") + '/' + inst.getOrderSide_Inst() + '/'
                          + inst.getOrderSide("OTHER")},
        {"accounts",
         QStringList{inst.getTradingAccount(), inst.getFundAccount(), inst.getFundAccountName(),
                     inst.getStockAccount(), inst.getProductName(), inst.getProductName_Inst()}
             .join('/')}};
    QCOMPARE(read.value(op), expected);
    if (op == "status") // true exactly when the new status was taken
        QCOMPARE(accepted, then == expected.section(' ', 0, 0) && first != then);
}

void TestInstanceInfoBase::legs()
{
    InstanceInfoBase inst; // destroyed at the end: frees every leg exactly once (sanitizer builds)
    QString symbol = "keep", side = "me";
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
