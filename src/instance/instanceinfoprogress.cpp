// Execution progress of an instance: the progress-gather answer (one record
// per security, summed into the instance and spread over the legs) and the
// progress report texts (one JSON object per leg, summed back up).

#include "instance/instanceinfobase.h"

#include "common/algoconstants.h"
#include "common/logging.h"
#include "common/numbers.h"
#include "instance/contentwritesection.h"
#include "instance/instancemgr.h"
#include "instance/symbolkeyparts.h"
#include "platform/algodefines.h"
#include "platform/helmbusinessdata.h"

#include <QHash>
#include <QSet>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

namespace {

const QString kKeySeparator = QStringLiteral("_");

// What one progress-gather record says about one security and side.
struct GatherEntry
{
    QString symbol;
    QString side;
    double filledQty = 0.0;
    double entrustedQty = 0.0;
    double filledAmount = 0.0;
    double avgPrice = 0.0;
    double entrustedAmount = 0.0;
};

// The figures of a leg the answer does not mention.
const GatherEntry kNoEntry;

// StandardProgressAlgoNames as a set: asked once per progress answer.
const QSet<QString> kAmountDrivenAlgos(StandardProgressAlgoNames.cbegin(),
                                       StandardProgressAlgoNames.cend());

bool isGridStrategy(const QString& name)
{
    return name == AlgoConst::AlgoGridTrading || name == AlgoConst::AlgoGridTradingYmd;
}

// The fields of one progress report for a leg: the report's own fields with
// those of its orderInfo part (an object or the JSON text of one) on top.
VariantMap legReportFields(VariantMap report)
{
    // Without an orderInfo part the report is taken as it is, still shared
    // with the caller's map (take() would copy the whole map first).
    if (!report.contains(Algo_Fields::AlgoInstProgressFields::orderInfo))
        return report;
    const QVariant orderInfo = report.take(Algo_Fields::AlgoInstProgressFields::orderInfo);
    VariantMap details = orderInfo.toMap();
    if (details.isEmpty() && orderInfo.type() == QVariant::String)
        details = QJsonDocument::fromJson(orderInfo.toString().toUtf8()).object().toVariantMap();
    for (auto it = details.cbegin(); it != details.cend(); ++it)
        report.insert(it.key(), it.value());
    return report;
}

} // namespace

