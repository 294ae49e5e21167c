// EffectSearch: what every selection of effects searches with.
#pragma once

#include <string>
#include <vector>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "select/EffectHierarchy.h"
#include "select/EffectModel.h"
#include "select/GuardedSearch.h"

namespace orv {

// What stands in the lists of steps for the test of a forced effect.
inline constexpr double kNoTest = -1.0;

class EffectSearch {
 protected:
  explicit EffectSearch(CCoxFit& fit);

  // The effects of the model with their column ranges and texts, in the order of the model.
  void ListModel(std::vector<int>& effects,
                 std::vector<int>& firstColumns,
                 std::vector<int>& lastColumns,
                 std::vector<std::string>& names) const;

  CCoxFit& m_fit;
  const CCoxData& m_data;
  const CoxSettings& m_settings;
  const int m_forced;   // effects that the options force, the first ones of the design
  const int m_effects;  // all effects of the design
  const EffectHierarchy m_hierarchy;
  EffectModel m_model;  // empty at first
};

// Runs a search from its beginning, with a bar of one step an effect. See RunGuarded.
template <typename Search>
void RunSearch(CCoxFit& fit) {
  RunGuarded(fit, static_cast<int>(fit.m_pData->EffectCount),
             [&fit](SearchProgress& progress) { Search(fit).Run(progress); });
}

}  // namespace orv
