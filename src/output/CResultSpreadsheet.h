// CResultSpreadsheet: collects titles, names and cells of a result table and hands them to the host in one call.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "host/Host.h"

namespace orv {

// A table lives for one output call: Show consumes it. Rows and columns count from 0. A cell never written is missing.
// Texts longer than their field are replaced by the host's 8-character key, which the host can turn back. A table with
// less than one row or column, or too large, is empty: nothing can be written to it and Show does nothing.
class CResultSpreadsheet {
 public:
  static constexpr int kColumnNameWidth = 8;
  static constexpr int kTitleWidth = 80;
  static constexpr int kShortNameWidth = 12;
  static constexpr int kNarrowestRowName = 8;
  static constexpr int kWidestRowName = 40;
  static constexpr unsigned char kTextColumn = 156;  // mark of a column that holds texts
  static constexpr std::size_t kHighlightHead = 16;  // bytes before the highlight bits

  CResultSpreadsheet(Host& host, int rows, int columns);

  bool IsEmpty() const { return RowCount == 0; }

  void SetNumber(int row, int column, double value);
  void SetText(int row, int column, const std::string& text);
  // The number in decimal digits; a row of "#" when it does not fit the field.
  void SetIntegerText(int row, int column, long long value);
  void SetColumnName(int column, const std::string& text);
  void SetColumnLongName(int column, const std::string& text);
  void SetRowName(int row, const std::string& text);
  // At most 80 bytes; a longer title is cut between characters.
  void SetTitle1(std::string_view text) { SetTitle(Title1, text); }
  void SetTitle2(std::string_view text) { SetTitle(Title2, text); }
  void SetTitle3(std::string_view text) { SetTitle(Title3, text); }
  // The name of the corner cell, at most 12 bytes.
  void SetShortName(std::string_view text);
  void HighlightCell(int row, int column);
  void HighlightColumn(int column);

  // Hands the table to the host and empties it. Does nothing when the host has switched output off.
  void Show();
  // The same for a table that the user edits. Returns the host's document, null when there is none.
  HostDocument* ShowInDialog(void* parent);
  // Show, and the document that the host made of it, null when it made none.
  HostDocument* ShowAndKeep();

  int RowCount = 0;
  int ColumnCount = 0;
  int RowNameWidth = 0;
  int ColumnNameWidth = kColumnNameWidth;
  int SheetStyle = 9217;
  int TitleStyle = 62;
  std::vector<double> Cells;  // column * RowCount + row
  std::vector<char> TextCells;
  std::vector<unsigned char> ColumnIsText;
  std::vector<char> ColumnNames;
  std::vector<char> ColumnLongNames;
  std::vector<char> RowNames;
  std::vector<unsigned char> HighlightBits;
  std::array<char, kTitleWidth> Title1{};
  std::array<char, kTitleWidth> Title2{};
  std::array<char, kTitleWidth> Title3{};
  std::array<char, kShortNameWidth> ShortName{};

 private:
  bool Holds(int row, int column) const;
  std::size_t CellIndex(int row, int column) const;
  // Writes a text into field `index` of an array of fields.
  void SetField(std::vector<char>& fields, std::size_t index, int width, const std::string& text);
  static void SetTitle(std::array<char, kTitleWidth>& title, std::string_view text);
  SheetArguments Arguments() const;
  void Clear();

  Host& m_host;
};

}  // namespace orv
