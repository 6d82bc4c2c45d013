// The T0 instance: its plan fields, how it builds (and rebuilds) its "All"
// legs from the Chinese-labelled parameter list, how it hands the JSON
// progress-gather answer to those legs and when that marks progress final,
// copies, and its creation by the registry.

#include <algologic.h>

#include "logcapture.h"

#include <QLoggingCategory>
#include <QtTest>

#include <memory>

namespace Content = Algo_Fields::AlgoInstContentInfo;
namespace Progress = Algo_Fields::AlgoInstProgressFields;
namespace Strategy = Tessel_Fields::Strategy;

namespace {

const QString kID = QStringLiteral("t0inst");
const QString kName = QStringLiteral("T0Intraday");
const QString kOccupyLabel = QStringLiteral("占用金额");

QString legKey(const QString& symbol, const QString& instanceID = kID)
{
    return InstanceMgr::GetSymbolExtInfoKey(instanceID, symbol, QStringLiteral("All"));
}

VariantMap legRecord(const QString& symbol, const QString& account = QStringLiteral("acc1"))
{
    return {{Content::Symbol, symbol}, {Content::TradingAccount, account}};
}

VariantMap contentOf(const QVariantList& legs, const VariantMap& extra = {})
{
    VariantMap content = extra;
    content.insert(Content::SymbolParamKey, legs);
    return content;
}

std::unique_ptr<T0InstanceInfo> makeInstance()
{
    auto inst = std::make_unique<T0InstanceInfo>();
    inst->setInstanceID(kID);
    inst->setStrategyName(kName);
    inst->setClassType(AlgoConst::ClassTypeT0);
    return inst;
}

T0SymbolInfo* t0Leg(const InstanceInfoBase& inst, const QString& symbol)
{
    return dynamic_cast<T0SymbolInfo*>(inst.getSymbolInfo(legKey(symbol, inst.instanceID())));
}

// Every field initSymbolInfo writes on a leg, in the order it writes them
// (with the fund account and its name that the trading account brings).
QStringList legFields(const T0SymbolInfo& leg)
{
    return {leg.instanceID(),       leg.strategyName(),   leg.symbol(),
            leg.orderSide(),        leg.exchange(),       QString::number(leg.targetQty()),
            leg.buyType(),          leg.sellType(),       leg.getKey(),
            leg.getTradingAccount(), leg.getFundAccount(), leg.getFundAccountName(),
            leg.comment(),          leg.endDate()};
}

// The dealt figures the progress feed writes, to tell applied from ignored.
QVariantList dealt(const T0SymbolInfo* leg)
{
    if (!leg)
        return {};
    return {leg->buyDealQty(), leg->buyAmount(), leg->sellDealQty(), leg->sellAmount()};
}

QString progressJson(const QString& symbol, int buyDeal, int sellDeal)
{
    return QStringLiteral("{\"%1\":\"%2\",\"%3\":1000,\"%4\":%5,\"%6\":%7,"
                          "\"%8\":1000,\"%9\":%10,\"%11\":%12}")
        .arg(Progress::Symbol, symbol, Progress::buyOrderQty, Progress::buyDealQty)
        .arg(buyDeal)
        .arg(Progress::buyAmount)
        .arg(buyDeal * 10)
        .arg(Progress::sellOrderQty, Progress::sellDealQty)
        .arg(sellDeal)
        .arg(Progress::sellAmount)
        .arg(sellDeal * 11);
}

VariantMapList gather(const QString& report, const QString& strategyID = kID)
{
    return {{{Strategy::strategyID, strategyID}, {Strategy::strategyReport, report}}};
}

} // namespace

class TestT0InstanceInfo : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void emptyParameterList_data();
    void emptyParameterList();
    void planFields_data();
    void planFields();
    void legFieldsFromRecord_data();
    void legFieldsFromRecord();
    void legStates_data();
    void legStates();
    void symbolAndAccountLists_data();
    void symbolAndAccountLists();
    void reinitialisingKeepsLegs();
    void nonT0LegIsReplaced();

    void progressGather_data();
    void progressGather();

    void copyAndMove_data();
    void copyAndMove();

    void registryCreatesT0Instance_data();
    void registryCreatesT0Instance();
};

