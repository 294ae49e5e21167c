#include "fit/SingularValueDecomposition.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "host/WorkArray.h"

namespace orv {

namespace {

// Far above the few sweeps that a value needs, so that a graded matrix is never given up early.
constexpr int kMaxSweeps = 300;

// The matrices of the decomposition. All indices count from 1.
struct Decomposition {
  double* a;         // m by n: the matrix, then U
  double* singular;  // n: the diagonal of the bidiagonal form, then the singular values
  double* v;         // n by n
  double* super;     // n: rv(i) stands above w(i), in column i of row i - 1; rv(1) is 0
  int m;
  int n;
  double anorm = 0.0;  // the largest abs(w_i) + abs(rv_i) of the reduction

  double* ColumnOfU(int j) const { return a + static_cast<std::size_t>(j - 1) * static_cast<std::size_t>(m); }
  double* ColumnOfV(int j) const { return v + static_cast<std::size_t>(j - 1) * static_cast<std::size_t>(n); }
  double& A(int i, int j) const { return ColumnOfU(j)[i - 1]; }
  double& V(int i, int j) const { return ColumnOfV(j)[i - 1]; }
  double& w(int i) const { return singular[i - 1]; }
  double& rv(int i) const { return super[i - 1]; }

  bool Negligible(double f) const { return std::abs(f) + anorm == anorm; }
};

// sqrt(a^2 + b^2) without overflow of the squares.
double Hypotenuse(double a, double b) {
  const double larger = std::max(std::abs(a), std::abs(b));
  const double smaller = std::min(std::abs(a), std::abs(b));
  if (larger == 0.0) return 0.0;
  const double ratio = smaller / larger;
  return larger * std::sqrt(1.0 + ratio * ratio);
}

// The plane rotation that turns (f, h) into (Length, 0). For f = h = 0 it is the identity.
struct Rotation {
  double Cosine = 1.0;
  double Sine = 0.0;
  double Length = 0.0;

