#include "common/metatypes.h"

#include "platform/aesstrategy.h"
#include "platform/varianttypes.h"

#include <QHash>
#include <QList>
#include <QMap>
#include <QMetaType>
#include <QString>
#include <QStringList>

#include <mutex>

namespace AlgoLogic {

void registerMetaTypes()
{
    static std::once_flag s_once;
    std::call_once(s_once, [] {
        // Under the names the signals spell them in, and under the aliases.
        qRegisterMetaType<AesStrategy>();
        qRegisterMetaType<QList<AesStrategy>>();
        qRegisterMetaType<QList<AesStrategy>>("QList<AesStrategy>");
        qRegisterMetaType<AuthorityTable>();
        qRegisterMetaType<AuthorityTable>("AuthorityTable");
        qRegisterMetaType<QList<QString>>();
        qRegisterMetaType<QList<QString>>("QList<QString>");
        qRegisterMetaType<QStringList>();
        qRegisterMetaType<QHash<QString, double>>();
        qRegisterMetaType<QHash<QString, double>>("QHash<QString,double>");
        qRegisterMetaType<QMap<QString, QMap<QString, QVariant>>>();
        qRegisterMetaType<QMap<QString, QMap<QString, QVariant>>>(
            "QMap<QString,QMap<QString,QVariant> >");
        qRegisterMetaType<QMap<QString, QList<QString>>>();
        qRegisterMetaType<VariantMap>("VariantMap");
        qRegisterMetaType<VariantMapList>();
        qRegisterMetaType<VariantMapList>("VariantMapList");
    });
}

} // namespace AlgoLogic
