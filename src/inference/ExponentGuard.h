// The guard of exponentials in results.
#pragma once

#include <cmath>
#include <optional>

namespace orv {

// Just below the logarithm of the largest double.
inline constexpr double kExponentBound = 709.7268;

// exp(x), 0 at or below the lower bound, nothing above the upper one: such a number has no place in a table.
inline std::optional<double> GuardedExp(double x) {
  if (x <= -kExponentBound) return 0.0;
  if (!(x <= kExponentBound)) return std::nullopt;
  return std::exp(x);
}

}  // namespace orv
