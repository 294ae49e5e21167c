#include "inference/ScoreShares.h"

namespace orv {

ScoreShares BreslowShares(double W, double S0, const double* S1, std::size_t p) {
  ScoreShares shares;
  shares.H = W / S0;
  shares.Mean.reserve(p);
  shares.A.reserve(p);
  for (std::size_t j = 0; j < p; ++j) {
    const double mean = S1[j] / S0;
    shares.Mean.push_back(mean);
    shares.A.push_back(shares.H * mean);
  }
  return shares;
}

ScoreShares EfronShares(int d, double W, double S0, double E, const double* S1, const double* T, std::size_t p) {
  ScoreShares shares;
  shares.A.assign(p, 0.0);
  shares.Mean.assign(p, 0.0);
  shares.EventA.assign(p, 0.0);
  const double meanWeight = W / d;
  for (int k = 0; k < d; ++k) {
    const double f = static_cast<double>(k) / d;
    const double denominator = S0 - f * E;
    const double step = meanWeight / denominator;
    shares.H += step;
    shares.EventH += (1.0 - f) * step;
    for (std::size_t j = 0; j < p; ++j) {
      const double mean = (S1[j] - f * T[j]) / denominator;
      shares.A[j] += step * mean;
      shares.EventA[j] += (1.0 - f) * step * mean;
      shares.Mean[j] += mean / d;
    }
  }
  return shares;
}

}  // namespace orv
