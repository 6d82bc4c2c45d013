#include "models/instancerow.h"

#include "instance/instanceinfobase.h"
#include "models/cellformat.h"

namespace AlgoLogic {

namespace {

const QString kJoin = QStringLiteral(",");
const QString kNewLine = QStringLiteral("\n");

QStringList distinct(const QStringList& values)
{
    QStringList result;
    for (const QString& value : values) {
        if (!value.isEmpty() && !result.contains(value))
            result.append(value);
    }
    return result;
}

} // namespace

QStringList instanceColumnHeaders()
{
    QStringList headers;
    for (const char* header :
         {"ID", "Alias", "Strategy", "Status", "Progress", "Side", "Symbols", "Target", "Filled",
          "Avg price", "Filled amount", "Target amount", "Amount progress", "Account", "Start",
          "End", "Comment", "Remark"})
        headers.append(QLatin1String(header));
    Q_ASSERT(headers.size() == InstanceTableModel::ColumnCount);
    return headers;
}

SnapshotTableModel::Row readInstanceRow(const InstanceInfoBase& inst)
{
    using namespace Cells;
    SnapshotTableModel::Row row(InstanceTableModel::ColumnCount);
    const QString classType = inst.getClassType();
    row[InstanceTableModel::IdColumn] = text(
        inst.instanceID(),
        describe({{"Client ID", inst.clInstanceID()},
                  {"Algo type", inst.instAlgoType()},
                  {"Class", classType},
                  {"Created by", inst.getCreateUser()},
                  {"Created", time(inst.getCreateTime()).text}}));
    row[InstanceTableModel::AliasColumn] = text(inst.instanceAlias());
    row[InstanceTableModel::StrategyColumn] =
        text(inst.strategyName(), describe({{"Algo type", inst.instAlgoType()}}));
    row[InstanceTableModel::StatusColumn] = status(
        inst.status(), describe({{"Result", inst.getResultInfo()},
                                 {"Progress", inst.finalProgress() ? QStringLiteral("final")
                                                                   : QString()}}));
    row[InstanceTableModel::SideColumn] = text(inst.getOrderSide_Inst());
    const QStringList symbols = distinct(inst.GetAllSymbolNames());
    row[InstanceTableModel::SymbolColumn] =
        text(symbols.join(kJoin), symbols.size() > 1 ? symbols.join(kNewLine) : QString());
    row[InstanceTableModel::AccountColumn] =
        text(inst.getTradingAccount_Inst(),
             describe({{"Fund account", inst.getFundAccount_Inst()},
                       {"Fund account name", inst.getFundAccountName_Inst()}}));
    row[InstanceTableModel::TargetColumn] = quantity(inst.targetQty());
    row[InstanceTableModel::FilledColumn] = quantity(inst.filledQty());
    row[InstanceTableModel::TargetAmountColumn] = amount(inst.targetAmount());
    row[InstanceTableModel::FilledAmountColumn] = amount(inst.filledBalance());
    row[InstanceTableModel::ProgressColumn] =
        ratio(inst.standardProgress(), describe({{"By quantity", ratioText(inst.progrees())},
                                                 {"By amount", ratioText(inst.amountProgress())}}));
    row[InstanceTableModel::AmountProgressColumn] = ratio(inst.amountProgress());
    row[InstanceTableModel::AvgPriceColumn] = price(inst.avgPrice());
    row[InstanceTableModel::StartColumn] = time(inst.startTime());
    row[InstanceTableModel::EndColumn] = time(inst.endTime());
    const QString comment = inst.getInstanceComments();
    row[InstanceTableModel::CommentColumn] = text(comment, comment);
    const QString remark = inst.remark();
    row[InstanceTableModel::RemarkColumn] = text(remark, remark);
    return row;
}

} // namespace AlgoLogic
