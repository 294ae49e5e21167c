// The reference path of the benchmarks: the partial likelihood as its definition reads, in long double.
#pragma once

#include <vector>

#include "SurvivalTable.h"

namespace orv::bench {

struct LikelihoodValues {
  long double L = 0.0L;
  std::vector<long double> U;  // p elements
  std::vector<long double> H;  // packed lower triangle
};

// How the risk sets are formed. Rescan adds up every risk set afresh, which takes n times the number of tied groups and
// shares nothing with running sums; it serves small tables, and models whose values change with time. RunningSums lets
// each row join once and, with starts, leave once.
enum class RiskSets { Rescan, RunningSums };

// Evaluates log partial likelihood, score and information at `beta` (one value a coefficient) from a table as
// MakeSurvivalTable makes it, unweighted, under Breslow's or Efron's rule. Ties are times that are equal. Shares no
// code with the module.
LikelihoodValues EvaluatePlainly(const MemoryTable& table,
                                 const SurvivalKind& kind,
                                 const std::vector<double>& beta,
                                 RiskSets riskSets);

// The decimal digits, at most 16, to which a pass agrees with the reference: of L relative to L, of a score relative to
// its standard deviation, of an element of the information relative to the diagonal. The fewest count.
//   U      p elements
//   H      p rows of which the upper triangle is read
double AgreedDigits(const LikelihoodValues& reference, double L, const double* U, double* const* H);

// The digits of one number that two paths computed.
double AgreedDigits(long double reference, long double value, long double scale);

}  // namespace orv::bench
