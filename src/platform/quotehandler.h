#pragma once

// The terminal's quote service: latest prices by symbol code. Thread-safe.

#include "common/algologicglobal.h"

#include <QHash>
#include <QReadWriteLock>
#include <QString>

class ALGOLOGIC_EXPORT CommonQuotaHandler
{
public:
    static CommonQuotaHandler& instance();

    // The last price set for `symbol`, 0 when none. `flag` selects the price
    // kind in a real quote service; the stand-in keeps one price per symbol.
    virtual double GetLatestPrice(const QString& symbol, int flag);

    // ---- host side ----
    void SetLatestPrice(const QString& symbol, double price);
    // Forgets every price.
    void Reset();

protected:
    CommonQuotaHandler() = default;
    virtual ~CommonQuotaHandler();

private:
    Q_DISABLE_COPY(CommonQuotaHandler)

    mutable QReadWriteLock m_lock;
    QHash<QString, double> m_prices; // guarded by m_lock
};
