// The instance registry: the profit timer of init(), the recursive content
// lock, creation by algo type, insertion and removal with the client-ID map,
// the queries with their filters and order, symbol keys, leg lookups and
// create errors. Forwarders and signal types: tst_notifications, tst_metatypes.

#include <algologic.h>

#include "logcapture.h"

#include <QAbstractEventDispatcher>
#include <QTimer>
#include <QtTest>

#include <atomic>
#include <typeinfo>

// Qt's object hook table: index 3 is called for every new QObject.
extern Q_DECL_IMPORT quintptr qtHookData[];

namespace {

const QString kLogin = QStringLiteral("trader01");

InstanceMgr* mgr()
{
    return InstanceMgr::instance();
}

std::atomic<int> g_destroyed{0};
struct TrackedInstance : InstanceInfoBase
{
    ~TrackedInstance() override { ++g_destroyed; }
};

InstanceInfoBase* makeInstance(const QString& id, const QString& type = {},
                               const QString& name = {}, const QString& deleted = {},
                               const QString& creator = {}, const QString& client = {})
{
    auto* inst = new TrackedInstance;
    inst->setInstanceID(id);
    inst->setInstAlgoType(type);
    inst->setStrategyName(name);
    inst->setStrategyDeleted(deleted);
    inst->setCreateUser(creator);
    inst->setclInstanceID(client);
    return inst;
}

} // namespace

class TestInstanceMgr : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();
    void initStartsRepeatingTimer();
    void contentLockIsRecursive();
    void createInstance_data();
    void createInstance();
    void insertAndDelete_data();
    void insertAndDelete();
    void queries_data();
    void queries();
    void symbolKeys_data();
    void symbolKeys();
    void createErrorInfo();
};

void TestInstanceMgr::cleanup()
{
    for (const QString& id : mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown))
        mgr()->DeleteInstance(id);
    QCOMPARE(g_destroyed.load(), 0); // the registry forgets instances, never frees them
}

void TestInstanceMgr::initStartsRepeatingTimer()
{
    static QList<QObject*> created; // objects the test thread made during init()
    InstanceMgr* manager = mgr();
    LogCapture log;
    const quintptr previousHook = qtHookData[3];
    qtHookData[3] = reinterpret_cast<quintptr>(+[](QObject* o) {
        if (QThread::currentThread() == qApp->thread())
            created.append(o);
    });
    manager->init();
    qtHookData[3] = previousHook;
    QObject* withTimer = nullptr; // asking the dispatcher does not touch the object
    for (QObject* o : created)
        withTimer =
            QAbstractEventDispatcher::instance()->registeredTimers(o).isEmpty() ? withTimer : o;
    auto* timer = qobject_cast<QTimer*>(withTimer);
    QVERIFY(timer && timer->isActive() && !timer->isSingleShot() && !timer->parent());
    QCOMPARE(timer->objectName(), QStringLiteral("m_timerT0CalculateNew"));
    QCOMPARE(timer->interval(), 30000);
    QVERIFY(log.contains(QtDebugMsg, "InstanceMgr::init InstanceMgr init"));
    QTimerEvent tick(timer->timerId()); // a tick reaches the recalculation slot
    QCoreApplication::sendEvent(timer, &tick);
    QTRY_VERIFY(log.contains(QtDebugMsg, "InstanceMgr::slotCalculateTimer"));
}

void TestInstanceMgr::contentLockIsRecursive()
{
    QReadWriteLock* lock = mgr()->getLocker();
    lock->lockForWrite();
    const bool again = lock->tryLockForWrite(); // a handler's nested accessor locks again
    for (int i = again ? 2 : 1; i > 0; --i)
        lock->unlock();
    QVERIFY(again);
}

