// The instance registry: singleton and worker thread, the content lock,
// creation by algo type, insertion and removal, the client-ID map, every
// query with its filters and order, symbol keys, leg lookups, create errors,
// the notification forwarders and the profit timer started by init().

#include <algologic.h>

#include "logcapture.h"

#include <QAbstractEventDispatcher>
#include <QLoggingCategory>
#include <QMetaMethod>
#include <QMetaType>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

#include <atomic>
#include <cstdlib>
#include <cxxabi.h>
#include <typeinfo>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace {

const QString kLogin = QStringLiteral("trader01");
const QString kOtherUser = QStringLiteral("trader02");
constexpr int kProbeTimeoutMs = 2000;

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

// Counts destructions, so that a test can tell an instance the registry only
// forgot from one it freed.
std::atomic<int> g_destroyedInstances{0};

class TrackedInstance : public InstanceInfoBase
{
public:
    ~TrackedInstance() override { ++g_destroyedInstances; }
};

InstanceInfoBase* makeInstance(const QString& id, const QString& algoType = QString(),
                               const QString& strategyName = QString(),
                               const QString& deleted = QString(),
                               const QString& creator = QString(),
                               const QString& clientID = QString())
{
    auto* inst = new TrackedInstance;
    inst->setInstanceID(id);
    inst->setInstAlgoType(algoType);
    inst->setStrategyName(strategyName);
    inst->setStrategyDeleted(deleted);
    inst->setCreateUser(creator);
    inst->setclInstanceID(clientID);
    return inst;
}

SymbolInfoBase* makeLeg(const QString& instanceID, const QString& symbol, const QString& side)
{
    auto* leg = new SymbolInfoBase;
    leg->setInstanceID(instanceID);
    leg->setSymbol(symbol);
    leg->setOrderSide(side);
    leg->setKey(InstanceMgr::GetSymbolExtInfoKey(instanceID, symbol, side));
    return leg;
}

// Whether a message of `type` holds every fragment.
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

// Runs `work` in a thread of its own. finishedWithin() tells whether it ran
// to its end in time; the thread is joined on destruction, so a call that was
// blocked completes once the test releases what blocked it.
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

// Holds the content lock for writing in a thread of its own until release().
class ContentWriteHolder
{
public:
    ContentWriteHolder()
        : m_thread([this] {
            mgr()->getLocker()->lockForWrite();
            m_locked.set_value();
            m_release.get_future().wait();
            mgr()->getLocker()->unlock();
        })
    {
        m_locked.get_future().wait();
    }
    ~ContentWriteHolder()
    {
        release();
        m_thread.join();
    }
    void release()
    {
        if (!m_released) {
            m_released = true;
            m_release.set_value();
        }
    }

private:
    std::promise<void> m_locked;
    std::promise<void> m_release;
    bool m_released = false;
    std::thread m_thread;
};

// A stand-in event dispatcher that runs nothing and records every timer that
// objects of its thread register, so that the timer of init() can be found
// although it has no parent.
class TimerRecordingDispatcher : public QAbstractEventDispatcher
{
public:
    struct Registration
    {
        int id;
        int interval;
        QObject* object;
    };

    bool processEvents(QEventLoop::ProcessEventsFlags) override
    {
        QCoreApplication::sendPostedEvents();
        return false;
    }
    bool hasPendingEvents() override { return false; }
    void registerSocketNotifier(QSocketNotifier*) override {}
    void unregisterSocketNotifier(QSocketNotifier*) override {}
    void registerTimer(int timerId, int interval, Qt::TimerType, QObject* object) override
    {
        registrations.append({timerId, interval, object});
    }
    bool unregisterTimer(int timerId) override
    {
        for (int i = 0; i < registrations.size(); ++i) {
            if (registrations.at(i).id == timerId) {
                registrations.removeAt(i);
                return true;
            }
        }
        return false;
    }
    bool unregisterTimers(QObject* object) override
    {
        bool any = false;
        for (int i = registrations.size() - 1; i >= 0; --i) {
            if (registrations.at(i).object == object) {
                registrations.removeAt(i);
                any = true;
            }
        }
        return any;
    }
    QList<TimerInfo> registeredTimers(QObject* object) const override
    {
        QList<TimerInfo> timers;
        for (const Registration& r : registrations) {
            if (r.object == object)
                timers.append(TimerInfo(r.id, r.interval, Qt::CoarseTimer));
        }
        return timers;
    }
    int remainingTime(int) override { return -1; }
    void wakeUp() override {}
    void interrupt() override {}
    void flush() override {}

    QList<Registration> registrations;
};

// Sees the queued calls that reach the manager, in the manager's thread.
class MetaCallWatcher : public QObject
{
public:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == mgr() && event->type() == QEvent::MetaCall) {
            QMutexLocker locker(&mutex);
            threadName = QThread::currentThread()->objectName();
            seen = true;
        }
        return false;
    }

    QMutex mutex;
    bool seen = false;
    QString threadName;
};

// One spy per signal of the manager, to tell which were emitted.
class ManagerSignals
{
public:
    ManagerSignals()
    {
        const QMetaObject* meta = mgr()->metaObject();
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
            const QMetaMethod method = meta->method(i);
            if (method.methodType() == QMetaMethod::Signal)
                m_spies.emplace_back(new QSignalSpy(mgr(), method));
        }
    }
    QSignalSpy* spyFor(const QMetaMethod& signal) const
    {
        for (const auto& spy : m_spies) {
            if (spy->signal() == signal.methodSignature())
                return spy.get();
        }
        return nullptr;
    }
    // Signatures of the signals emitted, with their counts.
    QMap<QByteArray, int> emitted() const
    {
        QMap<QByteArray, int> result;
        for (const auto& spy : m_spies) {
            if (spy->count() > 0)
                result.insert(spy->signal(), spy->count());
        }
        return result;
    }
    int signalCount() const { return int(m_spies.size()); }

private:
    std::vector<std::unique_ptr<QSignalSpy>> m_spies;
};

enum class Forwarder {
    ModifyPush,
    MultiProgress,
    ProgressDelay,
    ProgressUpdated,
    StatusUpdate,
    SymbolRemainQty,
    SymbolStatusUpdate,
    TimeUpdate,
};

enum class SingleRead { AlgoType, SymbolInfo, OneSymbol };

} // namespace

Q_DECLARE_METATYPE(Forwarder)
Q_DECLARE_METATYPE(SingleRead)

