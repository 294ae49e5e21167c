#include <gtest/gtest.h>

#include <vector>

#include "fit/CCoxFit.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::TestAnalysis;

class CCoxFitTest : public ::testing::Test {
 protected:
  CCoxFitTest()
      : analysis({{"time", {1, 2, 3, 4, 5, 6}},
                  {"status", {1, 0, 1, 1, 0, 1}},
                  {"a", {1, 4, 2, 8, 5, 7}},
                  {"b", {0, 1, 1, 0, 1, 0}},
                  {"c", {3, 1, 4, 1, 5, 9}}}) {
    analysis.Time({"time"}).Status("status").Covariates({"a", "b", "c"}).DefaultDesign();
  }
  TestAnalysis analysis;
};

TEST_F(CCoxFitTest, TakesLimitsFromTheOptionsAndStartsEmpty) {
  analysis.Settings().MaxIterations = 17;
  analysis.Settings().ConvergenceExponent = 5;
  analysis.PrepareFit();
  const CCoxFit fit(&analysis.Data(), Likelihoods::Efron, InputTypes::SurvivalTime);
  EXPECT_EQ(fit.m_pData, &analysis.Data());
  EXPECT_EQ(fit.m_Likelihood, 2);
  EXPECT_EQ(fit.m_InputType, 1);
  EXPECT_EQ(fit.m_MaxIterations, 17);
  EXPECT_DOUBLE_EQ(fit.m_ConvergenceTolerance, 1e-5);
  EXPECT_EQ(fit.m_SingularityTolerance, 1e-12);
  EXPECT_FALSE(fit.m_Converged);
  EXPECT_EQ(fit.m_FitStatus, 0);
  EXPECT_EQ(fit.m_NullLogLik, 0.0);
  EXPECT_EQ(fit.m_ScoreStatistic, 0.0);
  EXPECT_EQ(fit.m_InformationRank, 0);
  EXPECT_EQ(fit.m_ActiveCount, 0);
  EXPECT_TRUE(fit.m_LogLikHistory.empty());
  EXPECT_TRUE(fit.m_BetaHistory.empty());
  EXPECT_TRUE(fit.m_Information.empty());
  EXPECT_TRUE(fit.m_Covariance.empty());
  EXPECT_TRUE(fit.m_ActiveColumns.empty());
  EXPECT_TRUE(fit.m_NullProjection.empty());
  EXPECT_TRUE(fit.m_PackedInformation.empty());
  EXPECT_TRUE(fit.m_ScoreVector.empty());
  EXPECT_EQ(fit.m_BestSubsetDelimiter, "**********COXPHBESTSUBSETSMODELDELIMITER**********");
}

TEST_F(CCoxFitTest, ToleranceIsTheNegativePowerOfTheExponent) {
  analysis.PrepareFit();
  for (int exponent = 1; exponent <= 12; ++exponent) {
    analysis.Settings().ConvergenceExponent = exponent;
    double expected = 1.0;
    for (int k = 0; k < exponent; ++k) expected /= 10.0;
    EXPECT_NEAR(CCoxFit(&analysis.Data(), 1, 1).m_ConvergenceTolerance / expected, 1.0, 1e-14) << exponent;
  }
}

TEST_F(CCoxFitTest, ResetEmptiesHistoriesAndMatricesAndClearsTheDroppedMarks) {
  CCoxFit& fit = analysis.PrepareFit();
  fit.m_LogLikHistory = {-1.0};
  fit.m_BetaHistory = {{1.0, 2.0, 3.0}};
  fit.m_Information = {{1.0}};
  fit.m_Covariance = {{1.0}};
  fit.m_NullLogLik = -7.0;
  for (CoxDesignColumn& column : analysis.Data().DesignColumns) column.Dropped = true;
  analysis.Data().DesignColumns[1].Fixed = true;
  fit.ResetResults();
  EXPECT_TRUE(fit.m_LogLikHistory.empty());
  EXPECT_TRUE(fit.m_BetaHistory.empty());
  EXPECT_TRUE(fit.m_Information.empty());
  EXPECT_TRUE(fit.m_Covariance.empty());
  for (const CoxDesignColumn& column : analysis.Data().DesignColumns) EXPECT_FALSE(column.Dropped) << column.EffectName;
  EXPECT_TRUE(analysis.Data().DesignColumns[1].Fixed) << "only the Dropped marks belong to the fit";
}

