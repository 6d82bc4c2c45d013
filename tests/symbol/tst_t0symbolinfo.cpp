// Rules of the T0 leg: the tolerant guarded setters, the staleness test of both
// feeds (with its deliberately odd error text) and what each feed applies.
// Copies are the compiler's (tst_instancecopy).

#include "../common/tabletest.h"

namespace {

// "target filled progress / buy order deal close avg amount cancel fee / sell (the same) /
// achieved profit", each number exact in its shortest form.
QString figures(const T0SymbolInfo& l)
{
    QStringList out;
    for (double d : {l.targetQty(), l.filledQty(), l.progress(), l.buyOrderQty(), l.buyDealQty(),
                     l.buyCloseQty(), l.buyAvgPrice(), l.buyAmount(), l.buyCancelQty(), l.buyFee(),
                     l.sellOrderQty(), l.sellDealQty(), l.sellCloseQty(), l.sellAvgPrice(),
                     l.sellAmount(), l.sellCancelQty(), l.sellFee(), l.achieveProfit()})
        out << QVariant(d).toString();
    for (int at : {17, 10, 3})
        out.insert(at, "/");
    return out.join(' ');
}

// A record of symbol 600000 from JSON parts and names: "primed" makes the leg most rows start
// from, "current" is newer than it on both sides, "starts" feeds the guarded setters; "-KEY"
// removes a key.
VariantMap record(const QString& cell)
{
    static const QMap<QString, QString> bases{
        {"primed", R"({"TargetQty":1000,"buyOrderQty":1000,"buyDealQty":150,"buyAvgPrice":10,
            "buyAmount":1500,"buyCancelQty":20,"buyFee":1.5,"sellOrderQty":800,"sellDealQty":100,
            "sellAvgPrice":11,"sellAmount":1100,"sellCancelQty":10,"sellFee":1.25,"AchieveProfit":55})"},
        {"current", R"({"TargetQty":2000,"buyOrderQty":1200,"buyDealQty":200,"buyCloseQty":60,
            "buyAvgPrice":10.25,"buyAmount":2050,"buyCancelQty":22,"buyFee":2,"sellOrderQty":900,
            "sellDealQty":120,"sellCloseQty":60,"sellAvgPrice":11.5,"sellAmount":1380,
            "sellCancelQty":12,"sellFee":1.75,"AchieveProfit":66})"},
        {"starts", R"({"buyDealQty":1000,"buyAmount":2000,"sellDealQty":3000,"sellAmount":4000})"}};
    VariantMap map{{"Symbol", "600000"}};
    for (const QString& part : cell.split(' ', Qt::SkipEmptyParts)) {
        if (part.startsWith('-'))
            map.remove(part.mid(1));
        else
            map.insert(TableTest::record(bases.value(part, part)));
    }
    return map;
}

} // namespace

class TestT0SymbolInfo : public QObject
{
    Q_OBJECT
private slots:
    void feeds_data();
    void feeds();
};

