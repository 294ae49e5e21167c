// The test of proportional hazards: whether the scaled Schoenfeld residuals have a trend in a transform of time.
#pragma once

#include <optional>
#include <vector>

namespace orv {

class CCoxFit;

// With g the transformed times, c = g - mean, D the number of events, and C the covariance in use:
//   column k   T_k^2 / (C_kk D SS), T_k the sum of c times the scaled residual of k; df 1
//   overall    D (R'CR) / SS, R the sum of c times the Schoenfeld residuals; df the number of columns
// Weights act in mean and SS alone.
struct ProportionalHazardsTest {
  std::vector<int> Columns;        // design columns that are not dropped, from 0
  std::vector<double> ChiSquares;  // one for each of them
  double Overall = 0.0;
  double Mean = 0.0;          // of g, by case weight
  double SumOfSquares = 0.0;  // SS: of g about its mean, by case weight
};

// Needs both kinds of Schoenfeld residuals in the fit.
//   g  a value for each complete case. It is paired with the complete cases in the order of the case table, whatever
//      order it was made in: with strata, a transform that lists its values by time is paired by position. Kept, since
//      published results of stratified analyses depend on it.
// Nothing when residuals or the covariance are absent, or when SS or the overall quadratic form is not above 0. Other
// numerical failures leave floating-point flags.
// Source: Grambsch and Therneau, Biometrika 81 (1994) 515-526.
std::optional<ProportionalHazardsTest> ComputeProportionalHazardsTest(const CCoxFit& fit, const std::vector<double>& g);

}  // namespace orv
