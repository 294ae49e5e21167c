// Units for symmetric matrices: powers of two that bring a diagonal to the same size.
#pragma once

#include <cmath>

namespace orv {

// The power of two that brings a diagonal entry to 1 or more and below 4 when it multiplies its row and its column; 1
// for an entry that is not positive. Powers of two change no digit of what is computed from the matrix, while the
// bounds of SweepPacked, which are absolute, become shares of each entry.
inline double UnitOf(double diagonal) {
  if (!(diagonal > 0.0) || !std::isfinite(diagonal)) return 1.0;
  const int exponent = std::ilogb(diagonal);
  return std::ldexp(1.0, -(exponent >= 0 ? exponent : exponent - 1) / 2);
}

}  // namespace orv
