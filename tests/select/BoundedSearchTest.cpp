// Which subsets the bounded search looks at: those of the leaps and bounds written out plainly, each set scored from
// scratch, and no other.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "select/SubsetSearch.h"

namespace orv {
namespace {

using namespace testing;
using Columns = std::vector<int>;  // places in the order of the search

class PlainBoundedSearch {
 public:
  PlainBoundedSearch(SubsetSearch& scores, int columns)
      : Best(static_cast<std::size_t>(columns) + 1, -1.0), Sets(Best.size()), m_scores(scores), m_columns(columns) {}

  void Run() {
    Columns all;
    for (int c = 0; c < m_columns; ++c) all.push_back(c);
    OrderByLoss();
    m_queue.push_back({0, all, 1, -1.0});
    if (m_columns > 1) Expand(m_columns - 1, 0);  // the root has no score
    while (!m_queue.empty()) {
      const Node node = m_queue.front();
      const std::size_t b = node.B.size();
      const std::size_t a = node.A;
      if (node.Children > 1) {
        if (node.ScoreB >= Best[b - 1]) {
          Expand(node.Children - 1, 0);
        } else if (node.ScoreB > Best[a]) {
          int d = 0;
          for (std::size_t j = 1; j <= b - a - 1 && node.ScoreB <= Best[b - 1 - j]; ++j) ++d;
          Expand(node.Children - d - 1, d);
        }
      }
      m_queue.pop_front();
      m_queue.insert(m_queue.begin(), m_children.begin(), m_children.end());
      m_children.clear();
    }
    Offer(all);
  }

  std::vector<double> Best;  // per size
  std::vector<std::vector<bool>> Sets;
  std::uint64_t Scored = 0;

 private:
  struct Node {
    std::size_t A;  // size of the smaller set
    Columns B;
    int Children;
    double ScoreB;
  };

  SubsetSearch& m_scores;
  int m_columns;
  std::vector<int> m_order;  // the column at each place, by what it adds to all others, the largest first
  std::deque<Node> m_queue;  // nodes still to visit, the children of the latest one first
  std::vector<Node> m_children;

  void OrderByLoss() {
    std::vector<std::pair<double, int>> byLoss;
    for (int c = 0; c < m_columns; ++c) {
      std::vector<bool> others(static_cast<std::size_t>(m_columns), true);
      others[static_cast<std::size_t>(c)] = false;
      byLoss.emplace_back(m_scores.ScoreOf(others), c);
    }
    std::sort(byLoss.begin(), byLoss.end());
    for (const auto& [scoreWithout, column] : byLoss) m_order.push_back(column);
  }

  double Offer(const Columns& set) {
    ++Scored;
    std::vector<bool> bits(static_cast<std::size_t>(m_columns), false);
    for (const int place : set) bits[static_cast<std::size_t>(m_order[static_cast<std::size_t>(place)])] = true;
    const double score = m_scores.ScoreOf(bits);
    if (score > Best[set.size()]) {
      Best[set.size()] = score;
      Sets[set.size()] = bits;
    }
    return score;
  }

  // Child i leaves the (d + i + 1)-th highest column of the front set out; its smaller set lacks the d + i highest.
  void Expand(int children, int d) {
    const Columns front = m_queue.front().B;
    for (int i = children; i >= 1; --i) Offer(Columns(front.begin(), front.end() - d - i));
    for (int i = 1; i <= children; ++i) {
      Columns b = front;
      b.erase(b.end() - 1 - d - i);
      const double score = Offer(b);
      m_children.push_back({front.size() - static_cast<std::size_t>(d + i), b, d + i, score});
    }
  }
};

TEST(BoundedSearch, LooksAtTheSubsetsOfLeapsAndBoundsAndNoOther) {
  std::uint64_t scored = 0;
  std::uint64_t all = 0;
  for (unsigned seed = 1; seed <= 60; ++seed) {
    SubsetCases of;
    of.Columns = 1 + static_cast<int>(seed % 11);
    of.Effects = static_cast<int>(seed % 5);
    of.Weights = seed % 3 == 0;
    SubsetSearch search(of, 5000 + seed);
    const CCoxFit& fit = search.Bounded();
    PlainBoundedSearch plain(search, of.Columns);
    plain.Run();
    EXPECT_EQ(fit.m_SubsetsScored, plain.Scored) << of.Columns << " columns, seed " << seed;
    ASSERT_EQ(fit.m_SubsetCount, of.Columns);
    for (std::size_t size = 1; size < plain.Sets.size(); ++size) {
      EXPECT_EQ(fit.m_SubsetMembers[size - 1], plain.Sets[size]) << "size " << size << ", seed " << seed;
      EXPECT_NEAR(fit.m_SubsetScores[size - 1], plain.Best[size], 1e-10 * plain.Best.back());
    }
    scored += plain.Scored;
    all += (std::uint64_t{1} << of.Columns) - 1;
  }
  EXPECT_LT(scored, all / 2) << "families are passed over";
}

}  // namespace
}  // namespace orv
