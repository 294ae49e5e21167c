#include "standalone/analysis/ApplyDefinition.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <set>

#include "core/VariableSelection.h"
#include "data/CCoxData.h"
#include "data/EffectTerm.h"
#include "data/FactorLevels.h"
#include "standalone/analysis/CheckDefinition.h"
#include "standalone/analysis/Choices.h"
#include "standalone/analysis/CloseNames.h"
#include "standalone/analysis/DefinitionMessages.h"
#include "standalone/analysis/EffectSyntax.h"
#include "standalone/analysis/ListSyntax.h"
#include "standalone/analysis/TableCodes.h"

namespace orv {

namespace {

namespace Messages = DefinitionMessages;

constexpr std::size_t kShownNames = 3;

class Applier {
 public:
  Applier(const AnalysisDefinition& definition, StandaloneHost& host, CCoxPH& analysis)
      : m_definition(definition),
        m_host(host),
        m_table(host.Table()),
        m_analysis(analysis),
        m_settings(analysis.m_Settings) {}

  AppliedDefinition Apply() {
    CheckDefinition(m_definition);
    ChooseVariables();
    if (m_applied.Refused) return m_applied;
    ChooseStatusCodes();
    ChooseEffects();
    ChooseFactorCodes();
    ChooseStrataCodes();
    ChooseMethod();
    ChooseStartValues();
    return m_applied;
  }

 private:
  [[noreturn]] static void Fail(const std::string& message) { throw DefinitionError(message); }

  void Note(const std::string& text) { m_applied.Notes.push_back(text); }

  const std::string& NameOf(int variable) const { return m_table.Variable(variable).Name; }

  int Find(const std::string& option, const std::string& name) const {
    const int variable = m_table.FindVariable(name);
    if (variable != 0) return variable;
    std::vector<std::string_view> names;
    for (int v = 1; v <= m_table.VariableCount(); ++v) names.emplace_back(NameOf(v));
    Fail(Messages::UnknownVariable(option, name, m_table.Source(), CloseNames(name, names, kShownNames), names));
  }

  // Gives a variable its role; a second role is a slip of the pen.
  std::int16_t Take(const std::string& option, const std::string& name) {
    const int variable = Find(option, name);
    const auto [role, isNew] = m_roles.emplace(variable, option);
    if (!isNew) {
      Fail(role->second == option ? Messages::DuplicateVariable(option, NameOf(variable))
                                  : Messages::DuplicateRole(NameOf(variable), role->second, option));
    }
    return static_cast<std::int16_t>(variable);
  }

  std::int16_t TakeNumber(const std::string& option, const std::string& name, const std::string& hint) {
    const std::int16_t variable = Take(option, name);
    if (m_table.Variable(variable).Type == VariableType::Text)
      Fail(Messages::TextVariable(option, NameOf(variable), hint));
    return variable;
  }

  // ---- Variables ----------------------------------------------------------------------------------------------

  void ChooseVariables() {
    const SelectionCounts previous = CountsOf(m_analysis);
    ChooseTimes();
    m_settings.CensorVariable = Take("--status", m_definition.Status);
    m_settings.CensorVariableCount = 1;
    for (const std::string& name : m_definition.Covariates) {
      m_settings.CovariateVariables.push_back(
          TakeNumber("--covariates", name, "A variable with texts belongs to --factors."));
    }
    for (const std::string& name : m_definition.Factors) m_settings.FactorVariables.push_back(Take("--factors", name));
    if (!m_definition.Strata.empty()) {
      m_settings.StrataVariable = Take("--strata", m_definition.Strata);
      m_settings.StrataVariableCount = 1;
    }
    if (!m_definition.Weights.empty()) {
      m_host.SetWeightVariable(TakeNumber("--weights", m_definition.Weights, "Weights are positive numbers."));
    }
    if (!m_definition.Entry.empty()) {
      m_settings.EntryTimeVariable = TakeNumber("--entry", m_definition.Entry, "Entry times are numbers.");
      Note(Messages::EntryHasNoEffect());
    }
    CountPredictors();
    m_applied.Refused = CheckSurvivalTimeSelection(m_analysis, previous) != 0;
  }

