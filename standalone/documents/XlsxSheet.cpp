#include "standalone/documents/XlsxSheet.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "standalone/documents/DisplayText.h"
#include "standalone/documents/JsonText.h"
#include "standalone/documents/XlsxNames.h"
#include "standalone/documents/XmlText.h"

namespace orv {
namespace {

constexpr std::size_t PieceSize = 1U << 16U;
constexpr std::size_t MeasuredRows = 1000;  // the width of a column is found from so many
constexpr int NumberWidth = 13;
constexpr int NarrowestText = 8;
constexpr int WidestText = 40;

bool HasAnyName(const std::vector<std::string>& names) {
  return std::any_of(names.begin(), names.end(), [](const std::string& name) { return !name.empty(); });
}

int WidthOfTexts(const std::vector<std::string>& texts, const std::string& heading) {
  int width = std::max(NarrowestText, DisplayWidth(heading));
  const std::size_t count = std::min(texts.size(), MeasuredRows);
  for (std::size_t row = 0; row < count; ++row) width = std::max(width, DisplayWidth(texts[row]));
  return std::min(width, WidestText);
}

std::string StyleAttribute(XlsxStyle style) {
  return style == XlsxStyle::Plain ? std::string() : fmt::format(" s=\"{}\"", static_cast<int>(style));
}

}  // namespace

XlsxSheet::XlsxSheet(std::vector<std::string> titleLines, const SheetContent& content, std::size_t firstRow)
    : m_titleLines(std::move(titleLines)),
      m_content(content),
      m_hasNames(HasAnyName(content.RowNames)),
      m_hasHeadings(std::any_of(content.Columns.begin(),
                                content.Columns.end(),
                                [](const SheetColumn& column) { return !column.Title().empty(); })),
      m_firstRow(firstRow) {
  for (const SheetColumn& column : content.Columns) m_styles.emplace_back(column);
  for (std::size_t k = 0; k < content.Columns.size() + (m_hasNames ? 1 : 0); ++k) {
    m_columnNames.push_back(XlsxColumnName(k));
  }
  m_rowCount = std::min(content.RowNames.size() - firstRow, XlsxMostRows - RowsAbove());
}

std::size_t XlsxSheet::RowsAbove() const {
  const std::size_t titleRows = m_titleLines.empty() ? 0 : m_titleLines.size() + 1;
  return titleRows + (m_hasHeadings ? 1 : 0);
}

std::size_t XlsxSheet::HeadingRow() const {
  return m_hasHeadings ? RowsAbove() : 0;
}

PieceReader XlsxSheet::Read(bool isFirst) const {
  return [this, isFirst, row = std::size_t{0}, hasHead = false, hasEnd = false]() mutable {
    std::string xml;
    if (!std::exchange(hasHead, true)) xml = Head(isFirst) + RowsAboveData();
    while (row < m_rowCount && xml.size() < PieceSize) AppendRow(xml, row++);
    if (row == m_rowCount && !std::exchange(hasEnd, true)) {
      xml +=
          "</sheetData>\n<pageMargins left=\"0.7\" right=\"0.7\" top=\"0.75\" bottom=\"0.75\" header=\"0.3\" "
          "footer=\"0.3\"/><pageSetup orientation=\"landscape\" fitToHeight=\"0\"/></worksheet>\n";
    }
    return xml;
  };
}

std::string XlsxSheet::Head(bool isFirst) const {
  std::string pane;
  if (m_hasHeadings) {
    const char* const active = m_hasNames ? "bottomRight" : "bottomLeft";
    pane = fmt::format(
        "<pane{} ySplit=\"{}\" topLeftCell=\"{}{}\" activePane=\"{}\" state=\"frozen\"/>"
        "<selection pane=\"{}\"/>",
        m_hasNames ? " xSplit=\"1\"" : "", RowsAbove(), m_hasNames ? "B" : "A", RowsAbove() + 1, active, active);
  }
  return fmt::format(
      "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
      "<worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
      "<sheetPr><pageSetUpPr fitToPage=\"1\"/></sheetPr>"
      "<sheetViews><sheetView{} workbookViewId=\"0\">{}</sheetView></sheetViews>"
      "<sheetFormatPr defaultRowHeight=\"15\"/>{}<sheetData>\n",
      isFirst ? " tabSelected=\"1\"" : "", pane, Columns());
}

std::string XlsxSheet::Columns() const {
  if (m_columnNames.empty()) return {};
  std::string xml = "<cols>";
  std::size_t number = 0;
  const auto append = [&](int width) {
    ++number;
    xml += fmt::format("<col min=\"{}\" max=\"{}\" width=\"{}\" customWidth=\"1\"/>", number, number, width + 2);
  };
  if (m_hasNames) append(WidthOfTexts(m_content.RowNames, m_hasHeadings ? m_content.ShortName : ""));
  for (const SheetColumn& column : m_content.Columns) {
    append(column.IsText ? WidthOfTexts(column.Texts, column.Title()) : NumberWidth);
  }
  return xml + "</cols>";
}

std::string XlsxSheet::RowsAboveData() const {
  std::string xml;
  for (std::size_t k = 0; k < m_titleLines.size(); ++k) {
    xml += fmt::format(
        "<row r=\"{}\"><c r=\"A{}\"{} t=\"inlineStr\"><is><t xml:space=\"preserve\">{}</t></is></c></row>\n", k + 1,
        k + 1, StyleAttribute(k == 0 ? XlsxStyle::Title : XlsxStyle::Plain), XmlCellText(m_titleLines[k]));
  }
  if (!m_hasHeadings) return xml;
  xml += fmt::format("<row r=\"{}\">", HeadingRow());
  if (m_hasNames) AppendText(xml, 0, HeadingRow(), m_content.ShortName, XlsxStyle::TextHeading);
  for (std::size_t k = 0; k < m_content.Columns.size(); ++k) {
    AppendText(xml, k + (m_hasNames ? 1 : 0), HeadingRow(), m_content.Heading(k),
               m_content.Columns[k].IsText ? XlsxStyle::TextHeading : XlsxStyle::NumberHeading);
  }
  return xml + "</row>\n";
}

void XlsxSheet::AppendRow(std::string& xml, std::size_t row) const {
  const std::size_t contentRow = m_firstRow + row;
  const std::size_t sheetRow = RowsAbove() + row + 1;
  bool hasNumbers = false;
  bool isHighlighted = true;
  for (const SheetColumn& column : m_content.Columns) {
    hasNumbers = hasNumbers || !column.IsText;
    isHighlighted = isHighlighted && (column.IsText || column.Highlighted[contentRow]);
  }
  const bool isBoldRow = hasNumbers && isHighlighted;
  xml += fmt::format("<row r=\"{}\">", sheetRow);
  std::size_t place = 0;
  if (m_hasNames) {
    const XlsxStyle style = isBoldRow ? XlsxStyle::Bold : XlsxStyle::Plain;
    if (!m_content.RowNames[contentRow].empty()) AppendText(xml, 0, sheetRow, m_content.RowNames[contentRow], style);
    ++place;
  }
  for (std::size_t k = 0; k < m_content.Columns.size(); ++k, ++place) {
    const SheetColumn& column = m_content.Columns[k];
    const bool isBold = column.Highlighted[contentRow] || (column.IsText && isBoldRow);
    switch (column.KindOfCell(contentRow)) {
      case SheetCellKind::Text:
        AppendText(xml, place, sheetRow, column.Texts[contentRow], isBold ? XlsxStyle::Bold : XlsxStyle::Plain);
        break;
      case SheetCellKind::Number:
        AppendNumber(xml, place, sheetRow, column.Numbers[contentRow],
                     m_styles[k].Of(column.Numbers[contentRow], isBold));
        break;
      case SheetCellKind::Missing:
        break;
    }
  }
  xml += "</row>\n";
}

void XlsxSheet::AppendText(std::string& xml,
                           std::size_t column,
                           std::size_t sheetRow,
                           std::string_view text,
                           XlsxStyle style) const {
  if (text.empty()) {
    fmt::format_to(std::back_inserter(xml), "<c r=\"{}{}\"{}/>", m_columnNames[column], sheetRow,
                   StyleAttribute(style));
    return;
  }
  fmt::format_to(std::back_inserter(xml),
                 "<c r=\"{}{}\"{} t=\"inlineStr\"><is><t xml:space=\"preserve\">{}</t></is></c>", m_columnNames[column],
                 sheetRow, StyleAttribute(style), XmlCellText(text));
}

void XlsxSheet::AppendNumber(std::string& xml,
                             std::size_t column,
                             std::size_t sheetRow,
                             double number,
                             XlsxStyle style) const {
  if (std::isinf(number)) return AppendText(xml, column, sheetRow, number < 0 ? "-inf" : "inf", XlsxStyle::Plain);
  fmt::format_to(std::back_inserter(xml), "<c r=\"{}{}\"{}><v>{}</v></c>", m_columnNames[column], sheetRow,
                 StyleAttribute(style), ShortestNumberText(number));
}

}  // namespace orv
