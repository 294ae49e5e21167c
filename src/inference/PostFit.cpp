#include "inference/PostFit.h"

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/FloatingPointRegime.h"
#include "fit/NumericalFailure.h"
#include "inference/BreslowBaseline.h"
#include "inference/KaplanMeierBaseline.h"
#include "inference/MartingaleResiduals.h"
#include "inference/RelativeRisks.h"

namespace orv {

namespace {

bool IsWeighted(const CCoxFit& fit) {
  const WeightRecord* weights = fit.Owner().m_Commons.Weights;
  return weights != nullptr && weights->On;
}

void DropBaseline(CCoxFit& fit) {
  fit.m_BreslowValid = false;
  fit.m_KaplanMeierValid = false;
  fit.m_BreslowCurves.clear();
  fit.m_KaplanMeierCurves.clear();
  fit.m_EventRiskSums.clear();
  fit.m_EventWeightSums.clear();
  fit.m_EventRiskMoments.clear();
  fit.m_MartingaleResiduals.clear();
  fit.m_DevianceResiduals.clear();
}

template <typename Steps>
void RunPostFit(CCoxFit& fit, Steps steps) {
  fit.m_BreslowValid = true;
  fit.m_KaplanMeierValid = true;
  fit.m_RootFindFailed = 0;
  fit.m_LinearPredictor.clear();
  if (fit.m_BetaHistory.empty()) {
    DropBaseline(fit);
    return;
  }
  try {
    const FloatingPointRegime regime;
    fit.m_LinearPredictor = LinearPredictors(fit, fit.m_BetaHistory.back().data());
    steps();
    FloatingPointRegime::ThrowIfFailed();
  } catch (const NumericalFailure&) {
    DropBaseline(fit);
  }
}

}  // namespace

void PostFitSurvivalTime(CCoxFit& fit) {
  RunPostFit(fit, [&fit] {
    const TiedEvents ties = ComputeBreslowBaseline(fit);
    ComputeSurvivalMartingaleResiduals(fit);
    FloatingPointRegime::ThrowIfFailed();
    fit.m_KaplanMeierValid = !IsWeighted(fit);
    if (!fit.m_KaplanMeierValid) return;
    ComputeKaplanMeierBaseline(fit, ties);
    // What fails in this estimator says nothing about the other.
    if (!FloatingPointRegime::HasFailed()) return;
    FloatingPointRegime::ClearFlags();
    fit.m_KaplanMeierValid = false;
  });
}

void PostFitCountingProcess(CCoxFit& fit) {
  RunPostFit(fit, [&fit] {
    ComputeBreslowBaseline(fit);
    ComputeCountingMartingaleResiduals(fit);
  });
}

}  // namespace orv
