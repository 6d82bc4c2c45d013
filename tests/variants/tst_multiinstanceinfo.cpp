// The multi-strategy (basis / pair) instance: the update-counter guard, the
// two progress feeds (detail metadata and the push batch), the plan read by
// initialisation and parameter refresh, the modify push, and copies.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

#include <memory>

namespace P = Multi_Fields::MultiInstProgressFields;
namespace Detail = Multi_Fields::MulitStrDetailInfo;
namespace Basis = Multi_Fields::MulitStrBasis;
namespace Table = Multi_Fields::MulitTableInfo;
namespace Effect = Multi_Fields::MulitEffectTime;
namespace Helm = Algo_Fields::HelmStrategy;
namespace Strategy = Tessel_Fields::Strategy;

namespace {

const QString kID = QStringLiteral("multi1");
const QString kName = QStringLiteral("PairBasis");

QString array(const QJsonArray& a) { return QJsonDocument(a).toJson(QJsonDocument::Compact); }
QString object(const QJsonObject& o) { return QJsonDocument(o).toJson(QJsonDocument::Compact); }

// Snapshot n: every field tells n apart; running quantities come as JSON numbers.
QJsonObject snapshot(int cnt, int n, bool running = true, qint64 updateTime = 0)
{
    const QString t = QString::number(n);
    QJsonObject top{{P::UpdateCnt, cnt}, {P::EntrustRatio, "0." + t}, {P::RealBasis, n + 0.5},
                    {P::ExpectBasis, n + 0.25}, {P::SingleOrderQty, n * 10},
                    {P::TotalOrderQty, n * 1000}, {P::Batch, n}, {P::LamenessState, n % 2 == 1},
                    {P::TradingState, "trade" + t}, {QStringLiteral("策略状态"), "exec" + t},
                    {P::Remarks, "remark" + t}, {QStringLiteral("更新时间"), updateTime}};
    if (running) {
        top.insert(P::RunningData, QJsonObject{{P::FilledQty, n * 100}, {P::EntrustQty, n * 200},
                                               {P::Progress, "0." + t}, {P::OpenQty, n * 30},
                                               {P::LamenessRate, "rate" + t}});
    }
    return top;
}

VariantMap merged(VariantMap base, const VariantMap& changes)
{
    for (auto it = changes.cbegin(); it != changes.cend(); ++it)
        base.insert(it.key(), it.value());
    return base;
}

// The 21 fields of the class and the instance comments, by name.
VariantMap fields(const MultiInstanceInfo& m)
{
    return {{"exec", m.getMultiExecStatus()}, {"trade", m.getMultiTradeStatus()},
            {"effect", m.getMultiOpenOrClose()}, {"side", m.getMultiTradeSide()},
            {"ratio", m.getMultiRatio()}, {"order", m.getMultiOrderQty()},
            {"filled", m.getMultiFilledQty()}, {"progress", m.getMultiProgress()},
            {"batch", m.getMultiBatch()}, {"open", m.getMultiOpenQty()},
            {"rate", m.getMultiLamenessRate()}, {"state", m.getMultiLamenessState()},
            {"flag", m.getMultiLamenessFlag()}, {"cnt", m.getMultiUpdateCnt()},
            {"target", m.getMultiTargetQty()}, {"total", m.getMultiTotalQty()},
            {"real", m.getMultiRealBasis()}, {"expect", m.getMultiExpectBasis()},
            {"compare", m.getMultiBasisCompare()}, {"valid", m.getMultiValidTime()},
            {"accounts", m.getMultiTradingAccountLst()}, {"comments", m.getInstanceComments()}};
}

// The fields of a fresh instance once snapshot n (counter cnt) is applied.
VariantMap applied(int cnt, int n, bool flag, bool running = true)
{
    const QString t = QString::number(n);
    const auto run = [running](const QString& v) { return running ? v : QString(); };
    return merged(fields(MultiInstanceInfo()),
                  {{"cnt", cnt}, {"ratio", "0." + t}, {"real", n + 0.5}, {"expect", n + 0.25},
                   {"target", n * 10.0}, {"total", n * 1000.0}, {"batch", double(n)},
                   {"state", n % 2 == 1}, {"trade", "trade" + t}, {"exec", "exec" + t},
                   {"comments", "remark" + t}, {"flag", flag}, {"rate", run("rate" + t)},
                   {"filled", run(QString::number(n * 100))}, {"progress", run("0." + t)},
                   {"order", run(QString::number(n * 200))},
                   {"open", run(QString::number(n * 30))}});
}

std::unique_ptr<MultiInstanceInfo> makeInstance()
{
    auto m = std::make_unique<MultiInstanceInfo>();
    m->setInstanceID(kID);
    m->setStrategyName(kName);
    return m;
}

QString legKey(const QString& symbol, const QString& side)
{
    return InstanceMgr::GetSymbolExtInfoKey(kID, symbol, side);
}

// Everything the modify push may touch: the class fields, base fields, legs.
VariantMap pushState(MultiInstanceInfo& m)
{
    VariantMap legs;
    for (SymbolInfoBase* leg : m.GetAllSymbols_Ptr<SymbolInfoBase>()) {
        legs.insert(leg->getKey(), QStringList{leg->symbol(), leg->orderSide(), leg->limitPrice(),
                                               QString::number(leg->targetQty())}.join('/'));
    }
    return merged(fields(m), {{"params", m.params()}, {"status", m.status()}, {"legs", legs},
                              {"remark", m.remark()}, {"alias", m.instanceAlias()},
                              {"start", m.startTime()}, {"end", m.endTime()},
                              {"instTarget", m.targetQty()}, {"mode", m.getInstMode()},
                              {"marketRate", m.getMarketRate()}, {"openSide", m.getOpenSide()},
                              {"invest", m.getInvestType()}});
}

const QString kEarlierParams =
    R"({"OrderSide":"Buy","comment":"oldComment","instMode":"custom","OpenClose":"oldOpen",)"
    R"("SymbolParamKey":[{"Symbol":"600000","PriceLimits":"1","Quantity":5}]})";

VariantMap basisOf(const QString& type)
{
    return {{Detail::Basis, QVariantList{VariantMap{{Basis::BasisType, type}}}}};
}

} // namespace

