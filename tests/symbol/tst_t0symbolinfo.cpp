// Rules of the T0 leg: the tolerant guarded setters, the staleness test of both
// feeds (with its deliberately odd error text), what each feed applies, copies.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

namespace Progress = Algo_Fields::AlgoInstProgressFields;

namespace {

// Every message as "level: text", one per line.
QString logged(const LogCapture& log)
{
    QStringList lines;
    for (const CapturedMessage& m : log.messages())
        lines << (m.type == QtInfoMsg    ? "info: "
                  : m.type == QtDebugMsg ? "debug: "
                                         : "warning: ")
                     + m.text;
    return lines.join('\n');
}

// "target filled progress | buy order deal close avg amount cancel fee | sell (the
// same) | achieved profit", each number exact in its shortest form.
QString figures(const T0SymbolInfo& l)
{
    QStringList out;
    for (double d : {l.targetQty(), l.filledQty(), l.progress(), l.buyOrderQty(), l.buyDealQty(),
                     l.buyCloseQty(), l.buyAvgPrice(), l.buyAmount(), l.buyCancelQty(), l.buyFee(),
                     l.sellOrderQty(), l.sellDealQty(), l.sellCloseQty(), l.sellAvgPrice(),
                     l.sellAmount(), l.sellCancelQty(), l.sellFee(), l.achieveProfit()})
        out << QVariant(d).toString();
    for (int at : {17, 10, 3})
        out.insert(at, QStringLiteral("|"));
    return out.join(' ');
}

VariantMap edited(VariantMap record, const VariantMap& changes, const QStringList& removed = {})
{
    for (auto it = changes.cbegin(); it != changes.cend(); ++it)
        record.insert(it.key(), it.value());
    for (const QString& key : removed)
        record.remove(key);
    return record;
}

// Gathered into a fresh leg, this makes the leg that most rows start from.
const VariantMap kPrimed{
    {Progress::Symbol, "600000"},  {Progress::TargetQty, 1000},  {Progress::buyOrderQty, 1000},
    {Progress::buyDealQty, 150},   {Progress::buyAvgPrice, 10},  {Progress::buyAmount, 1500},
    {Progress::buyCancelQty, 20},  {Progress::buyFee, 1.5},      {Progress::sellOrderQty, 800},
    {Progress::sellDealQty, 100},  {Progress::sellAvgPrice, 11}, {Progress::sellAmount, 1100},
    {Progress::sellCancelQty, 10}, {Progress::sellFee, 1.25},    {Progress::AchieveProfit, 55}};
// Newer than kPrimed on both sides.
const VariantMap kCurrent{
    {Progress::Symbol, "600000"},   {Progress::TargetQty, 2000},  {Progress::buyOrderQty, 1200},
    {Progress::buyDealQty, 200},    {Progress::buyCloseQty, 60},  {Progress::buyAvgPrice, 10.25},
    {Progress::buyAmount, 2050},    {Progress::buyCancelQty, 22}, {Progress::buyFee, 2},
    {Progress::sellOrderQty, 900},  {Progress::sellDealQty, 120}, {Progress::sellCloseQty, 60},
    {Progress::sellAvgPrice, 11.5}, {Progress::sellAmount, 1380}, {Progress::sellCancelQty, 12},
    {Progress::sellFee, 1.75},      {Progress::AchieveProfit, 66}};

QString stale(const char* feed, const char* side, const QString& first)
{
    return QStringLiteral("info: T0SymbolInfo::%1 收到过时数据: 600000 内存: %2成交数量")
               .arg(feed, side)
           + first
           + QStringLiteral(", %1撤单数量%2; reportData: %1成交数量%3, %1撤单数量%4").arg(side);
}

// Gather `setup` into a fresh leg, then hand it `record` through `feed` (a feed
// or a guarded setter, given record["value"]); `figures` "unchanged" means as
// right after the setup, `log` is every line the second step writes.
struct Row
{
    QString feed;
    VariantMap setup, record;
    QString figures, log;
};

// One side's deal and cancel quantities, with the side's order quantity if `order`.
VariantMap side(bool buy, double deal, double cancel, bool order)
{
    VariantMap m{{Progress::Symbol, "600000"},
                 {buy ? Progress::buyDealQty : Progress::sellDealQty, deal},
                 {buy ? Progress::buyCancelQty : Progress::sellCancelQty, cancel}};
    return order ? edited(m, {{buy ? Progress::buyOrderQty : Progress::sellOrderQty, 1000}}) : m;
}

} // namespace

