// Filling an instance from server records: the first full record, the legs of
// its parameters, query answers and their change flags, detail records, the
// parameter text and the JSON readers behind them. Rows are tables, one line
// each: "name | setup | input | expected", fields joined by "/".

#include "../common/tabletest.h"

namespace {

// After a parameter text: start date-time/run time/continue trading/start at once/end
// date/trading account/fund account/fund name/product. Otherwise: status/alias/name/type/
// start/comment/trade order/mode/market rate/open side/invest type/id/remark/deleted/
// client id/creator/created/base price/"target filled amount progress target amount", the
// times as "dd hh:mm".
QString readBack(InstanceInfoBase& i, const QString& op)
{
    QStringList f;
    if (op == "params") {
        f << i.startDateTime().toString("yyyy-MM-dd hh:mm") << i.runTimeInParam()
          << i.getContinueTrade() << i.getCreateStart() << i.getEndDate()
          << i.getTradingAccount_Inst() << i.getFundAccount_Inst() << i.getFundAccountName_Inst()
          << i.getProductName_Inst();
        return f.join('/');
    }
    f << i.status() << i.instanceAlias() << i.strategyName() << i.instAlgoType()
      << i.startTime().toString("dd hh:mm") << i.getInstanceComments() << i.getInstanceTradeOrder()
      << i.getInstMode() << i.getMarketRate() << i.getOpenSide() << i.getInvestType()
      << i.instanceID() << i.remark() << i.getStrategyDeleted() << i.clInstanceID()
      << i.getCreateUser() << i.getCreateTime().toString("dd hh:mm") << i.getBasePrice()
      << QStringLiteral("%1 %2 %3 %4 %5")
             .arg(i.targetQty())
             .arg(i.filledQty())
             .arg(i.filledBalance())
             .arg(i.progrees())
             .arg(i.targetAmount());
    return f.join('/');
}

// "[T0 ]key/symbol/side/exchange/trading/fund/security/prop/limit/qty/amount/parent/status"
QString describe(const SymbolInfoBase* l)
{
    QStringList f;
    f << l->getKey() << l->symbol() << l->orderSide() << l->exchange() << l->getTradingAccount()
      << l->getFundAccount() << l->getSecurityAccout() << l->entrustProp() << l->limitPrice()
      << QString::number(l->targetQty()) << QString::number(l->targetAmount()) << l->getClParentID()
      << l->getStatus();
    return (dynamic_cast<const T0SymbolInfo*>(l) ? "T0 " : "") + f.join('/');
}

} // namespace

class TestInstanceInit : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        using namespace Algo_Values::AlgoGlobalType;
        KxAlgoDataMgr::instance().setStrategies({AesStrategy("AITWAP", "TWAP", "Normal", "1"),
                                                 AesStrategy("AIPAIR", "Pair", "Normal", "2"),
                                                 AesStrategy("DepositAlgo", {}, deposit, "1"),
                                                 AesStrategy("BasisAlgo", {}, multiStr, "2")});
        HelmBusinessDataInterface::AddAccountInfo({"T1", "F1", "Fund", ""});
        HelmBusinessDataInterface::AddAccountInfo({"T7", "F7", "Fund seven", "Product"});
        HelmBusinessDataInterface::SetDispFactor("BOND1", 10);
    }
    void legs_data();
    void legs();
    void records_data();
    void records();
};

namespace {

// Instance 42 of the algo type; its parameters; its legs in key order ("; "), its target. T1
// belongs to fund F1; BOND1 counts ten times; only 42_600000.SH_1 has a leg state (P1, 1).
const char kLegs[] = R"(
legs from the list, stock limit over limit, targets in display units | | {"SymbolParamKey":[{"Symbol":"600000.SH","OrderSide":"1","Quantity":300,"Exchange":"SH","TradingAccount":"T1","SecurityAccount":"A1","entrustProp":"LIMIT","PriceLimits":"10.00","StockPriceLimit":"10.50","Quantity_Amount":3150},{"Symbol":"BOND1","OrderSide":"2","Quantity":20}]} | 42_600000.SH_1/600000.SH/1/SH/T1/F1/A1/LIMIT/10.50/300/3150/P1/1; 42_BOND1_2/BOND1/2///////20/0// | 500
keys missing in the entry come from the record | | {"SymbolParamKey":[{"Symbol":"A"}],"OrderSide":"2","TradingAccount":"T9","PriceLimits":"5.5","Quantity":100} | 42_A_2/A/2//T9////5.5/100/0// | 100
T0 instance makes T0 legs | T0 | {"SymbolParamKey":[{"Symbol":"600000.SH","OrderSide":"All","Quantity":300}]} | T0 42_600000.SH_All/600000.SH/All///////300/0// | 300
)";

