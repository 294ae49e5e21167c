#include "fit/PassKernelClones.h"
#include "fit/PassKernelTables.h"

namespace orv {

namespace {

struct Avx2Unit {
  static constexpr int Width = 4;
  static constexpr int Registers = 16;
  static constexpr int Rows = 4;
  using Vector = VectorOf<Width>::Type;

  static Vector LostByProduct(Vector a, Vector b, Vector p) {
    Vector lost;
    for (int lane = 0; lane < Width; ++lane) lost[lane] = __builtin_fma(a[lane], b[lane], -p[lane]);
    return lost;
  }
};

}  // namespace

const PassKernels kAvx2Kernels = Clones<Avx2Unit>::Table("AVX2, fused");

}  // namespace orv
