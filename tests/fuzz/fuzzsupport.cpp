#include "fuzzsupport.h"

#include "operation.h"

#include <QCoreApplication>
#include <QFile>
#include <QHash>

#include <cstdio>
#include <cstdlib>

namespace FuzzSupport {

namespace {

struct Prototype
{
    QString algoType;
    QString algoName;
    VariantMap record;
    VariantMap params;
    VariantMapList extRecords;
};

void silentHandler(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", qPrintable(message));
        std::abort();
    }
}

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
Prototype loadPrototype(InstanceClass cls)
{
    QFile file(QStringLiteral(ALGOLOGIC_EXAMPLES_DIR "/") + QLatin1String(exampleFor(cls)));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(file.fileName()));
        std::abort();
    }
    Prototype prototype;
    QString instanceID;
    while (!file.atEnd()) {
        AlgoReplay::Operation op;
        QString error;
        if (!AlgoReplay::parseOperation(file.readLine().trimmed(), op, error))
            continue;
        if (op.kind == AlgoReplay::OpKind::Create && instanceID.isEmpty()) {
            prototype.algoType = op.text;
            prototype.algoName = op.algoName;
            prototype.record = op.record;
            instanceID = op.record.value(QStringLiteral("strategyID")).toString();
        } else if (op.kind == AlgoReplay::OpKind::SymbolExt && op.text == instanceID) {
            prototype.params = op.record;
            prototype.extRecords = op.records;
            break;
        }
    }
    return prototype;
}

const Prototype& prototypeFor(InstanceClass cls)
{
    static QHash<int, Prototype> prototypes;
    auto it = prototypes.find(int(cls));
    if (it == prototypes.end())
        it = prototypes.insert(int(cls), loadPrototype(cls));
    return it.value();
}

} // namespace

void startQt()
{
    static int argc = 1;
    static char name[] = "algologic-fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* app = nullptr;
    if (app)
        return;
    qInstallMessageHandler(silentHandler);
    app = new QCoreApplication(argc, argv);
}

Input splitInput(const uint8_t* data, size_t size, int count)
{
    Input input;
    if (size == 0)
        return input;
    input.choice = data[0] % count;
    input.bytes = QByteArray(reinterpret_cast<const char*>(data + 1), int(size - 1));
    input.text = QString::fromUtf8(input.bytes);
    return input;
}

std::unique_ptr<InstanceInfoBase> makeInstance(InstanceClass cls)
{
    InstanceMgr* mgr = InstanceMgr::instance();
    if (cls == InstanceClass::RushLimitUp) {
        std::unique_ptr<InstanceInfoBase> inst(mgr->CreateInstance(
            Algo_Values::AlgoGlobalType::feature, VariantMap(), QStringLiteral("RushLimitUp")));
        inst->setInstanceID(instanceIdOf(cls));
        inst->initSymbolInfo({{QStringLiteral("symbol"), QStringLiteral("600000")},
                              {QStringLiteral("market"), QStringLiteral("SH")},
                              {QStringLiteral("tradingAccount"), QStringLiteral("880001")},
                              {QStringLiteral("side"), QStringLiteral("Sell")},
                              {QStringLiteral("orderQty"), 9000}},
                             {});
        return inst;
    }
    const Prototype& prototype = prototypeFor(cls);
    std::unique_ptr<InstanceInfoBase> inst(
        mgr->CreateInstance(prototype.algoType, VariantMap(), prototype.algoName));
    inst->initInfo(prototype.record);
    mgr->UpdateSymbolExtInfoByParams(inst.get(), prototype.params, prototype.extRecords);
    return inst;
}

QString instanceIdOf(InstanceClass cls)
{
    if (cls == InstanceClass::RushLimitUp)
        return QStringLiteral("rush1");
    return prototypeFor(cls).record.value(QStringLiteral("strategyID")).toString();
}

void drainLogs(const QStringList& instanceIds)
{
    LogMgr* logs = LogMgr::instance();
    QHash<QString, QList<QString>> progress;
    logs->popInstProgress(progress);
    QHash<QString, QStringList> messages;
    logs->popInstMsg(messages);
    QHash<QString, QString> diffs;
    logs->popInstDiff(diffs);
    for (const QString& id : instanceIds) {
        QList<QString> lines;
        logs->popInstLog(id, lines);
    }
}

} // namespace FuzzSupport
