#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "inference/LinearHypothesis.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::TestAnalysis;

// Three parameters with an estimate and a covariance written by hand. The fourth row of values is never read.
class LinearHypothesisTest : public ::testing::Test {
 protected:
  LinearHypothesisTest()
      : analysis({{"time", {1, 2, 3, 4}},
                  {"status", {1, 1, 1, 1}},
                  {"a", {1, 4, 2, 8}},
                  {"b", {0, 1, 1, 0}},
                  {"c", {3, 1, 4, 1}}}) {
    analysis.Time({"time"}).Status("status").Covariates({"a", "b", "c"}).DefaultDesign();
    CCoxFit& fit = analysis.PrepareFit();
    fit.m_BetaHistory = {{9.0, 9.0, 9.0}, {2.0, -1.0, 0.5}};
    fit.m_Covariance = {{4.0, 1.0, 0.0}, {1.0, 2.0, 0.5}, {0.0, 0.5, 1.0}};
  }
  double Test(const DenseMatrix& L) {
    estimate = standardError = -77.0;
    df = failed = -77;
    return TestLinearHypothesis(analysis.Fit(), L, estimate, standardError, df, failed);
  }
  TestAnalysis analysis;
  double estimate = 0.0;
  double standardError = 0.0;
  int df = 0;
  int failed = 0;
};

TEST_F(LinearHypothesisTest, OneFunctionHasEstimateAndStandardError) {
  // 2 a + b: estimate 3; variance 4 * 4 + 2 + 2 * 2 * 1 = 22.
  const double chiSquare = Test({{2.0}, {1.0}, {0.0}});
  EXPECT_DOUBLE_EQ(estimate, 3.0);
  EXPECT_DOUBLE_EQ(standardError, std::sqrt(22.0));
  EXPECT_DOUBLE_EQ(chiSquare, 9.0 / 22.0);
  EXPECT_EQ(df, 1);
  EXPECT_EQ(failed, 0);
}

TEST_F(LinearHypothesisTest, SeveralFunctionsHaveAChiSquareOnly) {
  // a and b alone: (2, -1) {{4, 1}, {1, 2}}^-1 (2, -1)' = (2 4 + 4 + 4) / 7.
  const double chiSquare = Test({{1.0, 0.0}, {0.0, 1.0}, {0.0, 0.0}});
  EXPECT_NEAR(chiSquare, 16.0 / 7.0, 1e-14);
  EXPECT_EQ(df, 2);
  EXPECT_EQ(failed, 0);
  EXPECT_EQ(estimate, -77.0);
  EXPECT_EQ(standardError, -77.0);
}

TEST_F(LinearHypothesisTest, DependentFunctionsCountOnce) {
  const double both = Test({{1.0, 2.0, 0.0}, {0.0, 0.0, 1.0}, {0.0, 0.0, 0.0}});
  EXPECT_EQ(df, 2) << "the second is twice the first";
  EXPECT_EQ(failed, 0);
  EXPECT_NEAR(both, 16.0 / 7.0, 1e-14);
}

TEST_F(LinearHypothesisTest, FailsWithoutAnIndependentFunction) {
  const double chiSquare = Test({{0.0}, {0.0}, {0.0}});
  EXPECT_EQ(chiSquare, 0.0);
  EXPECT_EQ(df, 0);
  EXPECT_EQ(failed, 1);
  EXPECT_EQ(estimate, -77.0);
  EXPECT_EQ(standardError, -77.0);
}

TEST_F(LinearHypothesisTest, ParametersWithoutVarianceMakeNoFunction) {
  analysis.Fit().m_Covariance[2] = {0.0, 0.0, 0.0};
  analysis.Fit().m_Covariance[1][2] = 0.0;
  Test({{0.0}, {0.0}, {1.0}});
  EXPECT_EQ(failed, 1);
}

TEST_F(LinearHypothesisTest, NegativeVarianceHasNoStandardError) {
  analysis.Fit().m_Covariance[0][0] = -4.0;
  const double chiSquare = Test({{1.0}, {0.0}, {0.0}});
  EXPECT_EQ(failed, 0);
  EXPECT_EQ(df, 1);
  EXPECT_DOUBLE_EQ(estimate, 2.0);
  EXPECT_EQ(standardError, 0.0);
  EXPECT_DOUBLE_EQ(chiSquare, -1.0);
}

TEST_F(LinearHypothesisTest, FailsOnAFitWithoutCovariance) {
  analysis.Fit().m_Covariance.clear();
  EXPECT_EQ(Test({{1.0}, {0.0}, {0.0}}), 0.0);
  EXPECT_EQ(failed, 1);
  EXPECT_EQ(df, 0);
}

TEST_F(LinearHypothesisTest, ChangesNothingInTheFit) {
  const DenseMatrix covariance = analysis.Fit().m_Covariance;
  Test({{1.0, 0.0}, {0.0, 1.0}, {0.0, 1.0}});
  EXPECT_EQ(analysis.Fit().m_Covariance, covariance);
}

// All parameters at once: the Wald statistic of the whole model.
TEST(LinearHypothesis, OfAllParametersIsTheWaldTest) {
  TestAnalysis analysis({{"time", {1, 2, 3, 4, 5, 6, 7, 8}},
                         {"status", {1, 1, 0, 1, 1, 1, 0, 1}},
                         {"a", {1, 4, 2, 8, 5, 7, 3, 6}},
                         {"b", {0, 1, 1, 0, 1, 0, 1, 1}}});
  analysis.Time({"time"}).Status("status").Covariates({"a", "b"}).DefaultDesign();
  ASSERT_EQ(analysis.Run(), 0);
  const CCoxFit& fit = analysis.Fit();
  double estimate = 0.0;
  double standardError = 0.0;
  int df = 0;
  int failed = 1;
  const double chiSquare = TestLinearHypothesis(fit, {{1.0, 0.0}, {0.0, 1.0}}, estimate, standardError, df, failed);
  double wald = 0.0;
  for (std::size_t i = 0; i < 2; ++i) {
    for (std::size_t j = 0; j < 2; ++j) {
      wald += fit.m_BetaHistory.back()[i] * fit.m_Information[i][j] * fit.m_BetaHistory.back()[j];
    }
  }
  EXPECT_NEAR(chiSquare, wald, 1e-12);
  EXPECT_EQ(df, 2);
}

}  // namespace
}  // namespace orv
