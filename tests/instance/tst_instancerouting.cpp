// Routing of algo-server responses by the registry: which instance handler
// runs, with what and under the content lock; which instances the query router
// creates; which notifications and results follow, and that notifications
// follow only after the content lock has been released.

#include "../common/tabletest.h"

#include <chrono>
#include <functional>
#include <future>
#include <typeinfo>

namespace {

namespace S = Tessel_Fields::Strategy;
namespace H = Algo_Fields::HelmStrategy;

InstanceMgr* mgr()
{
    return InstanceMgr::instance();
}

// Whether another thread finds the content lock taken for writing.
bool contentHeld()
{
    QReadWriteLock* l = mgr()->getLocker();
    return !std::async(std::launch::async, [=] {
                return l->tryLockForRead() && (l->unlock(), true);
            }).get();
}

// Records from texts such as "id=rA st=1 bits=2; id=rB", with short names for the record keys;
// "HDR" is a parameter header that would make a leg if it were not skipped.
VariantMapList recs(const QString& texts)
{
    static const QMap<QString, QString> keys{
        {"id", "strategyID"},        {"name", "strategyName"},   {"st", "strategyStatus"},
        {"cl", "clAlgoID"},          {"del", "strategyDeleted"}, {"start", "AlgStartTime"},
        {"exe", "requestExeStatus"}, {"sym", "symbol"},          {"side", "side"}};
    VariantMapList list;
    for (QString text : texts.split(';', Qt::SkipEmptyParts)) {
        list << VariantMap();
        for (const QString& f :
             text.replace("HDR", "exe=0 sym=510300.SH side=1").split(' ', Qt::SkipEmptyParts))
            list.last().insert(keys.value(f.section('=', 0, 0), f.section('=', 0, 0)),
                               f.section('=', 1));
    }
    return list;
}

QStringList g_calls;           // "<id> <handler>[ cl=<client ID then>][ (unlocked)]", in call order
QList<VariantMapList> g_given; // what each call was given

// Notes every handler call. Status and deleted flag follow the first record
// given; the query handler answers the record's "bits".
struct RecordingInstance : InstanceInfoBase
{
    RecordingInstance(QString id, QString client) { m_instanceID = id, m_clInstanceID = client; }
    void note(const QString& name, const VariantMapList& given)
    {
        g_calls << m_instanceID + " " + name
                       + (m_clInstanceID.isEmpty() ? "" : " cl=" + m_clInstanceID)
                       + (contentHeld() ? "" : " (unlocked)");
        g_given << given;
        m_status = given.value(0).value(S::strategyStatus, m_status).toString();
        m_strategyDeleted = given.value(0).value(H::strategyDeleted, m_strategyDeleted).toString();
    }
    void OnRecv_StrategyReportResponse(const VariantMapList& l) override { note("report", l); }
    void OnRecv_StrategyProgressGatherResponse(const VariantMapList& l) override
    {
        note("progress", l);
    }
    void OnRecv_InstStatusUpdate(const VariantMapList& l) override { note("status", l); }
    void OnRecv_InstModifyPush(const VariantMapList& l) override { note("modify", l); }
    void OnRecv_DeleteAlgoInstanceResponse(const VariantMap& r) override { note("delete", {r}); }
    void initSymbolInfo(const VariantMap& p, const VariantMap& e) override
    {
        note("initSymbolInfo", {p, e});
    }
    int OnRecv_QueryAlgoStrategyResponse(const VariantMap& r, bool isNew) override
    {
        return note(isNew ? "query new" : "query", {r}), r.value("bits").toInt();
    }
};

// The routed notifications in order, each marked when emitted under the content lock.
struct Emissions
{
    template <typename... A, typename F> void on(void (InstanceMgr::*signal)(A...), F text)
    {
        auto add = [this, text](A... a) { log << text(a...) + (contentHeld() ? " (locked)" : ""); };
        QObject::connect(mgr(), signal, &context, add, Qt::DirectConnection);
    }
    Emissions()
    {
        on(&InstanceMgr::sigInstUpdated,
           [](QStringList ids) { return "updated:" + ids.join(','); });
        on(&InstanceMgr::signalInsListToLogic,
           [](QStringList ids) { return "deleted:" + ids.join(','); });
        on(&InstanceMgr::signalTimeUpdate,
           [](auto id, auto st) { return "time:" + id + ":" + st; });
        on(&InstanceMgr::signalStatusUpdated,
           [](auto id, auto st) { return "status:" + id + ":" + st; });
        on(&InstanceMgr::signalProgreeDelayUpadaete, [](QString id) { return "progress:" + id; });
    }
    QObject context;
    QStringList log;
};

} // namespace

