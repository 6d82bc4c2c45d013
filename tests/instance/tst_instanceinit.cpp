// Filling an instance from server records: the first full record, the legs
// of its parameters, query answers and their change flags, detail records,
// and the parameter text.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

namespace {

namespace Strategy = Tessel_Fields::Strategy;
namespace Content = Algo_Fields::AlgoInstContentInfo;
namespace HelmKey = Algo_Fields::HelmStrategy;

const QString kAlgo = QStringLiteral("AITWAP");
const QString kPairAlgo = QStringLiteral("AIPAIR");
const QString kDepositAlgo = QStringLiteral("DepositAlgo");
const QString kMultiAlgo = QStringLiteral("BasisAlgo");

VariantMap fullRecord()
{
    return {
        {Strategy::strategyID, QStringLiteral("500")},
        {Strategy::strategyParas,
         QStringLiteral("{\"comment\":\"hello\",\"traderOrder\":\"Buy\",\"instMode\":\"multi\","
                        "\"participationrate\":\"0.2\",\"OpenClose\":\"Open\","
                        "\"InvestType\":\"Hedge\"}")},
        {Strategy::strategyName, kAlgo},
        {Strategy::strategyType, QStringLiteral("Normal")},
        {Strategy::strategyStatus, QStringLiteral("1")},
        {Strategy::StrategyInstanceAlias, QStringLiteral("my twap")},
        {Algo_Fields::AlgoInstProgressFields::TargetQty, 1000},
        {Algo_Fields::AlgoInstProgressFields::FilledQty, 250},
        {Algo_Fields::AlgoInstProgressFields::DealAmount, 2500.5},
        {Algo_Fields::AlgoInstProgressFields::Progress, 0.25},
        {Algo_Fields::AlgoInstProgressFields::TargetAmount, 10000},
        {Tessel_Fields::UserAccount::reMarks, QStringLiteral("remark")},
        {HelmKey::strategyDeleted, QStringLiteral("0")},
        {HelmKey::AlgCreateTime, QStringLiteral("20261120-09:15:00")},
        {Helm_Fields::Strategy::clAlgoID, QStringLiteral("cl-500")},
        {Tessel_Fields::UserAccount::userID, QStringLiteral("trader01")},
    };
}

VariantMap security(const QString& symbol, const QString& side, double qty)
{
    return {{Content::Symbol, symbol}, {Content::OrderSide, side}, {Content::Quantity, qty},
            {Content::Exchange, QStringLiteral("SH")}};
}

// An instance whose catalogue entry is known, in status "1".
InstanceInfoBase* knownInstance(const QString& algo = kAlgo)
{
    auto* inst = new InstanceInfoBase;
    inst->setInstanceID(QStringLiteral("700"));
    inst->setStrategyName(algo);
    inst->setInstAlgoType(QStringLiteral("Normal"));
    inst->setStatus(QStringLiteral("1"));
    return inst;
}

} // namespace

class TestInstanceInit : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup();

    void getParamFromJosn_data();
    void getParamFromJosn();
    void fillMetaData_data();
    void fillMetaData();

    void initInfoFillsTheRecord();
    void initInfoWithBrokenParameters();
    void initInfoGridDefaultsTradeOrder();

    void initSymbolInfoBuildsLegs();
    void initSymbolInfoFallsBackToRecord();
    void initSymbolInfoIsIdempotent();
    void initSymbolInfoScalesTargetByDisplayFactor();
    void initSymbolInfoMakesT0Legs();
    void initSymbolInfoSkipsUnderscoreSymbols();
    void initSymbolInfoAcceptsJsonList();

    void queryFlagsForNewInstance_data();
    void queryFlagsForNewInstance();
    void queryRefusesUnknownAndDeposit_data();
    void queryRefusesUnknownAndDeposit();
    void queryFlagsForKnownInstance_data();
    void queryFlagsForKnownInstance();
    void queryTakesNameForMultiOrUntyped_data();
    void queryTakesNameForMultiOrUntyped();

    void detailRefreshesInstance();
    void detailOfAnotherInstanceIsIgnored();

    void updateParamMapTimes_data();
    void updateParamMapTimes();
    void updateParamMapDisplaySettingsAndAccount();
    void updateParamMapIgnoresBrokenJson();
};

