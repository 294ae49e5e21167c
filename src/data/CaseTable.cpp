#include "data/CaseTable.h"

#include <algorithm>
#include <charconv>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>

namespace orv {

namespace {

int TakeNumber(std::string_view& text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) throw std::invalid_argument("a column number was expected at '" + std::string(text) + "'");
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

bool TakeCharacter(std::string_view& text, char character) {
  if (text.empty() || text.front() != character) return false;
  text.remove_prefix(1);
  return true;
}

// Column numbers from 1 that a list such as "1-4 6" names.
std::vector<int> ListedColumns(std::string_view list, int columnCount) {
  std::vector<int> columns;
  while (!list.empty()) {
    const int first = TakeNumber(list);
    const int last = TakeCharacter(list, '-') ? TakeNumber(list) : first;
    if (first < 1 || last > columnCount) throw std::invalid_argument("the list names a column that does not exist");
    for (int column = first; column <= last; ++column) columns.push_back(column);
    if (!list.empty() && !TakeCharacter(list, ' ')) throw std::invalid_argument("column numbers need a blank between");
  }
  const auto doesNotAscend = [](int a, int b) { return a >= b; };
  if (std::adjacent_find(columns.begin(), columns.end(), doesNotAscend) != columns.end()) {
    throw std::invalid_argument("the list must ascend");
  }
  return columns;
}

struct CellCondition {
  int Column = 0;  // from 1
  double Value = 0.0;
};

CellCondition ParseCondition(std::string_view text, int columnCount) {
  CellCondition condition;
  if (!TakeCharacter(text, 'v')) throw std::invalid_argument("a condition has the form v5=0");
  condition.Column = TakeNumber(text);
  if (!TakeCharacter(text, '=')) throw std::invalid_argument("a condition has the form v5=0");
  condition.Value = TakeNumber(text);
  if (!text.empty()) throw std::invalid_argument("a condition compares with a whole number");
  if (condition.Column < 1 || condition.Column > columnCount) {
    throw std::invalid_argument("the condition names a column that does not exist");
  }
  return condition;
}

}  // namespace

CaseTable::CaseTable(int rows, int columns) : m_rows(rows), m_columns(columns) {
  if (rows < 0 || columns < 0) throw std::invalid_argument("a table cannot have a negative size");
  m_cells.assign(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns), 0.0);
}

CaseTable CaseTable::Subset(std::string_view columns, std::string_view condition) && {
  const std::vector<int> kept = ListedColumns(columns, m_columns);
  const bool keepsAllRows = condition.empty();
  const CellCondition wanted = keepsAllRows ? CellCondition{} : ParseCondition(condition, m_columns);

  // Kept cells only move towards the front, so they can be written over the cells already read.
  double* out = m_cells.data();
  int rows = 0;
  for (int row = 1; row <= m_rows; ++row) {
    const double* in = GetRow(row, Access::Read);
    if (!keepsAllRows && in[wanted.Column - 1] != wanted.Value) continue;
    for (const int column : kept) *out++ = in[column - 1];
    ++rows;
  }
  CaseTable result;
  result.m_cells = std::move(m_cells);
  result.m_cells.resize(static_cast<std::size_t>(out - result.m_cells.data()));
  result.m_rows = rows;
  result.m_columns = static_cast<int>(kept.size());
  *this = CaseTable();
  return result;
}

void CaseTable::Sort(const std::vector<int>& keys, const std::vector<int>& descending) {
  std::vector<int> order(static_cast<std::size_t>(m_rows));  // order[k]: the row, from 0, that belongs at place k
  std::iota(order.begin(), order.end(), 0);
  const auto precedes = [&](int a, int b) {
    const double* left = GetRow(a + 1, Access::Read);
    const double* right = GetRow(b + 1, Access::Read);
    for (std::size_t k = 0; k < keys.size(); ++k) {
      const double x = left[keys[k] - 1];
      const double y = right[keys[k] - 1];
      if (x != y) return descending[k] != 0 ? x > y : x < y;
    }
    return a < b;
  };
  if (std::is_sorted(order.begin(), order.end(), precedes)) return;
  std::sort(order.begin(), order.end(), precedes);

  // Follow each cycle of the permutation, holding one row aside, so the table is not copied.
  std::vector<double> held(static_cast<std::size_t>(m_columns));
  const auto cells = [this](int place) { return m_cells.data() + Offset(place + 1); };
  for (int start = 0; start < m_rows; ++start) {
    if (order[start] == start) continue;
    std::copy_n(cells(start), m_columns, held.data());
    int place = start;
    while (order[place] != start) {
      const int source = order[place];
      std::copy_n(cells(source), m_columns, cells(place));
      order[place] = place;
      place = source;
    }
    std::copy_n(held.data(), m_columns, cells(place));
    order[place] = place;
  }
}

}  // namespace orv
