// Martingale and deviance residuals at the final estimates.
#pragma once

namespace orv {

class CCoxFit;

// For survival times: m_MartingaleResiduals and m_DevianceResiduals, delta - H(t) exp(x'b) and its signed root. Under
// Efron's rule an event of a group of d shares only (1 - k/d) of the k-th step of the hazard. The weight of the case
// itself does not enter. Needs m_LinearPredictor.
// Source: Therneau, Grambsch and Fleming, Biometrika 77 (1990) 147-160.
void ComputeSurvivalMartingaleResiduals(CCoxFit& fit);

// For intervals: m_MartingaleResiduals alone. O(n log n).
void ComputeCountingMartingaleResiduals(CCoxFit& fit);

}  // namespace orv
