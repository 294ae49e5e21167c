#include "select/EffectModel.h"

#include <algorithm>

#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "select/EffectColumns.h"

namespace orv {

EffectModel::EffectModel(CCoxFit& fit) : m_fit(fit), m_holds(fit.m_pData->EffectCount, false) {
  Publish();
}

void EffectModel::Add(int effect) {
  m_effects.push_back(effect);
  m_holds[static_cast<std::size_t>(effect - 1)] = true;
  Publish();
}

void EffectModel::Remove(int effect) {
  std::erase(m_effects, effect);
  m_holds[static_cast<std::size_t>(effect - 1)] = false;
  Publish();
}

void EffectModel::Publish() {
  m_fit.m_ActiveColumns.clear();
  for (const int effect : m_effects) {
    const EffectColumns columns = ColumnsOfEffect(*m_fit.m_pData, effect);
    for (int column = columns.First; column <= columns.Last; ++column) m_fit.m_ActiveColumns.push_back(column);
  }
  m_fit.m_ActiveCount = static_cast<int>(m_fit.m_ActiveColumns.size());
}

void EffectModel::Fit() {
  m_fit.ResetResults();
  m_fit.FitCurrentModel();
}

std::vector<double> EffectModel::FullEstimates() const {
  std::vector<double> beta(m_fit.m_pData->CoefficientCount, 0.0);
  // A fit for which memory is out may have left no vector.
  if (m_fit.m_BetaHistory.empty()) return beta;
  const std::vector<double>& estimates = m_fit.m_BetaHistory.back();
  for (std::size_t j = 0; j < std::min(estimates.size(), m_fit.m_ActiveColumns.size()); ++j) {
    beta[static_cast<std::size_t>(m_fit.m_ActiveColumns[j])] = estimates[j];
  }
  return beta;
}

}  // namespace orv
