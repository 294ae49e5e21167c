// ColumnBuilder: one column of a delimited file or of a query while it is read; decides whether it holds numbers, dates
// or texts.
//
// The rules, over the cells that are not missing (see CellText.h for the kinds):
//   1. A text anywhere, or dates among numbers, make it a text column.
//   2. Otherwise, numbers of which some are written with a comma, are out of range or are infinite are an error: taken
//      as texts they would become codes without a word.
//   3. Otherwise, dates of which fewer than half are no day of the calendar are an error for the same reason. If half
//      or more are none the cells only look like dates, as an identifier may, and the column is text.
//   4. What is left is a column of numbers or of dates. A column without any value holds numbers.
//
// Cells are stored as what the first of them is. Only when that turns out wrong has the file to be read again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/tables/CellText.h"
#include "standalone/tables/MemoryTable.h"
#include "standalone/tables/TextCodes.h"

namespace orv {

// A cell that makes a column of numbers or dates unreadable.
struct CellFault {
  CellKind Kind;
  std::uint64_t Line;  // on which the cell begins
  std::string Text;
};

class ColumnBuilder {
 public:
  // Makes room for that many cells in all.
  void Reserve(std::size_t cells) { m_values.reserve(cells); }
  // Takes the next cell. `line` is the line of the file on which the cell ends.
  void Add(std::string_view text, std::uint64_t line);
  // Takes a number as if it were written out.
  void AddNumber(double value, std::uint64_t line);

  // After all cells: the first cell that rules 2 and 3 refuse.
  std::optional<CellFault> Fault() const;
  // After all cells, when there is no fault: the column is text, but not all of its texts have been kept. They have to
  // be passed through AddText from the first case on.
  bool NeedsRereading() const;

  // Starts the second reading.
  void StartRereading();
  void AddText(std::string_view text);

  // The finished variable. The builder is empty afterwards.
  TableVariable Take(std::string name);

 private:
  enum class Storage : std::uint8_t { Undecided, Number, Date, Text, Nothing };

  void AddUnusual(const Cell& cell, std::string_view text, std::uint64_t line);
  void Store(const Cell& cell, std::string_view text);
  bool Seen(CellKind kind) const { return (m_seen & Mask(kind)) != 0; }
  bool SeenNumbers() const;
  bool SeenDates() const;
  VariableType Type() const;
  static unsigned Mask(CellKind kind) { return 1U << static_cast<unsigned>(kind); }

  std::vector<double> m_values;
  Storage m_storage = Storage::Undecided;
  unsigned m_seen = 0;               // the kinds met so far, one bit each
  std::size_t m_dates = 0;           // cells that are dates
  std::size_t m_noDays = 0;          // cells that only look like dates
  std::optional<CellFault> m_fault;  // the first cell of a kind that rules 2 and 3 speak of
  TextCodes m_codes;
};

// A number in the fewest digits that read back as the same double.
std::string ShortestNumber(double value);

// The number of line breaks (LF, CRLF or CR) in a text.
std::uint64_t CountLineBreaks(std::string_view text);

}  // namespace orv
