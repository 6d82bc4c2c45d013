#pragma once

#include <QtCore/qglobal.h>

// Export macro of the algologic shared library. The library's own build
// defines ALGOLOGIC_LIBRARY; consumers import.
#if defined(ALGOLOGIC_LIBRARY)
#  define ALGOLOGIC_EXPORT Q_DECL_EXPORT
#else
#  define ALGOLOGIC_EXPORT Q_DECL_IMPORT
#endif