void TestInstanceInit::initTestCase()
{
    KxAlgoDataMgr::instance().setStrategies({
        AesStrategy(kAlgo, QStringLiteral("TWAP"), QStringLiteral("Normal"), QStringLiteral("1")),
        AesStrategy(kPairAlgo, QStringLiteral("Pair"), QStringLiteral("Normal"),
                    QStringLiteral("2")),
        AesStrategy(kDepositAlgo, QString(), Algo_Values::AlgoGlobalType::deposit,
                    QStringLiteral("1")),
        AesStrategy(kMultiAlgo, QString(), Algo_Values::AlgoGlobalType::multiStr,
                    QStringLiteral("2")),
        AesStrategy(QStringLiteral("GridTradingStrategy"), QString(), QStringLiteral("Normal"),
                    QStringLiteral("1")),
    });
}

void TestInstanceInit::cleanup()
{
    HelmBusinessDataInterface::Reset();
}

void TestInstanceInit::getParamFromJosn_data()
{
    QTest::addColumn<QString>("json");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("parseError");

    QTest::newRow("text") << "{\"comment\":\"abc\"}" << "comment" << "abc" << false;
    QTest::newRow("number") << "{\"rate\":0.5}" << "rate" << "0.5" << false;
    QTest::newRow("bool") << "{\"on\":true}" << "on" << "true" << false;
    QTest::newRow("absent") << "{\"a\":1}" << "b" << "" << false;
    QTest::newRow("nested object") << "{\"a\":{\"b\":1}}" << "a" << "" << false;
    QTest::newRow("array text") << "[1,2]" << "a" << "" << false;
    QTest::newRow("broken") << "{\"a\":" << "a" << "" << true;
    QTest::newRow("empty") << "" << "a" << "" << true;
}

void TestInstanceInit::getParamFromJosn()
{
    QFETCH(QString, json);
    QFETCH(QString, key);
    QFETCH(QString, value);
    QFETCH(bool, parseError);

    InstanceInfoBase inst;
    LogCapture log;
    QCOMPARE(inst.getParamFromJosn(json, key), value);
    QCOMPARE(log.contains(QtDebugMsg,
                          QStringLiteral("InstanceInfoBase::getParamFromJosn ###json error info:")),
             parseError);
}

void TestInstanceInit::fillMetaData_data()
{
    QTest::addColumn<QString>("metaData");
    QTest::addColumn<QString>("text");

    QTest::newRow("both keys") << "[{\"orderInfo\":\"ord\",\"basePrice\":\"10.5\"}]" << "ord-10.5";
    QTest::newRow("keys in two elements") << "[{\"orderInfo\":\"ord\"},{\"basePrice\":3}]"
                                          << "ord-3";
    QTest::newRow("neither key") << "[{\"x\":1}]" << "-";
    QTest::newRow("empty array") << "[]" << "-";
    QTest::newRow("object") << "{\"orderInfo\":\"ord\"}" << "";
    QTest::newRow("broken") << "[{" << "";
    QTest::newRow("empty") << "" << "";
}

void TestInstanceInit::fillMetaData()
{
    QFETCH(QString, metaData);
    QFETCH(QString, text);
    InstanceInfoBase inst;
    QCOMPARE(inst.fillMetaData(metaData), text);
}

