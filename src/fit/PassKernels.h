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

  // B_i := the p values at cells + i distance, for count rows.
  void (*CopyRows)(const double* cells, std::size_t distance, double* B, int count, int p);

  // copy := x, sum += weight x. Padded; copy may be x.
  void (*Join)(const double* x, double weight, double* copy, double* sum, int p);

  // y += factor x. Padded.
  void (*AddScaled)(double* y, const double* x, double factor, int p);

  // y := factor x. Padded.
  void (*Scale)(double* y, const double* x, double factor, int p);

  // sum += factors_i B_i over count rows. Padded.
  void (*AddCombination)(double* sum, const double* B, const double* factors, int count, int p);

  // C_jl += sum over i of factors_i B_ij B_il for l <= j: count rows B_i, p rows of C. What stands to the right of the
  // diagonal of C is work space, to the end of the row.
  // The sum over i is formed first, i ascending, and then added.
  void (*AddOuterProducts)(double* C, const double* B, const double* factors, int count, int p);
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
