// Routing of algo-server responses by the registry: which instance handler
// runs, with what, under which lock; which instances are created; which
// notifications follow, with which arguments, and that they follow only after
// the content lock has been released.

#include <algologic.h>

#include "logcapture.h"

#include <QLoggingCategory>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QtTest>

#include <chrono>
#include <cstdlib>
#include <cxxabi.h>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <typeinfo>
#include <vector>

namespace {

constexpr int kProbeTimeoutMs = 2000;
const QString kBitsKey = QStringLiteral("testBits"); // the recording handler's answer
const QString kSeqKey = QStringLiteral("seq");

InstanceMgr* mgr()
{
    return InstanceMgr::instance();
}

// The dynamic class of an instance, demangled ("T0InstanceInfo").
QString className(const InstanceInfoBase* inst)
{
    int status = 0;
    char* name = abi::__cxa_demangle(typeid(*inst).name(), nullptr, nullptr, &status);
    const QString result = status == 0 ? QString::fromLatin1(name)
                                       : QString::fromLatin1(typeid(*inst).name());
    std::free(name);
    return result;
}

// Runs `work` in a thread of its own; finishedWithin() tells whether it ran to
// its end in time. The thread is joined on destruction.
class Probe
{
public:
    explicit Probe(std::function<void()> work)
        : m_future(m_done.get_future())
        , m_thread([this, work] {
            work();
            m_done.set_value();
        })
    {
    }
    ~Probe() { m_thread.join(); }
    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;

    bool finishedWithin(int ms)
    {
        return m_future.wait_for(std::chrono::milliseconds(ms)) == std::future_status::ready;
    }

private:
    std::promise<void> m_done;
    std::future<void> m_future;
    std::thread m_thread;
};

// Probes started inside a handler that may still be blocked by a lock the
// router holds; they are joined only after the router has returned.
std::vector<std::unique_ptr<Probe>> g_lateProbes;

struct LateProbeJoiner
{
    ~LateProbeJoiner() { g_lateProbes.clear(); }
};

// Whether another thread finds the content lock held for writing.
bool contentWriteHeldElsewhere()
{
    bool couldRead = false;
    std::thread other([&couldRead] {
        couldRead = mgr()->getLocker()->tryLockForRead();
        if (couldRead)
            mgr()->getLocker()->unlock();
    });
    other.join();
    return !couldRead;
}

// Whether another thread could take the content lock for writing right now.
bool contentFreeElsewhere()
{
    bool couldWrite = false;
    std::thread other([&couldWrite] {
        couldWrite = mgr()->getLocker()->tryLockForWrite();
        if (couldWrite)
            mgr()->getLocker()->unlock();
    });
    other.join();
    return couldWrite;
}

// Whether another thread can write the registry meanwhile (it cannot while
// this thread holds the registry lock in any mode).
bool registryWritableElsewhere()
{
    auto probe = std::make_unique<Probe>([] {
        mgr()->DeleteInstance(QStringLiteral("rt-absent"));
        mgr()->ContainsInstance(QStringLiteral("rt-absent"));
    });
    const bool finished = probe->finishedWithin(kProbeTimeoutMs);
    g_lateProbes.push_back(std::move(probe));
    return finished;
}

struct HandlerCall
{
    QString handler;
    VariantMapList records;
    VariantMap record;
    bool isNew = false;
    QString clientIDSeen;
    VariantMap params;
    VariantMap extInfo;
    bool contentWriteHeld = false;
    bool registryFree = false;
};

// An instance that records every routed call. Its query handler answers with
// the record's test bits and takes status and deleted flag from the record;
// its status handler takes the status of record 0.
class RecordingInstance : public InstanceInfoBase
{
public:
    explicit RecordingInstance(const QString& id, const QString& status = QStringLiteral("0"),
                               const QString& clientID = QString())
    {
        m_instanceID = id;
        m_status = status;
        m_clInstanceID = clientID;
    }

    void OnRecv_StrategyReportResponse(const VariantMapList& records) override
    {
        note(QStringLiteral("report")).records = records;
    }
    void OnRecv_StrategyProgressGatherResponse(const VariantMapList& records) override
    {
        note(QStringLiteral("progress")).records = records;
    }
    int OnRecv_QueryAlgoStrategyResponse(const VariantMap& record, bool isNew) override
    {
        HandlerCall& call = note(QStringLiteral("query"));
        call.record = record;
        call.isNew = isNew;
        call.clientIDSeen = m_clInstanceID;
        if (record.contains(Tessel_Fields::Strategy::strategyStatus))
            m_status = record.value(Tessel_Fields::Strategy::strategyStatus).toString();
        if (record.contains(Algo_Fields::HelmStrategy::strategyDeleted))
            m_strategyDeleted = record.value(Algo_Fields::HelmStrategy::strategyDeleted).toString();
        return record.value(kBitsKey).toInt();
    }
    void OnRecv_InstStatusUpdate(const VariantMapList& records) override
    {
        note(QStringLiteral("status")).records = records;
        m_status = records.first().value(Tessel_Fields::Strategy::strategyStatus).toString();
    }
    void OnRecv_InstModifyPush(const VariantMapList& records) override
    {
        note(QStringLiteral("modify")).records = records;
    }
    void OnRecv_DeleteAlgoInstanceResponse(const VariantMap& record) override
    {
        note(QStringLiteral("delete")).record = record;
    }
    void initSymbolInfo(const VariantMap& params, const VariantMap& extInfo) override
    {
        HandlerCall& call = note(QStringLiteral("initSymbolInfo"));
        call.params = params;
        call.extInfo = extInfo;
    }

