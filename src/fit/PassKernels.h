// The innermost loops of a pass, on plain pointers.
//
// Each loop exists once for every vector unit that the program was built for, and the widest one that the machine has
// is taken at run time. Clones for wider units use fused multiply-adds, so results differ between kinds of processor in
// rounding; on one kind they are the same bits in every run.
//
// Rows of a block are PaddedOrder(p) doubles apart, with zeros from place p on.
#pragma once

#include <cstddef>
#include <span>

namespace orv {

// Elements of a lower triangle packed by rows: element (j, l) with l <= j stands at j (j + 1) / 2 + l.
constexpr std::size_t PackedSize(std::size_t order) {
  return order * (order + 1) / 2;
}

// The widest vector of any clone, in doubles; also a line of the cache.
inline constexpr std::size_t kVectorDoubles = 8;

// The distance of rows: whole vectors, and an odd number of them, so that the rows of a block do not compete for the
// same places of the cache.
[[gnu::always_inline]] constexpr std::size_t PaddedOrder(std::size_t order) {
  return ((order + kVectorDoubles - 1) / kVectorDoubles | 1U) * kVectorDoubles;
}

// Of the rows of a block, a number each: what they bring into the sums of a pass.
struct RowTerms {
  const double* wr;     // the weighted risk
  const double* share;  // wr times the sum of 1 / D over the groups that find the row at risk
  const double* score;  // the factor in the score
  const double* q;      // 1 / S0 where a group closes on the row
  const double* r;      // the sum of its weights / S0; 0 for rows on which no group closes
};

// factor times the matrix.
struct ScaledMatrix {
  const double* matrix = nullptr;
  double factor = 0.0;
};

// Store that is read soon, and that the processor may fetch while it multiplies. Nothing, or `bytes` from an address
// on.
struct ComingStore {
  const void* first = nullptr;
  std::size_t bytes = 0;
};

// Vectors that a comment calls padded have as many elements as a row of a block, with zeros from place p on. Lists of
// numbers for each row of a block have room for whole vectors of kVectorDoubles.
struct PassKernels {
  const char* VectorUnit;  // for reports

  // The linear predictor: sum of x_j beta_j over p elements.
  double (*LinearPredictor)(const double* x, const double* beta, int p);

  // eta_i := B_i times beta for count rows, and 0 up to the next whole vector. beta padded.
  void (*LinearPredictors)(const double* B, const double* beta, double* eta, int count, int p);

  // results_i := exp(eta_i) for count numbers, to within 0.7 units in the last place. The status flags are left as by
  // the library's function.
  void (*Exponentials)(const double* eta, double* results, int count);

  // terms_i + rest_i = factors_i log(x_i + lost_i) for count numbers and small lost_i, to within 4e-18 of the
  // logarithm: each rest takes up what its term loses to rounding. All lists have room for whole vectors. The status
  // flags are left as by the library's function, which also serves where some x_i is not a normal positive number; the
  // rest is 0 then.
  void (
      *Logarithms)(const double* x, const double* lost, const double* factors, double* terms, double* rest, int count);

  // B_i := the p values at cells + i distance, for count rows. The distance may be negative.
  void (*CopyRows)(const double* cells, std::ptrdiff_t distance, double* B, int count, int p);

  // B_i -= row for count rows. Padded.
  void (*SubtractRow)(double* B, const double* row, int count, int p);

  // Rows of a block against the groups that close on them; see RowTerms. Padded.
  //   S1 += wr_i B_i, row by row;  T_i = r_i (q_i S1)
  //   A_i = share_i B_i - wr_i (T_i + T_i+1 + ... + T_count)
  //   U += score_i B_i over all rows;  pull := the sum of all T_i
  void (*CentreRows)(const double* B,
                     const RowTerms& terms,
                     double* S1,
                     double* U,
                     double* pull,
                     double* A,
                     int count,
                     int p);

  // A_i := factors_i B_i for count rows. Padded.
  void (*ScaleRows)(const double* B, const double* factors, double* A, int count, int p);

  // y += factor x. Padded.
  void (*AddScaled)(double* y, const double* x, double factor, int p);

  // y := factor x. Padded.
  void (*Scale)(double* y, const double* x, double factor, int p);

  // sum += factors_i B_i over count rows. Padded.
  void (*AddCombination)(double* sum, const double* B, const double* factors, int count, int p);

  // C_jl += factor M_jl + sum over i of A_ij B_il for l <= j: count rows A_i and B_i, p rows of C and of M, which may
  // be null. What stands to the right of the diagonal of C and M is work space, to the end of the row. The sum over i
  // is formed first, i ascending whatever p, so that the information of some columns is the same bits in every model
  // that has them in this order. Meanwhile the processor fetches what comes next.
  void (*AddProducts)(double* C,
                      const double* A,
                      const double* B,
                      int count,
                      int p,
                      const ScaledMatrix& M,
                      const ComingStore& next);
};

// The clone for this machine.
const PassKernels& KernelsOfThisMachine();
// All clones that this machine can run, the portable one first.
std::span<const PassKernels> AvailableKernels();

// Score and upper triangle of the information at the head of a pass: zeros.
void ClearDerivatives(double* U, double** H, int p);

// The linear predictor of one row, x_j beta_j added from the first to the last.
double LinearPredictor(const double* x, const double* beta, int p);

// S1 += weight x and S2 += weight x x', with weight x_j formed first; S2 packed.
void AddWeighted(double* S1, double* S2, const double* x, double weight, int p);

// A packed lower triangle into the upper triangle of a matrix.
void CopyPackedToUpper(const double* packed, double** H, int p);

}  // namespace orv
