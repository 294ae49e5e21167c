#include "output/ResidualTable.h"

#include <algorithm>
#include <numeric>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "data/RoundHalfAway.h"
#include "fit/CCoxFit.h"

namespace orv {

namespace {

int CaseNumber(const CCoxData& data, int row) {
  return RoundToInteger(data.CaseTable.GetRow(row)[data.CaseNumberColumn]);
}

std::string RowName(Host& host, int caseNumber) {
  std::string label;
  if (host.getlab(static_cast<unsigned>(caseNumber), label) == 0 && !label.empty()) return label;
  return std::to_string(caseNumber);
}

}  // namespace

std::vector<int> RowsByCaseNumber(const CCoxFit& fit) {
  const CCoxData& data = *fit.m_pData;
  std::vector<int> rows(data.ValidCaseCount);
  std::iota(rows.begin(), rows.end(), 1);
  std::sort(rows.begin(), rows.end(), [&](int a, int b) { return CaseNumber(data, a) < CaseNumber(data, b); });
  return rows;
}

CResultSpreadsheet ResidualSheet(const CCoxFit& fit,
                                 const std::vector<ResidualColumn>& columns,
                                 const std::vector<int>& order,
                                 int extraColumns) {
  const CCoxData& data = *fit.m_pData;
  Host& host = fit.Owner().GetHost();
  CResultSpreadsheet sheet(host, static_cast<int>(order.size()), static_cast<int>(columns.size()) + extraColumns);
  sheet.SetTitle1("Residuals");
  for (std::size_t place = 0; place < order.size(); ++place) {
    sheet.SetRowName(static_cast<int>(place), RowName(host, CaseNumber(data, order[place])));
  }
  for (std::size_t c = 0; c < columns.size(); ++c) {
    const int column = static_cast<int>(c);
    sheet.SetColumnName(column, columns[c].Header);
    if (columns[c].Values == nullptr || columns[c].Values->size() != order.size()) continue;
    for (std::size_t place = 0; place < order.size(); ++place) {
      const int row = order[place];
      if (columns[c].OfEventsOnly && data.CaseTable.GetRow(row)[data.StatusColumn] != 1.0) continue;
      sheet.SetNumber(static_cast<int>(place), column, (*columns[c].Values)[static_cast<std::size_t>(row) - 1]);
    }
  }
  return sheet;
}

}  // namespace orv