void TestInstanceMgr::createInstance_data()
{
    using namespace Algo_Values;
    QTest::addColumn<QString>("algoType");
    QTest::addColumn<bool>("withRecord");
    QTest::addColumn<QString>("classTag");
    QTest::addColumn<QString>("cls"); // the class created
    QTest::newRow("multi, record") << AlgoGlobalType::multiStr << true << "Multi"
                                   << "MultiInstanceInfo";
    QTest::newRow("T0, empty record") << AlgoGlobalType::T0 << false << "T0"
                                      << "T0InstanceInfo";
    QTest::newRow("feature, record") << AlgoGlobalType::feature << true << "info"
                                     << "RushLimitUpInstanceInfo";
    QTest::newRow("empty type, empty record") << QString() << false << "info"
                                              << "InstanceInfoBase";
    QTest::newRow("T0 in lower case, record") << AlgoGlobalType::T0.toLower() << true << "info"
                                              << "InstanceInfoBase";
}

void TestInstanceMgr::createInstance()
{
    QFETCH(QString, algoType);
    QFETCH(bool, withRecord);
    QFETCH(QString, classTag);
    QFETCH(QString, cls);
    namespace S = Tessel_Fields::Strategy;
    VariantMap record;
    if (withRecord)
        record = {{S::strategyID, "cr1"},
                  {S::strategyName, "Algo"},
                  {S::strategyType, algoType},
                  {Helm_Fields::Strategy::clAlgoID, "cl-cr1"}};
    InstanceInfoBase* inst = mgr()->CreateInstance(algoType, record, "Other");
    QCOMPARE(inst->getClassType(), classTag);
    QCOMPARE(QString(typeid(*inst).name()), QString::number(cls.size()) + cls); // mangled
    // An empty record leaves an unregistered, uninitialised object to the caller.
    QCOMPARE(inst->strategyName(), withRecord ? QString("Algo") : QString());
    QCOMPARE(mgr()->GetInstanceInfoForAllType().value("cr1"), withRecord ? inst : nullptr);
    QCOMPARE(mgr()->GetInstanceIDByClInstID("cl-cr1"), withRecord ? QString("cr1") : QString());

    std::unique_ptr<SymbolInfoBase> leg(InstanceMgr::CreateSymbolInfo(algoType, "600000.SH"));
    QCOMPARE(dynamic_cast<T0SymbolInfo*>(leg.get()) != nullptr, classTag == "T0");
    if (!withRecord)
        delete inst; // the caller owns an unregistered object
}

void TestInstanceMgr::insertAndDelete_data()
{
    // Operations in order ("id:client" inserts, "-id" deletes), the registry
    // after, and client-ID lookups "client=expected" (nothing after "=": null).
    QTest::addColumn<QStringList>("ops");
    QTest::addColumn<QStringList>("registry");
    QTest::addColumn<QStringList>("lookups");
    using L = QStringList;
    QTest::newRow("client ID mapped") << L{"a:c1"} << L{"a"} << L{"c1=a", "a="};
    QTest::newRow("empty client ID adds no entry") << L{"a:"} << L{"a"} << L{"="};
    QTest::newRow("replacement without client ID keeps the entry")
        << L{"a:c1", "a:"} << L{"a"} << L{"c1=a"};
    QTest::newRow("client ID moves to the later instance")
        << L{"a:c1", "b:c1"} << L{"a", "b"} << L{"c1=b"};
    QTest::newRow("delete forgets the instance and its client ID")
        << L{"b:c2", "a:c1", "-a"} << L{"b"} << L{"c1=", "c2=b"};
    QTest::newRow("delete of an unknown ID") << L{"a:c1", "-z", "-"} << L{"a"} << L{"c1=a"};
}

