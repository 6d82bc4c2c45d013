// The registry's notifications and its T0 profit timer: the order of the
// signals in the meta-object (receivers connect by name and index), the
// forwarders, delivery to receivers in other threads, and the floating-profit
// recalculation with what it picks, what it computes and what it announces.

#include <algologic.h>

#include "logcapture.h"

#include <QLoggingCategory>
#include <QMetaMethod>
#include <QMutex>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <thread>

namespace {

using Emitter = std::function<void(InstanceMgr*)>;
using LegMap = QMap<QString, QMap<QString, QVariant>>;

InstanceMgr* mgr()
{
    return InstanceMgr::instance();
}

const QString kTrigger = QStringLiteral("InstanceMgr::slotCalculateTimer 算法逻辑层-浮动盈亏计算触发");
const QString kFinished = QStringLiteral("InstanceMgr::slotCalculateTimer 算法逻辑层-浮动盈亏计算结束");

// A canonical text of a signal argument, so that values of container types
// compare by content and a wrong type shows in the failure message.
QString describe(const QVariant& value)
{
    QStringList parts;
    const int type = value.userType();
    if (type == qMetaTypeId<QHash<QString, double>>()) {
        const auto hash = value.value<QHash<QString, double>>();
        for (auto it = hash.cbegin(); it != hash.cend(); ++it)
            parts << it.key() + QLatin1Char('=') + QString::number(it.value(), 'g', 17);
        parts.sort();
    } else if (type == qMetaTypeId<LegMap>()) {
        const auto legs = value.value<LegMap>();
        for (auto it = legs.cbegin(); it != legs.cend(); ++it) {
            for (auto field = it->cbegin(); field != it->cend(); ++field)
                parts << it.key() + QLatin1Char('.') + field.key() + QLatin1Char('=')
                             + field.value().toString();
        }
    } else if (type == qMetaTypeId<QList<QString>>()) {
        parts = value.value<QList<QString>>();
    } else {
        parts = value.toStringList();
    }
    return QString::fromLatin1(value.typeName()) + QLatin1Char(':') + parts.join(QLatin1Char('|'));
}

QStringList describe(const QVariantList& values)
{
    QStringList result;
    for (const QVariant& value : values)
        result << describe(value);
    return result;
}

// Records what reaches it, with the thread it ran in.
class Receiver : public QObject
{
    Q_OBJECT
public:
    struct Call
    {
        QVariantList args;
        QThread* thread;
    };
    QList<Call> calls(const QByteArray& name) const
    {
        QMutexLocker locker(&m_mutex);
        return m_calls.value(name);
    }

public slots:
    void instUpdated(QStringList ids) { record("sigInstUpdated", {ids}); }
    void insListToLogic(const QStringList& ids) { record("signalInsListToLogic", {ids}); }
    void multiProgress(const QString& id) { record("signalMultiProgressUpdated", {id}); }
    void progressUpdated(const QString& id, const QList<QString>& keys)
    {
        record("signalProgressUpdated", {id, QVariant::fromValue(keys)});
    }
    void remainQty(const QString& id, const QHash<QString, double>& remaining)
    {
        record("sigSymbolRemainQty", {id, QVariant::fromValue(remaining)});
    }
    void timeUpdate(const QString& id, const QString& status)
    {
        record("signalTimeUpdate", {id, status});
    }
    void progressDelay(const QString& id) { record("signalProgreeDelayUpadaete", {id}); }
    void statusUpdated(const QString& id, const QString& status)
    {
        record("signalStatusUpdated", {id, status});
    }
    void symbolStatus(const QMap<QString, QMap<QString, QVariant>>& legs)
    {
        record("signalSymbolStatusUpdate", {QVariant::fromValue(legs)});
    }
    void modifyPush(const QString& id, const QString& ack, const QString& comment)
    {
        record("signalModifyPush", {id, ack, comment});
    }
    void profitFinished() { record("signalCalcProfitAmountFinished", {}); }

private:
    void record(const QByteArray& name, const QVariantList& args)
    {
        QMutexLocker locker(&m_mutex);
        m_calls[name].append({args, QThread::currentThread()});
    }

    mutable QMutex m_mutex;
    QMap<QByteArray, QList<Call>> m_calls;
};

// A T0 instance that can hold a hole in its leg map, as a damaged copy might.
class HoleyT0Instance : public T0InstanceInfo
{
public:
    void addHole(const QString& key) { m_symbolMap.insert(key, nullptr); }
};

} // namespace

