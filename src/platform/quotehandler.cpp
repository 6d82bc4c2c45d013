#include "platform/quotehandler.h"

CommonQuotaHandler& CommonQuotaHandler::instance()
{
    static CommonQuotaHandler* const s_instance = new CommonQuotaHandler;
    return *s_instance;
}

CommonQuotaHandler::~CommonQuotaHandler() = default;

double CommonQuotaHandler::GetLatestPrice(const QString& symbol, int flag)
{
    Q_UNUSED(flag)
    QReadLocker locker(&m_lock);
    return m_prices.value(symbol, 0.0);
}

void CommonQuotaHandler::SetLatestPrice(const QString& symbol, double price)
{
    QWriteLocker locker(&m_lock);
    m_prices.insert(symbol, price);
}

void CommonQuotaHandler::Reset()
{
    QWriteLocker locker(&m_lock);
    m_prices.clear();
}
