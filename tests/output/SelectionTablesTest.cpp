// The summary of model building: whole sheets of every procedure, from lists as the searches leave them.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "output/SelectionTables.h"
#include "support/SheetReading.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using namespace testing;
using Texts = std::vector<std::string>;
using Vector = std::vector<double>;
using Bits = std::vector<bool>;
using Cell = std::variant<std::monostate, double, std::string>;  // the first for a missing cell
using Rows = std::vector<std::vector<Cell>>;

const Cell kMissing;
// Longer than a field of a sheet.
constexpr const char* kLongName = "Karnofsky_score_at_entry_of_the_trial*months_from_diagnosis";

Cell CellOf(const SheetView& sheet, int row, int column) {
  const std::string text = sheet.Text(row, column);
  if (!text.empty() && text != "(no text column)") return text;
  const std::optional<double> number = sheet.Number(row, column);
  return number ? Cell(*number) : kMissing;
}

class SelectionTables : public ::testing::Test {
 protected:
  SelectionTables()
      : analysis({{"x", {1, 4, 2, 5}},
                  {"z", {2, 1, 2, 4}},
                  {"u", {1, 1, 3, 1}},
                  {"time", {5, 3, 8, 1}},
                  {"s", {1, 1, 0, 1}}}) {
    analysis.Time({"time"}).Status("s").Covariates({"x", "z", "u"});
    analysis.Design({{"x", "v1"}, {kLongName, "v1*v2"}, {"u", "v3"}});
  }
  CCoxFit& Prepare(int modelBuilding) {
    analysis.Settings().ModelBuilding = static_cast<std::int16_t>(modelBuilding);
    return analysis.PrepareFit();
  }
  std::size_t Sheets() const { return analysis.Host.Sheets.size(); }

  // The last sheet, all of it.
  void ExpectSheet(const Texts& titles,
                   const std::string& shortName,
                   const Texts& columns,
                   const Texts& rows,
                   const Rows& cells) {
    ShowModelBuildingSummary(analysis.Fit());
    ASSERT_EQ(Sheets(), 1U);
    const SheetView sheet = LastSheet(analysis.Host);
    EXPECT_EQ(sheet.Titles(), titles);
    EXPECT_EQ(sheet.ShortName(), shortName);
    EXPECT_EQ(sheet.ColumnNames(), columns);
    EXPECT_EQ(sheet.RowNames(), rows);
    ASSERT_EQ(static_cast<std::size_t>(sheet.Rows()), cells.size());
    for (int row = 0; row < sheet.Rows(); ++row) {
      const std::vector<Cell>& expected = cells[static_cast<std::size_t>(row)];
      ASSERT_EQ(static_cast<std::size_t>(sheet.Columns()), expected.size());
      for (int column = 0; column < sheet.Columns(); ++column) {
        EXPECT_EQ(CellOf(sheet, row, column), expected[static_cast<std::size_t>(column)]) << row << ", " << column;
        EXPECT_FALSE(sheet.IsHighlighted(row, column));
      }
    }
  }
  void ExpectOneCell(const std::string& title) {
    ExpectSheet({title}, "", {"Summary"}, {""}, {{"All effects were forced into the model."}});
  }

  TestAnalysis analysis;
};

// ---- Forward
// ---------------------------------------------------------------------------------------------------------

TEST_F(SelectionTables, ForwardHasARowForEachEffectEntered) {
  CCoxFit& fit = Prepare(ModelBuildings::Forward);
  fit.m_ForwardEffects = {3, 2};
  fit.m_ForwardNames = {"u", kLongName};
  fit.m_ForwardScores = {20.5, 4.25};
  fit.m_ForwardPValues = {6e-6, 0.0393};
  ExpectSheet({"Summary of Forward Selection"}, "Step", {"Effect Entered", "Score Chi-Square", "P value"}, {"1", "2"},
              {{"u", 20.5, 6e-6}, {kLongName, 4.25, 0.0393}});
}

