#include "standalone/jobs/WriteJob.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "standalone/analysis/EffectSyntax.h"
#include "standalone/analysis/ListSyntax.h"
#include "standalone/analysis/TimeCovariateSyntax.h"
#include "standalone/jobs/JobKeys.h"
#include "standalone/jobs/TomlText.h"

namespace orv {

namespace {

constexpr const char* kTitle =
    "# An analysis for \"orvcox run\". File names are relative to the folder of this file.\n";

// What a job says, as TOML: a value for a key, and for a key whose value has parts, a value for each of them.
class JobLines {
 public:
  explicit JobLines(const Job& job) : m_job(job), m_definition(job.Definition), m_results(job.Results) {
    AddVariables();
    AddDesign();
    AddMethod();
    AddStartValues();
    AddOutputs();
    AddResiduals();
    AddFunctions();
    AddHost();
  }

  std::string Text() const {
    std::string text = kTitle;
    std::string_view section;
    for (const JobKey& key : JobKeys()) {
      const auto found = m_lines.find(key.Name);
      if (found == m_lines.end()) continue;
      text += '\n';
      if (key.Section != section) text += fmt::format("[{}]\n", key.Section);
      section = key.Section;
      text += fmt::format("# {}\n{}", key.Help, found->second);
    }
    return text;
  }

 private:
  void Add(std::string_view key, const std::string& value) {
    m_lines[std::string(key)] += fmt::format("{} = {}\n", key, value);
  }
  void AddPart(std::string_view key, const std::string& part, const std::string& value) {
    m_lines[std::string(key)] += fmt::format("{}.{} = {}\n", key, TomlName(part), value);
  }
  void AddFlag(std::string_view key, bool flag) { Add(key, flag ? "true" : "false"); }
  void AddText(std::string_view key, const std::string& text) {
    if (!text.empty()) Add(key, TomlString(text));
  }
  void AddCode(std::string_view key, const std::string& code) {
    if (!code.empty()) Add(key, TomlCode(code));
  }
  void AddTexts(std::string_view key, const std::vector<std::string>& texts) {
    if (!texts.empty()) Add(key, ListOf(texts, TomlString));
  }
  // The property for a word of an option; `usual` in the place of an empty one.
  void AddChoice(std::string_view option, const std::string& word, std::string_view usual = {}) {
    const std::string_view key = KeyOf(option, word.empty() ? usual : std::string_view(word));
    if (!key.empty()) AddFlag(key, true);
  }

  template <typename Write>
  static std::string ListOf(const std::vector<std::string>& texts, Write write) {
    std::vector<std::string> items;
    for (const std::string& text : texts) items.push_back(write(text));
    return TomlList(items);
  }

  // ---- The analysis ---------------------------------------------------------------------------------------------

  void AddVariables() {
    const AnalysisDefinition& d = m_definition;
    AddText("Table", m_job.Table);
    AddText("SurvivalTimes", d.Time);
    AddTexts("SurvivalTimes", d.Dates);
    AddTexts("SurvivalTimes", d.DateParts);
    if (!d.Interval.empty()) {
      AddText("Start", d.Interval[0]);
      AddText("Stop", d.Interval[1]);
    }
    AddText("CensoringIndicator", d.Status);
    AddTexts("Covariates", d.Covariates);
    AddTexts("Factors", d.Factors);
    AddText("Strata", d.Strata);
    AddFlag(!d.Interval.empty()        ? "InputTypeCountingProcess"
            : d.TimeCovariates.empty() ? "InputTypeSurvivalTime"
                                       : "InputTypeSurvivalTimeWithTimeCov",
            true);
    AddCode("CodeForCompleteResponses", d.EventCode);
    AddCode("CodeForCensoredResponses", d.CensoredCode);
    if (!d.StrataCodes.empty()) Add("StrataCodes", ListOf(d.StrataCodes, TomlCode));
    AddText("SubjectID", d.Subject);
  }

  void AddDesign() {
    for (const std::string& text : m_definition.FactorCodes) {
      const CodeAssignment codes = ParseCodes("--codes", text);
      AddPart("FactorCodes", codes.Factor, ListOf(codes.Codes, TomlCode));
    }
    for (const std::string& text : m_definition.ReferenceCodes) {
      const CodeAssignment code = ParseReference("--reference", text);
      AddPart("ReferenceCategory", code.Factor, TomlCode(code.Codes[0]));
    }
    if (!m_definition.Effects.empty()) {
      std::vector<std::string> effects;
      for (const WrittenEffect& effect : ParseEffects(m_definition.Effects)) effects.push_back(effect.Text);
      AddTexts("DesignEffects", effects);
    }
    std::vector<std::string> names;
    std::vector<std::string> expressions;
    for (const TimeCovariate& covariate : ParseTimeCovariates(m_definition.TimeCovariates)) {
      names.push_back(covariate.Name);
      expressions.push_back(covariate.Formula);
    }
    AddTexts("TimeDependentCovariateNames", names);
    AddTexts("TimeDependentCovariateExpressions", expressions);
  }