  Rotation(double f, double h) : Length(Hypotenuse(f, h)) {
    if (Length == 0.0) return;
    Cosine = f / Length;
    Sine = h / Length;
  }
};

void RotateColumns(double* x, double* y, int length, double cosine, double sine) {
  for (int i = 0; i < length; ++i) {
    const double left = x[i];
    const double right = y[i];
    x[i] = left * cosine + right * sine;
    y[i] = right * cosine - left * sine;
  }
}

// Zeroes column i below the diagonal by a reflector from the left, applied to the columns after it. The reflector
// stays in the column; w(i) receives the diagonal of the bidiagonal form.
void ReduceColumn(const Decomposition& d, int i) {
  d.w(i) = 0.0;
  if (i > d.m) return;
  double scale = 0.0;
  for (int k = i; k <= d.m; ++k) scale += std::abs(d.A(k, i));
  if (scale == 0.0) return;
  double s = 0.0;
  for (int k = i; k <= d.m; ++k) {
    d.A(k, i) /= scale;
    s += d.A(k, i) * d.A(k, i);
  }
  const double f = d.A(i, i);
  const double g = f >= 0.0 ? -std::sqrt(s) : std::sqrt(s);
  const double h = f * g - s;
  d.A(i, i) = f - g;
  for (int j = i + 1; j <= d.n; ++j) {
    double projection = 0.0;
    for (int k = i; k <= d.m; ++k) projection += d.A(k, i) * d.A(k, j);
    const double factor = projection / h;
    for (int k = i; k <= d.m; ++k) d.A(k, j) += factor * d.A(k, i);
  }
  for (int k = i; k <= d.m; ++k) d.A(k, i) *= scale;
  d.w(i) = scale * g;
}

// Zeroes row i right of the superdiagonal by a reflector from the right, applied to the rows below it. The reflector
// stays in the row; rv(i + 1) receives the superdiagonal.
void ReduceRow(const Decomposition& d, int i) {
  if (i == d.n) return;
  const int l = i + 1;
  d.rv(l) = 0.0;
  if (i > d.m) return;
  double scale = 0.0;
  for (int k = l; k <= d.n; ++k) scale += std::abs(d.A(i, k));
  if (scale == 0.0) return;
  double s = 0.0;
  for (int k = l; k <= d.n; ++k) {
    d.A(i, k) /= scale;
    s += d.A(i, k) * d.A(i, k);
  }
  const double f = d.A(i, l);
  const double g = f >= 0.0 ? -std::sqrt(s) : std::sqrt(s);
  const double h = f * g - s;
  d.A(i, l) = f - g;
  for (int j = l; j <= d.m; ++j) {
    double projection = 0.0;
    for (int k = l; k <= d.n; ++k) projection += d.A(j, k) * d.A(i, k);
    const double factor = projection / h;
    for (int k = l; k <= d.n; ++k) d.A(j, k) += factor * d.A(i, k);
  }
  for (int k = l; k <= d.n; ++k) d.A(i, k) *= scale;
  d.rv(l) = scale * g;
}

void ReduceToBidiagonal(Decomposition& d) {
  if (d.n > 0) d.rv(1) = 0.0;
  for (int i = 1; i <= d.n; ++i) {
    ReduceColumn(d, i);
    d.anorm = std::max(d.anorm, std::abs(d.w(i)) + std::abs(d.rv(i)));
    ReduceRow(d, i);
  }
}

// V := the product of the reflectors from the right, built from the last to the first.
void AccumulateRight(const Decomposition& d) {
  for (int i = d.n; i >= 1; --i) {
    const int l = i + 1;
    const double g = i < d.n ? d.rv(l) : 0.0;
    if (g != 0.0) {
      // Two divisions, since the product of the divisors may underflow.
      for (int j = l; j <= d.n; ++j) d.V(j, i) = (d.A(i, j) / d.A(i, l)) / g;
      for (int j = l; j <= d.n; ++j) {
        double s = 0.0;
        for (int k = l; k <= d.n; ++k) s += d.A(i, k) * d.V(k, j);
        for (int k = l; k <= d.n; ++k) d.V(k, j) += s * d.V(k, i);
      }
    }
    for (int j = l; j <= d.n; ++j) {
      d.V(i, j) = 0.0;
      d.V(j, i) = 0.0;
    }
    d.V(i, i) = 1.0;
  }
}

// U := the product of the reflectors from the left, in the place of the matrix. Columns past the last row are 0.
void AccumulateLeft(const Decomposition& d) {
  for (int i = std::min(d.m, d.n); i >= 1; --i) {
    const int l = i + 1;
    const double g = d.w(i);
    for (int j = l; j <= d.n; ++j) d.A(i, j) = 0.0;
    if (g != 0.0) {
      for (int j = l; j <= d.n; ++j) {
        double s = 0.0;
        for (int k = l; k <= d.m; ++k) s += d.A(k, i) * d.A(k, j);
        const double f = (s / d.A(i, i)) / g;
        for (int k = i; k <= d.m; ++k) d.A(k, j) += f * d.A(k, i);
      }
      for (int j = i; j <= d.m; ++j) d.A(j, i) /= g;
    } else {
      for (int j = i; j <= d.m; ++j) d.A(j, i) = 0.0;
    }
    d.A(i, i) += 1.0;
  }
}

// The unreduced block of the bidiagonal form that ends at a given index.
struct Block {
  int First;
  bool DiagonalAboveIsNegligible;  // w(First - 1) is negligible while rv(First) is not
};

// The guard on 1 is for a matrix that is not finite; rv(1) is 0.
Block FindBlock(const Decomposition& d, int k) {
  int l = k;
  for (; l > 1; --l) {
    if (d.Negligible(d.rv(l))) break;
    if (d.Negligible(d.w(l - 1))) return {l, true};
  }
  return {l, false};
}

// Removes rv(l) when w(l - 1) is negligible: rotations from the left push it along row l - 1 out of the block.
void CancelSuperdiagonal(const Decomposition& d, int l, int k) {
  double c = 0.0;
  double s = 1.0;
  for (int i = l; i <= k; ++i) {
    const double f = s * d.rv(i);
    d.rv(i) = c * d.rv(i);
    if (d.Negligible(f)) break;
    // The row above loses its element, so the rotation has the opposite sense.
    const Rotation rotation(d.w(i), -f);
    d.w(i) = rotation.Length;
    c = rotation.Cosine;
    s = rotation.Sine;
    RotateColumns(d.ColumnOfU(l - 1), d.ColumnOfU(i), d.m, c, s);
  }
}

// The first column, up to a factor, of B'B - sigma I for the block l..k, divided by w(l): its leading element. sigma is
// the eigenvalue of the trailing 2 by 2 block of B'B closer to its last diagonal element. Written in ratios, so that
// no product of two elements can overflow or underflow to a zero divisor. No divisor is negligible inside a block.
double ShiftedLead(const Decomposition& d, int l, int k) {
  const double x = d.w(l);
  const double y = d.w(k - 1);
  const double z = d.w(k);
  const double g = d.rv(k - 1);
  const double h = d.rv(k);
  const double f = 0.5 * (((g + z) / h) * ((g - z) / y) + y / h - h / y);
  const double root = Hypotenuse(f, 1.0);
  const double denominator = f >= 0.0 ? f + root : f - root;
  return x - (z / x) * z + (h / x) * (y / denominator - h);
}

// One implicit QR sweep over the block l..k: a rotation from the right brings in the shift, and pairs of rotations
// chase the element that it makes below the diagonal down and out.
void SweepBlock(const Decomposition& d, int l, int k) {
  double f = ShiftedLead(d, l, k);
  double x = d.w(l);
  double c = 1.0;
  double s = 1.0;
  for (int j = l; j < k; ++j) {
    const int i = j + 1;
    double g = d.rv(i);
    double y = d.w(i);
    double h = s * g;
    g = c * g;
    const Rotation right(f, h);
    d.rv(j) = right.Length;
    c = right.Cosine;
    s = right.Sine;
    f = x * c + g * s;
    g = g * c - x * s;
    h = y * s;
    y *= c;
    RotateColumns(d.ColumnOfV(j), d.ColumnOfV(i), d.n, c, s);
    const Rotation left(f, h);
    d.w(j) = left.Length;
    c = left.Cosine;
    s = left.Sine;
    f = c * g + s * y;
    x = c * y - s * g;
    RotateColumns(d.ColumnOfU(j), d.ColumnOfU(i), d.m, c, s);
  }
  d.rv(l) = 0.0;
  d.rv(k) = f;
  d.w(k) = x;
}

// Sweeps until rv(k) is negligible. Returns false when the last sweep allowed is due and it is not.
bool IsolateSingularValue(const Decomposition& d, int k) {
  for (int sweep = 1; sweep <= kMaxSweeps; ++sweep) {
    const Block block = FindBlock(d, k);
    if (block.DiagonalAboveIsNegligible) CancelSuperdiagonal(d, block.First, k);
    if (block.First == k) return true;
    if (sweep == kMaxSweeps) break;
    SweepBlock(d, block.First, k);
  }
  return false;
}

bool Diagonalise(const Decomposition& d) {
  for (int k = d.n; k >= 1; --k) {
    if (!IsolateSingularValue(d, k)) return false;
    if (d.w(k) >= 0.0) continue;
    d.w(k) = -d.w(k);
    for (int j = 1; j <= d.n; ++j) d.V(j, k) = -d.V(j, k);
  }
  return true;
}

// order := the places, counted from 1, of the singular values in descending order; equal values keep theirs.
// By insertion: QR leaves the values almost in order, and a value that is not a number cannot upset it.
void SortIndexDescending(const double* values, int n, int* order) {
  for (int i = 0; i < n; ++i) {
    int place = i;
    for (; place > 0 && values[order[place - 1] - 1] < values[i]; --place) order[place] = order[place - 1];
    order[place] = i + 1;
  }
}

// Puts column order[j] at the place j of a matrix of n columns, through a work copy of the same size.
void PermuteColumns(double* matrix, int rows, int n, const int* order, double* work) {
  const auto length = static_cast<std::size_t>(rows);
  std::copy(matrix, matrix + length * static_cast<std::size_t>(n), work);
  for (int j = 0; j < n; ++j) {
    const double* column = work + length * static_cast<std::size_t>(order[j] - 1);
    std::copy(column, column + length, matrix + length * static_cast<std::size_t>(j));
  }
}

// Returns false when memory is out; the decomposition is then as it was.
bool SortDescending(Host& host, const Decomposition& d) {
  const auto columns = static_cast<std::size_t>(d.n);
  WorkArray<int> order(host, columns);
  WorkArray<double> work(host, columns * static_cast<std::size_t>(std::max(d.m, d.n)));
  if (order.Failed() || work.Failed()) return false;
  SortIndexDescending(d.singular, d.n, order.Data());
  PermuteColumns(d.singular, 1, d.n, order.Data(), work.Data());
  PermuteColumns(d.a, d.m, d.n, order.Data(), work.Data());
  PermuteColumns(d.v, d.n, d.n, order.Data(), work.Data());
  return true;
}

}  // namespace

int SingularValueDecomposition(Host& host, double* a, int lda, int n, double* w, double* v, int& status) {
  WorkArray<double> superdiagonal(host, static_cast<std::size_t>(n));
  if (superdiagonal.Failed()) {
    status = kDecompositionOutOfMemory;
    return 1;
  }
  Decomposition d{a, w, v, superdiagonal.Data(), lda, n};
  ReduceToBidiagonal(d);
  AccumulateRight(d);
  AccumulateLeft(d);
  if (!Diagonalise(d)) {
    status = kDecompositionNotConverged;
    return 1;
  }
  if (!SortDescending(host, d)) {
    status = kDecompositionOutOfMemory;
    return 1;
  }
  status = kDecompositionOk;
  return 0;
}

}  // namespace orv
