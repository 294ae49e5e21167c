// The partial likelihood with covariates that change with time straight from its definition, in long double.
#pragma once

#include <cmath>
#include <cstddef>
#include <functional>
#include <vector>

#include "support/ReferenceLikelihood.h"

namespace orv::testing {

// The design values of a case at a time.
using DesignAt = std::function<std::vector<double>(const ReferenceCase& one, double time)>;

// `cases` in the order of the case table: by stratum, then time. With `strata` a border between two strata cuts a tied
// group; the risk set of a group is every case from its first to the last of the table, of whatever stratum, and a
// fraction is taken out of all events at its time among them. Times are tied when they are equal.
inline ReferenceValue EvaluateTimeDependentReference(const std::vector<ReferenceCase>& cases,
                                                     const RealVector& beta,
                                                     bool efron,
                                                     bool strata,
                                                     const DesignAt& designAt) {
  const std::size_t p = beta.size();
  ReferenceValue value;
  value.U.assign(p, 0.0L);
  value.H = ZeroMatrix(p);
  const auto eta = [&](const std::vector<double>& x) {
    Real sum = 0.0L;
    for (std::size_t j = 0; j < p; ++j) sum += beta[j] * x[j];
    return sum;
  };
  for (std::size_t first = 0; first < cases.size();) {
    const double time = cases[first].Time;
    std::size_t next = first;
    Real events = 0.0L;
    Real eventWeight = 0.0L;
    for (; next < cases.size() && cases[next].Time == time; ++next) {
      if (strata && cases[next].Stratum != cases[first].Stratum) break;
      if (!cases[next].Event) continue;
      const std::vector<double> x = designAt(cases[next], time);
      events += 1.0L;
      eventWeight += cases[next].Weight;
      value.L += cases[next].Weight * eta(x);
      for (std::size_t j = 0; j < p; ++j) value.U[j] += static_cast<Real>(cases[next].Weight) * x[j];
    }
    std::vector<ReferenceCase> atTime(cases.begin() + static_cast<std::ptrdiff_t>(first), cases.end());
    for (ReferenceCase& one : atTime) one.X = designAt(one, time);
    for (Real k = 0.0L; k < events; k += 1.0L) {
      const Real fraction = efron ? k / events : 0.0L;
      const Real meanWeight = eventWeight / events;
      std::vector<WeightedMember> riskSet;
      for (const ReferenceCase& one : atTime) {
        const Real share = one.Event && one.Time == time ? 1.0L - fraction : 1.0L;
        riskSet.push_back({&one, share * one.Weight * std::exp(eta(one.X))});
      }
      const RealVector mean = WeightedMean(riskSet, p);
      const RealMatrix covariance = WeightedCovariance(riskSet, mean);
      value.L -= meanWeight * std::log(WeightSum(riskSet));
      for (std::size_t j = 0; j < p; ++j) {
        value.U[j] -= meanWeight * mean[j];
        for (std::size_t l = 0; l < p; ++l) value.H[j][l] += meanWeight * covariance[j][l];
      }
    }
    first = next;
  }
  return value;
}

}  // namespace orv::testing