void TestT0InstanceInfo::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("algologic.*.debug=true"));
    tagUserAccountInfo info;
    info.tradingAccount = QStringLiteral("acc1");
    info.fundAccount = QStringLiteral("fund1");
    info.fundAccountName = QStringLiteral("Fund One");
    HelmBusinessDataInterface::AddAccountInfo(info);
}

void TestT0InstanceInfo::emptyParameterList_data()
{
    QTest::addColumn<VariantMap>("content");
    const VariantMap plan = {{AlgoConst::LabelStartTime, QStringLiteral("09:30:00")},
                             {Content::occupyAmount, QStringLiteral("1e6")}};
    QTest::newRow("no parameter list") << plan;
    QTest::newRow("empty parameter list") << contentOf({}, plan);
}

void TestT0InstanceInfo::emptyParameterList()
{
    QFETCH(VariantMap, content);
    auto inst = makeInstance();
    inst->setT0StartTime(QStringLiteral("old"));
    inst->setOccupyAmount(QStringLiteral("old"));
    inst->setSymbolList({QStringLiteral("old")});
    inst->setSymbolTradingAccountList({QStringLiteral("old")});

    LogCapture log;
    inst->initSymbolInfo(content, {});

    QVERIFY(log.contains(QtDebugMsg, "T0InstanceInfo::initSymbolInfo symbol empty"));
    QCOMPARE(inst->getT0StartTime(), QStringLiteral("old"));
    QCOMPARE(inst->getOccupyAmount(), QStringLiteral("old"));
    QCOMPARE(inst->getSymbolList(), QStringList{QStringLiteral("old")});
    QCOMPARE(inst->getSymbolTradingAccountList(), QStringList{QStringLiteral("old")});
    QCOMPARE(inst->getSymbolSize(), 0);
}

void TestT0InstanceInfo::planFields_data()
{
    QTest::addColumn<VariantMap>("plan");
    QTest::addColumn<QString>("start");
    QTest::addColumn<QString>("end");
    QTest::addColumn<QString>("occupy");

    const QString start = AlgoConst::LabelStartTime;
    const QString end = AlgoConst::LabelEndTime;
    QTest::newRow("only the labelled amount")
        << VariantMap{{kOccupyLabel, QStringLiteral("500000")}} << "" << "" << "500000";
    QTest::newRow("protocol key wins over the label")
        << VariantMap{{kOccupyLabel, QStringLiteral("500000")},
                      {Content::occupyAmount, QStringLiteral("800000")}}
        << "" << "" << "800000";
    QTest::newRow("protocol key present but empty still wins")
        << VariantMap{{kOccupyLabel, QStringLiteral("500000")}, {Content::occupyAmount, QString()}}
        << "" << "" << "";
    QTest::newRow("neither key clears earlier values") << VariantMap{} << "" << "" << "";
    QTest::newRow("plan times as given")
        << VariantMap{{start, QStringLiteral("09:35:00")}, {end, QStringLiteral("14:50:00")},
                      {Content::occupyAmount, 250000.5}}
        << "09:35:00" << "14:50:00" << "250000.5";
    QTest::newRow("numeric times become text")
        << VariantMap{{start, 93500}, {end, 145000}} << "93500" << "145000" << "";
}

void TestT0InstanceInfo::planFields()
{
    QFETCH(VariantMap, plan);
    QFETCH(QString, start);
    QFETCH(QString, end);
    QFETCH(QString, occupy);

    auto inst = makeInstance();
    inst->setT0StartTime(QStringLiteral("old"));
    inst->setT0EndTime(QStringLiteral("old"));
    inst->setOccupyAmount(QStringLiteral("old"));
    inst->initSymbolInfo(contentOf({legRecord(QStringLiteral("600000"))}, plan), {});

    QCOMPARE(inst->getT0StartTime(), start);
    QCOMPARE(inst->getT0EndTime(), end);
    QCOMPARE(inst->getOccupyAmount(), occupy);
}

