#include "inference/RelativeRisks.h"

#include <algorithm>
#include <cmath>

#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/PassKernels.h"
#include "inference/StratumRows.h"

namespace orv {

namespace {

constexpr double kSafeExponent = 600.0;  // leaves room for weights and for sums over the cases

}  // namespace

std::vector<double> LinearPredictors(const CCoxFit& fit, const double* beta) {
  const CCoxData& data = *fit.m_pData;
  const int p = static_cast<int>(data.CoefficientCount);
  std::vector<double> predictors(data.ValidCaseCount);
  for (std::size_t i = 0; i < predictors.size(); ++i) {
    predictors[i] = LinearPredictor(data.CaseTable.GetRow(static_cast<int>(i) + 1), beta, p);
  }
  return predictors;
}

std::vector<double> RelativeRisks(const CCoxFit& fit, const double* beta) {
  if (beta == nullptr) return std::vector<double>(fit.m_pData->ValidCaseCount, 1.0);
  std::vector<double> risks = LinearPredictors(fit, beta);
  for (const StratumRows& stratum : StrataOf(*fit.m_pData)) {
    const auto first = risks.begin() + stratum.First - 1;
    const auto last = risks.begin() + stratum.Last;
    const auto [lowest, highest] = std::minmax_element(first, last);
    const bool isSafe = *lowest > -kSafeExponent && *highest < kSafeExponent;
    const double shift = isSafe ? 0.0 : *highest;
    std::transform(first, last, first, [shift](double exponent) { return std::exp(exponent - shift); });
  }
  return risks;
}

}  // namespace orv
