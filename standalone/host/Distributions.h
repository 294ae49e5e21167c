// The distributions that the module asks its host for.
#pragma once

namespace orv {

// P(X <= x) of a chi-square variable; 0 for x <= 0, NaN when x is NaN or df is not a finite number above 0.
double ChiSquareProbability(double x, double df);

// The quantile of a normal variable; infinite at 0 and 1, NaN outside, and when the mean is not finite or the standard
// deviation not a finite number above 0.
double NormalQuantileOf(double probability, double mean, double standardDeviation);

}  // namespace orv
