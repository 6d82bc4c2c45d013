// Server-side changes of a known instance: status pushes for the instance and
// its legs, acknowledged modifications of its parameters, and their
// notifications, called directly and through the registry.

#include <algologic.h>

#include "logcapture.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QSignalSpy>
#include <QtTest>

#include <functional>
#include <future>
#include <memory>
#include <thread>

namespace {

namespace Strat = Tessel_Fields::Strategy;
namespace Helm = Algo_Fields::HelmStrategy;
namespace Content = Algo_Fields::AlgoInstContentInfo;

using LegRecords = QMap<QString, QMap<QString, QVariant>>;

const QString kId = QStringLiteral("9200");
const QString kAlgo = QStringLiteral("SingleAlgo"); // a single-security algo
const QString kWide = QStringLiteral("600000");     // display factor 10
const QString kSym = QStringLiteral("000001");      // display factor 1
const QString kBuy = QStringLiteral("Buy");
const QString kLogin = QStringLiteral("me");
const QString kTimeFormat = QStringLiteral("yyyyMMdd-hh:mm:ss");
const QDateTime kStart(QDate(2024, 1, 2), QTime(9, 30));
const QDateTime kEnd(QDate(2024, 1, 2), QTime(15, 0));

QString key(const QString& symbol, const QString& side, const QString& id = kId)
{
    return InstanceMgr::GetSymbolExtInfoKey(id, symbol, side);
}

SymbolInfoBase* addLeg(InstanceInfoBase& inst, const QString& symbol, const QString& side)
{
    auto* leg = new SymbolInfoBase;
    leg->setKey(key(symbol, side, inst.instanceID()));
    leg->setSymbol(symbol);
    leg->setOrderSide(side);
    inst.AddSymbolInfo(leg);
    return leg;
}

// A leg record of a status push; a null side leaves the field out.
VariantMap legRecord(const QString& symbol, const QString& side, const QString& status)
{
    VariantMap r{{Tessel_Fields::Security::symbol, symbol}, {Strat::strategyStatus, status}};
    if (!side.isNull())
        r.insert(Tessel_Fields::Security::side, side);
    return r;
}

QVariantMap security(const QString& symbol, double qty, double amount, const QString& price,
                     const QString& povPrice = QString())
{
    return {{Content::Symbol, symbol}, {Content::OrderSide, kBuy}, {Content::Quantity, qty},
            {Content::Quantity_Amount, amount}, {Content::PriceLimits, price},
            {Content::PriceLimitsPOV, povPrice}};
}

QString json(const QVariantMap& map)
{
    return QString::fromUtf8(QJsonDocument::fromVariant(map).toJson(QJsonDocument::Compact));
}

QString securities(const QVariantList& list, const QString& listKey = Content::SymbolParamKey)
{
    return json({{listKey, list}});
}

// Runs `work` in a thread of its own; false when it has not ended in time
// (a deadlocked thread is left behind).
bool endsInTime(const std::function<void()>& work)
{
    auto done = std::make_shared<std::promise<void>>();
    std::future<void> ended = done->get_future();
    std::thread([work, done] {
        work();
        done->set_value();
    }).detach();
    return ended.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
}

} // namespace

class TestInstanceStatus : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void statusUpdate_data();
    void statusUpdate();
    void takeParameters_data();
    void takeParameters();
    void statusUpdateLegs_data();
    void statusUpdateLegs();
    void modifyPush_data();
    void modifyPush();
    void routersEmitAfterReleasingLock_data();
    void routersEmitAfterReleasingLock();

private:
    InstanceMgr* m_mgr = nullptr;
};

void TestInstanceStatus::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("algologic.*.debug=true"));
    m_mgr = InstanceMgr::instance(); // registers the signal argument types
    KxAlgoDataMgr::instance().setStrategies(
        {AesStrategy(kAlgo, QString(), QString(), QStringLiteral("1"))});
}

void TestInstanceStatus::init()
{
    HelmBusinessDataInterface::Reset();
    HelmBusinessDataInterface::SetDispFactor(kWide, 10);
    CBusinessDataBase::GetInstance()->SetLoginAccount(kLogin);
}

