// The log manager's report pushes: a body of every report type (one body per
// line), or a whole push given as JSON, into both report slots.

#include "fuzzsupport.h"

#include <QJsonDocument>

namespace {

const QString kInstance = QStringLiteral("F1");

struct Kind
{
    const char* reportType;
    const char* perfType;
    bool t0Slot;
};

const Kind kKinds[] = {
    {"ui", "", false},      {"ui", "t0", false}, {"console", "", false},
    {"message", "", false}, {"diff", "", false}, {"tradeMsg", "", false},
    {"ui", "t0", true},     {"ui", "", true},
};
constexpr int kKindCount = int(sizeof(kKinds) / sizeof(kKinds[0]));

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzSupport::startQt();
    LogMgr* logs = LogMgr::instance();
    const FuzzSupport::Input input = FuzzSupport::splitInput(data, size, kKindCount + 1);

    if (input.choice == kKindCount) {
        // A whole push of whatever shape the JSON has.
        const QVariant push = QJsonDocument::fromJson(input.bytes).toVariant();
        logs->slotRecvGatherStrategyReport(push);
        logs->slotRecvT0ProgressPerformanceReport(push);
    } else {
        const Kind& kind = kKinds[input.choice];
        QVariantList push;
        for (const QString& body : input.text.split(QLatin1Char('\n')))
            push.append(VariantMap{{QStringLiteral("reportType"), QLatin1String(kind.reportType)},
                                   {QStringLiteral("perfType"), QLatin1String(kind.perfType)},
                                   {QStringLiteral("strategyID"), kInstance},
                                   {QStringLiteral("strategyReport"), body}});
        if (kind.t0Slot)
            logs->slotRecvT0ProgressPerformanceReport(push);
        else
            logs->slotRecvGatherStrategyReport(push);
    }
    FuzzSupport::drainLogs({kInstance});
    return 0;
}
