#pragma once

// The model after a replay, as JSON or as a readable table. Field names
// follow the getters: a leading "get" is dropped and the next letter lowered
// (getInstanceComments -> instanceComments; getCPU -> cpu).

#include <QJsonArray>
#include <QJsonObject>
#include <QSet>
#include <QString>

class InstanceInfoBase;
class SymbolInfoBase;

namespace AlgoReplay {

// Every getter-backed field of the instance, of its class and of its legs
// (in key order). REQUIRES: the content lock held for reading.
QJsonObject instanceToJson(InstanceInfoBase& instance);
QJsonObject legToJson(const SymbolInfoBase& leg);

// Every registered instance in ascending ID order, read under the content
// lock.
QJsonArray instancesToJson();

// Drains the log manager: progress, messages and diffs of every instance,
// console lines and trade messages (ascending report time) of `instanceIds`.
QJsonObject drainLogs(const QSet<QString>& instanceIds);

// {"instances": [...], "logs": {...}}
QJsonObject snapshot(const QSet<QString>& instanceIds);

// A readable table of instances and their legs, from a snapshot's instances.
QString formatTable(const QJsonArray& instances);

} // namespace AlgoReplay
