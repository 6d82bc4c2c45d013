// The instance record: status rule, guarded progress setters, progress
// choice, mode derivation, trade order default, leg ownership and lookups,
// display derivations.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

#include <cmath>
#include <memory>
#include <limits>

namespace {

const QString kInstance = QStringLiteral("100023");

// Exposes setParams' virtual call-out.
class RecordingInstance : public InstanceInfoBase
{
public:
    void UpdateParamMap(const QString& params) override { received.append(params); }
    QStringList received;
};

SymbolInfoBase* makeLeg(const QString& key, const QString& symbol, const QString& side)
{
    auto* leg = new SymbolInfoBase;
    leg->setKey(key);
    leg->setSymbol(symbol);
    leg->setOrderSide(side);
    return leg;
}

enum class Setter { Progrees, AmountProgress, FilledQty, FilledBalance };

double apply(InstanceInfoBase& instance, Setter setter, double value)
{
    switch (setter) {
    case Setter::Progrees:
        instance.setProgrees(value);
        return instance.progrees();
    case Setter::AmountProgress:
        instance.setAmountProgress(value);
        return instance.amountProgress();
    case Setter::FilledQty:
        instance.setFilledQty(value);
        return instance.filledQty();
    case Setter::FilledBalance:
        instance.setFilledBalance(value);
        return instance.filledBalance();
    }
    return 0.0;
}

} // namespace

Q_DECLARE_METATYPE(Setter)

class TestInstanceInfoBase : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup();

    void setStatus_data();
    void setStatus();
    void isFinalStatus_data();
    void isFinalStatus();

    void guardedSetters_data();
    void guardedSetters();
    void standardProgress_data();
    void standardProgress();

    void instMode_data();
    void instMode();
    void instModeIsKeptOnceDerived();
    void instanceTradeOrder_data();
    void instanceTradeOrder();

    void setParamsCallsUpdateParamMap();
    void deleteResponseMarksDeleted();
    void reportFormatIsLookedUpByInstanceId();
    void initialValues();

    void legsAreOrderedByKey();
    void getSymbolInfoOfAbsentKeyIsNull();
    void getOneSymbolWithoutLegsLeavesOutputs();
    void addingSameKeyKeepsEarlierLegAlive();
    void getAllSymbolsPtrFiltersByClass();
    void getAllSymbolNamesLogs();

    void orderSideWords_data();
    void orderSideWords();
    void accountDerivations();
    void cachedDisplayTextsWin();
    void entrustQtyText_data();
    void entrustQtyText();
};

void TestInstanceInfoBase::initTestCase()
{
    KxAlgoDataMgr::instance().setStrategies({
        AesStrategy(QStringLiteral("SingleAlgo"), QString(), QString(), QStringLiteral("1")),
        AesStrategy(QStringLiteral("PairAlgo"), QString(), QString(), QStringLiteral("2")),
    });
}

void TestInstanceInfoBase::cleanup()
{
    CBusinessDataBase::GetInstance()->Reset();
    HelmBusinessDataInterface::Reset();
}

void TestInstanceInfoBase::setStatus_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<bool>("logged");

    QTest::newRow("same status") << "1" << "1" << false << false;
    QTest::newRow("same final status") << "2" << "2" << false << false;
    QTest::newRow("not started to waiting") << "0" << "3" << false << true;
    QTest::newRow("running to waiting") << "1" << "3" << false << true;
    QTest::newRow("not started to running") << "0" << "1" << true << false;
    QTest::newRow("running to complete") << "1" << "2" << true << false;
    QTest::newRow("waiting to not started") << "3" << "0" << true << false;
    QTest::newRow("waiting to stopped") << "3" << "5" << true << false;
    QTest::newRow("complete to running") << "2" << "1" << false << true;
    QTest::newRow("complete to stopped") << "2" << "5" << false << true;
    QTest::newRow("stopped to not started") << "5" << "0" << false << true;
    QTest::newRow("stopped to waiting") << "5" << "3" << false << true;
    QTest::newRow("null to anything") << QString() << "7" << true << false;
    QTest::newRow("paused to waiting") << "4" << "3" << true << false;
    QTest::newRow("being created to complete") << "6" << "2" << true << false;
}

