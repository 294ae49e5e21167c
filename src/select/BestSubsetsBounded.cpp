// The bounded search for best subsets.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "select/BestSubsets.h"
#include "select/GuardedSearch.h"
#include "select/SubsetSweep.h"

namespace orv {

namespace {

constexpr double kNotFound = -1.0;
constexpr int kProgressSteps = 100;

std::vector<bool> BitsOf(const std::vector<int>& members, std::size_t columns) {
  std::vector<bool> bits(columns, false);
  for (const int column : members) bits[static_cast<std::size_t>(column)] = true;
  return bits;
}

// The columns of a set of the search.
std::vector<bool> DesignColumnsOf(const CCoxFit& fit, const std::vector<bool>& set) {
  if (fit.m_SubsetOrder.empty()) return set;
  std::vector<bool> columns(set.size(), false);
  for (std::size_t place = 0; place < set.size(); ++place) {
    if (set[place]) columns[static_cast<std::size_t>(fit.m_SubsetOrder[place])] = true;
  }
  return columns;
}

// The score of a set of this size against the best found; of equal scores the first stays.
void Offer(CCoxFit& fit, double score, const std::vector<bool>& set, int size) {
  ++fit.m_SubsetsScored;
  const auto place = static_cast<std::size_t>(size - 1);
  if (!(score > fit.m_SubsetScores[place])) return;
  fit.m_SubsetScores[place] = score;
  fit.m_SubsetMembers[place] = DesignColumnsOf(fit, set);
}

// The columns by what each adds to all others, the largest first. The families that leave a low column out are the
// large ones, so a large loss there lets whole families be passed over.
std::vector<int> OrderByLoss(const CCoxFit& fit) {
  SweptInformation full(fit);
  const int columns = static_cast<int>(fit.m_pData->CoefficientCount);
  full.SweepIn({0, columns - 1});
  std::vector<double> losses;
  for (int column = 0; column < columns; ++column) losses.push_back(full.LossWithout(column));
  std::vector<int> order(losses.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&losses](int a, int b) {
    return losses[static_cast<std::size_t>(a)] > losses[static_cast<std::size_t>(b)];
  });
  return order;
}

SubsetNode RootOf(int columns) {
  SubsetNode root;
  const auto p = static_cast<std::size_t>(columns);
  root.SetA.assign(p, false);
  root.SetB.assign(p, true);
  root.MembersB.resize(p);
  std::iota(root.MembersB.begin(), root.MembersB.end(), 0);
  root.CountB = columns;
  root.Children = 1;
  return root;
}

// Child i of a node: without the i highest columns, and without the (i + 1)-th highest.
SubsetNode ChildOf(const SubsetNode& parent, int i) {
  const std::size_t columns = parent.SetB.size();
  SubsetNode child;
  child.MembersA.assign(parent.MembersB.begin(), parent.MembersB.end() - i);
  child.MembersB = parent.MembersB;
  child.MembersB.erase(child.MembersB.end() - 1 - i);
  child.SetA = BitsOf(child.MembersA, columns);
  child.SetB = BitsOf(child.MembersB, columns);
  child.CountA = parent.CountB - i;
  child.CountB = parent.CountB - 1;
  child.Children = i;
  return child;
}

// Appends and scores the children from `first` to `last` of the front node: their SetA while the columns of the front's
// SetB are swept in, lowest first, and their SetB by taking one column out of all of them.
void AppendChildren(CCoxFit& fit, int first, int last) {
  std::deque<SubsetNode>& queue = fit.m_SubsetQueue;
  const SubsetNode& front = queue.front();
  const std::size_t before = queue.size();
  for (int i = first; i <= last; ++i) queue.push_back(ChildOf(front, i));
  const auto child = [&](int i) -> SubsetNode& { return queue[before + static_cast<std::size_t>(i - first)]; };
  const std::vector<int>& members = front.MembersB;
  const auto highest = [&](int i) { return members[members.size() - 1 - static_cast<std::size_t>(i)]; };

  SubsetSweep sweep{SweptInformation(fit, fit.m_SubsetOrder)};
  for (const int column : child(last).MembersA) sweep.Add(column);
  Offer(fit, sweep.Score(), child(last).SetA, child(last).CountA);
  for (int i = last - 1; i >= first; --i) {
    sweep.Add(highest(i));
    child(i).ScoreA = sweep.Score();
    Offer(fit, child(i).ScoreA, child(i).SetA, child(i).CountA);
  }
  for (int i = first - 1; i >= 0; --i) sweep.Add(highest(i));
  for (int i = first; i <= last; ++i) {
    // Of a copy: taking a column out loses digits, which would add up from child to child.
    SubsetSweep without = sweep;
    without.Remove(highest(i));
    child(i).ScoreB = without.Score();
    Offer(fit, child(i).ScoreB, child(i).SetB, child(i).CountB);
  }
}

class BoundedSearch {
 public:
  explicit BoundedSearch(CCoxFit& fit) : m_fit(fit), m_columns(static_cast<int>(fit.m_pData->CoefficientCount)) {}

