// The sheet of residuals, with columns written by hand.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "output/ResidualTable.h"
#include "support/SheetReading.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::LastSheet;
using testing::SheetView;
using testing::TestAnalysis;
using Texts = std::vector<std::string>;
using Vector = std::vector<double>;

// Five cases; sorted by time, the rows are those of cases 4, 2, 5, 1 and 3. Case 4 is censored.
class ResidualTableTest : public ::testing::Test {
 protected:
  ResidualTableTest() : analysis({{"time", {7, 3, 9, 1, 5}}, {"status", {1, 1, 1, 0, 1}}, {"a", {2, 1, 4, 3, 5}}}) {
    analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
    analysis.PrepareFit();
  }
  SheetView Show(const std::vector<ResidualColumn>& columns, int extraColumns = 0) {
    ResidualSheet(analysis.Fit(), columns, RowsByCaseNumber(analysis.Fit()), extraColumns).Show();
    return LastSheet(analysis.Host);
  }
  TestAnalysis analysis;
  Vector values = {0.25, 0.5, 0.75, 1.0, 1.25};  // by sorted row
};

TEST_F(ResidualTableTest, RowsComeInTheOrderOfTheInput) {
  EXPECT_EQ(RowsByCaseNumber(analysis.Fit()), (std::vector<int>{4, 2, 5, 1, 3}));
}

TEST_F(ResidualTableTest, ValuesAreLookedUpBySortedRow) {
  const SheetView sheet = Show({{"first", &values}});
  EXPECT_EQ(sheet.Titles(), (Texts{"Residuals"}));
  EXPECT_EQ(sheet.RowNames(), (Texts{"1", "2", "3", "4", "5"}));
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"first"}));
  const Vector expected = {1.0, 0.5, 1.25, 0.25, 0.75};
  for (int line = 0; line < 5; ++line)
    EXPECT_EQ(sheet.Number(line, 0), expected[static_cast<std::size_t>(line)]) << line;
}

TEST_F(ResidualTableTest, ColumnOfEventsLeavesCensoredCasesOut) {
  const SheetView sheet = Show({{"events", &values, true}, {"all", &values, false}});
  for (int line = 0; line < 5; ++line) {
    EXPECT_EQ(sheet.Number(line, 0), line == 3 ? std::nullopt : sheet.Number(line, 1)) << line;
  }
  EXPECT_EQ(sheet.Number(3, 1), 0.25);
}

TEST_F(ResidualTableTest, ColumnWithoutValuesStaysMissing) {
  const Vector tooShort = {1.0, 2.0};
  const SheetView sheet = Show({{"none", nullptr}, {"short", &tooShort}, {"whole", &values}});
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"none", "short", "whole"}));
  for (int line = 0; line < 5; ++line) {
    EXPECT_EQ(sheet.Number(line, 0), std::nullopt);
    EXPECT_EQ(sheet.Number(line, 1), std::nullopt);
    EXPECT_NE(sheet.Number(line, 2), std::nullopt);
  }
}

TEST_F(ResidualTableTest, ExtraColumnsStandBehind) {
  const SheetView sheet = Show({{"whole", &values}}, 2);
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"whole", "", ""}));
  EXPECT_EQ(sheet.Number(0, 2), std::nullopt);
}

}  // namespace
}  // namespace orv