void TestInstanceInfoBase::setStatus()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    QFETCH(bool, accepted);
    QFETCH(bool, logged);

    InstanceInfoBase instance;
    if (!from.isNull()) {
        // Reach `from` through an always-allowed path: null -> "3" -> from.
        QVERIFY(instance.setStatus(QStringLiteral("3")));
        if (from != QLatin1String("3"))
            QVERIFY(instance.setStatus(from));
    }
    LogCapture log;
    QCOMPARE(instance.setStatus(to), accepted);
    QCOMPARE(instance.status(), accepted ? to : from);
    const QString line = QStringLiteral(
        "InstanceInfoBase::setStatus InstanceInfoBase::setStatus invalid status %1 %2")
                             .arg(from, to);
    QCOMPARE(log.contains(QtDebugMsg, line), logged);
    if (!logged)
        QCOMPARE(log.count(QtDebugMsg, QStringLiteral("invalid status")), 0);
}

void TestInstanceInfoBase::isFinalStatus_data()
{
    QTest::addColumn<QString>("status");
    QTest::addColumn<bool>("final");
    QTest::newRow("complete") << Algo_Values::InstanceStates::COMPLETE << true;
    QTest::newRow("stopped") << Algo_Values::InstanceStates::STOP << true;
    QTest::newRow("stopped not closed") << "7" << false;
    QTest::newRow("running") << "1" << false;
}

void TestInstanceInfoBase::isFinalStatus()
{
    QFETCH(QString, status);
    QFETCH(bool, final);
    InstanceInfoBase instance;
    instance.setStatus(status);
    QCOMPARE(instance.isFinalStatus(), final);
}

void TestInstanceInfoBase::guardedSetters_data()
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    QTest::addColumn<Setter>("setter");
    QTest::addColumn<double>("before");
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("stored");
    QTest::addColumn<QString>("warning"); // empty: no warning at all

    QTest::newRow("progress regression is stored")
        << Setter::Progrees << 0.5 << 0.4 << 0.4
        << "InstanceInfoBase::setProgrees invalid progress, instid: 100023 old progress 0.5 "
           "new progress 0.4";
    QTest::newRow("progress rise") << Setter::Progrees << 0.4 << 0.5 << 0.5 << QString();
    QTest::newRow("amount progress regression is refused")
        << Setter::AmountProgress << 0.5 << 0.25 << 0.5
        << "InstanceInfoBase::setProgrees invalid progress, instid: 100023 old progress 0.5 "
           "new progress 0.25";
    QTest::newRow("filled regression is refused")
        << Setter::FilledQty << 100.0 << 90.0 << 100.0
        << "InstanceInfoBase::setFilledQty invalid filledQty, instid: 100023 old qty 100 "
           "new qty 90";
    QTest::newRow("filled equal") << Setter::FilledQty << 100.0 << 100.0 << 100.0 << QString();
    QTest::newRow("balance regression is refused")
        << Setter::FilledBalance << 5000.0 << 4999.5 << 5000.0
        << "InstanceInfoBase::setFilledBalance invalid filledBalance, instid: 100023 "
           "old filledBalance 5000 new filledBalance 4999.5";
    QTest::newRow("balance to negative is refused")
        << Setter::FilledBalance << 0.0 << -1.0 << 0.0
        << "InstanceInfoBase::setFilledBalance invalid filledBalance";
    QTest::newRow("NaN is no regression") << Setter::FilledQty << 100.0 << nan << nan << QString();
    QTest::newRow("after NaN anything goes")
        << Setter::FilledBalance << nan << 1.0 << 1.0 << QString();
    QTest::newRow("amount NaN is no regression")
        << Setter::AmountProgress << 0.5 << nan << nan << QString();
}

