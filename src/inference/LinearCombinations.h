// Which linear functions of the parameters can be tested.
#pragma once

#include <vector>

namespace orv {

class CCoxPH;

// Why linear combinations cannot be tested.
namespace LinearCombinationStatuses {
inline constexpr int Usable = 0;
inline constexpr int NotEstimable = 1;
inline constexpr int NotIndependent = 2;
inline constexpr int NothingValid = 3;
}  // namespace LinearCombinationStatuses

// Checks linear functions of the parameters of the fitted model.
//   L  p rows of m columns; each column l is the function l'b, on the scale of the data
//
// A function is estimable when l = H'l, H being the projection m_NullProjection on the scale of the data: its entries
// may differ by 0.0001 times the largest of l. For a design of full rank every function is. A function of an aliased or
// fixed parameter alone is not, and nothing is when the fit holds no projection. Several functions are independent when
// L'VL, V being the covariance in use, has a factorisation; without a covariance they are not.
// Returns Usable, NotEstimable or NotIndependent.
[[nodiscard]] int ValidateLinearCombinations(const CCoxPH& analysis, const std::vector<std::vector<double>>& L);

}  // namespace orv
