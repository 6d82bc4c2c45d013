#pragma once

// Conversion of the library's values into JSON for the replay's output:
// lists as arrays, maps and hashes as objects, numbers as numbers (null when
// not finite), date-times as ISO 8601 text (empty when invalid).

#include <QJsonValue>
#include <QVariant>

namespace AlgoReplay {

QJsonValue toJson(const QVariant& value);
QJsonValue toJson(double value);

} // namespace AlgoReplay
