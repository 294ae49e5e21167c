// CompareOutput: what a program wrote against what a case expects.
#pragma once

#include <string>
#include <string_view>

namespace orv::testing {

// Empty when the texts are the same, otherwise what differs, with the first line that does.
//
//   digits  0 compares to the letter. Otherwise numbers agree when they differ by no more than 10^-digits of the larger
//           one, since the last digits of a number depend on the mathematical functions of the machine, or by no more
//           than 1e-15, since a small probability is one minus another. All else is compared to the letter still.
std::string CompareOutput(std::string_view expected, std::string_view actual, int digits);

}  // namespace orv::testing
