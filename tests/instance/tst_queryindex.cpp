// The registry's list queries answer from an index of the filter fields. After
// every step of mixed traffic (creation, query answers, setters, detail
// records, delete answers, host subclasses writing their members in routed
// handlers, replacement and removal, a change of login, bulk insertion) each
// query must equal a walk over every registered instance with the filters
// applied, in registry order.

#include <algologic.h>

#include <QtTest>

namespace {

namespace S = Tessel_Fields::Strategy;
namespace H = Algo_Fields::HelmStrategy;
using namespace Algo_Values::AlgoGlobalType;

InstanceMgr* mgr()
{
    return InstanceMgr::instance();
}

// A host's instance class: its progress handler writes its protected fields.
struct HostInstance : InstanceInfoBase
{
    void OnRecv_StrategyProgressGatherResponse(const VariantMapList& records) override
    {
        m_strategyDeleted = records.value(1).value(H::strategyDeleted).toString();
        m_createUser = records.value(1).value("user").toString();
    }
};

QStringList walk(const std::function<bool(const InstanceInfoBase*)>& take)
{
    const QMap<QString, InstanceInfoBase*> all = mgr()->GetInstanceInfoForAllType();
    AlgoLogic::ReadLocker locker(mgr()->getLocker());
    QStringList ids;
    for (const InstanceInfoBase* inst : all)
        if (take(inst))
            ids << inst->instanceID();
    return ids;
}

void compareWithWalk()
{
    const QString login = CBusinessDataBase::GetInstance()->GetLoginAccount();
    const auto live = [&](const InstanceInfoBase* i, bool everyone) {
        return i->getStrategyDeleted() != Algo_Values::AlgoDeleteStatus::deleted
            && (everyone || i->getCreateUser().isEmpty() || i->getCreateUser() == login);
    };
    for (const QString& type : {T0, QString("Normal"), multiStr, all, QString("none")}) {
        QCOMPARE(QStringList(mgr()->GetAllInstanceIDs(type)),
                 walk([&](auto i) { return type == all || i->instAlgoType() == type; }));
        for (bool everyone : {false, true})
            QCOMPARE(mgr()->GetAllInstanceIDsExceptDeleted(type, everyone),
                     walk([&](auto i) { return live(i, everyone) && i->instAlgoType() == type; }));
    }
    for (bool everyone : {false, true})
        QCOMPARE(mgr()->GetAllInstanceIDsExceptDeletedForAllType(everyone),
                 walk([&](auto i) { return live(i, everyone); }));
    const QStringList names{"AITWAP", "BasisArb", ""};
    QCOMPARE(mgr()->GetInstanceIDsForSpecialAlgoName(names),
             walk([&](auto i) { return names.contains(i->strategyName()); }));
}

VariantMap record(const QString& id, const QString& name, const QString& deleted = "0")
{
    return {{S::strategyID, id},    {S::strategyName, name},      {S::strategyStatus, "1"},
            {S::strategyType, "Normal"}, {H::strategyDeleted, deleted},
            {Tessel_Fields::UserAccount::userID, "trader01"}};
}

InstanceInfoBase* find(const QString& id)
{
    return mgr()->GetInstanceInfoForAllType().value(id);
}

// One step of traffic: "verb id [argument]".
void apply(const QString& step)
{
    const QStringList w = step.split(' ');
    const QString id = w.value(1), arg = w.value(2);
    InstanceInfoBase* inst = find(id); // the registry lock before the content lock
    QReadWriteLock* lock = mgr()->getLocker();
    if (w[0] == "create")
        mgr()->CreateInstance("Normal", record(id, arg), arg);
    else if (w[0] == "answer") // query answer; creates unknown instances
        mgr()->OnRecv_QueryAlgoStrategyResponse({record(id, arg, w.value(3, "0"))});
    else if (w[0] == "detail") {
        AlgoLogic::WriteLocker locker(lock);
        inst->OnRect_QueryAlgoStrategyResponse_Detail({{S::strategyName, arg}});
    } else if (w[0] == "deleteAnswer") {
        AlgoLogic::WriteLocker locker(lock);
        inst->OnRecv_DeleteAlgoInstanceResponse({});
    } else if (w[0] == "set") {
        AlgoLogic::WriteLocker locker(lock);
        const QString value = w.value(3);
        w[2] == "deleted" ? inst->setStrategyDeleted(value)
        : w[2] == "user"  ? inst->setCreateUser(value)
        : w[2] == "type"  ? inst->setInstAlgoType(value)
        : w[2] == "name"  ? inst->setStrategyName(value)
                          : inst->setInstanceID(value);
    } else if (w[0] == "host") {
        auto* host = new HostInstance;
        host->setInstanceID(id);
        mgr()->InsertNewInstance(host);
    } else if (w[0] == "hostRoute") // the host class marks itself deleted or not
        mgr()->OnRecv_StrategyProgressGatherResponse(
            {{{S::strategyID, id}}, {{H::strategyDeleted, arg}, {"user", w.value(3)}}});
    else if (w[0] == "reinsert") // the object again, under its (new) ID
        mgr()->InsertNewInstance(inst);
    else if (w[0] == "forget")
        mgr()->DeleteInstance(id);
    else if (w[0] == "login")
        CBusinessDataBase::GetInstance()->SetLoginAccount(id);
    else if (w[0] == "bulk")
        for (int i = 0; i < id.toInt(); ++i)
            mgr()->CreateInstance(i % 2 ? T0 : "Normal", record(QString("b%1").arg(i), arg), arg);
}

} // namespace

