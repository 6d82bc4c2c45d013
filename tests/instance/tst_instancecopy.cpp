// Copying an instance: the members are copied and the legs deep-copied into
// the leg class that the class tag names.

#include <algologic.h>

#include <QtTest>

namespace {

const QString kKeyT0 = QStringLiteral("9_600000.SH_All"),
              kKeyPlain = QStringLiteral("9_000001.SZ_1");

// Gives `source` a T0 leg (filled 100, bought 70) and a plain leg (filled 200).
void fill(InstanceInfoBase* source, const QString& classType)
{
    source->setClassType(classType);
    source->setInstanceID(QStringLiteral("9"));
    auto* t0 = new T0SymbolInfo;
    t0->setBuyDealQty(70);
    for (SymbolInfoBase* leg : {static_cast<SymbolInfoBase*>(t0), new SymbolInfoBase}) {
        leg->setKey(leg == t0 ? kKeyT0 : kKeyPlain);
        leg->setFilledQty(leg == t0 ? 100 : 200);
        source->AddSymbolInfo(leg);
    }
}

} // namespace

class TestInstanceCopy : public QObject
{
    Q_OBJECT
private slots:
    void copyFollowsClassTag_data();
    void copyFollowsClassTag();
};

void TestInstanceCopy::copyFollowsClassTag_data()
{
    QTest::addColumn<QString>("classType");
    QTest::addColumn<int>("legCount");
    QTest::addColumn<int>("t0LegCount");
    QTest::newRow("T0 makes T0 legs of every leg") << "T0" << 2 << 2;
    QTest::newRow("info") << "info" << 2 << 0;
    QTest::newRow("Multi") << "Multi" << 2 << 0;
    QTest::newRow("unknown tag copies no leg") << "Other" << 0 << 0;
}

void TestInstanceCopy::copyFollowsClassTag()
{
    QFETCH(QString, classType);
    QFETCH(int, legCount);
    QFETCH(int, t0LegCount);
    InstanceInfoBase source;
    fill(&source, classType);
    {
        InstanceInfoBase constructed(source), assigned;
        assigned.AddSymbolInfo(new SymbolInfoBase); // replaced by the assignment
        assigned = source;
        for (InstanceInfoBase* copy : {&constructed, &assigned}) {
            QCOMPARE(copy->instanceID(), QStringLiteral("9"));
            QCOMPARE(copy->getClassType(), classType);
            QCOMPARE(copy->getSymbolSize(), legCount);
            QCOMPARE(copy->GetAllSymbols_Ptr<T0SymbolInfo>().size(), t0LegCount);
            if (legCount == 0)
                continue;
            SymbolInfoBase* t0 = copy->getSymbolInfo(kKeyT0);
            QVERIFY(t0 && t0 != source.getSymbolInfo(kKeyT0));
            QCOMPARE(t0->filledQty(), 100.0);
            QCOMPARE(copy->getSymbolInfo(kKeyPlain)->filledQty(), 200.0);
            if (auto* t0Copy = dynamic_cast<T0SymbolInfo*>(t0)) // T0 figures survive
                QCOMPARE(t0Copy->buyDealQty(), 70.0);
            t0->setFilledQty(500);
        }
    } // destroying the copies frees only their own legs (checked by the sanitizer builds)
    QCOMPARE(source.getSymbolInfo(kKeyT0)->filledQty(), 100.0);
}

QTEST_GUILESS_MAIN(TestInstanceCopy)
#include "tst_instancecopy.moc"
