#include "core/VariableSelection.h"

#include <algorithm>

#include "core/CCoxPH.h"
#include "data/EffectTerm.h"
#include "data/FactorLevels.h"
#include "data/VariableNames.h"
#include "host/TextIds.h"

namespace orv {

namespace {

bool Holds(const std::vector<std::int16_t>& variables, int variable) {
  return std::find(variables.begin(), variables.end(), variable) != variables.end();
}

bool IsTimeVariable(const CoxSettings& s, int variable) {
  if (s.InputType == InputTypes::CountingProcess) return variable == s.StartVariable || variable == s.StopVariable;
  const auto last = s.SurvivalVariables.begin() + s.SurvivalVariableCount;
  return std::find(s.SurvivalVariables.begin(), last, variable) != last;
}

int SubjectProblem(const CoxSettings& s, int variable) {
  if (IsTimeVariable(s, variable)) return TextIds::SubjectIsTime;
  if (s.HasStrata() && variable == s.StrataVariable) return TextIds::SubjectIsStrata;
  if (Holds(s.FactorVariables, variable)) return TextIds::SubjectIsFactor;
  if (Holds(s.CovariateVariables, variable)) return TextIds::SubjectIsCovariate;
  return 0;
}

}  // namespace

SelectionCounts CountsOf(const CCoxPH& analysis) {
  const CoxSettings& s = analysis.m_Settings;
  return {s.SurvivalVariableCount, s.CovariateCount, s.FactorCount};
}

int CheckSurvivalTimeSelection(CCoxPH& analysis, const SelectionCounts& previous) {
  CoxSettings& s = analysis.m_Settings;
  const int count = s.SurvivalVariableCount;
  int problem = 0;
  if (count != 1 && count != 2 && count != 6) {
    problem = TextIds::SurvivalVariableCountInvalid;
  } else if (s.PredictorCount() >= kPredictorLimit) {
    problem = TextIds::TooManyVariables;
  }
  if (problem == 0) return 0;
  s.SurvivalVariableCount = previous.SurvivalVariableCount;
  s.CovariateCount = previous.CovariateCount;
  s.FactorCount = previous.FactorCount;
  analysis.ShowText(problem);
  return 1;
}

int CheckIntervalSelection(CCoxPH& analysis) {
  const CoxSettings& s = analysis.m_Settings;
  int problem = 0;
  if (s.StartVariableCount < 1) {
    problem = TextIds::NoStartVariableChosen;
  } else if (s.StopVariableCount < 1) {
    problem = TextIds::NoStopVariableChosen;
  } else if (s.CensorVariableCount < 1) {
    problem = TextIds::NoCensorVariableChosen;
  } else if (s.PredictorCount() >= kPredictorLimit) {
    problem = TextIds::TooManyVariables;
  }
  if (problem == 0) return 0;
  analysis.ShowText(problem);
  return 1;
}

int SelectSubjectVariable(CCoxPH& analysis, int variable) {
  CoxSettings& s = analysis.m_Settings;
  const int problem = variable > 0 ? SubjectProblem(s, variable) : 0;
  if (problem != 0) {
    analysis.ShowText(problem);
    return 1;
  }
  s.SubjectVariable = static_cast<std::int16_t>(variable);
  s.SubjectVariableCount = variable > 0 ? 1 : 0;
  return 0;
}

void DropRobustForTimeDependent(CCoxPH& analysis) {
  CoxSettings& s = analysis.m_Settings;
  if (s.InputType != InputTypes::TimeDependent) return;
  s.UseRobustVariance = false;
  s.SubjectVariable = 0;
  s.SubjectVariableCount = 0;
}

std::string DisplayName(const CCoxPH& analysis, int variable) {
  return VariableName(analysis.GetHost(), variable);
}

void BuildDefaultDesign(CCoxPH& analysis) {
  CoxSettings& s = analysis.m_Settings;
  s.DesignEffects.clear();
  s.VariableSymbols.clear();
  s.EffectSymbols.clear();
  s.FullEffectSymbols.clear();
  const auto add = [&s](const std::string& name, const std::string& variableSymbol, const std::string& term) {
    s.DesignEffects.push_back(name);
    s.VariableSymbols[name] = variableSymbol;
    s.EffectSymbols[name] = term;
    s.FullEffectSymbols[name] = term;
  };
  const auto addVariable = [&](int variable) {
    add(DisplayName(analysis, variable), VariableSymbol(variable), VariableSymbol(variable));
  };
  for (const int variable : s.CovariateVariables) addVariable(variable);
  for (const int variable : s.FactorVariables) addVariable(variable);
  if (s.InputType != InputTypes::TimeDependent) return;
  for (std::size_t k = 0; k < s.TimeDependentCovariateNames.size(); ++k) {
    add(s.TimeDependentCovariateNames[k], std::string(kTimeExpressionSymbol),
        TimeExpressionSymbol(static_cast<int>(k) + 1));
  }
}

void SetDefaultReferenceCodes(CCoxPH& analysis) {
  CoxSettings& s = analysis.m_Settings;
  s.ReferenceCodes.clear();
  s.ReferenceCodeIndex.clear();
  for (int place = 0; place < s.FactorCount; ++place) {
    const auto factor = static_cast<std::size_t>(place);
    if (factor >= s.FactorCodeCounts.size() || s.FactorCodeCounts[factor] < 1) {
      // Without codes there is nothing to refer to; the checks before a run refuse such a factor.
      s.ReferenceCodes.push_back(0);
      s.ReferenceCodeIndex.push_back(0);
      continue;
    }
    const auto first = s.FactorCodes.begin() + FirstCodeIndex(s, place);
    const auto largest = std::max_element(first, first + s.FactorCodeCounts[factor]);
    s.ReferenceCodes.push_back(*largest);
    s.ReferenceCodeIndex.push_back(static_cast<std::int16_t>(largest - first + 1));
  }
}

}  // namespace orv
