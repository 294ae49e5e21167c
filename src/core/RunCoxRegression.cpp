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

constexpr const char* kNotAvailable = "Analyses of this kind are not available in this version.";

}  // namespace

int CCoxPH::RunCoxRegression(void* parent) {
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

  switch (m_Settings.ModelBuilding) {
    case ModelBuildings::AllEffects:
      ReplaceFit(std::make_unique<CCoxFit>(m_pCoxData.get(), m_Settings.Likelihood, m_Settings.InputType));
      break;
    default:
      dsplst(0, kNotAvailable);
      return 1;
  }
  m_pCoxFit->ResetResults();
  try {
    m_pCoxFit->FitCurrentModel();
  } catch (const NumericalFailure&) {
    // A reset of the options leaves FinalFitReady off, and then the failure of a whole model arrives here.
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
