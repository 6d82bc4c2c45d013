// The small host services the library reads besides the algo catalogue:
// login account and security types, display factors and fund accounts,
// report-text parsing, latest prices and the platform thread class. They are
// process-wide, so every test starts from a reset state.

#include <platform/businessdata.h>
#include <platform/helmbusinessdata.h>
#include <platform/helmutils.h>
#include <platform/kxthread.h>
#include <platform/quotehandler.h>
#include <platform/varianttypes.h>

#include <QSignalSpy>
#include <QtTest>

#include <memory>

namespace {

// One step of feeding a host service: key and value.
struct Assignment
{
    QString key;
    QString value;
};
using Assignments = QList<Assignment>;

tagUserAccountInfo account(const QString& trading, const QString& fund, const QString& name)
{
    tagUserAccountInfo info;
    info.tradingAccount = trading;
    info.fundAccount = fund;
    info.fundAccountName = name;
    return info;
}

QStringList fundAccountsOf(const QList<tagUserAccountInfo>& list)
{
    QStringList funds;
    for (const tagUserAccountInfo& info : list)
        funds << info.fundAccount;
    return funds;
}

// One parsing case of TransStr2Map.
struct ParseCase
{
    QString text;
    VariantMap before;     // what `out` holds when called
    bool ok = false;
    VariantMap expected;   // compared unless nullKeys names the member
    QStringList nullKeys;  // members that must be present and null
};

bool isNumber(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

// Structural equality of parsed values: numbers compare by value whatever
// integral or floating type carries them, but a number never equals the
// text of a number, and maps and lists must keep their kind.
bool sameValue(const QVariant& actual, const QVariant& expected)
{
    if (isNumber(expected))
        return isNumber(actual) && actual.toDouble() == expected.toDouble();
    if (expected.userType() != actual.userType())
        return false;
    if (expected.userType() == qMetaTypeId<VariantMap>()) {
        const VariantMap a = actual.value<VariantMap>();
        const VariantMap e = expected.value<VariantMap>();
        if (a.keys() != e.keys())
            return false;
        for (auto it = e.cbegin(); it != e.cend(); ++it) {
            if (!sameValue(a.value(it.key()), it.value()))
                return false;
        }
        return true;
    }
    if (expected.userType() == qMetaTypeId<QVariantList>()) {
        const QVariantList a = actual.toList();
        const QVariantList e = expected.toList();
        if (a.size() != e.size())
            return false;
        for (int i = 0; i < e.size(); ++i) {
            if (!sameValue(a.at(i), e.at(i)))
                return false;
        }
        return true;
    }
    return actual == expected;
}

} // namespace

Q_DECLARE_METATYPE(Assignments)
Q_DECLARE_METATYPE(ParseCase)

class TestHostServices : public QObject
{
    Q_OBJECT
private slots:
    void init();

    void loginAccount_data();
    void loginAccount();
    void securityTypes_data();
    void securityTypes();
    void businessDataReset();

    void displayFactor_data();
    void displayFactor();
    void accountsUnderTradingAccount_data();
    void accountsUnderTradingAccount();
    void helmBusinessDataReset();

    void transStr2Map_data();
    void transStr2Map();

    void latestPrice_data();
    void latestPrice();
    void quoteReset();

