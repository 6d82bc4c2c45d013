// Bad-input matrix: malformed records, pushes and texts for every router and
// slot, each sent to a realistic model (the three example sessions replayed,
// plus a rush-limit-up order) that is fingerprinted before and after. A row
// lists every change its input may make: none where the input is refused,
// else the exact fields the library's rules let that input change (a missing
// or mistyped value reads as empty text or 0, NaN passes the regression
// guards, an acknowledged parameter text replaces the old one), and the
// router's result ("=> ..."). The matrix sends 0 malformed inputs, one per
// row; the run ends by printing how many it sent.

#include <algologic.h>

#include "logcapture.h"
#include "replayer.h"
#include "snapshot.h"

#include <QBuffer>
#include <QtTest>

#include <functional>
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

// "@gatherT{...}" is this base with those members put into its last record: the TWAP's last
// gather answer, which replayed as it is changes nothing.
const char kGatherT[] = R"([{"strategyID":"100101"},{"symbol":"600000.SH","side":"1",)"
                        R"("orderQty":60000,"cumQty":60000,"StrategyCumAmount":615000,"avgPx":10.25}])";

// Rows name what JSON cannot hold: "$nan", "$inf" and "$-inf" as whole values are those
// numbers; "$long" is a 100,000-character text, "$deep[" and "$deep{" 10,000 nesting levels.
QString expandText(QString text)
{
    return text.replace("$long", kLong)
        .replace("$deep[", QString(10000, '['))
        .replace("$deep{", QString("{\"a\":").repeated(10000));
}

QVariant expand(const QVariant& value)
{
    if (value.type() == QVariant::List || value.type() == QVariant::Map) {
        QVariantList list = value.toList();
        QVariantMap map = value.toMap();
        for (QVariant& item : list)
            item = expand(item);
        for (QVariant& item : map)
            item = expand(item);
        return value.type() == QVariant::List ? QVariant(list) : QVariant(map);
    }
    const QMap<QString, double> numbers{{"$nan", qQNaN()}, {"$inf", qInf()}, {"$-inf", -qInf()}};
    const QString text = value.toString();
    if (value.type() != QVariant::String)
        return value;
    return numbers.contains(text) ? QVariant(numbers.value(text)) : QVariant(expandText(text));
}

