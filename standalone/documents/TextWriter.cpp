#include "standalone/documents/TextWriter.h"

#include <algorithm>

#include "standalone/documents/ChartSheets.h"
#include "standalone/documents/DisplayText.h"
#include "standalone/documents/ShownTable.h"
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
  ShownTable table = MakeShownTable(sheet);
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

}  // namespace

std::string WriteText(const RunReport& /*report*/, const ResultDocuments& documents, const WriteOptions& options) {
  std::string out;
  for (const ResultDocument& document : documents) {
    if (!out.empty()) out += '\n';
    AppendTitles(out, document.Titles, options);
    if (const auto* sheet = std::get_if<SheetContent>(&document.Content)) {
      AppendSheet(out, *sheet, options);
    } else if (const auto* text = std::get_if<TextContent>(&document.Content)) {
      out += PrintableProgramText(text->Text);
    } else {
      AppendSheet(out, RangesOfSeries(std::get<ChartContent>(document.Content)), options);
    }
  }
  return out;
}

}  // namespace orv
