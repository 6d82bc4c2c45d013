// Filling an instance from server records: the first full record, the legs of
// its parameters, query answers and their change flags, detail records, and
// the parameter text.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

namespace {

namespace Strategy = Tessel_Fields::Strategy;
namespace Content = Algo_Fields::AlgoInstContentInfo;
namespace HelmKey = Algo_Fields::HelmStrategy;
namespace Progress = Algo_Fields::AlgoInstProgressFields;

const QString kAlgo = QStringLiteral("AITWAP"), kPairAlgo = QStringLiteral("AIPAIR"),
              kMultiAlgo = QStringLiteral("BasisAlgo");

VariantMap fullRecord()
{
    return {{Strategy::strategyID, "500"},
            {Strategy::strategyName, kAlgo},
            {Strategy::strategyType, "Normal"},
            {Strategy::strategyParas,
             "{\"comment\":\"hello\",\"traderOrder\":\"Buy\",\"instMode\":\"multi\","
             "\"participationrate\":\"0.2\",\"OpenClose\":\"Open\",\"InvestType\":\"Hedge\"}"},
            {Strategy::strategyStatus, "1"},
            {Strategy::StrategyInstanceAlias, "my twap"},
            {Progress::TargetQty, 1000},
            {Progress::FilledQty, 250},
            {Progress::DealAmount, 2500.5},
            {Progress::Progress, 0.25},
            {Progress::TargetAmount, 10000},
            {Tessel_Fields::UserAccount::reMarks, "remark"},
            {HelmKey::strategyDeleted, "0"},
            {HelmKey::AlgCreateTime, "20261120-09:15:00"},
            {Helm_Fields::Strategy::clAlgoID, "cl-500"},
            {Tessel_Fields::UserAccount::userID, "trader01"}};
}

// After UpdateParamMap: "start date-time|run time|continue trading|start at once|end date|trading
// account|fund account|fund name|product". Otherwise: "status|alias|name|type|start|comment|trade
// order|mode|market rate|open side|invest type|id|remark|deleted|client id|creator|created|base
// price|target filled amount progress target amount", the times as "dd hh:mm".
QString readBack(InstanceInfoBase& i, const QString& op)
{
    if (op == "params")
        return QStringList{i.startDateTime().toString("yyyy-MM-dd hh:mm"),
                           i.runTimeInParam(),
                           i.getContinueTrade(),
                           i.getCreateStart(),
                           i.getEndDate(),
                           i.getTradingAccount_Inst(),
                           i.getFundAccount_Inst(),
                           i.getFundAccountName_Inst(),
                           i.getProductName_Inst()}
            .join('|');
    return QStringList{i.status(),
                       i.instanceAlias(),
                       i.strategyName(),
                       i.instAlgoType(),
                       i.startTime().toString("dd hh:mm"),
                       i.getInstanceComments(),
                       i.getInstanceTradeOrder(),
                       i.getInstMode(),
                       i.getMarketRate(),
                       i.getOpenSide(),
                       i.getInvestType(),
                       i.instanceID(),
                       i.remark(),
                       i.getStrategyDeleted(),
                       i.clInstanceID(),
                       i.getCreateUser(),
                       i.getCreateTime().toString("dd hh:mm"),
                       i.getBasePrice(),
                       QStringLiteral("%1 %2 %3 %4 %5")
                           .arg(i.targetQty())
                           .arg(i.filledQty())
                           .arg(i.filledBalance())
                           .arg(i.progrees())
                           .arg(i.targetAmount())}
        .join('|');
}

VariantMap security(const QString& symbol, const QString& side, double qty)
{
    return {{Content::Symbol, symbol},
            {Content::OrderSide, side},
            {Content::Quantity, qty},
            {Content::Exchange, "SH"}};
}

// "[T0] key symbol side exchange trading fund security prop limit qty amount parent status"
QString describe(const SymbolInfoBase* l)
{
    return QStringList{dynamic_cast<const T0SymbolInfo*>(l) ? "T0" : "",
                       l->getKey(),
                       l->symbol(),
                       l->orderSide(),
                       l->exchange(),
                       l->getTradingAccount(),
                       l->getFundAccount(),
                       l->getSecurityAccout(),
                       l->entrustProp(),
                       l->limitPrice(),
                       QString::number(l->targetQty()),
                       QString::number(l->targetAmount()),
                       l->getClParentID(),
                       l->getStatus()}
        .join(' ')
        .trimmed();
}

// `op` hands `record` to a fresh record ("init": initInfo; "new": a query answer; "params":
// UpdateParamMap of record["text"]; "param": getParamFromJosn of record["json"] and ["key"];
// "meta": fillMetaData of ["json"]) or to the known instance 700 of AITWAP, of type `type`, in
// status 1, with a start on the 19th at 09:30 when `startKnown` ("known": a query answer;
// "detail"). A query returns `flags`; afterwards the parsed value, or the leading fields of
// readBack, are `state`.
struct Row
{
    QString op, type;
    bool startKnown;
    VariantMap record;
    int flags;
    QString state;
};
struct Legs
{
    QString algoType;
    VariantMap params;
    QStringList legs;
    double instanceTarget;
}; // legs in key order

} // namespace

