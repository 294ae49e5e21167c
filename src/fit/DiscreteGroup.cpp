#include "fit/DiscreteGroup.h"

#include <algorithm>
#include <cmath>

#include "fit/PassKernels.h"
#include "fit/SubsetGenerator.h"

namespace orv {

void SubtractSubsetTerm(const SubsetSums& sums, CompensatedSum& L, double* U, double* H, int p) {
  L.Add(-std::log(sums.Q));
  // Each sum is divided before anything is multiplied: it may be near the largest double.
  const double* Q2 = sums.Q2;
  for (int j = 0; j < p; ++j) {
    const double mean = sums.Q1[j] / sums.Q;
    U[j] -= mean;
    for (int l = 0; l <= j; ++l) H[l] += Q2[l] / sums.Q - sums.Q1[l] / sums.Q * mean;
    H += j + 1;
    Q2 += j + 1;
  }
}

SubsetSums EnumerateSubsets(const std::vector<RiskMember>& members, int d, int p, double* Q1, double* Q2) {
  SubsetSums sums{0.0, Q1, Q2};
  std::fill_n(Q1, p, 0.0);
  std::fill_n(Q2, PackedSize(static_cast<std::size_t>(p)), 0.0);
  std::vector<double> s(static_cast<std::size_t>(p));
  SubsetGenerator subsets(d, static_cast<int>(members.size()));
  while (subsets.Next()) {
    double c = 1.0;
    std::fill(s.begin(), s.end(), 0.0);
    for (const int position : subsets.Positions()) {
      const RiskMember& member = members[static_cast<std::size_t>(position)];
      c *= member.r;
      for (int j = 0; j < p; ++j) s[static_cast<std::size_t>(j)] += member.x[j];
    }
    sums.Q += c;
    AddWeighted(Q1, Q2, s.data(), c, p);
  }
  return sums;
}

bool EnumerationIsCheaper(int d, int members, int p) {
  const double square = static_cast<double>(p) * (p + 1) / 2.0;
  const double perSubset = static_cast<double>(d) * p + square;
  constexpr double kOperationsPerElement = 1.5;  // what one element of the recursion costs, as measured
  const double recursion = static_cast<double>(members) * d * (kOperationsPerElement * square);
  if (perSubset == 0.0) return false;
  return SubsetCount(d, members, recursion / perSubset) * perSubset < recursion;
}

}  // namespace orv
