// The Wald test of linear functions of the parameters.
#pragma once

#include <vector>

namespace orv {

class CCoxFit;

// Tests L'b = 0: chi-square (L'b)' (L'VL)^- (L'b).
//   L              p rows of m columns; each column is one linear function
//   b, V           p estimates and their covariance, p by p
//   estimate       Out: L'b, only when m is 1
//   standardError  Out: its standard error, only when m is 1
//   df             Out: the number of independent functions
//   failed         Out: 1 when none is independent; then chi-square and df are 0 and the estimate is not set
// Returns the chi-square.
double TestLinearHypothesis(const std::vector<std::vector<double>>& L,
                            const std::vector<double>& b,
                            const std::vector<std::vector<double>>& V,
                            double& estimate,
                            double& standardError,
                            int& df,
                            int& failed);

// The same on the fitted model: its estimates, and the covariance in use. Fails when the fit left no covariance.
double TestLinearHypothesis(const CCoxFit& fit,
                            const std::vector<std::vector<double>>& L,
                            double& estimate,
                            double& standardError,
                            int& df,
                            int& failed);

}  // namespace orv
