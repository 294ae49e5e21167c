#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/standalone/jobs/Jobs.h"

namespace orv {
namespace {

using testing::JobOf;
using testing::kLeastJob;
using Texts = std::vector<std::string>;

ResultDefinition ResultsOf(const std::string& keys) {
  return JobOf(kLeastJob + "[CoxPHResults]\n" + keys).Results;
}

Texts Without(Texts names, const std::string& left) {
  std::erase(names, left);
  return names;
}

TEST(ReadJobResults, OutputsThatAreTrueAreShown) {
  struct {
    const char* Keys;
    Texts Shown;
  } const cases[] = {
      {"", {"summary", "estimates"}},
      {"GoodnessOfFit = false\n", {"estimates"}},
      {"PHTest = true\nDesignTerms = true\n", {"design", "phtest"}},
      {"SurvivalCumulativeHazardSummary = true\n", {"survivor"}},
      {"SurvivalCumulativeHazardSummary = true\nComputeCumulativeHazardFunction = true\n", {"survivor", "hazard"}},
      {"SurvivalCumulativeHazardSummary = true\nComputeCumulativeHazardFunction = true\n"
       "ComputeSurvivorFunction = false\n",
       {"hazard"}},
      {"CorrelationMatrix = true\nCovarianceMatrix = true\nIterationHistory = true\nType3Test = true\n",
       {"type3", "history", "covariance", "correlation"}},
      {"CodeGeneratorPMML = false\nPHTestPlots = false\nPHTest = true\n", {"phtest"}},
      {"[Host]\nAllResults = true\n", ShowNames()},
      {"PHTest = false\n[Host]\nAllResults = true\n", Without(ShowNames(), "phtest")},
      {"ComputeSurvivorFunction = false\n[Host]\nAllResults = true\n", Without(ShowNames(), "survivor")},
      {"SurvivalCumulativeHazardSummary = false\n[Host]\nAllResults = true\n",
       Without(Without(ShowNames(), "survivor"), "hazard")},
  };
  for (const auto& c : cases) EXPECT_EQ(ResultsOf(c.Keys).Results, c.Shown) << c.Keys;
}

TEST(ReadJobResults, MartingaleAndDevianceAreOnUntilTheyAreTakenOut) {
  struct {
    const char* Keys;
    Texts Residuals;
  } const cases[] = {
      {"", {}},
      {"ComputeScore = true\n", {"martingale", "deviance", "score"}},
      {"ComputeDeviance = false\nComputeLMAX = true\n", {"martingale", "lmax"}},
      {"ComputeMartingale = false\nComputeDeviance = false\nComputeXbeta = true\n", {"xbeta"}},
      {"ComputeLiklihoodDisplacement = true\n", {"martingale", "deviance", "displacement"}},
      {"ComputeLiklihoodDisplacement = true\nComputeLikelihoodDisplacement = true\n",
       {"martingale", "deviance", "displacement"}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ResultsOf(std::string("ResidualSummary = true\n") + c.Keys).Residuals, c.Residuals) << c.Keys;
  }
}

TEST(ReadJobResults, IntervalsHaveNoDevianceUnlessItIsAskedFor) {
  const std::string job =
      "Table = \"t.csv\"\nCoxPHStartup.Variables = { Start = \"a\", Stop = \"b\", CensoringIndicator = \"s\" }\n"
      "[CoxPHResults]\nResidualSummary = true\n";
  EXPECT_EQ(JobOf(job + "ComputeScore = true\n").Results.Residuals, (Texts{"martingale", "score"}));
  EXPECT_EQ(JobOf(job + "ComputeDeviance = true\n").Results.Residuals, (Texts{"martingale", "deviance"}));
}

TEST(ReadJobResults, FunctionsAndPatternsAreThoseOfTheOptions) {
  const ResultDefinition results = ResultsOf(
      "ConfidenceLevel = 0.9\n"
      "EstimateLinearCombination = true\n"
      "SpecifyLinearCombination = [[1, -0.5], [0, 1e3]]\n"
      "SurvivalCumulativeHazardSummary = true\n"
      "NumberOfCovariatePatterns = 2\n"
      "SpecifyCovariateValues = [{ age = 60.5, arm = \"drug, high\" }, { \"a,b\" = 1 }]\n"
      "SurvivorTypeKaplanMeier = true\n"
      "SurvivorCITypeLogLog = true\n"
      "ComputeCumulativeHazardCI = false\n"
      "PHTest = true\n"
      "PHTestKMTransform = true\n");
  EXPECT_EQ(results.Confidence, 0.9);
  EXPECT_EQ(results.Contrasts, (Texts{"1 -0.5", "0 1000"}));
  EXPECT_EQ(results.Patterns, (Texts{"age=60.5, arm=\"drug, high\"", "\"a,b\"=1"}));
  EXPECT_EQ(results.SurvivorType, "kaplan-meier");
  EXPECT_EQ(results.CI, "loglog");
  EXPECT_TRUE(results.HasSurvivorLimits);
  EXPECT_FALSE(results.HasHazardLimits);
  EXPECT_EQ(results.Transform, "km");
}

TEST(ReadJobResults, OneFunctionAndOnePatternNeedNoList) {
  const ResultDefinition results = ResultsOf(
      "EstimateLinearCombination = true\nSpecifyLinearCombination = [1, 2]\n"
      "SurvivalCumulativeHazardSummary = true\nSpecifyCovariateValues = { age = 60 }\n");
  EXPECT_EQ(results.Contrasts, Texts{"1 2"});
  EXPECT_EQ(results.Patterns, Texts{"age=60"});
}

}  // namespace
}  // namespace orv
