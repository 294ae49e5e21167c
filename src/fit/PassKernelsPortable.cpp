#include "fit/PassKernelClones.h"
#include "fit/PassKernelTables.h"

namespace orv {

namespace {

struct PortableUnit {
  static constexpr int Width = 2;
  static constexpr int Registers = 15;  // one is for products that wait to be added
  static constexpr int Rows = 2;
  using Vector = VectorOf<Width>::Type;

  // The halves of a number have exact products (Dekker, 1971; Veltkamp, 1968), as long as the compiler fuses nothing:
  // this file is compiled with -ffp-contract=off.
  static Vector HighHalf(Vector a) {
    constexpr double kSplitter = 0x1p27 + 1.0;
    const Vector spread = a * kSplitter;
    return spread - (spread - a);
  }
  static Vector LostByProduct(Vector a, Vector b, Vector p) {
    const Vector aHigh = HighHalf(a);
    const Vector bHigh = HighHalf(b);
    const Vector aLow = a - aHigh;
    const Vector bLow = b - bHigh;
    return ((aHigh * bHigh - p) + aHigh * bLow + aLow * bHigh) + aLow * bLow;
  }
};

}  // namespace

const PassKernels kPortableKernels = Clones<PortableUnit>::Table("the compiler's default");

}  // namespace orv
