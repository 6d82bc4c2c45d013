#include "operation.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

namespace AlgoReplay {

namespace {

const QHash<QString, OpKind>& opKinds()
{
    static const QHash<QString, OpKind> kinds{
        {QStringLiteral("login"), OpKind::Login},
        {QStringLiteral("catalogue"), OpKind::Catalogue},
        {QStringLiteral("authority"), OpKind::Authority},
        {QStringLiteral("dispFactor"), OpKind::DispFactor},
        {QStringLiteral("account"), OpKind::Account},
        {QStringLiteral("price"), OpKind::Price},
        {QStringLiteral("create"), OpKind::Create},
        {QStringLiteral("query"), OpKind::Query},
        {QStringLiteral("progressGather"), OpKind::ProgressGather},
        {QStringLiteral("strategyReport"), OpKind::StrategyReport},
        {QStringLiteral("deleteResponse"), OpKind::DeleteResponse},
        {QStringLiteral("statusUpdate"), OpKind::StatusUpdate},
        {QStringLiteral("modifyPush"), OpKind::ModifyPush},
        {QStringLiteral("symbolExt"), OpKind::SymbolExt},
        {QStringLiteral("detail"), OpKind::Detail},
        {QStringLiteral("forget"), OpKind::Forget},
        {QStringLiteral("report"), OpKind::Report},
        {QStringLiteral("t0Report"), OpKind::T0Report},
        {QStringLiteral("tick"), OpKind::Tick},
    };
    return kinds;
}

// Reads the members of one line, remembering the first problem.
class MemberReader
{
public:
    explicit MemberReader(const QJsonObject& object)
        : m_object(object)
    {
    }

    QString text(const QString& name, bool optional = false)
    {
        const QJsonValue value = member(name, optional);
        if (value.isUndefined())
            return QString();
        if (!value.isString())
            fail(QStringLiteral("member \"%1\" is not a text").arg(name));
        return value.toString();
    }

    double number(const QString& name)
    {
        const QJsonValue value = member(name, false);
        if (!value.isUndefined() && !value.isDouble())
            fail(QStringLiteral("member \"%1\" is not a number").arg(name));
        return value.toDouble();
    }

    QJsonObject object(const QString& name)
    {
        const QJsonValue value = member(name, false);
        if (!value.isUndefined() && !value.isObject())
            fail(QStringLiteral("member \"%1\" is not an object").arg(name));
        return value.toObject();
    }

    // An array whose every element is an object.
    QJsonArray objects(const QString& name)
    {
        const QJsonValue value = member(name, false);
        if (value.isUndefined())
            return QJsonArray();
        if (!value.isArray()) {
            fail(QStringLiteral("member \"%1\" is not an array").arg(name));
            return QJsonArray();
        }
        const QJsonArray array = value.toArray();
        for (const QJsonValue& element : array) {
            if (!element.isObject()) {
                fail(QStringLiteral("member \"%1\" holds an element that is not an object")
                         .arg(name));
                break;
            }
        }
        return array;
    }

    VariantMapList records(const QString& name)
    {
        VariantMapList list;
        const QJsonArray array = objects(name);
        for (const QJsonValue& element : array)
            list.append(element.toObject().toVariantMap());
        return list;
    }

    const QString& error() const { return m_error; }

private:
    QJsonValue member(const QString& name, bool optional)
    {
        const QJsonValue value = m_object.value(name);
        if (value.isUndefined() && !optional)
            fail(QStringLiteral("missing member \"%1\"").arg(name));
        return value;
    }

    void fail(const QString& error)
    {
        if (m_error.isEmpty())
            m_error = error;
    }

    QJsonObject m_object;
    QString m_error;
};

// {account: {category: {algoName: node}}}; false when a level is no object
// or a node is no text.
bool readAuthority(const QJsonObject& o, AuthorityTable& table)
{
    for (auto account = o.begin(); account != o.end(); ++account) {
        if (!account.value().isObject())
            return false;
        const QJsonObject categories = account.value().toObject();
        for (auto category = categories.begin(); category != categories.end(); ++category) {
            if (!category.value().isObject())
                return false;
            const QJsonObject algos = category.value().toObject();
            for (auto algo = algos.begin(); algo != algos.end(); ++algo) {
                if (!algo.value().isString())
                    return false;
                table[account.key()][category.key()][algo.key()] = algo.value().toString();
            }
        }
    }
    return true;
}

} // namespace

bool parseOperation(const QByteArray& line, Operation& op, QString& error)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(line, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        error = QStringLiteral("not JSON: %1").arg(parseError.errorString());
        return false;
    }
    if (!document.isObject()) {
        error = QStringLiteral("not a JSON object");
        return false;
    }
    const QJsonObject object = document.object();
    const QJsonValue opValue = object.value(QStringLiteral("op"));
    if (!opValue.isString()) {
        error = opValue.isUndefined() ? QStringLiteral("missing member \"op\"")
                                      : QStringLiteral("member \"op\" is not a text");
        return false;
    }
    const auto kind = opKinds().constFind(opValue.toString());
    if (kind == opKinds().constEnd()) {
        error = QStringLiteral("unknown op \"%1\"").arg(opValue.toString());
        return false;
    }

