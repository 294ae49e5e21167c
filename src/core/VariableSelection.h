// Choosing the variables of an analysis: the checks at the moment of choosing, and the default design.
#pragma once

#include <cstdint>
#include <string>

namespace orv {

class CCoxPH;

// Predictors that one analysis can hold, one more than the largest number accepted.
inline constexpr int kPredictorLimit = 2012;

// Checks the selection for a survival time, with or without time-dependent covariates: 1, 2 or 6 survival variables,
// and not too many predictors. On failure shows the message, puts the counts back to `previous` and returns 1.
struct SelectionCounts {
  std::int16_t SurvivalVariableCount = 0;
  std::int16_t CovariateCount = 0;
  std::int16_t FactorCount = 0;
};
SelectionCounts CountsOf(const CCoxPH& analysis);
int CheckSurvivalTimeSelection(CCoxPH& analysis, const SelectionCounts& previous);

// Checks the selection for intervals: start, stop, censoring variable, and not too many predictors. Returns 1 after a
// message.
int CheckIntervalSelection(CCoxPH& analysis);

// Chooses the subject variable; 0 chooses none. A variable that already has a role is refused with a message and
// leaves the choice as it was: returns 1.
int SelectSubjectVariable(CCoxPH& analysis, int variable);

// What opening the startup dialog does for time-dependent covariates: robust variance and subject are not offered.
void DropRobustForTimeDependent(CCoxPH& analysis);

// The name of a variable as the user sees it: long, trimmed and without formatting marks.
std::string DisplayName(const CCoxPH& analysis, int variable);

// Empties the design and makes the default one: every covariate, every factor, and with time-dependent covariates each
// of them, as one effect. The reference category of each factor is not touched.
void BuildDefaultDesign(CCoxPH& analysis);

// The first largest code of each factor becomes its reference category; a factor without codes has none, at index 0.
void SetDefaultReferenceCodes(CCoxPH& analysis);

}  // namespace orv
