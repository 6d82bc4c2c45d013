#pragma once

// Shared set-up of the fuzz targets: a Qt application object, a silent
// message handler (the library logs every refused input, which would drown
// the fuzzer's own output and slow it down), and the input's split into a
// choice and a text. Instances come from the example sessions.

#include "exampleinstances.h"

#include <algologic.h>

#include <QString>

#include <cstddef>
#include <cstdint>

namespace FuzzSupport {

using ExampleInstances::InstanceClass;
using ExampleInstances::makeInstance;

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

// Empties the log manager's buffers so that inputs do not accumulate.
void drainLogs(const QStringList& instanceIds);

} // namespace FuzzSupport
