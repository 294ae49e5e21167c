#include "inference/SurvivorFunctions.h"

#include <algorithm>
#include <cmath>

#include "core/CCoxPH.h"
#include "data/AlmostEqual.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/PassKernels.h"
#include "inference/ExponentGuard.h"

namespace orv {

namespace {

bool IsInRange(double exponent) {
  return std::abs(exponent) < kExponentBound;
}

ConfidenceLimits Clamped(ConfidenceLimits limits) {
  return {std::max(limits.Lower, 0.0), std::min(limits.Upper, 1.0)};
}

// The standard errors of a pattern's curve, event by event.
class PatternErrors {
 public:
  PatternErrors(const CCoxFit& fit,
                const DenseMatrix& covariance,
                std::size_t stratum,
                const std::vector<double>& x,
                double squaredRisk,
                SmallRiskSums smallRiskSums)
      : m_covariance(covariance),
        m_riskSums(fit.m_EventRiskSums[stratum]),
        m_weightSums(fit.m_EventWeightSums[stratum]),
        m_moments(fit.m_EventRiskMoments[stratum]),
        m_x(x),
        m_squaredRisk(squaredRisk),
        m_smallRiskSums(smallRiskSums),
        m_Q(x.size(), 0.0) {}

  // Takes event k in, which follows the one before, and returns the standard error after it.
  double After(std::size_t k) {
    const double S0 = m_riskSums[k];
    const double dN = m_weightSums[k];
    m_T += VarianceTerm(S0, dN);
    for (std::size_t j = 0; j < m_Q.size(); ++j) m_Q[j] += (m_moments[k][j] / S0 - m_x[j]) * (dN / S0);
    const double variance = (QuadraticForm() + m_T) * m_squaredRisk;
    return variance > 0.0 ? std::sqrt(variance) : 0.0;
  }

 private:
  double VarianceTerm(double S0, double dN) const {
    if (S0 > 1.0) return 1.0 / S0 * dN * (1.0 / S0);
    return m_smallRiskSums == SmallRiskSums::Multiplied ? S0 * dN * S0 : dN / (S0 * S0);
  }

  double QuadraticForm() const {
    double sum = 0.0;
    for (std::size_t k = 0; k < m_covariance.size(); ++k) {
      sum += m_Q[k] * LinearPredictor(m_Q.data(), m_covariance[k].data(), static_cast<int>(m_Q.size()));
    }
    return sum;
  }

