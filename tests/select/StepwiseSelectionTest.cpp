// Stepwise selection: its rules, its table and its messages, one by one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "select/SelectionCases.h"

namespace orv {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::NamedSelection;
using testing::Names;
using testing::PreparedSelection;
using testing::SheetView;
using testing::TestAnalysis;
using testing::TestColumn;

NamedSelection Stepwise(const Names& effects) {
  return {ModelBuildings::Stepwise, effects};
}

// x and z drive the hazard; s is nearly their sum, so it comes first and is not needed once both are in.
std::vector<TestColumn> SumOfTwo() {
  TestRandom random(11);
  std::vector<TestColumn> columns = {{"s", {}}, {"x", {}}, {"z", {}}, {"time", {}}, {"status", {}}};
  for (int i = 0; i < 300; ++i) {
    const double x = random.Value();
    const double z = random.Value();
    const double wait = -std::log(0.5 + 0.499 * random.Value()) * std::exp(-1.5 * (x + z));
    const double values[] = {x + z + 0.8 * random.Value(), x, z, wait, random.Integer(6) > 0 ? 1.0 : 0.0};
    for (std::size_t c = 0; c < columns.size(); ++c) columns[c].Values.push_back(values[c]);
  }
  return columns;
}

TEST(StepwiseSelection, AnEffectThatOthersReplaceLeavesAgain) {
  TestAnalysis analysis(SumOfTwo());
  analysis.Time({"time"}).Status("status").Covariates({"s", "x", "z"}).DefaultDesign();
  analysis.Settings().ModelBuilding = ModelBuildings::Stepwise;
  analysis.Fields.PToEnter = 0.05;
  analysis.Fields.PToRemove = 0.05;
  ASSERT_EQ(analysis.Run(), 0);
  const CCoxFit& fit = analysis.Fit();
  EXPECT_EQ(fit.m_StepEnteredNames.front(), "s");
  EXPECT_THAT(fit.m_StepRemovedNames, ElementsAre("s"));
  EXPECT_THAT(fit.m_StepActions,
              ElementsAre(StepActions::Entry, StepActions::Entry, StepActions::Entry, StepActions::Removal));
  EXPECT_EQ(analysis.Settings().DesignEffects, (Names{"x", "z"}));
}

// Every entry is above such a limit of removal, so the first effect leaves in the pass in which it came.
TEST(StepwiseSelection, AnEntryThatIsTakenBackInItsPassEndsTheSearchWithTwoRows) {
  PreparedSelection run(Stepwise({"c", "a", "b"}).Force(1).Limits(0.6, 1e-14));
  ASSERT_EQ(run.Run(), 0) << "a limit of removal below that of entry is accepted";
  EXPECT_EQ(run.Effects(), Names{"c"});
  const CCoxFit& fit = run.Analysis.Fit();
  EXPECT_THAT(fit.m_StepActions, ElementsAre(1, StepActions::Entry, StepActions::Removal));
  const SheetView table = run.Summary();
  EXPECT_THAT(table.Titles(), ElementsAre("Summary of Stepwise Selection"));
  EXPECT_EQ(table.ShortName(), "Step");
  EXPECT_THAT(table.ColumnNames(),
              ElementsAre("Effect Entered", "Effect Removed", "Score Chi-Square", "Wald", "P value"));
  ASSERT_THAT(table.RowNames(), ElementsAre("1", "2"));
  EXPECT_EQ(table.Text(0, 0), fit.m_StepEnteredNames.back());
  EXPECT_EQ(table.Text(0, 1), "");
  EXPECT_EQ(table.Number(0, "Score Chi-Square"), fit.m_StepScores.back());
  EXPECT_EQ(table.Number(0, "Wald"), std::nullopt);
  EXPECT_EQ(table.Number(0, "P value"), fit.m_StepEntryPValues.back());
  EXPECT_EQ(table.Text(1, 0), "");
  EXPECT_EQ(table.Text(1, 1), fit.m_StepEnteredNames.back());
  EXPECT_EQ(table.Number(1, "Score Chi-Square"), std::nullopt);
  EXPECT_EQ(table.Number(1, "Wald"), fit.m_StepWalds[0]);
  EXPECT_EQ(table.Number(1, "P value"), fit.m_StepRemovalPValues[0]);
}

TEST(StepwiseSelection, WhenTheOnlyEntryIsTakenBackNothingIsSelected) {
  for (const bool intervals : {false, true}) {
    NamedSelection selection(ModelBuildings::Stepwise, {"a", "b"}, {.Intervals = intervals});
    PreparedSelection run(selection.Limits(0.9, 1e-14));
    EXPECT_EQ(run.Run(), 1);
    EXPECT_THAT(run.Analysis.Host.Messages(), ElementsAre(testing::kNothingSelected));
    EXPECT_EQ(run.Effects(), (Names{"a", "b"}));
  }
}

TEST(StepwiseSelection, WithAllEffectsForcedNoPassRuns) {
  PreparedSelection run(Stepwise({"c", "e"}).Force(2).Limits(0.9, 1e-9));
  ASSERT_EQ(run.Run(), 0);
  EXPECT_EQ(run.Effects(), (Names{"c", "e"}));
  EXPECT_THAT(run.Analysis.Fit().m_StepActions, ElementsAre(1, 2)) << "forced effects stand there by number";
  const auto& bars = run.Analysis.Host.Bars;
  const auto bar =
      std::find_if(bars.begin(), bars.end(), [](const auto& one) { return one.Title == "Performing model building"; });
  ASSERT_NE(bar, bars.end());
  EXPECT_THAT(bar->Positions, IsEmpty());
  const SheetView table = run.Summary();
  EXPECT_THAT(table.Titles(), ElementsAre("Summary of Stepwise Selection"));
  EXPECT_THAT(table.ColumnNames(), ElementsAre("Summary"));
  EXPECT_EQ(table.Text(0, 0), testing::kAllForced);
}

TEST(StepwiseSelection, AHeldEffectIsNeverACandidate) {
  for (const double toRemove : {1e-14, 0.95}) {
    PreparedSelection run(Stepwise({"a", "c"}).Hold({false, true}, {{0.0}, {0.25}}).Limits(0.9, toRemove));
    ASSERT_EQ(run.Run(), 0);
    const CCoxFit& fit = run.Analysis.Fit();
    EXPECT_THAT(fit.m_StepEntered, ElementsAre(2, 1));
    EXPECT_EQ(fit.m_StepScores[0], -1.0);
    EXPECT_EQ(fit.m_StepEntryPValues[0], -1.0);
    EXPECT_EQ(std::count(fit.m_StepRemoved.begin(), fit.m_StepRemoved.end(), 2), 0);
    EXPECT_EQ(fit.EffectsForcedInModel, 1);
  }
}

TEST(StepwiseSelection, BothLimitsAreChecked) {
  struct {
    double toEnter;
    double toRemove;
    const char* message;
  } const cases[] = {
      {0.0, 0.5, " Please specify the P to enter value between 0 and 1."},
      {1.0, 1.0, " Please specify the P to enter value between 0 and 1."},
      {0.5, 0.0, "Please specify the P to remove value between 0 and 1."},
      {0.5, 1.0, "Please specify the P to remove value between 0 and 1."},
  };
  for (const auto& c : cases) {
    PreparedSelection run(Stepwise({"a", "b"}).Limits(c.toEnter, c.toRemove));
    EXPECT_EQ(run.Run(), 1);
    EXPECT_THAT(run.Analysis.Host.Messages(), ElementsAre(c.message));
  }
}

// A limit for staying below that for entering is accepted, and lets effects go round: after the seventh step v1 is
// alone with an entry to come, as after the first.
TEST(StepwiseSelection, ALongerCycleEndsWhereItsFirstStateComesBack) {
  const std::vector<TestColumn> columns = {
      {"time", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
      {"status", {1, 1, 1, 1, 1, 0, 1, 1, 1, 1, 1, 1}},
      {"v0", {-0.237, -0.251, 0.304, -1.193, 0.292, 0.109, 0.303, 0.909, -1.203, -1.238, 1.426, 0.840}},
      {"v1", {0.488, 0.814, -0.285, 1.019, 1.453, 1.117, 0.209, -1.244, 1.022, -0.452, -0.342, -1.182}},
      {"v2", {-0.215, 0.165, 0.283, -0.407, -1.983, -0.263, -0.257, 0.322, -0.525, 0.940, 0.761, 0.408}},
      {"v3", {-0.049, 0.304, 0.274, -1.312, -2.492, -1.697, -0.470, 1.192, -1.396, 0.697, 0.496, 1.235}},
      {"v4", {1.623, -0.407, -0.261, 3.370, 4.213, 1.923, 0.947, -2.486, 2.826, -0.975, -1.749, -2.055}}};
  TestAnalysis selection(columns);
  selection.Time({"time"}).Status("status").Covariates({"v0", "v1", "v2", "v3", "v4"}).DefaultDesign();
  selection.Settings().ModelBuilding = ModelBuildings::Stepwise;
  selection.Fields.PToEnter = 0.6;
  selection.Fields.PToRemove = 0.2;
  ASSERT_EQ(selection.Run(), 0);
  EXPECT_THAT(selection.Host.Messages(), IsEmpty());
  EXPECT_EQ(selection.Fit().m_StepActions.size(), 7U);
  EXPECT_EQ(selection.Settings().DesignEffects, std::vector<std::string>{"v1"});
}

}  // namespace
}  // namespace orv
