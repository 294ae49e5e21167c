// The options of the results dialog as they start.
#include <gtest/gtest.h>

#include <cmath>

#include "support/TwoWayCases.h"
#include "ui/CCoxPHResults.h"

namespace orv {
namespace {

using namespace testing;

TEST(CCoxPHResults, StartsWithTheOptionsOfTheDialog) {
  TestAnalysis analysis(TwoWayCases(kBalanced));
  SelectTwoWay(analysis, Codings::Reference, {{"x", "v3"}});
  ASSERT_EQ(analysis.Run(), 0);
  const CCoxPHResults results(analysis.Analysis);
  EXPECT_EQ(results.ConfidenceLevel, 0.95);
  EXPECT_EQ(results.Survivor, SurvivorType::Breslow);
  EXPECT_EQ(results.SurvivorCI, SurvivorCIType::Normal);
  EXPECT_TRUE(results.ComputeSurvivorFunction);
  EXPECT_TRUE(results.ComputeSurvivorCI);
  EXPECT_FALSE(results.ComputeCumulativeHazardFunction);
  EXPECT_FALSE(results.ComputeCumulativeHazardCI);
  EXPECT_EQ(results.NumberOfCovariatePatterns, 1);
  EXPECT_EQ(results.Transform, TimeTransform::Identity);
  EXPECT_TRUE(results.Patterns.DesignRows.empty());
  EXPECT_TRUE(results.Residuals.ComputeMartingale);
  EXPECT_TRUE(results.Residuals.ComputeDeviance);
  EXPECT_TRUE(results.Residuals.ComputeCoxSnell);
  const ResidualChoices& residuals = results.Residuals;
  for (const bool choice : {residuals.ComputeScore, residuals.ComputeSchoenfeld, residuals.ComputeScaledSchoenfeld,
                            residuals.ComputeDfbeta, residuals.ComputeXbeta, residuals.ComputeStdXBeta,
                            residuals.ComputeLikelihoodDisplacement, residuals.ComputeLMAX}) {
    EXPECT_FALSE(choice);
  }
}

TEST(CCoxPHResults, WithoutColumnsNoResidualIsChosen) {
  TestAnalysis analysis(TwoWayCases(kBalanced));
  SelectTwoWay(analysis, Codings::Reference, {});
  ASSERT_EQ(analysis.Run(), 0);
  const CCoxPHResults results(analysis.Analysis);
  EXPECT_FALSE(results.Residuals.ComputeMartingale);
  EXPECT_FALSE(results.Residuals.ComputeDeviance);
  EXPECT_FALSE(results.Residuals.ComputeCoxSnell);
}

TEST(CCoxPHResults, IntervalsStartWithoutDeviance) {
  TestAnalysis analysis(
      {{"start", {0, 0, 1, 2}}, {"stop", {3, 2, 5, 4}}, {"status", {1, 1, 1, 0}}, {"x", {1, 3, 2, 4}}});
  analysis.Interval("start", "stop").Status("status").Covariates({"x"}).DefaultDesign();
  ASSERT_EQ(analysis.Run(), 0);
  const CCoxPHResults results(analysis.Analysis);
  EXPECT_TRUE(results.Residuals.ComputeMartingale);
  EXPECT_FALSE(results.Residuals.ComputeDeviance);
}

TEST(CCoxPHResults, WithoutABaselineThereIsNoMartingaleResidual) {
  TestAnalysis analysis(TwoWayCases(kBalanced));
  SelectTwoWay(analysis, Codings::Reference, {{"x", "v3"}});
  ASSERT_EQ(analysis.Run(), 0);
  analysis.Fit().m_BreslowValid = false;
  CCoxPHResults results(analysis.Analysis);
  EXPECT_FALSE(results.Residuals.ComputeMartingale);
  EXPECT_FALSE(results.Residuals.ComputeDeviance);
  ResidualChoices choices;
  choices.ComputeDeviance = choices.ComputeScore = true;
  EXPECT_FALSE(results.AvailableResiduals(choices).ComputeDeviance);
  EXPECT_TRUE(results.AvailableResiduals(choices).ComputeScore);
}

TEST(CCoxPHResults, LevelOutsideTheIntervalIsReset) {
  constexpr const char* kMessage =
      "Confidence level is not in the interval (0,1).  The confidence level is reset to 0.95.";
  TestAnalysis analysis(TwoWayCases(kBalanced));
  SelectTwoWay(analysis, Codings::Reference, {{"x", "v3"}});
  ASSERT_EQ(analysis.Run(), 0);
  CCoxPHResults results(analysis.Analysis);
  for (const double level : {0.9, 1e-9, 0.99999}) {
    EXPECT_EQ(results.ReadConfidenceLevel(level), 0) << level;
    EXPECT_EQ(results.ConfidenceLevel, level);
  }
  EXPECT_TRUE(analysis.Host.Messages().empty());
  for (const double level : {0.0, 1.0, -0.5, 95.0, std::nan("")}) {
    const std::size_t before = analysis.Host.Messages().size();
    results.ConfidenceLevel = 0.5;
    EXPECT_EQ(results.ReadConfidenceLevel(level), 1) << level;
    EXPECT_EQ(results.ConfidenceLevel, 0.95);
    ASSERT_EQ(analysis.Host.Messages().size(), before + 1);
    EXPECT_EQ(analysis.Host.Messages().back(), kMessage);
  }
}

}  // namespace
}  // namespace orv
