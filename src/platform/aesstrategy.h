#pragma once

// One entry of the algo catalogue: an algo strategy the server offers.
// A copyable value; the default-constructed entry (all texts empty) stands
// for "unknown strategy".

#include "common/algologicglobal.h"

#include <QList>
#include <QMetaType>
#include <QString>

class ALGOLOGIC_EXPORT AesStrategy
{
public:
    AesStrategy() = default;
    AesStrategy(const QString& name, const QString& alias, const QString& algoType,
                const QString& underlyingProp);

    QString name() const { return m_name; }
    QString alias() const { return m_alias; }
    QString algoType() const { return m_algoType; }
    // "1" for single-security algos; other texts for multi-security ones.
    QString underlyingProp() const { return m_underlyingProp; }
    QString reportFormat() const { return m_reportFormat; }
    QString feeId() const { return m_feeId; }
    QString underlyingMaxNum() const { return m_underlyingMaxNum; }

    void setReportFormat(const QString& format);
    void setFeeId(const QString& feeId);
    void setUnderlyingMaxNum(const QString& maxNum);

    bool operator==(const AesStrategy& other) const;
    bool operator!=(const AesStrategy& other) const { return !(*this == other); }

private:
    QString m_name;
    QString m_alias;
    QString m_algoType;
    QString m_underlyingProp;
    QString m_reportFormat;
    QString m_feeId;
    QString m_underlyingMaxNum;
};

Q_DECLARE_METATYPE(AesStrategy)
