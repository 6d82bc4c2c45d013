#include "platform/aesstrategy.h"

AesStrategy::AesStrategy(const QString& name, const QString& alias, const QString& algoType,
                         const QString& underlyingProp)
    : m_name(name)
    , m_alias(alias)
    , m_algoType(algoType)
    , m_underlyingProp(underlyingProp)
{
}

void AesStrategy::setReportFormat(const QString& format)
{
    m_reportFormat = format;
}

void AesStrategy::setFeeId(const QString& feeId)
{
    m_feeId = feeId;
}

void AesStrategy::setUnderlyingMaxNum(const QString& maxNum)
{
    m_underlyingMaxNum = maxNum;
}

bool AesStrategy::operator==(const AesStrategy& other) const
{
    return m_name == other.m_name && m_alias == other.m_alias && m_algoType == other.m_algoType
        && m_underlyingProp == other.m_underlyingProp && m_reportFormat == other.m_reportFormat
        && m_feeId == other.m_feeId && m_underlyingMaxNum == other.m_underlyingMaxNum;
}
