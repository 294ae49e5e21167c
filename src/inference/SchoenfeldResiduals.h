// Schoenfeld residuals and their scaled form.
#pragma once

namespace orv {

class CCoxFit;

// Fills m_SchoenfeldResiduals of a fit of input type 1 or 2, unless they are there already: for every event its design
// values less their average over the risk set, xbar(t); zero for censored cases. All events of a tied group share one
// average: under Efron's rule the mean of the averages of its d steps, otherwise (the discrete rule too) Breslow's.
// Weights act in the averages only.
//
// Does nothing when the fit has no estimate. Throws std::bad_alloc when memory is out. A risk sum of 0 leaves
// floating-point flags and values that are not finite. About n p operations, and a sort of the starts for input type 2.
// Source: Schoenfeld, Biometrika 69 (1982) 239-241.
void ComputeSchoenfeldResiduals(CCoxFit& fit);

// Fills m_ScaledSchoenfeldResiduals, unless they are there already: N V times the Schoenfeld residuals, with N the
// number of all complete cases and V the model covariance. The estimate is not added. Computes m_SchoenfeldResiduals
// when they are absent. Does nothing when the fit has no covariance.
// Source: Grambsch and Therneau, Biometrika 81 (1994) 515-526.
void ComputeScaledSchoenfeldResiduals(CCoxFit& fit);

}  // namespace orv
