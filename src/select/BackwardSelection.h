// Backward selection: from all effects downwards, the effect with the largest p value of its Wald test leaves while
// that is above PToRemove. Effects forced into the model and those held at their start values are not tested, and a
// main effect stays as long as an interaction that contains it.
#pragma once

namespace orv {

class CCoxFit;

// Runs the search. The outcome is m_ActiveColumns and the lists of steps. A user's cancel ends it; so does a numerical
// failure, after a message.
// REQUIRES: FinalFitReady is off, and the fit is new.
void BackwardSelection(CCoxFit& fit);

// Reduces the design to the effects that stayed (see ReduceDesign).
void ApplyBackwardSelection(CCoxFit& fit);

}  // namespace orv