    QStringList handlerNames() const
    {
        QStringList names;
        for (const HandlerCall& call : calls)
            names.append(call.handler);
        return names;
    }

    QList<HandlerCall> calls;

private:
    HandlerCall& note(const QString& handler)
    {
        HandlerCall call;
        call.handler = handler;
        call.contentWriteHeld = contentWriteHeldElsewhere();
        call.registryFree = registryWritableElsewhere();
        calls.append(call);
        return calls.last();
    }
};

RecordingInstance* addRecording(const QString& id, const QString& status = QStringLiteral("0"),
                                const QString& clientID = QString())
{
    auto* inst = new RecordingInstance(id, status, clientID);
    mgr()->InsertNewInstance(inst);
    return inst;
}

// The routed notifications in order of emission, each with whether the
// content lock was free at that moment; and one spy per manager signal to see
// that nothing else was emitted.
class Emissions
{
public:
    Emissions()
    {
        QObject::connect(
            mgr(), &InstanceMgr::sigInstUpdated, &m_context,
            [this](QStringList ids) { add(QStringLiteral("updated:") + ids.join(',')); },
            Qt::DirectConnection);
        QObject::connect(
            mgr(), &InstanceMgr::signalInsListToLogic, &m_context,
            [this](const QStringList& ids) { add(QStringLiteral("deleted:") + ids.join(',')); },
            Qt::DirectConnection);
        QObject::connect(
            mgr(), &InstanceMgr::signalTimeUpdate, &m_context,
            [this](const QString& id, const QString& status) {
                add(QStringLiteral("time:%1:%2").arg(id, status));
            },
            Qt::DirectConnection);
        QObject::connect(
            mgr(), &InstanceMgr::signalProgreeDelayUpadaete, &m_context,
            [this](const QString& id) { add(QStringLiteral("progress:") + id); },
            Qt::DirectConnection);
        QObject::connect(
            mgr(), &InstanceMgr::signalStatusUpdated, &m_context,
            [this](const QString& id, const QString& status) {
                add(QStringLiteral("status:%1:%2").arg(id, status));
            },
            Qt::DirectConnection);

        const QMetaObject* meta = mgr()->metaObject();
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
            const QMetaMethod method = meta->method(i);
            if (method.methodType() == QMetaMethod::Signal)
                m_spies.emplace_back(new QSignalSpy(mgr(), method));
        }
    }

    QStringList log;
    bool allWhileContentFree = true;

    int totalEmitted() const
    {
        int total = 0;
        for (const auto& spy : m_spies)
            total += spy->count();
        return total;
    }

private:
    void add(const QString& entry)
    {
        log.append(entry);
        if (!contentFreeElsewhere())
            allWhileContentFree = false;
    }

    QObject m_context;
    std::vector<std::unique_ptr<QSignalSpy>> m_spies;
};

bool logged(const LogCapture& log, QtMsgType type, const QStringList& fragments)
{
    const QList<CapturedMessage> messages = log.messages();
    for (const CapturedMessage& message : messages) {
        if (message.type != type)
            continue;
        bool all = true;
        for (const QString& fragment : fragments)
            all = all && message.text.contains(fragment);
        if (all)
            return true;
    }
    return false;
}

VariantMap rec(std::initializer_list<std::pair<QString, QVariant>> fields)
{
    VariantMap map;
    for (const auto& field : fields)
        map.insert(field.first, field.second);
    return map;
}

// A query record for an existing recording instance.
VariantMap queryRec(const QString& id, int bits, const QString& status = QString(),
                    const QString& deleted = QString())
{
    VariantMap map;
    if (!id.isNull())
        map.insert(Tessel_Fields::Strategy::strategyID, id);
    map.insert(kBitsKey, bits);
    if (!status.isNull())
        map.insert(Tessel_Fields::Strategy::strategyStatus, status);
    if (!deleted.isNull())
        map.insert(Algo_Fields::HelmStrategy::strategyDeleted, deleted);
    return map;
}

enum class Router { Query, Progress, Report, Delete, Status, Modify };

// Routes `records`; the result of the status and modify routers as an int
// (modify: 1 true, 0 false), -1 for the routers without a result.
int route(Router router, const QString& instanceID, const VariantMapList& records)
{
    switch (router) {
    case Router::Query:
        mgr()->OnRecv_QueryAlgoStrategyResponse(records);
        return -1;
    case Router::Progress:
        mgr()->OnRecv_StrategyProgressGatherResponse(records);
        return -1;
    case Router::Report:
        mgr()->OnRecv_StrategyReportResponse(records);
        return -1;
    case Router::Delete:
        mgr()->OnRecv_DeleteAlgoInstanceResponse(records);
        return -1;
    case Router::Status:
        return mgr()->OnRecv_InstStatusUpdate(instanceID, records);
    case Router::Modify:
        return mgr()->onRecv_InstModifyPush(instanceID, records) ? 1 : 0;
    }
    return -1;
}

const QString kT0Algo = QStringLiteral("RtT0Algo");
const QString kMultiAlgo = QStringLiteral("RtMultiAlgo");
const QString kFeatureAlgo = QStringLiteral("RtFeatureAlgo");
const QString kPlainAlgo = QStringLiteral("RtPlainAlgo");
const QString kPlainType = QStringLiteral("Normal");
const QString kDepositAlgo = QStringLiteral("RtDepositAlgo");

} // namespace

Q_DECLARE_METATYPE(Router)