class TestQueryIndex : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        for (const QString& id : mgr()->GetAllInstanceIDs(unknown))
            mgr()->DeleteInstance(id);
        CBusinessDataBase::GetInstance()->SetLoginAccount("trader01");
        KxAlgoDataMgr::instance().setStrategies({AesStrategy("AITWAP", "TWAP", "Normal", "1"),
                                                 AesStrategy("T0Intraday", "T0", T0, "2"),
                                                 AesStrategy("BasisArb", "Basis", multiStr, "2")});
    }
    void queriesEqualWalk_data()
    {
        QTest::addColumn<QStringList>("steps");
        QTest::newRow("created") << QStringList{"create n1 AITWAP", "create n2 BasisArb"};
        QTest::newRow("query answers create, retype, delete")
            << QStringList{"answer a1 AITWAP", "answer a2 T0Intraday", "answer a1 BasisArb",
                           "answer a2 T0Intraday 1", "answer a2 T0Intraday 0"};
        QTest::newRow("setters") << QStringList{"create n1 AITWAP", "set n1 deleted 1",
                                                "set n1 user trader02", "set n1 type T0",
                                                "set n1 name BasisArb", "set n1 id z9"};
        QTest::newRow("detail renames, delete answer")
            << QStringList{"create n1 AITWAP", "detail n1 BasisArb", "deleteAnswer n1"};
        QTest::newRow("host class writes its members in a routed handler")
            << QStringList{"host h1", "hostRoute h1 1 other", "hostRoute h1 0 trader01",
                           "hostRoute h1 0 other"};
        QTest::newRow("replaced, renamed, under two IDs, forgotten")
            << QStringList{"create n1 AITWAP", "create n1 BasisArb", "set n1 id n0",
                           "reinsert n1", "set n0 deleted 1", "forget n1", "forget n0"};
        QTest::newRow("login changes")
            << QStringList{"create n1 AITWAP", "set n1 user trader02", "login trader02",
                           "login trader01"};
        QTest::newRow("bulk then single changes")
            << QStringList{"bulk 300 AITWAP", "set b7 deleted 1", "forget b8", "bulk 2 BasisArb"};
    }
    void queriesEqualWalk()
    {
        QFETCH(QStringList, steps);
        compareWithWalk(); // builds the index before the traffic
        for (const QString& step : steps) {
            apply(step);
            compareWithWalk();
            if (QTest::currentTestFailed())
                QFAIL(qPrintable("after " + step));
        }
    }
};

QTEST_GUILESS_MAIN(TestQueryIndex)
#include "tst_queryindex.moc"
