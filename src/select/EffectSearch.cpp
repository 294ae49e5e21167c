#include "select/EffectSearch.h"

#include "select/EffectColumns.h"

namespace orv {

EffectSearch::EffectSearch(CCoxFit& fit)
    : m_fit(fit),
      m_data(*fit.m_pData),
      m_settings(fit.Owner().m_Settings),
      m_forced(ForcedEffectCount(fit)),
      m_effects(static_cast<int>(fit.m_pData->EffectCount)),
      m_hierarchy(fit),
      m_model(fit) {}

void EffectSearch::ListModel(std::vector<int>& effects,
                             std::vector<int>& firstColumns,
                             std::vector<int>& lastColumns,
                             std::vector<std::string>& names) const {
  effects = m_model.Effects();
  firstColumns.clear();
  lastColumns.clear();
  names.clear();
  for (const int effect : effects) {
    const EffectColumns columns = ColumnsOfEffect(m_data, effect);
    firstColumns.push_back(columns.First + 1);
    lastColumns.push_back(columns.Last + 1);
    names.push_back(EffectText(m_fit, effect));
  }
}

}  // namespace orv
