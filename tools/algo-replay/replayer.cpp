#include "replayer.h"
#include "common/locking.h"

#include <QFile>

namespace AlgoReplay {

namespace {

constexpr qint64 kProgressEvery = 10000;

// Runs `work` on the thread of `context` and waits for it: a host's queued
// call, made deterministic.
template <typename Work>
void runOnThreadOf(QObject* context, Work work)
{
    if (context->thread() == QThread::currentThread())
        work();
    else
        QMetaObject::invokeMethod(context, work, Qt::BlockingQueuedConnection);
}

QVariant asPush(const VariantMapList& records)
{
    QVariantList list;
    list.reserve(records.size());
    for (const VariantMap& record : records)
        list.append(record);
    return list;
}

} // namespace

Replayer::Replayer(const ReplayOptions& options, QTextStream& errors)
    : m_errors(errors)
    , m_options(options)
{
    StrategyMgr::instance()->init();
    LogMgr::instance()->init();
    InstanceMgr* mgr = InstanceMgr::instance();
    if (m_options.liveTimer)
        mgr->init();
    // Wait until both managers' threads run their event loops: a short
    // replay must not end before they have even started.
    runOnThreadOf(mgr, [] {});
    runOnThreadOf(LogMgr::instance(), [] {});
}

void Replayer::replayFile(const QString& path)
{
    if (path == QLatin1String("-")) {
        QFile input;
        if (input.open(stdin, QIODevice::ReadOnly)) {
            replayDevice(input, QStringLiteral("<stdin>"));
            return;
        }
    } else {
        QFile input(path);
        if (input.open(QIODevice::ReadOnly)) {
            replayDevice(input, path);
            return;
        }
        m_errors << path << ": cannot read: " << input.errorString() << '\n';
        m_errors.flush();
        m_stats.unreadable = true;
        return;
    }
    m_errors << "<stdin>: cannot read\n";
    m_errors.flush();
    m_stats.unreadable = true;
}

void Replayer::replayDevice(QIODevice& device, const QString& name)
{
    qint64 lineNumber = 0;
    while (!device.atEnd()) {
        const QByteArray line = device.readLine().trimmed();
        ++lineNumber;
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        ++m_stats.lines;
        Operation op;
        QString error;
        if (!parseOperation(line, op, error) || !apply(op, error)) {
            ++m_stats.badLines;
            m_errors << name << ':' << lineNumber << ": " << error << '\n';
            m_errors.flush();
        }
        if (m_options.progress && m_stats.lines % kProgressEvery == 0) {
            m_errors << "\r" << name << ": " << m_stats.lines << " operations replayed";
            m_errors.flush();
        }
    }
    if (m_options.progress && m_stats.lines >= kProgressEvery) {
        m_errors << '\n';
        m_errors.flush();
    }
}

bool Replayer::apply(const Operation& op, QString& error)
{
    for (const QString& id : mentionedInstanceIds(op))
        m_instanceIds.insert(id);

    InstanceMgr* mgr = InstanceMgr::instance();
    LogMgr* logs = LogMgr::instance();
    switch (op.kind) {
    case OpKind::Login:
        CBusinessDataBase::GetInstance()->SetLoginAccount(op.text);
        break;
    case OpKind::Catalogue:
        KxAlgoDataMgr::instance().setStrategies(op.strategies);
        break;
    case OpKind::Authority:
        KxAlgoDataMgr::instance().setAuthority(op.table);
        break;
    case OpKind::DispFactor:
        HelmBusinessDataInterface::SetDispFactor(op.text, static_cast<int>(op.number));
        break;
    case OpKind::Account:
        HelmBusinessDataInterface::AddAccountInfo(op.account);
        break;
    case OpKind::Price:
        CommonQuotaHandler::instance().SetLatestPrice(op.text, op.number);
        break;
    case OpKind::Create: {
        InstanceInfoBase* inst = mgr->CreateInstance(op.text, op.record, op.algoName);
        if (op.record.isEmpty())
            delete inst; // an empty record makes an unregistered object nobody holds
        break;
    }
    case OpKind::Query:
        mgr->OnRecv_QueryAlgoStrategyResponse(op.records);
        break;
    case OpKind::ProgressGather:
        mgr->OnRecv_StrategyProgressGatherResponse(op.records);
        break;
    case OpKind::StrategyReport:
        mgr->OnRecv_StrategyReportResponse(op.records);
        break;
    case OpKind::DeleteResponse:
        mgr->OnRecv_DeleteAlgoInstanceResponse(op.records);
        break;
    case OpKind::StatusUpdate:
        mgr->OnRecv_InstStatusUpdate(op.text, op.records);
        break;
    case OpKind::ModifyPush:
        mgr->onRecv_InstModifyPush(op.text, op.records);
        break;
    case OpKind::SymbolExt:
    case OpKind::Detail: {
        InstanceInfoBase* inst = mgr->GetInstanceInfoForAllType().value(op.text, nullptr);
        if (!inst) {
            error = QStringLiteral("instance \"%1\" is not registered").arg(op.text);
            return false;
        }
        // What a host's handlers do: the instance is shared, so write under
        // the content lock.
        AlgoLogic::WriteLocker locker(mgr->getLocker());
        if (op.kind == OpKind::SymbolExt)
            mgr->UpdateSymbolExtInfoByParams(inst, op.record, op.records);
        else
            inst->OnRect_QueryAlgoStrategyResponse_Detail(op.record);
        break;
    }
    case OpKind::Forget:
        mgr->DeleteInstance(op.text);
        break;
    case OpKind::Report: {
        const QVariant push = asPush(op.records);
        runOnThreadOf(logs, [logs, push] { logs->slotRecvGatherStrategyReport(push); });
        break;
    }
    case OpKind::T0Report: {
        const QVariant push = asPush(op.records);
        runOnThreadOf(logs, [logs, push] { logs->slotRecvT0ProgressPerformanceReport(push); });
        break;
    }
    case OpKind::Tick:
        runOnThreadOf(mgr, [mgr] { mgr->slotCalculateTimer(QString()); });
        break;
    }
    return true;
}

} // namespace AlgoReplay