void TestInstanceInfoBase::guardedSetters()
{
    QFETCH(Setter, setter);
    QFETCH(double, before);
    QFETCH(double, value);
    QFETCH(double, stored);
    QFETCH(QString, warning);

    InstanceInfoBase instance;
    instance.setInstanceID(kInstance);
    apply(instance, setter, before);
    LogCapture log;
    const double result = apply(instance, setter, value);
    if (std::isnan(stored))
        QVERIFY(std::isnan(result));
    else
        QCOMPARE(result, stored);
    if (warning.isEmpty()) {
        QCOMPARE(log.countOfType(QtWarningMsg), 0);
    } else {
        QCOMPARE(log.countOfType(QtWarningMsg), 1);
        QVERIFY2(log.last(QtWarningMsg).startsWith(warning), qPrintable(log.last(QtWarningMsg)));
    }
}

void TestInstanceInfoBase::standardProgress_data()
{
    QTest::addColumn<QString>("algo");
    QTest::addColumn<bool>("amountDriven");
    QTest::newRow("AIPOV7") << "AIPOV7" << true;
    QTest::newRow("DoubleConditionOrderPLUS") << "DoubleConditionOrderPLUS" << true;
    QTest::newRow("lower case aipov7") << "aipov7" << false;
    QTest::newRow("AIPOV") << "AIPOV" << false;
    QTest::newRow("no name") << "" << false;
}

void TestInstanceInfoBase::standardProgress()
{
    QFETCH(QString, algo);
    QFETCH(bool, amountDriven);
    InstanceInfoBase instance;
    instance.setStrategyName(algo);
    instance.setProgrees(0.8);
    instance.setAmountProgress(0.3);
    QCOMPARE(instance.standardProgress(), amountDriven ? 0.3 : 0.8);
}

void TestInstanceInfoBase::instMode_data()
{
    QTest::addColumn<QString>("algo");
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("mode");
    QTest::newRow("single-security algo") << "SingleAlgo" << "" << Algo_Values::instMode::singleMode;
    QTest::newRow("pair algo") << "PairAlgo" << "" << Algo_Values::instMode::multiMode;
    QTest::newRow("unknown algo") << "NoSuchAlgo" << "" << Algo_Values::instMode::multiMode;
    QTest::newRow("given mode wins") << "PairAlgo" << "single" << "single";
}

void TestInstanceInfoBase::instMode()
{
    QFETCH(QString, algo);
    QFETCH(QString, given);
    QFETCH(QString, mode);
    InstanceInfoBase instance;
    instance.setStrategyName(algo);
    instance.setInstMode(given);
    QCOMPARE(instance.getInstMode(), mode);
}

void TestInstanceInfoBase::instModeIsKeptOnceDerived()
{
    InstanceInfoBase instance;
    instance.setStrategyName(QStringLiteral("SingleAlgo"));
    QCOMPARE(instance.getInstMode(), Algo_Values::instMode::singleMode);
    // A later change of the name does not re-derive a mode already known.
    instance.setStrategyName(QStringLiteral("PairAlgo"));
    QCOMPARE(instance.getInstMode(), Algo_Values::instMode::singleMode);
}

void TestInstanceInfoBase::instanceTradeOrder_data()
{
    QTest::addColumn<QString>("algo");
    QTest::addColumn<QString>("order");
    QTest::addColumn<QString>("stored");
    QTest::newRow("grid empty") << "GridTradingStrategy" << "" << "All";
    QTest::newRow("grid ymd empty") << "GridTradingYmdStrategy" << "" << "All";
    QTest::newRow("grid given") << "GridTradingStrategy" << "Buy" << "Buy";
    QTest::newRow("other empty") << "AITWAP" << "" << "";
    QTest::newRow("other given") << "AITWAP" << "Sell" << "Sell";
}