class TestInstanceRouting : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void routing_data();
    void routing();
    void queryRouterInitialisesNewInstanceUnderContentLock();
};

void TestInstanceRouting::init()
{
    using namespace Algo_Values::AlgoGlobalType;
    KxAlgoDataMgr::instance().setStrategies({AesStrategy("T0Algo", "T0", T0, "1"),
                                             AesStrategy("MultiAlgo", "Multi", multiStr, "2"),
                                             AesStrategy("FeatAlgo", "Feature", feature, "1")});
    mgr()->InsertNewInstance(new RecordingInstance("rA", {}));
    mgr()->InsertNewInstance(new RecordingInstance("rB", "clB"));
}

void TestInstanceRouting::cleanup()
{
    for (const QString& id : mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown))
        mgr()->DeleteInstance(id);
    g_calls.clear(), g_given.clear();
}

void TestInstanceRouting::routing_data()
{
    // The row name's first word names the router; rA and rB (client ID clB) are registered.
    // The instance argument of the status and modify routers; the records; the handler calls;
    // then the notifications, the result, warnings, instances made ("made <id> <class>[ <mapped
    // client ID>]") and, for UpdateSymbolExtInfoByParams, the legs passed on ("ext <key>=<index
    // of its record>"). Lists are ";"-separated. Malformed input: tst_badinput.
    TableTest::addRows(R"(
progress: record 0 names the instance | | id=rA; id=rB | rA progress | progress:rA
progress: record 0 unknown | | id=rZ; id=rA | |
report: by record 0 | | id=rA; id=rB | rA report |
delete: progress handler, kept | | id=rA; id=rB | rA progress |
status: by the argument, status read after the handler | rA | id=rB st=5; id=rB | rA status | status:rA:5; returned 0
status: no status, before the lookup | rZ | id=rA | | returned 1
modify: by the argument | rA | id=rB | rA modify | returned 1
modify: unknown instance, warned in the hosts' words | rZ | id=rA | | returned 0; warning InstanceMgr::onRecv_InstModifyPush ###update instance status failed, can not find instance info:  rZ
query: bits 0 and 1, record order, duplicates | | id=rB bits=3 st=1; id=rA bits=2; id=rB bits=1 st=2; id=rB bits=2 | rB query cl=clB; rA query; rB query cl=clB; rB query cl=clB | time:rB:1; time:rB:2; updated:rB,rA,rB
query: higher bits only | | id=rA bits=252 | rA query |
query: deleted listed per record, after the changed list | | id=rA bits=2 del=1; id=rB bits=2 del=0; id=rA | rA query; rB query cl=clB; rA query | updated:rA,rB; deleted:rA,rA
query: records without ID skipped | | bits=3; id= bits=3; id=rA bits=2 | rA query | updated:rA
query: client ID taken only when empty, before the handler | | id=rA cl=clX; id=rB cl=clY | rA query cl=clX; rB query cl=clB |
query: new instances of each class, no time signal | | id=n1 cl=c1 start=20240102-09:30:00 st=1 name=T0Algo; id=n2 st=1 name=MultiAlgo cl=c2; id=n3 st=1 name=FeatAlgo cl=c3; id=n4 st=1 name=NoSuchAlgo | | updated:n1,n2,n3; made n1 T0InstanceInfo c1; made n2 MultiInstanceInfo c2; made n3 RushLimitUpInstanceInfo c3; made n4 InstanceInfoBase
query: a new instance's second record is an update | | id=n1 start=20240102-09:30:00 st=0 name=T0Algo; id=n1 start=20240102-09:31:00 st=1 name=T0Algo | | time:n1:1; updated:n1,n1; made n1 T0InstanceInfo
params: header only | | HDR | usA initSymbolInfo (unlocked) |
params: only status 0 counts | | HDR; exe=1 sym=A; exe= sym=A; sym=A; exe=00 sym=A | usA initSymbolInfo (unlocked) |
params: no side: All | | HDR; exe=0 sym=B | usA initSymbolInfo (unlocked) | ext usA_B_All=1
params: a later leg replaces an earlier one | | HDR; exe=0 sym=A side=1; exe=2 sym=C; exe=0 sym=B side=2; exe=0 sym=A side=1 n=2 | usA initSymbolInfo (unlocked) | ext usA_A_1=4; ext usA_B_2=3
)");
}

