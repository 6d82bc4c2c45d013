// Bad-input matrix: malformed records, pushes and texts for every router and
// slot, each sent to a realistic model (the three example sessions replayed,
// plus a rush-limit-up order) that is fingerprinted before and after. A row
// lists every change its input may make: none where the input is refused,
// else the exact fields the library's rules let that input change (a missing
// or mistyped value reads as empty text or 0, NaN passes the regression
// guards, an acknowledged parameter text replaces the old one), and the
// router's result ("=> ..."). The matrix sends 102 malformed inputs, one per
// row; the run ends by printing how many it sent.

#include <algologic.h>

#include "logcapture.h"
#include "replayer.h"
#include "snapshot.h"

#include <QBuffer>
#include <QtTest>

#include <typeinfo>

namespace {

using Print = QMap<QString, QString>; // the model flattened: path -> value

InstanceMgr* mgr()
{
    return InstanceMgr::instance();
}

const QString kLong(100000, QLatin1Char('x'));
const QStringList kOtherIds{"999999", "", kLong}; // IDs rows use that no session registers

// The catalogue of all three sessions (each replaces the one before) and a rush-limit-up
// order that has had one progress report.
const char kSetup[] = R"(
{"op":"catalogue","strategies":[{"name":"AITWAP","alias":"TWAP","algoType":"Normal","underlyingProp":"1"},{"name":"AIVWAP","alias":"VWAP","algoType":"Normal","underlyingProp":"1"},{"name":"AIPOV","alias":"POV","algoType":"Normal","underlyingProp":"1"},{"name":"T0Intraday","alias":"T0","algoType":"T0","underlyingProp":"2"},{"name":"BasisArb","alias":"Basis","algoType":"MultiStr","underlyingProp":"2"},{"name":"RushLimitUp","alias":"Rush","algoType":"Feature","underlyingProp":"1"}]}
{"op":"create","algoType":"Feature","algoName":"RushLimitUp","record":{"strategyID":"400401","strategyName":"RushLimitUp","strategyType":"Feature","strategyStatus":"1","strategyParas":"{\"symbol\":\"600000.SH\",\"orderQty\":9000,\"comment\":\"seal\"}"}}
{"op":"symbolExt","instanceID":"400401","params":{"symbol":"600000.SH","market":"SH","tradingAccount":"880001","side":"1","orderQty":9000},"records":[{"strategyID":"400401"}]}
{"op":"strategyReport","records":[{"strategyID":"400401"},{"reportType":"ui","strategyReport":"{\"symbol\":\"600000.SH\",\"Timestamp\":1,\"filledQty\":3000,\"frontOrderNum\":7}"}]}
)";

// Rows name what JSON cannot hold: "$nan" and "$inf" as whole values are those numbers;
// "$long" is a 100,000-character text, "$deep[" and "$deep{" 10,000 levels of nesting.
QString expandText(QString text)
{
    return text.replace("$long", kLong)
        .replace("$deep[", QString(10000, '['))
        .replace("$deep{", QString("{\"a\":").repeated(10000));
}

QVariant expand(const QVariant& value)
{
    if (value.type() == QVariant::List) {
        QVariantList list = value.toList();
        for (QVariant& item : list)
            item = expand(item);
        return list;
    }
    if (value.type() == QVariant::Map) {
        QVariantMap map = value.toMap();
        for (QVariant& item : map)
            item = expand(item);
        return map;
    }
    const QString text = value.toString();
    if (value.type() != QVariant::String)
        return value;
    return text == "$nan" ? qQNaN() : text == "$inf" ? qInf() : QVariant(expandText(text));
}

QString shown(const QString& text)
{
    return text.size() > 80 ? text.left(12) + "...(" + QString::number(text.size()) + ")" : text;
}

void flatten(const QJsonValue& value, const QString& path, Print& print)
{
    const QJsonObject object = value.toObject();
    for (auto it = object.begin(); it != object.end(); ++it)
        flatten(it.value(), path + '/' + shown(it.key()), print);
    const QJsonArray array = value.toArray();
    for (int i = 0; i < array.size(); ++i)
        flatten(array.at(i), path + '/' + QString::number(i), print);
    if (!value.isObject() && !value.isArray()) {
        print.insert(path, value.isDouble()   ? QString::number(value.toDouble(), 'g', 15)
                           : value.isBool()   ? QString(value.toBool() ? "true" : "false")
                           : value.isString() ? shown(value.toString())
                                              : QString("null")); // a number not finite
    }
}