TEST_F(CCoxFitTest, ActiveColumnsAreAllColumnsOutsideASelection) {
  CCoxFit& fit = analysis.PrepareFit();
  struct {
    const char* what;
    bool finalFitReady;
    int modelBuilding;
    bool selecting;
  } const cases[] = {
      {"all effects", true, ModelBuildings::AllEffects, false},
      {"all effects after a reset of the options", false, ModelBuildings::AllEffects, false},
      {"forward", false, ModelBuildings::Forward, true},
      {"backward", false, ModelBuildings::Backward, true},
      {"stepwise", false, ModelBuildings::Stepwise, true},
      {"best subsets", false, ModelBuildings::BestSubsets, false},
      {"final fit after forward", true, ModelBuildings::Forward, false},
      {"final fit after stepwise", true, ModelBuildings::Stepwise, false},
  };
  const std::vector<int> chosen = {2, 0};
  for (const auto& c : cases) {
    analysis.Settings().FinalFitReady = c.finalFitReady;
    analysis.Settings().ModelBuilding = static_cast<std::int16_t>(c.modelBuilding);
    fit.m_ActiveColumns = chosen;
    fit.m_ActiveCount = 2;
    EXPECT_EQ(fit.ActiveParameterCount(), c.selecting ? 2 : 3) << c.what;
    EXPECT_EQ(fit.m_ActiveColumns, c.selecting ? chosen : (std::vector<int>{0, 1, 2})) << c.what;
  }
}

TEST_F(CCoxFitTest, InitialBetaIsZeroWithoutStartValues) {
  CCoxFit& fit = analysis.PrepareFit();
  analysis.Settings().StartValues = {4.0, 5.0, 6.0};
  std::vector<double> beta(3, -1.0);
  fit.InitialBeta(beta.data(), 3);
  EXPECT_EQ(beta, (std::vector<double>{0.0, 0.0, 0.0}));
}

TEST_F(CCoxFitTest, InitialBetaTakesStartValuesByPlaceOrByActiveColumn) {
  CCoxFit& fit = analysis.PrepareFit();
  analysis.StartAt({4.0, 5.0, 6.0});
  fit.m_ActiveColumns = {2, 0};
  std::vector<double> beta(2, -1.0);
  for (const int building : {0, 1, 2, 3, 4, 5}) {
    analysis.Settings().ModelBuilding = static_cast<std::int16_t>(building);
    fit.InitialBeta(beta.data(), 2);
    const std::vector<double> expected = building <= 1 ? std::vector<double>{4.0, 5.0} : std::vector<double>{6.0, 4.0};
    EXPECT_EQ(beta, expected) << "model building " << building;
  }
}

// A matrix as the rows that the routines of a fit take.
struct Rows {
  explicit Rows(std::vector<std::vector<double>> matrix) : values(std::move(matrix)) {
    for (std::vector<double>& row : values) pointers.push_back(row.data());
  }
  Rows(const Rows&) = delete;
  Rows& operator=(const Rows&) = delete;
  std::vector<std::vector<double>> values;
  std::vector<double*> pointers;
};

