#include "standalone/host/Distributions.h"

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/normal.hpp>
#include <cmath>
#include <limits>

namespace orv {

double ChiSquareProbability(double x, double df) {
  // Half of df is what the gamma function takes; it must not vanish either.
  if (std::isnan(x) || !std::isfinite(df) || !(df / 2.0 > 0.0)) return std::numeric_limits<double>::quiet_NaN();
  if (x <= 0.0) return 0.0;
  if (std::isinf(x)) return 1.0;
  return boost::math::cdf(boost::math::chi_squared(df), x);
}

double NormalQuantileOf(double probability, double mean, double standardDeviation) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const bool valid = probability >= 0.0 && probability <= 1.0 && std::isfinite(mean) && standardDeviation > 0.0;
  if (!valid || std::isinf(standardDeviation)) return std::numeric_limits<double>::quiet_NaN();
  if (probability == 0.0) return -kInfinity;
  if (probability == 1.0) return kInfinity;
  return boost::math::quantile(boost::math::normal(mean, standardDeviation), probability);
}

}  // namespace orv
