// Transforms of time for the test of proportional hazards.
#pragma once

#include <optional>
#include <vector>

namespace orv {

class CCoxData;

// The transformed times of the complete cases. Both vectors have CompleteCaseCount elements.
struct TransformedTimes {
  std::vector<double> Values;
  std::vector<int> Rows;  // the sorted row of each value, from 1; 0 for a value of no row
};

// The time is the survival time, or the stop of the interval. Times within 15 units in the last place are tied. The
// first two list the complete cases as the case table does (stratum, time), the last two by time over all strata.

TransformedTimes IdentityTimes(const CCoxData& data);

// Natural logarithms. Nothing when a complete case has a time at or below 0.
std::optional<TransformedTimes> LogTimes(const CCoxData& data);

// 1 - S(t-), with S the unweighted Kaplan-Meier estimate over all strata; 0 for the first events.
//
// Two properties are kept, since statistics of earlier releases depend on them. Of survival times the risk set of the
// first events holds all cases, those censored before too. Of intervals the events at the last stop have no transform
// when a censored case is sorted last; the values at the end of the list are then 0.
TransformedTimes KaplanMeierTimes(const CCoxData& data);

// The rank among the complete cases, from 1; tied times share the mean of their ranks.
TransformedTimes RankTimes(const CCoxData& data);

}  // namespace orv
