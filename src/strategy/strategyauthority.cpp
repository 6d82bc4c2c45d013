// Which algos each account may use: queries over the cached authority table,
// always under the manager's read lock.

#include "strategy/strategymgr.h"
#include "common/locking.h"

#include "platform/kxalgodatamgr.h"

#include <QSet>

namespace {

QStringList sortedNames(const QSet<QString>& names)
{
    QStringList list(names.cbegin(), names.cend());
    std::sort(list.begin(), list.end());
    return list;
}

QList<AesStrategy> catalogueEntries(const QStringList& names)
{
    QList<AesStrategy> entries;
    entries.reserve(names.size());
    for (const QString& name : names)
        entries.append(KxAlgoDataMgr::instance().GetStrategy(name));
    return entries;
}

} // namespace

QStringList StrategyMgr::GetAuthorityNameIntersection(QStringList accounts,
                                                      QString category) const
{
    AlgoLogic::ReadLocker locker(&m_lock);
    QSet<QString> names;
    bool first = true;
    for (const QString& account : qAsConst(accounts)) {
        const QMap<QString, QString> algos = m_authorityMap.value(account).value(category);
        QSet<QString> authorised;
        for (auto it = algos.cbegin(); it != algos.cend(); ++it)
            authorised.insert(it.key());
        if (first) {
            names = authorised;
            first = false;
        } else {
            names.intersect(authorised);
        }
    }
    return sortedNames(names);
}

QList<AesStrategy> StrategyMgr::GetAuthorityIntersection(QStringList accounts,
                                                         QString category) const
{
    // The catalogue is asked after the table's lock is released.
    return catalogueEntries(GetAuthorityNameIntersection(accounts, category));
}

QList<AesStrategy> StrategyMgr::GetAuthorityIntersection(QString category) const
{
    QStringList accounts;
    {
        AlgoLogic::ReadLocker locker(&m_lock);
        accounts = m_authorityMap.keys();
    }
    return GetAuthorityIntersection(accounts, category);
}

QList<AesStrategy> StrategyMgr::GetAuthorityUnion(QString category) const
{
    AlgoLogic::ReadLocker locker(&m_lock);
    QSet<QString> names;
    for (auto account = m_authorityMap.cbegin(); account != m_authorityMap.cend(); ++account) {
        const auto algos = account.value().constFind(category);
        if (algos == account.value().constEnd())
            continue;
        for (auto it = algos.value().cbegin(); it != algos.value().cend(); ++it)
            names.insert(it.key());
    }
    return catalogueEntries(sortedNames(names));
}

QList<AesStrategy> StrategyMgr::GetAuthorityAlgo(QString account, QString category) const
{
    return GetAuthorityIntersection(QStringList{account}, category);
}

QStringList StrategyMgr::GetAuthorityAlgoName(QString account, QString category) const
{
    return GetAuthorityNameIntersection(QStringList{account}, category);
}

QStringList StrategyMgr::GetAuthorityAlgoAlias(QString account, QString category) const
{
    QStringList aliases;
    const QList<AesStrategy> entries = GetAuthorityAlgo(account, category);
    for (const AesStrategy& entry : entries)
        aliases.append(entry.alias());
    return aliases;
}

QStringList StrategyMgr::GetAuthorityAccountList(QString algoName, QString category) const
{
    AlgoLogic::ReadLocker locker(&m_lock);
    QStringList accounts;
    for (auto account = m_authorityMap.cbegin(); account != m_authorityMap.cend(); ++account) {
        const auto algos = account.value().constFind(category);
        if (algos != account.value().constEnd() && algos.value().contains(algoName))
            accounts.append(account.key());
    }
    return accounts;
}

bool StrategyMgr::hasCorrespAuthority(QString account, QString algoName, QString category) const
{
    AlgoLogic::ReadLocker locker(&m_lock);
    return m_authorityMap.value(account).value(category).contains(algoName);
}
