#include "logfeed.h"

#include <algologic.h>

#include <QJsonDocument>
#include <QJsonObject>

namespace {

QString compactJson(const VariantMap& map)
{
    return QString::fromUtf8(
        QJsonDocument(QJsonObject::fromVariantMap(map)).toJson(QJsonDocument::Compact));
}

} // namespace

LogFeed::LogFeed(QObject* parent)
    : QObject(parent)
{
    connect(&m_timer, &QTimer::timeout, this, &LogFeed::poll);
    // Emitted on LogMgr's thread with its trade-message lock held: queued.
    connect(LogMgr::instance(), &LogMgr::signalTradeMsgUpdated, this,
            [this](const QString& id, const VariantMap& message) {
                append(id, QStringLiteral("trade"), {compactJson(message)});
            },
            Qt::QueuedConnection);
}

void LogFeed::start(int intervalMs)
{
    m_timer.start(intervalMs);
}

void LogFeed::follow(const QString& instanceID)
{
    m_followed = instanceID;
    poll();
}

void LogFeed::poll()
{
    LogMgr* logs = LogMgr::instance();
    if (!m_followed.isEmpty()) {
        QList<QString> console;
        logs->popInstLog(m_followed, console);
        append(m_followed, QStringLiteral("console"), console);
    }
    QHash<QString, QStringList> messages;
    logs->popInstMsg(messages);
    for (auto it = messages.cbegin(); it != messages.cend(); ++it)
        append(it.key(), QStringLiteral("message"), it.value());
    QHash<QString, QString> diffs;
    logs->popInstDiff(diffs);
    for (auto it = diffs.cbegin(); it != diffs.cend(); ++it)
        append(it.key(), QStringLiteral("diff"), {it.value()});
    QHash<QString, QList<QString>> progress;
    logs->popInstProgress(progress);
    for (auto it = progress.cbegin(); it != progress.cend(); ++it)
        append(it.key(), QStringLiteral("progress"), it.value());
}

void LogFeed::append(const QString& instanceID, const QString& kind, const QStringList& texts)
{
    if (texts.isEmpty())
        return;
    QStringList added;
    for (const QString& text : texts)
        added.append(QStringLiteral("[%1] %2").arg(kind, text));
    m_lines[instanceID] += added;
    emit linesAdded(instanceID, added);
}
