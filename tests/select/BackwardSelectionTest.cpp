// Backward selection: its rules, its table and its messages, one by one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "select/SelectionCases.h"

namespace orv {
namespace {

using ::testing::ElementsAre;
using testing::NamedSelection;
using testing::Names;
using testing::PreparedSelection;
using testing::SelectionForm;
using testing::SheetView;

NamedSelection Backward(const Names& effects, const SelectionForm& form = {}) {
  return {ModelBuildings::Backward, effects, form};
}

TEST(BackwardSelection, ShowsTheRemovalsInTheirOrder) {
  PreparedSelection run(Backward({"a", "c", "e"}).Limits(0.5, 0.01));
  ASSERT_EQ(run.Run(), 0);
  const CCoxFit& fit = run.Analysis.Fit();
  ASSERT_FALSE(fit.m_BackwardNames.empty());
  const SheetView table = run.Summary();
  EXPECT_THAT(table.Titles(), ElementsAre("Summary of Backward Selection"));
  EXPECT_THAT(table.ColumnNames(), ElementsAre("Effect Removed", "Wald", "P value"));
  EXPECT_EQ(table.ShortName(), "Step");
  ASSERT_EQ(table.Rows(), static_cast<int>(fit.m_BackwardNames.size()));
  for (int row = 0; row < table.Rows(); ++row) {
    const auto k = static_cast<std::size_t>(row);
    EXPECT_EQ(table.RowNames()[k], std::to_string(row + 1));
    EXPECT_EQ(table.Text(row, 0), fit.m_BackwardNames[k]);
    EXPECT_EQ(table.Value(row, "Wald"), fit.m_BackwardWalds[k]);
    EXPECT_EQ(table.Value(row, "P value"), fit.m_BackwardPValues[k]);
    EXPECT_GT(fit.m_BackwardPValues[k], 0.01);
  }
}

TEST(BackwardSelection, WithoutARemovalTheTableIsOneText) {
  for (const int forced : {0, 2}) {
    PreparedSelection run(Backward({"a", "c"}).Force(forced).Limits(0.5, forced == 2 ? 1e-9 : 1.0 - 1e-12));
    ASSERT_EQ(run.Run(), 0);
    EXPECT_EQ(run.Effects(), (Names{"a", "c"}));
    const SheetView table = run.Summary();
    EXPECT_THAT(table.ColumnNames(), ElementsAre("Summary"));
    ASSERT_EQ(table.Rows(), 1);
    EXPECT_EQ(table.Text(0, 0), testing::kAllForced);
  }
}

TEST(BackwardSelection, StopsAtTheForcedEffects) {
  for (const int forced : {1, 2}) {
    PreparedSelection run(Backward({"c", "e", "b", "a"}).Force(forced).Limits(0.5, 1e-15));
    ASSERT_EQ(run.Run(), 0) << forced;
    const Names all = {"c", "e", "b", "a"};
    EXPECT_EQ(run.Effects(), Names(all.begin(), all.begin() + forced));
    EXPECT_EQ(run.Analysis.Fit().m_BackwardEffects.size(), 4U - static_cast<std::size_t>(forced));
  }
}

TEST(BackwardSelection, TheLastEffectCanGoToo) {
  PreparedSelection run(Backward({"c", "e"}).Limits(0.5, 1e-15));
  EXPECT_EQ(run.Run(), 1);
  EXPECT_THAT(run.Analysis.Host.Messages(), ElementsAre(testing::kNothingSelected));
  EXPECT_EQ(run.Effects(), (Names{"c", "e"}));
  EXPECT_TRUE(run.Analysis.Settings().FinalFitReady);
}

TEST(BackwardSelection, AnInteractionGoesBeforeItsMainEffects) {
  for (const Names& effects : {Names{"a", "b", "a*b"}, Names{"a*b", "b", "a"}, Names{"e", "c", "c*e"}}) {
    PreparedSelection all(Backward(effects).Limits(0.5, 1e-15));
    all.Analysis.Analysis.ReadStartupFields(all.Analysis.Fields, nullptr);
    EXPECT_EQ(all.Analysis.RunUnchecked(), 1);
    ASSERT_EQ(all.Analysis.Fit().m_BackwardNames.size(), 3U);
    EXPECT_NE(all.Analysis.Fit().m_BackwardNames[0].find('*'), std::string::npos);
  }
}

// d is twice a and comes second, so it is dropped and goes first with p = 1. Two dropped effects are equal.
TEST(BackwardSelection, OfEqualPValuesTheEarlierEffectGoesFirst) {
  PreparedSelection run(Backward({"f", "h", "a", "d"}).Limits(0.5, 0.999));
  ASSERT_EQ(run.Run(), 0);
  const CCoxFit& fit = run.Analysis.Fit();
  ASSERT_GE(fit.m_BackwardNames.size(), 2U);
  EXPECT_EQ(fit.m_BackwardNames[0], "h");
  EXPECT_EQ(fit.m_BackwardNames[1], "d");
  EXPECT_EQ(fit.m_BackwardPValues[0], 1.0);
  EXPECT_EQ(fit.m_BackwardPValues[1], 1.0);
  EXPECT_EQ(fit.m_BackwardWalds[1], 0.0);
}

TEST(BackwardSelection, APValueEqualToTheLimitStays) {
  PreparedSelection first(Backward({"a", "c"}).Force(1).Limits(0.5, 1e-3));
  ASSERT_EQ(first.Run(), 0);
  ASSERT_FALSE(first.Analysis.Fit().m_BackwardPValues.empty());
  const double p = first.Analysis.Fit().m_BackwardPValues[0];
  PreparedSelection equal(Backward({"a", "c"}).Force(1).Limits(0.5, p));
  ASSERT_EQ(equal.Run(), 0);
  EXPECT_TRUE(equal.Analysis.Fit().m_BackwardEffects.empty());
  PreparedSelection below(Backward({"a", "c"}).Force(1).Limits(0.5, std::nextafter(p, 0.0)));
  ASSERT_EQ(below.Run(), 0);
  EXPECT_EQ(below.Analysis.Fit().m_BackwardEffects.size(), 1U);
}

TEST(BackwardSelection, AHeldEffectIsNeverTested) {
  PreparedSelection run(Backward({"c", "e"}).Hold({true, false}, {{0.25}, {0.0}}).Limits(0.5, 1e-15));
  ASSERT_EQ(run.Run(), 0);
  EXPECT_EQ(run.Effects(), Names{"c"});
  EXPECT_EQ(run.Analysis.Fit().m_BetaHistory.back()[0], 0.25);
}

TEST(BackwardSelection, TheLimitIsChecked) {
  for (const double p : {0.0, 1.0, -0.5, 2.0}) {
    PreparedSelection run(Backward({"a", "b"}).Limits(7.0, p));
    EXPECT_EQ(run.Run(), 1);
    EXPECT_THAT(run.Analysis.Host.Messages(), ElementsAre("Please specify the P to remove value between 0 and 1."));
  }
}

TEST(BackwardSelection, KeepsItsListsInStep) {
  PreparedSelection run(Backward({"a", "f", "c", "b"}).Force(2).Limits(0.5, 1e-15));
  ASSERT_EQ(run.Run(), 0);
  const CCoxFit& fit = run.Analysis.Fit();
  EXPECT_THAT(fit.m_KeptEffects, ElementsAre(1, 2));
  EXPECT_THAT(fit.m_KeptNames, ElementsAre("a", "f"));
  EXPECT_THAT(fit.m_KeptFirstColumns, ElementsAre(1, 2));
  EXPECT_THAT(fit.m_KeptLastColumns, ElementsAre(1, 3));
  EXPECT_THAT(fit.m_ActiveEffectIndex, ElementsAre(0, 1));
  EXPECT_THAT(fit.m_ActiveFirstPosition, ElementsAre(1, 2));
  EXPECT_THAT(fit.m_ActiveLastPosition, ElementsAre(1, 3));
  EXPECT_THAT(fit.m_EffectInModel, ElementsAre(true, true, false, false));
  EXPECT_THAT(fit.m_ColumnInModel, ElementsAre(true, true, true, false, false));
  EXPECT_EQ(fit.m_ActiveEffectCount, 2);
}

}  // namespace
}  // namespace orv