Q_DECLARE_METATYPE(Emitter)

class TestNotifications : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void signalOrder_data();
    void signalOrder();
    void forwarders_data();
    void forwarders();
    void crossThreadDelivery_data();
    void crossThreadDelivery();

    void tickSelectsT0Instances_data();
    void tickSelectsT0Instances();
    void profitFormula_data();
    void profitFormula();
    void tickCoversEveryT0Leg();
    void queuedTickWhileReading();

private:
    static void addSignalRows(bool withoutForwarder);
    template <typename Inst = T0InstanceInfo>
    Inst* registerInstance(const QString& algoType);
    static T0SymbolInfo* addLeg(InstanceInfoBase* inst, const QString& symbol);

    QStringList m_registered;
    int m_nextID = 0;
};

void TestNotifications::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("algologic.*.debug=true"));
    QVERIFY(mgr());
}

void TestNotifications::init()
{
    CommonQuotaHandler::instance().Reset();
}

void TestNotifications::cleanup()
{
    for (const QString& id : qAsConst(m_registered))
        mgr()->DeleteInstance(id);
    m_registered.clear();
    CommonQuotaHandler::instance().Reset();
}

template <typename Inst>
Inst* TestNotifications::registerInstance(const QString& algoType)
{
    auto* inst = new Inst;
    inst->setInstanceID(QStringLiteral("ntf-%1").arg(++m_nextID, 3, 10, QLatin1Char('0')));
    inst->setInstAlgoType(algoType);
    inst->setClassType(AlgoConst::ClassTypeT0);
    mgr()->InsertNewInstance(inst);
    m_registered << inst->instanceID();
    return inst;
}

T0SymbolInfo* TestNotifications::addLeg(InstanceInfoBase* inst, const QString& symbol)
{
    auto* leg = new T0SymbolInfo;
    leg->setInstanceID(inst->instanceID());
    leg->setSymbol(symbol);
    leg->setOrderSide(QStringLiteral("All"));
    leg->setKey(InstanceMgr::GetSymbolExtInfoKey(inst->instanceID(), symbol, "All"));
    leg->setProfitAmount(-777); // never a result of the rows below
    inst->AddSymbolInfo(leg);
    return leg;
}

// ---- signals -------------------------------------------------------------------------

void TestNotifications::signalOrder_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArrayList>("parameters");
    QTest::addColumn<int>("kind");

    const QByteArray str("QString");
    const QByteArrayList rows[] = {
        {"sigInstUpdated", "QStringList"},
        {"signalInsListToLogic", "QStringList"},
        {"signalMultiProgressUpdated", str},
        {"signalProgressUpdated", str, "QList<QString>"},
        {"sigSymbolRemainQty", str, "QHash<QString,double>"},
        {"signalTimeUpdate", str, str},
        {"signalProgreeDelayUpadaete", str},
        {"signalStatusUpdated", str, str},
        {"signalSymbolStatusUpdate", "QMap<QString,QMap<QString,QVariant> >"},
        {"signalModifyPush", str, str, str},
        {"signalCalcProfitAmountFinished"},
        {"slotCalculateTimer", str},
    };
    int index = 0;
    for (const QByteArrayList& row : rows) {
        QTest::newRow(row.first().constData())
            << index << row.first() << row.mid(1)
            << int(index == 11 ? QMetaMethod::Slot : QMetaMethod::Signal);
        ++index;
    }
}

void TestNotifications::signalOrder()
{
    QFETCH(int, index);
    QFETCH(QByteArray, name);
    QFETCH(QByteArrayList, parameters);
    QFETCH(int, kind);

    const QMetaObject& meta = InstanceMgr::staticMetaObject;
    QCOMPARE(meta.methodOffset(), QObject::staticMetaObject.methodCount());
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 12);
    const QMetaMethod method = meta.method(meta.methodOffset() + index);
    QCOMPARE(method.name(), name);
    QCOMPARE(method.parameterTypes(), parameters);
    QCOMPARE(int(method.methodType()), kind);
    QCOMPARE(method.access(), QMetaMethod::Public);
}