void TestInstanceInit::initInfoFillsTheRecord()
{
    InstanceInfoBase inst;
    inst.initInfo(fullRecord());
    QCOMPARE(inst.instanceID(), QStringLiteral("500"));
    QCOMPARE(inst.strategyName(), kAlgo);
    QCOMPARE(inst.instAlgoType(), QStringLiteral("Normal"));
    QCOMPARE(inst.status(), QStringLiteral("1"));
    QCOMPARE(inst.instanceAlias(), QStringLiteral("my twap"));
    QCOMPARE(inst.targetQty(), 1000.0);
    QCOMPARE(inst.filledQty(), 250.0);
    QCOMPARE(inst.filledBalance(), 2500.5);
    QCOMPARE(inst.progrees(), 0.25);
    QCOMPARE(inst.targetAmount(), 10000.0);
    QCOMPARE(inst.remark(), QStringLiteral("remark"));
    QCOMPARE(inst.getStrategyDeleted(), QStringLiteral("0"));
    QCOMPARE(inst.getCreateTime(), QDateTime(QDate(2026, 11, 20), QTime(9, 15)));
    QCOMPARE(inst.clInstanceID(), QStringLiteral("cl-500"));
    QCOMPARE(inst.getCreateUser(), QStringLiteral("trader01"));
    QCOMPARE(inst.getInstanceComments(), QStringLiteral("hello"));
    QCOMPARE(inst.getInstanceTradeOrder(), QStringLiteral("Buy"));
    QCOMPARE(inst.getInstMode(), QStringLiteral("multi"));
    QCOMPARE(inst.getMarketRate(), QStringLiteral("0.2"));
    QCOMPARE(inst.getOpenSide(), QStringLiteral("Open"));
    QCOMPARE(inst.getInvestType(), QStringLiteral("Hedge"));
}

void TestInstanceInit::initInfoWithBrokenParameters()
{
    VariantMap record = fullRecord();
    record.insert(Strategy::strategyParas, QStringLiteral("not json"));
    record.insert(Algo_Fields::AlgoInstProgressFields::FilledQty, QStringLiteral("abc"));
    InstanceInfoBase inst;
    LogCapture log;
    inst.initInfo(record);
    QCOMPARE(inst.getInstanceComments(), QString());
    QCOMPARE(inst.getMarketRate(), QString());
    QCOMPARE(inst.getOpenSide(), QString());
    QCOMPARE(inst.getInvestType(), QString());
    QCOMPARE(inst.getInstanceTradeOrder(), QString());
    // No mode in the parameters: the catalogue decides (a single-security algo).
    QCOMPARE(inst.getInstMode(), Algo_Values::instMode::singleMode);
    QCOMPARE(inst.filledQty(), 0.0); // a text that is no number reads as 0
    QVERIFY(log.count(QtDebugMsg, QStringLiteral("###json error info:")) >= 6);
}

void TestInstanceInit::initInfoGridDefaultsTradeOrder()
{
    VariantMap record = fullRecord();
    record.insert(Strategy::strategyName, QStringLiteral("GridTradingStrategy"));
    record.insert(Strategy::strategyParas, QStringLiteral("{}"));
    InstanceInfoBase inst;
    inst.initInfo(record);
    QCOMPARE(inst.getInstanceTradeOrder(), QStringLiteral("All"));
}

