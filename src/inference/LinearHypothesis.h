// The Wald test of linear functions of the parameters.
#pragma once

#include <vector>

namespace orv {

class CCoxFit;

// Tests L'b = 0 on the fitted model: chi-square (L'b)' (L'VL)^- (L'b), with V the covariance in use.
//   L              p rows of m columns; each column is one linear function
//   estimate       Out: L'b, only when m is 1
//   standardError  Out: its standard error, only when m is 1
//   df             Out: the number of independent functions
//   failed         Out: 1 when none is independent; then chi-square and df are 0 and the estimate is not set
// Returns the chi-square.
double TestLinearHypothesis(const CCoxFit& fit,
                            const std::vector<std::vector<double>>& L,
                            double& estimate,
                            double& standardError,
                            int& df,
                            int& failed);

}  // namespace orv