void TestT0InstanceInfo::legFieldsFromRecord_data()
{
    QTest::addColumn<VariantMap>("record");
    QTest::addColumn<QStringList>("expected");

    const VariantMap full = {{Content::Symbol, "600000"},
                             {Content::Exchange, "SH"},
                             {AlgoConst::LabelTargetQty, 12000},
                             {AlgoConst::LabelBuyType, "limit"},
                             {AlgoConst::LabelSellType, "market"},
                             {Content::TradingAccount, "acc1"},
                             {Algo_Values::AlgoParamId::comment, "note"},
                             {AlgoConst::LabelDeadlineDate, "20240630"}};
    const QString key = kID + QStringLiteral("_600000_All");
    QTest::newRow("every field")
        << full
        << QStringList{kID,   kName,  "600000", "All",  "SH",       "12000",   "limit",
                       "market", key, "acc1",   "fund1", "Fund One", "note", "20240630"};
    VariantMap other = full;
    other.insert(Content::TradingAccount, "acc9");
    other.insert(AlgoConst::LabelTargetQty, "1500");
    QTest::newRow("unknown account, quantity as text")
        << other
        << QStringList{kID,   kName,  "600000", "All", "SH", "1500", "limit",
                       "market", key, "acc9",   "",    "",   "note", "20240630"};
    QTest::newRow("only the symbol")
        << VariantMap{{Content::Symbol, "600000"}}
        << QStringList{kID, kName, "600000", "All", "", "0", "", "", key, "", "", "", "", ""};
}

void TestT0InstanceInfo::legFieldsFromRecord()
{
    QFETCH(VariantMap, record);
    QFETCH(QStringList, expected);

    auto inst = makeInstance();
    inst->initSymbolInfo(contentOf({record}), {});

    QCOMPARE(inst->getSymbolSize(), 1);
    const T0SymbolInfo* leg = t0Leg(*inst, QStringLiteral("600000"));
    QVERIFY2(leg, "the leg is a T0SymbolInfo under instanceID_symbol_All");
    QCOMPARE(legFields(*leg), expected);
}

void TestT0InstanceInfo::legStates_data()
{
    QTest::addColumn<VariantMap>("firstStates");
    QTest::addColumn<VariantMap>("secondStates");
    QTest::addColumn<QString>("parentID");
    QTest::addColumn<QString>("status");

    const QString key = legKey(QStringLiteral("600000"));
    auto state = [](const QString& parent, const QString& status) {
        VariantMap map;
        if (!parent.isNull())
            map.insert(Algo_Fields::HelmStrategy::ClParentOrderID, parent);
        if (!status.isNull())
            map.insert(Strategy::strategyStatus, status);
        return QVariant(map);
    };
    QTest::newRow("no state for the leg") << VariantMap{} << VariantMap{} << "" << "";
    QTest::newRow("state applied")
        << VariantMap{} << VariantMap{{key, state("P1", "1")}} << "P1" << "1";
    QTest::newRow("state of another key ignored")
        << VariantMap{} << VariantMap{{legKey(QStringLiteral("600000"), QStringLiteral("x")),
                                       state("P1", "1")}}
        << "" << "";
    QTest::newRow("known parent ID not cleared")
        << VariantMap{{key, state("P1", "1")}} << VariantMap{{key, state(QString(), "4")}}
        << "P1" << "4";
    QTest::newRow("final leg status kept")
        << VariantMap{{key, state("P1", "2")}} << VariantMap{{key, state("P2", "1")}} << "P2"
        << "2";
    QTest::newRow("early status does not jump to 3")
        << VariantMap{{key, state("P1", "1")}} << VariantMap{{key, state("P1", "3")}} << "P1"
        << "1";
}

void TestT0InstanceInfo::legStates()
{
    QFETCH(VariantMap, firstStates);
    QFETCH(VariantMap, secondStates);
    QFETCH(QString, parentID);
    QFETCH(QString, status);

    auto inst = makeInstance();
    const VariantMap content = contentOf({legRecord(QStringLiteral("600000"))});
    inst->initSymbolInfo(content, firstStates);
    inst->initSymbolInfo(content, secondStates);

    const T0SymbolInfo* leg = t0Leg(*inst, QStringLiteral("600000"));
    QVERIFY(leg);
    QCOMPARE(leg->getClParentID(), parentID);
    QCOMPARE(leg->getStatus(), status);
}

