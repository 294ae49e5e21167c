// The clones of the pass kernels, each in a file that is compiled for its vector unit.
#pragma once

#include "fit/PassKernels.h"

namespace orv {

extern const PassKernels kPortableKernels;
// On processors of the x86-64 family only.
extern const PassKernels kAvx2Kernels;
extern const PassKernels kAvx512Kernels;

}  // namespace orv
