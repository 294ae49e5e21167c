// The projection on the estimable directions, from the information at beta = 0.
#include <algorithm>

#include "core/CCoxPH.h"
#include "fit/CCoxFit.h"
#include "fit/FloatingPointRegime.h"
#include "fit/PseudoInverse.h"
#include "host/WorkArray.h"

namespace orv {

int CCoxFit::ComputeNullProjection(double** info) {
  const int p = static_cast<int>(m_ActiveColumns.size());
  ZeroFixedRows(info, p);
  m_NullProjection.clear();
  if (p == 0) return 0;
  const auto order = static_cast<std::size_t>(p);
  WorkArray<double> A(HostOf(), order * order);
  WorkArray<double> G(HostOf(), order * order);
  if (A.Failed() || G.Failed()) return 1;
  // The projection does not depend on the scale of the information, but the absolute bound of the pseudo-inverse does.
  // On this scale it is 1e-12 of the largest element, as in the factorisation, so that rounding does not count as rank.
  double largest = 0.0;
  for (std::size_t j = 0; j < order; ++j) largest = std::max(largest, info[j][j]);
  const double scale = largest > 0.0 ? 0.01 / largest : 1.0;
  for (std::size_t row = 0; row < order; ++row) {
    for (std::size_t column = row; column < order; ++column) {
      A[column * order + row] = A[row * order + column] = scale * info[row][column];
    }
  }
  int status = 0;
  const int failed = PseudoInverse(HostOf(), A.Data(), G.Data(), p, p, status);
  // Nothing in the fit reads the projection, so its arithmetic must not end the fit.
  FloatingPointRegime::ClearFlags();
  if (failed != 0) return 1;
  DenseMatrix projection(order, std::vector<double>(order, 0.0));
  for (std::size_t row = 0; row < order; ++row) {
    for (std::size_t k = 0; k < order; ++k) {
      const double g = G[k * order + row];
      for (std::size_t column = 0; column < order; ++column) projection[row][column] += g * A[column * order + k];
    }
  }
  FloatingPointRegime::ClearFlags();
  m_NullProjection = std::move(projection);
  return 0;
}

}  // namespace orv
