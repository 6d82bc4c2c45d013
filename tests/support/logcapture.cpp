#include "logcapture.h"

#include "common/locking.h"

#include <atomic>

namespace {
std::atomic<LogCapture*> s_current{nullptr};
}

LogCapture::LogCapture()
{
    s_current.store(this);
    m_previous = qInstallMessageHandler(&LogCapture::handler);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(m_previous);
    s_current.store(nullptr);
}

void LogCapture::handler(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    LogCapture* capture = s_current.load();
    if (!capture)
        return;
    CapturedMessage message{type,
                            QString::fromLatin1(context.category ? context.category : ""),
                            text,
                            QString::fromLatin1(context.file ? context.file : ""),
                            QString::fromLatin1(context.function ? context.function : ""),
                            context.line};
    AlgoLogic::MutexLocker locker(&capture->m_mutex);
    capture->m_messages.append(message);
}

QList<CapturedMessage> LogCapture::messages() const
{
    AlgoLogic::MutexLocker locker(&m_mutex);
    return m_messages;
}

void LogCapture::clear()
{
    AlgoLogic::MutexLocker locker(&m_mutex);
    m_messages.clear();
}

int LogCapture::count(QtMsgType type, const QString& fragment) const
{
    AlgoLogic::MutexLocker locker(&m_mutex);
    int n = 0;
    for (const CapturedMessage& message : m_messages) {
        if (message.type == type && message.text.contains(fragment))
            ++n;
    }
    return n;
}

int LogCapture::countOfType(QtMsgType type) const
{
    AlgoLogic::MutexLocker locker(&m_mutex);
    int n = 0;
    for (const CapturedMessage& message : m_messages) {
        if (message.type == type)
            ++n;
    }
    return n;
}

QString LogCapture::last(QtMsgType type) const
{
    AlgoLogic::MutexLocker locker(&m_mutex);
    for (int i = m_messages.size() - 1; i >= 0; --i) {
        if (m_messages.at(i).type == type)
            return m_messages.at(i).text;
    }
    return QString();
}
