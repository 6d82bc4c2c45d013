// Parsing of the algo server's strategy-report pushes into the log buffers.

#include "log/logmgr.h"
#include "common/locking.h"

#include "common/logging.h"
#include "platform/algodefines.h"
#include "platform/businessdata.h"
#include "platform/helmutils.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

namespace {

const QString kProgressReportMap = QStringLiteral("progressReportMap");

struct ReportRecord
{
    VariantMap fields;
    QString type;
    QString strategyID;
    QString body;
};

ReportRecord readRecord(const QVariant& item)
{
    ReportRecord record;
    record.fields = item.toMap();
    record.type = record.fields.value(Tessel_Fields::Strategy::reportType).toString();
    record.strategyID = record.fields.value(Tessel_Fields::Strategy::strategyID).toString();
    record.body = record.fields.value(Tessel_Fields::Strategy::strategyReport).toString();
    return record;
}

// The members of a "progressReportMap" object, each re-serialised as compact
// JSON, in ascending member-name order (QJsonObject keeps its keys sorted).
QStringList progressMembers(const QJsonObject& reportMap)
{
    QStringList texts;
    for (auto it = reportMap.constBegin(); it != reportMap.constEnd(); ++it)
        texts.append(QString::fromUtf8(
            QJsonDocument(it.value().toObject()).toJson(QJsonDocument::Compact)));
    return texts;
}

} // namespace

void LogMgr::appendProgress(const QString& instId, const QStringList& texts)
{
    if (texts.isEmpty())
        return;
    AlgoLogic::MutexLocker locker(&m_progressMutex);
    m_instProgressHash[instId].append(texts);
}

void LogMgr::storeTradeMessage(const QString& instId, const QString& body)
{
    AlgoLogic::WriteLocker locker(&m_tradeMsgLock);
    VariantMap message;
    HelmUtils::TransStr2Map(body, message);
    if (message.isEmpty())
        return;
    message.insert(Tessel_Fields::Strategy::strategyID, instId);
    message.insert(Tessel_Fields::Security::symbol, message.value(Algo_Fields::Report::Symbol));
    const int number = m_tradeMsgMap.size();
    m_tradeMsgMap.insert(number, message);
    m_instTradeMsgIds[instId].insert(number);
    emit signalTradeMsgUpdated(instId, message);
}

void LogMgr::slotRecvGatherStrategyReport(const QVariant& reports)
{
    const QVariantList list = reports.toList();
    if (list.isEmpty())
        return;
    const QString login = CBusinessDataBase::GetInstance()->GetLoginAccount();
    for (const QVariant& item : list) {
        const ReportRecord record = readRecord(item);
        if (record.fields.value(Tessel_Fields::UserAccount::userID).toString() != login) {
            qCDebug(lcAlgoLog).noquote() << "LogMgr::slotRecvGatherStrategyReport"
                                         << "report for another user" << record.fields;
        }
        // A record without type or instance ends the whole push.
        if (record.type.isEmpty() || record.strategyID.isEmpty())
            return;

        if (record.type == Algo_Values::ReportType::ui) {
            if (record.fields.value(Algo_Fields::HelmStrategy::perfType).toString()
                == Algo_Values::PerfType::t0)
                continue; // T0 progress has its own entry point
            QJsonParseError error;
            const QJsonDocument document = QJsonDocument::fromJson(record.body.toUtf8(), &error);
            if (error.error != QJsonParseError::NoError)
                continue;
            const QJsonObject object = document.object();
            if (object.contains(kProgressReportMap))
                appendProgress(record.strategyID,
                               progressMembers(object.value(kProgressReportMap).toObject()));
            else if (!record.body.isEmpty())
                appendProgress(record.strategyID, QStringList{record.body});
        } else if (record.type == Algo_Values::ReportType::console) {
            if (record.body.isEmpty())
                continue;
            AlgoLogic::MutexLocker locker(&m_logMutex);
            m_instLogHash[record.strategyID].append(record.body);
        } else if (record.type == Algo_Values::ReportType::message) {
            if (record.body.isEmpty())
                continue;
            AlgoLogic::MutexLocker locker(&m_msgMutex);
            m_instMsgHash[record.strategyID].append(record.body);
        } else if (record.type == Algo_Values::ReportType::diff) {
            if (record.body.isEmpty())
                continue;
            AlgoLogic::MutexLocker locker(&m_diffMutex);
            m_instDiffHash.insert(record.strategyID, record.body);
        } else if (record.type == Algo_Values::ReportType::tradeMsg) {
            storeTradeMessage(record.strategyID, record.body);
        }
    }
}

void LogMgr::slotRecvT0ProgressPerformanceReport(const QVariant& reports)
{
    const QVariantList list = reports.toList();
    if (list.isEmpty())
        return;
    for (const QVariant& item : list) {
        const ReportRecord record = readRecord(item);
        if (record.type.isEmpty() || record.strategyID.isEmpty())
            return;
        if (record.type != Algo_Values::ReportType::ui) {
            qCDebug(lcAlgoLog).noquote()
                << "LogMgr::slotRecvT0ProgressPerformanceReport"
                << record.fields.value(Algo_Fields::HelmStrategy::perfType).toString()
                << record.strategyID << record.type << list;
            return;
        }
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(record.body.toUtf8(), &error);
        if (error.error != QJsonParseError::NoError) {
            qCWarning(lcAlgoLog).noquote() << "LogMgr::slotRecvT0ProgressPerformanceReport"
                                           << record.type << record.strategyID << error.error
                                           << error.errorString();
            continue;
        }
        const QJsonObject object = document.object();
        if (object.contains(kProgressReportMap))
            appendProgress(record.strategyID,
                           progressMembers(object.value(kProgressReportMap).toObject()));
    }
}
