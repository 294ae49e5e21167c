// The named routines and evaluators for right-censored rows.
#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/FloatingPointRegime.h"
#include "fit/PassKernels.h"
#include "fit/RightCensoredPass.h"
#include "host/WorkArray.h"

namespace orv {

int CCoxFit::FitSurvival(int efronStep) {
  return FitRightCensored(false, efronStep, {.HasCancelQuery = true, .SkipsLoopWithoutColumns = true});
}

// No cancel query: kept, a stratified run is stopped at the next query of what follows it.
int CCoxFit::FitSurvivalStrata(int efronStep) {
  return FitRightCensored(true, efronStep, {});
}

void CCoxFit::EvaluateSurvival(int efronStep, const double* beta) {
  EvaluateRightCensored(false, efronStep, beta);
}

void CCoxFit::EvaluateSurvivalStrata(int efronStep, const double* beta) {
  EvaluateRightCensored(true, efronStep, beta);
}

CaseColumns CCoxFit::SurvivalColumns(bool strata) const {
  return {m_pData->SurvivalColumn, m_pData->WeightColumn, m_pData->StatusColumn, strata ? m_pData->StratumColumn : -1};
}

int CCoxFit::FitRightCensored(bool strata, int efronStep, const RoutineTraits& traits) {
  RightCensoredPass pass(HostOf(), m_pData->CaseTable, static_cast<int>(m_pData->ValidCaseCount),
                         SurvivalColumns(strata), m_ActiveColumns, efronStep);
  return Maximize(pass, traits);
}

// One pass over all design columns, whatever the current model is, on the scale that the case table has now.
void CCoxFit::EvaluateRightCensored(bool strata, int efronStep, const double* beta) {
  const std::size_t p = m_pData->CoefficientCount;
  std::vector<int> columns(p);
  for (std::size_t j = 0; j < p; ++j) columns[j] = static_cast<int>(j);
  RightCensoredPass pass(HostOf(), m_pData->CaseTable, static_cast<int>(m_pData->ValidCaseCount),
                         SurvivalColumns(strata), columns, efronStep);
  WorkArray<double> U(HostOf(), p);
  WorkMatrix H(HostOf(), p);
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
