#include "standalone/analysis/ApplySelection.h"

#include <algorithm>

#include "data/CCoxData.h"
#include "inference/EffectContainment.h"
#include "standalone/analysis/Choices.h"
#include "standalone/analysis/DefinitionMessages.h"

namespace orv {

namespace {

namespace Messages = DefinitionMessages;

// Groups of effects that contain each other, such as x and x*x, among those that the search decides about. The rules of
// hierarchy hold them back, which a person may not expect.
std::vector<std::vector<std::string>> EffectsOfSameVariables(CCoxPH& analysis, int forced) {
  analysis.DesignCoefficientCount();
  const CCoxData& data = *analysis.m_pCoxData;
  std::vector<std::vector<std::string>> groups;
  std::vector<bool> isGrouped = data.EffectFixed;
  // An effect without columns, of a factor with one code, has no record; the module refuses such a factor.
  for (std::size_t effect = 0; effect < data.EffectCount; ++effect) {
    if (data.EffectFirstColumn[effect] > data.EffectLastColumn[effect]) isGrouped[effect] = true;
  }
  std::fill_n(isGrouped.begin(), std::min(forced, static_cast<int>(data.EffectCount)), true);
  const auto record = [&data](std::size_t effect) -> const CoxDesignColumn& {
    return data.DesignColumns[static_cast<std::size_t>(data.EffectFirstColumn[effect]) - 1];
  };
  for (std::size_t a = 0; a < data.EffectCount; ++a) {
    if (isGrouped[a]) continue;
    std::vector<std::string> group = {record(a).EffectName};
    for (std::size_t b = a + 1; b < data.EffectCount; ++b) {
      if (isGrouped[b] || !TermContains(record(a), record(b)) || !TermContains(record(b), record(a))) continue;
      isGrouped[b] = true;
      group.push_back(record(b).EffectName);
    }
    if (group.size() > 1) groups.push_back(group);
  }
  return groups;
}

}  // namespace

void ApplySelection(const AnalysisDefinition& definition, CCoxPH& analysis, AppliedDefinition& applied) {
  CoxSettings& settings = analysis.m_Settings;
  const int building =
      ChoiceValue("--select", definition.Select, SelectionChoices(), static_cast<int>(settings.ModelBuilding));
  settings.ModelBuilding = static_cast<std::int16_t>(building);
  applied.Fields.PToEnter = definition.PEnter.value_or(applied.Fields.PToEnter);
  applied.Fields.PToRemove = definition.PRemove.value_or(applied.Fields.PToRemove);
  applied.Fields.EffectsToForce = definition.Force.value_or(applied.Fields.EffectsToForce);
  if (building == ModelBuildings::AllEffects) return;
  const auto effects = static_cast<int>(settings.DesignEffects.size());
  // The module checks it for the other kinds of model building.
  if (building == ModelBuildings::BestSubsets) {
    const int forced = applied.Fields.EffectsToForce;
    if (forced > effects) throw DefinitionError(Messages::ForceOutOfRange(forced, effects));
    applied.Notes.push_back(Messages::BestSubsetsFitAll());
    return;
  }
  // The default design holds each variable once.
  if (definition.Effects.empty()) return;
  for (const std::vector<std::string>& group : EffectsOfSameVariables(analysis, applied.Fields.EffectsToForce)) {
    applied.Notes.push_back(Messages::EffectsWaitForEachOther(group, building != ModelBuildings::Backward));
  }
}

}  // namespace orv
