#include "standalone/analysis/ResultDefinition.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <optional>
#include <set>

#include "data/CCoxData.h"
#include "data/FactorLevels.h"
#include "data/RoundHalfAway.h"
#include "data/VariableNames.h"
#include "output/CoefficientLabels.h"
#include "standalone/analysis/Choices.h"
#include "standalone/analysis/CloseNames.h"
#include "standalone/analysis/DefinitionMessages.h"
#include "standalone/analysis/ListSyntax.h"
#include "standalone/analysis/TableCodes.h"

namespace orv {

namespace {

namespace Messages = DefinitionMessages;

constexpr std::size_t kMostPatterns = 25;
constexpr std::size_t kShownNames = 3;

[[noreturn]] void Fail(const std::string& message) {
  throw DefinitionError(message);
}

bool Holds(const std::vector<std::string>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// A residual by its name, and the input forms that have it.
struct ResidualName {
  const char* Name;
  bool ResidualChoices::*Choice;
  bool ForIntervals;
};

constexpr std::array kResiduals = {
    ResidualName{"martingale", &ResidualChoices::ComputeMartingale, true},
    ResidualName{"deviance", &ResidualChoices::ComputeDeviance, false},
    ResidualName{"score", &ResidualChoices::ComputeScore, true},
    ResidualName{"schoenfeld", &ResidualChoices::ComputeSchoenfeld, true},
    ResidualName{"scaledschoenfeld", &ResidualChoices::ComputeScaledSchoenfeld, true},
    ResidualName{"dfbeta", &ResidualChoices::ComputeDfbeta, true},
    ResidualName{"xbeta", &ResidualChoices::ComputeXbeta, true},
    ResidualName{"stdxbeta", &ResidualChoices::ComputeStdXBeta, true},
    ResidualName{"displacement", &ResidualChoices::ComputeLikelihoodDisplacement, false},
    ResidualName{"lmax", &ResidualChoices::ComputeLMAX, false},
};

bool HasAny(const ResidualChoices& choices) {
  return std::any_of(kResiduals.begin(), kResiduals.end(),
                     [&](const ResidualName& residual) { return choices.*residual.Choice; });
}

// An option that says something about results which are not shown is a slip.
void CheckShown(const ResultDefinition& d, const char* option, bool given, std::initializer_list<const char*> results) {
  if (!given || d.ShowsAll) return;
  const bool isShown = std::any_of(results.begin(), results.end(), [&](const char* name) { return d.Shows(name); });
  if (!isShown) Fail(Messages::OptionWithoutResult(option, fmt::format("{}", fmt::join(results, " or "))));
}

class Resolver {
 public:
  Resolver(const ResultDefinition& definition, const StandaloneHost& host, CCoxPH& analysis)
      : m_definition(definition),
        m_table(host.Table()),
        m_isWeighted(host.IsWeighted()),
        m_analysis(analysis),
        m_settings(analysis.m_Settings) {}

  ResolvedResults Resolve() {
    m_resolved.Confidence = m_definition.Confidence;
    ChooseResults();
    ChooseResiduals();
    ChooseContrasts();
    for (const std::string& text : m_definition.Patterns) ChoosePattern(text);
    ChooseSurvivor();
    m_resolved.Transform = static_cast<TimeTransform>(
        ChoiceValue("--ph-transform", m_definition.Transform, TransformChoices(), m_resolved.Transform));
    return m_resolved;
  }

 private:
  bool IsTimeDependent() const { return m_settings.InputType == InputTypes::TimeDependent; }
  bool HasIntervals() const { return m_settings.InputType == InputTypes::CountingProcess; }

  void ChooseResults() {
    constexpr std::array kOfSurvivalTimes = {"residuals", "survivor", "hazard", "phtest"};
    for (const std::string& name : m_definition.Results) {
      const bool needsTimes =
          std::find(kOfSurvivalTimes.begin(), kOfSurvivalTimes.end(), name) != kOfSurvivalTimes.end();
      // The matrix that the contrasts of this coding come from has no evaluator for such a design.
      const bool hasNoType3 = name == "type3" && IsTimeDependent() && m_settings.Coding == Codings::Overparameterized;
      const bool hasNoSteps = name == "steps" && m_settings.ModelBuilding == ModelBuildings::AllEffects;
      const bool hasNoContrast = name == "contrast" && m_definition.Contrasts.empty();
      const bool isMissing = (needsTimes && IsTimeDependent()) || hasNoType3 || hasNoContrast || hasNoSteps;
      if (!isMissing) {
        m_resolved.Results.push_back(name);
      } else if (!m_definition.ShowsAll) {
        if (hasNoSteps) Fail(Messages::StepsWithoutSelection());
        Fail(hasNoContrast ? Messages::ContrastMissing() : Messages::ResultWithTimeCovariates(name));
      }
    }
  }

  void ChooseResiduals() {
    const bool isDefault = m_definition.Residuals.empty();
    for (const ResidualName& residual : kResiduals) {
      const bool isWished = isDefault ? residual.Choice == &ResidualChoices::ComputeMartingale ||
                                            residual.Choice == &ResidualChoices::ComputeDeviance
                                      : Holds(m_definition.Residuals, residual.Name);
      const bool isMissing = HasIntervals() && !residual.ForIntervals;
      if (isWished && isMissing && !isDefault) Fail(Messages::ResidualWithIntervals(residual.Name));
      m_resolved.Residuals.*residual.Choice = isWished && !isMissing;
    }
  }

  void ChooseContrasts() {
    if (m_definition.Contrasts.empty()) return;
    const auto count = static_cast<std::size_t>(m_analysis.DesignCoefficientCount());
    m_resolved.Coefficients = CoefficientLabels(*m_analysis.m_pCoxData);
    DenseMatrix& L = m_resolved.LinearCombinations;
    L.assign(count, {});
    for (const std::string& text : m_definition.Contrasts) {
      const std::vector<double> function = ParseContrast(text);
      if (std::all_of(function.begin(), function.end(), [](double number) { return number == 0.0; })) {
        Fail(Messages::ContrastOfZeros(text));
      }
      if (function.size() != count) {
        Fail(Messages::ContrastOfAnotherLength(text, function.size(), m_resolved.Coefficients));
      }
      for (std::size_t row = 0; row < count; ++row) L[row].push_back(function[row]);
    }
  }

  void ChoosePattern(const std::string& text) {
    std::map<int, std::string> pattern;
    for (const CodeAssignment& assignment : ParseValues("--pattern", text)) {
      const int variable = m_table.FindVariable(assignment.Factor);
      if (variable == 0 || !IsPredictor(variable)) FailAsNoPredictor(assignment.Factor);
      const std::string& name = m_table.Variable(variable).Name;
      const std::string value = PatternValue(variable, name, assignment.Codes[0]);
      if (!pattern.emplace(variable, value).second) Fail(Messages::DuplicateVariable("--pattern", name));
    }
    m_resolved.Patterns.push_back(pattern);
  }

  bool IsPredictor(int variable) const {
    const auto& covariates = m_settings.CovariateVariables;
    const bool isCovariate = std::find(covariates.begin(), covariates.end(), variable) != covariates.end();
    return isCovariate || FactorPlace(m_settings, variable) < m_settings.FactorCount;
  }

  [[noreturn]] void FailAsNoPredictor(const std::string& name) const {
    std::vector<std::string_view> names;
    for (const int variable : m_settings.CovariateVariables) names.emplace_back(m_table.Variable(variable).Name);
    for (const int variable : m_settings.FactorVariables) names.emplace_back(m_table.Variable(variable).Name);
    Fail(Messages::PatternNotAPredictor(name, CloseNames(name, names, kShownNames)));
  }

  // The value as the results take it: a number, or the label or code of a factor's level.
  std::string PatternValue(int variable, const std::string& name, const std::string& value) const {
    const int place = FactorPlace(m_settings, variable);
    if (place == m_settings.FactorCount) {
      if (!ParseNumber(value)) Fail(Messages::PatternNotANumber(name, value));
      return value;
    }
    const std::optional<double> code = CodeOfText(m_table, variable, value);
    if (code && PositionOfValue(m_settings, place, *code) != 0) {
      return CodeText(m_analysis, variable, RoundToInteger(*code));
    }
    const auto first = m_settings.FactorCodes.begin() + FirstCodeIndex(m_settings, place);
    std::vector<std::string> codes;
    for (int k = 0; k < m_settings.FactorCodeCounts[static_cast<std::size_t>(place)]; ++k) {
      codes.push_back(ValueText(m_table, variable, first[k]));
    }
    Fail(Messages::PatternCodeUnknown(name, value, fmt::format("{}", fmt::join(codes, ", "))));
  }

  void ChooseSurvivor() {
    m_resolved.Survivor = static_cast<SurvivorType>(
        ChoiceValue("--survivor-type", m_definition.SurvivorType, SurvivorTypeChoices(), m_resolved.Survivor));
    if (m_resolved.Survivor == SurvivorType::KaplanMeier && HasIntervals())
      Fail(Messages::ProductLimitWith("--interval"));
    if (m_resolved.Survivor == SurvivorType::KaplanMeier && m_isWeighted) Fail(Messages::ProductLimitWith("--weights"));
    const int ci = ChoiceValue("--ci", m_definition.CI, CIChoices(), static_cast<int>(SurvivorCIType::Normal));
    m_resolved.HasSurvivorLimits = ci != kNoLimits && m_definition.HasSurvivorLimits;
    m_resolved.HasHazardLimits = ci != kNoLimits && m_definition.HasHazardLimits;
    if (ci != kNoLimits) m_resolved.SurvivorCI = static_cast<SurvivorCIType>(ci);
  }

  const ResultDefinition& m_definition;
  const MemoryTable& m_table;
  const bool m_isWeighted;
  CCoxPH& m_analysis;
  const CoxSettings& m_settings;
  ResolvedResults m_resolved;
};

// Where residuals are not what their name says elsewhere.
void NoteOnKernels(CCoxPHResults& results, const std::vector<std::string>& shown, std::vector<std::string>& notes) {
  const CoxSettings& settings = results.Settings();
  if (settings.InputType == InputTypes::TimeDependent) return;
  const ResidualChoices& chosen = results.Residuals;
  const bool showsScores = Holds(shown, "residuals") && (chosen.ComputeScore || chosen.ComputeDfbeta ||
                                                         chosen.ComputeLikelihoodDisplacement || chosen.ComputeLMAX);
  const WeightRecord* weights = results.Analysis().m_Commons.Weights;
  const bool isWeighted = weights != nullptr && weights->On;
  if (isWeighted && (settings.UseRobustVariance || showsScores)) notes.push_back(Messages::WeightedScores());
  const bool isDiscrete = settings.Likelihood == Likelihoods::Discrete;
  const bool showsSchoenfeld =
      Holds(shown, "residuals") && (chosen.ComputeSchoenfeld || chosen.ComputeScaledSchoenfeld);
  if (isDiscrete && (settings.UseRobustVariance || showsScores || showsSchoenfeld || Holds(shown, "phtest"))) {
    notes.push_back(Messages::DiscreteScores());
  }
}

// Results that turn out not to be there after the run are told, and left out.
std::vector<std::string> ResultsThatExist(const ResolvedResults& resolved,
                                          CCoxPHResults& results,
                                          std::vector<std::string>& notes) {
  std::vector<std::string> existing = resolved.Results;
  const auto leaveOut = [&existing](auto isMissing) { return std::erase_if(existing, isMissing) > 0; };
  if (results.Data().CoefficientCount == 0) {
    // A list of estimates without any goes without saying.
    std::erase(existing, "estimates");
    if (leaveOut([](const std::string& name) { return name != "summary"; })) notes.push_back(Messages::SummaryAlone());
    return existing;
  }
  const CCoxFit& fit = results.Fit();
  NoteOnKernels(results, existing, notes);
  if (!fit.m_BreslowValid && results.Settings().InputType != InputTypes::TimeDependent) {
    const bool hasResiduals = HasAny(results.AvailableResiduals(results.Residuals));
    const bool anyLeftOut = leaveOut([hasResiduals](const std::string& name) {
      return name == "survivor" || name == "hazard" || (name == "residuals" && !hasResiduals);
    });
    if (anyLeftOut || Holds(existing, "residuals")) notes.push_back(Messages::NoBaseline());
  } else if (resolved.Survivor == SurvivorType::KaplanMeier && !fit.m_KaplanMeierValid) {
    results.Survivor = SurvivorType::Breslow;
    notes.push_back(Messages::ProductLimitFailed());
  } else if (resolved.Survivor == SurvivorType::KaplanMeier && results.Settings().HasStrata()) {
    notes.push_back(Messages::ProductLimitWithStrata());
  }
  return existing;
}

// A contrast is written for the full design. After a selection it is one of the coefficients that are left, as long as
// it asks for no other.
void SetLinearCombinations(const ResolvedResults& resolved,
                           CCoxPHResults& results,
                           std::vector<std::string>& existing,
                           std::vector<std::string>& notes) {
  results.m_LinearCombinations = resolved.LinearCombinations;
  const std::vector<int>& kept = results.Fit().m_KeptColumns;
  if (kept.empty() || resolved.LinearCombinations.empty()) return;
  results.m_LinearCombinations.clear();
  for (std::size_t row = 0; row < resolved.LinearCombinations.size(); ++row) {
    const std::vector<double>& numbers = resolved.LinearCombinations[row];
    if (std::binary_search(kept.begin(), kept.end(), static_cast<int>(row))) {
      results.m_LinearCombinations.push_back(numbers);
    } else if (std::any_of(numbers.begin(), numbers.end(), [](double number) { return number != 0.0; })) {
      std::erase(existing, "contrast");
      notes.push_back(Messages::ContrastNotSelected(resolved.Coefficients[row]));
      return;
    }
  }
}

}  // namespace

bool ResultDefinition::Shows(std::string_view result) const {
  return Holds(Results, result);
}

const std::vector<std::string>& ShowNames() {
  static const std::vector<std::string> names = {"summary",    "estimates",   "type3",    "history", "design",
                                                 "covariance", "correlation", "contrast", "steps",   "residuals",
                                                 "survivor",   "hazard",      "phtest"};
  return names;
}

const std::vector<std::string>& DefaultShowNames() {
  static const std::vector<std::string> names = {"summary", "estimates"};
  return names;
}

const std::vector<std::string>& ResidualNames() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> list;
    for (const ResidualName& residual : kResiduals) list.emplace_back(residual.Name);
    return list;
  }();
  return names;
}

