#include "standalone/documents/ResultDocument.h"

#include <algorithm>
#include <cmath>

namespace orv {

SheetCellKind SheetColumn::KindOfCell(std::size_t row) const {
  if (IsText && !Texts[row].empty()) return SheetCellKind::Text;
  return std::isnan(Numbers[row]) ? SheetCellKind::Missing : SheetCellKind::Number;
}

std::string SheetContent::Heading(std::size_t column) const {
  const SheetColumn& headed = Columns[column];
  const auto shares = [&](const SheetColumn& other) { return &other != &headed && other.Title() == headed.Title(); };
  const bool isShared = std::any_of(Columns.begin(), Columns.end(), shares);
  return isShared && !headed.LongName.empty() && !headed.Name.empty() ? headed.LongName + " " + headed.Name
                                                                      : headed.Title();
}

}  // namespace orv
