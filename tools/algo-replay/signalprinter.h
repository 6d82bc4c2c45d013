#pragma once

// Prints every signal of the three managers as one JSON line
// {"signal": NAME, "args": [...]} while a replay runs. Signals emitted on the
// managers' own threads are printed from there; the replay waits for each
// operation, so the lines come in the order the library emitted them.

#include <QMutex>
#include <QObject>
#include <QTextStream>
#include <QVariantList>

namespace AlgoReplay {

class SignalPrinter : public QObject
{
    Q_OBJECT
public:
    explicit SignalPrinter(QTextStream& out, QObject* parent = nullptr);

private:
    void print(const char* name, const QVariantList& args);

    QTextStream& m_out;
    QMutex m_mutex;
};

} // namespace AlgoReplay
