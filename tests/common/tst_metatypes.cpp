// Types that cross threads in the library's signals must be known to the
// meta-type system by the names the signals spell, or a queued connection
// (and every string-based connect of a host) cannot copy the arguments.

#include "logcapture.h"

#include <common/metatypes.h>
#include <platform/aesstrategy.h>
#include <platform/varianttypes.h>

#include <QHash>
#include <QMetaMethod>
#include <QMetaType>
#include <QMutex>
#include <QMutexLocker>
#include <QScopeGuard>
#include <QThread>
#include <QtTest>

// Spells each signal's type the way the library's signals do.
class Carrier : public QObject
{
    Q_OBJECT
signals:
    void hashSent(QHash<QString, double> value);
    void nestedMapSent(QMap<QString, QMap<QString, QVariant>> value);
    void stringListSent(QList<QString> value);
    void strategiesSent(QList<AesStrategy> value);
    void recordsSent(VariantMapList value);
    void aliasTableSent(AuthorityTable value);
    void fullTableSent(QMap<QString, QMap<QString, QMap<QString, QString>>> value);
};

// Lives in another thread and keeps what arrived, by slot name.
class Sink : public QObject
{
    Q_OBJECT
public:
    QVariant received(const QString& slot) const
    {
        QMutexLocker locker(&m_mutex);
        return m_received.value(slot);
    }
    int count() const
    {
        QMutexLocker locker(&m_mutex);
        return m_received.size();
    }

public slots:
    void onHash(QHash<QString, double> value) { keep(QStringLiteral("onHash"), value); }
    void onNestedMap(QMap<QString, QMap<QString, QVariant>> value)
    {
        keep(QStringLiteral("onNestedMap"), value);
    }
    void onStringList(QList<QString> value) { keep(QStringLiteral("onStringList"), value); }
    void onStrategies(QList<AesStrategy> value) { keep(QStringLiteral("onStrategies"), value); }
    void onRecords(VariantMapList value) { keep(QStringLiteral("onRecords"), value); }
    void onAliasTable(AuthorityTable value) { keep(QStringLiteral("onAliasTable"), value); }
    void onFullTable(QMap<QString, QMap<QString, QMap<QString, QString>>> value)
    {
        keep(QStringLiteral("onFullTable"), value);
    }

private:
    template <typename T>
    void keep(const QString& slot, const T& value)
    {
        QMutexLocker locker(&m_mutex);
        m_received.insert(slot, QThread::currentThread() == thread() ? QVariant::fromValue(value)
                                                                     : QVariant());
    }

    mutable QMutex m_mutex;
    QMap<QString, QVariant> m_received;
};

class TestMetaTypes : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void registeredByName_data();
    void registeredByName();
    void survivesQueuedSignal();
};

void TestMetaTypes::initTestCase()
{
    AlgoLogic::registerMetaTypes();
    // A second call is harmless.
    AlgoLogic::registerMetaTypes();
}

void TestMetaTypes::registeredByName_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<int>("sameAs");

    QTest::newRow("price hash") << QByteArray("QHash<QString,double>")
                                << qMetaTypeId<QHash<QString, double>>();
    QTest::newRow("nested variant map") << QByteArray("QMap<QString,QMap<QString,QVariant> >")
                                        << qMetaTypeId<QMap<QString, QMap<QString, QVariant>>>();
    QTest::newRow("string list") << QByteArray("QList<QString>")
                                 << qMetaTypeId<QList<QString>>();
    QTest::newRow("strategy list") << QByteArray("QList<AesStrategy>")
                                   << qMetaTypeId<QList<AesStrategy>>();
    QTest::newRow("record list alias") << QByteArray("VariantMapList")
                                       << qMetaTypeId<VariantMapList>();
    QTest::newRow("authority alias") << QByteArray("AuthorityTable")
                                     << qMetaTypeId<AuthorityTable>();
    QTest::newRow("authority spelt out")
        << QMetaObject::normalizedType("QMap<QString, QMap<QString, QMap<QString, QString>>>")
        << qMetaTypeId<AuthorityTable>();
}

