// The registry's notifications (meta-object order, forwarders, delivery to
// another thread) and its T0 floating-profit timer.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

namespace {

using M = InstanceMgr;
using Emitter = std::function<bool(M*)>; // raises a signal; whether it came once with its arguments
const QString kT0 = "T0:" + Algo_Values::AlgoGlobalType::T0; // a T0 instance of type T0
QList<int> g_received; // method index of each signal delivered to the receiver; main thread only

// Connected to every signal by name, as the host connects; lives in another thread, so a
// signal reaches it only when every argument can be queued.
class Receiver : public QObject
{
    Q_OBJECT
public slots:
    void any()
    {
        QMetaObject::invokeMethod(qApp, [i = senderSignalIndex()] { g_received << i; });
    }
};

// A row: the signal's index in the meta-object, its signature, what raises it, with what.
template <typename... P, typename... A>
void row(int index, const char* signature, void (M::*op)(P...), const A&... args)
{
    QTest::newRow(signature) << index << Emitter([=](M* m) {
        QSignalSpy spy(m, m->metaObject()->method(m->metaObject()->indexOfSignal(signature)));
        (m->*op)(args...);
        return spy.count() == 1 && ((spy.first().takeFirst().template value<A>() == args) && ...);
    });
}

} // namespace

Q_DECLARE_METATYPE(Emitter)

class TestNotifications : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void forwardersAndDelivery_data();
    void forwardersAndDelivery();
    void tick_data();
    void tick();
};

void TestNotifications::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("algologic.*.debug=true"));
    auto* receiver = new Receiver; // lives, like the registry, as long as the process
    receiver->moveToThread(M::instance()->thread());
    QVERIFY(receiver->thread() != thread());
    const QMetaObject& meta = M::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodOffset() + 11; ++i) // by name, as the host
        QVERIFY(connect(M::instance(), ("2" + meta.method(i).methodSignature()).constData(),
                        receiver, SLOT(any())));
}

void TestNotifications::forwardersAndDelivery_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<Emitter>("emitter");
    const QString id = QStringLiteral("inst-9"), ok = QStringLiteral("新参数");
    const QList<QString> k{"a_All", "b_1"};
    row(0, "sigInstUpdated(QStringList)", &M::sigInstUpdated, QStringList{id, ok});
    row(1, "signalInsListToLogic(QStringList)", &M::signalInsListToLogic, QStringList{ok});
    row(2, "signalMultiProgressUpdated(QString)", &M::SendSignalMultiProgress, id);
    row(3, "signalProgressUpdated(QString,QList<QString>)", &M::SendSignalProgressUpdated, id, k);
    row(4, "sigSymbolRemainQty(QString,QHash<QString,double>)", &M::SendSignalSymbolRemainQty, id,
        QHash<QString, double>{{"a_All", 1500.25}, {"b_1", 0.0}});
    row(5, "signalTimeUpdate(QString,QString)", &M::SendSignalTimeUpdate, id, QString());
    row(6, "signalProgreeDelayUpadaete(QString)", &M::SendSignalProgressDelay, id);
    row(7, "signalStatusUpdated(QString,QString)", &M::SendSignalStatusUpdate, id, ok);
    row(8, "signalSymbolStatusUpdate(QMap<QString,QMap<QString,QVariant> >)",
        &M::SendSignalSymbolStatusUpdate, QMap<QString, QVariantMap>{{"a_All", {{"n", 300}}}});
    row(9, "signalModifyPush(QString,QString,QString)", &M::SendSignalModifyPush, id, ok, k[0]);
    row(10, "signalCalcProfitAmountFinished()", &M::signalCalcProfitAmountFinished);
}