// Setups: "init" (initInfo of the full record with the input's changes), "new" (a query answer
// to a fresh record), "known[ started][ untyped]" (to instance 700 in status 1, of type Normal
// or none, started on the 19th at 09:30), "detail" (to 700, untyped), "params" (a parameter
// text, then a broken one), "param KEY" and "meta" (the JSON readers). A query answer
// "ALGO STATUS TIMEKEY" (alias "a", time 20th 13:00) reads back as "FLAGS: " and the leading
// fields; a JSON error logged as "(json error)". T7 belongs to "Fund seven" F7 of "Product".
const char kRecords[] = R"(
param: text | param comment | {"comment":"abc"} | abc
param: number read as text | param rate | {"rate":0.5} | 0.5
param: key missing | param b | {"a":1} |
param: not an object | param a | [1,2] |
param: broken JSON | param a | {"a": | (json error)
meta: first order info and base price | meta | [{"orderInfo":"ord","basePrice":"10.5"}] | ord-10.5
meta: taken from later elements | meta | [{"orderInfo":"ord"},{"basePrice":3}] | ord-3
meta: neither | meta | [{"x":1}] | -
meta: not an array | meta | {"orderInfo":"ord"} |
init: full record | init | {} | 1/my twap/AITWAP/Normal//hello/Buy/multi/0.2/Open/Hedge/500/remark/0/cl-500/trader01/20 09:15//1000 250 2500.5 0.25 10000
init: broken parameters, mode from the catalogue, unreadable fill 0 | init | {"strategyParas":"not json","FilledQty":"abc"} | 1/my twap/AITWAP/Normal////single////500/remark/0/cl-500/trader01/20 09:15//1000 0 2500.5 0.25 10000
new: no time | new | AITWAP 0 - | 65534: 0/a/AITWAP/Normal/
new: start time | new | AITWAP 0 AlgStartTime | 65535: 0/a/AITWAP/Normal/20 13:00
new: create time only | new | AITWAP 0 AlgCreateTime | 65535: 0/a/AITWAP/Normal/
new: unknown algo refused | new | NoSuchAlgo 2 AlgStartTime | 0: //AITWAP//
known: deposit algo refused | known | DepositAlgo 2 AlgStartTime | 0: 1//AITWAP/Normal/
known: status unchanged, nothing | known | AITWAP 1 - | 0: 1/a/AITWAP/Normal/
known: status changed | known | AITWAP 2 - | 2: 2/a/AITWAP/Normal/
known: status changed, time taken | known started | AITWAP 2 AlgStartTime | 3: 2/a/AITWAP/Normal/20 13:00
known: unchanged keeps a valid time | known started | AITWAP 1 AlgStartTime | 0: 1/a/AITWAP/Normal/19 09:30
known: unchanged replaces an invalid time | known | AITWAP 1 AlgStartTime | 1: 1/a/AITWAP/Normal/20 13:00
known: refused status keeps a valid time | known started | AITWAP 3 AlgStartTime | 0: 1/a/AITWAP/Normal/19 09:30
known: typed instance keeps its name | known | AIPAIR 1 - | 0: 1/a/AITWAP/Normal/
known: untyped instance takes name and type | known untyped | AIPAIR 1 - | 0: 1/a/AIPAIR/Normal/
known: multi-strategy entry replaces both | known | BasisAlgo 1 - | 0: 1/a/BasisAlgo/MultiStr/
detail: refreshes | detail | {"strategyID":"700","strategyName":"AIPAIR","StrategyInstanceAlias":"pair","strategyParas":"{\"comment\":\"c\",\"OpenClose\":\"Close\"}","strategyStatus":"2","clAlgoID":"cl-700","createTime":"20261118-08:00:00","Metadata":"[{\"orderInfo\":\"o\",\"basePrice\":\"1.2\"}]"} | 2/pair/AIPAIR/Normal//c//multi//Close//700///cl-700//18 08:00/o-1.2
detail: another instance's ignored | detail | {"strategyID":"701","strategyName":"AIPAIR","strategyStatus":"2"} | 1//AITWAP/////single////700
params: full date-times | params | {"AlgoStartTime":"2026-11-20 09:30:00","AlgoEndTime":"2026-11-20 14:57:00"} | 2026-11-20 09:30/09:30:00-14:57:00///////
params: times of day, today | params | {"AlgoStartTime":"09:30:00","AlgoEndTime":"11:30:00"} | TODAY 09:30/09:30:00-11:30:00///////
params: no times | params | {"AlgoStartTime":"","AlgoEndTime":""} | ////////
params: unreadable start | params | {"AlgoStartTime":"soon","AlgoEndTime":"11:30:00"} | /-11:30:00///////
params: settings and account | params | {"到期后是否继续交易":"是","创建后是否立即启动":"否","截止日期":"20261231","TradingAccount":"T7"} | //是/否/20261231/T7/F7/Fund seven/Product
)";

