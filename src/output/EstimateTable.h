// The table of parameter estimates.
#pragma once

namespace orv {

class CCoxFit;

// One row per coefficient: estimate, standard error, chi-square, p value, confidence limits, hazard ratio and its
// limits, and the level of a factor when the model has one. Rows whose p value is below alpha are highlighted.
//   confidenceLevel  0 to 1. Outside 0.0001 to 0.9999 alpha is 0.05, while the titles still print the level passed
// Hazard ratios appear only for terms of one variable that no other effect of the model contains. Under
// sigma-restricted coding the ratio of a factor's level is that of a contrast.
void ShowParameterEstimates(const CCoxFit& fit, double confidenceLevel);

}  // namespace orv