class TestInstanceMgr : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup();

    void singletonIsSharedAcrossThreads();
    void managerLivesInItsWorkerThread();
    void contentLockIsRecursive();
    void initStartsTheProfitTimerInTheCallingThread();

    void createInstanceClassTag_data();
    void createInstanceClassTag();
    void createInstanceWithRecordRegisters_data();
    void createInstanceWithRecordRegisters();
    void createSymbolInfoClass_data();
    void createSymbolInfoClass();

    void insertReplacesAndKeepsEarlierObjectAlive();
    void insertMapsClientIds_data();
    void insertMapsClientIds();
    void deleteForgetsInstanceAndClientId();
    void deleteOfUnknownIdChangesNothing();

    void getAllInstanceIDs_data();
    void getAllInstanceIDs();
    void getAllInstanceIDsExceptDeleted_data();
    void getAllInstanceIDsExceptDeleted();
    void getAllInstanceIDsExceptDeletedForAllType_data();
    void getAllInstanceIDsExceptDeletedForAllType();
    void getInstanceIDsForSpecialAlgoName_data();
    void getInstanceIDsForSpecialAlgoName();
    void getInstanceInfoForAllTypeCopiesRegistry();
    void getAlgoTypeByInstID_data();
    void getAlgoTypeByInstID();

    void symbolKeyComposition_data();
    void symbolKeyComposition();
    void symbolKeySplitting_data();
    void symbolKeySplitting();
    void getSymbolInfo_data();
    void getSymbolInfo();
    void getOneSymbol_data();
    void getOneSymbol();
    void singleInstanceReadsReleaseRegistryBeforeContent_data();
    void singleInstanceReadsReleaseRegistryBeforeContent();

    void createErrorInfo_data();
    void createErrorInfo();

    void forwarders_data();
    void forwarders();
    void signalArgumentTypesAreRegistered_data();
    void signalArgumentTypesAreRegistered();
    void signalsQueueAcrossThreads();

private:
    void insertQueryFixture();
};

void TestInstanceMgr::initTestCase()
{
    // Debug lines are part of the contract; make sure they are produced.
    QLoggingCategory::setFilterRules(QStringLiteral("algologic.*.debug=true"));
    QVERIFY(mgr() != nullptr);
}

void TestInstanceMgr::cleanup()
{
    const QList<QString> ids = mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown);
    for (const QString& id : ids)
        mgr()->DeleteInstance(id);
    CBusinessDataBase::GetInstance()->Reset();
}

// ---- singleton, thread, locks, timer ------------------------------------------

void TestInstanceMgr::singletonIsSharedAcrossThreads()
{
    constexpr int kThreads = 4;
    std::vector<InstanceMgr*> seen(kThreads, nullptr);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&seen, i] { seen[size_t(i)] = InstanceMgr::instance(); });
    for (std::thread& t : threads)
        t.join();
    for (InstanceMgr* p : seen)
        QCOMPARE(p, mgr());
    QCOMPARE(mgr()->parent(), static_cast<QObject*>(nullptr));
}

void TestInstanceMgr::managerLivesInItsWorkerThread()
{
    QThread* worker = mgr()->thread();
    QVERIFY(worker != nullptr);
    QVERIFY(worker != QThread::currentThread());
    QCOMPARE(worker->objectName(), QStringLiteral("InstanceMgr_Thread"));
    QVERIFY(worker->isRunning());
    QVERIFY(qobject_cast<KxThread*>(worker) != nullptr);
}

void TestInstanceMgr::contentLockIsRecursive()
{
    QReadWriteLock* lock = mgr()->getLocker();
    QVERIFY(lock != nullptr);
    QCOMPARE(mgr()->getLocker(), lock);

    // A writer may lock again for writing (nested handlers)...
    lock->lockForWrite();
    const bool writeAgain = lock->tryLockForWrite();
    bool otherThreadCouldRead = true;
    std::thread other([&] {
        otherThreadCouldRead = lock->tryLockForRead();
        if (otherThreadCouldRead)
            lock->unlock();
    });
    other.join();
    if (writeAgain)
        lock->unlock();
    lock->unlock();
    QVERIFY(writeAgain);
    QVERIFY(!otherThreadCouldRead);

    // ...and a reader may lock again for reading even while a writer of
    // another thread is already waiting: nested readers must not deadlock.
    lock->lockForRead();
    std::atomic<bool> writerIn{false};
    std::thread writer([&] {
        lock->lockForWrite();
        writerIn = true;
        lock->unlock();
    });
    QTest::qWait(100);
    const bool writerWaited = !writerIn.load();
    const bool readAgain = lock->tryLockForRead();
    if (readAgain)
        lock->unlock();
    lock->unlock();
    writer.join();
    QVERIFY(writerWaited);
    QVERIFY(readAgain);
    QVERIFY(writerIn.load());

    bool freeAfterwards = false;
    std::thread after([&] {
        freeAfterwards = lock->tryLockForWrite();
        if (freeAfterwards)
            lock->unlock();
    });
    after.join();
    QVERIFY(freeAfterwards);
}

void TestInstanceMgr::initStartsTheProfitTimerInTheCallingThread()
{
    LogCapture log;
    auto* watcher = new MetaCallWatcher;
    watcher->moveToThread(mgr()->thread());
    mgr()->installEventFilter(watcher);

    struct Seen
    {
        int matching = 0;
        QString name;
        int interval = 0;
        int registeredInterval = 0;
        bool active = false;
        bool singleShot = true;
        bool inCallingThread = false;
        bool hasParent = true;
    } seen;

    // init() in a thread whose dispatcher records timers; the timer belongs to
    // the thread that calls init().
    std::thread caller([&seen] {
        auto* dispatcher = new TimerRecordingDispatcher;
        QThread::currentThread()->setEventDispatcher(dispatcher);
        mgr()->init();
        for (const TimerRecordingDispatcher::Registration& r : dispatcher->registrations) {
            auto* timer = qobject_cast<QTimer*>(r.object);
            if (!timer || timer->objectName() != QLatin1String("m_timerT0CalculateNew"))
                continue;
            ++seen.matching;
            seen.name = timer->objectName();
            seen.interval = timer->interval();
            seen.registeredInterval = r.interval;
            seen.active = timer->isActive();
            seen.singleShot = timer->isSingleShot();
            seen.inCallingThread = timer->thread() == QThread::currentThread();
            seen.hasParent = timer->parent() != nullptr;
            // A tick is delivered as a queued call into the manager's thread.
            QTimerEvent tick(r.id);
            QCoreApplication::sendEvent(timer, &tick);
        }
    });
    caller.join();

    QCOMPARE(seen.matching, 1);
    QCOMPARE(seen.interval, 30000);
    QCOMPARE(seen.registeredInterval, 30000);
    QVERIFY(seen.active);
    QVERIFY(!seen.singleShot);
    QVERIFY(seen.inCallingThread);
    QVERIFY(!seen.hasParent);
    QVERIFY(logged(log, QtDebugMsg, {QStringLiteral("InstanceMgr::init InstanceMgr init")}));

    QTRY_VERIFY_WITH_TIMEOUT(
        [watcher] {
            QMutexLocker locker(&watcher->mutex);
            return watcher->seen;
        }(),
        5000);
    {
        QMutexLocker locker(&watcher->mutex);
        QCOMPARE(watcher->threadName, QStringLiteral("InstanceMgr_Thread"));
    }
    mgr()->removeEventFilter(watcher);
    watcher->deleteLater();
}

// ---- creation ---------------------------------------------------------------------