const char kFull[] = R"({"strategyID":"500","strategyName":"AITWAP","strategyType":"Normal",
    "strategyStatus":"1","StrategyInstanceAlias":"my twap","TargetQty":1000,"FilledQty":250,
    "DealAmount":2500.5,"Progress":0.25,"TargetAmount":10000,"reMarks":"remark","userID":"trader01",
    "strategyDeleted":"0","AlgCreateTime":"20261120-09:15:00","clAlgoID":"cl-500","strategyParas":
    "{\"comment\":\"hello\",\"traderOrder\":\"Buy\",\"instMode\":\"multi\",\"participationrate\":\"0.2\",\"OpenClose\":\"Open\",\"InvestType\":\"Hedge\"}"})";

} // namespace

void TestInstanceInit::legs_data()
{
    TableTest::addRows(kLegs);
}

void TestInstanceInit::records_data()
{
    TableTest::addRows(kRecords);
}

void TestInstanceInit::legs()
{
    const std::array<QString, 4> c = TableTest::cells<4>();
    QString type = c[0], params = c[1], legs = c[2], target = c[3];
    InstanceInfoBase inst;
    inst.setInstanceID("42"), inst.setInstAlgoType(type);
    const VariantMap content = TableTest::record(params);
    const VariantMap legStates{
        {"42_600000.SH_1", VariantMap{{"ClParentOrderID", "P1"}, {"strategyStatus", "1"}}}};
    inst.initSymbolInfo(content, legStates);
    const QList<SymbolInfoBase*> built = inst.GetAllSymbols_Ptr<SymbolInfoBase>();
    built.first()->setFilledQty(120);
    inst.initSymbolInfo(content, legStates); // again: no new legs, the earlier ones left alone
    QCOMPARE(inst.GetAllSymbols_Ptr<SymbolInfoBase>(), built);
    QCOMPARE(built.first()->filledQty(), 120.0);
    QStringList actual;
    for (const SymbolInfoBase* leg : built)
        actual << describe(leg);
    QCOMPARE(actual.join("; "), legs);
    QCOMPARE(inst.targetQty(), target.toDouble());
}

void TestInstanceInit::records()
{
    const std::array<QString, 3> c = TableTest::cells<3>();
    QString setup = c[0], input = c[1], expected = c[2];
    const QString op = setup.section(' ', 0, 0);
    InstanceInfoBase inst;
    inst.setStrategyName("AITWAP");
    if (op == "known" || op == "detail")
        inst.setInstanceID("700"),
            inst.setInstAlgoType(setup.contains("untyped") || op == "detail" ? "" : "Normal"),
            inst.setStatus("1");
    if (setup.contains("started"))
        inst.setStartTime(QDateTime(QDate(2026, 11, 19), QTime(9, 30)));
    LogCapture log;
    QString actual;
    if (op == "param" || op == "meta") {
        actual = op == "meta" ? inst.fillMetaData(input)
                              : inst.getParamFromJosn(input, setup.section(' ', 1));
        if (log.contains(QtDebugMsg, "getParamFromJosn ###json error info:"))
            actual += "(json error)";
    } else if (op == "init") {
        VariantMap record = TableTest::record(kFull);
        record.insert(TableTest::record(input));
        inst.initInfo(record);
    } else if (op == "detail") {
        inst.OnRect_QueryAlgoStrategyResponse_Detail(TableTest::record(input));
    } else if (op == "params") { // a broken text after it changes nothing
        inst.UpdateParamMap(input), inst.UpdateParamMap("{\"截止日期\":");
    } else {
        const QStringList answer = input.split(' ');
        const VariantMap record{{"strategyName", answer[0]},
                                {"strategyStatus", answer[1]},
                                {answer[2], "20261120-13:00:00"},
                                {"StrategyInstanceAlias", "a"}};
        actual = QString::number(inst.OnRecv_QueryAlgoStrategyResponse(record, op == "new")) + ": ";
    }
    expected.replace("TODAY", QDate::currentDate().toString("yyyy-MM-dd"));
    const QString state = readBack(inst, op).section('/', 0, expected.section(": ", -1).count('/'));
    QCOMPARE(op == "param" || op == "meta" ? actual : actual + state, expected);
}

QTEST_GUILESS_MAIN(TestInstanceInit)
#include "tst_instanceinit.moc"