TEST_F(SelectionTables, ForwardLeavesForcedEffectsOut) {
  CCoxFit& fit = Prepare(ModelBuildings::Forward);
  fit.EffectsForcedInModel = 2;
  fit.m_ForwardEffects = {1, 3, 2};
  fit.m_ForwardNames = {"x", "u", kLongName};
  fit.m_ForwardScores = {-1.0, -1.0, 4.25};
  fit.m_ForwardPValues = {-1.0, -1.0, 0.0393};
  ExpectSheet({"Summary of Forward Selection"}, "Step", {"Effect Entered", "Score Chi-Square", "P value"}, {"1"},
              {{kLongName, 4.25, 0.0393}});
}

TEST_F(SelectionTables, ForwardWithoutStepsHasOneCell) {
  CCoxFit& fit = Prepare(ModelBuildings::Forward);
  fit.EffectsForcedInModel = 1;
  fit.m_ForwardEffects = {1};
  fit.m_ForwardNames = {"x"};
  fit.m_ForwardScores = {-1.0};
  fit.m_ForwardPValues = {-1.0};
  ExpectOneCell("Summary of Forward Selection");
}

// ---- Backward
// --------------------------------------------------------------------------------------------------------

TEST_F(SelectionTables, BackwardHasARowForEachEffectRemoved) {
  CCoxFit& fit = Prepare(ModelBuildings::Backward);
  fit.m_BackwardEffects = {2, 1};
  fit.m_BackwardNames = {kLongName, "x"};
  fit.m_BackwardWalds = {0.0001, 1.75};
  fit.m_BackwardPValues = {0.992, 0.186};
  ExpectSheet({"Summary of Backward Selection"}, "Step", {"Effect Removed", "Wald", "P value"}, {"1", "2"},
              {{kLongName, 0.0001, 0.992}, {"x", 1.75, 0.186}});
}

TEST_F(SelectionTables, BackwardWithoutRemovalsHasOneCell) {
  Prepare(ModelBuildings::Backward);
  ExpectOneCell("Summary of Backward Selection");
}

// ---- Stepwise
// --------------------------------------------------------------------------------------------------------

const Texts kStepColumns = {"Effect Entered", "Effect Removed", "Score Chi-Square", "Wald", "P value"};

// Effect 3 enters, 2 enters and in the same pass 3 is removed, 1 enters.
TEST_F(SelectionTables, StepwiseListsEntriesAndRemovalsInTheirOrder) {
  CCoxFit& fit = Prepare(ModelBuildings::Stepwise);
  fit.m_StepActions = {StepActions::Entry, StepActions::Entry, StepActions::Removal, StepActions::Entry};
  fit.m_StepEntered = {3, 2, 1};
  fit.m_StepEnteredNames = {"u", kLongName, "x"};
  fit.m_StepScores = {9.5, 4.25, 3.5};
  fit.m_StepEntryPValues = {0.002, 0.0393, 0.061};
  fit.m_StepRemoved = {3};
  fit.m_StepRemovedNames = {"u"};
  fit.m_StepWalds = {0.5};
  fit.m_StepRemovalPValues = {0.48};
  ExpectSheet({"Summary of Stepwise Selection"}, "Step", kStepColumns, {"1", "2", "3", "4"},
              {{"u", kMissing, 9.5, kMissing, 0.002},
               {kLongName, kMissing, 4.25, kMissing, 0.0393},
               {kMissing, "u", kMissing, 0.5, 0.48},
               {"x", kMissing, 3.5, kMissing, 0.061}});
}

// A forced effect has its number among the actions; numbers 1 and 2 are no entry and no removal.
TEST_F(SelectionTables, StepwiseSkipsTheNumbersOfForcedEffects) {
  CCoxFit& fit = Prepare(ModelBuildings::Stepwise);
  fit.EffectsForcedInModel = 2;
  fit.m_StepActions = {1, 2, StepActions::Entry, StepActions::Removal};
  fit.m_StepEntered = {1, 2, 3};
  fit.m_StepEnteredNames = {"x", kLongName, "u"};
  fit.m_StepScores = {-1.0, -1.0, 9.5};
  fit.m_StepEntryPValues = {-1.0, -1.0, 0.002};
  fit.m_StepRemoved = {3};
  fit.m_StepRemovedNames = {"u"};
  fit.m_StepWalds = {0.5};
  fit.m_StepRemovalPValues = {0.48};
  ExpectSheet({"Summary of Stepwise Selection"}, "Step", kStepColumns, {"1", "2"},
              {{"u", kMissing, 9.5, kMissing, 0.002}, {kMissing, "u", kMissing, 0.5, 0.48}});
}