class TestInstanceRouting : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup();

    void emptyListsAreIgnored_data();
    void emptyListsAreIgnored();
    void firstRecordRouting_data();
    void firstRecordRouting();
    void statusRouter_data();
    void statusRouter();
    void modifyRouter_data();
    void modifyRouter();

    void queryRouterExistingInstances_data();
    void queryRouterExistingInstances();
    void queryRouterClientIdOfExisting_data();
    void queryRouterClientIdOfExisting();
    void queryRouterCreatesUnknownInstances_data();
    void queryRouterCreatesUnknownInstances();
    void queryRouterSecondRecordUpdatesCreatedInstance();
    void queryRouterInitialisesNewInstanceUnderContentLock();

    void updateSymbolExtInfoByParams_data();
    void updateSymbolExtInfoByParams();
};

void TestInstanceRouting::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("algologic.*.debug=true"));
    KxAlgoDataMgr::instance().setStrategies({
        AesStrategy(kT0Algo, QStringLiteral("T0 algo"), Algo_Values::AlgoGlobalType::T0,
                    QStringLiteral("1")),
        AesStrategy(kMultiAlgo, QStringLiteral("Multi algo"),
                    Algo_Values::AlgoGlobalType::multiStr, QStringLiteral("2")),
        AesStrategy(kFeatureAlgo, QStringLiteral("Feature algo"),
                    Algo_Values::AlgoGlobalType::feature, QStringLiteral("1")),
        AesStrategy(kPlainAlgo, QStringLiteral("Plain algo"), kPlainType, QStringLiteral("1")),
        AesStrategy(kDepositAlgo, QStringLiteral("Deposit algo"),
                    Algo_Values::AlgoGlobalType::deposit, QStringLiteral("1")),
    });
}

void TestInstanceRouting::cleanup()
{
    g_lateProbes.clear();
    const QList<QString> ids = mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown);
    for (const QString& id : ids)
        mgr()->DeleteInstance(id);
}

// ---- the routers of one instance ---------------------------------------------------

void TestInstanceRouting::emptyListsAreIgnored_data()
{
    QTest::addColumn<Router>("router");
    QTest::addColumn<int>("result");

    QTest::newRow("query") << Router::Query << -1;
    QTest::newRow("progress gather") << Router::Progress << -1;
    QTest::newRow("report") << Router::Report << -1;
    QTest::newRow("delete") << Router::Delete << -1;
    QTest::newRow("status: 1") << Router::Status << 1;
    QTest::newRow("modify: false") << Router::Modify << 0;
}

void TestInstanceRouting::emptyListsAreIgnored()
{
    QFETCH(Router, router);
    QFETCH(int, result);
    LateProbeJoiner joiner;

    RecordingInstance* inst = addRecording(QStringLiteral("reA"));
    Emissions emissions;
    LogCapture log;
    QCOMPARE(route(router, QStringLiteral("reA"), VariantMapList()), result);

    QVERIFY(inst->calls.isEmpty());
    QCOMPARE(emissions.totalEmitted(), 0);
    QCOMPARE(mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown),
             QList<QString>{QStringLiteral("reA")});
    QVERIFY(!logged(log, QtDebugMsg,
                    {QStringLiteral("InstanceMgr::OnRecv_StrategyProgressGatherResponse")}));
    QCOMPARE(log.countOfType(QtWarningMsg), 0);
}

void TestInstanceRouting::firstRecordRouting_data()
{
    QTest::addColumn<Router>("router");
    QTest::addColumn<VariantMapList>("records");
    QTest::addColumn<QString>("expectedHandler"); // empty: no handler runs

    using Tessel_Fields::Strategy::strategyID;
    const VariantMapList known{rec({{strategyID, "rfA"}, {kSeqKey, 0}}),
                               rec({{strategyID, "rfB"}, {kSeqKey, 1}})};
    const VariantMapList unknownFirst{rec({{strategyID, "rfZ"}}), rec({{strategyID, "rfA"}})};
    const VariantMapList firstWithoutID{rec({{kSeqKey, 0}}), rec({{strategyID, "rfA"}})};

    const struct
    {
        Router router;
        const char* name;
        QString handler;
    } routers[] = {
        {Router::Progress, "progress gather", QStringLiteral("progress")},
        {Router::Report, "report", QStringLiteral("report")},
        // A delete answer refreshes the figures through the progress handler.
        {Router::Delete, "delete", QStringLiteral("progress")},
    };
    for (const auto& r : routers) {
        QTest::addRow("%s: record 0 names the instance", r.name) << r.router << known << r.handler;
        QTest::addRow("%s: record 0 unknown", r.name) << r.router << unknownFirst << QString();
        QTest::addRow("%s: record 0 without ID", r.name) << r.router << firstWithoutID << QString();
    }
}

void TestInstanceRouting::firstRecordRouting()
{
    QFETCH(Router, router);
    QFETCH(VariantMapList, records);
    QFETCH(QString, expectedHandler);
    LateProbeJoiner joiner;

    RecordingInstance* a = addRecording(QStringLiteral("rfA"));
    RecordingInstance* b = addRecording(QStringLiteral("rfB"));
    const QString firstID = records.first().value(Tessel_Fields::Strategy::strategyID).toString();

    Emissions emissions;
    LogCapture log;
    route(router, QString(), records);
    g_lateProbes.clear();

    // Only the instance of record 0, with the whole list.
    QVERIFY(b->calls.isEmpty());
    if (expectedHandler.isEmpty()) {
        QVERIFY(a->calls.isEmpty());
    } else {
        QCOMPARE(a->handlerNames(), QStringList{expectedHandler});
        const HandlerCall& call = a->calls.first();
        QCOMPARE(call.records, records);
        QVERIFY(call.contentWriteHeld);
        QVERIFY2(call.registryFree, "the registry lock is held around the handler");
    }

    // The delete answer leaves the registry alone.
    QVERIFY(mgr()->ContainsInstance(QStringLiteral("rfA")));
    QVERIFY(mgr()->ContainsInstance(QStringLiteral("rfB")));

    QStringList expectedLog;
    if (router == Router::Progress && !expectedHandler.isEmpty())
        expectedLog << QStringLiteral("progress:rfA");
    QCOMPARE(emissions.log, expectedLog);
    QCOMPARE(emissions.totalEmitted(), expectedLog.size());
    QVERIFY(emissions.allWhileContentFree);

    // The progress router reports its lookup, found or not; misses are silent.
    QCOMPARE(logged(log, QtDebugMsg,
                    {QStringLiteral("InstanceMgr::OnRecv_StrategyProgressGatherResponse ")
                     + firstID}),
             router == Router::Progress);
    QCOMPARE(log.countOfType(QtWarningMsg), 0);
}