// Rows of (signal, how to raise it, the arguments expected): the forwarders,
// and with `withoutForwarder` also the signals only the library raises.
void TestNotifications::addSignalRows(bool withoutForwarder)
{
    QTest::addColumn<QByteArray>("signal");
    QTest::addColumn<Emitter>("emitter");
    QTest::addColumn<QVariantList>("args");

    const QString id = QStringLiteral("inst-9");
    const QList<QString> keys{"inst-9_600000_All", "inst-9_000001_1"};
    const QHash<QString, double> remaining{{keys.at(0), 1500.25}, {keys.at(1), 0.0}};
    LegMap legs;
    legs[keys.at(0)].insert(QStringLiteral("status"), QStringLiteral("2"));
    legs[keys.at(1)].insert(QStringLiteral("cumQty"), 300);
    legs[keys.at(1)].insert(QStringLiteral("note"), QStringLiteral("部分成交"));

    QTest::newRow("SendSignalModifyPush")
        << QByteArray("signalModifyPush")
        << Emitter([=](InstanceMgr* m) { m->SendSignalModifyPush(id, "ok", "新参数"); })
        << QVariantList{id, "ok", QStringLiteral("新参数")};
    QTest::newRow("SendSignalMultiProgress")
        << QByteArray("signalMultiProgressUpdated")
        << Emitter([=](InstanceMgr* m) { m->SendSignalMultiProgress(id); }) << QVariantList{id};
    QTest::newRow("SendSignalProgressDelay")
        << QByteArray("signalProgreeDelayUpadaete")
        << Emitter([=](InstanceMgr* m) { m->SendSignalProgressDelay(id); }) << QVariantList{id};
    QTest::newRow("SendSignalProgressUpdated")
        << QByteArray("signalProgressUpdated")
        << Emitter([=](InstanceMgr* m) { m->SendSignalProgressUpdated(id, keys); })
        << QVariantList{id, QVariant::fromValue(keys)};
    QTest::newRow("SendSignalStatusUpdate")
        << QByteArray("signalStatusUpdated")
        << Emitter([=](InstanceMgr* m) { m->SendSignalStatusUpdate(id, "5"); })
        << QVariantList{id, "5"};
    QTest::newRow("SendSignalSymbolRemainQty")
        << QByteArray("sigSymbolRemainQty")
        << Emitter([=](InstanceMgr* m) { m->SendSignalSymbolRemainQty(id, remaining); })
        << QVariantList{id, QVariant::fromValue(remaining)};
    QTest::newRow("SendSignalSymbolStatusUpdate")
        << QByteArray("signalSymbolStatusUpdate")
        << Emitter([=](InstanceMgr* m) { m->SendSignalSymbolStatusUpdate(legs); })
        << QVariantList{QVariant::fromValue(legs)};
    QTest::newRow("SendSignalTimeUpdate")
        << QByteArray("signalTimeUpdate")
        << Emitter([=](InstanceMgr* m) { m->SendSignalTimeUpdate(id, QString()); })
        << QVariantList{id, QString()};
    if (!withoutForwarder)
        return;

    const QStringList ids{id, QStringLiteral("inst-10")};
    QTest::newRow("sigInstUpdated")
        << QByteArray("sigInstUpdated")
        << Emitter([=](InstanceMgr* m) { emit m->sigInstUpdated(ids); })
        << QVariantList{ids};
    QTest::newRow("signalInsListToLogic")
        << QByteArray("signalInsListToLogic")
        << Emitter([=](InstanceMgr* m) { emit m->signalInsListToLogic(ids); }) << QVariantList{ids};
    QTest::newRow("signalCalcProfitAmountFinished")
        << QByteArray("signalCalcProfitAmountFinished")
        << Emitter([](InstanceMgr* m) { emit m->signalCalcProfitAmountFinished(); })
        << QVariantList{};
}

void TestNotifications::forwarders_data()
{
    addSignalRows(false);
}

void TestNotifications::forwarders()
{
    QFETCH(QByteArray, signal);
    QFETCH(Emitter, emitter);
    QFETCH(QVariantList, args);

    // A spy on every signal: the forwarder raises its own, once, and no other.
    const QMetaObject& meta = InstanceMgr::staticMetaObject;
    QMap<QByteArray, std::shared_ptr<QSignalSpy>> spies;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        if (method.methodType() == QMetaMethod::Signal)
            spies.insert(method.name(), std::make_shared<QSignalSpy>(mgr(), method));
    }
    QCOMPARE(spies.size(), 11);
    QVERIFY(spies.contains(signal));

    emitter(mgr());

    for (auto it = spies.cbegin(); it != spies.cend(); ++it) {
        const int expected = it.key() == signal ? 1 : 0;
        QVERIFY2(it.value()->count() == expected, it.key().constData());
    }
    QCOMPARE(describe(spies.value(signal)->first()), describe(args));
}

