// The tables of the fit itself: iterations, covariance and correlation.
#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "output/FitTables.h"
#include "support/SheetReading.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::LastSheet;
using testing::SheetView;
using testing::TestAnalysis;
using Texts = std::vector<std::string>;

// Two covariates and a factor of two levels; histories and matrices are written by hand.
class FitTablesTest : public ::testing::Test {
 protected:
  FitTablesTest()
      : analysis({{"time", {1, 2, 3, 4, 5, 6}},
                  {"status", {1, 1, 1, 1, 1, 1}},
                  {"a", {1, 4, 2, 8, 5, 7}},
                  {"b", {3, 1, 4, 1, 5, 9}},
                  {"f", {1, 2, 1, 2, 2, 1}}}) {
    analysis.Time({"time"}).Status("status").Covariates({"a", "b"}).Factor("f", {1, 2}).DefaultDesign();
    CCoxFit& fit = analysis.PrepareFit();
    fit.m_LogLikHistory = {-10.0, -12.0, -9.0};
    fit.m_BetaHistory = {{0.0, 0.0, 0.0}, {1.0, 2.0, 3.0}, {0.5, 1.0, 1.5}};
    // Only the lower triangle is to be read.
    fit.m_Covariance = {{4.0, 99.0, 99.0}, {1.0, 9.0, 99.0}, {-2.0, 3.0, 16.0}};
    fit.m_Information = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
  }
  SheetView History() {
    analysis.Analysis.CreateIterationHistorySpreadsheet();
    return LastSheet(analysis.Host);
  }
  SheetView Covariance() {
    analysis.Analysis.CreateCovarianceSpreadsheet();
    return LastSheet(analysis.Host);
  }
  SheetView Correlation() {
    analysis.Analysis.CreateCorrelationSpreadsheet();
    return LastSheet(analysis.Host);
  }
  TestAnalysis analysis;
};

TEST_F(FitTablesTest, HistoryHasARowForEveryEvaluatedVectorRejectedOnesToo) {
  const SheetView sheet = History();
  EXPECT_EQ(sheet.Titles(), (Texts{"Iteration history"}));
  EXPECT_EQ(sheet.ShortName(), "Step");
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"Step", "Log-likelihood", "a", "b", "f_1"}));
  ASSERT_EQ(sheet.Rows(), 3);
  const std::vector<std::vector<double>> expected = {{1, -10, 0, 0, 0}, {2, -12, 1, 2, 3}, {3, -9, 0.5, 1, 1.5}};
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 5; ++column) {
      EXPECT_EQ(sheet.Number(row, column), expected[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)])
          << row << ' ' << column;
    }
  }
}

TEST_F(FitTablesTest, HistoryEndsWithTheLikelihoodsOfACancelledFit) {
  // The vector of the last step has not been evaluated.
  analysis.Fit().m_BetaHistory.push_back({9.0, 9.0, 9.0});
  EXPECT_EQ(History().Rows(), 3);
}

TEST_F(FitTablesTest, HistoryIsNotShownWhenThereIsNone) {
  analysis.Fit().m_LogLikHistory.clear();
  analysis.Fit().m_BetaHistory.clear();
  analysis.Analysis.CreateIterationHistorySpreadsheet();
  EXPECT_TRUE(analysis.Host.Sheets.empty());
}

TEST_F(FitTablesTest, HistoryWithoutCoefficientsHasTwoColumns) {
  TestAnalysis empty({{"time", {1, 2}}, {"status", {1, 1}}});
  empty.Time({"time"}).Status("status");
  ASSERT_EQ(empty.Run(), 0);
  empty.Analysis.CreateIterationHistorySpreadsheet();
  const SheetView sheet = LastSheet(empty.Host);
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"Step", "Log-likelihood"}));
  EXPECT_EQ(sheet.Rows(), 1);
  EXPECT_NEAR(*sheet.Number(0, 1), -std::log(2.0), 1e-15);
}

TEST_F(FitTablesTest, CovarianceMirrorsItsLowerTriangle) {
  const SheetView sheet = Covariance();
  EXPECT_EQ(sheet.Titles(), (Texts{"Covariance matrix of parameters"}));
  EXPECT_EQ(sheet.RowNames(), (Texts{"a", "b", "f_1"}));
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"a", "b", "f_1"}));
  const std::vector<std::vector<double>> expected = {{4, 1, -2}, {1, 9, 3}, {-2, 3, 16}};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      EXPECT_EQ(sheet.Number(i, j), expected[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)])
          << i << ' ' << j;
    }
  }
}