void TestInstanceInit::initSymbolInfoBuildsLegs()
{
    HelmBusinessDataInterface::AddAccountInfo(
        {QStringLiteral("T1"), QStringLiteral("F1"), QStringLiteral("Fund"), QString()});
    InstanceInfoBase inst;
    inst.setInstanceID(QStringLiteral("42"));
    inst.setStrategyName(kAlgo);
    VariantMap first = security(QStringLiteral("600000.SH"), QStringLiteral("1"), 300);
    first.insert(Content::TradingAccount, QStringLiteral("T1"));
    first.insert(Content::SecurityAccount, QStringLiteral("A1"));
    first.insert(Algo_Values::AlgoParamId::entrustProp, QStringLiteral("LIMIT"));
    first.insert(Content::PriceLimits, QStringLiteral("10.00"));
    first.insert(Content::StockPriceLimit, QStringLiteral("10.50"));
    first.insert(Content::Quantity_Amount, 3150);
    const VariantMap params{{Content::SymbolParamKey,
                             QVariantList{first, security(QStringLiteral("000001.SZ"),
                                                          QStringLiteral("2"), 200)}}};
    const VariantMap legStates{
        {QStringLiteral("42_600000.SH_1"),
         VariantMap{{HelmKey::ClParentOrderID, QStringLiteral("P1")},
                    {Strategy::strategyStatus, QStringLiteral("1")}}}};

    LogCapture log;
    inst.initSymbolInfo(params, legStates);
    QCOMPARE(inst.getSymbolSize(), 2);
    SymbolInfoBase* leg = inst.getSymbolInfo(QStringLiteral("42_600000.SH_1"));
    QVERIFY(leg);
    QCOMPARE(leg->getKey(), QStringLiteral("42_600000.SH_1"));
    QCOMPARE(leg->instanceID(), QStringLiteral("42"));
    QCOMPARE(leg->strategyName(), kAlgo);
    QCOMPARE(leg->symbol(), QStringLiteral("600000.SH"));
    QCOMPARE(leg->orderSide(), QStringLiteral("1"));
    QCOMPARE(leg->exchange(), QStringLiteral("SH"));
    QCOMPARE(leg->getTradingAccount(), QStringLiteral("T1"));
    QCOMPARE(leg->getFundAccount(), QStringLiteral("F1"));
    QCOMPARE(leg->getSecurityAccout(), QStringLiteral("A1"));
    QCOMPARE(leg->entrustProp(), QStringLiteral("LIMIT"));
    QCOMPARE(leg->limitPrice(), QStringLiteral("10.50")); // the stock limit wins when present
    QCOMPARE(leg->targetQty(), 300.0);
    QCOMPARE(leg->targetAmount(), 3150.0);
    QCOMPARE(leg->getClParentID(), QStringLiteral("P1"));
    QCOMPARE(leg->getStatus(), QStringLiteral("1"));
    SymbolInfoBase* other = inst.getSymbolInfo(QStringLiteral("42_000001.SZ_2"));
    QVERIFY(other);
    QCOMPARE(other->getStatus(), QString()); // no leg state for it
    QCOMPARE(inst.targetQty(), 500.0);
    QVERIFY(log.contains(QtDebugMsg, QStringLiteral("###instTargetQty:  500")));
}

void TestInstanceInit::initSymbolInfoFallsBackToRecord()
{
    InstanceInfoBase inst;
    inst.setInstanceID(QStringLiteral("43"));
    const VariantMap params{
        {Content::SymbolParamKey, QVariantList{VariantMap{{Content::Symbol, QStringLiteral("A")}}}},
        {Content::OrderSide, QStringLiteral("2")},
        {Content::TradingAccount, QStringLiteral("T9")},
        {Content::PriceLimits, QStringLiteral("5.5")},
        {Content::Quantity, 100},
    };
    inst.initSymbolInfo(params, VariantMap());
    SymbolInfoBase* leg = inst.getSymbolInfo(QStringLiteral("43_A_2"));
    QVERIFY(leg);
    QCOMPARE(leg->getTradingAccount(), QStringLiteral("T9"));
    QCOMPARE(leg->limitPrice(), QStringLiteral("5.5"));
    QCOMPARE(leg->targetQty(), 100.0);
    QCOMPARE(leg->exchange(), QString());
}