void TestInstanceMgr::createInstanceClassTag_data()
{
    QTest::addColumn<QString>("algoType");
    QTest::addColumn<QString>("classTag");
    QTest::addColumn<QString>("instanceClass");

    using namespace Algo_Values;
    const QString base = QStringLiteral("InstanceInfoBase");
    QTest::newRow("multi-strategy") << AlgoGlobalType::multiStr << "Multi" << "MultiInstanceInfo";
    QTest::newRow("T0") << AlgoGlobalType::T0 << "T0" << "T0InstanceInfo";
    QTest::newRow("feature") << AlgoGlobalType::feature << "info" << "RushLimitUpInstanceInfo";
    QTest::newRow("unknown") << AlgoGlobalType::unknown << "info" << base;
    QTest::newRow("all") << AlgoGlobalType::all << "info" << base;
    QTest::newRow("empty") << QString() << "info" << base;
    QTest::newRow("T0 in lower case") << AlgoGlobalType::T0.toLower() << "info" << base;
    QTest::newRow("multi in upper case") << AlgoGlobalType::multiStr.toUpper() << "info" << base;
    QTest::newRow("T0 with a trailing space") << AlgoGlobalType::T0 + " " << "info" << base;
}

void TestInstanceMgr::createInstanceClassTag()
{
    QFETCH(QString, algoType);
    QFETCH(QString, classTag);
    QFETCH(QString, instanceClass);

    const QList<QString> before = mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown);
    std::unique_ptr<InstanceInfoBase> inst(
        mgr()->CreateInstance(algoType, VariantMap(), QStringLiteral("SomeAlgo")));
    QVERIFY(inst);
    QCOMPARE(inst->getClassType(), classTag);
    QCOMPARE(className(inst.get()), instanceClass);
    // An empty record leaves the object to the caller: uninitialised and not
    // registered.
    QVERIFY(inst->instanceID().isEmpty());
    QVERIFY(inst->strategyName().isEmpty());
    QCOMPARE(mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown), before);
    QVERIFY(!mgr()->ContainsInstance(QString()));
}

void TestInstanceMgr::createInstanceWithRecordRegisters_data()
{
    QTest::addColumn<QString>("algoType");
    QTest::addColumn<QString>("classTag");
    QTest::addColumn<QString>("instanceClass");

    using namespace Algo_Values;
    QTest::newRow("multi-strategy") << AlgoGlobalType::multiStr << "Multi" << "MultiInstanceInfo";
    QTest::newRow("T0") << AlgoGlobalType::T0 << "T0" << "T0InstanceInfo";
    QTest::newRow("feature") << AlgoGlobalType::feature << "info" << "RushLimitUpInstanceInfo";
    QTest::newRow("empty") << QString() << "info" << "InstanceInfoBase";
}

void TestInstanceMgr::createInstanceWithRecordRegisters()
{
    QFETCH(QString, algoType);
    QFETCH(QString, classTag);
    QFETCH(QString, instanceClass);

    const QString id = QStringLiteral("cr") + QTest::currentDataTag();
    const QString clientID = QStringLiteral("cl-") + id;
    VariantMap record;
    record.insert(Tessel_Fields::Strategy::strategyID, id);
    record.insert(Tessel_Fields::Strategy::strategyName, QStringLiteral("RecordAlgo"));
    record.insert(Tessel_Fields::Strategy::strategyType, algoType);
    record.insert(Helm_Fields::Strategy::clAlgoID, clientID);

    QVERIFY(!mgr()->ContainsInstance(id));
    LogCapture log;
    InstanceInfoBase* inst = mgr()->CreateInstance(algoType, record, QStringLiteral("OtherName"));
    QVERIFY(inst);
    QCOMPARE(inst->getClassType(), classTag);
    QCOMPARE(className(inst), instanceClass);
    // Registered under the ID that the record gave the object.
    QCOMPARE(inst->instanceID(), id);
    QVERIFY(mgr()->ContainsInstance(id));
    QCOMPARE(mgr()->GetInstanceInfoForAllType().value(id), inst);
    QCOMPARE(mgr()->GetInstanceIDByClInstID(clientID), id);
    // The algo name argument plays no part; the record's name is kept.
    QCOMPARE(inst->strategyName(), QStringLiteral("RecordAlgo"));
    QVERIFY(logged(log, QtDebugMsg,
                   {QStringLiteral("InstanceMgr::CreateInstance InsertNewInstance"), id}));
}

void TestInstanceMgr::createSymbolInfoClass_data()
{
    QTest::addColumn<QString>("algoType");
    QTest::addColumn<bool>("isT0");

    QTest::newRow("T0") << Algo_Values::AlgoGlobalType::T0 << true;
    QTest::newRow("T0 in lower case") << Algo_Values::AlgoGlobalType::T0.toLower() << false;
    QTest::newRow("multi-strategy") << Algo_Values::AlgoGlobalType::multiStr << false;
    QTest::newRow("feature") << Algo_Values::AlgoGlobalType::feature << false;
    QTest::newRow("unknown") << Algo_Values::AlgoGlobalType::unknown << false;
    QTest::newRow("empty") << QString() << false;
}

void TestInstanceMgr::createSymbolInfoClass()
{
    QFETCH(QString, algoType);
    QFETCH(bool, isT0);

    std::unique_ptr<SymbolInfoBase> leg(
        InstanceMgr::CreateSymbolInfo(algoType, QStringLiteral("600000.SH")));
    QVERIFY(leg);
    QCOMPARE(dynamic_cast<T0SymbolInfo*>(leg.get()) != nullptr, isT0);
    // The caller fills the leg; the symbol argument is not applied.
    QVERIFY(leg->symbol().isEmpty());
    QVERIFY(leg->getKey().isEmpty());
}

// ---- insertion and removal ---------------------------------------------------------

void TestInstanceMgr::insertReplacesAndKeepsEarlierObjectAlive()
{
    const int destroyedBefore = g_destroyedInstances.load();
    InstanceInfoBase* first = makeInstance(QStringLiteral("rp1"), Algo_Values::AlgoGlobalType::T0,
                                           QString(), QString(), QString(), QStringLiteral("clA"));
    InstanceInfoBase* second =
        makeInstance(QStringLiteral("rp1"), Algo_Values::AlgoGlobalType::multiStr, QString(),
                     QString(), QString(), QStringLiteral("clB"));

    mgr()->InsertNewInstance(first);
    QCOMPARE(mgr()->GetInstanceInfoForAllType().value(QStringLiteral("rp1")), first);
    mgr()->InsertNewInstance(second);

    const QMap<QString, InstanceInfoBase*> registry = mgr()->GetInstanceInfoForAllType();
    QCOMPARE(registry.count(QStringLiteral("rp1")), 1);
    QCOMPARE(registry.value(QStringLiteral("rp1")), second);
    QCOMPARE(mgr()->GetAlgoTypeByInstID(QStringLiteral("rp1")),
             Algo_Values::AlgoGlobalType::multiStr);
    QCOMPARE(mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown),
             QList<QString>{QStringLiteral("rp1")});

    // The replaced object is not freed: whoever still holds it may use it.
    QCOMPARE(g_destroyedInstances.load(), destroyedBefore);
    first->setRemark(QStringLiteral("still here"));
    QCOMPARE(first->remark(), QStringLiteral("still here"));
    QCOMPARE(first->instanceID(), QStringLiteral("rp1"));

    // Both client IDs lead to the one server ID.
    QCOMPARE(mgr()->GetInstanceIDByClInstID(QStringLiteral("clA")), QStringLiteral("rp1"));
    QCOMPARE(mgr()->GetInstanceIDByClInstID(QStringLiteral("clB")), QStringLiteral("rp1"));
}

