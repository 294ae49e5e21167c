// The table of one curve, with points written by hand.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "output/SurvivorTables.h"
#include "support/SheetReading.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::LastSheet;
using testing::RawSheet;
using testing::SheetView;
using testing::TestAnalysis;
using Texts = std::vector<std::string>;

const std::vector<CurvePoint> kPoints = {{1.5, 0.75, 0.1, ConfidenceLimits{0.5, 0.875}},
                                         {4.0, 0.25, 0.0, std::nullopt}};

class SurvivorTablesTest : public ::testing::Test {
 protected:
  SurvivorTablesTest()
      : analysis({{"time", {1, 2, 3, 4}},
                  {"status", {1, 1, 1, 1}},
                  {"a", {2, 1, 4, 3}},
                  {"site", {7, 3, 7, 3}, {{7, "Ulm"}}}}) {
    analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
  }
  SheetView Show(const CurveTableForm& form,
                 std::size_t stratum = 0,
                 const std::optional<std::vector<CurvePoint>>& points = kPoints) {
    ShowCurve(analysis.Fit(), stratum, points, kPoints.size(), "a:2 ", form);
    return LastSheet(analysis.Host);
  }
  // One of the three titles as the host receives them.
  std::string Title(int number) const {
    const RawSheet& raw = analysis.Host.Sheets.back();
    return (number == 1 ? raw.Title1 : number == 2 ? raw.Title2 : raw.Title3).c_str();
  }
  TestAnalysis analysis;
  const CurveTableForm survivor{"Survivor function", "Survival", 1.0, true, 0.95};
};

TEST_F(SurvivorTablesTest, ARowForTheStartAndOneForEachPoint) {
  analysis.PrepareFit();
  const SheetView sheet = Show(survivor);
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"Time", "Survival", "95% Lower Confidence", "95% Upper Confidence"}));
  const std::optional<double> none;
  const std::vector<std::vector<std::optional<double>>> expected = {
      {0.0, 1.0, none, none}, {1.5, 0.75, 0.5, 0.875}, {4.0, 0.25, none, none}};
  ASSERT_EQ(sheet.Rows(), 3);
  for (int row = 0; row < 3; ++row) {
    for (int c = 0; c < 4; ++c) {
      EXPECT_EQ(sheet.Number(row, c), expected[static_cast<std::size_t>(row)][static_cast<std::size_t>(c)]) << row << c;
    }
  }
}

TEST_F(SurvivorTablesTest, LevelIsWrittenAsAPercentage) {
  analysis.PrepareFit();
  const struct {
    double Level;
    const char* Lower;
  } cases[] = {{0.9, "90% Lower Confidence"}, {0.999, "99.9% Lower Confidence"}, {0.0001, "0.01% Lower Confidence"}};
  for (const auto& c : cases) {
    CurveTableForm form = survivor;
    form.ConfidenceLevel = c.Level;
    EXPECT_EQ(Show(form).ColumnNames()[2], c.Lower);
  }
}

TEST_F(SurvivorTablesTest, WithoutLimitsThereAreTwoColumns) {
  analysis.PrepareFit();
  const SheetView sheet = Show({"Cumulative hazard", "Empirical Cumulative Hazard", 0.0, false, 0.95});
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"Time", "Empirical Cumulative Hazard"}));
  EXPECT_EQ(sheet.Number(0, 1), 0.0);
  EXPECT_EQ(sheet.Number(2, 1), 0.25);
}

TEST_F(SurvivorTablesTest, PatternOutOfRangeHasEmptyRows) {
  analysis.PrepareFit();
  const SheetView sheet = Show(survivor, 0, std::nullopt);
  EXPECT_EQ(sheet.ColumnNames().size(), 4U);
  ASSERT_EQ(sheet.Rows(), 3);
  for (int row = 0; row < 3; ++row) {
    for (int c = 0; c < 4; ++c) EXPECT_EQ(sheet.Number(row, c), std::nullopt) << row << c;
  }
}

TEST_F(SurvivorTablesTest, PatternIsTheThirdTitle) {
  analysis.PrepareFit();
  Show(survivor);
  EXPECT_EQ(Title(1), "Survivor function");
  EXPECT_EQ(Title(2), "") << "there are no strata";
  EXPECT_EQ(Title(3), "a:2 ");
}

TEST_F(SurvivorTablesTest, StratumIsTheSecondTitle) {
  analysis.Strata("site", {3, 7});
  analysis.PrepareFit();
  Show(survivor, 0);
  EXPECT_EQ(Title(2), "Strata: 3") << "a code without a label";
  Show(survivor, 1);
  EXPECT_EQ(Title(2), "Strata: Ulm");
  EXPECT_EQ(Title(3), "a:2 ");
}

}  // namespace
}  // namespace orv
