#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "fit/CCoxFit.h"
#include "fit/NumericalFailure.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::TestAnalysis;

class StandardizeTest : public ::testing::Test {
 protected:
  StandardizeTest()
      : analysis({{"time", {1, 2, 3, 4, 5, 6}},
                  {"status", {1, 0, 1, 1, 0, 1}},
                  {"a", {1, 4, 2, 8, 5, 7}},
                  {"constant", {0.1, 0.1, 0.1, 0.1, 0.1, 0.1}},
                  {"b", {300, 100, 400, 100, 500, 900}},
                  {"w", {1, 1, 2, 5, 0.5, 10}}}) {
    analysis.Time({"time"}).Status("status").Covariates({"a", "constant", "b"}).DefaultDesign();
  }
  double Cell(int row, int column) { return analysis.Data().CaseTable.GetRow(row)[column]; }
  std::vector<double> WholeTable() {
    std::vector<double> cells;
    for (int row = 1; row <= 6; ++row) {
      for (int column = 0; column < analysis.Data().CaseTable.ColumnCount(); ++column)
        cells.push_back(Cell(row, column));
    }
    return cells;
  }
  TestAnalysis analysis;
};

TEST_F(StandardizeTest, CentresByTheMeanAndDividesByTheStandardDeviation) {
  CCoxFit& fit = analysis.PrepareFit();
  fit.Standardize();
  // a: mean 4.5, squares of the distances sum to 37.5. b: mean 2300 / 6.
  const std::vector<double> a = {1, 4, 2, 8, 5, 7};
  const std::vector<double> b = {300, 100, 400, 100, 500, 900};
  double squares = 0.0;
  for (const double x : b) squares += (x - 2300.0 / 6) * (x - 2300.0 / 6);
  for (int row = 1; row <= 6; ++row) {
    const auto i = static_cast<std::size_t>(row) - 1;
    EXPECT_NEAR(Cell(row, 0), (a[i] - 4.5) / std::sqrt(37.5 / 5), 1e-15) << row;
    EXPECT_EQ(Cell(row, 1), 0.0) << "a constant column becomes zeros, row " << row;
    EXPECT_NEAR(Cell(row, 2), (b[i] - 2300.0 / 6) / std::sqrt(squares / 5), 1e-15) << row;
  }
}

TEST_F(StandardizeTest, WeightsPlayNoPart) {
  analysis.PrepareFit().Standardize();
  const std::vector<double> unweighted = {Cell(1, 0), Cell(1, 2), Cell(6, 0), Cell(6, 2)};
  analysis.Weights("w");
  analysis.PrepareFit().Standardize();
  EXPECT_EQ((std::vector<double>{Cell(1, 0), Cell(1, 2), Cell(6, 0), Cell(6, 2)}), unweighted);
}

TEST_F(StandardizeTest, OtherColumnsAndInactiveColumnsStayAsTheyAre) {
  CCoxFit& fit = analysis.PrepareFit();
  const std::vector<double> before = WholeTable();
  fit.m_ActiveColumns = {2};
  fit.Standardize();
  const std::vector<double> after = WholeTable();
  const auto columns = static_cast<std::size_t>(analysis.Data().CaseTable.ColumnCount());
  for (std::size_t k = 0; k < before.size(); ++k) {
    if (k % columns == 2) {
      EXPECT_NE(after[k], before[k]) << k;
    } else {
      EXPECT_EQ(after[k], before[k]) << k;
    }
  }
}

TEST_F(StandardizeTest, TableComesBack) {
  CCoxFit& fit = analysis.PrepareFit();
  const std::vector<double> before = WholeTable();
  fit.Standardize();
  EXPECT_NE(WholeTable(), before);
  fit.Unstandardize();
  const std::vector<double> after = WholeTable();
  for (std::size_t k = 0; k < before.size(); ++k) EXPECT_NEAR(after[k], before[k], 1e-12 * std::abs(before[k])) << k;
  for (int row = 1; row <= 6; ++row) EXPECT_EQ(Cell(row, 1), 0.1) << "a constant column comes back as its mean";
}

TEST_F(StandardizeTest, TimeDependentFitsKeepRawValues) {
  analysis.PrepareFit();
  CCoxFit fit(&analysis.Data(), Likelihoods::Breslow, InputTypes::TimeDependent);
  fit.m_ActiveColumns = {0, 1, 2};
  fit.m_BetaHistory = {{2.0, 3.0, 4.0}};
  const std::vector<double> before = WholeTable();
  fit.Standardize();
  EXPECT_EQ(WholeTable(), before);
  fit.Unstandardize();
  EXPECT_EQ(WholeTable(), before);
  EXPECT_EQ(fit.m_BetaHistory, (DenseMatrix{{2.0, 3.0, 4.0}}));
}

