// NumericalFailure: overflow, an invalid operation or a division by zero during a fit.
#pragma once

#include <stdexcept>

namespace orv {

class NumericalFailure : public std::runtime_error {
 public:
  NumericalFailure() : std::runtime_error("a numerical failure during estimation") {}
};

}  // namespace orv
