// The authority queries answer which algos a user may run on which accounts.
// One table and one catalogue are loaded once through the business-data
// manager; every query is then checked against hand-computed answers.
//
// Table (account -> category -> algo names):
//   A: c {AITWAP, VWAP, AIPOV, smarT_F, ZC_SMART}  e {VWAP, AIPOV}
//   B: c {VWAP, AIPOV, aitwap, Ghost}              e {VWAP, AIPOV}
//   C:                                             e {VWAP}
//   D: c {VWAP, AIPOV, Delta}                      e {VWAP, AITWAP}
// "aitwap", "Ghost" and "Delta" are not in the catalogue.

#include <platform/kxalgodatamgr.h>
#include <strategy/strategymgr.h>

#include <QtTest>

// Aliases sort differently from their names, and two collide, so that an
// alias list ordered or de-duplicated by alias shows up.
const QList<AesStrategy> kCatalogue{{"VWAP", "same", "T0", "1"},
                                    {"AITWAP", "a-twap", "T0", "1"},
                                    {"AIPOV", "z-pov", "T0", "2"},
                                    {"ZC_SMART", "same", "MultiStr", "2"},
                                    {"smarT_F", "b-smart", "MultiStr", "1"}};

// The catalogue's entry for each name (the default entry for unknown names).
static QList<AesStrategy> entriesFor(const QStringList& names)
{
    QList<AesStrategy> out;
    for (const QString& name : names)
        out << KxAlgoDataMgr::instance().GetStrategy(name);
    return out;
}

class TestStrategyAuthority : public QObject
{
    Q_OBJECT
    StrategyMgr* const mgr = StrategyMgr::instance();

private slots:
    void initTestCase()
    {
        AuthorityTable table;
        for (const char* row : {"A c AITWAP VWAP AIPOV smarT_F ZC_SMART", "A e VWAP AIPOV",
                                "C e VWAP", "B c VWAP AIPOV aitwap Ghost", "B e VWAP AIPOV",
                                "D c VWAP AIPOV Delta", "D e VWAP AITWAP"}) {
            const QStringList words = QString(row).split(' ');
            for (const QString& name : words.mid(2))
                table[words[0]][words[1]][name] = "node";
        }
        mgr->init();
        KxAlgoDataMgr::instance().setStrategies(kCatalogue);
        KxAlgoDataMgr::instance().setAuthority(table);
    }

    // Category c. The first account's names seed the set, even when empty;
    // later accounts narrow it. Names sorted by code unit; for one account
    // the aliases follow those names, neither sorted nor de-duplicated.
    void intersection_data()
    {
        QTest::addColumn<QStringList>("accounts");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("no accounts") << QStringList() << QStringList();
        QTest::newRow("one account, code-unit order")
            << QStringList{"A"} << QStringList{"AIPOV", "AITWAP", "VWAP", "ZC_SMART", "smarT_F"};
        QTest::newRow("names unknown to the catalogue kept")
            << QStringList{"B"} << QStringList{"AIPOV", "Ghost", "VWAP", "aitwap"};
        QTest::newRow("names case-sensitive, duplicates harmless")
            << QStringList{"A", "B", "A"} << QStringList{"AIPOV", "VWAP"};
        QTest::newRow("unknown account first") << QStringList{"X", "A"} << QStringList();
        QTest::newRow("account without the category last")
            << QStringList{"A", "D", "C"} << QStringList();
    }
    void intersection()
    {
        QFETCH(QStringList, accounts);
        QFETCH(QStringList, expected);
        QCOMPARE(mgr->GetAuthorityNameIntersection(accounts, "c"), expected);
        QVERIFY(mgr->GetAuthorityIntersection(accounts, "c") == entriesFor(expected));
        if (accounts.size() != 1)
            return;
        QCOMPARE(mgr->GetAuthorityAlgoName(accounts[0], "c"), expected);
        QStringList aliases;
        for (const AesStrategy& entry : entriesFor(expected))
            aliases << entry.alias();
        QCOMPARE(mgr->GetAuthorityAlgoAlias(accounts[0], "c"), aliases);
    }

    // Per category: the accounts of an algo (ascending; hasCorrespAuthority
    // agrees and takes the account first), then the union and intersection
    // over the whole table. Checked after the lookups of this and earlier
    // tests, which must not have inserted anything: a new account would
    // empty the intersection, a new algo key show in the list or union.
    void byCategory_data()
    {
        QTest::addColumn<QString>("algo");
        QTest::addColumn<QString>("category");
        QTest::addColumn<QStringList>("accounts");
        QTest::addColumn<QStringList>("united");
        QTest::addColumn<QStringList>("common");
        const QStringList unitedC{"AIPOV", "AITWAP",   "Delta",  "Ghost",
                                  "VWAP",  "ZC_SMART", "aitwap", "smarT_F"};
        QTest::newRow("VWAP c") << "VWAP"
                                << "c" << QStringList{"A", "B", "D"} << unitedC << QStringList();
        QTest::newRow("AITWAP e") << "AITWAP"
                                  << "e" << QStringList{"D"}
                                  << QStringList{"AIPOV", "AITWAP", "VWAP"} << QStringList{"VWAP"};
        QTest::newRow("unknown category")
            << "VWAP"
            << "zz" << QStringList() << QStringList() << QStringList();
    }
    void byCategory()
    {
        QFETCH(QString, algo);
        QFETCH(QString, category);
        QFETCH(QStringList, accounts);
        QFETCH(QStringList, united);
        QFETCH(QStringList, common);
        for (const QString account : {"A", "B", "C", "D", "X"})
            QCOMPARE(mgr->hasCorrespAuthority(account, algo, category), accounts.contains(account));
        QCOMPARE(mgr->GetAuthorityAccountList(algo, category), accounts);
        QVERIFY(mgr->GetAuthorityUnion(category) == entriesFor(united));
        QVERIFY(mgr->GetAuthorityIntersection(category) == entriesFor(common));
    }
};

QTEST_GUILESS_MAIN(TestStrategyAuthority)

#include "tst_strategyauthority.moc"
