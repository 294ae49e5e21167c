// XlsxSheet: one sheet of a workbook as XML.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "standalone/documents/ResultDocument.h"
#include "standalone/documents/XlsxStyles.h"
#include "standalone/documents/ZipArchive.h"

namespace orv {

inline constexpr std::size_t XlsxMostRows = 1048576;
inline constexpr std::size_t XlsxMostColumns = 16384;

// The lines of the titles, a blank row, the row of headings when a column has a title, and the rows of the sheet. The
// headings stay in sight when the rows are scrolled, and so do the row names. Numbers have all their digits; an
// infinite one is a text, since the format has none. A missing cell is empty. Cells of a heading or text that is too
// long for the format are cut (XmlText.h).
class XlsxSheet {
 public:
  // The rows from `firstRow`, counted from 0, as many as a sheet of the format can hold below the titles. `content`
  // must outlive this. REQUIRES: it has at most XlsxMostColumns - 1 columns.
  XlsxSheet(std::vector<std::string> titleLines, const SheetContent& content, std::size_t firstRow = 0);

  std::size_t RowsTaken() const { return m_rowCount; }
  // Row of the headings, counted from 1; 0 when there is none.
  std::size_t HeadingRow() const;
  // The part of the sheet, piece by piece. `isFirst` marks the sheet that is shown when the file is opened. This must
  // outlive the reader.
  PieceReader Read(bool isFirst) const;

 private:
  std::size_t RowsAbove() const;
  std::string Head(bool isFirst) const;
  std::string Columns() const;
  std::string RowsAboveData() const;
  void AppendRow(std::string& xml, std::size_t row) const;
  void AppendText(std::string& xml, std::size_t column, std::size_t sheetRow, std::string_view text, XlsxStyle) const;
  void AppendNumber(std::string& xml, std::size_t column, std::size_t sheetRow, double number, XlsxStyle) const;

  std::vector<std::string> m_titleLines;
  const SheetContent& m_content;
  std::vector<XlsxNumberStyles> m_styles;  // one a column of the content
  std::vector<std::string> m_columnNames;  // of the sheet: those of the row names first
  bool m_hasNames = false;
  bool m_hasHeadings = false;
  std::size_t m_firstRow = 0;
  std::size_t m_rowCount = 0;
};

}  // namespace orv
