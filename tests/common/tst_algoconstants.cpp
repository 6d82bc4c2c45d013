// The texts of the imported protocol constants and of the library's own
// constants are a contract with the server and the terminal's other modules.

#include <algologic.h>

#include <QtTest>

class TestAlgoConstants : public QObject
{
    Q_OBJECT
private slots:
    void importedTexts_data();
    void importedTexts();
    void standardProgressNames_data();
    void standardProgressNames();
    void listOrder();
};

void TestAlgoConstants::importedTexts_data()
{
    QTest::addColumn<QString>("constant");
    QTest::addColumn<QString>("text");

    // Keys carry their own last name; same last name, same text.
    QTest::newRow("strategyID") << Tessel_Fields::Strategy::strategyID << "strategyID";
    QTest::newRow("StrategyInstanceAlias")
        << Tessel_Fields::Strategy::StrategyInstanceAlias << "StrategyInstanceAlias";
    QTest::newRow("requestExeStatus")
        << Tessel_Fields::System::requestExeStatus << "requestExeStatus";
    QTest::newRow("clAlgoID") << Helm_Fields::Strategy::clAlgoID << "clAlgoID";
    QTest::newRow("FilledQty progress")
        << Algo_Fields::AlgoInstProgressFields::FilledQty << "FilledQty";
    QTest::newRow("FilledQty multi") << Multi_Fields::MultiInstProgressFields::FilledQty
                                     << Algo_Fields::AlgoInstProgressFields::FilledQty;
    QTest::newRow("Symbol report") << Algo_Fields::Report::Symbol << "Symbol";
    QTest::newRow("SymbolParamKey")
        << Algo_Fields::AlgoInstContentInfo::SymbolParamKey << "SymbolParamKey";
    QTest::newRow("Quantity_Amount")
        << Algo_Fields::AlgoInstContentInfo::Quantity_Amount << "Quantity_Amount";
    QTest::newRow("RunningData") << Multi_Fields::MultiInstProgressFields::RunningData
                                 << "RunningData";
    QTest::newRow("misspelt group")
        << Multi_Fields::MulitStrDetailInfo::SymbolListA << "SymbolListA";
    QTest::newRow("basis key") << Multi_Fields::MulitStrBasis::BasisType << "BasisType";
    QTest::newRow("basis value") << Multi_Fields::MulitStrBasis::ReverseClose << "ReverseClose";
    QTest::newRow("traderOrder") << Algo_Values::AlgoParamId::traderOrder << "traderOrder";

    // Value words.
    QTest::newRow("unknown") << Algo_Values::AlgoGlobalType::unknown << "Unknown";
    QTest::newRow("all") << Algo_Values::AlgoGlobalType::all << "All";
    QTest::newRow("multiStr") << Algo_Values::AlgoGlobalType::multiStr << "MultiStr";
    QTest::newRow("feature") << Algo_Values::AlgoGlobalType::feature << "Feature";
    QTest::newRow("instruction") << Algo_Values::AlgoGlobalType::instruction << "Instruction";
    QTest::newRow("deposit") << Algo_Values::AlgoGlobalType::deposit << "Deposit";
    QTest::newRow("deleted") << Algo_Values::AlgoDeleteStatus::deleted << "1";
    QTest::newRow("COMPLETE") << Algo_Values::InstanceStates::COMPLETE << "2";
    QTest::newRow("STOP") << Algo_Values::InstanceStates::STOP << "5";
    QTest::newRow("perf t0") << Algo_Values::PerfType::t0 << "t0";
    QTest::newRow("tradeMsg") << Algo_Values::ReportType::tradeMsg << "tradeMsg";
    QTest::newRow("singleMode") << Algo_Values::instMode::singleMode << "single";
    QTest::newRow("multiMode") << Algo_Values::instMode::multiMode << "multi";
    QTest::newRow("open") << Tessel_Values::PositionEffect::open << "Open";
    QTest::newRow("close") << Tessel_Values::PositionEffect::close << "Close";
    QTest::newRow("bond") << Tessel_Values::MdcSecurityType::BondType << "Bond";
    QTest::newRow("active") << Multi_Values::ActivePassive::Active << "Active";
    QTest::newRow("date format") << HelmConstants::DateTimeFormatString::ALGO_DATE_TIME_FORMAT
                                 << "yyyyMMdd-hh:mm:ss";

    // Own constants with fixed texts.
    QTest::newRow("front position spelt so") << AlgoConst::KeyFrontPoistion << "frontPoistion";
    QTest::newRow("class tag info") << AlgoConst::ClassTypeInfo << "info";
    QTest::newRow("deadline label") << AlgoConst::LabelDeadlineDate << QStringLiteral("截止日期");
}

void TestAlgoConstants::importedTexts()
{
    QFETCH(QString, constant);
    QFETCH(QString, text);
    QCOMPARE(constant, text);
}

void TestAlgoConstants::standardProgressNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("member");

    QTest::newRow("first") << "AITWAP7" << true;
    QTest::newRow("last") << "AITWAP9" << true;
    QTest::newRow("pursue") << "PursueHighLimit" << true;
    QTest::newRow("lower case") << "aitwap7" << false;
    QTest::newRow("ordinary algo") << "AITWAP" << false;
    QTest::newRow("empty") << "" << false;
}

void TestAlgoConstants::standardProgressNames()
{
    QFETCH(QString, name);
    QFETCH(bool, member);
    QCOMPARE(StandardProgressAlgoNames.contains(name), member);
    QCOMPARE(AlgoConst::StandardProgressAlgoNames.contains(name), member);
}

void TestAlgoConstants::listOrder()
{
    QCOMPARE(StandardProgressAlgoNames.size(), 12);
    QCOMPARE(StandardProgressAlgoNames.indexOf(QStringLiteral("DoubleConditionOrder")), 9);
    // The second parameter-key list repeats the first after its own ten keys.
    QCOMPARE(AlgoConst::OrderParamKeys.size(), 10 + AlgoConst::AlgoParamKeys.size());
    QCOMPARE(AlgoConst::OrderParamKeys.mid(10), AlgoConst::AlgoParamKeys);
    QCOMPARE(AlgoConst::OrderParamKeys.first(), QStringLiteral("tradingAccount"));
    QCOMPARE(AlgoConst::AlgoParamKeys.last(), QStringLiteral("noEntrustIfCovered"));
    QCOMPARE(AlgoConst::RushLimitUpWords, QStringList({QStringLiteral("1"), QStringLiteral("0"),
                                                       QStringLiteral("2"), QStringLiteral("3")}));
}

QTEST_GUILESS_MAIN(TestAlgoConstants)
#include "tst_algoconstants.moc"