  void CountPredictors() {
    m_settings.CovariateCount = static_cast<std::int16_t>(m_settings.CovariateVariables.size());
    m_settings.FactorCount = static_cast<std::int16_t>(m_settings.FactorVariables.size());
  }

  void ChooseTimes() {
    const AnalysisDefinition& d = m_definition;
    if (!d.Time.empty()) {
      AddTime(TakeNumber("--time", d.Time, "Survival times are numbers."));
      if (m_table.Variable(m_settings.SurvivalVariables[0]).Type == VariableType::Date) {
        Fail(Messages::NotADuration(NameOf(m_settings.SurvivalVariables[0])));
      }
    } else if (!d.Dates.empty()) {
      TakeDates();
    } else {
      TakeDateParts();
    }
  }

  void AddTime(std::int16_t variable) {
    m_settings.SurvivalVariables[static_cast<std::size_t>(m_settings.SurvivalVariableCount++)] = variable;
  }

  void TakeDates() {
    for (const std::string& name : m_definition.Dates) {
      AddTime(TakeNumber("--dates", name, "Write all its dates as 2024-03-31."));
    }
    // The module tests the first date alone for missing values.
    m_host.RequireValues({m_settings.SurvivalVariables[1]});
  }

  void TakeDateParts() {
    std::vector<int> untested;
    for (const std::string& name : m_definition.DateParts) {
      AddTime(TakeNumber("--date-parts", name, "Parts of dates are numbers."));
      if (m_settings.SurvivalVariableCount > 1) {
        untested.push_back(
            m_settings.SurvivalVariables[static_cast<std::size_t>(m_settings.SurvivalVariableCount - 1)]);
      }
    }
    // As for dates: only the first part is tested for missing values.
    m_host.RequireValues(untested);
  }

  // ---- Codes --------------------------------------------------------------------------------------------------

  void ChooseStatusCodes() {
    const int variable = m_settings.CensorVariable;
    if (!m_definition.EventCode.empty()) {
      m_applied.Fields.CodeForCompleteResponses = StatusCode("--event", m_definition.EventCode);
      m_applied.Fields.CodeForCensoredResponses = StatusCode("--censored", m_definition.CensoredCode);
      return;
    }
    const std::vector<double> values = DistinctValues(m_table, variable, 2);
    const bool isZeroOne = m_table.Variable(variable).Labels.empty() && values == std::vector<double>{0.0, 1.0};
    if (!isZeroOne) Fail(Messages::CodesNeeded(NameOf(variable), ValuesForMessage(m_table, variable)));
    m_applied.Fields.CodeForCompleteResponses = 1.0;
    m_applied.Fields.CodeForCensoredResponses = 0.0;
    Note(Messages::StatusCodesTaken(NameOf(variable)));
  }

  double StatusCode(const std::string& option, const std::string& text) const {
    const int variable = m_settings.CensorVariable;
    const std::optional<double> code = CodeOfText(m_table, variable, text);
    if (!code) Fail(Messages::UnknownCode(option, text, NameOf(variable), ValuesForMessage(m_table, variable)));
    return *code;
  }

  std::int32_t SelectCode(const std::string& option,
                          int variable,
                          const std::string& text,
                          const std::vector<std::int32_t>& found) const {
    const std::optional<double> code = CodeOfText(m_table, variable, text);
    const bool known = code && std::find(found.begin(), found.end(), *code) != found.end();
    if (!known) Fail(Messages::UnknownCode(option, text, NameOf(variable), ValuesForMessage(m_table, variable)));
    return static_cast<std::int32_t>(*code);
  }

  std::vector<std::int32_t> SelectCodes(const std::string& option,
                                        int variable,
                                        const std::vector<std::string>& texts) const {
    std::vector<std::int32_t> found = FindCodes(option, m_table, variable);
    if (texts.empty()) return found;
    std::vector<std::int32_t> codes;
    for (const std::string& text : texts) {
      const std::int32_t code = SelectCode(option, variable, text, found);
      if (std::find(codes.begin(), codes.end(), code) != codes.end()) {
        Fail(Messages::DuplicateCode(option, NameOf(variable), text));
      }
      codes.push_back(code);
    }
    return codes;
  }

