#include "standalone/documents/TextWriter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "standalone/documents/DisplayText.h"
#include "standalone/documents/NumberColumn.h"
#include "standalone/documents/TableLayout.h"

namespace orv {
namespace {

constexpr int MinWidth = 40;
constexpr std::string_view BoldOn = "\x1b[1m";
constexpr std::string_view BoldOff = "\x1b[0m";

void AppendBold(std::string& out, std::string_view text, bool bold) {
  if (!bold || text.empty()) {
    out += text;
    return;
  }
  out += BoldOn;
  out += text;
  out += BoldOff;
}

void AppendRule(std::string& out, char mark, int width) {
  out.append(static_cast<std::size_t>(std::max(width, 0)), mark);
  out += '\n';
}

// The first line of the titles is underlined; the other lines follow as they are.
void AppendTitles(std::string& out, const std::vector<std::string>& titles, const WriteOptions& options) {
  bool first = true;
  for (const std::string& title : titles) {
    for (const std::string& line : PrintableLines(title)) {
      AppendBold(out, line, options.Bold && first);
      out += '\n';
      if (first) AppendRule(out, '=', DisplayWidth(line));
      first = false;
    }
  }
  if (!first) out += '\n';
}

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
    if (column.KindOfCell(row) == CellKind::Text) result.Texts[row] = TrimmedPrintable(column.Texts[row]);
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

// A table as it will be shown. The first `Repeated` columns tell the rows apart.
struct Table {
  std::vector<TableColumn> Columns;
  std::size_t Repeated = 0;
};

Table MakeTable(const SheetContent& sheet) {
  Table table;
  const std::vector<bool> highlighted = RowsHighlightedThroughout(sheet);
  const bool hasTitles = std::any_of(sheet.Columns.begin(), sheet.Columns.end(),
                                     [](const SheetColumn& column) { return !column.Title().empty(); });
  TableColumn names{hasTitles ? TrimmedPrintable(sheet.ShortName) : "", false, {}, highlighted};
  for (const std::string& name : sheet.RowNames) names.Texts.push_back(TrimmedPrintable(name));
  const bool hasNames =
      std::any_of(names.Texts.begin(), names.Texts.end(), [](const std::string& name) { return !name.empty(); });
  names.RightAligned = hasNames && AreAllNumbers(names.Texts);
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

// Builds one line. Blanks are held back until a text follows, so that no line ends in blanks.
class LineBuilder {
 public:
  explicit LineBuilder(std::string& out) : m_out(out) {}

  // Adds a text to a field of the given width. With `bold`, the text alone is bold, not the blanks around it.
  void AddField(std::string_view text, int width, bool rightAligned, bool bold) {
    const int padding = std::max(0, width - DisplayWidth(text));
    if (rightAligned) m_blanks += padding;
    if (!text.empty()) {
      m_out.append(static_cast<std::size_t>(m_blanks), ' ');
      m_blanks = 0;
      AppendBold(m_out, text, bold);
    }
    if (!rightAligned) m_blanks += padding;
  }
  void AddGap() { m_blanks += ColumnGap; }
  void Finish() {
    m_out += '\n';
    m_blanks = 0;
  }

 private:
  std::string& m_out;
  int m_blanks = 0;
};

// The columns of one block, in the order in which they stand.
std::vector<std::size_t> ColumnsOfBlock(std::size_t repeated, const ColumnBlock& block) {
  std::vector<std::size_t> columns;
  for (std::size_t column = 0; column < repeated; ++column) columns.push_back(column);
  for (std::size_t column = block.First; column <= block.Last; ++column) columns.push_back(column);
  return columns;
}

void AppendBlock(std::string& out,
                 const std::vector<TableColumn>& columns,
                 const std::vector<ColumnHeading>& headings,
                 const std::vector<std::size_t>& shown,
                 const WriteOptions& options) {
  std::size_t headingLines = 0;
  int width = -ColumnGap;
  for (const std::size_t column : shown) {
    headingLines = std::max(headingLines, headings[column].Lines.size());
    width += ColumnGap + headings[column].Width;
  }
  LineBuilder line(out);
  const auto appendLine = [&](const auto& textOf, const auto& isBold) {
    for (const std::size_t column : shown) {
      if (column != shown.front()) line.AddGap();
      line.AddField(textOf(column), headings[column].Width, columns[column].RightAligned, isBold(column));
    }
    line.Finish();
  };
  for (std::size_t i = 0; i < headingLines; ++i) {
    // Headings stand on the line below them: a short one begins lower.
    const auto textOf = [&](std::size_t column) -> std::string_view {
      const std::vector<std::string>& lines = headings[column].Lines;
      const std::size_t missing = headingLines - lines.size();
      return i < missing ? std::string_view{} : std::string_view{lines[i - missing]};
    };
    appendLine(textOf, [](std::size_t) { return false; });
  }
  if (headingLines > 0) AppendRule(out, '-', width);
  const std::size_t rowCount = columns.front().Texts.size();
  for (std::size_t row = 0; row < rowCount; ++row) {
    appendLine([&](std::size_t column) -> std::string_view { return columns[column].Texts[row]; },
               [&](std::size_t column) { return options.Bold && columns[column].Bold[row]; });
  }
}

void AppendSheet(std::string& out, const SheetContent& sheet, const WriteOptions& options) {
  Table table = MakeTable(sheet);
  if (table.Columns.empty()) return;
  std::vector<ColumnHeading> headings;
  headings.reserve(table.Columns.size());
  for (const TableColumn& column : table.Columns) headings.push_back(MakeHeading(column));

  const int width = std::max(options.Width, MinWidth);
  // Long texts must leave room for what they describe: where they would not, the first column alone is repeated.
  if (table.Repeated > 1 && WidthOfColumns(headings, 0, table.Repeated - 1) > width * 2 / 3) table.Repeated = 1;
  const std::vector<ColumnBlock> blocks = SplitIntoBlocks(table.Columns, headings, table.Repeated, width);
  for (const ColumnBlock& block : blocks) {
    if (&block != &blocks.front()) out += '\n';
    AppendBlock(out, table.Columns, headings, ColumnsOfBlock(table.Repeated, block), options);
  }
}

// Program text keeps its line ends and tabs.
void AppendText(std::string& out, std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\n\t"), text.size());
    out += PrintableText(text.substr(0, end));
    if (end < text.size()) out += text[end];
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  if (!out.empty() && out.back() != '\n') out += '\n';
}

// The smallest and the largest of the numbers; NaN when there is none.
std::pair<double, double> RangeOf(const std::vector<double>& numbers) {
  std::pair<double, double> range{std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::quiet_NaN()};
  for (const double number : numbers) {
    range.first = std::fmin(range.first, number);  // fmin and fmax pass over NaN
    range.second = std::fmax(range.second, number);
  }
  return range;
}

SheetContent RangesOfSeries(const ChartContent& chart) {
  SheetContent sheet;
  sheet.ShortName = "Series";
  sheet.Columns.resize(5);
  const std::string titles[] = {"Points", chart.XTitle + " from", chart.XTitle + " to", chart.YTitle + " from",
                                chart.YTitle + " to"};
  for (std::size_t column = 0; column < sheet.Columns.size(); ++column) sheet.Columns[column].Name = titles[column];
  for (const ChartSeries& series : chart.Series) {
    sheet.RowNames.push_back(series.Name);
    const auto [xFrom, xTo] = RangeOf(series.X);
    const auto [yFrom, yTo] = RangeOf(series.Y);
    const double cells[] = {static_cast<double>(series.X.size()), xFrom, xTo, yFrom, yTo};
    for (std::size_t column = 0; column < sheet.Columns.size(); ++column) {
      sheet.Columns[column].Numbers.push_back(cells[column]);
      sheet.Columns[column].Highlighted.push_back(false);
    }
  }
  return sheet;
}

}  // namespace

std::string WriteText(const RunReport& /*report*/, const ResultDocuments& documents, const WriteOptions& options) {
  std::string out;
  for (const ResultDocument& document : documents) {
    if (!out.empty()) out += '\n';
    AppendTitles(out, document.Titles, options);
    if (const auto* sheet = std::get_if<SheetContent>(&document.Content)) {
      AppendSheet(out, *sheet, options);
    } else if (const auto* text = std::get_if<TextContent>(&document.Content)) {
      AppendText(out, text->Text);
    } else {
      AppendSheet(out, RangesOfSeries(std::get<ChartContent>(document.Content)), options);
    }
  }
  return out;
}

}  // namespace orv
