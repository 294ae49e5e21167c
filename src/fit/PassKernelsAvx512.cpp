#include "fit/PassKernelClones.h"
#include "fit/PassKernelTables.h"

namespace orv {

namespace {

struct Avx512Unit {
  static constexpr int Width = 8;
  static constexpr int Registers = 32;
  static constexpr int Rows = 8;
  using Vector = VectorOf<Width>::Type;

  static Vector LostByProduct(Vector a, Vector b, Vector p) {
    Vector lost;
    for (int lane = 0; lane < Width; ++lane) lost[lane] = __builtin_fma(a[lane], b[lane], -p[lane]);
    return lost;
  }
};

}  // namespace

const PassKernels kAvx512Kernels = Clones<Avx512Unit>::Table("AVX-512, fused");

}  // namespace orv