void TestNotifications::forwardersAndDelivery()
{
    QFETCH(int, index);
    QFETCH(Emitter, emitter);
    const QMetaObject& meta = M::staticMetaObject;
    const int offset = meta.methodOffset();
    QCOMPARE(meta.method(offset + index).methodSignature(), QByteArray(QTest::currentDataTag()));
    QCOMPARE(meta.method(offset + 11).methodSignature() + "/12",
             "slotCalculateTimer(QString)/" + QByteArray::number(meta.methodCount() - offset));
    g_received.clear();
    QVERIFY(emitter(M::instance())); // its own signal, once, with the same arguments
    QMetaObject::invokeMethod(M::instance(), [] {}, Qt::BlockingQueuedConnection); // delivered
    QCoreApplication::processEvents(); // and reported
    QCOMPARE(g_received, QList<int>{offset + index}); // and no other, queued into the other thread
}

void TestNotifications::tick_data()
{
    QTest::addColumn<QStringList>("instances"); // class (T0 or base) ':' algo type text
    // The leg's sellAmount, sellDealQty, buyDealQty, buyAmount, buyFee, sellFee; the price;
    // the profit the leg of a T0 instance gets.
    QTest::addColumn<QList<double>>("figures");
    const QList<double> sold{1000, 100, 0, 0, 0, 0, 9.5, 50};
    QTest::newRow("no T0 instance") << QStringList{"T0:TWAP", "T0:t0", "base:T0"} << sold;
    QTest::newRow("T0 instances counted") << QStringList{kT0, "base:T0", "T0:TWAP", kT0} << sold;
    // 1e16 - 400 - (1e16 - 1000) first, then the fees: any other order loses the fees.
    QTest::newRow("every term, subtracted in order")
        << QStringList{kT0} << QList<double>{1e16, 100, 60, 1e16 - 1000, 1.25, 2.5, 10, 596.25};
}

void TestNotifications::tick()
{
    QFETCH(QStringList, instances);
    QFETCH(QList<double>, figures);
    const QList<void (T0SymbolInfo::*)(double)> setters{&T0SymbolInfo::setSellAmount,
        &T0SymbolInfo::setSellDealQty, &T0SymbolInfo::setBuyDealQty, &T0SymbolInfo::setBuyAmount,
        &T0SymbolInfo::setBuyFee, &T0SymbolInfo::setSellFee};
    for (int i = 0; i < 4; ++i) // what an earlier row left
        M::instance()->DeleteInstance("ntf-" + QString::number(i));
    QList<QPair<T0SymbolInfo*, double>> legs; // with the profit each must end with
    for (const QString& entry : instances) {
        auto* inst = entry.startsWith("T0:") ? new T0InstanceInfo : new InstanceInfoBase;
        inst->setInstanceID("ntf-" + QString::number(legs.size()));
        inst->setInstAlgoType(entry.section(':', 1));
        auto* leg = new T0SymbolInfo;
        leg->setSymbol(inst->instanceID()); // a price of its own
        for (int k = 0; k < setters.size(); ++k)
            (leg->*setters[k])(figures[k]);
        inst->AddSymbolInfo(leg);
        M::instance()->InsertNewInstance(inst);
        CommonQuotaHandler::instance().SetLatestPrice(leg->symbol(), figures[6]);
        legs << qMakePair(leg, entry == kT0 ? figures[7] : 0.0);
    }
    QSignalSpy finished(M::instance(), &M::signalCalcProfitAmountFinished);
    LogCapture log;
    M::instance()->slotCalculateTimer(QString());
    const int t0Count = instances.count(kT0);
    QCOMPARE(finished.count(), t0Count ? 1 : 0);
    QCOMPARE(log.count(QtDebugMsg, "InstanceMgr::slotCalculateTimer 算法逻辑层-浮动盈亏计算触发"), 1);
    QCOMPARE(log.countOfType(QtDebugMsg), t0Count ? 2 : 1); // with the end line and the count:
    QCOMPARE(log.count(QtDebugMsg, "浮动盈亏计算结束 " + QString::number(t0Count)), t0Count ? 1 : 0);
    for (const auto& leg : qAsConst(legs))
        QCOMPARE(leg.first->profitAmount(), leg.second);
}

QTEST_GUILESS_MAIN(TestNotifications)
#include "tst_notifications.moc"
