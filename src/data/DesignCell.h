// What a factor makes of a design value.
#pragma once

namespace orv {

// The product with a factor at `level` in a column that stands for `columnLevel`. Under sigma-restricted coding the
// reference category, the last of the `levels`, takes -1 in every column of the factor.
inline double TimesFactor(double product, int level, int columnLevel, int levels, bool sigmaRestricted) {
  if (sigmaRestricted && level == levels) return product * -1.0;
  return level == columnLevel ? product : 0.0;
}

}  // namespace orv
