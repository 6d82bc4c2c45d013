// The authority queries answer which algos a user may run on which accounts.
// One table and one catalogue are loaded once through the business-data
// manager; every query is then checked against hand-computed answers.
//
// Table (account -> category -> algo names):
//   A: c {AITWAP, VWAP, AIPOV, smarT_F, ZC_SMART}  d {VWAP}  e {VWAP, AIPOV}
//   B: c {VWAP, AIPOV, aitwap, Ghost}                        e {VWAP, AIPOV}
//   C:                                    d {AITWAP}         e {VWAP}
//   D: c {VWAP, AIPOV}                                       e {VWAP, AITWAP}
// "aitwap" and "Ghost" are not in the catalogue.

#include <platform/aesstrategy.h>
#include <platform/kxalgodatamgr.h>
#include <platform/varianttypes.h>
#include <strategy/strategymgr.h>

#include <QSignalSpy>
#include <QtTest>

namespace {

// Aliases deliberately sort differently from their names, and two collide,
// so that an alias list ordered or de-duplicated by alias shows up.
QList<AesStrategy> catalogue()
{
    return {
        AesStrategy(QStringLiteral("VWAP"), QStringLiteral("same"), QStringLiteral("T0"),
                    QStringLiteral("1")),
        AesStrategy(QStringLiteral("AITWAP"), QStringLiteral("a-twap"), QStringLiteral("T0"),
                    QStringLiteral("1")),
        AesStrategy(QStringLiteral("AIPOV"), QStringLiteral("z-pov"), QStringLiteral("T0"),
                    QStringLiteral("2")),
        AesStrategy(QStringLiteral("ZC_SMART"), QStringLiteral("same"), QStringLiteral("MultiStr"),
                    QStringLiteral("2")),
        AesStrategy(QStringLiteral("smarT_F"), QStringLiteral("b-smart"), QStringLiteral("MultiStr"),
                    QStringLiteral("1")),
    };
}

AuthorityTable authorityTable()
{
    AuthorityTable table;
    const auto add = [&table](const QString& account, const QString& category,
                              const QStringList& names) {
        for (const QString& name : names)
            table[account][category][name] = account + QLatin1Char('/') + category
                + QLatin1Char('/') + name;
    };
    add("A", "c", {"AITWAP", "VWAP", "AIPOV", "smarT_F", "ZC_SMART"});
    add("A", "d", {"VWAP"});
    add("A", "e", {"VWAP", "AIPOV"});
    add("B", "c", {"VWAP", "AIPOV", "aitwap", "Ghost"});
    add("B", "e", {"VWAP", "AIPOV"});
    add("C", "d", {"AITWAP"});
    add("C", "e", {"VWAP"});
    add("D", "c", {"VWAP", "AIPOV"});
    add("D", "e", {"VWAP", "AITWAP"});
    return table;
}

// The entry the catalogue should hand out for each name; a default entry for
// names it does not know.
QList<AesStrategy> entriesFor(const QStringList& names)
{
    QList<AesStrategy> entries;
    for (const QString& name : names) {
        AesStrategy found;
        for (const AesStrategy& s : catalogue())
            if (s.name() == name)
                found = s;
        entries.append(found);
    }
    return entries;
}

QStringList names(const QList<AesStrategy>& entries)
{
    QStringList out;
    for (const AesStrategy& e : entries)
        out.append(e.name());
    return out;
}

const QStringList kAllAccounts{"A", "B", "C", "D"};

} // namespace

class TestStrategyAuthority : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void nameIntersection_data();
    void nameIntersection();
    void unionAndWholeTableIntersection_data();
    void unionAndWholeTableIntersection();
    void accountsForAlgo_data();
    void accountsForAlgo();
    void aliasesFollowNames_data();
    void aliasesFollowNames();
    void lookupsNeverInsert();
};

void TestStrategyAuthority::initTestCase()
{
    StrategyMgr* mgr = StrategyMgr::instance();
    mgr->init();
    QSignalSpy relayed(mgr, &StrategyMgr::signalNewAuthority);
    KxAlgoDataMgr::instance().setStrategies(catalogue());
    KxAlgoDataMgr::instance().setAuthority(authorityTable());
    // The manager lives in this thread, so the relay is delivered at once.
    QCOMPARE(relayed.count(), 1);
    QCOMPARE(relayed.at(0).at(0).value<AuthorityTable>(), authorityTable());
}