TEST_F(StandardizeTest, EstimatesAndMatricesGoToTheRawScale) {
  CCoxFit& fit = analysis.PrepareFit();
  fit.Standardize();
  fit.m_BetaHistory = {{1.0, 7.0, 2.0}, {3.0, 7.0, 4.0}};
  fit.m_Information = {{4.0, 0.0, 1.0}, {0.0, 0.0, 0.0}, {1.0, 0.0, 9.0}};
  fit.m_Covariance = {{0.5, 0.25, 0.125}, {0.25, 0.75, 0.375}, {0.125, 0.375, 0.625}};
  fit.m_NullLogLik = -10.0;
  fit.m_ScoreStatistic = 5.0;
  fit.m_LogLikHistory = {-10.0, -9.0};
  fit.Unstandardize();
  const double s0 = analysis.Data().DesignColumns[0].StdDev;
  const double s2 = analysis.Data().DesignColumns[2].StdDev;
  for (const std::size_t entry : {0U, 1U}) {
    const std::vector<double> standardized =
        entry == 0 ? std::vector<double>{1.0, 7.0, 2.0} : std::vector<double>{3.0, 7.0, 4.0};
    EXPECT_DOUBLE_EQ(fit.m_BetaHistory[entry][0], standardized[0] / s0);
    EXPECT_EQ(fit.m_BetaHistory[entry][1], 7.0) << "without a deviation the parameter stays";
    EXPECT_DOUBLE_EQ(fit.m_BetaHistory[entry][2], standardized[2] / s2);
  }
  EXPECT_DOUBLE_EQ(fit.m_Information[0][0], 4.0 * s0 * s0);
  EXPECT_DOUBLE_EQ(fit.m_Information[0][2], 1.0 * s0 * s2);
  EXPECT_DOUBLE_EQ(fit.m_Information[2][2], 9.0 * s2 * s2);
  EXPECT_EQ(fit.m_Information[2][0], fit.m_Information[0][2]);
  EXPECT_EQ(fit.m_Information[1][1], 0.0);
  EXPECT_DOUBLE_EQ(fit.m_Covariance[0][0], 0.5 / (s0 * s0));
  EXPECT_DOUBLE_EQ(fit.m_Covariance[0][2], 0.125 / (s0 * s2));
  EXPECT_EQ(fit.m_Covariance[2][0], fit.m_Covariance[0][2]);
  EXPECT_EQ(fit.m_Covariance[1][1], 0.75) << "divided only where both deviations are positive";
  EXPECT_EQ(fit.m_Covariance[0][1], 0.25);
  EXPECT_EQ(fit.m_NullLogLik, -10.0);
  EXPECT_EQ(fit.m_ScoreStatistic, 5.0);
  EXPECT_EQ(fit.m_LogLikHistory, (std::vector<double>{-10.0, -9.0}));
}

TEST_F(StandardizeTest, HistoriesWithoutMatricesGoToTheRawScaleToo) {
  CCoxFit& fit = analysis.PrepareFit();
  fit.Standardize();
  fit.m_BetaHistory = {{1.0, 7.0, 2.0}};
  fit.Unstandardize();
  EXPECT_DOUBLE_EQ(fit.m_BetaHistory[0][0], 1.0 / analysis.Data().DesignColumns[0].StdDev);
  EXPECT_TRUE(fit.m_Information.empty());
}

TEST_F(StandardizeTest, StartValuesChangeScaleOnlyWithFixedParameters) {
  for (const bool fixed : {false, true}) {
    analysis.StartAt({2.0, 3.0, 4.0});
    analysis.Settings().HasFixedParameters = fixed;
    CCoxFit& fit = analysis.PrepareFit();
    fit.Standardize();
    const double s0 = analysis.Data().DesignColumns[0].StdDev;
    const double s2 = analysis.Data().DesignColumns[2].StdDev;
    const std::vector<double>& start = analysis.Settings().StartValues;
    EXPECT_DOUBLE_EQ(start[0], fixed ? 2.0 * s0 : 2.0);
    EXPECT_EQ(start[1], 3.0) << "a column without deviation keeps its value";
    EXPECT_DOUBLE_EQ(start[2], fixed ? 4.0 * s2 : 4.0);
    fit.Unstandardize();
    for (std::size_t j = 0; j < 3; ++j) {
      EXPECT_DOUBLE_EQ(analysis.Settings().StartValues[j], static_cast<double>(j) + 2.0) << fixed;
    }
  }
}

// 0.1 s / s need not be 0.1 again. The options of a run stay as they were, whatever it does with them.
TEST_F(StandardizeTest, StartValuesComeBackToTheBit) {
  const std::vector<double> start = {0.1, 1.0 / 3.0, -0.7};
  analysis.StartAt(start).Fix({false, false, false});
  for (int round = 0; round < 50; ++round) {
    CCoxFit& fit = analysis.PrepareFit();
    fit.Standardize();
    fit.Unstandardize();
  }
  EXPECT_EQ(analysis.Settings().StartValues, start);
}

TEST(Standardize, RefusesAColumnWhoseSpreadIsNoNumber) {
  TestAnalysis analysis({{"time", {1, 2, 3}}, {"status", {1, 1, 1}}, {"x", {1e300, -1e300, 1}}});
  analysis.Time({"time"}).Status("status").Covariates({"x"}).DefaultDesign();
  CCoxFit& fit = analysis.PrepareFit();
  EXPECT_THROW(fit.Standardize(), NumericalFailure);
  EXPECT_EQ(analysis.Data().CaseTable.GetRow(1)[0], 1e300) << "and leaves the table alone";
}

}  // namespace
}  // namespace orv
