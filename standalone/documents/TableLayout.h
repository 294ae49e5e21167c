// TableLayout: where the columns of a table stand on lines of a limited width.
//
// A table that is too wide is cut into blocks of columns, one below the other. The columns that tell the rows apart
// stand in every block.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orv {

// A column ready to be shown: every text is printable.
struct TableColumn {
  std::string Title;
  bool RightAligned = false;
  std::vector<std::string> Texts;  // one per row
  std::vector<bool> Bold;          // one per row
};

// The title of a column over several lines, and the width of the column beneath it.
struct ColumnHeading {
  std::vector<std::string> Lines;  // none for an empty title
  int Width = 0;                   // enough for every line and every text of the column
};

// Breaks the title at blanks, and behind a "*" between the variables of an effect, into at most three lines. The
// column becomes no wider than that and its texts need; lines of up to 8 characters are always allowed.
ColumnHeading MakeHeading(const TableColumn& column);

// Columns first, first + 1, ..., last.
struct ColumnBlock {
  std::size_t First;
  std::size_t Last;
};

// Cuts the columns that follow the repeated ones into as few blocks as possible, from the left, so that each fits.
//
//   columns   all columns of the table; those before `repeated` stand in every block
//   headings  one per column
//   width     characters of a line; between two columns there are ColumnGap blanks
//
// A column named "... Lower ..." stays with its right neighbour "... Upper ..." where a line holds both. A column that
// fits no line stands in a block alone. At least one block is returned when there are columns to cut.
std::vector<ColumnBlock> SplitIntoBlocks(const std::vector<TableColumn>& columns,
                                         const std::vector<ColumnHeading>& headings,
                                         std::size_t repeated,
                                         int width);

inline constexpr int ColumnGap = 2;

// Width of the columns first to last, counting the gap before each of them but for the first of the table.
int WidthOfColumns(const std::vector<ColumnHeading>& headings, std::size_t first, std::size_t last);

// The columns of one block in the order in which they stand: the repeated ones first.
std::vector<std::size_t> ColumnsOfBlock(std::size_t repeated, const ColumnBlock& block);

}  // namespace orv