void TestInstanceRouting::statusRouter_data()
{
    QTest::addColumn<QString>("instanceID");
    QTest::addColumn<VariantMapList>("records");
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("handledBy");     // empty: no handler runs
    QTest::addColumn<QString>("signalledStatus"); // null: no signal
    QTest::addColumn<bool>("noStatusLogged");
    QTest::addColumn<bool>("notFoundWarned");

    using Tessel_Fields::Strategy::strategyID;
    using Tessel_Fields::Strategy::strategyStatus;
    const VariantMap leg = rec({{Tessel_Fields::Security::symbol, "600000.SH"}});

    QTest::newRow("handled, status read after the handler")
        << "rsA" << VariantMapList{rec({{strategyID, "rsA"}, {strategyStatus, "1"}}), leg} << 0
        << "rsA" << "1" << false << false;
    QTest::newRow("routed by the argument, not the record")
        << "rsA" << VariantMapList{rec({{strategyID, "rsB"}, {strategyStatus, "5"}})} << 0
        << "rsA" << "5" << false << false;
    QTest::newRow("empty status is a status")
        << "rsA" << VariantMapList{rec({{strategyStatus, ""}})} << 0 << "rsA" << "" << false
        << false;
    QTest::newRow("empty list") << "rsA" << VariantMapList() << 1 << "" << QString() << false
                                << false;
    QTest::newRow("record 0 without status")
        << "rsA" << VariantMapList{rec({{strategyID, "rsA"}})} << 1 << "" << QString() << true
        << false;
    QTest::newRow("status only in a later record")
        << "rsA" << VariantMapList{rec({{strategyID, "rsA"}}), rec({{strategyStatus, "1"}})}
        << 1 << "" << QString() << true << false;
    QTest::newRow("no status checked before the lookup")
        << "rsZ" << VariantMapList{rec({{strategyID, "rsZ"}})} << 1 << "" << QString() << true
        << false;
    QTest::newRow("unknown instance")
        << "rsZ" << VariantMapList{rec({{strategyStatus, "1"}})} << 2 << "" << QString() << false
        << true;
    QTest::newRow("unknown although the record names a known one")
        << "rsZ" << VariantMapList{rec({{strategyID, "rsA"}, {strategyStatus, "1"}})} << 2 << ""
        << QString() << false << true;
    QTest::newRow("empty ID") << "" << VariantMapList{rec({{strategyStatus, "1"}})} << 2 << ""
                              << QString() << false << true;
}

void TestInstanceRouting::statusRouter()
{
    QFETCH(QString, instanceID);
    QFETCH(VariantMapList, records);
    QFETCH(int, result);
    QFETCH(QString, handledBy);
    QFETCH(QString, signalledStatus);
    QFETCH(bool, noStatusLogged);
    QFETCH(bool, notFoundWarned);
    LateProbeJoiner joiner;

    RecordingInstance* a = addRecording(QStringLiteral("rsA"), QStringLiteral("0"));
    RecordingInstance* b = addRecording(QStringLiteral("rsB"), QStringLiteral("0"));

    Emissions emissions;
    LogCapture log;
    QCOMPARE(mgr()->OnRecv_InstStatusUpdate(instanceID, records), result);
    g_lateProbes.clear();

    QVERIFY(b->calls.isEmpty());
    if (handledBy.isEmpty()) {
        QVERIFY(a->calls.isEmpty());
        QCOMPARE(a->status(), QStringLiteral("0"));
    } else {
        QCOMPARE(a->handlerNames(), QStringList{QStringLiteral("status")});
        QCOMPARE(a->calls.first().records, records);
        QVERIFY(a->calls.first().contentWriteHeld);
        QVERIFY2(a->calls.first().registryFree, "the registry lock is held around the handler");
    }

    QStringList expected;
    if (!signalledStatus.isNull())
        expected << QStringLiteral("status:%1:%2").arg(instanceID, signalledStatus);
    QCOMPARE(emissions.log, expected);
    QCOMPARE(emissions.totalEmitted(), expected.size());
    QVERIFY(emissions.allWhileContentFree);

    QVERIFY(logged(log, QtDebugMsg, {QStringLiteral("### InstanceMgr::OnRecv_InstStatusUpdate"),
                                     QStringLiteral("###instId: "), instanceID}));
    QCOMPARE(logged(log, QtDebugMsg, {QStringLiteral("InstanceMgr::OnRecv_InstStatusUpdate"),
                                      QStringLiteral("no status field")}),
             noStatusLogged);
    QCOMPARE(logged(log, QtWarningMsg,
                    {QStringLiteral("InstanceMgr::OnRecv_InstStatusUpdate"),
                     QStringLiteral("instId "), QStringLiteral(" not find"), instanceID}),
             notFoundWarned);
    QCOMPARE(log.countOfType(QtWarningMsg), notFoundWarned ? 1 : 0);
}

