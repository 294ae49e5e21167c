// The root of a function of one variable in an interval.
#pragma once

#include <functional>
#include <optional>

namespace orv {

// Brent's method on an interval whose ends have values of different sign.
//
//   f          the function; nothing when it cannot be computed, which ends the search
//   tolerance  of the root; a step is accepted within 6e-8 |b| + tolerance / 2
//
// Returns nothing when an end fails, both ends have the same sign, or 100 iterations do not do.
// Source: Brent, Algorithms for Minimization without Derivatives (1973), chapter 4.
std::optional<double> FindRoot(const std::function<std::optional<double>(double)>& f,
                               double low,
                               double high,
                               double tolerance);

}  // namespace orv
