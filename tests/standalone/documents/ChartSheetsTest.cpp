#include <gtest/gtest.h>

#include <cmath>

#include "AwkwardDocuments.h"
#include "standalone/documents/ChartSheets.h"

namespace orv {
namespace {

const ChartContent TwoCurves{
    "Time",
    "Survival",
    {{"a", "value", {0, 5}, {1, NoNumber}}, {"none", "value", {}, {}}, {"b", "value", {3}, {0.5}}}};

TEST(RangesOfSeries, GiveARowToEachSeries) {
  const SheetContent sheet = RangesOfSeries(TwoCurves);
  EXPECT_EQ(sheet.RowNames, (std::vector<std::string>{"a", "none", "b"}));
  ASSERT_EQ(sheet.Columns.size(), 5U);
  EXPECT_EQ(sheet.Columns[0].Numbers, (std::vector<double>{2, 0, 1}));
  EXPECT_EQ(sheet.Columns[2].Name, "Time to");
  EXPECT_EQ(sheet.Columns[2].Numbers[0], 5);
  EXPECT_EQ(sheet.Columns[4].Numbers[0], 1) << "a missing value has no part in the range";
  EXPECT_TRUE(std::isnan(sheet.Columns[1].Numbers[1])) << "a series without points has no range";
}

TEST(PointsOfSeries, GiveARowToEachPoint) {
  const SheetContent sheet = PointsOfSeries(TwoCurves);
  EXPECT_EQ(sheet.RowNames, (std::vector<std::string>{"a", "a", "b"}));
  ASSERT_EQ(sheet.Columns.size(), 2U);
  EXPECT_EQ(sheet.Columns[0].Name, "Time");
  EXPECT_EQ(sheet.Columns[0].Numbers, (std::vector<double>{0, 5, 3}));
  EXPECT_EQ(sheet.Columns[1].Name, "Survival");
  EXPECT_EQ(sheet.Columns[1].Numbers[2], 0.5);
  EXPECT_TRUE(std::isnan(sheet.Columns[1].Numbers[1]));
}

}  // namespace
}  // namespace orv
