#include "fit/LDL.h"

#include <algorithm>

namespace orv {

namespace {

// A pivot below this multiple of the bound is negative beyond rounding: the matrix is not non-negative definite.
constexpr double kClearlyNegative = -8.0;

// Subtracts the pivot column i, divided by its pivot on the way, from the part of the matrix below and right of it.
void EliminateColumn(double** a, int p, int i) {
  const double pivot = a[i][i];
  for (int j = i + 1; j < p; ++j) {
    const double t = a[j][i] / pivot;
    a[j][i] = t;
    a[j][j] -= t * t * pivot;
    // The elements of column i below row j are not divided yet.
    for (int k = j + 1; k < p; ++k) a[k][j] -= t * a[k][i];
  }
}

// Turns D into its inverse and L into its inverse, on and below the diagonal. A dropped column stays as it is: what it
// holds reaches only the columns of dropped pivots, which the caller clears.
void InvertFactor(double** a, int p) {
  for (int i = 0; i < p; ++i) {
    if (!(a[i][i] > 0.0)) continue;
    a[i][i] = 1.0 / a[i][i];
    for (int j = i + 1; j < p; ++j) {
      a[j][i] = -a[j][i];
      for (int k = 0; k < i; ++k) a[j][k] += a[j][i] * a[i][k];
    }
  }
}

void ClearUpperRowAndColumn(double** a, int p, int i) {
  for (int j = 0; j < i; ++j) a[j][i] = 0.0;
  for (int j = i; j < p; ++j) a[i][j] = 0.0;
}

}  // namespace

void ZeroRowsAndColumns(double** a, int p, const unsigned char* fixed) {
  for (int i = 0; i < p; ++i) {
    if (fixed[i] == 0) continue;
    for (int j = 0; j < p; ++j) {
      a[i][j] = 0.0;
      a[j][i] = 0.0;
    }
  }
}

void MirrorUpper(double** a, int p) {
  for (int i = 0; i < p; ++i) {
    for (int j = i + 1; j < p; ++j) a[j][i] = a[i][j];
  }
}

int FactorLDL(double** a, int p, double tolerance, unsigned char* dropped) {
  MirrorUpper(a, p);
  double largest = 0.0;
  for (int i = 0; i < p; ++i) largest = std::max(largest, a[i][i]);
  const double eps = largest * tolerance;

  int rank = 0;
  int sign = 1;
  for (int i = 0; i < p; ++i) {
    const double pivot = a[i][i];
    const bool skipped = pivot < eps || pivot == 0.0;
    if (dropped != nullptr) dropped[i] = skipped ? 1 : 0;
    if (skipped) {
      a[i][i] = 0.0;
      if (pivot < kClearlyNegative * eps) sign = -1;
    } else {
      ++rank;
      EliminateColumn(a, p, i);
    }
  }
  return rank * sign;
}

void SolveLDL(double* const* a, int p, double* b) {
  for (int i = 0; i < p; ++i) {
    double rest = b[i];
    for (int j = 0; j < i; ++j) rest -= b[j] * a[i][j];
    b[i] = rest;
  }
  for (int i = p - 1; i >= 0; --i) {
    if (a[i][i] == 0.0) {
      b[i] = 0.0;
      continue;
    }
    double rest = b[i] / a[i][i];
    for (int j = i + 1; j < p; ++j) rest -= b[j] * a[j][i];
    b[i] = rest;
  }
}

void InvertLDL(double** a, int p) {
  InvertFactor(a, p);
  // The product of the inverted factors, row by row of the upper triangle. Row j of the inverse of L and its pivot
  // are still as InvertFactor left them when row i < j needs them.
  for (int i = 0; i < p; ++i) {
    if (a[i][i] == 0.0) {
      ClearUpperRowAndColumn(a, p, i);
      continue;
    }
    for (int j = i + 1; j < p; ++j) {
      const double t = a[j][i] * a[j][j];
      a[i][j] = t;
      for (int k = i; k < j; ++k) a[i][k] += t * a[j][k];
    }
  }
}

}  // namespace orv
