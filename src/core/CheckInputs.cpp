// The checks of the options before a run, in the order in which they speak.
#include <algorithm>

#include "core/CCoxPH.h"
#include "core/StartupFields.h"
#include "data/AlmostEqual.h"
#include "data/EffectTerm.h"
#include "data/RoundHalfAway.h"
#include "data/TimeExpressions.h"
#include "host/FormatText.h"
#include "host/TextIds.h"
#include "host/WorkArray.h"

namespace orv {

namespace {

constexpr double kFewestIterations = 1.0;
constexpr double kMostIterations = 1000.0;
constexpr int kNoText = 0;

bool UsesPToEnter(const CoxSettings& s) {
  return s.ModelBuilding == ModelBuildings::Forward || s.ModelBuilding == ModelBuildings::Stepwise;
}

bool UsesPToRemove(const CoxSettings& s) {
  return s.ModelBuilding == ModelBuildings::Backward || s.ModelBuilding == ModelBuildings::Stepwise;
}

bool IsSelectionLoop(const CoxSettings& s) {
  return s.ModelBuilding >= ModelBuildings::Forward && s.ModelBuilding <= ModelBuildings::Stepwise;
}

bool IsInOpenUnitInterval(double p) {
  return p > 0.0 && p < 1.0;
}

// Each check gives the id of its message, or kNoText.

int CheckDesign(const CoxSettings& s) {
  const int predictors = s.PredictorCount();
  if (s.EffectSymbols.empty() && predictors > 0) return TextIds::NoEffects;
  if (!s.EffectSymbols.empty() && predictors == 0) return TextIds::DesignWithoutPredictors;
  if (AlmostEqualStrict(s.CodeForCompleteResponses, s.CodeForCensoredResponses)) return TextIds::CodesIdentical;
  if (s.HasNestedEffects != 0 && s.Coding != Codings::Overparameterized) {
    return TextIds::NestingNeedsOverparameterized;
  }
  return kNoText;
}

int CheckLimits(const CoxSettings& s) {
  // 0 passes: the field of the dialog keeps it out.
  if (s.MaxIterations < 0) return TextIds::IterationsNotPositive;
  if (UsesPToEnter(s) && !IsInOpenUnitInterval(s.PToEnter)) return TextIds::PToEnterOutOfRange;
  if (UsesPToRemove(s) && !IsInOpenUnitInterval(s.PToRemove)) return TextIds::PToRemoveOutOfRange;
  return kNoText;
}

// The term of an effect that a script named without one. Only the last token counts: tokens before it are dropped,
// which is how a cross of ordinary variables and time-dependent covariates has always been taken from scripts.
int RepairTerm(const CoxSettings& s, const std::string& name, std::string& term) {
  const auto& covariates = s.TimeDependentCovariateNames;
  if (covariates.empty()) return TextIds::DesignInvalid;
  std::string text;
  for (const char character : name) {
    if (character == '(') {
      text += '*';
    } else if (character != ')') {
      text += character;
    }
  }
  static const std::string kCross = "*";
  std::vector<std::string> tokens;
  CCoxPH::SplitStrings(&tokens, &text, &kCross);
  std::string last;
  for (const std::string& token : tokens) {
    last.clear();
    const auto found = std::find(covariates.begin(), covariates.end(), token);
    if (found == covariates.end()) continue;
    if (s.InputType != InputTypes::TimeDependent) return TextIds::TimeCovariatesNeedInputType;
    last = TimeExpressionSymbol(static_cast<int>(found - covariates.begin()) + 1);
  }
  if (last.empty()) return TextIds::DesignInvalid;
  term = last;
  return kNoText;
}

int RepairTerms(CoxSettings& s) {
  for (auto& [name, term] : s.EffectSymbols) {
    if (!term.empty()) continue;
    const int problem = RepairTerm(s, name, term);
    if (problem != kNoText) return problem;
  }
  return kNoText;
}

int CheckStartValues(CoxSettings& s) {
  if (!s.UseStartValues) {
    s.HasFixedParameters = false;
    s.StartValues.clear();
    s.FixedParameterFlags.clear();
    return kNoText;
  }
  if (s.StartValues.empty()) return TextIds::NoStartValues;
  if (s.PredictorCount() == 0) return TextIds::StartValuesWithoutPredictors;
  return kNoText;
}

int CheckCodes(const CoxSettings& s) {
  const bool oneStratum = s.StrataCodeCount.empty() || s.StrataCodeCount[0] < 2;
  if (s.HasStrata() && oneStratum) return TextIds::OneStratumOnly;
  const auto& counts = s.FactorCodeCounts;
  const bool fewCodes = static_cast<int>(counts.size()) < s.FactorCount ||
                        std::any_of(counts.begin(), counts.end(), [](int count) { return count < 2; });
  if (s.FactorCount > 0 && fewCodes) return TextIds::TooFewFactorCodes;
  return kNoText;
}

int CheckTimeVariables(const CoxSettings& s) {
  if (s.InputType == InputTypes::CountingProcess) {
    if (s.StartVariableCount < 1) return TextIds::NoStartVariable;
    if (s.StopVariableCount < 1) return TextIds::NoStopVariable;
    return kNoText;
  }
  return s.SurvivalVariableCount < 1 ? TextIds::NoSurvivalVariable : kNoText;
}

// Compiles the expressions of the options, with the length of the longest as the limit.
int CompileExpressions(CCoxPH& analysis, void* parent, CompiledVariables& compiled) {
  const std::vector<std::string>& expressions = analysis.m_Settings.TimeDependentCovariateExpressions;
  std::size_t longest = 0;
  for (const std::string& expression : expressions) longest = std::max(longest, expression.size());
  return CompileTimeExpressions(analysis, parent, expressions, longest, analysis.m_pExpressions, compiled);
}

}  // namespace

int CCoxPH::ReadStartupFields(StartupFields& fields, void* parent) {
  CoxSettings& s = m_Settings;
  if (!fields.CodeForCensoredResponses) {
    ShowText(TextIds::CensoredCodeInvalid);
    return 1;
  }
  s.CodeForCensoredResponses = *fields.CodeForCensoredResponses;
  if (!fields.CodeForCompleteResponses) {
    ShowText(TextIds::CompleteCodeInvalid);
    return 1;
  }
  s.CodeForCompleteResponses = *fields.CodeForCompleteResponses;
  if (UsesPToEnter(s)) s.PToEnter = fields.PToEnter;
  if (UsesPToRemove(s)) s.PToRemove = fields.PToRemove;
  if (fields.Iterations >= kFewestIterations && fields.Iterations <= kMostIterations) {
    s.MaxIterations = RoundToInteger(fields.Iterations);
  } else {
    fields.Iterations = s.MaxIterations;
    DspMessageBox(0, parent, GetResourceString(TextIds::IterationsOutOfRange));
    return 1;
  }
  if (IsSelectionLoop(s) || s.ModelBuilding == ModelBuildings::BestSubsets) s.EffectsToForce = fields.EffectsToForce;
  if (s.ModelBuilding == ModelBuildings::BestSubsets) s.DisplayBest = fields.DisplayBest;
  return 0;
}

int CCoxPH::CheckInputsForCorrectness(void* parent) {
  CoxSettings& s = m_Settings;
  const auto refused = [this](int textId) {
    if (textId != kNoText) ShowText(textId);
    return textId != kNoText;
  };
  if (refused(s.CensorVariableCount < 1 ? TextIds::NoCensorVariable : kNoText)) return 1;
  if (s.InputType == InputTypes::TimeDependent) {
    s.TimeExpressionVariables.clear();
    // Room for the variables that the compiler of the expressions finds, and for their number.
    WorkArray<std::int16_t> numbers(GetHost(), ExpressionStore::kMostVariables);
    const WorkArray<std::int16_t> count(GetHost(), ExpressionStore::kMostVariables);
    if (refused(numbers.Failed() || count.Failed() ? TextIds::OutOfMemory : kNoText)) return 1;
    if (refused(CheckTimeVariables(s))) return 1;
    if (refused(s.TimeDependentCovariateExpressions.empty() ? TextIds::NoTimeDependentCovariate : kNoText)) return 1;
    CompiledVariables compiled{numbers.Data(), 0};
    if (CompileExpressions(*this, parent, compiled) != 0) {
      DisplayInstError(parent, TextIds::ReviewTimeExpressions);
      return 1;
    }
    s.TimeExpressionVariables.assign(compiled.Numbers, compiled.Numbers + compiled.Count);
  } else if (refused(CheckTimeVariables(s))) {
    return 1;
  }
  if (refused(CheckDesign(s)) || refused(CheckLimits(s)) || refused(RepairTerms(s))) return 1;
  const bool weighted = m_Commons.Weights != nullptr && m_Commons.Weights->On;
  if (refused(weighted && s.Likelihood == Likelihoods::Discrete ? TextIds::WeightsWithDiscrete : kNoText)) return 1;
  const auto effects = static_cast<int>(s.DesignEffects.size());
  if (IsSelectionLoop(s) && (s.EffectsToForce < 0 || s.EffectsToForce > effects)) {
    dsplst(0, FormatText(GetResourceString(TextIds::EffectsToForceOutOfRange), {FormatInteger(effects)}));
    return 1;
  }
  if (refused(CheckStartValues(s)) || refused(CheckCodes(s))) return 1;
  return 0;
}

}  // namespace orv
