// What a tied group of truly discrete times takes off the log partial likelihood.
#pragma once

#include <vector>

#include "fit/CompensatedSum.h"
#include "fit/SymmetricSums.h"

namespace orv {

// The sums over all subsets of d of a risk set: Q = sum of r_A, Q1 = sum of r_A x_A, Q2 = sum of r_A x_A x_A' (packed).
struct SubsetSums {
  double Q = 0.0;
  const double* Q1 = nullptr;
  const double* Q2 = nullptr;
};

// L -= log Q, U -= Q1 / Q, H += Q2 / Q - Q1 Q1' / Q^2.
//   H  packed lower triangle
// Source: Cox (1972), the discrete logistic model.
void SubtractSubsetTerm(const SubsetSums& sums, CompensatedSum& L, double* U, double* H, int p);

// A member of a risk set.
struct RiskMember {
  double r = 0.0;             // weight times relative risk
  const double* x = nullptr;  // design values
};

// The sums by explicit enumeration of the subsets. `Q1` and `Q2` receive p and p(p+1)/2 elements.
SubsetSums EnumerateSubsets(const std::vector<RiskMember>& members, int d, int p, double* Q1, double* Q2);

// True when the enumeration takes fewer operations than the recursion over the same members.
bool EnumerationIsCheaper(int d, int members, int p);

}  // namespace orv
