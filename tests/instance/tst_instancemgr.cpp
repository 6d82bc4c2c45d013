// The instance registry: the profit timer of init(), the recursive content
// lock, creation by algo type, insertion and removal with the client-ID map,
// the queries with their filters and order, symbol keys, leg lookups and
// create errors. Forwarders and signal types: tst_notifications, tst_metatypes.

#include "../common/tabletest.h"

#include <QAbstractEventDispatcher>
#include <QTimer>

#include <atomic>
#include <typeinfo>

// Qt's object hook table: index 3 is called for every new QObject.
extern Q_DECL_IMPORT quintptr qtHookData[];

namespace {

InstanceMgr* mgr()
{
    return InstanceMgr::instance();
}

std::atomic<int> g_destroyed{0};
struct TrackedInstance : InstanceInfoBase
{
    ~TrackedInstance() override { ++g_destroyed; }
};

// An instance from "id type name deleted creator client", "-" or nothing for an empty field.
InstanceInfoBase* makeInstance(const QString& text)
{
    QStringList f = text.split(' ');
    for (QString& field : f)
        field = field == "-" ? QString() : field;
    auto* inst = new TrackedInstance;
    inst->setInstanceID(f.value(0)), inst->setInstAlgoType(f.value(1));
    inst->setStrategyName(f.value(2)), inst->setStrategyDeleted(f.value(3));
    inst->setCreateUser(f.value(4)), inst->setclInstanceID(f.value(5));
    return inst;
}

} // namespace

