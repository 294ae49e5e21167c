// The design values of a covariate pattern: what a case with these predictors would have.
#pragma once

#include <map>
#include <vector>

namespace orv {

class CCoxData;

// What PatternDesignRow returns for a factor value that is none of the factor's selected codes.
inline constexpr int kPatternCodeUnknown = 6;

// Fills `row` with CoefficientCount design values.
//   values  by variable number: the value of each covariate and the code of each factor that the design uses. A
//   reference
//           category is evaluated as in a case: -1 under sigma-restricted coding, 0 under reference coding
// Returns 0, or kPatternCodeUnknown with `row` empty.
int PatternDesignRow(const CCoxData& data, const std::map<int, double>& values, std::vector<double>& row);

}  // namespace orv
