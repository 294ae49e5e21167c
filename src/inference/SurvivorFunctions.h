// Survivor and cumulative hazard functions of covariate patterns, with confidence limits.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace orv {

class CCoxFit;

// The limits of a survivor function.
enum class SurvivorCIType { Normal, Log, LogLog };

// The estimator of the baseline behind a survivor function.
enum class SurvivorType { Breslow, KaplanMeier };

// How the variance term of an event whose risk sum is at most 1 is taken.
enum class SmallRiskSums {
  Divided,     // dN / S0^2, as for all others: plots, and the cumulative hazard
  Multiplied,  // S0 dN S0. Kept: tables of survivor functions have always had it
};

struct ConfidenceLimits {
  double Lower = 0.0;
  double Upper = 1.0;
};

// One point of a curve, after its first at time 0.
struct CurvePoint {
  double Time = 0.0;
  double Value = 0.0;
  double StandardError = 0.0;              // of the log survivor: S times it is that of S
  std::optional<ConfidenceLimits> Limits;  // none where the type does not apply
};

// Whether exp(x'b) is within the range of the curves.
bool IsPatternInRange(const CCoxFit& fit, const std::vector<double>& x);

// A stratum's survivor or hazard for one pattern.
//   x  CoefficientCount design values
// Empty, which is no error, when |x'b| exceeds the range of exp. REQUIRES: FillEventRiskMoments.
std::optional<std::vector<CurvePoint>> SurvivorFunction(const CCoxFit& fit,
                                                        std::size_t stratum,
                                                        const std::vector<double>& x,
                                                        SurvivorType type,
                                                        SurvivorCIType limits,
                                                        double confidenceLevel,
                                                        SmallRiskSums smallRiskSums);

// From the Breslow baseline. With `robust` the standard errors take the covariance in use instead of the usual one.
// REQUIRES: FillEventRiskMoments.
std::optional<std::vector<CurvePoint>> CumulativeHazard(const CCoxFit& fit,
                                                        std::size_t stratum,
                                                        const std::vector<double>& x,
                                                        double confidenceLevel,
                                                        bool robust);

// Limits of a survivor probability S; `standardError` is that of the log survivor times 1. Lower limits below 0 become
// 0, upper limits above 1 become 1. None where the type does not apply.
// Source: Kalbfleisch and Prentice, The Statistical Analysis of Failure Time Data (1980), section 4.3.
std::optional<ConfidenceLimits> SurvivorLimits(SurvivorCIType type, double S, double z, double standardError);

// The log-transformed limits of a cumulative hazard -log S; 0 where they cannot be computed.
ConfidenceLimits HazardLimits(double S, double z, double standardError);

}  // namespace orv
