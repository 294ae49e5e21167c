// XlsxStyles: the looks of cells that a workbook of results uses, by number.
#pragma once

#include <string>

#include "standalone/documents/NumberColumn.h"
#include "standalone/documents/ResultDocument.h"

namespace orv {

enum class XlsxStyle : int {
  Plain = 0,
  Bold = 1,
  // Number formats, each of them followed by the same in bold.
  Decimals0 = 2,  // "0"; the formats with 1 to 6 decimals follow in twos
  Exponent = 16,
  PValue = 18,  // "<.0001" for smaller ones
  // Above the cells of a table.
  Title = 20,
  TextHeading = 21,
  NumberHeading = 22,
};

// The part xl/styles.xml.
std::string XlsxStylesXml();

// The style of each number of a column: the same decimals throughout, as the text form shows them (NumberColumn.h).
class XlsxNumberStyles {
 public:
  explicit XlsxNumberStyles(const SheetColumn& column);
  XlsxStyle Of(double number, bool isBold) const;

 private:
  bool m_isPValue;
  NumberShape m_shape;
};

}  // namespace orv
