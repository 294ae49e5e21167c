// Tables of the fit itself: its iterations, and the covariance and correlation of the parameters.
#pragma once

namespace orv {

class CCoxFit;

// One row per evaluated vector, rejected ones too: step, log likelihood, and the coefficients.
void ShowIterationHistory(const CCoxFit& fit);

// p by p; rows and columns of dropped parameters stay missing.
void ShowCovariance(const CCoxFit& fit);
// The same, each cell divided by the square root of the two variances; missing where a variance is not positive.
void ShowCorrelation(const CCoxFit& fit);

}  // namespace orv
