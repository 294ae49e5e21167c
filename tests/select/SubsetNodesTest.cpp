// The nodes that the bounded search appends to its work list, against nodes made by hand.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fit/SubsetNode.h"
#include "select/SubsetSearch.h"

namespace orv {
namespace {

using namespace testing;
using Columns = std::vector<int>;
using Bits = std::vector<bool>;

constexpr int kColumns = 6;

Bits BitsOf(const Columns& members) {
  Bits bits(kColumns, false);
  for (const int column : members) bits[static_cast<std::size_t>(column)] = true;
  return bits;
}

struct ExpectedNode {
  Columns A;
  Columns B;
  int Children;
  bool KeepsScoreA;  // the last child does not keep it
};

class SubsetNodesTest : public ::testing::Test {
 protected:
  SubsetNodesTest() : search(Cases(), 17), fit(search.Prepared()) {
    fit.EvaluateScoreAtStart();
    fit.m_SubsetScores.assign(kColumns, -1.0);
    fit.m_SubsetMembers.assign(kColumns, Bits(kColumns, false));
  }

  static SubsetCases Cases() {
    SubsetCases of;
    of.Columns = kColumns;
    return of;
  }

  void PutFront(const Columns& b, int children) {
    SubsetNode front;
    front.SetA = Bits(kColumns, false);
    front.SetB = BitsOf(b);
    front.MembersB = b;
    front.CountB = static_cast<int>(b.size());
    front.Children = children;
    fit.m_SubsetQueue.push_back(front);
  }

  void ExpectAppended(const std::vector<ExpectedNode>& expected) {
    ASSERT_EQ(fit.m_SubsetQueue.size(), expected.size() + 1) << "the front node stays";
    for (std::size_t i = 0; i < expected.size(); ++i) {
      const SubsetNode& node = fit.m_SubsetQueue[i + 1];
      const ExpectedNode& wanted = expected[i];
      SCOPED_TRACE("child " + std::to_string(i + 1));
      EXPECT_EQ(node.MembersA, wanted.A);
      EXPECT_EQ(node.SetA, BitsOf(wanted.A));
      EXPECT_EQ(node.CountA, static_cast<int>(wanted.A.size()));
      EXPECT_EQ(node.MembersB, wanted.B);
      EXPECT_EQ(node.SetB, BitsOf(wanted.B));
      EXPECT_EQ(node.CountB, static_cast<int>(wanted.B.size()));
      EXPECT_EQ(node.Children, wanted.Children);
      const double scoreA = search.ScoreOf(BitsOf(wanted.A));
      if (wanted.KeepsScoreA) {
        EXPECT_NEAR(node.ScoreA, scoreA, 1e-10 * (1.0 + scoreA));
      } else {
        EXPECT_EQ(node.ScoreA, -1.0);
      }
      const double scoreB = search.ScoreOf(BitsOf(wanted.B));
      EXPECT_NEAR(node.ScoreB, scoreB, 1e-10 * (1.0 + scoreB));
    }
  }

  // The best of the sets offered, and of no other.
  void ExpectOffered(const std::vector<Columns>& sets) {
    std::vector<double> best(kColumns, -1.0);
    for (const Columns& set : sets) {
      double& ofSize = best[set.size() - 1];
      ofSize = std::max(ofSize, search.ScoreOf(BitsOf(set)));
    }
    for (std::size_t k = 0; k < kColumns; ++k) {
      EXPECT_NEAR(fit.m_SubsetScores[k], best[k], 1e-10 * (1.0 + best[k])) << "size " << k + 1;
    }
    EXPECT_EQ(fit.m_SubsetsScored, sets.size());
  }

