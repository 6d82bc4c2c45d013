// The rush-limit-up instance, made by the registry for the feature algo type
// and driven only through the base class: its one leg always keyed "Buy", the
// parameter refresh, the modify push, and the queue-position progress merge.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

#include <memory>

namespace Helm = Algo_Fields::HelmStrategy;
namespace Strategy = Tessel_Fields::Strategy;

namespace {

const QString kID = QStringLiteral("rush1");
const QString kName = QStringLiteral("RushLimitUp");
const QString kWhere = QStringLiteral("RushLimitUpInstanceInfo::OnRecvInstProgressInfo ");
const VariantMap kParams{{"symbol", "600000"}, {"market", "SH"}, {"tradingAccount", "accA"},
                         {"securityAccount", "sec1"}, {"side", "Buy"}, {"entrustProp", "limit"},
                         {"orderQty", 1000}, {"orderAmount", 12345.5}};

// Every progress row starts after this report, which sets every figure.
const VariantMap kFirstReport{{"symbol", "600000"}, {"filledQty", 10}, {"filledAmount", 100},
                              {"strAlertMsg", "before"}, {"frontQty", 1}, {"frontOrderNum", 1},
                              {"frontPoistion", 1}, {"objectOrderNum", 1}, {"old", 1}};

QString buyKey(const QString& symbol)
{
    return InstanceMgr::GetSymbolExtInfoKey(kID, symbol, QStringLiteral("Buy"));
}

// The class is internal to the library: only the registry makes one.
std::unique_ptr<InstanceInfoBase> makeInstance(bool withLeg = true)
{
    std::unique_ptr<InstanceInfoBase> inst(InstanceMgr::instance()->CreateInstance(
        Algo_Values::AlgoGlobalType::feature, VariantMap(), kName));
    inst->setInstanceID(kID);
    inst->setStrategyName(kName);
    if (withLeg)
        inst->initSymbolInfo(kParams, {});
    return inst;
}

VariantMap merged(VariantMap base, const VariantMap& changes)
{
    for (auto it = changes.cbegin(); it != changes.cend(); ++it)
        base.insert(it.key(), it.value());
    return base;
}

VariantMap legFields(const SymbolInfoBase* leg)
{
    if (!leg)
        return {};
    return {{"key", leg->getKey()}, {"instanceID", leg->instanceID()},
            {"strategyName", leg->strategyName()}, {"symbol", leg->symbol()},
            {"tradingAccount", leg->getTradingAccount()},
            {"securityAccount", leg->getSecurityAccout()}, {"exchange", leg->exchange()},
            {"side", leg->orderSide()}, {"entrustProp", leg->entrustProp()},
            {"targetQty", leg->targetQty()}, {"targetAmount", leg->targetAmount()}};
}

VariantMap queueFields(const SymbolInfoBase* leg)
{
    return {{"filledQty", leg->filledQty()}, {"dealBalance", leg->dealBalance()},
            {"tipMsg", leg->getTipMsg()}, {"frontQty", leg->getFrontQty()},
            {"frontOrderNum", leg->getFrontOrderNum()}, {"frontPosition", leg->getFrontPosition()},
            {"sameQtyOrderCnt", leg->getSameQtyOrderCnt()}, {"last", leg->getLastReportMap()}};
}

QString report(const VariantMap& fields)
{
    return QJsonDocument(QJsonObject::fromVariantMap(fields)).toJson(QJsonDocument::Compact);
}

} // namespace

