// A small analysis with ties, censoring, weights, strata and a factor, for tests of whole fits.
#pragma once

#include <cmath>
#include <vector>

#include "support/ReferenceLikelihood.h"
#include "support/TestAnalysis.h"

namespace orv::testing {

inline std::vector<TestColumn> TwelveCases() {
  return {{"time", {5, 3, 8, 2, 9, 4, 7, 6, 1, 10, 3, 8}},
          {"status", {1, 1, 0, 1, 1, 0, 1, 1, 1, 0, 1, 1}},
          {"a", {0.5, 1.5, -0.5, 2.0, -1.0, 0.3, 0.1, -0.8, 1.1, -1.4, 0.9, 0.2}},
          {"b", {1, 0, 0, 1, 1, 0, 1, 0, 0, 1, 1, 0}},
          {"f", {1, 2, 3, 1, 2, 3, 2, 2, 3, 1, 1, 3}},
          {"g", {1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2}},
          {"w", {1, 2, 1, 0.5, 1, 1.5, 1, 1, 2, 1, 3, 0.25}},
          {"constant", {7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7}},
          {"twice", {1, 3, -1, 4, -2, 0.6, 0.2, -1.6, 2.2, -2.8, 1.8, 0.4}}};
}

// The cases with a survival time and a status, and nothing else yet.
class TwelveCaseAnalysis : public TestAnalysis {
 public:
  TwelveCaseAnalysis() : TestAnalysis(TwelveCases()) { Time({"time"}).Status("status"); }
  explicit TwelveCaseAnalysis(const std::vector<std::string>& covariates) : TwelveCaseAnalysis() {
    Covariates(covariates).DefaultDesign();
  }
};

// The tightest stop that does not depend on rounding. Closer to the maximum than the root of the rounding unit the
// likelihoods of two vectors differ by rounding alone, which may reject a step; the gradient test stops before that.
// At the stop step' U < 1e-12 |L|, so the estimate is within kEstimateError standard errors of the maximum while |L| is
// below 25. Newton's path itself is the same for data that differ by an affine change only, up to rounding.
inline void IterateToTheEnd(TestAnalysis& analysis) {
  analysis.Settings().ConvergenceType = ConvergenceTypes::RelativeGradient;
  analysis.Settings().ConvergenceExponent = 12;
}
inline constexpr double kEstimateError = 5e-6;

inline bool AllFinite(const std::vector<double>& values) {
  for (const double value : values) {
    if (!std::isfinite(value)) return false;
  }
  return true;
}

}  // namespace orv::testing
