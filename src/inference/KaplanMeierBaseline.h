// The product-limit form of the baseline survivor function.
#pragma once

namespace orv {

class CCoxFit;
struct TiedEvents;

// Fills m_KaplanMeierCurves for survival times without case weights, after the Breslow baseline. At a time with one
// event the conditional probability is (1 - r / S0)^(1/r); with several it is the root alpha of
//   sum of r_j / (1 - alpha^r_j) over the events = S0.
// A negative conditional probability or an equation without a root clears m_KaplanMeierValid and sets m_RootFindFailed.
// Source: Kalbfleisch and Prentice (1973).
void ComputeKaplanMeierBaseline(CCoxFit& fit, const TiedEvents& ties);

}  // namespace orv