class TestRushLimitUp : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QLoggingCategory::setFilterRules("algologic.*.debug=true"); }

    void initSymbolInfo_data()
    {
        QTest::addColumn<VariantMap>("params");
        QTest::addColumn<VariantMap>("leg"); // empty: no leg built
        QTest::addColumn<QStringList>("symbols");
        QTest::addColumn<QStringList>("accounts");
        QTest::addColumn<QString>("instAccount");

        const VariantMap full{{"key", buyKey("600000")}, {"instanceID", kID},
                              {"strategyName", kName}, {"symbol", "600000"},
                              {"tradingAccount", "accA"}, {"securityAccount", "sec1"},
                              {"exchange", "SH"}, {"side", "Buy"}, {"entrustProp", "limit"},
                              {"targetQty", 1000.0}, {"targetAmount", 12345.5}};
        const QStringList old{"old"};
        VariantMap noSymbol = kParams;
        noSymbol.remove("symbol");
        QTest::newRow("no symbol key") << noSymbol << VariantMap{} << old << old << "oldAcc";
        QTest::newRow("every field")
            << kParams << full << QStringList{"600000"} << QStringList{"accA"} << "accA";
        QTest::newRow("selling side still keyed Buy")
            << merged(kParams, {{"side", "Sell"}, {"orderQty", "500"}})
            << merged(full, {{"side", "Sell"}, {"targetQty", 500.0}}) << QStringList{"600000"}
            << QStringList{"accA"} << "accA";
    }
    void initSymbolInfo()
    {
        QFETCH(VariantMap, params);
        QFETCH(VariantMap, leg);
        QFETCH(QStringList, symbols);
        QFETCH(QStringList, accounts);
        QFETCH(QString, instAccount);

        auto inst = makeInstance(false);
        QCOMPARE(inst->getClassType(), QStringLiteral("info"));
        inst->setSymbolList({"old"});
        inst->setSymbolTradingAccountList({"old"});
        inst->setTradingAccount_Inst("oldAcc");
        inst->initSymbolInfo(params, {});

        QCOMPARE(inst->getSymbolSize(), leg.isEmpty() ? 0 : 1);
        QCOMPARE(legFields(inst->getSymbolInfo(leg.value("key").toString())), leg);
        QCOMPARE(inst->getSymbolList(), symbols);
        QCOMPARE(inst->getSymbolTradingAccountList(), accounts);
        QCOMPARE(inst->getTradingAccount_Inst(), instAccount);
    }

    void updateParamMap_data()
    {
        QTest::addColumn<QString>("json");
        QTest::addColumn<double>("qty");
        QTest::addColumn<double>("amount");
        QTest::addColumn<QString>("comment");

        QTest::newRow("empty text ignored") << "" << 1000.0 << 12345.5 << "old";
        QTest::newRow("invalid JSON changes nothing")
            << R"({"symbol":"600000","orderQty":5,"comment":"c",)" << 1000.0 << 12345.5 << "old";
        QTest::newRow("unknown symbol still sets the comment")
            << R"({"symbol":"000001","orderQty":5,"comment":"c1"})" << 1000.0 << 12345.5 << "c1";
        QTest::newRow("known leg takes both targets")
            << R"({"symbol":"600000","orderQty":"2000","orderAmount":300.5,"comment":"c2"})"
            << 2000.0 << 300.5 << "c2";
    }
    void updateParamMap()
    {
        QFETCH(QString, json);
        QFETCH(double, qty);
        QFETCH(double, amount);
        QFETCH(QString, comment);

        auto inst = makeInstance();
        inst->setInstanceComments("old");
        inst->setParams(json);
        const SymbolInfoBase* leg = inst->getSymbolInfo(buyKey("600000"));
        QCOMPARE(leg->targetQty(), qty);
        QCOMPARE(leg->targetAmount(), amount);
        QCOMPARE(inst->getInstanceComments(), comment);
    }

    void modifyPush_data()
    {
        QTest::addColumn<VariantMap>("record");
        QTest::addColumn<bool>("taken"); // parameters and status applied

        const VariantMap record{{Helm::ExecAckStatus, "1"}, {Strategy::strategyStatus, "1"},
                                {Strategy::strategyParas, R"({"symbol":"600000","orderQty":7})"},
                                {Helm::StrategyAlterComment, "why"}};
        QTest::newRow("acknowledged") << record << true;
        QTest::newRow("not acknowledged") << merged(record, {{Helm::ExecAckStatus, "0"}}) << false;
        QTest::newRow("empty acknowledgement") << merged(record, {{Helm::ExecAckStatus, ""}})
                                               << false;
        QTest::newRow("acknowledged without parameters")
            << merged(record, {{Strategy::strategyParas, ""}}) << true;
    }
    void modifyPush()
    {
        QFETCH(VariantMap, record);
        QFETCH(bool, taken);

        auto inst = makeInstance();
        inst->setParams("{}");
        QVERIFY(inst->setStatus("0"));
        QSignalSpy spy(InstanceMgr::instance(), &InstanceMgr::signalModifyPush);
        inst->OnRecv_InstModifyPush({record});

        const QString paras = record.value(Strategy::strategyParas).toString();
        const bool newParams = taken && !paras.isEmpty();
        QCOMPARE(inst->params(), newParams ? paras : QStringLiteral("{}"));
        QCOMPARE(inst->getSymbolInfo(buyKey("600000"))->targetQty(), newParams ? 7.0 : 1000.0);
        QCOMPARE(inst->status(), taken ? QStringLiteral("1") : QStringLiteral("0"));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.first(), (QList<QVariant>{kID, record.value(Helm::ExecAckStatus).toString(),
                                              record.value(Helm::StrategyAlterComment)}));
    }

    void progress_data()
    {
        QTest::addColumn<QStringList>("reports");
        QTest::addColumn<bool>("oneArgument");
        QTest::addColumn<VariantMap>("changes"); // over the leg's figures before
        QTest::addColumn<bool>("legUpdated");
        QTest::addColumn<QString>("logged");

        const VariantMap& old = kFirstReport;
        const VariantMap late{{"symbol", "600000"}, {"Timestamp", 2}, {"filledQty", 200}};
        const VariantMap early{{"symbol", "600000"}, {"Timestamp", 1}, {"filledQty", 100},
                               {"frontQty", 5}};
        QTest::newRow("later timestamp wins though it came first")
            << QStringList{report(late), report(early)} << false
            << VariantMap{{"filledQty", 200.0}, {"frontQty", 5.0},
                          {"last", merged(merged(old, early), late)}}
            << true << "";
        const VariantMap plain{{"symbol", "600000"}, {"filledQty", 50}};
        const VariantMap fromPlain{{"filledQty", 50.0}, {"last", merged(old, plain)}};
        QTest::newRow("unparsable texts skipped")
            << QStringList{"{bad", "[1]", report(plain)} << false << fromPlain << true << "";
        const VariantMap queue{{"symbol", "600000"}, {"frontQty", 10}, {"frontOrderNum", "3"},
                               {"frontPoistion", 4.5}, {"objectOrderNum", 6},
                               {"strAlertMsg", "alert"}, {"filledAmount", 1234.5}};
        QTest::newRow("only present keys applied")
            << QStringList{report(queue)} << false
            << VariantMap{{"frontQty", 10.0}, {"frontOrderNum", 3}, {"frontPosition", 4.5},
                          {"sameQtyOrderCnt", 6}, {"tipMsg", "alert"}, {"dealBalance", 1234.5},
                          {"last", merged(old, queue)}}
            << true << "";
        QTest::newRow("unknown symbol")
            << QStringList{report({{"symbol", "999999"}, {"filledQty", 9}})} << false
            << VariantMap{} << false << kWhere + QStringLiteral("未找到相关证券代码： 999999");
        const VariantMap none;
        QTest::newRow("nothing readable") << QStringList{"{bad"} << false << none << false << "";
        QTest::newRow("empty list ignored") << QStringList{} << false << none << false << "";
        QTest::newRow("one-argument form")
            << QStringList{report(plain)} << true << fromPlain << true << "";
    }
    void progress()
    {
        QFETCH(QStringList, reports);
        QFETCH(bool, oneArgument);
        QFETCH(VariantMap, changes);
        QFETCH(bool, legUpdated);
        QFETCH(QString, logged);

        auto inst = makeInstance();
        inst->OnRecvInstProgressInfo({report(kFirstReport)});
        SymbolInfoBase* leg = inst->getSymbolInfo(buyKey("600000"));
        const VariantMap expected = merged(queueFields(leg), changes);
        const QMap<QString, QList<QString>> before{{kID, {"stale"}}, {"other", {"x"}}};
        QMap<QString, QList<QString>> changed = before;
        QSignalSpy spy(InstanceMgr::instance(), &InstanceMgr::signalProgressUpdated);
        LogCapture log;
        if (oneArgument)
            inst->OnRecvInstProgressInfo(reports);
        else
            inst->OnRecvInstProgressInfo(reports, true, changed);

        QCOMPARE(queueFields(leg), expected);
        QCOMPARE(spy.count(), legUpdated ? 1 : 0);
        if (legUpdated) { // views refresh the leg's queue figures
            QCOMPARE(spy.first().at(0).toString(), kID);
            QCOMPARE(spy.first().at(1).value<QList<QString>>(), QList<QString>{buyKey("600000")});
        }
        QMap<QString, QList<QString>> recorded = before;
        if (!reports.isEmpty() && !oneArgument)
            recorded[kID].clear(); // this instance changed, no leg named
        QCOMPARE(changed, recorded);
        if (!logged.isEmpty())
            QVERIFY2(log.contains(QtDebugMsg, logged), qPrintable(logged));
        // One timing line per handled list: the instance ID and whole milliseconds.
        const QRegularExpression timing("^" + QRegularExpression::escape(kWhere + kID) + " \\d+$");
        int timings = 0;
        for (const CapturedMessage& message : log.messages())
            timings += message.type == QtDebugMsg && timing.match(message.text).hasMatch();
        QCOMPARE(timings, reports.isEmpty() ? 0 : 1);
    }
};

QTEST_GUILESS_MAIN(TestRushLimitUp)
#include "tst_rushlimitup.moc"
