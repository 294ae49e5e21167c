// The level of significance that a table highlights by.
#pragma once

namespace orv {

// 1 minus the confidence level, or 0.05 for a confidence level outside 0.0001 to 0.9999.
inline double AlphaOf(double confidenceLevel) {
  const bool usable = confidenceLevel <= 0.9999 && confidenceLevel >= 0.0001;
  return usable ? 1.0 - confidenceLevel : 0.05;
}

}  // namespace orv