TEST_F(CCoxFitTest, ZeroFixedRowsClearsRowsAndColumnsOfFixedParameters) {
  CCoxFit& fit = analysis.PrepareFit();
  analysis.Data().DesignColumns[1].Fixed = true;
  Rows a({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
  fit.ZeroFixedRows(a.pointers.data(), 3);
  EXPECT_EQ(a.values, (std::vector<std::vector<double>>{{1, 0, 3}, {0, 0, 0}, {7, 0, 9}}));
  EXPECT_FALSE(analysis.Data().DesignColumns[0].Dropped);
  EXPECT_TRUE(analysis.Data().DesignColumns[1].Dropped);
}

TEST_F(CCoxFitTest, FactorMarksFixedAndSingularColumnsAsDroppedAndTheOthersAsKept) {
  CCoxFit& fit = analysis.PrepareFit();
  auto& columns = analysis.Data().DesignColumns;
  columns[0].Dropped = true;  // a mark of an earlier factorisation
  columns[1].Fixed = true;
  Rows a({{4, 1, 8}, {0, 5, 1}, {0, 0, 16}});  // the third column is twice the first
  EXPECT_EQ(fit.FactorLDL(a.pointers.data(), 3, 1e-12), 1);
  EXPECT_FALSE(columns[0].Dropped);
  EXPECT_TRUE(columns[1].Dropped);
  EXPECT_TRUE(columns[2].Dropped);
}

TEST_F(CCoxFitTest, FactorMarksTheColumnsOfTheCurrentModel) {
  CCoxFit& fit = analysis.PrepareFit();
  fit.m_ActiveColumns = {2, 0};
  Rows a({{1, 1}, {0, 1}});
  EXPECT_EQ(fit.FactorLDL(a.pointers.data(), 2, 1e-12), 1);
  EXPECT_FALSE(analysis.Data().DesignColumns[2].Dropped);
  EXPECT_TRUE(analysis.Data().DesignColumns[0].Dropped);
  EXPECT_FALSE(analysis.Data().DesignColumns[1].Dropped);
}

TEST_F(CCoxFitTest, InverseOfAFactorHasZeroRowsAtDroppedParameters) {
  CCoxFit& fit = analysis.PrepareFit();
  analysis.Data().DesignColumns[1].Fixed = true;
  Rows a({{4, 1, 2}, {0, 5, 1}, {0, 0, 3}});
  fit.FactorLDL(a.pointers.data(), 3, 1e-12);
  CCoxFit::InvertLDL(a.pointers.data(), 3);
  // The inverse of {{4, 2}, {2, 3}} is {{3, -2}, {-2, 4}} / 8.
  EXPECT_DOUBLE_EQ(a.values[0][0], 0.375);
  EXPECT_DOUBLE_EQ(a.values[0][2], -0.25);
  EXPECT_DOUBLE_EQ(a.values[2][2], 0.5);
  EXPECT_EQ(a.values[0][1], 0.0);
  EXPECT_EQ(a.values[1][1], 0.0);
  EXPECT_EQ(a.values[1][2], 0.0);
}

// ---- One Newton step ----------------------------------------------------------------------------------------------

TEST_F(CCoxFitTest, NewtonStepAddsTheSolutionAndKeepsTheVector) {
  CCoxFit& fit = analysis.PrepareFit();
  Rows H({{4, 2, 0}, {0, 3, 0}, {0, 0, 2}});
  std::vector<double> beta = {10.0, 20.0, 30.0};
  std::vector<double> U = {8.0, 8.0, 1.0};
  double stepDotScore = -99.0;
  fit.NewtonStep(beta.data(), U.data(), H.pointers.data(), &stepDotScore);
  // {{4, 2}, {2, 3}} g = {8, 8} gives g = {1, 2}.
  const std::vector<double> expected = {11.0, 22.0, 30.5};
  EXPECT_EQ(beta, expected);
  EXPECT_EQ(U, (std::vector<double>{1.0, 2.0, 0.5})) << "the score becomes the step";
  EXPECT_DOUBLE_EQ(stepDotScore, 1 * 8 + 2 * 8 + 0.5 * 1);
  EXPECT_EQ(fit.m_BetaHistory, (DenseMatrix{expected}));
  EXPECT_EQ(fit.m_InformationRank, 3);
}

TEST_F(CCoxFitTest, NewtonStepLeavesFixedAndSingularParametersWhereTheyAre) {
  CCoxFit& fit = analysis.PrepareFit();
  analysis.Data().DesignColumns[0].Fixed = true;
  Rows H({{4, 2, 3}, {0, 2, 4}, {0, 0, 8}});  // of the free two, the second is twice the first
  std::vector<double> beta = {10.0, 20.0, 30.0};
  std::vector<double> U = {8.0, 6.0, 12.0};
  double stepDotScore = 0.0;
  fit.NewtonStep(beta.data(), U.data(), H.pointers.data(), &stepDotScore);
  EXPECT_EQ(beta, (std::vector<double>{10.0, 23.0, 30.0}));
  EXPECT_EQ(stepDotScore, 18.0) << "the score of the fixed parameter counts nothing";
  EXPECT_EQ(fit.m_InformationRank, 1);
  EXPECT_TRUE(analysis.Data().DesignColumns[0].Dropped);
  EXPECT_FALSE(analysis.Data().DesignColumns[1].Dropped);
  EXPECT_TRUE(analysis.Data().DesignColumns[2].Dropped);
}

TEST_F(CCoxFitTest, NewtonStepTellsAnIndefiniteInformationByANegativeRank) {
  CCoxFit& fit = analysis.PrepareFit();
  Rows H({{1, 0, 0}, {0, -1, 0}, {0, 0, 2}});
  std::vector<double> beta(3, 0.0);
  std::vector<double> U(3, 1.0);
  double stepDotScore = 0.0;
  fit.NewtonStep(beta.data(), U.data(), H.pointers.data(), &stepDotScore);
  EXPECT_EQ(fit.m_InformationRank, -2);
}

TEST_F(CCoxFitTest, NewtonStepOfASelectionTakesTheActiveParameters) {
  CCoxFit& fit = analysis.PrepareFit();
  analysis.Settings().FinalFitReady = false;
  analysis.Settings().ModelBuilding = ModelBuildings::Forward;
  fit.m_ActiveColumns = {1};
  fit.m_ActiveCount = 1;
  Rows H(DenseMatrix{{2.0}});
  double beta = 1.0;
  double U = 3.0;
  double stepDotScore = 0.0;
  fit.NewtonStep(&beta, &U, H.pointers.data(), &stepDotScore);
  EXPECT_EQ(beta, 2.5);
  EXPECT_EQ(fit.m_BetaHistory, (DenseMatrix{{2.5}}));
}

TEST_F(CCoxFitTest, NullProjectionIsTheProjectionOnTheEstimableDirections) {
  CCoxFit& fit = analysis.PrepareFit();
  Rows full({{4, 2, 0}, {2, 3, 0}, {0, 0, 2}});
  EXPECT_EQ(fit.ComputeNullProjection(full.pointers.data()), 0);
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) EXPECT_NEAR(fit.m_NullProjection[i][j], i == j ? 1.0 : 0.0, 1e-14);
  }
  // The second column is twice the first, the third is fixed: the projection on (1, 2, 0) / sqrt(5).
  analysis.Data().DesignColumns[2].Fixed = true;
  Rows singular({{1, 2, 7}, {0, 4, 7}, {0, 0, 7}});
  EXPECT_EQ(fit.ComputeNullProjection(singular.pointers.data()), 0);
  const DenseMatrix expected = {{0.2, 0.4, 0}, {0.4, 0.8, 0}, {0, 0, 0}};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) EXPECT_NEAR(fit.m_NullProjection[i][j], expected[i][j], 1e-14);
  }
  EXPECT_EQ(singular.values[0][2], 0.0) << "the fixed rows are cleared in the information too";
}

TEST_F(CCoxFitTest, NullProjectionReportsMissingMemory) {
  CCoxFit& fit = analysis.PrepareFit();
  Rows a({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  analysis.Host.FailAllocation(0);
  EXPECT_EQ(fit.ComputeNullProjection(a.pointers.data()), 0);
  const int requests = analysis.Host.Requests();
  for (int failing = 1; failing <= requests; ++failing) {
    analysis.Host.FailAllocation(failing);
    EXPECT_EQ(fit.ComputeNullProjection(a.pointers.data()), 1) << "allocation " << failing;
    EXPECT_EQ(analysis.Host.LiveBlocks(), 0) << "allocation " << failing;
  }
}

}  // namespace
}  // namespace orv