void TestInstanceInit::initSymbolInfoIsIdempotent()
{
    InstanceInfoBase inst;
    inst.setInstanceID(QStringLiteral("44"));
    const VariantMap params{
        {Content::SymbolParamKey,
         QVariantList{security(QStringLiteral("600000.SH"), QStringLiteral("1"), 300)}}};
    inst.initSymbolInfo(params, VariantMap());
    SymbolInfoBase* leg = inst.getSymbolInfo(QStringLiteral("44_600000.SH_1"));
    QVERIFY(leg);
    leg->setFilledQty(120);
    inst.initSymbolInfo(params, VariantMap());
    QCOMPARE(inst.getSymbolSize(), 1);
    QCOMPARE(inst.getSymbolInfo(QStringLiteral("44_600000.SH_1")), leg);
    QCOMPARE(leg->filledQty(), 120.0);
    QCOMPARE(inst.targetQty(), 300.0);
}

void TestInstanceInit::initSymbolInfoScalesTargetByDisplayFactor()
{
    HelmBusinessDataInterface::SetDispFactor(QStringLiteral("BOND1"), 10);
    InstanceInfoBase inst;
    inst.setInstanceID(QStringLiteral("45"));
    const VariantMap params{
        {Content::SymbolParamKey,
         QVariantList{security(QStringLiteral("BOND1"), QStringLiteral("1"), 30),
                      security(QStringLiteral("STOCK1"), QStringLiteral("1"), 7)}}};
    inst.initSymbolInfo(params, VariantMap());
    QCOMPARE(inst.getSymbolInfo(QStringLiteral("45_BOND1_1"))->targetQty(), 30.0);
    QCOMPARE(inst.targetQty(), 307.0);
}

void TestInstanceInit::initSymbolInfoMakesT0Legs()
{
    InstanceInfoBase inst;
    inst.setInstanceID(QStringLiteral("46"));
    inst.setInstAlgoType(Algo_Values::AlgoGlobalType::T0);
    const VariantMap params{
        {Content::SymbolParamKey,
         QVariantList{security(QStringLiteral("600000.SH"), QStringLiteral("All"), 300)}}};
    inst.initSymbolInfo(params, VariantMap());
    QVERIFY(dynamic_cast<T0SymbolInfo*>(inst.getSymbolInfo(QStringLiteral("46_600000.SH_All"))));
}

void TestInstanceInit::initSymbolInfoSkipsUnderscoreSymbols()
{
    InstanceInfoBase inst;
    inst.setInstanceID(QStringLiteral("47"));
    const VariantMap params{
        {Content::SymbolParamKey,
         QVariantList{security(QStringLiteral("BAD_CODE"), QStringLiteral("1"), 10),
                      security(QStringLiteral("GOOD"), QStringLiteral("1"), 20)}}};
    LogCapture log;
    inst.initSymbolInfo(params, VariantMap());
    QCOMPARE(inst.getSymbolSize(), 1);
    QVERIFY(inst.getSymbolInfo(QStringLiteral("47_GOOD_1")));
    QVERIFY(log.contains(QtWarningMsg, QStringLiteral("BAD_CODE")));
    QCOMPARE(inst.targetQty(), 20.0);
}

void TestInstanceInit::initSymbolInfoAcceptsJsonList()
{
    InstanceInfoBase inst;
    inst.setInstanceID(QStringLiteral("48"));
    const VariantMap params{
        {Content::SymbolParamKey,
         QStringLiteral("[{\"Symbol\":\"X1\",\"OrderSide\":\"1\",\"Quantity\":5}]")}};
    inst.initSymbolInfo(params, VariantMap());
    QVERIFY(inst.getSymbolInfo(QStringLiteral("48_X1_1")));
    QCOMPARE(inst.targetQty(), 5.0);
}

void TestInstanceInit::queryFlagsForNewInstance_data()
{
    QTest::addColumn<QString>("timeKey");
    QTest::addColumn<int>("flags");
    QTest::newRow("no time") << QString() << 65534;
    QTest::newRow("start time") << HelmKey::AlgStartTime << 65535;
    QTest::newRow("end time") << HelmKey::AlgEndTime << 65535;
    QTest::newRow("create time") << HelmKey::AlgCreateTime << 65535;
}

