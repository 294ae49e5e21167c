#include "standalone/documents/ShownTable.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "standalone/documents/DisplayText.h"
#include "standalone/documents/NumberColumn.h"

namespace orv {
namespace {

// Counts and codes in text form: at least one digit, and nothing but a sign and one decimal point beside the digits.
bool LooksLikeNumber(std::string_view text) {
  if (!text.empty() && text.front() == '-') text.remove_prefix(1);
  const bool hasDigit = text.find_first_of("0123456789") != std::string_view::npos;
  const bool onlyDigits = text.find_first_not_of("0123456789.") == std::string_view::npos;
  return hasDigit && onlyDigits && std::count(text.begin(), text.end(), '.') <= 1;
}

bool AreAllNumbers(const std::vector<std::string>& texts) {
  return std::all_of(texts.begin(), texts.end(),
                     [](const std::string& text) { return text.empty() || LooksLikeNumber(text); });
}

std::string TrimmedPrintable(std::string_view text) {
  std::string printable = PrintableText(text);
  printable.resize(printable.find_last_not_of(' ') + 1);
  return printable;
}

std::vector<std::string> FormatNumbers(const SheetColumn& column) {
  return IsPValueTitle(column.Title()) ? FormatPValueColumn(column.Numbers) : FormatNumberColumn(column.Numbers);
}

TableColumn NumberTableColumn(const SheetColumn& column, const std::string& heading) {
  return {TrimmedPrintable(heading), true, FormatNumbers(column), column.Highlighted};
}

// `wholeRowIsHighlighted`: one element per row.
TableColumn TextTableColumn(const SheetColumn& column,
                            const std::string& heading,
                            const std::vector<bool>& wholeRowIsHighlighted) {
  TableColumn result{TrimmedPrintable(heading), false, FormatNumbers(column), column.Highlighted};
  for (std::size_t row = 0; row < result.Texts.size(); ++row) {
    if (column.KindOfCell(row) == SheetCellKind::Text) result.Texts[row] = TrimmedPrintable(column.Texts[row]);
    result.Bold[row] = result.Bold[row] || wholeRowIsHighlighted[row];
  }
  result.RightAligned = AreAllNumbers(result.Texts);
  return result;
}

// One element per row: the sheet has columns of numbers, and the row's cells in them are all highlighted.
std::vector<bool> RowsHighlightedThroughout(const SheetContent& sheet) {
  std::vector<bool> rows(sheet.RowNames.size(), false);
  for (std::size_t row = 0; row < rows.size(); ++row) {
    bool any = false;
    bool all = true;
    for (const SheetColumn& column : sheet.Columns) {
      if (column.IsText) continue;
      any = true;
      all = all && column.Highlighted[row];
    }
    rows[row] = any && all;
  }
  return rows;
}

}  // namespace

bool ShownTable::HasBold() const {
  return std::any_of(Columns.begin(), Columns.end(), [](const TableColumn& column) {
    return std::find(column.Bold.begin(), column.Bold.end(), true) != column.Bold.end();
  });
}

ShownTable MakeShownTable(const SheetContent& sheet) {
  ShownTable table;
  const std::vector<bool> highlighted = RowsHighlightedThroughout(sheet);
  table.HasTitles = std::any_of(sheet.Columns.begin(), sheet.Columns.end(),
                                [](const SheetColumn& column) { return !column.Title().empty(); });
  TableColumn names{table.HasTitles ? TrimmedPrintable(sheet.ShortName) : "", false, {}, highlighted};
  for (const std::string& name : sheet.RowNames) names.Texts.push_back(TrimmedPrintable(name));
  const bool hasNames =
      std::any_of(names.Texts.begin(), names.Texts.end(), [](const std::string& name) { return !name.empty(); });
  names.RightAligned = hasNames && AreAllNumbers(names.Texts);
  table.HasRowNames = hasNames;
  if (hasNames) table.Columns.push_back(std::move(names));

  const auto firstNumber = std::find_if(sheet.Columns.begin(), sheet.Columns.end(),
                                        [](const SheetColumn& column) { return !column.IsText; });
  const bool hasNumbers = firstNumber != sheet.Columns.end();
  const auto leadingTexts = static_cast<std::size_t>(firstNumber - sheet.Columns.begin());
  table.Repeated = (hasNames ? 1 : 0) + (hasNumbers ? leadingTexts : 0);
  // A step or stratum in the first column stands for the row names.
  if (table.Repeated == 0 && sheet.Columns.size() > 1) table.Repeated = 1;

  for (std::size_t place = 0; place < sheet.Columns.size(); ++place) {
    const SheetColumn& column = sheet.Columns[place];
    const std::string heading = sheet.Heading(place);
    table.Columns.push_back(column.IsText ? TextTableColumn(column, heading, highlighted)
                                          : NumberTableColumn(column, heading));
  }
  return table;
}

std::vector<std::string> TitleLines(const std::vector<std::string>& titles) {
  std::vector<std::string> lines;
  for (const std::string& title : titles) {
    for (std::string& line : PrintableLines(title)) {
      if (!line.empty()) lines.push_back(std::move(line));
    }
  }
  return lines;
}

}  // namespace orv
