#include "standalone/documents/ResultDocument.h"

#include <cmath>

namespace orv {

CellKind SheetColumn::KindOfCell(std::size_t row) const {
  if (IsText && !Texts[row].empty()) return CellKind::Text;
  return std::isnan(Numbers[row]) ? CellKind::Missing : CellKind::Number;
}

}  // namespace orv
