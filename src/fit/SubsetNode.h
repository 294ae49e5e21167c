// SubsetNode: an entry of the work list of the bounded search for best subsets.
#pragma once

#include <vector>

namespace orv {

// A node stands for a family of subsets: what can still be made of SetB by taking some of its highest columns out. The
// smallest of them has as many columns as SetA, which was scored on the way and belongs to the family of a neighbour.
struct SubsetNode {
  double ScoreA = -1.0;       // -1 when it has not been kept
  std::vector<bool> SetA;     // a bit a column, in the order of the search (see CCoxFit::m_SubsetOrder)
  std::vector<int> MembersA;  // its columns, ascending from 0
  double ScoreB = -1.0;
  std::vector<bool> SetB;
  std::vector<int> MembersB;
  int CountA = 0;  // sizes of the two sets
  int CountB = 0;
  int Children = 0;  // one more than the columns that may be left out of SetB next
};

}  // namespace orv
