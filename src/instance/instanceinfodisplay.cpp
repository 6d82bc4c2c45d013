// Display derivations of an instance: side, account, product and target
// texts for the user interface, built from the legs first and, for an
// instance without legs, from the last server record.

#include "instance/instanceinfobase.h"

#include "common/algoconstants.h"
#include "platform/algodefines.h"
#include "platform/businessdata.h"
#include "platform/helmbusinessdata.h"

namespace {

const QString kJoin = QStringLiteral(",");
const QString kSideBuy = QStringLiteral("Buy");
const QString kSideSell = QStringLiteral("Sell");
const QString kSideAntirepo = QStringLiteral("Antirepo");

// The display word of a side code. Selling a bond-type security (a repo code)
// is a reverse repo. Codes the terminal has no word for are shown as given.
QString sideWord(const QString& side, const QString& symbol)
{
    const bool buy = side == QLatin1String("1") || side.compare(kSideBuy, Qt::CaseInsensitive) == 0;
    const bool sell = side == QLatin1String("2")
                   || side.compare(kSideSell, Qt::CaseInsensitive) == 0;
    if (buy)
        return kSideBuy;
    if (!sell)
        return side;
    const QString type = CBusinessDataBase::GetInstance()->GetSecurityTypeBySymbol(symbol);
    return type == Tessel_Values::MdcSecurityType::BondType ? kSideAntirepo : kSideSell;
}

// The first non-empty text among `keys` of the record.
QString firstText(const VariantMap& record, std::initializer_list<QString> keys)
{
    for (const QString& key : keys) {
        const QString value = record.value(key).toString();
        if (!value.isEmpty())
            return value;
    }
    return QString();
}

void appendDistinct(QStringList& list, const QString& value)
{
    if (!value.isEmpty() && !list.contains(value))
        list.append(value);
}

// Account records of each trading account in `accounts` (joined by ","),
// projected through `field` of the first record of each.
QString accountInfoField(const QString& accounts, QString tagUserAccountInfo::*field)
{
    QStringList values;
    const QStringList tradingAccounts = accounts.split(kJoin, Qt::SkipEmptyParts);
    for (const QString& account : tradingAccounts) {
        const QList<tagUserAccountInfo> infos =
            HelmBusinessDataInterface::GetAccountInfoListFromTrade(account, true);
        if (!infos.isEmpty())
            appendDistinct(values, infos.first().*field);
    }
    return values.join(kJoin);
}

} // namespace

QString InstanceInfoBase::getOrderSide(const QString& symbol) const
{
    QStringList words;
    for (const SymbolInfoBase* leg : m_symbolMap) {
        if (leg && (symbol.isEmpty() || leg->symbol() == symbol))
            appendDistinct(words, sideWord(leg->orderSide(), leg->symbol()));
    }
    if (words.isEmpty() && m_symbolMap.isEmpty()) {
        const QString side = firstText(m_dataMap, {Algo_Fields::AlgoInstContentInfo::OrderSide,
                                                   Tessel_Fields::Security::side});
        const QString recordSymbol =
            symbol.isEmpty() ? firstText(m_dataMap, {Algo_Fields::AlgoInstContentInfo::Symbol})
                             : symbol;
        appendDistinct(words, sideWord(side, recordSymbol));
    }
    return words.join(kJoin);
}

QString InstanceInfoBase::getOrderSide_Inst() const
{
    return getOrderSide(QString());
}

QString InstanceInfoBase::getEntrustProp_Inst() const
{
    const QStringList props = distinctLegValues(&SymbolInfoBase::entrustProp);
    if (!props.isEmpty())
        return props.join(kJoin);
    return firstText(m_dataMap, {Algo_Fields::AlgoInstContentInfo::EntrustProp,
                                 Algo_Values::AlgoParamId::entrustProp});
}

QString InstanceInfoBase::getEntrustQtyStr() const
{
    if (StandardProgressAlgoNames.contains(m_strategyName))
        return QString::number(m_targetAmount, 'f', 2);
    return QString::number(m_targetQty, 'g', 15);
}

QString InstanceInfoBase::getTradingAccount() const
{
    const QStringList accounts = distinctLegValues(&SymbolInfoBase::getTradingAccount);
    if (!accounts.isEmpty())
        return accounts.join(kJoin);
    return firstText(m_dataMap, {Algo_Fields::AlgoInstContentInfo::TradingAccount,
                                 AlgoConst::ParamTradingAccount});
}

QString InstanceInfoBase::getFundAccount() const
{
    const QStringList accounts = distinctLegValues(&SymbolInfoBase::getFundAccount);
    if (!accounts.isEmpty())
        return accounts.join(kJoin);
    return accountInfoField(getTradingAccount(), &tagUserAccountInfo::fundAccount);
}

QString InstanceInfoBase::getFundAccountName() const
{
    const QStringList names = distinctLegValues(&SymbolInfoBase::getFundAccountName);
    if (!names.isEmpty())
        return names.join(kJoin);
    return accountInfoField(getTradingAccount(), &tagUserAccountInfo::fundAccountName);
}

QString InstanceInfoBase::getStockAccount() const
{
    const QStringList accounts = distinctLegValues(&SymbolInfoBase::getSecurityAccout);
    if (!accounts.isEmpty())
        return accounts.join(kJoin);
    return firstText(m_dataMap, {Algo_Fields::AlgoInstContentInfo::SecurityAccount,
                                 AlgoConst::ParamSecurityAccount});
}

QString InstanceInfoBase::getProductName() const
{
    return accountInfoField(getTradingAccount(), &tagUserAccountInfo::productName);
}

QString InstanceInfoBase::getTradingAccount_Inst() const
{
    return m_tradingAccount_Inst.isEmpty() ? getTradingAccount() : m_tradingAccount_Inst;
}

QString InstanceInfoBase::getFundAccount_Inst() const
{
    return m_fundAccount_Inst.isEmpty() ? getFundAccount() : m_fundAccount_Inst;
}

QString InstanceInfoBase::getFundAccountName_Inst() const
{
    return m_fundAccountName_Inst.isEmpty() ? getFundAccountName() : m_fundAccountName_Inst;
}

QString InstanceInfoBase::getProductName_Inst() const
{
    return m_productName_Inst.isEmpty() ? getProductName() : m_productName_Inst;
}
