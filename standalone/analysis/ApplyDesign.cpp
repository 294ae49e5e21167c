#include "standalone/analysis/ApplyDesign.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "core/StartValuesFile.h"
#include "core/TimeCovariates.h"
#include "core/VariableSelection.h"
#include "data/CCoxData.h"
#include "data/FactorLevels.h"
#include "data/TimeExpressions.h"
#include "standalone/analysis/CloseNames.h"
#include "standalone/analysis/DefinitionMessages.h"

namespace orv {

namespace {

namespace Messages = DefinitionMessages;

constexpr std::size_t kShownNames = 3;

[[noreturn]] void Fail(const std::string& message) {
  throw DefinitionError(message);
}

void CountPredictors(CoxSettings& settings) {
  settings.CovariateCount = static_cast<std::int16_t>(settings.CovariateVariables.size());
  settings.FactorCount = static_cast<std::int16_t>(settings.FactorVariables.size());
}

// The module takes formulas in upper case, letters beyond ASCII apart.
std::string InUpperCase(std::string text) {
  for (char& character : text) {
    if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 'a' + 'A');
  }
  return text;
}

}  // namespace

DesignApplier::DesignApplier(const AnalysisDefinition& definition,
                             StandaloneHost& host,
                             CCoxPH& analysis,
                             std::vector<std::string>& notes)
    : m_definition(definition), m_host(host), m_analysis(analysis), m_settings(analysis.m_Settings), m_notes(notes) {}

// ---- Time-dependent covariates ----------------------------------------------------------------------------------

bool DesignApplier::IsTimeCovariate(const std::string& name) const {
  const auto& names = m_settings.TimeDependentCovariateNames;
  return std::find(names.begin(), names.end(), name) != names.end();
}

// Those that an effect names; all of them when the design is left open.
std::vector<TimeCovariate> DesignApplier::UsedTimeCovariates() {
  std::vector<TimeCovariate> covariates = ParseTimeCovariates(m_definition.TimeCovariates);
  if (m_definition.Effects.empty()) return covariates;
  std::set<std::string> named;
  for (const WrittenEffect& effect : ParseEffects(m_definition.Effects)) {
    named.insert(effect.Crossed.begin(), effect.Crossed.end());
    named.insert(effect.Nesting.begin(), effect.Nesting.end());
  }
  std::erase_if(covariates, [&](const TimeCovariate& covariate) {
    const bool unused = named.count(covariate.Name) == 0;
    if (unused) m_notes.push_back(Messages::UnusedPredictor(covariate.Name));
    return unused;
  });
  return covariates;
}

// The module compiles formulas in upper case, where names and texts that differ by case only are no longer told apart.
bool DesignApplier::MeansTheSameInUpperCase(const std::string& formula, const CompiledFormula& compiled) {
  try {
    const CompiledFormula upper = CompileFormula(InUpperCase(formula), m_host.Names(), TimeSymbol::Allowed);
    return upper.Symbols == compiled.Symbols && upper.Program == compiled.Program;
  } catch (const FormulaError&) {
    return false;
  }
}

// The module says only that some formula is wrong, so the place is told here.
void DesignApplier::CheckFormula(const TimeCovariate& covariate) {
  const int timeSymbol = m_host.Names().Count() + 1;
  try {
    const CompiledFormula compiled = CompileFormula(covariate.Formula, m_host.Names(), TimeSymbol::Allowed);
    if (!MeansTheSameInUpperCase(covariate.Formula, compiled)) Fail(Messages::NamesDifferByCase(covariate.Name));
    m_formulaReads.insert(compiled.Symbols.begin(), compiled.Symbols.end());
    const bool readsTime =
        std::find(compiled.Symbols.begin(), compiled.Symbols.end(), timeSymbol) != compiled.Symbols.end();
    if (!readsTime) m_notes.push_back(Messages::FormulaWithoutTime(covariate.Name));
  } catch (const FormulaError& error) {
    Fail(Messages::FormulaProblem("--time-covariate " + covariate.Name, error.what()));
  }
}