void TestInstanceMgr::insertMapsClientIds_data()
{
    // Each insertion: instance ID, client ID. Then client ID -> expected ID
    // (a null text for no entry).
    QTest::addColumn<QStringList>("insertIDs");
    QTest::addColumn<QStringList>("insertClientIDs");
    QTest::addColumn<QStringList>("queryClientIDs");
    QTest::addColumn<QStringList>("expectedIDs");

    QTest::newRow("client ID mapped")
        << QStringList{"ma1"} << QStringList{"c1"} << QStringList{"c1", "ma1", "c2"}
        << QStringList{"ma1", QString(), QString()};
    QTest::newRow("empty client ID adds no entry")
        << QStringList{"ma1"} << QStringList{QString()} << QStringList{QString(), "ma1"}
        << QStringList{QString(), QString()};
    QTest::newRow("replacement without client ID keeps the earlier entry")
        << QStringList{"ma1", "ma1"} << QStringList{"c1", QString()} << QStringList{"c1"}
        << QStringList{"ma1"};
    QTest::newRow("client ID moves to the later instance")
        << QStringList{"ma1", "ma2"} << QStringList{"c1", "c1"} << QStringList{"c1"}
        << QStringList{"ma2"};
    QTest::newRow("two instances, two client IDs")
        << QStringList{"ma2", "ma1"} << QStringList{"c2", "c1"} << QStringList{"c1", "c2"}
        << QStringList{"ma1", "ma2"};
}

void TestInstanceMgr::insertMapsClientIds()
{
    QFETCH(QStringList, insertIDs);
    QFETCH(QStringList, insertClientIDs);
    QFETCH(QStringList, queryClientIDs);
    QFETCH(QStringList, expectedIDs);

    for (int i = 0; i < insertIDs.size(); ++i) {
        mgr()->InsertNewInstance(makeInstance(insertIDs.at(i), QString(), QString(), QString(),
                                              QString(), insertClientIDs.at(i)));
    }
    for (int i = 0; i < queryClientIDs.size(); ++i) {
        const QString found = mgr()->GetInstanceIDByClInstID(queryClientIDs.at(i));
        QCOMPARE(found, expectedIDs.at(i));
        QCOMPARE(found.isNull(), expectedIDs.at(i).isNull());
    }
}

void TestInstanceMgr::deleteForgetsInstanceAndClientId()
{
    const int destroyedBefore = g_destroyedInstances.load();
    InstanceInfoBase* gone =
        makeInstance(QStringLiteral("del1"), Algo_Values::AlgoGlobalType::T0,
                     QStringLiteral("Twap"), QString(), QString(), QStringLiteral("cdel1"));
    InstanceInfoBase* kept =
        makeInstance(QStringLiteral("del2"), Algo_Values::AlgoGlobalType::T0,
                     QStringLiteral("Twap"), QString(), QString(), QStringLiteral("cdel2"));
    gone->AddSymbolInfo(makeLeg(QStringLiteral("del1"), QStringLiteral("600000.SH"),
                                QStringLiteral("1")));
    mgr()->InsertNewInstance(gone);
    mgr()->InsertNewInstance(kept);

    LogCapture log;
    mgr()->DeleteInstance(QStringLiteral("del1"));

    QVERIFY(logged(log, QtDebugMsg, {QStringLiteral("InstanceMgr::DeleteInstance"),
                                     QStringLiteral("del1")}));
    QVERIFY(!mgr()->ContainsInstance(QStringLiteral("del1")));
    QVERIFY(mgr()->ContainsInstance(QStringLiteral("del2")));
    QVERIFY(mgr()->GetInstanceIDByClInstID(QStringLiteral("cdel1")).isNull());
    QCOMPARE(mgr()->GetInstanceIDByClInstID(QStringLiteral("cdel2")), QStringLiteral("del2"));
    QCOMPARE(mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::all),
             QList<QString>{QStringLiteral("del2")});
    QCOMPARE(mgr()->GetInstanceIDsForSpecialAlgoName({QStringLiteral("Twap")}),
             QStringList{QStringLiteral("del2")});
    QVERIFY(mgr()->GetAlgoTypeByInstID(QStringLiteral("del1")).isEmpty());
    QCOMPARE(mgr()->getSymbolInfo(QStringLiteral("del1_600000.SH_1")),
             static_cast<SymbolInfoBase*>(nullptr));

    // Forgotten, not freed: the object and its legs stay usable.
    QCOMPARE(g_destroyedInstances.load(), destroyedBefore);
    QCOMPARE(gone->instanceID(), QStringLiteral("del1"));
    QCOMPARE(gone->getSymbolSize(), 1);
    QVERIFY(gone->getSymbolInfo(QStringLiteral("del1_600000.SH_1")) != nullptr);
}

void TestInstanceMgr::deleteOfUnknownIdChangesNothing()
{
    mgr()->InsertNewInstance(makeInstance(QStringLiteral("du1"), QString(), QString(), QString(),
                                          QString(), QStringLiteral("cdu1")));
    LogCapture log;
    mgr()->DeleteInstance(QStringLiteral("du9"));
    mgr()->DeleteInstance(QString());
    QVERIFY(logged(log, QtDebugMsg, {QStringLiteral("InstanceMgr::DeleteInstance du9")}));
    QCOMPARE(mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown),
             QList<QString>{QStringLiteral("du1")});
    QCOMPARE(mgr()->GetInstanceIDByClInstID(QStringLiteral("cdu1")), QStringLiteral("du1"));
}

// ---- queries --------------------------------------------------------------------------

// Seven instances, inserted out of order. Sorted by ID (text order):
// q02 q04 q06 q10 q3 q5 q7.
void TestInstanceMgr::insertQueryFixture()
{
    using namespace Algo_Values;
    const QString deleted = AlgoDeleteStatus::deleted;
    //                          id      type                     name       deleted creator
    mgr()->InsertNewInstance(makeInstance("q5", AlgoGlobalType::T0, "Twap", "0", kOtherUser));
    mgr()->InsertNewInstance(makeInstance("q10", AlgoGlobalType::T0, "T0Grid", "", ""));
    mgr()->InsertNewInstance(makeInstance("q02", AlgoGlobalType::T0, "T0Grid", deleted, kLogin));
    mgr()->InsertNewInstance(makeInstance("q7", AlgoGlobalType::feature, "twap", deleted, ""));
    mgr()->InsertNewInstance(
        makeInstance("q3", AlgoGlobalType::multiStr, "Basket", "", kOtherUser));
    mgr()->InsertNewInstance(makeInstance("q06", "", "", "", kLogin));
    mgr()->InsertNewInstance(makeInstance("q04", AlgoGlobalType::all, "Twap", "", kLogin));
}

