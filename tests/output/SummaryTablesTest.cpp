#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "output/SummaryTables.h"
#include "support/SheetReading.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::LastSheet;
using testing::SheetView;
using testing::TestAnalysis;
using Texts = std::vector<std::string>;

const std::vector<testing::TestColumn>& Columns() {
  static const std::vector<testing::TestColumn> columns = {
      {"time", {1, 2, 3, 4, 5, 6, 7, 8}},
      {"status", {1, 1, 1, 1, 1, 0, 0, 0}},
      {"a", {1, 4, 2, 8, 5, 7, 1, 2}},
      {"b", {0, 1, 1, 0, 1, 0, 1, 1}},
      {"site", {3, 1, 3, 3, 1, 1, 3, 1}, {{1, "north"}}},
  };
  return columns;
}

class SummaryTablesTest : public ::testing::Test {
 protected:
  SummaryTablesTest() : analysis(Columns()) { analysis.Time({"time"}).Status("status"); }
  TestAnalysis& TwoCovariates() { return analysis.Covariates({"a", "b"}).DefaultDesign(); }
  // A fit written by hand.
  void Write() {
    CCoxFit& fit = analysis.PrepareFit();
    fit.m_LogLikHistory = {-99.0, -20.0};
    fit.m_NullLogLik = -22.5;
    fit.m_ScoreStatistic = 4.25;
    fit.m_BetaHistory = {{9.0, 9.0}, {2.0, -1.0}};
    fit.m_Information = {{3.0, 0.5}, {0.5, 4.0}};
    fit.m_Converged = true;
  }
  SheetView Show() {
    analysis.Analysis.CreateSummarySpreadsheet();
    return LastSheet(analysis.Host);
  }
  TestAnalysis analysis;
};

TEST_F(SummaryTablesTest, ListsCriteriaAndGlobalTests) {
  TwoCovariates();
  Write();
  const SheetView sheet = Show();
  EXPECT_EQ(sheet.Titles(), (Texts{"Goodness of fit", "Total number of cases: 8 Complete: 5 Censored: 3",
                                   "Estimation procedure converged."}));
  EXPECT_EQ(sheet.ShortName(), "Total number");
  EXPECT_EQ(sheet.RowNames(), (Texts{"-2 Log L", "AIC", "SBC", "R2 ", "Global test: All betas = 0", "Score",
                                     "Likelihood Ratio", "Wald"}));
  EXPECT_EQ(sheet.ColumnNames(), (Texts{""}));
  EXPECT_EQ(sheet.Number(0, 0), 40.0);
  EXPECT_EQ(sheet.Number(1, 0), 44.0);
  EXPECT_DOUBLE_EQ(*sheet.Number(2, 0), 2 * std::log(5.0) + 40.0);
  EXPECT_DOUBLE_EQ(*sheet.Number(3, 0), 1.0 - std::exp(-1.0));
  EXPECT_EQ(sheet.Number(4, 0), std::nullopt) << "a heading";
  EXPECT_EQ(sheet.Number(5, 0), 4.25);
  EXPECT_EQ(sheet.Number(6, 0), 5.0);
  EXPECT_EQ(sheet.Number(7, 0), 14.0);
  EXPECT_EQ(sheet.Property("Complete"), "5");
  EXPECT_EQ(sheet.Property("Censored"), "3");
  EXPECT_EQ(analysis.Host.Documents().Size(), 1U) << "no stratum table without strata";
}

TEST_F(SummaryTablesTest, SaysWhenTheFitDidNotConverge) {
  TwoCovariates();
  Write();
  analysis.Fit().m_Converged = false;
  EXPECT_EQ(Show().Titles().back(), "Estimation procedure failed to converge.");
}

TEST_F(SummaryTablesTest, FixedAndAliasedColumnsAreNoParameters) {
  TwoCovariates().StartAt({0.25, 0.0}).Fix({true, false});
  ASSERT_EQ(analysis.Run(), 0);
  const SheetView sheet = Show();
  const double minus2LogL = *sheet.Number(0, 0);
  EXPECT_NEAR(*sheet.Number(1, 0) - minus2LogL, 2.0, 1e-12) << "AIC counts one of the two";
  EXPECT_NEAR(*sheet.Number(2, 0) - minus2LogL, std::log(5.0), 1e-12);
}

TEST_F(SummaryTablesTest, NumbersAreThoseOfTheFit) {
  TwoCovariates();
  ASSERT_EQ(analysis.Run(), 0);
  const CCoxFit& fit = analysis.Fit();
  const SheetView sheet = Show();
  EXPECT_EQ(*sheet.Number(0, 0), -2 * fit.m_LogLikHistory.back());
  EXPECT_EQ(*sheet.Number(5, 0), fit.m_ScoreStatistic);
  EXPECT_DOUBLE_EQ(*sheet.Number(6, 0), 2 * (fit.m_LogLikHistory.back() - fit.m_NullLogLik));
}

