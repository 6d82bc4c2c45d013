#pragma once

// The terminal's business-data interface: display factors of securities and
// the fund accounts behind each trading account. Static, process-wide and
// thread-safe.

#include "common/algologicglobal.h"

#include <QList>
#include <QString>

// One account record of a trading account.
struct ALGOLOGIC_EXPORT tagUserAccountInfo
{
    QString tradingAccount;
    QString fundAccount;
    QString fundAccountName;
    // Name of the product (fund) the account belongs to; may be empty.
    QString productName;

    bool operator==(const tagUserAccountInfo& other) const;
};

class ALGOLOGIC_EXPORT HelmBusinessDataInterface
{
public:
    // The display factor of `symbol` (the quantity unit the server counts in,
    // relative to the unit shown); 1 for a symbol never configured.
    static int GetDispFactorBySymbol(const QString& symbol);

    // The account records listed under `tradingAccount`, in insertion order;
    // empty for an unknown account. With `includeAll` false only the first
    // record is returned.
    static QList<tagUserAccountInfo> GetAccountInfoListFromTrade(const QString& tradingAccount,
                                                                 bool includeAll);

    // ---- host side ----
    static void SetDispFactor(const QString& symbol, int factor);
    // Lists `info` under its trading account, after the ones added before.
    static void AddAccountInfo(const tagUserAccountInfo& info);
    // Forgets every display factor and account record.
    static void Reset();

    HelmBusinessDataInterface() = delete;
};
