#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "inference/ProportionalHazards.h"
#include "output/ProportionalHazardsTable.h"
#include "support/SheetReading.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::LastSheet;
using testing::SheetView;
using testing::TestAnalysis;
using Texts = std::vector<std::string>;

class ProportionalHazardsTable : public ::testing::Test {
 protected:
  ProportionalHazardsTable()
      : analysis({{"time", {1, 2, 3, 4, 5, 6}},
                  {"status", {1, 1, 1, 1, 0, 1}},
                  {"a", {1, 4, 2, 8, 5, 7}},
                  {"f", {1, 2, 3, 1, 2, 3}, {{1, "one"}, {2, "two"}}},
                  {"h", {10, 20, 20, 10, 10, 20}}}) {
    analysis.Time({"time"}).Status("status");
  }
  SheetView Show(const ProportionalHazardsTest& test, double level = 0.95, const std::string& transform = "Rank") {
    ShowProportionalHazards(analysis.Data(), test, transform, level);
    return LastSheet(analysis.Host);
  }
  TestAnalysis analysis;
};

TEST_F(ProportionalHazardsTable, HasARowForEachColumnAndTheOverallTest) {
  analysis.Covariates({"a"}).Factor("h", {10, 20}).DefaultDesign();
  analysis.PrepareFit();
  const SheetView sheet = Show({{0, 1}, {1.5, 0.25}, 4.0, 0.0, 1.0});
  EXPECT_EQ(sheet.Titles(), (Texts{"Test of proportionality assumption \nTransformation = Rank"}));
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"Chi-square", "df", "P value"}));
  EXPECT_EQ(sheet.RowNames(), (Texts{"a", "h_10", "Overall"}));
  struct {
    int row;
    double chiSquare;
    double df;
  } const rows[] = {{0, 1.5, 1}, {1, 0.25, 1}, {2, 4.0, 2}};
  for (const auto& c : rows) {
    EXPECT_EQ(sheet.Value(c.row, "Chi-square"), c.chiSquare);
    EXPECT_EQ(sheet.Value(c.row, "df"), c.df);
    EXPECT_EQ(sheet.Value(c.row, "P value"), 1.0 - analysis.Host.ChiSquareCdf(c.chiSquare, c.df));
  }
  EXPECT_NEAR(sheet.Value(2, "P value"), std::exp(-2.0), 1e-14) << "two degrees of freedom: exp(-x / 2)";
}

TEST_F(ProportionalHazardsTable, RowsBearTheLevelOfAFactorOrThePlaceInTheEffect) {
  analysis.Covariates({"a"}).Factor("f", {1, 2, 3}).Factor("h", {10, 20});
  analysis.Settings().Coding = Codings::Reference;
  analysis.Design({{"f", "v4"}, {"a*a", "v3*v3"}, {"f*h", "v4*v5"}});
  analysis.PrepareFit();
  const SheetView sheet = Show({{0, 1, 2, 3, 4}, {1, 1, 1, 1, 1}, 5.0, 0.0, 1.0});
  EXPECT_EQ(sheet.RowNames(), (Texts{"f_one", "f_two", "a*a", "f*h_1", "f*h_2", "Overall"}));
}

TEST_F(ProportionalHazardsTable, DroppedColumnsHaveNoRow) {
  analysis.Covariates({"a"}).Factor("f", {1, 2, 3}).DefaultDesign();
  analysis.PrepareFit();
  const SheetView sheet = Show({{0, 2}, {1.0, 2.0}, 3.0, 0.0, 1.0});
  EXPECT_EQ(sheet.RowNames(), (Texts{"a", "f_two", "Overall"}));
  EXPECT_EQ(sheet.Value(2, "df"), 2.0);
}

TEST_F(ProportionalHazardsTable, SignificantColumnsAreHighlightedButNotTheOverallRow) {
  analysis.Covariates({"a"}).Factor("h", {10, 20}).DefaultDesign();
  analysis.PrepareFit();
  const SheetView sheet = Show({{0, 1}, {3.0, 4.0}, 50.0, 0.0, 1.0});
  for (int column = 0; column < 3; ++column) {
    EXPECT_FALSE(sheet.IsHighlighted(0, column)) << "p is 0.083";
    EXPECT_TRUE(sheet.IsHighlighted(1, column)) << "p is 0.046";
    EXPECT_FALSE(sheet.IsHighlighted(2, column));
  }
  EXPECT_TRUE(Show({{0, 1}, {3.0, 4.0}, 50.0, 0.0, 1.0}, 0.9).IsHighlighted(0, 0));
}

// At p of about 0.6 doubles lie 2^-53 apart, and so do those of 1 - level for levels below 0.5.
TEST_F(ProportionalHazardsTable, PWithinFifteenUnitsOfTheLevelIsNotHighlighted) {
  analysis.Covariates({"a"}).DefaultDesign();
  analysis.PrepareFit();
  constexpr double kChiSquare = 0.25;
  const double p = 1.0 - analysis.Host.ChiSquareCdf(kChiSquare, 1.0);
  ASSERT_GT(p, 0.55);
  for (const int units : {-20, 0, 15, 16, 1000}) {
    const double alpha = p + units * 0x1p-53;
    const double level = 1.0 - alpha;
    ASSERT_EQ(1.0 - level, alpha);
    EXPECT_EQ(Show({{0}, {kChiSquare}, 9.0, 0.0, 1.0}, level).IsHighlighted(0, 0), units >= 16) << units;
  }
}

}  // namespace
}  // namespace orv
