// The tables of survivor and cumulative hazard functions.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "ui/SurvivorRun.h"

namespace orv {
namespace {

using namespace testing;
using Texts = std::vector<std::string>;

class SurvivorActionsTest : public SurvivorRun {};

// ---- The table of the survivor function ----------------------------------------------------------------------------

TEST_F(SurvivorActionsTest, SurvivorTableHasTheCurveOfThePattern) {
  Run();
  ASSERT_EQ(results->SetPatterns({{2.0, 0.5}}, {{"new drug"}}), 0);
  const SheetView sheet = Survivor();
  EXPECT_EQ(sheet.Titles(), (Texts{"Survivor function", "x:2 z:0.5 arm:new drug "}));
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"Time", "Survival", "95% Lower Confidence", "95% Upper Confidence"}));
  EXPECT_EQ(sheet.Number(0, 0), 0.0);
  EXPECT_EQ(sheet.Number(0, 1), 1.0);
  EXPECT_EQ(sheet.Number(0, 2), std::nullopt) << "nothing is uncertain at the start";
  EXPECT_EQ(sheet.Number(0, 3), std::nullopt);
  EXPECT_EQ(sheet.Rows(), 7) << "a row for each of the six event times";
  ExpectPoints(sheet, SurvivorPoints());
}

TEST_F(SurvivorActionsTest, SurvivorLimitsAreOfTheChosenKindAndLevel) {
  Run();
  ASSERT_EQ(results->SetPatterns({{2.0, 0.5}}, {{"1"}}), 0);
  results->ConfidenceLevel = 0.875;
  for (const SurvivorCIType type : {SurvivorCIType::Normal, SurvivorCIType::Log, SurvivorCIType::LogLog}) {
    results->SurvivorCI = type;
    const SheetView sheet = Survivor();
    EXPECT_EQ(sheet.ColumnNames()[2], "87.5% Lower Confidence");
    EXPECT_EQ(sheet.ColumnNames()[3], "87.5% Upper Confidence");
    ExpectPoints(sheet, SurvivorPoints(SurvivorType::Breslow, type, 0.875));
  }
}

// The pattern that the form starts with: means and modal codes.
TEST_F(SurvivorActionsTest, SurvivorOfTheMeanPatternLiesWithinItsLimits) {
  for (const SurvivorType type : {SurvivorType::Breslow, SurvivorType::KaplanMeier}) {
    for (const SurvivorCIType limits : {SurvivorCIType::Normal, SurvivorCIType::Log, SurvivorCIType::LogLog}) {
      Run();
      results->Survivor = type;
      results->SurvivorCI = limits;
      ASSERT_EQ(results->SetPatterns({results->DefaultCovariates()}, {results->DefaultFactors()}), 0);
      results->CreateSurvivorSummary();
      const SheetView sheet = LastSheet(analysis->Host);
      int withLimits = 0;
      for (int row = 0; row < sheet.Rows(); ++row) {
        if (!sheet.Number(row, 2)) continue;
        ++withLimits;
        EXPECT_LT(*sheet.Number(row, 2), *sheet.Number(row, 1)) << row;
        EXPECT_LT(*sheet.Number(row, 1), *sheet.Number(row, 3)) << row;
      }
      EXPECT_GE(withLimits, 3);
    }
  }
}

TEST_F(SurvivorActionsTest, WithoutLimitsTheTableHasTwoColumns) {
  Run();
  ASSERT_EQ(results->SetPatterns({{2.0, 0.5}}, {{"1"}}), 0);
  results->ComputeSurvivorCI = false;
  results->ComputeCumulativeHazardCI = true;
  EXPECT_EQ(Survivor().ColumnNames(), (Texts{"Time", "Survival"}));
  results->ComputeSurvivorCI = true;
  results->ComputeCumulativeHazardCI = false;
  EXPECT_EQ(Hazard().ColumnNames(), (Texts{"Time", "Empirical Cumulative Hazard"}));
}

// A pattern of which nobody is left has no normal limits, and its points stand all the same.
TEST_F(SurvivorActionsTest, PointWithoutLimitsIsStillThere) {
  Run();
  const double slope = analysis->Fit().m_BetaHistory.back()[0];
  ASSERT_EQ(results->SetPatterns({{300.0 / slope, 0.5}}, {{"1"}}), 0);
  const SheetView sheet = Survivor();
  const int last = sheet.Rows() - 1;
  EXPECT_EQ(sheet.Number(last, 0), 9.0);
  EXPECT_EQ(sheet.Number(last, 1), 0.0);
  EXPECT_EQ(sheet.Number(last, 2), std::nullopt);
  EXPECT_EQ(sheet.Number(last, 3), std::nullopt);
}

TEST_F(SurvivorActionsTest, KaplanMeierTakesItsOwnCurve) {
  Run();
  ASSERT_TRUE(analysis->Fit().m_KaplanMeierValid);
  ASSERT_EQ(results->SetPatterns({{2.0, 0.5}}, {{"1"}}), 0);
  results->Survivor = SurvivorType::KaplanMeier;
  const SheetView sheet = Survivor();
  ExpectPoints(sheet, SurvivorPoints(SurvivorType::KaplanMeier));
  EXPECT_NE(sheet.Number(2, 1), SurvivorPoints()[1].Value);
}

