#include "standalone/tables/ColumnBuilder.h"

#include <fmt/format.h>

#include <cmath>
#include <utility>

namespace orv {

void ColumnBuilder::Add(std::string_view text, std::uint64_t line) {
  if (m_storage == Storage::Number || m_storage == Storage::Undecided) {
    const Cell cell = ReadCell(text);
    if (cell.Kind == CellKind::Missing || (cell.Kind == CellKind::Number && m_storage == Storage::Number)) {
      m_values.push_back(cell.Value);
    } else {
      AddUnusual(cell, text, line);
    }
  } else if (!Seen(CellKind::Text)) {
    AddUnusual(ReadCell(text), text, line);
  } else if (m_storage == Storage::Text) {
    // One text settles the type: the kinds of the other cells no longer matter.
    AddText(text);
  }
}

void ColumnBuilder::AddNumber(double value, std::uint64_t line) {
  if (m_storage == Storage::Number && std::isfinite(value)) {
    m_values.push_back(value);
  } else {
    Add(ShortestNumber(value), line);
  }
}

// All that is not the next number of a column of numbers.
void ColumnBuilder::AddUnusual(const Cell& cell, std::string_view text, std::uint64_t line) {
  if (cell.Kind != CellKind::Missing) m_seen |= Mask(cell.Kind);
  if (cell.Kind == CellKind::Date) ++m_dates;
  if (cell.Kind == CellKind::NoSuchDay) ++m_noDays;
  const bool faulty = cell.Kind == CellKind::CommaNumber || cell.Kind == CellKind::OutOfRange ||
                      cell.Kind == CellKind::NotFinite || cell.Kind == CellKind::NoSuchDay;
  if (faulty && !m_fault) m_fault = CellFault{cell.Kind, line - CountLineBreaks(text), std::string(TrimBlanks(text))};
  Store(cell, text);
}

void ColumnBuilder::Store(const Cell& cell, std::string_view text) {
  if (m_storage == Storage::Undecided) {
    m_storage = cell.Kind == CellKind::Number ? Storage::Number
                : cell.Kind == CellKind::Date ? Storage::Date
                                              : Storage::Text;
  }
  if (m_storage == Storage::Text) {
    AddText(text);
  } else if (cell.Kind == CellKind::Missing || (cell.Kind == CellKind::Number && m_storage == Storage::Number) ||
             (cell.Kind == CellKind::Date && m_storage == Storage::Date)) {
    if (m_storage != Storage::Nothing) m_values.push_back(cell.Value);
  } else if (m_storage != Storage::Nothing) {
    m_storage = Storage::Nothing;
    m_values = {};
  }
}

bool ColumnBuilder::SeenNumbers() const {
  return Seen(CellKind::Number) || Seen(CellKind::CommaNumber) || Seen(CellKind::OutOfRange) ||
         Seen(CellKind::NotFinite);
}

bool ColumnBuilder::SeenDates() const {
  return Seen(CellKind::Date) || Seen(CellKind::NoSuchDay);
}

VariableType ColumnBuilder::Type() const {
  if (Seen(CellKind::Text) || (SeenNumbers() && SeenDates())) return VariableType::Text;
  if (!SeenDates()) return VariableType::Number;
  return m_noDays < m_dates ? VariableType::Date : VariableType::Text;
}

std::optional<CellFault> ColumnBuilder::Fault() const {
  return Type() == VariableType::Text ? std::nullopt : m_fault;
}

bool ColumnBuilder::NeedsRereading() const {
  return Type() == VariableType::Text && m_storage != Storage::Text;
}

void ColumnBuilder::StartRereading() {
  m_storage = Storage::Text;
  m_values = {};
}

void ColumnBuilder::AddText(std::string_view text) {
  const std::string_view trimmed = TrimBlanks(text);
  m_values.push_back(IsMissingText(trimmed) ? kMissingCode : m_codes.CodeOf(trimmed));
}

TableVariable ColumnBuilder::Take(std::string name) {
  TableVariable variable;
  variable.Name = std::move(name);
  variable.Type = Type();
  variable.Values = std::move(m_values);
  if (variable.Type == VariableType::Text) variable.Labels = m_codes.Sort(variable.Values);
  return variable;
}

std::string ShortestNumber(double value) {
  return fmt::format("{}", value);
}

std::uint64_t CountLineBreaks(std::string_view text) {
  std::uint64_t breaks = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool endsLine = text[i] == '\n' || (text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n'));
    if (endsLine) ++breaks;
  }
  return breaks;
}

}  // namespace orv