void TestT0InstanceInfo::symbolAndAccountLists_data()
{
    QTest::addColumn<QVariantList>("legs");
    QTest::addColumn<QStringList>("symbols");
    QTest::addColumn<QStringList>("accounts");
    QTest::addColumn<int>("legCount");
    QTest::addColumn<int>("warnings");

    QTest::newRow("distinct, in list order")
        << QVariantList{legRecord("600519", "accB"), legRecord("000001", "accA")}
        << QStringList{"600519", "000001"} << QStringList{"accB", "accA"} << 2 << 0;
    QTest::newRow("repeats listed once")
        << QVariantList{legRecord("600519", "accA"), legRecord("000001", "accA"),
                        legRecord("600519", "accB")}
        << QStringList{"600519", "000001"} << QStringList{"accA", "accB"} << 2 << 0;
    QTest::newRow("case matters")
        << QVariantList{legRecord("sh600519", "acc"), legRecord("SH600519", "ACC")}
        << QStringList{"sh600519", "SH600519"} << QStringList{"acc", "ACC"} << 2 << 0;
    QTest::newRow("underscore in code skipped")
        << QVariantList{legRecord("600_519", "accX"), legRecord("000001", "accA")}
        << QStringList{"000001"} << QStringList{"accA"} << 1 << 1;
}

void TestT0InstanceInfo::symbolAndAccountLists()
{
    QFETCH(QVariantList, legs);
    QFETCH(QStringList, symbols);
    QFETCH(QStringList, accounts);
    QFETCH(int, legCount);
    QFETCH(int, warnings);

    auto inst = makeInstance();
    LogCapture log;
    inst->initSymbolInfo(contentOf(legs), {});

    QCOMPARE(inst->getSymbolList(), symbols);
    QCOMPARE(inst->getSymbolTradingAccountList(), accounts);
    QCOMPARE(inst->getSymbolSize(), legCount);
    QCOMPARE(inst->GetAllSymbols_Ptr<T0SymbolInfo>().size(), legCount);
    QCOMPARE(log.count(QtWarningMsg, QStringLiteral("T0InstanceInfo::initSymbolInfo")), warnings);
}

void TestT0InstanceInfo::reinitialisingKeepsLegs()
{
    auto inst = makeInstance();
    VariantMap first = legRecord(QStringLiteral("600000"));
    first.insert(AlgoConst::LabelTargetQty, 1000);
    inst->initSymbolInfo(contentOf({first}), {});
    T0SymbolInfo* leg = t0Leg(*inst, QStringLiteral("600000"));
    QVERIFY(leg);
    inst->OnRecv_StrategyProgressGatherResponse(
        gather(QStringLiteral("[%1]").arg(progressJson(QStringLiteral("600000"), 30, 20))));
    const QVariantList before = dealt(leg);
    QCOMPARE(before, (QVariantList{30.0, 300.0, 20.0, 220.0}));

    VariantMap second = first;
    second.insert(AlgoConst::LabelTargetQty, 2000);
    second.insert(AlgoConst::LabelBuyType, QStringLiteral("changed"));
    inst->initSymbolInfo(contentOf({second, legRecord(QStringLiteral("000001"))}), {});

    QCOMPARE(t0Leg(*inst, QStringLiteral("600000")), leg);
    QCOMPARE(dealt(leg), before);
    QCOMPARE(leg->targetQty(), 2000.0);
    QCOMPARE(leg->buyType(), QStringLiteral("changed"));
    QVERIFY(t0Leg(*inst, QStringLiteral("000001")));
    QCOMPARE(inst->getSymbolList(), (QStringList{"600000", "000001"}));
}

void TestT0InstanceInfo::nonT0LegIsReplaced()
{
    auto inst = makeInstance();
    auto* plain = new SymbolInfoBase;
    plain->setKey(legKey(QStringLiteral("600000")));
    plain->setSymbol(QStringLiteral("stale"));
    inst->AddSymbolInfo(plain);

    inst->initSymbolInfo(contentOf({legRecord(QStringLiteral("600000"))}), {});

    SymbolInfoBase* now = inst->getSymbolInfo(legKey(QStringLiteral("600000")));
    QVERIFY(now != plain);
    QVERIFY(dynamic_cast<T0SymbolInfo*>(now));
    QCOMPARE(now->symbol(), QStringLiteral("600000"));
    QCOMPARE(plain->symbol(), QStringLiteral("stale")); // untouched, still alive
    QCOMPARE(inst->getSymbolSize(), 1);
}