bool DesignApplier::ChooseTimeCovariates() {
  if (m_definition.TimeCovariates.empty()) return true;
  for (const TimeCovariate& covariate : UsedTimeCovariates()) {
    if (InUpperCase(covariate.Name) == "T_") Fail(Messages::TimeCovariateIsTime(covariate.Name));
    if (m_host.Table().FindVariable(covariate.Name) != 0) Fail(Messages::TimeCovariateIsVariable(covariate.Name));
    CheckFormula(covariate);
    if (SetTimeCovariate(m_analysis, 0, covariate.Name, covariate.Formula) != 0) return false;
  }
  NoteOnTimeCovariates();
  return true;
}

// What the messages of the module leave open.
void DesignApplier::NoteOnTimeCovariates() {
  const auto variables =
      static_cast<int>(m_formulaReads.size()) - static_cast<int>(m_formulaReads.count(m_host.Names().Count() + 1));
  if (variables > ExpressionStore::kMostVariables) {
    m_notes.push_back(Messages::TooManyFormulaVariables(variables, ExpressionStore::kMostVariables));
  }
  if (m_settings.HasStrata()) m_notes.push_back(Messages::StrataWithTimeCovariates());
}

// ---- Effects ----------------------------------------------------------------------------------------------------

void DesignApplier::ChooseEffects() {
  BuildDefaultDesign(m_analysis);
  if (m_definition.Effects.empty()) return NoteOnMissingPredictors();
  const Symbols symbols = m_settings.EffectSymbols;
  m_settings.DesignEffects.clear();
  m_settings.EffectSymbols.clear();
  for (WrittenEffect effect : ParseEffects(m_definition.Effects)) {
    ResolvePredictors(effect, symbols);
    const std::string name = EffectName(effect);
    if (!m_settings.EffectSymbols.emplace(name, TermOf(effect, symbols)).second) Fail(Messages::DuplicateEffect(name));
    m_settings.DesignEffects.push_back(name);
    if (effect.Nesting.empty()) continue;
    if (m_settings.InputType == InputTypes::TimeDependent) Fail(Messages::NestingWithTimeCovariates(effect.Text));
    m_settings.HasNestedEffects = 1;
  }
  const bool isTimeDependent = m_settings.InputType == InputTypes::TimeDependent;
  if (isTimeDependent && m_settings.TimeDependentCovariateNames.empty()) Fail(Messages::TimeCovariatesUnused());
  m_settings.FullEffectSymbols.insert(m_settings.EffectSymbols.begin(), m_settings.EffectSymbols.end());
  DropUnusedPredictors();
}

// Time-dependent covariates that no effect names are no symbols, but may have been meant.
std::vector<std::string> DesignApplier::ClosePredictors(const std::string& name, const Symbols& symbols) const {
  std::set<std::string> predictors;
  for (const auto& entry : symbols) predictors.insert(entry.first);
  for (const TimeCovariate& covariate : ParseTimeCovariates(m_definition.TimeCovariates)) {
    predictors.insert(covariate.Name);
  }
  return CloseNames(name, {predictors.begin(), predictors.end()}, kShownNames);
}

// Puts the names that the table has in the place of those written, which may be numbers.
void DesignApplier::ResolvePredictors(WrittenEffect& effect, const Symbols& symbols) {
  std::set<int> factors;
  for (std::vector<std::string>* names : {&effect.Crossed, &effect.Nesting}) {
    for (std::string& name : *names) {
      if (IsTimeCovariate(name)) continue;
      const int variable = m_host.Table().FindVariable(name);
      if (variable == 0 || symbols.count(NameOf(variable)) == 0) {
        Fail(Messages::EffectNotAPredictor(effect.Text, name, ClosePredictors(name, symbols)));
      }
      const bool isFactor = FactorPlace(m_settings, variable) != m_settings.FactorCount;
      if (isFactor && !factors.insert(variable).second) {
        Fail(Messages::FactorTwiceInEffect(effect.Text, NameOf(variable)));
      }
      m_used.insert(variable);
      name = NameOf(variable);
    }
  }
}