Q_DECLARE_METATYPE(Row)

class TestT0SymbolInfo : public QObject
{
    Q_OBJECT
private slots:
    void feeds_data();
    void feeds();
    void copiesAreIndependent();
};

void TestT0SymbolInfo::feeds_data()
{
    QTest::addColumn<Row>("row");
    // Guarded setters, from 1000, 2000, 3000 and 4000: a drop within 1e-10 is
    // taken, a larger one refused.
    const VariantMap starts{{Progress::Symbol, "600000"},
                            {Progress::buyDealQty, 1000},
                            {Progress::buyAmount, 2000},
                            {Progress::sellDealQty, 3000},
                            {Progress::sellAmount, 4000}};
    const char* lines[] = {"setBuyDealQty buyDeal error", "setBuyAmount error ",
                           "setSellDealQty sellDeal error", "setSellAmount error "};
    for (int f = 0; f < 4; ++f) {
        const QString setter = QString::fromLatin1(lines[f]).section(' ', 0, 0);
        const double start = 1000 * (f + 1);
        QTest::addRow("%s: 5e-11 lower accepted", lines[f])
            << Row{setter,
                   starts,
                   {{"value", start - 5e-11}},
                   QString("0 0 0 | 0 1000 0 0 2000 0 0 | 0 3000 0 0 4000 0 0 | 0")
                       .replace(QString::number(start), QVariant(start - 5e-11).toString()),
                   {}};
        QTest::addRow("%s: 1e-9 lower refused", lines[f])
            << Row{setter,
                   starts,
                   {{"value", start - 1e-9}},
                   "unchanged",
                   QStringLiteral("debug: T0SymbolInfo::%1 %2 %2").arg(lines[f]).arg(start)};
    }

    const char* gather = "OnRecvSymbolProgressGatherInfo";
    QTest::newRow("gather: current, close quantities untouched")
        << Row{gather,
               kPrimed,
               kCurrent,
               "2000 0 0 | 1200 200 0 10.25 2050 22 2 | 900 120 0 11.5 1380 12 1.75 | 66",
               {}};
    QTest::newRow("gather: stale buy deal, refused whole incl. sell and profit")
        << Row{gather, kPrimed, edited(kCurrent, {{Progress::buyDealQty, 100}}), "unchanged",
               stale(gather, "买入", "150." + QString(22, '0'))};
    QTest::newRow("gather: buy current, stale sell cancel")
        << Row{gather, kPrimed, edited(kCurrent, {{Progress::sellCancelQty, 5}}), "unchanged",
               stale(gather, "卖出", " 100.00000")};
    // The odd rendering: only %1 is replaced, by the stored deal, as wide as the
    // stored cancel, in the format whose code is the reported deal ('f' 102,
    // 'e' 101, other codes fixed), with the reported cancel as precision.
    QTest::newRow("odd text: padded, 'f'")
        << Row{gather, side(true, 150.5, 8, false), side(true, 102, 2, true), "unchanged",
               stale(gather, "买入", "  150.50")};
    QTest::newRow("odd text: 101.9 truncated to 'e'")
        << Row{gather, side(true, 150.5, 0, false), side(true, 101.9, 3, true), "unchanged",
               stale(gather, "买入", "1.505e+02")};
    QTest::newRow("odd text: sell cancel lower only")
        << Row{gather, side(false, 50, 30, false), side(false, 60, 0, true), "unchanged",
               stale(gather, "卖出", QString(28, ' ') + "50")};

    const char* report = "updateBySingleProgressReport";
    QTest::newRow("report: both halves, close quantities included")
        << Row{report,
               kPrimed,
               edited(kCurrent, {{Progress::FilledQty, 300}}),
               "2000 300 0.15 | 1200 200 60 10.25 2050 22 2 | 900 120 60 11.5 1380 12 1.75 | 66",
               {}};
    QTest::newRow("report: stale, base part refused too")
        << Row{report, kPrimed,
               edited(kCurrent, {{Progress::buyDealQty, 100}, {Progress::FilledQty, 300}}),
               "unchanged", stale(report, "买入", "150." + QString(22, '0'))};
    QTest::newRow("report: no buyOrderQty, lower buy deal skipped with the buy half") << Row{
        report,
        kPrimed,
        edited(kCurrent,
               {{Progress::buyDealQty, 100}, {Progress::buyAmount, 5}, {Progress::FilledQty, 300}},
               {Progress::buyOrderQty}),
        "2000 300 0.15 | 1000 150 0 10 1500 20 1.5 | 900 120 60 11.5 1380 12 1.75 | 66",
        {}};
    QTest::newRow("report: AchieveProfit missing reads 0")
        << Row{report,
               kPrimed,
               {{Progress::TargetQty, 1000}, {Progress::FilledQty, 300}},
               "1000 300 0.3 | 1000 150 0 10 1500 20 1.5 | 800 100 0 11 1100 10 1.25 | 0",
               {}};
}