void TestMetaTypes::registeredByName()
{
    QFETCH(QByteArray, name);
    QFETCH(int, sameAs);

    const int id = QMetaType::type(name.constData());
    QVERIFY2(id != QMetaType::UnknownType, name.constData());
    // The name stands for the type itself, not for some other registration.
    QCOMPARE(id, sameAs);
}

void TestMetaTypes::survivesQueuedSignal()
{
    QHash<QString, double> prices{{QStringLiteral("600000"), 10.25}};
    QMap<QString, QMap<QString, QVariant>> nested;
    nested[QStringLiteral("I-1")][QStringLiteral("qty")] = 300;
    const QList<QString> texts{QStringLiteral("a"), QStringLiteral("算法")};
    AesStrategy strategy(QStringLiteral("T0Alpha"), QStringLiteral("日内"), QStringLiteral("T0"),
                         QStringLiteral("1"));
    strategy.setFeeId(QStringLiteral("F-1"));
    const QList<AesStrategy> strategies{strategy, AesStrategy()};
    const VariantMapList records{VariantMap{{QStringLiteral("strategyID"), QStringLiteral("7")}},
                                 VariantMap()};
    AuthorityTable table;
    table[QStringLiteral("10001")][QStringLiteral("trade")][QStringLiteral("T0Alpha")] =
        QStringLiteral("1");

    Carrier carrier;
    Sink sink;
    QThread worker;
    sink.moveToThread(&worker);
    worker.start();
    // Stopped on every way out, failures included.
    const auto stopWorker = qScopeGuard([&worker] {
        worker.quit();
        worker.wait();
    });

    // Connected by meta-method with an explicit queue, as a host connecting
    // by signature does: the argument types are looked up by name.
    struct Route
    {
        QMetaMethod signal;
        const char* slot;
    };
    const QList<Route> routes{
        {QMetaMethod::fromSignal(&Carrier::hashSent), "onHash"},
        {QMetaMethod::fromSignal(&Carrier::nestedMapSent), "onNestedMap"},
        {QMetaMethod::fromSignal(&Carrier::stringListSent), "onStringList"},
        {QMetaMethod::fromSignal(&Carrier::strategiesSent), "onStrategies"},
        {QMetaMethod::fromSignal(&Carrier::recordsSent), "onRecords"},
        {QMetaMethod::fromSignal(&Carrier::aliasTableSent), "onAliasTable"},
        {QMetaMethod::fromSignal(&Carrier::fullTableSent), "onFullTable"},
    };
    LogCapture log;
    for (const Route& route : routes) {
        const QByteArray signature = route.slot
            + route.signal.methodSignature().mid(route.signal.name().size());
        const QMetaMethod slot =
            sink.metaObject()->method(sink.metaObject()->indexOfSlot(signature.constData()));
        QVERIFY2(slot.isValid(), signature.constData());
        QVERIFY2(connect(&carrier, route.signal, &sink, slot, Qt::QueuedConnection),
                 signature.constData());
    }

    emit carrier.hashSent(prices);
    emit carrier.nestedMapSent(nested);
    emit carrier.stringListSent(texts);
    emit carrier.strategiesSent(strategies);
    emit carrier.recordsSent(records);
    emit carrier.aliasTableSent(table);
    emit carrier.fullTableSent(table);
    QTRY_COMPARE(sink.count(), routes.size());

    QCOMPARE(log.count(QtWarningMsg, QStringLiteral("Cannot queue arguments")), 0);
    QCOMPARE((sink.received(QStringLiteral("onHash")).value<QHash<QString, double>>()), prices);
    QCOMPARE((sink.received(QStringLiteral("onNestedMap"))
                  .value<QMap<QString, QMap<QString, QVariant>>>()),
             nested);
    QCOMPARE(sink.received(QStringLiteral("onStringList")).value<QList<QString>>(), texts);
    QVERIFY(sink.received(QStringLiteral("onStrategies")).value<QList<AesStrategy>>()
            == strategies);
    QCOMPARE(sink.received(QStringLiteral("onRecords")).value<VariantMapList>(), records);
    QCOMPARE(sink.received(QStringLiteral("onAliasTable")).value<AuthorityTable>(), table);
    QCOMPARE(sink.received(QStringLiteral("onFullTable")).value<AuthorityTable>(), table);
}

QTEST_GUILESS_MAIN(TestMetaTypes)

#include "tst_metatypes.moc"
