#include "fit/PassKernelClones.h"
#include "fit/PassKernelTables.h"

namespace orv {

namespace {

struct Avx2Unit : FusedArithmetic<4> {
  static constexpr int Width = 4;
  static constexpr int Registers = 16;
  static constexpr int Rows = 4;
};

}  // namespace

const PassKernels kAvx2Kernels = Clones<Avx2Unit>::Table("AVX2, fused");

}  // namespace orv
