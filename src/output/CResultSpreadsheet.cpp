#include "output/CResultSpreadsheet.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <new>

#include "host/FormatText.h"

namespace orv {

namespace {

constexpr std::size_t kLargestTable = std::size_t{1} << 30;  // bytes of cells
constexpr double kMissing = std::bit_cast<double>(~std::uint64_t{0});

// The longest start of a text that fits and does not end within a UTF-8 character.
std::string_view CutText(std::string_view text, std::size_t width) {
  if (text.size() <= width) return text;
  const auto isContinuation = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; };
  while (width > 0 && isContinuation(text[width])) --width;
  return text.substr(0, width);
}

template <typename Field>
void FillField(Field first, std::size_t width, std::string_view text) {
  const std::string_view cut = CutText(text, width);
  std::fill_n(std::copy(cut.begin(), cut.end(), first), width - cut.size(), '\0');
}

void WriteCount(unsigned char* at, int count) {
  const auto value = static_cast<std::uint16_t>(count);
  std::memcpy(at, &value, sizeof value);
}

}  // namespace

CResultSpreadsheet::CResultSpreadsheet(Host& host, int rows, int columns) : m_host(host) {
  if (rows < 1 || columns < 1) return;
  const std::size_t cells = static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
  if (cells >= kLargestTable / sizeof(double)) return;
  RowNameWidth = std::clamp(host.DefaultRowNameWidth(), kNarrowestRowName, kWidestRowName);
  try {
    Cells.assign(cells, kMissing);
    TextCells.assign(cells * kColumnNameWidth, '\0');
    ColumnIsText.assign(static_cast<std::size_t>(columns), 0);
    ColumnNames.assign(static_cast<std::size_t>(columns) * kColumnNameWidth, '\0');
    ColumnLongNames = ColumnNames;
    RowNames.assign(static_cast<std::size_t>(rows) * static_cast<std::size_t>(RowNameWidth), '\0');
    HighlightBits.assign(kHighlightHead + (cells + 7) / 8, 0);
  } catch (const std::bad_alloc&) {
    Clear();
    return;
  }
  RowCount = rows;
  ColumnCount = columns;
  WriteCount(&HighlightBits[12], rows);
  WriteCount(&HighlightBits[14], columns);
}

void CResultSpreadsheet::Clear() {
  RowCount = 0;
  ColumnCount = 0;
  Cells = {};
  TextCells = {};
  ColumnIsText = {};
  ColumnNames = {};
  ColumnLongNames = {};
  RowNames = {};
  HighlightBits = {};
}

bool CResultSpreadsheet::Holds(int row, int column) const {
  return row >= 0 && row < RowCount && column >= 0 && column < ColumnCount;
}

std::size_t CResultSpreadsheet::CellIndex(int row, int column) const {
  return static_cast<std::size_t>(column) * static_cast<std::size_t>(RowCount) + static_cast<std::size_t>(row);
}

void CResultSpreadsheet::SetField(std::vector<char>& fields, std::size_t index, int width, const std::string& text) {
  const auto bytes = static_cast<std::size_t>(width);
  const auto field = fields.begin() + static_cast<std::ptrdiff_t>(index * bytes);
  FillField(field, bytes, text.size() > bytes ? m_host.Get8CharHash(text) : text);
}

void CResultSpreadsheet::SetNumber(int row, int column, double value) {
  if (Holds(row, column)) Cells[CellIndex(row, column)] = value;
}

void CResultSpreadsheet::SetText(int row, int column, const std::string& text) {
  if (!Holds(row, column)) return;
  SetField(TextCells, CellIndex(row, column), ColumnNameWidth, text);
  ColumnIsText[static_cast<std::size_t>(column)] = kTextColumn;
}

void CResultSpreadsheet::SetIntegerText(int row, int column, long long value) {
  const std::string digits = FormatInteger(value);
  const auto width = static_cast<std::size_t>(ColumnNameWidth);
  SetText(row, column, digits.size() > width ? std::string(width, '#') : digits);
}

void CResultSpreadsheet::SetColumnName(int column, const std::string& text) {
  if (Holds(0, column)) SetField(ColumnNames, static_cast<std::size_t>(column), ColumnNameWidth, text);
}

void CResultSpreadsheet::SetColumnLongName(int column, const std::string& text) {
  if (Holds(0, column)) SetField(ColumnLongNames, static_cast<std::size_t>(column), ColumnNameWidth, text);
}

void CResultSpreadsheet::SetRowName(int row, const std::string& text) {
  if (Holds(row, 0)) SetField(RowNames, static_cast<std::size_t>(row), RowNameWidth, text);
}

void CResultSpreadsheet::SetTitle(std::array<char, kTitleWidth>& title, std::string_view text) {
  FillField(title.begin(), title.size(), text);
}

void CResultSpreadsheet::SetShortName(std::string_view text) {
  FillField(ShortName.begin(), ShortName.size(), text);
}

void CResultSpreadsheet::HighlightCell(int row, int column) {
  if (!Holds(row, column)) return;
  const std::size_t bit = CellIndex(row, column);
  HighlightBits[kHighlightHead + bit / 8] |= static_cast<unsigned char>(1U << (bit % 8));
}

void CResultSpreadsheet::HighlightColumn(int column) {
  for (int row = 0; row < RowCount; ++row) HighlightCell(row, column);
}

SheetArguments CResultSpreadsheet::Arguments() const {
  SheetArguments sheet;
  sheet.RowCount = RowCount;
  sheet.ColumnCount = ColumnCount;
  sheet.RowNameWidth = RowNameWidth;
  sheet.ColumnNameWidth = ColumnNameWidth;
  sheet.SheetStyle = SheetStyle;
  sheet.TitleStyle = TitleStyle;
  sheet.Cells = Cells.data();
  sheet.TextCells = TextCells.data();
  sheet.ColumnIsText = ColumnIsText.data();
  sheet.ColumnNames = ColumnNames.data();
  sheet.ColumnLongNames = ColumnLongNames.data();
  sheet.RowNames = RowNames.data();
  sheet.HighlightBits = HighlightBits.data();
  sheet.Title1 = Title1.data();
  sheet.Title2 = Title2.data();
  sheet.Title3 = Title3.data();
  sheet.ShortName = ShortName.data();
  return sheet;
}

void CResultSpreadsheet::Show() {
  if (IsEmpty() || m_host.OutputSwitchedOff()) return;
  m_host.looka4(Arguments());
  Clear();
}

HostDocument* CResultSpreadsheet::ShowInDialog(void* parent) {
  if (IsEmpty() || m_host.OutputSwitchedOff()) return nullptr;
  HostDocument* document = m_host.looka4dlg(Arguments(), parent);
  Clear();
  return document;
}

HostDocument* CResultSpreadsheet::ShowAndKeep() {
  if (IsEmpty() || m_host.OutputSwitchedOff()) return nullptr;
  Show();
  return m_host.LastDocument();
}

}  // namespace orv
