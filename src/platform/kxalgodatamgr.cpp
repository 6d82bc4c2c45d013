#include "platform/kxalgodatamgr.h"
#include "common/locking.h"

#include "common/logging.h"
#include "common/metatypes.h"

KxAlgoDataMgr& KxAlgoDataMgr::instance()
{
    // Heap-allocated and never freed: the terminal's managers stay connected
    // to it until the process ends.
    static KxAlgoDataMgr* const s_instance = new KxAlgoDataMgr;
    return *s_instance;
}

KxAlgoDataMgr::KxAlgoDataMgr()
{
    AlgoLogic::registerMetaTypes();
}

KxAlgoDataMgr::~KxAlgoDataMgr() = default;

int KxAlgoDataMgr::indexOfLocked(const QString& algoName) const
{
    const auto it = m_indexByName.constFind(algoName);
    return it == m_indexByName.constEnd() ? -1 : it.value();
}

AesStrategy KxAlgoDataMgr::GetStrategy(const QString& algoName) const
{
    AlgoLogic::ReadLocker locker(&m_lock);
    const int index = indexOfLocked(algoName);
    return index < 0 ? AesStrategy() : m_strategies.at(index);
}

QMap<QString, AesStrategy> KxAlgoDataMgr::GetStrategyList(QMap<QString, QString> filter) const
{
    QMap<QString, AesStrategy> result;
    AlgoLogic::ReadLocker locker(&m_lock);
    for (auto it = m_indexByName.cbegin(); it != m_indexByName.cend(); ++it) {
        if (filter.isEmpty() || filter.contains(it.key()))
            result.insert(it.key(), m_strategies.at(it.value()));
    }
    return result;
}

void KxAlgoDataMgr::GetAllStrategies(QList<AesStrategy>& out, const QString& algoType) const
{
    out.clear();
    AlgoLogic::ReadLocker locker(&m_lock);
    for (const AesStrategy& strategy : m_strategies) {
        if (algoType.isEmpty() || strategy.algoType() == algoType)
            out.append(strategy);
    }
}

QList<AesStrategy> KxAlgoDataMgr::GetAllStrategies() const
{
    AlgoLogic::ReadLocker locker(&m_lock);
    return m_strategies;
}

void KxAlgoDataMgr::GetStrategyCnt(int& count) const
{
    AlgoLogic::ReadLocker locker(&m_lock);
    count = m_strategies.size();
}

QString KxAlgoDataMgr::getFeeId(const QString& algoName) const
{
    return GetStrategy(algoName).feeId();
}

QString KxAlgoDataMgr::GetReportFormat(const QString& algoName) const
{
    return GetStrategy(algoName).reportFormat();
}

QString KxAlgoDataMgr::GetUnderlyingMaxNum(const QString& algoName) const
{
    return GetStrategy(algoName).underlyingMaxNum();
}

bool KxAlgoDataMgr::ContainsStrategy(const QString& algoName) const
{
    AlgoLogic::ReadLocker locker(&m_lock);
    return indexOfLocked(algoName) >= 0;
}

QMap<QString, QMap<QString, QMap<QString, QString>>> KxAlgoDataMgr::GetAllAuthorityInfo() const
{
    AlgoLogic::ReadLocker locker(&m_lock);
    return m_authority;
}

bool KxAlgoDataMgr::isAlgoStrategyReady() const
{
    AlgoLogic::ReadLocker locker(&m_lock);
    return m_strategiesReady;
}

bool KxAlgoDataMgr::isNewAuthorityReady() const
{
    AlgoLogic::ReadLocker locker(&m_lock);
    return m_authorityReady;
}

void KxAlgoDataMgr::requestAlgoData()
{
    qCDebug(lcAlgoPlatform).noquote() << "KxAlgoDataMgr::requestAlgoData"
                                      << "no data source to ask, catalogue ready:"
                                      << isAlgoStrategyReady()
                                      << "authority ready:" << isNewAuthorityReady();
}

void KxAlgoDataMgr::setStrategies(const QList<AesStrategy>& list)
{
    {
        AlgoLogic::WriteLocker locker(&m_lock);
        m_strategies = list;
        m_indexByName.clear();
        for (int i = 0; i < m_strategies.size(); ++i)
            m_indexByName.insert(m_strategies.at(i).name(), i);
        m_strategiesReady = true;
    }
    emit sigAlgoInfoReady();
    emit sigQryAlgoStrategiesRsp(list);
}

void KxAlgoDataMgr::setAuthority(const QMap<QString, QMap<QString, QMap<QString, QString>>>& table)
{
    {
        AlgoLogic::WriteLocker locker(&m_lock);
        m_authority = table;
        m_authorityReady = true;
    }
    emit signalNewAuthority(table);
}

void KxAlgoDataMgr::clear()
{
    AlgoLogic::WriteLocker locker(&m_lock);
    m_strategies.clear();
    m_indexByName.clear();
    m_authority.clear();
    m_strategiesReady = false;
    m_authorityReady = false;
}