void TestInstanceStatus::statusUpdate_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<VariantMap>("first");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QString>("remark");
    QTest::addColumn<QDateTime>("start");
    QTest::addColumn<QDateTime>("end");

    const QDateTime start(QDate(2024, 3, 5), QTime(9, 31, 2));
    const QDateTime end(QDate(2024, 3, 5), QTime(14, 57));
    QTest::newRow("refused status kept") << "2" << VariantMap{{Strat::strategyStatus, "1"}}
                                         << "2" << "r0" << kStart << kEnd;
    QTest::newRow("remark from alteration comment")
        << "4" << VariantMap{{Strat::strategyStatus, "3"}, {Helm::StrategyAlterComment, "moved"}}
        << "3" << "moved" << kStart << kEnd;
    QTest::newRow("empty alteration comment taken")
        << "4" << VariantMap{{Strat::strategyStatus, "3"}, {Helm::StrategyAlterComment, ""}}
        << "3" << "" << kStart << kEnd;
    QTest::newRow("times") << "4"
                           << VariantMap{{Strat::strategyStatus, "3"},
                                         {Helm::AlgStartTime, start.toString(kTimeFormat)},
                                         {Helm::AlgEndTime, end.toString(kTimeFormat)}}
                           << "3" << "r0" << start << end;
    QTest::newRow("unreadable times keep the stored ones")
        << "4"
        << VariantMap{{Strat::strategyStatus, "3"},
                      {Helm::AlgStartTime, "2024-03-05 09:31:02"},
                      {Helm::AlgEndTime, ""}}
        << "3" << "r0" << kStart << kEnd;
}

void TestInstanceStatus::statusUpdate()
{
    QFETCH(QString, before);
    QFETCH(VariantMap, first);
    QFETCH(QString, status);
    QFETCH(QString, remark);
    QFETCH(QDateTime, start);
    QFETCH(QDateTime, end);

    InstanceInfoBase inst;
    inst.setInstanceID(kId);
    inst.setStatus(before);
    inst.setRemark("r0");
    inst.setStartTime(kStart);
    inst.setEndTime(kEnd);
    QSignalSpy legSpy(m_mgr, &InstanceMgr::signalSymbolStatusUpdate);

    inst.OnRecv_InstStatusUpdate({first});

    QCOMPARE(inst.status(), status);
    QCOMPARE(inst.remark(), remark);
    QCOMPARE(inst.startTime(), start);
    QCOMPARE(inst.endTime(), end);
    QCOMPARE(legSpy.count(), 1); // raised even without legs
    QVERIFY(legSpy.at(0).at(0).value<LegRecords>().isEmpty());
}

void TestInstanceStatus::takeParameters_data()
{
    QTest::addColumn<bool>("modify");
    QTest::addColumn<QString>("ack");
    QTest::addColumn<QString>("params");
    // params, comments, mode, market rate, open side, invest type, continue trade
    QTest::addColumn<QStringList>("fields");

    const QString taken = json({{"comment", "c1"},
                                {"instMode", "multi"},
                                {"participationrate", "0.15"},
                                {"OpenClose", "Open"},
                                {"InvestType", "Hedge"},
                                {AlgoConst::LabelContinueAfterExpiry, "是"}});
    const QStringList fromTaken{taken, "c1", "multi", "0.15", "Open", "Hedge", "是"};
    const QStringList kept{"{\"到期后是否继续交易\":\"否\"}", "old", "other", "0.5", "Close",
                           "Arbitrage", "否"};
    QTest::newRow("status update takes them") << false << "" << taken << fromTaken;
    QTest::newRow("status update without them keeps them") << false << "" << "" << kept;
    QTest::newRow("acknowledged modify takes them") << true << "1" << taken << fromTaken;
    QTest::newRow("unacknowledged modify keeps them") << true << "0" << taken << kept;
    QTest::newRow("acknowledged modify, text not JSON")
        << true << "1" << "oops" << QStringList{"oops", "", "single", "", "", "", "否"};
}

