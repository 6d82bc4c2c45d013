#pragma once

// The terminal's utilities library: report-text parsing.

#include "common/algologicglobal.h"
#include "platform/varianttypes.h"

#include <QString>

namespace HelmUtils {

// Parses `text`, a JSON object, into `out`: its top-level members, nested
// objects as VariantMap and arrays as QVariantList. Returns an empty text on
// success; on failure `out` is left empty and the result is a readable error
// (the parser's message with its offset, or a note that the text is not an
// object). Reentrant.
ALGOLOGIC_EXPORT QString TransStr2Map(QString text, VariantMap& out);

} // namespace HelmUtils
