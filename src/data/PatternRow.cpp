#include "data/PatternRow.h"

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "data/DesignCell.h"
#include "data/FactorLevels.h"

namespace orv {

namespace {

double ValueOf(const std::map<int, double>& values, int variable) {
  const auto found = values.find(variable);
  return found != values.end() ? found->second : 0.0;
}

}  // namespace

int PatternDesignRow(const CCoxData& data, const std::map<int, double>& values, std::vector<double>& row) {
  const CoxSettings& settings = data.Owner->m_Settings;
  const bool sigma = settings.Coding == Codings::SigmaRestricted;
  row.clear();
  for (std::uint32_t c = 0; c < data.CoefficientCount; ++c) {
    const CoxDesignColumn& column = data.DesignColumns[c];
    double product = 1.0;
    for (std::size_t k = 0; k < column.Variables.size(); ++k) {
      const int variable = column.Variables[k];
      const double value = ValueOf(values, variable);
      if (column.VariableRoles[k] != VariableRole::Factor) {
        product *= value;
        continue;
      }
      const int place = FactorPlace(settings, variable);
      const int position = PositionOfValue(settings, place, value);
      if (position == 0) {
        row.clear();
        return kPatternCodeUnknown;
      }
      const int levels = settings.FactorCodeCounts[static_cast<std::size_t>(place)];
      product = TimesFactor(product, LevelOfPosition(settings, place, position), column.LevelIndex[k], levels, sigma);
    }
    row.push_back(product);
  }
  return 0;
}

}  // namespace orv
