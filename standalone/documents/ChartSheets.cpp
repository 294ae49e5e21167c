#include "standalone/documents/ChartSheets.h"

#include <cmath>
#include <limits>
#include <utility>

namespace orv {
namespace {

// The smallest and the largest of the numbers; NaN when there is none.
std::pair<double, double> RangeOf(const std::vector<double>& numbers) {
  std::pair<double, double> range{std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::quiet_NaN()};
  for (const double number : numbers) {
    range.first = std::fmin(range.first, number);  // fmin and fmax pass over NaN
    range.second = std::fmax(range.second, number);
  }
  return range;
}

}  // namespace

SheetContent RangesOfSeries(const ChartContent& chart) {
  SheetContent sheet;
  sheet.ShortName = "Series";
  sheet.Columns.resize(5);
  const std::string titles[] = {"Points", chart.XTitle + " from", chart.XTitle + " to", chart.YTitle + " from",
                                chart.YTitle + " to"};
  for (std::size_t column = 0; column < sheet.Columns.size(); ++column) sheet.Columns[column].Name = titles[column];
  for (const ChartSeries& series : chart.Series) {
    sheet.RowNames.push_back(series.Name);
    const auto [xFrom, xTo] = RangeOf(series.X);
    const auto [yFrom, yTo] = RangeOf(series.Y);
    const double cells[] = {static_cast<double>(series.X.size()), xFrom, xTo, yFrom, yTo};
    for (std::size_t column = 0; column < sheet.Columns.size(); ++column) {
      sheet.Columns[column].Numbers.push_back(cells[column]);
      sheet.Columns[column].Highlighted.push_back(false);
    }
  }
  return sheet;
}

SheetContent PointsOfSeries(const ChartContent& chart) {
  SheetContent sheet;
  sheet.ShortName = "Series";
  sheet.Columns.resize(2);
  sheet.Columns[0].Name = chart.XTitle;
  sheet.Columns[1].Name = chart.YTitle;
  for (const ChartSeries& series : chart.Series) {
    sheet.RowNames.insert(sheet.RowNames.end(), series.X.size(), series.Name);
    sheet.Columns[0].Numbers.insert(sheet.Columns[0].Numbers.end(), series.X.begin(), series.X.end());
    sheet.Columns[1].Numbers.insert(sheet.Columns[1].Numbers.end(), series.Y.begin(), series.Y.end());
  }
  for (SheetColumn& column : sheet.Columns) column.Highlighted.assign(column.Numbers.size(), false);
  return sheet;
}

}  // namespace orv