void TestT0InstanceInfo::progressGather_data()
{
    QTest::addColumn<QString>("status");
    QTest::addColumn<VariantMapList>("records");
    QTest::addColumn<QVariantList>("dealtA"); // leg 600000 afterwards
    QTest::addColumn<QVariantList>("dealtB"); // leg 000001 afterwards
    QTest::addColumn<bool>("final");
    QTest::addColumn<QStringList>("logged");

    const QString a = progressJson(QStringLiteral("600000"), 30, 20);
    const QString b = progressJson(QStringLiteral("000001"), 40, 10);
    const QString noSymbol = QStringLiteral("{\"%1\":50}").arg(Progress::buyDealQty);
    auto list = [](const QStringList& items) {
        return QLatin1Char('[') + items.join(QLatin1Char(',')) + QLatin1Char(']');
    };
    const QVariantList none = {0.0, 0.0, 0.0, 0.0};
    const QVariantList dealtA = {30.0, 300.0, 20.0, 220.0};
    const QVariantList dealtB = {40.0, 400.0, 10.0, 110.0};
    const QString where = QStringLiteral("T0InstanceInfo::OnRecv_StrategyProgressGatherResponse ");

    QTest::newRow("both legs, running")
        << "1" << gather(list({a, b})) << dealtA << dealtB << false << QStringList{};
    QTest::newRow("both legs, complete") << "2" << gather(list({a, b})) << dealtA << dealtB
                                         << true << QStringList{where + "rcv final status"};
    QTest::newRow("empty JSON list, stopped")
        << "5" << gather(QStringLiteral("[]")) << none << none << true << QStringList{};
    QTest::newRow("empty JSON list, running")
        << "1" << gather(QStringLiteral("[]")) << none << none << false << QStringList{};
    QTest::newRow("no record, complete")
        << "2" << VariantMapList{} << none << none << false << QStringList{};
    QTest::newRow("only the first record")
        << "1" << (gather(list({a})) + gather(list({b}))) << dealtA << none << false
        << QStringList{};
    QTest::newRow("bad JSON, complete")
        << "2" << gather(list({a}).chopped(1)) << none << none << false
        << QStringList{"json error: progress json:  " + list({a}).chopped(1)};
    QTest::newRow("element without symbol stops the walk")
        << "2" << gather(list({a, noSymbol, b})) << dealtA << none << false
        << QStringList{where + "symbol is empty"};
    QTest::newRow("unknown leg skipped")
        << "2" << gather(list({progressJson("999999", 1, 1), b})) << none << dealtB << true
        << QStringList{where + "symbol null " + legKey("999999"), where + "rcv final status"};
    QTest::newRow("key built from the record's strategy ID")
        << "1" << gather(list({a}), QStringLiteral("other")) << none << none << false
        << QStringList{where + "symbol null " + legKey("600000", "other")};
}

void TestT0InstanceInfo::progressGather()
{
    QFETCH(QString, status);
    QFETCH(VariantMapList, records);
    QFETCH(QVariantList, dealtA);
    QFETCH(QVariantList, dealtB);
    QFETCH(bool, final);
    QFETCH(QStringList, logged);

    auto inst = makeInstance();
    inst->initSymbolInfo(
        contentOf({legRecord(QStringLiteral("600000")), legRecord(QStringLiteral("000001"))}), {});
    QVERIFY(inst->setStatus(status));

    LogCapture log;
    inst->OnRecv_StrategyProgressGatherResponse(records);

    QCOMPARE(dealt(t0Leg(*inst, QStringLiteral("600000"))), dealtA);
    QCOMPARE(dealt(t0Leg(*inst, QStringLiteral("000001"))), dealtB);
    QCOMPARE(inst->finalProgress(), final);
    for (const QString& line : logged)
        QVERIFY2(log.contains(QtDebugMsg, line), qPrintable(line));
    QCOMPARE(log.contains(QtDebugMsg, QStringLiteral("rcv final status")), final);
}

void TestT0InstanceInfo::copyAndMove_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("copy construct") << 0;
    QTest::newRow("copy assign") << 1;
    QTest::newRow("move construct") << 2;
    QTest::newRow("move assign") << 3;
}