void TestInstanceRouting::modifyRouter_data()
{
    QTest::addColumn<QString>("instanceID");
    QTest::addColumn<VariantMapList>("records");
    QTest::addColumn<bool>("result");
    QTest::addColumn<QString>("handledBy");
    QTest::addColumn<bool>("notFoundWarned");

    using Tessel_Fields::Strategy::strategyID;
    const VariantMap ack = rec({{strategyID, "rmA"}, {QStringLiteral("ack"), "ok"}});

    QTest::newRow("applied") << "rmA" << VariantMapList{ack, rec({{kSeqKey, 1}})} << true << "rmA"
                             << false;
    QTest::newRow("routed by the argument, not the record")
        << "rmA" << VariantMapList{rec({{strategyID, "rmB"}})} << true << "rmA" << false;
    QTest::newRow("one empty record is still a push")
        << "rmA" << VariantMapList{VariantMap()} << true << "rmA" << false;
    QTest::newRow("empty list") << "rmA" << VariantMapList() << false << "" << false;
    QTest::newRow("unknown instance") << "rmZ" << VariantMapList{ack} << false << "" << true;
    QTest::newRow("empty ID") << "" << VariantMapList{ack} << false << "" << true;
}

void TestInstanceRouting::modifyRouter()
{
    QFETCH(QString, instanceID);
    QFETCH(VariantMapList, records);
    QFETCH(bool, result);
    QFETCH(QString, handledBy);
    QFETCH(bool, notFoundWarned);
    LateProbeJoiner joiner;

    RecordingInstance* a = addRecording(QStringLiteral("rmA"));
    RecordingInstance* b = addRecording(QStringLiteral("rmB"));

    Emissions emissions;
    LogCapture log;
    QCOMPARE(mgr()->onRecv_InstModifyPush(instanceID, records), result);
    g_lateProbes.clear();

    QVERIFY(b->calls.isEmpty());
    if (handledBy.isEmpty()) {
        QVERIFY(a->calls.isEmpty());
    } else {
        QCOMPARE(a->handlerNames(), QStringList{QStringLiteral("modify")});
        QCOMPARE(a->calls.first().records, records);
        QVERIFY(a->calls.first().contentWriteHeld);
        QVERIFY2(a->calls.first().registryFree, "the registry lock is held around the handler");
    }
    // The router itself never notifies; the instance classes do.
    QCOMPARE(emissions.totalEmitted(), 0);

    QVERIFY(logged(log, QtDebugMsg, {QStringLiteral("### InstanceMgr::onRecv_InstModifyPush"),
                                     QStringLiteral("###instId: "), instanceID}));
    QCOMPARE(logged(log, QtWarningMsg,
                    {QStringLiteral("InstanceMgr::onRecv_InstModifyPush("),
                     QStringLiteral(
                         "###update instance status failed, can not find instance info: "),
                     instanceID}),
             notFoundWarned);
    QCOMPARE(log.countOfType(QtWarningMsg), notFoundWarned ? 1 : 0);
}

// ---- query answers -------------------------------------------------------------------

void TestInstanceRouting::queryRouterExistingInstances_data()
{
    QTest::addColumn<VariantMapList>("records");
    QTest::addColumn<QStringList>("expected");

    const QString deleted = Algo_Values::AlgoDeleteStatus::deleted;
    QTest::newRow("nothing changed") << VariantMapList{queryRec("rqA", 0)} << QStringList();
    QTest::newRow("bit 1: displayed data changed")
        << VariantMapList{queryRec("rqA", 2)} << QStringList{"updated:rqA"};
    QTest::newRow("bit 0: times changed, status read after the handler")
        << VariantMapList{queryRec("rqA", 1, "1")} << QStringList{"time:rqA:1"};
    QTest::newRow("both bits") << VariantMapList{queryRec("rqA", 3, "5")}
                               << QStringList{"time:rqA:5", "updated:rqA"};
    QTest::newRow("higher bits are not looked at")
        << VariantMapList{queryRec("rqA", 0xFFFC)} << QStringList();
    QTest::newRow("record order kept, duplicates kept")
        << VariantMapList{queryRec("rqB", 3, "1"), queryRec("rqA", 2), queryRec("rqB", 2)}
        << QStringList{"time:rqB:1", "updated:rqB,rqA,rqB"};
    QTest::newRow("time signals per record, in record order")
        << VariantMapList{queryRec("rqB", 1, "1"), queryRec("rqA", 1, "2")}
        << QStringList{"time:rqB:1", "time:rqA:2"};
    QTest::newRow("deleted") << VariantMapList{queryRec("rqA", 0, QString(), deleted)}
                             << QStringList{"deleted:rqA"};
    QTest::newRow("deletion flag other than deleted")
        << VariantMapList{queryRec("rqA", 0, QString(), "0")} << QStringList();
    QTest::newRow("changed list before deleted list")
        << VariantMapList{queryRec("rqA", 2, QString(), deleted), queryRec("rqB", 2)}
        << QStringList{"updated:rqA,rqB", "deleted:rqA"};
    QTest::newRow("deleted instance listed for each of its records")
        << VariantMapList{queryRec("rqA", 0, QString(), deleted), queryRec("rqB", 2),
                          queryRec("rqA", 0)}
        << QStringList{"updated:rqB", "deleted:rqA,rqA"};
    QTest::newRow("record without ID skipped")
        << VariantMapList{queryRec(QString(), 3), queryRec("", 3), queryRec("rqA", 2)}
        << QStringList{"updated:rqA"};
}

