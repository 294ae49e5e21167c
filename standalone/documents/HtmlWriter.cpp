#include "standalone/documents/HtmlWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <variant>
#include <vector>

#include "standalone/documents/ChartSheets.h"
#include "standalone/documents/HtmlStyle.h"
#include "standalone/documents/HtmlText.h"
#include "standalone/documents/RunFacts.h"
#include "standalone/documents/ShownTable.h"
#include "standalone/documents/TableLayout.h"

namespace orv {
namespace {

constexpr std::string_view PageTitle = "Cox regression";
constexpr std::size_t WideColumns = 9;  // a table with more is set in smaller type on paper
constexpr int PartWidth = 120;          // characters that a sheet of paper holds in that type
constexpr int WidestText = 40;          // a longer one is broken over lines
constexpr int WidestNumber = 16;        // the same for the heading of a column of numbers

// The attribute that tells a cell's look; numbers to the right need none.
std::string_view ClassOf(const TableColumn& column, bool isBold) {
  if (column.RightAligned) return isBold ? " class=\"m\"" : "";
  return isBold ? " class=\"t m\"" : " class=\"t\"";
}

// The columns of each part of the table. Those that tell the rows apart stand in every part.
std::vector<std::vector<std::size_t>> PartsOf(const ShownTable& table) {
  std::vector<ColumnHeading> headings;
  headings.reserve(table.Columns.size());
  for (const TableColumn& column : table.Columns) {
    headings.push_back(MakeHeading(column));
    headings.back().Width = std::min(headings.back().Width, column.RightAligned ? WidestNumber : WidestText);
  }
  std::vector<std::vector<std::size_t>> parts;
  for (const ColumnBlock& block : SplitIntoBlocks(table.Columns, headings, table.Repeated, PartWidth)) {
    parts.push_back(ColumnsOfBlock(table.Repeated, block));
  }
  // A table of names alone has nothing to cut.
  if (parts.empty()) parts.push_back(ColumnsOfBlock(0, {0, table.Columns.size() - 1}));
  return parts;
}

bool IsWide(const std::vector<std::vector<std::size_t>>& parts) {
  return std::any_of(parts.begin(), parts.end(), [](const auto& part) { return part.size() > WideColumns; });
}

class PageWriter {
 public:
  std::string Write(const RunReport& report, const ResultDocuments& documents) {
    m_out += fmt::format(
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, "
        "initial-scale=1\">\n<title>{}</title>\n<style>{}</style>\n"
        "</head>\n<body>\n<main>\n<h1>{}</h1>\n",
        PageTitle, HtmlStyle, PageTitle);
    AppendFacts(FactsOfRun(report));
    for (const ResultDocument& document : documents) AppendDocument(document);
    m_out += "</main>\n</body>\n</html>\n";
    return std::move(m_out);
  }

 private:
  void AppendFacts(const std::vector<RunFact>& facts) {
    if (facts.empty()) return;
    m_out += "<dl>\n";
    for (const RunFact& fact : facts) {
      m_out += fmt::format("<dt>{}</dt><dd>{}</dd>\n", HtmlText(fact.Name), HtmlText(fact.Text));
    }
    m_out += "</dl>\n";
  }

  void AppendDocument(const ResultDocument& document) {
    m_out += "<section>\n";
    const std::vector<std::string> titles = TitleLines(document.Titles);
    for (std::size_t k = 0; k < titles.size(); ++k) {
      const std::string title = HtmlText(titles[k]);
      m_out += k == 0 ? "<h2>" + title + "</h2>\n" : "<p class=\"title\">" + title + "</p>\n";
    }
    if (const auto* sheet = std::get_if<SheetContent>(&document.Content)) {
      AppendTable(MakeShownTable(*sheet));
    } else if (const auto* text = std::get_if<TextContent>(&document.Content)) {
      m_out += "<div class=\"box\" tabindex=\"0\"><pre>\n" + HtmlProgramText(text->Text) + "</pre></div>\n";
    } else {
      AppendTable(MakeShownTable(RangesOfSeries(std::get<ChartContent>(document.Content))));
    }
    m_out += "</section>\n";
  }

  void AppendTable(const ShownTable& table) {
    if (table.Columns.empty()) return;
    const std::vector<std::vector<std::size_t>> parts = PartsOf(table);
    m_out += fmt::format("<div class=\"box{}\" tabindex=\"0\">\n", IsWide(parts) ? " wide" : "");
    ++m_tables;
    for (std::size_t part = 0; part < parts.size(); ++part) {
      m_out += fmt::format("<table>\n<caption>Table {}", m_tables);
      if (parts.size() > 1) m_out += fmt::format(", part {} of {}", part + 1, parts.size());
      m_out += table.HasBold() ? ". Bold: significant.</caption>\n" : ".</caption>\n";
      if (table.HasTitles) AppendHead(table, parts[part]);
      m_out += "<tbody>\n";
      for (std::size_t row = 0; row < table.RowCount(); ++row) AppendRow(table, parts[part], row);
      m_out += "</tbody>\n</table>\n";
    }
    m_out += "</div>\n";
  }

  void AppendHead(const ShownTable& table, const std::vector<std::size_t>& part) {
    m_out += "<thead>\n<tr>";
    for (const std::size_t k : part) {
      const TableColumn& column = table.Columns[k];
      if (column.Title.empty()) {
        m_out += "<td></td>";  // a header that says nothing is none
      } else {
        m_out += fmt::format("<th scope=\"col\"{}>{}</th>", ClassOf(column, false), HtmlText(column.Title));
      }
    }
    m_out += "</tr>\n</thead>\n";
  }

  void AppendRow(const ShownTable& table, const std::vector<std::size_t>& part, std::size_t row) {
    m_out += "<tr>";
    for (const std::size_t k : part) {
      const TableColumn& column = table.Columns[k];
      const bool isName = k == 0 && table.HasRowNames;
      m_out += isName ? "<th scope=\"row\"" : "<td";
      m_out += ClassOf(column, column.Bold[row]);
      m_out += '>';
      m_out += HtmlText(column.Texts[row]);
      m_out += isName ? "</th>" : "</td>";
    }
    m_out += "</tr>\n";
  }

  std::string m_out;
  int m_tables = 0;
};

}  // namespace

std::string WriteHtml(const RunReport& report, const ResultDocuments& documents, const WriteOptions& /*options*/) {
  return PageWriter().Write(report, documents);
}

}  // namespace orv
