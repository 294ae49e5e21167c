// Forward selection: from the forced effects upwards, the effect with the smallest p value of its score test enters
// while that is at most PToEnter. A step fits the model once; candidates are tested at its estimates without being
// fitted.
#pragma once

namespace orv {

class CCoxFit;

// Runs the search. The outcome is m_ActiveColumns and the lists of steps. A user's cancel ends it; so does a numerical
// failure, after a message.
// REQUIRES: FinalFitReady is off, and the fit is new.
void ForwardSelection(CCoxFit& fit);

// Reduces the design to the effects selected (see ReduceDesign).
void ApplyForwardSelection(CCoxFit& fit);

}  // namespace orv
