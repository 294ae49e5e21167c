#include "standalone/jobs/JobKeys.h"

#include <algorithm>
#include <array>

namespace orv {

namespace {

// Keys beside the properties of the interfaces.
constexpr JobKey kTable = {JobSections::Top, "Table", JobForm::Text,
                           "The table: a file, an address such as sqlite:FILE?table=NAME, or - for standard input"};

constexpr std::array kRoles = {
    JobKey{JobSections::Variables, "SurvivalTimes", JobForm::Texts,
           "The survival time; or start and end date; or month, day, year of the start, then of the end"},
    JobKey{JobSections::Variables, "Start", JobForm::Text, "Start of the interval (start, stop]"},
    JobKey{JobSections::Variables, "Stop", JobForm::Text, "Stop of the interval (start, stop]"},
    JobKey{JobSections::Variables, "CensoringIndicator", JobForm::Text, "The censoring indicator"},
    JobKey{JobSections::Variables, "Covariates", JobForm::Texts, "Continuous predictors"},
    JobKey{JobSections::Variables, "Factors", JobForm::Texts, "Categorical predictors"},
    JobKey{JobSections::Variables, "Strata", JobForm::Text, "Variable whose values have baselines of their own"},
};

constexpr std::array kHostKeys = {
    JobKey{JobSections::Host, "CaseWeights", JobForm::Text, "Variable with the case weights"},
    JobKey{JobSections::Host, "CaseSelection", JobForm::Text, "Condition for the cases"},
    JobKey{JobSections::Host, "EntryTime", JobForm::Text, "Variable with the entry times, without effect on risk sets"},
    JobKey{JobSections::Host, "AllResults", JobForm::Flag, "Every output that the analysis has"},
    JobKey{JobSections::Host, "OutputFiles", JobForm::Texts, "Files for the results in place of standard output"},
    JobKey{JobSections::Host, "Format", JobForm::Text, "Form of standard output"},
    JobKey{JobSections::Host, "Quiet", JobForm::Flag, "No progress, no notes"},
};

// Properties that this version has no results for.
constexpr std::array<std::string_view, 12> kNotYet = {
    "SaveResidualsAndPredictedValues",
    "SurvivalCumulativeHazardPlot",
    "CategorizeByStrata",
    "MarkByStatus",
    "SelectedItemX",
    "SelectedItemY",
    "MakeXHistogram",
    "MakeXYScatterplot",
    "CodeGeneratorCLang",
    "CodeGeneratorPMML",
    "PHTestPlots",
    "ComputeTime",
};

struct VariantForm {
  std::string_view Name;
  JobForm Form;
};

// What the properties hold that are lists, names, codes or documents. `Variables` is a section of its own.
constexpr std::array kVariantForms = {
    VariantForm{"CodeForCompleteResponses", JobForm::Code},
    VariantForm{"CodeForCensoredResponses", JobForm::Code},
    VariantForm{"FactorCodes", JobForm::CodesByFactor},
    VariantForm{"DesignEffects", JobForm::Texts},
    VariantForm{"StrataCodes", JobForm::Codes},
    VariantForm{"TimeDependentCovariateNames", JobForm::Texts},
    VariantForm{"TimeDependentCovariateExpressions", JobForm::Texts},
    VariantForm{"ReferenceCategory", JobForm::CodeByFactor},
    VariantForm{"SubjectID", JobForm::Text},
    VariantForm{"DataFileThatContainsStartvaluesForParameter", JobForm::Text},
    VariantForm{"EditParameterStatusValues", JobForm::StartValues},
    VariantForm{"SpecifyLinearCombination", JobForm::Functions},
    VariantForm{"SpecifyCovariateValues", JobForm::Patterns},
};

JobForm FormOf(const AutomationProperty& property) {
  if (std::find(kNotYet.begin(), kNotYet.end(), property.Name) != kNotYet.end()) return JobForm::NotYet;
  if (property.Kind == PropertyKind::Whole) return JobForm::WholeNumber;
  if (property.Kind == PropertyKind::Real) return JobForm::Number;
  if (property.Kind != PropertyKind::Variant) return JobForm::Flag;
  return std::find_if(kVariantForms.begin(), kVariantForms.end(),
                      [&](const VariantForm& form) { return form.Name == property.Name; })
      ->Form;
}

void AddProperties(std::vector<JobKey>& keys,
                   std::string_view section,
                   std::span<const AutomationProperty> properties) {
  for (const AutomationProperty& property : properties) {
    if (property.Name == "Variables") continue;
    keys.push_back({section, property.Name, FormOf(property), property.Help, property.Group});
  }
}

constexpr std::array kSynonyms = {
    OptionSynonym{"--time", "", "SurvivalTimes"},
    OptionSynonym{"--dates", "", "SurvivalTimes"},
    OptionSynonym{"--date-parts", "", "SurvivalTimes"},
    OptionSynonym{"--interval", "", "Start"},
    OptionSynonym{"--interval", "", "Stop"},
    OptionSynonym{"--status", "", "CensoringIndicator"},
    OptionSynonym{"--event", "", "CodeForCompleteResponses"},
    OptionSynonym{"--censored", "", "CodeForCensoredResponses"},
    OptionSynonym{"--covariates", "", "Covariates"},
    OptionSynonym{"--factors", "", "Factors"},
    OptionSynonym{"--time-covariate", "", "TimeDependentCovariateNames"},
    OptionSynonym{"--time-covariate", "NAME=FORMULA", "TimeDependentCovariateExpressions"},
    OptionSynonym{"--strata", "", "Strata"},
    OptionSynonym{"--strata-codes", "", "StrataCodes"},
    OptionSynonym{"--subject", "", "SubjectID"},
    OptionSynonym{"--robust", "", "UseRobustVariance"},
    OptionSynonym{"--weights", "", "CaseWeights"},
    OptionSynonym{"--where", "", "CaseSelection"},
    OptionSynonym{"--entry", "", "EntryTime"},
    OptionSynonym{"--codes", "", "FactorCodes"},
    OptionSynonym{"--reference", "", "ReferenceCategory"},
    OptionSynonym{"--effects", "", "DesignEffects"},
    OptionSynonym{"--coding", "sigma", "UseSigmaCoding"},
    OptionSynonym{"--coding", "reference", "UseReferenceCoding"},
    OptionSynonym{"--coding", "overparameterized", "UseOverParameterizedCoding"},
    OptionSynonym{"--ties", "breslow", "UseBreslowLikelihood"},
    OptionSynonym{"--ties", "efron", "UseEfronLikelihood"},
    OptionSynonym{"--ties", "discrete", "UseDiscreteLikelihood"},
    OptionSynonym{"--max-iterations", "", "NumberOfIterations"},
    OptionSynonym{"--converge", "gradient", "UseRelativeGradientConvergence"},
    OptionSynonym{"--converge", "parameter", "UseRelativeParameterConvergence"},
    OptionSynonym{"--converge", "likelihood", "UseRelativeLikelihoodConvergence"},
    OptionSynonym{"--converge", "absolute", "UseAbsoluteLikelihoodConvergence"},
    OptionSynonym{"--tolerance-exponent", "", "ConvergenceCriterion"},
    OptionSynonym{"--start-values", "", "EditParameterStatusValues"},
    OptionSynonym{"--start-values", "FILE.orv", "DataFileThatContainsStartvaluesForParameter"},
    OptionSynonym{"--fix", "", "EditParameterStatusValues"},
    OptionSynonym{"--select", "all", "ModelBuildingAllEffects"},
    OptionSynonym{"--select", "forward", "ModelBuildingForwardSelection"},
    OptionSynonym{"--select", "backward", "ModelBuildingBackwardSelection"},
    OptionSynonym{"--select", "stepwise", "ModelBuildingStepwiseSelection"},
    OptionSynonym{"--select", "best", "ModelBuildingBestSubsets"},
    OptionSynonym{"--p-enter", "", "pToEnter"},
    OptionSynonym{"--p-remove", "", "pToRemove"},
    OptionSynonym{"--force", "", "NToForce"},
    OptionSynonym{"--confidence", "", "ConfidenceLevel"},
    OptionSynonym{"--show", "summary", "GoodnessOfFit"},
    OptionSynonym{"--show", "estimates", "ParameterEstimates"},
    OptionSynonym{"--show", "type3", "Type3Test"},
    OptionSynonym{"--show", "history", "IterationHistory"},
    OptionSynonym{"--show", "design", "DesignTerms"},
    OptionSynonym{"--show", "covariance", "CovarianceMatrix"},
    OptionSynonym{"--show", "correlation", "CorrelationMatrix"},
    OptionSynonym{"--show", "contrast", "EstimateLinearCombination"},
    OptionSynonym{"--show", "steps", "ModelBuildingSummary"},
    OptionSynonym{"--show", "residuals", "ResidualSummary"},
    OptionSynonym{"--show", "survivor", "SurvivalCumulativeHazardSummary"},
    OptionSynonym{"--show", "hazard", "SurvivalCumulativeHazardSummary"},
    OptionSynonym{"--show", "phtest", "PHTest"},
    OptionSynonym{"--show", "all", "AllResults"},
    OptionSynonym{"--residuals", "martingale", "ComputeMartingale"},
    OptionSynonym{"--residuals", "deviance", "ComputeDeviance"},
    OptionSynonym{"--residuals", "score", "ComputeScore"},
    OptionSynonym{"--residuals", "schoenfeld", "ComputeSchoenfeld"},
    OptionSynonym{"--residuals", "scaledschoenfeld", "ComputeScaledSchoenfeld"},
    OptionSynonym{"--residuals", "dfbeta", "ComputeDfbeta"},
    OptionSynonym{"--residuals", "xbeta", "ComputeXbeta"},
    OptionSynonym{"--residuals", "stdxbeta", "ComputeStdXBeta"},
    OptionSynonym{"--residuals", "displacement", "ComputeLikelihoodDisplacement"},
    OptionSynonym{"--residuals", "displacement", "ComputeLiklihoodDisplacement"},
    OptionSynonym{"--residuals", "lmax", "ComputeLMAX"},
    OptionSynonym{"--contrast", "", "SpecifyLinearCombination"},
    OptionSynonym{"--pattern", "", "SpecifyCovariateValues"},
    OptionSynonym{"--survivor-type", "breslow", "SurvivorTypeBreslow"},
    OptionSynonym{"--survivor-type", "kaplan-meier", "SurvivorTypeKaplanMeier"},
    OptionSynonym{"--ci", "none", "ComputeSurvivorCI"},
    OptionSynonym{"--ci", "normal", "SurvivorCITypeNormal"},
    OptionSynonym{"--ci", "log", "SurvivorCITypeLog"},
    OptionSynonym{"--ci", "loglog", "SurvivorCITypeLogLog"},
    OptionSynonym{"--ph-transform", "identity", "PHTestIdentityTransform"},
    OptionSynonym{"--ph-transform", "log", "PHTestLogTransform"},
    OptionSynonym{"--ph-transform", "km", "PHTestKMTransform"},
    OptionSynonym{"--ph-transform", "rank", "PHTestRankTransform"},
    OptionSynonym{"--output", "", "OutputFiles"},
    OptionSynonym{"--format", "", "Format"},
    OptionSynonym{"--quiet", "", "Quiet"},
};

}  // namespace

std::span<const JobKey> JobKeys() {
  static const std::vector<JobKey> keys = [] {
    std::vector<JobKey> all = {kTable};
    all.insert(all.end(), kRoles.begin(), kRoles.end());
    AddProperties(all, JobSections::Startup, StartupProperties());
    AddProperties(all, JobSections::Results, ResultsProperties());
    all.insert(all.end(), kHostKeys.begin(), kHostKeys.end());
    return all;
  }();
  return keys;
}

const JobKey* FindJobKey(std::string_view name) {
  const std::span<const JobKey> keys = JobKeys();
  const auto found = std::find_if(keys.begin(), keys.end(), [name](const JobKey& key) { return key.Name == name; });
  return found == keys.end() ? nullptr : &*found;
}

std::string ShownName(const JobKey& key) {
  if (key.Section == JobSections::Variables) return "Variables." + std::string(key.Name);
  if (key.Section == JobSections::Host) return "Host." + std::string(key.Name);
  return std::string(key.Name);
}

std::string_view FormText(JobForm form) {
  switch (form) {
    case JobForm::Flag:
      return "true or false";
    case JobForm::WholeNumber:
      return "a whole number";
    case JobForm::Number:
      return "a number";
    case JobForm::Text:
      return "a text in quotes";
    case JobForm::Texts:
      return "a list of texts, such as [\"age\", \"dose\"]";
    case JobForm::Code:
      return "a number, or the label of a value in quotes";
    case JobForm::Codes:
      return "a list of numbers or labels, such as [1, 2]";
    case JobForm::CodeByFactor:
      return "a code for each factor, such as { arm = 2 }";
    case JobForm::CodesByFactor:
      return "a list of codes for each factor, such as { arm = [1, 2] }";
    case JobForm::StartValues:
      return "start values and numbers of held ones, such as { Values = [0.5, 0], Fixed = [1] }";
    case JobForm::Functions:
      return "lists with a number for each coefficient, such as [[1, 0], [0, 1]]";
    case JobForm::Patterns:
      return "a list of patterns, such as [{ age = 60, arm = 2 }]";
    case JobForm::NotYet:
      return "not available yet in this version";
  }
  return {};
}

std::span<const OptionSynonym> OptionSynonyms() {
  return kSynonyms;
}

std::string_view WordOf(std::string_view key) {
  const auto found = std::find_if(kSynonyms.begin(), kSynonyms.end(),
                                  [key](const OptionSynonym& synonym) { return synonym.Key == key; });
  return found == kSynonyms.end() ? std::string_view{} : found->Word;
}

std::string_view KeyOf(std::string_view option, std::string_view word) {
  const auto found = std::find_if(kSynonyms.begin(), kSynonyms.end(), [&](const OptionSynonym& synonym) {
    return synonym.Option == option && synonym.Word == word;
  });
  return found == kSynonyms.end() ? std::string_view{} : found->Key;
}

}  // namespace orv