void TestInstanceInfoBase::instanceTradeOrder()
{
    QFETCH(QString, algo);
    QFETCH(QString, order);
    QFETCH(QString, stored);
    InstanceInfoBase instance;
    instance.setStrategyName(algo);
    instance.setInstanceTradeOrder(order);
    QCOMPARE(instance.getInstanceTradeOrder(), stored);
}

void TestInstanceInfoBase::setParamsCallsUpdateParamMap()
{
    RecordingInstance instance;
    instance.setParams(QStringLiteral("{\"a\":1}"));
    QCOMPARE(instance.params(), QStringLiteral("{\"a\":1}"));
    QCOMPARE(instance.received, QStringList{QStringLiteral("{\"a\":1}")});
}

void TestInstanceInfoBase::deleteResponseMarksDeleted()
{
    InstanceInfoBase instance;
    instance.setStatus(QStringLiteral("1"));
    instance.OnRecv_DeleteAlgoInstanceResponse(
        {{Tessel_Fields::Strategy::strategyStatus, QStringLiteral("5")}});
    QCOMPARE(instance.getStrategyDeleted(), Algo_Values::AlgoDeleteStatus::deleted);
    QCOMPARE(instance.status(), QStringLiteral("1")); // the record itself is ignored
}

void TestInstanceInfoBase::reportFormatIsLookedUpByInstanceId()
{
    AesStrategy byId(kInstance, QString(), QString(), QString());
    byId.setReportFormat(QStringLiteral("fmt-by-id"));
    AesStrategy byName(QStringLiteral("AITWAP"), QString(), QString(), QString());
    byName.setReportFormat(QStringLiteral("fmt-by-name"));
    KxAlgoDataMgr::instance().setStrategies({byId, byName});

    InstanceInfoBase instance;
    instance.setInstanceID(kInstance);
    instance.setStrategyName(QStringLiteral("AITWAP"));
    QCOMPARE(instance.reportFmt(), QStringLiteral("fmt-by-id"));
    initTestCase(); // restore the catalogue of the other tests
}

void TestInstanceInfoBase::initialValues()
{
    const InstanceInfoBase instance;
    // Empty but not null where the record starts from "", null elsewhere:
    // hosts that test isNull() rely on the difference.
    QVERIFY(!instance.instanceID().isNull() && instance.instanceID().isEmpty());
    QVERIFY(instance.clInstanceID().isNull());
    QVERIFY(instance.status().isNull());
    QVERIFY(!instance.remark().isNull());
    QVERIFY(!instance.startTime().isValid());
    QCOMPARE(instance.getSymbolSize(), 0);
    QCOMPARE(instance.finalProgress(), false);
}

void TestInstanceInfoBase::legsAreOrderedByKey()
{
    InstanceInfoBase instance;
    instance.AddSymbolInfo(makeLeg(QStringLiteral("1_600001.SH_2"), QStringLiteral("600001.SH"),
                                   QStringLiteral("2")));
    instance.AddSymbolInfo(makeLeg(QStringLiteral("1_000001.SZ_1"), QStringLiteral("000001.SZ"),
                                   QStringLiteral("1")));
    QCOMPARE(instance.getSymbolSize(), 2);
    QCOMPARE(instance.GetAllSymbolNames(),
             QStringList({QStringLiteral("000001.SZ"), QStringLiteral("600001.SH")}));
    QString symbol;
    QString side;
    instance.getOneSymbol(symbol, side);
    QCOMPARE(symbol, QStringLiteral("000001.SZ"));
    QCOMPARE(side, QStringLiteral("1"));
}

