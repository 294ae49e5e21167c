#include "inference/SweepPacked.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace orv {

namespace {

// A diagonal entry below this is not scaled, and is then below the bound of 1e-7 that a pivot must exceed.
constexpr double kSmallestPivot = 1e-12;

std::size_t Place(std::size_t i, std::size_t j) {
  return i * (i + 1) / 2 + j;
}

// Room for one row, on the stack while it is short: a search makes millions of sweeps.
class RowBuffer {
 public:
  explicit RowBuffer(std::size_t size) {
    if (size > m_short.size()) m_long.resize(size);
  }
  double* Data() { return m_long.empty() ? m_short.data() : m_long.data(); }

 private:
  std::array<double, 128> m_short;
  std::vector<double> m_long;
};

// Subtracts the product of column k, divided by the pivot, with row k from the rest of the matrix.
//   column  column k of the full matrix, with 0 at k
//   sign    +1 where row k has the sign that is stored, -1 where the opposite one
template <typename Sign>
void Eliminate(double* a, std::size_t k, std::size_t order, const double* column, const Sign& sign) {
  const double pivot = a[Place(k, k)];
  for (std::size_t j = 0; j < order; ++j) {
    if (j == k) continue;
    double* row = a + Place(j, 0);
    const double factor = (j < k ? sign(j) * column[j] : row[k]) / pivot;
    for (std::size_t i = 0; i <= j; ++i) row[i] -= factor * column[i];
    if (j > k) row[k] = factor;
  }
}

}  // namespace

void SweepPacked(double* packed, int pivot, int n, std::vector<bool>& swept, int& singular) {
  singular = 0;
  const auto order = static_cast<std::size_t>(n);
  const auto k = static_cast<std::size_t>(pivot - 1);
  const bool isSwept = k < swept.size() && swept[k];
  const double diagonal = packed[Place(k, k)];
  // With each entry divided by the roots of its two diagonals the pivot is 1, or what it is when it is not scaled.
  // One beyond the range of a double has no inverse.
  if (!isSwept && (!(std::abs(diagonal) >= kSmallestPivot) || std::isinf(diagonal))) {
    singular = 1;
    return;
  }
  if (swept.size() < order) swept.resize(order, false);

  // The scale itself cancels: it would be taken off every entry again after the sweep.
  const auto sign = [&](std::size_t i) { return swept[i] == isSwept ? 1.0 : -1.0; };
  RowBuffer buffer(order);
  double* column = buffer.Data();
  for (std::size_t i = 0; i < k; ++i) column[i] = packed[Place(k, i)];
  column[k] = 0.0;
  for (std::size_t i = k + 1; i < order; ++i) column[i] = sign(i) * packed[Place(i, k)];
  Eliminate(packed, k, order, column, sign);
  for (std::size_t i = 0; i < k; ++i) packed[Place(k, i)] = -column[i] / diagonal;
  packed[Place(k, k)] = 1.0 / diagonal;
  swept[k] = !isSwept;
}

}  // namespace orv
