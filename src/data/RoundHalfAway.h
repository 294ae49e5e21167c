// Rounding to the nearest integer, halves away from zero.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace orv {

// RoundHalfAway(2.5) is 3, RoundHalfAway(-2.5) is -3. A value beyond the 64-bit range stays as it is: it is an
// integer already.
inline double RoundHalfAway(double value) {
  constexpr double kBound = 9223372036854775808.0;  // 2^63
  if (!(value > -kBound && value < kBound)) return value;
  return std::round(value);
}

// RoundHalfAway, then cut to 32 bits. Values that do not fit, and NaN, give the smallest integer, as the processor's
// own conversion does.
inline std::int32_t RoundToInteger(double value) {
  const double rounded = RoundHalfAway(value);
  constexpr double kLow = std::numeric_limits<std::int32_t>::min();
  constexpr double kHigh = std::numeric_limits<std::int32_t>::max();
  if (!(rounded >= kLow && rounded <= kHigh)) return std::numeric_limits<std::int32_t>::min();
  return static_cast<std::int32_t>(rounded);
}

}  // namespace orv
