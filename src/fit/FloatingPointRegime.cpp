#include "fit/FloatingPointRegime.h"

#if defined(__SSE2__)
#include <pmmintrin.h>
#include <xmmintrin.h>
#elif defined(__aarch64__)
#include <cstdint>
#endif

#include "fit/NumericalFailure.h"

namespace orv {

namespace {

constexpr int kFailureFlags = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW;

// The saved environment holds these modes too on the processors named here, so restoring it undoes them.
void FlushDenormalResults() {
#if defined(__SSE2__)
  _MM_SET_FLUSH_ZERO_MODE(_MM_FLUSH_ZERO_ON);
#elif defined(__aarch64__)
  constexpr std::uint64_t kFlushToZero = std::uint64_t{1} << 24;
  std::uint64_t control = 0;
  __asm__ volatile("mrs %0, fpcr" : "=r"(control));
  __asm__ volatile("msr fpcr, %0" : : "r"(control | kFlushToZero));
#endif
}

}  // namespace

FloatingPointRegime::FloatingPointRegime() {
  std::feholdexcept(&m_saved);
  std::fesetround(FE_TONEAREST);
  FlushDenormalResults();
}

FloatingPointRegime::~FloatingPointRegime() {
  std::fesetenv(&m_saved);
}

bool FloatingPointRegime::HasFailed() {
  return std::fetestexcept(kFailureFlags) != 0;
}

void FloatingPointRegime::ClearFlags() {
  std::feclearexcept(FE_ALL_EXCEPT);
}

void FloatingPointRegime::ThrowIfFailed() {
  if (!HasFailed()) return;
  ClearFlags();
  throw NumericalFailure();
}

}  // namespace orv
