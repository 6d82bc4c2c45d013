// Parameter texts and the records that carry them, for every instance class:
// the parameter setter and parser, initialisation from a full record, the
// modify push, the status push and the detail answer.

#include "fuzzsupport.h"

#include "snapshot.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

enum Entry { SetParams, UpdateParamMap, InitFromRecord, ModifyPush, StatusPush, Detail, EntryCount };

VariantMapList recordsOf(const QByteArray& json)
{
    VariantMapList records;
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (document.isObject())
        records.append(document.object().toVariantMap());
    for (const QJsonValue& value : document.array())
        records.append(value.toObject().toVariantMap());
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

    switch (input.choice / classes) {
    case SetParams:
        inst->setParams(input.text);
        break;
    case UpdateParamMap:
        inst->UpdateParamMap(input.text);
        break;
    case InitFromRecord: {
        VariantMap record = recordsOf(input.bytes).value(0);
        inst->initInfo(record);
        inst->initSymbolInfo(record, record);
        break;
    }
    case ModifyPush:
        inst->OnRecv_InstModifyPush(
            {{{QStringLiteral("strategyStatus"), QStringLiteral("1")},
              {QStringLiteral("ExecAckStatus"), QStringLiteral("1")},
              {QStringLiteral("StrategyAlterComment"), QStringLiteral("fuzz")},
              {QStringLiteral("strategyParas"), input.text}}});
        break;
    case StatusPush:
        inst->OnRecv_InstStatusUpdate(recordsOf(input.bytes));
        break;
    case Detail:
        inst->OnRect_QueryAlgoStrategyResponse_Detail(recordsOf(input.bytes).value(0));
        break;
    }
    AlgoReplay::instanceToJson(*inst);
    return 0;
}
