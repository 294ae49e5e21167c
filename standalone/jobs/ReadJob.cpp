#include "standalone/jobs/ReadJob.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "standalone/analysis/CheckDefinition.h"
#include "standalone/analysis/EffectSyntax.h"
#include "standalone/analysis/ListSyntax.h"
#include "standalone/analysis/OptionValues.h"
#include "standalone/analysis/TimeCovariateSyntax.h"
#include "standalone/jobs/JobMessages.h"
#include "standalone/jobs/JobSource.h"
#include "standalone/tables/ByteSource.h"
#include "standalone/tables/TableError.h"

namespace orv {

namespace {

namespace Messages = JobMessages;

constexpr std::size_t kLargestFile = std::size_t{16} << 20;
constexpr std::size_t kBlock = std::size_t{64} << 10;

// The definitions of a job: each step takes a few keys.
class JobReader {
 public:
  explicit JobReader(JobSource& source) : m_source(source), m_definition(m_job.Definition), m_results(m_job.Results) {}

  Job Read() {
    if (!m_source.Has("Table")) m_source.Fail("Table", Messages::KeyMissing("Table", "name the file with the cases"));
    m_job.Table = m_source.Word("Table");
    ReadTimes();
    ReadVariables();
    ReadTimeCovariates();
    CheckInputType();
    ReadDesign();
    ReadMethod();
    ReadStartValues();
    ReadOutputs();
    ReadResiduals();
    ReadFunctions();
    ReadHost();
    CheckDefinition(m_definition);
    CheckResultDefinition(m_results);
    return m_job;
  }

 private:
  // ---- Variables ------------------------------------------------------------------------------------------------

  void ReadTimes() {
    const bool hasInterval = m_source.Has("Start") || m_source.Has("Stop");
    if (!hasInterval && !m_source.Has("SurvivalTimes")) {
      m_source.Fail("", Messages::KeyMissing("Variables.SurvivalTimes",
                                             "name the survival times, or write Variables.Start and Variables.Stop"));
    }
    if (hasInterval) return ReadInterval();
    const std::vector<std::string> names = m_source.Texts("SurvivalTimes");
    constexpr std::size_t kDates = 2;
    constexpr std::size_t kDateParts = 6;
    if (names.size() == 1) {
      m_definition.Time = names[0];
    } else if (names.size() == kDates) {
      m_definition.Dates = names;
    } else if (names.size() == kDateParts) {
      m_definition.DateParts = names;
    } else {
      m_source.Fail("SurvivalTimes", Messages::SurvivalTimesCount(names.size()));
    }
  }

  void ReadInterval() {
    for (const char* key : {"Start", "Stop"}) {
      if (!m_source.Has(key)) {
        m_source.Fail("", Messages::KeyMissing(ShownName(*FindJobKey(key)), "an interval has a start and a stop"));
      }
      if (m_source.Has("SurvivalTimes")) {
        m_source.Fail(key, Messages::TimesInTwoForms(ShownName(*FindJobKey(key)), LineOf("SurvivalTimes")));
      }
      m_definition.Interval.push_back(m_source.Word(key));
    }
  }

  void ReadVariables() {
    m_definition.Status = m_source.Word("CensoringIndicator");
    m_definition.Covariates = m_source.Texts("Covariates");
    m_definition.Factors = m_source.Texts("Factors");
    m_definition.Strata = m_source.Word("Strata");
    m_definition.EventCode = m_source.Word("CodeForCompleteResponses");
    m_definition.CensoredCode = m_source.Word("CodeForCensoredResponses");
    m_definition.StrataCodes = m_source.Codes("StrataCodes");
    m_definition.Subject = m_source.Word("SubjectID");
    m_definition.Weights = m_source.Word("CaseWeights");
    m_definition.Where = m_source.Word("CaseSelection");
    m_definition.Entry = m_source.Word("EntryTime");
  }