Q_DECLARE_METATYPE(Row)
Q_DECLARE_METATYPE(Legs)

class TestInstanceInit : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        KxAlgoDataMgr::instance().setStrategies(
            {AesStrategy(kAlgo, "TWAP", "Normal", "1"),
             AesStrategy(kPairAlgo, "Pair", "Normal", "2"),
             AesStrategy("DepositAlgo", {}, Algo_Values::AlgoGlobalType::deposit, "1"),
             AesStrategy(kMultiAlgo, {}, Algo_Values::AlgoGlobalType::multiStr, "2")});
    }
    void initSymbolInfo_data();
    void initSymbolInfo();
    void records_data();
    void records();
};

void TestInstanceInit::initSymbolInfo_data()
{
    QTest::addColumn<Legs>("row");
    const VariantMap full{{Content::Symbol, "600000.SH"},
                          {Content::OrderSide, "1"},
                          {Content::Quantity, 300},
                          {Content::Exchange, "SH"},
                          {Content::TradingAccount, "T1"},
                          {Content::SecurityAccount, "A1"},
                          {Algo_Values::AlgoParamId::entrustProp, "LIMIT"},
                          {Content::PriceLimits, "10.00"},
                          {Content::StockPriceLimit, "10.50"},
                          {Content::Quantity_Amount, 3150}};
    const auto list = [](const QVariantList& securities) {
        return VariantMap{{Content::SymbolParamKey, securities}};
    };
    // The stock limit wins over the limit; T1 belongs to fund F1; leg state for 42_600000.SH_1
    // only.
    QTest::newRow("legs from the list")
        << Legs{"",
                list({full, security("000001.SZ", "2", 200)}),
                {"42_000001.SZ_2 000001.SZ 2 SH      200 0",
                 "42_600000.SH_1 600000.SH 1 SH T1 F1 A1 LIMIT 10.50 300 3150 P1 1"},
                500};
    QTest::newRow("keys missing in the entry come from the record")
        << Legs{"",
                {{Content::SymbolParamKey, QVariantList{VariantMap{{Content::Symbol, "A"}}}},
                 {Content::OrderSide, "2"},
                 {Content::TradingAccount, "T9"},
                 {Content::PriceLimits, "5.5"},
                 {Content::Quantity, 100}},
                {"42_A_2 A 2  T9    5.5 100 0"},
                100};
    QTest::newRow("instance target in display units (BOND1 x10)")
        << Legs{"",
                list({security("BOND1", "1", 30), security("STOCK1", "1", 7)}),
                {"42_BOND1_1 BOND1 1 SH      30 0", "42_STOCK1_1 STOCK1 1 SH      7 0"},
                307};
    QTest::newRow("T0 instance makes T0 legs")
        << Legs{Algo_Values::AlgoGlobalType::T0,
                list({security("600000.SH", "All", 300)}),
                {"T0 42_600000.SH_All 600000.SH All SH      300 0"},
                300};
    QTest::newRow("symbol with '_' skipped")
        << Legs{"",
                list({security("BAD_CODE", "1", 10), security("GOOD", "1", 20)}),
                {"42_GOOD_1 GOOD 1 SH      20 0"},
                20};
}

void TestInstanceInit::initSymbolInfo()
{
    QFETCH(Legs, row);
    HelmBusinessDataInterface::AddAccountInfo({"T1", "F1", "Fund", ""});
    HelmBusinessDataInterface::SetDispFactor("BOND1", 10);
    InstanceInfoBase inst;
    inst.setInstanceID("42"), inst.setInstAlgoType(row.algoType);
    const VariantMap legStates{{"42_600000.SH_1", VariantMap{{HelmKey::ClParentOrderID, "P1"},
                                                             {Strategy::strategyStatus, "1"}}}};
    inst.initSymbolInfo(row.params, legStates);
    const QList<SymbolInfoBase*> built = inst.GetAllSymbols_Ptr<SymbolInfoBase>();
    built.first()->setFilledQty(120);
    inst.initSymbolInfo(row.params,
                        legStates); // again: no new legs, the earlier ones left as they are
    QCOMPARE(inst.GetAllSymbols_Ptr<SymbolInfoBase>(), built);
    QCOMPARE(built.first()->filledQty(), 120.0);
    QStringList actual;
    for (const SymbolInfoBase* leg : built)
        actual << describe(leg);
    QCOMPARE(actual, row.legs);
    QCOMPARE(inst.targetQty(), row.instanceTarget);
}