void TestNotifications::crossThreadDelivery_data()
{
    addSignalRows(true);
}

void TestNotifications::crossThreadDelivery()
{
    QFETCH(QByteArray, signal);
    QFETCH(Emitter, emitter);
    QFETCH(QVariantList, args);

    // Stopped and freed on every way out, a failed check included.
    QThread thread;
    auto* receiver = new Receiver;
    receiver->moveToThread(&thread);
    thread.start();
    const auto stop = qScopeGuard([&] {
        thread.quit();
        thread.wait();
        delete receiver;
    });

    // Connected by name, as the host does: a queued call needs every argument
    // type registered under the name the signal spells it with.
    const struct
    {
        const char* signal;
        const char* slot;
    } links[] = {
        {SIGNAL(sigInstUpdated(QStringList)), SLOT(instUpdated(QStringList))},
        {SIGNAL(signalInsListToLogic(QStringList)), SLOT(insListToLogic(QStringList))},
        {SIGNAL(signalMultiProgressUpdated(QString)), SLOT(multiProgress(QString))},
        {SIGNAL(signalProgressUpdated(QString, QList<QString>)),
         SLOT(progressUpdated(QString, QList<QString>))},
        {SIGNAL(sigSymbolRemainQty(QString, QHash<QString, double>)),
         SLOT(remainQty(QString, QHash<QString, double>))},
        {SIGNAL(signalTimeUpdate(QString, QString)), SLOT(timeUpdate(QString, QString))},
        {SIGNAL(signalProgreeDelayUpadaete(QString)), SLOT(progressDelay(QString))},
        {SIGNAL(signalStatusUpdated(QString, QString)), SLOT(statusUpdated(QString, QString))},
        {SIGNAL(signalSymbolStatusUpdate(QMap<QString, QMap<QString, QVariant>>)),
         SLOT(symbolStatus(QMap<QString, QMap<QString, QVariant>>))},
        {SIGNAL(signalModifyPush(QString, QString, QString)),
         SLOT(modifyPush(QString, QString, QString))},
        {SIGNAL(signalCalcProfitAmountFinished()), SLOT(profitFinished())},
    };
    for (const auto& link : links)
        QVERIFY2(QObject::connect(mgr(), link.signal, receiver, link.slot), link.signal);

    LogCapture log;
    emitter(mgr());
    QTRY_COMPARE(receiver->calls(signal).size(), 1);
    const Receiver::Call call = receiver->calls(signal).first();
    QCOMPARE(call.thread, &thread);
    QCOMPARE(describe(call.args), describe(args));
    QCOMPARE(log.countOfType(QtWarningMsg), 0);
}

// ---- profit timer --------------------------------------------------------------------

void TestNotifications::tickSelectsT0Instances_data()
{
    QTest::addColumn<bool>("t0Class");
    QTest::addColumn<QString>("algoType"); // null: register nothing
    QTest::addColumn<bool>("recalculated");

    const QString t0 = Algo_Values::AlgoGlobalType::T0;
    QTest::newRow("empty registry") << true << QString() << false;
    QTest::newRow("T0 class with another type text") << true << QStringLiteral("TWAP") << false;
    QTest::newRow("T0 class with lower-case type text") << true << QStringLiteral("t0") << false;
    QTest::newRow("T0 type text on a plain instance") << false << t0 << false;
    QTest::newRow("T0 class with the T0 type text") << true << t0 << true;
}

void TestNotifications::tickSelectsT0Instances()
{
    QFETCH(bool, t0Class);
    QFETCH(QString, algoType);
    QFETCH(bool, recalculated);

    T0SymbolInfo* leg = nullptr;
    if (!algoType.isNull()) {
        InstanceInfoBase* inst = t0Class ? registerInstance<T0InstanceInfo>(algoType)
                                         : registerInstance<InstanceInfoBase>(algoType);
        leg = addLeg(inst, QStringLiteral("600036"));
        leg->setSellAmount(1000);
        leg->setSellDealQty(100);
        CommonQuotaHandler::instance().SetLatestPrice(QStringLiteral("600036"), 9.5);
    }
    // Another algo family alongside must never count.
    registerInstance<InstanceInfoBase>(QStringLiteral("TWAP"));

    QSignalSpy finished(mgr(), &InstanceMgr::signalCalcProfitAmountFinished);
    LogCapture log;
    mgr()->slotCalculateTimer(QString());

    QCOMPARE(finished.count(), recalculated ? 1 : 0);
    QCOMPARE(log.count(QtDebugMsg, kTrigger), 1);
    if (recalculated) {
        QCOMPARE(log.count(QtDebugMsg, kFinished + QStringLiteral(" 1")), 1);
    } else {
        QCOMPARE(log.countOfType(QtDebugMsg), 1); // the trigger line, nothing else
    }
    if (leg)
        QCOMPARE(leg->profitAmount(), recalculated ? 50.0 : -777.0);
}

