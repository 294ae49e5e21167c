#include "data/FactorLevels.h"

#include "core/CCoxPH.h"
#include "data/AlmostEqual.h"
#include "host/FormatText.h"

namespace orv {

int FactorPlace(const CoxSettings& settings, int variable) {
  for (int place = 0; place < settings.FactorCount; ++place) {
    if (settings.FactorVariables[static_cast<std::size_t>(place)] == variable) return place;
  }
  return settings.FactorCount;
}

int FirstCodeIndex(const CoxSettings& settings, int place) {
  int first = 0;
  for (int before = 0; before < place; ++before) first += settings.FactorCodeCounts[static_cast<std::size_t>(before)];
  return first;
}

int LevelOfPosition(const CoxSettings& settings, int place, int position) {
  if (settings.Coding == Codings::Overparameterized) return position;
  const auto factor = static_cast<std::size_t>(place);
  const int reference = settings.ReferenceCodeIndex[factor];
  if (position == reference) return settings.FactorCodeCounts[factor];
  return position < reference ? position : position - 1;
}

int PositionOfLevel(const CoxSettings& settings, int place, int level) {
  if (settings.Coding == Codings::Overparameterized) return level;
  return level < settings.ReferenceCodeIndex[static_cast<std::size_t>(place)] ? level : level + 1;
}

int PositionOfValue(const CoxSettings& settings, int place, double value) {
  const int first = FirstCodeIndex(settings, place);
  const int count = settings.FactorCodeCounts[static_cast<std::size_t>(place)];
  for (int position = 1; position <= count; ++position) {
    const int code = settings.FactorCodes[static_cast<std::size_t>(first + position - 1)];
    if (AlmostEqualStrict(value, static_cast<double>(code))) return position;
  }
  return 0;
}

std::string CodeText(const CCoxPH& owner, int variable, int code) {
  const std::string label = owner.GetInputTable().ValueLabel(variable, code);
  return label.empty() ? FormatInteger(code) : label;
}

std::string FactorLevelText(const CCoxPH& owner, int variable, int level) {
  const CoxSettings& settings = owner.m_Settings;
  const int place = FactorPlace(settings, variable);
  if (place == settings.FactorCount) return {};
  const int position = PositionOfLevel(settings, place, level);
  if (position < 1 || position > settings.FactorCodeCounts[static_cast<std::size_t>(place)]) return {};
  const int index = FirstCodeIndex(settings, place) + position - 1;
  return CodeText(owner, variable, settings.FactorCodes[static_cast<std::size_t>(index)]);
}

std::string ReferenceLevelText(const CCoxPH& owner, int variable) {
  const CoxSettings& settings = owner.m_Settings;
  const int place = FactorPlace(settings, variable);
  if (place == settings.FactorCount) return {};
  const int index = FirstCodeIndex(settings, place) + settings.ReferenceCodeIndex[static_cast<std::size_t>(place)] - 1;
  return CodeText(owner, variable, settings.FactorCodes[static_cast<std::size_t>(index)]);
}

}  // namespace orv