void TestInstanceRouting::routing()
{
    const std::array<QString, 4> c = TableTest::cells<4>();
    QString instanceID = c[0], records = c[1], calls = c[2], out = c[3];
    const VariantMapList list = recs(records);
    RecordingInstance unshared("usA", {}); // for UpdateSymbolExtInfoByParams, record 0 the params
    Emissions emissions;
    const auto returned = [&emissions](int r) {
        emissions.log << "returned " + QString::number(r);
    };
    const QMap<QString, std::function<void()>> routers{
        {"progress", [&] { mgr()->OnRecv_StrategyProgressGatherResponse(list); }},
        {"report", [&] { mgr()->OnRecv_StrategyReportResponse(list); }},
        {"delete", [&] { mgr()->OnRecv_DeleteAlgoInstanceResponse(list); }},
        {"query", [&] { mgr()->OnRecv_QueryAlgoStrategyResponse(list); }},
        {"status", [&] { returned(mgr()->OnRecv_InstStatusUpdate(instanceID, list)); }},
        {"modify", [&] { returned(mgr()->onRecv_InstModifyPush(instanceID, list)); }},
        {"params", [&] { mgr()->UpdateSymbolExtInfoByParams(&unshared, list.value(0), list); }}};
    LogCapture log;
    const QString router = QString(QTest::currentDataTag()).section(':', 0, 0);
    routers.value(router)();
    for (CapturedMessage m :
         log.messages()) { // warnings from the function name on, without parameter list
        if (m.type == QtWarningMsg)
            emissions.log << "warning "
                                 + m.text.remove(
                                     QRegularExpression("^.*(?=InstanceMgr::)|\\(.*\\)"));
    }
    for (const QString& id : mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown)) {
        const InstanceInfoBase* inst = mgr()->GetInstanceInfoForAllType().value(id);
        const QString cls =
            QString(typeid(*inst).name()).remove(QRegularExpression("^\\d+")); // unmangled
        const QString cl = inst->clInstanceID();
        if (id != "rA" && id != "rB") // the client ID only if the map leads it to the instance
            emissions.log << "made " + id + " " + cls
                                 + (mgr()->GetInstanceIDByClInstID(cl) == id ? " " + cl : "");
    }
    const VariantMap extInfo = g_given.value(0).value(1);
    for (auto it = extInfo.cbegin(); router == "params" && it != extInfo.cend(); ++it)
        emissions.log << "ext " + it.key() + "="
                             + QString::number(list.indexOf(it.value().toMap()));
    QCOMPARE(g_calls.join("; "), calls); // only the instances meant, each under the content lock
    if (router != "query"
        && !calls.isEmpty()) // the whole list; for params, record 0 as the parameters
        QCOMPARE(g_given.first(),
                 (router == "params" ? VariantMapList{list.value(0), extInfo} : list));
    QCOMPARE(emissions.log.join("; "), out);
    QVERIFY(mgr()->ContainsInstance("rA") && mgr()->ContainsInstance("rB"));
}

void TestInstanceRouting::queryRouterInitialisesNewInstanceUnderContentLock()
{
    mgr()->getLocker()->lockForRead(); // a reader must not see the new instance's handler write it
    auto router = std::async(std::launch::async, [] {
        mgr()->OnRecv_QueryAlgoStrategyResponse(recs("id=rnLocked st=1 name=T0Algo"));
    });
    const bool waited =
        router.wait_for(std::chrono::milliseconds(150)) == std::future_status::timeout;
    mgr()->getLocker()->unlock();
    router.get();
    QVERIFY(waited);
}

QTEST_GUILESS_MAIN(TestInstanceRouting)
#include "tst_instancerouting.moc"
