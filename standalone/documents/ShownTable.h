// ShownTable: a sheet as a reader sees it, before any form of output decides on lines, marks and colours.
//
// All texts are printable, numbers have the shape of their column (NumberColumn.h), and missing cells are empty.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "standalone/documents/ResultDocument.h"
#include "standalone/documents/TableLayout.h"

namespace orv {

struct ShownTable {
  // The row names first, when any row has one. All columns have the same number of texts.
  std::vector<TableColumn> Columns;
  bool HasRowNames = false;  // the first column holds them
  bool HasTitles = false;    // some column of the sheet has a title
  std::size_t Repeated = 0;  // so many columns, from the left, tell the rows apart

  std::size_t RowCount() const { return Columns.empty() ? 0 : Columns.front().Texts.size(); }
  bool HasBold() const;  // some cell is bold
};

// Highlighted cells are bold, and so are the names and texts of a row whose numbers are all highlighted. A column of
// names or texts that are all numbers stands to the right.
ShownTable MakeShownTable(const SheetContent& sheet);

// The lines of all titles, printable, without empty ones.
std::vector<std::string> TitleLines(const std::vector<std::string>& titles);

}  // namespace orv
