#pragma once

#include "common/algologicglobal.h"

#include <QLoggingCategory>

// Logging categories of the library, one per component, so that a host can
// filter with QLoggingCategory::setFilterRules ("algologic.symbol.debug=false").
// Every message starts with the qualified function name, then a short phrase,
// then the values; values are printed without quotes.
ALGOLOGIC_EXPORT const QLoggingCategory& lcAlgoInstance();
ALGOLOGIC_EXPORT const QLoggingCategory& lcAlgoSymbol();
ALGOLOGIC_EXPORT const QLoggingCategory& lcAlgoStrategy();
ALGOLOGIC_EXPORT const QLoggingCategory& lcAlgoLog();
ALGOLOGIC_EXPORT const QLoggingCategory& lcAlgoPlatform();
ALGOLOGIC_EXPORT const QLoggingCategory& lcAlgoModels();