  int FindFactor(const std::string& option, const std::string& name) const {
    const int variable = Find(option, name);
    if (FactorPlace(m_settings, variable) == m_settings.FactorCount)
      Fail(Messages::NotAFactor(option, NameOf(variable)));
    return variable;
  }

  void ChooseFactorCodes() {
    std::map<int, std::vector<std::string>> selected;
    for (const std::string& text : m_definition.FactorCodes) {
      const CodeAssignment assignment = ParseCodes("--codes", text);
      const int variable = FindFactor("--codes", assignment.Factor);
      if (!selected.emplace(variable, assignment.Codes).second) Fail(Messages::CodesTwice(NameOf(variable)));
    }
    for (const int variable : m_settings.FactorVariables) {
      const bool isSelected = selected.count(variable) != 0;
      const std::vector<std::int32_t> codes = SelectCodes(isSelected ? "--codes" : "--factors", variable,
                                                          isSelected ? selected[variable] : std::vector<std::string>{});
      if (codes.size() < 2) Note(Messages::TooFewCodes(NameOf(variable), CodeTexts(variable, codes)));
      m_settings.FactorCodes.insert(m_settings.FactorCodes.end(), codes.begin(), codes.end());
      m_settings.FactorCodeCounts.push_back(static_cast<std::int16_t>(codes.size()));
    }
    ChooseReferenceCodes();
  }

  void ChooseReferenceCodes() {
    // A factor without any code is refused by the checks of the module, which come later.
    const auto& counts = m_settings.FactorCodeCounts;
    if (std::find(counts.begin(), counts.end(), 0) != counts.end()) {
      m_settings.ReferenceCodes.assign(counts.size(), 0);
      m_settings.ReferenceCodeIndex.assign(counts.size(), 1);
      return;
    }
    SetDefaultReferenceCodes(m_analysis);
    std::set<int> assigned;
    for (const std::string& text : m_definition.ReferenceCodes) {
      const CodeAssignment assignment = ParseReference("--reference", text);
      const int variable = FindFactor("--reference", assignment.Factor);
      const std::string& name = NameOf(variable);
      if (!assigned.insert(variable).second) Fail(Messages::ReferenceTwice(name));
      const auto place = static_cast<std::size_t>(FactorPlace(m_settings, variable));
      const std::optional<double> code = CodeOfText(m_table, variable, assignment.Codes[0]);
      const int position = code ? PositionOfValue(m_settings, static_cast<int>(place), *code) : 0;
      if (position == 0) Fail(Messages::ReferenceNotSelected(name, assignment.Codes[0], SelectedCodes(place)));
      m_settings.ReferenceCodes[place] = static_cast<std::int32_t>(*code);
      m_settings.ReferenceCodeIndex[place] = static_cast<std::int16_t>(position);
    }
  }

  std::string CodeTexts(int variable, const std::vector<std::int32_t>& codes) const {
    std::vector<std::string> texts;
    for (const std::int32_t code : codes) texts.push_back(ValueText(m_table, variable, code));
    return fmt::format("{}", fmt::join(texts, ", "));
  }

  std::string SelectedCodes(std::size_t place) const {
    const auto first = m_settings.FactorCodes.begin() + FirstCodeIndex(m_settings, static_cast<int>(place));
    return CodeTexts(m_settings.FactorVariables[place], {first, first + m_settings.FactorCodeCounts[place]});
  }

  void ChooseStrataCodes() {
    if (!m_settings.HasStrata()) return;
    m_settings.StrataCodes = SelectCodes(m_definition.StrataCodes.empty() ? "--strata" : "--strata-codes",
                                         m_settings.StrataVariable, m_definition.StrataCodes);
    m_settings.StrataCodeCount = {static_cast<std::int16_t>(m_settings.StrataCodes.size())};
  }

  // ---- Design -------------------------------------------------------------------------------------------------

