#include <gtest/gtest.h>

#include "standalone/jobs/JobWording.h"

namespace orv {
namespace {

JobWording Wording() {
  JobWording wording("trial.toml");
  wording.AddKey("Covariates", 4);
  wording.AddKey("UseDiscreteLikelihood", 7);
  wording.AddKey("ModelBuildingStepwiseSelection", 9);
  wording.AddPhrase("--time-covariate late:", "TimeDependentCovariateExpressions",
                    "TimeDependentCovariateExpressions late:");
  return wording;
}

TEST(JobWording, OptionsAreToldAsTheKeysThatSayTheSame) {
  struct {
    const char* Said;
    const char* Told;
  } const cases[] = {
      {"--covariates: no such.", "Variables.Covariates: no such."},
      {"--ties discrete is not offered with --time-covariate: use --ties efron or breslow.",
       "UseDiscreteLikelihood is not offered with TimeDependentCovariateNames: use UseEfronLikelihood or "
       "UseBreslowLikelihood."},
      {"--p-enter belongs to --select forward or stepwise.",
       "pToEnter belongs to ModelBuildingForwardSelection or ModelBuildingStepwiseSelection."},
      {"only with --select forward, backward, stepwise or best.",
       "only with ModelBuildingForwardSelection, ModelBuildingBackwardSelection, ModelBuildingStepwiseSelection or "
       "ModelBuildingBestSubsets."},
      {"add --show survivor or hazard.", "add SurvivalCumulativeHazardSummary."},
      {"--select is not offered.", "ModelBuildingStepwiseSelection is not offered."},
      {"--interval: \"x\" holds texts.", "Variables.Start and Variables.Stop: \"x\" holds texts."},
      {"--time: \"d\" holds dates. Use --dates START END, and so on.",
       "Variables.SurvivalTimes: \"d\" holds dates. Use Variables.SurvivalTimes = [START, END], and so on."},
      {"say it with --contrast \"X X X\", a number", "say it with SpecifyLinearCombination = [[X, X, X]], a number"},
      {"with --event CODE and --censored CODE.", "with CodeForCompleteResponses and CodeForCensoredResponses."},
      {"(--covariates V)", "(Variables.Covariates)"},
      {"--time-covariate late: at character 3", "TimeDependentCovariateExpressions late: at character 3"},
      {"--time-covariate: the table", "TimeDependentCovariateNames: the table"},
      {"raise --max-iterations, or choose another --converge or a smaller --tolerance-exponent.",
       "raise NumberOfIterations, or choose another convergence test or a smaller ConvergenceCriterion."},
      {"no options here - or there--either", "no options here - or there--either"},
      {"--unheard-of", "--unheard-of"},
  };
  for (const auto& c : cases) EXPECT_EQ(Wording().Sentence(c.Said), c.Told) << c.Said;
}

TEST(JobWording, WhatThePersonWroteStays) {
  EXPECT_EQ(Wording().Sentence("--factors: no variable \"--ties efron\" in trial.csv."),
            "Variables.Factors: no variable \"--ties efron\" in trial.csv.");
}

TEST(JobWording, AQuoteThatIsNotClosedHidesNothing) {
  EXPECT_EQ(Wording().Sentence("a quote \" and --robust"), "a quote \" and UseRobustVariance");
}

TEST(JobWording, ARefusalBeginsWithTheLineOfTheFirstKeyThatTheJobHas) {
  EXPECT_EQ(Wording().Refusal("--covariates: no."), "trial.toml:4: Variables.Covariates: no.");
  EXPECT_EQ(Wording().Refusal("--status: \"x\" is already used by --covariates."),
            "trial.toml:4: Variables.CensoringIndicator: \"x\" is already used by Variables.Covariates.");
  EXPECT_EQ(Wording().Refusal("--status is missing: name it."),
            "trial.toml: Variables.CensoringIndicator is missing: name it.");
}

}  // namespace
}  // namespace orv