void TestInstanceRouting::queryRouterExistingInstances()
{
    QFETCH(VariantMapList, records);
    QFETCH(QStringList, expected);
    LateProbeJoiner joiner;

    RecordingInstance* a = addRecording(QStringLiteral("rqA"));
    RecordingInstance* b = addRecording(QStringLiteral("rqB"));
    const QList<QString> before = mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown);

    Emissions emissions;
    LogCapture log;
    mgr()->OnRecv_QueryAlgoStrategyResponse(records);
    g_lateProbes.clear();

    QCOMPARE(emissions.log, expected);
    QCOMPARE(emissions.totalEmitted(), expected.size());
    QVERIFY(emissions.allWhileContentFree);
    // Records without an ID create nothing.
    QCOMPARE(mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown), before);

    int routedToA = 0;
    int routedToB = 0;
    int withBits = 0;
    for (const VariantMap& r : qAsConst(records)) {
        const QString id = r.value(Tessel_Fields::Strategy::strategyID).toString();
        routedToA += id == QLatin1String("rqA");
        routedToB += id == QLatin1String("rqB");
        withBits += !id.isEmpty() && r.value(kBitsKey).toInt() != 0;
    }
    QCOMPARE(a->calls.size(), routedToA);
    QCOMPARE(b->calls.size(), routedToB);
    for (RecordingInstance* inst : {a, b}) {
        for (const HandlerCall& call : qAsConst(inst->calls)) {
            QCOMPARE(call.handler, QStringLiteral("query"));
            QVERIFY(!call.isNew);
            QCOMPARE(call.record.value(Tessel_Fields::Strategy::strategyID).toString(),
                     inst->instanceID());
            QVERIFY(call.contentWriteHeld);
            QVERIFY2(call.registryFree, "the registry lock is held around the handler");
        }
    }
    QCOMPARE(log.count(QtDebugMsg, QStringLiteral("InstanceMgr::OnRecv_QueryAlgoStrategyResponse")),
             withBits);
}

void TestInstanceRouting::queryRouterClientIdOfExisting_data()
{
    QTest::addColumn<QString>("initialClientID");
    QTest::addColumn<QVariant>("recordClientID"); // invalid: no such field
    QTest::addColumn<QString>("finalClientID");

    QTest::newRow("empty client ID taken from the record")
        << "" << QVariant(QStringLiteral("rc-new")) << "rc-new";
    QTest::newRow("client ID kept") << "rc-old" << QVariant(QStringLiteral("rc-new"))
                                    << "rc-old";
    QTest::newRow("record without client ID") << "" << QVariant() << "";
    QTest::newRow("record with an empty client ID") << "" << QVariant(QString()) << "";
}

void TestInstanceRouting::queryRouterClientIdOfExisting()
{
    QFETCH(QString, initialClientID);
    QFETCH(QVariant, recordClientID);
    QFETCH(QString, finalClientID);
    LateProbeJoiner joiner;

    RecordingInstance* inst = addRecording(QStringLiteral("rcA"), QStringLiteral("0"),
                                           initialClientID);
    VariantMap record = queryRec(QStringLiteral("rcA"), 0);
    if (recordClientID.isValid())
        record.insert(Helm_Fields::Strategy::clAlgoID, recordClientID);

    Emissions emissions;
    mgr()->OnRecv_QueryAlgoStrategyResponse({record});
    g_lateProbes.clear();

    QCOMPARE(inst->clInstanceID(), finalClientID);
    QCOMPARE(inst->calls.size(), 1);
    // Set before the handler runs.
    QCOMPARE(inst->calls.first().clientIDSeen, finalClientID);
    // The client-ID map only learns client IDs at insertion.
    const QString recordText = recordClientID.toString();
    if (!recordText.isEmpty() && recordText != initialClientID)
        QVERIFY(mgr()->GetInstanceIDByClInstID(recordText).isNull());
    if (!initialClientID.isEmpty())
        QCOMPARE(mgr()->GetInstanceIDByClInstID(initialClientID), QStringLiteral("rcA"));
    QCOMPARE(emissions.totalEmitted(), 0);
}

void TestInstanceRouting::queryRouterCreatesUnknownInstances_data()
{
    QTest::addColumn<QString>("strategyName");
    QTest::addColumn<QString>("clientID");
    QTest::addColumn<bool>("withTime");
    QTest::addColumn<QString>("classTag");
    QTest::addColumn<QString>("instanceClass");
    QTest::addColumn<QString>("algoType");
    QTest::addColumn<QString>("status");
    QTest::addColumn<bool>("changed");

    using namespace Algo_Values;
    const QString base = QStringLiteral("InstanceInfoBase");
    QTest::newRow("T0 with a time, no time signal")
        << kT0Algo << "cl-T0" << true << "T0" << "T0InstanceInfo" << AlgoGlobalType::T0 << "1"
        << true;
    QTest::newRow("T0 without time") << kT0Algo << "cl-T0b" << false << "T0" << "T0InstanceInfo"
                                     << AlgoGlobalType::T0 << "1" << true;
    QTest::newRow("multi-strategy") << kMultiAlgo << "cl-multi" << true << "Multi"
                                    << "MultiInstanceInfo" << AlgoGlobalType::multiStr << "1"
                                    << true;
    QTest::newRow("feature") << kFeatureAlgo << "cl-feature" << false << "info"
                             << "RushLimitUpInstanceInfo" << AlgoGlobalType::feature << "1" << true;
    QTest::newRow("other type") << kPlainAlgo << "cl-plain" << false << "info" << base
                                << kPlainType << "1" << true;
    QTest::newRow("without client ID")
        << kPlainAlgo << "" << false << "info" << base << kPlainType << "1" << true;
    // Unknown and deposit strategies are registered, but their handler
    // changes nothing: no notification.
    QTest::newRow("strategy the catalogue does not know")
        << "NoSuchAlgo" << "cl-unknown" << true << "info" << base << "" << "" << false;
    QTest::newRow("deposit strategy")
        << kDepositAlgo << "cl-deposit" << true << "info" << base << "" << "" << false;
}

