#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "fit/TwelveCases.h"
#include "inference/HandWrittenFit.h"
#include "inference/InfluenceMeasures.h"
#include "inference/ScoreResiduals.h"

namespace orv {
namespace {

using testing::DefineForm;
using testing::ExpectNear;
using testing::ForRandomFits;
using testing::RandomForm;
using testing::RandomSurvivalColumns;
using testing::SortedCase;
using testing::SortedCasesOf;
using testing::TestAnalysis;
using testing::TwelveCaseAnalysis;
using testing::WriteFit;
using Vector = std::vector<double>;

// The first left singular vector of the rows of one stratum, two columns: the eigenvector of B'B has a closed form.
Vector LiteralLmax(const CCoxFit& fit, const std::vector<SortedCase>& cases) {
  const DenseMatrix& V = fit.m_Covariance;
  const double f00 = std::sqrt(V[0][0]);
  const double f10 = V[1][0] / f00;
  const double f11 = std::sqrt(V[1][1] - f10 * f10);
  Vector lmax(cases.size());
  for (std::size_t first = 0; first < cases.size();) {
    std::size_t end = first;
    DenseMatrix B;
    double square[3] = {0.0, 0.0, 0.0};
    for (; end < cases.size() && cases[end].g == cases[first].g; ++end) {
      const double root = std::sqrt(cases[end].w);
      const double u0 = root * fit.m_ScoreResiduals[0][end];
      const double u1 = root * fit.m_ScoreResiduals[1][end];
      B.push_back({u0 * f00 + u1 * f10, u1 * f11});
      square[0] += B.back()[0] * B.back()[0];
      square[1] += B.back()[0] * B.back()[1];
      square[2] += B.back()[1] * B.back()[1];
    }
    const double angle = 0.5 * std::atan2(2.0 * square[1], square[0] - square[2]);
    double norm = 0.0;
    for (Vector& row : B) {
      row[0] = row[0] * std::cos(angle) + row[1] * std::sin(angle);
      norm += row[0] * row[0];
    }
    for (std::size_t i = first; i < end; ++i) {
      lmax[i] = std::abs(B[i - first][0]) / std::sqrt(norm) / std::sqrt(cases[i].w);
    }
    first = end;
  }
  return lmax;
}

TEST(InfluenceMeasures, AgreeWithTheirDefinition) {
  ForRandomFits([](CCoxFit& fit, const Vector& beta, const RandomForm&) {
    const std::vector<SortedCase> cases = SortedCasesOf(fit, beta);
    const DenseMatrix& V = fit.m_Covariance;
    ComputeLikelihoodDisplacement(fit);
    ComputeStdErrorXBeta(fit);
    ASSERT_TRUE(ComputeLmax(fit));
    Vector displacement;
    Vector errors;
    const auto form = [&](double a, double b) { return a * a * V[0][0] + 2.0 * a * b * V[0][1] + b * b * V[1][1]; };
    for (std::size_t i = 0; i < cases.size(); ++i) {
      displacement.push_back(form(fit.m_ScoreResiduals[0][i], fit.m_ScoreResiduals[1][i]));
      errors.push_back(std::sqrt(form(cases[i].x[0], cases[i].x[1])));
    }
    ExpectNear(fit.m_LikelihoodDisplacement, displacement, 1e-12);
    ExpectNear(fit.m_StdErrorXBeta, errors, 1e-13);
    ExpectNear(fit.m_Lmax, LiteralLmax(fit, cases), 1e-9);
  });
}

TEST(Lmax, IsAUnitVectorInEachStratum) {
  TestAnalysis analysis(RandomSurvivalColumns(9, 60, false));
  DefineForm(analysis, {"", false, true, true, false});
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Efron, {0.7, -0.4});
  ASSERT_TRUE(ComputeLmax(fit));
  const std::vector<SortedCase> cases = SortedCasesOf(fit, {0.7, -0.4});
  double sums[4] = {};
  for (std::size_t i = 0; i < cases.size(); ++i) {
    sums[static_cast<int>(cases[i].g)] += cases[i].w * fit.m_Lmax[i] * fit.m_Lmax[i];
  }
  for (const int g : {1, 2, 3}) EXPECT_NEAR(sums[g], 1.0, 1e-12) << "strata are not on a common scale: " << g;
}

// Two cases and three parameters: rows of zeros complete the stratum. What one of the two takes from the risk set the
// other gives, so both have the same influence.
TEST(Lmax, StratumWithFewerCasesThanParametersHasValues) {
  TestAnalysis analysis({{"time", {1, 2, 3, 4, 5, 6, 1, 2}},
                         {"status", {1, 1, 0, 1, 1, 0, 1, 0}},
                         {"a", {1, 3, 8, 4, 2, 5, 1, 2}},
                         {"b", {0, 1, 1, 0, 1, 0, 3, 1}},
                         {"c", {2, 1, 4, 0, 1, 1, 0, 5}},
                         {"g", {1, 1, 1, 1, 1, 1, 2, 2}}});
  analysis.Time({"time"}).Status("status").Covariates({"a", "b", "c"}).Strata("g", {1, 2}).DefaultDesign();
  CCoxFit& fit = analysis.PrepareFit();
  fit.m_BetaHistory = {{0.0, 0.0, 0.0}};
  fit.m_Covariance = {{2.0, 0.5, 0.0}, {0.5, 1.0, -0.25}, {0.0, -0.25, 3.0}};
  ASSERT_TRUE(ComputeLmax(fit));
  ASSERT_EQ(fit.m_Lmax.size(), 8U);
  EXPECT_NEAR(fit.m_Lmax[6], std::sqrt(0.5), 1e-12);
  EXPECT_NEAR(fit.m_Lmax[7], std::sqrt(0.5), 1e-12);
}

// A covariate that repeats another has no part in the direction.
TEST(Lmax, DroppedColumnsDoNotTakePart) {
  Vector found[2];
  for (const bool aliased : {false, true}) {
    TwelveCaseAnalysis analysis(aliased ? std::vector<std::string>{"a", "b", "twice"}
                                        : std::vector<std::string>{"a", "b"});
    ASSERT_EQ(analysis.Run(), 0);
    ASSERT_TRUE(ComputeLmax(analysis.Fit()));
    found[aliased ? 1 : 0] = analysis.Fit().m_Lmax;
  }
  ExpectNear(found[1], found[0], 1e-7);
}

TEST(Lmax, FailsWithoutAColumnThatTookPart) {
  TestAnalysis analysis(RandomSurvivalColumns(1, 20, false));
  DefineForm(analysis, {});
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.1, 0.2});
  for (CoxDesignColumn& column : analysis.Data().DesignColumns) column.Dropped = true;
  EXPECT_FALSE(ComputeLmax(fit));
  EXPECT_TRUE(fit.m_Lmax.empty());
  TwelveCaseAnalysis empty;
  CCoxFit& none = empty.PrepareFit();
  none.m_BetaHistory = {{}};
  EXPECT_FALSE(ComputeLmax(none)) << "no columns at all";
}

