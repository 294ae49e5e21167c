#include "fit/VectorProducts.h"

#include <cstddef>

namespace orv {

double DotProduct(const double* x, const double* y, int n) {
  double sum = 0.0;
  for (int i = 0; i < n; ++i) sum += x[i] * y[i];
  return sum;
}

void RowTimesMatrix(double* out, const double* row, const double* matrix, int rows, int cols) {
  for (int column = 0; column < cols; ++column) {
    const std::size_t start = static_cast<std::size_t>(column) * static_cast<std::size_t>(rows);
    out[column] = DotProduct(row, matrix + start, rows);
  }
}

}  // namespace orv
