#include "replaydriver.h"

#include <QFile>

ReplayDriver::ReplayDriver(AlgoReplay::Replayer& replayer, QTextStream& errors, QObject* parent)
    : QObject(parent)
    , m_replayer(replayer)
    , m_errors(errors)
{
    connect(&m_timer, &QTimer::timeout, this, &ReplayDriver::step);
}

bool ReplayDriver::load(const QStringList& paths)
{
    bool readable = true;
    for (const QString& path : paths) {
        const bool isStdin = path == QLatin1String("-");
        QFile input(isStdin ? QString() : path);
        const bool opened =
            isStdin ? input.open(stdin, QIODevice::ReadOnly) : input.open(QIODevice::ReadOnly);
        if (!opened) {
            m_errors << path << ": cannot read: " << input.errorString() << '\n';
            readable = false;
            continue;
        }
        loadDevice(input, isStdin ? QStringLiteral("<stdin>") : path);
    }
    m_errors.flush();
    return readable;
}

void ReplayDriver::loadDevice(QIODevice& device, const QString& name)
{
    qint64 lineNumber = 0;
    while (!device.atEnd()) {
        const QByteArray line = device.readLine().trimmed();
        ++lineNumber;
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        Located located;
        located.where = name + QLatin1Char(':') + QString::number(lineNumber);
        QString error;
        if (!AlgoReplay::parseOperation(line, located.operation, error)) {
            m_errors << located.where << ": " << error << '\n';
            continue;
        }
        m_operations.append(located);
    }
}

void ReplayDriver::start(double operationsPerSecond)
{
    m_timer.setInterval(operationsPerSecond > 0.0 ? qRound(1000.0 / operationsPerSecond) : 0);
    if (m_operations.isEmpty()) {
        QMetaObject::invokeMethod(this, &ReplayDriver::finished, Qt::QueuedConnection);
        return;
    }
    m_timer.start();
}

void ReplayDriver::step()
{
    const Located& located = m_operations.at(m_next++);
    QString error;
    if (!m_replayer.apply(located.operation, error)) {
        m_errors << located.where << ": " << error << '\n';
        m_errors.flush();
    }
    emit operationApplied(located.operation.kind, m_next, m_operations.size());
    if (m_next == m_operations.size()) {
        m_timer.stop();
        emit finished();
    }
}
