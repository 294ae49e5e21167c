// Score residuals: each case's share of the score, with the risk sets that it was in.
#pragma once

#include "fit/CCoxFit.h"

namespace orv {

// A vector of all cases, by sorted row, for each parameter. `beta` has CoefficientCount elements; null is the zero
// vector. Risk sets follow the rows of the case table, from an event to the end of its stratum.
//
// The kernel for survival times. Without ties, or under rules other than Efron's, the share in a risk set is
// (x - mean) exp(x'b) times the event weight over S0, without the weight of the row itself; in a group of several
// events under Efron's rule it carries that weight. The last row of the table and the highest row of each stratum close
// a group of their own when they are events, even if lower rows tie with them. Kept: influence measures on record
// depend on both. With intervals the stop is the time and starts are not looked at.
DenseMatrix SurvivalScoreResiduals(const CCoxFit& fit, const double* beta);

// The kernel for intervals: the share in a risk set carries the weight of the row, the event part does not.
DenseMatrix CountingScoreResiduals(const CCoxFit& fit, const double* beta);

// Fills m_ScoreResiduals at the final estimates by the kernel of the input type, when they are absent.
// Source: Therneau, Grambsch and Fleming (1990).
void ComputeScoreResiduals(CCoxFit& fit);

}  // namespace orv
