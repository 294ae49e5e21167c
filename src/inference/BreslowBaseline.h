// The baseline cumulative hazard of each stratum, with the risk-set sums that standard errors need.
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
// m_EventRiskSums, m_EventWeightSums and m_EventRiskMoments, for survival times and for intervals. A tied run whose
// lowest row is censored gets no increment; complete cases stand first at a time, so it holds no event. Needs
// m_LinearPredictor. Source: Breslow (1974).
TiedEvents ComputeBreslowBaseline(CCoxFit& fit);

}  // namespace orv
