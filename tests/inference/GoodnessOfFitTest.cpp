#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "inference/GoodnessOfFit.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::TestAnalysis;

// Eight cases, five complete; the fit is written by hand.
class GoodnessOfFitTest : public ::testing::Test {
 protected:
  GoodnessOfFitTest()
      : analysis({{"time", {1, 2, 3, 4, 5, 6, 7, 8}},
                  {"status", {1, 1, 1, 1, 1, 0, 0, 0}},
                  {"a", {1, 4, 2, 8, 5, 7, 1, 2}},
                  {"b", {0, 1, 1, 0, 1, 0, 1, 1}}}) {
    analysis.Time({"time"}).Status("status").Covariates({"a", "b"}).DefaultDesign();
    CCoxFit& fit = analysis.PrepareFit();
    fit.m_LogLikHistory = {-99.0, -20.0};
    fit.m_NullLogLik = -22.5;
    fit.m_ScoreStatistic = 4.25;
    fit.m_BetaHistory = {{9.0, 9.0}, {2.0, -1.0}};
    fit.m_Information = {{3.0, 0.5}, {0.5, 4.0}};
  }
  GoodnessOfFit Compute() { return ComputeGoodnessOfFit(analysis.Fit()); }
  TestAnalysis analysis;
};

TEST_F(GoodnessOfFitTest, FollowsItsFormulas) {
  const GoodnessOfFit goodness = Compute();
  EXPECT_DOUBLE_EQ(goodness.Minus2LogL, 40.0);
  EXPECT_DOUBLE_EQ(goodness.AIC, 44.0);
  EXPECT_DOUBLE_EQ(goodness.SBC, 2 * std::log(5.0) + 40.0) << "by complete cases, not by all";
  EXPECT_DOUBLE_EQ(goodness.R2, 1.0 - std::exp(-1.0));
  EXPECT_DOUBLE_EQ(goodness.Score, 4.25);
  EXPECT_DOUBLE_EQ(goodness.LikelihoodRatio, 5.0);
  EXPECT_DOUBLE_EQ(goodness.Wald, 4 * 3.0 - 2 * 2 * 0.5 + 4.0);
}

TEST_F(GoodnessOfFitTest, DroppedColumnsAreNoParameters) {
  analysis.Data().DesignColumns[1].Dropped = true;
  EXPECT_DOUBLE_EQ(Compute().AIC, 42.0);
  EXPECT_DOUBLE_EQ(Compute().SBC, std::log(5.0) + 40.0);
  analysis.Data().DesignColumns[0].Dropped = true;
  EXPECT_DOUBLE_EQ(Compute().AIC, 40.0);
}

TEST_F(GoodnessOfFitTest, ColumnsThatAreNoCoefficientsDoNotCount) {
  for (std::size_t c = analysis.Data().CoefficientCount; c < analysis.Data().DesignColumns.size(); ++c) {
    EXPECT_FALSE(analysis.Data().DesignColumns[c].Dropped) << "the record of a time must not be marked";
  }
  EXPECT_DOUBLE_EQ(Compute().AIC, 44.0);
}

TEST_F(GoodnessOfFitTest, R2StaysWithinZeroAndOne) {
  CCoxFit& fit = analysis.Fit();
  fit.m_LogLikHistory.back() = -5000.0;
  EXPECT_EQ(Compute().R2, 0.0) << "far below the null likelihood";
  fit.m_LogLikHistory.back() = -22.6;
  EXPECT_EQ(Compute().R2, 0.0) << "a little below the null likelihood";
  fit.m_LogLikHistory.back() = -1e-3;
  fit.m_NullLogLik = -5000.0;
  EXPECT_EQ(Compute().R2, 1.0);
}

TEST(GuardedR2, GuardsTheExponent) {
  struct {
    double x;
    double r2;
  } const cases[] = {
      {-1.0, 1.0 - std::exp(-1.0)},
      {0.0, 0.0},
      {0.5, 0.0},
      {709.7268, 0.0},
      {709.8, 0.0},
      {1e300, 0.0},
      {-709.7268, 1.0},
      {-709.8, 1.0},
      {-1e300, 1.0},
  };
  for (const auto& c : cases) EXPECT_EQ(GuardedR2(c.x), c.r2) << c.x;
}

TEST_F(GoodnessOfFitTest, WaldStatisticWithoutInformationIsZero) {
  CCoxFit& fit = analysis.Fit();
  fit.m_Information.clear();
  EXPECT_EQ(WaldStatistic(fit), 0.0);
  fit.m_BetaHistory.clear();
  EXPECT_EQ(WaldStatistic(fit), 0.0);
}

// Score, Wald and likelihood ratio of one parameter are close near the null; Wald is (b / s)^2.
TEST(WaldStatistic, OfOneParameterIsTheSquareOfItsRatio) {
  TestAnalysis analysis({{"time", {1, 2, 3, 4, 5, 6}}, {"status", {1, 1, 1, 0, 1, 1}}, {"a", {1, 4, 2, 8, 5, 3}}});
  analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
  ASSERT_EQ(analysis.Run(), 0);
  const CCoxFit& fit = analysis.Fit();
  const double b = fit.m_BetaHistory.back()[0];
  EXPECT_NEAR(WaldStatistic(fit), b * b / fit.m_Covariance[0][0], 1e-13);
}

}  // namespace
}  // namespace orv
