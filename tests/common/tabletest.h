#pragma once

// Helpers of the table-driven tests: data rows from a text table, one row a
// line ("name | cell | cell ...", cells trimmed), records from JSON, and the
// captured log as text.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

#include <array>

namespace TableTest {

// A QStringList column "row" holding each line's cells after the name.
inline void addRows(const char* table)
{
    QTest::addColumn<QStringList>("row");
    for (const QString& line : QString(table).split('\n', Qt::SkipEmptyParts)) {
        QStringList cells = line.split('|');
        for (QString& cell : cells)
            cell = cell.trimmed();
        QTest::newRow(qPrintable(cells.takeFirst())) << cells;
    }
}

// The current row's first N cells (empty where the line has fewer).
template <int N> std::array<QString, N> cells()
{
    QFETCH(QStringList, row);
    std::array<QString, N> out;
    for (int i = 0; i < N; ++i)
        out[i] = row.value(i);
    return out;
}

inline VariantMap record(const QString& json)
{
    return QJsonDocument::fromJson(json.toUtf8()).object().toVariantMap();
}

// Every message as "level: text", one per line.
inline QString logged(const LogCapture& log)
{
    QStringList lines;
    for (const CapturedMessage& m : log.messages())
        lines << (m.type == QtInfoMsg    ? "info: "
                  : m.type == QtDebugMsg ? "debug: "
                                         : "warning: ")
                     + m.text;
    return lines.join('\n');
}

} // namespace TableTest
