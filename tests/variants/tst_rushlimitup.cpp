// The rush-limit-up instance, made by the registry and driven only through the
// base class: its one leg always keyed "Buy", the parameter refresh, the modify
// push and the queue-position progress merge.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

#include <memory>

namespace {

const QString kID = QStringLiteral("rush1");

QString buyKey()
{
    return InstanceMgr::GetSymbolExtInfoKey(kID, "600000", "Buy");
}

// One leg for 600000 whose parameters name the selling side.
std::unique_ptr<InstanceInfoBase> makeInstance()
{
    std::unique_ptr<InstanceInfoBase> inst(InstanceMgr::instance()->CreateInstance(
        Algo_Values::AlgoGlobalType::feature, VariantMap(), QStringLiteral("RushLimitUp")));
    inst->setInstanceID(kID);
    inst->initSymbolInfo({{"symbol", "600000"},
                          {"market", "SH"},
                          {"tradingAccount", "accA"},
                          {"side", "Sell"},
                          {"orderQty", 9}},
                         {});
    return inst;
}

} // namespace

class TestRushLimitUp : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QLoggingCategory::setFilterRules("algologic.*.debug=true"); }

    // A copy through the base keeps the "info" tag and so plain legs, and is
    // independent of the original.
    void copyThroughBase()
    {
        auto inst = makeInstance();
        QCOMPARE(inst->getClassType(), QString("info"));
        {
            InstanceInfoBase copy(*inst);
            SymbolInfoBase* leg = copy.getSymbolInfo(buyKey());
            QVERIFY(leg && leg != inst->getSymbolInfo(buyKey()));
            leg->setTargetQty(1);
        }
        QCOMPARE(inst->getSymbolInfo(buyKey())->targetQty(), 9.0);
    }

    void legKeyedBuyWhateverTheSide()
    {
        auto inst = makeInstance();
        const SymbolInfoBase* leg = inst->getSymbolInfo(buyKey());
        QVERIFY(leg && inst->getSymbolSize() == 1);
        QCOMPARE(QStringList({leg->orderSide(), leg->exchange()}), QStringList({"Sell", "SH"}));
    }

    // Expected: the leg's target quantity and the instance comment.
    void updateParamMap_data()
    {
        QTest::addColumn<QString>("json");
        QTest::addColumn<QString>("expected");
        QTest::newRow("invalid JSON") << R"({"comment":"c",)"
                                      << "9/old";
        QTest::newRow("unknown symbol") << R"({"symbol":"1","orderQty":5,"comment":"c"})"
                                        << "9/c";
        QTest::newRow("known leg") << R"({"symbol":"600000","orderQty":2,"comment":"c"})"
                                   << "2/c";
    }
    void updateParamMap()
    {
        QFETCH(QString, json);
        QFETCH(QString, expected);
        auto inst = makeInstance();
        inst->setInstanceComments("old");
        inst->setParams(json);
        const double qty = inst->getSymbolInfo(buyKey())->targetQty();
        QCOMPARE(QString::number(qty) + "/" + inst->getInstanceComments(), expected);
    }

    // Only an acknowledged change ("1") takes the parameters and the status.
    void modifyPush_data()
    {
        QTest::addColumn<QString>("ack");
        QTest::newRow("acknowledged") << "1";
        QTest::newRow("not acknowledged") << "0";
    }
    void modifyPush()
    {
        QFETCH(QString, ack);
        auto inst = makeInstance();
        QSignalSpy spy(InstanceMgr::instance(), &InstanceMgr::signalModifyPush);
        inst->OnRecv_InstModifyPush({{{Algo_Fields::HelmStrategy::ExecAckStatus, ack},
                                      {Tessel_Fields::Strategy::strategyStatus, "1"},
                                      {Tessel_Fields::Strategy::strategyParas, R"({"a":7})"},
                                      {Algo_Fields::HelmStrategy::StrategyAlterComment, "why"}}});
        QCOMPARE(inst->params(), QString(ack == "1" ? R"({"a":7})" : ""));
        QCOMPARE(inst->status(), QString(ack == "1" ? "1" : ""));
        QCOMPARE(QList<QList<QVariant>>(spy), (QList<QList<QVariant>>{{kID, ack, "why"}}));
    }

    // After a first report giving front quantity 10 and position 1; expected: both afterwards.
    void progress_data()
    {
        QTest::addColumn<QStringList>("reports");
        QTest::addColumn<QString>("expected");
        QTest::newRow("unparsable skipped, timestamp 2 wins though first")
            << QStringList{"{bad", R"({"symbol":"600000","Timestamp":2,"frontQty":200})",
                           R"({"symbol":"600000","Timestamp":1,"frontQty":100,"frontPoistion":5})"}
            << "200/5";
        QTest::newRow("only present keys applied")
            << QStringList{R"({"symbol":"600000","frontPoistion":4.5})"} << "10/4.5";
        QTest::newRow("unknown symbol")
            << QStringList{R"({"symbol":"999999","frontQty":9})"} << "10/1";
    }
    void progress()
    {
        QFETCH(QStringList, reports);
        QFETCH(QString, expected);
        auto inst = makeInstance();
        inst->OnRecvInstProgressInfo({R"({"symbol":"600000","frontQty":10,"frontPoistion":1})"});
        const SymbolInfoBase* leg = inst->getSymbolInfo(buyKey());
        QMap<QString, QList<QString>> changed{{kID, {"stale"}}};
        QSignalSpy spy(InstanceMgr::instance(), &InstanceMgr::signalProgressUpdated);
        LogCapture log;
        inst->OnRecvInstProgressInfo(reports, true, changed);

        QCOMPARE(QString("%1/%2").arg(leg->getFrontQty()).arg(leg->getFrontPosition()), expected);
        QCOMPARE(changed.value(kID), QList<QString>()); // this instance changed, no leg named
        const bool unknown = reports.first().contains("999999");
        QCOMPARE(log.contains(QtDebugMsg, "未找到相关证券代码： 999999"), unknown);
        QCOMPARE(spy.count(), unknown ? 0 : 1);
        if (!unknown)
            QCOMPARE(spy.first().at(1).value<QList<QString>>(), QList<QString>{buyKey()});
    }
};

QTEST_GUILESS_MAIN(TestRushLimitUp)
#include "tst_rushlimitup.moc"
