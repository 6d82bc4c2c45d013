#pragma once

// One line of a session capture, parsed and checked: the operation and its
// members, already converted to the library's types.

#include <algologic.h>

#include <QString>

namespace AlgoReplay {

enum class OpKind {
    Login,
    Catalogue,
    Authority,
    DispFactor,
    Account,
    Price,
    Create,
    Query,
    ProgressGather,
    StrategyReport,
    DeleteResponse,
    StatusUpdate,
    ModifyPush,
    SymbolExt,
    Detail,
    Forget,
    Report,
    T0Report,
    Tick,
};

struct Operation
{
    OpKind kind = OpKind::Tick;
    QString text;          // account, symbol, algoType or instanceID, by kind
    QString algoName;      // create
    double number = 0.0;   // factor or price
    VariantMap record;     // create, detail; symbolExt params
    VariantMapList records;
    QList<AesStrategy> strategies;
    AuthorityTable table;
    tagUserAccountInfo account;
};

// Parses one capture line. On failure returns false and sets `error` to a
// readable reason (not JSON, unknown op, missing member, wrong member type).
bool parseOperation(const QByteArray& line, Operation& op, QString& error);

// The instance IDs a line mentions: its instanceID member and the strategyID
// of each record.
QStringList mentionedInstanceIds(const Operation& op);

} // namespace AlgoReplay