void TestInstanceInit::records_data()
{
    QTest::addColumn<Row>("row");
    // " + json error" marks the "###json error info:" debug line.
    const auto json = [](const char* op, const char* key, const char* text, const char* value) {
        QTest::newRow((QByteArray(op) + ": " + text).constData())
            << Row{op, {}, false, {{"key", key}, {"json", text}}, 0, value};
    };
    json("param", "comment", "{\"comment\":\"abc\"}", "abc");
    json("param", "rate", "{\"rate\":0.5}", "0.5");
    json("param", "b", "{\"a\":1}", "");
    json("param", "a", "[1,2]", "");
    json("param", "a", "{\"a\":", " + json error");
    json("meta", "", "[{\"orderInfo\":\"ord\",\"basePrice\":\"10.5\"}]", "ord-10.5");
    json("meta", "", "[{\"orderInfo\":\"ord\"},{\"basePrice\":3}]", "ord-3");
    json("meta", "", "[{\"x\":1}]", "-");
    json("meta", "", "{\"orderInfo\":\"ord\"}", "");
    json("meta", "", "[{", "");

    VariantMap broken = fullRecord();
    broken.insert(Strategy::strategyParas, "not json");
    broken.insert(Progress::FilledQty, "abc"); // no number: reads as 0
    QTest::newRow("init: full record") << Row{
        "init",
        {},
        false,
        fullRecord(),
        0,
        "1|my twap|AITWAP|Normal||hello|Buy|multi|0.2|Open|Hedge|500|remark|0|cl-500|trader01|20 "
        "09:15||1000 250 2500.5 0.25 10000"};
    // No mode in the parameters: the catalogue decides (a single-security algo).
    QTest::newRow("init: broken parameters")
        << Row{"init",
               {},
               false,
               broken,
               0,
               "1|my twap|AITWAP|Normal||||single||||500|remark|0|cl-500|trader01|20 09:15||1000 0 "
               "2500.5 0.25 10000"};

    const auto answer = [](const QString& algo, const char* status, const QString& timeKey) {
        return VariantMap{{Strategy::strategyName, algo},
                          {Strategy::strategyStatus, status},
                          {timeKey, "20261120-13:00:00"},
                          {Strategy::StrategyInstanceAlias, "a"}};
    };
    const QString start = HelmKey::AlgStartTime, noTime = QStringLiteral("noTime");
    QTest::newRow("new, no time") << Row{
        "new", {}, false, answer(kAlgo, "0", noTime), 65534, "0|a|AITWAP|Normal|"};
    QTest::newRow("new, start time")
        << Row{"new", {}, false, answer(kAlgo, "0", start), 65535, "0|a|AITWAP|Normal|20 13:00"};
    QTest::newRow("new, create time") << Row{
        "new", {}, false, answer(kAlgo, "0", HelmKey::AlgCreateTime), 65535, "0|a|AITWAP|Normal|"};
    for (const char* algo : {"NoSuchAlgo", "DepositAlgo"}) {
        QTest::addRow("%s, new: refused", algo)
            << Row{"new", {}, false, answer(algo, "2", start), 0, "||AITWAP||"};
        QTest::addRow("%s, known: refused", algo)
            << Row{"known", "Normal", false, answer(algo, "2", start), 0, "1||AITWAP|Normal|"};
    }
    QTest::newRow("status unchanged, nothing")
        << Row{"known", "Normal", false, answer(kAlgo, "1", noTime), 0, "1|a|AITWAP|Normal|"};
    QTest::newRow("status changed")
        << Row{"known", "Normal", false, answer(kAlgo, "2", noTime), 2, "2|a|AITWAP|Normal|"};
    QTest::newRow("status changed, time taken")
        << Row{"known", "Normal", true, answer(kAlgo, "2", start), 3, "2|a|AITWAP|Normal|20 13:00"};
    QTest::newRow("unchanged keeps a valid time")
        << Row{"known", "Normal", true, answer(kAlgo, "1", start), 0, "1|a|AITWAP|Normal|19 09:30"};
    QTest::newRow("unchanged replaces an invalid time") << Row{
        "known", "Normal", false, answer(kAlgo, "1", start), 1, "1|a|AITWAP|Normal|20 13:00"};
    QTest::newRow("refused status keeps a valid time")
        << Row{"known", "Normal", true, answer(kAlgo, "3", start), 0, "1|a|AITWAP|Normal|19 09:30"};
    QTest::newRow("typed instance keeps its name")
        << Row{"known", "Normal", false, answer(kPairAlgo, "1", noTime), 0, "1|a|AITWAP|Normal|"};
    QTest::newRow("untyped instance takes name and type")
        << Row{"known", "", false, answer(kPairAlgo, "1", noTime), 0, "1|a|AIPAIR|Normal|"};
    QTest::newRow("multi-strategy entry replaces both")
        << Row{"known", "Normal",
               false,   answer(kMultiAlgo, "1", noTime),
               0,       "1|a|BasisAlgo|" + Algo_Values::AlgoGlobalType::multiStr + "|"};

    VariantMap detail{{Strategy::strategyID, "700"},
                      {Strategy::strategyName, kPairAlgo},
                      {Strategy::StrategyInstanceAlias, "pair"},
                      {Strategy::strategyParas, "{\"comment\":\"c\",\"OpenClose\":\"Close\"}"},
                      {Strategy::strategyStatus, "2"},
                      {Helm_Fields::Strategy::clAlgoID, "cl-700"},
                      {Tessel_Fields::System::createTime, "20261118-08:00:00"},
                      {HelmKey::Metadata, "[{\"orderInfo\":\"o\",\"basePrice\":\"1.2\"}]"}};
    QTest::newRow("detail refreshes")
        << Row{"detail", "", false,
               detail,   0,  "2|pair|AIPAIR|Normal||c||multi||Close||700|||cl-700||18 08:00|o-1.2"};
    detail.insert(Strategy::strategyID, "701");
    QTest::newRow("detail of another instance ignored")
        << Row{"detail", "", false, detail, 0, "1||AITWAP|||||single||||700"};

    // T7 belongs to fund F7 ("Fund seven") of "Product".
    const auto times = [](const char* from, const char* to) {
        return VariantMap{
            {"text",
             QStringLiteral("{\"AlgoStartTime\":\"%1\",\"AlgoEndTime\":\"%2\"}").arg(from, to)}};
    };
    QTest::newRow("params: full date-times")
        << Row{"params", {},
               false,    times("2026-11-20 09:30:00", "2026-11-20 14:57:00"),
               0,        "2026-11-20 09:30|09:30:00-14:57:00|||||||"};
    QTest::newRow("params: times of day") << Row{
        "params", {},
        false,    times("09:30:00", "11:30:00"),
        0,        QDate::currentDate().toString("yyyy-MM-dd") + " 09:30|09:30:00-11:30:00|||||||"};
    QTest::newRow("params: no times") << Row{"params", {}, false, times("", ""), 0, "||||||||"};
    QTest::newRow("params: unreadable start")
        << Row{"params", {}, false, times("soon", "11:30:00"), 0, "|-11:30:00|||||||"};
    QTest::newRow("params: settings and account")
        << Row{"params",
               {},
               false,
               {{"text", "{\"到期后是否继续交易\":\"是\",\"创建后是否立即启动\":\"否\","
                         "\"截止日期\":\"20261231\",\"TradingAccount\":\"T7\"}"}},
               0,
               "||是|否|20261231|T7|F7|Fund seven|Product"};
}