  void ReadTimeCovariates() {
    const std::vector<std::string> names = m_source.Texts("TimeDependentCovariateNames");
    const std::vector<std::string> expressions = m_source.Texts("TimeDependentCovariateExpressions");
    if (names.size() != expressions.size()) {
      m_source.Fail(names.empty() ? "TimeDependentCovariateExpressions" : "TimeDependentCovariateNames",
                    Messages::NamesAndExpressions(names.size(), expressions.size()));
    }
    for (std::size_t k = 0; k < names.size(); ++k) {
      if (names[k].find('=') != std::string::npos) {
        m_source.Fail("TimeDependentCovariateNames", Messages::EqualsInName(names[k]));
      }
      const TimeCovariate covariate = ParseTimeCovariate(names[k] + '=' + expressions[k]);
      m_definition.TimeCovariates.push_back(covariate.Name + '=' + covariate.Formula);
      m_source.Wording().AddPhrase(fmt::format("--time-covariate {}:", covariate.Name),
                                   "TimeDependentCovariateExpressions",
                                   fmt::format("TimeDependentCovariateExpressions {}:", covariate.Name));
    }
  }

  // The form of input follows from the times; a property that says another is a slip.
  void CheckInputType() const {
    const JobKey* chosen = m_source.Chosen(ChoiceGroup::InputType);
    if (chosen == nullptr) return;
    const bool hasInterval = !m_definition.Interval.empty();
    const bool hasTimeCovariates = !m_definition.TimeCovariates.empty();
    const auto require = [&](bool fits, std::string_view needs) {
      if (!fits) m_source.Fail(chosen->Name, Messages::InputTypeDiffers(ShownName(*chosen), needs));
    };
    if (chosen->Name == "InputTypeCountingProcess") {
      require(hasInterval, "Variables.Start and Variables.Stop");
    } else {
      require(!hasInterval, "Variables.SurvivalTimes");
    }
    if (chosen->Name == "InputTypeSurvivalTimeWithTimeCov") {
      require(hasTimeCovariates, "TimeDependentCovariateNames");
    } else {
      require(!hasTimeCovariates, "no TimeDependentCovariateNames");
    }
  }

  // ---- Design and method ----------------------------------------------------------------------------------------

  void ReadDesign() {
    for (const NamedCodes& named : m_source.CodesByName("FactorCodes")) {
      m_definition.FactorCodes.push_back(AssignmentText({named.Name, named.Codes}));
    }
    for (const NamedCodes& named : m_source.CodesByName("ReferenceCategory")) {
      m_definition.ReferenceCodes.push_back(AssignmentText({named.Name, named.Codes}));
    }
    std::vector<std::string> effects;
    for (const std::string& text : m_source.Texts("DesignEffects")) {
      const std::vector<WrittenEffect> parsed = ParseEffects(text);
      if (parsed.size() > 1) m_source.Fail("DesignEffects", Messages::NotOneEffect(text));
      effects.push_back(parsed[0].Text);
    }
    m_definition.Effects = fmt::format("{}", fmt::join(effects, ", "));
  }

  // The word of the chosen property; `usual` when none is.
  std::string WordOfGroup(ChoiceGroup group, const char* usual) const {
    const JobKey* chosen = m_source.Chosen(group);
    return chosen == nullptr ? usual : std::string(WordOf(chosen->Name));
  }

  void ReadMethod() {
    m_definition.Coding = WordOfGroup(ChoiceGroup::Coding, "sigma");
    m_definition.Ties = WordOfGroup(ChoiceGroup::Likelihood, "breslow");
    m_definition.Converge = WordOfGroup(ChoiceGroup::Convergence, "gradient");
    m_definition.Select = WordOfGroup(ChoiceGroup::ModelBuilding, "all");
    m_definition.Robust = m_source.Flag("UseRobustVariance").value_or(false);
    const auto take = [this](const char* key, auto set) {
      if (m_source.Has(key)) set(m_source.Word(key));
    };
    take("NumberOfIterations", [this](const auto& text) { m_definition.MaxIterations = IterationsValue(text); });
    take("ConvergenceCriterion",
         [this](const auto& text) { m_definition.ToleranceExponent = ToleranceExponentValue(text); });
    take("pToEnter", [this](const auto& text) { m_definition.PEnter = ProbabilityValue("--p-enter", text); });
    take("pToRemove", [this](const auto& text) { m_definition.PRemove = ProbabilityValue("--p-remove", text); });
    take("NToForce", [this](const auto& text) { m_definition.Force = ForcedValue(text); });
    take("ConfidenceLevel", [this](const auto& text) { m_results.Confidence = ConfidenceValue(text); });
  }

