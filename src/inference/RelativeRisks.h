// Linear predictors and relative risks of all cases.
#pragma once

#include <vector>

namespace orv {

class CCoxFit;

// x'b of every sorted row, from 0, on the raw scale. `beta` has CoefficientCount elements.
std::vector<double> LinearPredictors(const CCoxFit& fit, const double* beta);

// exp(x'b), or 1 for every row when `beta` is null. Where an exponent would leave the range of a double, all of them
// are moved by one number: residuals and averages over risk sets depend on ratios of risks only.
std::vector<double> RelativeRisks(const CCoxFit& fit, const double* beta);

}  // namespace orv
