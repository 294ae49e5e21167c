#include "output/CoefficientLabels.h"

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "data/FactorLevels.h"
#include "host/FormatText.h"

namespace orv {

std::string LevelText(const CCoxPH& owner, const CoxDesignColumn& column) {
  if (!column.HasFactor()) return {};
  if (column.VariableCount == 1) return FactorLevelText(owner, column.Variables[0], column.LevelIndex[0]);
  return FormatInteger(column.ColumnInEffect);
}

std::vector<std::string> CoefficientLabels(const CCoxData& data) {
  std::vector<std::string> labels;
  for (std::uint32_t c = 0; c < data.CoefficientCount; ++c) {
    const CoxDesignColumn& column = data.DesignColumns[c];
    const std::string level = LevelText(*data.Owner, column);
    labels.push_back(level.empty() ? column.EffectName : column.EffectName + "_" + level);
  }
  return labels;
}

}  // namespace orv
