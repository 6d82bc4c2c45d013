#include "instance/paramtextcache.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace AlgoLogic {

namespace {

struct LastParse
{
    bool valid = false;
    QString text;
    ParsedParamText result;
};

thread_local LastParse t_last;

} // namespace

ParsedParamText parseParamText(const QString& text)
{
    if (t_last.valid && t_last.text == text)
        return t_last.result;
    ParsedParamText result;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &result.error);
    result.isObject = document.isObject();
    if (result.isObject)
        result.object = document.object().toVariantMap();
    t_last.text = text;
    t_last.result = result;
    t_last.valid = true;
    return result;
}

} // namespace AlgoLogic
