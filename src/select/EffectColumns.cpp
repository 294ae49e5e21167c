#include "select/EffectColumns.h"

#include <algorithm>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"

namespace orv {

EffectColumns ColumnsOfEffect(const CCoxData& data, int effect) {
  const auto place = static_cast<std::size_t>(effect - 1);
  return {data.EffectFirstColumn[place] - 1, data.EffectLastColumn[place] - 1};
}

std::string EffectText(const CCoxFit& fit, int effect) {
  return fit.Owner().m_Settings.DesignEffects[static_cast<std::size_t>(effect - 1)];
}

bool IsFixedEffect(const CCoxData& data, int effect) {
  return data.EffectFixed[static_cast<std::size_t>(effect - 1)];
}

int ForcedEffectCount(const CCoxFit& fit) {
  const int effects = static_cast<int>(fit.m_pData->EffectCount);
  return std::clamp(fit.Owner().m_Settings.EffectsToForce, 0, effects);
}

}  // namespace orv
