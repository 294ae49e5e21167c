// The subsets of d of m positions, in lexicographic order.
#pragma once

#include <limits>
#include <vector>

namespace orv {

// Positions count from 0 and ascend within a subset.
//
//   SubsetGenerator subsets(d, m);
//   while (subsets.Next()) use(subsets.Positions());
class SubsetGenerator {
 public:
  SubsetGenerator(int d, int m) : m_length(m), m_positions(static_cast<std::size_t>(d)) {}

  // Moves to the first subset, and then to each next one. False when there is none left, or d exceeds m.
  bool Next();
  const std::vector<int>& Positions() const { return m_positions; }

 private:
  // Advances the first `count` positions, which may reach up to m - 1 - depth. Returns the last of them, or -1.
  int Advance(int count, int depth);

  int m_length;
  std::vector<int> m_positions;
  bool m_started = false;
};

// The number of subsets of d of m, as a double: it grows beyond any integer, and beyond any double. Above `enough` any
// number that is at least that large and no larger than the right one may come back.
double SubsetCount(int d, int m, double enough = std::numeric_limits<double>::infinity());

}  // namespace orv
