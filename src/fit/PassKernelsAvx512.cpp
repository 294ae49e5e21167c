#include "fit/PassKernelClones.h"
#include "fit/PassKernelTables.h"

namespace orv {

namespace {

struct Avx512Unit : FusedArithmetic<8> {
  static constexpr int Width = 8;
  static constexpr int Registers = 32;
  static constexpr int Rows = 8;
};

}  // namespace

const PassKernels kAvx512Kernels = Clones<Avx512Unit>::Table("AVX-512, fused");

}  // namespace orv