TEST_F(SurvivorActionsTest, KaplanMeierThatIsNotValidGivesWayToBreslow) {
  Run([](TestAnalysis& a) { a.Weights("w"); });
  ASSERT_FALSE(analysis->Fit().m_KaplanMeierValid);
  ASSERT_EQ(results->SetPatterns({{2.0, 0.5}}, {{"1"}}), 0);
  results->Survivor = SurvivorType::KaplanMeier;
  ExpectPoints(Survivor(), SurvivorPoints());
}

TEST_F(SurvivorActionsTest, PatternOutOfRangeHasEmptyRows) {
  Run();
  const double slope = analysis->Fit().m_BetaHistory.back()[0];
  ASSERT_EQ(results->SetPatterns({{800.0 / slope, 0.5}, {2.0, 0.5}}, {{"1"}, {"1"}}), 0);
  const auto expectOneEmpty = [&] {
    const std::vector<SheetView> sheets = NewSheets();
    ASSERT_EQ(sheets.size(), 2U) << "each pattern has its table";
    EXPECT_EQ(sheets[0].Rows(), sheets[1].Rows());
    EXPECT_EQ(sheets[0].Titles().back(), results->Patterns.Labels[0]);
    for (int row = 0; row < sheets[0].Rows(); ++row) {
      for (int c = 0; c < sheets[0].Columns(); ++c) EXPECT_EQ(sheets[0].Number(row, c), std::nullopt) << row << c;
    }
    EXPECT_NE(sheets[1].Number(1, 1), std::nullopt);
  };
  results->CreateSurvivorSummary();
  expectOneEmpty();
  results->CreateCumulativeHazardSummary();
  expectOneEmpty();
  EXPECT_TRUE(analysis->Host.Messages().empty());
}

TEST_F(SurvivorActionsTest, EachStratumAndPatternHasItsTable) {
  Run([](TestAnalysis& a) { a.Design({{"x", "v3"}}).Strata("site", {2, 4}); });
  ASSERT_EQ(results->SetPatterns({{2.0}, {4.0}}, {{}, {}}), 0);
  const auto expectFour = [&](const std::string& title) {
    const std::vector<SheetView> sheets = NewSheets();
    ASSERT_EQ(sheets.size(), 4U);
    EXPECT_EQ(sheets[0].Titles(), (Texts{title, "Strata: 2", "x:2 "})) << "a code without a label";
    EXPECT_EQ(sheets[1].Titles(), (Texts{title, "Strata: 2", "x:4 "}));
    EXPECT_EQ(sheets[2].Titles(), (Texts{title, "Strata: Ulm", "x:2 "}));
    EXPECT_EQ(sheets[3].Titles(), (Texts{title, "Strata: Ulm", "x:4 "}));
    EXPECT_EQ(sheets[0].Rows(), 5) << "events of site 2 at 1, 2, 4 and 9";
    EXPECT_EQ(sheets[3].Rows(), 3) << "events of site 4 at 3 and 5";
    EXPECT_EQ(sheets[2].Number(1, 0), 3.0);
    EXPECT_EQ(sheets[0].Number(4, 0), 9.0);
  };
  results->CreateSurvivorSummary();
  expectFour("Survivor function");
  results->CreateCumulativeHazardSummary();
  expectFour("Cumulative hazard");
}

TEST_F(SurvivorActionsTest, WithoutPatternsThereIsNoTable) {
  Run();
  results->CreateSurvivorSummary();
  results->CreateCumulativeHazardSummary();
  EXPECT_TRUE(NewSheets().empty());
}

// ---- The table of the cumulative hazard -----------------------------------------------------------------------------

TEST_F(SurvivorActionsTest, HazardTableHasTheHazardOfThePattern) {
  Run();
  ASSERT_EQ(results->SetPatterns({{2.0, 0.5}}, {{"new drug"}}), 0);
  results->ComputeCumulativeHazardCI = true;
  results->SurvivorCI = SurvivorCIType::Log;
  for (const SurvivorType type : {SurvivorType::Breslow, SurvivorType::KaplanMeier}) {
    results->Survivor = type;
    const SheetView sheet = Hazard();
    EXPECT_EQ(sheet.Titles(), (Texts{"Cumulative hazard", "x:2 z:0.5 arm:new drug "}));
    EXPECT_EQ(sheet.ColumnNames(),
              (Texts{"Time", "Empirical Cumulative Hazard", "95% Lower Confidence", "95% Upper Confidence"}));
    EXPECT_EQ(sheet.Number(0, 0), 0.0);
    EXPECT_EQ(sheet.Number(0, 1), 0.0);
    ExpectPoints(sheet, HazardPoints());
  }
}

TEST_F(SurvivorActionsTest, HazardTakesTheRobustCovarianceAndTheSurvivorFunctionDoesNot) {
  Run([](TestAnalysis& a) { a.Settings().UseRobustVariance = true; });
  ASSERT_EQ(results->SetPatterns({{5.0, 0.5}}, {{"1"}}), 0);
  results->ComputeCumulativeHazardCI = true;
  const SheetView hazard = Hazard();
  ExpectPoints(hazard, HazardPoints(true));
  EXPECT_NE(hazard.Number(3, 2), HazardPoints(false)[2].Limits->Lower);
  const SheetView withRobust = Survivor();
  analysis->Fit().m_RobustCovariance = analysis->Fit().m_Covariance;
  const SheetView without = Survivor();
  for (int row = 1; row < withRobust.Rows(); ++row) EXPECT_EQ(withRobust.Number(row, 2), without.Number(row, 2)) << row;
}

}  // namespace
}  // namespace orv