TEST(Lmax, FailsOnACovarianceThatIsNotDefinite) {
  TestAnalysis analysis(RandomSurvivalColumns(1, 20, false));
  DefineForm(analysis, {});
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.1, 0.2});
  fit.m_Covariance = {{1.0, 2.0}, {2.0, 1.0}};
  EXPECT_FALSE(ComputeLmax(fit));
  EXPECT_TRUE(fit.m_Lmax.empty());
}

TEST(Lmax, FailsWithoutMemory) {
  TestAnalysis analysis(RandomSurvivalColumns(4, 30, false));
  DefineForm(analysis, {"", false, true, false, false});
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Efron, {0.3, -0.2});
  const int before = analysis.Host.LiveBlocks();
  analysis.Host.FailAllocation(0);
  ASSERT_TRUE(ComputeLmax(fit));
  const int requests = analysis.Host.Requests();
  ASSERT_GT(requests, 0);
  for (int failing = 1; failing <= requests; ++failing) {
    fit.m_Lmax.clear();
    analysis.Host.FailAllocation(failing);
    EXPECT_FALSE(ComputeLmax(fit)) << failing;
    EXPECT_TRUE(fit.m_Lmax.empty()) << failing;
    EXPECT_EQ(analysis.Host.LiveBlocks(), before) << failing;
  }
}

