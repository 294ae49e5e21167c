#include "standalone/documents/DocumentFromSheet.h"

#include <cstddef>
#include <cstring>
#include <limits>
#include <utility>

#include "standalone/documents/Utf8.h"

namespace orv {
namespace {

using ExpandName = std::function<std::string(const std::string&)>;

constexpr unsigned char TextColumnMark = 156;
constexpr std::size_t HighlightHeadSize = 16;  // bytes before the first bit
constexpr int ShortNameWidth = 12;

// The text of one field. A field that is full may end within a character; such a fragment is left out.
std::string FieldText(const char* field, int width) {
  const auto size = static_cast<std::size_t>(width);
  const void* const terminator = std::memchr(field, '\0', size);
  std::string text = terminator == nullptr ? std::string(field, size) : std::string(field);
  if (text.size() == size) DropIncompleteCharacter(text);
  return text;
}

// Field number `index` of an array of fields.
std::string FieldText(const char* fields, int width, std::size_t index) {
  if (fields == nullptr || width < 1) return {};
  return FieldText(fields + index * static_cast<std::size_t>(width), width);
}

bool IsHighlighted(const unsigned char* highlightBits, std::size_t cell) {
  if (highlightBits == nullptr) return false;
  const unsigned byte = highlightBits[HighlightHeadSize + cell / 8];
  return ((byte >> (cell % 8)) & 1U) != 0;
}

SheetColumn ColumnFromSheet(const SheetArguments& sheet, std::size_t column, const ExpandName& expandName) {
  const auto rowCount = static_cast<std::size_t>(sheet.RowCount);
  SheetColumn result;
  result.Name = expandName(FieldText(sheet.ColumnNames, sheet.ColumnNameWidth, column));
  result.LongName = expandName(FieldText(sheet.ColumnLongNames, sheet.ColumnNameWidth, column));
  result.IsText = sheet.ColumnIsText != nullptr && sheet.ColumnIsText[column] == TextColumnMark;
  result.Numbers.assign(rowCount, std::numeric_limits<double>::quiet_NaN());
  result.Highlighted.assign(rowCount, false);
  if (result.IsText) result.Texts.resize(rowCount);
  for (std::size_t row = 0; row < rowCount; ++row) {
    const std::size_t cell = column * rowCount + row;
    // Eight bytes 0xFF are a NaN, so the module's missing cells need no translation.
    if (sheet.Cells != nullptr) result.Numbers[row] = sheet.Cells[cell];
    if (result.IsText) result.Texts[row] = expandName(FieldText(sheet.TextCells, sheet.ColumnNameWidth, cell));
    result.Highlighted[row] = IsHighlighted(sheet.HighlightBits, cell);
  }
  return result;
}

}  // namespace

ResultDocument DocumentFromSheet(const SheetArguments& sheet, const ExpandName& expandName) {
  ResultDocument document;
  for (const char* title : {sheet.Title1, sheet.Title2, sheet.Title3}) {
    std::string text = expandName(FieldText(title, sheet.TitleWidth, 0));
    if (!text.empty()) document.Titles.push_back(std::move(text));
  }
  SheetContent content;
  content.ShortName = expandName(FieldText(sheet.ShortName, ShortNameWidth, 0));
  if (sheet.RowCount > 0 && sheet.ColumnCount > 0) {
    for (std::size_t row = 0; row < static_cast<std::size_t>(sheet.RowCount); ++row) {
      content.RowNames.push_back(expandName(FieldText(sheet.RowNames, sheet.RowNameWidth, row)));
    }
    for (std::size_t column = 0; column < static_cast<std::size_t>(sheet.ColumnCount); ++column) {
      content.Columns.push_back(ColumnFromSheet(sheet, column, expandName));
    }
  }
  document.Content = std::move(content);
  return document;
}

}  // namespace orv