void TestInstanceMgr::getAllInstanceIDs_data()
{
    using namespace Algo_Values;
    QTest::addColumn<QString>("algoType");
    QTest::addColumn<QStringList>("expected");

    const QStringList every{"q02", "q04", "q06", "q10", "q3", "q5", "q7"};
    QTest::newRow("unknown gives every ID") << AlgoGlobalType::unknown << every;
    QTest::newRow("all matches every type") << AlgoGlobalType::all << every;
    QTest::newRow("T0, deleted included") << AlgoGlobalType::T0 << QStringList{"q02", "q10", "q5"};
    QTest::newRow("multi-strategy") << AlgoGlobalType::multiStr << QStringList{"q3"};
    QTest::newRow("feature, deleted included") << AlgoGlobalType::feature << QStringList{"q7"};
    QTest::newRow("empty type") << QString() << QStringList{"q06"};
    QTest::newRow("case-sensitive") << AlgoGlobalType::T0.toLower() << QStringList();
    QTest::newRow("type nobody has") << AlgoGlobalType::deposit << QStringList();
}

void TestInstanceMgr::getAllInstanceIDs()
{
    QFETCH(QString, algoType);
    QFETCH(QStringList, expected);
    insertQueryFixture();

    LogCapture log;
    const QList<QString> ids = mgr()->GetAllInstanceIDs(algoType);
    QCOMPARE(QStringList(ids), expected);
    QVERIFY(logged(log, QtDebugMsg, {QStringLiteral("GetAllInstanceIDs: ") + algoType}));
}

void TestInstanceMgr::getAllInstanceIDsExceptDeleted_data()
{
    using namespace Algo_Values;
    QTest::addColumn<QString>("algoType");
    QTest::addColumn<bool>("allCreators");
    QTest::addColumn<QString>("login");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("unknown gives every ID, deleted and others' too")
        << AlgoGlobalType::unknown << false << kLogin
        << QStringList{"q02", "q04", "q06", "q10", "q3", "q5", "q7"};
    QTest::newRow("all is no wildcard") << AlgoGlobalType::all << true << kLogin
                                        << QStringList{"q04"};
    QTest::newRow("T0, every creator") << AlgoGlobalType::T0 << true << kLogin
                                       << QStringList{"q10", "q5"};
    QTest::newRow("T0, own and creatorless") << AlgoGlobalType::T0 << false << kLogin
                                             << QStringList{"q10"};
    QTest::newRow("T0, other login") << AlgoGlobalType::T0 << false << kOtherUser
                                     << QStringList{"q10", "q5"};
    QTest::newRow("T0, nobody logged in") << AlgoGlobalType::T0 << false << QString()
                                          << QStringList{"q10"};
    QTest::newRow("multi-strategy of another creator")
        << AlgoGlobalType::multiStr << false << kLogin << QStringList();
    QTest::newRow("multi-strategy, every creator")
        << AlgoGlobalType::multiStr << true << kLogin << QStringList{"q3"};
    QTest::newRow("feature, only deleted") << AlgoGlobalType::feature << true << kLogin
                                           << QStringList();
    QTest::newRow("empty type") << QString() << false << kLogin << QStringList{"q06"};
    QTest::newRow("login in other case") << QString() << false << kLogin.toUpper()
                                         << QStringList();
}

void TestInstanceMgr::getAllInstanceIDsExceptDeleted()
{
    QFETCH(QString, algoType);
    QFETCH(bool, allCreators);
    QFETCH(QString, login);
    QFETCH(QStringList, expected);
    insertQueryFixture();
    CBusinessDataBase::GetInstance()->SetLoginAccount(login);

    LogCapture log;
    QCOMPARE(mgr()->GetAllInstanceIDsExceptDeleted(algoType, allCreators), expected);
    QVERIFY(logged(log, QtDebugMsg,
                   {QStringLiteral("InstanceMgr::GetAllInstanceIDsExceptDeleted"),
                    QStringLiteral("GetAllInstanceIDs: ") + algoType}));
}

void TestInstanceMgr::getAllInstanceIDsExceptDeletedForAllType_data()
{
    QTest::addColumn<bool>("allCreators");
    QTest::addColumn<QString>("login");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("every creator") << true << kLogin
                                   << QStringList{"q04", "q06", "q10", "q3", "q5"};
    QTest::newRow("every creator, nobody logged in")
        << true << QString() << QStringList{"q04", "q06", "q10", "q3", "q5"};
    QTest::newRow("own and creatorless") << false << kLogin
                                         << QStringList{"q04", "q06", "q10"};
    QTest::newRow("other login") << false << kOtherUser << QStringList{"q10", "q3", "q5"};
    QTest::newRow("nobody logged in") << false << QString() << QStringList{"q10"};
}

void TestInstanceMgr::getAllInstanceIDsExceptDeletedForAllType()
{
    QFETCH(bool, allCreators);
    QFETCH(QString, login);
    QFETCH(QStringList, expected);
    insertQueryFixture();
    CBusinessDataBase::GetInstance()->SetLoginAccount(login);

    LogCapture log;
    QCOMPARE(mgr()->GetAllInstanceIDsExceptDeletedForAllType(allCreators), expected);
    // Silent, unlike the typed variant.
    QVERIFY(!logged(log, QtDebugMsg, {QStringLiteral("GetAllInstanceIDs")}));
}

void TestInstanceMgr::getInstanceIDsForSpecialAlgoName_data()
{
    QTest::addColumn<QStringList>("algoNames");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("one name, other creators included")
        << QStringList{"Twap"} << QStringList{"q04", "q5"};
    QTest::newRow("case-sensitive, deleted included") << QStringList{"twap"}
                                                      << QStringList{"q7"};
    QTest::newRow("two names") << QStringList{"Basket", "T0Grid"}
                               << QStringList{"q02", "q10", "q3"};
    QTest::newRow("no names") << QStringList() << QStringList();
    QTest::newRow("empty name matches nameless") << QStringList{QString()}
                                                 << QStringList{"q06"};
    QTest::newRow("prefix is no match") << QStringList{"Twa", "T0"} << QStringList();
}

void TestInstanceMgr::getInstanceIDsForSpecialAlgoName()
{
    QFETCH(QStringList, algoNames);
    QFETCH(QStringList, expected);
    insertQueryFixture();
    CBusinessDataBase::GetInstance()->SetLoginAccount(kLogin);

    LogCapture log;
    QCOMPARE(mgr()->GetInstanceIDsForSpecialAlgoName(algoNames), expected);
    QVERIFY(logged(log, QtDebugMsg,
                   {QStringLiteral("InstanceMgr::GetInstanceIDsForSpecialAlgoName")}));
}

void TestInstanceMgr::getInstanceInfoForAllTypeCopiesRegistry()
{
    InstanceInfoBase* b = makeInstance(QStringLiteral("cp2"));
    InstanceInfoBase* a = makeInstance(QStringLiteral("cp1"));
    mgr()->InsertNewInstance(b);
    mgr()->InsertNewInstance(a);

    QMap<QString, InstanceInfoBase*> copy = mgr()->GetInstanceInfoForAllType();
    QCOMPARE(copy.keys(), (QList<QString>{QStringLiteral("cp1"), QStringLiteral("cp2")}));
    QCOMPARE(copy.value(QStringLiteral("cp1")), a);
    QCOMPARE(copy.value(QStringLiteral("cp2")), b);

    // Changing the copy leaves the registry alone, and vice versa.
    copy.remove(QStringLiteral("cp1"));
    QVERIFY(mgr()->ContainsInstance(QStringLiteral("cp1")));
    mgr()->DeleteInstance(QStringLiteral("cp2"));
    QCOMPARE(copy.value(QStringLiteral("cp2")), b);
}

