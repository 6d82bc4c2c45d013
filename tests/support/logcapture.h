#pragma once

// Captures every message of Qt's message logger while alive, from any thread,
// so that tests can check texts, levels and categories. Restores the previous
// handler on destruction. One capture at a time.

#include <QList>
#include <QMutex>
#include <QString>
#include <QtGlobal>

struct CapturedMessage
{
    QtMsgType type;
    QString category;
    QString text;
    QString file;
    QString function;
    int line;
};

class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    QList<CapturedMessage> messages() const;
    void clear();

    // Messages of `type` whose text contains `fragment`.
    int count(QtMsgType type, const QString& fragment) const;
    bool contains(QtMsgType type, const QString& fragment) const
    {
        return count(type, fragment) > 0;
    }
    // Number of messages of `type`, whatever the text.
    int countOfType(QtMsgType type) const;
    // The text of the last message of `type`, or an empty text.
    QString last(QtMsgType type) const;

private:
    static void handler(QtMsgType type, const QMessageLogContext& context, const QString& text);

    mutable QMutex m_mutex;
    QList<CapturedMessage> m_messages;
    QtMessageHandler m_previous = nullptr;
};
