#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "output/DesignTables.h"
#include "support/SheetReading.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::LastSheet;
using testing::SheetView;
using testing::TestAnalysis;
using Texts = std::vector<std::string>;

class DesignTablesTest : public ::testing::Test {
 protected:
  DesignTablesTest()
      : analysis({{"time", {1, 2, 3, 4, 5, 6}},
                  {"status", {1, 1, 1, 1, 1, 1}},
                  {"age", {1, 4, 2, 8, 5, 7}},
                  {"grade", {1, 2, 3, 1, 2, 3}, {{1, "low"}, {3, "high"}}},
                  {"arm", {10, 20, 10, 20, 10, 20}}}) {
    analysis.Time({"time"}).Status("status").Covariates({"age"}).Factor("grade", {1, 2, 3}).Factor("arm", {10, 20});
  }
  SheetView Show(int coding) {
    analysis.Settings().Coding = static_cast<std::int16_t>(coding);
    analysis.PrepareFit();
    analysis.Analysis.CreateDesignTermsSpreadsheet();
    return LastSheet(analysis.Host);
  }
  TestAnalysis analysis;
};

TEST_F(DesignTablesTest, HasFourColumnsUnderRestrictedCodingWithoutInteractions) {
  analysis.DefaultDesign();
  for (const int coding : {Codings::SigmaRestricted, Codings::Reference}) {
    const SheetView sheet = Show(coding);
    EXPECT_EQ(sheet.Titles(), (Texts{"Column Labels", "Labels for the columns of the design matrix X"}));
    EXPECT_EQ(sheet.ColumnNames(), (Texts{"Column", "Variable", "Level of Variable", "versus Level"}));
    EXPECT_EQ(sheet.Texts(0), (Texts{"1", "2", "3", "4"}));
    EXPECT_EQ(sheet.Texts(1), (Texts{"age", "grade", "grade", "arm"}));
    EXPECT_EQ(sheet.Texts(2), (Texts{"", "low", "2", "10"}));
    EXPECT_EQ(sheet.Texts(3), (Texts{"", "high", "high", "20"}));
  }
}

TEST_F(DesignTablesTest, HasThreeColumnsUnderOverparameterizedCoding) {
  analysis.DefaultDesign();
  const SheetView sheet = Show(Codings::Overparameterized);
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"Column", "Variable", "Level of Variable"}));
  EXPECT_EQ(sheet.Texts(0), (Texts{"1", "2", "3", "4", "5", "6"}));
  EXPECT_EQ(sheet.Texts(2), (Texts{"", "low", "2", "high", "10", "20"}));
}

TEST_F(DesignTablesTest, ReferenceLevelIsThatOfTheFactor) {
  analysis.DefaultDesign();
  analysis.Settings().ReferenceCodes = {2, 10};
  analysis.Settings().ReferenceCodeIndex = {2, 1};
  const SheetView sheet = Show(Codings::Reference);
  EXPECT_EQ(sheet.Texts(2), (Texts{"", "low", "high", "20"}));
  EXPECT_EQ(sheet.Texts(3), (Texts{"", "2", "2", "10"})) << "a code without a label is printed";
}

TEST_F(DesignTablesTest, InteractionsTakeAPlaceForEachVariable) {
  analysis.Design({{"age", "v3"}, {"grade*arm", "v4*v5"}, {"age*arm", "v3*v5"}});
  const SheetView sheet = Show(Codings::SigmaRestricted);
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"Column", "Variable", "Level of Variable", "versus Level", "Variable",
                                        "Level of Variable", "versus Level"}));
  ASSERT_EQ(sheet.Rows(), 4);
  EXPECT_EQ(sheet.Texts(1), (Texts{"age", "grade", "grade", "age"}));
  EXPECT_EQ(sheet.Texts(2), (Texts{"", "low", "2", ""}));
  EXPECT_EQ(sheet.Texts(3), (Texts{"", "high", "high", ""}));
  EXPECT_EQ(sheet.Texts(4), (Texts{"", "arm", "arm", "arm"}));
  EXPECT_EQ(sheet.Texts(5), (Texts{"", "10", "10", "10"}));
  EXPECT_EQ(sheet.Texts(6), (Texts{"", "20", "20", "20"}));
}

TEST_F(DesignTablesTest, InteractionsTakeTwoColumnsAPlaceUnderOverparameterizedCoding) {
  analysis.Design({{"arm", "v5"}, {"grade*arm", "v4*v5"}});
  const SheetView sheet = Show(Codings::Overparameterized);
  EXPECT_EQ(sheet.ColumnNames(), (Texts{"Column", "Variable", "Level of Variable", "Variable", "Level of Variable"}));
  EXPECT_EQ(sheet.Texts(1), (Texts{"arm", "arm", "grade", "grade", "grade", "grade", "grade", "grade"}));
  EXPECT_EQ(sheet.Texts(2), (Texts{"10", "20", "low", "low", "2", "2", "high", "high"}));
  EXPECT_EQ(sheet.Texts(3), (Texts{"", "", "arm", "arm", "arm", "arm", "arm", "arm"}));
  EXPECT_EQ(sheet.Texts(4), (Texts{"", "", "10", "20", "10", "20", "10", "20"}));
}

TEST_F(DesignTablesTest, ContinuousModelHasTheColumnsToo) {
  TestAnalysis plain({{"time", {1, 2, 3}}, {"status", {1, 1, 1}}, {"age", {1, 4, 2}}});
  plain.Time({"time"}).Status("status").Covariates({"age"}).DefaultDesign();
  plain.PrepareFit();
  plain.Analysis.CreateDesignTermsSpreadsheet();
  const SheetView sheet = LastSheet(plain.Host);
  EXPECT_EQ(sheet.Columns(), 4);
  EXPECT_EQ(sheet.Text(0, 1), "age");
  EXPECT_TRUE(plain.Host.Sheets.back().IsUnwritten(0, 2));
}

TEST_F(DesignTablesTest, NothingIsShownWithoutCoefficients) {
  TestAnalysis empty({{"time", {1, 2}}, {"status", {1, 1}}});
  empty.Time({"time"}).Status("status");
  empty.PrepareFit();
  empty.Analysis.CreateDesignTermsSpreadsheet();
  EXPECT_TRUE(empty.Host.Sheets.empty());
}

}  // namespace
}  // namespace orv
