// The partial likelihood of right-censored cases and of intervals straight from its definition, in long double.
//
// Nothing is accumulated from case to case: each event time collects its own risk set, and the information is a sum of
// weighted covariances about their own means. O(n^2 p^2), for small tests.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

#include "data/CCoxData.h"

namespace orv::testing {

using Real = long double;
using RealVector = std::vector<Real>;
using RealMatrix = std::vector<RealVector>;

struct ReferenceCase {
  double Time = 0.0;
  bool Event = false;
  double Weight = 1.0;
  double Stratum = 0.0;
  std::vector<double> X;
  double Start = -std::numeric_limits<double>::infinity();  // at risk when Start < t <= Time

  bool IsAtRisk(double stratum, double time) const { return Stratum == stratum && Start < time && time <= Time; }
};

struct ReferenceValue {
  Real L = 0.0L;
  RealVector U;
  RealMatrix H;
};

inline RealMatrix ZeroMatrix(std::size_t p) {
  return RealMatrix(p, RealVector(p, 0.0L));
}

// The members of a risk set with the weight that each has in it.
struct WeightedMember {
  const ReferenceCase* Case = nullptr;
  Real Weight = 0.0L;
};

inline Real WeightSum(const std::vector<WeightedMember>& members) {
  Real sum = 0.0L;
  for (const WeightedMember& member : members) sum += member.Weight;
  return sum;
}

inline RealVector WeightedMean(const std::vector<WeightedMember>& members, std::size_t p) {
  RealVector mean(p, 0.0L);
  for (const WeightedMember& member : members) {
    for (std::size_t j = 0; j < p; ++j) mean[j] += member.Weight * member.Case->X[j];
  }
  const Real total = WeightSum(members);
  for (Real& value : mean) value /= total;
  return mean;
}

inline RealMatrix WeightedCovariance(const std::vector<WeightedMember>& members, const RealVector& mean) {
  const std::size_t p = mean.size();
  const Real total = WeightSum(members);
  RealMatrix covariance = ZeroMatrix(p);
  for (const WeightedMember& member : members) {
    for (std::size_t j = 0; j < p; ++j) {
      for (std::size_t l = 0; l < p; ++l) {
        covariance[j][l] += member.Weight * (member.Case->X[j] - mean[j]) * (member.Case->X[l] - mean[l]) / total;
      }
    }
  }
  return covariance;
}

// Breslow's likelihood, or Efron's. Times are tied when they are equal. The fraction of Efron's terms counts events;
// every term of a group has the mean weight of the group's events.
inline ReferenceValue EvaluateReference(const std::vector<ReferenceCase>& cases, const RealVector& beta, bool efron) {
  const std::size_t p = beta.size();
  ReferenceValue value;
  value.U.assign(p, 0.0L);
  value.H = ZeroMatrix(p);
  const auto eta = [&](const ReferenceCase& one) {
    Real sum = 0.0L;
    for (std::size_t j = 0; j < p; ++j) sum += beta[j] * one.X[j];
    return sum;
  };
  std::vector<std::pair<double, double>> eventTimes;  // stratum and time
  for (const ReferenceCase& one : cases) {
    if (one.Event) eventTimes.emplace_back(one.Stratum, one.Time);
  }
  std::sort(eventTimes.begin(), eventTimes.end());
  eventTimes.erase(std::unique(eventTimes.begin(), eventTimes.end()), eventTimes.end());

  for (const auto& [stratum, time] : eventTimes) {
    const auto isEvent = [&, s = stratum, t = time](const ReferenceCase& one) {
      return one.Event && one.Stratum == s && one.Time == t;
    };
    Real events = 0.0L;
    Real eventWeight = 0.0L;
    for (const ReferenceCase& one : cases) {
      if (!isEvent(one)) continue;
      events += 1.0L;
      eventWeight += one.Weight;
      value.L += one.Weight * eta(one);
      for (std::size_t j = 0; j < p; ++j) value.U[j] += static_cast<Real>(one.Weight) * one.X[j];
    }
    const Real meanWeight = eventWeight / events;
    for (Real k = 0.0L; k < events; k += 1.0L) {
      const Real fraction = efron ? k / events : 0.0L;
      std::vector<WeightedMember> riskSet;
      for (const ReferenceCase& one : cases) {
        if (!one.IsAtRisk(stratum, time)) continue;
        const Real share = isEvent(one) ? 1.0L - fraction : 1.0L;
        riskSet.push_back({&one, share * one.Weight * std::exp(eta(one))});
      }
      const RealVector mean = WeightedMean(riskSet, p);
      const RealMatrix covariance = WeightedCovariance(riskSet, mean);
      value.L -= meanWeight * std::log(WeightSum(riskSet));
      for (std::size_t j = 0; j < p; ++j) {
        value.U[j] -= meanWeight * mean[j];
        for (std::size_t l = 0; l < p; ++l) value.H[j][l] += meanWeight * covariance[j][l];
      }
    }
  }
  return value;
}

// Solves A x = b by elimination with row exchanges.
inline RealVector SolveReference(RealMatrix A, RealVector b) {
  const std::size_t p = b.size();
  for (std::size_t column = 0; column < p; ++column) {
    std::size_t pivot = column;
    for (std::size_t row = column + 1; row < p; ++row) {
      if (std::abs(A[row][column]) > std::abs(A[pivot][column])) pivot = row;
    }
    std::swap(A[column], A[pivot]);
    std::swap(b[column], b[pivot]);
    for (std::size_t row = column + 1; row < p; ++row) {
      const Real factor = A[row][column] / A[column][column];
      for (std::size_t k = column; k < p; ++k) A[row][k] -= factor * A[column][k];
      b[row] -= factor * b[column];
    }
  }
  for (std::size_t row = p; row-- > 0;) {
    for (std::size_t k = row + 1; k < p; ++k) b[row] -= A[row][k] * b[k];
    b[row] /= A[row][row];
  }
  return b;
}

inline RealMatrix InvertReference(const RealMatrix& A) {
  const std::size_t p = A.size();
  RealMatrix inverse = ZeroMatrix(p);
  for (std::size_t column = 0; column < p; ++column) {
    RealVector unit(p, 0.0L);
    unit[column] = 1.0L;
    const RealVector solution = SolveReference(A, unit);
    for (std::size_t row = 0; row < p; ++row) inverse[row][column] = solution[row];
  }
  return inverse;
}

inline Real DotReference(const RealVector& a, const RealVector& b) {
  Real sum = 0.0L;
  for (std::size_t j = 0; j < a.size(); ++j) sum += a[j] * b[j];
  return sum;
}

// The maximum by Newton steps from zero, each halved until the likelihood does not fall. Close to the maximum, where
// likelihoods differ by rounding only, the steps are taken as they are.
// `evaluate` gives the ReferenceValue of a vector.
template <typename Evaluate>
RealVector MaximizeReference(std::size_t p, const Evaluate& evaluate) {
  RealVector beta(p, 0.0L);
  for (int iteration = 0; iteration < 200; ++iteration) {
    const ReferenceValue here = evaluate(beta);
    const RealVector step = SolveReference(here.H, here.U);
    const Real gain = DotReference(step, here.U);
    if (gain < 1e-34L) break;
    for (Real length = 1.0L; length > 1e-12L; length *= 0.5L) {
      RealVector trial = beta;
      for (std::size_t j = 0; j < p; ++j) trial[j] += length * step[j];
      if (gain > 1e-9L && evaluate(trial).L < here.L) continue;
      beta = trial;
      break;
    }
  }
  return beta;
}

inline RealVector MaximizeReference(const std::vector<ReferenceCase>& cases, std::size_t p, bool efron) {
  return MaximizeReference(p, [&](const RealVector& beta) { return EvaluateReference(cases, beta, efron); });
}

// The cases of a run as they stand in its table now.
inline std::vector<ReferenceCase> CasesOf(const CCoxData& data) {
  std::vector<ReferenceCase> cases;
  for (int row = 1; row <= static_cast<int>(data.ValidCaseCount); ++row) {
    const double* cells = data.CaseTable.GetRow(row);
    ReferenceCase one;
    one.Time = cells[data.StopColumn >= 0 ? data.StopColumn : data.SurvivalColumn];
    if (data.StartColumn >= 0) one.Start = cells[data.StartColumn];
    one.Event = cells[data.StatusColumn] == 1.0;
    one.Weight = cells[data.WeightColumn];
    one.Stratum = data.StratumColumn >= 0 ? cells[data.StratumColumn] : 0.0;
    one.X.assign(cells, cells + data.CoefficientCount);
    cases.push_back(std::move(one));
  }
  return cases;
}

// The same with every column centred and divided by its standard deviation, in long double up to the rounding of X.
inline std::vector<ReferenceCase> StandardizedCasesOf(const CCoxData& data) {
  std::vector<ReferenceCase> cases = CasesOf(data);
  for (ReferenceCase& one : cases) {
    for (std::size_t j = 0; j < one.X.size(); ++j) {
      const CoxDesignColumn& column = data.DesignColumns[j];
      one.X[j] -= column.Mean;
      if (column.StdDev > 0.0) one.X[j] /= column.StdDev;
    }
  }
  return cases;
}

}  // namespace orv::testing
