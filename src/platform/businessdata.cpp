#include "platform/businessdata.h"

CBusinessDataBase* CBusinessDataBase::GetInstance()
{
    static CBusinessDataBase* const s_instance = new CBusinessDataBase;
    return s_instance;
}

QString CBusinessDataBase::GetLoginAccount() const
{
    QReadLocker locker(&m_lock);
    return m_loginAccount;
}

QString CBusinessDataBase::GetSecurityTypeBySymbol(const QString& symbol) const
{
    QReadLocker locker(&m_lock);
    return m_securityTypes.value(symbol);
}

void CBusinessDataBase::SetLoginAccount(const QString& account)
{
    QWriteLocker locker(&m_lock);
    m_loginAccount = account;
}

void CBusinessDataBase::SetSecurityType(const QString& symbol, const QString& type)
{
    QWriteLocker locker(&m_lock);
    m_securityTypes.insert(symbol, type);
}

void CBusinessDataBase::Reset()
{
    QWriteLocker locker(&m_lock);
    m_loginAccount.clear();
    m_securityTypes.clear();
}
