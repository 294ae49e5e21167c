#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "inference/LinearCombinations.h"
#include "support/TestAnalysis.h"
#include "support/TestMatrix.h"

namespace orv {
namespace {

using testing::TestAnalysis;
using Vector = std::vector<double>;
namespace Statuses = LinearCombinationStatuses;

DenseMatrix IdentityMatrix(std::size_t p) {
  DenseMatrix I(p, Vector(p, 0.0));
  for (std::size_t j = 0; j < p; ++j) I[j][j] = 1.0;
  return I;
}

// The projection on the directions that are orthogonal to `null`.
DenseMatrix ProjectionBeside(const Vector& null) {
  double square = 0.0;
  for (const double value : null) square += value * value;
  DenseMatrix H = IdentityMatrix(null.size());
  for (std::size_t i = 0; i < null.size(); ++i) {
    for (std::size_t j = 0; j < null.size(); ++j) H[i][j] -= null[i] * null[j] / square;
  }
  return H;
}

// Three parameters with a projection and a covariance written by hand.
class LinearCombinationsTest : public ::testing::Test {
 protected:
  LinearCombinationsTest()
      : analysis({{"time", {1, 2, 3, 4, 5, 6}},
                  {"status", {1, 1, 1, 1, 1, 1}},
                  {"a", {1, 4, 2, 8, 5, 7}},
                  {"b", {0, 1, 1, 0, 0, 1}},
                  {"c", {3000, 1000, 4000, 1000, 5000, 9000}}}) {
    analysis.Time({"time"}).Status("status").Covariates({"a", "b", "c"}).DefaultDesign();
    CCoxFit& fit = analysis.PrepareFit();
    fit.m_BetaHistory = {{2.0, -1.0, 0.5}};
    fit.m_Covariance = {{4.0, 1.0, 0.0}, {1.0, 2.0, 0.5}, {0.0, 0.5, 1.0}};
    fit.m_NullProjection = IdentityMatrix(3);
  }
  int Validate(const DenseMatrix& L) { return ValidateLinearCombinations(analysis.Analysis, L); }
  TestAnalysis analysis;
};

TEST_F(LinearCombinationsTest, FullRankDesignTakesEveryFunction) {
  EXPECT_EQ(Validate({{1.0}, {0.0}, {0.0}}), Statuses::Usable);
  EXPECT_EQ(Validate({{0.1}, {-2.0}, {1e6}}), Statuses::Usable);
  EXPECT_EQ(Validate({{1.0, 0.0, 1.0}, {0.0, 1.0, 1.0}, {0.0, 0.0, 3.0}}), Statuses::Usable);
}

TEST_F(LinearCombinationsTest, FunctionOfAnAliasedParameterIsNotEstimable) {
  // The third column is constant or held fixed: the projection has nothing of it.
  analysis.Fit().m_NullProjection[2][2] = 0.0;
  EXPECT_EQ(Validate({{0.0}, {0.0}, {1.0}}), Statuses::NotEstimable);
  EXPECT_EQ(Validate({{1.0}, {0.0}, {1.0}}), Statuses::NotEstimable);
  EXPECT_EQ(Validate({{1.0}, {-1.0}, {0.0}}), Statuses::Usable);
}

TEST_F(LinearCombinationsTest, EveryFunctionMustBeEstimable) {
  analysis.Fit().m_NullProjection[2][2] = 0.0;
  EXPECT_EQ(Validate({{1.0, 0.0}, {0.0, 0.0}, {0.0, 1.0}}), Statuses::NotEstimable);
  EXPECT_EQ(Validate({{0.0, 0.0}, {0.0, 0.0}, {1.0, 2.0}}), Statuses::NotEstimable) << "before they are dependent";
}

// The projection is one of the standardised columns, which the functions are not: a null direction (1, 1, 1) of the
// data is that of the deviations there.
TEST_F(LinearCombinationsTest, FunctionsCountOnTheScaleOfTheData) {
  Vector null;
  for (std::size_t j = 0; j < 3; ++j) null.push_back(analysis.Data().DesignColumns[j].StdDev);
  ASSERT_GT(null[2] / null[1], 1e3) << "the scales must differ";
  analysis.Fit().m_NullProjection = ProjectionBeside(null);
  EXPECT_EQ(Validate({{1.0}, {-1.0}, {0.0}}), Statuses::Usable);
  EXPECT_EQ(Validate({{1.0}, {1.0}, {-2.0}}), Statuses::Usable);
  EXPECT_EQ(Validate({{0.5, 0.0}, {0.5, 1.0}, {-1.0, -1.0}}), Statuses::Usable);
  EXPECT_EQ(Validate({{1.0}, {0.0}, {0.0}}), Statuses::NotEstimable);
  EXPECT_EQ(Validate({{0.0}, {1.0}, {0.0}}), Statuses::NotEstimable);
  EXPECT_EQ(Validate({{1.0}, {1.0}, {1.0}}), Statuses::NotEstimable);
}

// Covariates that depend on time are fitted as they are.
TEST_F(LinearCombinationsTest, TimeDependentColumnsAreNotStandardised) {
  analysis.Fit().m_InputType = InputTypes::TimeDependent;
  analysis.Fit().m_NullProjection = ProjectionBeside({1.0, 1.0, 1.0});
  EXPECT_EQ(Validate({{1.0}, {-1.0}, {0.0}}), Statuses::Usable);
  EXPECT_EQ(Validate({{1.0}, {0.0}, {0.0}}), Statuses::NotEstimable);
}

TEST_F(LinearCombinationsTest, FunctionMayMissItsProjectionByATenThousandthOfItsScale) {
  struct {
    double missing;
    double scale;
    int status;
  } const cases[] = {
      {0.9e-4, 1.0, Statuses::Usable},     {1.1e-4, 1.0, Statuses::NotEstimable},
      {0.9e-4, -1000.0, Statuses::Usable}, {1.1e-4, -1000.0, Statuses::NotEstimable},
      {0.9e-4, 1e-12, Statuses::Usable},   {1.1e-4, 1e-12, Statuses::NotEstimable},
      {1.0, 1e-15, Statuses::Usable},      {1.0, 1.1e-15, Statuses::NotEstimable},
  };
  for (const auto& c : cases) {
    analysis.Fit().m_NullProjection[1][1] = 1.0 - c.missing;
    EXPECT_EQ(Validate({{0.0}, {c.scale}, {0.0}}), c.status) << c.missing << ' ' << c.scale;
  }
}

TEST_F(LinearCombinationsTest, ProportionalFunctionsAreNotIndependent) {
  EXPECT_EQ(Validate({{1.0, 2.0}, {-1.0, -2.0}, {0.0, 0.0}}), Statuses::NotIndependent);
  EXPECT_EQ(Validate({{0.1, 0.3}, {0.2, 0.6}, {0.7, 2.1}}), Statuses::NotIndependent) << "but for rounding";
  EXPECT_EQ(Validate({{1e-9, 1e9}, {0.0, 0.0}, {0.0, 0.0}}), Statuses::NotIndependent);
  EXPECT_EQ(Validate({{1.0, 1.0}, {0.0, 1e-3}, {0.0, 0.0}}), Statuses::Usable) << "close, and yet two";
}

TEST_F(LinearCombinationsTest, SumsOfOthersAreNotIndependent) {
  EXPECT_EQ(Validate({{1.0, 0.0, 1.0}, {0.0, 1.0, 1.0}, {0.0, 0.0, 0.0}}), Statuses::NotIndependent);
  EXPECT_EQ(Validate({{1, 0, 0, 1}, {0, 1, 0, 2}, {0, 0, 1, 3}}), Statuses::NotIndependent) << "more than parameters";
}

// A pivot of 0 that an exchange of rows can help is no failure.
TEST_F(LinearCombinationsTest, IndependenceDoesNotDependOnTheOrder) {
  analysis.Fit().m_Covariance = {{1.0, 0.999, 0.999}, {0.999, 1.0, 0.9985}, {0.999, 0.9985, 1.0}};
  EXPECT_EQ(Validate({{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}), Statuses::Usable);
  EXPECT_EQ(Validate({{0.0, 0.0, 1.0}, {0.0, 1.0, 0.0}, {1.0, 0.0, 0.0}}), Statuses::Usable);
}

TEST_F(LinearCombinationsTest, FunctionWithoutVarianceIsNotIndependent) {
  analysis.Fit().m_Covariance[2] = {0.0, 0.0, 0.0};
  analysis.Fit().m_Covariance[1][2] = 0.0;
  EXPECT_EQ(Validate({{1.0, 0.0}, {0.0, 0.0}, {0.0, 1.0}}), Statuses::NotIndependent);
  EXPECT_EQ(Validate({{0.0}, {0.0}, {1.0}}), Statuses::Usable) << "one function is not asked for independence";
}

TEST_F(LinearCombinationsTest, RobustCovarianceDecidesOnIndependenceOnly) {
  analysis.Settings().UseRobustVariance = true;
  // Of rank 1, as with a single cluster.
  analysis.Fit().m_RobustCovariance = {{1.0, 2.0, 3.0}, {2.0, 4.0, 6.0}, {3.0, 6.0, 9.0}};
  const DenseMatrix two = {{1.0, 0.0}, {0.0, 1.0}, {0.0, 0.0}};
  EXPECT_EQ(Validate(two), Statuses::NotIndependent);
  EXPECT_EQ(Validate({{1.0}, {1.0}, {0.0}}), Statuses::Usable);
  analysis.Settings().UseRobustVariance = false;
  EXPECT_EQ(Validate(two), Statuses::Usable);
  analysis.Settings().UseRobustVariance = true;
  analysis.Fit().m_RobustCovariance = IdentityMatrix(3);
  EXPECT_EQ(Validate(two), Statuses::Usable);
  analysis.Fit().m_NullProjection[2][2] = 0.0;
  EXPECT_EQ(Validate({{0.0}, {0.0}, {1.0}}), Statuses::NotEstimable);
}

TEST_F(LinearCombinationsTest, FitWithoutProjectionOrCovarianceRefuses) {
  analysis.Fit().m_Covariance.clear();
  EXPECT_EQ(Validate({{1.0, 0.0}, {0.0, 1.0}, {0.0, 0.0}}), Statuses::NotIndependent);
  analysis.Fit().m_NullProjection.clear();
  EXPECT_EQ(Validate({{1.0}, {0.0}, {0.0}}), Statuses::NotEstimable);
  EXPECT_EQ(Validate(DenseMatrix(3)), Statuses::Usable) << "no function, nothing to refuse";
}

TEST_F(LinearCombinationsTest, NumbersThatAreNoneAreNotEstimable) {
  EXPECT_EQ(Validate({{std::nan("")}, {1.0}, {0.0}}), Statuses::NotEstimable);
  EXPECT_EQ(Validate({{INFINITY}, {1.0}, {0.0}}), Statuses::NotEstimable);
}

}  // namespace
}  // namespace orv
