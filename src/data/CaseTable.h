// CaseTable: the cases of a run, one contiguous row of doubles per case.
//
// Rows count from 1. Columns count from 0 in a row and from 1 in column lists and conditions, as on a spreadsheet.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace orv {

class CaseTable {
 public:
  enum class Access { Write = 1, Read = 2 };

  CaseTable() = default;
  // A table with all cells 0. Throws std::bad_alloc, or std::invalid_argument for a negative size.
  CaseTable(int rows, int columns);

  int RowCount() const { return m_rows; }
  int ColumnCount() const { return m_columns; }

  // The address of a row's cells, in constant time. `row` counts from 1. The mode is part of the table's contract
  // with hosts that fetch rows through a cache; here both modes reach the same store.
  double* GetRow(int row, Access) { return m_cells.data() + Offset(row); }
  const double* GetRow(int row, Access = Access::Read) const { return m_cells.data() + Offset(row); }

  // Asks the processor for a row that is read soon, so that a walk in another order than the table's need not wait for
  // it. Changes nothing; `row` counts from 1.
  void Prefetch(int row) const {
    constexpr int kDoublesOfCacheLine = 8;
    const double* cells = GetRow(row);
    for (int column = 0; column < m_columns; column += kDoublesOfCacheLine) __builtin_prefetch(cells + column);
    __builtin_prefetch(cells + m_columns - 1);
  }

  // The listed columns of the rows that meet a condition.
  //   columns    "1-4", "1-4 6" or "1-4 6-8": numbers from 1, ascending
  //   condition  "v5=0": column 5 holds 0. Empty: all rows
  // The table gives up its store: it is cut in place, so a large table is never held twice.
  // Throws std::invalid_argument for a text of another form or a column that does not exist.
  CaseTable Subset(std::string_view columns, std::string_view condition) &&;

  // Sorts all rows by several keys.
  //   keys        column numbers from 1, the most significant first
  //   descending  one flag per key: 0 ascending, 1 descending
  // Rows equal on all keys keep their order. Needs one index per row beside the table.
  void Sort(const std::vector<int>& keys, const std::vector<int>& descending);

 private:
  std::size_t Offset(int row) const { return static_cast<std::size_t>(row - 1) * static_cast<std::size_t>(m_columns); }

  std::vector<double> m_cells;
  int m_rows = 0;
  int m_columns = 0;
};

}  // namespace orv