void TestStrategyAuthority::nameIntersection_data()
{
    QTest::addColumn<QStringList>("accounts");
    QTest::addColumn<QString>("category");
    QTest::addColumn<QStringList>("expected");

    const QStringList allOfA{"AIPOV", "AITWAP", "VWAP", "ZC_SMART", "smarT_F"};
    QTest::newRow("no accounts") << QStringList() << "c" << QStringList();
    QTest::newRow("one account, code-unit order") << QStringList{"A"} << "c" << allOfA;
    QTest::newRow("one account, unknown names kept")
        << QStringList{"B"} << "c" << QStringList{"AIPOV", "Ghost", "VWAP", "aitwap"};
    QTest::newRow("two accounts, names case-sensitive")
        << QStringList{"A", "B"} << "c" << QStringList{"AIPOV", "VWAP"};
    QTest::newRow("three accounts") << QStringList{"B", "A", "D"} << "c"
                                    << QStringList{"AIPOV", "VWAP"};
    QTest::newRow("duplicates harmless") << QStringList{"A", "A", "B", "A"} << "c"
                                         << QStringList{"AIPOV", "VWAP"};
    QTest::newRow("unknown account first") << QStringList{"X", "A"} << "c" << QStringList();
    QTest::newRow("unknown account middle") << QStringList{"A", "X", "B"} << "c"
                                            << QStringList();
    QTest::newRow("unknown account last") << QStringList{"A", "B", "X"} << "c" << QStringList();
    QTest::newRow("account without category first")
        << QStringList{"C", "A"} << "c" << QStringList();
    QTest::newRow("account without category last")
        << QStringList{"A", "C"} << "c" << QStringList();
    QTest::newRow("account case-sensitive") << QStringList{"a"} << "c" << QStringList();
    QTest::newRow("category case-sensitive") << QStringList{"A"} << "C" << QStringList();
    QTest::newRow("other category") << QStringList{"A", "D"} << "e" << QStringList{"VWAP"};
}

void TestStrategyAuthority::nameIntersection()
{
    QFETCH(QStringList, accounts);
    QFETCH(QString, category);
    QFETCH(QStringList, expected);
    StrategyMgr* mgr = StrategyMgr::instance();

    QCOMPARE(mgr->GetAuthorityNameIntersection(accounts, category), expected);
    const QList<AesStrategy> entries = mgr->GetAuthorityIntersection(accounts, category);
    QVERIFY(entries == entriesFor(expected));
    if (accounts.size() == 1) {
        QCOMPARE(mgr->GetAuthorityAlgoName(accounts.first(), category), expected);
        QVERIFY(mgr->GetAuthorityAlgo(accounts.first(), category) == entriesFor(expected));
    }
}

void TestStrategyAuthority::unionAndWholeTableIntersection_data()
{
    QTest::addColumn<QString>("category");
    QTest::addColumn<QStringList>("unionNames");
    QTest::addColumn<QStringList>("intersectionNames");

    QTest::newRow("c: C lacks it") << "c"
                                   << QStringList{"AIPOV", "AITWAP", "Ghost", "VWAP", "ZC_SMART",
                                                  "aitwap", "smarT_F"}
                                   << QStringList();
    QTest::newRow("d: B and D lack it") << "d" << QStringList{"AITWAP", "VWAP"} << QStringList();
    QTest::newRow("e: held by all") << "e" << QStringList{"AIPOV", "AITWAP", "VWAP"}
                                    << QStringList{"VWAP"};
    QTest::newRow("unknown category") << "zz" << QStringList() << QStringList();
}

void TestStrategyAuthority::unionAndWholeTableIntersection()
{
    QFETCH(QString, category);
    QFETCH(QStringList, unionNames);
    QFETCH(QStringList, intersectionNames);
    StrategyMgr* mgr = StrategyMgr::instance();

    const QList<AesStrategy> united = mgr->GetAuthorityUnion(category);
    QCOMPARE(united.size(), unionNames.size());
    QVERIFY(united == entriesFor(unionNames));
    QVERIFY(mgr->GetAuthorityIntersection(category) == entriesFor(intersectionNames));
}