  void Run(SearchProgress& progress) {
    if (m_columns == 0) return;
    m_fit.EvaluateScoreAtStart();
    m_fit.m_SubsetOrder = OrderByLoss(m_fit);
    m_fit.m_SubsetQueue.push_back(RootOf(m_columns));
    if (m_columns > 1) ExpandSubsetNode(m_fit, m_columns - 1);
    std::deque<SubsetNode>& queue = m_fit.m_SubsetQueue;
    while (!queue.empty()) {
      const std::size_t before = queue.size();
      Visit(queue.front());
      // New nodes go to the front, so the list never holds more than the children of one node at each level.
      std::size_t appended = queue.size() - before;
      queue.pop_front();
      for (; appended > 0; --appended) {
        queue.push_front(std::move(queue.back()));
        queue.pop_back();
      }
      if (Report(progress)) break;
    }
    ScoreFullModel();
    ScoreRowsAfresh();
  }

 private:
  double Best(int size) const { return m_fit.m_SubsetScores[static_cast<std::size_t>(size - 1)]; }

  void Visit(const SubsetNode& node) {
    const int k = node.Children;
    const double s = node.ScoreB;
    m_done += 1.0;
    if (k == 1) return;
    if (s >= Best(node.CountB - 1)) {
      ExpandSubsetNode(m_fit, k - 1);
    } else if (s <= Best(node.CountA)) {
      // No subset of the family can beat the best of any of its sizes.
      m_done += FamiliesBelow(k);
    } else {
      int unreachable = 0;
      const int between = node.CountB - node.CountA - 1;
      while (unreachable < between && s <= Best(node.CountB - 1 - (unreachable + 1))) ++unreachable;
      if (unreachable == 0) {
        ExpandSubsetNode(m_fit, k - 1);
      } else {
        m_done += FamiliesBelow(unreachable + 1);
        ExpandSubsetNodeSkipping(m_fit, k - unreachable - 1, unreachable);
      }
    }
  }

  // How many nodes a full search would make below one with this many children.
  static double FamiliesBelow(int children) {
    constexpr int kWithinRange = 1000;
    return std::ldexp(1.0, std::min(children - 1, kWithinRange)) - 1.0;
  }

  // Moves the bar by the share of all nodes that are done or passed over. Returns true on a cancel.
  bool Report(SearchProgress& progress) {
    const int step = static_cast<int>(kProgressSteps * (m_done / (FamiliesBelow(m_columns) + 1.0)));
    if (step == m_step) return progress.IsCancelled();
    m_step = step;
    return progress.MoveTo(step);
  }

  void ScoreFullModel() {
    SubsetSweep sweep{SweptInformation(m_fit)};
    for (int column = 0; column < m_columns; ++column) sweep.Add(column);
    Offer(m_fit, sweep.Score(), std::vector<bool>(static_cast<std::size_t>(m_columns), true), m_columns);
  }

  // What is reported has all its digits: a set that was scored by taking a column out of a larger one, with columns
  // near to each other, has not.
  void ScoreRowsAfresh() {
    for (std::size_t row = 0; row < m_fit.m_SubsetScores.size(); ++row) {
      if (m_fit.m_SubsetScores[row] == kNotFound) continue;
      SubsetSweep sweep{SweptInformation(m_fit)};
      for (int column = 0; column < m_columns; ++column) {
        if (m_fit.m_SubsetMembers[row][static_cast<std::size_t>(column)]) sweep.Add(column);
      }
      m_fit.m_SubsetScores[row] = sweep.Score();
    }
  }

  CCoxFit& m_fit;
  const int m_columns;
  double m_done = 0.0;  // nodes visited or passed over
  int m_step = 0;
};

// Leaves out the sizes for which nothing was found before the search ended.
void KeepRowsFound(CCoxFit& fit) {
  std::vector<double> scores;
  std::vector<std::vector<bool>> members;
  for (std::size_t k = 0; k < fit.m_SubsetScores.size(); ++k) {
    if (fit.m_SubsetScores[k] == kNotFound) continue;
    scores.push_back(fit.m_SubsetScores[k]);
    members.push_back(fit.m_SubsetMembers[k]);
  }
  fit.m_SubsetScores = scores;
  fit.m_SubsetMembers = members;
  fit.m_SubsetCount = static_cast<int>(scores.size());
}

}  // namespace

void ExpandSubsetNode(CCoxFit& fit, int children) {
  AppendChildren(fit, 1, children);
}

void ExpandSubsetNodeSkipping(CCoxFit& fit, int children, int skipped) {
  AppendChildren(fit, skipped + 1, skipped + children);
}

void BestSubsetsBounded(CCoxFit& fit) {
  const std::size_t p = fit.m_pData->CoefficientCount;
  fit.m_SubsetBestPerSize = true;
  fit.m_SubsetScores.assign(p, kNotFound);
  fit.m_SubsetMembers.assign(p, std::vector<bool>(p, false));
  RunGuarded(fit, kProgressSteps, [&fit](SearchProgress& progress) { BoundedSearch(fit).Run(progress); });
  fit.m_SubsetQueue.clear();
  KeepRowsFound(fit);
}

}  // namespace orv
