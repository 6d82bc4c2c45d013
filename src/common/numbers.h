#pragma once

#include <cmath>

namespace AlgoLogic {

// Divisors at or below this magnitude give a ratio of 0 instead of a division.
constexpr double kRatioEpsilon = 1e-15;

// numerator / denominator, or 0 when |denominator| <= kRatioEpsilon.
inline double safeRatio(double numerator, double denominator)
{
    return std::fabs(denominator) > kRatioEpsilon ? numerator / denominator : 0.0;
}

} // namespace AlgoLogic