void TestT0SymbolInfo::feeds()
{
    QFETCH(Row, row);
    T0SymbolInfo leg;
    leg.setSymbol(QStringLiteral("600000")); // the report's stale line names it
    SymbolInfoBase& asBase = leg;            // both feeds are virtual
    asBase.OnRecvSymbolProgressGatherInfo(row.setup);
    const QString before = figures(leg);
    const double value = row.record.value("value").toDouble();
    LogCapture log;
    if (row.feed == "OnRecvSymbolProgressGatherInfo")
        asBase.OnRecvSymbolProgressGatherInfo(row.record);
    if (row.feed == "updateBySingleProgressReport")
        asBase.updateBySingleProgressReport(row.record);
    const QMap<QString, void (T0SymbolInfo::*)(double)> setters{
        {"setBuyDealQty", &T0SymbolInfo::setBuyDealQty},
        {"setBuyAmount", &T0SymbolInfo::setBuyAmount},
        {"setSellDealQty", &T0SymbolInfo::setSellDealQty},
        {"setSellAmount", &T0SymbolInfo::setSellAmount}};
    if (setters.contains(row.feed))
        (leg.*setters[row.feed])(value);
    QCOMPARE(logged(log), row.log);
    QCOMPARE(figures(leg), row.figures == "unchanged" ? before : row.figures);
}

void TestT0SymbolInfo::copiesAreIndependent()
{
    T0SymbolInfo original;
    original.OnRecvSymbolProgressGatherInfo(kPrimed);
    const QString primed = figures(original);
    T0SymbolInfo copy(original), assigned;
    assigned = original;
    for (T0SymbolInfo* leg : {&copy, &assigned}) {
        leg->OnRecvSymbolProgressGatherInfo(edited(kCurrent, {{Progress::buyDealQty, 100}}));
        QCOMPARE(figures(*leg),
                 primed); // the copy holds the figures and refuses what is stale for them
        leg->OnRecvSymbolProgressGatherInfo(kCurrent);
        QCOMPARE(leg->achieveProfit(), 66.0);
    }
    QCOMPARE(figures(original), primed);
}

QTEST_GUILESS_MAIN(TestT0SymbolInfo)
#include "tst_t0symbolinfo.moc"
