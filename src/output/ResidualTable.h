// The table of residuals: a row for each case, in the order of the input table.
#pragma once

#include <string>
#include <vector>

#include "output/CResultSpreadsheet.h"

namespace orv {

class CCoxFit;

// One column of residuals by sorted row, from 0; null when they could not be computed, and then all cells stay missing.
struct ResidualColumn {
  std::string Header;
  const std::vector<double>* Values = nullptr;
  bool OfEventsOnly = false;  // cells of censored cases stay missing
};

// The sorted rows, from 1, in ascending order of the cases' numbers in the input table.
std::vector<int> RowsByCaseNumber(const CCoxFit& fit);

// A sheet titled "Residuals" with these columns and room for `extraColumns` more behind them, not shown yet. A row is
// named by the host's label of the case, or by its number.
CResultSpreadsheet ResidualSheet(const CCoxFit& fit,
                                 const std::vector<ResidualColumn>& columns,
                                 const std::vector<int>& order,
                                 int extraColumns);

}  // namespace orv