void TestStrategyAuthority::accountsForAlgo_data()
{
    QTest::addColumn<QString>("algo");
    QTest::addColumn<QString>("category");
    QTest::addColumn<QStringList>("accounts");

    QTest::newRow("VWAP c") << "VWAP" << "c" << QStringList{"A", "B", "D"};
    QTest::newRow("AITWAP c, lower case elsewhere") << "AITWAP" << "c" << QStringList{"A"};
    QTest::newRow("aitwap c") << "aitwap" << "c" << QStringList{"B"};
    QTest::newRow("AITWAP d") << "AITWAP" << "d" << QStringList{"C"};
    QTest::newRow("AITWAP e") << "AITWAP" << "e" << QStringList{"D"};
    QTest::newRow("arguments swapped") << "c" << "VWAP" << QStringList();
    QTest::newRow("unknown algo") << "TWAP" << "c" << QStringList();
    QTest::newRow("unknown category") << "VWAP" << "zz" << QStringList();
}

void TestStrategyAuthority::accountsForAlgo()
{
    QFETCH(QString, algo);
    QFETCH(QString, category);
    QFETCH(QStringList, accounts);
    StrategyMgr* mgr = StrategyMgr::instance();

    QCOMPARE(mgr->GetAuthorityAccountList(algo, category), accounts);
    for (const QString& account : kAllAccounts + QStringList{"X"}) {
        QCOMPARE(mgr->hasCorrespAuthority(account, algo, category), accounts.contains(account));
        // hasCorrespAuthority takes the account first, then the algo.
        QVERIFY(!mgr->hasCorrespAuthority(algo, account, category));
    }
}

void TestStrategyAuthority::aliasesFollowNames_data()
{
    QTest::addColumn<QString>("account");
    QTest::addColumn<QString>("category");
    QTest::addColumn<QStringList>("aliases");

    QTest::newRow("A c") << "A" << "c"
                         << QStringList{"z-pov", "a-twap", "same", "same", "b-smart"};
    QTest::newRow("B c, unknown names give empty aliases")
        << "B" << "c" << QStringList{"z-pov", "", "same", ""};
    QTest::newRow("C c") << "C" << "c" << QStringList();
    QTest::newRow("unknown account") << "X" << "c" << QStringList();
}

void TestStrategyAuthority::aliasesFollowNames()
{
    QFETCH(QString, account);
    QFETCH(QString, category);
    QFETCH(QStringList, aliases);
    QCOMPARE(StrategyMgr::instance()->GetAuthorityAlgoAlias(account, category), aliases);
}

void TestStrategyAuthority::lookupsNeverInsert()
{
    StrategyMgr* mgr = StrategyMgr::instance();
    const auto snapshot = [mgr] {
        QStringList seen;
        for (const QString& category : QStringList{"c", "d", "e", "new"}) {
            seen << names(mgr->GetAuthorityIntersection(category)).join(',');
            seen << names(mgr->GetAuthorityUnion(category)).join(',');
            for (const QString& algo : QStringList{"VWAP", "AITWAP", "NEW"})
                seen << mgr->GetAuthorityAccountList(algo, category).join(',');
        }
        return seen;
    };
    const QStringList before = snapshot();
    // Five answers per category: intersection over the table first.
    QCOMPARE(before.at(0), QString()); // c: C lacks it, so no common name
    QCOMPARE(before.at(10), QStringLiteral("VWAP")); // e: the one name every account holds

    // Missing levels at every depth, through every kind of lookup.
    QCOMPARE(mgr->GetAlgoNode("X", "VWAP", "c"), QString());
    QCOMPARE(mgr->GetAlgoNode("C", "VWAP", "new"), QString());
    QCOMPARE(mgr->GetAlgoNode("A", "NEW", "c"), QString());
    QCOMPARE(mgr->GetAlgoNode("A", "VWAP", "c"), QStringLiteral("A/c/VWAP"));
    QVERIFY(!mgr->hasCorrespAuthority("Y", "VWAP", "e"));
    QVERIFY(!mgr->hasCorrespAuthority("C", "NEW", "new"));
    QVERIFY(mgr->GetAuthorityAlgoName("Z", "e").isEmpty());
    QVERIFY(mgr->GetAuthorityAlgoAlias("W", "e").isEmpty());
    QVERIFY(mgr->GetAuthorityNameIntersection({"V", "C"}, "new").isEmpty());
    QVERIFY(mgr->GetAuthorityIntersection({"U"}, "e").isEmpty());

    // A new account, even an empty one, would empty the intersection over the
    // table; a new category would be seen by the union and account list.
    QCOMPARE(snapshot(), before);
}

QTEST_GUILESS_MAIN(TestStrategyAuthority)
#include "tst_strategyauthority.moc"
