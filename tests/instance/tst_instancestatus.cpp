// Server-side changes of a known instance: status pushes for the instance and
// its legs, acknowledged modifications of its parameters, and their
// notifications.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

namespace {

namespace Strat = Tessel_Fields::Strategy;
namespace Helm = Algo_Fields::HelmStrategy;
namespace Content = Algo_Fields::AlgoInstContentInfo;
namespace Sec = Tessel_Fields::Security;
const QString kId("9200"), kWide("600000"), kSym("000001"); // kWide: display factor 10
const QString kFormat("yyyyMMdd-hh:mm:ss"), kBefore("20240102-09:30:00"), kAt("20240305-09:31:02");

// The push ("status", "modify", or "instruction": a modify push to an instruction instance),
// its first and further records, the figures afterwards (see push_data), the notifications,
// a debug line.
using Push = std::tuple<QString, VariantMap, VariantMapList, QStringList, QStringList, QString>;

QString key(const QString& symbol, const QString& side)
{
    return InstanceMgr::GetSymbolExtInfoKey(kId, symbol, side);
}

QVariantMap security(const QString& sym, double qty, double amount, QString price, QString pov = {})
{
    return {{Content::Symbol, sym}, {Content::OrderSide, "Buy"}, {Content::Quantity, qty},
            {Content::Quantity_Amount, amount}, {Content::PriceLimits, price},
            {Content::PriceLimitsPOV, pov}};
}

QString json(const QString& listKey, const QVariantList& list)
{
    return QJsonDocument::fromVariant(QVariantMap{{listKey, list}, {"comment", "c1"}})
        .toJson(QJsonDocument::Compact);
}

VariantMap modify(const QString& ack, const QString& params, const QString& alias = QString())
{
    return {{Strat::strategyStatus, "3"}, {Helm::ExecAckStatus, ack},
            {Strat::strategyParas, params}, {Strat::StrategyInstanceAlias, alias},
            {Helm::StrategyAlterComment, "why"}, {Helm::AlgStartTime, kAt}};
}

} // namespace

Q_DECLARE_METATYPE(Push)

class TestInstanceStatus : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void push_data();
    void push();
};

void TestInstanceStatus::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("algologic.*.debug=true"));
    HelmBusinessDataInterface::SetDispFactor(kWide, 10);
}

void TestInstanceStatus::push_data()
{
    // Figures: the instance's status, remark, parameters, comments, start, end; the status of
    // leg 000001 All; the status, limit price, target qty, target amount of leg 000001 Buy;
    // the instance's target qty and number of legs.
    QTest::addColumn<Push>("row");
    const QString paras = json(Content::SymbolParamKey, {});
    QTest::newRow("status: parameters, remark, times taken; leg side defaults to All")
        << Push{"status", {{Strat::strategyStatus, "3"}, {Helm::StrategyAlterComment, "moved"},
                 {Strat::strategyParas, paras}, {Helm::AlgStartTime, kAt}, {Helm::AlgEndTime, kAt}},
                {{{Sec::symbol, kSym}, {Strat::strategyStatus, "3"}}},
                {"3", "moved", paras, "c1", kAt, kAt, "3", "1", "", "0", "0", "7", "2"},
                {"legs " + key(kSym, "All") + ":3"}, ""};
    QTest::newRow("status: empty parameters kept; unknown leg logged, the others reported")
        << Push{"status", {{Strat::strategyStatus, "3"}, {Strat::strategyParas, ""}},
                {{{Sec::symbol, kWide}, {Strat::strategyStatus, "3"}},
                 {{Sec::symbol, kSym}, {Sec::side, "Buy"}, {Strat::strategyStatus, "4"}}},
                {"3", "r0", "old", "", kBefore, kBefore, "", "4", "", "0", "0", "7", "2"},
                {"legs " + key(kSym, "Buy") + ":4"}, "symbolInfo null " + key(kWide, "All")};
    const auto applied = [](const QString& params, const QStringList& leg) {
        return QStringList{"3", "r0", params, "c1", kAt, kBefore, "", "1"} + leg;
    };
    const QStringList acked{"modify 9200 1 why"};
    const QString one = json(Content::SymbolParamKey, {security(kSym, 9, 90, "2.5", "3.5")});
    QTest::newRow("modify not acknowledged: status and times only") << Push{"modify",
        modify("0", one), {}, {"3", "r0", "old", "", kAt, kBefore, "", "1", "", "0", "0", "7", "2"},
        {"modify 9200 0 why"}, ""};
    QTest::newRow("modify acknowledged: limit price and targets") << Push{"modify",
        modify("1", one), {}, applied(one, {"2.5", "9", "90", "9", "2"}), acked, ""};
    QTest::newRow("modify of the POV extension alias: POV limit price") << Push{"modify",
        modify("1", one, "指令POV扩展策略"), {}, applied(one, {"3.5", "9", "90", "9", "2"}), acked, ""};
    const QString two = json(Content::SymbolParamKey,
                             {security(kWide, 100, 0, "8"), security(kSym, 9, 90, "2.5")});
    QTest::newRow("modify with a new security: leg added, target with display factor") << Push{
        "modify", modify("1", two), {}, applied(two, {"2.5", "9", "90", "1009", "3"}), acked, ""};
    const QString own = json(Algo_Values::AlgoParamId::InstructionAlgoSecurityList,
                             {security(kSym, 11, 110, "4")});
    QTest::newRow("instruction modify: its own security list") << Push{"instruction",
        modify("1", own), {}, applied(own, {"4", "11", "110", "11", "2"}), acked, ""};
}

