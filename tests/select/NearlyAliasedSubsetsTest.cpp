// Columns that nearly repeat others. What a sweep of them loses must not stay with the subsets that come later.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "select/SubsetSearch.h"

namespace orv {
namespace {

using namespace testing;
using Bits = std::vector<bool>;

// Columns 4 and 6 lie as far as this from columns 1 and 2.
std::unique_ptr<TestAnalysis> NearlyAliased(double distance, unsigned seed) {
  SubsetCases of;
  of.Columns = 8;
  std::vector<TestColumn> cases = RandomCases(of, seed);
  TestRandom random(seed + 1);
  for (const auto& [copy, original] : {std::pair<std::size_t, std::size_t>{3, 0}, {5, 1}}) {
    for (std::size_t row = 0; row < cases[copy].Values.size(); ++row) {
      cases[copy].Values[row] = cases[original].Values[row] + distance * random.Value();
    }
  }
  return std::make_unique<TestAnalysis>(cases);
}

void ExpectExactScores(bool bounded) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    for (const double distance : {1e-2, 1e-3, 1e-4, 1e-5}) {
      const auto owner = NearlyAliased(distance, 100 * seed);
      TestAnalysis& analysis = *owner;
      analysis.Time({"time"}).Status("status");
      analysis.Covariates({"x1", "x2", "x3", "x4", "x5", "x6", "x7", "x8"}).DefaultDesign();
      CCoxFit& fit = analysis.PrepareFit();
      bounded ? BestSubsetsBounded(fit) : BestSubsetsAllModels(fit);
      ASSERT_EQ(fit.m_SubsetCount, 8);
      for (std::size_t row = 0; row < 8; ++row) {
        const Bits& set = fit.m_SubsetMembers[row];
        const double expected = ScoreOfSet(fit.m_ScoreVector, fit.m_PackedInformation, set).Value;
        // A set that holds both of a pair is itself only as exact as their difference.
        const bool holdsPair = (set[0] && set[3]) || (set[1] && set[5]);
        const double tolerance = holdsPair ? 1e-12 / (distance * distance) : 1e-12;
        EXPECT_NEAR(fit.m_SubsetScores[row], expected, tolerance * expected)
            << "seed " << seed << ", distance " << distance << ", size " << row + 1;
      }
    }
  }
}

TEST(NearlyAliasedSubsets, SpoilNoOtherSubsetOnTheBoundedRoute) {
  ExpectExactScores(true);
}

TEST(NearlyAliasedSubsets, SpoilNoOtherSubsetOnTheExhaustiveRoute) {
  ExpectExactScores(false);
}

}  // namespace
}  // namespace orv
