#include "select/ForwardSelection.h"

#include <algorithm>
#include <numeric>

#include "select/EffectColumns.h"
#include "select/EffectSearch.h"
#include "select/EffectTests.h"
#include "select/ReduceDesign.h"
#include "select/SweptInformation.h"

namespace orv {

namespace {

class ForwardSearch : public EffectSearch {
 public:
  explicit ForwardSearch(CCoxFit& fit) : EffectSearch(fit), m_all(static_cast<std::size_t>(m_effects)) {
    std::iota(m_all.begin(), m_all.end(), 1);
  }

  void Run(SearchProgress& progress) {
    TakeForcedEffects();
    if (m_fit.EffectsForcedInModel > 0 && m_fit.EffectsForcedInModel == m_effects) return;
    if (m_fit.EffectsForcedInModel > 0 && !FitModel()) return;
    SweptInformation swept = InformationAtStart();
    for (int entered = 1;; ++entered) {
      const SelectionCandidate best = BestToEnter(m_fit, swept, m_hierarchy, m_model.EffectBits(), m_all);
      if (best.Effect == 0 || best.Test.PValue > m_settings.PToEnter) return;
      Enter(best.Effect, best.Test.ChiSquare, best.Test.PValue);
      if (!FitModel()) return;
      swept = InformationAtEstimates();
      SweepEntries(swept, entered);
      if (progress.Advance() || entered == m_effects) return;
    }
  }

 private:
  // The first effects of the design, then those that are held at their start values.
  void TakeForcedEffects() {
    for (int effect = 1; effect <= m_forced; ++effect) Enter(effect, kNoTest, kNoTest);
    for (int effect = m_forced + 1; effect <= m_effects; ++effect) {
      if (!IsFixedEffect(m_data, effect)) continue;
      const std::vector<int>& taken = m_fit.m_ForwardFirstColumns;
      const int first = ColumnsOfEffect(m_data, effect).First + 1;
      if (std::find(taken.begin(), taken.end(), first) == taken.end()) Enter(effect, kNoTest, kNoTest);
    }
    m_fit.EffectsForcedInModel = static_cast<int>(m_fit.m_ForwardEffects.size());
  }

  void Enter(int effect, double score, double pValue) {
    const EffectColumns columns = ColumnsOfEffect(m_data, effect);
    m_fit.m_ForwardEffects.push_back(effect);
    m_fit.m_ForwardFirstColumns.push_back(columns.First + 1);
    m_fit.m_ForwardLastColumns.push_back(columns.Last + 1);
    m_fit.m_ForwardScores.push_back(score);
    m_fit.m_ForwardPValues.push_back(pValue);
    m_fit.m_ForwardNames.push_back(EffectText(m_fit, effect));
    m_model.Add(effect);
  }

  SweptInformation InformationAtStart() {
    if (m_fit.EffectsForcedInModel == 0) {
      m_fit.EvaluateScoreAtStart();
      return SweptInformation(m_fit);
    }
    SweptInformation swept = InformationAtEstimates();
    for (int effect = 1; effect <= m_forced; ++effect) swept.SweepIn(ColumnsOfEffect(m_data, effect));
    return swept;
  }

  // Returns false when the user has cancelled the fit.
  bool FitModel() {
    m_model.Fit();
    return m_fit.m_FitStatus != FitStatuses::Cancelled;
  }

  SweptInformation InformationAtEstimates() {
    std::vector<double> beta = m_model.FullEstimates();
    m_fit.EvaluateScoreAt(beta.data());
    return SweptInformation(m_fit);
  }

  // The entries of the list after the forced effects, as far as the number of effects that the search has entered
  // reaches. Kept: with forced effects the range falls short of the list, so they take part in the first step alone and
  // late entries not at all; selections with forced effects have always been made so.
  void SweepEntries(SweptInformation& swept, int entered) const {
    for (int k = m_forced; k < entered; ++k) {
      swept.SweepIn(ColumnsOfEffect(m_data, m_fit.m_ForwardEffects[static_cast<std::size_t>(k)]));
    }
  }

  std::vector<int> m_all;  // the effects, from 1
};

}  // namespace

void ForwardSelection(CCoxFit& fit) {
  RunSearch<ForwardSearch>(fit);
}

void ApplyForwardSelection(CCoxFit& fit) {
  ReduceDesign(fit, fit.m_ForwardEffects);
}

}  // namespace orv
