#include "fit/PassKernelClones.h"
#include "fit/PassKernelTables.h"

namespace orv {

namespace {

struct Avx512Unit {
  static constexpr int Width = 8;
  static constexpr int Rows = 12;
  static constexpr int Vectors = 2;
};

}  // namespace

const PassKernels kAvx512Kernels = Clones<Avx512Unit>::Table("AVX-512, fused");

}  // namespace orv