void TestInstanceInfoBase::getSymbolInfoOfAbsentKeyIsNull()
{
    InstanceInfoBase instance;
    SymbolInfoBase* leg = makeLeg(QStringLiteral("1_A_1"), QStringLiteral("A"), QStringLiteral("1"));
    instance.AddSymbolInfo(leg);
    QCOMPARE(instance.getSymbolInfo(QStringLiteral("1_A_1")), leg);
    QCOMPARE(instance.getSymbolInfo(QStringLiteral("1_A_2")), nullptr);
    QCOMPARE(instance.getSymbolSize(), 1); // a failed lookup adds nothing
}

void TestInstanceInfoBase::getOneSymbolWithoutLegsLeavesOutputs()
{
    InstanceInfoBase instance;
    QString symbol = QStringLiteral("keep");
    QString side = QStringLiteral("me");
    instance.getOneSymbol(symbol, side);
    QCOMPARE(symbol, QStringLiteral("keep"));
    QCOMPARE(side, QStringLiteral("me"));
}

void TestInstanceInfoBase::addingSameKeyKeepsEarlierLegAlive()
{
    auto instance = std::make_unique<InstanceInfoBase>();
    SymbolInfoBase* first = makeLeg(QStringLiteral("1_A_1"), QStringLiteral("A"), QStringLiteral("1"));
    SymbolInfoBase* second = makeLeg(QStringLiteral("1_A_1"), QStringLiteral("A2"), QStringLiteral("1"));
    instance->AddSymbolInfo(first);
    instance->AddSymbolInfo(first); // the same leg again is no replacement
    instance->AddSymbolInfo(second);
    QCOMPARE(instance->getSymbolInfo(QStringLiteral("1_A_1")), second);
    QCOMPARE(instance->getSymbolSize(), 1);
    // A pointer handed out before the replacement is still usable.
    QCOMPARE(first->symbol(), QStringLiteral("A"));
    instance.reset(); // frees both exactly once (checked by the sanitizer builds)
}

void TestInstanceInfoBase::getAllSymbolsPtrFiltersByClass()
{
    InstanceInfoBase instance;
    auto* t0 = new T0SymbolInfo;
    t0->setKey(QStringLiteral("1_B_All"));
    instance.AddSymbolInfo(t0);
    instance.AddSymbolInfo(makeLeg(QStringLiteral("1_A_1"), QStringLiteral("A"), QStringLiteral("1")));
    const QList<T0SymbolInfo*> t0Legs = instance.GetAllSymbols_Ptr<T0SymbolInfo>();
    QCOMPARE(t0Legs, QList<T0SymbolInfo*>{t0});
    QCOMPARE(instance.GetAllSymbols_Ptr<SymbolInfoBase>().size(), 2);
}

void TestInstanceInfoBase::getAllSymbolNamesLogs()
{
    InstanceInfoBase instance;
    instance.AddSymbolInfo(makeLeg(QStringLiteral("1_A_1"), QStringLiteral("A"), QStringLiteral("1")));
    LogCapture log;
    instance.GetAllSymbolNames();
    const QList<CapturedMessage> messages = log.messages();
    QCOMPARE(messages.size(), 2);
    QCOMPARE(messages.at(0).text, QStringLiteral("InstanceInfoBase::GetAllSymbolNames 1"));
    QCOMPARE(messages.at(1).text, QStringLiteral("InstanceInfoBase::GetAllSymbolNames 1"));
    QCOMPARE(messages.at(0).category, QStringLiteral("algologic.instance"));
}

void TestInstanceInfoBase::orderSideWords_data()
{
    QTest::addColumn<QString>("side");
    QTest::addColumn<QString>("securityType");
    QTest::addColumn<QString>("word");
    QTest::newRow("buy code") << "1" << "" << "Buy";
    QTest::newRow("sell code") << "2" << "Stock" << "Sell";
    QTest::newRow("sell word") << "Sell" << "" << "Sell";
    QTest::newRow("sell of a bond is a reverse repo") << "2" << "Bond" << "Antirepo";
    QTest::newRow("buy of a bond") << "1" << "Bond" << "Buy";
    QTest::newRow("unknown code shown as given") << "All" << "" << "All";
}