  void ChooseEffects() {
    BuildDefaultDesign(m_analysis);
    if (m_definition.Effects.empty()) return;
    const std::map<std::string, std::string> symbols = m_settings.VariableSymbols;
    m_settings.DesignEffects.clear();
    m_settings.EffectSymbols.clear();
    for (WrittenEffect effect : ParseEffects(m_definition.Effects)) {
      ResolvePredictors(effect, symbols);
      const std::string name = EffectName(effect);
      if (!m_settings.EffectSymbols.emplace(name, TermOf(effect, symbols)).second)
        Fail(Messages::DuplicateEffect(name));
      m_settings.DesignEffects.push_back(name);
      if (!effect.Nesting.empty()) m_settings.HasNestedEffects = 1;
    }
    m_settings.FullEffectSymbols.insert(m_settings.EffectSymbols.begin(), m_settings.EffectSymbols.end());
    DropUnusedPredictors();
  }

  // Puts the names that the table has in the place of those written, which may be numbers.
  void ResolvePredictors(WrittenEffect& effect, const std::map<std::string, std::string>& symbols) {
    std::set<int> factors;
    for (std::vector<std::string>* names : {&effect.Crossed, &effect.Nesting}) {
      for (std::string& name : *names) {
        const int variable = m_table.FindVariable(name);
        if (variable == 0 || symbols.count(NameOf(variable)) == 0) {
          std::vector<std::string_view> predictors;
          for (const auto& entry : symbols) predictors.emplace_back(entry.first);
          Fail(Messages::EffectNotAPredictor(effect.Text, name, CloseNames(name, predictors, kShownNames)));
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

  static std::string TermOf(const WrittenEffect& effect, const std::map<std::string, std::string>& symbols) {
    const auto join = [&symbols](const std::vector<std::string>& names) {
      std::vector<std::string> terms;
      for (const std::string& name : names) terms.push_back(symbols.at(name));
      return fmt::format("{}", fmt::join(terms, "*"));
    };
    const std::string crossed = join(effect.Crossed);
    return effect.Nesting.empty() ? crossed : fmt::format("{}({})", crossed, join(effect.Nesting));
  }

  // A predictor outside the design would still make the module leave out cases for its codes.
  void DropUnusedPredictors() {
    const auto drop = [this](std::vector<std::int16_t>& variables) {
      std::erase_if(variables, [this](int variable) {
        const bool unused = m_used.count(variable) == 0;
        if (unused) Note(Messages::UnusedPredictor(NameOf(variable)));
        return unused;
      });
    };
    drop(m_settings.CovariateVariables);
    drop(m_settings.FactorVariables);
    CountPredictors();
  }

  // ---- Method -------------------------------------------------------------------------------------------------

  void ChooseMethod() {
    m_settings.Coding = ChoiceValue("--coding", m_definition.Coding, CodingChoices(), m_settings.Coding);
    m_settings.Likelihood = ChoiceValue("--ties", m_definition.Ties, TieChoices(), m_settings.Likelihood);
    m_settings.ConvergenceType =
        ChoiceValue("--converge", m_definition.Converge, ConvergenceChoices(), m_settings.ConvergenceType);
    m_settings.ConvergenceExponent = m_definition.ToleranceExponent;
    m_applied.Fields.Iterations = m_definition.MaxIterations;
  }

  void ChooseStartValues() {
    if (m_definition.StartValues.empty()) return;
    m_settings.UseStartValues = true;
    m_settings.StartValues = m_definition.StartValues;
    if (m_definition.FixedCoefficients.empty()) {
      Note(Messages::StartValuesStandardized());
      return;
    }
    HoldEffects();
  }

  // The module holds whole effects, so the coefficients named must be all of an effect's or none.
  void HoldEffects() {
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
      if (named != last - first + 1) Fail(Messages::FixPartOfEffect(m_settings.DesignEffects[effect], first, last));
      m_settings.FixedParameterFlags[effect] = true;
    }
    m_settings.HasFixedParameters = true;
  }

  const AnalysisDefinition& m_definition;
  StandaloneHost& m_host;
  const MemoryTable& m_table;
  CCoxPH& m_analysis;
  CoxSettings& m_settings;
  AppliedDefinition m_applied;
  std::map<int, std::string> m_roles;  // variable to the option that took it
  std::set<int> m_used;                // variables of the written effects
};

}  // namespace

AppliedDefinition ApplyDefinition(const AnalysisDefinition& definition, StandaloneHost& host, CCoxPH& analysis) {
  return Applier(definition, host, analysis).Apply();
}

}  // namespace orv
