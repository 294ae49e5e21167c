#include "output/ProportionalHazardsTable.h"

#include <vector>

#include "core/CCoxPH.h"
#include "data/AlmostEqual.h"
#include "data/CCoxData.h"
#include "inference/ProportionalHazards.h"
#include "output/CResultSpreadsheet.h"
#include "output/CoefficientLabels.h"

namespace orv {

namespace {

enum Column { kChiSquare, kDf, kPValue, kColumnCount };

// Writes the cells of a row. Returns the p value.
double AddRow(CResultSpreadsheet& sheet, Host& host, int row, double chiSquare, int df) {
  const double p = 1.0 - host.ChiSquareCdf(chiSquare, df);
  sheet.SetNumber(row, kChiSquare, chiSquare);
  sheet.SetNumber(row, kDf, df);
  sheet.SetNumber(row, kPValue, p);
  return p;
}

}  // namespace

void ShowProportionalHazards(const CCoxData& data,
                             const ProportionalHazardsTest& test,
                             const std::string& transform,
                             double confidenceLevel) {
  Host& host = data.Owner->GetHost();
  const std::vector<std::string> labels = CoefficientLabels(data);
  const int tested = static_cast<int>(test.Columns.size());
  CResultSpreadsheet sheet(host, tested + 1, kColumnCount);
  sheet.SetTitle1("Test of proportionality assumption \nTransformation = " + transform);
  sheet.SetColumnName(kChiSquare, "Chi-square");
  sheet.SetColumnName(kDf, "df");
  sheet.SetColumnName(kPValue, "P value");

  const double alpha = 1.0 - confidenceLevel;
  for (int row = 0; row < tested; ++row) {
    const auto k = static_cast<std::size_t>(row);
    sheet.SetRowName(row, labels[static_cast<std::size_t>(test.Columns[k])]);
    const double p = AddRow(sheet, host, row, test.ChiSquares[k], 1);
    if (!(p < alpha) || AlmostEqual(p, alpha)) continue;
    for (int column = 0; column < kColumnCount; ++column) sheet.HighlightCell(row, column);
  }
  sheet.SetRowName(tested, "Overall");
  AddRow(sheet, host, tested, test.Overall, tested);
  sheet.Show();
}

}  // namespace orv