void TestInstanceStatus::takeParameters()
{
    QFETCH(bool, modify);
    QFETCH(QString, ack);
    QFETCH(QString, params);
    QFETCH(QStringList, fields);

    InstanceInfoBase inst;
    inst.setInstanceID(kId);
    inst.setStrategyName(kAlgo);
    inst.setParams("{\"到期后是否继续交易\":\"否\"}");
    inst.setInstanceComments("old");
    inst.setInstMode("other");
    inst.setMarketRate("0.5");
    inst.setOpenSide("Close");
    inst.setInvestType("Arbitrage");

    const VariantMapList records{{{Strat::strategyStatus, "3"},
                                  {Strat::strategyParas, params},
                                  {Helm::ExecAckStatus, ack}}};
    if (modify)
        inst.OnRecv_InstModifyPush(records);
    else
        inst.OnRecv_InstStatusUpdate(records);

    QCOMPARE(QStringList({inst.params(), inst.getInstanceComments(), inst.getInstMode(),
                          inst.getMarketRate(), inst.getOpenSide(), inst.getInvestType(),
                          inst.getContinueTrade()}),
             fields);
    QCOMPARE(inst.status(), QStringLiteral("3"));
}

void TestInstanceStatus::statusUpdateLegs_data()
{
    QTest::addColumn<VariantMapList>("legRecords");
    QTest::addColumn<QStringList>("reported");
    QTest::addColumn<QStringList>("statuses"); // legs "All" and "Buy" afterwards
    QTest::addColumn<QString>("log");

    const QString all = key(kSym, "All");
    const QString buy = key(kSym, kBuy);
    QTest::newRow("side defaults to All") << VariantMapList{legRecord(kSym, QString(), "3")}
                                          << QStringList{all} << QStringList{"3", "1"} << "";
    QTest::newRow("explicit side") << VariantMapList{legRecord(kSym, kBuy, "4")}
                                   << QStringList{buy} << QStringList{"", "4"} << "";
    QTest::newRow("unknown leg skipped, others reported")
        << VariantMapList{legRecord(kWide, kBuy, "3"), legRecord(kSym, kBuy, "4")}
        << QStringList{buy} << QStringList{"", "4"}
        << "OnRecv_InstStatusUpdate symbolInfo null " + key(kWide, kBuy);
    QTest::newRow("refused leg status still reported")
        << VariantMapList{legRecord(kSym, kBuy, "3")} << QStringList{buy}
        << QStringList{"", "1"} << "";
}

void TestInstanceStatus::statusUpdateLegs()
{
    QFETCH(VariantMapList, legRecords);
    QFETCH(QStringList, reported);
    QFETCH(QStringList, statuses);
    QFETCH(QString, log);

    InstanceInfoBase inst;
    inst.setInstanceID(kId);
    SymbolInfoBase* all = addLeg(inst, kSym, "All");
    SymbolInfoBase* buy = addLeg(inst, kSym, kBuy);
    buy->setStatus("1");
    QSignalSpy legSpy(m_mgr, &InstanceMgr::signalSymbolStatusUpdate);
    LogCapture capture;

    inst.OnRecv_InstStatusUpdate(VariantMapList{{{Strat::strategyStatus, "3"}}} + legRecords);

    QCOMPARE(QStringList({all->getStatus(), buy->getStatus()}), statuses);
    QCOMPARE(capture.contains(QtDebugMsg, "symbolInfo null"), !log.isEmpty());
    if (!log.isEmpty())
        QVERIFY(capture.contains(QtDebugMsg, log));
    QCOMPARE(legSpy.count(), 1);
    const LegRecords legs = legSpy.at(0).at(0).value<LegRecords>();
    QCOMPARE(QStringList(legs.keys()), reported);
    for (const VariantMap& record : legRecords) { // each reported key carries its record
        const QString side = record.value(Tessel_Fields::Security::side, "All").toString();
        const QString k = key(record.value(Tessel_Fields::Security::symbol).toString(), side);
        if (legs.contains(k))
            QCOMPARE(legs.value(k), record);
    }
}

