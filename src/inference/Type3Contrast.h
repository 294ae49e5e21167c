// The Type 3 hypothesis of an effect under the overparameterized coding.
//
// With an indicator for every level many functions of the parameters are not estimable; those that are form the row
// space of the information I. Of the estimable functions that are 0 on every effect but the effect e and the
// higher-order effects to which e is marginal, the Type 3 functions of e are those orthogonal to the ones that are 0 on
// e too. A main effect thus compares averages over the levels of the other factors with equal weights, however many
// cases each has. Source: Goodnight, "Tests of hypotheses in fixed effects linear models", Communications in
// Statistics A9 (1980) 167-180, with the information at beta = 0 in place of X'X.
#pragma once

#include <vector>

namespace orv {

class CCoxFit;

// A pivot below this has no function of its own. It is absolute: Type 3 tests have always been made on the information
// as it is.
inline constexpr double kType3PivotTolerance = 1e-7;

// Builds the Type 3 functions of an effect within a model of some of the design columns. One evaluation of the
// information serves all effects and models. About n^3 / 2 multiplications for n columns.
//   information  that of the full design at beta = 0, packed as EvaluateScoreAtStart leaves it in m_PackedInformation
//   columns      the design columns of the model, counted from 0, such as m_ActiveColumns. Effects without a column
//                among them take no part.
//   L            Out: n rows, one for each of `columns` in their order; a column for each independent function. There
//                is none when the effect is aliased with others, held fixed or not in the model.
//   effect       counted from 0
// Returns false, with L empty, when there is no information or the functions cannot be made orthogonal.
[[nodiscard]] bool BuildType3Contrast(const CCoxFit& fit,
                                      const std::vector<double>& information,
                                      const std::vector<int>& columns,
                                      std::vector<std::vector<double>>& L,
                                      int effect);

// The same within the full design, from m_PackedInformation: L has CoefficientCount rows.
[[nodiscard]] bool BuildType3Contrast(const CCoxFit& fit, std::vector<std::vector<double>>& L, int effect);

}  // namespace orv
