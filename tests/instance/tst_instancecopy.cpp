// Copying an instance: every member is copied and the legs are deep-copied
// into the leg class that the class tag names.

#include <algologic.h>

#include <QtTest>

#include <memory>

namespace {

const QString kKeyT0 = QStringLiteral("9_600000.SH_All");
const QString kKeyPlain = QStringLiteral("9_000001.SZ_1");

// An instance with one T0 leg and one plain leg, and a few members set.
std::unique_ptr<InstanceInfoBase> makeSource(const QString& classType)
{
    auto source = std::make_unique<InstanceInfoBase>();
    source->setClassType(classType);
    source->setInstanceID(QStringLiteral("9"));
    source->setStrategyName(QStringLiteral("AITWAP"));
    source->setStatus(QStringLiteral("1"));
    source->setFilledQty(300);
    source->setStartTime(QDateTime(QDate(2026, 11, 20), QTime(9, 30)));
    source->setSymbolList({QStringLiteral("600000.SH"), QStringLiteral("000001.SZ")});
    source->setCPU(0.5);

    auto* t0 = new T0SymbolInfo;
    t0->setKey(kKeyT0);
    t0->setSymbol(QStringLiteral("600000.SH"));
    t0->setFilledQty(100);
    t0->setBuyDealQty(70);
    t0->setSellAmount(1234.5);
    source->AddSymbolInfo(t0);

    auto* plain = new SymbolInfoBase;
    plain->setKey(kKeyPlain);
    plain->setSymbol(QStringLiteral("000001.SZ"));
    plain->setFilledQty(200);
    source->AddSymbolInfo(plain);
    return source;
}

} // namespace

class TestInstanceCopy : public QObject
{
    Q_OBJECT
private slots:
    void legsFollowClassTag_data();
    void legsFollowClassTag();
    void membersAreCopied();
    void copyIsIndependentOfSource();
    void assignmentReplacesPreviousLegs();
    void selfAssignmentKeepsLegs();
};

void TestInstanceCopy::legsFollowClassTag_data()
{
    QTest::addColumn<QString>("classType");
    QTest::addColumn<int>("legCount");
    QTest::addColumn<int>("t0LegCount");

    // "T0" makes T0 legs of every leg; the T0 figures survive only where the
    // source leg had them.
    QTest::newRow("T0") << "T0" << 2 << 2;
    QTest::newRow("info") << "info" << 2 << 0;
    QTest::newRow("Multi") << "Multi" << 2 << 0;
    QTest::newRow("unknown tag copies no leg") << "Other" << 0 << 0;
    QTest::newRow("empty tag copies no leg") << "" << 0 << 0;
}

void TestInstanceCopy::legsFollowClassTag()
{
    QFETCH(QString, classType);
    QFETCH(int, legCount);
    QFETCH(int, t0LegCount);

    const auto source = makeSource(classType);
    const InstanceInfoBase copy(*source);
    QCOMPARE(copy.getSymbolSize(), legCount);
    QCOMPARE(copy.GetAllSymbols_Ptr<T0SymbolInfo>().size(), t0LegCount);
    if (legCount == 0)
        return;

    SymbolInfoBase* t0Copy = copy.getSymbolInfo(kKeyT0);
    QVERIFY(t0Copy);
    QVERIFY(t0Copy != source->getSymbolInfo(kKeyT0));
    QCOMPARE(t0Copy->filledQty(), 100.0);
    QCOMPARE(t0Copy->getKey(), kKeyT0);
    if (auto* t0 = dynamic_cast<T0SymbolInfo*>(t0Copy)) {
        QCOMPARE(t0->buyDealQty(), 70.0);
        QCOMPARE(t0->sellAmount(), 1234.5);
    }
    SymbolInfoBase* plainCopy = copy.getSymbolInfo(kKeyPlain);
    QVERIFY(plainCopy);
    QCOMPARE(plainCopy->filledQty(), 200.0);
    if (auto* t0 = dynamic_cast<T0SymbolInfo*>(plainCopy))
        QCOMPARE(t0->buyDealQty(), 0.0); // a plain source leg has no T0 half
}

void TestInstanceCopy::membersAreCopied()
{
    const auto source = makeSource(QStringLiteral("info"));
    InstanceInfoBase copy;
    copy = *source;
    QCOMPARE(copy.instanceID(), QStringLiteral("9"));
    QCOMPARE(copy.status(), QStringLiteral("1"));
    QCOMPARE(copy.filledQty(), 300.0);
    QCOMPARE(copy.startTime(), source->startTime());
    QCOMPARE(copy.getSymbolList(), source->getSymbolList());
    QCOMPARE(copy.getCPU(), 0.5);
    QCOMPARE(copy.getClassType(), QStringLiteral("info"));
}

void TestInstanceCopy::copyIsIndependentOfSource()
{
    const auto source = makeSource(QStringLiteral("T0"));
    SymbolInfoBase* sourceLeg = source->getSymbolInfo(kKeyPlain);
    {
        InstanceInfoBase copy(*source);
        copy.getSymbolInfo(kKeyPlain)->setFilledQty(250);
        copy.setFilledQty(400);
    } // destroying the copy frees only its own legs
    QCOMPARE(source->getSymbolInfo(kKeyPlain), sourceLeg);
    QCOMPARE(sourceLeg->filledQty(), 200.0);
    QCOMPARE(source->filledQty(), 300.0);
}

void TestInstanceCopy::assignmentReplacesPreviousLegs()
{
    InstanceInfoBase target;
    target.setClassType(QStringLiteral("info"));
    auto* old = new SymbolInfoBase;
    old->setKey(QStringLiteral("old"));
    target.AddSymbolInfo(old);

    const auto source = makeSource(QStringLiteral("info"));
    target = *source;
    QCOMPARE(target.getSymbolSize(), 2);
    QCOMPARE(target.getSymbolInfo(QStringLiteral("old")), nullptr);
}

void TestInstanceCopy::selfAssignmentKeepsLegs()
{
    auto source = makeSource(QStringLiteral("T0"));
    SymbolInfoBase* leg = source->getSymbolInfo(kKeyT0);
    InstanceInfoBase& alias = *source;
    *source = alias;
    QCOMPARE(source->getSymbolInfo(kKeyT0), leg);
    QCOMPARE(leg->filledQty(), 100.0);
}

QTEST_GUILESS_MAIN(TestInstanceCopy)
#include "tst_instancecopy.moc"
