// The L D L' factorisation of a symmetric matrix that may be singular, with its solution and its generalised inverse.
//
// A matrix is p rows of p doubles, rows and columns counted from 0. The information matrix comes as its upper triangle
// (row <= column); a factor has D on the diagonal and L, unit lower triangular, below it. There is no pivoting: of two
// columns that say the same, the later one is dropped. Results depend on the order of the operations, which is part
// of this contract: columns ascending, and in a column rows ascending.
// Method: Golub and Van Loan, Matrix Computations, the outer product form of LDL'.
#pragma once

namespace orv {

// Zeroes row i and column i for every i with fixed[i] != 0.
void ZeroRowsAndColumns(double** a, int p, const unsigned char* fixed);

// Copies the upper triangle into the lower.
void MirrorUpper(double** a, int p);

// Factors a as L D L' in place. In: the upper triangle. Out: the factor; above the diagonal the matrix as it was.
//
//   tolerance  relative to the largest diagonal element (a negative one counts as 0), e.g. 1e-12
//   dropped    null, or p marks: 1 for a pivot that was skipped, 0 for one kept. All are overwritten.
//
// Returns the number of pivots kept, negated when a pivot was clearly negative, below -8 times the bound. A negative
// matrix with no pivot kept returns 0.
// A singular matrix is not an error: a pivot that is 0 or below the bound becomes 0 and its column is skipped, with
// the elements below it left as they are. About p^3 / 6 multiplications.
int FactorLDL(double** a, int p, double tolerance, unsigned char* dropped);

// Solves (L D L') x = b with the factor of FactorLDL, in place. An element with a dropped pivot becomes 0.
void SolveLDL(double* const* a, int p, double* b);

// Inverts the matrix with the factor of FactorLDL, in place. Out: the inverse in the upper triangle with the diagonal;
// the triangle below holds no result. Rows and columns of dropped pivots are 0, so that G is a generalised inverse of
// a non-negative definite A: A G A = A and G A G = G.
void InvertLDL(double** a, int p);

}  // namespace orv
