// Types that cross threads in the library's signals must be known to the
// meta-type system by the names the signals spell, or a queued connection
// (and every string-based connect of a host) cannot copy the arguments.

#include <common/metatypes.h>
#include <platform/aesstrategy.h>
#include <platform/varianttypes.h>

#include <QtTest>

// The id of a type, taken only when called: qMetaTypeId() registers a type
// under its own name, which would hide a missing registration.
using TypeId = int (*)();
Q_DECLARE_METATYPE(TypeId)

const QList<AesStrategy> kStrategies{{"T0Alpha", "日内", "T0", "1"}, AesStrategy()};
const AuthorityTable kTable{{"10001", {{"trade", {{"T0Alpha", "1"}}}}}};
const VariantMapList kRecords{{{"strategyID", 7}}, {}};

class TestMetaTypes : public QObject
{
    Q_OBJECT
signals:
    void sent(QList<AesStrategy> strategies, AuthorityTable table, VariantMapList records);
    void echoed(QList<AesStrategy> strategies, AuthorityTable table, VariantMapList records);

private slots:
    void initTestCase() { AlgoLogic::registerMetaTypes(); }

    // Row name: the type's name as the library's signals spell it (the
    // aliases hosts use are covered by queuedRoundTrip).
    void namesResolve_data()
    {
        QTest::addColumn<TypeId>("id");
        QTest::newRow("QList<AesStrategy>") << TypeId(qMetaTypeId<QList<AesStrategy>>);
        QTest::newRow("QMap<QString,QMap<QString,QMap<QString,QString> > >")
            << TypeId(qMetaTypeId<AuthorityTable>);
        QTest::newRow("QHash<QString,double>") << TypeId(qMetaTypeId<QHash<QString, double>>);
        QTest::newRow("QMap<QString,QMap<QString,QVariant> >")
            << TypeId(qMetaTypeId<QMap<QString, QMap<QString, QVariant>>>);
        QTest::newRow("VariantMap") << TypeId(qMetaTypeId<VariantMap>);
    }
    void namesResolve()
    {
        QFETCH(TypeId, id);
        const int byName = QMetaType::type(QTest::currentDataTag()); // before id() registers it
        QCOMPARE(byName, id());
    }

    // Connected by signature and queued, as a host does: the arguments are
    // copied by the types their names resolve to.
    void queuedRoundTrip()
    {
        QVERIFY(connect(this, SIGNAL(sent(QList<AesStrategy>, AuthorityTable, VariantMapList)),
                        this, SIGNAL(echoed(QList<AesStrategy>, AuthorityTable, VariantMapList)),
                        Qt::QueuedConnection));
        QSignalSpy echoed(this, &TestMetaTypes::echoed);
        emit sent(kStrategies, kTable, kRecords);
        QTRY_COMPARE(echoed.count(), 1);
        QVERIFY(echoed[0][0].value<QList<AesStrategy>>() == kStrategies
                && echoed[0][1].value<AuthorityTable>() == kTable
                && echoed[0][2].value<VariantMapList>() == kRecords);
    }
};

QTEST_GUILESS_MAIN(TestMetaTypes)

#include "tst_metatypes.moc"
