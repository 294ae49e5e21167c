#include "standalone/analysis/ApplyDefinition.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <set>

#include "core/VariableSelection.h"
#include "data/FactorLevels.h"
#include "standalone/analysis/ApplyDesign.h"
#include "standalone/analysis/ApplySelection.h"
#include "standalone/analysis/CheckDefinition.h"
#include "standalone/analysis/Choices.h"
#include "standalone/analysis/CloseNames.h"
#include "standalone/analysis/DefinitionMessages.h"
#include "standalone/analysis/ListSyntax.h"
#include "standalone/analysis/TableCodes.h"
#include "standalone/formula/SelectCases.h"

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
    ChooseCases();
    ChooseVariables();
    DesignApplier design(m_definition, m_host, m_analysis, m_applied.Notes);
    if (!m_applied.Refused) m_applied.Refused = !design.ChooseTimeCovariates();
    if (m_applied.Refused) return m_applied;
    ChooseStatusCodes();
    design.ChooseEffects();
    ChooseFactorCodes();
    ChooseStrataCodes();
    ChooseMethod();
    m_applied.Refused = !design.ChooseStartValues();
    if (m_applied.Refused) return m_applied;
    ApplySelection(m_definition, m_analysis, m_applied);
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

  // ---- Cases --------------------------------------------------------------------------------------------------

  void ChooseCases() {
    if (m_definition.Where.empty()) return;
    try {
      m_isSelected = SelectCases(m_definition.Where, m_host.Names(), m_table);
    } catch (const FormulaError& error) {
      Fail(Messages::FormulaProblem("--where", error.what()));
    } catch (const CaseSelectionError& error) {
      Fail(Messages::FormulaProblem("--where", error.what()));
    }
    if (std::find(m_isSelected.begin(), m_isSelected.end(), 1) == m_isSelected.end()) Fail(Messages::NoCaseSelected());
    m_host.SelectCases(m_isSelected);
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
    RequireTimes();
    CountPredictors();
    const bool intervals = m_settings.InputType == InputTypes::CountingProcess;
    const int refused =
        intervals ? CheckIntervalSelection(m_analysis) : CheckSurvivalTimeSelection(m_analysis, previous);
    m_applied.Refused = refused != 0 || !ChooseSubject();
  }

  bool ChooseSubject() {
    m_settings.UseRobustVariance = m_definition.Robust;
    if (m_definition.Subject.empty()) return true;
    if (!m_definition.Robust) Note(Messages::SubjectWithoutRobust());
    return SelectSubjectVariable(m_analysis, Take("--subject", m_definition.Subject)) == 0;
  }

  void CountPredictors() {
    m_settings.CovariateCount = static_cast<std::int16_t>(m_settings.CovariateVariables.size());
    m_settings.FactorCount = static_cast<std::int16_t>(m_settings.FactorVariables.size());
  }

  void ChooseTimes() {
    const AnalysisDefinition& d = m_definition;
    if (!d.TimeCovariates.empty()) m_settings.InputType = InputTypes::TimeDependent;
    if (!d.Time.empty()) {
      AddTime(TakeNumber("--time", d.Time, "Survival times are numbers."));
      if (HoldsDates(m_settings.SurvivalVariables[0])) {
        Fail(Messages::NotADuration(NameOf(m_settings.SurvivalVariables[0])));
      }
    } else if (!d.Interval.empty()) {
      TakeInterval();
    } else if (!d.Dates.empty()) {
      TakeDates();
    } else {
      TakeDateParts();
    }
  }

  // The module tests the first time variable alone for missing values, and none with time-dependent covariates, not
  // even the entry time.
  void RequireTimes() {
    if (m_settings.InputType == InputTypes::CountingProcess) return;
    const auto first = m_settings.SurvivalVariables.begin();
    const int tested = m_settings.InputType == InputTypes::TimeDependent ? 0 : 1;
    std::vector<int> untested(first + tested, first + m_settings.SurvivalVariableCount);
    if (tested == 0 && m_settings.EntryTimeVariable > 0) untested.push_back(m_settings.EntryTimeVariable);
    m_host.RequireValues(untested);
  }

  bool HoldsDates(int variable) const { return m_table.Variable(variable).Type == VariableType::Date; }

  void TakeInterval() {
    std::int16_t ends[2] = {};
    for (std::size_t end = 0; end < 2; ++end) {
      ends[end] = TakeNumber("--interval", m_definition.Interval[end], "The ends of intervals are numbers.");
      if (HoldsDates(ends[end])) Fail(Messages::IntervalOfDates(NameOf(ends[end])));
    }
    m_settings.InputType = InputTypes::CountingProcess;
    m_settings.StartVariable = ends[0];
    m_settings.StopVariable = ends[1];
    m_settings.StartVariableCount = 1;
    m_settings.StopVariableCount = 1;
  }

  void AddTime(std::int16_t variable) {
    m_settings.SurvivalVariables[static_cast<std::size_t>(m_settings.SurvivalVariableCount++)] = variable;
  }

  void TakeDates() {
    for (const std::string& name : m_definition.Dates) {
      AddTime(TakeNumber("--dates", name, "Write all its dates as 2024-03-31."));
    }
    const int start = m_settings.SurvivalVariables[0];
    const int end = m_settings.SurvivalVariables[1];
    if (HoldsDates(start) == HoldsDates(end)) return;
    Fail(HoldsDates(start) ? Messages::DateWithoutDate(NameOf(start), NameOf(end))
                           : Messages::DateWithoutDate(NameOf(end), NameOf(start)));
  }

  void TakeDateParts() {
    for (const std::string& name : m_definition.DateParts) {
      AddTime(TakeNumber("--date-parts", name, "Parts of dates are numbers."));
    }
  }

  // ---- Codes --------------------------------------------------------------------------------------------------

  void ChooseStatusCodes() {
    const int variable = m_settings.CensorVariable;
    if (!m_definition.EventCode.empty()) {
      m_applied.Fields.CodeForCompleteResponses = StatusCode("--event", m_definition.EventCode);
      m_applied.Fields.CodeForCensoredResponses = StatusCode("--censored", m_definition.CensoredCode);
      return;
    }
    const std::vector<double> values = DistinctValues(m_table, variable, 2, m_isSelected);
    const bool isZeroOne = m_table.Variable(variable).Labels.empty() && values == std::vector<double>{0.0, 1.0};
    if (!isZeroOne) Fail(Messages::CodesNeeded(NameOf(variable), ValuesForMessage(m_table, variable, m_isSelected)));
    m_applied.Fields.CodeForCompleteResponses = 1.0;
    m_applied.Fields.CodeForCensoredResponses = 0.0;
    Note(Messages::StatusCodesTaken(NameOf(variable)));
  }

  double StatusCode(const std::string& option, const std::string& text) const {
    const int variable = m_settings.CensorVariable;
    const std::optional<double> code = CodeOfText(m_table, variable, text);
    if (!code)
      Fail(Messages::UnknownCode(option, text, NameOf(variable), ValuesForMessage(m_table, variable, m_isSelected)));
    CheckCodeRange(option, m_table, variable, *code);
    return *code;
  }

  std::int32_t SelectCode(const std::string& option,
                          int variable,
                          const std::string& text,
                          const std::vector<std::int32_t>& found) const {
    const std::optional<double> code = CodeOfText(m_table, variable, text);
    const bool known = code && std::find(found.begin(), found.end(), *code) != found.end();
    if (!known)
      Fail(Messages::UnknownCode(option, text, NameOf(variable), ValuesForMessage(m_table, variable, m_isSelected)));
    return static_cast<std::int32_t>(*code);
  }

  std::vector<std::int32_t> SelectCodes(const std::string& option,
                                        int variable,
                                        const std::vector<std::string>& texts) const {
    std::vector<std::int32_t> found = FindCodes(option, m_table, variable, m_isSelected);
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

  // ---- Method -------------------------------------------------------------------------------------------------

  void ChooseMethod() {
    m_settings.Coding = ChoiceValue("--coding", m_definition.Coding, CodingChoices(), m_settings.Coding);
    m_settings.Likelihood = ChoiceValue("--ties", m_definition.Ties, TieChoices(), m_settings.Likelihood);
    m_settings.ConvergenceType =
        ChoiceValue("--converge", m_definition.Converge, ConvergenceChoices(), m_settings.ConvergenceType);
    m_settings.ConvergenceExponent = m_definition.ToleranceExponent;
    m_applied.Fields.Iterations = m_definition.MaxIterations;
  }

  const AnalysisDefinition& m_definition;
  StandaloneHost& m_host;
  const MemoryTable& m_table;
  CCoxPH& m_analysis;
  CoxSettings& m_settings;
  AppliedDefinition m_applied;
  std::vector<char> m_isSelected;      // a flag a case; empty when all are selected
  std::map<int, std::string> m_roles;  // variable to the option that took it
};

}  // namespace

AppliedDefinition ApplyDefinition(const AnalysisDefinition& definition, StandaloneHost& host, CCoxPH& analysis) {
  return Applier(definition, host, analysis).Apply();
}

}  // namespace orv
