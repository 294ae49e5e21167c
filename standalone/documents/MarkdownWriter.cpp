#include "standalone/documents/MarkdownWriter.h"

#include <algorithm>
#include <string_view>
#include <variant>
#include <vector>

#include "standalone/documents/ChartSheets.h"
#include "standalone/documents/DisplayText.h"
#include "standalone/documents/MarkdownText.h"
#include "standalone/documents/RunFacts.h"
#include "standalone/documents/ShownTable.h"

namespace orv {
namespace {

constexpr int NarrowestColumn = 3;  // what the line below the headings needs
constexpr int WidestPadding = 40;   // one long label must not fill all other rows with blanks

std::string CellMarkup(const TableColumn& column, std::size_t row) {
  std::string markup = MarkdownText(column.Texts[row]);
  return column.Bold[row] && !markup.empty() ? "**" + markup + "**" : markup;
}

int WidthOf(const TableColumn& column) {
  int width = std::max(NarrowestColumn, DisplayWidth(MarkdownText(column.Title)));
  for (std::size_t row = 0; row < column.Texts.size() && width < WidestPadding; ++row) {
    width = std::max(width, DisplayWidth(CellMarkup(column, row)));
  }
  return std::min(width, WidestPadding);
}

void AppendCell(std::string& out, std::string_view markup, int width, bool rightAligned) {
  const auto padding = static_cast<std::size_t>(std::max(0, width - DisplayWidth(markup)));
  out += ' ';
  if (rightAligned) out.append(padding, ' ');
  out += markup;
  if (!rightAligned) out.append(padding, ' ');
  out += " |";
}

void AppendTable(std::string& out, const ShownTable& table) {
  if (table.Columns.empty()) return;
  std::vector<int> widths;
  for (const TableColumn& column : table.Columns) widths.push_back(WidthOf(column));

  out += '|';
  for (std::size_t k = 0; k < widths.size(); ++k) {
    AppendCell(out, MarkdownText(table.Columns[k].Title), widths[k], table.Columns[k].RightAligned);
  }
  out += "\n|";
  for (std::size_t k = 0; k < widths.size(); ++k) {
    const bool isRight = table.Columns[k].RightAligned;
    out += ' ' + std::string(static_cast<std::size_t>(widths[k] - (isRight ? 1 : 0)), '-') + (isRight ? ": |" : " |");
  }
  for (std::size_t row = 0; row < table.RowCount(); ++row) {
    out += "\n|";
    for (std::size_t k = 0; k < widths.size(); ++k) {
      AppendCell(out, CellMarkup(table.Columns[k], row), widths[k], table.Columns[k].RightAligned);
    }
  }
  out += '\n';
}

// The further lines of a title are lines of one paragraph: a backslash at the end of a line keeps its break.
void AppendTitles(std::string& out, const std::vector<std::string>& lines) {
  for (std::size_t k = 0; k < lines.size(); ++k) {
    out += (k == 0 ? "## " : "") + MarkdownLine(lines[k]);
    const bool goesOn = k > 0 && k + 1 < lines.size();
    out += goesOn ? "\\\n" : "\n\n";
  }
}

void AppendFacts(std::string& out, const RunReport& report) {
  const std::vector<RunFact> facts = FactsOfRun(report);
  for (const RunFact& fact : facts) out += "- " + MarkdownText(fact.Name) + ": " + MarkdownText(fact.Text) + "\n";
  if (!facts.empty()) out += '\n';
}

}  // namespace

std::string WriteMarkdown(const RunReport& report, const ResultDocuments& documents, const WriteOptions& /*options*/) {
  std::string out = "# Cox regression\n\n";
  AppendFacts(out, report);
  for (const ResultDocument& document : documents) {
    AppendTitles(out, TitleLines(document.Titles));
    if (const auto* sheet = std::get_if<SheetContent>(&document.Content)) {
      AppendTable(out, MakeShownTable(*sheet));
    } else if (const auto* text = std::get_if<TextContent>(&document.Content)) {
      out += MarkdownFence(text->Text);
    } else {
      AppendTable(out, MakeShownTable(RangesOfSeries(std::get<ChartContent>(document.Content))));
    }
    out += '\n';
  }
  out.resize(out.find_last_not_of('\n') + 1);
  return out + "\n";
}

}  // namespace orv
