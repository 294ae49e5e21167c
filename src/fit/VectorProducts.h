// Products of plain vectors and matrices. Terms are added from the first to the last.
#pragma once

namespace orv {

// The scalar product of two vectors of length n; 0 for n = 0.
double DotProduct(const double* x, const double* y, int n);

// out := row times matrix.
//
//   out     cols values; must not overlap the inputs
//   row     rows values
//   matrix  rows by cols, one flat array by columns: the same layout as PseudoInverse
void RowTimesMatrix(double* out, const double* row, const double* matrix, int rows, int cols);

}  // namespace orv
