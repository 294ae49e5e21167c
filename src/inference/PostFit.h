// The passes after a fit: the baseline of each stratum, the linear predictor, and martingale and deviance residuals.
//
// They fill m_LinearPredictor, m_MartingaleResiduals, m_BreslowCurves and the event lists of the fit, and for survival
// times m_DevianceResiduals and m_KaplanMeierCurves. The hazard increment of the baseline is that of Breslow under
// every rule for ties; Efron's rule shares the increments among the residuals of a tied group.
//
// When the numbers leave the range of a double, as with covariates far from 0, m_BreslowValid and m_KaplanMeierValid
// become false and only the linear predictor is left behind. A fit without a vector has no baseline either.
#pragma once

namespace orv {

class CCoxFit;

// For input type 1. O(n p), and the product-limit baseline of unweighted analyses.
// Sources: Breslow (1974); Kalbfleisch and Prentice (1973) for the product-limit form.
void PostFitSurvivalTime(CCoxFit& fit);

// For input type 2. O(n p + n log n).
void PostFitCountingProcess(CCoxFit& fit);

}  // namespace orv