QVariant parse(const QString& input)
{
    const bool based = input.startsWith("@gatherT");
    QJsonParseError error;
    const QVariant value = QJsonDocument::fromJson(input.mid(based ? 8 : 0).toUtf8(), &error).toVariant();
    if (error.error != QJsonParseError::NoError)
        qFatal("bad row input %s: %s", qPrintable(input), qPrintable(error.errorString()));
    if (!based)
        return expand(value);
    QVariantList base = QJsonDocument::fromJson(kGatherT).toVariant().toList();
    QVariantMap last = base.takeLast().toMap();
    last.insert(value.toMap());
    return expand(base << last);
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
// authority table through queries that a phantom account or category would change.
Print fingerprint()
{
    Print print;
    for (const QJsonValue& value : AlgoReplay::instancesToJson()) {
        QJsonObject instance = value.toObject();
        const QString id = shown(instance.value("instanceID").toString());
        print.insert(id, "instance " + instance.value("classType").toString());
        for (const QJsonValue& leg : instance.take("legs").toArray()) {
            const QString key = '@' + shown(leg.toObject().value("key").toString());
            print.insert(key, "leg");
            flatten(leg, key, print);
        }
        flatten(instance, id, print);
    }
    QSet<QString> ids(kOtherIds.cbegin(), kOtherIds.cend());
    for (const QString& id : mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown))
        ids.insert(id);
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

// "path=new value" per changed leaf, a path starting with the instance ID or, after "@", the
// leg's key; an instance or leg that came or went is one line, "+id class" or "-id".
QStringList changes(const Print& before, const Print& after)
{
    QStringList out;
    QStringList whole;
    const auto covered = [&whole](const QString& path) {
        return std::any_of(whole.cbegin(), whole.cend(),
                           [&](const QString& p) { return path.startsWith(p + '/'); });
    };
    for (auto it = after.cbegin(); it != after.cend(); ++it) {
        if (covered(it.key()) || before.value(it.key(), "\n") == it.value())
            continue;
        const bool object = !before.contains(it.key())
                         && (it.value().startsWith("instance ") || it.value() == "leg");
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

// One row a line: "router: what is malformed | argument | input | expected, '; '-separated",
// and for a library fault a fifth part naming it: the row expects what the rules demand.
const char kMatrix[] = R"(
query: empty list | | [] |
query: one empty map | | [{}] |
query: elements that are no maps | | [1,"100101",[{"strategyID":"100101"}]] |
query: ID a map | | [{"strategyID":{"id":"100103"}}] |
query: ID a list | | [{"strategyID":["100103"]}] |
query: ID a number, read as its text | | [{"strategyID":100103,"strategyName":"AIPOV","strategyStatus":"1"}] |
query: unknown algo name | | [{"strategyID":"100103","strategyName":"NoSuchAlgo","strategyStatus":"5"}] |
query: status missing on a final instance | | [{"strategyID":"100101","strategyName":"AITWAP"}] |
query: status missing, read as empty | | [{"strategyID":"100103","strategyName":"AIPOV"}] | 100103/status=
query: status a map | | [{"strategyID":"100103","strategyName":"AIPOV","strategyStatus":{"s":"5"}}] | 100103/status=
query: status NaN | | [{"strategyID":"100103","strategyName":"AIPOV","strategyStatus":"$nan"}] | 100103/status=nan
query: deleted flag a list | | [{"strategyID":"100103","strategyName":"AIPOV","strategyStatus":"1","strategyDeleted":["1"]}] |
query: unparsable time over a valid one | | [{"strategyID":"300301","strategyName":"BasisArb","strategyStatus":"0","AlgStartTime":"garbage"}] | 300301/status=0 | an unparsable time in a query answer replaces a valid one
query: unknown ID, nothing else | | [{"strategyID":"999999"}] | +999999 instance info
query: 100k-character ID | | [{"strategyID":"$long","strategyName":"AIPOV"}] | +xxxxxxxxxxxx...(100000) instance info
query: ID holding _ | | [{"strategyID":"100103_601318.SH_1","strategyName":"AIPOV"}] | +100103_601318.SH_1 instance info
progress: empty list | | [] |
progress: one empty map | | [{}] |
progress: unknown ID | | [{"strategyID":"999999"},{"symbol":"600000.SH","cumQty":1}] |
progress: ID a list | | [{"strategyID":["100101"]},{"symbol":"600000.SH","cumQty":1}] |
progress: 100k-character ID | | [{"strategyID":"$long"}] |
progress: fill a text | | @gatherT{"cumQty":"abc"} | 100101/progrees=0; 100101/standardProgress=0; @100101_600000.SH_1/progress=0; @100101_600000.SH_1/standardProgress=0
progress: fill NaN | | @gatherT{"cumQty":"$nan"} | 100101/filledQty=null; 100101/progrees=null; 100101/standardProgress=null; @100101_600000.SH_1/filledQty=null; @100101_600000.SH_1/progress=null; @100101_600000.SH_1/standardProgress=null
progress: fill 1e308 | | @gatherT{"cumQty":1e308} | 100101/filledQty=1e+308; 100101/progrees=1.66666666666667e+303; 100101/standardProgress=1.66666666666667e+303; @100101_600000.SH_1/filledQty=1e+308; @100101_600000.SH_1/progress=1.66666666666667e+303; @100101_600000.SH_1/standardProgress=1.66666666666667e+303
progress: fill -1e308, a refused regression | | @gatherT{"cumQty":-1e308} | 100101/progrees=-1.66666666666667e+303; 100101/standardProgress=-1.66666666666667e+303; @100101_600000.SH_1/progress=-1.66666666666667e+303; @100101_600000.SH_1/standardProgress=-1.66666666666667e+303
progress: amount inf | | @gatherT{"StrategyCumAmount":"$inf"} | 100101/filledBalance=null; @100101_600000.SH_1/dealBalance=null; @100101_600000.SH_1/entrustAmount=null
progress: symbol holding _, the leg has no record | | @gatherT{"symbol":"600000_SH"} | 100101/orderSide_Inst=; @100101_600000.SH_1/dealAvgPrice=0; @100101_600000.SH_1/entrustAmount=0; @100101_600000.SH_1/entrustProgress=0; @100101_600000.SH_1/entrustQty=0; @100101_600000.SH_1/orderSide=; @100101_600000.SH_1/progress=0; @100101_600000.SH_1/standardProgress=0
progress: record a list | | [{"strategyID":"100101"},[1,2]] | 100101/orderSide_Inst=; 100101/progrees=0; 100101/standardProgress=0; @100101_600000.SH_1/dealAvgPrice=0; @100101_600000.SH_1/entrustAmount=0; @100101_600000.SH_1/entrustProgress=0; @100101_600000.SH_1/entrustQty=0; @100101_600000.SH_1/orderSide=; @100101_600000.SH_1/progress=0; @100101_600000.SH_1/standardProgress=0
progress: T0 report broken JSON | | [{"strategyID":"200201","strategyReport":"[{\"Symbol\":"}] |
progress: T0 report deeply nested | | [{"strategyID":"200201","strategyReport":"$deep["}] |
progress: T0 report an object | | [{"strategyID":"200201","strategyReport":"{\"Symbol\":\"600519.SH\"}"}] |
progress: T0 report symbol holding _ | | [{"strategyID":"200201","strategyReport":"[{\"Symbol\":\"600519_SH\",\"buyDealQty\":9}]"}] |
progress: T0 report stale element | | [{"strategyID":"200201","strategyReport":"[{\"Symbol\":\"600519.SH\",\"buyOrderQty\":1,\"buyDealQty\":1}]"}] |
progress: T0 report duplicate keys | | [{"strategyID":"200201","strategyReport":"[{\"Symbol\":\"600519.SH\",\"Symbol\":\"\"}]"}] |
progress: T0 element without order quantities | | [{"strategyID":"200201","strategyReport":"[{\"Symbol\":\"600519.SH\",\"buyDealQty\":1}]"}] | @200201_600519.SH_All/achieveProfit=0; @200201_600519.SH_All/buyAvgPrice=0; @200201_600519.SH_All/buyFee=0; @200201_600519.SH_All/buyOrderQty=0; @200201_600519.SH_All/sellAvgPrice=0; @200201_600519.SH_All/sellFee=0; @200201_600519.SH_All/sellOrderQty=0; @200201_600519.SH_All/targetQty=0
delete: empty list | | [] |
delete: unknown ID | | [{"strategyID":"999999"}] |
delete: ID a map | | [{"strategyID":{"a":"100101"}}] |
delete: T0 report not JSON | | [{"strategyID":"200201","strategyReport":"deleted"}] |
report: empty list | | [] |
report: header only | | [{"strategyID":"100101"}] |
report: unknown ID | | [{"strategyID":"999999"},{"reportType":"ui","strategyReport":"{}"}] |
report: type a map | | [{"strategyID":"100101"},{"reportType":{"t":"ui"},"strategyReport":"{\"Symbol\":\"600000.SH\",\"OrderSide\":\"1\"}"}] |
report: text broken JSON | | [{"strategyID":"100101"},{"reportType":"ui","strategyReport":"{\"Symbol\""}] |
report: text deeply nested | | [{"strategyID":"100101"},{"reportType":"ui","strategyReport":"$deep{"}] |
report: text a list | | [{"strategyID":"100101"},{"reportType":"ui","strategyReport":["{}"]}] |
report: symbol holding _ | | [{"strategyID":"100101"},{"reportType":"ui","strategyReport":"{\"Symbol\":\"600000_SH\",\"OrderSide\":\"1\",\"FilledQty\":1}"}] |
report: rush text not JSON | | [{"strategyID":"400401"},{"reportType":"ui","strategyReport":"filledQty=9"}] |
report: rush fill a text, a refused regression | | [{"strategyID":"400401"},{"reportType":"ui","strategyReport":"{\"symbol\":\"600000.SH\",\"filledQty\":\"many\"}"}] | @400401_600000.SH_Buy/lastReportMap/filledQty=many
report: rush queue counts beyond int | | [{"strategyID":"400401"},{"reportType":"ui","strategyReport":"{\"symbol\":\"600000.SH\",\"frontOrderNum\":1e308,\"objectOrderNum\":3e9}"}] | @400401_600000.SH_Buy/lastReportMap/frontOrderNum=1e+308; @400401_600000.SH_Buy/lastReportMap/objectOrderNum=3000000000 | a queue count beyond int is stored as garbage
report: multi text an array | | [{"strategyID":"300301"},{"reportType":"ui","strategyReport":"[1]"}] |
report: multi update count beyond int | | [{"strategyID":"300301"},{"reportType":"ui","strategyReport":"{\"UpdateCnt\":5e9}"}] | | an update count beyond int wraps and is applied
status: empty list | 100103 | [] | => 1
status: one empty map | 100103 | [{}] | => 1
status: unknown ID | 999999 | [{"strategyStatus":"1"}] | => 2
status: empty ID | | [{"strategyStatus":"1"}] | => 2
status: 100k-character ID | $long | [{"strategyStatus":"1"}] | => 2
status: ID holding _ | 100103_601318.SH_1 | [{"strategyStatus":"1"}] | => 2
status: status a map | 100103 | [{"strategyStatus":{"s":"5"}}] | => 0; 100103/status=
status: leg symbol holding _ | 100103 | [{"strategyStatus":"1"},{"strategyStatus":"2","symbol":"601318_SH","side":"1"}] | => 0
status: leg side holding _ | 100103 | [{"strategyStatus":"1"},{"strategyStatus":"2","symbol":"601318.SH","side":"1_"}] | => 0
status: leg record a list | 100103 | [{"strategyStatus":"1"},["601318.SH"]] | => 0
status: end time unparsable | 100102 | [{"strategyStatus":"5","AlgEndTime":"not a time"}] | => 0
status: parameters broken JSON | 100103 | [{"strategyStatus":"1","strategyParas":"{broken"}] | => 0; 100103/instanceComments=; 100103/marketRate=; 100103/params={broken
status: parameters deeply nested | 100103 | [{"strategyStatus":"1","strategyParas":"$deep{"}] | => 0; 100103/instanceComments=; 100103/marketRate=; 100103/params={"a":{"a":{"...(50000)
status: parameters a map | 100103 | [{"strategyStatus":"1","strategyParas":{"comment":"x"}}] | => 0
status: comment a list | 100102 | [{"strategyStatus":"5","StrategyAlterComment":["x"]}] | => 0; 100102/remark=
modify: empty list | 100103 | [] | => false
modify: unknown ID | 999999 | [{"ExecAckStatus":"1"}] | => false
modify: 100k-character ID | $long | [{"ExecAckStatus":"1"}] | => false
modify: one empty map, status read as empty | 100103 | [{}] | => true; 100103/status=
modify: one empty map, multi | 300301 | [{}] | => true
modify: one empty map, rush | 400401 | [{}] | => true
modify: parameters broken JSON | 100103 | [{"ExecAckStatus":"1","strategyStatus":"1","strategyParas":"{broken"}] | => true; 100103/instanceComments=; 100103/marketRate=; 100103/params={broken
modify: leg symbol holding _ | 100103 | [{"ExecAckStatus":"1","strategyStatus":"1","strategyParas":"{\"SymbolParamKey\":[{\"Symbol\":\"601_318.SH\",\"OrderSide\":\"1\",\"Quantity\":5}]}"}] | => true; 100103/instanceComments=; 100103/marketRate=; 100103/params={"SymbolParamKey":[{"Symbol":"601_318.SH","OrderSide":"1","Quantity":5}]}
modify: multi parameters broken JSON | 300301 | [{"ExecAckStatus":"1","strategyStatus":"1","strategyParas":"[{"}] | => true; 300301/params=[{
modify: multi leg symbol holding _ | 300301 | [{"ExecAckStatus":"1","strategyStatus":"1","strategyParas":"{\"SymbolParamKey\":[{\"Symbol\":\"IF_2612\"}]}"}] | => true; 300301/entrustQtyStr=0; 300301/instanceAlias=; 300301/instanceComments=; 300301/multiTargetQty=0; 300301/multiTotalQty=0; 300301/params={"SymbolParamKey":[{"Symbol":"IF_2612"}]}; 300301/targetQty=0; -300301/multiTradingAccountLst/0; -300301/multiTradingAccountLst/1
modify: rush parameters deeply nested | 400401 | [{"ExecAckStatus":"1","strategyStatus":"1","strategyParas":"$deep["}] | => true; 400401/params=[[[[[[[[[[[[...(10000)
modify: rush quantity the text nan | 400401 | [{"ExecAckStatus":"1","strategyStatus":"1","strategyParas":"{\"symbol\":\"600000.SH\",\"orderQty\":\"nan\"}"}] | => true; 400401/instanceComments=; 400401/params={"symbol":"600000.SH","orderQty":"nan"}; @400401_600000.SH_Buy/targetQty=null
modify: rush parameters duplicate keys | 400401 | [{"ExecAckStatus":"1","strategyStatus":"1","strategyParas":"{\"symbol\":\"600000.SH\",\"orderQty\":1,\"orderQty\":[2]}"}] | => true; 400401/instanceComments=; 400401/params={"symbol":"600000.SH","orderQty":1,"orderQty":[2]}; @400401_600000.SH_Buy/targetQty=0
params: no instance | | [{"SymbolParamKey":[{"Symbol":"000001.SZ"}]}] |
params: no securities | 100103 | [{}] |
params: security list a map | 100103 | [{"SymbolParamKey":{"Symbol":"000001.SZ"}}] |
params: security list a deeply nested text | 100103 | [{"SymbolParamKey":"$deep["}] |
params: symbol holding _ | 100103 | [{"SymbolParamKey":[{"Symbol":"000001_SZ","OrderSide":"1"}]}] |
params: side holding _ | 100103 | [{"SymbolParamKey":[{"Symbol":"000001.SZ","OrderSide":"_"}]}] |
params: quantity NaN | 100103 | [{"SymbolParamKey":[{"Symbol":"000001.SZ","OrderSide":"1","Quantity":"$nan"}]}] | 100103/entrustQtyStr=nan; 100103/symbolSize=2; 100103/targetQty=null; +@100103_000001.SZ_1 leg
params: 100k-character symbol | 100103 | [{"SymbolParamKey":[{"Symbol":"$long","OrderSide":"1"}]}] | 100103/symbolSize=2; +@100103_xxxxx...(100009) leg
params: leg result a list | 100103 | [{"SymbolParamKey":[{"Symbol":"000001.SZ","OrderSide":"1"}]},["0"]] | 100103/symbolSize=2; +@100103_000001.SZ_1 leg
params: T0 empty security list | 200201 | [{"SymbolParamKey":[]}] |
params: T0 only symbol holds _ | 200201 | [{"SymbolParamKey":[{"Symbol":"600_519.SH"}]}] | | T0 legs that are all skipped still wipe the plan and symbol lists
params: rush symbol holding _ | 400401 | [{"symbol":"600_000.SH","orderQty":1}] |
create: empty record, rush | Feature | [{}] | => RushLimitUpInstanceInfo unregistered
create: empty record, type in lower case | feature | [] | => InstanceInfoBase unregistered
create: empty record, 100k-character type | $long | [] | => InstanceInfoBase unregistered
create: rush record without ID | Feature | [{"strategyName":"RushLimitUp"}] | => RushLimitUpInstanceInfo registered; + instance info
create: rush record, parameters deeply nested | Feature | [{"strategyID":"400402","strategyParas":"$deep{"}] | => RushLimitUpInstanceInfo registered; +400402 instance info
timer: 100k-character argument | $long | [] |
timer: price NaN | 600519.SH=$nan | [] | @200201_600519.SH_All/profitAmount=null
timer: price inf | 600519.SH=$inf | [] | @200201_600519.SH_All/profitAmount=null
timer: price 1e308 on a closed position | 600519.SH=1e308 | [] |
gather: push a map | | {"reportType":"console","strategyID":"100101","strategyReport":"x"} |
gather: empty push | | [] |
gather: one empty map | | [{}] |
gather: record without ID ends the push | | [{"reportType":"console","strategyID":"100101","strategyReport":"a"},{"reportType":"console","strategyReport":"b"},{"reportType":"console","strategyID":"100101","strategyReport":"c"}] | logs/console/100101/0=a
gather: console text empty | | [{"reportType":"console","strategyID":"100101","strategyReport":""}] |
gather: console text a map | | [{"reportType":"console","strategyID":"100101","strategyReport":{"a":1}}] |
gather: type a number | | [{"reportType":7,"strategyID":"100101","strategyReport":"x"}] |
gather: 100k-character console line | | [{"reportType":"console","strategyID":"100101","strategyReport":"$long"}] | logs/console/100101/0=xxxxxxxxxxxx...(100000)
gather: ui text deeply nested | | [{"reportType":"ui","strategyID":"100101","strategyReport":"$deep{"}] |
gather: ui text broken JSON | | [{"reportType":"ui","strategyID":"100101","strategyReport":"{\"progressReportMap\":"}] |
gather: ui text an array, kept as raw text | | [{"reportType":"ui","strategyID":"100101","strategyReport":"[1]"}] | logs/progress/100101/0=[1]
gather: ui report map a number | | [{"reportType":"ui","strategyID":"100101","strategyReport":"{\"progressReportMap\":5}"}] |
gather: ui member a number | | [{"reportType":"ui","strategyID":"100101","strategyReport":"{\"progressReportMap\":{\"k\":5}}"}] | logs/progress/100101/0={}
gather: ui members duplicate | | [{"reportType":"ui","strategyID":"100101","strategyReport":"{\"progressReportMap\":{\"k\":{\"a\":1},\"k\":{\"a\":2}}}"}] | logs/progress/100101/0={"a":2}
gather: ui of a T0 instance | | [{"reportType":"ui","perfType":"t0","strategyID":"200201","strategyReport":"{}"}] |
gather: trade text not JSON | | [{"reportType":"tradeMsg","strategyID":"100101","strategyReport":"Price=1"}] |
gather: trade text an array | | [{"reportType":"tradeMsg","strategyID":"100101","strategyReport":"[{\"Symbol\":\"600000.SH\"}]"}] |
gather: trade text empty object | | [{"reportType":"tradeMsg","strategyID":"100101","strategyReport":"{}"}] |
gather: trade symbol holding _ | | [{"reportType":"tradeMsg","strategyID":"100101","strategyReport":"{\"Symbol\":\"600_000\"}"}] | trade {"Symbol":"600_000","strategyID":"100101","symbol":"600_000"}=1
gather: diff text a list | | [{"reportType":"diff","strategyID":"100101","strategyReport":["a"]}] |
gather: unknown instance | | [{"reportType":"message","strategyID":"999999","strategyReport":"m"}] | logs/messages/999999/0=m
t0report: push a map | | {"reportType":"ui","strategyID":"200201","strategyReport":"{}"} |
t0report: empty push | | [] |
t0report: text broken JSON, next taken | | [{"reportType":"ui","strategyID":"200201","strategyReport":"{"},{"reportType":"ui","strategyID":"200201","strategyReport":"{\"progressReportMap\":{\"k\":{}}}"}] | logs/progress/200201/0={}
t0report: text deeply nested | | [{"reportType":"ui","strategyID":"200201","strategyReport":"$deep["}] |
t0report: text without report map | | [{"reportType":"ui","strategyID":"200201","strategyReport":"[1]"}] |
t0report: console ends the push | | [{"reportType":"console","strategyID":"200201","strategyReport":"x"},{"reportType":"ui","strategyID":"200201","strategyReport":"{\"progressReportMap\":{\"k\":{}}}"}] |
t0report: ID a map ends the push | | [{"reportType":"ui","strategyID":{},"strategyReport":"{}"}] |
strategy: node of an unknown account | node | ["nobody","AITWAP","algo"] | =>
strategy: node under a 100k-character category | node | ["880001","AITWAP","$long"] | =>
strategy: authority in other letter case | has | ["880001","aitwap","algo"] | => 0
strategy: authority of empty texts | has | ["","",""] | => 0
strategy: names with an unknown account | names | [["880001","nobody"],"algo"] | =>
strategy: names with an empty account | names | [["880001",""],"algo"] | =>
strategy: names of a repeated account | names | [["880001","880001"],"algo"] | => AIPOV,AITWAP,AIVWAP
strategy: names of no account | names | [[],"algo"] | =>
strategy: accounts of an algo holding _ | accounts | ["AI_TWAP","algo"] | =>
strategy: aliases of a 100k-character account | alias | ["$long","algo"] | =>
strategy: union of an unknown category | union | ["ALGO"] | =>
strategy: intersection of an empty category | intersection | [""] | =>
strategy: symbol type of a 100k-character name | symbolType | ["$long"] | => 0
strategy: catalogue entry of an empty name | strategy | [""] | =>
trans: empty text | | | => error
trans: not JSON | | Price=1;Qty=2 | => error
trans: an array | | [{"a":1}] | => error
trans: a bare text | | "a" | => error
trans: garbage after the object | | {"a":1}x | => error
trans: number out of range | | {"a":1e999} | => error
trans: 10,000 levels of [ | | {"a":$deep[ | => error
trans: 10,000 levels of { | | $deep{ | => error
trans: duplicate member | | {"a":1,"a":2} | => {"a":2}
trans: duplicate member holding a list | | {"a":[1],"a":[2]} | => {"a":[2]}
trans: empty object | | {} | => {}
trans: 100k-character member | | {"$long":"$long"} | => {"xxxxxxxxxx...(200007)
)";

int g_sent = 0;

} // namespace

class TestBadInput : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanupTestCase() { qInfo("bad-input matrix: %d malformed inputs sent", g_sent); }
    void matrix_data();
    void matrix();

private:
    QString m_errors;
    QTextStream m_errorStream{&m_errors};
    std::unique_ptr<AlgoReplay::Replayer> m_replayer;
};

void TestBadInput::initTestCase()
{
    LogCapture quiet;
    m_replayer.reset(new AlgoReplay::Replayer(AlgoReplay::ReplayOptions(), m_errorStream));
}

// A fresh model for every row, so that rows which legitimately change it steer no other.
void TestBadInput::init()
{
    LogCapture quiet;
    for (const QString& id : mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown))
        mgr()->DeleteInstance(id);
    for (const char* session : {"twap-morning", "t0-day", "basis-trade"})
        m_replayer->replayFile(QFINDTESTDATA(QString("../../examples/%1.jsonl").arg(session)));
    QBuffer setup;
    setup.setData(kSetup);
    setup.open(QIODevice::ReadOnly);
    m_replayer->replayDevice(setup, "setup");
    QVERIFY2(m_replayer->stats().badLines == 0 && !m_replayer->stats().unreadable,
             qPrintable(m_errors));
    fingerprint(); // drains what the sessions logged
}

void TestBadInput::matrix_data()
{
    QTest::addColumn<QString>("arg"); // instance ID, algo type, function or quote
    QTest::addColumn<QString>("input");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("fault");
    for (const QString& line : QString(kMatrix).split('\n', Qt::SkipEmptyParts)) {
        const QStringList part = line.split(" |");
        const QString expected = part.value(3).trimmed();
        QTest::newRow(qPrintable(part.value(0)))
            << part.value(1).trimmed() << part.value(2).trimmed()
            << (expected.isEmpty() ? QStringList() : expected.split("; ")) << part.value(4).trimmed();
    }
}

void TestBadInput::matrix()
{
    QFETCH(QString, arg);
    QFETCH(QString, input);
    QFETCH(QStringList, expected);
    QFETCH(QString, fault);
    arg = expandText(arg);
    const QString router = QString(QTest::currentDataTag()).section(':', 0, 0);
    const QVariant push = router == "trans" ? QVariant() : parse(input);
    const QVariantList args = push.toList();
    VariantMapList records;
    for (const QVariant& item : args)
        records << item.toMap();
    const QString a0 = args.value(0).toString(); // StrategyMgr arguments
    const QString a1 = args.value(1).toString();
    const StrategyMgr* s = StrategyMgr::instance();
    LogMgr* logs = LogMgr::instance();
    InstanceInfoBase* inst = mgr()->GetInstanceInfoForAllType().value(arg);
    const auto onThreadOf = [](QObject* context, const std::function<void()>& call) {
        QMetaObject::invokeMethod(context, call, Qt::BlockingQueuedConnection); // as hosts do
    };
    const QMap<QString, std::function<QString()>> routers{
        {"query", [&] { return mgr()->OnRecv_QueryAlgoStrategyResponse(records), QString(); }},
        {"progress", [&] { return mgr()->OnRecv_StrategyProgressGatherResponse(records), QString(); }},
        {"report", [&] { return mgr()->OnRecv_StrategyReportResponse(records), QString(); }},
        {"delete", [&] { return mgr()->OnRecv_DeleteAlgoInstanceResponse(records), QString(); }},
        {"status", [&] { return QString::number(mgr()->OnRecv_InstStatusUpdate(arg, records)); }},
        {"modify", [&] { return QString(mgr()->onRecv_InstModifyPush(arg, records) ? "true" : "false"); }},
        {"params", [&] {
             AlgoLogic::WriteLocker locker(mgr()->getLocker()); // the host holds what it needs
             return mgr()->UpdateSymbolExtInfoByParams(inst, records.value(0), records), QString();
         }},
        {"create", [&] {
             InstanceInfoBase* made = mgr()->CreateInstance(arg, records.value(0), "RushLimitUp");
             const bool kept = mgr()->GetInstanceInfoForAllType().values().contains(made);
             const QString cls = QString(typeid(*made).name()).remove(QRegularExpression("^\\d+"));
             if (!kept)
                 delete made; // nobody else holds an unregistered object
             return cls + (kept ? " registered" : " unregistered");
         }},
        {"timer", [&] {
             if (arg.contains('='))
                 CommonQuotaHandler::instance().SetLatestPrice(
                     arg.section('=', 0, 0), expand(arg.section('=', 1)).toDouble());
             return onThreadOf(mgr(), [&] { mgr()->slotCalculateTimer(arg); }), QString();
         }},
        {"gather", [&] { return onThreadOf(logs, [&] { logs->slotRecvGatherStrategyReport(push); }), QString(); }},
        {"t0report", [&] { return onThreadOf(logs, [&] { logs->slotRecvT0ProgressPerformanceReport(push); }), QString(); }},
        {"trans", [&] {
             VariantMap out{{"stale", 1}}; // must not survive
             const QString error = HelmUtils::TransStr2Map(expandText(input), out);
             const QByteArray map = QJsonDocument(QJsonObject::fromVariantMap(out)).toJson(QJsonDocument::Compact);
             return error.isEmpty() ? shown(map) : out.isEmpty() ? "error" : "error, map kept";
         }},
        {"strategy", [&] {
             const QString a2 = args.value(2).toString();
             return arg == "node"           ? s->GetAlgoNode(a0, a1, a2)
                    : arg == "has"          ? QString::number(s->hasCorrespAuthority(a0, a1, a2))
                    : arg == "names"        ? s->GetAuthorityNameIntersection(args.value(0).toStringList(), a1).join(',')
                    : arg == "accounts"     ? s->GetAuthorityAccountList(a0, a1).join(',')
                    : arg == "alias"        ? s->GetAuthorityAlgoAlias(a0, a1).join(',')
                    : arg == "union"        ? names(s->GetAuthorityUnion(a0))
                    : arg == "intersection" ? names(s->GetAuthorityIntersection(a0))
                    : arg == "symbolType"   ? QString::number(s->GetAlgoSymbolType(a0))
                                            : s->GetStrategy(a0).name();
         }},
    };
    QVERIFY2(routers.contains(router), qPrintable(router));
    QStringList actual;
    {
        LogCapture log; // every refusal is logged; that is not under test here
        const Print before = fingerprint();
        const QString result = routers.value(router)();
        actual = changes(before, fingerprint());
        if (!result.isNull() || router == "strategy")
            actual.prepend(("=> " + result).trimmed());
    }
    ++g_sent;
    if (actual != expected)
        qInfo().noquote() << "changes:" << actual.join("; ");
    if (!fault.isEmpty())
        QEXPECT_FAIL("", qPrintable("library fault: " + fault), Abort);
    QCOMPARE(actual, expected);
}

QTEST_GUILESS_MAIN(TestBadInput)
#include "tst_badinput.moc"
