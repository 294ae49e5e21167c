// The named evaluators: one pass over all design columns, whatever the current model is, on the scale that the case
// table has at the call.
#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/FloatingPointRegime.h"
#include "fit/PassKernels.h"
#include "host/WorkArray.h"

namespace orv {

void CCoxFit::EvaluateSurvival(int efronStep, const double* beta) {
  StoreEvaluation(*SurvivalPass(false, efronStep, AllColumns()), beta);
}

void CCoxFit::EvaluateSurvivalStrata(int efronStep, const double* beta) {
  StoreEvaluation(*SurvivalPass(true, efronStep, AllColumns()), beta);
}

void CCoxFit::EvaluateCounting(int efronStep, const double* beta) {
  StoreEvaluation(*CountingPassOf(false, efronStep, AllColumns()), beta);
}

void CCoxFit::EvaluateCountingStrata(int efronStep, const double* beta) {
  StoreEvaluation(*CountingPassOf(true, efronStep, AllColumns()), beta);
}

void CCoxFit::EvaluateSurvivalDiscrete(const double* beta) {
  StoreEvaluation(*SurvivalDiscretePass(false, AllColumns()), beta);
}

void CCoxFit::EvaluateSurvivalDiscreteStrata(const double* beta) {
  StoreEvaluation(*SurvivalDiscretePass(true, AllColumns()), beta);
}

void CCoxFit::EvaluateCountingDiscrete(const double* beta) {
  StoreEvaluation(*CountingDiscretePass(false, AllColumns()), beta);
}

void CCoxFit::EvaluateCountingDiscreteStrata(const double* beta) {
  StoreEvaluation(*CountingDiscretePass(true, AllColumns()), beta);
}

void CCoxFit::EvaluateTimeDependent(const double* beta, int efronStep) {
  StoreEvaluation(*TimeDependentPassOf(efronStep, AllColumns()), beta);
}

void CCoxFit::StoreEvaluation(PartialLikelihood& pass, const double* beta) {
  const std::size_t p = m_pData->CoefficientCount;
  WorkArray<double> U(HostOf(), p);
  WorkMatrix H(HostOf(), p);
  // Out of memory leaves the members as they were.
  if (pass.Failed() || U.Failed() || H.Failed()) return;
  {
    const FloatingPointRegime regime;
    pass.Evaluate(beta, U.Data(), H.Rows());
    FloatingPointRegime::ThrowIfFailed();
  }
  m_ScoreVector.assign(U.Data(), U.Data() + p);
  m_PackedInformation.resize(PackedSize(p));
  double* packed = m_PackedInformation.data();
  for (std::size_t j = 0; j < p; ++j) {
    for (std::size_t l = 0; l <= j; ++l) *packed++ = H[l][j];
  }
}

}  // namespace orv