void TestT0InstanceInfo::copyAndMove()
{
    QFETCH(int, kind);

    auto source = makeInstance();
    VariantMap record = legRecord(QStringLiteral("600000"));
    record.insert(AlgoConst::LabelSellType, QStringLiteral("limit"));
    source->initSymbolInfo(contentOf({record}), {});
    source->setT0StartTime(QStringLiteral("09:30"));
    source->setT0EndTime(QStringLiteral("14:55"));
    source->setOccupyAmount(QStringLiteral("300000"));
    T0SymbolInfo* sourceLeg = t0Leg(*source, QStringLiteral("600000"));
    sourceLeg->setSellDealQty(200);
    sourceLeg->setProfitAmount(12.5);

    T0InstanceInfo target;
    target.setT0StartTime(QStringLiteral("stale"));
    target.AddSymbolInfo(new T0SymbolInfo);
    std::unique_ptr<T0InstanceInfo> result;
    {
        // The moved-from object dies before the checks: the result must not
        // depend on anything it owned.
        T0InstanceInfo moved(*source);
        switch (kind) {
        case 0: result = std::make_unique<T0InstanceInfo>(*source); break;
        case 1: target = *source; break;
        case 2: result = std::make_unique<T0InstanceInfo>(std::move(moved)); break;
        case 3: target = std::move(moved); break;
        }
    }
    const T0InstanceInfo& copy = result ? *result : target;

    QCOMPARE(copy.getT0StartTime(), QStringLiteral("09:30"));
    QCOMPARE(copy.getT0EndTime(), QStringLiteral("14:55"));
    QCOMPARE(copy.getOccupyAmount(), QStringLiteral("300000"));
    QCOMPARE(copy.getClassType(), AlgoConst::ClassTypeT0);
    QCOMPARE(copy.getSymbolSize(), 1);
    T0SymbolInfo* leg = t0Leg(copy, QStringLiteral("600000"));
    QVERIFY2(leg, "legs are copied as T0 legs");
    QVERIFY(leg != sourceLeg);
    QCOMPARE(leg->sellType(), QStringLiteral("limit"));
    QCOMPARE(leg->sellDealQty(), 200.0);
    QCOMPARE(leg->profitAmount(), 12.5);

    // A copy owns its legs: changing it leaves the source alone.
    leg->setSellDealQty(300);
    QCOMPARE(sourceLeg->sellDealQty(), 200.0);
}

void TestT0InstanceInfo::registryCreatesT0Instance_data()
{
    QTest::addColumn<bool>("withRecord");
    QTest::newRow("server record: initialised and registered") << true;
    QTest::newRow("empty record: returned unregistered") << false;
}

void TestT0InstanceInfo::registryCreatesT0Instance()
{
    QFETCH(bool, withRecord);
    const QString id = withRecord ? QStringLiteral("t0-created") : QStringLiteral("t0-bare");
    VariantMap record;
    if (withRecord) {
        record = {{Strategy::strategyID, id},
                  {Strategy::strategyName, kName},
                  {Strategy::strategyType, Algo_Values::AlgoGlobalType::T0}};
    }

    InstanceMgr* mgr = InstanceMgr::instance();
    InstanceInfoBase* created =
        mgr->CreateInstance(Algo_Values::AlgoGlobalType::T0, record, QStringLiteral("T0"));
    std::unique_ptr<InstanceInfoBase> owned(withRecord ? nullptr : created);

    QVERIFY(dynamic_cast<T0InstanceInfo*>(created));
    QCOMPARE(created->getClassType(), QStringLiteral("T0"));
    QCOMPARE(mgr->ContainsInstance(id), withRecord);
    if (withRecord) {
        QCOMPARE(created->instanceID(), id);
        mgr->DeleteInstance(id);
    }
    const std::unique_ptr<SymbolInfoBase> leg(
        InstanceMgr::CreateSymbolInfo(Algo_Values::AlgoGlobalType::T0, QString()));
    QVERIFY(dynamic_cast<T0SymbolInfo*>(leg.get()));
}

QTEST_GUILESS_MAIN(TestT0InstanceInfo)
#include "tst_t0instanceinfo.moc"
