#include "output/DesignTables.h"

#include <algorithm>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "data/FactorLevels.h"
#include "data/VariableNames.h"
#include "output/CResultSpreadsheet.h"

namespace orv {

void ShowDesignTerms(const CCoxData& data) {
  const CCoxPH& owner = *data.Owner;
  const bool restricted = owner.m_Settings.Coding != Codings::Overparameterized;
  const int width = restricted ? 3 : 2;
  const int rows = static_cast<int>(data.CoefficientCount);
  int places = 0;
  for (int row = 0; row < rows; ++row) {
    places = std::max(places, data.DesignColumns[static_cast<std::size_t>(row)].VariableCount);
  }
  CResultSpreadsheet sheet(owner.GetHost(), rows, width * places + 1);
  sheet.SetTitle1("Column Labels");
  sheet.SetTitle2("Labels for the columns of the design matrix X");
  sheet.SetColumnName(0, "Column");
  for (int place = 0; place < places; ++place) {
    sheet.SetColumnName(width * place + 1, "Variable");
    sheet.SetColumnName(width * place + 2, "Level of Variable");
    if (restricted) sheet.SetColumnName(width * place + 3, "versus Level");
  }
  for (int row = 0; row < rows; ++row) {
    const CoxDesignColumn& column = data.DesignColumns[static_cast<std::size_t>(row)];
    sheet.SetRowName(row, column.EffectName);
    sheet.SetIntegerText(row, 0, row + 1);
    for (int place = 0; place < column.VariableCount; ++place) {
      const auto k = static_cast<std::size_t>(place);
      const int variable = column.Variables[k];
      sheet.SetText(row, width * place + 1, VariableName(owner.GetHost(), variable));
      if (column.VariableRoles[k] != VariableRole::Factor) continue;
      sheet.SetText(row, width * place + 2, FactorLevelText(owner, variable, column.LevelIndex[k]));
      if (restricted) sheet.SetText(row, width * place + 3, ReferenceLevelText(owner, variable));
    }
  }
  sheet.Show();
}

}  // namespace orv
