#include "log/logmgr.h"
#include "common/locking.h"

#include "common/logging.h"
#include "common/metatypes.h"
#include "platform/algodefines.h"


#include <algorithm>

LogMgr* LogMgr::instance()
{
    static LogMgr* const s_instance = new LogMgr;
    return s_instance;
}

LogMgr::LogMgr()
    : QObject(nullptr)
{
    AlgoLogic::registerMetaTypes();
    m_thread.setObjectName(QStringLiteral("LogMgr_Thread"));
    moveToThread(&m_thread);
    m_thread.start(QThread::InheritPriority);
}

LogMgr::~LogMgr() = default;

void LogMgr::init()
{
    qCDebug(lcAlgoLog).noquote() << "LogMgr::init" << QStringLiteral("算法逻辑层-日志初始化")
                                 << "LogMgr init";
}

void LogMgr::popInstProgress(QHash<QString, QList<QString>>& out)
{
    AlgoLogic::MutexLocker locker(&m_progressMutex);
    m_instProgressHash.swap(out);
}

void LogMgr::popInstMsg(QHash<QString, QStringList>& out)
{
    AlgoLogic::MutexLocker locker(&m_msgMutex);
    m_instMsgHash.swap(out);
}

void LogMgr::popInstDiff(QHash<QString, QString>& out)
{
    AlgoLogic::MutexLocker locker(&m_diffMutex);
    m_instDiffHash.swap(out);
}

void LogMgr::popInstLog(const QString& instId, QList<QString>& out)
{
    AlgoLogic::MutexLocker locker(&m_logMutex);
    const auto it = m_instLogHash.find(instId);
    if (it == m_instLogHash.end())
        return;
    out = it.value();
    m_instLogHash.erase(it);
}

VariantMapList LogMgr::GetTradeMsgByInstIdList(const QStringList& instIds, int sortOrder)
{
    AlgoLogic::ReadLocker locker(&m_tradeMsgLock);
    QSet<int> numbers;
    for (const QString& instId : instIds) {
        const auto it = m_instTradeMsgIds.constFind(instId);
        if (it != m_instTradeMsgIds.constEnd())
            numbers.unite(it.value());
    }
    VariantMapList messages;
    messages.reserve(numbers.size());
    for (int number : qAsConst(numbers))
        messages.append(m_tradeMsgMap.value(number));

    if (sortOrder == 0)
        return messages;
    const bool ascending = sortOrder == 1;
    std::sort(messages.begin(), messages.end(),
              [ascending](const VariantMap& a, const VariantMap& b) {
                  const QString left = a.value(Algo_Fields::Report::ReportTime).toString();
                  const QString right = b.value(Algo_Fields::Report::ReportTime).toString();
                  return ascending ? left < right : right < left;
              });
    return messages;
}