// A covariance spoilt by rounding or worse gives an error of 0, not one that is not a number.
TEST(StdErrorXBeta, IsZeroForAVarianceThatIsNegativeOrNotANumber) {
  for (const double variance : {-1.0, std::numeric_limits<double>::quiet_NaN()}) {
    TestAnalysis analysis(RandomSurvivalColumns(1, 20, false));
    DefineForm(analysis, {});
    CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.1, 0.2});
    fit.m_Covariance = {{variance, 0.0}, {0.0, variance}};
    ComputeStdErrorXBeta(fit);
    EXPECT_EQ(fit.m_StdErrorXBeta, Vector(20, 0.0)) << variance;
  }
}

TEST(InfluenceMeasures, AreComputedOnlyWhenAbsent) {
  TestAnalysis analysis(RandomSurvivalColumns(1, 20, false));
  DefineForm(analysis, {});
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.1, 0.2});
  const Vector mark(20, 0.25);
  fit.m_LikelihoodDisplacement = fit.m_StdErrorXBeta = fit.m_Lmax = mark;
  ComputeLikelihoodDisplacement(fit);
  ComputeStdErrorXBeta(fit);
  EXPECT_TRUE(ComputeLmax(fit));
  EXPECT_EQ(fit.m_LikelihoodDisplacement, mark);
  EXPECT_EQ(fit.m_StdErrorXBeta, mark);
  EXPECT_EQ(fit.m_Lmax, mark);
}

// The save of influence measures fills the residuals by the kernel for survival times beforehand, whatever the input;
// what is filled is taken as it is.
TEST(InfluenceMeasures, TakeScoreResidualsThatAreThere) {
  TestAnalysis analysis(RandomSurvivalColumns(5, 40, false));
  DefineForm(analysis, {"", true, true, true, false});
  const Vector beta = {0.7, -0.4};
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Efron, beta);
  fit.m_ScoreResiduals = SurvivalScoreResiduals(fit, beta.data());
  const DenseMatrix filled = fit.m_ScoreResiduals;
  ASSERT_NE(filled, CountingScoreResiduals(fit, beta.data()));
  ComputeLikelihoodDisplacement(fit);
  EXPECT_EQ(fit.m_ScoreResiduals, filled);
  for (std::size_t i = 0; i < 40; ++i) {
    EXPECT_NEAR(fit.m_DfBeta[0][i], 0.5 * filled[0][i] - 0.125 * filled[1][i], 1e-13) << i;
  }
}

// What a cancelled fit leaves.
TEST(InfluenceMeasures, FitWithoutACovarianceHasNone) {
  for (const bool history : {true, false}) {
    TestAnalysis analysis(RandomSurvivalColumns(1, 20, false));
    DefineForm(analysis, {});
    CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.1, 0.2});
    fit.m_Covariance.clear();
    if (!history) fit.m_BetaHistory.clear();
    ComputeLikelihoodDisplacement(fit);
    ComputeStdErrorXBeta(fit);
    EXPECT_FALSE(ComputeLmax(fit));
    EXPECT_TRUE(fit.m_LikelihoodDisplacement.empty());
    EXPECT_TRUE(fit.m_StdErrorXBeta.empty());
    EXPECT_TRUE(fit.m_Lmax.empty());
  }
}

}  // namespace
}  // namespace orv
