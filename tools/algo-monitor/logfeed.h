#pragma once

// Drains LogMgr's buffers on a timer and keeps what it took as display lines
// per instance. Console lines are drained for the followed instance only
// (LogMgr keeps the others' until they are followed); messages, parameter
// differences and progress texts are drained for every instance at once and
// kept here; trade messages arrive through signalTradeMsgUpdated.

#include <QHash>
#include <QObject>
#include <QStringList>
#include <QTimer>

class LogFeed : public QObject
{
    Q_OBJECT
public:
    explicit LogFeed(QObject* parent = nullptr);

    void start(int intervalMs);
    // The instance whose console lines are drained.
    void follow(const QString& instanceID);
    // Every line kept for the instance, oldest first.
    QStringList lines(const QString& instanceID) const { return m_lines.value(instanceID); }

public slots:
    void poll();

signals:
    void linesAdded(const QString& instanceID, const QStringList& lines);

private:
    void append(const QString& instanceID, const QString& kind, const QStringList& texts);

    QString m_followed;
    QHash<QString, QStringList> m_lines;
    QTimer m_timer;
};
