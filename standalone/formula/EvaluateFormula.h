// EvaluateFormula: runs the program of a compiled formula.
#pragma once

#include <cstddef>

namespace orv {

// Evaluates a formula.
//
//   program    made by CompileFormula; nothing checks it
//   arguments  the value of each symbol, in the order of CompiledFormula::Symbols; NaN is missing
//   result     out: a finite number, or NaN when the result is missing. Unchanged on failure
//
// Returns 0, or 1 on a numerical failure: division by zero, logarithm or root of a negative number, a power that is no
// number, overflow. A part that is not reached cannot fail. A missing result is no failure.
//
// Allocates nothing, throws nothing and does not depend on the locale. Takes time in proportion to the program.
[[nodiscard]] int EvaluateFormula(const std::byte* program, const double* arguments, double& result) noexcept;

}  // namespace orv
