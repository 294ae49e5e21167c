// The floating-point environment of a fit, for the life of an object.
//
// Rounding is to nearest and denormal results are flushed to zero. Nothing traps: overflow, invalid operations and
// divisions by zero leave status flags, which the fit reads at the end of each pass and step. The environment of the
// caller comes back when the object goes.
#pragma once

#include <cfenv>

namespace orv {

class FloatingPointRegime {
 public:
  FloatingPointRegime();
  ~FloatingPointRegime();
  FloatingPointRegime(const FloatingPointRegime&) = delete;
  FloatingPointRegime& operator=(const FloatingPointRegime&) = delete;

  // An overflow, invalid operation or division by zero happened since the flags were last cleared.
  static bool HasFailed();
  static void ClearFlags();
  // Throws NumericalFailure when HasFailed, with the flags cleared for what comes next.
  static void ThrowIfFailed();

 private:
  std::fenv_t m_saved{};
};

}  // namespace orv
