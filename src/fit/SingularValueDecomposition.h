// The singular value decomposition of a dense matrix.
#pragma once

#include "host/Host.h"

namespace orv {

// How a decomposition ended: the values of `status` in SingularValueDecomposition and PseudoInverse.
enum DecompositionStatus : int {
  kDecompositionOk = 0,
  kDecompositionNotConverged = 1,  // a singular value was not isolated by its 300th sweep
  kDecompositionOutOfMemory = 2,   // a working array could not be allocated
};

// Decomposes a = U diag(w) V'.
//
//   a       lda rows by n columns, one flat array by columns: element (i, j), counted from 1, at (j - 1) lda + i - 1.
//           Out: U in its place. With lda >= n its columns are orthonormal; with lda < n its rows are, and the columns
//           of the singular values above 0.
//   w       out: the n singular values, none negative, descending. With lda < n the last n - lda are 0 up to rounding.
//   v       out: n by n, V (not V'), by columns
//   status  out: a DecompositionStatus
//
// Returns 0, or 1 with `status` set. When a singular value does not converge (the matrix holds a value that is not
// finite, in practice) the outputs hold no result; when the memory for the ordering is out they hold a decomposition
// whose values are in no order.
// A singular matrix is not an error. The matrix may be of any magnitude whose sums of absolute values are finite
// and whose singular values are normal doubles or 0.
// Method: Golub and Reinsch, Numerische Mathematik 14 (1970) 403-420: Householder reduction to bidiagonal form, then
// implicit QR. About 4 lda n^2 + 8 n^3 multiplications.
int SingularValueDecomposition(Host& host, double* a, int lda, int n, double* w, double* v, int& status);

}  // namespace orv