void TestInstanceRouting::queryRouterCreatesUnknownInstances()
{
    QFETCH(QString, strategyName);
    QFETCH(QString, clientID);
    QFETCH(bool, withTime);
    QFETCH(QString, classTag);
    QFETCH(QString, instanceClass);
    QFETCH(QString, algoType);
    QFETCH(QString, status);
    QFETCH(bool, changed);

    const QString id = QStringLiteral("rn") + QString::fromLatin1(QTest::currentDataTag());
    VariantMap record;
    record.insert(Tessel_Fields::Strategy::strategyID, id);
    record.insert(Tessel_Fields::Strategy::strategyName, strategyName);
    record.insert(Tessel_Fields::Strategy::strategyStatus, QStringLiteral("1"));
    if (!clientID.isEmpty())
        record.insert(Helm_Fields::Strategy::clAlgoID, clientID);
    if (withTime)
        record.insert(Algo_Fields::HelmStrategy::AlgStartTime, QStringLiteral("20240102-09:30:00"));
    QVERIFY(!mgr()->ContainsInstance(id));

    Emissions emissions;
    LogCapture log;
    mgr()->OnRecv_QueryAlgoStrategyResponse({record});

    QVERIFY(mgr()->ContainsInstance(id));
    InstanceInfoBase* inst = mgr()->GetInstanceInfoForAllType().value(id);
    QVERIFY(inst);
    {
        QReadLocker locker(mgr()->getLocker());
        QCOMPARE(inst->instanceID(), id);
        QCOMPARE(inst->getClassType(), classTag);
        QCOMPARE(className(inst), instanceClass);
        QCOMPARE(inst->instAlgoType(), algoType);
        QCOMPARE(inst->status(), status);
        QCOMPARE(inst->clInstanceID(), clientID);
    }
    QCOMPARE(mgr()->GetAlgoTypeByInstID(id), algoType);
    if (clientID.isEmpty())
        QVERIFY(mgr()->GetInstanceIDByClInstID(QString()).isNull());
    else
        QCOMPARE(mgr()->GetInstanceIDByClInstID(clientID), id);

    // A new instance never gets a time signal, whatever its handler says.
    const QStringList expected = changed ? QStringList{QStringLiteral("updated:") + id}
                                         : QStringList();
    QCOMPARE(emissions.log, expected);
    QCOMPARE(emissions.totalEmitted(), expected.size());
    QVERIFY(emissions.allWhileContentFree);
    QCOMPARE(logged(log, QtDebugMsg,
                    {QStringLiteral("InstanceMgr::OnRecv_QueryAlgoStrategyResponse ") + id}),
             changed);
}

void TestInstanceRouting::queryRouterSecondRecordUpdatesCreatedInstance()
{
    const QString id = QStringLiteral("rnTwice");
    auto record = [&id](const QString& status, const QString& start) {
        VariantMap r;
        r.insert(Tessel_Fields::Strategy::strategyID, id);
        r.insert(Tessel_Fields::Strategy::strategyName, kT0Algo);
        r.insert(Tessel_Fields::Strategy::strategyStatus, status);
        r.insert(Algo_Fields::HelmStrategy::AlgStartTime, start);
        return r;
    };

    Emissions emissions;
    mgr()->OnRecv_QueryAlgoStrategyResponse(
        {record(QStringLiteral("0"), QStringLiteral("20240102-09:30:00")),
         record(QStringLiteral("1"), QStringLiteral("20240102-09:31:00"))});

    // The first record creates the instance; the second is routed to it as an
    // update, which alone may raise the time signal.
    QCOMPARE(emissions.log,
             (QStringList{QStringLiteral("time:rnTwice:1"),
                          QStringLiteral("updated:rnTwice,rnTwice")}));
    QVERIFY(emissions.allWhileContentFree);
    QCOMPARE(mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown),
             QList<QString>{id});
    InstanceInfoBase* inst = mgr()->GetInstanceInfoForAllType().value(id);
    QVERIFY(inst);
    QReadLocker locker(mgr()->getLocker());
    QCOMPARE(inst->status(), QStringLiteral("1"));
    QCOMPARE(inst->startTime(),
             QDateTime::fromString(QStringLiteral("20240102-09:31:00"),
                                   HelmConstants::DateTimeFormatString::ALGO_DATE_TIME_FORMAT));
}

