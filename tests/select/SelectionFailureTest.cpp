// What becomes of a selection when numbers fail, memory is out or the user cancels.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>
#include <string>

#include "core/SettingsFields.h"
#include "select/SelectionCases.h"

namespace orv {
namespace {

using ::testing::ElementsAre;
using testing::NamedSelection;
using testing::Names;
using testing::PreparedSelection;
using testing::TestAnalysis;
using testing::TestColumn;

constexpr int kBuildings[] = {ModelBuildings::Forward, ModelBuildings::Backward, ModelBuildings::Stepwise};

// Under reference coding an indicator of level 1 aliases the first column of f, so that column has a variance of 0
// while the second one counts. The last of the columns is z, 1 on level 1 of f.
class ZeroVarianceSelection {
 public:
  ZeroVarianceSelection() : Analysis(Columns()) {
    testing::SelectionForm form{.Coding = Codings::Reference};
    DefineSelectionForm(form, Analysis);
    Analysis.Covariates({"z"});
    Analysis.Design({{"z", "v13"}, {"f", "v8"}, {"a", "v4"}});
    Analysis.Settings().ModelBuilding = ModelBuildings::Backward;
    Analysis.Fields.PToRemove = 1e-9;
  }
  static std::vector<TestColumn> Columns() {
    std::vector<TestColumn> columns = testing::SelectionColumns(5, 80);
    TestColumn z{"z", {}};
    for (const double f : columns[7].Values) z.Values.push_back(f == 1.0 ? 1.0 : 0.0);
    columns.push_back(z);
    return columns;
  }
  TestAnalysis Analysis;
};

TEST(SelectionFailure, AZeroVarianceEndsTheSearchWithTheModelThatStands) {
  ZeroVarianceSelection run;
  ASSERT_EQ(run.Analysis.Run(), 0);
  EXPECT_THAT(run.Analysis.Host.Messages(), ElementsAre(testing::kModelBuildingStopped));
  EXPECT_EQ(run.Analysis.Settings().DesignEffects, (Names{"z", "f", "a"}));
  EXPECT_TRUE(run.Analysis.Fit().m_Converged);
  EXPECT_TRUE(run.Analysis.Host.ErrorHandlerModes.empty());
}

// Score tests are made on the scale of the data, where the relative risks of a covariate far from 0 leave the range of
// a double; its fit, on the standardised scale, does not fail.
TEST(SelectionFailure, AnOverflowInTheMiddleKeepsWhatIsSelected) {
  std::vector<TestColumn> columns = testing::SelectionColumns(5, 80);
  const auto named = [&columns](const char* name) {
    return std::find_if(columns.begin(), columns.end(), [name](const TestColumn& c) { return c.Name == name; });
  };
  TestColumn far{"far", named("a")->Values};
  for (double& value : far.Values) value += 1e6;
  columns.push_back(far);
  for (const int building : {ModelBuildings::Forward, ModelBuildings::Stepwise}) {
    TestAnalysis selection(columns);
    selection.Time({"time"}).Status("status").Covariates({"c", "far", "b"}).DefaultDesign();
    selection.Settings().ModelBuilding = static_cast<std::int16_t>(building);
    selection.Fields.PToEnter = 0.9;
    selection.Fields.PToRemove = 0.99;
    ASSERT_EQ(selection.Run(), 0) << building;
    EXPECT_THAT(selection.Host.Messages(), ElementsAre(testing::kModelBuildingStopped)) << building;
    EXPECT_EQ(selection.Settings().DesignEffects, Names{"far"}) << building;
    TestAnalysis alone(columns);
    alone.Time({"time"}).Status("status").Covariates({"far"}).DefaultDesign();
    ASSERT_EQ(alone.Run(), 0);
    EXPECT_NEAR(selection.Fit().m_BetaHistory.back()[0], alone.Fit().m_BetaHistory.back()[0], 1e-9) << building;
  }
}

TEST(SelectionFailure, TheBarClosesBeforeTheMessageAndAutomationHearsOfItFirst) {
  ZeroVarianceSelection run;
  run.Analysis.Host.Automation = true;
  ASSERT_EQ(run.Analysis.Run(), 0);
  const auto& events = run.Analysis.Host.Events;
  ASSERT_GE(events.size(), 3U);
  EXPECT_THAT(std::vector<std::string>(events.end() - 3, events.end()),
              ElementsAre("bar closed", "error handler", "message"));
  EXPECT_THAT(run.Analysis.Host.ErrorHandlerModes, ElementsAre(1));
}

// One that would take or give up all of its effects.
NamedSelection LongSelection(int building) {
  NamedSelection selection(building, {"c", "b", "a", "e"});
  selection.Limits(0.999, building == ModelBuildings::Backward ? 1e-12 : 0.9995);
  return selection;
}

// Calls `action` when the bar of the selection moves, not that of the reading.
void AtTheFirstStep(testing::TestHost& host, const std::function<void()>& action) {
  host.OnBarMove = [&host, action](int) {
    if (host.Bars.back().Title == "Performing model building") action();
  };
}

TEST(SelectionFailure, CancelAtTheBarKeepsWhatIsSelected) {
  for (const int building : kBuildings) {
    PreparedSelection run(LongSelection(building));
    auto& host = run.Analysis.Host;
    AtTheFirstStep(host, [&host] { host.CancelBarAt = 1; });
    ASSERT_EQ(run.Run(), 0) << building;
    EXPECT_EQ(run.Effects().size(), building == ModelBuildings::Backward ? 3U : 1U) << building;
    EXPECT_TRUE(run.Analysis.Fit().m_Converged) << building;
    EXPECT_TRUE(host.Messages().empty()) << building;
  }
}

TEST(SelectionFailure, ACancelFromElsewhereKeepsWhatIsSelected) {
  for (const int building : kBuildings) {
    PreparedSelection run(LongSelection(building));
    auto& host = run.Analysis.Host;
    AtTheFirstStep(host, [&host] { host.Cancelled = true; });
    ASSERT_EQ(run.Run(), 0) << building;
    EXPECT_EQ(run.Effects().size(), building == ModelBuildings::Backward ? 3U : 1U) << building;
    // The wish stands during the final fit too, which ends after its first iteration.
    EXPECT_EQ(run.Analysis.Fit().m_FitStatus, FitStatuses::Cancelled) << building;
    EXPECT_EQ(run.Analysis.Fit().m_BetaHistory.back().size(), run.Effects().size()) << building;
  }
}

// Whatever allocation fails, the run ends with results or with a message, and leaves neither a bar nor memory.
TEST(SelectionFailure, EveryFailingAllocationIsSurvived) {
  for (const int building : kBuildings) {
    NamedSelection selection(building, {"a", "f", "c"}, {.Coding = Codings::Overparameterized});
    selection.Limits(0.9, 0.2);
    PreparedSelection whole(selection);
    whole.Analysis.Host.FailAllocation(0);
    ASSERT_EQ(whole.Run(), 0);
    const int requests = whole.Analysis.Host.Requests();
    ASSERT_GT(requests, 10);
    for (int failing = 1; failing <= requests; ++failing) {
      PreparedSelection run(selection);
      const CoxSettings before = run.Analysis.Settings();
      run.Analysis.Host.FailAllocation(failing);
      const int failed = run.Run();
      const std::string what = std::to_string(building) + ", allocation " + std::to_string(failing);
      if (failed == 0) {
        EXPECT_NE(run.Analysis.Analysis.m_pCoxFit, nullptr) << what;
        EXPECT_FALSE(run.Effects().empty()) << what;
      } else {
        EXPECT_FALSE(run.Analysis.Host.Messages().empty()) << what;
        EXPECT_EQ(run.Effects(), before.DesignEffects) << what;
      }
      for (const auto& bar : run.Analysis.Host.Bars) EXPECT_FALSE(bar.Open) << what;
      EXPECT_EQ(run.Analysis.Host.LiveBlocks(), 0) << what;
      EXPECT_TRUE(run.Analysis.Settings().FinalFitReady) << what;
    }
  }
}

}  // namespace
}  // namespace orv
