#include "jsonconvert.h"

#include <algologic.h>

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>

#include <cmath>

namespace AlgoReplay {

QJsonValue toJson(double value)
{
    return std::isfinite(value) ? QJsonValue(value) : QJsonValue(QJsonValue::Null);
}

namespace {

QJsonObject strategyToJson(const AesStrategy& strategy)
{
    return QJsonObject{
        {QStringLiteral("name"), strategy.name()},
        {QStringLiteral("alias"), strategy.alias()},
        {QStringLiteral("algoType"), strategy.algoType()},
        {QStringLiteral("underlyingProp"), strategy.underlyingProp()},
        {QStringLiteral("reportFormat"), strategy.reportFormat()},
        {QStringLiteral("feeId"), strategy.feeId()},
        {QStringLiteral("underlyingMaxNum"), strategy.underlyingMaxNum()},
    };
}

} // namespace

QJsonValue toJson(const QVariant& value)
{
    const int type = value.userType();
    if (!value.isValid())
        return QJsonValue(QJsonValue::Null);
    if (type == QMetaType::QDateTime) {
        const QDateTime time = value.toDateTime();
        return time.isValid() ? time.toString(Qt::ISODate) : QString();
    }
    if (type == QMetaType::Bool)
        return value.toBool();
    if (type == QMetaType::Int || type == QMetaType::LongLong || type == QMetaType::UInt
        || type == QMetaType::ULongLong || type == QMetaType::Double || type == QMetaType::Float) {
        return toJson(value.toDouble());
    }
    if (type == qMetaTypeId<AesStrategy>())
        return strategyToJson(value.value<AesStrategy>());
    if (type == qMetaTypeId<QList<AesStrategy>>()) {
        QJsonArray array;
        const QList<AesStrategy> list = value.value<QList<AesStrategy>>();
        for (const AesStrategy& strategy : list)
            array.append(strategyToJson(strategy));
        return array;
    }
    if (value.canConvert<QVariantMap>() || value.canConvert<QVariantHash>()) {
        QJsonObject object;
        QAssociativeIterable iterable = value.value<QAssociativeIterable>();
        for (auto it = iterable.begin(); it != iterable.end(); ++it)
            object.insert(it.key().toString(), toJson(it.value()));
        return object;
    }
    if (value.canConvert<QVariantList>() && type != QMetaType::QString
        && type != QMetaType::QByteArray) {
        QJsonArray array;
        QSequentialIterable iterable = value.value<QSequentialIterable>();
        for (const QVariant& item : iterable)
            array.append(toJson(item));
        return array;
    }
    return value.toString();
}

} // namespace AlgoReplay
