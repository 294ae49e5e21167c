// The dispatcher of a fit: the scale change around the routine, and what becomes of a numerical failure.
#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/FloatingPointRegime.h"
#include "fit/LDL.h"
#include "fit/NumericalFailure.h"
#include "fit/PassKernels.h"
#include "host/TextIds.h"
#include "host/WorkArray.h"

namespace orv {

void CCoxFit::FitCurrentModel() {
  ActiveParameterCount();
  // The status of an earlier fit of a selection says nothing about this one.
  m_FitStatus = FitStatuses::Converged;
  bool standardized = false;
  try {
    const FloatingPointRegime regime;
    Standardize();
    standardized = true;
    m_FitStatus = RunRoutine();
    standardized = false;
    Unstandardize();
    FloatingPointRegime::ThrowIfFailed();
    return;
  } catch (...) {
    // Any failure of the routine is a numerical failure: the fit goes on from the last good vector, or ends.
    if (!Settings().FinalFitReady) {
      if (standardized) Unstandardize();
      throw;
    }
  }
  m_Converged = false;
  const bool hasVector = standardized && m_BetaHistory.size() > 1;
  if (!hasVector || !FallBackToLastIteration()) GiveUp();
}

int CCoxFit::RunRoutine() {
  const bool strata = Settings().HasStrata();
  const bool discrete = m_Likelihood == Likelihoods::Discrete;
  const int efronStep = m_Likelihood == Likelihoods::Efron ? 1 : 0;
  switch (m_InputType) {
    case InputTypes::SurvivalTime:
      if (discrete) return strata ? FitSurvivalDiscreteStrata() : FitSurvivalDiscrete();
      return strata ? FitSurvivalStrata(efronStep) : FitSurvival(efronStep);
    case InputTypes::CountingProcess:
      if (discrete) return strata ? FitCountingDiscreteStrata() : FitCountingDiscrete();
      return strata ? FitCountingStrata(efronStep) : FitCounting(efronStep);
    default:
      // The discrete rule is not offered with time-dependent covariates, and no routine runs.
      return discrete ? m_FitStatus : FitTimeDependent(efronStep);
  }
}

void CCoxFit::RunEvaluator(const double* beta) {
  const bool strata = Settings().HasStrata();
  const bool discrete = m_Likelihood == Likelihoods::Discrete;
  const int efronStep = m_Likelihood == Likelihoods::Efron ? 1 : 0;
  if (m_InputType == InputTypes::TimeDependent) return EvaluateTimeDependent(beta, efronStep);
  if (m_InputType == InputTypes::CountingProcess) {
    if (discrete) return strata ? EvaluateCountingDiscreteStrata(beta) : EvaluateCountingDiscrete(beta);
    return strata ? EvaluateCountingStrata(efronStep, beta) : EvaluateCounting(efronStep, beta);
  }
  if (discrete) return strata ? EvaluateSurvivalDiscreteStrata(beta) : EvaluateSurvivalDiscrete(beta);
  return strata ? EvaluateSurvivalStrata(efronStep, beta) : EvaluateSurvival(efronStep, beta);
}

bool CCoxFit::FallBackToLastIteration() {
  // The last entry met the failure; the one before it has served a pass.
  m_BetaHistory.pop_back();
  try {
    const FloatingPointRegime regime;
    // Emptied, so that an evaluation for which memory is out is seen.
    m_PackedInformation.clear();
    RunEvaluator(m_BetaHistory.back().data());
    const int p = static_cast<int>(m_pData->CoefficientCount);
    WorkMatrix covariance(HostOf(), static_cast<std::size_t>(p));
    if (covariance.Failed() || m_PackedInformation.size() != PackedSize(static_cast<std::size_t>(p))) return false;

    m_Information.assign(static_cast<std::size_t>(p), std::vector<double>(static_cast<std::size_t>(p), 0.0));
    m_Covariance = m_Information;
    const double* packed = m_PackedInformation.data();
    for (std::size_t row = 0; row < m_Information.size(); ++row) {
      for (std::size_t column = 0; column <= row; ++column) {
        m_Information[row][column] = m_Information[column][row] = *packed;
        covariance[row][column] = covariance[column][row] = *packed++;
      }
    }
    FactorLDL(covariance.Rows(), p, kSingularityTolerance);
    InvertLDL(covariance.Rows(), p);
    MirrorUpper(covariance.Rows(), p);
    for (std::size_t row = 0; row < m_Covariance.size(); ++row) {
      m_Covariance[row].assign(covariance[row], covariance[row] + p);
    }
    Unstandardize();
    FloatingPointRegime::ThrowIfFailed();
  } catch (...) {
    // Whatever fails here, memory included, leaves nothing to fall back on.
    return false;
  }
  if (HostOf().IsOleAutomation()) HostOf().SetMessageErrorHandler(1);
  Owner().ShowText(TextIds::LastIterationUsed);
  return true;
}

void CCoxFit::GiveUp() {
  CCoxPH& owner = Owner();
  RestoreStartValues();
  m_FitStatus = FitStatuses::Failed;
  if (owner.m_pCoxData.get() == m_pData) owner.m_pCoxData.reset();
  m_pData = nullptr;
  owner.ShowText(TextIds::NoResultsAvailable);
}

}  // namespace orv
