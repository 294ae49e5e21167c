// Stepwise selection: effects enter by their score tests as in forward selection, and leave by their Wald tests as in
// backward selection, on one model. After a removal only removals are tried until none is left; then entry resumes.
#pragma once

namespace orv {

class CCoxFit;

// Runs the search. The outcome is m_ActiveColumns and the lists of steps. It ends when a pass changes nothing, and when
// the effect that entered last is the one just removed, since the same state would come back. A longer cycle, which a
// PToEnter above PToRemove makes possible, ends it when its first state is met again. A user's cancel ends it; so does
// a numerical failure, after a message. REQUIRES: FinalFitReady is off, and the fit is new.
void StepwiseSelection(CCoxFit& fit);

// Reduces the design to the effects in the model (see ReduceDesign).
void ApplyStepwiseSelection(CCoxFit& fit);

}  // namespace orv