TEST_F(SelectionTables, StepwiseWithoutStepsHasOneCell) {
  CCoxFit& fit = Prepare(ModelBuildings::Stepwise);
  fit.EffectsForcedInModel = 3;
  fit.m_StepActions = {1, 2, 3};
  fit.m_StepEntered = {1, 2, 3};
  fit.m_StepEnteredNames = {"x", kLongName, "u"};
  fit.m_StepScores = fit.m_StepEntryPValues = {-1.0, -1.0, -1.0};
  ExpectOneCell("Summary of Stepwise Selection");
}

// ---- Best subsets
// ----------------------------------------------------------------------------------------------------

const Texts kSubsetColumns = {"No. of effects", "Score", "Variable 1", "Variable 2", "Variable 3"};

TEST_F(SelectionTables, BestSubsetsNameTheMembersOfEachRow) {
  CCoxFit& fit = Prepare(ModelBuildings::BestSubsets);
  fit.m_SubsetCount = 3;
  fit.m_SubsetScores = {4.5, 6.25, 6.5};
  fit.m_SubsetMembers = {{false, true, false}, {true, false, true}, {true, true, true}};
  ExpectSheet(
      {"Best subset results"}, "", kSubsetColumns, {"", "", ""},
      {{1.0, 4.5, kLongName, kMissing, kMissing}, {2.0, 6.25, "x", "u", kMissing}, {3.0, 6.5, "x", kLongName, "u"}});
}

TEST_F(SelectionTables, BestSubsetsTellOfForcedEffects) {
  CCoxFit& fit = Prepare(ModelBuildings::BestSubsets);
  analysis.Settings().EffectsToForce = 1;
  fit.m_SubsetCount = 2;
  fit.m_SubsetScores = {6.25, 6.5};
  fit.m_SubsetMembers = {{true, false, true}, {true, true, true}};
  ExpectSheet({"Best subset results", "The first 1 effect(s) were forced into the model."}, "", kSubsetColumns,
              {"", ""}, {{2.0, 6.25, "x", "u", kMissing}, {3.0, 6.5, "x", kLongName, "u"}});
}

TEST_F(SelectionTables, BestSubsetsMarkWhatIsHeldFixed) {
  analysis.StartAt({0.5, 0.25, 0.0}).Fix({true, true, false});
  CCoxFit& fit = Prepare(ModelBuildings::BestSubsets);
  fit.m_SubsetCount = 1;
  fit.m_SubsetScores = {6.5};
  fit.m_SubsetMembers = {{true, true, true}};
  ExpectSheet({"Best subset results", " * denotes parameters held fixed at specified values."}, "", kSubsetColumns,
              {""}, {{3.0, 6.5, "* x", std::string("* ") + kLongName, "u"}});
}

TEST_F(SelectionTables, BestSubsetsTellOfBoth) {
  analysis.StartAt({0.0, 0.25, 0.0}).Fix({false, true, false});
  CCoxFit& fit = Prepare(ModelBuildings::BestSubsets);
  analysis.Settings().EffectsToForce = 1;
  fit.m_SubsetCount = 1;
  fit.m_SubsetScores = {6.5};
  fit.m_SubsetMembers = {{true, true, true}};
  ExpectSheet({"Best subset results", " * denotes parameters held fixed at specified values.",
               "The first 1 effect(s) were forced into the model."},
              "", kSubsetColumns, {""}, {{3.0, 6.5, "x", std::string("* ") + kLongName, "u"}});
}

TEST_F(SelectionTables, BestSubsetsWithoutRowsHaveOneCell) {
  Prepare(ModelBuildings::BestSubsets);
  analysis.Settings().EffectsToForce = 3;
  ExpectOneCell("Best subset results");
}

// ---- Nothing to show
// -------------------------------------------------------------------------------------------------

TEST_F(SelectionTables, NothingIsShownWithoutModelBuilding) {
  CCoxFit& fit = Prepare(ModelBuildings::AllEffects);
  fit.m_ForwardEffects = {1};
  fit.m_SubsetCount = 1;
  ShowModelBuildingSummary(fit);
  EXPECT_EQ(Sheets(), 0U);
  EXPECT_TRUE(analysis.Host.Messages().empty());
}

}  // namespace
}  // namespace orv
