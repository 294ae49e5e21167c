#include "fit/PassKernelClones.h"
#include "fit/PassKernelTables.h"

namespace orv {

namespace {

struct Avx2Unit {
  static constexpr int Width = 4;
  static constexpr int Rows = 6;
  static constexpr int Vectors = 2;
};

}  // namespace

const PassKernels kAvx2Kernels = Clones<Avx2Unit>::Table("AVX2, fused");

}  // namespace orv
