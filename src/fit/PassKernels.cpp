#include "fit/PassKernels.h"

#include <algorithm>
#include <array>

#include "fit/PassKernelTables.h"

namespace orv {

namespace {

constexpr std::size_t kMostClones = 3;

struct CloneList {
  std::array<PassKernels, kMostClones> Clones;
  std::size_t Count = 0;

  void Add(const PassKernels& clone) { Clones[Count++] = clone; }
};

CloneList FindClones() {
  CloneList list;
  list.Add(kPortableKernels);
#if defined(__x86_64__)
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0) list.Add(kAvx2Kernels);
  if (__builtin_cpu_supports("avx512f") != 0) list.Add(kAvx512Kernels);
#endif
  return list;
}

const CloneList& Clones() {
  static const CloneList list = FindClones();
  return list;
}

}  // namespace

const PassKernels& KernelsOfThisMachine() {
  return AvailableKernels().back();
}

std::span<const PassKernels> AvailableKernels() {
  return {Clones().Clones.data(), Clones().Count};
}

void ClearDerivatives(double* U, double** H, int p) {
  std::fill_n(U, p, 0.0);
  for (int j = 0; j < p; ++j) std::fill(H[j] + j, H[j] + p, 0.0);
}

double LinearPredictor(const double* x, const double* beta, int p) {
  double eta = 0.0;
  for (int j = 0; j < p; ++j) eta += x[j] * beta[j];
  return eta;
}

void AddWeighted(double* S1, double* S2, const double* x, double weight, int p) {
  for (int j = 0; j < p; ++j) {
    const double weighted = weight * x[j];
    S1[j] += weighted;
    for (int l = 0; l <= j; ++l) S2[l] += weighted * x[l];
    S2 += j + 1;
  }
}

void CopyPackedToUpper(const double* packed, double** H, int p) {
  for (int j = 0; j < p; ++j) {
    for (int l = 0; l <= j; ++l) H[l][j] = *packed++;
  }
}

}  // namespace orv