    void kxThreadDestroyedWhileRunning_data();
    void kxThreadDestroyedWhileRunning();
};

void TestHostServices::init()
{
    CBusinessDataBase::GetInstance()->Reset();
    HelmBusinessDataInterface::Reset();
    CommonQuotaHandler::instance().Reset();
}

// ---- CBusinessDataBase --------------------------------------------------

void TestHostServices::loginAccount_data()
{
    QTest::addColumn<QStringList>("logins");
    QTest::addColumn<QString>("expected");

    QTest::newRow("nobody logged in") << QStringList() << QString();
    QTest::newRow("one login") << QStringList{QStringLiteral("10001")} << QStringLiteral("10001");
    QTest::newRow("re-login replaces")
        << QStringList{QStringLiteral("10001"), QStringLiteral("20002")}
        << QStringLiteral("20002");
    QTest::newRow("log out with an empty account")
        << QStringList{QStringLiteral("10001"), QString()} << QString();
}

void TestHostServices::loginAccount()
{
    QFETCH(QStringList, logins);
    QFETCH(QString, expected);
    CBusinessDataBase* data = CBusinessDataBase::GetInstance();
    QVERIFY(data);
    QCOMPARE(CBusinessDataBase::GetInstance(), data);

    for (const QString& login : qAsConst(logins))
        data->SetLoginAccount(login);
    QCOMPARE(data->GetLoginAccount(), expected);
}

void TestHostServices::securityTypes_data()
{
    QTest::addColumn<Assignments>("types");
    QTest::addColumn<QString>("symbol");
    QTest::addColumn<QString>("expected");

    const QString stock = QStringLiteral("Stock");
    const QString bond = QStringLiteral("Bond");
    QTest::newRow("never set") << Assignments() << QStringLiteral("600000") << QString();
    QTest::newRow("set") << Assignments{{QStringLiteral("600000"), stock}}
                         << QStringLiteral("600000") << stock;
    QTest::newRow("last type wins")
        << Assignments{{QStringLiteral("110001"), stock}, {QStringLiteral("110001"), bond}}
        << QStringLiteral("110001") << bond;
    QTest::newRow("other symbols unaffected")
        << Assignments{{QStringLiteral("600000"), stock}, {QStringLiteral("110001"), bond}}
        << QStringLiteral("600000") << stock;
    QTest::newRow("symbol matched exactly") << Assignments{{QStringLiteral("600000"), stock}}
                                            << QStringLiteral("600000.SH") << QString();
}

void TestHostServices::securityTypes()
{
    QFETCH(Assignments, types);
    QFETCH(QString, symbol);
    QFETCH(QString, expected);
    CBusinessDataBase* data = CBusinessDataBase::GetInstance();

    for (const Assignment& type : qAsConst(types))
        data->SetSecurityType(type.key, type.value);
    QCOMPARE(data->GetSecurityTypeBySymbol(symbol), expected);
}

void TestHostServices::businessDataReset()
{
    CBusinessDataBase* data = CBusinessDataBase::GetInstance();
    data->SetLoginAccount(QStringLiteral("10001"));
    data->SetSecurityType(QStringLiteral("600000"), QStringLiteral("Stock"));

    data->Reset();

    QCOMPARE(data->GetLoginAccount(), QString());
    QCOMPARE(data->GetSecurityTypeBySymbol(QStringLiteral("600000")), QString());
    // Usable again after a reset.
    data->SetSecurityType(QStringLiteral("600000"), QStringLiteral("Bond"));
    QCOMPARE(data->GetSecurityTypeBySymbol(QStringLiteral("600000")), QStringLiteral("Bond"));
}

// ---- HelmBusinessDataInterface ------------------------------------------

void TestHostServices::displayFactor_data()
{
    QTest::addColumn<Assignments>("factors");
    QTest::addColumn<QString>("symbol");
    QTest::addColumn<int>("expected");

    QTest::newRow("never configured is 1") << Assignments() << QStringLiteral("600000") << 1;
    QTest::newRow("configured") << Assignments{{QStringLiteral("110001"), QStringLiteral("10")}}
                                << QStringLiteral("110001") << 10;
    QTest::newRow("override")
        << Assignments{{QStringLiteral("110001"), QStringLiteral("10")},
                       {QStringLiteral("110001"), QStringLiteral("100")}}
        << QStringLiteral("110001") << 100;
    QTest::newRow("other symbol keeps default")
        << Assignments{{QStringLiteral("110001"), QStringLiteral("10")}}
        << QStringLiteral("600000") << 1;
    QTest::newRow("configured back to 1")
        << Assignments{{QStringLiteral("110001"), QStringLiteral("10")},
                       {QStringLiteral("110001"), QStringLiteral("1")}}
        << QStringLiteral("110001") << 1;
}

void TestHostServices::displayFactor()
{
    QFETCH(Assignments, factors);
    QFETCH(QString, symbol);
    QFETCH(int, expected);

    for (const Assignment& factor : qAsConst(factors))
        HelmBusinessDataInterface::SetDispFactor(factor.key, factor.value.toInt());
    QCOMPARE(HelmBusinessDataInterface::GetDispFactorBySymbol(symbol), expected);
}

void TestHostServices::accountsUnderTradingAccount_data()
{
    QTest::addColumn<QString>("tradingAccount");
    QTest::addColumn<bool>("includeAll");
    QTest::addColumn<QStringList>("expectedFunds");

    QTest::newRow("all, in insertion order")
        << QStringLiteral("T1") << true
        << QStringList{QStringLiteral("F-b"), QStringLiteral("F-a"), QStringLiteral("F-c")};
    QTest::newRow("first only") << QStringLiteral("T1") << false
                                << QStringList{QStringLiteral("F-b")};
    QTest::newRow("single record") << QStringLiteral("T2") << true
                                   << QStringList{QStringLiteral("G-1")};
    QTest::newRow("unknown account, all") << QStringLiteral("T9") << true << QStringList();
    QTest::newRow("unknown account, first") << QStringLiteral("T9") << false << QStringList();
}

void TestHostServices::accountsUnderTradingAccount()
{
    QFETCH(QString, tradingAccount);
    QFETCH(bool, includeAll);
    QFETCH(QStringList, expectedFunds);

    // Interleaved, and not in sorted order, so that neither grouping nor
    // sorting can pass for insertion order.
    HelmBusinessDataInterface::AddAccountInfo(
        account(QStringLiteral("T1"), QStringLiteral("F-b"), QStringLiteral("基金乙")));
    HelmBusinessDataInterface::AddAccountInfo(
        account(QStringLiteral("T2"), QStringLiteral("G-1"), QStringLiteral("基金壹")));
    HelmBusinessDataInterface::AddAccountInfo(
        account(QStringLiteral("T1"), QStringLiteral("F-a"), QStringLiteral("基金甲")));
    HelmBusinessDataInterface::AddAccountInfo(
        account(QStringLiteral("T1"), QStringLiteral("F-c"), QStringLiteral("基金丙")));

    const QList<tagUserAccountInfo> list =
        HelmBusinessDataInterface::GetAccountInfoListFromTrade(tradingAccount, includeAll);
    QCOMPARE(fundAccountsOf(list), expectedFunds);
    for (const tagUserAccountInfo& info : list) {
        QCOMPARE(info.tradingAccount, tradingAccount);
        QVERIFY(!info.fundAccountName.isEmpty());
    }
}

void TestHostServices::helmBusinessDataReset()
{
    HelmBusinessDataInterface::SetDispFactor(QStringLiteral("110001"), 10);
    HelmBusinessDataInterface::AddAccountInfo(
        account(QStringLiteral("T1"), QStringLiteral("F-a"), QStringLiteral("基金甲")));

    HelmBusinessDataInterface::Reset();

    const QString trading = QStringLiteral("T1");
    QCOMPARE(HelmBusinessDataInterface::GetDispFactorBySymbol(QStringLiteral("110001")), 1);
    QVERIFY(HelmBusinessDataInterface::GetAccountInfoListFromTrade(trading, true).isEmpty());
    // Records added after a reset start a fresh list.
    HelmBusinessDataInterface::AddAccountInfo(
        account(trading, QStringLiteral("F-z"), QStringLiteral("基金子")));
    QCOMPARE(fundAccountsOf(HelmBusinessDataInterface::GetAccountInfoListFromTrade(trading, true)),
             QStringList{QStringLiteral("F-z")});
}

// ---- HelmUtils::TransStr2Map --------------------------------------------

void TestHostServices::transStr2Map_data()
{
    QTest::addColumn<ParseCase>("parse");

    const VariantMap stale{{QStringLiteral("stale"), QStringLiteral("left over")}};

    {
        ParseCase c;
        c.text = QStringLiteral(
            R"({"id":"I-1","qty":300,"px":10.25,"neg":-2,"on":true,"off":false,"none":null,)"
            R"("leg":{"symbol":"600000","side":"1","inner":{"deep":1}},)"
            R"("list":[1,"two",{"three":3},[4]]})");
        c.ok = true;
        c.expected = VariantMap{
            {QStringLiteral("id"), QStringLiteral("I-1")},
            {QStringLiteral("qty"), 300.0},
            {QStringLiteral("px"), 10.25},
            {QStringLiteral("neg"), -2.0},
            {QStringLiteral("on"), true},
            {QStringLiteral("off"), false},
            {QStringLiteral("leg"),
             VariantMap{{QStringLiteral("symbol"), QStringLiteral("600000")},
                        {QStringLiteral("side"), QStringLiteral("1")},
                        {QStringLiteral("inner"), VariantMap{{QStringLiteral("deep"), 1.0}}}}},
            {QStringLiteral("list"),
             QVariantList{1.0, QStringLiteral("two"),
                          VariantMap{{QStringLiteral("three"), 3.0}}, QVariantList{4.0}}},
        };
        c.nullKeys = QStringList{QStringLiteral("none")};
        QTest::newRow("object with every kind of member") << c;
    }
    {
        ParseCase c;
        c.text = QStringLiteral(R"({"raw":"算法","escaped":"\u7b97\u6cd5","key 键":"v"})");
        c.ok = true;
        c.expected = VariantMap{{QStringLiteral("raw"), QStringLiteral("算法")},
                                {QStringLiteral("escaped"), QStringLiteral("算法")},
                                {QStringLiteral("key 键"), QStringLiteral("v")}};
        QTest::newRow("unicode, raw and escaped") << c;
    }
    {
        ParseCase c;
        c.text = QStringLiteral("  {}  ");
        c.ok = true;
        QTest::newRow("empty object") << c;
    }
    {
        ParseCase c;
        c.text = QStringLiteral(R"({"fresh":1})");
        c.before = stale;
        c.ok = true;
        c.expected = VariantMap{{QStringLiteral("fresh"), 1.0}};
        QTest::newRow("earlier content replaced") << c;
    }

    // Failures: `out` holds something beforehand and must be emptied.
    const auto failure = [&](const char* name, const QString& text) {
        ParseCase c;
        c.text = text;
        c.before = stale;
        c.ok = false;
        QTest::newRow(name) << c;
    };
    failure("unterminated object", QStringLiteral(R"({"a":1)"));
    failure("missing value", QStringLiteral(R"({"a":})"));
    failure("not json at all", QStringLiteral("strategyID=1;qty=2"));
    failure("array text", QStringLiteral(R"([{"a":1}])"));
    failure("empty text", QString());
    failure("whitespace only", QStringLiteral("   "));
    failure("number scalar", QStringLiteral("42"));
    failure("string scalar", QStringLiteral(R"("text")"));
}

void TestHostServices::transStr2Map()
{
    QFETCH(ParseCase, parse);

    VariantMap out = parse.before;
    const QString error = HelmUtils::TransStr2Map(parse.text, out);

    if (!parse.ok) {
        QVERIFY2(!error.trimmed().isEmpty(), "a failure must explain itself");
        QVERIFY(out.isEmpty());
        return;
    }
    QVERIFY2(error.isEmpty(), qPrintable(error));
    for (const QString& key : qAsConst(parse.nullKeys)) {
        QVERIFY2(out.contains(key), qPrintable(key));
        QVERIFY2(out.value(key).isNull(), qPrintable(key));
        out.remove(key);
    }
    QCOMPARE(out.keys(), parse.expected.keys());
    for (auto it = parse.expected.cbegin(); it != parse.expected.cend(); ++it) {
        QVERIFY2(sameValue(out.value(it.key()), it.value()), qPrintable(it.key()));
    }
}

// ---- CommonQuotaHandler -------------------------------------------------

void TestHostServices::latestPrice_data()
{
    QTest::addColumn<Assignments>("prices");
    QTest::addColumn<QString>("symbol");
    QTest::addColumn<int>("flag");
    QTest::addColumn<double>("expected");

    QTest::newRow("unknown symbol is 0") << Assignments() << QStringLiteral("600000") << 0 << 0.0;
    QTest::newRow("price set") << Assignments{{QStringLiteral("600000"), QStringLiteral("10.5")}}
                               << QStringLiteral("600000") << 0 << 10.5;
    QTest::newRow("last price wins")
        << Assignments{{QStringLiteral("600000"), QStringLiteral("10.5")},
                       {QStringLiteral("600000"), QStringLiteral("10.48")}}
        << QStringLiteral("600000") << 0 << 10.48;
    QTest::newRow("other symbol still 0")
        << Assignments{{QStringLiteral("600000"), QStringLiteral("10.5")}}
        << QStringLiteral("000001") << 0 << 0.0;
    // One price per symbol: the kind flag does not select another one.
    QTest::newRow("any flag reads the same price")
        << Assignments{{QStringLiteral("600000"), QStringLiteral("10.5")}}
        << QStringLiteral("600000") << 3 << 10.5;
}

void TestHostServices::latestPrice()
{
    QFETCH(Assignments, prices);
    QFETCH(QString, symbol);
    QFETCH(int, flag);
    QFETCH(double, expected);
    CommonQuotaHandler& quotes = CommonQuotaHandler::instance();

    for (const Assignment& price : qAsConst(prices))
        quotes.SetLatestPrice(price.key, price.value.toDouble());
    QCOMPARE(quotes.GetLatestPrice(symbol, flag), expected);
}

void TestHostServices::quoteReset()
{
    CommonQuotaHandler& quotes = CommonQuotaHandler::instance();
    quotes.SetLatestPrice(QStringLiteral("600000"), 10.5);
    quotes.Reset();
    QCOMPARE(quotes.GetLatestPrice(QStringLiteral("600000"), 0), 0.0);
}

// ---- KxThread -----------------------------------------------------------

void TestHostServices::kxThreadDestroyedWhileRunning_data()
{
    QTest::addColumn<bool>("start");
    QTest::addColumn<bool>("busyWorker");

    QTest::newRow("never started") << false << false;
    QTest::newRow("idle event loop") << true << false;
    QTest::newRow("event loop with queued work") << true << true;
}

void TestHostServices::kxThreadDestroyedWhileRunning()
{
    QFETCH(bool, start);
    QFETCH(bool, busyWorker);

    auto thread = std::make_unique<KxThread>();
    QSignalSpy finishedSpy(thread.get(), &QThread::finished);
    QSignalSpy destroyedSpy(thread.get(), &QObject::destroyed);

    // A worker whose queued call is still running when the thread goes.
    QObject worker;
    QAtomicInt started = 0;
    QAtomicInt finished = 0;
    if (start) {
        worker.moveToThread(thread.get());
        thread->start();
        QTRY_VERIFY(thread->isRunning());
        if (busyWorker) {
            QMetaObject::invokeMethod(
                &worker,
                [&started, &finished] {
                    started.storeRelease(1);
                    QThread::msleep(100);
                    finished.storeRelease(1);
                },
                Qt::QueuedConnection);
            QTRY_COMPARE(started.loadAcquire(), 1);
        }
    }

    // A plain QThread aborts the process here when still running.
    thread.reset();

    QCOMPARE(destroyedSpy.count(), 1);
    QCOMPARE(finishedSpy.count(), start ? 1 : 0);
    // Destruction waited for the running call instead of cutting it off.
    QCOMPARE(finished.loadAcquire(), busyWorker ? 1 : 0);
}

QTEST_GUILESS_MAIN(TestHostServices)

#include "tst_hostservices.moc"
