#include "logfilter.h"

#include <QLoggingCategory>
#include <QString>

namespace AlgoReplay {

void filterLibraryLog(bool verbose)
{
    if (!verbose)
        QLoggingCategory::setFilterRules(
            QStringLiteral("algologic.*.debug=false\nalgologic.*.info=false"));
}

} // namespace AlgoReplay
