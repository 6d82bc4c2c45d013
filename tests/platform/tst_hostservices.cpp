// The small host services the library reads besides the algo catalogue:
// display factors and fund accounts, report-text parsing and latest prices.
// They are process-wide, so every test starts from a reset state.

#include <platform/businessdata.h>
#include <platform/helmbusinessdata.h>
#include <platform/kxthread.h>
#include <platform/helmutils.h>
#include <platform/quotehandler.h>

#include <QtTest>

using Helm = HelmBusinessDataInterface;

class TestHostServices : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        Helm::Reset();
        CommonQuotaHandler::instance().Reset();
    }

    // Values by symbol: the last one set wins, others keep their defaults
    // (display factor 1, price 0 whatever the flag), and Reset forgets them.
    void valuesBySymbol_data()
    {
        QTest::addColumn<bool>("reset");
        QTest::newRow("set") << false;
        QTest::newRow("after Reset") << true;
    }
    void valuesBySymbol()
    {
        QFETCH(bool, reset);
        CommonQuotaHandler& quotes = CommonQuotaHandler::instance();
        for (int factor : {10, 100})
            Helm::SetDispFactor("110001", factor);
        for (double price : {10.5, 10.48})
            quotes.SetLatestPrice("600000", price);
        if (reset)
            init();
        QCOMPARE(Helm::GetDispFactorBySymbol("110001"), reset ? 1 : 100);
        QCOMPARE(Helm::GetDispFactorBySymbol("600000"), 1);
        QCOMPARE(quotes.GetLatestPrice("600000", 3), reset ? 0.0 : 10.48);
        QCOMPARE(quotes.GetLatestPrice("110001", 0), 0.0);
    }

    // Records of a trading account, in insertion order; only the first
    // without includeAll. Rows run in order, so a Reset that kept the
    // records of the previous row would show as duplicates.
    void accountList_data()
    {
        QTest::addColumn<QString>("trading");
        QTest::addColumn<bool>("includeAll");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("first only") << "T1" << false << QStringList{"T1/F-b"};
        QTest::newRow("all, in insertion order")
            << "T1" << true << QStringList{"T1/F-b", "T1/F-a", "T1/F-c"};
        QTest::newRow("unknown account") << "T9" << true << QStringList();
    }
    void accountList()
    {
        QFETCH(QString, trading);
        QFETCH(bool, includeAll);
        QFETCH(QStringList, expected);
        for (const QStringList& r :
             {QStringList{"T1", "F-b"}, {"T2", "G-1"}, {"T1", "F-a"}, {"T1", "F-c"}})
            Helm::AddAccountInfo({r[0], r[1], "name of " + r[1], QString()});
        QStringList found;
        for (const tagUserAccountInfo& info :
             Helm::GetAccountInfoListFromTrade(trading, includeAll))
            found << info.tradingAccount + "/" + info.fundAccount;
        QCOMPARE(found, expected);
    }

    // A JSON object gives its members (numbers as numbers, nested objects as
    // maps, arrays as lists) and an empty result; anything else an error
    // text and an emptied map.
    void transStr2Map_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QVariantMap>("expected");
        QTest::addColumn<bool>("ok");
        const QVariantMap none;
        QTest::newRow("every kind of member, unicode raw and escaped")
            << R"({"id":"算法","esc":"\u7b97\u6cd5","qty":300,"px":10.25,"on":true,"nil":null,)"
               R"("leg":{"side":"1"},"list":[1,"two"]})"
            << QVariantMap{{"id", "算法"},
                           {"esc", "算法"},
                           {"qty", 300},
                           {"px", 10.25},
                           {"on", true},
                           {"nil", QVariant()},
                           {"leg", QVariantMap{{"side", "1"}}},
                           {"list", QVariantList{1, "two"}}}
            << true;
        QTest::newRow("empty object") << "  {}  " << none << true;
        QTest::newRow("unterminated object") << R"({"a":1)" << none << false;
        QTest::newRow("array") << R"([{"a":1}])" << none << false;
        QTest::newRow("empty text") << "" << none << false;
    }
    void transStr2Map()
    {
        QFETCH(QString, text);
        QFETCH(QVariantMap, expected);
        QFETCH(bool, ok);
        VariantMap out{{"stale", "left over"}};
        QCOMPARE(HelmUtils::TransStr2Map(text, out).trimmed().isEmpty(), ok);
        // Compared as JSON, so that the text "300" does not pass for 300.
        QCOMPARE(QJsonObject::fromVariantMap(out), QJsonObject::fromVariantMap(expected));
        QVERIFY(!out.contains("leg")
                || (out["leg"].type() == QVariant::Map && out["list"].type() == QVariant::List));
    }

    // The login account and security types are replaced, looked up exactly
    // and forgotten by Reset; a running thread may be destroyed.
    void businessDataAndThread()
    {
        CBusinessDataBase* data = CBusinessDataBase::GetInstance();
        data->SetLoginAccount("u1");
        data->SetLoginAccount("u2");
        data->SetSecurityType("204001.SH", "Bond");
        QCOMPARE(data->GetLoginAccount(), QString("u2"));
        QCOMPARE(data->GetSecurityTypeBySymbol("204001.SH"), QString("Bond"));
        QCOMPARE(data->GetSecurityTypeBySymbol("204001.sh"), QString());
        data->Reset();
        QVERIFY(data->GetLoginAccount().isEmpty()
                && data->GetSecurityTypeBySymbol("204001.SH").isEmpty());

        auto* thread = new KxThread;
        thread->start();
        QVERIFY(QTest::qWaitFor([thread] { return thread->isRunning(); }));
        delete thread; // quits and waits instead of aborting the process
    }
};

QTEST_GUILESS_MAIN(TestHostServices)

#include "tst_hostservices.moc"
