// The searches for best subsets against each other and against trying every subset.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "fit/FloatingPointRegime.h"
#include "select/BestSubsets.h"
#include "select/SubsetSearch.h"

namespace orv {
namespace {

using namespace testing;
using Bits = std::vector<bool>;

std::size_t CountOf(const Bits& bits) {
  return static_cast<std::size_t>(std::count(bits.begin(), bits.end(), true));
}

// ---- Both routes find the best of every size
// -------------------------------------------------------------------------

// The rows of either route: their sizes, their scores, and that each set has the score of its row.
void ExpectBestRows(SubsetSearch& search,
                    const CCoxFit& fit,
                    const std::vector<double>& best,
                    const std::string& what) {
  const double largest = best.back();
  ASSERT_EQ(fit.m_SubsetScores.size(), static_cast<std::size_t>(fit.m_SubsetCount)) << what;
  ASSERT_EQ(fit.m_SubsetMembers.size(), static_cast<std::size_t>(fit.m_SubsetCount)) << what;
  for (std::size_t row = 0; row < fit.m_SubsetScores.size(); ++row) {
    const std::size_t size = CountOf(fit.m_SubsetMembers[row]);
    EXPECT_NEAR(fit.m_SubsetScores[row], best[size], 1e-9 * largest) << what << ", size " << size;
    EXPECT_NEAR(fit.m_SubsetScores[row], search.ScoreOf(fit.m_SubsetMembers[row]), 1e-9 * largest) << what;
  }
}

void CompareRoutes(const SubsetCases& of, unsigned seed) {
  SubsetSearch search(of, seed);
  const std::string what = ::testing::PrintToString(of.Columns) + " columns, seed " + std::to_string(seed);
  const std::vector<double> best = search.BestOfEverySize();
  const int rank = search.Rank();

  const CCoxFit& bounded = search.Bounded();
  EXPECT_TRUE(bounded.m_SubsetBestPerSize);
  ASSERT_EQ(bounded.m_SubsetCount, of.Columns) << what;
  for (int size = 1; size <= of.Columns; ++size) {
    ASSERT_EQ(CountOf(bounded.m_SubsetMembers[static_cast<std::size_t>(size) - 1]), static_cast<std::size_t>(size));
  }
  ExpectBestRows(search, bounded, best, "bounded, " + what);
  const auto boundedSubsets = bounded.m_SubsetsScored;
  EXPECT_TRUE(bounded.m_SubsetQueue.empty());

  const CCoxFit& exhaustive = search.Exhaustive();
  EXPECT_FALSE(exhaustive.m_SubsetBestPerSize);
  EXPECT_EQ(exhaustive.m_SubsetsScored, (std::uint64_t{1} << of.Columns) - 1) << what;
  EXPECT_LE(boundedSubsets, exhaustive.m_SubsetsScored + 1) << what;
  ExpectBestRows(search, exhaustive, best, "exhaustive, " + what);
  // Of aliased columns as many are members as say something. A constant column alone makes a row of none.
  std::vector<std::size_t> sizes;
  for (const Bits& members : exhaustive.m_SubsetMembers) sizes.push_back(CountOf(members));
  if (!sizes.empty() && sizes.front() == 0) sizes.erase(sizes.begin());
  ASSERT_EQ(sizes.size(), static_cast<std::size_t>(rank)) << what;
  for (std::size_t k = 0; k < sizes.size(); ++k) EXPECT_EQ(sizes[k], k + 1) << what;
}

TEST(BestSubsets, BothRoutesFindTheBestOfEverySize) {
  for (int columns = 1; columns <= 12; ++columns) {
    for (const int effects : {0, 3, 12}) {
      SubsetCases of;
      of.Columns = columns;
      of.Effects = effects;
      CompareRoutes(of, static_cast<unsigned>(100 * columns + effects));
    }
  }
}

TEST(BestSubsets, BothRoutesFindTheBestAmongAliasedAndConstantColumns) {
  int aliased = 0;
  for (unsigned seed = 1; seed <= 60; ++seed) {
    SubsetCases of;
    of.Columns = 2 + static_cast<int>(seed % 8);
    of.Aliases = true;
    CompareRoutes(of, seed);
    aliased += SubsetSearch(of, seed).Rank() < of.Columns ? 1 : 0;
  }
  EXPECT_GT(aliased, 30) << "the designs of the test have aliased columns";
}

TEST(BestSubsets, BothRoutesFindTheBestInEveryKindOfAnalysis) {
  unsigned seed = 1000;
  for (const int likelihood : {Likelihoods::Breslow, Likelihoods::Efron, Likelihoods::Discrete}) {
    for (const bool strata : {false, true}) {
      for (const bool intervals : {false, true}) {
        for (const bool weights : {false, true}) {
          SubsetCases of;
          of.Columns = 6;
          of.Ties = true;
          of.Strata = strata;
          of.Intervals = intervals;
          // The discrete rule takes no weights.
          of.Weights = weights && likelihood != Likelihoods::Discrete;
          of.Aliases = weights;
          of.Likelihood = likelihood;
          if (likelihood == Likelihoods::Discrete) of.Rows = 16;
          CompareRoutes(of, ++seed);
        }
      }
    }
  }
}

// Every column in another unit: the sets stay the same.
TEST(BestSubsets, UnitsOfColumnsDoNotMatter) {
  SubsetCases of;
  of.Columns = 7;
  SubsetSearch plain(of, 5);
  const auto sets = plain.Bounded().m_SubsetMembers;
  std::vector<TestColumn> cases = RandomCases(of, 5);
  const double units[] = {1e-8, 1e8, 1.0, 1e5, 1e-5, 1e7, 1e-7};
  for (std::size_t c = 0; c < 7; ++c) {
    for (double& value : cases[c].Values) value *= units[c];
  }
  TestAnalysis other(cases);
  other.Time({"time"}).Status("status").Covariates({"x1", "x2", "x3", "x4", "x5", "x6", "x7"}).DefaultDesign();
  BestSubsetsBounded(other.PrepareFit());
  EXPECT_EQ(other.Fit().m_SubsetMembers, sets);
  for (std::size_t row = 0; row < sets.size(); ++row) {
    EXPECT_NEAR(other.Fit().m_SubsetScores[row], plain.ScoreOf(sets[row]), 1e-9 * plain.ScoreOf(sets.back()));
  }
}

// ---- What the bounded route passes over
// ------------------------------------------------------------------------------

// Two columns explain nearly all: whole families of subsets without them cannot be better.
TEST(BestSubsets, BoundedRouteLooksAtFewSubsetsWhenColumnsDiffer) {
  SubsetCases of;
  of.Columns = 14;
  of.Rows = 200;
  SubsetSearch search(of, 3);
  const CCoxFit& fit = search.Bounded();
  EXPECT_EQ(fit.m_SubsetCount, 14);
  EXPECT_LT(fit.m_SubsetsScored, (1U << 14) / 8) << "of " << (1U << 14) - 1;
  EXPECT_GT(fit.m_SubsetsScored, 14U);
}

TEST(BestSubsets, OneEffectHasOneRowWithoutANode) {
  SubsetCases of;
  of.Columns = 1;
  of.Effects = 1;
  SubsetSearch search(of);
  const CCoxFit& fit = search.Bounded();
  ASSERT_EQ(fit.m_SubsetCount, 1);
  EXPECT_EQ(fit.m_SubsetMembers, (std::vector<Bits>{{true}}));
  EXPECT_EQ(fit.m_SubsetsScored, 1U);
  EXPECT_NEAR(fit.m_SubsetScores[0], search.ScoreOf({true}), 1e-12 * fit.m_SubsetScores[0]);
}

TEST(BestSubsets, ConstantColumnScoresZero) {
  SubsetCases of;
  of.Columns = 1;
  std::vector<TestColumn> cases = RandomCases(of, 1);
  std::fill(cases[0].Values.begin(), cases[0].Values.end(), 2.0);
  TestAnalysis analysis(cases);
  analysis.Time({"time"}).Status("status").Covariates({"x1"}).DefaultDesign();
  BestSubsetsBounded(analysis.PrepareFit());
  EXPECT_EQ(analysis.Fit().m_SubsetScores, (std::vector<double>{0.0}));
  BestSubsetsAllModels(analysis.PrepareFit());
  EXPECT_EQ(analysis.Fit().m_SubsetScores, (std::vector<double>{0.0}));
  EXPECT_EQ(analysis.Fit().m_SubsetMembers, (std::vector<Bits>{{false}})) << "it is no member";
}

// Columns 1 and 2 are the same, and so are 3 and 4.
TEST(BestSubsets, OfEqualScoresTheFirstFoundStays) {
  SubsetCases of;
  of.Columns = 4;
  std::vector<TestColumn> cases = RandomCases(of, 9);
  cases[1].Values = cases[0].Values;
  cases[3].Values = cases[2].Values;
  TestAnalysis analysis(cases);
  analysis.Time({"time"}).Status("status").Covariates({"x1", "x2", "x3", "x4"}).DefaultDesign();
  // In the order of the masks the lower column comes first.
  BestSubsetsAllModels(analysis.PrepareFit());
  ASSERT_EQ(analysis.Fit().m_SubsetCount, 2);
  EXPECT_EQ(analysis.Fit().m_SubsetMembers[1], (Bits{true, false, true, false}));
  // The bounded route offers the sets that are left when the highest columns go, one after the other, before others.
  BestSubsetsBounded(analysis.PrepareFit());
  ASSERT_EQ(analysis.Fit().m_SubsetCount, 4);
  EXPECT_EQ(analysis.Fit().m_SubsetMembers[2], (Bits{true, true, true, false}));
  const Bits one = analysis.Fit().m_SubsetMembers[0];
  EXPECT_TRUE(one == (Bits{true, false, false, false}) || one == (Bits{false, false, true, false}))
      << ::testing::PrintToString(one);
}

// ---- Forced and held effects
// -----------------------------------------------------------------------------------------

TEST(BestSubsets, EveryRowHoldsTheForcedEffects) {
  for (const int forced : {1, 2, 3, 5}) {
    SubsetCases of;
    of.Columns = 6;
    of.Aliases = forced == 3;
    SubsetSearch search(of, 21);
    search.Analysis.Settings().EffectsToForce = forced;
    const CCoxFit& fit = search.Exhaustive();
    EXPECT_FALSE(HasBoundedSubsets(fit));
    EXPECT_EQ(fit.m_SubsetsScored, (std::uint64_t{1} << (6 - forced)) - 1);
    const auto scores = fit.m_SubsetScores;
    const auto sets = fit.m_SubsetMembers;
    const std::vector<double> best = search.BestOfEverySize(forced);
    ASSERT_TRUE(of.Aliases || sets.size() == static_cast<std::size_t>(6 - forced));
    for (std::size_t row = 0; row < sets.size(); ++row) {
      const std::size_t size = CountOf(sets[row]);
      EXPECT_NEAR(scores[row], search.ScoreOf(sets[row]), 1e-9 * best.back());
      if (of.Aliases) continue;
      EXPECT_EQ(size, static_cast<std::size_t>(forced) + row + 1);
      EXPECT_NEAR(scores[row], best[size], 1e-9 * best.back()) << forced << " forced, size " << size;
      for (int c = 0; c < forced; ++c) EXPECT_TRUE(sets[row][static_cast<std::size_t>(c)]);
    }
  }
}

TEST(BestSubsets, ForcingAllEffectsLeavesNothingToCompare) {
  for (const int forced : {4, 5, 1000}) {
    SubsetSearch search({});
    search.Analysis.Settings().EffectsToForce = forced;
    const CCoxFit& fit = search.Exhaustive();
    EXPECT_EQ(fit.m_SubsetCount, 0) << forced;
    EXPECT_EQ(fit.m_SubsetsScored, 0U);
  }
}

// Effect 2 is held at 0.7: it is marked in every row, has no part in the score, and alone it is no subset.
TEST(BestSubsets, EffectHeldAtItsStartValueIsInEveryRowAndNotInTheScore) {
  SubsetCases of;
  of.Columns = 5;
  SubsetSearch search(of, 33);
  search.Analysis.StartAt({0, 0.7, 0, 0, 0}).Fix({false, true, false, false, false});
  const CCoxFit& fit = search.Exhaustive();
  EXPECT_FALSE(HasBoundedSubsets(fit));
  EXPECT_EQ(fit.m_SubsetsScored, 30U) << "the subset of the held effect alone is passed over";
  const auto scores = fit.m_SubsetScores;
  const auto sets = fit.m_SubsetMembers;
  ASSERT_EQ(sets.size(), 4U);
  // The information of a column that is held is zero, so every subset scores as without it.
  const std::vector<double> best = search.BestOfEverySize();
  for (std::size_t row = 0; row < sets.size(); ++row) {
    EXPECT_TRUE(sets[row][1]);
    EXPECT_EQ(CountOf(sets[row]), row + 2);
    Bits others = sets[row];
    others[1] = false;
    EXPECT_NEAR(scores[row], search.ScoreOf(others), 1e-9 * best.back());
    EXPECT_NEAR(scores[row], best[row + 1], 1e-9 * best.back());
  }
}

TEST(BestSubsets, BoundedRouteIsForPlainColumnsAlone) {
  SubsetCases of;
  of.Columns = 3;
  SubsetSearch plain(of);
  EXPECT_TRUE(HasBoundedSubsets(plain.Analysis.PrepareFit()));

  SubsetSearch product(of);
  product.Analysis.Design({{"x1", "v1"}, {"x2", "v2"}, {"x1*x2", "v1*v2"}});
  EXPECT_FALSE(HasBoundedSubsets(product.Analysis.PrepareFit()));

  SubsetSearch square(of);
  square.Analysis.Design({{"x1", "v1"}, {"x1*x1", "v1*v1"}});
  EXPECT_FALSE(HasBoundedSubsets(square.Analysis.PrepareFit()));

  SubsetSearch held(of);
  held.Analysis.StartAt({0, 0, 0}).Fix({true, false, false});
  EXPECT_FALSE(HasBoundedSubsets(held.Analysis.PrepareFit()));

  SubsetSearch forced(of);
  forced.Analysis.Settings().EffectsToForce = 1;
  EXPECT_FALSE(HasBoundedSubsets(forced.Analysis.PrepareFit()));
}

// ---- Nothing else decides
// --------------------------------------------------------------------------------------------

TEST(BestSubsets, NumberOfModelsToDisplayChangesNothing) {
  for (const bool bounded : {true, false}) {
    std::vector<std::vector<Bits>> sets;
    std::vector<std::vector<double>> scores;
    for (const int display : {0, 1, 5, 1000}) {
      SubsetSearch search({}, 4);
      search.Analysis.Settings().DisplayBest = display;
      const CCoxFit& fit = bounded ? search.Bounded() : search.Exhaustive();
      sets.push_back(fit.m_SubsetMembers);
      scores.push_back(fit.m_SubsetScores);
      EXPECT_EQ(fit.m_SubsetCount, 4);
    }
    for (std::size_t k = 1; k < sets.size(); ++k) {
      EXPECT_EQ(sets[k], sets[0]);
      EXPECT_EQ(scores[k], scores[0]);
    }
  }
}

}  // namespace
}  // namespace orv