TEST_F(SummaryTablesTest, R2IsNeverNegative) {
  TwoCovariates();
  Write();
  analysis.Fit().m_LogLikHistory.back() = -5000.0;
  EXPECT_EQ(Show().Number(3, 0), 0.0);
}

TEST_F(SummaryTablesTest, PropertiesNeedADocument) {
  TwoCovariates();
  Write();
  analysis.Host.KeepsDocuments = false;
  analysis.Analysis.CreateSummarySpreadsheet();
  EXPECT_EQ(LastSheet(analysis.Host).Property("Complete"), "(none)");
}

TEST_F(SummaryTablesTest, NothingIsShownOfAFitThatEvaluatedNothing) {
  TwoCovariates();
  analysis.PrepareFit();
  analysis.Analysis.CreateSummarySpreadsheet();
  EXPECT_TRUE(analysis.Host.Sheets.empty());
}

TEST_F(SummaryTablesTest, FitWithoutMatricesHasASummary) {
  TwoCovariates();
  Write();
  analysis.Fit().m_Information.clear();
  const SheetView sheet = Show();
  EXPECT_EQ(sheet.Rows(), 8);
  EXPECT_EQ(sheet.Number(6, 0), 5.0);
}

// ---- With the robust variance
// ----------------------------------------------------------------------------------------

TEST_F(SummaryTablesTest, RobustVarianceAddsTwoTests) {
  TwoCovariates();
  analysis.Settings().UseRobustVariance = true;
  ASSERT_EQ(analysis.Run(), 0);
  const SheetView sheet = Show();
  EXPECT_EQ(sheet.RowNames(), (Texts{"-2 Log L", "AIC", "SBC", "R2 ", "Global test: All betas = 0", "Score",
                                     "Likelihood Ratio", "Wald", "Robust wald", "Robust score"}));
  CCoxFit& fit = analysis.Fit();
  EXPECT_EQ(sheet.Number(8, 0), fit.RobustWaldStatistic());
  EXPECT_EQ(sheet.Number(9, 0), fit.RobustScoreStatistic());
  EXPECT_GT(*sheet.Number(8, 0), 0.0);
  EXPECT_GT(*sheet.Number(9, 0), 0.0);
  EXPECT_NE(sheet.Number(8, 0), sheet.Number(7, 0));
  EXPECT_NE(sheet.Number(9, 0), sheet.Number(5, 0));
  EXPECT_EQ(sheet.Property("Complete"), "5");
}

// b'R^-1 b with a covariance written by hand.
TEST_F(SummaryTablesTest, RobustWaldTakesTheRobustCovariance) {
  TwoCovariates();
  analysis.Settings().UseRobustVariance = true;
  ASSERT_EQ(analysis.Run(), 0);
  CCoxFit& fit = analysis.Fit();
  fit.m_BetaHistory.back() = {2.0, -1.0};
  fit.m_RobustCovariance = {{0.5, 0.0}, {0.0, 0.25}};
  EXPECT_NEAR(*Show().Number(8, 0), 4.0 / 0.5 + 1.0 / 0.25, 1e-12);
}

TEST_F(SummaryTablesTest, OtherRowsDoNotDependOnTheRobustVariance) {
  TwoCovariates();
  ASSERT_EQ(analysis.Run(), 0);
  const SheetView usual = Show();
  TestAnalysis robust(Columns());
  robust.Time({"time"}).Status("status").Covariates({"a", "b"}).DefaultDesign();
  robust.Settings().UseRobustVariance = true;
  ASSERT_EQ(robust.Run(), 0);
  robust.Analysis.CreateSummarySpreadsheet();
  const SheetView sheet = LastSheet(robust.Host);
  for (int row = 0; row < usual.Rows(); ++row) EXPECT_EQ(sheet.Number(row, 0), usual.Number(row, 0)) << row;
}

TEST_F(SummaryTablesTest, RobustVarianceWithoutCoefficientsHasOneRow) {
  analysis.Settings().UseRobustVariance = true;
  ASSERT_EQ(analysis.Run(), 0);
  EXPECT_EQ(Show().RowNames(), (Texts{"-2 Log L"}));
}

// ---- Without coefficients -------------------------------------------------------------------------------------------

TEST_F(SummaryTablesTest, WithoutCoefficientsThereIsOneRow) {
  ASSERT_EQ(analysis.Run(), 0);
  const SheetView sheet = Show();
  EXPECT_EQ(sheet.Titles(), (Texts{"Goodness of fit", "Total number of cases: 8 Complete: 5 Censored: 3"}));
  EXPECT_EQ(sheet.ShortName(), "Total number");
  EXPECT_EQ(sheet.RowNames(), (Texts{"-2 Log L"}));
  EXPECT_EQ(sheet.Columns(), 1);
  // Risk sets of 8, 7, 6, 5 and 4.
  EXPECT_NEAR(*sheet.Number(0, 0), 2 * std::log(8.0 * 7 * 6 * 5 * 4), 1e-13);
}