  const DenseMatrix& m_covariance;
  const std::vector<double>& m_riskSums;
  const std::vector<double>& m_weightSums;
  const std::vector<std::vector<double>>& m_moments;
  const std::vector<double>& m_x;
  const double m_squaredRisk;
  const SmallRiskSums m_smallRiskSums;
  double m_T = 0.0;
  std::vector<double> m_Q;
};

// exp(x'b) and exp(2 x'b), with 0 for a square out of range; nothing when the first is.
struct PatternRisk {
  double Risk = 0.0;
  double Squared = 0.0;
};

std::optional<PatternRisk> RiskOf(const CCoxFit& fit, const std::vector<double>& x) {
  const double xb = LinearPredictor(x.data(), fit.m_BetaHistory.back().data(), static_cast<int>(x.size()));
  if (!(std::abs(xb) <= kExponentBound)) return std::nullopt;
  return PatternRisk{std::exp(xb), std::abs(2.0 * xb) > kExponentBound ? 0.0 : std::exp(2.0 * xb)};
}

double LimitQuantile(const CCoxFit& fit, double confidenceLevel) {
  return fit.Owner().GetHost().NormalQuantile((1.0 + confidenceLevel) / 2.0, 0.0, 1.0);
}

}  // namespace

bool IsPatternInRange(const CCoxFit& fit, const std::vector<double>& x) {
  return RiskOf(fit, x).has_value();
}

std::optional<ConfidenceLimits> SurvivorLimits(SurvivorCIType type, double S, double z, double standardError) {
  ConfidenceLimits limits;
  if (type == SurvivorCIType::Normal) {
    const double error = standardError * S;
    if (error == 0.0) return std::nullopt;
    return Clamped({S - z * error, S + z * error});
  }
  if (!(S > 0.0) || standardError == 0.0) return std::nullopt;
  const double L = std::log(S);
  if (type == SurvivorCIType::Log) {
    if (IsInRange(L - z * standardError)) limits.Lower = std::exp(L - z * standardError);
    if (IsInRange(L + z * standardError)) limits.Upper = std::exp(L + z * standardError);
    return Clamped(limits);
  }
  if (AlmostEqual(S, 1.0) || !(L < 0.0)) return std::nullopt;
  const double LL = std::log(-L);
  const double D = -(standardError / L) * z;
  if (!IsInRange(LL)) return limits;
  const auto doublyExponential = [](double inner, double& limit) {
    if (!IsInRange(inner)) return;
    const double outer = -std::exp(inner);
    if (IsInRange(outer)) limit = std::exp(outer);
  };
  doublyExponential(LL + D, limits.Lower);
  doublyExponential(LL - D, limits.Upper);
  return Clamped(limits);
}

ConfidenceLimits HazardLimits(double S, double z, double standardError) {
  ConfidenceLimits limits{0.0, 0.0};
  if (!(S > 0.0)) return limits;
  const double L = std::log(S);
  if (!(-L > 0.0)) return limits;
  const double LL = std::log(-L);
  const double D = standardError / L * z;
  if (IsInRange(LL + D)) limits.Lower = std::exp(LL + D);
  if (IsInRange(LL - D)) limits.Upper = std::exp(LL - D);
  return limits;
}

std::optional<std::vector<CurvePoint>> SurvivorFunction(const CCoxFit& fit,
                                                        std::size_t stratum,
                                                        const std::vector<double>& x,
                                                        SurvivorType type,
                                                        SurvivorCIType limits,
                                                        double confidenceLevel,
                                                        SmallRiskSums smallRiskSums) {
  const std::optional<PatternRisk> risk = RiskOf(fit, x);
  if (!risk) return std::nullopt;
  const bool isBreslow = type == SurvivorType::Breslow;
  const BaselineCurve& baseline = isBreslow ? fit.m_BreslowCurves[stratum] : fit.m_KaplanMeierCurves[stratum];
  const double z = LimitQuantile(fit, confidenceLevel);
  PatternErrors errors(fit, fit.m_Covariance, stratum, x, risk->Squared, smallRiskSums);
  std::vector<CurvePoint> points;
  const std::size_t events = fit.m_EventRiskSums[stratum].size();
  for (std::size_t k = 0; k + 1 < baseline.Times.size(); ++k) {
    CurvePoint point;
    point.Time = baseline.Times[k + 1];
    const double base = baseline.Values[k + 1];
    point.Value = isBreslow ? std::exp(-risk->Risk * base) : std::pow(base, risk->Risk);
    // The product-limit curve may end with a point of its own, at which nobody survives.
    point.StandardError = k < events ? errors.After(k) : 0.0;
    point.Limits = SurvivorLimits(limits, point.Value, z, point.StandardError);
    points.push_back(point);
  }
  return points;
}

std::optional<std::vector<CurvePoint>> CumulativeHazard(const CCoxFit& fit,
                                                        std::size_t stratum,
                                                        const std::vector<double>& x,
                                                        double confidenceLevel,
                                                        bool robust) {
  const std::optional<PatternRisk> risk = RiskOf(fit, x);
  if (!risk) return std::nullopt;
  const BaselineCurve& baseline = fit.m_BreslowCurves[stratum];
  const double z = LimitQuantile(fit, confidenceLevel);
  const DenseMatrix& covariance = robust ? fit.CovarianceInUse() : fit.m_Covariance;
  PatternErrors errors(fit, covariance, stratum, x, risk->Squared, SmallRiskSums::Divided);
  std::vector<CurvePoint> points;
  for (std::size_t k = 0; k + 1 < baseline.Times.size(); ++k) {
    CurvePoint point;
    point.Time = baseline.Times[k + 1];
    point.Value = risk->Risk * baseline.Values[k + 1];
    point.StandardError = errors.After(k);
    point.Limits = HazardLimits(std::exp(-point.Value), z, point.StandardError);
    points.push_back(point);
  }
  return points;
}

}  // namespace orv
