// The summary of model building: the steps of a selection, or the best subset of each size.
#pragma once

namespace orv {

class CCoxFit;

// Shows the table of the procedure that the options chose; nothing without model building. A selection has a row for
// each effect that the search entered or removed, in order; forced effects have none. A table without rows says in its
// one cell that all effects were forced into the model, also when no other effect qualified. Kept: saved reports hold
// this text.
void ShowModelBuildingSummary(const CCoxFit& fit);

}  // namespace orv