void TestInstanceInit::queryFlagsForNewInstance()
{
    QFETCH(QString, timeKey);
    QFETCH(int, flags);
    VariantMap record{{Strategy::strategyName, kAlgo},
                      {Strategy::strategyStatus, QStringLiteral("0")},
                      {Strategy::StrategyInstanceAlias, QStringLiteral("alias")}};
    if (!timeKey.isEmpty())
        record.insert(timeKey, QStringLiteral("20261120-10:00:00"));
    InstanceInfoBase inst;
    QCOMPARE(inst.OnRecv_QueryAlgoStrategyResponse(record, true), flags);
    QCOMPARE(inst.status(), QStringLiteral("0"));
    QCOMPARE(inst.instanceAlias(), QStringLiteral("alias"));
    QCOMPARE(inst.instAlgoType(), QStringLiteral("Normal"));
    if (timeKey == HelmKey::AlgStartTime)
        QCOMPARE(inst.startTime(), QDateTime(QDate(2026, 11, 20), QTime(10, 0)));
}

void TestInstanceInit::queryRefusesUnknownAndDeposit_data()
{
    QTest::addColumn<QString>("algo");
    QTest::addColumn<bool>("isNew");
    QTest::newRow("unknown, new") << "NoSuchAlgo" << true;
    QTest::newRow("unknown, known") << "NoSuchAlgo" << false;
    QTest::newRow("deposit, new") << kDepositAlgo << true;
    QTest::newRow("deposit, known") << kDepositAlgo << false;
}

void TestInstanceInit::queryRefusesUnknownAndDeposit()
{
    QFETCH(QString, algo);
    QFETCH(bool, isNew);
    std::unique_ptr<InstanceInfoBase> inst(knownInstance());
    const VariantMap record{{Strategy::strategyName, algo},
                            {Strategy::strategyStatus, QStringLiteral("2")},
                            {HelmKey::AlgStartTime, QStringLiteral("20261120-10:00:00")}};
    LogCapture log;
    QCOMPARE(inst->OnRecv_QueryAlgoStrategyResponse(record, isNew), 0);
    QCOMPARE(inst->status(), QStringLiteral("1"));
    QVERIFY(!inst->startTime().isValid());
    QCOMPARE(inst->strategyName(), kAlgo);
    QVERIFY(log.contains(QtDebugMsg,
                         QStringLiteral("InstanceInfoBase::OnRecv_QueryAlgoStrategyResponse")));
}

void TestInstanceInit::queryFlagsForKnownInstance_data()
{
    QTest::addColumn<QString>("status");
    QTest::addColumn<bool>("storedStartValid");
    QTest::addColumn<bool>("recordHasStart");
    QTest::addColumn<int>("flags");
    QTest::addColumn<bool>("startTaken");

    QTest::newRow("status unchanged, nothing") << "1" << false << false << 0 << false;
    QTest::newRow("status changed") << "2" << false << false << 2 << false;
    QTest::newRow("status changed with time") << "2" << true << true << 3 << true;
    QTest::newRow("unchanged keeps a valid time") << "1" << true << true << 0 << false;
    QTest::newRow("unchanged replaces an invalid time") << "1" << false << true << 1 << true;
    QTest::newRow("refused status keeps a valid time") << "3" << true << true << 0 << false;
}

void TestInstanceInit::queryFlagsForKnownInstance()
{
    QFETCH(QString, status);
    QFETCH(bool, storedStartValid);
    QFETCH(bool, recordHasStart);
    QFETCH(int, flags);
    QFETCH(bool, startTaken);

    const QDateTime stored(QDate(2026, 11, 19), QTime(9, 30));
    const QDateTime arrived(QDate(2026, 11, 20), QTime(13, 0));
    std::unique_ptr<InstanceInfoBase> inst(knownInstance());
    if (storedStartValid)
        inst->setStartTime(stored);
    VariantMap record{{Strategy::strategyName, kAlgo}, {Strategy::strategyStatus, status}};
    if (recordHasStart)
        record.insert(HelmKey::AlgStartTime, QStringLiteral("20261120-13:00:00"));

    QCOMPARE(inst->OnRecv_QueryAlgoStrategyResponse(record, false), flags);
    if (startTaken)
        QCOMPARE(inst->startTime(), arrived);
    else if (storedStartValid)
        QCOMPARE(inst->startTime(), stored);
    else
        QVERIFY(!inst->startTime().isValid());
}

