#include "platform/businessdata.h"
#include "common/locking.h"

CBusinessDataBase* CBusinessDataBase::GetInstance()
{
    static CBusinessDataBase* const s_instance = new CBusinessDataBase;
    return s_instance;
}

QString CBusinessDataBase::GetLoginAccount() const
{
    AlgoLogic::ReadLocker locker(&m_lock);
    return m_loginAccount;
}

QString CBusinessDataBase::GetSecurityTypeBySymbol(const QString& symbol) const
{
    AlgoLogic::ReadLocker locker(&m_lock);
    return m_securityTypes.value(symbol);
}

void CBusinessDataBase::SetLoginAccount(const QString& account)
{
    AlgoLogic::WriteLocker locker(&m_lock);
    m_loginAccount = account;
}

void CBusinessDataBase::SetSecurityType(const QString& symbol, const QString& type)
{
    AlgoLogic::WriteLocker locker(&m_lock);
    m_securityTypes.insert(symbol, type);
}

void CBusinessDataBase::Reset()
{
    AlgoLogic::WriteLocker locker(&m_lock);
    m_loginAccount.clear();
    m_securityTypes.clear();
}
