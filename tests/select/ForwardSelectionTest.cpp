// Forward selection: its rules, its table and its messages, one by one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "select/SelectionCases.h"

namespace orv {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::NamedSelection;
using testing::Names;
using testing::PreparedSelection;
using testing::SelectionForm;
using testing::SheetView;

NamedSelection Forward(const Names& effects, const SelectionForm& form = {}) {
  return {ModelBuildings::Forward, effects, form};
}

TEST(ForwardSelection, TakesEffectsInTheOrderOfTheirTestsAndShowsThem) {
  PreparedSelection run(Forward({"c", "b", "a"}).Limits(0.5, 0.9));
  ASSERT_EQ(run.Run(), 0);
  const CCoxFit& fit = run.Analysis.Fit();
  ASSERT_FALSE(fit.m_ForwardNames.empty());
  EXPECT_EQ(fit.m_ForwardNames[0], "a") << "the strongest effect first";
  const SheetView table = run.Summary();
  EXPECT_THAT(table.Titles(), ElementsAre("Summary of Forward Selection"));
  EXPECT_THAT(table.ColumnNames(), ElementsAre("Effect Entered", "Score Chi-Square", "P value"));
  EXPECT_EQ(table.ShortName(), "Step");
  ASSERT_EQ(table.Rows(), static_cast<int>(fit.m_ForwardNames.size()));
  for (int row = 0; row < table.Rows(); ++row) {
    const auto k = static_cast<std::size_t>(row);
    EXPECT_EQ(table.RowNames()[k], std::to_string(row + 1));
    EXPECT_EQ(table.Text(row, 0), fit.m_ForwardNames[k]);
    EXPECT_EQ(table.Value(row, "Score Chi-Square"), fit.m_ForwardScores[k]);
    EXPECT_EQ(table.Value(row, "P value"), fit.m_ForwardPValues[k]);
    EXPECT_LE(fit.m_ForwardPValues[k], 0.5);
  }
}

// d is twice a: their statistics have the same digits.
TEST(ForwardSelection, OfEqualPValuesTheEarlierEffectEnters) {
  for (const Names& effects : {Names{"a", "d"}, Names{"d", "a"}}) {
    PreparedSelection run(Forward(effects).Limits(0.99, 0.5));
    ASSERT_EQ(run.Run(), 0);
    EXPECT_EQ(run.Effects(), Names{effects[0]}) << "the other one has no degree of freedom left, so p is 1";
  }
}

TEST(ForwardSelection, AnInteractionWaitsForItsMainEffects) {
  PreparedSelection run(Forward({"a*b", "b", "a"}).Limits(0.999, 0.5));
  ASSERT_EQ(run.Run(), 0);
  EXPECT_EQ(run.Analysis.Fit().m_ForwardEffects.back(), 1);
  EXPECT_EQ(run.Analysis.Fit().m_ForwardEffects.size(), 3U);
  PreparedSelection strict(Forward({"a*b", "b", "a"}).Limits(1e-12, 0.5));
  EXPECT_EQ(strict.Run(), 1) << "without its main effects it is never tested";
}

// h tells the third level of f from the others, so with h in the model f has one degree of freedom left.
TEST(ForwardSelection, AFactorAliasedWithAnEnteredOneLosesADegreeOfFreedom) {
  for (const int coding : {Codings::SigmaRestricted, Codings::Reference, Codings::Overparameterized}) {
    PreparedSelection run(Forward({"h", "f"}, {.Coding = coding}).Force(0).Limits(0.999, 0.5));
    ASSERT_EQ(run.Run(), 0);
    const CCoxFit& fit = run.Analysis.Fit();
    for (std::size_t k = 0; k < fit.m_ForwardEffects.size(); ++k) {
      const bool afterH = k == 1 && fit.m_ForwardEffects[1] == 2;
      const int df = fit.m_ForwardEffects[k] == 1 ? 1 : afterH ? 1 : 2;
      if (k == 1 && afterH) {
        // The statistic is that of both effects, with the degrees of freedom that the second one adds.
        EXPECT_DOUBLE_EQ(fit.m_ForwardPValues[k], 1.0 - run.Analysis.Host.ChiSquareCdf(fit.m_ForwardScores[k], df));
      }
      if (k == 0) {
        EXPECT_DOUBLE_EQ(fit.m_ForwardPValues[k], 1.0 - run.Analysis.Host.ChiSquareCdf(fit.m_ForwardScores[k], df));
      }
    }
  }
}

TEST(ForwardSelection, APValueEqualToTheLimitEnters) {
  PreparedSelection first(Forward({"a"}).Limits(0.9, 0.5));
  ASSERT_EQ(first.Run(), 0);
  const double p = first.Analysis.Fit().m_ForwardPValues[0];
  PreparedSelection equal(Forward({"a"}).Limits(p, 0.5));
  EXPECT_EQ(equal.Run(), 0);
  PreparedSelection below(Forward({"a"}).Limits(std::nextafter(p, 0.0), 0.5));
  EXPECT_EQ(below.Run(), 1);
}

TEST(ForwardSelection, WithAllEffectsForcedThereIsNoSearch) {
  PreparedSelection run(Forward({"c", "b"}).Force(2).Limits(0.01, 0.5));
  ASSERT_EQ(run.Run(), 0);
  EXPECT_EQ(run.Effects(), (Names{"c", "b"}));
  const SheetView table = run.Summary();
  EXPECT_THAT(table.Titles(), ElementsAre("Summary of Forward Selection"));
  EXPECT_THAT(table.ColumnNames(), ElementsAre("Summary"));
  ASSERT_EQ(table.Rows(), 1);
  EXPECT_EQ(table.Text(0, 0), testing::kAllForced);
}

TEST(ForwardSelection, TheTableHasTheSameTextWhenNothingElseEnters) {
  PreparedSelection run(Forward({"c", "b"}).Force(1).Limits(1e-12, 0.5));
  ASSERT_EQ(run.Run(), 0);
  EXPECT_EQ(run.Effects(), Names{"c"});
  EXPECT_EQ(run.Analysis.Settings().ForcedStepCount, 1);
  EXPECT_EQ(run.Summary().Text(0, 0), testing::kAllForced);
}

TEST(ForwardSelection, ForcedEffectsHaveNoTest) {
  PreparedSelection run(Forward({"c", "b", "a"}).Force(1).Limits(0.3, 0.5));
  ASSERT_EQ(run.Run(), 0);
  const CCoxFit& fit = run.Analysis.Fit();
  EXPECT_EQ(fit.m_ForwardEffects[0], 1);
  EXPECT_EQ(fit.m_ForwardScores[0], -1.0);
  EXPECT_EQ(fit.m_ForwardPValues[0], -1.0);
  EXPECT_EQ(run.Summary().Rows(), static_cast<int>(fit.m_ForwardEffects.size()) - 1);
}

TEST(ForwardSelection, AHeldEffectIsTakenInAndNeverTested) {
  PreparedSelection run(Forward({"a", "c"}).Hold({false, true}, {{0.0}, {0.25}}).Limits(0.9, 0.5));
  ASSERT_EQ(run.Run(), 0);
  EXPECT_THAT(run.Analysis.Fit().m_ForwardEffects, ElementsAre(2, 1));
  EXPECT_EQ(run.Analysis.Fit().EffectsForcedInModel, 1);
  EXPECT_EQ(run.Analysis.Fit().m_BetaHistory.back()[1], 0.25);
}

TEST(ForwardSelection, WithoutAnEffectThereAreNoResultsAndTheOptionsStay) {
  PreparedSelection run(Forward({"a", "b"}).Limits(1e-12, 0.5));
  ASSERT_TRUE(run.Analysis.Settings().FinalFitReady);
  EXPECT_EQ(run.Run(), 1);
  EXPECT_THAT(run.Analysis.Host.Messages(), ElementsAre(testing::kNothingSelected));
  EXPECT_EQ(run.Effects(), (Names{"a", "b"}));
  EXPECT_TRUE(run.Analysis.Settings().FinalFitReady);
  EXPECT_EQ(run.Analysis.Analysis.m_pCoxFit, nullptr);
}

TEST(ForwardSelection, AFactorNotSelectedIsGoneFromTheOptions) {
  PreparedSelection run(Forward({"a", "e", "f", "c"}).Force(1).Limits(1e-9, 0.5));
  ASSERT_EQ(run.Run(), 0);
  ASSERT_EQ(run.Effects(), Names{"a"});
  EXPECT_THAT(run.Analysis.Settings().FactorVariables, IsEmpty());
  EXPECT_THAT(run.Analysis.Settings().FactorCodes, IsEmpty());
  EXPECT_THAT(run.Analysis.Settings().FactorCodeCounts, IsEmpty());
  EXPECT_THAT(run.Analysis.Settings().CovariateVariables, ElementsAre(run.Analysis.Number("a")));
}

TEST(ForwardSelection, TheBarCountsEffects) {
  for (const Names& effects : {Names{"a"}, Names{"a", "b", "c"}}) {
    PreparedSelection run(Forward(effects).Limits(0.999, 0.5));
    ASSERT_EQ(run.Run(), 0);
    const auto& bars = run.Analysis.Host.Bars;
    const auto bar = std::find_if(bars.begin(), bars.end(),
                                  [](const auto& one) { return one.Title == "Performing model building"; });
    ASSERT_NE(bar, bars.end());
    EXPECT_EQ(bar->Total, std::max(2, static_cast<int>(effects.size())));
    EXPECT_TRUE(bar->Shown);
    EXPECT_FALSE(bar->Open);
    EXPECT_EQ(bar->Positions.size(), effects.size());
  }
}

TEST(ForwardSelection, LimitsAndForcedEffectsAreChecked) {
  struct {
    double p;
    int forced;
    const char* message;
  } const cases[] = {
      {0.0, 0, " Please specify the P to enter value between 0 and 1."},
      {1.0, 0, " Please specify the P to enter value between 0 and 1."},
      {0.5, -1,
       "Please specify the number of effects to force in the model between 0 and 2 (=Number of effects in design)."},
      {0.5, 3,
       "Please specify the number of effects to force in the model between 0 and 2 (=Number of effects in design)."},
  };
  for (const auto& c : cases) {
    PreparedSelection run(Forward({"a", "b"}).Limits(c.p, 2.0).Force(c.forced));
    EXPECT_EQ(run.Run(), 1);
    EXPECT_THAT(run.Analysis.Host.Messages(), ElementsAre(c.message));
    EXPECT_EQ(run.Analysis.Host.CaseFetches, 0);
  }
}

}  // namespace
}  // namespace orv