  void AddMethod() {
    const AnalysisDefinition& d = m_definition;
    AddChoice("--coding", d.Coding, "sigma");
    AddChoice("--ties", d.Ties, "breslow");
    AddChoice("--converge", d.Converge, "gradient");
    AddChoice("--select", d.Select, "all");
    if (d.PEnter) Add("pToEnter", TomlNumber(*d.PEnter));
    if (d.PRemove) Add("pToRemove", TomlNumber(*d.PRemove));
    if (d.Force) Add("NToForce", std::to_string(*d.Force));
    if (d.Robust) AddFlag("UseRobustVariance", true);
    Add("NumberOfIterations", std::to_string(d.MaxIterations));
    Add("ConvergenceCriterion", std::to_string(d.ToleranceExponent));
    Add("ConfidenceLevel", TomlNumber(m_results.Confidence));
  }

  void AddStartValues() {
    const AnalysisDefinition& d = m_definition;
    if (d.StartValues.empty() && d.StartValuesFile.empty()) return;
    AddFlag("UseStartValues", true);
    AddText("DataFileThatContainsStartvaluesForParameter", d.StartValuesFile);
    std::vector<std::string> numbers;
    for (const double value : d.StartValues) numbers.push_back(TomlNumber(value));
    if (!numbers.empty()) AddPart("EditParameterStatusValues", "Values", TomlList(numbers));
    std::vector<std::string> fixed;
    for (const int coefficient : d.FixedCoefficients) fixed.push_back(std::to_string(coefficient));
    if (!fixed.empty()) AddPart("EditParameterStatusValues", "Fixed", TomlList(fixed));
  }

  // ---- Results --------------------------------------------------------------------------------------------------

  void AddOutputs() {
    const bool survivor = m_results.Shows("survivor");
    const bool hazard = m_results.Shows("hazard");
    for (const std::string& result : ShowNames()) {
      if (result == "survivor" || result == "hazard") continue;
      AddOutput(KeyOf("--show", result), m_results.Shows(result));
    }
    AddOutput("SurvivalCumulativeHazardSummary", survivor || hazard);
    if (!survivor && !hazard) return;
    AddFlag("ComputeSurvivorFunction", survivor);
    AddFlag("ComputeCumulativeHazardFunction", hazard);
    const bool hasLimits = m_results.CI != "none";
    AddFlag("ComputeSurvivorCI", hasLimits && m_results.HasSurvivorLimits);
    AddFlag("ComputeCumulativeHazardCI", hasLimits && m_results.HasHazardLimits);
  }

  // With all results wanted, those that are not have to be named.
  void AddOutput(std::string_view key, bool isShown) {
    if (isShown != m_results.ShowsAll) AddFlag(key, isShown);
  }

  void AddResiduals() {
    const std::vector<std::string>& chosen = m_results.Residuals;
    if (chosen.empty()) return;
    for (const std::string& residual : ResidualNames()) {
      const bool isChosen = std::find(chosen.begin(), chosen.end(), residual) != chosen.end();
      const bool isUsual = residual == "martingale" || residual == "deviance";
      if (isChosen || isUsual) AddFlag(KeyOf("--residuals", residual), isChosen);
    }
  }

  void AddFunctions() {
    std::vector<std::string> functions;
    for (const std::string& contrast : m_results.Contrasts) {
      std::vector<std::string> numbers;
      for (const double number : ParseContrast(contrast)) numbers.push_back(TomlNumber(number));
      functions.push_back(fmt::format("[{}]", fmt::join(numbers, ", ")));
    }
    if (!functions.empty()) Add("SpecifyLinearCombination", TomlList(functions));
    std::vector<std::string> patterns;
    for (const std::string& pattern : m_results.Patterns) {
      std::vector<std::string> values;
      for (const CodeAssignment& value : ParseValues("--pattern", pattern)) {
        values.push_back(fmt::format("{} = {}", TomlName(value.Factor), TomlCode(value.Codes[0])));
      }
      patterns.push_back(fmt::format("{{ {} }}", fmt::join(values, ", ")));
    }
    if (!patterns.empty()) {
      Add("NumberOfCovariatePatterns", std::to_string(patterns.size()));
      Add("SpecifyCovariateValues", TomlList(patterns));
    }
    AddChoice("--survivor-type", m_results.SurvivorType);
    if (m_results.CI != "none" && m_results.HasSurvivorLimits) AddChoice("--ci", m_results.CI);
    AddChoice("--ph-transform", m_results.Transform);
  }

  void AddHost() {
    AddText("CaseWeights", m_definition.Weights);
    AddText("CaseSelection", m_definition.Where);
    AddText("EntryTime", m_definition.Entry);
    if (m_results.ShowsAll) AddFlag("AllResults", true);
    AddTexts("OutputFiles", m_job.Outputs);
    AddText("Format", m_job.Format);
    if (m_job.Quiet) AddFlag("Quiet", true);
  }

  const Job& m_job;
  const AnalysisDefinition& m_definition;
  const ResultDefinition& m_results;
  std::map<std::string, std::string, std::less<>> m_lines;
};

}  // namespace

std::string WriteJob(const Job& job) {
  return JobLines(job).Text();
}

}  // namespace orv
