// Progress texts and records for every instance class: the report texts
// (one per line), the progress-gather answer, the strategy-report answer
// and the multi-strategy snapshot text.

#include "fuzzsupport.h"

#include "snapshot.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

enum Entry { Reports, ReportsWithKeys, Gather, ReportResponse, MultiSnapshot, EntryCount };

const QString kStrategyID = QStringLiteral("strategyID");
const QString kStrategyReport = QStringLiteral("strategyReport");

// The gather answer: the instance header, then the input's records when it
// is a JSON array, else one record carrying the input as its report text.
VariantMapList gatherRecords(const QString& id, const FuzzSupport::Input& input)
{
    VariantMapList records{{{kStrategyID, id}}};
    const QJsonDocument document = QJsonDocument::fromJson(input.bytes);
    if (document.isArray()) {
        for (const QJsonValue& value : document.array())
            records.append(value.toObject().toVariantMap());
    } else {
        records.append({{kStrategyID, id}, {kStrategyReport, input.text}});
    }
    return records;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using FuzzSupport::InstanceClass;
    FuzzSupport::startQt();
    const int classes = int(InstanceClass::Count);
    const FuzzSupport::Input input = FuzzSupport::splitInput(data, size, classes * EntryCount);
    const auto cls = InstanceClass(input.choice % classes);
    std::unique_ptr<InstanceInfoBase> inst = FuzzSupport::makeInstance(cls);
    const QString id = ExampleInstances::prototypeId(cls);
    const QList<QString> lines = input.text.split(QLatin1Char('\n'));

    switch (input.choice / classes) {
    case Reports:
        inst->OnRecvInstProgressInfo(lines);
        break;
    case ReportsWithKeys: {
        QMap<QString, QList<QString>> updated;
        inst->OnRecvInstProgressInfo(lines, !lines.isEmpty() && lines.size() % 2 == 0, updated);
        break;
    }
    case Gather:
        inst->OnRecv_StrategyProgressGatherResponse(gatherRecords(id, input));
        break;
    case ReportResponse: {
        VariantMapList records{{{kStrategyID, id}}};
        for (const QString& line : lines)
            records.append({{QStringLiteral("reportType"), QStringLiteral("ui")},
                            {kStrategyID, id},
                            {kStrategyReport, line}});
        inst->OnRecv_StrategyReportResponse(records);
        break;
    }
    case MultiSnapshot:
        if (auto* multi = dynamic_cast<MultiInstanceInfo*>(inst.get()))
            multi->fillMultiProgressReport(input.text);
        else
            inst->OnRecvInstProgressInfo(lines);
        break;
    }
    AlgoReplay::instanceToJson(*inst);
    return 0;
}
