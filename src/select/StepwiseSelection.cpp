#include "select/StepwiseSelection.h"

#include <algorithm>
#include <set>
#include <utility>

#include "select/EffectColumns.h"
#include "select/EffectSearch.h"
#include "select/EffectTests.h"
#include "select/ReduceDesign.h"
#include "select/SweptInformation.h"

namespace orv {

namespace {

constexpr int kNoAction = 0;

class StepwiseSearch : public EffectSearch {
 public:
  explicit StepwiseSearch(CCoxFit& fit) : EffectSearch(fit) {
    for (int effect = 1; effect <= m_effects; ++effect) {
      if (IsFixedEffect(m_data, effect)) continue;
      m_free.push_back(effect);
      if (effect > m_forced) m_removable.push_back(effect);
    }
  }

  void Run(SearchProgress& progress) {
    TakeForcedEffects();
    if (m_forced == m_effects) return;
    const RemovalTests tests(m_fit);
    if (m_fit.m_ActiveCount > 0) m_model.Fit();
    m_entering = true;
    m_going = true;
    m_states.emplace(m_entering, m_model.Effects());
    while ((m_entering || m_going) && !WasCancelled()) {
      int action = kNoAction;
      if (m_entering && TryEntry()) action = StepActions::Entry;
      if (WasCancelled()) return;
      if (TryRemoval(tests)) action = StepActions::Removal;
      SetFlags(action);
      // The steps depend on the state alone, so a state that comes back would come back for ever.
      if (!m_states.emplace(m_entering, m_model.Effects()).second) return;
      if (progress.Advance()) return;
    }
  }

 private:
  bool WasCancelled() const { return m_fit.m_FitStatus == FitStatuses::Cancelled; }

  // The first effects of the design, then those that are held at their start values.
  void TakeForcedEffects() {
    const auto take = [this](int effect) {
      Enter(effect, kNoTest, kNoTest);
      m_fit.m_StepActions.push_back(effect);
    };
    for (int effect = 1; effect <= m_forced; ++effect) take(effect);
    for (int effect = m_forced + 1; effect <= m_effects; ++effect) {
      if (!IsFixedEffect(m_data, effect)) continue;
      const std::vector<std::string>& taken = m_fit.m_StepEnteredNames;
      if (std::find(taken.begin(), taken.end(), EffectText(m_fit, effect)) == taken.end()) take(effect);
    }
    m_fit.EffectsForcedInModel = static_cast<int>(m_fit.m_StepEntered.size());
  }

  void Enter(int effect, double score, double pValue) {
    m_fit.m_StepEntered.push_back(effect);
    m_fit.m_StepScores.push_back(score);
    m_fit.m_StepEntryPValues.push_back(pValue);
    m_fit.m_StepEnteredNames.push_back(EffectText(m_fit, effect));
    m_model.Add(effect);
    PublishModel();
  }

  // The entry phase of a pass. Returns true when an effect has entered.
  bool TryEntry() {
    std::vector<double> beta = m_model.FullEstimates();
    m_fit.EvaluateScoreAt(beta.data());
    SweptInformation swept(m_fit);
    // Effects held at their start values stay out of the sweep: their rows of the information are zero.
    for (const int effect : m_model.Effects()) {
      if (!IsFixedEffect(m_data, effect)) swept.SweepIn(ColumnsOfEffect(m_data, effect));
    }
    const SelectionCandidate best = BestToEnter(m_fit, swept, m_hierarchy, m_model.EffectBits(), m_free);
    if (best.Effect == 0 || best.Test.PValue > m_settings.PToEnter) return false;
    Enter(best.Effect, best.Test.ChiSquare, best.Test.PValue);
    m_fit.m_StepActions.push_back(StepActions::Entry);
    m_model.Fit();
    return true;
  }

  // The removal phase of a pass. Returns true when an effect has left.
  bool TryRemoval(const RemovalTests& tests) {
    const SelectionCandidate worst = tests.BestToLeave(m_hierarchy, m_model.EffectBits(), m_removable);
    if (worst.Effect == 0 || worst.Test.PValue <= m_settings.PToRemove) return false;
    m_fit.m_StepRemoved.push_back(worst.Effect);
    m_fit.m_StepWalds.push_back(worst.Test.ChiSquare);
    m_fit.m_StepRemovalPValues.push_back(worst.Test.PValue);
    m_fit.m_StepRemovedNames.push_back(EffectText(m_fit, worst.Effect));
    m_fit.m_StepActions.push_back(StepActions::Removal);
    m_model.Remove(worst.Effect);
    PublishModel();
    m_model.Fit();
    return true;
  }

  // What the next pass does.
  void SetFlags(int action) {
    if (action == StepActions::Removal) {
      m_entering = false;
      if (ReturnsToAnEarlierState()) m_going = false;
    } else if (action == kNoAction) {
      // Nothing could enter either: the search is over. Otherwise entry resumes after the removals.
      m_going = !m_entering;
      m_entering = m_going;
    }
  }

  // The effect just removed is the one that entered last, with nothing in between. A forced effect has its number in
  // the list of actions, where the first of the design looks like an entry; it decides nothing, since forced effects
  // are never removed.
  bool ReturnsToAnEarlierState() const {
    const std::vector<int>& actions = m_fit.m_StepActions;
    return actions.size() >= 2 && actions[actions.size() - 2] == StepActions::Entry &&
           m_fit.m_StepRemoved.back() == m_fit.m_StepEntered.back();
  }

  // The lists of what is in the model, in the order of entry.
  void PublishModel() {
    ListModel(m_fit.m_StepEffects, m_fit.m_StepFirstColumns, m_fit.m_StepLastColumns, m_fit.m_StepNames);
  }

  std::vector<int> m_free;                               // effects that are not held at their start values, from 1
  std::vector<int> m_removable;                          // those of them that are not forced
  bool m_entering = false;                               // the next pass tries an entry
  bool m_going = false;                                  // and there is a next pass
  std::set<std::pair<bool, std::vector<int>>> m_states;  // after each pass: the next one tries an entry; the effects
};

}  // namespace

void StepwiseSelection(CCoxFit& fit) {
  RunSearch<StepwiseSearch>(fit);
}

void ApplyStepwiseSelection(CCoxFit& fit) {
  ReduceDesign(fit, fit.m_StepEffects);
}

}  // namespace orv