void TestInstanceInit::records()
{
    QFETCH(Row, row);
    HelmBusinessDataInterface::AddAccountInfo({"T7", "F7", "Fund seven", "Product"});
    InstanceInfoBase inst;
    inst.setStrategyName(kAlgo);
    if (row.op == "known" || row.op == "detail")
        inst.setInstanceID("700"), inst.setInstAlgoType(row.type), inst.setStatus("1");
    if (row.startKnown)
        inst.setStartTime(QDateTime(QDate(2026, 11, 19), QTime(9, 30)));
    if (row.op == "init")
        inst.initInfo(row.record);
    if (row.op == "detail")
        inst.OnRect_QueryAlgoStrategyResponse_Detail(row.record);
    if (row.op == "new" || row.op == "known")
        QCOMPARE(inst.OnRecv_QueryAlgoStrategyResponse(row.record, row.op == "new"), row.flags);
    if (row.op == "params") // a broken text after it changes nothing
        inst.UpdateParamMap(row.record.value("text").toString()),
            inst.UpdateParamMap("{\"截止日期\":");
    LogCapture log;
    const QString json = row.record.value("json").toString();
    QString actual = readBack(inst, row.op).section('|', 0, row.state.count('|'));
    if (row.op == "meta")
        actual = inst.fillMetaData(json);
    if (row.op == "param")
        actual = inst.getParamFromJosn(json, row.record.value("key").toString());
    if (log.contains(QtDebugMsg, "getParamFromJosn ###json error info:"))
        actual += " + json error";
    QCOMPARE(actual, row.state);
}

QTEST_GUILESS_MAIN(TestInstanceInit)
#include "tst_instanceinit.moc"
