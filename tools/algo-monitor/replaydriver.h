#pragma once

// Replays captures into the library one operation per timer tick, so that the
// window stays responsive and the models show the session as it unfolds.
// Lines are read and parsed up front with the replay module's reader; each
// operation is then applied, on this object's thread, the way algo-replay
// applies it.

#include "operation.h"
#include "replayer.h"

#include <QObject>
#include <QTextStream>
#include <QTimer>
#include <QVector>

class ReplayDriver : public QObject
{
    Q_OBJECT
public:
    // `replayer` and `errors` must outlive the driver.
    ReplayDriver(AlgoReplay::Replayer& replayer, QTextStream& errors, QObject* parent = nullptr);

    // Reads and parses the captures ("-" is standard input) in order. Bad
    // lines are reported on `errors` as FILE:LINE: reason and skipped. False
    // when a capture cannot be read.
    bool load(const QStringList& paths);

    // Starts applying; `operationsPerSecond` 0 applies one per event-loop turn.
    void start(double operationsPerSecond);

    int total() const { return m_operations.size(); }
    int applied() const { return m_next; }

signals:
    // After each operation; `applied` of `total` are done.
    void operationApplied(AlgoReplay::OpKind kind, int applied, int total);
    // After the last operation (at once when there is none).
    void finished();

private:
    struct Located
    {
        QString where; // FILE:LINE
        AlgoReplay::Operation operation;
    };

    void loadDevice(QIODevice& device, const QString& name);
    void step();

    AlgoReplay::Replayer& m_replayer;
    QTextStream& m_errors;
    QVector<Located> m_operations;
    int m_next = 0;
    QTimer m_timer;
};
