#include "core/CoxSettings.h"

#include <utility>

namespace orv {

void ResetSettings(CoxSettings& settings) {
  CoxSettings fresh;
  fresh.FinalFitReady = false;
  fresh.HasRun = settings.HasRun;
  fresh.DisplayBest = settings.DisplayBest;
  fresh.ForcedStepCount = settings.ForcedStepCount;
  fresh.BackupCovariateVariables = std::move(settings.BackupCovariateVariables);
  fresh.BackupCovariateCount = settings.BackupCovariateCount;
  fresh.BackupFactorVariables = std::move(settings.BackupFactorVariables);
  fresh.BackupFactorCount = settings.BackupFactorCount;
  fresh.BackupFactorCodes = std::move(settings.BackupFactorCodes);
  fresh.BackupFactorCodeCounts = std::move(settings.BackupFactorCodeCounts);
  fresh.BackupReferenceCodes = std::move(settings.BackupReferenceCodes);
  fresh.BackupReferenceCodeIndex = std::move(settings.BackupReferenceCodeIndex);
  fresh.BackupDesignEffects = std::move(settings.BackupDesignEffects);
  fresh.BackupEffectSymbols = std::move(settings.BackupEffectSymbols);
  settings = std::move(fresh);
}

}  // namespace orv