void TestInstanceInfoBase::orderSideWords()
{
    QFETCH(QString, side);
    QFETCH(QString, securityType);
    QFETCH(QString, word);
    CBusinessDataBase::GetInstance()->SetSecurityType(QStringLiteral("204001.SH"), securityType);
    InstanceInfoBase instance;
    instance.AddSymbolInfo(makeLeg(QStringLiteral("1_204001.SH_") + side,
                                   QStringLiteral("204001.SH"), side));
    QCOMPARE(instance.getOrderSide(QStringLiteral("204001.SH")), word);
    QCOMPARE(instance.getOrderSide_Inst(), word);
    QCOMPARE(instance.getOrderSide(QStringLiteral("OTHER")), QString());
}

void TestInstanceInfoBase::accountDerivations()
{
    HelmBusinessDataInterface::AddAccountInfo({QStringLiteral("T1"), QStringLiteral("F1"),
                                               QStringLiteral("Fund one"), QStringLiteral("P1")});
    HelmBusinessDataInterface::AddAccountInfo({QStringLiteral("T2"), QStringLiteral("F2"),
                                               QStringLiteral("Fund two"), QStringLiteral("P2")});
    InstanceInfoBase instance;
    SymbolInfoBase* a = makeLeg(QStringLiteral("1_A_1"), QStringLiteral("A"), QStringLiteral("1"));
    a->setTradingAccount(QStringLiteral("T1"));
    a->setSecurityAccout(QStringLiteral("S1"));
    SymbolInfoBase* b = makeLeg(QStringLiteral("1_B_1"), QStringLiteral("B"), QStringLiteral("1"));
    b->setTradingAccount(QStringLiteral("T2"));
    b->setSecurityAccout(QStringLiteral("S1"));
    instance.AddSymbolInfo(a);
    instance.AddSymbolInfo(b);

    QCOMPARE(instance.getTradingAccount(), QStringLiteral("T1,T2"));
    QCOMPARE(instance.getFundAccount(), QStringLiteral("F1,F2"));
    QCOMPARE(instance.getFundAccountName(), QStringLiteral("Fund one,Fund two"));
    QCOMPARE(instance.getStockAccount(), QStringLiteral("S1"));
    QCOMPARE(instance.getProductName(), QStringLiteral("P1,P2"));
}

void TestInstanceInfoBase::cachedDisplayTextsWin()
{
    InstanceInfoBase instance;
    SymbolInfoBase* a = makeLeg(QStringLiteral("1_A_1"), QStringLiteral("A"), QStringLiteral("1"));
    a->setTradingAccount(QStringLiteral("T1"));
    instance.AddSymbolInfo(a);
    QCOMPARE(instance.getTradingAccount_Inst(), QStringLiteral("T1"));
    instance.setTradingAccount_Inst(QStringLiteral("cached"));
    QCOMPARE(instance.getTradingAccount_Inst(), QStringLiteral("cached"));
    instance.setFundAccountName_Inst(QStringLiteral("name"));
    QCOMPARE(instance.getFundAccountName_Inst(), QStringLiteral("name"));
}

void TestInstanceInfoBase::entrustQtyText_data()
{
    QTest::addColumn<QString>("algo");
    QTest::addColumn<QString>("text");
    QTest::newRow("quantity algo") << "AITWAP" << "1000000";
    QTest::newRow("amount algo") << "AITWAP7" << "2500.50";
}

void TestInstanceInfoBase::entrustQtyText()
{
    QFETCH(QString, algo);
    QFETCH(QString, text);
    InstanceInfoBase instance;
    instance.setStrategyName(algo);
    instance.setTargetQty(1000000);
    instance.setTargetAmount(2500.5);
    QCOMPARE(instance.getEntrustQtyStr(), text);
}

QTEST_GUILESS_MAIN(TestInstanceInfoBase)
#include "tst_instanceinfobase.moc"
