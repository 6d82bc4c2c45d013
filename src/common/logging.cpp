#include "common/logging.h"

Q_LOGGING_CATEGORY(lcAlgoInstance, "algologic.instance")
Q_LOGGING_CATEGORY(lcAlgoSymbol, "algologic.symbol")
Q_LOGGING_CATEGORY(lcAlgoStrategy, "algologic.strategy")
Q_LOGGING_CATEGORY(lcAlgoLog, "algologic.log")
Q_LOGGING_CATEGORY(lcAlgoPlatform, "algologic.platform")
Q_LOGGING_CATEGORY(lcAlgoModels, "algologic.models")
