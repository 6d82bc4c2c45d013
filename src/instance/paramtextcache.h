#pragma once

// Internal to the library.
//
// An instance's parameter text is read by several steps of one handler: the
// parameter-derived display fields (one getParamFromJosn each), UpdateParamMap
// and the leg list of a modify push. Each step used to parse the same text
// anew. parseParamText() remembers, per thread, the last text it parsed and
// the result, so that the steps after the first reuse it; any other text is
// parsed as before. The result is what QJsonDocument::fromJson gives for the
// text, reduced to what those steps read. Memory: one text and one map per
// thread that has parsed parameters.

#include "platform/varianttypes.h"

#include <QJsonParseError>
#include <QString>

namespace AlgoLogic {

struct ParsedParamText
{
    QJsonParseError error{};
    bool isObject = false;
    // The members of the text's object; empty when it is not an object.
    VariantMap object;
};

ParsedParamText parseParamText(const QString& text);

} // namespace AlgoLogic