// The design build takes the roles of a term from its first symbols, so variables stand before time expressions.
std::string DesignApplier::TermOf(const WrittenEffect& effect, const Symbols& symbols) const {
  const auto join = [&](std::vector<std::string> names) {
    std::stable_partition(names.begin(), names.end(),
                          [this](const std::string& name) { return !IsTimeCovariate(name); });
    std::vector<std::string> terms;
    for (const std::string& name : names) terms.push_back(symbols.at(name));
    return fmt::format("{}", fmt::join(terms, "*"));
  };
  const std::string crossed = join(effect.Crossed);
  return effect.Nesting.empty() ? crossed : fmt::format("{}({})", crossed, join(effect.Nesting));
}

// A predictor outside the design would still make the module leave out cases for its codes.
void DesignApplier::DropUnusedPredictors() {
  const auto drop = [this](std::vector<std::int16_t>& variables) {
    std::erase_if(variables, [this](int variable) {
      const bool unused = m_used.count(variable) == 0;
      if (unused) m_notes.push_back(Messages::UnusedPredictor(NameOf(variable)));
      return unused;
    });
  };
  // A design of time-dependent covariates alone needs a selected covariate beside it.
  const bool keepsCovariates = m_settings.InputType == InputTypes::TimeDependent && m_used.empty();
  if (!keepsCovariates) drop(m_settings.CovariateVariables);
  drop(m_settings.FactorVariables);
  CountPredictors(m_settings);
  NoteOnMissingPredictors();
}

// The module refuses a design of time-dependent covariates alone, in words that leave open what to do.
void DesignApplier::NoteOnMissingPredictors() {
  const bool isTimeDependent = m_settings.InputType == InputTypes::TimeDependent;
  if (isTimeDependent && m_settings.PredictorCount() == 0) m_notes.push_back(Messages::TimeCovariatesAlone());
}

// ---- Start values -----------------------------------------------------------------------------------------------

bool DesignApplier::ChooseStartValues() {
  if (m_definition.StartValues.empty() && m_definition.StartValuesFile.empty()) return true;
  m_settings.UseStartValues = true;
  m_settings.StartValues = m_definition.StartValues;
  if (!m_definition.StartValuesFile.empty() && LoadStartValues(m_analysis, m_definition.StartValuesFile) != 0) {
    return false;
  }
  if (!m_definition.FixedCoefficients.empty()) {
    HoldEffects();
  } else if (m_settings.InputType != InputTypes::TimeDependent) {
    m_notes.push_back(Messages::StartValuesStandardized());
  }
  return true;
}

// The module holds whole effects, so the coefficients named must be all of an effect's or none.
void DesignApplier::HoldEffects() {
  const int count = m_analysis.DesignCoefficientCount();
  const std::set<int> held(m_definition.FixedCoefficients.begin(), m_definition.FixedCoefficients.end());
  for (const int coefficient : held) {
    if (coefficient < 1 || coefficient > count) Fail(Messages::FixOutOfRange(coefficient, count));
  }
  const CCoxData& design = *m_analysis.m_pCoxData;
  m_settings.FixedParameterFlags.assign(m_settings.DesignEffects.size(), false);
  for (std::size_t effect = 0; effect < m_settings.DesignEffects.size(); ++effect) {
    const int first = design.EffectFirstColumn[effect];
    const int last = design.EffectLastColumn[effect];
    const auto named = std::distance(held.lower_bound(first), held.upper_bound(last));
    if (named == 0) continue;
    const std::string& name = m_settings.DesignEffects[effect];
    if (named != last - first + 1) Fail(Messages::FixPartOfEffect(name, first, last));
    const bool isFactor = design.DesignColumns[static_cast<std::size_t>(first) - 1].HasFactor();
    if (isFactor && m_settings.InputType == InputTypes::TimeDependent) Fail(Messages::FixWithTimeCovariates(name));
    m_settings.FixedParameterFlags[effect] = true;
  }
  m_settings.HasFixedParameters = true;
}

}  // namespace orv