  SubsetSearch search;
  CCoxFit& fit;
};

TEST_F(SubsetNodesTest, RootHasAChildForEachColumnButTheHighest) {
  PutFront({0, 1, 2, 3, 4, 5}, 1);
  ExpandSubsetNode(fit, 5);
  ExpectAppended({{{0, 1, 2, 3, 4}, {0, 1, 2, 3, 5}, 1, true},
                  {{0, 1, 2, 3}, {0, 1, 2, 4, 5}, 2, true},
                  {{0, 1, 2}, {0, 1, 3, 4, 5}, 3, true},
                  {{0, 1}, {0, 2, 3, 4, 5}, 4, true},
                  {{0}, {1, 2, 3, 4, 5}, 5, false}});
  ExpectOffered({{0},
                 {0, 1},
                 {0, 1, 2},
                 {0, 1, 2, 3},
                 {0, 1, 2, 3, 4},
                 {0, 1, 2, 3, 5},
                 {0, 1, 2, 4, 5},
                 {0, 1, 3, 4, 5},
                 {0, 2, 3, 4, 5},
                 {1, 2, 3, 4, 5}});
}

TEST_F(SubsetNodesTest, InnerNodeHasAsManyChildrenAsAskedFor) {
  PutFront({0, 2, 3, 5}, 3);
  ExpandSubsetNode(fit, 2);
  ExpectAppended({{{0, 2, 3}, {0, 2, 5}, 1, true}, {{0, 2}, {0, 3, 5}, 2, false}});
  ExpectOffered({{0, 2}, {0, 2, 3}, {0, 2, 5}, {0, 3, 5}});
}

TEST_F(SubsetNodesTest, OneChild) {
  PutFront({1, 4, 5}, 2);
  ExpandSubsetNode(fit, 1);
  ExpectAppended({{{1, 4}, {1, 5}, 1, false}});
  ExpectOffered({{1, 4}, {1, 5}});
}

// Without column 5 the set is {0, 1, 3, 4}. Child 1 leaves its second highest column out, 3; child 2 its third, 1.
TEST_F(SubsetNodesTest, SkippingOneStartsBelowTheHighestColumn) {
  PutFront({0, 1, 3, 4, 5}, 4);
  ExpandSubsetNodeSkipping(fit, 2, 1);
  ExpectAppended({{{0, 1, 3}, {0, 1, 4, 5}, 2, true}, {{0, 1}, {0, 3, 4, 5}, 3, false}});
  ExpectOffered({{0, 1}, {0, 1, 3}, {0, 1, 4, 5}, {0, 3, 4, 5}});
}

TEST_F(SubsetNodesTest, SkippingTwo) {
  PutFront({0, 1, 2, 3, 4}, 4);
  ExpandSubsetNodeSkipping(fit, 1, 2);
  ExpectAppended({{{0, 1}, {0, 2, 3, 4}, 3, false}});
  ExpectOffered({{0, 1}, {0, 2, 3, 4}});
}

TEST_F(SubsetNodesTest, SkippingLeavesWhatTheFirstChildrenWouldBe) {
  PutFront({0, 1, 2, 3, 4, 5}, 1);
  ExpandSubsetNodeSkipping(fit, 3, 2);
  ExpectAppended(
      {{{0, 1, 2}, {0, 1, 3, 4, 5}, 3, true}, {{0, 1}, {0, 2, 3, 4, 5}, 4, true}, {{0}, {1, 2, 3, 4, 5}, 5, false}});
}

// A set that is no better than the best of its size does not take its place, not even with an equal score.
TEST_F(SubsetNodesTest, EqualScoreDoesNotReplaceTheSetFound) {
  PutFront({0, 2, 3, 5}, 3);
  ExpandSubsetNode(fit, 2);
  const std::vector<double> scores = fit.m_SubsetScores;
  const Bits mark(kColumns, true);
  fit.m_SubsetMembers.assign(kColumns, mark);
  fit.m_SubsetQueue.clear();
  PutFront({0, 2, 3, 5}, 3);
  ExpandSubsetNode(fit, 2);
  EXPECT_EQ(fit.m_SubsetScores, scores);
  EXPECT_EQ(fit.m_SubsetMembers, std::vector<Bits>(kColumns, mark));
  fit.m_SubsetScores[1] *= 0.999;
  fit.m_SubsetQueue.clear();
  PutFront({0, 2, 3, 5}, 3);
  ExpandSubsetNode(fit, 2);
  EXPECT_EQ(fit.m_SubsetScores, scores);
  EXPECT_EQ(fit.m_SubsetMembers[1], BitsOf({0, 2}));
  EXPECT_EQ(fit.m_SubsetMembers[2], mark);
}

// Column 3 repeats column 0. The score of a set is that of all its columns, whichever of the two leaves.
TEST(AliasedSubsetNodes, HaveTheScoresOfTheirSets) {
  SubsetCases of;
  of.Columns = 4;
  std::vector<TestColumn> cases = RandomCases(of, 17);
  cases[3].Values = cases[0].Values;
  TestAnalysis analysis(cases);
  analysis.Time({"time"}).Status("status").Covariates({"x1", "x2", "x3", "x4"}).DefaultDesign();
  CCoxFit& fit = analysis.PrepareFit();
  fit.EvaluateScoreAtStart();
  fit.m_SubsetScores.assign(4, -1.0);
  fit.m_SubsetMembers.assign(4, Bits(4, false));
  SubsetNode root;
  root.SetB = Bits(4, true);
  root.MembersB = {0, 1, 2, 3};
  root.CountB = 4;
  fit.m_SubsetQueue.push_back(root);
  ExpandSubsetNode(fit, 3);
  const auto scoreOf = [&](const Bits& set) {
    return ScoreOfSet(fit.m_ScoreVector, fit.m_PackedInformation, set).Value;
  };
  const double all = scoreOf(Bits(4, true));
  for (std::size_t i = 1; i <= 3; ++i) {
    const SubsetNode& node = fit.m_SubsetQueue[i];
    EXPECT_NEAR(node.ScoreB, scoreOf(node.SetB), 1e-10 * all) << i;
    EXPECT_NEAR(node.ScoreA, i < 3 ? scoreOf(node.SetA) : -1.0, 1e-10 * all) << i;
  }
  EXPECT_NEAR(fit.m_SubsetQueue[3].ScoreB, all, 1e-10 * all) << "without column 0 its copy takes part";
}

}  // namespace
}  // namespace orv
