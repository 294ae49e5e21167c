#include "select/BackwardSelection.h"

#include "select/EffectColumns.h"
#include "select/EffectSearch.h"
#include "select/EffectTests.h"
#include "select/ReduceDesign.h"

namespace orv {

namespace {

class BackwardSearch : public EffectSearch {
 public:
  explicit BackwardSearch(CCoxFit& fit) : EffectSearch(fit) {
    for (int effect = 1; effect <= m_effects; ++effect) m_model.Add(effect);
    for (int effect = m_forced + 1; effect <= m_effects; ++effect) {
      if (!IsFixedEffect(m_data, effect)) m_removable.push_back(effect);
    }
    PublishModel();
  }

  void Run(SearchProgress& progress) {
    if (m_forced == m_effects) return;
    const RemovalTests tests(m_fit);
    while (m_fit.m_ActiveEffectCount > m_forced) {
      m_model.Fit();
      if (m_fit.m_FitStatus == FitStatuses::Cancelled) return;
      const SelectionCandidate worst = tests.BestToLeave(m_hierarchy, m_model.EffectBits(), m_removable);
      if (worst.Effect == 0 || worst.Test.PValue <= m_settings.PToRemove) return;
      Remove(worst);
      if (progress.Advance()) return;
    }
  }

 private:
  void Remove(const SelectionCandidate& leaving) {
    m_fit.m_BackwardEffects.push_back(leaving.Effect);
    m_fit.m_BackwardPValues.push_back(leaving.Test.PValue);
    m_fit.m_BackwardWalds.push_back(leaving.Test.ChiSquare);
    m_fit.m_BackwardNames.push_back(EffectText(m_fit, leaving.Effect));
    m_model.Remove(leaving.Effect);
    PublishModel();
  }

  // The lists of what is in the model, in design order.
  void PublishModel() {
    ListModel(m_fit.m_KeptEffects, m_fit.m_KeptFirstColumns, m_fit.m_KeptLastColumns, m_fit.m_KeptNames);
    m_fit.m_EffectInModel = m_model.EffectBits();
    m_fit.m_ColumnInModel.assign(m_data.CoefficientCount, false);
    m_fit.m_ActiveEffectCount = static_cast<int>(m_fit.m_KeptEffects.size());
    m_fit.m_ActiveEffectIndex.clear();
    m_fit.m_ActiveFirstPosition.clear();
    m_fit.m_ActiveLastPosition.clear();
    int position = 0;
    for (const int effect : m_fit.m_KeptEffects) {
      const EffectColumns columns = ColumnsOfEffect(m_data, effect);
      for (int c = columns.First; c <= columns.Last; ++c) m_fit.m_ColumnInModel[static_cast<std::size_t>(c)] = true;
      m_fit.m_ActiveEffectIndex.push_back(effect - 1);
      m_fit.m_ActiveFirstPosition.push_back(position + 1);
      position += columns.Count();
      m_fit.m_ActiveLastPosition.push_back(position);
    }
  }

  std::vector<int> m_removable;  // effects that may leave, from 1
};

}  // namespace

void BackwardSelection(CCoxFit& fit) {
  RunSearch<BackwardSearch>(fit);
}

void ApplyBackwardSelection(CCoxFit& fit) {
  ReduceDesign(fit, fit.m_KeptEffects);
}

}  // namespace orv
