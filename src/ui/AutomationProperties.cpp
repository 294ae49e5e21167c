#include "ui/AutomationProperties.h"

#include <algorithm>

namespace orv {

namespace {

constexpr AutomationProperty kStartup[] = {
    {"Variables", PropertyKind::Variant, 1004, "Variables for analysis"},
    {"InputTypeSurvivalTime", PropertyKind::Choice, 1006, "Survival time, covariates, factors, censor",
     ChoiceGroup::InputType},
    {"InputTypeSurvivalTimeWithTimeCov", PropertyKind::Choice, 1044,
     "Survival time, covariates, factors, censor, time-dependent covariates", ChoiceGroup::InputType},
    {"InputTypeCountingProcess", PropertyKind::Choice, 1005, "Counting process style of input", ChoiceGroup::InputType},
    {"CodeForCompleteResponses", PropertyKind::Variant, 1041, "Complete code"},
    {"CodeForCensoredResponses", PropertyKind::Variant, 1043, "Censored code"},
    {"FactorCodes", PropertyKind::Variant, 1009, "Factor codes"},
    {"DesignEffects", PropertyKind::Variant, kCustom, "Design effects"},
    {"StrataCodes", PropertyKind::Variant, 1039, "Codes for strata variable"},
    {"TimeDependentCovariateNames", PropertyKind::Variant, kCustom, "Time dependent covariate names"},
    {"TimeDependentCovariateExpressions", PropertyKind::Variant, kCustom, "Time dependent covariate expressions"},
    {"UseBreslowLikelihood", PropertyKind::Choice, 1018, "Breslow likelihood", ChoiceGroup::Likelihood},
    {"UseEfronLikelihood", PropertyKind::Choice, 1019, "Efron likelihood", ChoiceGroup::Likelihood},
    {"UseDiscreteLikelihood", PropertyKind::Choice, 1020, "Discrete likelihood", ChoiceGroup::Likelihood},
    {"UseSigmaCoding", PropertyKind::Choice, 1022, "Sigma restricted coding of factors", ChoiceGroup::Coding},
    {"UseReferenceCoding", PropertyKind::Choice, 1110, "Reference coding of factors", ChoiceGroup::Coding},
    {"UseOverParameterizedCoding", PropertyKind::Choice, 1109, "Over-parameterized coding of factors",
     ChoiceGroup::Coding},
    {"ReferenceCategory", PropertyKind::Variant, 1078, "Reference category"},
    {"ModelBuildingAllEffects", PropertyKind::Choice, 1024, "Select all effects", ChoiceGroup::ModelBuilding},
    {"ModelBuildingForwardSelection", PropertyKind::Choice, 1027, "Forward selection", ChoiceGroup::ModelBuilding},
    {"ModelBuildingBackwardSelection", PropertyKind::Choice, 1028, "Backward selection", ChoiceGroup::ModelBuilding},
    {"ModelBuildingStepwiseSelection", PropertyKind::Choice, 1029, "Stepwise selection", ChoiceGroup::ModelBuilding},
    {"ModelBuildingBestSubsets", PropertyKind::Choice, 1025, "Best subsets", ChoiceGroup::ModelBuilding},
    {"pToEnter", PropertyKind::Real, 1158, "p value to enter"},
    {"pToRemove", PropertyKind::Real, 1160, "p value to remove"},
    {"NToForce", PropertyKind::Whole, 1161, "Number of effects to force into model"},
    {"UseRobustVariance", PropertyKind::Check, 1077, "Use Robust sandwich estimate of covariance matrix"},
    {"SubjectID", PropertyKind::Variant, 1155, "Subject id variable"},
    {"NumberOfIterations", PropertyKind::Whole, 1112, "Number of iterations"},
    {"UseAbsoluteLikelihoodConvergence", PropertyKind::Choice, 1123, "Absolute likelihood convergence",
     ChoiceGroup::Convergence},
    {"UseRelativeLikelihoodConvergence", PropertyKind::Choice, 1113, "Relative likelihood convergence",
     ChoiceGroup::Convergence},
    {"UseRelativeParameterConvergence", PropertyKind::Choice, 1114, "Relative parameter convergence",
     ChoiceGroup::Convergence},
    {"UseRelativeGradientConvergence", PropertyKind::Choice, 1115, "Relative gradient convergence",
     ChoiceGroup::Convergence},
    {"ConvergenceCriterion", PropertyKind::Whole, 1117, "Convergence criterion"},
    {"UseStartValues", PropertyKind::Check, 1118, "Start values"},
    {"DataFileThatContainsStartvaluesForParameter", PropertyKind::Variant, kCustom,
     "Data file that contains start values"},
    {"EditParameterStatusValues", PropertyKind::Variant, kCustom, "Estimate or set parameters to constant values"},
};

constexpr AutomationProperty kResults[] = {
    {"ConfidenceLevel", PropertyKind::Real, 1087, "Confidence level"},
    {"GoodnessOfFit", PropertyKind::Output, 1082, "Goodness of fit"},
    {"IterationHistory", PropertyKind::Output, 1166, "Iteration history"},
    {"ParameterEstimates", PropertyKind::Output, 1085, "Parameter estimates"},
    {"Type3Test", PropertyKind::Output, 5240, "Type 3 Test"},
    {"DesignTerms", PropertyKind::Output, 5239, "Design Terms"},
    {"CovarianceMatrix", PropertyKind::Output, 1167, "Covariance Matrix"},
    {"EstimateLinearCombination", PropertyKind::Output, 1083,
     "Estimate linear combinations, test significance of l'b=0"},
    {"SpecifyLinearCombination", PropertyKind::Variant, kCustom, "Specify linear combination"},
    {"ModelBuildingSummary", PropertyKind::Output, 1156, "Summary of model building steps"},
    {"ComputeMartingale", PropertyKind::Check, 1130, "Martingale residual"},
    {"ComputeDeviance", PropertyKind::Check, 1131, "Deviance residual"},
    {"ComputeScore", PropertyKind::Check, 1132, "Score residual"},
    {"ComputeSchoenfeld", PropertyKind::Check, 1133, "Schoenfeld residual"},
    {"ComputeScaledSchoenfeld", PropertyKind::Check, 1163, "Scaled Schoenfeld residual"},
    {"ComputeDfbeta", PropertyKind::Check, 1134, "DF beta"},
    {"ComputeXbeta", PropertyKind::Check, 1135, "Xbeta, linear predictor"},
    {"ComputeStdXBeta", PropertyKind::Check, 1169, "Standard error of linear predictor"},
    {"ComputeLiklihoodDisplacement", PropertyKind::Bool, 1136, "Likelihood displacement"},
    {"ComputeLMAX", PropertyKind::Bool, 1137, "LMax statistic"},
    {"ResidualSummary", PropertyKind::Output, 1128, "Residual summary"},
    {"SaveResidualsAndPredictedValues", PropertyKind::Output, 1168, "Residual summary and predicted values"},
    {"NumberOfCovariatePatterns", PropertyKind::Whole, 1106,
     "Number of covariate patterns for survival and cumulative hazard plot and spreadsheet"},
    {"SpecifyCovariateValues", PropertyKind::Variant, kCustom,
     "Specify covariate values for survival and cumulative hazard plot and spreadsheet"},
    {"ComputeSurvivorFunction", PropertyKind::Check, 1140, "Compute survivor function"},
    {"SurvivorTypeBreslow", PropertyKind::Choice, 1091, "Estimate survival function via Breslow method",
     ChoiceGroup::SurvivorType},
    {"SurvivorTypeKaplanMeier", PropertyKind::Choice, 1092, "Estimate survival function via KaplanMeier method",
     ChoiceGroup::SurvivorType},
    {"ComputeSurvivorCI", PropertyKind::Check, 1097, "Add confidence interval to survival plot and spreadsheet"},
    {"SurvivorCITypeLog", PropertyKind::Choice, 1099, "Log confidence interval for survival function",
     ChoiceGroup::SurvivorLimits},
    {"SurvivorCITypeNormal", PropertyKind::Choice, 1098, "Normal confidence interval for survival function",
     ChoiceGroup::SurvivorLimits},
    {"SurvivorCITypeLogLog", PropertyKind::Choice, 1100, "Log log confidence interval for survival function",
     ChoiceGroup::SurvivorLimits},
    {"ComputeCumulativeHazardFunction", PropertyKind::Check, 1141, "Compute cumulative hazard function"},
    {"ComputeCumulativeHazardCI", PropertyKind::Check, 1125,
     "Compute confidence interval for cumulative hazard function"},
    {"SurvivalCumulativeHazardPlot", PropertyKind::Output, 1089, "Survival/Cumulative Hazard plot"},
    {"SurvivalCumulativeHazardSummary", PropertyKind::Output, 1139, "Survival/Cumulative Hazard summary"},
    {"CategorizeByStrata", PropertyKind::Check, 1164, "Categorize plot by strata variable"},
    {"MarkByStatus", PropertyKind::Check, 1165, "Mark plot points as complete/censored"},
    {"SelectedItemX", PropertyKind::Variant, kCustom, "Select x variable for plot"},
    {"SelectedItemY", PropertyKind::Variant, kCustom, "Select y variable for plot"},
    {"MakeXHistogram", PropertyKind::Output, 1148, "Display histogram of selected x variable"},
    {"MakeXYScatterplot", PropertyKind::Output, 1149, "Display scatterplot of selected x and y variables"},
    {"CodeGeneratorCLang", PropertyKind::Output, 1172, "Generate C/C++ code"},
    {"CodeGeneratorPMML", PropertyKind::Output, 1171, "Generate PMML code"},
    {"PHTest", PropertyKind::Output, 5247, "Test proportionality assumption"},
    {"PHTestPlots", PropertyKind::Output, 5252,
     "Make scatterplot with lowess fit of g(time) vs. scaled Schoenfeld residuals"},
    {"PHTestIdentityTransform", PropertyKind::Choice, 5248, "Identity transform for test of proportionality",
     ChoiceGroup::TimeTransform},
    {"PHTestLogTransform", PropertyKind::Choice, 5249, "Log transform for test of proportionality",
     ChoiceGroup::TimeTransform},
    {"PHTestKMTransform", PropertyKind::Choice, 5250, "KM transform for test of proportionality",
     ChoiceGroup::TimeTransform},
    {"PHTestRankTransform", PropertyKind::Choice, 5251, "Rank transform for test of proportionality",
     ChoiceGroup::TimeTransform},
    {"CorrelationMatrix", PropertyKind::Output, 5256, "Correlation Matrix"},
    {"ComputeTime", PropertyKind::Whole, kCustom, "ComputeTime"},
    {"ComputeLikelihoodDisplacement", PropertyKind::Bool, 1136, "Likelihood displacement"},
};

}  // namespace

std::span<const AutomationProperty> StartupProperties() {
  return kStartup;
}

std::span<const AutomationProperty> ResultsProperties() {
  return kResults;
}

const AutomationProperty* FindProperty(std::span<const AutomationProperty> properties, std::string_view name) {
  const auto found = std::find_if(properties.begin(), properties.end(),
                                  [name](const AutomationProperty& property) { return property.Name == name; });
  return found == properties.end() ? nullptr : &*found;
}

}  // namespace orv
