#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <vector>

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
      {"add --show survivor or hazard.", "add SurvivalCumulativeHazardSummary = true."},
      {"Add --robust.", "Add UseRobustVariance = true."},
      {"give these with --start-values.", "give these with EditParameterStatusValues.Values."},
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

// Every option that the sources of messages name in a text.
std::set<std::string> OptionsInMessages() {
  const std::filesystem::path root = ORV_SOURCE_DIR;
  std::vector<std::filesystem::path> files = {root / "apps/orvcox/RunReporting.cpp",
                                              root / "apps/orvcox/OutputTargets.cpp"};
  for (const auto& entry : std::filesystem::directory_iterator(root / "standalone/analysis")) {
    if (entry.path().extension() == ".cpp") files.push_back(entry.path());
  }
  const std::regex option("--[a-z][a-z-]*");
  std::set<std::string> options;
  for (const std::filesystem::path& file : files) {
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
      for (std::sregex_iterator match(line.begin(), line.end(), option), end; match != end; ++match) {
        if (line.find('"') < static_cast<std::size_t>(match->position())) options.insert(match->str());
      }
    }
  }
  return options;
}

TEST(JobWording, NoOptionOfAnyMessageIsLeft) {
  const std::set<std::string> options = OptionsInMessages();
  EXPECT_GT(options.size(), 30u);
  for (const std::string& option : options) {
    const std::string told = JobWording("trial.toml").Sentence("say " + option + ".");
    EXPECT_EQ(told.find("--"), std::string::npos) << told;
  }
}

}  // namespace
}  // namespace orv