void TestInstanceInit::queryTakesNameForMultiOrUntyped_data()
{
    QTest::addColumn<QString>("storedType");
    QTest::addColumn<QString>("recordAlgo");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("type");

    QTest::newRow("typed instance keeps its name") << "Normal" << kPairAlgo << kAlgo << "Normal";
    QTest::newRow("untyped instance takes both") << "" << kPairAlgo << kPairAlgo << "Normal";
    QTest::newRow("multi-strategy entry replaces both")
        << "Normal" << kMultiAlgo << kMultiAlgo << Algo_Values::AlgoGlobalType::multiStr;
}

void TestInstanceInit::queryTakesNameForMultiOrUntyped()
{
    QFETCH(QString, storedType);
    QFETCH(QString, recordAlgo);
    QFETCH(QString, name);
    QFETCH(QString, type);
    std::unique_ptr<InstanceInfoBase> inst(knownInstance());
    inst->setInstAlgoType(storedType);
    const VariantMap record{{Strategy::strategyName, recordAlgo},
                            {Strategy::strategyStatus, QStringLiteral("1")}};
    inst->OnRecv_QueryAlgoStrategyResponse(record, false);
    QCOMPARE(inst->strategyName(), name);
    QCOMPARE(inst->instAlgoType(), type);
    QCOMPARE(inst->instanceAlias(), QString()); // no alias in the record: unchanged
}

void TestInstanceInit::detailRefreshesInstance()
{
    std::unique_ptr<InstanceInfoBase> inst(knownInstance());
    inst->setInstAlgoType(QString());
    const VariantMap record{
        {Strategy::strategyID, QStringLiteral("700")},
        {Strategy::strategyName, kPairAlgo},
        {Strategy::StrategyInstanceAlias, QStringLiteral("pair")},
        {Strategy::strategyParas, QStringLiteral("{\"comment\":\"c\",\"OpenClose\":\"Close\"}")},
        {Strategy::strategyStatus, QStringLiteral("2")},
        {Helm_Fields::Strategy::clAlgoID, QStringLiteral("cl-700")},
        {Tessel_Fields::System::createTime, QStringLiteral("20261118-08:00:00")},
        {HelmKey::Metadata, QStringLiteral("[{\"orderInfo\":\"o\",\"basePrice\":\"1.2\"}]")},
    };
    inst->OnRect_QueryAlgoStrategyResponse_Detail(record);
    QCOMPARE(inst->strategyName(), kPairAlgo);
    QCOMPARE(inst->instanceAlias(), QStringLiteral("pair"));
    QCOMPARE(inst->params(), record.value(Strategy::strategyParas).toString());
    QCOMPARE(inst->getInstanceComments(), QStringLiteral("c"));
    QCOMPARE(inst->getOpenSide(), QStringLiteral("Close"));
    QCOMPARE(inst->status(), QStringLiteral("2"));
    QCOMPARE(inst->clInstanceID(), QStringLiteral("cl-700"));
    QCOMPARE(inst->instAlgoType(), QStringLiteral("Normal"));
    QCOMPARE(inst->getCreateTime(), QDateTime(QDate(2026, 11, 18), QTime(8, 0)));
    QCOMPARE(inst->getBasePrice(), QStringLiteral("o-1.2"));
}

