#pragma once

// Shared set-up of the fuzz targets: a Qt application object, a silent
// message handler (the library logs every refused input, which would drown
// the fuzzer's own output and slow it down), and fresh instances of every
// instance class built from the example sessions.

#include <algologic.h>

#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace FuzzSupport {

// The classes a fuzz input can pick with its first byte.
enum class InstanceClass { Normal, T0, Multi, RushLimitUp, Count };

// Creates the application object once and silences Qt's message output.
void startQt();

// The first byte of `data` picks one of `count` choices; the rest is text.
struct Input
{
    int choice = 0;
    QString text;
    QByteArray bytes;
};
Input splitInput(const uint8_t* data, size_t size, int count);

// A fresh, unregistered instance of the class with its legs, as the example
// sessions create it. The caller owns it.
std::unique_ptr<InstanceInfoBase> makeInstance(InstanceClass cls);
// Its instance ID.
QString instanceIdOf(InstanceClass cls);

// Empties the log manager's buffers so that inputs do not accumulate.
void drainLogs(const QStringList& instanceIds);

} // namespace FuzzSupport
