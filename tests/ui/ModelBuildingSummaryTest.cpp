// The button for the summary of model building: the table of the procedure that ran.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "support/SheetReading.h"
#include "support/TwoWayCases.h"
#include "ui/CCoxPHResults.h"

namespace orv {
namespace {

using namespace testing;
using Texts = std::vector<std::string>;

// An analysis with the covariates x and z, after its run.
std::unique_ptr<TestAnalysis> RunWith(int modelBuilding, int forced = 0) {
  std::vector<TestColumn> columns = TwoWayCases(kUnbalanced);
  TestRandom random(5);
  columns.push_back({"z", {}});
  for (std::size_t row = 0; row < columns[0].Values.size(); ++row) {
    columns.back().Values.push_back(random.Value() - 0.2 * columns[0].Values[row]);
  }
  auto analysis = std::make_unique<TestAnalysis>(columns);
  analysis->Time({"time"}).Status("status").Covariates({"x", "z"}).DefaultDesign();
  analysis->Settings().ModelBuilding = static_cast<std::int16_t>(modelBuilding);
  analysis->Fields.EffectsToForce = forced;
  EXPECT_EQ(analysis->Run(), 0) << ::testing::PrintToString(analysis->Host.Messages());
  return analysis;
}

TEST(ModelBuildingSummary, ShowsTheTableOfTheProcedureThatRan) {
  struct {
    int modelBuilding;
    const char* title;
    Texts columns;
  } const cases[] = {
      {ModelBuildings::Forward, "Summary of Forward Selection", {"Effect Entered", "Score Chi-Square", "P value"}},
      {ModelBuildings::Backward, "Summary of Backward Selection", {"Effect Removed", "Wald", "P value"}},
      {ModelBuildings::Stepwise,
       "Summary of Stepwise Selection",
       {"Effect Entered", "Effect Removed", "Score Chi-Square", "Wald", "P value"}},
      {ModelBuildings::BestSubsets, "Best subset results", {"No. of effects", "Score", "Variable 1", "Variable 2"}},
  };
  for (const auto& c : cases) {
    const auto analysis = RunWith(c.modelBuilding);
    const std::size_t before = analysis->Host.Sheets.size();
    CCoxPHResults(analysis->Analysis).ModelBuildingSummary();
    ASSERT_EQ(analysis->Host.Sheets.size(), before + 1) << c.title;
    const SheetView sheet = LastSheet(analysis->Host);
    EXPECT_EQ(sheet.Titles(), Texts{c.title});
    EXPECT_EQ(sheet.ColumnNames(), c.columns);
  }
}

// The lists outlive the reduction of the design: z has entered and x is gone.
TEST(ModelBuildingSummary, ShowsTheStepsOfTheFullDesignAfterItsReduction) {
  const auto forward = RunWith(ModelBuildings::Forward);
  CCoxPHResults(forward->Analysis).ModelBuildingSummary();
  const SheetView entered = LastSheet(forward->Host);
  ASSERT_EQ(entered.RowNames(), Texts{"1"});
  EXPECT_EQ(entered.Text(0, "Effect Entered"), "z");
  EXPECT_EQ(forward->Data().CoefficientCount, 1U);

  const auto backward = RunWith(ModelBuildings::Backward);
  CCoxPHResults(backward->Analysis).ModelBuildingSummary();
  const SheetView removed = LastSheet(backward->Host);
  ASSERT_EQ(removed.RowNames(), Texts{"1"});
  EXPECT_EQ(removed.Text(0, "Effect Removed"), "x");
}

TEST(ModelBuildingSummary, SaysThatAllEffectsWereForced) {
  for (const int modelBuilding :
       {ModelBuildings::Forward, ModelBuildings::Backward, ModelBuildings::Stepwise, ModelBuildings::BestSubsets}) {
    const auto analysis = RunWith(modelBuilding, 2);
    CCoxPHResults(analysis->Analysis).ModelBuildingSummary();
    const SheetView sheet = LastSheet(analysis->Host);
    EXPECT_EQ(sheet.ColumnNames(), Texts{"Summary"}) << modelBuilding;
    EXPECT_EQ(sheet.Texts(0), Texts{"All effects were forced into the model."}) << modelBuilding;
  }
}

TEST(ModelBuildingSummary, ShowsNothingAfterAFitOfAllEffects) {
  const auto analysis = RunWith(ModelBuildings::AllEffects);
  const std::size_t before = analysis->Host.Sheets.size();
  CCoxPHResults(analysis->Analysis).ModelBuildingSummary();
  EXPECT_EQ(analysis->Host.Sheets.size(), before);
}

}  // namespace
}  // namespace orv
