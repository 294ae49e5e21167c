#include "select/SelectionTest.h"

#include "core/CCoxPH.h"
#include "fit/CCoxFit.h"
#include "fit/FloatingPointRegime.h"

namespace orv {

SelectionTest TestOf(const CCoxFit& fit, double chiSquare, int df) {
  FloatingPointRegime::ThrowIfFailed();
  if (df == 0) return {};
  const FloatingPointRegime ofTheHost;
  return {chiSquare, df, 1.0 - fit.Owner().GetHost().ChiSquareCdf(chiSquare, df)};
}

}  // namespace orv