    op = Operation();
    op.kind = kind.value();
    MemberReader reader(object);
    switch (op.kind) {
    case OpKind::Login:
        op.text = reader.text(QStringLiteral("account"));
        break;
    case OpKind::Catalogue: {
        const QJsonArray list = reader.objects(QStringLiteral("strategies"));
        for (const QJsonValue& entry : list) {
            MemberReader entryReader(entry.toObject());
            AesStrategy strategy(entryReader.text(QStringLiteral("name")),
                                 entryReader.text(QStringLiteral("alias")),
                                 entryReader.text(QStringLiteral("algoType")),
                                 entryReader.text(QStringLiteral("underlyingProp")));
            strategy.setReportFormat(entryReader.text(QStringLiteral("reportFormat"), true));
            strategy.setFeeId(entryReader.text(QStringLiteral("feeId"), true));
            strategy.setUnderlyingMaxNum(
                entryReader.text(QStringLiteral("underlyingMaxNum"), true));
            if (!entryReader.error().isEmpty()) {
                error = QStringLiteral("strategies: %1").arg(entryReader.error());
                return false;
            }
            op.strategies.append(strategy);
        }
        break;
    }
    case OpKind::Authority:
        if (!readAuthority(reader.object(QStringLiteral("table")), op.table)
            && reader.error().isEmpty()) {
            error = QStringLiteral("member \"table\" is not {account: {category: {algo: text}}}");
            return false;
        }
        break;
    case OpKind::DispFactor:
        op.text = reader.text(QStringLiteral("symbol"));
        op.number = reader.number(QStringLiteral("factor"));
        break;
    case OpKind::Account:
        op.account.tradingAccount = reader.text(QStringLiteral("tradingAccount"));
        op.account.fundAccount = reader.text(QStringLiteral("fundAccount"));
        op.account.fundAccountName = reader.text(QStringLiteral("fundAccountName"));
        op.account.productName = reader.text(QStringLiteral("productName"), true);
        break;
    case OpKind::Price:
        op.text = reader.text(QStringLiteral("symbol"));
        op.number = reader.number(QStringLiteral("price"));
        break;
    case OpKind::Create:
        op.text = reader.text(QStringLiteral("algoType"));
        op.record = reader.object(QStringLiteral("record")).toVariantMap();
        op.algoName = reader.text(QStringLiteral("algoName"), true);
        break;
    case OpKind::StatusUpdate:
    case OpKind::ModifyPush:
        op.text = reader.text(QStringLiteral("instanceID"));
        op.records = reader.records(QStringLiteral("records"));
        break;
    case OpKind::SymbolExt:
        op.text = reader.text(QStringLiteral("instanceID"));
        op.record = reader.object(QStringLiteral("params")).toVariantMap();
        op.records = reader.records(QStringLiteral("records"));
        break;
    case OpKind::Detail:
        op.text = reader.text(QStringLiteral("instanceID"));
        op.record = reader.object(QStringLiteral("record")).toVariantMap();
        break;
    case OpKind::Forget:
        op.text = reader.text(QStringLiteral("instanceID"));
        break;
    case OpKind::Query:
    case OpKind::ProgressGather:
    case OpKind::StrategyReport:
    case OpKind::DeleteResponse:
    case OpKind::Report:
    case OpKind::T0Report:
        op.records = reader.records(QStringLiteral("records"));
        break;
    case OpKind::Tick:
        break;
    }
    if (!reader.error().isEmpty()) {
        error = reader.error();
        return false;
    }
    return true;
}

QStringList mentionedInstanceIds(const Operation& op)
{
    QStringList ids;
    switch (op.kind) {
    case OpKind::StatusUpdate:
    case OpKind::ModifyPush:
    case OpKind::SymbolExt:
    case OpKind::Detail:
    case OpKind::Forget:
        ids.append(op.text);
        break;
    default:
        break;
    }
    for (const VariantMap& record : op.records) {
        const QString id = record.value(Tessel_Fields::Strategy::strategyID).toString();
        if (!id.isEmpty())
            ids.append(id);
    }
    const QString created = op.record.value(Tessel_Fields::Strategy::strategyID).toString();
    if (!created.isEmpty())
        ids.append(created);
    return ids;
}

} // namespace AlgoReplay