TEST_F(FitTablesTest, CorrelationDividesByTheDeviations) {
  const SheetView sheet = Correlation();
  EXPECT_EQ(sheet.Titles(), (Texts{"Correlation matrix of parameters"}));
  EXPECT_EQ(sheet.RowNames(), (Texts{"a", "b", "f_1"}));
  const std::vector<std::vector<double>> expected = {{1, 1.0 / 6, -0.25}, {1.0 / 6, 1, 0.25}, {-0.25, 0.25, 1}};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      ASSERT_TRUE(sheet.Number(i, j)) << i << ' ' << j;
      EXPECT_DOUBLE_EQ(*sheet.Number(i, j), expected[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)])
          << i << ' ' << j;
    }
  }
}

TEST_F(FitTablesTest, MatricesAreThoseOfTheRobustVarianceWhenItIsInUse) {
  analysis.Fit().m_RobustCovariance = {{1.0, 99.0, 99.0}, {1.0, 4.0, 99.0}, {0.0, -3.0, 9.0}};
  EXPECT_EQ(Covariance().Number(0, 0), 4.0) << "it is not in use";
  analysis.Settings().UseRobustVariance = true;
  const SheetView covariance = Covariance();
  const SheetView correlation = Correlation();
  const std::vector<std::vector<double>> expected = {{1, 1, 0}, {1, 4, -3}, {0, -3, 9}};
  const std::vector<std::vector<double>> scaled = {{1, 0.5, 0}, {0.5, 1, -0.5}, {0, -0.5, 1}};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      EXPECT_EQ(covariance.Number(i, j), expected[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)]) << i << j;
      ASSERT_TRUE(correlation.Number(i, j)) << i << j;
      EXPECT_DOUBLE_EQ(*correlation.Number(i, j), scaled[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)])
          << i << j;
    }
  }
}

TEST_F(FitTablesTest, AliasedColumnsStayWithMissingCells) {
  analysis.Data().DesignColumns[1].Dropped = true;
  for (const SheetView& sheet : {Covariance(), Correlation()}) {
    EXPECT_EQ(sheet.RowNames(), (Texts{"a", "b", "f_1"}));
    for (int k = 0; k < 3; ++k) {
      EXPECT_EQ(sheet.Number(1, k), std::nullopt) << k;
      EXPECT_EQ(sheet.Number(k, 1), std::nullopt) << k;
    }
    EXPECT_TRUE(sheet.Number(0, 2));
    EXPECT_TRUE(sheet.Number(2, 2));
  }
}

TEST_F(FitTablesTest, CorrelationWithoutAVarianceIsMissing) {
  for (const double variance : {0.0, -1.0}) {
    analysis.Fit().m_Covariance[1][1] = variance;
    const SheetView sheet = Correlation();
    for (int k = 0; k < 3; ++k) {
      EXPECT_EQ(sheet.Number(1, k), std::nullopt) << k;
      EXPECT_EQ(sheet.Number(k, 1), std::nullopt) << k;
    }
    EXPECT_EQ(sheet.Number(0, 0), 1.0);
    EXPECT_EQ(Covariance().Number(1, 1), variance) << "the covariance is shown as it is";
  }
}

// Variances of covariates in very large or very small units are far from 1, their products beyond a double.
TEST_F(FitTablesTest, CorrelationDoesNotDependOnTheUnits) {
  for (const double unit : {1e-100, 1e-85, 1e85, 1e100}) {
    analysis.Fit().m_Covariance = {
        {4.0 * unit * unit, 0.0, 0.0}, {1.0 * unit * unit, 9.0 * unit * unit, 0.0}, {0.0, 0.0, 1.0}};
    const SheetView sheet = Correlation();
    ASSERT_TRUE(sheet.Number(1, 0)) << unit;
    EXPECT_NEAR(*sheet.Number(1, 0), 1.0 / 6, 1e-15) << unit;
  }
}

TEST_F(FitTablesTest, MatricesOfAFitWithoutThemHaveMissingCells) {
  analysis.Fit().m_Covariance.clear();
  for (const SheetView& sheet : {Covariance(), Correlation()}) {
    EXPECT_EQ(sheet.Rows(), 3);
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) EXPECT_EQ(sheet.Number(i, j), std::nullopt);
    }
  }
}

TEST_F(FitTablesTest, MatricesAreNotShownWithoutCoefficients) {
  TestAnalysis empty({{"time", {1, 2}}, {"status", {1, 1}}});
  empty.Time({"time"}).Status("status");
  ASSERT_EQ(empty.Run(), 0);
  empty.Analysis.CreateCovarianceSpreadsheet();
  empty.Analysis.CreateCorrelationSpreadsheet();
  EXPECT_TRUE(empty.Host.Sheets.empty());
}

TEST_F(FitTablesTest, EveryCallMakesANewDocument) {
  Covariance();
  Covariance();
  EXPECT_EQ(analysis.Host.Documents().Size(), 2U);
}

}  // namespace
}  // namespace orv