TEST_F(SummaryTablesTest, OneRowTableCanBeAskedForByName) {
  ASSERT_EQ(analysis.Run(), 0);
  analysis.Analysis.CreateNoCovariateSummarySpreadsheet();
  EXPECT_EQ(LastSheet(analysis.Host).RowNames(), (Texts{"-2 Log L"}));
}

TEST_F(SummaryTablesTest, StratumTableFollowsTheOneRowTable) {
  analysis.Strata("site", {1, 3});
  ASSERT_EQ(analysis.Run(), 0);
  analysis.Analysis.CreateSummarySpreadsheet();
  ASSERT_EQ(analysis.Host.Documents().Size(), 2U);
  EXPECT_EQ(SheetView(analysis.Host.Documents()[0]).RowNames(), (Texts{"-2 Log L"}));
  EXPECT_EQ(LastSheet(analysis.Host).Titles(), (Texts{"Summary of complete/censored cases for each stratum"}));
}

// ---- The stratum table ----------------------------------------------------------------------------------------------

TEST_F(SummaryTablesTest, StratumTableCountsTheCasesOfEachCode) {
  TwoCovariates().Strata("site", {1, 3});
  ASSERT_EQ(analysis.Run(), 0);
  analysis.Analysis.CreateSummarySpreadsheet();
  ASSERT_EQ(analysis.Host.Documents().Size(), 2U);
  EXPECT_EQ(SheetView(analysis.Host.Documents()[0]).Rows(), 8);
  const SheetView sheet = LastSheet(analysis.Host);
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"Stratum", "Total", "Complete", "Censored", "Percent Censored"}));
  EXPECT_EQ(sheet.Texts(0), (Texts{"north", "3"})) << "the label, or the code";
  EXPECT_EQ(sheet.Texts(1), (Texts{"4", "4"}));
  EXPECT_EQ(sheet.Texts(2), (Texts{"2", "3"}));
  EXPECT_EQ(sheet.Texts(3), (Texts{"2", "1"}));
  EXPECT_EQ(sheet.Number(0, 4), 50.0);
  EXPECT_EQ(sheet.Number(1, 4), 25.0);
}

TEST_F(SummaryTablesTest, StratumAbsentFromACountHasNone) {
  TwoCovariates().Strata("site", {1, 3});
  Write();
  CCoxData& data = analysis.Data();
  data.CasesByStratum = {{1.0, 4.0}, {2.9999999, 6.0}};
  data.CompleteByStratum = {{2.9999999, 6.0}};
  data.CensoredByStratum = {{1.0, 4.0}};
  analysis.Analysis.CreateSummarySpreadsheet();
  const SheetView sheet = LastSheet(analysis.Host);
  EXPECT_EQ(sheet.Texts(0), (Texts{"north", "3"})) << "codes are rounded";
  EXPECT_EQ(sheet.Texts(1), (Texts{"4", "6"}));
  EXPECT_EQ(sheet.Texts(2), (Texts{"0", "6"}));
  EXPECT_EQ(sheet.Texts(3), (Texts{"4", "0"}));
  EXPECT_EQ(sheet.Number(0, 4), 100.0) << "only censored cases";
  EXPECT_EQ(sheet.Number(1, 4), 0.0);
}

TEST_F(SummaryTablesTest, StratumTableHasARowForEverySelectedCode) {
  TwoCovariates().Strata("site", {1, 2, 3});  // no case has code 2
  ASSERT_EQ(analysis.Run(), 0);
  analysis.Analysis.CreateSummarySpreadsheet();
  const SheetView sheet = LastSheet(analysis.Host);
  EXPECT_EQ(sheet.Rows(), 3);
  EXPECT_EQ(sheet.Texts(0), (Texts{"north", "3", ""})) << "strata with cases come first";
  EXPECT_EQ(sheet.Number(2, 4), std::nullopt);
}

TEST_F(SummaryTablesTest, LargeCountsShowAsSigns) {
  TwoCovariates().Strata("site", {1, 3});
  Write();
  analysis.Data().CasesByStratum = {{1.0, 123456789.0}, {3.0, 4.0}};
  analysis.Data().CensoredByStratum = {{1.0, 12345678.0}};
  analysis.Analysis.CreateSummarySpreadsheet();
  EXPECT_EQ(LastSheet(analysis.Host).Text(0, 1), "########");
  EXPECT_EQ(LastSheet(analysis.Host).Text(0, 3), "12345678");
}

}  // namespace
}  // namespace orv
