#include "exampleinstances.h"

#include "operation.h"

#include <QFile>
#include <QHash>
#include <QMutex>

#include <cstdio>
#include <cstdlib>

namespace ExampleInstances {

namespace {

const QString kStrategyID = QStringLiteral("strategyID");
const QString kClientID = QStringLiteral("clAlgoID");
const QString kRushID = QStringLiteral("rush1");

const char* exampleFor(InstanceClass cls)
{
    switch (cls) {
    case InstanceClass::T0:
        return "t0-day.jsonl";
    case InstanceClass::Multi:
        return "basis-trade.jsonl";
    default:
        return "twap-morning.jsonl";
    }
}

// The first instance an example session creates, with its legs' set-up.
Prototype loadFromExample(InstanceClass cls)
{
    QFile file(QStringLiteral(ALGOLOGIC_EXAMPLES_DIR "/") + QLatin1String(exampleFor(cls)));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(file.fileName()));
        std::abort();
    }
    Prototype result;
    QString instanceID;
    while (!file.atEnd()) {
        AlgoReplay::Operation op;
        QString error;
        if (!AlgoReplay::parseOperation(file.readLine().trimmed(), op, error))
            continue;
        if (op.kind == AlgoReplay::OpKind::Create && instanceID.isEmpty()) {
            result.algoType = op.text;
            result.algoName = op.algoName;
            result.record = op.record;
            instanceID = op.record.value(kStrategyID).toString();
        } else if (op.kind == AlgoReplay::OpKind::SymbolExt && op.text == instanceID) {
            result.params = op.record;
            result.extRecords = op.records;
            break;
        }
    }
    return result;
}

// A rush-limit-up order for one security, selling side named in the params.
Prototype rushPrototype()
{
    Prototype result;
    result.algoType = Algo_Values::AlgoGlobalType::feature;
    result.algoName = QStringLiteral("RushLimitUp");
    result.record = {{kStrategyID, kRushID},
                     {QStringLiteral("strategyName"), QStringLiteral("RushLimitUp")},
                     {QStringLiteral("strategyType"), Algo_Values::AlgoGlobalType::feature},
                     {QStringLiteral("strategyStatus"), QStringLiteral("1")}};
    result.params = {{QStringLiteral("symbol"), QStringLiteral("600000")},
                     {QStringLiteral("market"), QStringLiteral("SH")},
                     {QStringLiteral("tradingAccount"), QStringLiteral("880001")},
                     {QStringLiteral("side"), QStringLiteral("Sell")},
                     {QStringLiteral("orderQty"), 9000}};
    result.extRecords = {{{kStrategyID, kRushID}}};
    return result;
}

const Prototype& cached(InstanceClass cls)
{
    static QMutex mutex;
    static QHash<int, Prototype> prototypes;
    AlgoLogic::MutexLocker locker(&mutex);
    auto it = prototypes.find(int(cls));
    if (it == prototypes.end())
        it = prototypes.insert(int(cls), cls == InstanceClass::RushLimitUp
                                             ? rushPrototype()
                                             : loadFromExample(cls));
    return it.value();
}

} // namespace

Prototype prototype(InstanceClass cls, const QString& instanceID)
{
    Prototype result = cached(cls);
    if (instanceID.isEmpty())
        return result;
    result.record.insert(kStrategyID, instanceID);
    result.record.insert(kClientID, QStringLiteral("cl-") + instanceID);
    if (!result.extRecords.isEmpty())
        result.extRecords.first().insert(kStrategyID, instanceID);
    return result;
}

std::unique_ptr<InstanceInfoBase> makeInstance(InstanceClass cls, const QString& instanceID)
{
    const Prototype p = prototype(cls, instanceID);
    InstanceMgr* mgr = InstanceMgr::instance();
    std::unique_ptr<InstanceInfoBase> inst(mgr->CreateInstance(p.algoType, VariantMap(),
                                                               p.algoName));
    inst->initInfo(p.record);
    mgr->UpdateSymbolExtInfoByParams(inst.get(), p.params, p.extRecords);
    return inst;
}

InstanceInfoBase* registerInstance(InstanceClass cls, const QString& instanceID)
{
    const Prototype p = prototype(cls, instanceID);
    InstanceMgr* mgr = InstanceMgr::instance();
    InstanceInfoBase* inst = mgr->CreateInstance(p.algoType, p.record, p.algoName);
    AlgoLogic::WriteLocker locker(mgr->getLocker());
    mgr->UpdateSymbolExtInfoByParams(inst, p.params, p.extRecords);
    return inst;
}

QString prototypeId(InstanceClass cls)
{
    return cached(cls).record.value(kStrategyID).toString();
}

} // namespace ExampleInstances
