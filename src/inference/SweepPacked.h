// The sweep operator on a symmetric matrix in packed storage, for tests of linear hypotheses and the costs of effects.
#pragma once

#include <vector>

namespace orv {

// Sweeps one pivot in, or out again when it was swept before. Each sweep is the inverse of itself, and pivots can be
// swept in any order; with all pivots swept the matrix is its inverse.
//
//   packed    n(n + 1)/2 values: the lower triangle by rows, entry (i, j), j <= i, both counted from 0, at
//             i(i + 1)/2 + j. With s = -1 for a swept index and +1 for another, the full matrix has (j, i) = packed and
//             (i, j) = s_i s_j packed.
//   pivot     counted from 1 to n
//   swept     bit i: index i is swept. A vector shorter than n has no further index swept and grows to n.
//   singular  out: 1 when the pivot was refused, else 0
//
// A pivot not swept yet is refused when, on a matrix scaled to a unit diagonal, it is at most 1e-7. A diagonal entry
// below 1e-12 is left unscaled and so always refused, while one of 1e-12 or more becomes 1 and is not. Refused too is
// what is no finite number. The matrix and the bits are then exactly as they were. A refusal is no error: the caller
// counts its degrees of freedom by it. A swept pivot is never refused, so that a sweep can always be undone. Method:
// Goodnight, The American Statistician 33 (1979) 149-158, in the symmetric form with signs. About n^2 / 2
// multiplications, without an allocation up to n = 128.
void SweepPacked(double* packed, int pivot, int n, std::vector<bool>& swept, int& singular);

}  // namespace orv