class TestInstanceMgr : public QObject
{
    Q_OBJECT
private slots:
    void cleanup()
    {
        for (const QString& id : mgr()->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::unknown))
            mgr()->DeleteInstance(id);
        QCOMPARE(g_destroyed.load(), 0); // the registry forgets instances, never frees them
    }

    void initStartsRepeatingTimer()
    {
        static QList<QObject*> created; // objects the test thread made during init()
        LogCapture log;
        const quintptr previousHook = qtHookData[3];
        qtHookData[3] = reinterpret_cast<quintptr>(+[](QObject* o) {
            if (QThread::currentThread() == qApp->thread())
                created.append(o);
        });
        mgr()->init();
        qtHookData[3] = previousHook;
        QTimer* timer = nullptr; // asking the dispatcher does not touch the object
        for (QObject* o : created)
            if (!QAbstractEventDispatcher::instance()->registeredTimers(o).isEmpty())
                timer = qobject_cast<QTimer*>(o);
        QVERIFY(timer && timer->isActive() && !timer->isSingleShot() && !timer->parent());
        QCOMPARE(timer->objectName() + " " + QString::number(timer->interval()),
                 QStringLiteral("m_timerT0CalculateNew 30000"));
        QVERIFY(log.contains(QtDebugMsg, "InstanceMgr::init InstanceMgr init"));
        QTimerEvent tick(timer->timerId()); // a tick reaches the recalculation slot
        QCoreApplication::sendEvent(timer, &tick);
        QTRY_VERIFY(log.contains(QtDebugMsg, "InstanceMgr::slotCalculateTimer"));
    }

    void contentLockIsRecursive()
    {
        QReadWriteLock* lock = mgr()->getLocker();
        lock->lockForWrite();
        const bool again = lock->tryLockForWrite(); // a handler's nested accessor locks again
        for (int i = again ? 2 : 1; i > 0; --i)
            lock->unlock();
        QVERIFY(again);
    }

    void createInstance_data()
    {
        TableTest::addRows(R"(
multi, record | MultiStr | yes | Multi | MultiInstanceInfo
T0, empty record | T0 | | T0 | T0InstanceInfo
feature, record | Feature | yes | info | RushLimitUpInstanceInfo
empty type, empty record | | | info | InstanceInfoBase
T0 in lower case, record | t0 | yes | info | InstanceInfoBase
)");
    }
    void createInstance()
    {
        const std::array<QString, 4> c = TableTest::cells<4>();
        QString algoType = c[0], record = c[1], classTag = c[2], cls = c[3];
        const bool withRecord = !record.isEmpty();
        VariantMap fields =
            TableTest::record(R"({"strategyID":"cr1","strategyName":"Algo","clAlgoID":"cl-cr1"})");
        fields.insert("strategyType", algoType);
        InstanceInfoBase* inst =
            mgr()->CreateInstance(algoType, withRecord ? fields : VariantMap(), "Other");
        QCOMPARE(inst->getClassType(), classTag);
        QCOMPARE(QString(typeid(*inst).name()), QString::number(cls.size()) + cls); // mangled
        // An empty record leaves an unregistered, uninitialised object to the caller.
        QCOMPARE(inst->strategyName(), withRecord ? QString("Algo") : QString());
        QCOMPARE(mgr()->GetInstanceInfoForAllType().value("cr1"), withRecord ? inst : nullptr);
        QCOMPARE(mgr()->GetInstanceIDByClInstID("cl-cr1"), withRecord ? "cr1" : QString());
        std::unique_ptr<SymbolInfoBase> leg(InstanceMgr::CreateSymbolInfo(algoType, "600000.SH"));
        QCOMPARE(dynamic_cast<T0SymbolInfo*>(leg.get()) != nullptr, classTag == "T0");
        if (!withRecord)
            delete inst; // the caller owns an unregistered object
    }

    // Operations in order ("id:client" inserts, "-id" deletes), the registry after, and
    // client-ID lookups "client=expected" (nothing after "=": null).
    void insertAndDelete_data()
    {
        TableTest::addRows(R"(
client ID mapped | a:c1 | a | c1=a a=
empty client ID adds no entry | a: | a | =
replacement without client ID keeps the entry | a:c1 a: | a | c1=a
client ID moves to the later instance | a:c1 b:c1 | a b | c1=b
delete forgets the instance and its client ID | b:c2 a:c1 -a | b | c1= c2=b
delete of an unknown ID | a:c1 -z - | a | c1=a
)");
    }
    void insertAndDelete()
    {
        const std::array<QString, 3> c = TableTest::cells<3>();
        QString ops = c[0], registry = c[1], lookups = c[2];
        QMap<QString, InstanceInfoBase*> last;
        for (const QString& op : ops.split(' ')) {
            const QString id = op.section(':', 0, 0), client = op.section(':', 1);
            if (id.startsWith('-'))
                mgr()->DeleteInstance(id.mid(1));
            else
                mgr()->InsertNewInstance(last[id] = makeInstance(id + " - - - - " + client));
        }
        const QMap<QString, InstanceInfoBase*> map = mgr()->GetInstanceInfoForAllType();
        QCOMPARE(QStringList(map.keys()).join(' '), registry);
        for (const QString& id : map.keys()) // a replacement takes the earlier object's place
            QCOMPARE(map.value(id), last.value(id));
        for (const QString& lookup : lookups.split(' ')) {
            const QString found = mgr()->GetInstanceIDByClInstID(lookup.section('=', 0, 0));
            QCOMPARE(found, lookup.section('=', 1));
            QCOMPARE(found.isNull(), lookup.endsWith('='));
        }
    }

    // The row name's first word names the query; its arguments (a type or algo names, and
    // "all" for every creator); the IDs in order.
    void queries_data()
    {
        TableTest::addRows(R"(
ids: unknown, no filter | Unknown | q02 q04 q06 q10 q3 q5 q7
ids: all is a wildcard | All | q02 q04 q06 q10 q3 q5 q7
ids: a type, deleted included | T0 | q02 q10 q5
live: unknown, no filter | Unknown | q02 q04 q06 q10 q3 q5 q7
live: all is no wildcard | All all | q04
live: a type, every creator | T0 all | q10 q5
live: a type, own and creatorless | T0 | q10
all-types: every creator | all | q04 q06 q10 q3 q5
all-types: own and creatorless | | q04 q06 q10
names: exact, other creators included | Twap Basket | q04 q3 q5
names: case-sensitive, deleted included | twap | q7
)");
    }
    void queries()
    {
        const std::array<QString, 2> c = TableTest::cells<2>();
        QString args = c[0], expected = c[1];
        CBusinessDataBase::GetInstance()->SetLoginAccount("trader01");
        // Inserted out of order; ascending ID order is q02 q04 q06 q10 q3 q5 q7.
        for (const char* fields :
             {"q5 T0 Twap 0 trader02", "q10 T0 T0Grid", "q02 T0 T0Grid 1 trader01",
              "q7 Feature twap 1", "q3 MultiStr Basket - trader02", "q06 - - - trader01",
              "q04 All Twap - trader01"})
            mgr()->InsertNewInstance(makeInstance(fields));
        const QString query = QString(QTest::currentDataTag()).section(':', 0, 0);
        const QString type = args.section(' ', 0, 0);
        const bool all = args.endsWith("all");
        const QStringList ids = query == "ids"    ? QStringList(mgr()->GetAllInstanceIDs(type))
                                : query == "live" ? mgr()->GetAllInstanceIDsExceptDeleted(type, all)
                                : query == "all-types"
                                    ? mgr()->GetAllInstanceIDsExceptDeletedForAllType(all)
                                    : mgr()->GetInstanceIDsForSpecialAlgoName(args.split(' '));
        QCOMPARE(ids.join(' '), expected);
    }

    // Instance 100023 has the one leg 100023_600000.SH_1. Parts: instance ID/symbol/side/
    // symbol_side.
    void symbolKeys_data()
    {
        TableTest::addRows(R"(
one part | 100023 | ///
two parts, whole key looked up | 100023_600000.SH | 100023/600000.SH//
three parts | 100023_600000.SH_1 | 100023/600000.SH/1/600000.SH_1
fourth part ignored | 1_A_B_C | 1/A/B/A_B
empty parts kept | a__b | a//b/_b
placeholders not expanded | a%2_%3b_%1 | a%2/%3b/%1/%3b_%1
)");
    }
    void symbolKeys()
    {
        const std::array<QString, 2> c = TableTest::cells<2>();
        QString key = c[0], parts = c[1];
        const QStringList p = parts.split('/');
        QCOMPARE(QStringList({InstanceMgr::getInstIdFromSymbolKey(key),
                              InstanceMgr::getSymbolFromSymbolKey(key),
                              InstanceMgr::getSideFromSymbolKey(key),
                              InstanceMgr::getSymbolOrdeSideFromKey(key)}),
                 p);
        if (key.count('_') == 2)
            QCOMPARE(InstanceMgr::GetSymbolExtInfoKey(p[0], p[1], p[2]), key);

        InstanceInfoBase* inst = makeInstance("100023 T0");
        auto* leg = new SymbolInfoBase;
        leg->setSymbol("600000.SH"), leg->setOrderSide("1"), leg->setKey("100023_600000.SH_1");
        inst->AddSymbolInfo(leg);
        mgr()->InsertNewInstance(inst);
        const bool known = p[0] == "100023";
        QCOMPARE(mgr()->getSymbolInfo(key), key == leg->getKey() ? leg : nullptr);
        QCOMPARE(mgr()->GetAlgoTypeByInstID(p[0]), known ? "T0" : QString());
        QString symbol = "keep", side = "keep";
        mgr()->getOneSymbol(p[0], symbol, side);
        QCOMPARE(symbol + "/" + side, known ? "600000.SH/1" : QString("keep/keep"));
    }

    void createErrorInfo()
    {
        using Pair = std::pair<QString, QString>;
        mgr()->setCreateErrorInfoByClInst("ce1", "E100", "no rights");
        mgr()->setCreateErrorInfoByClInst("ce2", "E200", "bad price");
        mgr()->setCreateErrorInfoByClInst("ce1", "E300", "later"); // replaces the earlier
        QCOMPARE(mgr()->getCreateErrorInfoByClInst("ce1"), Pair("E300", "later"));
        QCOMPARE(mgr()->getCreateErrorInfoByClInst("ce2"), Pair("E200", "bad price"));
        QCOMPARE(mgr()->getCreateErrorInfoByClInst("ce3"), Pair());
    }
};

QTEST_GUILESS_MAIN(TestInstanceMgr)
#include "tst_instancemgr.moc"