QString names(const QList<AesStrategy>& strategies)
{
    QStringList list;
    for (const AesStrategy& strategy : strategies)
        list << strategy.name();
    return list.join(',');
}

// Every instance and leg (read under the content lock), what the log manager holds, and the
// authority table through queries that a phantom account or category would change. Paths
// start with the instance ID or, after "@", the leg's key.
Print fingerprint()
{
    Print print;
    QSet<QString> ids(kOtherIds.cbegin(), kOtherIds.cend());
    for (const QJsonValue& value : AlgoReplay::instancesToJson()) {
        QJsonObject instance = value.toObject();
        const QString id = shown(instance.value("instanceID").toString());
        ids.insert(instance.value("instanceID").toString());
        print.insert(id, "instance " + instance.value("classType").toString());
        for (const QJsonValue& leg : instance.take("legs").toArray()) {
            const QString key = '@' + shown(leg.toObject().value("key").toString());
            flatten(leg, key, print);
            print.insert(key, "leg");
        }
        flatten(instance, id, print);
    }
    QJsonObject logs = AlgoReplay::drainLogs(ids); // trade messages stay, the rest is drained
    for (const QJsonValue& message : logs.take("tradeMessages").toArray()) {
        const QByteArray text = QJsonDocument(message.toObject()).toJson(QJsonDocument::Compact);
        QString& count = print["trade " + shown(text)]; // every replay adds the same ones again
        count = QString::number(count.toInt() + 1);
    }
    flatten(logs, "logs", print);
    const StrategyMgr* strategies = StrategyMgr::instance();
    print.insert("authority", names(strategies->GetAuthorityIntersection("algo")) + " | "
                                  + names(strategies->GetAuthorityUnion("algo")));
    return print;
}

// "path=new value" per changed leaf; an instance or leg that came or went is one line,
// "+path class" or "-path".
QStringList changes(const Print& before, const Print& after)
{
    QStringList out;
    QStringList whole;
    const auto covered = [&whole](const QString& path) {
        return std::any_of(whole.cbegin(), whole.cend(),
                           [&](const QString& p) { return path.startsWith(p + '/'); });
    };
    for (auto it = after.cbegin(); it != after.cend(); ++it) {
        const bool object = !before.contains(it.key())
                            && (it.value().startsWith("instance ") || it.value() == "leg");
        if (!covered(it.key()) && before.value(it.key(), "\n") != it.value())
            out << (object ? "+" + it.key() + " " + it.value() : it.key() + "=" + it.value());
        if (object)
            whole << it.key();
    }
    for (auto it = before.cbegin(); it != before.cend(); ++it) {
        if (!after.contains(it.key()) && !covered(it.key()))
            out << "-" + it.key(), whole << it.key();
    }
    return out;
}

