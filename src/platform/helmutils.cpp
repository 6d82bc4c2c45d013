#include "platform/helmutils.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

namespace HelmUtils {

QString TransStr2Map(QString text, VariantMap& out)
{
    out.clear();
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError) {
        return QStringLiteral("JSON parse error at offset %1: %2")
            .arg(error.offset)
            .arg(error.errorString());
    }
    if (!document.isObject())
        return QStringLiteral("the text is not a JSON object");
    out = document.object().toVariantMap();
    return QString();
}

} // namespace HelmUtils