void TestT0SymbolInfo::feeds_data()
{
    // Gather `setup` into a fresh leg, then hand it `input` through `feed` or, for a guarded
    // setter, 5e-11 (taken quietly) and then 1e-9 (refused) below the start; "unchanged" means
    // as right after the setup; `log` is every line the second step writes ("stale SIDE FIRST":
    // the feed's staleness line, "_" a space). The odd text: only %1 is replaced, by the stored
    // deal, as wide as the stored cancel, in the format whose code is the reported deal ('f'
    // 102, 'e' 101, other codes fixed), with the reported cancel as precision.
    TableTest::addRows(R"(
buy deal setter | setBuyDealQty | starts | 1000 | 0 0 0 / 0 999.99999999995 0 0 2000 0 0 / 0 3000 0 0 4000 0 0 / 0 | debug: T0SymbolInfo::setBuyDealQty buyDeal error 1000 1000
buy amount setter | setBuyAmount | starts | 2000 | 0 0 0 / 0 1000 0 0 1999.99999999995 0 0 / 0 3000 0 0 4000 0 0 / 0 | debug: T0SymbolInfo::setBuyAmount error  2000 2000
sell deal setter | setSellDealQty | starts | 3000 | 0 0 0 / 0 1000 0 0 2000 0 0 / 0 2999.99999999995 0 0 4000 0 0 / 0 | debug: T0SymbolInfo::setSellDealQty sellDeal error 3000 3000
sell amount setter | setSellAmount | starts | 4000 | 0 0 0 / 0 1000 0 0 2000 0 0 / 0 3000 0 0 3999.99999999995 0 0 / 0 | debug: T0SymbolInfo::setSellAmount error  4000 4000
gather: current, close quantities untouched | gather | primed | current | 2000 0 0 / 1200 200 0 10.25 2050 22 2 / 900 120 0 11.5 1380 12 1.75 / 66 |
gather: stale buy deal, refused whole incl. sell and profit | gather | primed | current {"buyDealQty":100} | unchanged | stale 买入 150.0000000000000000000000
odd text: padded, 'f' | gather | {"buyDealQty":150.5,"buyCancelQty":8} | {"buyDealQty":102,"buyCancelQty":2,"buyOrderQty":1000} | unchanged | stale 买入 __150.50
odd text: 101.9 truncated to 'e' | gather | {"buyDealQty":150.5} | {"buyDealQty":101.9,"buyCancelQty":3,"buyOrderQty":1000} | unchanged | stale 买入 1.505e+02
odd text: sell cancel lower only | gather | {"sellDealQty":50,"sellCancelQty":5} | {"sellDealQty":60,"sellOrderQty":1000} | unchanged | stale 卖出 ___50
report: both halves, close quantities included | report | primed | current {"FilledQty":300} | 2000 300 0.15 / 1200 200 60 10.25 2050 22 2 / 900 120 60 11.5 1380 12 1.75 / 66 |
report: stale, base part refused too | report | primed | current {"buyDealQty":100,"FilledQty":300} | unchanged | stale 买入 150.0000000000000000000000
report: no buyOrderQty, lower buy deal skipped with the buy half | report | primed | current -buyOrderQty {"buyDealQty":100,"buyAmount":5,"FilledQty":300} | 2000 300 0.15 / 1000 150 0 10 1500 20 1.5 / 900 120 60 11.5 1380 12 1.75 / 66 |
report: AchieveProfit missing reads 0 | report | primed | {"TargetQty":1000,"FilledQty":300} | 1000 300 0.3 / 1000 150 0 10 1500 20 1.5 / 800 100 0 11 1100 10 1.25 / 0 |
)");
}

void TestT0SymbolInfo::feeds()
{
    const std::array<QString, 5> c = TableTest::cells<5>();
    QString feed = c[0], setup = c[1], input = c[2], figures = c[3], log = c[4];
    T0SymbolInfo leg;
    leg.setSymbol("600000");      // the report's stale line names it
    SymbolInfoBase& asBase = leg; // both feeds are virtual
    asBase.OnRecvSymbolProgressGatherInfo(record(setup));
    const QString before = ::figures(leg);
    const QMap<QString, void (T0SymbolInfo::*)(double)> setters{
        {"setBuyDealQty", &T0SymbolInfo::setBuyDealQty},
        {"setBuyAmount", &T0SymbolInfo::setBuyAmount},
        {"setSellDealQty", &T0SymbolInfo::setSellDealQty},
        {"setSellAmount", &T0SymbolInfo::setSellAmount}};
    if (setters.contains(feed))
        (leg.*setters[feed])(input.toDouble() - 5e-11);
    LogCapture capture;
    if (setters.contains(feed))
        (leg.*setters[feed])(input.toDouble() - 1e-9);
    if (feed == "gather")
        asBase.OnRecvSymbolProgressGatherInfo(record(input));
    if (feed == "report")
        asBase.updateBySingleProgressReport(record(input));
    if (log.startsWith("stale ")) { // "%2" to "%4" stay in the text
        const QString side = log.section(' ', 1, 1), first = log.section(' ', 2).replace('_', ' ');
        log = "info: T0SymbolInfo::"
              + QString(feed == "gather" ? "OnRecvSymbolProgressGatherInfo"
                                         : "updateBySingleProgressReport")
              + " 收到过时数据: 600000 内存: " + side + "成交数量" + first + ", " + side
              + "撤单数量%2; reportData: " + side + "成交数量%3, " + side + "撤单数量%4";
    }
    QCOMPARE(TableTest::logged(capture), log);
    QCOMPARE(::figures(leg), figures == "unchanged" ? before : figures);
}

QTEST_GUILESS_MAIN(TestT0SymbolInfo)
#include "tst_t0symbolinfo.moc"
