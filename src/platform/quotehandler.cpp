#include "platform/quotehandler.h"
#include "common/locking.h"

CommonQuotaHandler& CommonQuotaHandler::instance()
{
    static CommonQuotaHandler* const s_instance = new CommonQuotaHandler;
    return *s_instance;
}

CommonQuotaHandler::~CommonQuotaHandler() = default;

double CommonQuotaHandler::GetLatestPrice(const QString& symbol, int flag)
{
    Q_UNUSED(flag)
    AlgoLogic::ReadLocker locker(&m_lock);
    return m_prices.value(symbol, 0.0);
}

void CommonQuotaHandler::SetLatestPrice(const QString& symbol, double price)
{
    AlgoLogic::WriteLocker locker(&m_lock);
    m_prices.insert(symbol, price);
}

void CommonQuotaHandler::Reset()
{
    AlgoLogic::WriteLocker locker(&m_lock);
    m_prices.clear();
}