void TestInstanceRouting::queryRouterInitialisesNewInstanceUnderContentLock()
{
    // Once inserted, a new instance is reachable by readers of other threads;
    // they must not see its handler writing it while they hold the content
    // lock for reading.
    const QString id = QStringLiteral("rnLocked");
    VariantMap record;
    record.insert(Tessel_Fields::Strategy::strategyID, id);
    record.insert(Tessel_Fields::Strategy::strategyName, kT0Algo);
    record.insert(Tessel_Fields::Strategy::strategyStatus, QStringLiteral("1"));

    std::promise<void> locked;
    std::promise<void> release;
    std::thread reader([&] {
        mgr()->getLocker()->lockForRead();
        locked.set_value();
        release.get_future().wait();
        mgr()->getLocker()->unlock();
    });
    locked.get_future().wait();

    bool registered = false;
    bool routerWaited = false;
    QString typeWhileRead;
    {
        Probe router([&record] { mgr()->OnRecv_QueryAlgoStrategyResponse({record}); });
        for (int i = 0; i < 200 && !registered; ++i) {
            registered = mgr()->ContainsInstance(id);
            if (!registered)
                QThread::msleep(10);
        }
        routerWaited = !router.finishedWithin(150);
        if (InstanceInfoBase* inst = mgr()->GetInstanceInfoForAllType().value(id))
            typeWhileRead = inst->instAlgoType();
        release.set_value();
        reader.join();
    }
    QVERIFY(registered);
    QVERIFY(routerWaited);
    QVERIFY(typeWhileRead.isEmpty());
    InstanceInfoBase* inst = mgr()->GetInstanceInfoForAllType().value(id);
    QVERIFY(inst);
    QReadLocker locker(mgr()->getLocker());
    QCOMPARE(inst->instAlgoType(), Algo_Values::AlgoGlobalType::T0);
    QCOMPARE(inst->status(), QStringLiteral("1"));
}

// ---- legs from a create or modify answer -------------------------------------------

void TestInstanceRouting::updateSymbolExtInfoByParams_data()
{
    QTest::addColumn<VariantMapList>("records");
    QTest::addColumn<VariantMap>("expected");

    using Tessel_Fields::Security::side;
    using Tessel_Fields::Security::symbol;
    using Tessel_Fields::System::requestExeStatus;
    const VariantMap header = rec({{requestExeStatus, "0"}, {symbol, "600000.SH"}, {side, "1"}});
    const VariantMap ok1 = rec({{requestExeStatus, "0"}, {symbol, "600000.SH"}, {side, "1"},
                                {kSeqKey, 1}});
    const VariantMap ok2 = rec({{requestExeStatus, "0"}, {symbol, "000001.SZ"}, {side, "2"},
                                {kSeqKey, 2}});
    const VariantMap ok1Again = rec({{requestExeStatus, "0"}, {symbol, "600000.SH"}, {side, "1"},
                                     {kSeqKey, 3}});
    const VariantMap noSide = rec({{requestExeStatus, "0"}, {symbol, "000001.SZ"}});
    const VariantMap emptySide = rec({{requestExeStatus, "0"}, {symbol, "000001.SZ"}, {side, ""}});
    const VariantMap numericOk = rec({{requestExeStatus, 0}, {symbol, "510300.SH"}, {side, "1"}});
    auto failed = [&](const QVariant& status) {
        VariantMap r = rec({{symbol, "600000.SH"}, {side, "1"}});
        if (status.isValid())
            r.insert(requestExeStatus, status);
        return r;
    };

    QTest::newRow("no records") << VariantMapList() << VariantMap();
    QTest::newRow("header only") << VariantMapList{header} << VariantMap();
    QTest::newRow("one leg")
        << VariantMapList{header, ok1}
        << rec({{QStringLiteral("usA_600000.SH_1"), QVariant(ok1)}});
    QTest::newRow("header status does not matter")
        << VariantMapList{failed(QStringLiteral("1")), ok2}
        << rec({{QStringLiteral("usA_000001.SZ_2"), QVariant(ok2)}});
    QTest::newRow("only status 0 counts")
        << VariantMapList{header, failed(QStringLiteral("1")), failed(QString()),
                          failed(QVariant()), failed(QStringLiteral("00")),
                          failed(QStringLiteral(" 0"))}
        << VariantMap();
    QTest::newRow("numeric 0 reads as 0")
        << VariantMapList{header, numericOk}
        << rec({{QStringLiteral("usA_510300.SH_1"), QVariant(numericOk)}});
    QTest::newRow("missing side reads All")
        << VariantMapList{header, noSide}
        << rec({{QStringLiteral("usA_000001.SZ_All"), QVariant(noSide)}});
    QTest::newRow("empty side is kept")
        << VariantMapList{header, emptySide}
        << rec({{QStringLiteral("usA_000001.SZ_"), QVariant(emptySide)}});
    QTest::newRow("later record replaces an earlier one")
        << VariantMapList{header, ok1, ok1Again}
        << rec({{QStringLiteral("usA_600000.SH_1"), QVariant(ok1Again)}});
    QTest::newRow("mixed") << VariantMapList{header, ok1, failed(QStringLiteral("2")), ok2}
                           << rec({{QStringLiteral("usA_600000.SH_1"), QVariant(ok1)},
                                   {QStringLiteral("usA_000001.SZ_2"), QVariant(ok2)}});
}

void TestInstanceRouting::updateSymbolExtInfoByParams()
{
    QFETCH(VariantMapList, records);
    QFETCH(VariantMap, expected);
    LateProbeJoiner joiner;

    // Not registered: the host fills the object before it shares it.
    RecordingInstance inst(QStringLiteral("usA"));
    const VariantMap params = rec({{Algo_Values::AlgoParamId::AlgoSecurityList, "[]"},
                                   {QStringLiteral("price"), 10.5}});
    Emissions emissions;
    mgr()->UpdateSymbolExtInfoByParams(&inst, params, records);
    g_lateProbes.clear();

    QCOMPARE(inst.handlerNames(), QStringList{QStringLiteral("initSymbolInfo")});
    const HandlerCall& call = inst.calls.first();
    QCOMPARE(call.params, params);
    QCOMPARE(call.extInfo, expected);
    // The caller holds whatever lock it needs; the operation takes none.
    QVERIFY(!call.contentWriteHeld);
    QVERIFY(call.registryFree);
    QCOMPARE(emissions.totalEmitted(), 0);
}

QTEST_GUILESS_MAIN(TestInstanceRouting)
#include "tst_instancerouting.moc"
