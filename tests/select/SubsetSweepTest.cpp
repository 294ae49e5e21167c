// The score of a set of columns that changes column by column, with columns that stay aside.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <string>
#include <vector>

#include "fit/CCoxFit.h"
#include "fit/FloatingPointRegime.h"
#include "fit/NumericalFailure.h"
#include "select/SubsetScores.h"
#include "select/SubsetSweep.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using namespace testing;
using Vector = std::vector<double>;
using Bits = std::vector<bool>;

class SubsetSweepTest : public ::testing::Test {
 protected:
  // A sweep of columns whose score and information are given.
  SubsetSweep SweepOf(const Vector& score, const Vector& packed) {
    std::vector<TestColumn> cases = {{"time", {4, 3, 2, 1}}, {"status", {1, 1, 0, 1}}};
    std::vector<std::string> names;
    for (std::size_t k = 0; k < score.size(); ++k) {
      names.push_back("x" + std::to_string(k));
      cases.push_back({names.back(), {1, 2, 4, 3}});
    }
    TestAnalysis analysis(cases);
    analysis.Time({"time"}).Status("status").Covariates(names).DefaultDesign();
    CCoxFit& fit = analysis.PrepareFit();
    fit.m_ScoreVector = score;
    fit.m_PackedInformation = packed;
    FloatingPointRegime::ClearFlags();
    return SubsetSweep{SweptInformation(fit)};
  }
  static int CountOf(const Bits& bits) { return static_cast<int>(std::count(bits.begin(), bits.end(), true)); }

  const FloatingPointRegime m_regime;
};

// Columns 0 and 1 are the same, column 2 stands alone.
TEST_F(SubsetSweepTest, ColumnThatRepeatsAnotherStaysAsideAndTakesItsPlace) {
  SubsetSweep sweep = SweepOf({2, 2, 3}, {1, 1, 1, 0, 0, 1});
  sweep.Add(0);
  sweep.Add(1);
  EXPECT_EQ(sweep.Score(), 4.0);
  EXPECT_EQ(sweep.Counted(), (Bits{true, false, false}));
  sweep.Add(2);
  sweep.Remove(0);
  EXPECT_EQ(sweep.Score(), 13.0) << "the score of columns 1 and 2";
  EXPECT_EQ(sweep.Counted(), (Bits{false, true, true}));
  sweep.Remove(1);
  EXPECT_EQ(sweep.Score(), 9.0);
  EXPECT_EQ(sweep.Counted(), (Bits{false, false, true}));
}

TEST_F(SubsetSweepTest, ColumnAsideLeavesWithoutATrace) {
  SubsetSweep sweep = SweepOf({2, 2, 3}, {1, 1, 1, 0, 0, 1});
  sweep.Add(1);
  sweep.Add(0);
  sweep.Remove(0);
  EXPECT_EQ(sweep.Counted(), (Bits{false, true, false}));
  sweep.Remove(1);
  EXPECT_EQ(sweep.Counted(), (Bits{false, false, false})) << "column 0 is no member any more";
  EXPECT_EQ(sweep.Score(), 0.0);
}

// Column 2 is the sum of 0 and 1. With all three any two count; without one of them the other two do.
TEST_F(SubsetSweepTest, SumTakesThePlaceOfEitherTerm) {
  const Vector score = {2, 3, 5};
  const Vector packed = {1, 0, 1, 1, 1, 2};
  for (const int leaving : {0, 1, 2}) {
    SubsetSweep sweep = SweepOf(score, packed);
    for (const int column : {0, 1, 2}) sweep.Add(column);
    EXPECT_DOUBLE_EQ(sweep.Score(), 13.0);
    sweep.Remove(leaving);
    EXPECT_DOUBLE_EQ(sweep.Score(), 13.0) << leaving;
    EXPECT_EQ(CountOf(sweep.Counted()), 2);
    EXPECT_FALSE(sweep.Counted()[static_cast<std::size_t>(leaving)]);
  }
}

// Whatever enters and leaves in whatever order, the score is that of the members and as many count as the rank tells.
TEST_F(SubsetSweepTest, ScoreIsAlwaysThatOfAllMembers) {
  TestRandom random(11);
  for (int design = 0; design < 40; ++design) {
    const int p = 2 + random.Integer(9);
    const RandomDesign of(random, p, design % 4 != 0);
    const ScoreAndInformation plain(of.X, of.Y);
    const Bits all(static_cast<std::size_t>(p), true);
    const double largest = ScoreOfSet(plain.Score, plain.Packed, all).Value;
    SubsetSweep sweep = SweepOf(plain.Score, plain.Packed);
    Bits members(all.size(), false);
    for (int move = 0; move < 10 * p; ++move) {
      const int column = random.Integer(p);
      const auto place = static_cast<std::size_t>(column);
      members[place] ? sweep.Remove(column) : sweep.Add(column);
      members[place] = !members[place];
      const ScoreOfSet expected(plain.Score, plain.Packed, members);
      ASSERT_NEAR(sweep.Score(), expected.Value, 1e-9 * largest) << "design " << design << ", move " << move;
      ASSERT_EQ(CountOf(sweep.Counted()), expected.Rank) << "design " << design << ", move " << move;
      for (std::size_t k = 0; k < members.size(); ++k) ASSERT_LE(sweep.Counted()[k], members[k]);
    }
  }
}

TEST_F(SubsetSweepTest, FailedArithmeticIsToldByTheScore) {
  SubsetSweep sweep = SweepOf({2, 1}, {1, 0, 1});
  sweep.Add(0);
  EXPECT_EQ(sweep.Score(), 4.0);
  std::feraiseexcept(FE_OVERFLOW);
  EXPECT_THROW(static_cast<void>(sweep.Score()), NumericalFailure);
  EXPECT_EQ(sweep.Score(), 4.0) << "the failure is told once";
}

}  // namespace
}  // namespace orv
