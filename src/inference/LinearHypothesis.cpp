#include "inference/LinearHypothesis.h"

#include <cmath>

#include "fit/CCoxFit.h"
#include "inference/SweepPacked.h"
#include "inference/UnitDiagonal.h"

namespace orv {

namespace {

using Matrix = std::vector<std::vector<double>>;

// L'b.
std::vector<double> Functions(const Matrix& L, const std::vector<double>& b, std::size_t m) {
  std::vector<double> t(m, 0.0);
  for (std::size_t row = 0; row < L.size(); ++row) {
    for (std::size_t column = 0; column < m; ++column) t[column] += L[row][column] * b[row];
  }
  return t;
}

// The lower triangle of L'VL, packed by rows.
std::vector<double> PackedCovariance(const Matrix& L, const Matrix& V, std::size_t m) {
  Matrix VL(L.size(), std::vector<double>(m, 0.0));
  for (std::size_t row = 0; row < L.size(); ++row) {
    for (std::size_t k = 0; k < L.size(); ++k) {
      for (std::size_t column = 0; column < m; ++column) VL[row][column] += V[row][k] * L[k][column];
    }
  }
  std::vector<double> packed;
  for (std::size_t i = 0; i < m; ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      double sum = 0.0;
      for (std::size_t row = 0; row < L.size(); ++row) sum += L[row][i] * VL[row][j];
      packed.push_back(sum);
    }
  }
  return packed;
}

}  // namespace

double TestLinearHypothesis(const Matrix& L,
                            const std::vector<double>& b,
                            const Matrix& V,
                            double& estimate,
                            double& standardError,
                            int& df,
                            int& failed) {
  df = 0;
  failed = 1;
  if (L.empty() || V.size() != L.size() || b.size() != L.size()) return 0.0;
  const std::size_t m = L.front().size();
  std::vector<double> t = Functions(L, b, m);
  std::vector<double> W = PackedCovariance(L, V, m);
  const double variance = W.empty() ? 0.0 : W[0];

  // The unit of a covariate must not decide which functions count.
  const double function = t.empty() ? 0.0 : t[0];
  std::vector<double> units;
  for (std::size_t i = 0; i < m; ++i) {
    units.push_back(UnitOf(W[i * (i + 1) / 2 + i]));
    t[i] *= units[i];
    for (std::size_t j = 0; j <= i; ++j) W[i * (i + 1) / 2 + j] *= units[i] * units[j];
  }

  std::vector<bool> swept(m, false);
  for (std::size_t pivot = 1; pivot <= m; ++pivot) {
    int singular = 0;
    SweepPacked(W.data(), static_cast<int>(pivot), static_cast<int>(m), swept, singular);
    if (singular == 0) ++df;
  }
  if (df == 0) return 0.0;
  failed = 0;
  double chiSquare = 0.0;
  for (std::size_t i = 0; i < m; ++i) {
    for (std::size_t j = 0; j < m; ++j) {
      const std::size_t entry = i >= j ? i * (i + 1) / 2 + j : j * (j + 1) / 2 + i;
      if (swept[i] && swept[j]) chiSquare += t[i] * W[entry] * t[j];
    }
  }
  if (m == 1) {
    estimate = function;
    standardError = W[0] < 0.0 ? 0.0 : std::sqrt(variance);
  }
  return chiSquare;
}

double TestLinearHypothesis(const CCoxFit& fit,
                            const Matrix& L,
                            double& estimate,
                            double& standardError,
                            int& df,
                            int& failed) {
  static const std::vector<double> kNone;
  const std::vector<double>& b = fit.m_BetaHistory.empty() ? kNone : fit.m_BetaHistory.back();
  return TestLinearHypothesis(L, b, fit.CovarianceInUse(), estimate, standardError, df, failed);
}

}  // namespace orv