void TestInstanceMgr::getAlgoTypeByInstID_data()
{
    QTest::addColumn<QString>("instanceID");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("missLogged");

    QTest::newRow("known") << "q3" << Algo_Values::AlgoGlobalType::multiStr << false;
    QTest::newRow("known deleted") << "q7" << Algo_Values::AlgoGlobalType::feature << false;
    QTest::newRow("known without type") << "q06" << QString() << false;
    QTest::newRow("unknown") << "q99" << QString() << true;
    QTest::newRow("empty ID") << QString() << QString() << true;
}

void TestInstanceMgr::getAlgoTypeByInstID()
{
    QFETCH(QString, instanceID);
    QFETCH(QString, expected);
    QFETCH(bool, missLogged);
    insertQueryFixture();

    LogCapture log;
    QCOMPARE(mgr()->GetAlgoTypeByInstID(instanceID), expected);
    QCOMPARE(logged(log, QtDebugMsg,
                    {QStringLiteral("InstanceMgr::GetAlgoTypeByInstID null ptr"), instanceID}),
             missLogged);
}

// ---- symbol keys and legs ---------------------------------------------------------

void TestInstanceMgr::symbolKeyComposition_data()
{
    QTest::addColumn<QString>("instanceID");
    QTest::addColumn<QString>("symbol");
    QTest::addColumn<QString>("side");
    QTest::addColumn<QString>("key");

    QTest::newRow("plain") << "100023" << "600000.SH" << "1" << "100023_600000.SH_1";
    QTest::newRow("empty parts") << QString() << QString() << QString() << "__";
    QTest::newRow("empty side") << "7" << "000001.SZ" << QString() << "7_000001.SZ_";
    QTest::newRow("placeholders are not expanded again")
        << "a%2" << "%3b" << "%1" << "a%2_%3b_%1";
    QTest::newRow("underscore is not escaped") << "1_2" << "A" << "B" << "1_2_A_B";
    QTest::newRow("no padding") << " 1" << "A " << "B" << " 1_A _B";
}

void TestInstanceMgr::symbolKeyComposition()
{
    QFETCH(QString, instanceID);
    QFETCH(QString, symbol);
    QFETCH(QString, side);
    QFETCH(QString, key);

    QCOMPARE(InstanceMgr::GetSymbolExtInfoKey(instanceID, symbol, side), key);
}

void TestInstanceMgr::symbolKeySplitting_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("instanceID");
    QTest::addColumn<QString>("symbol");
    QTest::addColumn<QString>("side");
    QTest::addColumn<QString>("symbolSide");

    QTest::newRow("one part") << "100023" << "" << "" << "" << "";
    QTest::newRow("two parts") << "100023_600000.SH" << "100023" << "600000.SH" << "" << "";
    QTest::newRow("three parts") << "100023_600000.SH_1" << "100023" << "600000.SH" << "1"
                                 << "600000.SH_1";
    QTest::newRow("four parts, the fourth ignored") << "1_A_B_C" << "1" << "A" << "B" << "A_B";
    QTest::newRow("empty key") << "" << "" << "" << "" << "";
    QTest::newRow("empty middle part kept") << "a__b" << "a" << "" << "b" << "_b";
    QTest::newRow("two empty parts") << "_" << "" << "" << "" << "";
    QTest::newRow("three empty parts") << "__" << "" << "" << "" << "_";
    QTest::newRow("trailing separator") << "100023_600000.SH_" << "100023" << "600000.SH" << ""
                                        << "600000.SH_";
    QTest::newRow("other separators are text") << "1-A-B" << "" << "" << "" << "";
}

void TestInstanceMgr::symbolKeySplitting()
{
    QFETCH(QString, key);
    QFETCH(QString, instanceID);
    QFETCH(QString, symbol);
    QFETCH(QString, side);
    QFETCH(QString, symbolSide);

    QCOMPARE(InstanceMgr::getInstIdFromSymbolKey(key), instanceID);
    QCOMPARE(InstanceMgr::getSymbolFromSymbolKey(key), symbol);
    QCOMPARE(InstanceMgr::getSideFromSymbolKey(key), side);
    QCOMPARE(InstanceMgr::getSymbolOrdeSideFromKey(key), symbolSide);
}

void TestInstanceMgr::getSymbolInfo_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("legSymbol"); // empty: no leg expected
    QTest::addColumn<QString>("missingInstanceID"); // null: instance found, no miss log

    QTest::newRow("first leg") << "gs1_600000.SH_1" << "600000.SH" << QString();
    QTest::newRow("second leg") << "gs1_000001.SZ_2" << "000001.SZ" << QString();
    QTest::newRow("other side of a known symbol") << "gs1_600000.SH_2" << "" << QString();
    QTest::newRow("whole key is looked up") << "gs1_600000.SH" << "" << QString();
    QTest::newRow("four parts are not trimmed") << "gs1_600000.SH_1_x" << "" << QString();
    QTest::newRow("unknown instance") << "gs9_600000.SH_1" << "" << "gs9";
    QTest::newRow("one part") << "gs1" << "" << "";
    QTest::newRow("empty key") << "" << "" << "";
}

void TestInstanceMgr::getSymbolInfo()
{
    QFETCH(QString, key);
    QFETCH(QString, legSymbol);
    QFETCH(QString, missingInstanceID);

    InstanceInfoBase* inst = makeInstance(QStringLiteral("gs1"));
    inst->AddSymbolInfo(makeLeg(QStringLiteral("gs1"), QStringLiteral("600000.SH"),
                                QStringLiteral("1")));
    inst->AddSymbolInfo(makeLeg(QStringLiteral("gs1"), QStringLiteral("000001.SZ"),
                                QStringLiteral("2")));
    mgr()->InsertNewInstance(inst);

    LogCapture log;
    SymbolInfoBase* leg = mgr()->getSymbolInfo(key);
    if (legSymbol.isEmpty()) {
        QCOMPARE(leg, static_cast<SymbolInfoBase*>(nullptr));
    } else {
        QVERIFY(leg);
        QCOMPARE(leg, inst->getSymbolInfo(key));
        QCOMPARE(leg->symbol(), legSymbol);
    }
    const bool missLogged =
        logged(log, QtDebugMsg, {QStringLiteral("InstanceMgr::getSymbolInfo null ptr")});
    QCOMPARE(missLogged, !missingInstanceID.isNull());
    if (!missingInstanceID.isEmpty()) {
        QVERIFY(logged(log, QtDebugMsg, {QStringLiteral("InstanceMgr::getSymbolInfo null ptr"),
                                         missingInstanceID}));
    }
}

void TestInstanceMgr::getOneSymbol_data()
{
    QTest::addColumn<QString>("instanceID");
    QTest::addColumn<QString>("symbol");
    QTest::addColumn<QString>("side");
    QTest::addColumn<bool>("missLogged");

    // The first leg in key order: 000001.SZ sorts before 600000.SH.
    QTest::newRow("first leg by key") << "go1" << "000001.SZ" << "2" << false;
    QTest::newRow("no legs: outputs untouched") << "go2" << "keep" << "keep" << false;
    QTest::newRow("unknown: outputs untouched") << "go9" << "keep" << "keep" << true;
    QTest::newRow("empty ID") << QString() << "keep" << "keep" << true;
}

