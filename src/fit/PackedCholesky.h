// The Cholesky factor of a symmetric non-negative definite matrix in packed storage, which may be singular.
#pragma once

namespace orv {

// Factors a as L L' in place.
//
//   a        n(n + 1)/2 values. In: the lower triangle by rows, element (i, j), j <= i, both counted from 1, at
//            i(i - 1)/2 + j counted from 1. Out: L in the same places. Read by columns they are the upper factor L'.
//   nullity  out: the number of zero pivots so far
//
// Returns 0, or 1 when the matrix is not non-negative definite: a pivot is negative beyond 1e-14 of its diagonal
// element, or the rest of a column under a zero pivot is not zero. After a 1 the rows before the failing one hold the
// factor and the others the matrix.
// A pivot of at most 1e-14 of its diagonal element becomes 0, and so does its column: a singular matrix is not an
// error. Sizes are compared with a slack of 15 units in the last place, as in AlmostEqual.
// Method: Healy, Algorithm AS 6, Applied Statistics 17 (1968).
int PackedCholesky(double* a, int n, int& nullity);

}  // namespace orv
