#include "platform/helmbusinessdata.h"
#include "common/locking.h"

#include <QHash>
#include <QReadWriteLock>

namespace {

struct BusinessDataStore
{
    QReadWriteLock lock;
    // Guarded by lock:
    QHash<QString, int> dispFactors;
    QHash<QString, QList<tagUserAccountInfo>> accountsByTrading;
};

BusinessDataStore& store()
{
    static BusinessDataStore* const s_store = new BusinessDataStore;
    return *s_store;
}

} // namespace

bool tagUserAccountInfo::operator==(const tagUserAccountInfo& other) const
{
    return tradingAccount == other.tradingAccount && fundAccount == other.fundAccount
        && fundAccountName == other.fundAccountName && productName == other.productName;
}

int HelmBusinessDataInterface::GetDispFactorBySymbol(const QString& symbol)
{
    BusinessDataStore& data = store();
    AlgoLogic::ReadLocker locker(&data.lock);
    return data.dispFactors.value(symbol, 1);
}

QList<tagUserAccountInfo>
HelmBusinessDataInterface::GetAccountInfoListFromTrade(const QString& tradingAccount,
                                                       bool includeAll)
{
    BusinessDataStore& data = store();
    AlgoLogic::ReadLocker locker(&data.lock);
    const QList<tagUserAccountInfo> all = data.accountsByTrading.value(tradingAccount);
    return includeAll ? all : all.mid(0, 1);
}

void HelmBusinessDataInterface::SetDispFactor(const QString& symbol, int factor)
{
    BusinessDataStore& data = store();
    AlgoLogic::WriteLocker locker(&data.lock);
    data.dispFactors.insert(symbol, factor);
}

void HelmBusinessDataInterface::AddAccountInfo(const tagUserAccountInfo& info)
{
    BusinessDataStore& data = store();
    AlgoLogic::WriteLocker locker(&data.lock);
    data.accountsByTrading[info.tradingAccount].append(info);
}

void HelmBusinessDataInterface::Reset()
{
    BusinessDataStore& data = store();
    AlgoLogic::WriteLocker locker(&data.lock);
    data.dispFactors.clear();
    data.accountsByTrading.clear();
}
