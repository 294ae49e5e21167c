// Editing the time-dependent covariates of an analysis.
#pragma once

#include <string>

namespace orv {

class CCoxPH;

// Stores a covariate with its formula: appended when `position` is 0, else it replaces the covariate at that position,
// from 1, which must exist. Returns 1 after a message and stores nothing when the name or the formula is empty, or when
// the formula does not hold "T_" or "t_". That test is textual: a variable whose name contains the two characters
// passes it.
int SetTimeCovariate(CCoxPH& analysis, int position, const std::string& name, const std::string& expression);

}  // namespace orv
