#include "fit/PassKernelClones.h"
#include "fit/PassKernelTables.h"

namespace orv {

namespace {

struct PortableUnit {
  static constexpr int Width = 2;
  static constexpr int Rows = 4;
  static constexpr int Vectors = 2;
};

}  // namespace

const PassKernels kPortableKernels = Clones<PortableUnit>::Table("the compiler's default");

}  // namespace orv
