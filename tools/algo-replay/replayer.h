#pragma once

// Drives the library with the operations of session captures, the way a
// terminal does: the manager singletons are started as a host starts them,
// and every operation has finished, queued work included, before the next
// one starts, so a replay is deterministic.

#include "operation.h"

#include <QIODevice>
#include <QSet>
#include <QString>
#include <QTextStream>

namespace AlgoReplay {

struct ReplayOptions
{
    bool liveTimer = false;    // start the 30 s profit timer (InstanceMgr::init)
    bool progress = false;     // periodic progress on stderr
};

struct ReplayStats
{
    qint64 lines = 0;          // operations read (comments and blanks excluded)
    qint64 badLines = 0;
    bool unreadable = false;   // some capture could not be opened
};

class Replayer
{
public:
    // Starts the managers (StrategyMgr and LogMgr init, InstanceMgr
    // instance; its init only with liveTimer).
    explicit Replayer(const ReplayOptions& options, QTextStream& errors);

    // Replays one capture ("-" for standard input), streaming line by line.
    // Bad lines are reported with file and line number and skipped.
    void replayFile(const QString& path);
    void replayDevice(QIODevice& device, const QString& name);

    // Applies one parsed operation. False (with `error`) when it cannot be
    // applied, e.g. an operation on an instance that is not registered.
    bool apply(const Operation& op, QString& error);

    const ReplayStats& stats() const { return m_stats; }
    // Every instance ID that appeared in the captures.
    const QSet<QString>& instanceIds() const { return m_instanceIds; }

private:
    QTextStream& m_errors;
    ReplayOptions m_options;
    ReplayStats m_stats;
    QSet<QString> m_instanceIds;
};

} // namespace AlgoReplay