void TestInstanceMgr::insertAndDelete()
{
    QFETCH(QStringList, ops);
    QFETCH(QStringList, registry);
    QFETCH(QStringList, lookups);

    QMap<QString, InstanceInfoBase*> last;
    for (const QString& op : ops) {
        const QString id = op.section(':', 0, 0);
        if (id.startsWith('-'))
            mgr()->DeleteInstance(id.mid(1));
        else
            mgr()->InsertNewInstance(last[id] =
                                         makeInstance(id, {}, {}, {}, {}, op.section(':', 1)));
    }
    const QMap<QString, InstanceInfoBase*> map = mgr()->GetInstanceInfoForAllType();
    QCOMPARE(QStringList(map.keys()), registry);
    for (const QString& id : registry) // a replacement takes the earlier object's place
        QCOMPARE(map.value(id), last.value(id));
    for (const QString& lookup : lookups) {
        const QString found = mgr()->GetInstanceIDByClInstID(lookup.section('=', 0, 0));
        QCOMPARE(found, lookup.section('=', 1));
        QCOMPARE(found.isNull(), lookup.endsWith('='));
    }
}

void TestInstanceMgr::queries_data()
{
    using namespace Algo_Values;
    // The row name's first word names the query.
    QTest::addColumn<QStringList>("args"); // type or algo names
    QTest::addColumn<bool>("allCreators");
    QTest::addColumn<QStringList>("expected");

    using L = QStringList;
    const L every{"q02", "q04", "q06", "q10", "q3", "q5", "q7"};
    const L t0{AlgoGlobalType::T0};
    QTest::newRow("ids: unknown, no filter") << L{AlgoGlobalType::unknown} << false << every;
    QTest::newRow("ids: all is a wildcard") << L{AlgoGlobalType::all} << false << every;
    QTest::newRow("ids: a type, deleted included") << t0 << false << L{"q02", "q10", "q5"};
    QTest::newRow("live: unknown, no filter") << L{AlgoGlobalType::unknown} << false << every;
    QTest::newRow("live: all is no wildcard") << L{AlgoGlobalType::all} << true << L{"q04"};
    QTest::newRow("live: a type, every creator") << t0 << true << L{"q10", "q5"};
    QTest::newRow("live: a type, own and creatorless") << t0 << false << L{"q10"};
    QTest::newRow("all-types: every creator") << L() << true << L{"q04", "q06", "q10", "q3", "q5"};
    QTest::newRow("all-types: own and creatorless") << L() << false << L{"q04", "q06", "q10"};
    QTest::newRow("names: exact, other creators included")
        << L{"Twap", "Basket"} << false << L{"q04", "q3", "q5"};
    QTest::newRow("names: case-sensitive, deleted included") << L{"twap"} << false << L{"q7"};
}

void TestInstanceMgr::queries()
{
    QFETCH(QStringList, args);
    QFETCH(bool, allCreators);
    QFETCH(QStringList, expected);

    using namespace Algo_Values;
    const QString del = AlgoDeleteStatus::deleted;
    CBusinessDataBase::GetInstance()->SetLoginAccount(kLogin);
    // Inserted out of order; ascending ID order is q02 q04 q06 q10 q3 q5 q7.
    mgr()->InsertNewInstance(makeInstance("q5", AlgoGlobalType::T0, "Twap", "0", "trader02"));
    mgr()->InsertNewInstance(makeInstance("q10", AlgoGlobalType::T0, "T0Grid"));
    mgr()->InsertNewInstance(makeInstance("q02", AlgoGlobalType::T0, "T0Grid", del, kLogin));
    mgr()->InsertNewInstance(makeInstance("q7", AlgoGlobalType::feature, "twap", del));
    mgr()->InsertNewInstance(
        makeInstance("q3", AlgoGlobalType::multiStr, "Basket", "", "trader02"));
    mgr()->InsertNewInstance(makeInstance("q06", "", "", "", kLogin));
    mgr()->InsertNewInstance(makeInstance("q04", AlgoGlobalType::all, "Twap", "", kLogin));

    const QString query = QString(QTest::currentDataTag()).section(':', 0, 0);
    QCOMPARE(query == "ids"    ? QStringList(mgr()->GetAllInstanceIDs(args.value(0)))
             : query == "live" ? mgr()->GetAllInstanceIDsExceptDeleted(args.value(0), allCreators)
             : query == "all-types" ? mgr()->GetAllInstanceIDsExceptDeletedForAllType(allCreators)
                                    : mgr()->GetInstanceIDsForSpecialAlgoName(args),
             expected);
}