void TestNotifications::profitFormula_data()
{
    // sellAmount, sellDealQty, buyDealQty, buyAmount, buyFee, sellFee
    QTest::addColumn<QVariantList>("figures");
    QTest::addColumn<QVariant>("price");        // invalid: no price known for the symbol
    QTest::addColumn<double>("profit");

    QTest::newRow("net sold, valued to buy back")
        << QVariantList{1000, 100, 0, 0, 0, 0} << QVariant(9.5) << 50.0;
    QTest::newRow("fees subtracted")
        << QVariantList{1000, 100, 0, 0, 1.25, 2.5} << QVariant(9.5) << 46.25;
    QTest::newRow("net bought adds its value")
        << QVariantList{0, 0, 100, 950, 0, 0} << QVariant(10.0) << 50.0;
    QTest::newRow("closed round trip ignores the price")
        << QVariantList{1100, 100, 100, 1000, 1, 1.5} << QVariant(123.0) << 97.5;
    QTest::newRow("partly bought back")
        << QVariantList{2200, 200, 150, 1500, 0.5, 0.5} << QVariant(10.5) << 174.0;
    QTest::newRow("price 0 used as it is")
        << QVariantList{1000, 100, 0, 0, 0, 0} << QVariant(0.0) << 1000.0;
    QTest::newRow("unknown symbol prices at 0")
        << QVariantList{1000, 100, 20, 180, 0, 0} << QVariant() << 820.0;
    // 1e16 - 1e16 first, then the fees: any other order loses the fees.
    QTest::newRow("subtractions in order")
        << QVariantList{1e16, 0, 0, 1e16, 0.5, 0.5} << QVariant(10.0) << -1.0;
}

void TestNotifications::profitFormula()
{
    QFETCH(QVariantList, figures);
    QFETCH(QVariant, price);
    QFETCH(double, profit);

    T0SymbolInfo* leg = addLeg(registerInstance(Algo_Values::AlgoGlobalType::T0),
                               QStringLiteral("601318"));
    leg->setSellAmount(figures.at(0).toDouble());
    leg->setSellDealQty(figures.at(1).toDouble());
    leg->setBuyDealQty(figures.at(2).toDouble());
    leg->setBuyAmount(figures.at(3).toDouble());
    leg->setBuyFee(figures.at(4).toDouble());
    leg->setSellFee(figures.at(5).toDouble());
    if (price.isValid())
        CommonQuotaHandler::instance().SetLatestPrice(QStringLiteral("601318"), price.toDouble());
    CommonQuotaHandler::instance().SetLatestPrice(QStringLiteral("other"), 99.0);

    mgr()->slotCalculateTimer(QString());

    // Exact: the formula is plain double arithmetic on exact inputs.
    QVERIFY2(leg->profitAmount() == profit,
             qPrintable(QString::number(leg->profitAmount(), 'g', 17)));
}

void TestNotifications::tickCoversEveryT0Leg()
{
    auto* first = registerInstance(Algo_Values::AlgoGlobalType::T0);
    auto* second = registerInstance<HoleyT0Instance>(Algo_Values::AlgoGlobalType::T0);
    registerInstance(Algo_Values::AlgoGlobalType::T0); // no legs, still counted
    const QList<T0SymbolInfo*> legs = {addLeg(first, "600000"), addLeg(first, "000001"),
                                       addLeg(second, "300750")};
    const QString hole = InstanceMgr::GetSymbolExtInfoKey(second->instanceID(), "000000", "All");
    second->addHole(hole);
    for (T0SymbolInfo* leg : legs) {
        leg->setSellAmount(1000);
        leg->setSellDealQty(100);
    }

    QSignalSpy finished(mgr(), &InstanceMgr::signalCalcProfitAmountFinished);
    const QList<QList<double>> ticks = {{9.0, 9.5, 10.0}, {10.0, 8.0, 11.0}};
    for (const QList<double>& prices : ticks) {
        for (int i = 0; i < legs.size(); ++i)
            CommonQuotaHandler::instance().SetLatestPrice(legs.at(i)->symbol(), prices.at(i));
        LogCapture log;
        mgr()->slotCalculateTimer(QString());

        QCOMPARE(log.count(QtDebugMsg, kFinished + QStringLiteral(" 3")), 1);
        QVERIFY(log.contains(QtDebugMsg, QStringLiteral("InstanceInfoBase::GetAllSymbols_Ptr "
                                                        "symbolInfo is null ")
                                             + hole));
        for (int i = 0; i < legs.size(); ++i)
            QCOMPARE(legs.at(i)->profitAmount(), 1000 - 100 * prices.at(i));
    }
    QCOMPARE(finished.count(), ticks.size());
}

