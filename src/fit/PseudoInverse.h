// The Moore-Penrose inverse of a matrix of any shape and rank.
#pragma once

#include "host/Host.h"

namespace orv {

// b := V diag(1 / w) U' of a = U diag(w) V', where a singular value of at most 1e-14 has a zero in place of 1 / w.
// The bound is absolute: a matrix of very small elements has a zero inverse.
//
//   a       rows by cols, one flat array by columns; not changed
//   b       out: cols by rows, one flat array by columns; must not overlap a
//   status  out: a DecompositionStatus, 0 on success
//
// Returns 0. Returns 1 when memory is out (`status` 2) or the decomposition does not converge (`status` 1), as happens
// when an element is not finite; b is then all zero.
// An all-zero matrix is not an error: its inverse is zero. Works in two squares of max(rows, cols).
int PseudoInverse(Host& host, const double* a, double* b, int rows, int cols, int& status);

}  // namespace orv