void TestInstanceStatus::push()
{
    QFETCH(Push, row);
    const auto& [kind, first, legRecords, after, notifications, log] = row;
    InstanceInfoBase inst;
    inst.setInstanceID(kId);
    inst.setInstAlgoType(kind == "instruction" ? Algo_Values::AlgoGlobalType::instruction : kind);
    inst.setStatus("4");
    inst.setRemark("r0");
    inst.setParams("old");
    inst.setStartTime(QDateTime::fromString(kBefore, kFormat));
    inst.setEndTime(QDateTime::fromString(kBefore, kFormat));
    inst.setTargetQty(7);
    QList<SymbolInfoBase*> legs{new SymbolInfoBase, new SymbolInfoBase};
    for (int i = 0; i < 2; ++i) {
        legs[i]->setKey(key(kSym, i ? "Buy" : "All"));
        inst.AddSymbolInfo(legs[i]);
    }
    legs[1]->setStatus("1");
    QSignalSpy legsSpy(InstanceMgr::instance(), &InstanceMgr::signalSymbolStatusUpdate);
    QSignalSpy modifySpy(InstanceMgr::instance(), &InstanceMgr::signalModifyPush);
    LogCapture capture;

    kind == "status" ? inst.OnRecv_InstStatusUpdate(VariantMapList{first} + legRecords)
                     : inst.OnRecv_InstModifyPush({first});

    const auto n = [](double value) { return QString::number(value); };
    QCOMPARE(QStringList({inst.status(), inst.remark(), inst.params(), inst.getInstanceComments(),
                          inst.startTime().toString(kFormat), inst.endTime().toString(kFormat),
                          legs[0]->getStatus(), legs[1]->getStatus(), legs[1]->limitPrice(),
                          n(legs[1]->targetQty()), n(legs[1]->targetAmount()), n(inst.targetQty()),
                          n(inst.getSymbolSize())}), after);
    QStringList told; // each leg reported with its record; the modify push's arguments
    for (const QVariantList& args : qAsConst(legsSpy))
        for (const auto& [leg, record] : args[0].value<QVariantMap>().toStdMap())
            told << "legs " + leg + ":" + record.toMap().value(Strat::strategyStatus).toString();
    for (const QVariantList& args : qAsConst(modifySpy))
        told << "modify " + QVariant(args).toStringList().join(' ');
    QCOMPARE(told, notifications);
    QVERIFY2(log.isEmpty() || capture.contains(QtDebugMsg, log), qPrintable(log));
}

QTEST_GUILESS_MAIN(TestInstanceStatus)
#include "tst_instancestatus.moc"