  void ReadStartValues() {
    constexpr const char* kFile = "DataFileThatContainsStartvaluesForParameter";
    constexpr const char* kValues = "EditParameterStatusValues";
    const std::vector<std::string> values = m_source.Part(kValues, "Values");
    if (m_source.Has(kFile) && !values.empty()) m_source.Fail(kValues, Messages::StartValuesTwice(LineOf(kFile)));
    const bool areUsed = m_source.Flag("UseStartValues").value_or(true);
    if (!areUsed && (m_source.Has(kFile) || m_source.Has(kValues))) {
      m_source.Fail("UseStartValues", Messages::StartValuesUnused());
    }
    if (areUsed && m_source.Has("UseStartValues") && values.empty() && !m_source.Has(kFile)) {
      m_source.Fail("UseStartValues", Messages::StartValuesMissing());
    }
    m_definition.StartValues = StartValuesOf(values);
    m_definition.StartValuesFile = m_source.Word(kFile);
    m_definition.FixedCoefficients = CoefficientNumbersOf(m_source.Part(kValues, "Fixed"));
  }

  // ---- Results --------------------------------------------------------------------------------------------------

  // What an output property says; for a result that has none of its own, the property that it shares.
  std::optional<bool> Wish(const std::string& result) const {
    const std::string_view key = KeyOf("--show", result);
    const std::optional<bool> shared = m_source.Flag(key);
    const bool isHazard = result == "hazard";
    if (result != "survivor" && !isHazard) return shared;
    const char* own = isHazard ? "ComputeCumulativeHazardFunction" : "ComputeSurvivorFunction";
    if (!shared.value_or(m_results.ShowsAll)) {
      if (m_source.Flag(own).value_or(false)) m_source.Fail(own, Messages::ComputeWithoutSummary(own));
      return shared;
    }
    return m_source.Flag(own).value_or(!isHazard || m_results.ShowsAll);
  }

  void ReadOutputs() {
    m_results.ShowsAll = m_source.Flag("AllResults").value_or(false);
    std::vector<std::string> usual;
    for (const std::string& result : ShowNames()) {
      const std::optional<bool> wish = Wish(result);
      if (wish.value_or(m_results.ShowsAll)) m_results.Results.push_back(result);
      const auto& shown = DefaultShowNames();
      if (!wish && std::find(shown.begin(), shown.end(), result) != shown.end()) usual.push_back(result);
    }
    constexpr const char* kSummary = "SurvivalCumulativeHazardSummary";
    if (m_source.Flag(kSummary).value_or(false) && !m_results.Shows("survivor") && !m_results.Shows("hazard")) {
      m_source.Fail(kSummary, Messages::NoFunction());
    }
    if (m_results.Results.empty()) m_results.Results = usual;
    if (m_results.Results.empty()) m_source.Fail("", Messages::NoOutput());
  }

  // Both spellings of a property are one check box.
  std::optional<bool> ResidualFlag(const std::string& residual) {
    std::optional<bool> flag;
    std::string_view first;
    for (const OptionSynonym& synonym : OptionSynonyms()) {
      if (synonym.Option != "--residuals" || synonym.Word != residual) continue;
      const std::optional<bool> own = m_source.Flag(synonym.Key);
      if (!own) continue;
      if (flag && *flag != *own) {
        m_source.Fail(synonym.Key, Messages::SameControl(std::string(synonym.Key), std::string(first), LineOf(first)));
      }
      if (!flag) {
        first = synonym.Key;
        m_source.Wording().AddPhrase("--residuals " + residual + ':', first, std::string(first) + ':');
      }
      flag = own;
    }
    return flag;
  }