void TestInstanceMgr::getOneSymbol()
{
    QFETCH(QString, instanceID);
    QFETCH(QString, symbol);
    QFETCH(QString, side);
    QFETCH(bool, missLogged);

    InstanceInfoBase* withLegs = makeInstance(QStringLiteral("go1"));
    withLegs->AddSymbolInfo(makeLeg(QStringLiteral("go1"), QStringLiteral("600000.SH"),
                                    QStringLiteral("1")));
    withLegs->AddSymbolInfo(makeLeg(QStringLiteral("go1"), QStringLiteral("000001.SZ"),
                                    QStringLiteral("2")));
    mgr()->InsertNewInstance(withLegs);
    mgr()->InsertNewInstance(makeInstance(QStringLiteral("go2")));

    LogCapture log;
    QString outSymbol = QStringLiteral("keep");
    QString outSide = QStringLiteral("keep");
    mgr()->getOneSymbol(instanceID, outSymbol, outSide);
    QCOMPARE(outSymbol, symbol);
    QCOMPARE(outSide, side);
    QCOMPARE(logged(log, QtDebugMsg,
                    {QStringLiteral("InstanceMgr::getOneSymbol null ptr"), instanceID}),
             missLogged);
}

void TestInstanceMgr::singleInstanceReadsReleaseRegistryBeforeContent_data()
{
    QTest::addColumn<SingleRead>("operation");
    QTest::newRow("GetAlgoTypeByInstID") << SingleRead::AlgoType;
    QTest::newRow("getSymbolInfo") << SingleRead::SymbolInfo;
    QTest::newRow("getOneSymbol") << SingleRead::OneSymbol;
}

void TestInstanceMgr::singleInstanceReadsReleaseRegistryBeforeContent()
{
    QFETCH(SingleRead, operation);

    InstanceInfoBase* inst = makeInstance(QStringLiteral("lk1"), Algo_Values::AlgoGlobalType::T0);
    inst->AddSymbolInfo(makeLeg(QStringLiteral("lk1"), QStringLiteral("600000.SH"),
                                QStringLiteral("1")));
    mgr()->InsertNewInstance(inst);

    QString algoType;
    SymbolInfoBase* leg = nullptr;
    QString symbol;
    QString side;
    bool writerFinished = false;
    bool readerWaited = false;
    {
        ContentWriteHolder holder;
        Probe reader([&] {
            switch (operation) {
            case SingleRead::AlgoType:
                algoType = mgr()->GetAlgoTypeByInstID(QStringLiteral("lk1"));
                break;
            case SingleRead::SymbolInfo:
                leg = mgr()->getSymbolInfo(QStringLiteral("lk1_600000.SH_1"));
                break;
            case SingleRead::OneSymbol:
                mgr()->getOneSymbol(QStringLiteral("lk1"), symbol, side);
                break;
            }
        });
        // The read waits for the content lock...
        readerWaited = !reader.finishedWithin(150);
        // ...without holding the registry lock meanwhile: a registry writer
        // gets through.
        Probe registryWriter([] { mgr()->DeleteInstance(QStringLiteral("lk-absent")); });
        writerFinished = registryWriter.finishedWithin(kProbeTimeoutMs);
        holder.release();
    }
    QVERIFY(readerWaited);
    QVERIFY(writerFinished);
    switch (operation) {
    case SingleRead::AlgoType:
        QCOMPARE(algoType, Algo_Values::AlgoGlobalType::T0);
        break;
    case SingleRead::SymbolInfo:
        QVERIFY(leg != nullptr);
        QCOMPARE(leg->symbol(), QStringLiteral("600000.SH"));
        break;
    case SingleRead::OneSymbol:
        QCOMPARE(symbol, QStringLiteral("600000.SH"));
        QCOMPARE(side, QStringLiteral("1"));
        break;
    }
}

// ---- create errors -------------------------------------------------------------------

void TestInstanceMgr::createErrorInfo_data()
{
    // Stored triples (client ID, code, text), then the client ID asked for.
    QTest::addColumn<QList<QStringList>>("stored");
    QTest::addColumn<QString>("clientID");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("text");

    QTest::newRow("unknown gives two empty texts")
        << QList<QStringList>() << "ce1" << "" << "";
    QTest::newRow("stored pair") << QList<QStringList>{{"ce1", "E100", "no rights"}} << "ce1"
                                 << "E100" << "no rights";
    QTest::newRow("later pair replaces")
        << QList<QStringList>{{"ce1", "E100", "no rights"}, {"ce1", "E200", "bad price"}}
        << "ce1" << "E200" << "bad price";
    QTest::newRow("pairs kept per client ID")
        << QList<QStringList>{{"ce1", "E100", "no rights"}, {"ce2", "E200", "bad price"}}
        << "ce1" << "E100" << "no rights";
    QTest::newRow("other client ID only") << QList<QStringList>{{"ce2", "E200", "bad price"}}
                                          << "ce1" << "" << "";
    QTest::newRow("empty client ID is a key") << QList<QStringList>{{"", "E300", "empty"}}
                                              << "" << "E300" << "empty";
}

void TestInstanceMgr::createErrorInfo()
{
    QFETCH(QList<QStringList>, stored);
    QFETCH(QString, clientID);
    QFETCH(QString, code);
    QFETCH(QString, text);

    // Entries are never removed: keep each row's client IDs apart.
    const QString prefix = QString::fromLatin1(QTest::currentDataTag()) + QLatin1Char('/');
    for (const QStringList& entry : stored)
        mgr()->setCreateErrorInfoByClInst(prefix + entry.at(0), entry.at(1), entry.at(2));

    const std::pair<QString, QString> info = mgr()->getCreateErrorInfoByClInst(prefix + clientID);
    QCOMPARE(info.first, code);
    QCOMPARE(info.second, text);
}

// ---- notifications ------------------------------------------------------------------

void TestInstanceMgr::forwarders_data()
{
    QTest::addColumn<Forwarder>("forwarder");
    QTest::addColumn<QByteArray>("signal");

    QTest::newRow("SendSignalModifyPush")
        << Forwarder::ModifyPush << QByteArray("signalModifyPush(QString,QString,QString)");
    QTest::newRow("SendSignalMultiProgress")
        << Forwarder::MultiProgress << QByteArray("signalMultiProgressUpdated(QString)");
    QTest::newRow("SendSignalProgressDelay")
        << Forwarder::ProgressDelay << QByteArray("signalProgreeDelayUpadaete(QString)");
    QTest::newRow("SendSignalProgressUpdated")
        << Forwarder::ProgressUpdated
        << QByteArray("signalProgressUpdated(QString,QList<QString>)");
    QTest::newRow("SendSignalStatusUpdate")
        << Forwarder::StatusUpdate << QByteArray("signalStatusUpdated(QString,QString)");
    QTest::newRow("SendSignalSymbolRemainQty")
        << Forwarder::SymbolRemainQty
        << QByteArray("sigSymbolRemainQty(QString,QHash<QString,double>)");
    QTest::newRow("SendSignalSymbolStatusUpdate")
        << Forwarder::SymbolStatusUpdate
        << QByteArray("signalSymbolStatusUpdate(QMap<QString,QMap<QString,QVariant> >)");
    QTest::newRow("SendSignalTimeUpdate")
        << Forwarder::TimeUpdate << QByteArray("signalTimeUpdate(QString,QString)");
}

