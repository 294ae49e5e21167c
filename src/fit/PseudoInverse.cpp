#include "fit/PseudoInverse.h"

#include <algorithm>
#include <cstddef>

#include "fit/SingularValueDecomposition.h"
#include "host/WorkArray.h"

namespace orv {

namespace {

constexpr double kSmallestSingularValue = 1e-14;  // absolute: singular values up to here count as 0

// A flat matrix by columns; indices count from 1.
template <typename T>
struct FlatMatrix {
  T* Values;
  int Rows;

  T& operator()(int i, int j) const {
    return Values[static_cast<std::size_t>(j - 1) * static_cast<std::size_t>(Rows) + static_cast<std::size_t>(i - 1)];
  }
};

// Multiplies each column j of U by 1 / w_j, or by 0 where w_j counts as 0.
void ScaleByInverse(const FlatMatrix<double>& U, const double* w, int order) {
  for (int j = 1; j <= order; ++j) {
    const double value = w[j - 1];
    const bool kept = value > kSmallestSingularValue;
    const double factor = kept ? 1.0 / value : 0.0;
    for (int i = 1; i <= order; ++i) U(i, j) = kept ? U(i, j) * factor : 0.0;
  }
}

}  // namespace

int PseudoInverse(Host& host, const double* a, double* b, int rows, int cols, int& status) {
  const FlatMatrix<const double> A{a, rows};
  const FlatMatrix<double> B{b, cols};
  std::fill(b, b + static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols), 0.0);

  const int order = std::max(rows, cols);
  const auto length = static_cast<std::size_t>(order);
  WorkArray<double> work(host, length * length);
  WorkArray<double> right(host, length * length);
  WorkArray<double> w(host, length);
  if (work.Failed() || right.Failed() || w.Failed()) {
    status = kDecompositionOutOfMemory;
    return 1;
  }

  // The transpose of a, in the corner of a square of zeros. The padding adds singular values of 0 and nothing else.
  const FlatMatrix<double> U{work.Data(), order};
  const FlatMatrix<double> V{right.Data(), order};
  for (int k = 1; k <= rows; ++k) {
    for (int i = 1; i <= cols; ++i) U(i, k) = A(k, i);
  }
  if (SingularValueDecomposition(host, U.Values, order, order, w.Data(), V.Values, status) != 0) return 1;

  // a' = U diag(w) V' has the inverse V diag(1 / w) U', so that of a is its transpose, U diag(1 / w) V'.
  ScaleByInverse(U, w.Data(), order);
  for (int i = 1; i <= cols; ++i) {
    for (int k = 1; k <= rows; ++k) {
      double sum = 0.0;
      for (int j = 1; j <= order; ++j) sum += U(i, j) * V(k, j);
      B(i, k) = sum;
    }
  }
  return 0;
}

}  // namespace orv