void TestInstanceInit::detailOfAnotherInstanceIsIgnored()
{
    std::unique_ptr<InstanceInfoBase> inst(knownInstance());
    const VariantMap record{{Strategy::strategyID, QStringLiteral("701")},
                            {Strategy::strategyStatus, QStringLiteral("5")},
                            {Strategy::strategyName, kPairAlgo}};
    inst->OnRect_QueryAlgoStrategyResponse_Detail(record);
    QCOMPARE(inst->instanceID(), QStringLiteral("700"));
    QCOMPARE(inst->status(), QStringLiteral("1"));
    QCOMPARE(inst->strategyName(), kAlgo);
}

void TestInstanceInit::updateParamMapTimes_data()
{
    QTest::addColumn<QString>("start");
    QTest::addColumn<QString>("end");
    QTest::addColumn<QDateTime>("startDateTime");
    QTest::addColumn<QString>("runTime");

    QTest::newRow("full date-times") << "2026-11-20 09:30:00" << "2026-11-20 14:57:00"
                                     << QDateTime(QDate(2026, 11, 20), QTime(9, 30))
                                     << "09:30:00-14:57:00";
    QTest::newRow("times of day") << "09:30:00" << "11:30:00"
                                  << QDateTime(QDate::currentDate(), QTime(9, 30))
                                  << "09:30:00-11:30:00";
    QTest::newRow("no times") << "" << "" << QDateTime() << "";
    QTest::newRow("unreadable start") << "soon" << "11:30:00" << QDateTime() << "-11:30:00";
}

void TestInstanceInit::updateParamMapTimes()
{
    QFETCH(QString, start);
    QFETCH(QString, end);
    QFETCH(QDateTime, startDateTime);
    QFETCH(QString, runTime);
    InstanceInfoBase inst;
    inst.UpdateParamMap(QStringLiteral("{\"AlgoStartTime\":\"%1\",\"AlgoEndTime\":\"%2\"}")
                            .arg(start, end));
    QCOMPARE(inst.startDateTime(), startDateTime);
    QCOMPARE(inst.runTimeInParam(), runTime);
}

void TestInstanceInit::updateParamMapDisplaySettingsAndAccount()
{
    HelmBusinessDataInterface::AddAccountInfo({QStringLiteral("T7"), QStringLiteral("F7"),
                                               QStringLiteral("Fund seven"),
                                               QStringLiteral("Product")});
    InstanceInfoBase inst;
    inst.UpdateParamMap(QStringLiteral("{\"到期后是否继续交易\":\"是\",\"创建后是否立即启动\":\"否\","
                                       "\"截止日期\":\"20261231\",\"TradingAccount\":\"T7\"}"));
    QCOMPARE(inst.getContinueTrade(), QStringLiteral("是"));
    QCOMPARE(inst.getCreateStart(), QStringLiteral("否"));
    QCOMPARE(inst.getEndDate(), QStringLiteral("20261231"));
    QCOMPARE(inst.getTradingAccount_Inst(), QStringLiteral("T7"));
    QCOMPARE(inst.getFundAccount_Inst(), QStringLiteral("F7"));
    QCOMPARE(inst.getFundAccountName_Inst(), QStringLiteral("Fund seven"));
    QCOMPARE(inst.getProductName_Inst(), QStringLiteral("Product"));
}

void TestInstanceInit::updateParamMapIgnoresBrokenJson()
{
    InstanceInfoBase inst;
    inst.UpdateParamMap(QStringLiteral("{\"截止日期\":\"20261231\"}"));
    LogCapture log;
    inst.UpdateParamMap(QStringLiteral("{\"截止日期\":"));
    QCOMPARE(inst.getEndDate(), QStringLiteral("20261231"));
    QVERIFY(log.contains(QtDebugMsg, QStringLiteral("InstanceInfoBase::UpdateParamMap")));
}

QTEST_GUILESS_MAIN(TestInstanceInit)
#include "tst_instanceinit.moc"