void TestNotifications::queuedTickWhileReading()
{
    auto* inst = registerInstance(Algo_Values::AlgoGlobalType::T0);
    QList<T0SymbolInfo*> legs;
    for (int i = 0; i < 16; ++i) {
        legs << addLeg(inst, QStringLiteral("S%1").arg(i, 2, 10, QLatin1Char('0')));
        legs.last()->setSellAmount(1000);
        legs.last()->setSellDealQty(100);
    }

    QMutex threadMutex;
    QStringList tickThreads;
    const QMetaObject::Connection watch = QObject::connect(
        mgr(), &InstanceMgr::signalCalcProfitAmountFinished, mgr(),
        [&] {
            QMutexLocker locker(&threadMutex);
            tickThreads << QThread::currentThread()->objectName();
        },
        Qt::DirectConnection);
    const auto unwatch = qScopeGuard([watch] { QObject::disconnect(watch); });

    // Shared with the two threads, which may outlive this function if they
    // deadlock.
    struct Shared
    {
        std::atomic<bool> stop{false};
        std::atomic<int> reads{0};
        std::atomic<int> odd{0};
        std::promise<void> done;
    };
    auto shared = std::make_shared<Shared>();

    // The reader holds the content lock while it looks, so ticks must wait
    // for it. Each leg is seen before or after its update: -777, or
    // 1000 - 100 * price for a price of 9 (100) or 10 (0).
    const int legCount = legs.size();
    std::thread reader([shared, inst, legCount] {
        while (!shared->stop) {
            QReadLocker locker(mgr()->getLocker());
            const QList<T0SymbolInfo*> seen = inst->GetAllSymbols_Ptr<T0SymbolInfo>();
            if (seen.size() != legCount)
                ++shared->odd;
            for (const T0SymbolInfo* leg : seen) {
                const double value = leg->profitAmount();
                if (value != -777 && value != 100 && value != 0)
                    ++shared->odd;
            }
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            ++shared->reads;
        }
    });

    constexpr int kTicks = 40;
    std::future<void> ticked = shared->done.get_future();
    std::thread ticker([shared] {
        for (int tick = 0; tick < kTicks; ++tick) {
            // Interleave: every tick comes after a fresh read.
            const int before = shared->reads;
            while (shared->reads == before)
                std::this_thread::yield();
            for (int i = 0; i < 16; ++i) {
                CommonQuotaHandler::instance().SetLatestPrice(
                    QStringLiteral("S%1").arg(i, 2, 10, QLatin1Char('0')), tick % 2 ? 10.0 : 9.0);
            }
            QMetaObject::invokeMethod(mgr(), "slotCalculateTimer", Qt::BlockingQueuedConnection,
                                      Q_ARG(QString, QString()));
        }
        shared->done.set_value();
    });
    const bool finishedInTime =
        ticked.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    shared->stop = true;
    if (!finishedInTime) {
        reader.detach();
        ticker.detach();
        QFAIL("queued recalculation did not finish: deadlock");
    }
    reader.join();
    ticker.join();

    QVERIFY(shared->reads >= kTicks);
    QCOMPARE(shared->odd.load(), 0);
    QCOMPARE(tickThreads.size(), kTicks);
    QCOMPARE(QSet<QString>(tickThreads.cbegin(), tickThreads.cend()),
             QSet<QString>{QStringLiteral("InstanceMgr_Thread")});
    for (const T0SymbolInfo* leg : qAsConst(legs))
        QCOMPARE(leg->profitAmount(), 0.0); // the last tick priced at 10
}

QTEST_GUILESS_MAIN(TestNotifications)
#include "tst_notifications.moc"
