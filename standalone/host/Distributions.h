// The distributions that the module asks its host for.
#pragma once

namespace orv {

// P(X <= x) of a chi-square variable; 0 for x <= 0, NaN when x is NaN or df is not above 0.
double ChiSquareProbability(double x, double df);

// The quantile of a normal variable; infinite at 0 and 1, NaN outside or for a standard deviation not above 0.
double NormalQuantileOf(double probability, double mean, double standardDeviation);

}  // namespace orv