std::vector<double> ParseContrast(const std::string& text) {
  std::vector<double> numbers;
  std::size_t at = 0;
  constexpr const char* kSeparators = " ,\t";
  while ((at = text.find_first_not_of(kSeparators, at)) != std::string::npos) {
    const std::size_t end = std::min(text.find_first_of(kSeparators, at), text.size());
    const std::string word = text.substr(at, end - at);
    const std::optional<double> number = ParseNumber(word);
    if (!number) Fail(Messages::ContrastNotANumber(text, word));
    numbers.push_back(*number);
    at = end;
  }
  if (numbers.empty()) Fail(Messages::ContrastNotANumber(text, ""));
  return numbers;
}

void CheckResultDefinition(const ResultDefinition& definition) {
  const ResultDefinition& d = definition;
  for (const std::string& name : d.Residuals) {
    if (Holds(ResidualNames(), name)) continue;
    Fail(Messages::UnknownChoice("--residuals", name, fmt::format("{}", fmt::join(ResidualNames(), ", "))));
  }
  for (const std::string& text : d.Contrasts) ParseContrast(text);
  ChoiceValue("--survivor-type", d.SurvivorType, SurvivorTypeChoices(), 0);
  ChoiceValue("--ci", d.CI, CIChoices(), 0);
  ChoiceValue("--ph-transform", d.Transform, TransformChoices(), 0);
  if (d.Patterns.size() > kMostPatterns) Fail(Messages::TooManyPatterns(d.Patterns.size(), kMostPatterns));
  CheckShown(d, "--residuals", !d.Residuals.empty(), {"residuals"});
  CheckShown(d, "--contrast", !d.Contrasts.empty(), {"contrast"});
  CheckShown(d, "--pattern", !d.Patterns.empty(), {"survivor", "hazard"});
  CheckShown(d, "--survivor-type", !d.SurvivorType.empty(), {"survivor"});
  CheckShown(d, "--ci", !d.CI.empty(), {"survivor", "hazard"});
  CheckShown(d, "--ph-transform", !d.Transform.empty(), {"phtest"});
}

