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

// Vectors that a comment calls padded have as many elements as a row of a block, with zeros from place p on.
struct PassKernels {
  const char* VectorUnit;  // for reports

  // The linear predictor: sum of x_j beta_j over p elements.
  double (*LinearPredictor)(const double* x, const double* beta, int p);

  // weighted := weight x, sum += weight x. Padded.
  void (*Weigh)(const double* x, double weight, double* weighted, double* sum, int p);

  // y += factor x. Padded.
  void (*AddScaled)(double* y, const double* x, double factor, int p);

  // mean := factor x, weighted := -weight mean, sum -= weight mean. Padded.
  void (*TakeMean)(const double* x, double factor, double weight, double* mean, double* weighted, double* sum, int p);

  // scaled_i := factors_i B_i for count rows.
  void (*ScaleRows)(const double* B, const double* factors, double* scaled, int count, int p);

  // C_jl += sum over i of A_ij B_il for l <= j: count rows A_i and B_i, p rows of C. What stands to the right of the
  // diagonal of C is work space up to the next whole vector.
  // The sum over i is formed first, i ascending, and then added.
  void (*AddOuterProducts)(double* C, const double* A, const double* B, int count, int p);
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
