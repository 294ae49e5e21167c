// Model building as a step of the run: the search that the options choose, and the reduction to its effects.
#include <array>

#include "core/CCoxPH.h"
#include "fit/CCoxFit.h"
#include "host/FormatText.h"
#include "host/TextIds.h"
#include "select/BackwardSelection.h"
#include "select/BestSubsets.h"
#include "select/ForwardSelection.h"
#include "select/StepwiseSelection.h"

namespace orv {

namespace {

// Texts without a number in the string table.
constexpr const char* kNoTimeCovariates = "Model building is not available with time-dependent covariates.";
constexpr const char* kTooManySubsets =
    "Best subsets can compare at most %d effects beyond the forced ones when effects are forced or held fixed, or when "
    "the design contains interactions.  Please force more effects or reduce the design.";

struct Selection {
  int ModelBuilding;
  void (*Search)(CCoxFit& fit);
  void (*Apply)(CCoxFit& fit);
};

constexpr std::array kSelections = {
    Selection{ModelBuildings::Forward, ForwardSelection, ApplyForwardSelection},
    Selection{ModelBuildings::Backward, BackwardSelection, ApplyBackwardSelection},
    Selection{ModelBuildings::Stepwise, StepwiseSelection, ApplyStepwiseSelection},
};

}  // namespace

// The startup dialog offers best subsets for designs without factors and time-dependent covariates alone.
void CCoxPH::FallBackFromBestSubsets() {
  const bool isOffered = m_Settings.FactorCount == 0 && m_Settings.InputType != InputTypes::TimeDependent;
  if (m_Settings.ModelBuilding == ModelBuildings::BestSubsets && !isOffered) {
    m_Settings.ModelBuilding = ModelBuildings::AllEffects;
  }
}

int CCoxPH::BuildModel() {
  CCoxFit& fit = *m_pCoxFit;
  if (m_Settings.ModelBuilding == ModelBuildings::AllEffects) return 0;
  if (m_Settings.InputType == InputTypes::TimeDependent) {
    dsplst(0, kNoTimeCovariates);
    return 1;
  }
  if (m_Settings.ModelBuilding == ModelBuildings::BestSubsets) {
    const bool bounded = HasBoundedSubsets(fit);
    if (!bounded && FreeEffectCount(fit) > kMostFreeEffects) {
      dsplst(0, FormatText(kTooManySubsets, {FormatInteger(kMostFreeEffects)}));
      return 1;
    }
    if (bounded) {
      BestSubsetsBounded(fit);
    } else {
      BestSubsetsAllModels(fit);
    }
    return 0;
  }
  for (const Selection& selection : kSelections) {
    if (selection.ModelBuilding != m_Settings.ModelBuilding) continue;
    const bool wasReady = m_Settings.FinalFitReady;
    m_Settings.FinalFitReady = false;
    selection.Search(fit);
    m_Settings.ForcedStepCount = fit.EffectsForcedInModel;
    if (fit.m_ActiveCount == 0) {
      m_Settings.FinalFitReady = wasReady;
      ShowText(TextIds::NoEffectSelected);
      return 1;
    }
    m_Settings.FinalFitReady = true;
    m_isReduced = true;
    selection.Apply(fit);
  }
  return 0;
}

}  // namespace orv