ResolvedResults ResolveResults(const ResultDefinition& definition, const StandaloneHost& host, CCoxPH& analysis) {
  return Resolver(definition, host, analysis).Resolve();
}

std::vector<std::string> ApplyResults(const ResolvedResults& resolved,
                                      CCoxPHResults& results,
                                      std::vector<std::string>& notes) {
  results.ConfidenceLevel = resolved.Confidence;
  results.Residuals = resolved.Residuals;
  results.Transform = resolved.Transform;
  results.Survivor = resolved.Survivor;
  results.SurvivorCI = resolved.SurvivorCI;
  results.ComputeSurvivorCI = resolved.HasSurvivorLimits;
  results.ComputeCumulativeHazardCI = resolved.HasHazardLimits;
  std::vector<std::string> existing = ResultsThatExist(resolved, results, notes);
  SetLinearCombinations(resolved, results, existing, notes);
  const std::vector<int> covariates = results.PatternCovariates();
  const std::vector<int> factors = results.PatternFactors();
  std::vector<std::vector<double>> numbers;
  std::vector<std::vector<std::string>> texts;
  const std::vector<std::map<int, std::string>> oneOfDefaults(1);
  std::set<int> notSelected;
  for (const auto& pattern : resolved.Patterns.empty() ? oneOfDefaults : resolved.Patterns) {
    numbers.push_back(results.DefaultCovariates());
    texts.push_back(results.DefaultFactors());
    for (const auto& [variable, value] : pattern) {
      const auto covariate = std::find(covariates.begin(), covariates.end(), variable);
      if (covariate != covariates.end()) {
        numbers.back()[static_cast<std::size_t>(covariate - covariates.begin())] = ParseNumber(value).value_or(0.0);
      }
      const auto factor = std::find(factors.begin(), factors.end(), variable);
      if (factor != factors.end()) texts.back()[static_cast<std::size_t>(factor - factors.begin())] = value;
      if (covariate == covariates.end() && factor == factors.end()) notSelected.insert(variable);
    }
  }
  for (const int variable : notSelected) {
    notes.push_back(Messages::PatternNotSelected(VariableName(results.Analysis().GetHost(), variable)));
  }
  if (results.SetPatterns(numbers, texts) != 0) Fail(Messages::PatternRefused());
  if (!Holds(existing, "survivor") && !Holds(existing, "hazard")) return existing;
  for (std::size_t k = 0; k < results.Patterns.DesignRows.size(); ++k) {
    if (!IsPatternInRange(results.Fit(), results.Patterns.DesignRows[k])) {
      notes.push_back(Messages::PatternOutOfRange(results.Patterns.Labels[k]));
    }
  }
  return existing;
}

}  // namespace orv
