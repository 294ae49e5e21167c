// Best subsets as a step of the run: where they are offered, the fit after them, cancel and numerical failure.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <string>
#include <vector>

#include "select/SubsetSearch.h"

namespace orv {
namespace {

using namespace testing;
using Bits = std::vector<bool>;
using Texts = std::vector<std::string>;

constexpr const char* kStopped =
    "A numerical error occurred during model building.  Model building has stopped.  The analysis will now maximize "
    "the "
    "likelihood of the model containing the effects selected prior to the numerical issue.";
constexpr const char* kBarTitle = "Performing model building";

SubsetCases Columns(int count) {
  SubsetCases of;
  of.Columns = count;
  of.Rows = 60;
  return of;
}

// Runs as the startup dialog does.
int RunFromDialog(SubsetSearch& search) {
  StartupFields& fields = search.Analysis.Fields;
  fields.EffectsToForce = search.Analysis.Settings().EffectsToForce;
  fields.DisplayBest = search.Analysis.Settings().DisplayBest;
  return search.Analysis.Run();
}

const BarRecord* SearchBar(const TestHost& host) {
  for (const BarRecord& bar : host.Bars) {
    if (bar.Title == kBarTitle) return &bar;
  }
  return nullptr;
}

// How often the bar moved to a position or beyond.
int MovesFrom(const BarRecord& bar, int position) {
  return static_cast<int>(
      std::count_if(bar.Positions.begin(), bar.Positions.end(), [position](int moved) { return moved >= position; }));
}

// Calls an action once the bar of the search stands at a position.
void AtSearchPosition(TestHost& host, int position, const std::function<void()>& action) {
  host.OnBarMove = [&host, position, action](int moved) {
    if (!host.Bars.back().Open || host.Bars.back().Title != kBarTitle || moved < position) return;
    action();
  };
}

// ---- The fit afterwards
// ----------------------------------------------------------------------------------------------

TEST(BestSubsetsRun, AllEffectsAreFittedAfterwards) {
  for (const int forced : {0, 2, 5}) {
    SubsetSearch all(Columns(5), 7);
    all.Analysis.Settings().ModelBuilding = ModelBuildings::AllEffects;
    ASSERT_EQ(RunFromDialog(all), 0);
    SubsetSearch best(Columns(5), 7);
    best.Analysis.Settings().EffectsToForce = forced;
    ASSERT_EQ(RunFromDialog(best), 0);
    EXPECT_EQ(best.Analysis.Host.Messages(), Texts{});
    const CCoxFit& a = all.Analysis.Fit();
    const CCoxFit& b = best.Analysis.Fit();
    EXPECT_EQ(b.m_BetaHistory, a.m_BetaHistory) << forced;
    EXPECT_EQ(b.m_LogLikHistory, a.m_LogLikHistory);
    EXPECT_EQ(b.m_Covariance, a.m_Covariance);
    EXPECT_EQ(b.m_BetaHistory.back().size(), 5U);
    EXPECT_EQ(best.Analysis.Data().EffectCount, 5U);
    EXPECT_TRUE(b.m_KeptColumns.empty()) << "the design is not reduced";
    EXPECT_EQ(b.m_SubsetCount, 5 - forced) << "and the rows are still there";
    EXPECT_EQ(b.m_SubsetBestPerSize, forced == 0);
  }
}

TEST(BestSubsetsRun, DoesNotTouchTheFlagOfAReducedDesign) {
  for (const bool ready : {true, false}) {
    SubsetSearch search(Columns(3));
    search.Analysis.Settings().FinalFitReady = ready;
    ASSERT_EQ(search.Analysis.RunUnchecked(), 0);
    EXPECT_EQ(search.Analysis.Settings().FinalFitReady, ready);
  }
}

TEST(BestSubsetsRun, ProductTakesTheExhaustiveRoute) {
  SubsetSearch search(Columns(3), 8);
  search.Analysis.Design({{"x1", "v1"}, {"x2", "v2"}, {"x3", "v3"}, {"x1*x2", "v1*v2"}});
  ASSERT_EQ(RunFromDialog(search), 0);
  EXPECT_FALSE(search.Analysis.Fit().m_SubsetBestPerSize);
  EXPECT_EQ(search.Analysis.Fit().m_SubsetsScored, 15U);
  EXPECT_EQ(search.Analysis.Fit().m_SubsetCount, 4);
}

TEST(BestSubsetsRun, BarIsOpenDuringTheSearch) {
  for (const int forced : {0, 1}) {
    SubsetSearch search(Columns(8));
    search.Analysis.Settings().EffectsToForce = forced;
    ASSERT_EQ(RunFromDialog(search), 0);
    const BarRecord* bar = SearchBar(search.Analysis.Host);
    ASSERT_NE(bar, nullptr);
    EXPECT_TRUE(bar->Shown);
    EXPECT_FALSE(bar->Open);
    EXPECT_GE(bar->Total, 2);
    ASSERT_FALSE(bar->Positions.empty());
    EXPECT_TRUE(std::is_sorted(bar->Positions.begin(), bar->Positions.end()));
    EXPECT_LE(bar->Positions.back(), bar->Total);
  }
}

// ---- Where they are not offered
// --------------------------------------------------------------------------------------

TEST(BestSubsetsRun, FactorsFallBackToAllEffects) {
  SubsetSearch search(Columns(2));
  search.Analysis.Factor("stratum", {1, 2}).DefaultDesign();
  ASSERT_EQ(RunFromDialog(search), 0);
  EXPECT_EQ(search.Analysis.Settings().ModelBuilding, ModelBuildings::AllEffects);
  EXPECT_EQ(search.Analysis.Fit().m_SubsetsScored, 0U);
  EXPECT_EQ(search.Analysis.Fit().m_BetaHistory.back().size(), 3U);
  EXPECT_EQ(SearchBar(search.Analysis.Host), nullptr);
  EXPECT_EQ(search.Analysis.Host.Messages(), Texts{});
}

TEST(BestSubsetsRun, TimeDependentInputFallsBackToAllEffects) {
  SubsetSearch search(Columns(2));
  search.Analysis.Settings().InputType = InputTypes::TimeDependent;
  ASSERT_EQ(search.Analysis.RunUnchecked(), 0);
  EXPECT_EQ(search.Analysis.Settings().ModelBuilding, ModelBuildings::AllEffects);
  EXPECT_EQ(search.Analysis.Fit().m_SubsetsScored, 0U);
  EXPECT_EQ(search.Analysis.Fit().m_BetaHistory.back().size(), 2U);
  EXPECT_EQ(SearchBar(search.Analysis.Host), nullptr);
}

// A subset is a mask of 32 bits.
TEST(BestSubsetsRun, MoreThan31FreeEffectsAreRefusedOnTheExhaustiveRoute) {
  SubsetCases of = Columns(33);
  of.Rows = 80;
  SubsetSearch search(of);
  search.Analysis.Settings().EffectsToForce = 1;
  ASSERT_EQ(RunFromDialog(search), 1);
  EXPECT_EQ(
      search.Analysis.Host.Messages(),
      (Texts{"Best subsets can compare at most 31 effects beyond the forced ones when effects are forced or held "
             "fixed, or when the design contains interactions.  Please force more effects or reduce the design."}));
  EXPECT_EQ(search.Analysis.Analysis.m_pCoxFit, nullptr);
}

// ---- Cancel
// ----------------------------------------------------------------------------------------------------------

TEST(BestSubsetsRun, CancelKeepsTheRowsFound) {
  for (const int forced : {0, 1}) {
    SubsetSearch whole(Columns(9), 12);
    whole.Analysis.Settings().EffectsToForce = forced;
    const auto allScored = (forced == 0 ? whole.Bounded() : whole.Exhaustive()).m_SubsetsScored;

    SubsetSearch search(Columns(9), 12);
    search.Analysis.Settings().EffectsToForce = forced;
    TestHost& host = search.Analysis.Host;
    CCoxFit& fit = search.Prepared();
    host.CancelBarAt = 5;
    forced == 0 ? BestSubsetsBounded(fit) : BestSubsetsAllModels(fit);
    EXPECT_LT(fit.m_SubsetsScored, allScored) << forced;
    EXPECT_GT(fit.m_SubsetCount, 0);
    EXPECT_EQ(host.Messages(), Texts{});
    EXPECT_FALSE(SearchBar(host)->Open);
    for (std::size_t row = 0; row < fit.m_SubsetScores.size(); ++row) {
      EXPECT_NEAR(fit.m_SubsetScores[row], search.ScoreOf(fit.m_SubsetMembers[row]), 1e-9 * fit.m_SubsetScores[row]);
    }
  }
}

TEST(BestSubsetsRun, CancelFromOutsideEndsTheSearch) {
  for (const int forced : {0, 1}) {
    SubsetSearch search(Columns(9), 12);
    search.Analysis.Settings().EffectsToForce = forced;
    TestHost& host = search.Analysis.Host;
    CCoxFit& fit = search.Prepared();
    AtSearchPosition(host, 5, [&host] { host.Cancelled = true; });
    forced == 0 ? BestSubsetsBounded(fit) : BestSubsetsAllModels(fit);
    EXPECT_EQ(MovesFrom(*SearchBar(host), 5), 1) << forced;
  }
}

// ---- Numerical failure
// -----------------------------------------------------------------------------------------------

TEST(BestSubsetsRun, FailureOnTheBoundedRouteKeepsTheRowsFoundAndFitsAllEffects) {
  SubsetSearch search(Columns(9), 12);
  TestHost& host = search.Analysis.Host;
  AtSearchPosition(host, 5, [] { std::feraiseexcept(FE_OVERFLOW); });
  ASSERT_EQ(RunFromDialog(search), 0);
  EXPECT_EQ(host.Messages(), Texts{kStopped});
  const CCoxFit& fit = search.Analysis.Fit();
  EXPECT_TRUE(fit.m_Converged);
  EXPECT_EQ(fit.m_BetaHistory.back().size(), 9U);
  // The set of all effects is scored last.
  EXPECT_EQ(fit.m_SubsetCount, 8);
  EXPECT_TRUE(fit.m_SubsetQueue.empty());
  for (std::size_t row = 0; row < fit.m_SubsetMembers.size(); ++row) {
    EXPECT_EQ(std::count(fit.m_SubsetMembers[row].begin(), fit.m_SubsetMembers[row].end(), true), row + 1);
  }
  const auto closed = std::find(host.Events.begin(), host.Events.end(), "message");
  EXPECT_EQ(MovesFrom(*SearchBar(host), 5), 1);
  ASSERT_NE(closed, host.Events.begin());
  EXPECT_EQ(*(closed - 1), "bar closed") << "the bar is closed before the message";
  EXPECT_EQ(std::fetestexcept(FE_OVERFLOW | FE_INVALID | FE_DIVBYZERO), 0);
}

TEST(BestSubsetsRun, FailureAtTheStartOfTheBoundedRouteLeavesNoRow) {
  SubsetSearch search(Columns(4));
  CCoxFit& fit = search.Prepared();
  search.Analysis.Data().CaseTable.GetRow(1, CaseTable::Access::Write)[0] = 1e200;
  BestSubsetsBounded(fit);
  EXPECT_EQ(search.Analysis.Host.Messages(), Texts{kStopped});
  EXPECT_EQ(fit.m_SubsetCount, 0);
  EXPECT_TRUE(fit.m_SubsetScores.empty());
  EXPECT_TRUE(fit.m_SubsetMembers.empty());
}

TEST(BestSubsetsRun, FailureUnderAutomationSetsTheErrorStateFirst) {
  SubsetSearch search(Columns(4));
  CCoxFit& fit = search.Prepared();
  search.Analysis.Host.Automation = true;
  search.Analysis.Data().CaseTable.GetRow(1, CaseTable::Access::Write)[0] = 1e200;
  search.Analysis.Host.Events.clear();
  BestSubsetsBounded(fit);
  EXPECT_EQ(search.Analysis.Host.Events, (Texts{"bar closed", "error handler", "message"}));
}

TEST(BestSubsetsRun, FailureOnTheExhaustiveRouteEndsTheRun) {
  SubsetSearch search(Columns(9), 12);
  search.Analysis.Settings().EffectsToForce = 1;
  TestHost& host = search.Analysis.Host;
  AtSearchPosition(host, 5, [] { std::feraiseexcept(FE_INVALID); });
  EXPECT_EQ(RunFromDialog(search), 1);
  ASSERT_EQ(host.Messages().size(), 1U);
  EXPECT_NE(host.Messages()[0], kStopped);
  EXPECT_EQ(search.Analysis.Analysis.m_pCoxFit, nullptr) << "there are no results";
  EXPECT_FALSE(SearchBar(host)->Open);
  EXPECT_EQ(std::fetestexcept(FE_OVERFLOW | FE_INVALID | FE_DIVBYZERO), 0);
}

}  // namespace
}  // namespace orv