void TestInstanceMgr::forwarders()
{
    QFETCH(Forwarder, forwarder);
    QFETCH(QByteArray, signal);

    const QMetaObject* meta = mgr()->metaObject();
    const int index = meta->indexOfSignal(signal.constData());
    QVERIFY2(index >= 0, signal.constData());
    ManagerSignals spies;
    QCOMPARE(spies.signalCount(), 11);
    QSignalSpy* spy = spies.spyFor(meta->method(index));
    QVERIFY(spy);

    const QString id = QStringLiteral("fw1");
    const QList<QString> keys{QStringLiteral("fw1_600000.SH_1"), QStringLiteral("fw1_A_2")};
    QHash<QString, double> remaining;
    remaining.insert(QStringLiteral("fw1_600000.SH_1"), 1200.5);
    remaining.insert(QStringLiteral("fw1_A_2"), 0.0);
    QMap<QString, QMap<QString, QVariant>> legs;
    legs[QStringLiteral("fw1_600000.SH_1")].insert(QStringLiteral("status"), QStringLiteral("2"));
    legs[QStringLiteral("fw1_A_2")].insert(QStringLiteral("cumQty"), 300);

    switch (forwarder) {
    case Forwarder::ModifyPush:
        mgr()->SendSignalModifyPush(id, QStringLiteral("ack"), QStringLiteral("comment"));
        break;
    case Forwarder::MultiProgress:
        mgr()->SendSignalMultiProgress(id);
        break;
    case Forwarder::ProgressDelay:
        mgr()->SendSignalProgressDelay(id);
        break;
    case Forwarder::ProgressUpdated:
        mgr()->SendSignalProgressUpdated(id, keys);
        break;
    case Forwarder::StatusUpdate:
        mgr()->SendSignalStatusUpdate(id, QStringLiteral("5"));
        break;
    case Forwarder::SymbolRemainQty:
        mgr()->SendSignalSymbolRemainQty(id, remaining);
        break;
    case Forwarder::SymbolStatusUpdate:
        mgr()->SendSignalSymbolStatusUpdate(legs);
        break;
    case Forwarder::TimeUpdate:
        mgr()->SendSignalTimeUpdate(id, QStringLiteral("1"));
        break;
    }

    // Exactly one emission, of this signal only.
    QCOMPARE(spies.emitted(), (QMap<QByteArray, int>{{meta->method(index).methodSignature(), 1}}));
    const QList<QVariant> args = spy->at(0);
    switch (forwarder) {
    case Forwarder::ModifyPush:
        QCOMPARE(args.size(), 3);
        QCOMPARE(args.at(0).toString(), id);
        QCOMPARE(args.at(1).toString(), QStringLiteral("ack"));
        QCOMPARE(args.at(2).toString(), QStringLiteral("comment"));
        break;
    case Forwarder::MultiProgress:
    case Forwarder::ProgressDelay:
        QCOMPARE(args.size(), 1);
        QCOMPARE(args.at(0).toString(), id);
        break;
    case Forwarder::ProgressUpdated:
        QCOMPARE(args.size(), 2);
        QCOMPARE(args.at(0).toString(), id);
        QCOMPARE(qvariant_cast<QList<QString>>(args.at(1)), keys);
        break;
    case Forwarder::StatusUpdate:
        QCOMPARE(args.size(), 2);
        QCOMPARE(args.at(0).toString(), id);
        QCOMPARE(args.at(1).toString(), QStringLiteral("5"));
        break;
    case Forwarder::SymbolRemainQty:
        QCOMPARE(args.size(), 2);
        QCOMPARE(args.at(0).toString(), id);
        QCOMPARE((qvariant_cast<QHash<QString, double>>(args.at(1))), remaining);
        break;
    case Forwarder::SymbolStatusUpdate:
        QCOMPARE(args.size(), 1);
        QCOMPARE((qvariant_cast<QMap<QString, QMap<QString, QVariant>>>(args.at(0))), legs);
        break;
    case Forwarder::TimeUpdate:
        QCOMPARE(args.size(), 2);
        QCOMPARE(args.at(0).toString(), id);
        QCOMPARE(args.at(1).toString(), QStringLiteral("1"));
        break;
    }
}

void TestInstanceMgr::signalArgumentTypesAreRegistered_data()
{
    QTest::addColumn<QByteArray>("typeName");
    QTest::newRow("remaining quantities") << QByteArray("QHash<QString,double>");
    QTest::newRow("leg status changes") << QByteArray("QMap<QString,QMap<QString,QVariant> >");
    QTest::newRow("symbol keys") << QByteArray("QList<QString>");
}

void TestInstanceMgr::signalArgumentTypesAreRegistered()
{
    QFETCH(QByteArray, typeName);
    QVERIFY(mgr());
    QVERIFY2(QMetaType::type(typeName.constData()) != QMetaType::UnknownType,
             typeName.constData());
}

void TestInstanceMgr::signalsQueueAcrossThreads()
{
    // The presentation thread connects with AutoConnection; emissions from
    // another thread are queued and must carry their arguments intact.
    QObject receiver;
    QList<QString> receivedKeys;
    QHash<QString, double> receivedRemaining;
    QMap<QString, QMap<QString, QVariant>> receivedLegs;
    connect(mgr(), &InstanceMgr::signalProgressUpdated, &receiver,
            [&](const QString&, const QList<QString>& keys) { receivedKeys = keys; });
    connect(mgr(), &InstanceMgr::sigSymbolRemainQty, &receiver,
            [&](const QString&, const QHash<QString, double>& r) { receivedRemaining = r; });
    connect(mgr(), &InstanceMgr::signalSymbolStatusUpdate, &receiver,
            [&](const QMap<QString, QMap<QString, QVariant>>& l) { receivedLegs = l; });

    const QList<QString> keys{QStringLiteral("qa_600000.SH_1")};
    QHash<QString, double> remaining;
    remaining.insert(QStringLiteral("qa_600000.SH_1"), 42.0);
    QMap<QString, QMap<QString, QVariant>> legs;
    legs[QStringLiteral("qa_600000.SH_1")].insert(QStringLiteral("status"), QStringLiteral("1"));

    LogCapture log;
    std::thread sender([&] {
        mgr()->SendSignalProgressUpdated(QStringLiteral("qa"), keys);
        mgr()->SendSignalSymbolRemainQty(QStringLiteral("qa"), remaining);
        mgr()->SendSignalSymbolStatusUpdate(legs);
    });
    sender.join();

    QTRY_COMPARE(receivedKeys, keys);
    QTRY_COMPARE(receivedRemaining, remaining);
    QTRY_COMPARE(receivedLegs, legs);
    QVERIFY(!logged(log, QtWarningMsg, {QStringLiteral("Cannot queue arguments")}));
}

QTEST_GUILESS_MAIN(TestInstanceMgr)
#include "tst_instancemgr.moc"