void InstanceInfoBase::OnRecv_StrategyProgressGatherResponse(const VariantMapList& records)
{
    if (records.isEmpty())
        return;
    const QString key = records.first().value(Tessel_Fields::Strategy::strategyID).toString();

    QHash<QString, GatherEntry> entries;
    entries.reserve(records.size());
    const bool grid = isGridStrategy(m_strategyName);
    double targetSum = 0.0;
    double filledSum = 0.0;
    double filledAmountSum = 0.0;
    for (int i = 1; i < records.size(); ++i) {
        const VariantMap& record = records.at(i);
        GatherEntry entry;
        entry.symbol = record.value(Tessel_Fields::Security::symbol).toString();
        entry.entrustedQty = record.value(Tessel_Fields::Security::orderQty).toDouble();
        entry.filledQty = record.value(Tessel_Fields::Security::cumQty).toDouble();
        entry.filledAmount = record.value(Algo_Fields::HelmStrategy::StrategyCumAmount).toDouble();
        entry.side = record.value(Tessel_Fields::Security::side).toString();
        if (entry.side.isEmpty())
            entry.side = m_instanceTradeOrder;
        entry.avgPrice = record.value(Tessel_Fields::Security::avgPx).toDouble();
        const double onTrading =
            record.value(Algo_Fields::HelmStrategy::onTradingAmount).toDouble();
        entry.entrustedAmount = onTrading + entry.filledAmount;
        entries.insert(entry.symbol + kKeySeparator + entry.side, entry);

        if (grid) {
            // A grid leg trades both sides under the side "All": it sees the
            // quantities of both summed, and no amounts.
            GatherEntry& both =
                entries[entry.symbol + kKeySeparator + Algo_Values::AlgoGlobalType::all];
            both.symbol = entry.symbol;
            both.side = Algo_Values::AlgoGlobalType::all;
            both.entrustedQty += entry.entrustedQty;
            both.filledQty += entry.filledQty;
        }

        const double factor = HelmBusinessDataInterface::GetDispFactorBySymbol(entry.symbol);
        targetSum += entry.entrustedQty * factor;
        filledSum += entry.filledQty * factor;
        filledAmountSum += entry.filledAmount;
    }

    qCDebug(lcAlgoInstance).noquote()
        << "###: "
        << "InstanceInfoBase::OnRecv_StrategyProgressGatherResponse"
        << "###instInfo.key: " << key << "###sumDealQty: " << filledSum
        << "###sumTargetQty: " << targetSum << "###sumDealBalance: " << filledAmountSum;
    if (key.isEmpty()) {
        qCDebug(lcAlgoInstance).noquote()
            << "InstanceInfoBase::OnRecv_StrategyProgressGatherResponse"
            << "empty key";
        return;
    }

    setFilledQty(filledSum);
    setFilledBalance(filledAmountSum);
    setProgrees(AlgoLogic::safeRatio(filledSum, m_targetQty));
    setAmountProgress(AlgoLogic::safeRatio(filledAmountSum, m_targetAmount));

    const bool amountDriven = kAmountDrivenAlgos.contains(m_strategyName);
    QList<QString> updatedKeys;
    QHash<QString, double> remaining;
    for (auto it = m_symbolMap.cbegin(); it != m_symbolMap.cend(); ++it) {
        SymbolInfoBase* leg = it.value();
        if (!leg) {
            qCDebug(lcAlgoInstance).noquote()
                << "InstanceInfoBase::OnRecv_StrategyProgressGatherResponse"
                << "null ptr" << it.key();
            continue;
        }
        const QString legKey = leg->getKey();
        const AlgoLogic::SymbolKeyParts parts(legKey);
        const QString symbol = parts.symbol();
        const QString symbolSide = parts.symbolSide();
        const auto found = entries.constFind(symbolSide);
        const GatherEntry& entry = found != entries.constEnd() ? found.value() : kNoEntry;

        leg->setDealBalance(entry.filledAmount);
        leg->setFilledQty(entry.filledQty);
        leg->setDealAvgPrice(entry.avgPrice);
        leg->setEntrustQty(entry.entrustedQty);
        leg->setOrderSide(entry.side);
        leg->setEntrustProgress(AlgoLogic::safeRatio(entry.entrustedQty, leg->targetQty()));
        leg->setProgress(AlgoLogic::safeRatio(entry.filledQty, leg->targetQty()));
        leg->setEntrustAmount(entry.entrustedAmount);
        leg->setAmountEntrustProgress(
            AlgoLogic::safeRatio(entry.entrustedAmount, leg->targetAmount()));
        leg->setAmountDealProgress(AlgoLogic::safeRatio(entry.filledAmount, leg->targetAmount()));
        updatedKeys.append(symbol + kKeySeparator + entry.side);
        remaining.insert(symbolSide, amountDriven ? leg->targetAmount() - entry.entrustedAmount
                                                  : leg->targetQty() - entry.entrustedQty);
    }

    if (isFinalStatus()) {
        qCDebug(lcAlgoInstance).noquote()
            << "InstanceInfoBase::OnRecv_StrategyProgressGatherResponse"
            << "rcv final status" << key;
        setFinalProgress(true);
    }

    // Both notifications in one queued call: the same order, one allocation.
    if (!updatedKeys.isEmpty() || !remaining.isEmpty()) {
        ContentWriteSection::notify([key, updatedKeys, remaining] {
            InstanceMgr* mgr = InstanceMgr::instance();
            if (!updatedKeys.isEmpty())
                emit mgr->signalProgressUpdated(key, updatedKeys);
            if (!remaining.isEmpty())
                emit mgr->sigSymbolRemainQty(key, remaining);
        });
    }
}

void InstanceInfoBase::OnRecv_StrategyReportResponse(const VariantMapList& records)
{
    if (records.size() < 2)
        return;
    QString reportType;
    QList<QString> reports;
    for (int i = 1; i < records.size(); ++i) {
        const VariantMap& record = records.at(i);
        if (reportType.isEmpty())
            reportType = record.value(Tessel_Fields::Strategy::reportType).toString();
        reports.append(record.value(Tessel_Fields::Strategy::strategyReport).toString());
    }
    if (reportType == Algo_Values::ReportType::ui)
        OnRecvInstProgressInfo(reports);
}