void TestInstanceStatus::modifyPush_data()
{
    QTest::addColumn<QString>("algoType");
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("alias");
    QTest::addColumn<QString>("ack");
    QTest::addColumn<QString>("params");
    QTest::addColumn<QString>("symbol");    // the leg to look at (side Buy)
    QTest::addColumn<QStringList>("leg");   // limit price, target qty, target amount
    QTest::addColumn<double>("target");     // the instance's
    QTest::addColumn<int>("legs");
    QTest::addColumn<QString>("warning");
    QTest::addColumn<bool>("foreignLogged");

    const QString plain = QStringLiteral("Plain");
    const QString instr = Algo_Values::AlgoGlobalType::instruction;
    const QString one = securities({security(kSym, 9, 90, "2.5", "3.5")});
    const QStringList untouched{"1", "5", "50"};
    QTest::newRow("unacknowledged: legs untouched")
        << plain << kLogin << "" << "0" << one << kSym << untouched << 7.0 << 1 << "" << false;
    QTest::newRow("acknowledged: limit price and targets")
        << plain << kLogin << "" << "1" << one << kSym << QStringList{"2.5", "9", "90"} << 9.0
        << 1 << "" << false;
    QTest::newRow("POV extension alias: POV limit price")
        << plain << kLogin << "指令POV扩展策略" << "1" << one << kSym
        << QStringList{"3.5", "9", "90"} << 9.0 << 1 << "" << false;
    QTest::newRow("new security: leg added, target with display factor")
        << plain << kLogin << "" << "1"
        << securities({security(kWide, 100, 0, "8"), security(kSym, 9, 90, "2.5")}) << kWide
        << QStringList{"8", "100", "0"} << 1009.0 << 2 << "" << false;
    QTest::newRow("instruction reads its own list")
        << instr << kLogin << "" << "1"
        << json({{Algo_Values::AlgoParamId::InstructionAlgoSecurityList,
                  QVariantList{security(kSym, 11, 110, "4")}},
                 {Content::SymbolParamKey, QVariantList{security(kSym, 22, 220, "5")}}})
        << kSym << QStringList{"4", "11", "110"} << 11.0 << 1 << "" << false;
    QTest::newRow("instruction of another user still applied")
        << instr << "other" << "" << "1"
        << securities({security(kSym, 11, 110, "4")},
                      Algo_Values::AlgoParamId::InstructionAlgoSecurityList)
        << kSym << QStringList{"4", "11", "110"} << 11.0 << 1 << "" << true;
    QTest::newRow("no securities: target kept") << plain << kLogin << "" << "1"
                                                << securities({}) << kSym << untouched << 7.0
                                                << 1 << "" << false;
    QTest::newRow("code with _ skipped")
        << plain << kLogin << "" << "1" << securities({security("600_1", 100, 0, "8")}) << kSym
        << untouched << 7.0 << 1 << "symbol key part contains _, skipped" << false;
    QTest::newRow("parameters not JSON") << plain << kLogin << "" << "1" << "oops" << kSym
                                         << untouched << 7.0 << 1 << "" << false;
}

void TestInstanceStatus::modifyPush()
{
    QFETCH(QString, algoType);
    QFETCH(QString, user);
    QFETCH(QString, alias);
    QFETCH(QString, ack);
    QFETCH(QString, params);
    QFETCH(QString, symbol);
    QFETCH(QStringList, leg);
    QFETCH(double, target);
    QFETCH(int, legs);
    QFETCH(QString, warning);
    QFETCH(bool, foreignLogged);

    InstanceInfoBase inst;
    inst.setInstanceID(kId);
    inst.setInstAlgoType(algoType);
    inst.setStatus("4");
    inst.setTargetQty(7);
    SymbolInfoBase* held = addLeg(inst, kSym, kBuy);
    held->setLimitPrice("1");
    held->setTargetQty(5);
    held->setTargetAmount(50);
    QSignalSpy modifySpy(m_mgr, &InstanceMgr::signalModifyPush);
    LogCapture capture;

    const QDateTime start(QDate(2024, 3, 5), QTime(9, 31, 2));
    inst.OnRecv_InstModifyPush({{{Strat::strategyStatus, "3"},
                                 {Helm::ExecAckStatus, ack},
                                 {Strat::StrategyInstanceAlias, alias},
                                 {Helm::StrategyAlterComment, "why"},
                                 {Tessel_Fields::UserAccount::userID, user},
                                 {Strat::strategyParas, params},
                                 {Helm::AlgStartTime, start.toString(kTimeFormat)}}});

    const SymbolInfoBase* l = inst.getSymbolInfo(key(symbol, kBuy));
    QVERIFY(l);
    QCOMPARE(l->getKey(), key(symbol, kBuy));
    QCOMPARE(l->symbol(), symbol);
    QCOMPARE(QStringList({l->limitPrice(), QString::number(l->targetQty()),
                          QString::number(l->targetAmount())}),
             leg);
    QCOMPARE(inst.targetQty(), target);
    QCOMPARE(inst.getSymbolSize(), legs);
    QCOMPARE(capture.contains(QtWarningMsg, "InstanceInfoBase::OnRecv_InstModifyPush"),
             !warning.isEmpty());
    if (!warning.isEmpty())
        QVERIFY(capture.contains(QtWarningMsg, warning));
    QCOMPARE(capture.contains(QtDebugMsg, "modified by another user"), foreignLogged);
    // Status, times and the notification follow whatever the acknowledgement.
    QCOMPARE(inst.status(), QStringLiteral("3"));
    QCOMPARE(inst.startTime(), start);
    QCOMPARE(modifySpy.count(), 1);
    QCOMPARE(modifySpy.at(0), (QVariantList{kId, ack, "why"}));
}

