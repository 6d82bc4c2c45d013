// The T0 instance, as the registry creates it: plan fields and "All" legs
// built (and rebuilt) from the Chinese-labelled parameter list, and the JSON
// progress-gather answer handed to those legs and when it marks progress final.

#include <algologic.h>

#include <QtTest>

namespace {

namespace Content = Algo_Fields::AlgoInstContentInfo;
namespace Progress = Algo_Fields::AlgoInstProgressFields;
namespace Strategy = Tessel_Fields::Strategy;
namespace Helm = Algo_Fields::HelmStrategy;
const QString kID = QStringLiteral("t0inst");

// content; occupied amount, start time, end time; symbol list; account list
using Init = std::tuple<VariantMap, QStringList, QStringList, QStringList>;
// status; report text; bought, sold of leg 600000, then of leg 000001; final
using Gather = std::tuple<QString, QString, QList<double>, bool>;

// The T0 parameter list of "symbol/account" legs, with the plan fields.
VariantMap content(const QStringList& legs, VariantMap plan = {})
{
    QVariantList list;
    for (const QString& leg : legs)
        list << VariantMap{{Content::Symbol, leg.section('/', 0, 0)},
                           {Content::TradingAccount, leg.section('/', 1)}};
    plan.insert(Content::SymbolParamKey, list);
    return plan;
}

// An uninitialised T0 instance from the registry, owned by the caller.
std::unique_ptr<InstanceInfoBase> create()
{
    const QString t0 = Algo_Values::AlgoGlobalType::T0;
    std::unique_ptr<InstanceInfoBase> inst(InstanceMgr::instance()->CreateInstance(t0, {}, t0));
    inst->setInstanceID(kID);
    return inst;
}

T0SymbolInfo* t0Leg(const std::unique_ptr<InstanceInfoBase>& inst, const QString& symbol)
{
    return dynamic_cast<T0SymbolInfo*>(
        inst->getSymbolInfo(InstanceMgr::GetSymbolExtInfoKey(kID, symbol, QStringLiteral("All"))));
}

// A progress-gather element of one leg: bought and sold quantities.
QJsonObject dealt(const QString& symbol, int buy, int sell)
{
    return {{Progress::Symbol, symbol}, {Progress::buyOrderQty, 1000}, {Progress::buyDealQty, buy},
            {Progress::sellOrderQty, 1000}, {Progress::sellDealQty, sell}};
}

} // namespace

Q_DECLARE_METATYPE(Init)
Q_DECLARE_METATYPE(Gather)

class TestT0InstanceInfo : public QObject
{
    Q_OBJECT
private slots:
    void initSymbolInfo_data();
    void initSymbolInfo();
    void progressGather_data();
    void progressGather();
};

void TestT0InstanceInfo::initSymbolInfo_data()
{
    QTest::addColumn<Init>("row");
    QTest::newRow("labelled occupied amount; lists without repeats, case kept")
        << Init{content({"600519/accA", "000001/accA", "600519/accB", "sh600519/AccA"},
                        {{"占用金额", "500000"}, {AlgoConst::LabelStartTime, "09:35"},
                         {AlgoConst::LabelEndTime, "14:50"}}),
                {"500000", "09:35", "14:50"}, {"600519", "000001", "sh600519"},
                {"accA", "accB", "AccA"}};
    QTest::newRow("protocol key wins over the label")
        << Init{content({"600519/acc1"}, {{"占用金额", "500000"}, {Content::occupyAmount, "8"}}),
                {"8", "", ""}, {"600519"}, {"acc1"}};
    QTest::newRow("empty list") << Init{content({}, {{"占用金额", "1"}}), {"old", "", ""}, {"old"}, {}};
}

void TestT0InstanceInfo::initSymbolInfo()
{
    QFETCH(Init, row);
    const auto& [content, plan, symbols, accounts] = row;
    const std::unique_ptr<InstanceInfoBase> created = create();
    auto* t0 = dynamic_cast<T0InstanceInfo*>(created.get());
    QVERIFY(t0);
    t0->setOccupyAmount("old");
    t0->setSymbolList({"old"});
    const QString key = InstanceMgr::GetSymbolExtInfoKey(kID, "600519", "All");
    const VariantMap state{{Helm::ClParentOrderID, "P1"}, {Strategy::strategyStatus, "1"}};

    t0->initSymbolInfo(content, {{key, state}});

    QCOMPARE(QStringList({t0->getOccupyAmount(), t0->getT0StartTime(), t0->getT0EndTime()}), plan);
    QCOMPARE(t0->getSymbolList(), symbols);
    QCOMPARE(t0->getSymbolTradingAccountList(), accounts);
    const T0SymbolInfo* l = t0Leg(created, "600519"); // a T0 leg on side "All", with its state
    QCOMPARE(l ? QStringList({l->orderSide(), l->getKey(), l->getClParentID(), l->getStatus()})
               : QStringList(),
             accounts.isEmpty() ? QStringList() : QStringList({"All", key, "P1", "1"}));
}

void TestT0InstanceInfo::progressGather_data()
{
    QTest::addColumn<Gather>("row");
    const QString complete = Algo_Values::InstanceStates::COMPLETE;
    const QJsonArray both{dealt("600000", 30, 20), dealt("000001", 40, 10)};
    const QString text = QJsonDocument(both).toJson();
    QTest::newRow("running") << Gather{"1", text, {30, 20, 40, 10}, false};
    QTest::newRow("complete: final") << Gather{complete, text, {30, 20, 40, 10}, true};
    QTest::newRow("empty list, stopped: final")
        << Gather{Algo_Values::InstanceStates::STOP, "[]", {0, 0, 0, 0}, true};
    QTest::newRow("bad JSON: nothing, not final")
        << Gather{complete, text.chopped(3), {0, 0, 0, 0}, false};
    QTest::newRow("element without symbol stops the walk, not final")
        << Gather{complete, QString(text).replace("600000", ""), {0, 0, 0, 0}, false};
}

// The legs are built again after the answer: the same objects keep what they were given.
void TestT0InstanceInfo::progressGather()
{
    QFETCH(Gather, row);
    const auto& [status, report, dealt, final] = row;
    const std::unique_ptr<InstanceInfoBase> inst = create();
    inst->initSymbolInfo(content({"600000/acc1", "000001/acc1"}), {});
    const T0SymbolInfo *a = t0Leg(inst, "600000"), *b = t0Leg(inst, "000001");
    QVERIFY(inst->setStatus(status));

    inst->OnRecv_StrategyProgressGatherResponse(
        {{{Strategy::strategyID, kID}, {Strategy::strategyReport, report}}});
    inst->initSymbolInfo(content({"600000/acc1", "000001/acc1"}), {});

    QVERIFY(t0Leg(inst, "600000") == a && t0Leg(inst, "000001") == b);
    QCOMPARE(QList<double>({a->buyDealQty(), a->sellDealQty(), b->buyDealQty(), b->sellDealQty()}),
             dealt);
    QCOMPARE(inst->finalProgress(), final);
}

QTEST_GUILESS_MAIN(TestT0InstanceInfo)
#include "tst_t0instanceinfo.moc"
