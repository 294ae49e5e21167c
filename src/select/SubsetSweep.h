// SubsetSweep: the score of a set of columns that changes column by column.
#pragma once

#include <vector>

#include "select/SweptInformation.h"

namespace orv {

// A column that says nothing beyond the other members stays aside, and takes the place of one that leaves when it can.
// So the score is always that of all members. Columns count from 0.
class SubsetSweep {
 public:
  explicit SubsetSweep(SweptInformation swept) : m_swept(std::move(swept)) {}

  void Add(int column);
  void Remove(int column);
  // The members that take part in the score, a bit a column.
  const std::vector<bool>& Counted() const { return m_swept.Swept(); }
  // Throws NumericalFailure when the arithmetic since the last call failed.
  double Score() const;

 private:
  SweptInformation m_swept;
  std::vector<int> m_aside;
};

}  // namespace orv
