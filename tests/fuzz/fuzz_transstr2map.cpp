// The terminal's report-text parser: any text gives either a map or an
// error, never both.

#include "fuzzsupport.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char*>(data), int(size));
    VariantMap out;
    const QString error = HelmUtils::TransStr2Map(text, out);
    if (!error.isEmpty() && !out.isEmpty())
        std::abort();
    return 0;
}
