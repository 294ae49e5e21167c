// The run driver: from options to a fitted model.
#include "core/CCoxPH.h"
#include "core/StartupFields.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/NumericalFailure.h"
#include "host/TextIds.h"
#include "inference/PostFit.h"

namespace orv {

namespace {

// No dialog can choose such a value.
constexpr const char* kUnknownModelBuilding = "This kind of model building is not known.";

bool IsKnownModelBuilding(int building) {
  return building >= ModelBuildings::AllEffects && building <= ModelBuildings::BestSubsets;
}

}  // namespace

int CCoxPH::RunCoxRegression(void* parent) {
  RestoreFullModelData();
  FallBackFromBestSubsets();
  ReplaceData(std::make_unique<CCoxData>(this));
  m_pCoxData->BuildDesign(m_Settings.InputType);
  if (m_pCoxData->FixedFlagConflict) {
    ShowText(TextIds::FixedFlagsConflict);
    return 1;
  }
  if (m_Settings.UseStartValues && m_Settings.StartValues.size() != m_pCoxData->CoefficientCount) {
    ShowText(TextIds::StartValueCountWrong);
    return 1;
  }
  if (m_pCoxData->ReadCases(parent) != 0) return 1;
  BackupFullModelData();
  m_Settings.HasRun = true;
  if (!IsKnownModelBuilding(m_Settings.ModelBuilding)) {
    dsplst(0, kUnknownModelBuilding);
    return 1;
  }
  ReplaceFit(std::make_unique<CCoxFit>(m_pCoxData.get(), m_Settings.Likelihood, m_Settings.InputType));
  const bool wasReady = m_Settings.FinalFitReady;
  int failed = 1;
  try {
    failed = FitModel();
  } catch (...) {
    m_Settings.FinalFitReady = wasReady;
    RestoreFullModelData();
    throw;
  }
  if (failed != 0) RestoreFullModelData();
  return failed;
}

// Builds the model that the options ask for, fits it, and adds what every result needs.
int CCoxPH::FitModel() {
  try {
    if (BuildModel() != 0) return 1;
    m_pCoxFit->ResetResults();
    m_pCoxFit->FitCurrentModel();
  } catch (const NumericalFailure&) {
    // Two ways lead here: the exhaustive search for best subsets, and a fit of all effects after a reset of the
    // options, which leaves FinalFitReady off.
    ShowText(TextIds::NoResultsAvailable);
    return 1;
  }
  if (!m_pCoxFit->m_Converged && m_pCoxFit->m_FitStatus == FitStatuses::Failed) return 1;
  if (m_Settings.InputType == InputTypes::SurvivalTime) PostFitSurvivalTime(*m_pCoxFit);
  if (m_Settings.InputType == InputTypes::CountingProcess) PostFitCountingProcess(*m_pCoxFit);
  if (m_Settings.UseRobustVariance) m_pCoxFit->ComputeRobustCovariance();
  return 0;
}

int CCoxPH::RunFromStartup(StartupFields& fields, void* parent) {
  RestoreFullModelData();
  if (ReadStartupFields(fields, parent) != 0) return 1;
  if (CheckInputsForCorrectness(parent) != 0) return 1;
  const ResultsLock lock(GetHost());
  const int failed = RunCoxRegression(parent);
  // Without a fit the data stay until the next run replaces them.
  if (failed != 0 && m_pCoxFit) ReleaseRunObjects();
  return failed;
}

void CCoxPH::ModifyAnalysis() {
  ReleaseRunObjects();
  RestoreFullModelData();
  // The choice of model building does not survive a Modify: the full model is shown again.
  m_Settings.ModelBuilding = ModelBuildings::AllEffects;
  m_Settings.HasRun = false;
}

int CCoxPH::DesignCoefficientCount() {
  ReplaceData(std::make_unique<CCoxData>(this));
  m_pCoxData->BuildDesign(m_Settings.InputType);
  return static_cast<int>(m_pCoxData->CoefficientCount);
}

}  // namespace orv
