// The Newton step and the tests of convergence.
#include <algorithm>
#include <cmath>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/FloatingPointRegime.h"
#include "host/WorkArray.h"

namespace orv {

namespace {

constexpr double kLikelihoodOffset = 1e-6;       // keeps the relative tests finite at a log likelihood of 0
constexpr double kRelativeParameterFrom = 0.01;  // smaller parameters are compared absolutely

// The largest change between two parameter vectors, relative where the earlier parameter is not small.
double LargestChange(const std::vector<double>& later, const std::vector<double>& earlier) {
  double largest = 0.0;
  for (std::size_t j = 0; j < later.size(); ++j) {
    const double size = std::abs(earlier[j]);
    const double change = std::abs(later[j] - earlier[j]);
    largest = std::max(largest, size >= kRelativeParameterFrom ? change / size : change);
  }
  return largest;
}

}  // namespace

int CCoxFit::StepParameterCount() const {
  const int building = Settings().ModelBuilding;
  const bool selection = building >= ModelBuildings::Forward && building <= ModelBuildings::Stepwise;
  return selection ? m_ActiveCount : static_cast<int>(m_pData->CoefficientCount);
}

void CCoxFit::NewtonStep(double* beta, double* U, double** H, double* stepDotScore) {
  const int p = StepParameterCount();
  std::vector<double> g(U, U + p);
  for (int j = 0; j < p; ++j) {
    if (!ColumnOf(j).Fixed) continue;
    U[j] = 0.0;
    g[static_cast<std::size_t>(j)] = 0.0;
  }
  m_InformationRank = FactorLDL(H, p, m_SingularityTolerance);
  SolveLDL(H, p, g.data());
  *stepDotScore = 0.0;
  for (int j = 0; j < p; ++j) {
    const double step = g[static_cast<std::size_t>(j)];
    beta[j] += step;
    *stepDotScore += step * U[j];
    U[j] = step;
  }
  FloatingPointRegime::ThrowIfFailed();
  m_BetaHistory.emplace_back(beta, beta + p);
}

bool CCoxFit::HasConverged(double stepDotScore) {
  const std::size_t likelihoods = m_LogLikHistory.size();
  const std::size_t vectors = m_BetaHistory.size();
  const bool hasTwo = likelihoods >= 2;
  const double L1 = hasTwo ? m_LogLikHistory[likelihoods - 1] : 0.0;
  const double L2 = hasTwo ? m_LogLikHistory[likelihoods - 2] : 0.0;
  bool converged = false;
  switch (Settings().ConvergenceType) {
    case ConvergenceTypes::RelativeGradient:
      // No absolute value: a step against the score counts as converged.
      converged = hasTwo && m_ConvergenceTolerance > stepDotScore / (std::abs(L1) + kLikelihoodOffset);
      break;
    case ConvergenceTypes::RelativeParameter:
      // The last entry is the vector of the step just taken; the one before it served the pass just made.
      converged = vectors >= 3 &&
                  m_ConvergenceTolerance > LargestChange(m_BetaHistory[vectors - 2], m_BetaHistory[vectors - 3]);
      break;
    case ConvergenceTypes::RelativeLikelihood:
      converged = hasTwo && m_ConvergenceTolerance > std::abs(L1 - L2) / (std::abs(L2) + kLikelihoodOffset);
      break;
    case ConvergenceTypes::AbsoluteLikelihood:
      converged = hasTwo && m_ConvergenceTolerance > std::abs(L1 - L2);
      break;
    default:
      break;
  }
  if (converged) m_BetaHistory.pop_back();
  return converged;
}

}  // namespace orv