void InstanceInfoBase::OnRecvInstProgressInfo(const QList<QString>& reports)
{
    QMap<QString, QList<QString>> updatedByInstance;
    OnRecvInstProgressInfo(reports, false, updatedByInstance);
}

void InstanceInfoBase::OnRecvInstProgressInfo(const QList<QString>& reports, const bool& flag,
                                              QMap<QString, QList<QString>>& updatedByInstance)
{
    Q_UNUSED(flag)
    if (reports.isEmpty())
        return;
    const QList<QString> updated = parseSymbolProgressReport(m_instanceID, reports);
    parseInsPorgressReport();
    if (updated.isEmpty())
        return;
    InstanceMgr* mgr = InstanceMgr::instance();
    const QString instanceID = m_instanceID;
    ContentWriteSection::notify(
        [mgr, instanceID, updated] { emit mgr->signalProgressUpdated(instanceID, updated); });
    updatedByInstance.insert(m_instanceID, updated);
}

QList<QString> InstanceInfoBase::parseSymbolProgressReport(const QString& instanceID,
                                                           const QList<QString>& reports)
{
    QList<QString> updated;
    QHash<QString, qint64> lastTimestamp; // per symbol + side, within this batch
    for (const QString& text : reports) {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
        if (error.error != QJsonParseError::NoError) {
            qCDebug(lcAlgoInstance).noquote() << "json error: progress json: " << text;
            continue;
        }
        const VariantMap report = document.object().toVariantMap();
        const QString symbol = report.value(Algo_Fields::AlgoInstProgressFields::Symbol).toString();
        const QString side = report.value(Algo_Fields::AlgoInstContentInfo::OrderSide).toString();
        const qint64 timestamp =
            report.value(Algo_Fields::AlgoInstProgressFields::Timestamp).toLongLong();
        if (symbol.isEmpty()) {
            qCDebug(lcAlgoInstance).noquote() << "InstanceInfoBase::parseSymbolProgressReport"
                                              << "symbol is empty";
            continue;
        }
        const QString symbolSide = symbol + kKeySeparator + side;
        const auto last = lastTimestamp.constFind(symbolSide);
        if (last != lastTimestamp.constEnd() && timestamp < last.value()) {
            qCDebug(lcAlgoInstance).noquote()
                << "new timestamp:" << timestamp << "smaller than old timestamp:" << last.value();
            continue;
        }
        lastTimestamp.insert(symbolSide, timestamp);

        const QString key = InstanceMgr::GetSymbolExtInfoKey(instanceID, symbol, side);
        SymbolInfoBase* leg = getSymbolInfo(key);
        if (!leg) {
            qCDebug(lcAlgoInstance).noquote() << "InstanceInfoBase::parseSymbolProgressReport"
                                              << "symbolInfo null" << key;
            continue;
        }
        const VariantMap fields = legReportFields(report);
        leg->updateBySingleProgressReport(fields);
        leg->updateLastReportMap(fields);
        updated.append(key);
    }
    return updated;
}

void InstanceInfoBase::parseInsPorgressReport()
{
    if (m_instanceID.isEmpty())
        return;
    double targetSum = 0.0;
    double filledSum = 0.0;
    double filledAmountSum = 0.0;
    double targetAmountSum = 0.0;
    const QList<SymbolInfoBase*> legs = m_symbolMap.values();
    for (const SymbolInfoBase* leg : legs) {
        if (!leg)
            continue;
        const double factor = HelmBusinessDataInterface::GetDispFactorBySymbol(leg->symbol());
        targetSum += leg->targetQty() * factor;
        filledSum += leg->filledQty() * factor;
        filledAmountSum += leg->dealBalance();
        targetAmountSum += leg->targetAmount();
    }
    m_targetQty = targetSum;
    setFilledQty(filledSum);
    setFilledBalance(filledAmountSum);
    setProgrees(AlgoLogic::safeRatio(filledSum, targetSum));
    m_targetAmount = targetAmountSum;
    setAmountProgress(AlgoLogic::safeRatio(filledAmountSum, targetAmountSum));
}