  // As in the dialog, martingale and deviance residuals are on until they are taken out.
  void ReadResiduals() {
    bool isWritten = false;
    for (const std::string& residual : ResidualNames()) {
      const std::optional<bool> flag = ResidualFlag(residual);
      isWritten = isWritten || flag.has_value();
      const bool isUsual = residual == "martingale" || (residual == "deviance" && m_definition.Interval.empty());
      if (flag.value_or(isUsual)) m_results.Residuals.push_back(residual);
    }
    if (isWritten && m_results.Residuals.empty()) m_source.Fail("ResidualSummary", Messages::NoResidual());
    if (!isWritten) m_results.Residuals.clear();
  }

  void ReadFunctions() {
    for (const auto& function : m_source.Functions("SpecifyLinearCombination")) {
      m_results.Contrasts.push_back(fmt::format("{}", fmt::join(function, " ")));
    }
    for (const std::vector<NamedCodes>& pattern : m_source.Patterns("SpecifyCovariateValues")) {
      std::vector<std::string> values;
      for (const NamedCodes& named : pattern) values.push_back(AssignmentText({named.Name, named.Codes}));
      m_results.Patterns.push_back(fmt::format("{}", fmt::join(values, ", ")));
    }
    const std::size_t patterns = std::max<std::size_t>(m_results.Patterns.size(), 1);
    const std::optional<std::int64_t> told = m_source.WholeNumber("NumberOfCovariatePatterns");
    if (told && *told != static_cast<std::int64_t>(patterns)) {
      m_source.Fail("NumberOfCovariatePatterns", Messages::PatternCount(*told, m_results.Patterns.size()));
    }
    m_results.SurvivorType = WordOfGroup(ChoiceGroup::SurvivorType, "");
    m_results.CI = WordOfGroup(ChoiceGroup::SurvivorLimits, "");
    m_results.Transform = WordOfGroup(ChoiceGroup::TimeTransform, "");
    m_results.HasSurvivorLimits = Limits("ComputeSurvivorCI");
    m_results.HasHazardLimits = Limits("ComputeCumulativeHazardCI");
    const JobKey* type = m_source.Chosen(ChoiceGroup::SurvivorLimits);
    if (type != nullptr && !m_results.HasSurvivorLimits) {
      m_source.Fail(type->Name, Messages::TypeWithoutLimits(ShownName(*type), LineOf("ComputeSurvivorCI")));
    }
  }

  // Both functions have limits until they are taken out.
  bool Limits(const char* key) const {
    const std::optional<bool> flag = m_source.Flag(key);
    const bool isShown = m_results.ShowsAll || m_results.Shows("survivor") || m_results.Shows("hazard");
    if (flag && !isShown) m_source.Fail(key, Messages::ComputeWithoutSummary(key));
    return flag.value_or(true);
  }

  void ReadHost() {
    m_job.Outputs = m_source.Texts("OutputFiles");
    m_job.Format = m_source.Word("Format");
    m_job.Quiet = m_source.Flag("Quiet").value_or(false);
  }

  std::uint64_t LineOf(std::string_view key) const { return m_source.Wording().LineOf(key); }

  JobSource& m_source;
  Job m_job;
  AnalysisDefinition& m_definition;
  ResultDefinition& m_results;
};

}  // namespace

ReadJobResult ReadJob(std::string_view text, const std::string& file) {
  JobSource source(text, file);
  try {
    Job job = JobReader(source).Read();
    return {std::move(job), source.Wording()};
  } catch (const JobError&) {
    throw;
  } catch (const DefinitionError& error) {
    // The checks that a job shares with the command line name options.
    throw JobError(source.Wording().Refusal(error.what()));
  }
}

ReadJobResult ReadJobFile(const std::string& file) {
  const std::unique_ptr<ByteSource> bytes = OpenFile(file);
  std::string text;
  std::string block(kBlock, '\0');
  while (const std::size_t count = bytes->Read(block.data(), block.size())) {
    text.append(block, 0, count);
    if (text.size() > kLargestFile) throw TableError(Messages::TooLarge(file, kLargestFile));
  }
  return ReadJob(text, file);
}

}  // namespace orv
