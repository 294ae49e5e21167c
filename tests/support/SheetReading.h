// Looking up cells of the result documents that a host keeps.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "standalone/documents/ResultDocument.h"
#include "support/TestHost.h"

namespace orv::testing {

// The sheet of a document, with cells addressed by row and column from 0, or by their names.
class SheetView {
 public:
  explicit SheetView(const ResultDocument& document)
      : m_document(document), m_sheet(std::get<SheetContent>(document.Content)) {}

  const std::vector<std::string>& Titles() const { return m_document.Titles; }
  const std::string& ShortName() const { return m_sheet.ShortName; }
  const std::vector<std::string>& RowNames() const { return m_sheet.RowNames; }
  std::string Property(const std::string& name) const {
    const auto found = m_document.Properties.find(name);
    return found == m_document.Properties.end() ? "(none)" : found->second;
  }
  int Rows() const { return static_cast<int>(m_sheet.RowNames.size()); }
  int Columns() const { return static_cast<int>(m_sheet.Columns.size()); }
  std::vector<std::string> ColumnNames() const {
    std::vector<std::string> names;
    for (const SheetColumn& column : m_sheet.Columns) names.push_back(column.Name);
    return names;
  }
  int ColumnOf(const std::string& name) const {
    const std::vector<std::string> names = ColumnNames();
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) ADD_FAILURE() << "no column " << name;
    return static_cast<int>(found - names.begin());
  }
  int RowOf(const std::string& name) const {
    const auto found = std::find(RowNames().begin(), RowNames().end(), name);
    if (found == RowNames().end()) ADD_FAILURE() << "no row " << name;
    return static_cast<int>(found - RowNames().begin());
  }
  // Nothing for a missing cell.
  std::optional<double> Number(int row, int column) const {
    const double value = m_sheet.Columns.at(static_cast<std::size_t>(column)).Numbers.at(static_cast<std::size_t>(row));
    return std::isnan(value) ? std::nullopt : std::optional<double>(value);
  }
  std::optional<double> Number(int row, const std::string& column) const { return Number(row, ColumnOf(column)); }
  // The value of a cell that must not be missing.
  double Value(int row, const std::string& column) const {
    const std::optional<double> value = Number(row, column);
    if (!value) ADD_FAILURE() << "the cell " << row << ", " << column << " is missing";
    return value.value_or(NAN);
  }
  std::string Text(int row, int column) const {
    const SheetColumn& cells = m_sheet.Columns.at(static_cast<std::size_t>(column));
    return cells.IsText ? cells.Texts.at(static_cast<std::size_t>(row)) : "(no text column)";
  }
  std::string Text(int row, const std::string& column) const { return Text(row, ColumnOf(column)); }
  std::vector<std::string> Texts(int column) const {
    std::vector<std::string> texts;
    for (int row = 0; row < Rows(); ++row) texts.push_back(Text(row, column));
    return texts;
  }
  bool IsHighlighted(int row, int column) const {
    return m_sheet.Columns.at(static_cast<std::size_t>(column)).Highlighted.at(static_cast<std::size_t>(row));
  }

 private:
  const ResultDocument& m_document;
  const SheetContent& m_sheet;
};

// The document made last. There must be one.
inline SheetView LastSheet(const TestHost& host) {
  return SheetView(host.Documents()[host.Documents().Size() - 1]);
}

}  // namespace orv::testing