// One row a line: "router: what is malformed | argument | input | expected, '; '-separated".
const char kMatrix[] = R"(
query: empty list | | [] |
query: ID a map | | [{"strategyID":{"id":"100103"}}] |
query: ID a number, read as its text | | [{"strategyID":100103,"strategyName":"AIPOV","strategyStatus":"1"}] |
query: unknown algo name | | [{"strategyID":"100103","strategyName":"NoSuchAlgo","strategyStatus":"5"}] |
query: status missing, read as empty | | [{"strategyID":"100103","strategyName":"AIPOV"}] | 100103/status=
query: status NaN | | [{"strategyID":"100103","strategyName":"AIPOV","strategyStatus":"$nan"}] | 100103/status=nan
query: unparsable time over a valid one | | [{"strategyID":"300301","strategyName":"BasisArb","strategyStatus":"0","AlgStartTime":"garbage"}] | 300301/status=0
query: unknown ID, nothing else | | [{"strategyID":"999999"}] | +999999 instance info
query: 100k-character ID | | [{"strategyID":"$long","strategyName":"AIPOV"}] | +xxxxxxxxxxxx...(100000) instance info
query: ID holding _ | | [{"strategyID":"100103_601318.SH_1","strategyName":"AIPOV"}] | +100103_601318.SH_1 instance info
progress: one empty map | | [{}] |
progress: unknown ID | | [{"strategyID":"999999"},{"symbol":"600000.SH","cumQty":1}] |
progress: fill a text | | [{"strategyID":"100101"},{"symbol":"600000.SH","side":"1","orderQty":60000,"cumQty":"abc","StrategyCumAmount":615000,"avgPx":10.25}] | 100101/progrees=0; 100101/standardProgress=0; @100101_600000.SH_1/progress=0; @100101_600000.SH_1/standardProgress=0
progress: fill NaN | | [{"strategyID":"100101"},{"symbol":"600000.SH","side":"1","orderQty":60000,"cumQty":"$nan","StrategyCumAmount":615000,"avgPx":10.25}] | 100101/filledQty=null; 100101/progrees=null; 100101/standardProgress=null; @100101_600000.SH_1/filledQty=null; @100101_600000.SH_1/progress=null; @100101_600000.SH_1/standardProgress=null
progress: fill 1e308 | | [{"strategyID":"100101"},{"symbol":"600000.SH","side":"1","orderQty":60000,"cumQty":1e308,"StrategyCumAmount":615000,"avgPx":10.25}] | 100101/filledQty=1e+308; 100101/progrees=1.66666666666667e+303; 100101/standardProgress=1.66666666666667e+303; @100101_600000.SH_1/filledQty=1e+308; @100101_600000.SH_1/progress=1.66666666666667e+303; @100101_600000.SH_1/standardProgress=1.66666666666667e+303
progress: fill -1e308, a refused regression | | [{"strategyID":"100101"},{"symbol":"600000.SH","side":"1","orderQty":60000,"cumQty":-1e308,"StrategyCumAmount":615000,"avgPx":10.25}] | 100101/progrees=-1.66666666666667e+303; 100101/standardProgress=-1.66666666666667e+303; @100101_600000.SH_1/progress=-1.66666666666667e+303; @100101_600000.SH_1/standardProgress=-1.66666666666667e+303
progress: symbol holding _, the leg has no record | | [{"strategyID":"100101"},{"symbol":"600000_SH","side":"1","orderQty":60000,"cumQty":60000,"StrategyCumAmount":615000,"avgPx":10.25}] | 100101/orderSide_Inst=; @100101_600000.SH_1/dealAvgPrice=0; @100101_600000.SH_1/entrustAmount=0; @100101_600000.SH_1/entrustProgress=0; @100101_600000.SH_1/entrustQty=0; @100101_600000.SH_1/orderSide=; @100101_600000.SH_1/progress=0; @100101_600000.SH_1/standardProgress=0
progress: T0 report deeply nested | | [{"strategyID":"200201","strategyReport":"$deep["}] |
progress: T0 report symbol holding _ | | [{"strategyID":"200201","strategyReport":"[{\"Symbol\":\"600519_SH\",\"buyDealQty\":9}]"}] |
progress: T0 report stale element | | [{"strategyID":"200201","strategyReport":"[{\"Symbol\":\"600519.SH\",\"buyOrderQty\":1,\"buyDealQty\":1}]"}] |
progress: T0 report duplicate keys | | [{"strategyID":"200201","strategyReport":"[{\"Symbol\":\"600519.SH\",\"Symbol\":\"\"}]"}] |
progress: T0 element without order quantities | | [{"strategyID":"200201","strategyReport":"[{\"Symbol\":\"600519.SH\",\"buyDealQty\":1}]"}] | @200201_600519.SH_All/achieveProfit=0; @200201_600519.SH_All/buyAvgPrice=0; @200201_600519.SH_All/buyFee=0; @200201_600519.SH_All/buyOrderQty=0; @200201_600519.SH_All/sellAvgPrice=0; @200201_600519.SH_All/sellFee=0; @200201_600519.SH_All/sellOrderQty=0; @200201_600519.SH_All/targetQty=0
delete: empty list | | [] |
delete: T0 report not JSON | | [{"strategyID":"200201","strategyReport":"deleted"}] |
report: header only | | [{"strategyID":"100101"}] |
report: type a map | | [{"strategyID":"100101"},{"reportType":{"t":"ui"},"strategyReport":"{\"Symbol\":\"600000.SH\",\"OrderSide\":\"1\"}"}] |
report: text deeply nested | | [{"strategyID":"100101"},{"reportType":"ui","strategyReport":"$deep{"}] |
report: symbol holding _ | | [{"strategyID":"100101"},{"reportType":"ui","strategyReport":"{\"Symbol\":\"600000_SH\",\"OrderSide\":\"1\",\"FilledQty\":1}"}] |
report: rush text not JSON | | [{"strategyID":"400401"},{"reportType":"ui","strategyReport":"filledQty=9"}] |
report: rush fill a text, a refused regression | | [{"strategyID":"400401"},{"reportType":"ui","strategyReport":"{\"symbol\":\"600000.SH\",\"filledQty\":\"many\"}"}] | @400401_600000.SH_Buy/lastReportMap/filledQty=many
report: rush queue counts beyond int | | [{"strategyID":"400401"},{"reportType":"ui","strategyReport":"{\"symbol\":\"600000.SH\",\"frontOrderNum\":1e308,\"objectOrderNum\":3e9}"}] | @400401_600000.SH_Buy/lastReportMap/frontOrderNum=1e+308; @400401_600000.SH_Buy/lastReportMap/objectOrderNum=3000000000
report: multi update count beyond int | | [{"strategyID":"300301"},{"reportType":"ui","strategyReport":"{\"UpdateCnt\":5e9}"}] |
status: empty list | 100103 | [] | => 1
status: one empty map | 100103 | [{}] | => 1
status: unknown ID | 999999 | [{"strategyStatus":"1"}] | => 2
status: ID holding _ | 100103_601318.SH_1 | [{"strategyStatus":"1"}] | => 2
status: status a map | 100103 | [{"strategyStatus":{"s":"5"}}] | => 0; 100103/status=
status: leg symbol holding _ | 100103 | [{"strategyStatus":"1"},{"strategyStatus":"2","symbol":"601318_SH","side":"1"}] | => 0
status: leg side holding _ | 100103 | [{"strategyStatus":"1"},{"strategyStatus":"2","symbol":"601318.SH","side":"1_"}] | => 0
status: end time unparsable | 100102 | [{"strategyStatus":"5","AlgEndTime":"not a time"}] | => 0
status: parameters broken JSON | 100103 | [{"strategyStatus":"1","strategyParas":"{broken"}] | => 0; 100103/instanceComments=; 100103/marketRate=; 100103/params={broken
status: parameters a map | 100103 | [{"strategyStatus":"1","strategyParas":{"comment":"x"}}] | => 0
status: comment a list | 100102 | [{"strategyStatus":"5","StrategyAlterComment":["x"]}] | => 0; 100102/remark=
modify: empty list | 100103 | [] | => 0
modify: unknown ID | 999999 | [{"ExecAckStatus":"1"}] | => 0
modify: one empty map, status read as empty | 100103 | [{}] | => 1; 100103/status=
modify: parameters broken JSON | 100103 | [{"ExecAckStatus":"1","strategyStatus":"1","strategyParas":"{broken"}] | => 1; 100103/instanceComments=; 100103/marketRate=; 100103/params={broken
modify: leg symbol holding _ | 100103 | [{"ExecAckStatus":"1","strategyStatus":"1","strategyParas":"{\"SymbolParamKey\":[{\"Symbol\":\"601_318.SH\",\"OrderSide\":\"1\",\"Quantity\":5}]}"}] | => 1; 100103/instanceComments=; 100103/marketRate=; 100103/params={"SymbolParamKey":[{"Symbol":"601_318.SH","OrderSide":"1","Quantity":5}]}
modify: multi parameters broken JSON | 300301 | [{"ExecAckStatus":"1","strategyStatus":"1","strategyParas":"[{"}] | => 1; 300301/params=[{
modify: multi leg symbol holding _ | 300301 | [{"ExecAckStatus":"1","strategyStatus":"1","strategyParas":"{\"SymbolParamKey\":[{\"Symbol\":\"IF_2612\"}]}"}] | => 1; 300301/entrustQtyStr=0; 300301/instanceAlias=; 300301/instanceComments=; 300301/multiTargetQty=0; 300301/multiTotalQty=0; 300301/params={"SymbolParamKey":[{"Symbol":"IF_2612"}]}; 300301/targetQty=0; -300301/multiTradingAccountLst/0; -300301/multiTradingAccountLst/1
modify: rush quantity the text nan | 400401 | [{"ExecAckStatus":"1","strategyStatus":"1","strategyParas":"{\"symbol\":\"600000.SH\",\"orderQty\":\"nan\"}"}] | => 1; 400401/instanceComments=; 400401/params={"symbol":"600000.SH","orderQty":"nan"}; @400401_600000.SH_Buy/targetQty=null
modify: rush parameters duplicate keys | 400401 | [{"ExecAckStatus":"1","strategyStatus":"1","strategyParas":"{\"symbol\":\"600000.SH\",\"orderQty\":1,\"orderQty\":[2]}"}] | => 1; 400401/instanceComments=; 400401/params={"symbol":"600000.SH","orderQty":1,"orderQty":[2]}; @400401_600000.SH_Buy/targetQty=0
params: no instance | | [{"SymbolParamKey":[{"Symbol":"000001.SZ"}]}] |
params: no securities | 100103 | [{}] |
params: security list a map | 100103 | [{"SymbolParamKey":{"Symbol":"000001.SZ"}}] |
params: security list a deeply nested text | 100103 | [{"SymbolParamKey":"$deep["}] |
params: symbol holding _ | 100103 | [{"SymbolParamKey":[{"Symbol":"000001_SZ","OrderSide":"1"}]}] |
params: side holding _ | 100103 | [{"SymbolParamKey":[{"Symbol":"000001.SZ","OrderSide":"_"}]}] |
params: quantity NaN | 100103 | [{"SymbolParamKey":[{"Symbol":"000001.SZ","OrderSide":"1","Quantity":"$nan"}]}] | 100103/entrustQtyStr=nan; 100103/symbolSize=2; 100103/targetQty=null; +@100103_000001.SZ_1 leg
params: 100k-character symbol | 100103 | [{"SymbolParamKey":[{"Symbol":"$long","OrderSide":"1"}]}] | 100103/symbolSize=2; +@100103_xxxxx...(100009) leg
params: T0 empty security list | 200201 | [{"SymbolParamKey":[]}] |
params: T0 only symbol holds _ | 200201 | [{"SymbolParamKey":[{"Symbol":"600_519.SH"}]}] |
params: rush symbol holding _ | 400401 | [{"symbol":"600_000.SH","orderQty":1}] |
create: empty record, rush | Feature | [{}] | => RushLimitUpInstanceInfo unregistered
create: empty record, type in lower case | feature | [] | => InstanceInfoBase unregistered
create: rush record without ID | Feature | [{"strategyName":"RushLimitUp"}] | => RushLimitUpInstanceInfo registered; + instance info
create: rush record, parameters deeply nested | Feature | [{"strategyID":"400402","strategyParas":"$deep{"}] | => RushLimitUpInstanceInfo registered; +400402 instance info
timer: 100k-character argument | $long | [] |
timer: price NaN | 600519.SH=$nan | [] | @200201_600519.SH_All/profitAmount=null
timer: price 1e308 on a closed position | 600519.SH=1e308 | [] |
gather: push a map | | {"reportType":"console","strategyID":"100101","strategyReport":"x"} |
gather: record without ID ends the push | | [{"reportType":"console","strategyID":"100101","strategyReport":"a"},{"reportType":"console","strategyReport":"b"},{"reportType":"console","strategyID":"100101","strategyReport":"c"}] | logs/console/100101/0=a
gather: console text empty | | [{"reportType":"console","strategyID":"100101","strategyReport":""}] |
gather: console text a map | | [{"reportType":"console","strategyID":"100101","strategyReport":{"a":1}}] |
gather: 100k-character console line | | [{"reportType":"console","strategyID":"100101","strategyReport":"$long"}] | logs/console/100101/0=xxxxxxxxxxxx...(100000)
gather: ui text an array, kept as raw text | | [{"reportType":"ui","strategyID":"100101","strategyReport":"[1]"}] | logs/progress/100101/0=[1]
gather: ui member a number | | [{"reportType":"ui","strategyID":"100101","strategyReport":"{\"progressReportMap\":{\"k\":5}}"}] | logs/progress/100101/0={}
gather: ui members duplicate | | [{"reportType":"ui","strategyID":"100101","strategyReport":"{\"progressReportMap\":{\"k\":{\"a\":1},\"k\":{\"a\":2}}}"}] | logs/progress/100101/0={"a":2}
gather: trade text not JSON | | [{"reportType":"tradeMsg","strategyID":"100101","strategyReport":"Price=1"}] |
gather: trade symbol holding _ | | [{"reportType":"tradeMsg","strategyID":"100101","strategyReport":"{\"Symbol\":\"600_000\"}"}] | trade {"Symbol":"600_000","strategyID":"100101","symbol":"600_000"}=1
gather: unknown instance | | [{"reportType":"message","strategyID":"999999","strategyReport":"m"}] | logs/messages/999999/0=m
t0report: text broken JSON, next taken | | [{"reportType":"ui","strategyID":"200201","strategyReport":"{"},{"reportType":"ui","strategyID":"200201","strategyReport":"{\"progressReportMap\":{\"k\":{}}}"}] | logs/progress/200201/0={}
t0report: text deeply nested | | [{"reportType":"ui","strategyID":"200201","strategyReport":"$deep["}] |
t0report: text without report map | | [{"reportType":"ui","strategyID":"200201","strategyReport":"[1]"}] |
t0report: console ends the push | | [{"reportType":"console","strategyID":"200201","strategyReport":"x"},{"reportType":"ui","strategyID":"200201","strategyReport":"{\"progressReportMap\":{\"k\":{}}}"}] |
t0report: ID a map ends the push | | [{"reportType":"ui","strategyID":{},"strategyReport":"{}"}] |
strategy: node of an unknown account | node | ["nobody","AITWAP","algo"] | =>
strategy: authority in other letter case | has | ["880001","aitwap","algo"] | => 0
strategy: names with an unknown account | names | [["880001","nobody"],"algo"] | =>
strategy: names of a repeated account | names | [["880001","880001"],"algo"] | => AIPOV,AITWAP,AIVWAP
strategy: accounts of an algo holding _ | accounts | ["AI_TWAP","algo"] | =>
strategy: aliases of a 100k-character account | alias | ["$long","algo"] | =>
strategy: union of an unknown category | union | ["ALGO"] | =>
strategy: symbol type of a 100k-character name | symbolType | ["$long"] | => 0
trans: empty text | | | => error
trans: not JSON | | Price=1;Qty=2 | => error
trans: an array | | [{"a":1}] | => error
trans: number out of range | | {"a":1e999} | => error
trans: 10,000 levels of [ | | {"a":$deep[ | => error
trans: 10,000 levels of { | | $deep{ | => error
trans: duplicate member holding a list | | {"a":[1],"a":[2]} | => {"a":[2]}
trans: 100k-character member | | {"$long":"$long"} | => {"xxxxxxxxxx...(200007)
)";

// Sends a row's input to its router or slot; returns the result, null where there is none.
QString send(const QString& router, const QString& arg, const QString& input, const QVariant& push)
{
    const QVariantList args = push.toList(); // records, or StrategyMgr arguments
    VariantMapList records;
    for (const QVariant& item : args)
        records << item.toMap();
    const QString a0 = args.value(0).toString();
    const QString a1 = args.value(1).toString();
    const QString a2 = args.value(2).toString();
    const StrategyMgr* s = StrategyMgr::instance();
    if (router == "query")
        mgr()->OnRecv_QueryAlgoStrategyResponse(records);
    else if (router == "progress")
        mgr()->OnRecv_StrategyProgressGatherResponse(records);
    else if (router == "report")
        mgr()->OnRecv_StrategyReportResponse(records);
    else if (router == "delete")
        mgr()->OnRecv_DeleteAlgoInstanceResponse(records);
    else if (router == "gather")
        LogMgr::instance()->slotRecvGatherStrategyReport(push);
    else if (router == "t0report")
        LogMgr::instance()->slotRecvT0ProgressPerformanceReport(push);
    else if (router == "timer" && arg.contains('=')) // a quote, then a tick
        CommonQuotaHandler::instance().SetLatestPrice(arg.section('=', 0, 0),
                                                      expand(arg.section('=', 1)).toDouble());
    if (router == "timer")
        mgr()->slotCalculateTimer(arg);
    if (router == "params") {
        AlgoLogic::WriteLocker locker(mgr()->getLocker()); // the host holds what it needs
        InstanceInfoBase* inst = mgr()->GetInstanceInfoForAllType().value(arg);
        mgr()->UpdateSymbolExtInfoByParams(inst, records.value(0), records);
    } else if (router == "status") {
        return QString::number(mgr()->OnRecv_InstStatusUpdate(arg, records));
    } else if (router == "modify") {
        return QString::number(mgr()->onRecv_InstModifyPush(arg, records));
    } else if (router == "create") {
        InstanceInfoBase* made = mgr()->CreateInstance(arg, records.value(0), "RushLimitUp");
        const bool kept = mgr()->GetInstanceInfoForAllType().values().contains(made);
        const QString cls = QString(typeid(*made).name()).remove(QRegularExpression("^\\d+"));
        if (!kept)
            delete made; // nobody else holds an unregistered object
        return cls + (kept ? " registered" : " unregistered");
    } else if (router == "trans") {
        VariantMap out{{"stale", 1}}; // must not survive
        const QString error = HelmUtils::TransStr2Map(expandText(input), out);
        const QJsonDocument map(QJsonObject::fromVariantMap(out));
        return error.isEmpty() ? shown(map.toJson(QJsonDocument::Compact))
                               : QString(out.isEmpty() ? "error" : "error, map kept");
    } else if (router == "strategy") {
        const QStringList accounts = args.value(0).toStringList();
        return arg == "node"       ? s->GetAlgoNode(a0, a1, a2)
               : arg == "has"      ? QString::number(s->hasCorrespAuthority(a0, a1, a2))
               : arg == "names"    ? s->GetAuthorityNameIntersection(accounts, a1).join(',')
               : arg == "accounts" ? s->GetAuthorityAccountList(a0, a1).join(',')
               : arg == "alias"    ? s->GetAuthorityAlgoAlias(a0, a1).join(',')
               : arg == "union"    ? names(s->GetAuthorityUnion(a0))
                                   : QString::number(s->GetAlgoSymbolType(a0));
    }
    return QString();
}

int g_sent = 0;

} // namespace

class TestBadInput : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanupTestCase() { qInfo("bad-input matrix: %d malformed inputs sent", g_sent); }
    void matrix_data();
    void matrix();
};

// A fresh model for every row, so that rows which legitimately change it steer no other.
void TestBadInput::init()
{
    LogCapture quiet;
    static QString errors;
    static QTextStream errorStream(&errors);
    static AlgoReplay::Replayer replayer(AlgoReplay::ReplayOptions(), errorStream); // + managers
    for (const QString& id : mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown))
        mgr()->DeleteInstance(id);
    for (const char* session : {"twap-morning", "t0-day", "basis-trade"})
        replayer.replayFile(QFINDTESTDATA(QString("../../examples/%1.jsonl").arg(session)));
    QBuffer setup;
    setup.setData(kSetup);
    setup.open(QIODevice::ReadOnly);
    replayer.replayDevice(setup, "setup");
    QVERIFY2(replayer.stats().badLines == 0 && !replayer.stats().unreadable, qPrintable(errors));
    fingerprint(); // drains what the sessions logged
}

void TestBadInput::matrix_data()
{
    QTest::addColumn<QStringList>("row");
    for (const QString& line : QString(kMatrix).split('\n', Qt::SkipEmptyParts))
        QTest::newRow(qPrintable(line.section(" |", 0, 0))) << line.split(" |");
}

void TestBadInput::matrix()
{
    QFETCH(QStringList, row);
    const QString router = row.value(0).section(':', 0, 0);
    const QString input = row.value(2).trimmed();
    const QStringList expected = row.value(3).trimmed().split("; ", Qt::SkipEmptyParts);
    QJsonParseError error{0, QJsonParseError::NoError};
    const QVariant push = router == "trans" // raw text, not records
                              ? QVariant()
                              : expand(QJsonDocument::fromJson(input.toUtf8(), &error).toVariant());
    QVERIFY2(error.error == QJsonParseError::NoError, "row input not JSON");
    QStringList actual;
    {
        LogCapture log; // every refusal is logged; that is not under test here
        const Print before = fingerprint();
        const QString result = send(router, expandText(row.value(1).trimmed()), input, push);
        actual = changes(before, fingerprint());
        if (!result.isNull() || router == "strategy")
            actual.prepend(("=> " + result).trimmed());
    }
    ++g_sent;
    if (actual != expected)
        qInfo().noquote() << "changes:" << actual.join("; ");
    QCOMPARE(actual, expected);
}

QTEST_GUILESS_MAIN(TestBadInput)
#include "tst_badinput.moc"
