// The discrete partial likelihood straight from its definition, in long double: every subset of every risk set.
#pragma once

#include <cmath>
#include <cstddef>
#include <set>
#include <utility>
#include <vector>

#include "support/ReferenceLikelihood.h"

namespace orv::testing {

// The sums over all subsets of `left` more members from place `from` on: one leaf of the recursion a subset.
struct SubsetEnumeration {
  std::vector<RealVector> X;  // of the members
  RealVector R;               // their relative risks
  Real Q = 0.0L;
  RealVector Q1;
  RealMatrix Q2;

  explicit SubsetEnumeration(std::size_t p) : Q1(p, 0.0L), Q2(ZeroMatrix(p)) {}

  void Sum(std::size_t left) { Sum(0, left, 1.0L, RealVector(Q1.size(), 0.0L)); }

 private:
  void Sum(std::size_t from, std::size_t left, Real product, const RealVector& sum) {
    if (left == 0) {
      Q += product;
      for (std::size_t j = 0; j < sum.size(); ++j) {
        Q1[j] += product * sum[j];
        for (std::size_t l = 0; l < sum.size(); ++l) Q2[j][l] += product * sum[j] * sum[l];
      }
      return;
    }
    for (std::size_t place = from; place + left <= R.size(); ++place) {
      RealVector next = sum;
      for (std::size_t j = 0; j < next.size(); ++j) next[j] += X[place][j];
      Sum(place + 1, left - 1, product * R[place], next);
    }
  }
};

// Times are tied when they are equal. Weights do not enter. The cost is the number of subsets.
inline ReferenceValue EvaluateDiscreteReference(const std::vector<ReferenceCase>& cases, const RealVector& beta) {
  const std::size_t p = beta.size();
  ReferenceValue value;
  value.U.assign(p, 0.0L);
  value.H = ZeroMatrix(p);
  std::set<std::pair<double, double>> eventTimes;  // stratum and time
  for (const ReferenceCase& one : cases) {
    if (one.Event) eventTimes.emplace(one.Stratum, one.Time);
  }
  for (const auto& [stratum, time] : eventTimes) {
    SubsetEnumeration subsets(p);
    std::size_t events = 0;
    for (const ReferenceCase& one : cases) {
      if (!one.IsAtRisk(stratum, time)) continue;
      Real eta = 0.0L;
      for (std::size_t j = 0; j < p; ++j) eta += beta[j] * one.X[j];
      subsets.R.push_back(std::exp(eta));
      subsets.X.emplace_back(one.X.begin(), one.X.end());
      if (!one.Event || one.Time != time) continue;
      ++events;
      value.L += eta;
      for (std::size_t j = 0; j < p; ++j) value.U[j] += one.X[j];
    }
    subsets.Sum(events);
    value.L -= std::log(subsets.Q);
    for (std::size_t j = 0; j < p; ++j) {
      value.U[j] -= subsets.Q1[j] / subsets.Q;
      for (std::size_t l = 0; l < p; ++l) {
        value.H[j][l] += subsets.Q2[j][l] / subsets.Q - subsets.Q1[j] * subsets.Q1[l] / (subsets.Q * subsets.Q);
      }
    }
  }
  return value;
}

}  // namespace orv::testing
