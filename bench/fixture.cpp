#include "fixture.h"

#include <QJsonDocument>
#include <QLoggingCategory>
#include <QVector>

#include <atomic>

namespace Bench {

using ExampleInstances::InstanceClass;

namespace {

namespace S = Tessel_Fields::Strategy;
namespace Sec = Tessel_Fields::Security;
namespace H = Algo_Fields::HelmStrategy;
namespace C = Algo_Fields::AlgoInstContentInfo;
namespace P = Algo_Fields::AlgoInstProgressFields;

const QString kOtherUser = QStringLiteral("trader99");
const QString kSideBuy = QStringLiteral("1");
const QString kStatusRunning = QStringLiteral("1");
const QString kUi = QStringLiteral("ui");
const QStringList kNormalNames = {QStringLiteral("AITWAP"), QStringLiteral("AIVWAP"),
                                  QStringLiteral("AIPOV")};

struct Registry
{
    QVector<InstanceClass> backgroundClasses;
    QHash<int, QStringList> hot;
    int size = 0;
    int t0Legs = 0;
};

Registry& registry()
{
    static Registry s_registry;
    return s_registry;
}

std::atomic<int> g_warnings{0};

void countWarnings(QtMsgType type, const QMessageLogContext&, const QString&)
{
    if (type != QtDebugMsg && type != QtInfoMsg)
        ++g_warnings;
}

QString json(const QVariant& value)
{
    return QString::fromUtf8(QJsonDocument::fromVariant(value).toJson(QJsonDocument::Compact));
}

InstanceInfoBase* registerPrototype(const ExampleInstances::Prototype& p)
{
    InstanceMgr* mgr = InstanceMgr::instance();
    InstanceInfoBase* inst = mgr->CreateInstance(p.algoType, p.record, p.algoName);
    AlgoLogic::WriteLocker locker(mgr->getLocker());
    mgr->UpdateSymbolExtInfoByParams(inst, p.params, p.extRecords);
    return inst;
}

void registerHot()
{
    Registry& r = registry();
    for (int legs : kLegCounts) {
        QStringList& ids = r.hot[legs];
        for (int i = 0; i < kHotCount; ++i) {
            const QString id = QStringLiteral("H%1-%2").arg(legs, 2, 10, QLatin1Char('0'))
                                   .arg(i, 3, 10, QLatin1Char('0'));
            registerPrototype(normalPrototype(id, legs));
            ids.append(id);
        }
        r.size += kHotCount;
    }
}

void registerBackground(int index)
{
    const InstanceClass cls = backgroundClass(index);
    ExampleInstances::Prototype p = ExampleInstances::prototype(cls, backgroundId(index));
    const int third = index % 3;
    p.record.insert(Tessel_Fields::UserAccount::userID,
                    third == 0 ? kLogin : third == 1 ? kOtherUser : QString());
    p.record.insert(H::strategyDeleted, index % 7 == 0 ? QStringLiteral("1")
                                                       : QStringLiteral("0"));
    if (cls == InstanceClass::Normal) {
        const QString name = kNormalNames.at((index / 3) % kNormalNames.size());
        p.record.insert(S::strategyName, name);
        p.algoName = name;
    }
    registerPrototype(p);
    Registry& r = registry();
    r.backgroundClasses.append(cls);
    ++r.size;
    if (cls == InstanceClass::T0)
        r.t0Legs += 2;
}

} // namespace

const QString kLogin = QStringLiteral("trader01");

void setUpHost()
{
    static const bool done = [] {
        QLoggingCategory::setFilterRules(QStringLiteral("algologic.*.debug=false\n"
                                                        "algologic.*.info=false"));
        qInstallMessageHandler(countWarnings);
        using namespace Algo_Values::AlgoGlobalType;
        const QString normal = QStringLiteral("Normal");
        const QString one = QStringLiteral("1");
        const QString two = QStringLiteral("2");
        QList<AesStrategy> catalogue;
        for (const QString& name : kNormalNames)
            catalogue.append(AesStrategy(name, name, normal, one));
        catalogue.append(AesStrategy(QStringLiteral("T0Intraday"), QStringLiteral("T0"), T0, two));
        catalogue.append(
            AesStrategy(QStringLiteral("BasisArb"), QStringLiteral("Basis"), multiStr, two));
        catalogue.append(
            AesStrategy(QStringLiteral("RushLimitUp"), QStringLiteral("Rush"), feature, one));
        for (AesStrategy& s : catalogue)
            s.setReportFormat(kUi);
        KxAlgoDataMgr::instance().setStrategies(catalogue);
        CBusinessDataBase::GetInstance()->SetLoginAccount(kLogin);
        HelmBusinessDataInterface::AddAccountInfo(
            {QStringLiteral("880001"), QStringLiteral("F880001"), QStringLiteral("Alpha"), {}});
        for (int i = 0; i < 64; ++i)
            CommonQuotaHandler::instance().SetLatestPrice(legSymbol(i), 10.0 + i);
        CommonQuotaHandler::instance().SetLatestPrice(QStringLiteral("600519.SH"), 1712.0);
        CommonQuotaHandler::instance().SetLatestPrice(QStringLiteral("000858.SZ"), 145.3);
        return true;
    }();
    Q_UNUSED(done)
}

void ensureRegistrySize(int size)
{
    setUpHost();
    Registry& r = registry();
    if (r.hot.isEmpty())
        registerHot();
    while (r.size < size)
        registerBackground(r.backgroundClasses.size());
}

int loggedWarnings()
{
    return g_warnings.load();
}

int registrySize()
{
    return registry().size;
}

const QStringList& hotIds(int legs)
{
    ensureRegistrySize(0);
    return registry().hot[legs];
}

int registeredT0Legs()
{
    return registry().t0Legs;
}

QString backgroundId(int index)
{
    return QStringLiteral("B%1").arg(index, 7, 10, QLatin1Char('0'));
}

InstanceClass backgroundClass(int index)
{
    const int slot = index % 20;
    if (slot < 8)
        return InstanceClass::Normal;
    if (slot < 18)
        return InstanceClass::T0;
    return slot == 18 ? InstanceClass::Multi : InstanceClass::RushLimitUp;
}

QString legSymbol(int index)
{
    return QStringLiteral("6%1.SH").arg(index, 5, 10, QLatin1Char('0'));
}

VariantMap freshCopy(const VariantMap& map)
{
    return QJsonDocument::fromJson(json(map).toUtf8()).toVariant().toMap();
}

VariantMapList freshCopy(const VariantMapList& list)
{
    VariantMapList copy;
    for (const VariantMap& map : list)
        copy.append(freshCopy(map));
    return copy;
}

ExampleInstances::Prototype normalPrototype(const QString& id, int legs)
{
    ExampleInstances::Prototype p = ExampleInstances::prototype(InstanceClass::Normal, id);
    const VariantMap legTemplate = p.params.value(C::SymbolParamKey).toList().value(0).toMap();
    QVariantList legList;
    VariantMapList ext{{{S::strategyID, id}}};
    for (int i = 0; i < legs; ++i) {
        VariantMap leg = legTemplate;
        leg.insert(C::Symbol, legSymbol(i));
        legList.append(leg);
        ext.append({{Tessel_Fields::System::requestExeStatus, QStringLiteral("0")},
                    {Sec::symbol, legSymbol(i)},
                    {Sec::side, kSideBuy},
                    {S::strategyStatus, kStatusRunning},
                    {H::ClParentOrderID,
                     QString(QStringLiteral("P-") % id % QLatin1Char('-') % QString::number(i))}});
    }
    p.params.insert(C::SymbolParamKey, legList);
    p.record.insert(S::strategyParas, json(p.params));
    p.record = freshCopy(p.record);
    p.params = freshCopy(p.params);
    p.extRecords = freshCopy(ext);
    return p;
}

VariantMapList progressGatherInput(const QString& id, int legs)
{
    VariantMapList records{{{S::strategyID, id}}};
    for (int i = 0; i < legs; ++i) {
        records.append({{Sec::symbol, legSymbol(i)},
                        {Sec::side, kSideBuy},
                        {Sec::orderQty, 36000},
                        {Sec::cumQty, 33000},
                        {H::StrategyCumAmount, 338250.0},
                        {Sec::avgPx, 10.25},
                        {H::onTradingAmount, 30750.0}});
    }
    return records;
}

VariantMapList strategyReportInput(const QString& id, int legs)
{
    VariantMapList records{{{S::strategyID, id}}};
    for (int i = 0; i < legs; ++i) {
        const VariantMap report{{P::Symbol, legSymbol(i)},
                                {C::OrderSide, kSideBuy},
                                {P::Timestamp, 1763605800000LL},
                                {P::FilledQty, 33000},
                                {P::TargetQty, 60000},
                                {P::EntrustQty, 36000},
                                {P::DealAmount, 338250.0},
                                {P::DealAvgPrice, 10.25},
                                {P::TargetAmount, 0},
                                {P::lastOrderTime, QStringLiteral("1763605795000")}};
        records.append(
            {{S::reportType, kUi}, {S::strategyID, id}, {S::strategyReport, json(report)}});
    }
    return records;
}

VariantMapList statusInput(int legs)
{
    VariantMapList records{{{S::strategyStatus, kStatusRunning},
                            {H::StrategyAlterComment, QStringLiteral("running")},
                            {H::AlgEndTime, QStringLiteral("20261120-11:30:00")}}};
    for (int i = 0; i < legs; ++i)
        records.append({{S::strategyStatus, kStatusRunning},
                        {Sec::side, kSideBuy},
                        {Sec::symbol, legSymbol(i)}});
    return records;
}

VariantMapList modifyInput(const QString& id, int legs)
{
    ExampleInstances::Prototype p = normalPrototype(id, legs);
    // A text of its own per instance, as every push brings a new one.
    p.params.insert(Algo_Values::AlgoParamId::comment, QString(QStringLiteral("modified ") % id));
    p.record.insert(S::strategyParas, json(p.params));
    return {{{S::strategyStatus, kStatusRunning},
             {H::ExecAckStatus, QStringLiteral("1")},
             {S::StrategyInstanceAlias, QStringLiteral("TWAP basket")},
             {H::StrategyAlterComment, QStringLiteral("quantity unchanged")},
             {S::strategyParas, p.record.value(S::strategyParas)}}};
}

VariantMapList queryInput(const QString& id)
{
    VariantMap record = ExampleInstances::prototype(InstanceClass::Normal, id).record;
    record.remove(S::strategyParas);
    record.insert(S::strategyStatus, kStatusRunning);
    return {freshCopy(record)};
}

VariantMapList classProgressInput(const QString& id, InstanceClass cls)
{
    if (cls != InstanceClass::T0)
        return progressGatherInput(id, 1);
    const QString report = QStringLiteral(
        "[{\"Symbol\":\"600519.SH\",\"TargetQty\":1000,\"buyOrderQty\":200,\"buyDealQty\":200,"
        "\"buyAmount\":342000.0,\"buyAvgPrice\":1710.0,\"buyCancelQty\":0,\"buyFee\":34.2,"
        "\"sellOrderQty\":200,\"sellDealQty\":100,\"sellAmount\":171500.0,"
        "\"sellAvgPrice\":1715.0,\"sellCancelQty\":0,\"sellFee\":17.15,\"AchieveProfit\":450.0},"
        "{\"Symbol\":\"000858.SZ\",\"TargetQty\":5000,\"buyOrderQty\":1000,\"buyDealQty\":800,"
        "\"buyAmount\":116000.0,\"buyAvgPrice\":145.0,\"buyCancelQty\":200,\"buyFee\":11.6,"
        "\"sellOrderQty\":1000,\"sellDealQty\":1000,\"sellAmount\":145600.0,"
        "\"sellAvgPrice\":145.6,\"sellCancelQty\":0,\"sellFee\":14.56,\"AchieveProfit\":300.0}]");
    return {{{S::strategyID, id}, {S::strategyReport, report}}};
}

} // namespace Bench
