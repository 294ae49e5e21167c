#include "data/CCoxData.h"

#include "core/CCoxPH.h"

namespace orv {

CCoxData::CCoxData(CCoxPH* owner) : Owner(owner) {
  const CoxSettings& settings = owner->m_Settings;
  EffectCount = static_cast<std::uint32_t>(settings.DesignEffects.size());
  const auto covariates = static_cast<std::size_t>(settings.CovariateCount);
  const auto factors = static_cast<std::size_t>(settings.FactorCount);
  CovariateMeans.assign(covariates, 0.0);
  CovariateWeights.assign(covariates, 0.0);
  FactorModalCodes.assign(factors, 0.0);
  FactorLevelWeights.resize(factors);
}

}  // namespace orv
