#include "inference/GoodnessOfFit.h"

#include <algorithm>
#include <cmath>

#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "inference/ExponentGuard.h"

namespace orv {

double WaldStatistic(const CCoxFit& fit) {
  if (fit.m_BetaHistory.empty() || fit.m_Information.size() != fit.m_BetaHistory.back().size()) return 0.0;
  const std::vector<double>& b = fit.m_BetaHistory.back();
  double sum = 0.0;
  for (std::size_t i = 0; i < b.size(); ++i) {
    for (std::size_t j = 0; j < b.size(); ++j) sum += b[i] * fit.m_Information[i][j] * b[j];
  }
  return sum;
}

double GuardedR2(double x) {
  double r = 0.0;
  if (x < -kExponentBound) {
    r = 1.0;
  } else if (x <= kExponentBound) {
    r = 1.0 - std::exp(x);
  }
  return std::clamp(r, 0.0, 1.0);
}

GoodnessOfFit ComputeGoodnessOfFit(const CCoxFit& fit) {
  const CCoxData& data = *fit.m_pData;
  const double LL = fit.m_LogLikHistory.back();
  const double LL0 = fit.m_NullLogLik;
  const double n = data.CompleteCaseCount;
  const auto firstRecord = data.DesignColumns.begin();
  const auto k = static_cast<double>(std::count_if(firstRecord, firstRecord + data.CoefficientCount,
                                                   [](const CoxDesignColumn& column) { return !column.Dropped; }));
  GoodnessOfFit result;
  result.Minus2LogL = -2.0 * LL;
  result.AIC = 2.0 * k - 2.0 * LL;
  result.SBC = k * std::log(n) - 2.0 * LL;
  result.R2 = GuardedR2(2.0 * (LL0 - LL) / n);
  result.Score = fit.m_ScoreStatistic;
  result.LikelihoodRatio = 2.0 * (LL - LL0);
  result.Wald = WaldStatistic(fit);
  return result;
}

}  // namespace orv