class TestMultiInstanceInfo : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("algologic.*.debug=true"));
        HelmBusinessDataInterface::Reset();
        HelmBusinessDataInterface::SetDispFactor("600000", 10);
        // A single-security entry: an empty mode in the parameters derives "single".
        KxAlgoDataMgr::instance().setStrategies({AesStrategy(kName, kName, "MultiStr", "1")});
    }

    void updateCounterGuard()
    {
        MultiInstanceInfo m;
        QVERIFY(!m.setMultiUpdateCnt(-1)); // below the default
        QVERIFY(m.setMultiUpdateCnt(7));
        QVERIFY(!m.setMultiUpdateCnt(5));
        QCOMPARE(m.getMultiUpdateCnt(), 7);
        QVERIFY(m.setMultiUpdateCnt(7)); // an equal counter is taken
        QVERIFY(m.setMultiUpdateCnt(9));
        QCOMPARE(m.getMultiUpdateCnt(), 9);
    }

    // Both progress feeds, each row after a first detail snapshot (counter 1,
    // lameness flag true). `results`: what each detail text returned, then the
    // instance IDs of the progress signals.
    void progressFeeds_data()
    {
        QTest::addColumn<int>("feed"); // 0 detail, 1 push, 2 push through the one-argument form
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<VariantMap>("expected");
        QTest::addColumn<QStringList>("results");
        QTest::addColumn<int>("level");
        QTest::addColumn<QString>("logged");

        const VariantMap before = applied(1, 9, true);
        const QString seven = array({snapshot(7, 1)});
        const QString fill = QStringLiteral("MultiInstanceInfo::fillMultiProgressReport ");
        QTest::newRow("detail applied, numbers read as text")
            << 0 << QStringList{seven} << applied(7, 1, true) << QStringList{kID} << 0 << "";
        QTest::newRow("detail stale counter changes nothing")
            << 0 << QStringList{seven, array({snapshot(5, 2)})} << applied(7, 1, true)
            << QStringList{kID, ""} << 0 << "";
        QTest::newRow("detail equal counter applied again")
            << 0 << QStringList{seven, array({snapshot(7, 2)})} << applied(7, 2, true)
            << QStringList{kID, kID} << 0 << "";
        QTest::newRow("detail without running data")
            << 0 << QStringList{array({snapshot(3, 2, false)})} << applied(3, 2, true, false)
            << QStringList{kID} << 0 << "";
        QTest::newRow("detail empty array") << 0 << QStringList{"[]"} << before << QStringList{""}
            << int(QtWarningMsg) << fill + "解析失败：[]";
        QTest::newRow("detail bad JSON") << 0 << QStringList{"[{"} << before << QStringList{""}
            << int(QtDebugMsg) << fill + "json error: progress json:  [{";

        const auto obj = [](int cnt, int n, qint64 time) {
            return object(snapshot(cnt, n, true, time));
        };
        QTest::newRow("push: older update time ends the batch")
            << 1 << QStringList{obj(2, 1, 200), obj(3, 2, 100), obj(4, 3, 300)}
            << applied(2, 1, true) << QStringList{} << int(QtDebugMsg)
            << kID + " new timestamp: 100 smaller than old timestamp: 200 " + obj(3, 2, 100);
        QTest::newRow("push: equal counters pass")
            << 1 << QStringList{obj(3, 1, 1), obj(3, 2, 2), obj(4, 3, 2)} << applied(4, 3, true)
            << QStringList{kID} << 0 << "";
        QTest::newRow("push: stale counter ends the batch")
            << 1 << QStringList{obj(5, 1, 1), obj(4, 2, 2), obj(6, 3, 3)} << applied(5, 1, true)
            << QStringList{} << 0 << "";
        QTest::newRow("push: bad JSON ends the batch")
            << 1 << QStringList{obj(2, 1, 1), "{bad", obj(3, 2, 2)} << applied(2, 1, true)
            << QStringList{} << int(QtDebugMsg)
            << "MultiInstanceInfo::OnRecvInstProgressInfo json error: progress json:  {bad";
        QTest::newRow("push: empty batch still signals")
            << 1 << QStringList{} << before << QStringList{kID} << 0 << "";
        QTest::newRow("push: one-argument form clears the lameness flag")
            << 2 << QStringList{obj(2, 2, 5)} << applied(2, 2, false) << QStringList{kID} << 0
            << "";
    }
    void progressFeeds()
    {
        QFETCH(int, feed);
        QFETCH(QStringList, texts);
        QFETCH(VariantMap, expected);
        QFETCH(QStringList, results);
        QFETCH(int, level);
        QFETCH(QString, logged);

        auto m = makeInstance();
        QCOMPARE(m->fillMultiProgressReport(array({snapshot(1, 9)})), kID);
        QSignalSpy spy(InstanceMgr::instance(), &InstanceMgr::signalMultiProgressUpdated);
        LogCapture log;
        QStringList seen;
        InstanceInfoBase* base = m.get(); // the pushes through the virtual table, as routed
        QMap<QString, QList<QString>> changed;
        if (feed == 0) {
            for (const QString& text : texts)
                seen << m->fillMultiProgressReport(text);
        } else if (feed == 1) {
            base->OnRecvInstProgressInfo(texts, true, changed);
        } else {
            base->OnRecvInstProgressInfo(texts);
        }
        for (const QList<QVariant>& arguments : qAsConst(spy))
            seen << arguments.first().toString();
        QCOMPARE(seen, results);
        QCOMPARE(fields(*m), expected);
        QCOMPARE(log.countOfType(QtWarningMsg), level == QtWarningMsg ? 1 : 0);
        if (!logged.isEmpty())
            QVERIFY2(log.contains(QtMsgType(level), logged), qPrintable(logged));
    }

    void recordHandlers()
    {
        auto m = makeInstance();
        m->OnRect_QueryAlgoStrategyResponse_Detail(
            {{Strategy::strategyID, kID}, {Helm::Metadata, array({snapshot(2, 3)})}});
        QCOMPARE(fields(*m), applied(2, 3, true)); // the metadata is a progress text
        m->initInfo({{Strategy::strategyID, kID}, {Strategy::strategyStatus, "1"}});
        QCOMPARE(m->getMultiExecStatus(), QStringLiteral("1"));
        m->initInfo({{Strategy::strategyID, kID}});
        QCOMPARE(m->getMultiExecStatus(), QString());
    }

    void initSymbolInfoPlan_data()
    {
        QTest::addColumn<VariantMap>("content");
        QTest::addColumn<VariantMap>("changes"); // over the preset fields
        QTest::addColumn<QString>("logged");

        // Quantities and accounts always follow the plan given.
        const VariantMap reset{{"target", 0.0}, {"total", 0.0}, {"accounts", QStringList()}};
        const QString open = Tessel_Values::PositionEffect::open;
        const QString close = Tessel_Values::PositionEffect::close;
        const QStringList types{Basis::ForwardOpen, Basis::ForwardClose, Basis::ReverseOpen,
                                Basis::ReverseClose};
        for (int i = 0; i < types.size(); ++i) {
            const VariantMap basis{{"side", i < 2 ? "Buy" : "Sell"},
                                   {"effect", i % 2 ? close : open}};
            QTest::newRow(qPrintable(types[i])) << basisOf(types[i]) << merged(reset, basis) << "";
        }
        QTest::newRow("unknown basis type") << basisOf("Sideways") << reset << "";
        QTest::newRow("quantities and status")
            << VariantMap{{Detail::SingleOrderQty, "300"}, {Detail::TotalOrderQty, 3000},
                          {Strategy::strategyStatus, "1"}}
            << merged(reset, {{"target", 300.0}, {"total", 3000.0}, {"exec", "1"}}) << "";
        QTest::newRow("empty status keeps exec status")
            << VariantMap{{Strategy::strategyStatus, ""}} << reset << "";

        const auto leg = [](const QString& account, const QString& role = QString()) {
            return VariantMap{{Table::TradingAccount, account}, {Table::ActivePassive, role},
                              {Table::PrincipalRatio, "0.6"}};
        };
        QTest::newRow("accounts distinct over table and both lists")
            << VariantMap{{Detail::StrategyID,
                           QVariantList{leg("accA", "Active"), leg("accA"), leg("accB")}},
                          {Detail::SymbolListA,
                           VariantMap{{"legs", QVariantList{leg("accB"), leg("accC"), leg("")}}}},
                          {Detail::SymbolListB, QVariantList{leg("accC"), leg("ACCA")}}}
            << merged(reset, {{"accounts", QStringList{"accA", "accB", "accC", "ACCA"}}})
            << "MultiInstanceInfo::initSymbolInfo active accA 0.6";
        const auto range = [](const QString& start, const QString& end) {
            return VariantMap{{Effect::EffectTimeStart, start}, {Effect::EffectTimeEnd, end}};
        };
        QTest::newRow("single time range joined as given")
            << VariantMap{{Detail::EffectTime, range("9:30", "11:30:00")}}
            << merged(reset, {{"valid", QStringList{"9:30-11:30:00"}}}) << "";
        QTest::newRow("list of time ranges")
            << VariantMap{{Detail::EffectTime, QVariantList{range("09:30:00", "11:30:00"),
                                                             range("13:00:00", "14:57:00")}}}
            << merged(reset, {{"valid", QStringList{"09:30:00-11:30:00", "13:00:00-14:57:00"}}})
            << "";
    }
    void initSymbolInfoPlan()
    {
        QFETCH(VariantMap, content);
        QFETCH(VariantMap, changes);
        QFETCH(QString, logged);

        auto m = makeInstance();
        m->fillMultiProgressReport(array({snapshot(1, 9)})); // exec status and quantities
        m->setMultiTradeSide("preSide");
        m->setMultiOpenOrClose("preEffect");
        m->setMultiTradingAccountLst({"old"});
        if (content.contains(Detail::EffectTime))
            m->setMultiValidTime({"old"}); // a plan with time ranges replaces the earlier ones
        const VariantMap expected = merged(fields(*m), changes);
        LogCapture log;
        m->initSymbolInfo(content, {});
        QCOMPARE(fields(*m), expected);
        if (!logged.isEmpty())
            QVERIFY2(log.contains(QtDebugMsg, logged), qPrintable(logged));
    }

    void basisCompare_data()
    {
        QTest::addColumn<QString>("params");
        QTest::addColumn<QString>("compare");
        QTest::newRow("comparison taken") << R"({"Basis":[{"BasisCompare":">="}]})" << ">=";
        QTest::newRow("missing key empties it") << R"({"Basis":[{"BasisType":"X"}]})" << "";
        QTest::newRow("empty basis keeps it") << R"({"Basis":[]})" << "old";
        QTest::newRow("invalid JSON keeps it") << R"({"Basis":)" << "old";
    }
    void basisCompare()
    {
        QFETCH(QString, params);
        QFETCH(QString, compare);
        auto m = makeInstance();
        m->setMultiBasisCompare("old");
        m->setParams(params);
        QCOMPARE(m->getMultiBasisCompare(), compare);
    }

    void modifyPush_data()
    {
        QTest::addColumn<VariantMap>("record");
        QTest::addColumn<VariantMap>("changes"); // over the state before the push
        QTest::addColumn<bool>("signalled");
        QTest::addColumn<int>("warnings"); // security codes with "_" are refused
        QTest::addColumn<QString>("logged");

        const QString full =
            R"({"OrderSide":"Buy","comment":"new","instMode":"multi","participationrate":"0.3",)"
            R"("OpenClose":"Close","InvestType":"Hedge","Basis":[{"BasisType":"ReverseOpen"}],)"
            R"("SingleOrderQty":20,"StrategyID":[{"TradingAccount":"accA"}],"SymbolParamKey":[)"
            R"({"Symbol":"600000","OrderSide":"Sell","PriceLimits":"10.5","Quantity":100}]})";
        const VariantMap record{{Helm::ExecAckStatus, "1"}, {Strategy::strategyStatus, "1"},
                                {Strategy::strategyParas, full},
                                {Helm::StrategyAlterComment, "alter"},
                                {Strategy::StrategyInstanceAlias, "alias2"},
                                {Helm::AlgStartTime, "20240105-09:30:00"},
                                {Helm::AlgEndTime, "20240105-14:57:00"}};
        const QDateTime start(QDate(2024, 1, 5), QTime(9, 30));
        const QString where = QStringLiteral("MultiInstanceInfo::OnRecv_InstModifyPush ");
        QTest::newRow("not acknowledged: only the signal")
            << merged(record, {{Helm::ExecAckStatus, "0"}}) << VariantMap{} << true << 0 << "";
        QTest::newRow("acknowledged")
            << record
            << VariantMap{{"params", full}, {"status", "1"}, {"remark", "alter"},
                          {"alias", "alias2"}, {"comments", "new"}, {"start", start},
                          {"end", start.addSecs(19620)}, {"instTarget", 1000.0},
                          {"mode", "multi"}, {"marketRate", "0.3"}, {"openSide", "Close"},
                          {"invest", "Hedge"}, {"side", "Sell"}, {"effect", "Open"},
                          {"target", 20.0}, {"accounts", QStringList{"accA"}},
                          {"legs", VariantMap{{legKey("600000", "Buy"), "600000/Buy/10.5/100"}}}}
            << true << 0 << where + "contains AlgStartTime " + kID;
        const QString newLeg = R"({"OrderSide":"Sell","SymbolParamKey":[)"
                               R"({"Symbol":"000001","PriceLimits":"8.8","Quantity":3},)"
                               R"({"Symbol":"60_1","Quantity":7}]})";
        QTest::newRow("new leg added, code with underscore skipped")
            << VariantMap{{Helm::ExecAckStatus, "1"}, {Strategy::strategyStatus, "1"},
                          {Strategy::strategyParas, newLeg}}
            << VariantMap{{"params", newLeg}, {"status", "1"}, {"alias", ""}, {"comments", ""},
                          {"instTarget", 3.0}, {"mode", "single"}, {"openSide", ""},
                          {"legs", VariantMap{{legKey("600000", "Buy"), "600000/Buy/1/5"},
                                              {legKey("000001", "Sell"), "000001/Sell/8.8/3"}}}}
            << true << 1 << where + legKey("000001", "Sell");
        QTest::newRow("broken parameter JSON stops after taking the text")
            << merged(record, {{Strategy::strategyParas, "{broken"}})
            << VariantMap{{"params", "{broken"}, {"mode", "single"}, {"openSide", ""}} << false << 0
            << "";
    }
    void modifyPush()
    {
        QFETCH(VariantMap, record);
        QFETCH(VariantMap, changes);
        QFETCH(bool, signalled);
        QFETCH(int, warnings);
        QFETCH(QString, logged);

        auto m = makeInstance(); // the state before: an earlier acknowledged change
        m->OnRecv_InstModifyPush({{{Helm::ExecAckStatus, "1"},
                                   {Helm::StrategyAlterComment, "oldRemark"},
                                   {Strategy::StrategyInstanceAlias, "oldAlias"},
                                   {Strategy::strategyParas, kEarlierParams}}});
        const VariantMap expected = merged(pushState(*m), changes);

        QSignalSpy spy(InstanceMgr::instance(), &InstanceMgr::signalModifyPush);
        LogCapture log;
        static_cast<InstanceInfoBase*>(m.get())->OnRecv_InstModifyPush({record});

        QCOMPARE(pushState(*m), expected);
        QCOMPARE(spy.count(), signalled ? 1 : 0);
        if (signalled) {
            const QVariant ack = record.value(Helm::ExecAckStatus);
            const QVariant comment = record.value(Helm::StrategyAlterComment, QString());
            QCOMPARE(spy.first(), (QList<QVariant>{kID, ack, comment}));
        }
        QCOMPARE(log.count(QtWarningMsg, "MultiInstanceInfo::OnRecv_InstModifyPush"), warnings);
        if (!logged.isEmpty())
            QVERIFY2(log.contains(QtDebugMsg, logged), qPrintable(logged));
    }

    void registryAndCopies_data()
    {
        QTest::addColumn<int>("kind");
        QTest::newRow("copy construct") << 0;
        QTest::newRow("copy assign") << 1;
    }
    void registryAndCopies()
    {
        QFETCH(int, kind);
        std::unique_ptr<InstanceInfoBase> created(InstanceMgr::instance()->CreateInstance(
            Algo_Values::AlgoGlobalType::multiStr, VariantMap(), QStringLiteral("Pair")));
        auto* source = dynamic_cast<MultiInstanceInfo*>(created.get());
        QVERIFY(source);
        QCOMPARE(source->getClassType(), QStringLiteral("Multi"));
        source->setInstanceID(kID);
        QVERIFY(!InstanceMgr::instance()->ContainsInstance(kID));
        // Every one of the 21 fields away from its default.
        const VariantMap range{{Effect::EffectTimeStart, "9:30"}, {Effect::EffectTimeEnd, "11:30"}};
        const QVariantList table{VariantMap{{Table::TradingAccount, "accA"}}};
        const VariantMap plan{{Detail::EffectTime, range}, {Detail::StrategyID, table}};
        source->initSymbolInfo(merged(basisOf(Basis::ReverseClose), plan), {});
        source->fillMultiProgressReport(array({snapshot(8, 1)}));
        source->setMultiBasisCompare(">=");
        auto* sourceLeg = new T0SymbolInfo;
        sourceLeg->setKey(legKey("600000", "Buy"));
        sourceLeg->setLimitPrice("10.5");
        source->AddSymbolInfo(sourceLeg);
        const VariantMap original = fields(*source);
        const VariantMap fresh = fields(MultiInstanceInfo());
        for (auto it = original.cbegin(); it != original.cend(); ++it)
            QVERIFY2(it.value() != fresh.value(it.key()), qPrintable(it.key()));

        MultiInstanceInfo target;
        target.setMultiRatio("stale");
        target.AddSymbolInfo(new SymbolInfoBase);
        std::unique_ptr<MultiInstanceInfo> result;
        if (kind == 0)
            result = std::make_unique<MultiInstanceInfo>(*source);
        else
            target = *source;
        MultiInstanceInfo& copy = result ? *result : target;
        QCOMPARE(fields(copy), original);
        QCOMPARE(copy.getSymbolSize(), 1);
        SymbolInfoBase* leg = copy.getSymbolInfo(legKey("600000", "Buy"));
        QVERIFY(leg && leg != sourceLeg);
        QVERIFY(!dynamic_cast<T0SymbolInfo*>(leg)); // "Multi" legs are copied as plain legs
        QCOMPARE(leg->limitPrice(), QStringLiteral("10.5"));

        copy.setMultiRatio("changed");
        copy.setMultiTradingAccountLst({});
        leg->setLimitPrice("0");
        QCOMPARE(fields(*source), original);
        QCOMPARE(sourceLeg->limitPrice(), QStringLiteral("10.5"));
    }
};

QTEST_GUILESS_MAIN(TestMultiInstanceInfo)
#include "tst_multiinstanceinfo.moc"
