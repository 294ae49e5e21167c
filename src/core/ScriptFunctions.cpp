#include "core/ScriptFunctions.h"

#include <new>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"

namespace {

// The analysis behind a script's variant, with the flag of its document cleared; null when there is none.
orv::CCoxPH* FindAnalysis(const orv::ScriptVariant* dialog) {
  if (dialog == nullptr || dialog->Object == nullptr) return nullptr;
  auto* analysis = dynamic_cast<orv::CCoxPH*>(dialog->Object->Analysis());
  if (analysis != nullptr) analysis->m_DocumentFlag = 0;
  return analysis;
}

}  // namespace

orv::CAnalysisSupport* Qvd6NewAnalysis() {
  return new (std::nothrow) orv::CCoxPH(nullptr);
}

int CheckBreslowFlag(orv::ScriptVariant* dialog) {
  const orv::CCoxPH* analysis = FindAnalysis(dialog);
  if (analysis == nullptr) return orv::kNoAnalysis;
  return analysis->m_pCoxFit && analysis->m_pCoxFit->m_BreslowValid ? 0 : 1;
}

int CheckKaplanFlag(orv::ScriptVariant* dialog) {
  const orv::CCoxPH* analysis = FindAnalysis(dialog);
  if (analysis == nullptr) return orv::kNoAnalysis;
  return analysis->m_pCoxFit && analysis->m_pCoxFit->m_KaplanMeierValid ? 0 : 1;
}

int GetNumberOfDesignCoefficients(orv::ScriptVariant* dialog) {
  const orv::CCoxPH* analysis = FindAnalysis(dialog);
  if (analysis == nullptr) return orv::kNoAnalysis;
  return analysis->m_pCoxData ? static_cast<int>(analysis->m_pCoxData->CoefficientCount) : 0;
}

int GetNumberOfFactors(orv::ScriptVariant* dialog) {
  const orv::CCoxPH* analysis = FindAnalysis(dialog);
  return analysis != nullptr ? analysis->m_Settings.FactorCount : orv::kNoAnalysis;
}

int GetDesignNumberOfCoefficientsBeforeRun(orv::ScriptVariant* dialog) {
  orv::CCoxPH* analysis = FindAnalysis(dialog);
  return analysis != nullptr ? analysis->DesignCoefficientCount() : orv::kNoAnalysis;
}
