// The baseline cumulative hazard of each stratum, and the risk-set sums that the standard errors of curves need.
#pragma once

#include <vector>

namespace orv {

class CCoxFit;

// The events of each run of tied times, on the run's lowest row and 0 elsewhere. By sorted row, from 0.
struct TiedEvents {
  std::vector<int> Counts;
  std::vector<double> MeanWeights;
};

// H0(t) = sum of dN / S0 over the event times up to t, from the final estimates. Fills m_BreslowCurves,
// m_EventRiskSums and m_EventWeightSums, for survival times and for intervals. A tied run whose lowest row is censored
// gets no increment; complete cases stand first at a time, so it holds no event. Needs m_LinearPredictor. The moments
// are summed, too: whether they leave the range of numbers is known once the baseline is. Source: Breslow (1974).
TiedEvents ComputeBreslowBaseline(CCoxFit& fit);

// Fills m_EventRiskMoments, p numbers for each event time, unless a call before has: they may take as much memory as
// the cases, and most analyses ask for no curve. Does nothing without a baseline. O(n p).
void FillEventRiskMoments(CCoxFit& fit);

}  // namespace orv