void TestInstanceStatus::routersEmitAfterReleasingLock_data()
{
    QTest::addColumn<bool>("chained");
    QTest::addColumn<QStringList>("order");
    // The status notification names the status its update left, even when a
    // receiver has moved the instance on since.
    QTest::newRow("status then modify")
        << false << QStringList{"legs 3", "status 3 3", "modify 4 1 why"};
    QTest::newRow("modify routed by a receiver")
        << true << QStringList{"legs 3", "modify 4 1 why", "status 3 4"};
}

void TestInstanceStatus::routersEmitAfterReleasingLock()
{
    QFETCH(bool, chained);
    QFETCH(QStringList, order);

    static int serial = 0;
    const QString id = QStringLiteral("status-router-%1").arg(++serial);
    auto* inst = new InstanceInfoBase;
    inst->setInstanceID(id);
    inst->setStatus("4");
    addLeg(*inst, kSym, kBuy);
    m_mgr->InsertNewInstance(inst);

    const VariantMapList modify{{{Strat::strategyStatus, "4"},
                                 {Helm::ExecAckStatus, "1"},
                                 {Helm::StrategyAlterComment, "why"},
                                 {Strat::strategyParas, securities({security(kSym, 9, 0, "2")})}}};
    QStringList seen;
    QList<QString> legKeys;
    bool modifyRouted = false;
    // Receivers connected directly read the instance under the content lock.
    const auto readStatus = [inst] {
        QReadLocker locker(InstanceMgr::instance()->getLocker());
        return inst->status();
    };
    QObject context;
    connect(m_mgr, &InstanceMgr::signalSymbolStatusUpdate, &context,
            [&](const LegRecords& legs) {
                seen.append("legs " + readStatus());
                legKeys = legs.keys();
                if (chained)
                    modifyRouted = m_mgr->onRecv_InstModifyPush(id, modify);
            },
            Qt::DirectConnection);
    connect(m_mgr, &InstanceMgr::signalStatusUpdated, &context,
            [&](const QString&, const QString& status) {
                seen.append(QStringList{"status", status, readStatus()}.join(' '));
            },
            Qt::DirectConnection);
    connect(m_mgr, &InstanceMgr::signalModifyPush, &context,
            [&](const QString&, const QString& ack, const QString& comment) {
                seen.append(QStringList{"modify", readStatus(), ack, comment}.join(' '));
            },
            Qt::DirectConnection);

    int handled = -1;
    const bool ended = endsInTime([&] {
        handled = m_mgr->OnRecv_InstStatusUpdate(
            id, {{{Strat::strategyStatus, "3"}}, legRecord(kSym, kBuy, "3")});
        if (!chained)
            modifyRouted = m_mgr->onRecv_InstModifyPush(id, modify);
    });
    QVERIFY2(ended, "a direct receiver reading under the content lock deadlocked");
    QCOMPARE(handled, 0);
    QVERIFY(modifyRouted);
    QCOMPARE(seen, order);
    QCOMPARE(legKeys, QList<QString>{key(kSym, kBuy, id)});
    {
        QReadLocker locker(m_mgr->getLocker());
        QCOMPARE(inst->getSymbolInfo(key(kSym, kBuy, id))->targetQty(), 9.0);
    }
    m_mgr->DeleteInstance(id);
}

QTEST_GUILESS_MAIN(TestInstanceStatus)
#include "tst_instancestatus.moc"
