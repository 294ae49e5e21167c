// Global tests, information criteria and R2 of a fitted model.
#pragma once

namespace orv {

class CCoxFit;

struct GoodnessOfFit {
  double Minus2LogL = 0.0;
  double AIC = 0.0;              // 2 k - 2 LL, k the columns that are not dropped (neither aliased nor fixed)
  double SBC = 0.0;              // k ln(n) - 2 LL, n the complete cases, not all cases
  double R2 = 0.0;               // 1 - exp(2 (LL0 - LL) / n), clamped to 0..1 (Cox and Snell, 1989)
  double Score = 0.0;            // U' I^- U at beta = 0
  double LikelihoodRatio = 0.0;  // 2 (LL - LL0)
  double Wald = 0.0;             // b' I b
};

// Needs a fit with at least one entry in its likelihood history.
GoodnessOfFit ComputeGoodnessOfFit(const CCoxFit& fit);

// b' I b over all coefficients; 0 when the fit left no information.
double WaldStatistic(const CCoxFit& fit);

// 1 - exp(x) with the exponent guarded, clamped to 0..1.
double GuardedR2(double x);

}  // namespace orv
