#pragma once

// The library explains itself at debug and info level; a command-line or
// monitor host wants its warnings only unless asked for more.
// QT_LOGGING_RULES still overrides this.

namespace AlgoReplay {

// Hides the library's debug and info lines unless `verbose`.
void filterLibraryLog(bool verbose);

} // namespace AlgoReplay