void TestInstanceMgr::symbolKeys_data()
{
    QTest::addColumn<QString>("key");       // instance 100023 has the one leg 100023_600000.SH_1
    QTest::addColumn<QStringList>("parts"); // instance ID, symbol, side, symbol_side
    using L = QStringList;
    QTest::newRow("one part") << "100023" << L{"", "", "", ""};
    QTest::newRow("two parts, whole key looked up")
        << "100023_600000.SH" << L{"100023", "600000.SH", "", ""};
    QTest::newRow("three parts") << "100023_600000.SH_1"
                                 << L{"100023", "600000.SH", "1", "600000.SH_1"};
    QTest::newRow("other side") << "100023_600000.SH_2"
                                << L{"100023", "600000.SH", "2", "600000.SH_2"};
    QTest::newRow("fourth part ignored") << "1_A_B_C" << L{"1", "A", "B", "A_B"};
    QTest::newRow("empty parts kept") << "a__b" << L{"a", "", "b", "_b"};
    QTest::newRow("placeholders not expanded") << "a%2_%3b_%1" << L{"a%2", "%3b", "%1", "%3b_%1"};
}

void TestInstanceMgr::symbolKeys()
{
    QFETCH(QString, key);
    QFETCH(QStringList, parts);
    QCOMPARE(InstanceMgr::getInstIdFromSymbolKey(key), parts.at(0));
    QCOMPARE(InstanceMgr::getSymbolFromSymbolKey(key), parts.at(1));
    QCOMPARE(InstanceMgr::getSideFromSymbolKey(key), parts.at(2));
    QCOMPARE(InstanceMgr::getSymbolOrdeSideFromKey(key), parts.at(3));
    if (key.count('_') == 2)
        QCOMPARE(InstanceMgr::GetSymbolExtInfoKey(parts.at(0), parts.at(1), parts.at(2)), key);

    InstanceInfoBase* inst = makeInstance("100023", Algo_Values::AlgoGlobalType::T0);
    auto* leg = new SymbolInfoBase;
    leg->setSymbol("600000.SH");
    leg->setOrderSide("1");
    leg->setKey("100023_600000.SH_1");
    inst->AddSymbolInfo(leg);
    mgr()->InsertNewInstance(inst);
    LogCapture log;
    const bool known = parts.at(0) == "100023";
    QCOMPARE(mgr()->getSymbolInfo(key), key == leg->getKey() ? leg : nullptr);
    QCOMPARE(mgr()->GetAlgoTypeByInstID(parts.at(0)),
             known ? Algo_Values::AlgoGlobalType::T0 : QString());
    QString symbol = "keep", side = "keep";
    mgr()->getOneSymbol(parts.at(0), symbol, side);
    QCOMPARE(symbol + "/" + side, known ? QString("600000.SH/1") : QString("keep/keep"));
    for (const char* op : {"getSymbolInfo", "getOneSymbol", "GetAlgoTypeByInstID"})
        QCOMPARE(
            log.contains(QtDebugMsg, "InstanceMgr::" + QString(op) + " null ptr " + parts.at(0)),
            !known);
}

void TestInstanceMgr::createErrorInfo()
{
    using Pair = std::pair<QString, QString>;
    mgr()->setCreateErrorInfoByClInst("ce1", "E100", "no rights");
    mgr()->setCreateErrorInfoByClInst("ce2", "E200", "bad price");
    mgr()->setCreateErrorInfoByClInst("ce1", "E300", "later");
    QCOMPARE(mgr()->getCreateErrorInfoByClInst("ce1"), Pair("E300", "later"));
    QCOMPARE(mgr()->getCreateErrorInfoByClInst("ce2"), Pair("E200", "bad price"));
    QCOMPARE(mgr()->getCreateErrorInfoByClInst("ce3"), Pair());
}

QTEST_GUILESS_MAIN(TestInstanceMgr)
#include "tst_instancemgr.moc"
