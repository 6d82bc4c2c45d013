#pragma once

// The terminal's business data: the logged-in account and the security type
// of each symbol. Thread-safe.

#include "common/algologicglobal.h"

#include <QHash>
#include <QReadWriteLock>
#include <QString>

class ALGOLOGIC_EXPORT CBusinessDataBase
{
public:
    // The process-wide instance; never null, never destroyed.
    static CBusinessDataBase* GetInstance();

    QString GetLoginAccount() const;
    // The type set for `symbol` (Tessel_Values::MdcSecurityType words), or an
    // empty text when none was set.
    QString GetSecurityTypeBySymbol(const QString& symbol) const;

    // ---- host side ----
    void SetLoginAccount(const QString& account);
    void SetSecurityType(const QString& symbol, const QString& type);
    // Forgets the login account and every security type.
    void Reset();

private:
    CBusinessDataBase() = default;
    Q_DISABLE_COPY(CBusinessDataBase)

    mutable QReadWriteLock m_lock;
    // Guarded by m_lock:
    QString m_loginAccount;
    QHash<QString, QString> m_securityTypes;
};
