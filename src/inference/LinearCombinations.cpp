#include "inference/LinearCombinations.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"

namespace orv {

namespace {

constexpr double kEstimableWithin = 0.0001;  // of the largest entry of a function
constexpr double kSmallestScale = 1e-15;     // up to here a function has no scale of its own
// Pivot of L'VL, scaled to a unit diagonal, that is rounding: that share of a variance the other functions leave open.
constexpr double kSmallestPivot = 1e-10;

// By what the columns of the data were divided for the fit that left the projection.
std::vector<double> ScalesOf(const CCoxFit& fit, std::size_t p) {
  std::vector<double> scales(p, 1.0);
  if (fit.m_InputType == InputTypes::TimeDependent) return scales;
  for (std::size_t j = 0; j < p; ++j) {
    const double deviation = fit.m_pData->DesignColumns[j].StdDev;
    if (deviation > 0.0) scales[j] = deviation;
  }
  return scales;
}

// H projects on the row space of the information of the standardised columns. A function of the data's scale is in the
// row space of theirs when, with each entry divided by the deviation of its column, it is in that of the former.
bool IsEstimable(const DenseMatrix& H,
                 const std::vector<double>& deviations,
                 const DenseMatrix& L,
                 std::size_t function) {
  const std::size_t p = L.size();
  double scale = 0.0;
  for (const std::vector<double>& row : L) scale = std::max(scale, std::abs(row[function]));
  if (scale <= kSmallestScale) scale = 1.0;
  for (std::size_t i = 0; i < p; ++i) {
    double projected = 0.0;
    for (std::size_t k = 0; k < p; ++k) projected += H[k][i] * L[k][function] / deviations[k];
    const double difference = L[i][function] - deviations[i] * projected;
    if (!(std::abs(difference) <= kEstimableWithin * scale)) return false;
  }
  return true;
}

// L'VL, with rows and columns divided so that its diagonal is 1. Empty when a function has no variance.
DenseMatrix ScaledCovariance(const DenseMatrix& L, const DenseMatrix& V, std::size_t m) {
  const std::size_t p = L.size();
  DenseMatrix VL(p, std::vector<double>(m, 0.0));
  for (std::size_t row = 0; row < p; ++row) {
    for (std::size_t k = 0; k < p; ++k) {
      for (std::size_t j = 0; j < m; ++j) VL[row][j] += V[row][k] * L[k][j];
    }
  }
  DenseMatrix M(m, std::vector<double>(m, 0.0));
  for (std::size_t row = 0; row < p; ++row) {
    for (std::size_t i = 0; i < m; ++i) {
      for (std::size_t j = 0; j < m; ++j) M[i][j] += L[row][i] * VL[row][j];
    }
  }
  std::vector<double> deviations;
  for (std::size_t i = 0; i < m; ++i) {
    if (!(M[i][i] > 0.0)) return {};
    deviations.push_back(std::sqrt(M[i][i]));
  }
  for (std::size_t i = 0; i < m; ++i) {
    for (std::size_t j = 0; j < m; ++j) M[i][j] /= deviations[i] * deviations[j];
  }
  return M;
}

// Factors a square matrix as P A = L U in place, U above L, by Gauss elimination with partial pivoting. False when it
// is singular: no element of a column makes a pivot.
bool FactorLU(DenseMatrix& a) {
  const std::size_t m = a.size();
  for (std::size_t k = 0; k < m; ++k) {
    std::size_t best = k;
    for (std::size_t i = k + 1; i < m; ++i) {
      if (std::abs(a[i][k]) > std::abs(a[best][k])) best = i;
    }
    if (!(std::abs(a[best][k]) > kSmallestPivot)) return false;
    std::swap(a[k], a[best]);
    for (std::size_t i = k + 1; i < m; ++i) {
      a[i][k] /= a[k][k];
      for (std::size_t j = k + 1; j < m; ++j) a[i][j] -= a[i][k] * a[k][j];
    }
  }
  return true;
}

}  // namespace

int ValidateLinearCombinations(const CCoxPH& analysis, const std::vector<std::vector<double>>& L) {
  const CCoxFit& fit = *analysis.m_pCoxFit;
  const std::size_t p = L.size();
  const std::size_t m = p > 0 ? L.front().size() : 0;
  const DenseMatrix& H = fit.m_NullProjection;
  if (m > 0 && H.size() != p) return LinearCombinationStatuses::NotEstimable;
  const std::vector<double> deviations = ScalesOf(fit, p);
  for (std::size_t j = 0; j < m; ++j) {
    if (!IsEstimable(H, deviations, L, j)) return LinearCombinationStatuses::NotEstimable;
  }
  if (m <= 1) return LinearCombinationStatuses::Usable;
  const DenseMatrix& V = fit.CovarianceInUse();
  if (V.size() != p) return LinearCombinationStatuses::NotIndependent;
  DenseMatrix M = ScaledCovariance(L, V, m);
  if (M.empty() || !FactorLU(M)) return LinearCombinationStatuses::NotIndependent;
  return LinearCombinationStatuses::Usable;
}

}  // namespace orv
