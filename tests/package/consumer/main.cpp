// A host program outside the library's tree: it only sees the installed
// headers and the exported target, and touches every exported class.

#include <algologic.h>
#include <instance/instanceinfobase.h>
#include <platform/kxalgodatamgr.h>
#include <strategy/strategymgr.h>
#include <symbol/t0symbolinfo.h>

#include <QCoreApplication>
#include <QTextStream>

#include <memory>

namespace {

int g_failures = 0;

void check(bool ok, const char* what)
{
    if (!ok) {
        ++g_failures;
        QTextStream(stderr) << "consumer check failed: " << what << '\n';
    }
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    AlgoLogic::registerMetaTypes();

    // Host side of the stand-ins.
    CBusinessDataBase::GetInstance()->SetLoginAccount(QStringLiteral("trader01"));
    check(CBusinessDataBase::GetInstance()->GetLoginAccount() == QLatin1String("trader01"),
          "login account");
    HelmBusinessDataInterface::SetDispFactor(QStringLiteral("600000.SH"), 100);
    check(HelmBusinessDataInterface::GetDispFactorBySymbol(QStringLiteral("600000.SH")) == 100,
          "display factor");
    HelmBusinessDataInterface::AddAccountInfo(
        {QStringLiteral("T1"), QStringLiteral("F1"), QStringLiteral("Fund one"), QString()});
    CommonQuotaHandler::instance().SetLatestPrice(QStringLiteral("600000.SH"), 9.5);
    check(CommonQuotaHandler::instance().GetLatestPrice(QStringLiteral("600000.SH"), 0) == 9.5,
          "latest price");

    VariantMap parsed;
    check(HelmUtils::TransStr2Map(QStringLiteral("{\"a\":1}"), parsed).isEmpty()
              && parsed.value(QStringLiteral("a")).toInt() == 1,
          "TransStr2Map");

    KxThread thread;
    thread.start();

    // Catalogue through the strategy manager.
    StrategyMgr::instance()->init();
    KxAlgoDataMgr::instance().setStrategies(
        {AesStrategy(QStringLiteral("AITWAP7"), QStringLiteral("TWAP"),
                     Algo_Values::AlgoGlobalType::T0, QStringLiteral("1"))});
    check(StrategyMgr::instance()->GetAlgoSymbolType(QStringLiteral("AITWAP7"))
              == ALGO_SYMBOL_SINGLE,
          "GetAlgoSymbolType");

    // An instance with a T0 leg, deep-copied.
    InstanceInfoBase instance;
    instance.setInstanceID(QStringLiteral("100023"));
    instance.setStrategyName(QStringLiteral("AITWAP7"));
    instance.setClassType(AlgoConst::ClassTypeT0);
    auto* leg = new T0SymbolInfo;
    leg->setKey(QStringLiteral("100023_600000.SH_All"));
    leg->setSymbol(QStringLiteral("600000.SH"));
    leg->setTradingAccount(QStringLiteral("T1"));
    leg->setBuyDealQty(100);
    instance.AddSymbolInfo(leg);
    check(leg->getFundAccount() == QLatin1String("F1"), "fund account derived");
    check(instance.getInstMode() == Algo_Values::instMode::singleMode, "instance mode");

    const std::unique_ptr<InstanceInfoBase> copy(new InstanceInfoBase(instance));
    const QList<T0SymbolInfo*> legs = copy->GetAllSymbols_Ptr<T0SymbolInfo>();
    check(legs.size() == 1 && legs.first() != leg && legs.first()->buyDealQty() == 100,
          "deep copy of T0 legs");

    SymbolInfoBase plain;
    plain.setStrategyName(StandardProgressAlgoNames.first());
    plain.setAmountDealProgress(0.25);
    check(plain.standardProgress() == 0.25, "standard progress");

    check(QString::fromLatin1(ALGOLOGIC_VERSION_STRING).count(QLatin1Char('.')) == 2,
          "version string");

    thread.quit();
    thread.wait();
    QTextStream(stdout) << "consumer: " << (g_failures == 0 ? "ok" : "FAILED") << '\n';
    return g_failures == 0 ? 0 : 1;
}
