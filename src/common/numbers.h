#pragma once

#include <QVariant>

#include <cmath>
#include <limits>

namespace AlgoLogic {

// Divisors at or below this magnitude give a ratio of 0 instead of a division.
constexpr double kRatioEpsilon = 1e-15;

// numerator / denominator, or 0 when |denominator| <= kRatioEpsilon.
inline double safeRatio(double numerator, double denominator)
{
    return std::fabs(denominator) > kRatioEpsilon ? numerator / denominator : 0.0;
}

// Whether a server number fits an int. JSON numbers arrive as doubles, and
// QVariant::toInt() wraps one out of range (5e9 becomes 705032704) while
// reporting success; NaN fits nothing.
inline bool fitsInt(const QVariant& value)
{
    const double number = value.toDouble();
    return number >= double(std::numeric_limits<int>::min())
           && number <= double(std::numeric_limits<int>::max());
}

} // namespace AlgoLogic
